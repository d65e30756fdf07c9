// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ModelsView.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/InsetSection.h"
#include "Platform/Widgets/Controls/Label.h"

#include <QBoxLayout>
#include <QShowEvent>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::InsetSection;
using platform::Label;
using platform::observe;
using platform::TextStyle;
using platform::Theme;

void ModelRow::show(const ModelBackend& backend, bool isSelected, std::function<void()> onSelect) {
    const ModelInfo& info = backend.info();
    setName(info.name());
    setDetail(info.detail.value_or(QString()));
    setSelected(isSelected);
    setAction(std::move(onSelect));
    // That a model cannot be used matters more than that it is the chosen one.
    if (!backend.isAvailable())
        setMark({u"Unavailable"_s, {}, ColorRole::Orange});
    else if (isSelected)
        setMark({u"Selected"_s, u"checkmark"_s, ColorRole::Accent});
    else
        setMark({});
}

ModelsView::ModelsView(const Environment& environment, ModelManager& modelManager)
    : m_environment(environment)
    , m_modelManager(modelManager) {
    auto* title = new Label(environment.theme, u"Models"_s, TextStyle::Body, ColorRole::Label,
                            QFont::DemiBold);
    title->setHeading();
    auto* column = new QVBoxLayout(this);
    column->setSpacing(12);
    column->setContentsMargins(Theme::defaultPadding, 14, Theme::defaultPadding,
                               Theme::defaultPadding);
    column->addWidget(title, 0, Qt::AlignHCenter);

    // A list of another length is another list: nothing of the old one's state stays.
    observe(this, [this, column, shown = static_cast<QWidget*>(nullptr),
                   count = qsizetype(-1)]() mutable {
        const qsizetype current = m_modelManager.ollamaBackends.value().size();
        if (current == count)
            return;
        count = current;
        if (shown) {
            column->removeWidget(shown);
            shown->hide();
            shown->deleteLater();
        }
        shown = list();
        column->addWidget(shown);
    });
}

void ModelsView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous())
        m_modelManager.startRefresh();
}

QWidget* ModelsView::list() {
    auto* list = new QWidget;
    auto* column = new QVBoxLayout(list);
    column->setSpacing(16);
    column->setContentsMargins({});
    column->addWidget(onDeviceSection());
    column->addWidget(otherModelsSection());
    return list;
}

InsetSection* ModelsView::onDeviceSection() {
    auto* section = new InsetSection(m_environment.theme, u"Apple Intelligence"_s,
                                     u"Default on-device model. Private, offline, no setup "
                                     u"needed."_s);
    auto* row = new ModelRow(m_environment.theme);
    section->addRow(row);
    observe(row, [this, row] {
        static_cast<void>(m_modelManager.isRefreshing.value()); // a good moment to look again
        showIn(*row, m_modelManager.aiBackend);
    });
    return section;
}

InsetSection* ModelsView::otherModelsSection() {
    auto* section =
        new InsetSection(m_environment.theme, u"Other Models"_s,
                         u"For advanced users. Manage and download models via the Ollama app."_s);
    section->setHeaderItem(refreshButton());
    QList<ModelRow*> rows(m_modelManager.ollamaBackends.value().size());
    for (ModelRow*& row : rows) {
        row = new ModelRow(m_environment.theme);
        section->addRow(row);
    }
    if (rows.isEmpty())
        section->addRow(emptyListNotice());
    observe(section, [this, rows] {
        const auto& backends = m_modelManager.ollamaBackends.value();
        // The list is about to be made anew when the number changes.
        for (qsizetype i = 0; rows.size() == backends.size() && i < rows.size(); ++i)
            showIn(*rows[i], backends[i]);
    });
    return section;
}

void ModelsView::showIn(ModelRow& row, const ModelManager::Backend& backend) {
    row.show(
        *backend, m_modelManager.selectedID.value() == backend->info().id(),
        [this, backend] { m_modelManager.select(backend); });
}

QWidget* ModelsView::refreshButton() {
    auto* button = new Button(m_environment.theme, Button::Look::Icon, u"Refresh"_s);
    button->setSymbolPoints(10);
    button->setAction([this] { m_modelManager.startRefresh(); });
    observe(button, [this, button] {
        const bool isRefreshing = m_modelManager.isRefreshing.value();
        button->setIcon(isRefreshing ? u"arrow.clockwise.circle.fill"_s : u"arrow.clockwise"_s);
        button->setSymbolOpacity(isRefreshing ? 0.5 : 1.0);
        button->setEnabled(!isRefreshing);
    });
    return button;
}

QWidget* ModelsView::emptyListNotice() {
    const Theme& theme = m_environment.theme;
    auto* notice = new QWidget;
    auto* row = new QHBoxLayout(notice);
    row->setSpacing(10);
    row->setContentsMargins(14, 4 + 6, 14, 4 + 6); // as the rows that may stand in its place
    auto* icon = new Label(theme, {}, TextStyle::Body, ColorRole::SecondaryLabel);
    icon->setIcon(u"info.circle"_s);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(new Label(theme, u"No Ollama models found"_s, TextStyle::Subheadline));
    texts->addWidget(new Label(theme, u"Start Ollama and tap ↺ to refresh."_s, TextStyle::Caption,
                               ColorRole::SecondaryLabel));
    row->addWidget(icon);
    row->addLayout(texts, 1);
    return notice;
}

} // namespace tellwick

// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ModelsView.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/InsetSection.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Tellwick/Backends/ModelManager.h"
#include "Tellwick/Interface/ModelRow.h"

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

ModelsView::ModelsView(const Environment& environment, ModelManager& modelManager, QWidget* parent)
    : QWidget(parent)
    , m_environment(environment)
    , m_modelManager(modelManager) {
    auto* title = new Label(environment.theme, u"Models"_s, TextStyle::Body);
    title->setWeight(QFont::DemiBold);
    title->setHeading(true);
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
    const auto backend = m_modelManager.aiBackend;
    auto* row = new ModelRow(m_environment.theme, *backend, false, {});
    section->setRows({row});
    observe(row, [this, row, backend] {
        static_cast<void>(m_modelManager.isRefreshing.value()); // a good moment to look again
        row->show(*backend, m_modelManager.selectedID.value() == backend->info().id(),
                  [this, backend] { m_modelManager.select(backend); });
    });
    return section;
}

InsetSection* ModelsView::otherModelsSection() {
    auto* section =
        new InsetSection(m_environment.theme, u"Other Models"_s,
                         u"For advanced users. Manage and download models via the Ollama app."_s);
    section->setHeaderItem(refreshButton());
    if (m_modelManager.ollamaBackends.value().isEmpty()) {
        section->setRows({emptyListNotice()});
        return section;
    }
    observe(section, [this, section] {
        const auto& backends = m_modelManager.ollamaBackends.value();
        QList<QWidget*> rows = section->rows();
        // The list is about to be made anew when the number changes.
        if (!rows.isEmpty() && rows.size() != backends.size())
            return;
        const bool isNew = rows.isEmpty();
        for (qsizetype i = 0; i < backends.size(); ++i) {
            const auto backend = backends[i];
            const bool isSelected = m_modelManager.selectedID.value() == backend->info().id();
            const auto select = [this, backend] { m_modelManager.select(backend); };
            if (isNew)
                rows.append(new ModelRow(m_environment.theme, *backend, isSelected, select));
            else
                static_cast<ModelRow*>(rows[i])->show(*backend, isSelected, select);
        }
        if (isNew)
            section->setRows(rows);
    });
    return section;
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
    auto* icon = new Label(theme, {}, TextStyle::Body);
    icon->setIcon(u"info.circle"_s);
    icon->setColorRole(ColorRole::SecondaryLabel);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(new Label(theme, u"No Ollama models found"_s, TextStyle::Subheadline));
    auto* hint = new Label(theme, u"Start Ollama and tap ↺ to refresh."_s, TextStyle::Caption);
    hint->setColorRole(ColorRole::SecondaryLabel);
    texts->addWidget(hint);
    row->addWidget(icon);
    row->addLayout(texts, 1);
    return notice;
}

} // namespace tellwick

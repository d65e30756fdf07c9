// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ModelsView.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/InsetSection.h"
#include "Platform/Widgets/Controls/Label.h"

#include <QApplication>
#include <QBoxLayout>
#include <QKeyEvent>
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
    column->setContentsMargins(Theme::defaultPadding, 16, Theme::defaultPadding,
                               Theme::defaultPadding);
    column->addWidget(title, 0, Qt::AlignHCenter);

    // A list of another length is another list: nothing of the old one's state stays.
    observe(this, [this, column, shown = static_cast<QWidget*>(nullptr),
                   count = qsizetype(-1)]() mutable {
        const qsizetype current = m_modelManager.ollamaBackends.value().size();
        if (current == count)
            return;
        count = current;
        // But the keyboard stays where it was, or comes to the chosen model.
        const auto* focused = qobject_cast<Button*>(QApplication::focusWidget());
        const bool hadFocus = shown && focused && shown->isAncestorOf(focused);
        const auto reason =
            hadFocus && focused->showsFocus() ? Qt::TabFocusReason : Qt::OtherFocusReason;
        const QString name = hadFocus ? focused->text() : QString();
        auto* old = std::exchange(shown, list());
        column->addWidget(shown);
        for (auto* button : shown->findChildren<Button*>())
            if (hadFocus && button->text() == name)
                button->setFocus(reason);
        if (hadFocus && !shown->isAncestorOf(QApplication::focusWidget()))
            focusProxy()->setFocus(reason);
        if (old) {
            column->removeWidget(old);
            old->hide();
            old->deleteLater();
        }
    });
}

void ModelsView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous())
        m_modelManager.startRefresh();
}

/// Up, Down, Home and End go through the models.
void ModelsView::keyPressEvent(QKeyEvent* event) {
    const auto rows = findChildren<ModelRow*>();
    const auto shown = [&] { // a list that is about to go is hidden
        QList<ModelRow*> visible;
        std::ranges::copy_if(rows, std::back_inserter(visible), &QWidget::isVisible);
        return visible;
    }();
    const auto at = std::ranges::find_if(shown, &QWidget::hasFocus) - shown.begin();
    const qsizetype last = shown.size() - 1;
    qsizetype next = -1;
    switch (event->key()) {
    case Qt::Key_Up:
        next = std::max<qsizetype>(at - 1, 0);
        break;
    case Qt::Key_Down:
        next = at > last ? 0 : std::min(at + 1, last);
        break;
    case Qt::Key_Home:
        next = 0;
        break;
    case Qt::Key_End:
        next = last;
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    shown[next]->setFocus(Qt::TabFocusReason);
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
    const bool isSelected = m_modelManager.selectedID.value() == backend->info().id();
    row.show(*backend, isSelected, [this, backend] { m_modelManager.select(backend); });
    if (isSelected)
        setFocusProxy(&row); // where the keyboard begins
}

QWidget* ModelsView::refreshButton() {
    auto* button = new Button(m_environment.theme, Button::Look::Icon, u"Refresh"_s);
    button->setSymbolPoints(15);
    button->setColorRole(ColorRole::Accent);
    button->setAction([this] { m_modelManager.startRefresh(); });
    observe(button, [this, button] {
        const bool isRefreshing = m_modelManager.isRefreshing.value();
        button->setIcon(isRefreshing ? u"arrow.clockwise.circle.fill"_s : u"arrow.clockwise"_s);
        button->setSymbolOpacity(isRefreshing ? 0.5 : 1.0);
        button->setBusy(isRefreshing);
        button->setTurning(isRefreshing);
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

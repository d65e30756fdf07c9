// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/Menu.h"

#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Surface.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace platform {

namespace {

constexpr int padding = 5;
constexpr int margin = 6; // to the window's edge
constexpr int gap = 4;    // below the anchor
constexpr qreal minimumBodyWidth = 150;

/// What can be done in a field at a moment.
struct Editable {
    bool undo;
    bool redo;
    bool copy;
    bool paste;
    bool selectAll;
};

Editable editable(const QLineEdit& field) {
    return {field.isUndoAvailable(), field.isRedoAvailable(), field.hasSelectedText(),
            !QGuiApplication::clipboard()->text().isEmpty(), !field.text().isEmpty()};
}

Editable editable(const QPlainTextEdit& field) {
    return {field.document()->isUndoAvailable(), field.document()->isRedoAvailable(),
            field.textCursor().hasSelection(), field.canPaste(), !field.document()->isEmpty()};
}

/// `text`: the part of the field that the points of its menu are told in.
template <class Field>
void addEditMenuTo(Field& field, const QWidget& text, const Theme& theme, OverlayHost& overlays) {
    field.setContextMenuPolicy(Qt::CustomContextMenu);
    const auto open = [&field, &text, &theme, &overlays](QPoint place) {
        const Editable can = editable(field);
        std::vector<MenuEntry> entries{
            {u"Undo"_s, {}, [&field] { field.undo(); }, can.undo},
            {u"Redo"_s, {}, [&field] { field.redo(); }, can.redo},
            MenuEntry::separator(),
            {u"Cut"_s, {}, [&field] { field.cut(); }, can.copy},
            {u"Copy"_s, {}, [&field] { field.copy(); }, can.copy},
            {u"Paste"_s, {}, [&field] { field.paste(); }, can.paste},
            {u"Select All"_s, {}, [&field] { field.selectAll(); }, can.selectAll}};
        overlays.present(
            std::make_unique<Menu>(theme, u"Edit"_s, std::move(entries), text.mapToGlobal(place)));
    };
    QObject::connect(&field, &QWidget::customContextMenuRequested, &field, open);
}

} // namespace

Menu::Menu(const Theme& theme, const QString& title, std::vector<MenuEntry> entries, QPoint global,
           QWidget* anchor)
    : Panel(theme, Kind::Menu, title, anchor)
    , m_global(global) {
    column()->setContentsMargins(column()->contentsMargins() +
                                 QMargins(padding, padding, padding, padding));
    for (auto& entry : entries) {
        if (entry.title.isEmpty()) {
            column()->addSpacing(padding);
            column()->addWidget(new Divider(theme));
            column()->addSpacing(padding);
            continue;
        }
        auto* row = new Button(theme, Button::Look::MenuRow, entry.title, entry.icon);
        row->setAction([this, action = std::move(entry.action)] {
            dismiss();
            if (action)
                action();
        });
        row->setEnabled(entry.isEnabled);
        column()->addWidget(row);
        m_rows.push_back(row);
    }
}

Button* Menu::rowAt(QPoint global) const {
    const auto found = std::ranges::find_if(m_rows, [global](const Button* row) {
        return row->rect().contains(row->mapFromGlobal(global));
    });
    return found == m_rows.end() ? nullptr : *found;
}

QRect Menu::place(const QRect& area) {
    const auto free = area.adjusted(margin, margin, -margin, -margin);
    auto size = layout()->sizeHint() - QSize(2 * Shadow::extent, 2 * Shadow::extent);
    size.setWidth(std::max(size.width(), static_cast<int>(theme().scaled(minimumBodyWidth))));
    QRect body(parentWidget()->mapFromGlobal(m_global), size.boundedTo(free.size()));
    if (anchor() != nullptr) {
        const auto above = anchorRect();
        body.moveTop(above.bottom() + gap);
        isRightToLeft() ? body.moveLeft(above.left()) : body.moveRight(above.right());
    }
    body.moveLeft(std::max(free.left(), std::min(body.left(), free.right() + 1 - body.width())));
    body.moveTop(std::max(free.top(), std::min(body.top(), free.bottom() + 1 - body.height())));
    return body;
}

void Menu::focusRow(qsizetype index, qsizetype direction) {
    const auto count = std::ssize(m_rows);
    for (qsizetype step = 0; step < count; ++step) {
        const auto at = ((index + step * direction) % count + count) % count;
        if (m_rows.at(static_cast<size_t>(at))->isEnabled()) {
            m_rows.at(static_cast<size_t>(at))->setFocus(Qt::OtherFocusReason);
            return;
        }
    }
}

void Menu::keyPressEvent(QKeyEvent* event) {
    const auto focused = std::ranges::find_if(m_rows, &Button::hasFocus);
    const auto index = focused == m_rows.end() ? -1 : std::distance(m_rows.begin(), focused);
    if (event->key() == Qt::Key_Down)
        focusRow(index + 1);
    else if (event->key() == Qt::Key_Up)
        focusRow(std::max<qsizetype>(index, 0) - 1, -1);
    else if (event->key() == Qt::Key_Home)
        focusRow(0);
    else if (event->key() == Qt::Key_End)
        focusRow(-1, -1);
    else
        Panel::keyPressEvent(event);
}

void addEditMenu(QLineEdit& field, const Theme& theme, OverlayHost& overlays) {
    addEditMenuTo(field, field, theme, overlays);
}

void addEditMenu(QPlainTextEdit& field, const Theme& theme, OverlayHost& overlays) {
    addEditMenuTo(field, *field.viewport(), theme, overlays);
}

} // namespace platform

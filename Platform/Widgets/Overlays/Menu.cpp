// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Overlays/Menu.h"

#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Divider.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace platform {

namespace {

constexpr int padding = 5;
constexpr int air = 6;
constexpr int gap = 4; // below the anchor
constexpr qreal narrowest = 150;

} // namespace

Menu::Menu(const Theme& theme, const QString& title, std::vector<MenuEntry> entries,
           QWidget* anchor)
    : Menu(theme, title, std::move(entries), anchor, QPoint()) {}

Menu::Menu(const Theme& theme, const QString& title, std::vector<MenuEntry> entries, QPoint global)
    : Menu(theme, title, std::move(entries), nullptr, global) {}

Menu::Menu(const Theme& theme, const QString& title, std::vector<MenuEntry> entries,
           QWidget* anchor, QPoint global)
    : OverlaySurface(theme, title)
    , m_anchor(anchor)
    , m_global(global) {
    auto* layout = new QVBoxLayout(this);
    const auto margins = contentsMargins() + QMargins(padding, padding, padding, padding);
    setContentsMargins(0, 0, 0, 0);
    layout->setContentsMargins(margins);
    layout->setSpacing(0);
    for (auto& entry : entries) {
        if (entry.title.isEmpty()) {
            auto* line = new Divider(theme, this);
            layout->addSpacing(padding);
            layout->addWidget(line);
            layout->addSpacing(padding);
            continue;
        }
        auto* row = new Button(theme, Button::Look::MenuRow, entry.title, entry.icon, this);
        row->setAction([this, action = std::move(entry.action)] {
            dismiss();
            if (action)
                action();
        });
        layout->addWidget(row);
        m_rows.push_back(row);
    }
}

Button* Menu::rowAt(QPoint global) const {
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [global](const Button* row) {
        return row->rect().contains(row->mapFromGlobal(global));
    });
    return found == m_rows.end() ? nullptr : *found;
}

QRect Menu::place(const QRect& area) {
    auto size = layout()->sizeHint() - QSize(2 * Shadow::extent, 2 * Shadow::extent);
    size.setWidth(std::max(size.width(), static_cast<int>(theme().scaled(narrowest))));
    size = size.boundedTo(area.size() - QSize(2 * air, 2 * air));
    QRect body(QPoint(), size);
    const auto host = [this](QPoint global) { return parentWidget()->mapFromGlobal(global); };
    if (m_anchor != nullptr) {
        const QRect anchor(host(m_anchor->mapToGlobal(QPoint(0, 0))), m_anchor->size());
        const bool isLeft = m_anchor->layoutDirection() == Qt::RightToLeft;
        body.moveTop(anchor.bottom() + gap);
        isLeft ? body.moveLeft(anchor.left()) : body.moveRight(anchor.right());
    } else {
        body.moveTopLeft(host(m_global));
    }
    const auto free = area.adjusted(air, air, -air, -air);
    body.moveLeft(std::max(free.left(), std::min(body.left(), free.right() + 1 - body.width())));
    body.moveTop(std::max(free.top(), std::min(body.top(), free.bottom() + 1 - body.height())));
    return body;
}

QWidget* Menu::initialFocus() {
    return m_startsAtFirst && !m_rows.empty() ? m_rows.front() : nullptr;
}

void Menu::focusRow(qsizetype index) {
    const auto count = std::ssize(m_rows);
    if (count > 0)
        m_rows.at(static_cast<size_t>((index + count) % count))->setFocus(Qt::OtherFocusReason);
}

void Menu::keyPressEvent(QKeyEvent* event) {
    const auto now = std::find_if(m_rows.begin(), m_rows.end(),
                                  [](const Button* row) { return row->hasFocus(); });
    const bool isOnRow = now != m_rows.end();
    const auto index = isOnRow ? std::distance(m_rows.begin(), now) : -1;
    switch (event->key()) {
    case Qt::Key_Down:
        focusRow(index + 1);
        break;
    case Qt::Key_Up:
        focusRow(isOnRow ? index - 1 : -1);
        break;
    case Qt::Key_Home:
        focusRow(0);
        break;
    case Qt::Key_End:
        focusRow(-1);
        break;
    default:
        OverlaySurface::keyPressEvent(event);
        return;
    }
    event->accept();
}

} // namespace platform

// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/WindowButtons.h"

#include "Platform/Widgets/Controls/Button.h"

#include <QEvent>
#include <QHBoxLayout>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

constexpr qreal symbolPoints = 9;

struct Face {
    QString name;
    QString icon;
};

Face faceOf(WindowButton kind, bool isMaximized) {
    switch (kind) {
    case WindowButton::Minimize:
        return {u"Minimise"_s, u"window.minimize"_s};
    case WindowButton::Maximize:
        return isMaximized ? Face{u"Restore"_s, u"window.restore"_s}
                           : Face{u"Maximise"_s, u"window.maximize"_s};
    case WindowButton::Close:
        break;
    }
    return {u"Close"_s, u"xmark"_s};
}

void act(WindowButton kind, QWidget& window) {
    switch (kind) {
    case WindowButton::Minimize:
        window.showMinimized();
        break;
    case WindowButton::Maximize:
        WindowButtons::toggleMaximized(window);
        break;
    case WindowButton::Close:
        window.close();
        break;
    }
}

std::optional<WindowButton> kindOf(QStringView name) {
    if (name == u"minimize")
        return WindowButton::Minimize;
    if (name == u"maximize")
        return WindowButton::Maximize;
    return name == u"close" ? std::optional(WindowButton::Close) : std::nullopt;
}

} // namespace

WindowButtonLayout WindowButtonLayout::parsed(QStringView setting) {
    WindowButtonLayout result;
    auto* side = &result.left;
    for (const auto half : setting.split(u':')) {
        for (const auto name : half.split(u',')) {
            const auto kind = kindOf(name.trimmed());
            if (kind && !result.left.contains(*kind) && !result.right.contains(*kind))
                side->append(*kind);
        }
        side = &result.right;
    }
    return result;
}

WindowButtons::WindowButtons(const Theme& theme, const QList<WindowButton>& buttons,
                             QWidget* parent)
    : QWidget(parent) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->setSpacing(Theme::defaultSpacing + 2);
    for (const WindowButton kind : buttons) {
        auto* button = new Button(theme, Button::Look::Window, {});
        button->setSymbolPoints(symbolPoints);
        button->setFocusPolicy(Qt::NoFocus);
        button->setAction([this, kind] { act(kind, *window()); });
        row->addWidget(button);
        m_shown.push_back({kind, button});
    }
    follow();
}

void WindowButtons::setQuiet(bool isQuiet) {
    for (const auto& shown : m_shown)
        shown.button->setColorRole(isQuiet ? ColorRole::TertiaryLabel : ColorRole::Label);
}

void WindowButtons::toggleMaximized(QWidget& window) {
    if (window.isMaximized())
        window.showNormal();
    else
        window.showMaximized();
}

void WindowButtons::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (m_window != window()) {
        if (m_window)
            m_window->removeEventFilter(this);
        m_window = window();
        m_window->installEventFilter(this);
    }
    follow();
}

bool WindowButtons::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_window && event->type() == QEvent::WindowStateChange)
        follow();
    return false;
}

void WindowButtons::follow() {
    for (const auto& [kind, button] : m_shown) {
        const auto [name, icon] = faceOf(kind, window()->isMaximized());
        button->setName(name);
        button->setIcon(icon);
    }
}

} // namespace platform

// SPDX-License-Identifier: MIT
#include "Platform/Application/WindowedApp.h"

#include "Platform/Desktop/OwnFrame.h"
#include "Platform/Desktop/SingleInstance.h"
#include "Platform/Desktop/WindowActivation.h"
#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Look/AppIcon.h"

#include <QApplication>
#include <QShortcut>
#include <QToolTip>
#include <QWindow>

#include <cmath>
#include <cstdio>

namespace platform {

namespace {

/// The window round the window's content; null where the desktop draws one.
std::unique_ptr<WindowFrame> windowFrame(const Theme& theme) {
    auto setMargins = ownFrame();
    return setMargins ? std::make_unique<WindowFrame>(theme, std::move(setMargins)) : nullptr;
}

QPalette toolTipPalette(const Theme& theme) {
    QPalette palette = QToolTip::palette();
    for (const auto role : {QPalette::ToolTipBase, QPalette::Window})
        palette.setColor(role, theme.color(ColorRole::Popover));
    for (const auto role : {QPalette::ToolTipText, QPalette::WindowText})
        palette.setColor(role, theme.color(ColorRole::Label));
    return palette;
}

} // namespace

std::optional<int> endForOther(SingleInstance& instance, const QByteArray& activationToken,
                               const char* name) {
    switch (instance.claim(activationToken)) {
    case SingleInstance::Claim::First:
        return std::nullopt;
    case SingleInstance::Claim::HandedOver:
        return 0;
    case SingleInstance::Claim::Unanswered:
        std::fprintf(stderr, "%s is already running and does not answer.\n", name);
        return 1;
    }
    Q_UNREACHABLE();
}

WindowedApp::WindowedApp(QApplication& application)
    : m_application(application)
    , m_frame(windowFrame(m_theme)) {
    m_appearance.start();
    observe(&m_observers, [this] { follow(); });
    observe(
        &m_observers,
        [this] {
            QToolTip::setFont(m_theme.font(TextStyle::Caption));
            QToolTip::setPalette(toolTipPalette(m_theme));
        });
    QObject::connect(&application, &QGuiApplication::fontDatabaseChanged, &m_observers,
                     [this] { m_theme.setBodyFont(m_appearance.font()); });
}

void WindowedApp::follow() {
    m_theme.setDark(m_appearance.isDark());
    m_theme.setAccent(m_appearance.accent());
    m_theme.setIncreasedContrast(m_appearance.increasesContrast());
    m_theme.motion().setEnabled(!m_appearance.reducesMotion());
    m_theme.setMonospacedFont(m_appearance.monospacedFont());
    m_theme.setBodyFont(m_appearance.font());
    if (m_frame)
        m_windowButtons = WindowButtonLayout::parsed(m_appearance.windowButtons());
}

void WindowedApp::setContent(QWidget& content) {
    m_content = &content;
    makeShortcuts();
    if (m_frame)
        m_frame->setContent(content);
    setAppIcon(content, m_theme.icons());
}

void WindowedApp::makeShortcuts() {
    const auto on = [this](QKeyCombination keys, auto action) {
        auto* shortcut = new QShortcut(QKeySequence(keys), m_content);
        QObject::connect(shortcut, &QShortcut::activated, m_content, action);
    };
    on(
        Qt::CTRL | Qt::Key_Q, [this] { m_application.quit(); });
    on(Qt::CTRL | Qt::Key_W, [this] { m_content->window()->close(); });
    for (const auto plus : {Qt::Key_Plus, Qt::Key_Equal})
        on(
            Qt::CTRL | plus, [this] { zoomBy(1); });
    on(
        Qt::CTRL | Qt::Key_Minus, [this] { zoomBy(-1); });
    on(Qt::CTRL | Qt::Key_0, [this] { m_theme.setZoom(1); });
}

void WindowedApp::zoomBy(int steps) {
    m_theme.setZoom(m_theme.zoom() * std::pow(1.1, steps));
}

void WindowedApp::settle() {
    m_appearance.settle();
    flushObservers(&m_observers);
}

void WindowedApp::openWindow(const QByteArray& activationToken) {
    settle();
    QWidget& window = *m_content->window();
    if (window.isVisible())
        activateWindow(*window.windowHandle(), activationToken);
    else
        window.show();
}

} // namespace platform

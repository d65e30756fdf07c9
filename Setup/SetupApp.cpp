// SPDX-License-Identifier: MIT
#include "Setup/SetupApp.h"

#include "Platform/Observation/Observer.h"

#include <QApplication>
#include <QScreen>

namespace setup {

SetupApp::SetupApp(QApplication& application, const SetupState& state, SetupActions actions)
    : m_app(application)
    , m_window(m_app.theme(), m_app.windowButtons(), state, std::move(actions))
    , m_terminationSignals([] { QCoreApplication::quit(); }) {
    m_app.settle();
    platform::flushObservers(&m_window);
    const auto* screen = QGuiApplication::primaryScreen();
    m_window.resize(screen ? m_window.sizeHint().boundedTo(screen->availableSize())
                           : m_window.sizeHint());
    m_app.setContent(m_window);
}

} // namespace setup

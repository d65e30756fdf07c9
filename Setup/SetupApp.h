// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Application/WindowedApp.h"
#include "Platform/Desktop/TerminationSignals.h"
#include "Setup/SetupView.h"

namespace setup {

/// The set-up with a window.
class SetupApp final {
public:
    /// Runs the program: opens the window, or brings that of a running instance to the front.
    /// Returns the exit status when the window has been closed or the user has quit.
    ///
    /// Called with `--open ARGUMENT…` or without arguments; the ARGUMENTs go to Tellwick.
    static int main(int argc, char** argv);

    /// @param state has its offers; it outlives this, as does what the actions act on.
    SetupApp(QApplication& application, const SetupState& state, SetupActions actions);

    /// Shows the window, or brings it to the front.
    /// @param activationToken what the desktop gave to the start that asks for it; may be empty.
    void openWindow(const QByteArray& activationToken) { m_app.openWindow(activationToken); }

private:
    platform::WindowedApp m_app;
    SetupView m_window;
    platform::TerminationSignals m_terminationSignals;
};

} // namespace setup

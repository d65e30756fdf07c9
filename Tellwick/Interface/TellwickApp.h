// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Application/WindowedApp.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Desktop/TerminationSignals.h"
#include "Platform/Desktop/UrlOpener.h"
#include "Platform/Desktop/UserDirectories.h"
#include "Platform/Http/NetworkThread.h"
#include "Platform/LanguageModel/SystemLanguageModel.h"
#include "Platform/Store/ModelContext.h"
#include "Tellwick/Interface/ContentView.h"

class QApplication;

namespace tellwick {

/// The application: makes every object of the program once, hands each to those that need it, and
/// opens the window.
class TellwickApp final {
public:
    /// The size of a newly opened window, in device-independent pixels.
    static constexpr int defaultWidth = 640;
    static constexpr int defaultHeight = 800;

    /// Runs the program: opens the window, or brings that of a running instance to the front.
    /// Returns the exit status when the last window has been closed or the user has quit.
    static int main(int argc, char** argv);

    explicit TellwickApp(QApplication& application);

    /// Shows the window, or brings it to the front.
    /// @param activationToken what the desktop gave to the start that asks for it; may be empty.
    void openWindow(const QByteArray& activationToken);

private:
    std::unique_ptr<ChatViewModel> makeViewModel();

    // Every object of the program, in the order of making; they end in the opposite order. The
    // window goes first, with the conversation and its tasks, then what those use.
    platform::WindowedApp m_app;
    platform::UrlOpener m_urlOpener;
    platform::UserDirectories m_directories;
    platform::MainExecutor m_mainExecutor;
    platform::NetworkThread m_network;
    const std::unique_ptr<platform::SystemLanguageModel> m_systemModel;
    platform::ModelContainer m_container;
    platform::ModelContext m_context;
    ContentView m_window;
    platform::TerminationSignals m_terminationSignals;
};

} // namespace tellwick

// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/GrowingTextField.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Platform/Widgets/Scrolling/LazyColumn.h"
#include "Tellwick/Interface/ChatView.h"
#include "Tellwick/Interface/ContentView.h"
#include "Tellwick/Interface/TellwickApp.h"
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/Tellwick/Interface/TestWindow.h"

namespace tests {

/// The program's window with a real controller, a real store in a folder of its own, and models
/// that say what the test tells them to.
class ChatWindow {
public:
    ~ChatWindow() { close(); }

    /// Opens the window as a start of the program does; true when it has come up.
    bool open(QSize size = {tellwick::TellwickApp::defaultWidth,
                            tellwick::TellwickApp::defaultHeight}) {
        view.emplace(desktop.services(), [this] {
            ++controllersMade;
            return conversation.startForWindow();
        });
        view->resize(size);
        view->show();
        return QTest::qWaitForWindowActive(&*view);
    }

    /// Ends the program; it can be opened again over the same store.
    void close() {
        view.reset();
        conversation.quit();
    }

    tellwick::ChatViewModel& vm() { return *conversation.controller; }
    ScreenReader screen() { return ScreenReader(&*view); }
    tellwick::ChatView* chat() const { return view->findChild<tellwick::ChatView*>(); }
    platform::OverlayHost* overlays() const { return view->findChild<platform::OverlayHost*>(); }
    platform::LazyColumn* column() const { return view->findChild<platform::LazyColumn*>(); }

    /// Brings the screen up to date with the state.
    void flush() {
        platform::flushObservers(&*view);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    }

    platform::GrowingTextField* field() {
        return screen().widget<platform::GrowingTextField>(QStringLiteral("Message"));
    }

    /// The button beside the field: its name says what it does now.
    platform::Button* sendButton() {
        auto* send = screen().widget<platform::Button>(QStringLiteral("Send"));
        return send ? send : screen().widget<platform::Button>(QStringLiteral("Stop"));
    }

    /// What assistive technology reads out for each message.
    QStringList bubbles() { return screen().names(QAccessible::ListItem); }

    /// Where a widget stands in the window.
    QRect placeOf(const QWidget* widget) const {
        return {widget->mapTo(&*view, QPoint()), widget->size()};
    }

    TestDesktop desktop;
    Conversation conversation;
    std::optional<tellwick::ContentView> view;
    int controllersMade = 0;
};

} // namespace tests

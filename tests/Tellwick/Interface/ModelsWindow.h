// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "Tellwick/Interface/ModelsView.h"
#include "tests/Tellwick/Conversations/Conversation.h"
#include "tests/Tellwick/Interface/TestWindow.h"

namespace tests {

/// The screen over a real catalogue whose server says what the test tells it to.
struct ModelsWindow : TestWindow {
    ~ModelsWindow() { delete window->findChild<platform::ScrollArea*>(); }

    /// Starts the catalogue, whose first refresh begins by itself, and shows the screen.
    bool open() {
        conversation.start();
        view = new tellwick::ModelsView(environment, manager());
        auto* scroll = new platform::ScrollArea(desktop.theme, window.get());
        scroll->setContent(view);
        fit();
        return show();
    }

    /// Shows the screen over these models, all refreshes done.
    bool openOver(const QStringList& models) {
        conversation.server.listed = models;
        return open() && settle();
    }

    /// Presses the button; the server lists these models now.
    bool refresh(const QStringList& models) {
        conversation.server.listed = models;
        return screen().press(QStringLiteral("Refresh")) && settle();
    }

    /// Waits for the end of all refreshes and brings the screen up to date.
    bool settle() {
        QCoreApplication::processEvents();
        const bool isDone = QTest::qWaitFor([this] { return !manager().isRefreshing.value(); });
        QCoreApplication::processEvents();
        flush();
        return isDone;
    }
    /// Makes the screen as high as its content, as a popover does.
    void fit() const {
        auto* scroll = window->findChild<platform::ScrollArea*>();
        scroll->setGeometry(
            0, 0, tellwick::ModelsView::width,
            std::min(window->height(), scroll->heightForWidth(tellwick::ModelsView::width)));
    }
    void flush() const {
        platform::flushObservers(window.get());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents(); // widgets that were added come to be shown
        fit();
    }

    tellwick::ModelManager& manager() const { return conversation.controller->modelManager; }
    /// Where a widget stands in the screen.
    QRect placeOf(const QWidget* widget) const {
        return {widget->mapTo(view, QPoint()), widget->size()};
    }
    std::size_t listingsAsked() const { return conversation.server.listings.size(); }

    tellwick::ModelRow* row(const QString& name) const {
        return screen().widget<tellwick::ModelRow>(name, QAccessible::ListItem);
    }
    QString description(const QString& name) const {
        return screen().find(name, QAccessible::ListItem)->text(QAccessible::Description);
    }
    QStringList rows() const { return screen().names(QAccessible::ListItem); }
    platform::Button* refreshButton() const {
        return screen().widget<platform::Button>(QStringLiteral("Refresh"));
    }

    bool isDisabled(const QString& name) const { return screen().find(name)->state().disabled; }

    Conversation conversation;
    tellwick::ModelsView* view = nullptr;
};

} // namespace tests

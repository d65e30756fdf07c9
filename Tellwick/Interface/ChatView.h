// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observed.h"
#include "Platform/Widgets/Look/Theme.h"
#include "Tellwick/Interface/ConversationFind.h"
#include "Tellwick/Interface/Environment.h"

#include <QWidget>

namespace platform {
class HeaderBar;
class PullDownButton;
} // namespace platform

namespace tellwick {

class ChatViewModel;
class FindBar;
class MessageField;
class MessageList;

/// The main screen: the conversation, the field for the next message, the writing modes, and the
/// way to the other screens.
///
/// It owns no logic. All that it shows is read from the controller and follows it by observation;
/// all that it does is to call the controller's operations.
class ChatView final : public QWidget {
    Q_OBJECT

public:
    ChatView(const Environment& environment, ChatViewModel& vm, QWidget* parent = nullptr);

    /// The colour of the send button: red while generating, the accent when there is something to
    /// send, else the secondary colour.
    platform::ColorRole sendButtonColor() const;

    /// Puts the keyboard into the message field, unless something is open over the screen.
    void focusField();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void body();
    QWidget* messageList();
    QWidget* emptyState();
    QWidget* writingModeChips();
    QWidget* modeBar();
    QWidget* inputBar();
    QWidget* findBar();
    void newChatButton(platform::HeaderBar& placement);
    void menuButton(platform::HeaderBar& placement);

    void shortcuts();
    /// Keeps a panel open while the state is set, and another one when it is set to something else;
    /// to close the panel clears it.
    template <class State, class Make>
    void showWhile(platform::Observed<State>& state, Make make);

    const Environment& m_environment;
    ChatViewModel& m_vm;
    platform::Observed<bool> m_showingAbout{false};
    platform::Observed<bool> m_showingModels{false};
    ConversationFind m_find;
    MessageList* m_list = nullptr;
    FindBar* m_findBar = nullptr;
    MessageField* m_field = nullptr;
    platform::PullDownButton* m_menuButton = nullptr;
};

} // namespace tellwick

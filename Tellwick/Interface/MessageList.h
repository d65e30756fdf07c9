// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Scrolling/LazyRows.h"
#include "Tellwick/Core/ChatMessage.h"
#include "Tellwick/Interface/ConversationFind.h"
#include "Tellwick/Interface/Environment.h"

#include <QBasicTimer>
#include <QWidget>

#include <functional>

namespace platform {
class Button;
class EdgeFade;
class LazyColumn;
} // namespace platform

namespace tellwick {

class ChatViewModel;
class MessageBubble;

/// The conversation: a column with a MessageBubble for each message, keyed by the message;
/// something else in its place while there is none.
///
/// A new message scrolls it to its end. So does a reply that grows, unless the user has scrolled
/// away from there to read; a button leads back. A reply is read out when it is whole. What is
/// looked for is lit, and the current match brought into view. While the first word of a reply is
/// long in coming, assistive technology hears that the list is busy.
class MessageList final : public QWidget, private platform::LazyRows {
    Q_OBJECT

public:
    /// `makeEmptyState` is asked, once, for what stands there while there is no message. All
    /// outlive the list.
    MessageList(const Environment& environment, const ChatViewModel& vm,
                const ConversationFind& find, std::function<QWidget*()> makeEmptyState);

    /// Scrolls by a key that was pressed elsewhere; returns whether it is one of those.
    bool scrollByKey(const QKeyEvent& event);
    /// The first message that is at least partly in view.
    qsizetype firstVisible() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void follow();
    void makeJumpButton();
    void waitForFirstWord();
    void showMatch();
    void light(qsizetype row, MessageBubble& bubble) const;

    qsizetype count() const override;
    QUuid key(qsizetype row) const override;
    QWidget* make(qsizetype row, QWidget* parent) override;
    void update(qsizetype row, QWidget* widget) override;
    void setCurrent(QWidget* widget, bool isCurrent) override;
    int estimatedHeight(qsizetype row, int width) const override;
    QString accessibleName(qsizetype row) const override;
    bool isInUse(const QWidget* widget) const override;
    const ChatMessage& message(qsizetype row) const;

    const Environment& m_environment;
    const ChatViewModel& m_vm;
    const ConversationFind& m_find;
    platform::LazyColumn* m_column = nullptr;
    platform::EdgeFade* m_top = nullptr;
    platform::EdgeFade* m_bottom = nullptr;
    platform::Button* m_jump = nullptr;
    QBasicTimer m_waiting; // for the first word
    /// What was last followed.
    qsizetype m_count = -1;
    platform::TextSnapshot m_lastText;
    std::optional<ConversationFind::Match> m_shownMatch;
};

} // namespace tellwick

// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Scrolling/LazyRows.h"
#include "Tellwick/Core/ChatMessage.h"
#include "Tellwick/Interface/Environment.h"

#include <QWidget>

#include <functional>

namespace platform {
class LazyColumn;
}

namespace tellwick {

class ChatViewModel;

/// The conversation: a column with a MessageBubble for each message, keyed by the message;
/// something else in its place while there is none. It scrolls to the end of what is new, and has a
/// reply read out when it is whole.
class MessageList final : public QWidget, private platform::LazyRows {
    Q_OBJECT

public:
    /// `makeEmptyState` is asked, once, for what stands there while there is no message. All
    /// outlive the list.
    MessageList(const Environment& environment, const ChatViewModel& vm,
                std::function<QWidget*()> makeEmptyState);

private:
    void follow(platform::LazyColumn& column);

    qsizetype count() const override;
    QUuid key(qsizetype row) const override;
    QWidget* make(qsizetype row, QWidget* parent) override;
    void update(qsizetype row, QWidget* widget) override;
    int estimatedHeight(qsizetype row, int width) const override;
    QString accessibleName(qsizetype row) const override;
    bool isInUse(const QWidget* widget) const override;
    const ChatMessage& message(qsizetype row) const;

    const Environment& m_environment;
    const ChatViewModel& m_vm;
    /// What was last followed.
    qsizetype m_count = -1;
    platform::TextSnapshot m_lastText;
};

} // namespace tellwick

// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Scrolling/LazyRows.h"
#include "Tellwick/Core/ChatMessage.h"
#include "Tellwick/Interface/Environment.h"

namespace tellwick {

class ChatViewModel;

/// The conversation's messages as the rows of a column: a MessageBubble for each, keyed by the
/// message.
class MessageRows final : public platform::LazyRows {
public:
    /// Both outlive the rows.
    MessageRows(const Environment& environment, const ChatViewModel& vm);

    qsizetype count() const override;
    QUuid key(qsizetype row) const override;
    QWidget* make(qsizetype row, QWidget* parent) override;
    void update(qsizetype row, QWidget* widget) override;
    int estimatedHeight(qsizetype row, int width) const override;
    QString accessibleName(qsizetype row) const override;
    bool isInUse(const QWidget* widget) const override;

private:
    const ChatMessage& message(qsizetype row) const;

    const Environment& m_environment;
    const ChatViewModel& m_vm;
};

} // namespace tellwick

// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Theme.h"
#include "Tellwick/Core/ChatMessage.h"
#include "Tellwick/Interface/Environment.h"

#include <QWidget>

#include <optional>

namespace platform {
class TextView;
}

namespace tellwick {

/// One message of the conversation: the user's on the right in the accent colour, the model's on
/// the left in grey, with inline Markdown where the text looks like it.
///
/// The row takes the column's width; the bubble in it hugs its text and leaves the other side free.
/// A longer beginning of the same text is shown at the cost of what it adds.
class MessageBubble final : public QWidget, public platform::AccessibleElement {
    Q_OBJECT

public:
    MessageBubble(const Environment& environment, ChatMessage message, QWidget* parent = nullptr);

    /// Shows the message as it is now. It is the same message, its content may have changed.
    void setMessage(const ChatMessage& message);

    /// The text of a message as its bubble shows it: a reply's markup is read.
    static QString shownText(const ChatMessage& message);
    /// What assistive technology reads out for a message: who speaks, and the text as shown.
    static QString spokenText(const ChatMessage& message);

    /// Shows whether the keyboard is at this message.
    void setCurrent(bool isCurrent);
    /// Puts the text as the author wrote it on the clipboard.
    void copyContent() const;
    /// Lights the places where a text stands; see TextView::setFound().
    void setFound(const QString& text, std::optional<qsizetype> current);
    /// Where a character of what is shown stands within the row.
    QRect characterRect(qsizetype position) const;

    /// The rectangle of the bubble within the row.
    const QRect& bubbleRect() const { return m_bubble; }
    platform::ColorRole bubbleColor() const;

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;

    QAccessible::Role accessibleRole() const override { return QAccessible::ListItem; }
    QString accessibleText() const override { return spokenText(m_message); }
    void addAccessibleState(QAccessible::State& state) const override;

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    bool isFromUser() const { return m_message.role() == ChatMessage::Role::user; }
    void messageContent();
    void openContextMenu(QPoint globalPosition);
    QSize textSize(int width) const;
    void layOut();

    const Environment& m_environment;
    ChatMessage m_message;
    platform::TextView* m_text;
    QRect m_bubble;
    bool m_isCurrent = false;
};

} // namespace tellwick

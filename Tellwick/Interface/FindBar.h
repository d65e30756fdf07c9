// SPDX-License-Identifier: MIT
#pragma once

#include "Tellwick/Interface/Environment.h"

#include <QWidget>

#include <functional>

namespace platform {
class LineField;
}

namespace tellwick {

class ConversationFind;

/// The slim bar under the header in which a text of the conversation is looked for: its field, how
/// many matches there are, the way to the next and the one before (Return and Shift-Return, too),
/// and its end (Escape).
class FindBar final : public QWidget {
    Q_OBJECT

public:
    /// Both outlive the bar.
    FindBar(const Environment& environment, ConversationFind& find);

    /// The message from which on the first match of a new text is looked for.
    void onAskedForPlace(std::function<qsizetype()> place) { m_place = std::move(place); }
    void onClosed(std::function<void()> closed) { m_closed = std::move(closed); }

    /// Shows the bar and puts the keyboard into its field, the text selected.
    void begin();
    /// Hides it and looks for nothing any more.
    void end();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const platform::Theme& m_theme;
    ConversationFind& m_find;
    platform::LineField* m_field;
    std::function<qsizetype()> m_place;
    std::function<void()> m_closed;
};

} // namespace tellwick

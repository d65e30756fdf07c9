// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Observation/Observed.h"

#include <QBasicTimer>
#include <QObject>
#include <QUuid>

#include <optional>
#include <vector>

namespace tellwick {

class ChatViewModel;

/// Looks for a text in the conversation, in letters of either case, as the messages are shown: what
/// was found, where in it the reader is, and the way on and back.
///
/// A long conversation is looked through in slices between which the window stays alive; what is
/// known so far can be read at every moment. A reply that is being written is looked at when it is
/// whole. All reads are tracked by observe(). Main thread only.
class ConversationFind final : public QObject {
    Q_OBJECT

public:
    /// One place where the text stands.
    struct Match {
        qsizetype row = 0;   ///< the message's number
        qsizetype start = 0; ///< in what is shown of the message

        bool operator==(const Match&) const = default;
    };

    /// `vm` outlives the search.
    explicit ConversationFind(const ChatViewModel& vm, QObject* parent = nullptr);

    /// Looks for another text; the first match in the message `row` or behind it becomes the
    /// current one. An empty text is nowhere.
    void setText(const QString& text, qsizetype row = 0);
    QString text() const { return m_text.value(); }

    /// The match that the reader is at.
    std::optional<Match> current() const;
    /// Goes to the next match, or from the last to the first.
    void goOn() { step(1); }
    /// Goes to the match before, or from the first to the last.
    void goBack() { step(-1); }

    /// "2 of 5", "No matches"; empty as long as there is nothing to tell.
    QString summary() const;

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    void restart();
    void follow();
    void look(qsizetype row);
    qsizetype wholeMessages() const;
    void step(qsizetype distance);
    void changed();

    const ChatViewModel& m_vm;
    platform::Observed<QString> m_text;
    platform::Observed<int> m_revision{0}; // of everything below
    qsizetype m_firstRow = 0;              // from which on the first match is looked for
    QUuid m_conversation;                  // its first message
    qsizetype m_searched = 0;              // messages
    std::vector<Match> m_matches;
    qsizetype m_current = -1;
    QBasicTimer m_slices;
};

} // namespace tellwick

// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ConversationFind.h"

#include "Platform/Observation/Observer.h"
#include "Tellwick/Conversations/ChatViewModel.h"
#include "Tellwick/Interface/MessageBubble.h"

#include <QElapsedTimer>

#include <algorithm>

namespace tellwick {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 sliceMilliseconds = 4; // a part of a frame

} // namespace

ConversationFind::ConversationFind(const ChatViewModel& vm, QObject* parent)
    : QObject(parent)
    , m_vm(vm) {
    platform::observe(
        this,
        [this] {
            static_cast<void>(m_vm.messages.value());
            static_cast<void>(m_vm.isGenerating.value());
            follow();
        });
}

qsizetype ConversationFind::wholeMessages() const {
    const qsizetype count = m_vm.messages.value().size();
    return m_vm.isGenerating.value() ? std::max<qsizetype>(0, count - 1) : count;
}

void ConversationFind::setText(const QString& text, qsizetype row) {
    if (text == m_text.valueBypassingBindings())
        return;
    m_text = text;
    m_firstRow = row;
    restart();
}

void ConversationFind::restart() {
    m_matches.clear();
    m_searched = 0;
    m_current = -1;
    m_conversation = {};
    changed();
    follow();
}

/// Goes on where messages have come, from the beginning where the conversation is another one.
void ConversationFind::follow() {
    const QList<ChatMessage>& messages = m_vm.messages.value();
    const QUuid conversation = messages.isEmpty() ? QUuid() : messages.first().id();
    if (m_searched > 0 && conversation != m_conversation) {
        restart();
        return;
    }
    m_conversation = conversation;
    const bool hasMore = !m_text.valueBypassingBindings().isEmpty() && m_searched < wholeMessages();
    if (hasMore && !m_slices.isActive())
        m_slices.start(0, this);
    if (!hasMore)
        m_slices.stop();
}

void ConversationFind::timerEvent(QTimerEvent*) {
    QElapsedTimer time;
    time.start();
    const qsizetype whole = wholeMessages();
    while (m_searched < whole && time.elapsed() < sliceMilliseconds)
        look(m_searched++);
    if (m_searched >= whole) {
        m_slices.stop();
        if (m_current < 0 && !m_matches.empty())
            m_current = 0;
    }
    changed();
}

void ConversationFind::look(qsizetype row) {
    const QString& text = m_text.valueBypassingBindings();
    const QString shown = MessageBubble::shownText(m_vm.messages.value().at(row));
    qsizetype at = shown.indexOf(text, 0, Qt::CaseInsensitive);
    if (at >= 0 && m_current < 0 && row >= m_firstRow)
        m_current = static_cast<qsizetype>(m_matches.size());
    for (; at >= 0; at = shown.indexOf(text, at + text.size(), Qt::CaseInsensitive))
        m_matches.push_back({row, at});
}

void ConversationFind::step(qsizetype distance) {
    const auto count = static_cast<qsizetype>(m_matches.size());
    if (count == 0)
        return;
    m_current = (std::max<qsizetype>(m_current, 0) + distance + count) % count;
    changed();
}

void ConversationFind::changed() {
    m_revision = m_revision.valueBypassingBindings() + 1;
}

std::optional<ConversationFind::Match> ConversationFind::current() const {
    static_cast<void>(m_revision.value());
    return m_current < 0 ? std::nullopt
                         : std::optional(m_matches[static_cast<std::size_t>(m_current)]);
}

QString ConversationFind::summary() const {
    static_cast<void>(m_revision.value());
    if (m_current >= 0)
        return u"%1 of %2"_s.arg(m_current + 1).arg(m_matches.size());
    const bool isDone = !text().isEmpty() && m_searched >= wholeMessages();
    return isDone ? u"No matches"_s : QString();
}

} // namespace tellwick

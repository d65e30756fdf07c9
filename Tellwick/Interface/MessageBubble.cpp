// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/MessageBubble.h"

#include "Platform/Desktop/UrlOpener.h"
#include "Platform/Text/InlineMarkdown.h"
#include "Platform/Widgets/Look/Painting.h"
#include "Platform/Widgets/Overlays/Menu.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Platform/Widgets/Text/TextView.h"
#include "Tellwick/Core/AppConfig.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QResizeEvent>

#include <algorithm>
#include <array>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::ColorRole;
using platform::TextView;
using platform::Theme;

namespace {

/// A cheap test that spares most texts the parser.
bool looksLikeMarkdown(QStringView content) {
    static constexpr std::array<QStringView, 5> markers{u"**", u"__", u"*", u"`", u"["};
    return std::any_of(markers.begin(), markers.end(),
                       [content](QStringView marker) { return content.contains(marker); });
}

bool isMarkdown(const ChatMessage& message) {
    return message.role() == ChatMessage::Role::assistant &&
           looksLikeMarkdown(message.content.view());
}

/// Between the text's view and the edge of the bubble: the view's own margin is a part of the
/// padding.
constexpr int besideText = Theme::bubblePaddingX - platform::TextFormat::themeMargin;

} // namespace

MessageBubble::MessageBubble(const Environment& environment, ChatMessage message, QWidget* parent)
    : QWidget(parent)
    , m_environment(environment)
    , m_message(std::move(message))
    , m_text(new TextView(
          environment.theme,
          isFromUser() ? TextView::Background::Accent : TextView::Background::Window, this)) {
    m_text->onLinkActivated([this](const QUrl& url) { m_environment.urlOpener.open(url); });
    messageContent();
}

void MessageBubble::setMessage(const ChatMessage& message) {
    Q_ASSERT(message.id() == m_message.id());
    if (message.content == m_message.content)
        return;
    m_message.content = message.content;
    messageContent();
    layOut();
    updateGeometry();
}

ColorRole MessageBubble::bubbleColor() const {
    return isFromUser() ? ColorRole::UserBubble : ColorRole::AssistantBubble;
}

void MessageBubble::messageContent() {
    if (m_message.content.isEmpty())
        m_text->setPlainText(platform::TextSnapshot(u" "));
    else if (isMarkdown(m_message))
        m_text->setMarkdown(m_message.content);
    else
        m_text->setPlainText(m_message.content);
}

void MessageBubble::copyContent() const {
    QGuiApplication::clipboard()->setText(m_message.content.toString());
}

void MessageBubble::openContextMenu(QPoint globalPosition) {
    if (m_message.content.isEmpty())
        return;
    const platform::MenuEntry copy{u"Copy"_s, u"doc.on.doc"_s, [this] { copyContent(); }};
    m_environment.overlays.present(std::make_unique<platform::Menu>(
        m_environment.theme, u"Message"_s, std::vector{copy}, globalPosition));
}

void MessageBubble::setCurrent(bool isCurrent) {
    if (std::exchange(m_isCurrent, isCurrent) != isCurrent)
        update();
}

void MessageBubble::addAccessibleState(QAccessible::State& state) const {
    state.focusable = true;
    state.selectable = true;
    state.focused = m_isCurrent;
    state.selected = m_isCurrent;
}

void MessageBubble::setFound(const QString& text, std::optional<qsizetype> current) {
    m_text->setFound(text, current);
}

QRect MessageBubble::characterRect(qsizetype position) const {
    return m_text->characterRect(position).translated(m_text->pos());
}

QString MessageBubble::shownText(const ChatMessage& message) {
    return isMarkdown(message) ? platform::InlineMarkdown::parse(message.content.view()).text
                               : message.content.toString();
}

QString MessageBubble::spokenText(const ChatMessage& message) {
    const bool isUser = message.role() == ChatMessage::Role::user;
    const QString speaker = isUser ? u"You"_s : AppConfig::appName();
    return platform::speakable(speaker + ": "_L1 + shownText(message));
}

QSize MessageBubble::textSize(int width) const {
    const int beside = Theme::bubbleFreeSide + Theme::defaultSpacing + 2 * besideText;
    return m_text->sizeWithin(std::max(1, width - beside));
}

int MessageBubble::heightForWidth(int width) const {
    return textSize(width).height() + 2 * Theme::bubblePaddingY;
}

QSize MessageBubble::sizeHint() const {
    return {Theme::columnWidth, heightForWidth(width())};
}

void MessageBubble::resizeEvent(QResizeEvent*) {
    layOut();
}

void MessageBubble::layOut() {
    const QSize size = textSize(width());
    const QRect before = m_bubble;
    m_bubble = QRect(QPoint(), size + QSize(2 * besideText, 2 * Theme::bubblePaddingY));
    if (isFromUser() != isRightToLeft())
        m_bubble.moveRight(width() - 1);
    m_text->setGeometry(
        m_bubble.adjusted(besideText, Theme::bubblePaddingY, -besideText, -Theme::bubblePaddingY));
    if (m_bubble != before)
        update(before | m_bubble);
}

void MessageBubble::contextMenuEvent(QContextMenuEvent* event) {
    // The background around the text is the bubble's, too; the free side of the row is not.
    if (event->reason() == QContextMenuEvent::Keyboard)
        openContextMenu(mapToGlobal((visibleRegion().boundingRect() & m_bubble).center()));
    else if (m_bubble.contains(event->pos()))
        openContextMenu(event->globalPos());
    else
        event->ignore();
}

void MessageBubble::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    platform::fillRounded(painter, m_bubble, Theme::bubbleRadius,
                          m_environment.theme.color(bubbleColor()));
    if (m_isCurrent)
        platform::paintFocusRing(painter, m_environment.theme, m_bubble, Theme::bubbleRadius,
                                 isFromUser() ? ColorRole::OnAccent : ColorRole::FocusRing);
}

} // namespace tellwick

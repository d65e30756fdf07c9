// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextView.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "Platform/Widgets/Text/TextViewAccessible.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace platform {
namespace {

/// Monospaced fonts look larger than others of their size.
QFont codeFont(const Theme& theme) {
    constexpr qreal scale = 0.92;
    QFont font = theme.monospacedFont(TextStyle::Body);
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * scale);
    else
        font.setPixelSize(qRound(font.pixelSize() * scale));
    return font;
}

} // namespace

TextView::TextView(const Theme& theme, Background background, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_background(background) {
    QAccessible::installFactory(makeTextViewAccessible); // once, however often it is called
    setFocusPolicy(Qt::ClickFocus);
    setMouseTracking(true);
    setCursor(Qt::IBeamCursor);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    m_flow.replaceTail(0, {});
    observe(this, [this] { applyTheme(); });
}

void TextView::applyTheme() {
    const bool accent = m_background == Background::Accent;
    TextFormat format;
    format.font = m_theme.font(TextStyle::Body);
    format.codeFont = codeFont(m_theme);
    format.text = m_theme.color(accent ? ColorRole::OnAccent : ColorRole::Label);
    format.link = m_theme.color(accent ? ColorRole::OnAccent : ColorRole::Link);
    format.codeBackground = m_theme.color(ColorRole::Field);
    format.selection = m_theme.color(accent ? ColorRole::SelectionOnAccent : ColorRole::Selection);
    format.focusRing = m_theme.color(accent ? ColorRole::OnAccent : ColorRole::FocusRing);
    m_flow.setFormat(format);
    updateGeometry();
    update();
}

void TextView::setPlainText(const TextSnapshot& text) {
    if (!m_isMarkdown && text == m_source)
        return;
    const bool grows = !m_isMarkdown && text.continues(m_source);
    const qsizetype from = grows ? m_source.size() : 0;
    m_isMarkdown = false;
    m_source = text;
    AttributedString tail;
    tail.append(text.view().mid(from));
    replaceTail(from, tail);
}

void TextView::setMarkdown(const TextSnapshot& text) {
    if (m_isMarkdown && text == m_source)
        return;
    if (!m_isMarkdown || !text.continues(m_source))
        m_parsed = {};
    m_isMarkdown = true;
    m_source = text;
    const qsizetype from = m_parsed.result;
    replaceTail(from, InlineMarkdown::parseOn(text.view(), m_parsed));
}

void TextView::replaceTail(qsizetype from, const AttributedString& tail) {
    const qreal height = m_flow.height();
    const qreal width = m_flow.usedWidth();
    const qreal changed = m_flow.replaceTail(from, tail);
    if (changed < 0)
        return;
    noteLinks(from, tail);
    const qsizetype size = content().text.size();
    m_selection.limit(size);
    for (TextSpan* link : {&m_focusedLink, &m_pressedLink})
        *link = {std::min(link->start, size), std::min(link->end, size)};
    if (height != m_flow.height() || width != m_flow.usedWidth())
        updateGeometry();
    update(0, static_cast<int>(changed), this->width(), this->height());
}

/// Tab stops at a view that has links, so the first one is known at every moment.
void TextView::noteLinks(qsizetype from, const AttributedString& tail) {
    if (m_firstLink >= from)
        m_firstLink = -1;
    for (const AttributedString::Range& range : tail.ranges) {
        if (m_firstLink >= 0)
            break;
        if ((range.styles & AttributedString::Link) && openableAddress(range.target))
            m_firstLink = from + range.start;
    }
    setFocusPolicy(m_firstLink >= 0 ? Qt::StrongFocus : Qt::ClickFocus);
}

void TextView::fit(int width) const {
    const bool keepsLines = width <= m_flow.width() && width >= std::ceil(m_flow.usedWidth());
    if (!keepsLines)
        m_flow.setWidth(width);
}

QSize TextView::sizeWithin(int maximumWidth) {
    m_flow.setWidth(maximumWidth);
    const int used = static_cast<int>(std::ceil(m_flow.usedWidth()));
    return {std::clamp(used, 1, std::max(maximumWidth, 1)),
            static_cast<int>(std::ceil(m_flow.height()))};
}

int TextView::heightForWidth(int width) const {
    fit(width);
    return static_cast<int>(std::ceil(m_flow.height()));
}

QSize TextView::sizeHint() const {
    return {static_cast<int>(std::ceil(m_flow.usedWidth())),
            static_cast<int>(std::ceil(m_flow.height()))};
}

QSize TextView::minimumSizeHint() const {
    return {1, static_cast<int>(m_flow.format().lineHeight())};
}

void TextView::resizeEvent(QResizeEvent*) {
    fit(width());
    m_flow.setFrameWidth(width());
}

void TextView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    m_flow.draw(painter, {0, 0}, event->rect(), selection());
    if (hasFocus() && !m_focusedLink.isEmpty()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(m_flow.format().focusRing, 2));
        for (const QRectF& rect : m_flow.rects(m_focusedLink.start, m_focusedLink.end))
            painter.drawRoundedRect(rect.adjusted(-1, 0, 1, 0), 3, 3);
    }
}

// Selection

QString TextView::selectedText() const {
    return content().text.mid(selection().start, selection().length());
}

void TextView::select(TextSpan span) {
    const qsizetype size = content().text.size();
    setSelection(TextSelection(
        {std::clamp<qsizetype>(span.start, 0, size), std::clamp<qsizetype>(span.end, 0, size)}));
}

void TextView::selectAll() {
    select({0, content().text.size()});
}

void TextView::copySelection() const {
    if (hasSelection())
        QGuiApplication::clipboard()->setText(selectedText());
}

void TextView::extendSelection(qsizetype position) {
    TextSelection longer = m_selection;
    longer.extend(content().text, position);
    setSelection(longer);
}

/// Repaints what is selected in one of the two selections only.
void TextView::setSelection(const TextSelection& selection) {
    const TextSpan before = m_selection.span();
    const TextSpan now = selection.span();
    m_selection = selection;
    if (before.end <= now.start || now.end <= before.start) {
        updateSpan(before);
        updateSpan(now);
    } else {
        updateSpan({std::min(before.start, now.start), std::max(before.start, now.start)});
        updateSpan({std::min(before.end, now.end), std::max(before.end, now.end)});
    }
}

/// Repaints the lines that a span touches.
void TextView::updateSpan(TextSpan span) {
    if (span.isEmpty())
        return;
    const QRectF first = m_flow.characterRect(span.start);
    const QRectF last = m_flow.characterRect(span.end);
    update(QRectF(0, first.top() - 1, width(), last.bottom() - first.top() + 2).toAlignedRect());
}

// Links

void TextView::setFocusedLink(TextSpan link) {
    if (m_focusedLink == link)
        return;
    updateSpan(m_focusedLink);
    m_focusedLink = link;
    updateSpan(m_focusedLink);
    if (link.isEmpty())
        return;
    if (auto* area = ScrollArea::around(this))
        area->reveal(this, m_flow.characterRect(link.start).toAlignedRect());
}

bool TextView::focusNextPrevChild(bool next) {
    if (m_firstLink >= 0 && (next || !m_focusedLink.isEmpty())) {
        const TextLink link = next ? linkFrom(content(), m_focusedLink.end)
                                   : linkUpTo(content(), m_focusedLink.start);
        if (!link.isNone()) {
            setFocusedLink(link.span);
            return true;
        }
    }
    return QWidget::focusNextPrevChild(next);
}

void TextView::focusInEvent(QFocusEvent* event) {
    if (event->reason() == Qt::TabFocusReason)
        setFocusedLink(linkFrom(content(), 0).span);
    else if (event->reason() == Qt::BacktabFocusReason)
        setFocusedLink(linkUpTo(content(), content().text.size()).span);
}

void TextView::focusOutEvent(QFocusEvent* event) {
    setFocusedLink({});
    // A click elsewhere drops the selection; a menu, another window or typing does not.
    if (event->reason() == Qt::MouseFocusReason)
        clearSelection();
}

// Pointer

void TextView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->setAccepted(event->button() == Qt::RightButton); // the context menu's
        return;
    }
    setFocusedLink({});
    m_pressed = event->pos();
    m_pressedLink = linkAt(content(), m_flow.characterAt(event->position())).span;
    m_isSelecting = true;
    const qsizetype position = m_flow.positionAt(event->position());
    const int interval = QGuiApplication::styleHints()->mouseDoubleClickInterval();
    if (m_sinceDoubleClick.isValid() && m_sinceDoubleClick.elapsed() < interval)
        setSelection({content().text, position, TextUnit::Paragraph});
    else if (event->modifiers() & Qt::ShiftModifier)
        extendSelection(position);
    else
        select({position, position});
    m_sinceDoubleClick.invalidate();
}

void TextView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    const qsizetype character = m_flow.characterAt(event->position());
    const qsizetype position = character >= 0 ? character : m_flow.positionAt(event->position());
    m_isSelecting = true;
    m_pressedLink = {};
    setSelection({content().text, position, TextUnit::Word});
    m_sinceDoubleClick.start();
}

void TextView::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton) || !m_isSelecting) {
        showCursorFor(event->position());
        return;
    }
    const int distance = QGuiApplication::styleHints()->startDragDistance();
    if (!m_pressedLink.isEmpty() && (event->pos() - m_pressed).manhattanLength() < distance)
        return; // still a click
    m_pressedLink = {};
    m_pointer = event->globalPosition().toPoint();
    extendSelection(m_flow.positionAt(event->position()));
    if (!m_following.isActive())
        m_following.start(16, this); // about a frame
}

/// A selection that is drawn beyond an end of the area around goes on while the area scrolls.
void TextView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_following.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    auto* area = ScrollArea::around(this);
    if (!m_isSelecting || !area || !area->scrollTowards(m_pointer))
        m_following.stop();
    else
        extendSelection(m_flow.positionAt(mapFromGlobal(QPointF(m_pointer))));
}

void TextView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_isSelecting = false;
    const TextLink link = linkAt(content(), m_flow.characterAt(event->position()));
    const bool clicked = !m_pressedLink.isEmpty() && link.span == m_pressedLink;
    m_pressedLink = {};
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (hasSelection() && clipboard->supportsSelection())
        clipboard->setText(selectedText(), QClipboard::Selection);
    if (clicked && !hasSelection() && m_openLink)
        m_openLink(link.address);
}

void TextView::showCursorFor(const QPointF& point) {
    const bool onLink = m_firstLink >= 0 && !linkAt(content(), m_flow.characterAt(point)).isNone();
    const Qt::CursorShape shape = onLink ? Qt::PointingHandCursor : Qt::IBeamCursor;
    if (cursor().shape() != shape)
        setCursor(shape);
}

void TextView::leaveEvent(QEvent*) {
    setCursor(Qt::IBeamCursor);
}

void TextView::contextMenuEvent(QContextMenuEvent* event) {
    if (!m_openContextMenu) {
        event->ignore();
        return;
    }
    QPoint point = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        const QRect shown = visibleRegion().boundingRect();
        point = mapToGlobal(shown.isEmpty() ? rect().center() : shown.center());
    }
    m_openContextMenu(point);
}

// Keyboard and the rest

void TextView::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (event->matches(QKeySequence::Copy) && hasSelection()) {
        copySelection();
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (isReturn && plain && !m_focusedLink.isEmpty()) {
        const TextLink link = linkAt(content(), m_focusedLink.start);
        if (!link.isNone() && m_openLink)
            m_openLink(link.address);
    } else {
        event->ignore();
    }
}

bool TextView::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const TextLink link = linkAt(content(), m_flow.characterAt(help->pos()));
        if (link.isNone())
            QToolTip::hideText();
        else
            QToolTip::showText(help->globalPos(), link.address.toDisplayString().toHtmlEscaped(),
                               this);
        return true;
    }
    return QWidget::event(event);
}

} // namespace platform

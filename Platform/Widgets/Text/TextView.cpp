// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Text/TextView.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Scrolling/AbstractScrollArea.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>
#include <QToolTip>

#include <algorithm>
#include <utility>

namespace platform {

TextView::TextView(const Theme& theme, Background background, QWidget* parent)
    : QWidget(parent)
    , m_dragScroll(this, [this](QPointF point) { extendSelection(m_flow.positionAt(point)); }) {
    QAccessible::installFactory(makeAccessible); // once, however often it is called
    setFocusPolicy(Qt::ClickFocus);
    setMouseTracking(true);
    setCursor(Qt::IBeamCursor);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    observe(this, [this, &theme, background] {
        m_flow.setFormat(TextFormat::of(theme, background == Background::Accent));
        updateGeometry();
        update();
    });
}

void TextView::setText(const TextSnapshot& text, bool isMarkdown) {
    const bool isSameKind = std::exchange(m_isMarkdown, isMarkdown) == isMarkdown;
    if (isSameKind && text == m_source)
        return;
    if (!isSameKind || !text.continues(m_source))
        m_done = {};
    m_source = text;
    const qsizetype from = m_done.result;
    if (isMarkdown) {
        replaceTail(from, InlineMarkdown::parseOn(text.view(), m_done));
    } else {
        m_done.result = text.size();
        replaceTail(from, {text.view().mid(from).toString(), {}});
    }
}

void TextView::replaceTail(qsizetype from, const AttributedString& tail) {
    const QSize before = sizeHint();
    const qreal changed = m_flow.replaceTail(from, tail);
    if (changed < 0)
        return;
    const qsizetype size = content().text.size();
    m_selection.limit(size);
    m_focusedLink = m_focusedLink.within(size);
    m_pressedLink = m_pressedLink.within(size);
    // Tab stops at a view that has links, so the first one is known at every moment.
    if (m_firstLink < 0 || m_firstLink >= from) {
        const TextLink first = linkFrom(content(), from);
        m_firstLink = first.isNone() ? -1 : first.span.start;
        setFocusPolicy(first.isNone() ? Qt::ClickFocus : Qt::StrongFocus);
    }
    if (before != sizeHint())
        updateGeometry();
    update(0, static_cast<int>(changed), width(), height());
}

void TextView::fit(int width) const {
    if (width > m_flow.width() || width < sizeHint().width()) // else its lines hold
        m_flow.setWidth(width);
}

QSize TextView::sizeWithin(int maximumWidth) {
    m_flow.setWidth(maximumWidth);
    return {std::clamp(sizeHint().width(), 1, std::max(maximumWidth, 1)), sizeHint().height()};
}

int TextView::heightForWidth(int width) const {
    fit(width);
    return sizeHint().height();
}

void TextView::resizeEvent(QResizeEvent*) {
    fit(width());
    m_flow.setFrameWidth(width());
}

void TextView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    m_flow.draw(painter, {0, 0}, event->rect(), marksWithin(event->rect()));
    if (hasFocus() && !m_focusedLink.isEmpty()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(m_flow.format().focusRing, 2));
        for (const QRectF& rect : m_flow.rects(m_focusedLink.start, m_focusedLink.end))
            painter.drawRoundedRect(rect.adjusted(-1, 0, 1, 0), 3, 3);
    }
}

void TextView::setFound(const QString& text, std::optional<qsizetype> current) {
    if (text == m_found && current == m_currentFound)
        return;
    m_found = text;
    m_currentFound = current;
    update();
}

/// What has a colour of its own behind it.
QList<TextFlow::Mark> TextView::marksWithin(const QRect& clip) const {
    QList<TextFlow::Mark> marks;
    for (const TextSpan& place : m_flow.placesOf(m_found, clip)) {
        const bool isCurrent = place.start == m_currentFound;
        marks.append({place, isCurrent ? m_flow.format().foundCurrent : m_flow.format().found});
    }
    marks.append({selection(), m_flow.format().selection});
    return marks;
}

// Selection

void TextView::setSelection(const TextSelection& selection) {
    const TextSpan before = m_selection.span();
    m_selection = selection;
    const TextSpan now = m_selection.span();
    updateSpan({std::min(before.start, now.start), std::max(before.start, now.start)});
    updateSpan({std::min(before.end, now.end), std::max(before.end, now.end)});
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
    updateSpan(std::exchange(m_focusedLink, link));
    updateSpan(link);
    auto* area = link.isEmpty() ? nullptr : AbstractScrollArea::around(this);
    if (area)
        area->reveal(this, m_flow.characterRect(link.start).toAlignedRect());
}

bool TextView::focusNextPrevChild(bool next) {
    const TextLink link =
        next ? linkFrom(content(), m_focusedLink.end) : linkUpTo(content(), m_focusedLink.start);
    if (link.isNone())
        return QWidget::focusNextPrevChild(next);
    setFocusedLink(link.span);
    return true;
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
    const bool isDoubleClick = event->type() == QEvent::MouseButtonDblClick;
    const int interval = QGuiApplication::styleHints()->mouseDoubleClickInterval();
    const bool isThird = m_sinceDoubleClick.isValid() && m_sinceDoubleClick.elapsed() < interval;
    const qsizetype character = m_flow.characterAt(event->position());
    const qsizetype position = m_flow.positionAt(event->position());
    setFocusedLink({});
    m_pressed = event->pos();
    m_pressedLink = isDoubleClick ? TextSpan() : linkAt(content(), character).span;
    m_isSelecting = true;
    m_sinceDoubleClick.invalidate();
    if (isDoubleClick) {
        setSelection({content().text, character < 0 ? position : character, TextUnit::Word});
        m_sinceDoubleClick.start();
    } else if (isThird) {
        setSelection({content().text, position, TextUnit::Paragraph});
    } else if (event->modifiers() & Qt::ShiftModifier) {
        extendSelection(position);
    } else {
        select({position, position});
    }
}

void TextView::mouseMoveEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton) || !m_isSelecting) {
        const bool isOnLink = m_firstLink >= 0 && !linkUnder(event->position()).isNone();
        const Qt::CursorShape shape = isOnLink ? Qt::PointingHandCursor : Qt::IBeamCursor;
        if (cursor().shape() != shape)
            setCursor(shape);
        return;
    }
    const int distance = QGuiApplication::styleHints()->startDragDistance();
    if (!m_pressedLink.isEmpty() && (event->pos() - m_pressed).manhattanLength() < distance)
        return; // still a click
    m_pressedLink = {};
    extendSelection(m_flow.positionAt(event->position()));
    m_dragScroll.follow(event->globalPosition().toPoint());
}

void TextView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_isSelecting = false;
    m_dragScroll.stop();
    const TextLink link = linkUnder(event->position());
    const bool isClick = !m_pressedLink.isEmpty() && link.span == m_pressedLink;
    m_pressedLink = {};
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (hasSelection() && clipboard->supportsSelection())
        clipboard->setText(selectedText(), QClipboard::Selection);
    if (isClick && !hasSelection() && m_openLink)
        m_openLink(link.address);
}

// Keyboard and the rest

void TextView::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool isPlain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    if (event->matches(QKeySequence::Copy) && hasSelection()) {
        QGuiApplication::clipboard()->setText(selectedText());
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (isReturn && isPlain && !m_focusedLink.isEmpty()) {
        const TextLink link = linkAt(content(), m_focusedLink.start);
        if (!link.isNone() && m_openLink)
            m_openLink(link.address);
    } else {
        event->ignore();
    }
}

bool TextView::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const QString address = linkUnder(help->pos()).address.toDisplayString();
    QToolTip::showText(help->globalPos(), address.toHtmlEscaped(), this); // none without a link
    return true;
}

} // namespace platform

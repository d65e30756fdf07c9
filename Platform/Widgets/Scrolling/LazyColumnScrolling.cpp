// SPDX-License-Identifier: MIT
// How a LazyColumn moves: keys, wheel, touch and animation. What it shows is in LazyColumn.cpp.
#include "Platform/Widgets/Scrolling/LazyColumn.h"
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollEvent>
#include <QScroller>
#include <QWheelEvent>

#include <algorithm>
#include <chrono>
#include <cmath>

using namespace std::chrono_literals;

namespace platform {
namespace {

constexpr int frame = 16; // milliseconds
constexpr auto animationLength = 200ms;
constexpr int lineStep = 40;
constexpr qreal notchStep = 100; // pixels for one notch of a mouse wheel

} // namespace

void LazyColumn::moveTo(int position) {
    m_scroll = std::clamp(position, 0, maximumScroll());
    noteAnchor();
    layOut(Hold::Anchor);
}

void LazyColumn::setScrollPosition(int position) {
    stopMotion();
    moveTo(position);
    m_bar->flash();
}

void LazyColumn::scrollBy(qreal distance) {
    const qreal exact = m_scroll + m_fraction + distance;
    const auto whole = static_cast<int>(std::floor(exact));
    m_fraction = exact - whole;
    moveTo(whole);
    m_bar->flash();
    if (m_scroll != whole)
        m_fraction = 0; // at an end
}

void LazyColumn::scrollToBottom(bool animated) {
    stopMotion();
    layOut(Hold::Anchor);
    const auto duration = m_theme.motion().duration(animationLength);
    m_remaining = maximumScroll() - m_scroll;
    if (animated && duration.count() > 0 && m_remaining > 0 && isVisible()) {
        m_animation.setDuration(static_cast<int>(duration.count()));
        m_animation.start();
        return;
    }
    layOut(Hold::Bottom);
}

void LazyColumn::scrollToRow(qsizetype row) {
    if (row < 0 || row >= static_cast<qsizetype>(m_rows.size()))
        return;
    reveal(this, rowRect(row));
    reveal(this, rowRect(row)); // its place was a guess until it was near
}

void LazyColumn::stopMotion() {
    m_animation.stop();
    m_kinetic.stop();
    m_kineticTimer.stop();
    m_fraction = 0;
}

bool LazyColumn::scrollForKey(int key) {
    const int page = std::max(lineStep, height() - 2 * lineStep);
    switch (key) {
    case Qt::Key_Up:
        setScrollPosition(m_scroll - lineStep);
        return true;
    case Qt::Key_Down:
        setScrollPosition(m_scroll + lineStep);
        return true;
    case Qt::Key_PageUp:
        setScrollPosition(m_scroll - page);
        return true;
    case Qt::Key_PageDown:
        setScrollPosition(m_scroll + page);
        return true;
    case Qt::Key_Home:
        setScrollPosition(0);
        return true;
    case Qt::Key_End:
        scrollToBottom(false);
        return true;
    default:
        return false;
    }
}

void LazyColumn::keyPressEvent(QKeyEvent* event) {
    const auto others = event->modifiers() & ~(Qt::KeypadModifier | Qt::ControlModifier);
    const bool control = event->modifiers() & Qt::ControlModifier;
    const bool edges = event->key() == Qt::Key_Home || event->key() == Qt::Key_End;
    if (others || (control && !edges) || !scrollForKey(event->key()))
        event->ignore();
}

void LazyColumn::wheelEvent(QWheelEvent* event) {
    const bool continuous = event->phase() != Qt::NoScrollPhase && event->hasPixelDelta();
    m_animation.stop();
    if (event->phase() == Qt::ScrollEnd) {
        if (m_theme.motion().isEnabled() && m_kinetic.released(m_clock.elapsed()))
            m_kineticTimer.start(frame, this);
        event->accept();
        return;
    }
    m_kineticTimer.stop();
    // On X11 pixels are said by drivers of many minds; there is no phase there.
    const qreal distance =
        continuous ? -event->pixelDelta().y() : -event->angleDelta().y() / 120.0 * notchStep;
    if (event->angleDelta().y() == 0 && !continuous) {
        event->ignore();
        return;
    }
    if (continuous && event->phase() != Qt::ScrollMomentum)
        m_kinetic.moved(distance, m_clock.elapsed());
    scrollBy(distance);
    event->accept();
}

void LazyColumn::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_kineticTimer.timerId()) {
        const qreal distance = m_kinetic.advance(m_clock.elapsed());
        const int before = m_scroll;
        scrollBy(distance);
        const bool stuck = m_scroll == before && std::abs(distance) >= 1;
        if (!m_kinetic.isRunning() || stuck)
            stopMotion();
    } else if (event->timerId() == m_selectionTimer.timerId()) {
        followSelection();
    } else {
        QWidget::timerEvent(event);
    }
}

bool LazyColumn::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::LayoutRequest:
        layOut(Hold::Anchor);
        return true;
    case QEvent::ScrollPrepare: {
        auto* prepare = static_cast<QScrollPrepareEvent*>(event);
        stopMotion();
        prepare->setViewportSize(size());
        prepare->setContentPosRange({0, 0, 0, static_cast<qreal>(maximumScroll())});
        prepare->setContentPos({0, static_cast<qreal>(m_scroll)});
        prepare->accept();
        return true;
    }
    case QEvent::Scroll:
        moveTo(qRound(static_cast<QScrollEvent*>(event)->contentPos().y()));
        return true;
    default:
        return QWidget::event(event);
    }
}

// A selection drawn beyond the edge

/// Reached by the moves that a text inside leaves to its parents while a selection is drawn.
void LazyColumn::mouseMoveEvent(QMouseEvent* event) {
    m_selectionPoint = event->globalPosition();
    const bool beyond = event->position().y() < 0 || event->position().y() >= height();
    if ((event->buttons() & Qt::LeftButton) && beyond) {
        if (!m_selectionTimer.isActive())
            m_selectionTimer.start(frame, this);
    } else {
        m_selectionTimer.stop();
    }
}

void LazyColumn::followSelection() {
    QWidget* text = QApplication::focusWidget();
    const qreal y = mapFromGlobal(m_selectionPoint).y();
    const qreal beyond = y < 0 ? y : y - height() + 1;
    const bool draws = QGuiApplication::mouseButtons() & Qt::LeftButton;
    if (!draws || !text || !isAncestorOf(text) || (y >= 0 && y < height())) {
        m_selectionTimer.stop();
        return;
    }
    stopMotion();
    moveTo(m_scroll + static_cast<int>(std::clamp(beyond / 4, -40.0, 40.0)) +
           (beyond < 0 ? -1 : 1));
    QMouseEvent move(QEvent::MouseMove, text->mapFromGlobal(m_selectionPoint), m_selectionPoint,
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(text, &move);
}

// Focus

void LazyColumn::focusMoved(QWidget* now) {
    if (!now || now == this || !isAncestorOf(now) ||
        QGuiApplication::mouseButtons() != Qt::NoButton)
        return;
    reveal(now, now->rect());
}

void LazyColumn::reveal(const QWidget* inside, const QRect& part) {
    const QRect rect = QRect(inside->mapTo(this, part.topLeft()), part.size());
    const bool isTooHigh = rect.height() + 2 * Theme::rowSpacing > height();
    if (isTooHigh && rect.top() < height() && rect.bottom() >= 0)
        return; // some of it is visible, and there is no better place
    if (rect.top() < 0 || isTooHigh)
        setScrollPosition(m_scroll + rect.top() - Theme::rowSpacing);
    else if (rect.bottom() >= height())
        setScrollPosition(m_scroll + rect.bottom() + 1 - height() + Theme::rowSpacing);
}

void LazyColumn::focusInEvent(QFocusEvent* event) {
    m_showsFocus =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    update();
}

void LazyColumn::focusOutEvent(QFocusEvent*) {
    m_showsFocus = false;
    update();
}

void LazyColumn::paintEvent(QPaintEvent*) {
    if (!m_showsFocus)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_theme.color(ColorRole::FocusRing), Theme::focusRingWidth - 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(2, 2, -2, -2), Theme::controlRadius,
                            Theme::controlRadius);
}

} // namespace platform

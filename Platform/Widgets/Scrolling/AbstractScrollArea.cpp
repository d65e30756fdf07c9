// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/AbstractScrollArea.h"

#include "Platform/Widgets/Look/Painting.h"
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollEvent>
#include <QScroller>
#include <QStyle>
#include <QWheelEvent>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace platform {
namespace {

constexpr qreal linePoints = 20; // a line of text and the space to the next
constexpr int notch = 120;       // eighths of a degree
constexpr int margin = 24;       // around what is brought into view

} // namespace

AbstractScrollArea::AbstractScrollArea(const Theme& theme, QWidget* parent,
                                       Qt::Orientation orientation)
    : QWidget(parent)
    , m_theme(theme)
    , m_orientation(orientation)
    , m_motion(
          theme.motion(), [this](qreal distance) { scrollBy(distance); },
          [this] { return maximum() - m_offset; }, this) {
    if (isVertical()) {
        m_bar = new OverlayScrollBar(theme, this);
        connect(m_bar, &QAbstractSlider::valueChanged, this, &AbstractScrollArea::setOffset);
    }
    // A mouse draws selections in a vertical area, and drags a horizontal one.
    QScroller::grabGesture(this, isVertical() ? QScroller::TouchGesture
                                              : QScroller::LeftMouseButtonGesture);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* before, QWidget* now) {
        // From nowhere: the window has become active again, and nobody asked for another view.
        if (before && now && now != this && isAncestorOf(now) &&
            QGuiApplication::mouseButtons() == Qt::NoButton)
            reveal(now, now->rect());
    });
}

AbstractScrollArea::~AbstractScrollArea() {
    // The focus leaves the content when it is destroyed, and then this is no area any more.
    disconnect(qApp, nullptr, this, nullptr);
    QScroller::ungrabGesture(this);
}

AbstractScrollArea* AbstractScrollArea::around(const QWidget* widget) {
    for (QWidget* outer = widget->parentWidget(); outer; outer = outer->parentWidget())
        if (auto* area = qobject_cast<AbstractScrollArea*>(outer))
            return area;
    return nullptr;
}

int AbstractScrollArea::maximum() const {
    return std::max(0, contentLength() - length());
}

QRect AbstractScrollArea::mirrored(const QRect& rect) const {
    return QStyle::visualRect(layoutDirection(), this->rect(), rect);
}

void AbstractScrollArea::updateBar() {
    m_laidOut = maximum();
    m_isHeldByUser = m_isHeldByUser && !isAtEnd();
    m_showsStart = m_offset == 0;
    m_showsEnd = isAtEnd() || isScrollingToEnd();
    if (!m_bar)
        return;
    const int breadth = m_bar->sizeHint().width();
    m_bar->setGeometry(mirrored({width() - breadth, 0, breadth, height()}));
    m_bar->raise();
    const QSignalBlocker blocker(m_bar);
    m_bar->setRange(0, m_laidOut);
    m_bar->setPageStep(height());
    if (!m_bar->isSliderDown())
        m_bar->setValue(m_offset);
}

// Movement

void AbstractScrollArea::adoptOffset(int offset) {
    m_offset = std::clamp(offset, 0, maximum());
}

void AbstractScrollArea::moveTo(int offset, bool isByUser) {
    adoptOffset(offset);
    offsetChanged();
    m_isHeldByUser = isByUser; // unless this is the end
    layOut();
}

void AbstractScrollArea::setOffset(int offset) {
    m_motion.haltAll();
    m_fraction = 0;
    moveTo(offset, true);
    if (m_bar)
        m_bar->flash();
}

void AbstractScrollArea::scrollBy(qreal distance) {
    const qreal exact = m_offset + m_fraction + distance;
    const int whole = qRound(exact);
    m_fraction = exact - whole;
    moveTo(whole, !isScrollingToEnd());
    if (m_bar && !isScrollingToEnd())
        m_bar->flash();
    if ((distance < 0 && m_offset == 0) || (distance > 0 && m_offset == maximum())) {
        m_fraction = 0;
        m_motion.halt();
    }
}

void AbstractScrollArea::scrollToEnd(bool animated) {
    m_motion.haltAll();
    if (animated && isVisible() && m_theme.motion().isEnabled()) {
        m_isHeldByUser = false;
        m_motion.goToEnd();
        layOut();
        return;
    }
    do // the end may turn out to be elsewhere when it comes into view
        moveTo(maximum(), false);
    while (m_offset < maximum());
}

void AbstractScrollArea::reveal(const QWidget* inside, const QRect& part) {
    const QRect rect = mirrored({inside->mapTo(this, part.topLeft()), part.size()});
    const int start = along(rect.topLeft());
    const int end = along(rect.bottomRight()) + 1;
    const bool isTooLong = end - start + 2 * margin > length();
    if (isTooLong && start < length() && end > 0)
        return; // some of it is visible, and there is no better place
    if (start < 0 || isTooLong)
        setOffset(m_offset + start - margin);
    else if (end > length())
        setOffset(m_offset + end + margin - length());
}

// Wheel and touchpad

int AbstractScrollArea::lineStep() const {
    return qRound(m_theme.scaled(linePoints));
}

int AbstractScrollArea::pageStep() const {
    return std::max(lineStep(), length() - 2 * lineStep());
}

/// What a turn of the wheel or the fingers means here; nothing (0) if it is meant for an area
/// around.
qreal AbstractScrollArea::wheelDistance(const QPoint& delta,
                                        Qt::KeyboardModifiers modifiers) const {
    if (isVertical())
        return -delta.y();
    if (std::abs(delta.x()) > std::abs(delta.y()))
        return isMirrored() ? delta.x() : -delta.x();
    return modifiers.testFlag(Qt::ShiftModifier) ? -delta.y() : 0;
}

void AbstractScrollArea::wheelEvent(QWheelEvent* event) {
    const Qt::ScrollPhase phase = event->phase();
    // Without a phase (on X11) pixels are what each driver makes of them, and no measure.
    const bool isTouchpad = phase != Qt::NoScrollPhase && event->hasPixelDelta();
    const qreal delta =
        wheelDistance(isTouchpad ? event->pixelDelta() : event->angleDelta(), event->modifiers());
    const int notchStep = std::min(QApplication::wheelScrollLines() * lineStep(), pageStep());
    const qreal distance = isTouchpad ? delta : delta / notch * notchStep;
    const bool zooms = event->modifiers() & Qt::ControlModifier; // which is the window's
    if (maximum() == 0 || zooms) {
        event->ignore();
    } else if (phase == Qt::ScrollBegin) {
        m_motion.haltAll(); // and accepted: the rest of the movement comes here
    } else if (phase == Qt::ScrollEnd && m_motion.fingersLeft(event->timestamp())) {
        event->accept();
    } else if (delta == 0) {
        AbstractScrollArea* outer = phase == Qt::NoScrollPhase ? nullptr : around(this);
        if (outer)
            QCoreApplication::sendEvent(outer, event);
        else
            event->ignore();
    } else if (!isTouchpad && std::abs(delta) >= notch) {
        m_motion.step(distance);
    } else { // touchpads and fine wheels are smooth by themselves
        if (isTouchpad && phase != Qt::ScrollMomentum)
            m_motion.fingersMoved(distance, event->timestamp());
        else
            m_motion.halt();
        scrollBy(distance);
    }
}

// Keyboard

void AbstractScrollArea::keyPressEvent(QKeyEvent* event) {
    event->setAccepted(scrollByKey(*event));
}

bool AbstractScrollArea::scrollByKey(const QKeyEvent& event) {
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const auto isWith = [modifiers](Qt::KeyboardModifiers allowed) {
        return (modifiers & ~allowed) == Qt::NoModifier;
    };
    const int key = event.key();
    const int back = isVertical() ? Qt::Key_Up : isRightToLeft() ? Qt::Key_Right : Qt::Key_Left;
    const int on = isVertical() ? Qt::Key_Down : isRightToLeft() ? Qt::Key_Left : Qt::Key_Right;
    if (maximum() == 0)
        return false;
    if ((key == back || key == on) && isWith({}))
        m_motion.step((key == on ? 2 : -2) * lineStep());
    else if (!isVertical())
        return false;
    else if ((key == Qt::Key_PageUp || key == Qt::Key_PageDown) && isWith({}))
        m_motion.step(key == Qt::Key_PageDown ? pageStep() : -pageStep());
    else if (key == Qt::Key_Space && isWith(Qt::ShiftModifier))
        m_motion.step(modifiers ? -pageStep() : pageStep());
    else if (key == Qt::Key_Home && isWith(Qt::ControlModifier))
        setOffset(0);
    else if (key == Qt::Key_End && isWith(Qt::ControlModifier))
        scrollToEnd(false);
    else
        return false;
    return true;
}

void AbstractScrollArea::focusInEvent(QFocusEvent* event) {
    m_showsFocusRing = showsFocusRing(event->reason(), m_showsFocusRing);
    QWidget::focusInEvent(event);
}

void AbstractScrollArea::paintEvent(QPaintEvent*) {
    if (!m_showsFocusRing || !hasFocus())
        return;
    QPainter painter(this);
    paintFocusRing(painter, m_theme, rect(), Theme::controlRadius);
}

// Touch, and the rest

bool AbstractScrollArea::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::LayoutRequest:
        layOut();
        return true;
    case QEvent::ScrollPrepare:
        prepareTouch(*static_cast<QScrollPrepareEvent*>(event));
        return true;
    case QEvent::Scroll: {
        const qreal now = along(static_cast<QScrollEvent*>(event)->contentPos());
        const qreal distance = now - std::exchange(m_touched, now);
        scrollBy(isMirrored() ? -distance : distance);
        return true;
    }
    default:
        return QWidget::event(event);
    }
}

void AbstractScrollArea::prepareTouch(QScrollPrepareEvent& event) {
    const qreal whole = maximum();
    event.setAccepted(whole > 0); // else an area around may scroll
    m_motion.halt();
    m_touched = isMirrored() ? whole - m_offset : m_offset;
    const auto place = [this](qreal at) { return isVertical() ? QPointF(0, at) : QPointF(at, 0); };
    event.setViewportSize(size());
    event.setContentPosRange({QPointF(0, 0), place(whole)});
    event.setContentPos(place(m_touched));
}

} // namespace platform

// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"

#include "Platform/Observation/Observer.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace platform {
namespace {

constexpr int trackWidth = 12;
constexpr int thinThumb = 5;
constexpr int wideThumb = 8;
constexpr int edge = 2;
constexpr int shortestThumb = 28;
constexpr int shownFor = 900; // milliseconds

} // namespace

OverlayScrollBar::OverlayScrollBar(const Theme& theme, QWidget* parent)
    : QAbstractSlider(parent)
    , m_theme(theme) {
    setRange(0, 0); // nothing to scroll until the owner says otherwise
    setOrientation(Qt::Vertical);
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    setAttribute(Qt::WA_NoMousePropagation);
    observe(this, [this] {
        m_theme.color(ColorRole::ScrollThumb);
        update();
    });
}

QSize OverlayScrollBar::sizeHint() const {
    return {trackWidth, 100};
}

void OverlayScrollBar::addAccessibleState(QAccessible::State& state) const {
    if (thumb().isEmpty())
        state.invisible = true;
}

QRect OverlayScrollBar::thumb() const {
    const int range = maximum() - minimum();
    if (range <= 0)
        return {};
    const int track = height() - 2 * edge;
    const qint64 whole = qint64(range) + pageStep();
    const int length = std::min(
        track, std::max(shortestThumb, static_cast<int>(qint64(track) * pageStep() / whole)));
    const int top =
        edge + static_cast<int>(qint64(track - length) * (sliderPosition() - minimum()) / range);
    const int width = m_isHovered || isSliderDown() ? wideThumb : thinThumb;
    return {this->width() - width - edge, top, width, length};
}

int OverlayScrollBar::travel() const {
    return std::max(1, height() - 2 * edge - thumb().height());
}

void OverlayScrollBar::flash() {
    if (maximum() <= minimum())
        return;
    if (!m_isShown) {
        m_isShown = true;
        update();
    }
    m_hide.start(shownFor, this);
}

void OverlayScrollBar::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_hide.timerId()) {
        QAbstractSlider::timerEvent(event);
        return;
    }
    if (m_isHovered || isSliderDown())
        return; // and ask again later
    m_hide.stop();
    m_isShown = false;
    update();
}

void OverlayScrollBar::sliderChange(SliderChange change) {
    QAbstractSlider::sliderChange(change);
    update();
}

void OverlayScrollBar::paintEvent(QPaintEvent*) {
    if (!m_isShown)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_theme.color(ColorRole::ScrollThumb));
    const QRectF rect = thumb();
    painter.drawRoundedRect(rect, rect.width() / 2, rect.width() / 2);
}

void OverlayScrollBar::enterEvent(QEnterEvent*) {
    m_isHovered = true;
    flash();
    update();
}

void OverlayScrollBar::leaveEvent(QEvent*) {
    m_isHovered = false;
    update();
}

void OverlayScrollBar::mousePressEvent(QMouseEvent* event) {
    const QRect rect = thumb();
    if (event->button() != Qt::LeftButton || rect.isEmpty())
        return;
    const int y = event->pos().y();
    if (y < rect.top()) {
        triggerAction(SliderPageStepSub);
    } else if (y > rect.bottom()) {
        triggerAction(SliderPageStepAdd);
    } else {
        m_grip = y - rect.top();
        setSliderDown(true);
        update();
    }
}

void OverlayScrollBar::mouseMoveEvent(QMouseEvent* event) {
    if (!isSliderDown())
        return;
    const qint64 range = maximum() - minimum();
    const int top = std::clamp(event->pos().y() - m_grip - edge, 0, travel());
    setSliderPosition(minimum() + static_cast<int>(range * top / travel()));
}

void OverlayScrollBar::mouseReleaseEvent(QMouseEvent*) {
    setSliderDown(false);
    update();
}

/// The column under the bar scrolls.
void OverlayScrollBar::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

} // namespace platform

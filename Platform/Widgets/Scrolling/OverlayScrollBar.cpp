// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"

#include "Platform/Widgets/Look/Contrast.h"
#include "Platform/Widgets/Look/Painting.h"

#include <QCommonStyle>
#include <QPainter>
#include <QStyleOptionSlider>
#include <QTimerEvent>
#include <QWheelEvent>

namespace platform {
namespace {

constexpr int trackWidth = 12; // what the pointer meets
constexpr int minimumThumb = 32;
constexpr int thinThumb = 5;
constexpr int wideThumb = 8;   // under the pointer
constexpr int edge = 2;        // between the thumb and the edges
constexpr int shownFor = 1200; // milliseconds
constexpr std::chrono::milliseconds fadeLength{200};

/// The sizes of a bar that is nothing but its thumb, whatever the desktop's style.
class BarStyle final : public QCommonStyle {
public:
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override {
        if (metric == PM_ScrollBarExtent)
            return trackWidth;
        if (metric == PM_ScrollBarSliderMin)
            return minimumThumb + 2 * edge;
        return QCommonStyle::pixelMetric(metric, option, widget);
    }
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        if (hint == SH_ScrollBar_Transient) // without buttons at its ends
            return 1;
        return QCommonStyle::styleHint(hint, option, widget, data);
    }
};

} // namespace

OverlayScrollBar::OverlayScrollBar(const Theme& theme, QWidget* parent)
    : QScrollBar(Qt::Vertical, parent)
    , m_theme(theme) {
    auto* style = new BarStyle;
    style->setParent(this);
    setStyle(style);
    setRange(0, 0); // until the owner says otherwise
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    setCursor(Qt::ArrowCursor);
    setContextMenuPolicy(Qt::PreventContextMenu);
    m_fade.setStartValue(1.0);
    m_fade.setEndValue(0.0);
    connect(&m_fade, &QVariantAnimation::valueChanged, this, [this] { update(); });
}

QRect OverlayScrollBar::thumb() const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect slider =
        style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
    const int breadth = underMouse() || isSliderDown() ? wideThumb : thinThumb;
    return QStyle::visualRect(
        layoutDirection(), rect(),
        {width() - breadth - edge, slider.top() + edge, breadth, slider.height() - 2 * edge});
}

void OverlayScrollBar::flash() {
    m_shown.start(shownFor, this);
    m_fade.stop();
    update();
}

void OverlayScrollBar::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_shown.timerId()) {
        QScrollBar::timerEvent(event);
    } else if (!underMouse() && !isSliderDown()) { // else asks again later
        m_shown.stop();
        m_fade.setDuration(static_cast<int>(m_theme.motion().duration(fadeLength).count()));
        m_fade.start();
        update();
    }
}

void OverlayScrollBar::sliderChange(SliderChange change) {
    QScrollBar::sliderChange(change);
    if (change == SliderRangeChange)
        setVisible(maximum() > minimum());
}

void OverlayScrollBar::paintEvent(QPaintEvent*) {
    const bool isFading = m_fade.state() == QAbstractAnimation::Running;
    if (!m_shown.isActive() && !isFading)
        return;
    const double shown = isFading ? m_fade.currentValue().toDouble() : 1;
    QPainter painter(this);
    fillRounded(painter, thumb(), wideThumb,
                withOpacity(m_theme.color(ColorRole::ScrollThumb), shown));
}

void OverlayScrollBar::enterEvent(QEnterEvent* event) {
    QScrollBar::enterEvent(event);
    flash();
}

/// The area under the bar scrolls.
void OverlayScrollBar::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

} // namespace platform

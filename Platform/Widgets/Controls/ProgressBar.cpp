// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/ProgressBar.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Look/Contrast.h"
#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>
#include <QStyle>
#include <QVariantAnimation>

#include <algorithm>
#include <utility>

namespace platform {

namespace {

constexpr double pieceLength = 0.3; // of the bar, while nobody can tell

} // namespace

ProgressBar::ProgressBar(const Theme& theme, const QString& name)
    : m_theme(theme) {
    setAccessibleName(name);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setRange(0, 100);
    setValue(0);
    observe(this, [this] {
        static_cast<void>(m_theme.color(ColorRole::AccentFill));
        updateMotion();
        update();
    });
}

void ProgressBar::setFraction(std::optional<double> fraction) {
    if (fraction)
        fraction = std::clamp(*fraction, 0.0, 1.0);
    if (std::exchange(m_fraction, fraction) == fraction)
        return;
    setMaximum(fraction ? 100 : 0);
    if (fraction)
        setValue(static_cast<int>(*fraction * 100));
    updateMotion();
    update();
}

void ProgressBar::updateMotion() {
    const bool isWanted = m_theme.motion().isEnabled(); // read each time, and so observed
    const bool isMoving = isWanted && !m_fraction && isVisible();
    if (isMoving == (m_motion != nullptr))
        return;
    if (!isMoving) {
        delete std::exchange(m_motion, nullptr);
        return;
    }
    m_motion = new QVariantAnimation(this);
    m_motion->setKeyValues({{0, 0.0}, {0.5, 1.0}, {1, 0.0}});
    m_motion->setDuration(2400);
    m_motion->setLoopCount(-1);
    connect(m_motion, &QVariantAnimation::valueChanged, this, [this] { update(); });
    m_motion->start();
}

void ProgressBar::showEvent(QShowEvent* event) {
    QProgressBar::showEvent(event);
    updateMotion();
}

void ProgressBar::hideEvent(QHideEvent* event) {
    QProgressBar::hideEvent(event);
    updateMotion();
}

void ProgressBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QRect track(0, (height() - thickness) / 2, width(), thickness);
    constexpr double radius = thickness / 2.0;
    fillRounded(painter, track, radius, m_theme.color(ColorRole::AssistantBubble));
    strokeRounded(painter, track, radius, m_theme.color(ColorRole::FieldBorder));

    const auto fill = m_theme.color(ColorRole::AccentFill);
    auto part = track;
    if (m_fraction) {
        if (*m_fraction <= 0)
            return;
        part.setWidth(std::max(thickness, qRound(*m_fraction * width())));
    } else if (m_motion) {
        part.setWidth(std::max(thickness, qRound(pieceLength * width())));
        part.moveLeft(qRound(m_motion->currentValue().toReal() * (width() - part.width())));
    }
    fillRounded(painter, QStyle::visualRect(layoutDirection(), rect(), part), radius,
                m_fraction || m_motion ? fill : withOpacity(fill, 0.5));
}

} // namespace platform

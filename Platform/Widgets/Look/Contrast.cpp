// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Contrast.h"

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

double linear(double channel) {
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

QColor mixed(const QColor& from, const QColor& to, double share) {
    const auto mix = [share](float a, float b) { return a + (b - a) * static_cast<float>(share); };
    const auto rgb = QColor::fromRgbF(mix(from.redF(), to.redF()), mix(from.greenF(), to.greenF()),
                                      mix(from.blueF(), to.blueF()));
    return QColor(rgb.rgb()); // eight bits a channel: measured as it is painted
}

} // namespace

double contrastRatio(const QColor& one, const QColor& other) {
    const auto a = luminance(one);
    const auto b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

QColor composed(const QColor& top, const QColor& background) {
    return mixed(background, QColor(top.rgb()), top.alphaF());
}

QColor withOpacity(QColor color, double opacity) {
    color.setAlphaF(color.alphaF() * static_cast<float>(opacity));
    return color;
}

QColor adjustedForContrast(const QColor& color, const QColor& background, const QColor& towards,
                           double ratio) {
    constexpr int steps = 64;
    for (int step = 0; step < steps; ++step) {
        const auto candidate = mixed(color, towards, static_cast<double>(step) / steps);
        if (contrastRatio(candidate, background) >= ratio)
            return candidate;
    }
    return towards;
}

} // namespace platform

// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>

namespace platform {

/// The contrast ratio of two opaque colours as the web's accessibility guidelines define it: from 1
/// (equal) to 21 (black on white). Text is readable for most people from 4.5 on.
double contrastRatio(const QColor& one, const QColor& other);

/// What the eye sees where `top`, possibly translucent, lies on the opaque `background`.
QColor composed(const QColor& top, const QColor& background);

/// `color` with its alpha multiplied by `opacity` (0 to 1).
QColor withOpacity(QColor color, double opacity);

/// `color` made darker (`towards` black) or lighter (`towards` white), its hue kept, just as far as
/// it takes to reach the contrast `ratio` on the opaque `background`; `towards` itself if nothing
/// less will do.
QColor adjustedForContrast(const QColor& color, const QColor& background, const QColor& towards,
                           double ratio);

} // namespace platform

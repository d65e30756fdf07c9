// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QProgressBar>

#include <optional>

class QVariantAnimation;

namespace platform {

/// How far something has come: a bar that fills from its leading edge or, while nobody can tell how
/// far, a piece of it that goes to and fro where motion is enabled.
///
/// Assistive technology is told of whole percents, and not of what changes between them.
class ProgressBar final : public QProgressBar {
    Q_OBJECT

public:
    static constexpr int thickness = 6;

    /// `theme` outlives the bar; `name` is what assistive technology calls it.
    ProgressBar(const Theme& theme, const QString& name);

    /// 0 to 1, as `value` of 100; none: nobody can tell.
    void setFraction(std::optional<double> fraction);

    QSize sizeHint() const override { return {100, thickness}; }
    QSize minimumSizeHint() const override { return {40, thickness}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    /// Begins or ends the movement.
    void updateMotion();

    const Theme& m_theme;
    std::optional<double> m_fraction = 0;
    QVariantAnimation* m_motion = nullptr; // while it moves
};

} // namespace platform

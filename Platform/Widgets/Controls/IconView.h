// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QWidget>

#include <optional>

namespace platform {

/// A symbol by itself, as large as a font of a size in points, or made to stand beside text of a
/// style. Decoration: assistive technology passes over it.
class IconView final : public QWidget {
    Q_OBJECT

public:
    IconView(const Theme& theme, QString icon, qreal points, QWidget* parent = nullptr);
    /// As high as a line of the style, with the symbol on the middle of its capital letters.
    IconView(const Theme& theme, QString icon, TextStyle style, QWidget* parent = nullptr);

    const QString& icon() const { return m_icon; }
    void setIcon(const QString& icon);
    void setColorRole(ColorRole role);
    /// The width of the frame in whose middle the symbol stands; none: the symbol's own.
    void setFrameWidth(std::optional<int> width);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    IconView(const Theme& theme, QString icon, qreal points, std::optional<TextStyle> style,
             QWidget* parent);
    int symbolSide() const;

    const Theme& m_theme;
    QString m_icon;
    qreal m_points;
    std::optional<TextStyle> m_style;
    std::optional<int> m_frameWidth;
    ColorRole m_role = ColorRole::SecondaryLabel;
};

} // namespace platform

// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QHash>
#include <QPainterPath>
#include <QString>

#include <optional>
#include <span>
#include <string_view>
#include <vector>

class QPainter;

namespace platform {

/// Reads path data as SVG writes it (the commands M L H V C S Q T A Z, absolute and relative, with
/// its terse number forms); none if it is malformed.
std::optional<QPainterPath> svgPath(std::string_view data);

/// One path of an icon's drawing, in the square from (0, 0) to (16, 16).
struct IconPart {
    const char* name;   ///< the icon; its parts follow each other
    const char* path;   ///< path data as in SVG
    double strokeWidth; ///< 0: filled
    bool isEvenOdd;
};

/// The parts of all icons.
std::span<const IconPart> iconParts();

/// The icons, by name ("cpu", "square.and.pencil"). A drawing is read from its path data when it is
/// first shown, kept, and painted as a path: crisp at every size and scale, in any colour.
class Icons {
public:
    /// Fills the icon into the largest square in the middle of `rect`. An unknown name paints
    /// nothing.
    void paint(QPainter& painter, const QString& name, const QRectF& rect,
               const QColor& color) const;

private:
    struct Part {
        QPainterPath path;
        double strokeWidth;
    };

    const std::vector<Part>& drawing(const QString& name) const;

    mutable QHash<QString, std::vector<Part>> m_drawings;
};

} // namespace platform

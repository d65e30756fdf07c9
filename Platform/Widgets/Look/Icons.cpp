// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/Icons.h"

#include <QPainter>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>

namespace platform {

namespace {

constexpr double grid = 16; // the drawings' square

constexpr bool isSeparator(char c) {
    return c == ' ' || c == ',' || c == '\t' || c == '\n' || c == '\r';
}

/// An elliptical arc as SVG gives it: by its end points.
struct Arc {
    QPointF from;
    double rx;
    double ry;
    double rotation; ///< degrees
    bool isLarge;
    bool isSweep;
    QPointF to;
};

/// The angle from one vector to another, in radians.
double angleBetween(QPointF u, QPointF v) {
    return std::atan2(u.x() * v.y() - u.y() * v.x(), u.x() * v.x() + u.y() * v.y());
}

/// Appends an arc as cubic curves of at most a quarter turn each. The conversion from end points to
/// the centre is the one in the implementation notes of the SVG recommendation.
void appendArc(QPainterPath& path, Arc arc) {
    if (arc.from == arc.to)
        return;
    arc.rx = std::abs(arc.rx);
    arc.ry = std::abs(arc.ry);
    if (arc.rx == 0 || arc.ry == 0) {
        path.lineTo(arc.to);
        return;
    }
    const auto phi = arc.rotation * std::numbers::pi / 180;
    const auto cosPhi = std::cos(phi);
    const auto sinPhi = std::sin(phi);
    const auto half = (arc.from - arc.to) / 2;
    const QPointF p(cosPhi * half.x() + sinPhi * half.y(), -sinPhi * half.x() + cosPhi * half.y());
    const auto needed = (p.x() * p.x()) / (arc.rx * arc.rx) + (p.y() * p.y()) / (arc.ry * arc.ry);
    if (needed > 1) { // radii too small to reach: grown until they do
        arc.rx *= std::sqrt(needed);
        arc.ry *= std::sqrt(needed);
    }
    const auto rx2 = arc.rx * arc.rx;
    const auto ry2 = arc.ry * arc.ry;
    const auto divisor = rx2 * p.y() * p.y() + ry2 * p.x() * p.x();
    const auto factor =
        std::sqrt(std::max(0.0, rx2 * ry2 / divisor - 1)) * (arc.isLarge == arc.isSweep ? -1 : 1);
    const QPointF centre1(factor * arc.rx * p.y() / arc.ry, -factor * arc.ry * p.x() / arc.rx);
    const auto middle = (arc.from + arc.to) / 2;
    const QPointF centre(cosPhi * centre1.x() - sinPhi * centre1.y() + middle.x(),
                         sinPhi * centre1.x() + cosPhi * centre1.y() + middle.y());
    const QPointF start((p.x() - centre1.x()) / arc.rx, (p.y() - centre1.y()) / arc.ry);
    const QPointF end((-p.x() - centre1.x()) / arc.rx, (-p.y() - centre1.y()) / arc.ry);
    const auto first = angleBetween(QPointF(1, 0), start);
    auto sweep = angleBetween(start, end);
    if (arc.isSweep && sweep < 0)
        sweep += 2 * std::numbers::pi;
    else if (!arc.isSweep && sweep > 0)
        sweep -= 2 * std::numbers::pi;

    const auto count = static_cast<int>(std::ceil(std::abs(sweep) / (std::numbers::pi / 2) - 1e-9));
    const auto step = sweep / count;
    const auto handle = 4.0 / 3.0 * std::tan(step / 4);
    const auto onEllipse = [&](double x, double y) {
        return centre + QPointF(cosPhi * arc.rx * x - sinPhi * arc.ry * y,
                                sinPhi * arc.rx * x + cosPhi * arc.ry * y);
    };
    for (int i = 0; i < count; ++i) {
        const auto a = first + i * step;
        const auto b = a + step;
        path.cubicTo(
            onEllipse(std::cos(a) - handle * std::sin(a), std::sin(a) + handle * std::cos(a)),
            onEllipse(std::cos(b) + handle * std::sin(b), std::sin(b) - handle * std::cos(b)),
            i + 1 == count ? arc.to : onEllipse(std::cos(b), std::sin(b)));
    }
}

class Reader {
public:
    explicit Reader(std::string_view data)
        : m_rest(data) {}

    std::optional<QPainterPath> read() {
        m_path.setFillRule(Qt::WindingFill);
        skip();
        char command = 0;
        while (!m_rest.empty() && m_isValid) {
            const auto next = m_rest.front();
            if (std::string_view("MmLlHhVvCcSsQqTtAaZz").find(next) != std::string_view::npos) {
                command = next;
                m_rest.remove_prefix(1);
            } else if (command == 0 || command == 'Z' || command == 'z') {
                return std::nullopt; // numbers without a command
            }
            if (m_last == 0 && command != 'M' && command != 'm')
                return std::nullopt;
            step(command);
            if (command == 'M' || command == 'm')
                command = command == 'M' ? 'L' : 'l'; // further pairs are lines
            skip();
        }
        return m_isValid ? std::optional(m_path) : std::nullopt;
    }

private:
    void step(char command) {
        const bool isRelative = command >= 'a';
        const auto origin = isRelative ? m_at : QPointF();
        const auto reflected = m_at * 2 - m_control;
        const auto kind = static_cast<char>(isRelative ? command - 'a' + 'A' : command);
        const bool followsCurve =
            m_last == kind || (kind == 'S' && m_last == 'C') || (kind == 'T' && m_last == 'Q');
        switch (kind) {
        case 'M':
            m_at = point(origin);
            m_start = m_at;
            m_path.moveTo(m_at);
            break;
        case 'L':
            lineTo(point(origin));
            break;
        case 'H':
            lineTo(QPointF(origin.x() + number(), m_at.y()));
            break;
        case 'V':
            lineTo(QPointF(m_at.x(), origin.y() + number()));
            break;
        case 'C':
        case 'S': {
            const auto one = kind == 'C' ? point(origin) : (followsCurve ? reflected : m_at);
            m_control = point(origin);
            m_at = point(origin);
            m_path.cubicTo(one, m_control, m_at);
            break;
        }
        case 'Q':
        case 'T':
            m_control = kind == 'Q' ? point(origin) : (followsCurve ? reflected : m_at);
            m_at = point(origin);
            m_path.quadTo(m_control, m_at);
            break;
        case 'A': {
            Arc arc{.from = m_at,
                    .rx = number(),
                    .ry = number(),
                    .rotation = number(),
                    .isLarge = flag(),
                    .isSweep = flag(),
                    .to = point(origin)};
            m_at = arc.to;
            appendArc(m_path, arc);
            break;
        }
        default:
            m_path.closeSubpath();
            m_at = m_start;
        }
        m_last = kind;
    }

    void lineTo(QPointF to) {
        m_at = to;
        m_path.lineTo(to);
    }

    void skip() {
        while (!m_rest.empty() && isSeparator(m_rest.front()))
            m_rest.remove_prefix(1);
    }

    double number() {
        skip();
        if (m_rest.starts_with('+'))
            m_rest.remove_prefix(1);
        double value = 0;
        const auto [end, error] =
            std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), value);
        if (error != std::errc() || !std::isfinite(value)) {
            m_isValid = false;
            return 0;
        }
        m_rest.remove_prefix(static_cast<size_t>(end - m_rest.data()));
        return value;
    }

    /// A flag is one digit, and may stand right before the next number: "a1 1 0 012 2".
    bool flag() {
        skip();
        if (m_rest.empty() || (m_rest.front() != '0' && m_rest.front() != '1')) {
            m_isValid = false;
            return false;
        }
        const bool isSet = m_rest.front() == '1';
        m_rest.remove_prefix(1);
        return isSet;
    }

    QPointF point(QPointF origin) {
        const auto x = number();
        const auto y = number();
        return origin + QPointF(x, y);
    }

    std::string_view m_rest;
    QPainterPath m_path;
    QPointF m_at;
    QPointF m_start;
    QPointF m_control;
    char m_last = 0;
    bool m_isValid = true;
};

} // namespace

std::optional<QPainterPath> svgPath(std::string_view data) {
    return Reader(data).read();
}

const std::vector<Icons::Part>& Icons::drawing(const QString& name) const {
    const auto known = m_drawings.constFind(name);
    if (known != m_drawings.constEnd())
        return *known;
    std::vector<Part> parts;
    for (const auto& part : iconParts()) {
        if (name == QLatin1StringView(part.name)) {
            if (auto path = svgPath(part.path)) {
                path->setFillRule(part.isEvenOdd ? Qt::OddEvenFill : Qt::WindingFill);
                parts.push_back({std::move(*path), part.strokeWidth});
            }
        }
    }
    return *m_drawings.insert(name, std::move(parts));
}

void Icons::paint(QPainter& painter, const QString& name, const QRectF& rect,
                  const QColor& color) const {
    const auto side = std::min(rect.width(), rect.height());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(rect.center() - QPointF(side / 2, side / 2));
    painter.scale(side / grid, side / grid);
    for (const auto& part : drawing(name)) {
        if (part.strokeWidth > 0) {
            const QPen pen(color, part.strokeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
            painter.strokePath(part.path, pen);
        } else {
            painter.fillPath(part.path, color);
        }
    }
    painter.restore();
}

} // namespace platform

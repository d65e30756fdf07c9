// SPDX-License-Identifier: MIT
#include "tests/support/PaintRecorder.h"

#include <QImage>
#include <QPaintEngine>
#include <QPainterPath>
#include <QWidget>

#include <algorithm>

namespace tests {

namespace {

using Painted = PaintRecorder::Painted;

/// Notes what a painter hands over, already in the device's coordinates.
class Engine final : public QPaintEngine {
public:
    explicit Engine(std::vector<Painted>& painted)
        : QPaintEngine(AllFeatures)
        , m_painted(painted) {}

    bool begin(QPaintDevice* /*device*/) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState& /*state*/) override {}
    Type type() const override { return User; }

    void drawTextItem(const QPointF& place, const QTextItem& item) override {
        note(item.text(), state->pen().color(),
             {place.x(), place.y() - item.ascent(), item.width(), item.ascent() + item.descent()});
    }
    void drawPath(const QPainterPath& path) override { noteShape(path.boundingRect(), true); }
    void drawPolygon(const QPointF* points, int count, PolygonDrawMode mode) override {
        noteShape(QPolygonF(QList<QPointF>(points, points + count)).boundingRect(),
                  mode != PolylineMode);
    }
    void drawPixmap(const QRectF& /*rect*/, const QPixmap& /*pixmap*/,
                    const QRectF& /*source*/) override {}

private:
    void noteShape(const QRectF& rect, bool isFilled) {
        if (isFilled && state->brush().style() != Qt::NoBrush)
            note({}, state->brush().color(), rect);
        if (state->pen().style() != Qt::NoPen)
            note({}, state->pen().color(), rect);
    }
    void note(const QString& text, QColor color, const QRectF& rect) {
        color.setAlphaF(color.alphaF() * static_cast<float>(state->opacity()));
        m_painted.push_back({text, color, state->transform().mapRect(rect)});
    }

    std::vector<Painted>& m_painted;
};

/// A picture's measures, and another engine.
class Device final : public QImage {
public:
    Device(QSize size, Engine& engine)
        : QImage(size, Format_RGB32)
        , m_engine(engine) {}
    QPaintEngine* paintEngine() const override { return &m_engine; }

private:
    Engine& m_engine;
};

} // namespace

PaintRecorder::PaintRecorder(QWidget& widget) {
    Engine engine(m_painted);
    Device device(widget.size(), engine);
    widget.render(&device, {}, {}, QWidget::DrawChildren);
}

bool PaintRecorder::hasColor(const QColor& color, const QRectF& area) const {
    return std::ranges::any_of(
        m_painted,
        [&](const Painted& painted) {
            return area.contains(painted.rect.center()) && painted.color == color;
        });
}

QString PaintRecorder::text() const {
    QString all;
    for (const auto& painted : m_painted)
        all += painted.text;
    return all;
}

QRectF PaintRecorder::textRect() const {
    QRectF all;
    for (const auto& painted : m_painted)
        if (!painted.text.isEmpty())
            all |= painted.rect;
    return all;
}

} // namespace tests

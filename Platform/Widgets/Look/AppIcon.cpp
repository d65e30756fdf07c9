// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/AppIcon.h"

#include "Platform/Widgets/Look/Icons.h"

#include <QEvent>
#include <QIcon>
#include <QLinearGradient>
#include <QPainter>
#include <QTimer>
#include <QWidget>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

constexpr int grid = 256; // the drawing's square

QPixmap drawn(const Icons& icons, int side) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(static_cast<double>(side) / grid, static_cast<double>(side) / grid);
    QLinearGradient background(0, 16, 0, 240);
    background.setColorAt(0, QColor(0x3d, 0x9b, 0xff));
    background.setColorAt(1, QColor(0x0a, 0x55, 0xd6));
    painter.setPen(Qt::NoPen);
    painter.setBrush(background);
    painter.drawRoundedRect(QRectF(16, 16, 224, 224), 52, 52);
    QLinearGradient edge(0, 17.5, 0, 238.5);
    edge.setColorAt(0, QColor(255, 255, 255, 89));
    edge.setColorAt(0.4, QColor(255, 255, 255, 0));
    painter.setPen(QPen(edge, 3));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(17.5, 17.5, 221, 221), 50.5, 50.5);
    icons.paint(painter, u"brain"_s, QRectF(32, 32, 192, 192), Qt::white);
    return pixmap;
}

/// Waits for a widget's first paint, then sets the icon of its window, and ends.
class IconAfterPaint final : public QObject {
public:
    IconAfterPaint(QWidget& widget, const Icons& icons)
        : QObject(&widget)
        , m_icons(icons) {
        widget.installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, this, [this] {
                static_cast<QWidget*>(parent())->window()->setWindowIcon(appIcon(m_icons));
                deleteLater();
            });
        }
        return false;
    }

private:
    const Icons& m_icons;
};

} // namespace

QIcon appIcon(const Icons& icons) {
    QIcon icon;
    for (const int side : {16, 32, 48, 64, 128})
        icon.addPixmap(drawn(icons, side));
    return icon;
}

void setAppIcon(QWidget& window, const Icons& icons) {
    new IconAfterPaint(window, icons);
}

} // namespace platform

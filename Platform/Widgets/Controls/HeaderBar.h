// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QWidget>

class QHBoxLayout;

namespace platform {

class Label;

/// The bar at the top of the window's content: title and subtitle, and buttons at the trailing end.
/// It can be dragged to move the window.
class HeaderBar final : public QWidget {
    Q_OBJECT

public:
    HeaderBar(const Theme& theme, const QString& title);

    void setSubtitle(const QString& subtitle);

    /// Adds a widget after the ones added before. Takes ownership.
    void addTrailing(QWidget* item);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    const Theme& m_theme;
    Label* m_subtitle;
    QHBoxLayout* m_trailing;
};

} // namespace platform

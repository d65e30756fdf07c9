// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QPainter>
#include <QWidget>

namespace platform {

/// A horizontal line between two areas.
class Divider final : public QWidget {
    Q_OBJECT

public:
    explicit Divider(const Theme& theme, QWidget* parent = nullptr)
        : QWidget(parent)
        , m_theme(theme) {
        setFixedHeight(1);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter(this).fillRect(rect(), m_theme.color(ColorRole::Divider));
    }

private:
    const Theme& m_theme;
};

} // namespace platform

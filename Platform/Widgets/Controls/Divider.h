// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QWidget>

namespace platform {

/// A horizontal line between two areas.
class Divider final : public QWidget {
    Q_OBJECT

public:
    explicit Divider(const Theme& theme, QWidget* parent = nullptr);

    /// Leaves so many pixels free at the leading edge, as between the rows of a list.
    void setLeadingInset(int inset);

    QSize sizeHint() const override { return {0, 1}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
    int m_leadingInset = 0;
};

} // namespace platform

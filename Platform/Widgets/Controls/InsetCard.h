// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Look/Theme.h"

#include <QList>
#include <QWidget>

class QVBoxLayout;

namespace platform {

/// The rounded card of an InsetSection: rows with lines between them.
class InsetCard final : public QWidget, public AccessibleElement {
    Q_OBJECT

public:
    InsetCard(const Theme& theme, QWidget* parent);

    void setRows(const QList<QWidget*>& rows);
    const QList<QWidget*>& rows() const { return m_rows; }

    QAccessible::Role accessibleRole() const override { return QAccessible::List; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
    QVBoxLayout* m_column;
    QList<QWidget*> m_rows;
    QList<QWidget*> m_lines;
};

} // namespace platform

// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QList>
#include <QWidget>

class QHBoxLayout;

namespace platform {

/// A section of an inset list: a heading, rows on a rounded card with lines between them, and a
/// line of explanation below.
class InsetSection final : public QWidget {
    Q_OBJECT

public:
    InsetSection(const Theme& theme, const QString& header, const QString& footer,
                 QWidget* parent = nullptr);

    /// Puts a widget at the trailing end of the heading. Takes ownership.
    void setHeaderItem(QWidget* item);
    /// Shows these rows in this order, once. Takes ownership.
    void setRows(const QList<QWidget*>& rows);
    const QList<QWidget*>& rows() const { return m_rows; }

private:
    QHBoxLayout* m_headerRow;
    QWidget* m_card;
    QList<QWidget*> m_rows;
};

} // namespace platform

// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QList>
#include <QWidget>

class QHBoxLayout;

namespace platform {

class InsetCard;

/// A section of an inset list: a heading, rows on a rounded card with lines between them, and a
/// line of explanation below.
class InsetSection final : public QWidget {
    Q_OBJECT

public:
    InsetSection(const Theme& theme, const QString& header, const QString& footer,
                 QWidget* parent = nullptr);

    /// Puts a widget at the trailing end of the heading. Takes ownership.
    void setHeaderItem(QWidget* item);
    /// Shows these rows in this order. Takes ownership; rows that were shown before and are not in
    /// the list are destroyed, the others stay as they are.
    void setRows(const QList<QWidget*>& rows);
    const QList<QWidget*>& rows() const;

private:
    QHBoxLayout* m_headerRow;
    InsetCard* m_card;
};

} // namespace platform

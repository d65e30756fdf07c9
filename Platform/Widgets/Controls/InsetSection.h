// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QWidget>

class QHBoxLayout;

namespace platform {

class Label;

/// A section of an inset list: a heading, rows on a rounded card with lines between them, and a
/// line of explanation below, or none.
class InsetSection final : public QWidget {
    Q_OBJECT

public:
    InsetSection(const Theme& theme, const QString& header, const QString& footer);

    /// Puts a widget at the trailing end of the heading. Takes ownership.
    void setHeaderItem(QWidget* item);
    /// Adds a row below the others. Takes ownership.
    void addRow(QWidget* row);
    void setFooter(const QString& footer);

private:
    QHBoxLayout* m_headerRow;
    QWidget* m_card;
    Label* m_footer;
};

} // namespace platform

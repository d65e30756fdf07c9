// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Controls/Button.h"

namespace platform {

/// A row of an inset list that can be pressed anywhere: a name, a detail below it or none, and a
/// mark at the trailing end or none. A name that does not fit is elided in its middle, and whole in
/// a tool tip.
class ListRow : public Button {
    Q_OBJECT

public:
    /// What stands at the trailing end: a symbol or, without one, its name, which assistive
    /// technology says after the detail.
    struct Mark {
        QString name;
        QString icon;
        ColorRole color = ColorRole::SecondaryLabel;

        bool operator==(const Mark&) const = default;
    };

    explicit ListRow(const Theme& theme);

    /// Empty: the name stands alone.
    void setDetail(const QString& detail);
    void setMark(const Mark& mark);
    /// Whether this is the chosen row of its list.
    void setSelected(bool isSelected);

    QSize sizeHint() const override;
    QAccessible::Role accessibleRole() const override { return QAccessible::ListItem; }
    void addAccessibleState(QAccessible::State& state) const override;
    QString accessibleDetail() const override;

protected:
    bool event(QEvent* event) override;
    void paintContent(QPainter& painter) const override;

private:
    IconAndText mark() const;
    IconAndText title() const;
    IconAndText detail() const;

    QString m_detail;
    Mark m_mark;
    bool m_isSelected = false;
};

} // namespace platform

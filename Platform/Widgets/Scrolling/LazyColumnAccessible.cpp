// SPDX-License-Identifier: MIT
// A LazyColumn as assistive technology meets it.
#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Scrolling/LazyColumn.h"

#include <QAccessibleWidget>
#include <QHash>

#include <utility>

using namespace Qt::StringLiterals;

namespace platform {
namespace {

/// The item of a row that has no widget now.
class UnbuiltRow final : public QAccessibleInterface {
public:
    UnbuiltRow(LazyColumn* column, const QUuid& key)
        : m_column(column)
        , m_key(key) {}

    const QUuid& key() const { return m_key; }

    bool isValid() const override { return row() >= 0; }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(m_column);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QString text(QAccessible::Text type) const override {
        const bool known = type == QAccessible::Name && isValid();
        return known ? m_column->rows().accessibleName(row()) : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}

    QRect rect() const override {
        return isValid() ? m_column->rowRect(row()).translated(m_column->mapToGlobal(QPoint(0, 0)))
                         : QRect();
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.offscreen = true;
        state.readOnly = true;
        state.focusable = true;
        state.selectable = true;
        return state;
    }

private:
    qsizetype row() const { return m_column->rowWithKey(m_key); }

    LazyColumn* m_column;
    QUuid m_key;
};

/// The item of a row that has a widget.
class BuiltRow final : public QAccessibleWidget {
public:
    explicit BuiltRow(QWidget* widget)
        : QAccessibleWidget(widget, QAccessible::ListItem) {}

    QString text(QAccessible::Text type) const override {
        if (type != QAccessible::Name || !widget()->accessibleName().isEmpty())
            return QAccessibleWidget::text(type);
        const auto* column = qobject_cast<LazyColumn*>(widget()->parentWidget());
        const qsizetype row = column ? column->rowOf(widget()) : -1;
        return row < 0 ? QString() : column->rows().accessibleName(row);
    }
};

class Column final : public QAccessibleWidget {
public:
    explicit Column(LazyColumn* column)
        : QAccessibleWidget(column, QAccessible::List) {}
    ~Column() override { forget(); }

    int childCount() const override { return static_cast<int>(column().rows().count()); }

    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        if (QWidget* widget = column().widgetOf(index))
            return QAccessible::queryAccessibleInterface(widget);
        const QUuid key = column().rows().key(index);
        const auto known = m_unbuilt.constFind(key);
        if (known != m_unbuilt.cend())
            return QAccessible::accessibleInterface(*known);
        if (m_unbuilt.size() > 2 * childCount() + 64)
            forget();                                // most belong to rows that are gone
        auto* item = new UnbuiltRow(&column(), key); // the register owns it
        m_unbuilt.insert(key, QAccessible::registerAccessibleInterface(item));
        return item;
    }

    QAccessibleInterface* focusChild() const override {
        const qsizetype current = column().currentRow();
        return current < 0 ? QAccessibleWidget::focusChild() : child(static_cast<int>(current));
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.busy = column().isBusy();
        if (column().currentRow() >= 0) // which has the focus, then
            state.focused = false;
        return state;
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        if (const auto* item = dynamic_cast<const UnbuiltRow*>(child))
            return static_cast<int>(column().rowWithKey(item->key()));
        const auto* widget = qobject_cast<QWidget*>(child ? child->object() : nullptr);
        return widget ? static_cast<int>(column().rowOf(widget)) : -1;
    }

private:
    void forget() const {
        for (const QAccessible::Id id : std::as_const(m_unbuilt))
            QAccessible::deleteAccessibleInterface(id);
        m_unbuilt.clear();
    }

    LazyColumn& column() const { return *static_cast<LazyColumn*>(widget()); }

    mutable QHash<QUuid, QAccessible::Id> m_unbuilt;
};

} // namespace

void LazyColumn::setBusy(bool isBusy) {
    if (std::exchange(m_isBusy, isBusy) == isBusy)
        return;
    QAccessible::State changed;
    changed.busy = true;
    tellChanged(this, changed);
}

QAccessibleInterface* LazyColumn::makeAccessible(const QString& className, QObject* object) {
    if (auto* column = qobject_cast<LazyColumn*>(object))
        return new Column(column);
    // Asked for each class of an object, the most derived first: a widget of a class that has an
    // interface of its own is never asked for as a mere widget.
    auto* widget = qobject_cast<QWidget*>(object);
    const auto* column = widget ? qobject_cast<LazyColumn*>(widget->parentWidget()) : nullptr;
    return className == "QWidget"_L1 && column && column->rowOf(widget) >= 0 ? new BuiltRow(widget)
                                                                             : nullptr;
}

} // namespace platform

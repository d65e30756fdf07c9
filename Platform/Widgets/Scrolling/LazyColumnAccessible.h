// SPDX-License-Identifier: MIT
#pragma once

#include <QAccessibleInterface>

class QObject;
class QString;

namespace platform {

/// Makes the accessible interfaces of a LazyColumn, a list, and of the widgets of its rows, list
/// items that say what LazyRows::accessibleName() says (a row's widget with an interface of its own
/// keeps that). The list has an item for each row: one without a widget has its name and its place
/// only, and is replaced when the row is built. A factory for QAccessible::installFactory.
QAccessibleInterface* makeLazyColumnAccessible(const QString& className, QObject* object);

} // namespace platform

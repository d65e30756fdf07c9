// SPDX-License-Identifier: MIT
#pragma once

#include <QAccessibleInterface>

class QObject;
class QString;

namespace platform {

/// Makes the accessible interface of a TextView: its text, its selection and where its characters
/// stand. A factory for QAccessible::installFactory; other objects get none.
QAccessibleInterface* makeTextViewAccessible(const QString& className, QObject* object);

} // namespace platform

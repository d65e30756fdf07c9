// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

QT_BEGIN_NAMESPACE
class QWindow;
QT_END_NAMESPACE

namespace platform {

/// The token by which the desktop lets this start of the program take the focus; empty where it
/// gave none. Asked before the application object is made, which uses it up.
QByteArray activationToken();

/// Brings a window to the front and gives it the focus: shows it if it is hidden, restores it if it
/// is minimised.
///
/// @param token what the desktop gave to the start that asks for this; without one, the desktop may
/// decline and only mark the window.
void activateWindow(QWindow& window, const QByteArray& token);

} // namespace platform

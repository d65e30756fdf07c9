// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QWidget;

namespace platform {

/// Has assistive technology read a text out, once, without moving the focus.
///
/// From Qt 6.8 on this is an announcement of the accessibility bus. Earlier releases know none:
/// there the widget tells that its name has changed, which is what screen readers of the time
/// listen to; the text should therefore be the widget's name. Costs nothing where no assistive
/// technology runs.
void announce(QWidget* widget, const QString& text);

} // namespace platform

// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringView>

namespace platform {

/// The characters that a named character reference of HTML stands for, "amp" for the ampersand;
/// empty for a name that HTML does not know. Letter case counts. Any thread.
QString namedCharacter(QStringView name);

} // namespace platform

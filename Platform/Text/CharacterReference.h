// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace platform {

/// The characters that a character reference ("&amp;", "&#233;", "&#xE9;", the ampersand and the
/// semicolon included) stands for; none when its name is unknown and it stands for itself. Any
/// thread.
std::optional<QString> referencedCharacters(QByteArrayView reference);

} // namespace platform

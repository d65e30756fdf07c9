// SPDX-License-Identifier: MIT
#include "Platform/Text/CharacterReference.h"

#include "Platform/Text/NamedCharacters.h"

namespace platform {

std::optional<QString> referencedCharacters(QByteArrayView reference) {
    const QByteArrayView inner = reference.sliced(1, reference.size() - 2);
    if (!inner.startsWith('#')) {
        const QString named = namedCharacter(QString::fromLatin1(inner));
        return named.isEmpty() ? std::nullopt : std::optional(named);
    }
    const bool hexadecimal = inner.size() > 1 && (inner[1] == 'x' || inner[1] == 'X');
    const QByteArrayView digits = inner.sliced(hexadecimal ? 2 : 1);
    bool valid = false;
    char32_t code = digits.toByteArray().toUInt(&valid, hexadecimal ? 16 : 10);
    if (!valid || code == 0 || code > QChar::LastValidCodePoint || QChar::isSurrogate(code))
        code = QChar::ReplacementCharacter;
    return QString::fromUcs4(&code, 1);
}

} // namespace platform

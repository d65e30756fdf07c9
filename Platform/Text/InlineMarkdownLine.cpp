// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdownLine.h"

#include <QString>

namespace platform {
namespace {

constexpr char standInForBreak = '\f';
constexpr char standInForLiteral = '.'; // some punctuation that marks nothing

bool isWhite(char byte) {
    return byte == ' ' || byte == '\t' || byte == standInForBreak;
}

} // namespace

InlineMarkdownLine::InlineMarkdownLine(QStringView block)
    : positions(margin, 0) {
    QString text = block.toString();
    for (qsizetype i = 0; i < text.size(); ++i)
        if (isMarkdownBreak(text[i]))
            text[i] = QLatin1Char(standInForBreak);
        else if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        else if (text[i].isSurrogate() || text[i].isNull())
            text[i] = QChar::ReplacementCharacter;
    bytes = text.toUtf8();
    positions.reserve(static_cast<std::size_t>(bytes.size() + 2 * margin + 1));
    qsizetype position = 0;
    qsizetype next = 0;
    for (const char byte : std::as_const(bytes)) {
        const auto value = static_cast<unsigned char>(byte);
        const bool startsCharacter = (value & 0xc0) != 0x80;
        if (startsCharacter) {
            position = next;
            next += value >= 0xf0 ? 2 : 1; // a surrogate pair
        }
        positions.push_back(position);
    }
    bytes = "x " + bytes + " x";
    positions.insert(positions.end(), margin + 1, block.size());
    hideSingleTildes();
    hideBrokenTargets();
}

/// The parser also strikes out between single tildes, but "5~10 or 20~30" means ranges. Tildes in
/// what may be a link's address stay, for the parser hands an address over as it read it.
void InlineMarkdownLine::hideSingleTildes() {
    char closer = 0;
    for (qsizetype i = 1; i + 1 < bytes.size(); ++i) {
        const char byte = bytes[i];
        if (closer != 0) {
            if (byte == closer || isWhite(byte))
                closer = 0;
        } else if (byte == '(' && bytes[i - 1] == ']') {
            closer = ')';
        } else if (byte == '<') {
            closer = '>';
        }
        if (closer == 0 && byte == '~' && bytes[i - 1] != '~' && bytes[i + 1] != '~')
            bytes[i] = standInForLiteral;
    }
}

/// A target in angle brackets cannot hold a line break, though it can hold what stands for one
/// here.
void InlineMarkdownLine::hideBrokenTargets() {
    for (qsizetype i = 0; (i = bytes.indexOf("](", i)) >= 0; ++i) {
        qsizetype at = i + 2;
        while (isWhite(bytes[at])) // up to the letter behind the block at the latest
            ++at;
        if (bytes[at] != '<')
            continue;
        do
            at += bytes[at] == '\\' ? 2 : 1;
        while (at < bytes.size() && bytes[at] != '<' && bytes[at] != '>' &&
               bytes[at] != standInForBreak);
        if (at < bytes.size() && bytes[at] == standInForBreak)
            bytes[i + 1] = standInForLiteral;
    }
}

} // namespace platform

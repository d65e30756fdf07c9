// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdownLine.h"

namespace platform {
namespace {

constexpr char standInForBreak = '\f';
constexpr char standInForLiteral = '.'; // some punctuation that marks nothing

bool isBreak(QChar character) {
    return character == u'\n' || character == u'\r';
}

} // namespace

void InlineMarkdownLine::put(char byte, qsizetype place) {
    bytes.append(byte);
    places.push_back(place);
}

InlineMarkdownLine::InlineMarkdownLine(QStringView block) {
    bytes.reserve(block.size() + block.size() / 2 + 4);
    places.reserve(static_cast<std::size_t>(block.size() + block.size() / 2 + 5));
    put('x', 0);
    put(' ', 0);
    for (qsizetype i = 0; i < block.size(); ++i) {
        const QChar unit = block[i];
        if (isBreak(unit)) {
            put(standInForBreak, i);
        } else if (unit.isHighSurrogate() && i + 1 < block.size() &&
                   block[i + 1].isLowSurrogate()) {
            put(QChar::surrogateToUcs4(unit, block[i + 1]), i);
            ++i;
        } else {
            put(unit.isSurrogate() || unit.isNull() ? U'\ufffd' : char32_t(unit.unicode()), i);
        }
    }
    put(' ', block.size());
    put('x', block.size());
    places.push_back(block.size());
    hideSingleTildes();
    hideBrokenTargets();
}

void InlineMarkdownLine::put(char32_t character, qsizetype place) {
    const auto byte = [&](char32_t value) { put(static_cast<char>(value), place); };
    if (character < 0x80) {
        byte(character);
    } else if (character < 0x800) {
        byte(0xc0 | (character >> 6));
        byte(0x80 | (character & 0x3f));
    } else if (character < 0x10000) {
        byte(0xe0 | (character >> 12));
        byte(0x80 | ((character >> 6) & 0x3f));
        byte(0x80 | (character & 0x3f));
    } else {
        byte(0xf0 | (character >> 18));
        byte(0x80 | ((character >> 12) & 0x3f));
        byte(0x80 | ((character >> 6) & 0x3f));
        byte(0x80 | (character & 0x3f));
    }
}

/// The parser also strikes out between single tildes, but "5~10 or 20~30" means ranges. Tildes in
/// what may be a link's address stay, for the parser hands an address over as it read it.
void InlineMarkdownLine::hideSingleTildes() {
    char closer = 0;
    for (qsizetype i = 1; i + 1 < bytes.size(); ++i) {
        const char byte = bytes[i];
        if (closer != 0) {
            if (byte == closer || byte == ' ' || byte == '\t' || byte == standInForBreak)
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
        while (at < bytes.size() &&
               (bytes[at] == ' ' || bytes[at] == '\t' || bytes[at] == standInForBreak))
            ++at;
        if (at >= bytes.size() || bytes[at] != '<')
            continue;
        ++at;
        while (at < bytes.size() && bytes[at] != '<' && bytes[at] != '>' &&
               bytes[at] != standInForBreak)
            at += bytes[at] == '\\' ? 2 : 1;
        if (at < bytes.size() && bytes[at] == standInForBreak)
            bytes[i + 1] = standInForLiteral;
    }
}

} // namespace platform

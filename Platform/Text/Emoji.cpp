// SPDX-License-Identifier: MIT
#include "Platform/Text/Emoji.h"

#include <QChar>

#include <algorithm>
#include <array>

namespace platform {
namespace {

struct CodePoints {
    char32_t first;
    char32_t last;
};

/// The code points with the property Emoji_Presentation of Unicode 14, but for the letters of
/// flags.
constexpr auto presentedAsEmoji = std::to_array<CodePoints>(
    {{0x231a, 0x231b},   {0x23e9, 0x23ec},   {0x23f0, 0x23f0},   {0x23f3, 0x23f3},
     {0x25fd, 0x25fe},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x267f, 0x267f},
     {0x2693, 0x2693},   {0x26a1, 0x26a1},   {0x26aa, 0x26ab},   {0x26bd, 0x26be},
     {0x26c4, 0x26c5},   {0x26ce, 0x26ce},   {0x26d4, 0x26d4},   {0x26ea, 0x26ea},
     {0x26f2, 0x26f3},   {0x26f5, 0x26f5},   {0x26fa, 0x26fa},   {0x26fd, 0x26fd},
     {0x2705, 0x2705},   {0x270a, 0x270b},   {0x2728, 0x2728},   {0x274c, 0x274c},
     {0x274e, 0x274e},   {0x2753, 0x2755},   {0x2757, 0x2757},   {0x2795, 0x2797},
     {0x27b0, 0x27b0},   {0x27bf, 0x27bf},   {0x2b1b, 0x2b1c},   {0x2b50, 0x2b50},
     {0x2b55, 0x2b55},   {0x1f004, 0x1f004}, {0x1f0cf, 0x1f0cf}, {0x1f18e, 0x1f18e},
     {0x1f191, 0x1f19a}, {0x1f201, 0x1f201}, {0x1f21a, 0x1f21a}, {0x1f22f, 0x1f22f},
     {0x1f232, 0x1f236}, {0x1f238, 0x1f23a}, {0x1f250, 0x1f251}, {0x1f300, 0x1f320},
     {0x1f32d, 0x1f335}, {0x1f337, 0x1f37c}, {0x1f37e, 0x1f393}, {0x1f3a0, 0x1f3ca},
     {0x1f3cf, 0x1f3d3}, {0x1f3e0, 0x1f3f0}, {0x1f3f4, 0x1f3f4}, {0x1f3f8, 0x1f43e},
     {0x1f440, 0x1f440}, {0x1f442, 0x1f4fc}, {0x1f4ff, 0x1f53d}, {0x1f54b, 0x1f54e},
     {0x1f550, 0x1f567}, {0x1f57a, 0x1f57a}, {0x1f595, 0x1f596}, {0x1f5a4, 0x1f5a4},
     {0x1f5fb, 0x1f64f}, {0x1f680, 0x1f6c5}, {0x1f6cc, 0x1f6cc}, {0x1f6d0, 0x1f6d2},
     {0x1f6d5, 0x1f6d7}, {0x1f6dd, 0x1f6df}, {0x1f6eb, 0x1f6ec}, {0x1f6f4, 0x1f6fc},
     {0x1f7e0, 0x1f7eb}, {0x1f7f0, 0x1f7f0}, {0x1f90c, 0x1f93a}, {0x1f93c, 0x1f945},
     {0x1f947, 0x1f9ff}, {0x1fa70, 0x1fa74}, {0x1fa78, 0x1fa7c}, {0x1fa80, 0x1fa86},
     {0x1fa90, 0x1faac}, {0x1fab0, 0x1faba}, {0x1fac0, 0x1fac5}, {0x1fad0, 0x1fad9},
     {0x1fae0, 0x1fae7}, {0x1faf0, 0x1faf6}});

constexpr char32_t textPresentation = 0xfe0e;
constexpr char32_t emojiPresentation = 0xfe0f;
constexpr char32_t keycap = 0x20e3;
constexpr char32_t joiner = 0x200d;

bool isIn(char32_t point, char32_t first, char32_t last) {
    return point >= first && point <= last;
}

bool isPresentedAsEmoji(char32_t point) {
    const auto found = std::lower_bound(
        presentedAsEmoji.begin(), presentedAsEmoji.end(), point,
        [](const CodePoints& range, char32_t value) { return range.last < value; });
    return found != presentedAsEmoji.end() && point >= found->first;
}

bool isKeycapBase(char32_t point) {
    return isIn(point, u'0', u'9') || point == u'#' || point == u'*';
}

/// Whether a character is a symbol that may become an emoji by what follows it.
bool isSymbol(char32_t point) {
    return point == 0xa9 || point == 0xae || point >= 0x203c;
}

bool isFlagLetter(char32_t point) {
    return isIn(point, 0x1f1e6, 0x1f1ff);
}

bool isSkinTone(char32_t point) {
    return isIn(point, 0x1f3fb, 0x1f3ff);
}

bool isTag(char32_t point) {
    return isIn(point, 0xe0020, 0xe007f);
}

/// Reads a text by code points.
class Reader {
public:
    explicit Reader(QStringView text)
        : m_text(text) {}

    qsizetype position() const { return m_at; }
    bool atEnd() const { return m_at == m_text.size(); }

    /// The code point here, 0 at the end; lone surrogates as they are.
    char32_t peek() const {
        if (atEnd())
            return 0;
        const QChar unit = m_text[m_at];
        if (unit.isHighSurrogate() && m_at + 1 < m_text.size() && m_text[m_at + 1].isLowSurrogate())
            return QChar::surrogateToUcs4(unit, m_text[m_at + 1]);
        return unit.unicode();
    }
    char32_t next() {
        const char32_t point = peek();
        m_at += QChar::requiresSurrogates(point) ? 2 : 1;
        return point;
    }
    bool skip(char32_t point) { return !atEnd() && peek() == point && next() == point; }

private:
    QStringView m_text;
    qsizetype m_at = 0;
};

/// Reads on behind a symbol and what modifies it; whether it is an emoji.
bool readSymbol(Reader& reader, char32_t symbol) {
    if (reader.skip(textPresentation))
        return false;
    bool isEmoji = isPresentedAsEmoji(symbol);
    if (reader.skip(emojiPresentation))
        isEmoji = true;
    if (isSkinTone(reader.peek())) {
        reader.next();
        isEmoji = true;
    }
    while (isTag(reader.peek()))
        reader.next();
    return isEmoji;
}

/// Reads the next character with all that belongs to it; whether it is an emoji.
bool readCharacter(Reader& reader) {
    const char32_t first = reader.next();
    if (isKeycapBase(first)) {
        Reader on = reader;
        on.skip(emojiPresentation);
        if (!on.skip(keycap))
            return false;
        reader = on;
        return true;
    }
    if (isFlagLetter(first)) {
        if (isFlagLetter(reader.peek()))
            reader.next();
        return true;
    }
    if (!isSymbol(first))
        return false;
    bool isEmoji = readSymbol(reader, first);
    for (Reader on = reader; on.skip(joiner) && isSymbol(on.peek()); reader = on) {
        const char32_t symbol = on.next();
        isEmoji |= readSymbol(on, symbol);
    }
    return isEmoji;
}

} // namespace

std::vector<EmojiRun> emojiRuns(QStringView text) {
    std::vector<EmojiRun> runs;
    // Most texts have none of the characters that all of this is about.
    const auto isSign = [](QChar unit) {
        return unit >= QChar(0x200d) || unit == QChar(0xa9) || unit == QChar(0xae);
    };
    if (std::none_of(text.begin(), text.end(), isSign))
        return runs;
    Reader reader(text);
    while (!reader.atEnd()) {
        const qsizetype start = reader.position();
        if (readCharacter(reader))
            runs.push_back({start, reader.position() - start});
    }
    return runs;
}

} // namespace platform

// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdownBlock.h"

#include <md4c-html.h>
#include <md4c.h>

#include <algorithm>
#include <functional>
#include <vector>

using namespace Qt::StringLiterals;

namespace platform {
namespace {

constexpr char standInForBreak = '\f';
constexpr char standInForLiteral = '.'; // some punctuation that marks nothing

bool isWhite(char byte) {
    return byte == ' ' || byte == '\t' || byte == standInForBreak;
}

/// A block of text as one single line for a parser of whole documents, so that it reads the inline
/// markup and nothing else.
///
/// A line break stands there as a form feed, which the parser takes for white space and no more: no
/// second line can become a heading, a list item, a fence or an underline, and none of the blanks
/// around the break is dropped. A letter and a blank before the line, a blank and a letter behind
/// it make it a paragraph whatever it begins with, and are white space to the emphasis beside them.
struct OneLine {
    /// How many bytes stand before the block and behind it.
    static constexpr qsizetype margin = 2;

    QByteArray bytes; ///< UTF-8
    /// Of each byte's character in the block; one more at the end.
    std::vector<qsizetype> positions;

    explicit OneLine(QStringView block)
        : positions(margin, 0) {
        QString text = block.toString();
        for (qsizetype i = 0; i < text.size(); ++i)
            if (isMarkdownBreak(text[i]))
                text[i] = QLatin1Char(standInForBreak);
            else if (text[i].isHighSurrogate() && i + 1 < text.size() &&
                     text[i + 1].isLowSurrogate())
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

private:
    /// The parser also strikes out between single tildes, but "5~10 or 20~30" means ranges. Tildes
    /// in what may be a link's address stay, for the parser hands an address over as it read it.
    void hideSingleTildes() {
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
    void hideBrokenTargets() {
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
};

/// The characters that a reference ("&amp;", "&#233;") stands for; itself when its name is unknown.
QString referencedCharacters(QByteArrayView reference) {
    // The library that knows the names writes a paragraph, and escapes what HTML must not hold.
    QByteArray html;
    const auto append = [](const MD_CHAR* text, MD_SIZE size, void* all) {
        static_cast<QByteArray*>(all)->append(text, static_cast<qsizetype>(size));
    };
    md_html(reference.data(), static_cast<MD_SIZE>(reference.size()), append, &html, 0, 0);
    constexpr QByteArrayView before = "<p>";
    constexpr QByteArrayView behind = "</p>\n";
    QString text =
        QString::fromUtf8(html.mid(before.size(), html.size() - before.size() - behind.size()));
    text.replace("&lt;"_L1, "<"_L1).replace("&gt;"_L1, ">"_L1);
    text.replace("&quot;"_L1, "\""_L1).replace("&amp;"_L1, "&"_L1);
    return text.contains(QChar::ReplacementCharacter) ? QString(QChar::ReplacementCharacter) : text;
}

QString attributeText(const MD_ATTRIBUTE& attribute) {
    QString text;
    for (int i = 0; attribute.text != nullptr && attribute.substr_offsets[i] < attribute.size;
         ++i) {
        const MD_OFFSET start = attribute.substr_offsets[i];
        const QByteArrayView part(attribute.text + start,
                                  static_cast<qsizetype>(attribute.substr_offsets[i + 1] - start));
        text += attribute.substr_types[i] == MD_TEXT_ENTITY ? referencedCharacters(part)
                                                            : QString::fromUtf8(part);
    }
    return text;
}

AttributedString::Style styleOf(MD_SPANTYPE type) {
    switch (type) {
    case MD_SPAN_STRONG:
        return AttributedString::Strong;
    case MD_SPAN_EM:
        return AttributedString::Emphasis;
    case MD_SPAN_CODE:
        return AttributedString::Code;
    case MD_SPAN_DEL:
        return AttributedString::Strikethrough;
    default:
        return AttributedString::Link;
    }
}

/// Receives the parser's calls for one block. What is shown is taken from the block itself, by
/// position: the parser only tells which parts of the line it was given are shown, and how.
class BlockReader {
public:
    BlockReader(QStringView block, const OneLine& line, AttributedString& result)
        : m_block(block)
        , m_line(line)
        , m_result(result) {}

    void enter(MD_SPANTYPE type, const void* detail) {
        AttributedString::Styles styles = m_styles.back();
        if (type == MD_SPAN_IMG) {
            if (m_imageDepth++ == 0) {
                m_imageAddress = attributeText(static_cast<const MD_SPAN_IMG_DETAIL*>(detail)->src);
                m_imageStart = m_result.text.size();
            }
        } else if (m_imageDepth == 0) { // a description is plain text
            styles |= styleOf(type);
            if (type == MD_SPAN_A)
                m_target = attributeText(static_cast<const MD_SPAN_A_DETAIL*>(detail)->href);
        }
        m_styles.push_back(styles);
    }

    void leave(MD_SPANTYPE type) {
        m_styles.pop_back();
        if (type == MD_SPAN_IMG && --m_imageDepth == 0 && m_result.text.size() == m_imageStart)
            append(m_imageAddress);
    }

    void text(MD_TEXTTYPE type, QByteArrayView piece) {
        if (type == MD_TEXT_ENTITY) {
            append(referencedCharacters(piece));
            return;
        }
        const std::less<const char*> before;
        const char* const base = m_line.bytes.constData();
        if (before(piece.begin(), base) || before(base + m_line.bytes.size(), piece.end()))
            return; // nothing of the block: the parser makes up texts for breaks, and has none here
        qsizetype start = piece.begin() - base;
        qsizetype end = piece.end() - base;
        if (type == MD_TEXT_CODE) {
            // One blank on either side is dropped where it only keeps back quotes apart: shown.
            if (start > 1 && base[start - 1] == ' ' && base[start - 2] == '`')
                --start;
            if (base[end] == ' ' && base[end + 1] == '`')
                ++end;
        }
        // The bytes before the block are none of it; those behind it have its end as their place.
        start = std::max(start, OneLine::margin);
        if (start < end)
            show(type, m_line.positions[static_cast<std::size_t>(start)],
                 m_line.positions[static_cast<std::size_t>(end)]);
    }

private:
    void show(MD_TEXTTYPE type, qsizetype start, qsizetype end) {
        qsizetype from = start;
        for (qsizetype i = start; i < end; ++i) {
            const bool isNul = m_block[i].isNull();
            if (!isNul && (type != MD_TEXT_NORMAL || !isHardBreakMark(i)))
                continue;
            append(m_block.mid(from, i - from));
            if (isNul)
                append(u"\ufffd");
            from = i + 1;
        }
        append(m_block.mid(from, end - from));
    }

    /// A backslash that is not itself escaped, and a line break with more of the block behind it.
    bool isHardBreakMark(qsizetype position) const {
        const QStringView behind = m_block.mid(position + 1);
        if (m_block[position] != u'\\' || behind.isEmpty() || !isMarkdownBreak(behind[0]) ||
            behind.size() == (behind.startsWith(u"\r\n") ? 2 : 1))
            return false;
        qsizetype first = position;
        while (first > 0 && m_block[first - 1] == u'\\')
            --first;
        return (position - first) % 2 == 0;
    }

    void append(QStringView piece) {
        const AttributedString::Styles styles = m_styles.back();
        m_result.append(piece, styles, styles & AttributedString::Link ? m_target : QString());
    }

    QStringView m_block;
    const OneLine& m_line;
    AttributedString& m_result;
    /// Of the spans around, the innermost last.
    std::vector<AttributedString::Styles> m_styles{AttributedString::Styles()};
    QString m_target;
    QString m_imageAddress;
    int m_imageDepth = 0;
    qsizetype m_imageStart = 0;
};

BlockReader& readerOf(void* data) {
    return *static_cast<BlockReader*>(data);
}

} // namespace

void appendInlineMarkdownBlock(QStringView block, AttributedString& result) {
    const qsizetype before = result.text.size();
    const OneLine line(block);
    BlockReader reader(block, line, result);
    MD_PARSER parser = {};
    parser.flags = MD_FLAG_STRIKETHROUGH;
    parser.enter_block = parser.leave_block = [](MD_BLOCKTYPE, void*, void*) { return 0; };
    parser.enter_span = [](MD_SPANTYPE type, void* detail, void* data) {
        readerOf(data).enter(type, detail);
        return 0;
    };
    parser.leave_span = [](MD_SPANTYPE type, void*, void* data) {
        readerOf(data).leave(type);
        return 0;
    };
    parser.text = [](MD_TEXTTYPE type, const MD_CHAR* text, MD_SIZE size, void* data) {
        readerOf(data).text(type, {text, static_cast<qsizetype>(size)});
        return 0;
    };
    if (md_parse(line.bytes.constData(), static_cast<MD_SIZE>(line.bytes.size()), &parser,
                 &reader) != 0) {
        result.truncate(before);
        result.append(block);
    }
}

} // namespace platform

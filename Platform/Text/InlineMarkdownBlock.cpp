// SPDX-License-Identifier: MIT
#include "Platform/Text/InlineMarkdownBlock.h"

#include "Platform/Text/InlineMarkdownLine.h"

#include <md4c-html.h>
#include <md4c.h>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace platform {
namespace {

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

/// Receives the parser's calls for one block. What is shown is taken from the block itself, by
/// position: the parser only tells which parts of the line it was given are shown, and how.
class BlockReader {
public:
    BlockReader(QStringView block, const InlineMarkdownLine& line, AttributedString& result)
        : m_block(block)
        , m_line(line)
        , m_result(result) {}

    void enter(MD_SPANTYPE type, const void* detail);
    void leave(MD_SPANTYPE type);
    void text(MD_TEXTTYPE type, QByteArrayView piece);

private:
    void show(MD_TEXTTYPE type, qsizetype start, qsizetype end);
    bool isHardBreakMark(qsizetype position) const;
    void append(QStringView piece);

    QStringView m_block;
    const InlineMarkdownLine& m_line;
    AttributedString& m_result;
    int m_depths[5] = {}; // of the styles, in the order of their bits
    QString m_target;
    QString m_imageAddress;
    int m_imageDepth = 0;
    qsizetype m_imageStart = 0;
};

std::size_t styleIndex(MD_SPANTYPE type) {
    switch (type) {
    case MD_SPAN_STRONG:
        return 0;
    case MD_SPAN_EM:
        return 1;
    case MD_SPAN_CODE:
        return 2;
    case MD_SPAN_DEL:
        return 3;
    default:
        return 4;
    }
}

void BlockReader::enter(MD_SPANTYPE type, const void* detail) {
    if (type == MD_SPAN_IMG) {
        if (m_imageDepth++ == 0) {
            m_imageAddress = attributeText(static_cast<const MD_SPAN_IMG_DETAIL*>(detail)->src);
            m_imageStart = m_result.text.size();
        }
        return;
    }
    if (m_imageDepth > 0)
        return; // a description is plain text
    if (type == MD_SPAN_A)
        m_target = attributeText(static_cast<const MD_SPAN_A_DETAIL*>(detail)->href);
    ++m_depths[styleIndex(type)];
}

void BlockReader::leave(MD_SPANTYPE type) {
    if (type == MD_SPAN_IMG) {
        if (--m_imageDepth == 0 && m_result.text.size() == m_imageStart)
            append(m_imageAddress);
        return;
    }
    if (m_imageDepth == 0)
        --m_depths[styleIndex(type)];
}

void BlockReader::text(MD_TEXTTYPE type, QByteArrayView piece) {
    if (type == MD_TEXT_ENTITY) {
        append(referencedCharacters(piece));
        return;
    }
    const std::less<const char*> before;
    const char* const base = m_line.bytes.constData();
    if (before(piece.begin(), base) || before(base + m_line.bytes.size(), piece.end()))
        return; // nothing of the block: the parser makes up texts for breaks, and there are none
    qsizetype start = piece.begin() - base;
    qsizetype end = piece.end() - base;
    if (type == MD_TEXT_CODE) {
        // One blank on either side is dropped where it only keeps back quotes apart: shown here.
        if (start > 1 && base[start - 1] == ' ' && base[start - 2] == '`')
            --start;
        if (base[end] == ' ' && base[end + 1] == '`')
            ++end;
    }
    // The bytes before the block are none of it; those behind it have its end as their position.
    start = std::max(start, InlineMarkdownLine::margin);
    if (start < end)
        show(type, m_line.positions[static_cast<std::size_t>(start)],
             m_line.positions[static_cast<std::size_t>(end)]);
}

/// A backslash that is not itself escaped, and a line break with more of the block behind it.
bool BlockReader::isHardBreakMark(qsizetype position) const {
    if (position + 1 >= m_block.size() || m_block[position] != u'\\' ||
        !isMarkdownBreak(m_block[position + 1]))
        return false;
    const qsizetype breakLength = m_block.mid(position + 1).startsWith(u"\r\n") ? 2 : 1;
    if (position + 1 + breakLength >= m_block.size())
        return false;
    qsizetype first = position;
    while (first > 0 && m_block[first - 1] == u'\\')
        --first;
    return (position - first) % 2 == 0;
}

void BlockReader::show(MD_TEXTTYPE type, qsizetype start, qsizetype end) {
    qsizetype from = start;
    for (qsizetype i = start; i < end; ++i) {
        if (type == MD_TEXT_NORMAL && isHardBreakMark(i)) {
            append(m_block.mid(from, i - from));
            from = i + 1;
        } else if (m_block[i].isNull()) {
            append(m_block.mid(from, i - from));
            append(u"\ufffd");
            from = i + 1;
        }
    }
    append(m_block.mid(from, end - from));
}

void BlockReader::append(QStringView piece) {
    AttributedString::Styles styles;
    for (int i = 0; i < 5; ++i)
        styles.setFlag(static_cast<AttributedString::Style>(1 << i), m_depths[i] > 0);
    m_result.append(piece, styles, styles & AttributedString::Link ? m_target : QString());
}

int ignoreBlock(MD_BLOCKTYPE, void*, void*) {
    return 0;
}

int enterSpan(MD_SPANTYPE type, void* detail, void* reader) {
    static_cast<BlockReader*>(reader)->enter(type, detail);
    return 0;
}

int leaveSpan(MD_SPANTYPE type, void*, void* reader) {
    static_cast<BlockReader*>(reader)->leave(type);
    return 0;
}

int readText(MD_TEXTTYPE type, const MD_CHAR* text, MD_SIZE size, void* reader) {
    static_cast<BlockReader*>(reader)->text(type, {text, static_cast<qsizetype>(size)});
    return 0;
}

} // namespace

void appendInlineMarkdownBlock(QStringView block, AttributedString& result) {
    const qsizetype before = result.text.size();
    const InlineMarkdownLine line(block);
    BlockReader reader(block, line, result);
    MD_PARSER parser = {};
    parser.flags = MD_FLAG_STRIKETHROUGH;
    parser.enter_block = ignoreBlock;
    parser.leave_block = ignoreBlock;
    parser.enter_span = enterSpan;
    parser.leave_span = leaveSpan;
    parser.text = readText;
    if (md_parse(line.bytes.constData(), static_cast<MD_SIZE>(line.bytes.size()), &parser,
                 &reader) != 0) {
        result.truncate(before);
        result.append(block);
    }
}

} // namespace platform

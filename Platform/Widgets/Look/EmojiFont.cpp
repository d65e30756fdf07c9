// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Look/EmojiFont.h"

#include "Platform/Text/Emoji.h"

#include <QGlyphRun>
#include <QRawFont>
#include <QSyntaxHighlighter>

namespace platform {

using namespace Qt::StringLiterals;

namespace {

class EmojiHighlighter final : public QSyntaxHighlighter {
public:
    EmojiHighlighter(QTextDocument& document, const EmojiFont& font)
        : QSyntaxHighlighter(&document)
        , m_font(font) {}

protected:
    void highlightBlock(const QString& text) override {
        QList<QTextLayout::FormatRange> formats;
        m_font.addFormats(text, formats);
        for (const QTextLayout::FormatRange& range : formats)
            setFormat(range.start, range.length, range.format);
    }

private:
    const EmojiFont& m_font;
};

} // namespace

/// The family that the desktop's settings put first for emoji; empty where none can draw one.
const QString& EmojiFont::family() const {
    if (m_family.isNull()) {
        QTextLayout face(u"\U0001f600"_s, QFont(u"emoji"_s));
        face.beginLayout();
        face.createLine();
        face.endLayout();
        const QList<QGlyphRun> glyphs = face.glyphRuns();
        m_family = glyphs.isEmpty() ? u""_s : glyphs.first().rawFont().familyName();
    }
    return m_family;
}

void EmojiFont::addFormats(QStringView text, QList<QTextLayout::FormatRange>& formats) const {
    const std::vector<EmojiRun> emoji = emojiRuns(text);
    if (emoji.empty() || family().isEmpty())
        return;
    QTextCharFormat format;
    format.setFontFamilies({family()});
    // Or else the parts of one emoji may be taken from several fonts.
    format.setFontStyleStrategy(QFont::NoFontMerging);
    const QRawFont font = QRawFont::fromFont(QFont(family()));
    for (const EmojiRun& run : emoji) {
        const uint first = text.sliced(run.start, run.length).toUcs4().constFirst();
        if (font.supportsCharacter(first))
            formats.append({static_cast<int>(run.start), static_cast<int>(run.length), format});
    }
}

void EmojiFont::showIn(QTextDocument& document) const {
    new EmojiHighlighter(document, *this); // the document's
}

} // namespace platform

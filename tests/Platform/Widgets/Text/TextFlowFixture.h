// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Text/TextFlow.h"

#include <QFontDatabase>
#include <QImage>
#include <QPainter>

#include <cmath>

/// What the tests of laid out text share.
namespace tests {

inline platform::TextFormat textFormat() {
    platform::TextFormat format;
    format.font.setPixelSize(13);
    format.codeFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    format.codeFont.setPixelSize(13);
    format.text = Qt::black;
    format.link = Qt::blue;
    format.codeBackground = Qt::lightGray;
    format.selection = Qt::yellow;
    return format;
}

inline platform::AttributedString plain(const QString& text) {
    platform::AttributedString styled;
    styled.append(text);
    return styled;
}

/// A flow that shows a text.
struct Filled : platform::TextFlow {
    Filled(const platform::AttributedString& text, qreal width, qsizetype chunkSize = 3000)
        : TextFlow(chunkSize) {
        setFormat(textFormat());
        resize(width);
        replaceTail(0, text);
    }

    void resize(qreal width) {
        setWidth(width);
        setFrameWidth(width);
    }

    qreal lineHeight() const { return format().lineHeight(); }

    /// All of it, drawn.
    QImage picture(platform::TextSpan selection = {}) {
        QImage image(static_cast<int>(std::ceil(width())), static_cast<int>(std::ceil(height())),
                     QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        draw(painter, {0, 0}, image.rect(), {{selection, format().selection}});
        return image;
    }
};

/// Lines of many kinds: short and long, of several scripts and breaks.
inline QString variedText() {
    return QStringLiteral(
        u"A first paragraph of several words that needs more than one line.\n\nShort\r\n"
        "\u05e9\u05dc\u05d5\u05dd \u05e2\u05d5\u05dc\u05dd, \u05de\u05d4 "
        "\u05e7\u05d5\u05e8\u05d4"
        "?\rtab\there \U0001f600 emoji\u2028and aVeryLongWordThatDoesNotFitIntoOneLineAtAll\n");
}

} // namespace tests

// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QTextLayout>

class QTextDocument;

namespace platform {

/// The font that draws emoji. A text's own font may hold drawings of some of them, in black, and
/// none of others: the two would stand side by side.
///
/// The desktop's font for emoji is looked up when the first one is shown. Main thread only.
class EmojiFont {
public:
    /// Adds, behind what is there, a format for each emoji of a text that the font can draw. The
    /// formats that are there keep their colours, weights and lines.
    void addFormats(QStringView text, QList<QTextLayout::FormatRange>& formats) const;

    /// Shows the emoji of an editor's document in the font from here on; its text stays as it is.
    /// The font outlives the document.
    void showIn(QTextDocument& document) const;

    /// Looks the font up anew when it is next needed.
    void forget() { m_family.clear(); }

private:
    const QString& family() const;

    mutable QString m_family;
};

} // namespace platform

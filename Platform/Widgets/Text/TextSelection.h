// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"

#include <QStringView>

namespace platform {

/// What a single, a double and a triple click select.
enum class TextUnit { Character, Word, Paragraph };

/// The selected part of a text, drawn in whole characters, words or paragraphs from where it began.
class TextSelection {
public:
    /// Selects a part of the text, in characters.
    explicit TextSelection(TextSpan span = {})
        : m_began(span)
        , m_reached(span) {}

    /// Begins with the unit around a position: nothing for Character; for Word the word, or the run
    /// of blanks, or the sign there; for Paragraph the paragraph without its line break.
    TextSelection(QStringView text, qsizetype position, TextUnit unit);

    /// The same beginning, reaching to the unit around a position, before or behind it.
    TextSelection extended(QStringView text, qsizetype position) const;

    /// Ends where the text ends now.
    void limit(qsizetype length);

    TextSpan span() const;

private:
    TextSpan m_began;
    TextSpan m_reached;
    TextUnit m_unit = TextUnit::Character;
};

} // namespace platform

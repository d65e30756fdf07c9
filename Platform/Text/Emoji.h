// SPDX-License-Identifier: MIT
#pragma once

#include <QStringView>

#include <vector>

namespace platform {

/// One emoji of a text, in UTF-16 units.
struct EmojiRun {
    qsizetype start = 0;
    qsizetype length = 0;

    bool operator==(const EmojiRun&) const = default;
};

/// The characters of a text that are to be drawn as emoji, in order, each with all that belongs to
/// it: those whose usual presentation is an emoji, and whatever U+FE0F, a keycap, a skin tone, a
/// flag's second letter or a joiner makes one. U+FE0E keeps a character a letter. Unicode Technical
/// Standard #51.
std::vector<EmojiRun> emojiRuns(QStringView text);

} // namespace platform

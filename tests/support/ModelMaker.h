// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayList>

namespace tests {

/// What a model for tests says, whatever it is asked.
///
/// The file is a whole model that the real engine runs, small enough (some 3 MB) to be made anew by
/// every test. Its one block adds nothing to a token's embedding, so that the last token alone
/// decides on the next one, whatever the sampling: a chain of tokens.
struct TinyModel {
    /// The tokens of the reply in order, in UTF-8. Each stands only once, since each has one
    /// successor; none but the ends of a multi-byte character may be a single byte that also occurs
    /// in the template's last word ("assistant" and a line feed).
    QByteArrayList tokens;
    /// After the last token comes the first one again, until the context is full.
    bool isEndless = false;
    /// The longest conversation that the model was made for, in tokens.
    quint32 contextLength = 8192;

    /// Blocks, and numbers to a token's vector: 1 and the smallest possible where speed does not
    /// matter. More of them cost the engine the time of a real model of that size; the reply stays.
    int blocks = 1;
    qsizetype width = 0;
    /// As in real models, the blocks' numbers are kept in four bits each, and eight heads share
    /// their keys and values.
    bool isLikeReal = false;

    /// "The quick brown fox jumps over a lazy dog."
    static TinyModel sentence();
    /// One word after the other without end.
    static TinyModel endless();
    /// As endless(), at the speed of a real model of 200 MB.
    static TinyModel heavy();
    /// As endless(), with the 1.8 billion numbers of a real model in 1 GB.
    static TinyModel large();
    /// "é🦊": six tokens of one byte each.
    static TinyModel splitCharacters();
};

/// The whole reply of the model; of an endless one, its first round.
QByteArray replyOf(const TinyModel& model);

/// The model as the bytes of a model file.
QByteArray modelFile(const TinyModel& model);

} // namespace tests

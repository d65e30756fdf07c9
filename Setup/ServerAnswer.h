// SPDX-License-Identifier: MIT
#pragma once

#include <QNetworkReply>
#include <QUrl>

namespace setup {

// What a server's answer means to who fetches a file of `size` bytes, of which `from` are there.
// Every sentence is one for the user.

/// Where the server sends on to; empty where it does not.
QUrl redirectTarget(const QNetworkReply& answer);

/// Why the body of this answer is not the file; empty where it is, or the rest of it. Asked when
/// the header fields are there.
QString problemOf(const QNetworkReply& answer, qint64 from, qint64 size);

/// Whether the body begins with the file's first byte, although later ones were asked for.
bool beginsAnew(const QNetworkReply& answer);

/// Why there is no answer, or no more of it.
QString sentenceFor(QNetworkReply::NetworkError error);

/// The server has nothing where the file should be.
QString missingFileSentence();

/// The server has something else where the file should be.
QString otherFileSentence();

/// The server sends on to an address that is not trusted.
QString astraySentence();

} // namespace setup

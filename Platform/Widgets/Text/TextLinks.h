// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Text/AttributedString.h"

#include <QUrl>

#include <optional>

namespace platform {

/// Where a link leads if it may be followed: addresses of the web and of mail, nothing else.
std::optional<QUrl> openableAddress(const QString& target);

/// A link of a text that may be followed.
struct TextLink {
    TextSpan span; ///< empty: there is no link
    QUrl address;

    bool isNone() const { return span.isEmpty(); }
};

/// The link that a character belongs to.
TextLink linkAt(const AttributedString& text, qsizetype character);

/// The first link that begins at `position` or behind it.
TextLink linkFrom(const AttributedString& text, qsizetype position);

/// The last link that ends at `position` or before it.
TextLink linkUpTo(const AttributedString& text, qsizetype position);

} // namespace platform

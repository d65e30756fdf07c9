// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace platform {

/// The general pasteboard: what Copy puts there, Paste gets in any program. Main thread only, while
/// the application object lives.
class Pasteboard {
public:
    /// Takes everything off the pasteboard.
    void clearContents();
    /// Puts a text there as it stands, in place of what was there.
    void setString(const QString& text);
    /// The text that is there; empty when there is none.
    QString string() const;
};

} // namespace platform

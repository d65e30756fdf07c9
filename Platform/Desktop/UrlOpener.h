// SPDX-License-Identifier: MIT
#pragma once

#include <QDesktopServices>
#include <QUrl>

#include <functional>

namespace platform {

/// Opens addresses in the user's browser or mail program.
///
/// The addresses come from replies of a model, so only what is harmless to open goes through: web
/// pages (http, https) with a host, and mail (mailto). A mail address may carry a subject and a
/// text, but never names a file to attach. Main thread only.
class UrlOpener {
public:
    /// Opens an address and tells whether that worked.
    using Open = std::function<bool(const QUrl&)>;

    /// @param open by the desktop's programs, where nothing else is given.
    explicit UrlOpener(Open open = &QDesktopServices::openUrl)
        : m_open(std::move(open)) {}

    /// Opens the address; one of another kind is ignored. True if a program took it.
    bool open(const QUrl& url) const;

private:
    Open m_open;
};

} // namespace platform

// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Pasteboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace platform {

void Pasteboard::clearContents() {
    QGuiApplication::clipboard()->clear();
}

void Pasteboard::setString(const QString& text) {
    QGuiApplication::clipboard()->setText(text);
}

QString Pasteboard::string() const {
    return QGuiApplication::clipboard()->text();
}

} // namespace platform

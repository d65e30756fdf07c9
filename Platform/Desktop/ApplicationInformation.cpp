// SPDX-License-Identifier: MIT
#include "Platform/Desktop/ApplicationInformation.h"

#include <QCoreApplication>

namespace platform {

using namespace Qt::StringLiterals;

QString ApplicationInformation::versionKey() {
    return u"CFBundleShortVersionString"_s;
}

QString ApplicationInformation::nameKey() {
    return u"CFBundleName"_s;
}

ApplicationInformation ApplicationInformation::ofThisProgram() {
    QHash<QString, QString> texts;
    if (const QString version = QCoreApplication::applicationVersion(); !version.isEmpty())
        texts.insert(versionKey(), version);
    if (const QString name = QCoreApplication::applicationName(); !name.isEmpty())
        texts.insert(nameKey(), name);
    return ApplicationInformation(std::move(texts));
}

std::optional<QString> ApplicationInformation::text(const QString& key) const {
    const auto found = m_texts.constFind(key);
    return found == m_texts.constEnd() ? std::nullopt : std::optional(*found);
}

} // namespace platform

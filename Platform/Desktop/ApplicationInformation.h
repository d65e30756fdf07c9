// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

#include <optional>

namespace platform {

/// What a program's package tells about it: texts by keys. Any thread.
class ApplicationInformation {
public:
    /// The key of the version for people, "1.0.0".
    static QString versionKey();
    /// The key of the program's name.
    static QString nameKey();

    /// What the application object was told about this program; empty texts count as absent.
    static ApplicationInformation ofThisProgram();

    ApplicationInformation() = default;
    explicit ApplicationInformation(QHash<QString, QString> texts)
        : m_texts(std::move(texts)) {}

    /// The text of a key, or none.
    std::optional<QString> text(const QString& key) const;

private:
    QHash<QString, QString> m_texts;
};

} // namespace platform

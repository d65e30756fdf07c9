// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QTest>

namespace tests {

/// What a file holds; "unreadable" where it cannot be read.
inline QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

/// Makes the file hold these bytes and no others. Its folder is there.
inline void writeBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

} // namespace tests

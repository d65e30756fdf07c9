// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

namespace tests {

/// What a file holds; "unreadable" where it cannot be read.
inline QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

/// Makes a file, with its folder, that holds these bytes and no others.
inline void writeBytes(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

/// A script that may be run. A new file: who runs the old one keeps it.
inline void writeProgram(const QString& path, const QByteArray& script) {
    QFile::remove(path);
    writeBytes(path, script);
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

/// How long a test waits for a program, in milliseconds: the machine may be busy with others.
constexpr int processLimit = 30'000;

/// The next line that a program says; empty when it says no more.
inline QByteArray lineOf(QProcess& process) {
    while (!process.canReadLine() && process.waitForReadyRead(processLimit)) {
    }
    return process.readLine().trimmed();
}

} // namespace tests

// SPDX-License-Identifier: MIT
#include "Platform/Desktop/PrivateFolder.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QTemporaryDir>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

using namespace platform;
using namespace Qt::StringLiterals;

class PrivateFolderTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_parent = std::make_unique<QTemporaryDir>(); }

    void aMissingFolderIsMadeForTheUserAlone() {
        QVERIFY(PrivateFolder::open({in(u"made"_s)}));
        const auto folder = PrivateFolder::open({in(u"made"_s)});
        QVERIFY(folder);
        QVERIFY(folder->takeLock("lock"));
        QCOMPARE(modeOf(in(u"made"_s)), 0700U);
        QCOMPARE(modeOf(in(u"made/lock"_s)), 0600U);
    }

    void whatIsNotPrivateIsPassedOver_data() {
        QTest::addColumn<QString>("kind");
        for (const char* kind :
             {"open to all", "open to the group", "a link", "a file", "no parent"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void whatIsNotPrivateIsPassedOver() {
        QFETCH(QString, kind);
        QString path = in(u"taken"_s);
        const QByteArray name = QFile::encodeName(path);
        if (kind.startsWith(u"open")) {
            QCOMPARE(mkdir(name.constData(), 0700), 0);
            QCOMPARE(chmod(name.constData(), kind == u"open to all" ? 0701 : 0710), 0);
        } else if (kind == u"a link") {
            QVERIFY(QDir().mkdir(in(u"elsewhere"_s)) &&
                    QFile::setPermissions(in(u"elsewhere"_s), QFile::ReadOwner | QFile::ExeOwner));
            QVERIFY(QFile::link(in(u"elsewhere"_s), path));
        } else if (kind == u"a file") {
            tests::writeBytes(path, {});
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        } else {
            path += u"/none"_s;
        }
        QVERIFY(!PrivateFolder::open({path}));
        const auto folder = PrivateFolder::open({path, in(u"free"_s), in(u"another"_s)});
        QVERIFY(folder);
        QVERIFY(folder->takeLock("lock"));
        QVERIFY(QFile::exists(in(u"free/lock"_s)));
        QVERIFY(!QFile::exists(in(u"another"_s)));
    }

    void withoutAnyFolderThereIsNone() { QVERIFY(!PrivateFolder::open({})); }

    void aLockHasOneOwnerAtATime() {
        const auto first = PrivateFolder::open({m_parent->path()});
        const auto second = PrivateFolder::open({m_parent->path()});
        UniqueFd lock = first->takeLock("lock");
        QVERIFY(lock);
        QVERIFY(!second->takeLock("lock"));
        QVERIFY(second->takeLock("another"));
        lock = {};
        QVERIFY(second->takeLock("lock"));
    }

    void theLockOfAKilledProcessIsFree() {
        const auto folder = PrivateFolder::open({m_parent->path()});
        const pid_t other = fork();
        if (other == 0) {
            const UniqueFd lock = folder->takeLock("lock");
            kill(getpid(), lock ? SIGKILL : SIGABRT);
        }
        int status = 0;
        QCOMPARE(waitpid(other, &status, 0), other);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGKILL);
        QVERIFY(folder->takeLock("lock"));
    }

    void aSocketsPathIsShortAndLeadsIntoTheFolder() {
        const QString path = in(QString(200, u'x') + u",y"_s);
        const auto folder = PrivateFolder::open({path});
        const QString socket = folder->socketPath("engine.sock");
        QVERIFY(socket.size() < 100);
        QVERIFY(!socket.contains(u','));
        tests::writeBytes(socket, {});
        QVERIFY(QFile::exists(path + u"/engine.sock"_s));
        folder->remove("engine.sock");
        folder->remove("engine.sock");
        QVERIFY(!QFile::exists(socket));
    }

private:
    static unsigned modeOf(const QString& path) {
        struct stat status {};
        return lstat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U
                                                                        : 0;
    }
    QString in(const QString& name) const { return m_parent->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_parent;
};

TELLWICK_TEST(PrivateFolderTests, EventLoop)
#include "PrivateFolderTests.moc"

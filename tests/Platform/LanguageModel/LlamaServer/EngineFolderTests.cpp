// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/EngineFolder.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace platform;
using namespace Qt::StringLiterals;

class EngineFolderTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_parent = std::make_unique<QTemporaryDir>(); }

    void theFolderIsTheUsersAloneAndGoesWithItsOwner();
    void aMissingParentIsMadeForTheUserAlone();
    void whatIsLeftInTheFolderGoesWithIt();
    void theFolderOfAKilledRunIsSweptByTheNextOne();
    void theFoldersOfLivingRunsStay();
    void whatIsNoEngineFolderStays();
    void aParentThatOthersMayEnterIsPassedOver();
    void aParentThatIsALinkIsPassedOver();
    void aPathTooLongForASocketIsPassedOver();
    void aPathWithACommaIsPassedOver();
    void withoutAnyPlaceThereIsNoFolder();

private:
    QString in(const QString& name) const { return m_parent->filePath(name); }
    QStringList entries() const {
        return QDir(m_parent->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_parent;
};

void EngineFolderTests::theFolderIsTheUsersAloneAndGoesWithItsOwner() {
    auto folder = EngineFolder::create({m_parent->path()});
    QVERIFY(folder);
    struct stat status {};
    QCOMPARE(stat(QFile::encodeName(folder->path()).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0700U);
    QVERIFY(folder->socketPath().startsWith(folder->path() + u'/'));
    QVERIFY(folder->socketPath().endsWith(u".sock"));
    folder.reset();
    QCOMPARE(entries(), QStringList());
}

void EngineFolderTests::aMissingParentIsMadeForTheUserAlone() {
    const auto folder = EngineFolder::create({in(u"chat"_s)});
    QVERIFY(folder);
    struct stat status {};
    QCOMPARE(stat(QFile::encodeName(in(u"chat"_s)).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0700U);
}

void EngineFolderTests::whatIsLeftInTheFolderGoesWithIt() {
    auto folder = EngineFolder::create({m_parent->path()});
    QFile file(folder->socketPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    folder.reset();
    QCOMPARE(entries(), QStringList());
}

void EngineFolderTests::theFolderOfAKilledRunIsSweptByTheNextOne() {
    const pid_t run = fork();
    if (run == 0) {
        const auto folder = EngineFolder::create({m_parent->path()});
        QFile file(folder->socketPath());
        (void)file.open(QIODevice::WriteOnly);
        kill(getpid(), SIGKILL);
    }
    int status = 0;
    QCOMPARE(waitpid(run, &status, 0), run);
    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(entries().size(), 1);
    const QString dead = entries().constFirst();

    const auto folder = EngineFolder::create({m_parent->path()});
    QVERIFY(folder);
    QCOMPARE(entries().size(), 1);
    QVERIFY(!entries().contains(dead));
}

void EngineFolderTests::theFoldersOfLivingRunsStay() {
    const auto first = EngineFolder::create({m_parent->path()});
    const auto second = EngineFolder::create({m_parent->path()});
    QVERIFY(first && second);
    QVERIFY(first->path() != second->path());
    QVERIFY(QFile::exists(first->path()));
}

void EngineFolderTests::whatIsNoEngineFolderStays() {
    QVERIFY(QDir().mkdir(in(u"notes"_s)));
    QFile file(in(u"engine-file"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const auto folder = EngineFolder::create({m_parent->path()});
    QVERIFY(folder);
    QVERIFY(QFile::exists(in(u"notes"_s)));
    QVERIFY(QFile::exists(in(u"engine-file"_s)));
}

void EngineFolderTests::aParentThatOthersMayEnterIsPassedOver() {
    QVERIFY(QDir().mkdir(in(u"open"_s)));
    QCOMPARE(chmod(QFile::encodeName(in(u"open"_s)).constData(), 0755), 0);
    const auto folder = EngineFolder::create({in(u"open"_s), in(u"closed"_s)});
    QVERIFY(folder);
    QVERIFY(folder->path().startsWith(in(u"closed/"_s)));
}

void EngineFolderTests::aParentThatIsALinkIsPassedOver() {
    QVERIFY(QFile::link(QDir::homePath(), in(u"link"_s)));
    QVERIFY(!EngineFolder::create({in(u"link"_s)}));
}

void EngineFolderTests::aPathTooLongForASocketIsPassedOver() {
    const QString longParent = in(QString(100, u'x'));
    const auto folder = EngineFolder::create({longParent, in(u"short"_s)});
    QVERIFY(folder);
    QVERIFY(folder->path().startsWith(in(u"short/"_s)));
    QVERIFY(!QFile::exists(longParent));
}

void EngineFolderTests::aPathWithACommaIsPassedOver() {
    const auto folder = EngineFolder::create({in(u"a,b"_s), in(u"short"_s)});
    QVERIFY(folder);
    QVERIFY(folder->path().startsWith(in(u"short/"_s)));
}

void EngineFolderTests::withoutAnyPlaceThereIsNoFolder() {
    QVERIFY(!EngineFolder::create({}));
    QVERIFY(!EngineFolder::create({in(u"missing/parent"_s)}));
}

TELLWICK_TEST(EngineFolderTests, EventLoop)
#include "EngineFolderTests.moc"

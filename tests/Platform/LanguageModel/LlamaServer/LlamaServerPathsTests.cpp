// SPDX-License-Identifier: MIT
#include "Platform/Desktop/PathTexts.h"
#include "Platform/LanguageModel/LlamaServer/LlamaServerPaths.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <sys/stat.h>

#include <limits>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;
using Reason = SystemLanguageModel::Availability::UnavailableReason;

using enum SystemLanguageModel::Availability::UnavailableReason;

namespace {

const auto ownModel = u"home/chat/models/on-device.gguf"_s;
const auto systemModel = u"system/chat/models/on-device.gguf"_s;

} // namespace

class LlamaServerPathsTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_paths.dataFolders = {in(u"home/chat"_s), in(u"system/chat"_s)};
        m_paths.programFolders = {in(u"libexec"_s), in(u"bin"_s)};
        m_paths.memory = [this] { return m_memory; };
    }

    void itIsAvailableAsFarAsAllIsThere_data() {
        QTest::addColumn<int>("modelSize"); // none: no model
        QTest::addColumn<bool>("hasEngine");
        QTest::addColumn<QString>("reason");
        QTest::newRow("model and engine") << 1 << true << QString();
        QTest::newRow("no model") << 0 << true << toText(modelNotReady);
        QTest::newRow("no engine") << 1 << false << toText(appleIntelligenceNotEnabled);
        QTest::newRow("neither") << 0 << false << toText(appleIntelligenceNotEnabled);
        QTest::newRow("a large model") << 1'000'000 << true << toText(deviceNotEligible);
        QTest::newRow("a large model, no engine")
            << 1'000'000 << false << toText(deviceNotEligible);
    }
    void itIsAvailableAsFarAsAllIsThere() {
        QFETCH(int, modelSize);
        QFETCH(bool, hasEngine);
        if (modelSize > 0)
            write(ownModel, QByteArray(modelSize, 'x'));
        if (hasEngine)
            writeEngine(u"bin"_s);
        const auto reason = m_paths.availability().unavailableReason();
        QTEST(reason ? toText(*reason) : QString(), "reason");
    }

    void theMemoryOfTheMomentCountsUnlessTheModelHasIts() {
        writeEngine(u"bin"_s);
        write(ownModel, QByteArray(1'000'000, 'x'));
        QVERIFY(!m_paths.availability().isAvailable());
        QVERIFY(m_paths.availability(true).isAvailable());
        m_memory.available *= 2;
        QVERIFY(m_paths.availability().isAvailable());
    }

    void whatIsPutThereOrTakenAwayCountsAtTheNextQuestion() {
        writeEngine(u"bin"_s);
        QVERIFY(!m_paths.availability().isAvailable());
        write(ownModel);
        QVERIFY(m_paths.availability().isAvailable());
        QFile::remove(in(u"bin/llama-server"_s));
        QVERIFY(m_paths.availability().unavailableReason() == Reason::appleIntelligenceNotEnabled);
    }

    void aLinkToTheModelServes() {
        write(u"home/chat/models/elsewhere.gguf"_s);
        QVERIFY(QFile::link(u"elsewhere.gguf"_s, in(ownModel)));
        QCOMPARE(m_paths.modelFile().value(), in(ownModel));
    }

    void whatIsNoModelFileIsPassedOver_data() {
        QTest::addColumn<QString>("kind");
        for (const char* kind : {"a dangling link", "a folder", "an empty file", "a pipe"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void whatIsNoModelFileIsPassedOver() {
        QFETCH(QString, kind);
        const QString path = in(ownModel);
        QDir().mkpath(in(u"home/chat/models"_s));
        if (kind == u"a dangling link")
            QVERIFY(QFile::link(in(u"nowhere"_s), path));
        else if (kind == u"a folder")
            QVERIFY(QDir().mkdir(path));
        else if (kind == u"a pipe")
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else
            write(ownModel, QByteArray());
        QVERIFY(!m_paths.modelFile());

        write(systemModel);
        QCOMPARE(m_paths.modelFile().value(), in(systemModel));
    }

    void theUsersOwnFileComesBeforeTheSystems() {
        write(ownModel);
        write(systemModel);
        QCOMPARE(m_paths.modelFile().value(), in(ownModel));
    }

    void theApplicationsOwnEngineComesBeforePath() {
        writeEngine(u"bin"_s);
        writeEngine(u"libexec"_s);
        QCOMPARE(m_paths.program().value(), in(u"libexec/llama-server"_s));
    }

    void anEngineThatMayNotBeRunIsPassedOver() {
        write(u"libexec/llama-server"_s);
        QVERIFY(!m_paths.program());
        writeEngine(u"bin"_s);
        QCOMPARE(m_paths.program().value(), in(u"bin/llama-server"_s));
    }

    void theFoldersAreTheUsersAndTheMachinesMemoryIsKnown() {
        const UserDirectories user = UserDirectories::ofThisUser("chat");
        const auto paths = LlamaServerPaths::of(user, u"/app/bin"_s);
        QCOMPARE(paths.dataFolders, toTexts(user.dataFolders()));
        QCOMPARE(paths.programFolders, toTexts(user.programFolders("/app/bin")));
        QCOMPARE(paths.runtimeFolders, toTexts(user.runtimeFolders()));
        QVERIFY(paths.memory().total > 100'000'000);
    }

    void aQuestionCostsWellUnderAMillisecond() {
        write(systemModel);
        writeEngine(u"bin"_s);
        for (int i = 0; i < 10; ++i)
            m_paths.programFolders.prepend(in(u"empty%1"_s.arg(i)));
        m_paths.memory = &MachineMemory::now;
        // The quickest of many: the machine may be busy.
        qint64 quickest = std::numeric_limits<qint64>::max();
        for (int i = 0; i < 200; ++i) {
            QElapsedTimer timer;
            timer.start();
            QVERIFY(m_paths.availability().isAvailable());
            quickest = std::min(quickest, timer.nsecsElapsed());
        }
        QVERIFY2(quickest < 1'000'000, qPrintable(QString::number(quickest)));
    }

private:
    QString in(const QString& path) const { return m_folder->filePath(path); }
    void write(const QString& path, const QByteArray& bytes = "x") const {
        writeBytes(in(path), bytes);
    }
    void writeEngine(const QString& folder) const {
        writeProgram(in(folder + u"/llama-server"_s), "#!/bin/sh\n");
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    LlamaServerPaths m_paths;
    MachineMemory m_memory{.total = 8'000'000'000, .available = 315'000'000};
};

TELLWICK_TEST(LlamaServerPathsTests, EventLoop)
#include "LlamaServerPathsTests.moc"

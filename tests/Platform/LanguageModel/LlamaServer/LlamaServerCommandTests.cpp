// SPDX-License-Identifier: MIT
#include "Platform/LanguageModel/LlamaServer/LlamaServerCommand.h"
#include "tests/support/TestMain.h"

using namespace platform;
using namespace Qt::StringLiterals;

class LlamaServerCommandTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_command.emplace(std::chrono::minutes(5)); }

    void theOptionsKeepTheEngineToItself() {
        for (const auto* part : {"--model /m.gguf ", "--host /run/e.sock ", "--offline ",
                                 "--no-ui ", "--reasoning off ", "--ctx-size 8192 ",
                                 "--parallel 1 ", "--sleep-idle-seconds 300 ", "--no-slots "})
            QVERIFY2(arguments().contains(QLatin1String(part)), part);
        QVERIFY(!arguments().contains(u"--port"));
        QVERIFY(!arguments().contains(u"--device"));
    }

    void withoutTheCardNeitherItNorItsDriversAreUsed() {
        qputenv("VK_ICD_FILENAMES", "/somewhere.json");
        QVERIFY(m_command->environment().contains("VK_ICD_FILENAMES=/somewhere.json"));
        QVERIFY(m_command->leaveOutTheCard());
        QVERIFY(arguments().contains(u"--device none "));
        QVERIFY(m_command->environment().contains("VK_LOADER_DRIVERS_DISABLE=*"));
        QVERIFY(m_command->environment().contains("VK_ICD_FILENAMES=/dev/null"));
        QVERIFY(!m_command->environment().contains("VK_ICD_FILENAMES=/somewhere.json"));
        qunsetenv("VK_ICD_FILENAMES");
        QVERIFY(!m_command->leaveOutTheCard());
        // A version that has no cards has no such option either.
        QVERIFY(m_command->adapt("error: invalid argument: --device"));
        QVERIFY(!arguments().contains(u"--device"));
    }

    void aRefusedOptionIsReplacedByItsOlderSpelling() {
        QVERIFY(m_command->adapt("error: invalid argument: --no-ui\n"));
        QVERIFY(arguments().contains(u"--no-webui "));
        QVERIFY(!arguments().contains(u"--no-ui "));
        QVERIFY(m_command->adapt("error while handling argument \"--reasoning\": unknown value"));
        QVERIFY(arguments().contains(u"--reasoning-budget 0 "));
        QVERIFY(!arguments().contains(u"--reasoning off"));
    }

    void whatHasNoOlderSpellingIsLeftOut() {
        QVERIFY(m_command->adapt("error: invalid argument: --cache-ram"));
        QVERIFY(!arguments().contains(u"--cache-ram"));
        QVERIFY(!m_command->adapt("error: invalid argument: --cache-ram"));
    }

    void anOptionWhoseNameBeginsAnothersIsNotMistakenForIt() {
        QVERIFY(!m_command->adapt("error: invalid argument: --reasoning-format"));
        QVERIFY(arguments().contains(u"--reasoning off "));
    }

    void aComplaintAboutSomethingElseChangesNothing_data() {
        QTest::addColumn<QByteArray>("complaint");
        QTest::newRow("nothing said") << QByteArray();
        QTest::newRow("an unknown option") << QByteArray("error: invalid argument: --frobnicate");
        QTest::newRow("an option that has no other spelling")
            << QByteArray("error: invalid argument: --ctx-size");
        QTest::newRow("a message that names an option")
            << QByteArray("failed to load model, see --no-ui");
    }
    void aComplaintAboutSomethingElseChangesNothing() {
        QFETCH(QByteArray, complaint);
        const QString before = arguments();
        QVERIFY(!m_command->adapt(complaint));
        QCOMPARE(arguments(), before);
    }

    void theUsersOwnSettingsOfTheEngineDoNotReachIt() {
        qputenv("LLAMA_ARG_N_PREDICT", "2");
        qputenv("OTHER", "2");
        qunsetenv("OMP_WAIT_POLICY");
        const QByteArrayList variables = m_command->environment();
        QVERIFY(!variables.contains("LLAMA_ARG_N_PREDICT=2"));
        QVERIFY(variables.contains("OTHER=2"));
        QVERIFY(variables.contains("OMP_WAIT_POLICY=passive"));
    }

    void itsThreadsWaitAsTheUserWants() {
        qputenv("OMP_WAIT_POLICY", "active");
        QVERIFY(m_command->environment().contains("OMP_WAIT_POLICY=active"));
        QVERIFY(!m_command->environment().contains("OMP_WAIT_POLICY=passive"));
    }

private:
    QString arguments() const {
        return m_command->arguments(u"/m.gguf"_s, u"/run/e.sock"_s, 8'192).join(u' ') + u' ';
    }

    std::optional<LlamaServerCommand> m_command;
};

TELLWICK_TEST(LlamaServerCommandTests, EventLoop)
#include "LlamaServerCommandTests.moc"

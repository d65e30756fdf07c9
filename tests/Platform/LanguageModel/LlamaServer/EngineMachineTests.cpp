// SPDX-License-Identifier: MIT
#include "tests/support/Files.h"
#include "tests/support/TestEngine.h"
#include "tests/support/TestMain.h"

#include <signal.h>

using namespace platform;
using namespace tests;
using namespace Qt::StringLiterals;
using Reason = SystemLanguageModel::Availability::UnavailableReason;

/// The real engine on machines with little memory, and with graphics cards that are of no use.
class EngineMachineTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { REQUIRE_ENGINE(); }
    void init() {
        m_chat.reset();
        m_folders.emplace();
        m_chat.emplace(m_folders->paths());
    }

    void withLittleMemoryLeftTheContextIsSmaller() {
        LlamaServerPaths paths = m_folders->paths();
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        QVERIFY(commandLine().contains(" --ctx-size 8192 "));
        paths.memory = &EngineFolders::littleMemory;
        m_chat.emplace(paths);
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        QVERIFY(commandLine().contains(" --ctx-size 2048 "));
    }

    void withTooLittleTheModelIsUnavailableUnlessItHasItsMemoryAlready() {
        const auto memory = std::make_shared<MachineMemory>();
        LlamaServerPaths paths = m_folders->paths();
        paths.memory = [memory] { return *memory; };
        m_chat.emplace(paths);
        QVERIFY(m_chat->model.availability().unavailableReason() == Reason::deviceNotEligible);
        QCOMPARE(answerTo(u"Hello"_s),
                 u"Error: There is not enough free memory for the on-device model. Close other "
                 u"programs and try again."_s);
        QVERIFY(!m_chat->model.isAvailable());

        *memory = EngineFolders::littleMemory();
        QVERIFY(m_chat->model.isAvailable());
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        *memory = {};
        QVERIFY(m_chat->model.isAvailable());
        QCOMPARE(answerTo(u"Again"_s), m_reply);
    }

    void aCardThatCannotServeIsLeftOutUnnoticed_data() {
        QTest::addColumn<QByteArray>("fault");
        QTest::newRow("its driver crashes") << QByteArray("kill -SEGV $$");
        QTest::newRow("its driver gives up") << QByteArray("kill -ABRT $$");
        QTest::newRow("behind a script") << QByteArray("sh -c 'kill -SEGV $$'; exit $?");
        QTest::newRow("too small")
            << QByteArray("echo 'ggml_vulkan: Device memory allocation of size 8 failed.'; exit 1");
        QTest::newRow("lost") << QByteArray("echo 'vk::Queue::submit: ErrorDeviceLost'; exit 1");
    }
    void aCardThatCannotServeIsLeftOutUnnoticed() {
        QFETCH(QByteArray, fault);
        m_folders->setEngineScript("echo x >>'" + m_folders->path(u"starts"_s).toUtf8() +
                                   "'\ncase \"$*\" in *'--device none'*) ;; *) " + fault +
                                   " ;; esac\n" + EngineFolders::realEngine);
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        QCOMPARE(bytesOf(m_folders->path(u"starts"_s)), QByteArray("x\nx\n"));
        // Not even its driver is loaded any more.
        const QByteArray variables = '\0' + bytesOf(u"/proc/%1/environ"_s.arg(engineProcess()));
        QVERIFY(variables.contains(QByteArray("\0VK_LOADER_DRIVERS_DISABLE=*\0", 29)));

        // What was learnt holds for the next start.
        kill(static_cast<pid_t>(engineProcess()), SIGKILL);
        QTRY_COMPARE(engineProcess(), qint64{0});
        QCOMPARE(answerTo(u"Again"_s), m_reply);
        QCOMPARE(bytesOf(m_folders->path(u"starts"_s)), QByteArray("x\nx\nx\n"));
    }

    void anEngineThatCrashesLaterIsStartedWithoutTheCard_data() {
        QTest::addColumn<int>("signal");
        QTest::addColumn<bool>("isCrash");
        QTest::newRow("a crash") << SIGABRT << true;
        QTest::newRow("killed by somebody") << SIGKILL << false;
        QTest::newRow("asked to end") << SIGTERM << false;
    }
    void anEngineThatCrashesLaterIsStartedWithoutTheCard() {
        QFETCH(int, signal);
        QCOMPARE(answerTo(u"Hello"_s), m_reply);
        QVERIFY(!commandLine().contains(" --device "));
        const qint64 first = engineProcess();
        kill(static_cast<pid_t>(first), signal);
        QTRY_VERIFY(!isRunning(first));
        QCOMPARE(answerTo(u"Again"_s), m_reply);
        QTEST(commandLine().contains(" --device none "), "isCrash");
    }

private:
    QString answerTo(const QString& prompt) { return outcomeOf(m_chat->ask(prompt)); }
    static QByteArray commandLine() {
        return bytesOf(u"/proc/%1/cmdline"_s.arg(engineProcess())).replace('\0', ' ');
    }

    const QString m_reply = QString::fromUtf8(replyOf(TinyModel::sentence()));
    std::optional<EngineFolders> m_folders;
    std::optional<EngineChat> m_chat;
};

TELLWICK_TEST(EngineMachineTests, EventLoop)
#include "EngineMachineTests.moc"

// SPDX-License-Identifier: MIT
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QTemporaryDir>

using namespace tests;
using namespace Qt::StringLiterals;

/// tellwick-setup as it is installed, beside programs that write down what they are started with.
class LauncherTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_program = u"bin/tellwick-setup"_s;
        QDir().mkpath(in(u"bin"_s));
        QVERIFY(QFile::copy(QStringLiteral(SETUP_LAUNCHER), in(u"bin/tellwick-setup"_s)));
        const auto act = [this](const QString& path, const QByteArray& name) {
            writeProgram(in(path), "#!/bin/sh\nprintf '" + name + "' >'" + in(u"ran"_s).toUtf8() +
                                       "'\nprintf '|%s' \"$@\" >>'" + in(u"ran"_s).toUtf8() +
                                       "'\nexit 7\n");
        };
        act(u"bin/tellwick"_s, "tellwick");
        act(u"libexec/tellwick/tellwick-setup-window"_s, "window");
    }

    void itBecomesWhatIsWanted_data() {
        QTest::addColumn<QStringList>("there"); // files
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("ran");
        const auto model = u"data/tellwick/models/on-device.gguf"_s;
        const auto engine = u"path/llama-server"_s;
        const auto notNow = u"data/tellwick/setup-not-now"_s;
        const QStringList both{model, engine};
        const QStringList open{u"--open"_s};
        QTest::newRow("all there") << both << open << u"tellwick|"_s;
        QTest::newRow("all there, with arguments")
            << both << QStringList{u"--open"_s, u"--style"_s, u"a b"_s, u""_s}
            << u"tellwick|--style|a b|"_s;
        QTest::newRow("a model of the system's, an engine of the program's own")
            << QStringList{u"system/tellwick/models/on-device.gguf"_s,
                           u"libexec/tellwick/llama-server"_s}
            << open << u"tellwick|"_s;
        QTest::newRow("an engine of the user's")
            << QStringList{model, u"data/tellwick/engine/bin/llama-server"_s} << open
            << u"tellwick|"_s;
        QTest::newRow("no model") << QStringList{engine} << open << u"window|--open"_s;
        QTest::newRow("no engine") << QStringList{model} << open << u"window|--open"_s;
        QTest::newRow("neither, with arguments")
            << QStringList() << QStringList{u"--open"_s, u"--style"_s, u"a b"_s}
            << u"window|--open|--style|a b"_s;
        QTest::newRow("neither, and not now") << QStringList{notNow} << open << u"tellwick|"_s;
        QTest::newRow("not now, with arguments")
            << QStringList{notNow} << QStringList{u"--open"_s, u"--help"_s} << u"tellwick|--help"_s;
        QTest::newRow("the window") << QStringList() << QStringList() << u"window|"_s;
        QTest::newRow("the window, with all there") << both << QStringList() << u"window|"_s;
        QTest::newRow("in the terminal")
            << both << QStringList{u"--terminal"_s, u"--model"_s, u"small"_s}
            << u"window|--terminal|--model|small"_s;
    }
    void itBecomesWhatIsWanted() {
        QFETCH(QStringList, there);
        QFETCH(QStringList, arguments);
        for (const QString& path : there)
            writeProgram(in(path), "#!/bin/sh\n");
        // The status is that of the program that it has become.
        QCOMPARE(start(arguments), 7);
        QTEST(QString::fromUtf8(bytesOf(in(u"ran"_s))), "ran");
    }

    void aModelThatIsEmptyOrAnEngineThatMayNotBeRunIsNotThere() {
        writeBytes(in(u"data/tellwick/models/on-device.gguf"_s), "");
        writeProgram(in(u"path/llama-server"_s), "#!/bin/sh\n");
        start({u"--open"_s});
        QCOMPARE(bytesOf(in(u"ran"_s)), QByteArray("window|--open"));
        writeBytes(in(u"data/tellwick/models/on-device.gguf"_s), "x");
        QFile::setPermissions(in(u"path/llama-server"_s), QFile::ReadOwner);
        start({u"--open"_s});
        QCOMPARE(bytesOf(in(u"ran"_s)), QByteArray("window|--open"));
    }

    void aSetUpThatIsNotThereKeepsNobodyFromTellwick() {
        QFile::remove(in(u"libexec/tellwick/tellwick-setup-window"_s));
        QCOMPARE(start({u"--open"_s, u"--style"_s, u"fusion"_s}), 7);
        QCOMPARE(bytesOf(in(u"ran"_s)), QByteArray("tellwick|--style|fusion"));
    }

    void whatCannotBeStartedIsTold() {
        QFile::remove(in(u"bin/tellwick"_s));
        writeBytes(in(u"data/tellwick/setup-not-now"_s), "");
        QCOMPARE(start({u"--open"_s}), 1);
        QCOMPARE(m_said,
                 u"tellwick-setup: %1 cannot be started: No such file or directory.\n"_s.arg(
                     in(u"bin/tellwick"_s)));
    }

    void aLinkToItLeadsToTheSamePrograms() {
        QVERIFY(QFile::link(in(u"bin/tellwick-setup"_s), in(u"link"_s)));
        m_program = u"link"_s;
        QCOMPARE(start({}), 7);
        QCOMPARE(bytesOf(in(u"ran"_s)), QByteArray("window|"));
    }

    void itTellsHowItIsCalled() {
        QCOMPARE(start({u"--help"_s}), 0);
        QVERIFY(m_printed.startsWith(u"Usage: tellwick-setup [--open"));
        QCOMPARE(start({u"--version"_s}), 0);
        QCOMPARE(m_printed, u"tellwick-setup " TELLWICK_VERSION "\n"_s);
        QCOMPARE(start({u"--nonsense"_s}), 2);
        QVERIFY(m_said.startsWith(u"Usage: tellwick-setup"));
        QVERIFY(!QFile::exists(in(u"ran"_s)));
    }

private:
    QString in(const QString& path) const {
        return QFileInfo(m_folder->path()).canonicalFilePath() + u'/' + path;
    }

    int start(const QStringList& arguments) {
        QProcessEnvironment environment;
        environment.insert(u"XDG_DATA_HOME"_s, in(u"data"_s));
        environment.insert(u"XDG_DATA_DIRS"_s, in(u"system"_s));
        environment.insert(u"PATH"_s, in(u"path"_s));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(in(m_program), arguments);
        const bool hasEnded = process.waitForFinished(processLimit);
        m_printed = QString::fromUtf8(process.readAllStandardOutput());
        m_said = QString::fromUtf8(process.readAllStandardError());
        return hasEnded ? process.exitCode() : -1;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_program;
    QString m_printed;
    QString m_said;
};

TELLWICK_TEST(LauncherTests, EventLoop)
#include "LauncherTests.moc"

// SPDX-License-Identifier: MIT
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QStandardPaths>
#include <QTemporaryDir>

using namespace tests;
using namespace Qt::StringLiterals;

namespace {

const QByteArray engine = "#!/bin/sh\necho version 1\n";

} // namespace

/// scripts/get-engine on systems made up of scripts: PATH holds what the test puts there.
class GetEngineTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        QDir().mkpath(in(u"bin"_s));
        for (const char* tool :
             {"awk",  "bash", "cat",  "chmod", "cut",     "dirname", "env", "flock",
              "grep", "head", "ln",   "mkdir", "mktemp",  "mv",      "rm",  "sed",
              "sh",   "sort", "tail", "tar",   "timeout", "tr"}) {
            const QString name = QString::fromLatin1(tool);
            QFile::link(QStandardPaths::findExecutable(name), in(u"bin/"_s + name));
        }
        setCard(false);
        m_environment.clear();
        m_environment.insert(u"PATH"_s, in(u"bin"_s));
        m_environment.insert(u"HOME"_s, in(u"home"_s));
        m_environment.insert(u"TMPDIR"_s, in(u"tmp"_s));
        QDir().mkpath(in(u"tmp"_s));
    }

    void anEngineOnPathIsLinked() {
        write(u"bin/llama-server"_s, engine);
        const Outcome outcome = run();
        QCOMPARE(outcome.status, 0);
        QCOMPARE(QFile::symLinkTarget(in(u"libexec/llama-server"_s)), in(u"bin/llama-server"_s));
    }

    void anEngineThatIsThereIsLeftAloneAndNobodyAsked() {
        makeApt("1.2-3", "update) ;;\n");
        write(u"libexec/llama-server"_s, engine);
        const Outcome outcome = run();
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.lines, QStringList());
        QVERIFY(!QFile::exists(in(u"asked"_s)));
        QCOMPARE(contents(u"libexec/llama-server"_s), engine);
    }

    void anEngineThatHasGoneIsReplaced() {
        write(u"bin/llama-server"_s, engine);
        write(u"libexec/llama-server"_s, "#!/bin/sh\n#\n# engine: /nowhere/engine\nexit 1\n");
        QCOMPARE(run().status, 0);
        QCOMPARE(contents(u"libexec/llama-server"_s), engine);

        QFile::remove(in(u"libexec/llama-server"_s));
        QVERIFY(QFile::link(u"/nowhere/engine"_s, in(u"libexec/llama-server"_s)));
        QCOMPARE(run().status, 0);
        QCOMPARE(contents(u"libexec/llama-server"_s), engine);
    }

    void aLinkToItselfIsNotAnEngine() {
        m_environment.insert(u"PATH"_s, in(u"libexec"_s) + u':' + in(u"bin"_s));
        write(u"libexec/llama-server"_s, "#!/bin/sh\n#\n# engine: /nowhere/engine\nexit 1\n");
        const Outcome outcome = run();
        QCOMPARE(outcome.status, 1);
        QVERIFY(!QFileInfo(in(u"libexec/llama-server"_s)).isSymLink());
    }

    void anEngineOnPathThatDoesNotRunDoesNotCount() {
        write(u"bin/llama-server"_s, "#!/bin/sh\nexit 127\n");
        QCOMPARE(run().status, 1);
        QVERIFY(!QFile::exists(in(u"libexec/llama-server"_s)));
    }

    void theSystemsPackageIsInstalledWhereThereIsOne() {
        write(u"bin/sudo"_s, "#!/bin/sh\nexec \"$@\"\n");
        write(u"bin/apt-cache"_s, "#!/bin/sh\nprintf 'llama.cpp-tools:\\n  Candidate: 1.2-3\\n'\n");
        write(u"bin/apt-get"_s, "#!/bin/sh\necho \"$*\" >>'" + in(u"asked"_s).toUtf8() +
                                    "'\nprintf '" + "#!/bin/sh\\necho version 1\\n' >'" +
                                    in(u"bin/llama-server"_s).toUtf8() + "'\nchmod +x '" +
                                    in(u"bin/llama-server"_s).toUtf8() + "'\n");
        const Outcome outcome = run();
        QVERIFY2(outcome.status == 0, qPrintable(outcome.lines.join(u'\n')));
        QCOMPARE(contents(u"asked"_s),
                 QByteArray("install -y --no-install-recommends llama.cpp-tools\n"));
        QCOMPARE(QFile::symLinkTarget(in(u"libexec/llama-server"_s)), in(u"bin/llama-server"_s));

        // With the part for the graphics card, which it also does without.
        for (const QByteArray& outcomeForTheCard : {QByteArray("0"), QByteArray("100")}) {
            QFile::remove(in(u"bin/llama-server"_s));
            QFile::remove(in(u"libexec/llama-server"_s));
            QFile::remove(in(u"asked"_s));
            write(u"bin/apt-get"_s, bytesOf(in(u"bin/apt-get"_s)) + "case $* in *vulkan*) exit " +
                                        outcomeForTheCard + ";; esac\n");
            setCard(true);
            QCOMPARE(run().status, 0);
            QCOMPARE(contents(u"asked"_s),
                     QByteArray("install -y --no-install-recommends llama.cpp-tools\n"
                                "install -y --no-install-recommends libggml0-backend-vulkan\n"));
            QVERIFY(QFile::exists(in(u"libexec/llama-server"_s)));
        }
    }

    void forTheUserAloneNoPackageIsInstalled() {
        // A release that has the package itself; whoever asks for other rights fails the test.
        write(u"bin/sudo"_s, "#!/bin/sh\necho sudo >>'" + in(u"asked"_s).toUtf8() + "'\nexit 1\n");
        makeApt("1.2-3", "    update) cat \"$(dirname \"$APT_CONFIG\")/sources.list\" >>'" +
                             in(u"asked"_s).toUtf8() + "'; exit 100 ;;\n");
        write(u"bin/apt-cache"_s, "#!/bin/sh\nprintf 'llama.cpp-tools:\\n  Candidate: 1.2-3\\n'\n");
        const Outcome outcome = run({u"--for-user"_s, in(u"libexec"_s)});
        QCOMPARE(outcome.status, 1);
        const QByteArray asked = contents(u"asked"_s);
        QVERIFY2(!asked.contains("sudo") && !asked.contains("install"), asked.constData());
        // Its own release is asked first.
        const QByteArray release = asked.mid(asked.indexOf("/mirror ")).split(' ').value(1);
        QVERIFY2(!release.isEmpty() && release != "forky" && release != "resolute",
                 asked.constData());
    }

    void oneLineSaysWhyThereIsNone_data() {
        QTest::addColumn<QByteArray>("candidate"); // none: a system without packages
        QTest::addColumn<QByteArray>("update");    // none: apt names no mirror
        QTest::addColumn<QString>("told");
        QTest::newRow("no packages")
            << QByteArray() << QByteArray()
            << u"get-engine: llama-server is not installed; install llama.cpp "
               "with the system's package manager."_s;
        QTest::newRow("a mirror that cannot be read")
            << QByteArray("1.2-3") << QByteArray("update) exit 100 ;;\n")
            << u"get-engine: llama-server cannot be had: the mirror could not be read."_s;
        QTest::newRow("a mirror without it")
            << QByteArray("(none)") << QByteArray("update) ;;\n")
            << u"get-engine: llama-server cannot be had: the mirror does not have it."_s;
        QTest::newRow("no mirror")
            << QByteArray("1.2-3") << QByteArray()
            << u"get-engine: llama-server is not packaged for this release, and apt names no mirror to get it from."_s;
    }
    void oneLineSaysWhyThereIsNone() {
        QFETCH(QByteArray, candidate);
        QFETCH(QByteArray, update);
        if (!candidate.isEmpty())
            makeApt(candidate, update);
        if (update.isEmpty() && !candidate.isEmpty())
            write(u"bin/apt-get"_s, "#!/bin/sh\n");
        const Outcome outcome = run();
        QCOMPARE(outcome.status, 1);
        QTEST(outcome.lines.constLast(), "told");
        QVERIFY(!QFile::exists(in(u"libexec/llama-server"_s)));
        QCOMPARE(temporaryFiles(), QStringList());
    }

    void aLaterReleasesEngineIsUnpackedForTheUserAlone() {
        makePackages("");
        const Outcome outcome = run();
        QVERIFY2(outcome.status == 0, qPrintable(outcome.lines.join(u'\n')));
        const QString root = in(u"home/.local/share/tellwick/engine/1_1.2-3"_s);
        QVERIFY(QFile::exists(root + u"/usr/bin/llama-server"_s));
        QVERIFY(!QFile::exists(root + u"/usr/share/doc"_s));
        QVERIFY(contents(u"asked"_s).contains("--download-only llama.cpp-tools"));
        QCOMPARE(temporaryFiles(), QStringList());

        // It runs in the folder of its processor backends, with the arguments that it was given.
        QFile::remove(in(u"ran"_s));
        QProcess program;
        program.start(in(u"libexec/llama-server"_s), {u"--model"_s, u"a b"_s});
        QVERIFY(program.waitForFinished(20'000));
        QCOMPARE(contents(u"ran"_s), (root + u"/usr/lib/"_s).toUtf8() +
                                         "x86_64-linux-gnu/ggml/backends0|--model a b\n");

        // Another build finds it without asking the mirror.
        QFile::remove(in(u"asked"_s));
        QCOMPARE(run({in(u"other"_s)}).status, 0);
        QVERIFY(QFile::exists(in(u"other/llama-server"_s)));
        QVERIFY(!contents(u"asked"_s).contains("install"));
    }

    void thePartForTheCardComesAlongWhereItFindsOne_data() {
        QTest::addColumn<bool>("hasCard");
        QTest::addColumn<QByteArray>("devices"); // what the engine does when it is asked for them
        QTest::addColumn<bool>("isHad");
        QTest::addColumn<bool>("isThere");
        const QByteArray card = "echo '  Vulkan0: a card'\n";
        QTest::newRow("no card") << false << card << true << false;
        QTest::newRow("a card") << true << card << true << true;
        QTest::newRow("a software renderer")
            << true << QByteArray("echo '  (none)'\n") << true << false;
        QTest::newRow("a driver that crashes")
            << true << QByteArray("kill -SEGV $$\n") << true << false;
        QTest::newRow("it cannot be had") << true << card << false << false;
    }
    void thePartForTheCardComesAlongWhereItFindsOne() {
        QFETCH(bool, hasCard);
        QFETCH(QByteArray, devices);
        QFETCH(bool, isHad);
        setCard(hasCard);
        makePackages(devices, isHad);
        const Outcome outcome = run();
        QVERIFY2(outcome.status == 0, qPrintable(outcome.lines.join(u'\n')));
        QCOMPARE(contents(u"asked"_s).contains("libggml0-backend-vulkan"), hasCard);
        QTEST(
            QFile::exists(in(u"home/.local/share/tellwick/engine/1_1.2-3/usr/lib/x86_64-linux-gnu/"
                             "ggml/backends0/libggml-vulkan.so"_s)),
            "isThere");
    }

    void aWrongCallIsExplained() {
        QCOMPARE(run({}).status, 2);
        QCOMPARE(run({u"--help"_s}).status, 2);
        QCOMPARE(run({u"--for-user"_s}).status, 2);
        QCOMPARE(run({u"one"_s, u"two"_s}).status, 2);
    }

private:
    struct Outcome {
        int status;
        QStringList lines;
    };

    Outcome run(const QStringList& arguments) {
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.start(u"/bin/bash"_s,
                      QStringList{QStringLiteral(SCRIPTS_FOLDER) + u"/get-engine"_s} + arguments);
        if (!process.waitForFinished(60'000))
            return {-1, {u"did not end"_s}};
        return {process.exitCode(),
                QString::fromUtf8(process.readAllStandardError()).split(u'\n', Qt::SkipEmptyParts)};
    }

    Outcome run() { return run({in(u"libexec"_s)}); }
    QString in(const QString& path) const { return m_folder->filePath(path); }
    void write(const QString& path, const QByteArray& script) const {
        writeProgram(in(path), script);
    }

    /// A machine with a graphics card and its driver, or without.
    void setCard(bool hasCard) const {
        const QString real = QStandardPaths::findExecutable(u"find"_s);
        QFile::remove(in(u"bin/find"_s));
        write(u"bin/find"_s, "#!/bin/sh\ncase $* in */icd.d* | */dev/dri*) " +
                                 QByteArray(hasCard ? "echo one" : ":") + " ;; *) exec " +
                                 real.toUtf8() + " \"$@\" ;; esac\n");
    }

    /// A mirror with the engine, whose loader runs the program as it is, and with its part for
    /// graphics cards.
    void makePackages(const QByteArray& devices, bool hasPartForTheCard = true) {
        const QByteArray archives = "\"$(dirname \"$APT_CONFIG\")/cache/archives\"";
        makeApt("1:1.2-3",
                "    update) ;;\n    install) : >" + archives +
                    "/llama.cpp-tools_1.deb\n        case $* in *vulkan*) " +
                    (hasPartForTheCard ? ": >" + archives + "/libggml0-backend-vulkan_1.deb"
                                       : QByteArray("exit 100")) +
                    " ;; esac ;;\n");
        write(u"bin/dpkg-deb"_s, "#!/bin/sh\ncase $2 in *vulkan*) part=card ;; *) part=package ;; "
                                 "esac\ncd '" +
                                     in(QString()).toUtf8() + "'/$part && exec tar -c ./usr\n");
        write(u"package/usr/bin/llama-server"_s, "#!/bin/sh\ncase $1 in --list-devices) " +
                                                     devices + " ;; esac\necho \"$(pwd)|$*\" >>'" +
                                                     in(u"ran"_s).toUtf8() + "'\n");
        const auto libraries = u"/usr/lib/x86_64-linux-gnu"_s;
        write(u"package"_s + libraries + u"/ld-linux-x86-64.so.2"_s,
              "#!/bin/sh\nshift 2\nexec \"$@\"\n");
        write(u"package"_s + libraries + u"/ggml/backends0/libggml-cpu.so"_s, QByteArray());
        write(u"card"_s + libraries + u"/ggml/backends0/libggml-vulkan.so"_s, QByteArray());
        write(u"package/usr/share/doc/llama.cpp-tools/copyright"_s, QByteArray());
    }

    /// A system with packages, but none of the engine's. What apt is asked is written down.
    void makeApt(const QByteArray& candidate, const QByteArray& download) {
        write(u"bin/dpkg"_s, "#!/bin/sh\necho amd64\n");
        write(u"bin/apt-cache"_s,
              "#!/bin/sh\nif [ -n \"$APT_CONFIG\" ]; then candidate='" + candidate +
                  "'; else candidate='(none)'; fi\n"
                  "printf 'llama.cpp-tools:\\n  Candidate: %s\\n' \"$candidate\"\n");
        write(u"bin/apt-get"_s,
              "#!/bin/sh\necho \"$*\" >>'" + in(u"asked"_s).toUtf8() +
                  "'\ncase $1 in\n"
                  "    indextargets)\n"
                  "        for release in bookworm trixie forky noble jammy resolute; do\n"
                  "            echo \"$release|$release|main|http://127.0.0.1:9/mirror\"\n"
                  "        done ;;\n" +
                  download + "esac\n");
    }

    QByteArray contents(const QString& path) const { return bytesOf(in(path)); }
    QStringList temporaryFiles() const {
        return QDir(in(u"tmp"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcessEnvironment m_environment;
};

TELLWICK_TEST(GetEngineTests, EventLoop)
#include "GetEngineTests.moc"

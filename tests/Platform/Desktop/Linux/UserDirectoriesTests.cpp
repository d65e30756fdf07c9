// SPDX-License-Identifier: MIT
#include "Platform/Desktop/PathTexts.h"
#include "Platform/Desktop/UserDirectories.h"
#include "tests/support/Files.h"
#include "tests/support/TestMain.h"

#include <QMap>
#include <QTemporaryDir>

#include <unistd.h>

using namespace platform;
using namespace Qt::StringLiterals;

using Variables = QMap<QString, QString>;

/// Where the user's variables lead to: the programs and the script that fetches for them must
/// agree.
class UserDirectoriesTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        m_root = std::make_unique<QTemporaryDir>();
        // A system whose package manager knows no engine and no mirror to get it from.
        QVERIFY(QDir().mkpath(in(u"/bin"_s)));
        for (const auto* tool : {"apt-get", "apt-cache", "dpkg"})
            QVERIFY(QFile::link(u"/bin/true"_s, in(u"/bin/"_s + QLatin1String(tool))));
    }

    void foldersFollowTheVariables_data() {
        QTest::addColumn<Variables>("variables");
        QTest::addColumn<QStringList>("data");
        QTest::addColumn<QStringList>("runtime");
        const QString home = u"/R/home/.local/share"_s;
        const QStringList system{u"/usr/local/share"_s, u"/usr/share"_s};
        const QStringList temporary{u"/tmp"_s};
        const auto row = [](const char* name, const QStringList& values, const QStringList& data,
                            const QStringList& runtime) {
            Variables variables;
            for (const QString& value : values)
                variables.insert(value.section(u'=', 0, 0), value.section(u'=', 1));
            QTest::newRow(name) << variables << data << runtime;
        };
        row("nothing set", {}, QStringList{home} + system, temporary);
        row("all empty",
            {u"XDG_DATA_HOME="_s, u"XDG_DATA_DIRS="_s, u"XDG_RUNTIME_DIR="_s, u"TMPDIR="_s},
            QStringList{home} + system, temporary);
        row("all set",
            {u"XDG_DATA_HOME=/R/data"_s, u"XDG_DATA_DIRS=/R/a:/R/b/c"_s,
             u"XDG_RUNTIME_DIR=/R/run"_s, u"TMPDIR=/R/tmp"_s},
            {u"/R/data"_s, u"/R/a"_s, u"/R/b/c"_s}, {u"/R/run"_s, u"/R/tmp"_s});
        row("relative",
            {u"XDG_DATA_HOME=data"_s, u"XDG_DATA_DIRS=a:../b:./c"_s, u"XDG_RUNTIME_DIR=run"_s,
             u"TMPDIR=tmp"_s},
            QStringList{home} + system, temporary);
        row("some relative", {u"XDG_DATA_DIRS=a:/R/b::c:/R/d"_s}, {home, u"/R/b"_s, u"/R/d"_s},
            temporary);
        row("a tilde is no home", {u"XDG_DATA_HOME=~/data"_s}, QStringList{home} + system,
            temporary);
        row("a colon is part of a name",
            {u"XDG_DATA_HOME=/R/x:y"_s, u"XDG_RUNTIME_DIR=/R/run:1"_s, u"TMPDIR=/R/tmp:/R/2"_s},
            QStringList{u"/R/x:y"_s} + system, {u"/R/run:1"_s, u"/R/tmp:/R/2"_s});
        row("unclean",
            {u"XDG_DATA_HOME=/R/data/../other//x/"_s, u"XDG_DATA_DIRS=/R/a/:/R/b//c/."_s,
             u"XDG_RUNTIME_DIR=/R/run/"_s, u"TMPDIR=/R//tmp/"_s},
            {u"/R/other/x"_s, u"/R/a"_s, u"/R/b/c"_s}, {u"/R/run"_s, u"/R/tmp"_s});
        row("blanks and letters", {u"XDG_DATA_HOME=/R/mein Ordner/ä"_s, u"XDG_DATA_DIRS=/R/a b"_s},
            {u"/R/mein Ordner/ä"_s, u"/R/a b"_s}, temporary);
    }
    void foldersFollowTheVariables() {
        QFETCH(Variables, variables);
        QFETCH(QStringList, data);
        QFETCH(QStringList, runtime);
        for (QString& folder : data)
            folder = placed(folder) + u"/tellwick"_s;
        for (QString& folder : runtime)
            folder = placed(folder) + u"/tellwick"_s;
        runtime.last() += u"-%1"_s.arg(geteuid()); // a folder for all users

        const UserDirectories directories = this->directories(variables);
        QCOMPARE(toText(directories.dataHome()), data.constFirst());
        QCOMPARE(toTexts(directories.dataFolders()), data);
        QCOMPARE(toTexts(directories.runtimeFolders()), runtime);
    }

    void theScriptFollowsTheSameVariables_data() { foldersFollowTheVariables_data(); }
    void theScriptFollowsTheSameVariables() {
        QFETCH(Variables, variables);
        variables.remove(u"TMPDIR"_s); // not theirs alone
        const UserDirectories directories = this->directories(variables);
        for (const QString& folder : toTexts(directories.dataFolders()))
            if (folder.startsWith(m_root->path()))
                QDir(folder).removeRecursively();

        QCOMPARE(run(u"get-engine"_s, {in(u"/libexec"_s)}, variables), 1);
        QVERIFY(QDir(toText(directories.dataHome()) + u"/engine"_s).exists());
    }

    void theEnvironmentIsTheUsers() {
        qputenv("XDG_DATA_HOME", "/data");
        QCOMPARE(toText(UserDirectories::ofThisUser("a").dataHome()), u"/data/a"_s);
        qunsetenv("XDG_DATA_HOME");
        QCOMPARE(toText(UserDirectories::ofThisUser("a").dataHome()),
                 QDir::homePath() + u"/.local/share/a"_s);
    }

    void itsOwnProgramsComeBeforeThoseOnPath_data() {
        QTest::addColumn<QString>("ownFolder");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QStringList>("folders");
        const QString own = placed(u"/R/home/.local/share/tellwick/engine/bin"_s);
        QTest::newRow("installed")
            << u"/usr/bin"_s << u"/opt/bin:/usr/bin/"_s
            << QStringList{u"/usr/libexec/tellwick"_s, own, u"/opt/bin"_s, u"/usr/bin"_s};
        QTest::newRow("in a build")
            << u"/src/build/dev/bin/"_s << u"/opt/bin"_s
            << QStringList{u"/src/build/dev/libexec/tellwick"_s, own, u"/opt/bin"_s};
        QTest::newRow("without a path")
            << u"/usr/bin"_s << QString()
            << QStringList{u"/usr/libexec/tellwick"_s, own, u"/usr/bin"_s, u"/bin"_s};
        QTest::newRow("a relative path")
            << u"/usr/bin"_s << u".:bin:/opt/bin"_s
            << QStringList{u"/usr/libexec/tellwick"_s, own, u"/opt/bin"_s};
    }
    void itsOwnProgramsComeBeforeThoseOnPath() {
        QFETCH(QString, ownFolder);
        QFETCH(QString, path);
        QTEST(toTexts(directories({{u"PATH"_s, path}}).programFolders(toPath(ownFolder))),
              "folders");
    }

private:
    /// The path with the test's own folder in front, where it is in the way of nobody.
    QString in(const QString& path) const { return m_root->path() + path; }
    /// A setting, in which "/R" stands for that folder.
    QString placed(QString setting) const { return setting.replace(u"/R"_s, m_root->path()); }
    UserDirectories directories(const Variables& variables) const {
        return {"tellwick",
                [&](const char* name) {
                    return placed(variables.value(QLatin1String(name))).toStdString();
                },
                toPath(in(u"/home"_s))};
    }

    int run(const QString& script, const QStringList& arguments, const Variables& variables) const {
        QProcessEnvironment environment;
        environment.insert(u"PATH"_s, in(u"/bin"_s) + u':' + qEnvironmentVariable("PATH"));
        environment.insert(u"HOME"_s, in(u"/home"_s));
        for (auto variable = variables.begin(); variable != variables.end(); ++variable)
            environment.insert(variable.key(), placed(variable.value()));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_root->path());
        process.start(QStringLiteral(SCRIPTS_FOLDER) + u'/' + script, arguments);
        return process.waitForFinished(60'000) ? process.exitCode() : -1;
    }

    std::unique_ptr<QTemporaryDir> m_root;
};

TELLWICK_TEST(UserDirectoriesTests, EventLoop)
#include "UserDirectoriesTests.moc"

// SPDX-License-Identifier: MIT
#include "Platform/Desktop/UserDirectories.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QMap>

using namespace platform;
using namespace Qt::StringLiterals;

using Variables = QMap<QByteArray, QString>;

class UserDirectoriesTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void foldersFollowTheVariables_data() {
        QTest::addColumn<Variables>("variables");
        QTest::addColumn<QString>("dataHome");
        QTest::addColumn<QStringList>("dataDirectories");
        QTest::addColumn<QString>("runtimeDirectory");
        const QString home = u"/home-of/ada/.local/share"_s;
        const QStringList system{u"/usr/local/share"_s, u"/usr/share"_s};
        QTest::newRow("nothing set") << Variables{} << home << system << QString();
        QTest::newRow("all empty") << Variables{{"XDG_DATA_HOME", u""_s},
                                                {"XDG_DATA_DIRS", u""_s},
                                                {"XDG_RUNTIME_DIR", u""_s}}
                                   << home << system << QString();
        QTest::newRow("all set") << Variables{{"XDG_DATA_HOME", u"/data"_s},
                                              {"XDG_DATA_DIRS", u"/a:/b/c"_s},
                                              {"XDG_RUNTIME_DIR", u"/run/user/1"_s}}
                                 << u"/data"_s << QStringList{u"/a"_s, u"/b/c"_s}
                                 << u"/run/user/1"_s;
        QTest::newRow("relative") << Variables{{"XDG_DATA_HOME", u"data"_s},
                                               {"XDG_DATA_DIRS", u"a:../b:./c"_s},
                                               {"XDG_RUNTIME_DIR", u"run"_s}}
                                  << home << system << QString();
        QTest::newRow("some relative") << Variables{{"XDG_DATA_DIRS", u"a:/b::c:/d"_s}} << home
                                       << QStringList{u"/b"_s, u"/d"_s} << QString();
        QTest::newRow("a tilde is no home")
            << Variables{{"XDG_DATA_HOME", u"~/data"_s}} << home << system << QString();
        QTest::newRow("unclean") << Variables{{"XDG_DATA_HOME", u"/data/../other//x/"_s},
                                              {"XDG_DATA_DIRS", u"/a/:/b//c/."_s},
                                              {"XDG_RUNTIME_DIR", u"/run/"_s}}
                                 << u"/other/x"_s << QStringList{u"/a"_s, u"/b/c"_s} << u"/run"_s;
        QTest::newRow("blanks and letters") << Variables{{"XDG_DATA_HOME", u"/mein Ordner/ä"_s}}
                                            << u"/mein Ordner/ä"_s << system << QString();
    }
    void foldersFollowTheVariables() {
        QFETCH(Variables, variables);
        QFETCH(QString, dataHome);
        QFETCH(QStringList, dataDirectories);
        QFETCH(QString, runtimeDirectory);
        const UserDirectories directories(
            [&variables](const char* name) { return variables.value(name); }, u"/home-of/ada"_s);
        QCOMPARE(directories.dataHome(), dataHome);
        QCOMPARE(directories.dataDirectories(), dataDirectories);
        QCOMPARE(directories.runtimeDirectory().value_or(QString()), runtimeDirectory);
    }
    void theEnvironmentIsTheUsers() {
        qputenv("XDG_DATA_HOME", "/data");
        qunsetenv("XDG_DATA_DIRS");
        QCOMPARE(UserDirectories::ofThisUser().dataHome(), u"/data"_s);
        qunsetenv("XDG_DATA_HOME");
        QCOMPARE(UserDirectories::ofThisUser().dataHome(), QDir::homePath() + u"/.local/share"_s);
    }
    void helpersLieBesideTheProgramsFolder() {
        QCOMPARE(UserDirectories::helperFolder(u"/usr/bin"_s, u"example"_s),
                 u"/usr/libexec/example"_s);
        QCOMPARE(UserDirectories::helperFolder(u"/src/build/dev/bin/"_s, u"example"_s),
                 u"/src/build/dev/libexec/example"_s);
    }
};

TELLWICK_TEST(UserDirectoriesTests, EventLoop)
#include "UserDirectoriesTests.moc"

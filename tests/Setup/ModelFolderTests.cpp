// SPDX-License-Identifier: MIT
#include "Setup/ModelFolder.h"
#include "Setup/SetupError.h"
#include "tests/Setup/SetupFixture.h"
#include "tests/support/TestMain.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace setup;
using namespace tests;
using namespace Qt::StringLiterals;

namespace {

QByteArray gguf(char version) {
    return QByteArray("GGUF") + version + QByteArray(3, '\0') + "the rest";
}

} // namespace

class ModelFolderTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_fixture = std::make_unique<SetupFixture>(); }

    void aFileOfTheUsersIsLinkedAndNotCopied_data() {
        QTest::addColumn<char>("version");
        QTest::newRow("2") << char(2);
        QTest::newRow("3") << char(3);
    }
    void aFileOfTheUsersIsLinkedAndNotCopied() {
        QFETCH(char, version);
        writeBytes(own(), gguf(version));
        QCOMPARE(link(own()), QString());
        QCOMPARE(linked(), own());
        QCOMPARE(m_fixture->leftovers(), QStringList());

        // Another one takes its place.
        writeBytes(m_fixture->in(u"other.gguf"_s), gguf(version));
        QCOMPARE(link(m_fixture->in(u"other.gguf"_s)), QString());
        QCOMPARE(linked(), m_fixture->in(u"other.gguf"_s));
        QCOMPARE(bytesOf(own()), gguf(version));
    }

    void whatIsNoModelIsRefusedInASentence_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("told"); // %1: the path
        const auto format = u"%1 is not a model: its format is not GGUF."_s;
        const auto version = u"The engine cannot read %1: it reads GGUF of the versions 2 and 3, "
                             "and not "_s;
        QTest::newRow("nothing") << u"nothing"_s << u"There is no file at %1."_s;
        QTest::newRow("a dangling link") << u"dangling"_s << u"There is no file at %1."_s;
        QTest::newRow("a folder") << u"folder"_s << u"%1 is not a file."_s;
        QTest::newRow("a pipe") << u"pipe"_s << u"%1 is not a file."_s;
        QTest::newRow("an empty file") << u"bytes:"_s << format;
        QTest::newRow("a text") << u"bytes:weights of a model"_s << format;
        QTest::newRow("cut off") << u"bytes:GGUF"_s << format;
        QTest::newRow("version 1") << u"version:1"_s << version + u"1."_s;
        QTest::newRow("version 4") << u"version:4"_s << version + u"4."_s;
    }
    void whatIsNoModelIsRefusedInASentence() {
        QFETCH(QString, kind);
        QFETCH(QString, told);
        const QString path = own();
        if (kind == u"dangling")
            QVERIFY(QFile::link(m_fixture->in(u"nowhere"_s), path));
        else if (kind == u"folder")
            QVERIFY(QDir().mkdir(path));
        else if (kind == u"pipe")
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else if (kind.startsWith(u"bytes:"))
            writeBytes(path, kind.section(u':', 1).toLatin1());
        else if (kind.startsWith(u"version:"))
            writeBytes(path, gguf(static_cast<char>(kind.section(u':', 1).toInt())));

        writeBytes(m_fixture->in(u"before.gguf"_s), gguf(3));
        QCOMPARE(link(m_fixture->in(u"before.gguf"_s)), QString());
        QCOMPARE(link(path), told.arg(path));
        QCOMPARE(linked(), m_fixture->in(u"before.gguf"_s));
    }

    void aFileThatMayNotBeReadIsRefused() {
        if (geteuid() == 0)
            QSKIP("the superuser may read everything");
        writeBytes(own(), gguf(3));
        QVERIFY(QFile::setPermissions(own(), QFile::WriteOwner));
        QCOMPARE(link(own()), u"The file %1 cannot be read."_s.arg(own()));
    }

    void theModelItselfIsNeverLinkedToItself() {
        const QString model = m_fixture->models + u"/on-device.gguf"_s;
        writeBytes(model, gguf(3));
        QVERIFY(QFile::link(model, own()));
        QCOMPARE(link(model), QString());
        QCOMPARE(m_fixture->model(), gguf(3));
        QCOMPARE(link(own()), QString());
        QCOMPARE(m_fixture->model(), gguf(3));
        QVERIFY(!QFileInfo(model).isSymLink());

        // By a link that leads through the model's own link.
        const QString target = m_fixture->in(u"target.gguf"_s);
        writeBytes(target, gguf(2));
        QCOMPARE(link(target), QString());
        QCOMPARE(link(own()), QString());
        QCOMPARE(m_fixture->model(), gguf(2));
        QCOMPARE(linked(), target);
    }

    void anotherSetUpAtWorkIsTold() {
        writeBytes(own(), gguf(3));
        const auto lock = folder().lock();
        QCOMPARE(link(own()), u"Another set-up is already fetching the on-device model."_s);
    }

    void theFirstOfferIsTheOneThatWasBegun() {
        ModelOffer small = m_fixture->offer;
        ModelOffer large = small;
        large.sha256 = QByteArray(64, 'b');
        large.machineMemory = 100;
        const QList offers{small, large};
        QCOMPARE(firstOffer(offers, folder(), 99), qsizetype(0));
        QCOMPARE(firstOffer(offers, folder(), 100), qsizetype(1));
        writeBytes(m_fixture->partPath(), "begun");
        QCOMPARE(firstOffer(offers, folder(), 100), qsizetype(0));
        writeBytes(platform::toText(folder().partPath(large)), "begun");
        QCOMPARE(firstOffer(offers, folder(), 100), qsizetype(1));
    }

    void theRoomIsKnownBeforeTheFolderIsThere() {
        QVERIFY(!QFile::exists(m_fixture->models));
        QVERIFY(folder().room() > 0);
    }

private:
    QString own() const { return m_fixture->in(u"own file.gguf"_s); }
    ModelFolder folder() const { return ModelFolder(m_fixture->directories()); }
    QString linked() const {
        return QFile::symLinkTarget(m_fixture->models + u"/on-device.gguf"_s);
    }
    /// Links the file; gives what is told where that fails.
    QString link(const QString& path) const {
        try {
            folder().link(platform::toPath(path));
        } catch (const SetupError& error) {
            return error.errorDescription();
        }
        return {};
    }

    std::unique_ptr<SetupFixture> m_fixture;
};

TELLWICK_TEST(ModelFolderTests, Nothing)
#include "ModelFolderTests.moc"

// SPDX-License-Identifier: MIT
// What a screen reader meets in the set-up: the real program, as it lies after installation, beside
// a server on this machine, asked over the accessibility bus.
#include "tests/support/AccessibleDesktop.h"
#include "tests/support/BusElement.h"
#include "tests/support/Files.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestMain.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using tests::Script;
using tests::ScriptedServer;

#define EVENTUALLY(condition)                                                                      \
    QVERIFY2(QTest::qWaitFor([&] { return condition; }, 15000), #condition)

namespace {

constexpr unsigned escapeKey = 0xff1b;

} // namespace

class SetupBusTests final : public QObject {
    Q_OBJECT

    using Role = BusElement::Role;
    using State = BusElement::State;

private Q_SLOTS:
    void initTestCase() {
        m_desktop = std::make_unique<AccessibleDesktop>();
        if (!m_desktop->start()) {
            const QByteArray why = m_desktop->errorString().toUtf8();
            m_desktop.reset();
            if (qEnvironmentVariable("TELLWICK_REQUIRE_DESKTOP_TESTS") == u"1")
                QFAIL(why.constData());
            QSKIP(why.constData());
        }
        QVERIFY(m_server.listen());
        install();
    }

    void init() {
        m_desktop->endProgram();
        QFile::remove(opened());
        QVERIFY(m_desktop->startProgram(in(u"libexec/tellwick/tellwick-setup-window"_s)));
        const auto window = [this] {
            return BusElement::programs(m_desktop->bus()).value(0).children().value(0);
        };
        EVENTUALLY(!window().isNull());
        m_window = window();
        EVENTUALLY(find(Role::PushButton, u"Download"_s).is(State::Focused));
        m_request = m_server.requestCount();
    }

    void cleanup() {
        const bool endedWell = m_desktop->endProgram();
        QVERIFY(endedWell);
        EVENTUALLY(BusElement::programs(m_desktop->bus()).isEmpty());
    }

    void whatIsOfferedIsNamed() {
        QCOMPARE(m_window.name(), u"Tellwick Set-up"_s);
        QVERIFY(m_window.role() == Role::Frame);
        QVERIFY(shows(Role::Heading, u"Set up Tellwick"_s));
        QVERIFY(shows(Role::Heading, u"Model"_s));
        const BusElement model = find(Role::List, u"Model"_s).find(Role::ListItem, u"Tiny"_s);
        QVERIFY(model.is(State::Selected));
        QCOMPARE(model.description(), u"2 MB · MIT, Selected"_s);
        QVERIFY(shows(Role::Label, u"Not on this computer yet"_s));
        QCOMPARE(find(Role::PushButton, u"Download"_s).description(), u"Model"_s);
        QCOMPARE(m_window.namesOf(Role::PushButton),
                 (QStringList{u"Download"_s, u"Not Now"_s, u"Open Tellwick"_s}));
        QVERIFY(!shows(Role::ProgressBar, u"Model"_s));
    }

    void aModelIsFetchedWithPauseAndThenTellwickIsOpened() {
        const qsizetype half = m_weights.size() / 2;
        const auto size = QByteArray::number(m_weights.size());
        m_server.enqueue(
            Script().head(200, {"Content-Length: " + size}).send(m_weights.left(half)).hold());
        m_server.enqueue(Script()
                             .head(206, {"Content-Length: " + QByteArray::number(half),
                                         "Content-Range: bytes " + QByteArray::number(half) + '-' +
                                             QByteArray::number(m_weights.size() - 1) + '/' + size})
                             .gate()
                             .send(m_weights.mid(half)));
        QVERIFY(find(Role::PushButton, u"Download"_s).act());
        EVENTUALLY(find(Role::ProgressBar, u"Model"_s).value() == 50.0);
        EVENTUALLY(shows(Role::Label, u"Fetching, 50 per cent"_s));
        QVERIFY(!shows(Role::PushButton, u"Not Now"_s));
        QVERIFY(find(Role::PushButton, u"Pause"_s).act());
        EVENTUALLY(shows(Role::PushButton, u"Resume"_s));
        EVENTUALLY(shows(Role::Label, u"Paused · 1 of 2 MB"_s));
        QCOMPARE(find(Role::ProgressBar, u"Model"_s).value(), 50.0);
        QVERIFY(find(Role::PushButton, u"Resume"_s).act());
        EVENTUALLY(m_server.gatesReached(m_request + 1) == 1);
        QCOMPARE(m_server.request(m_request + 1).header("Range"),
                 "bytes=" + QByteArray::number(half) + '-');
        m_server.release(m_request + 1);
        EVENTUALLY(shows(Role::Label, u"Ready"_s));
        EVENTUALLY(shows(Role::Heading, u"Tellwick is ready"_s));
        EVENTUALLY(find(Role::PushButton, u"Open Tellwick"_s).is(State::Focused));
        QVERIFY(!shows(Role::ProgressBar, u"Model"_s));
        QVERIFY(find(Role::PushButton, u"Open Tellwick"_s).act());
        EVENTUALLY(QFile::exists(opened()));
        QVERIFY(m_desktop->programEnds()); // the set-up is done
    }

    void whatFailsIsSaidAndCanBeTriedAgain() {
        m_server.enqueue(Script::reply(404, "{}"));
        QVERIFY(find(Role::PushButton, u"Download"_s).act());
        EVENTUALLY(shows(Role::PushButton, u"Try Again"_s));
        QVERIFY(find(Role::PushButton, u"Try Again"_s).is(State::Focused));
        m_desktop->press(escapeKey);
        QVERIFY(m_desktop->programEnds());
        QVERIFY(!QFile::exists(opened()));
    }

private:
    BusElement find(Role role, const QString& name) const { return m_window.find(role, name); }
    bool shows(Role role, const QString& name) const { return !find(role, name).isNull(); }

    QString in(const QString& path) const { return m_prefix.filePath(path); }
    /// Is there when the program has been opened.
    QString opened() const { return in(u"opened"_s); }

    /// Puts the program and what belongs to it where they lie after installation.
    void install() {
        tests::writeProgram(in(u"bin/tellwick"_s), "#!/bin/sh\n: >'" + opened().toUtf8() + "'\n");
        for (const QString& helper : {u"llama-server"_s, u"get-engine"_s})
            tests::writeProgram(in(u"libexec/tellwick/"_s + helper), "#!/bin/sh\nexit 1\n");
        QVERIFY(QFile::copy(QStringLiteral(SETUP_WINDOW),
                            in(u"libexec/tellwick/tellwick-setup-window"_s)));
        const auto sum = QCryptographicHash::hash(m_weights, QCryptographicHash::Sha256).toHex();
        const QJsonObject model{
            {u"name"_s, u"Tiny"_s},
            {u"licence"_s, u"MIT"_s},
            {u"size"_s, m_weights.size()},
            {u"address"_s, u"http://127.0.0.1:%1/tiny.gguf"_s.arg(m_server.port())},
            {u"sha256"_s, QString::fromLatin1(sum)},
            {u"machineMemory"_s, 0}};
        const QJsonObject list{{u"models"_s, QJsonArray{model}}};
        tests::writeBytes(in(u"share/tellwick/models.json"_s), QJsonDocument(list).toJson());
    }

    const QByteArray m_weights = QByteArray(2000000, 'w');
    QTemporaryDir m_prefix;
    ScriptedServer m_server;
    std::unique_ptr<AccessibleDesktop> m_desktop;
    BusElement m_window;
    int m_request = 0; // of this test the first
};

TELLWICK_TEST(SetupBusTests, EventLoop)
#include "SetupBusTests.moc"

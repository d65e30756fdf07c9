// SPDX-License-Identifier: MIT
// What a screen reader meets: the real program in a real window, asked over the accessibility bus.
#include "tests/support/AccessibleDesktop.h"
#include "tests/support/BusElement.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestMain.h"

#include <QDBusVariant>

using namespace Qt::StringLiterals;
using tests::RecordedRequest;
using tests::Script;
using tests::ScriptedServer;

#define EVENTUALLY(condition) QVERIFY2(eventually([&] { return condition; }), #condition)
#define EVENTUALLY_EQUAL(actual, expected)                                                         \
    do {                                                                                           \
        eventually([&] { return actual == expected; });                                            \
        QCOMPARE(actual, expected);                                                                \
    } while (false)

namespace {

/// Waits until something is so; false if it is not in time. Each question goes to another process,
/// and the machine may be busy: time counts and not the questions.
template <class Condition>
bool eventually(Condition condition) {
    return QTest::qWaitFor(condition, 15000);
}

constexpr unsigned tabKey = 0xff09;
constexpr unsigned escapeKey = 0xff1b;

/// Toggle buttons, which Qt 6.4 cannot name on the bus.
constexpr auto chipRole = BusElement::Role::PushButton;

/// Lists two models; sends a reply word by word, each when its gate is opened.
Script answer(const RecordedRequest& request) {
    if (request.target == "/api/tags")
        return Script::reply(
            200,
            R"({"models":[{"name":"llama3.2:3b","size":2019393189},{"name":"bare","size":1}]})");
    Script script = Script().head(200);
    for (const char* word : {"It ", "is **really** ", "simple."})
        script.gate().send(QByteArray(R"({"message":{"content":")") + word + R"("},"done":false})" +
                           "\n");
    return script.gate().send("{\"message\":{\"content\":\"\"},\"done\":true}\n");
}

} // namespace

class AccessibilityBusTests final : public QObject {
    Q_OBJECT

    using Role = BusElement::Role;
    using State = BusElement::State;

public Q_SLOTS:
    void propertyChanged(const QDBusMessage& message) {
        if (message.arguments().value(0).toString() == u"accessible-name")
            m_announced.append(
                BusElement(m_desktop->bus(), message.service(), message.path()).name());
    }

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
        // A program tells only what somebody has asked to hear.
        auto listen = QDBusMessage::createMethodCall(
            u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/registry"_s,
            u"org.a11y.atspi.Registry"_s, u"RegisterEvent"_s);
        listen << u"object:property-change:accessible-name"_s << QStringList() << QString();
        QDBusMessage answer = m_desktop->bus().call(listen);
        if (answer.type() == QDBusMessage::ErrorMessage) { // an older registry
            listen.setArguments({u"object:property-change:accessible-name"_s});
            answer = m_desktop->bus().call(listen);
        }
        QVERIFY2(answer.type() == QDBusMessage::ReplyMessage, qPrintable(answer.errorMessage()));
        QVERIFY(m_desktop->bus().connect(QString(), QString(), u"org.a11y.atspi.Event.Object"_s,
                                         u"PropertyChange"_s, this,
                                         SLOT(propertyChanged(QDBusMessage))));
    }

    void init() {
        m_desktop->endProgram(); // cleanup() does not come after an init() that failed
        m_server = std::make_unique<ScriptedServer>();
        m_server->setAnswer(&answer);
        QVERIFY2(m_server->listen(11434), "Port 11434 is taken: run ./test instead.");
        QVERIFY(m_desktop->startProgram(QStringLiteral(TELLWICK)));
        const auto window = [this] {
            return BusElement::programs(m_desktop->bus()).value(0).children().value(0);
        };
        EVENTUALLY(!window().isNull());
        m_window = window();
        EVENTUALLY(find(Role::Text, u"Message"_s).is(State::Focused));
        m_announced.clear();
    }

    void cleanup() {
        const bool endedWell = m_desktop->endProgram();
        m_server.reset();
        QVERIFY(endedWell);
        EVENTUALLY(BusElement::programs(m_desktop->bus()).isEmpty());
    }

    void theWindowAndTheControlsOfAnEmptyConversationAreNamed() {
        QCOMPARE(m_window.name(), u"Tellwick"_s);
        QVERIFY(m_window.role() == Role::Frame);
        QVERIFY(m_window.is(State::Active));
        QVERIFY(shows(Role::Heading, u"Tellwick"_s));
        QVERIFY(shows(Role::Label, u"On-device · Private"_s));
        const BusElement field = find(Role::Text, u"Message"_s);
        QVERIFY(field.is(State::Editable));
        QVERIFY(field.is(State::MultiLine));
        QVERIFY(shows(Role::PushButton, u"Send"_s));
        QVERIFY(!find(Role::PushButton, u"New Chat"_s).is(State::Enabled));
        QVERIFY(find(Role::PushButton, u"More"_s).is(State::Enabled));
        QCOMPARE(find(Role::Filler, u"Writing modes"_s).namesOf(chipRole),
                 (QStringList{u"Proofread"_s, u"Summarise"_s, u"Explain Simply"_s, u"Rewrite"_s}));
        QVERIFY(!shows(Role::PushButton, u"Clear mode"_s));
    }

    void aChipTellsThatItIsPressed() {
        const BusElement chip = find(chipRole, u"Summarise"_s);
        QVERIFY(!chip.is(State::Pressed));
        QVERIFY(chip.act());
        EVENTUALLY(chip.is(State::Pressed));
        QCOMPARE(chip.description(), u"Pressed"_s);
        QVERIFY(!find(chipRole, u"Rewrite"_s).is(State::Pressed));
        QVERIFY(press(Role::PushButton, u"Clear mode"_s));
        EVENTUALLY(!chip.is(State::Pressed));
        EVENTUALLY(!shows(Role::PushButton, u"Clear mode"_s));
    }

    void theMenuTellsThatItIsOpen() {
        const BusElement more = find(Role::PushButton, u"More"_s);
        QVERIFY(more.is(State::Expandable));
        QVERIFY(!more.is(State::Expanded));
        QVERIFY(more.act());
        EVENTUALLY(more.is(State::Expanded));
        QCOMPARE(find(Role::PopupMenu, u"More"_s).namesOf(Role::MenuItem),
                 (QStringList{u"Models"_s, u"About"_s}));
        EVENTUALLY_EQUAL(m_window.findFocused().name(), u"Models"_s);
        m_desktop->press(escapeKey);
        EVENTUALLY(!more.is(State::Expanded));
    }

    void theModelsAreRowsThatTellWhichOneIsSelected() {
        QVERIFY(openFromMenu(u"Models"_s));
        EVENTUALLY(shows(Role::ListItem, u"llama3.2:3b"_s));
        EVENTUALLY(find(Role::PushButton, u"Refresh"_s).is(State::Enabled));
        const BusElement onDevice = find(Role::ListItem, u"Apple Intelligence"_s);
        QVERIFY(onDevice.is(State::Selected));
        QCOMPARE(onDevice.description(), u"On-device · Private, Unavailable"_s);
        const BusElement model = find(Role::ListItem, u"llama3.2:3b"_s);
        QVERIFY(!model.is(State::Selected));
        QCOMPARE(model.description(), u"2.0 GB · Ollama"_s);
        QVERIFY(model.act());
        EVENTUALLY(model.is(State::Selected));
        QCOMPARE(model.description(), u"2.0 GB · Ollama, Selected"_s);
        QVERIFY(!onDevice.is(State::Selected));
        EVENTUALLY(shows(Role::Label, u"2.0 GB · Ollama"_s)); // the window's subtitle
    }

    void theAboutScreenIsADialog() {
        QVERIFY(openFromMenu(u"About"_s));
        const BusElement about = find(Role::Dialog, u"About"_s);
        QVERIFY(about.is(State::Modal));
        QVERIFY(!about.find(Role::Heading, u"Tellwick"_s).isNull());
        QVERIFY(!about.find(Role::Heading, u"Limitations"_s).isNull());
        QVERIFY(!about.find(Role::Label, u"Works completely offline"_s).isNull());
        QVERIFY(!about.find(Role::PushButton, u"Close"_s).isNull());
        m_desktop->press(escapeKey);
        EVENTUALLY(!shows(Role::Dialog, u"About"_s));
        EVENTUALLY(find(Role::Text, u"Message"_s).is(State::Focused));
    }

    void theAlertIsReadWithItsTitle() {
        QVERIFY(write(u"Hello"_s));
        QVERIFY(press(Role::PushButton, u"Send"_s));
        const auto title = u"Apple Intelligence Unavailable"_s;
        EVENTUALLY(shows(Role::Alert, title));
        const BusElement alert = find(Role::Alert, title);
        QVERIFY(alert.description().startsWith(u"Apple Intelligence unavailable: "_s));
        EVENTUALLY_EQUAL(m_window.findFocused().name(), u"OK"_s);
        QVERIFY(alert.find(Role::PushButton, u"OK"_s).act());
        EVENTUALLY(!shows(Role::Alert, title));
        EVENTUALLY(find(Role::Text, u"Message"_s).is(State::Focused));
    }

    void aConversationIsReadMessageByMessageAndAFinishedReplyAnnouncedOnce() {
        QVERIFY(chooseModel());
        QVERIFY(send(u"How does it work?"_s));
        m_announced.clear();
        for (const char* sofar :
             {"Tellwick: It ", "Tellwick: It is really ", "Tellwick: It is really simple."}) {
            release(1);
            EVENTUALLY(shows(Role::ListItem, QString::fromLatin1(sofar)));
        }
        const auto spoken = u"Tellwick: It is really simple."_s;
        QCOMPARE(m_announced.count(spoken), 0);
        release(1);
        EVENTUALLY(shows(Role::PushButton, u"Send"_s));
        EVENTUALLY_EQUAL(m_announced.count(spoken), 1);
        QCOMPARE(messages(), (QStringList{u"You: How does it work?"_s, spoken}));
        for (const QString& name : std::as_const(m_announced))
            QVERIFY2(name == spoken || !name.startsWith(u"Tellwick: "_s), qPrintable(name));
        QVERIFY(press(Role::PushButton, u"New Chat"_s));
        EVENTUALLY(!find(Role::PushButton, u"New Chat"_s).is(State::Enabled));
        QCOMPARE(m_announced.count(spoken), 1);
    }

    void theKeyboardStaysInsideWhatLiesOnTop_data() {
        QTest::addColumn<QString>("entry");
        QTest::newRow("popover") << u"Models"_s;
        QTest::newRow("sheet") << u"About"_s;
    }
    void theKeyboardStaysInsideWhatLiesOnTop() {
        QFETCH(QString, entry);
        QVERIFY(openFromMenu(entry));
        const BusElement dialog = find(Role::Dialog, entry);
        EVENTUALLY(m_window.findFocused().isWithin(dialog));
        QStringList reached;
        for (int i = 0; i < 8; ++i) {
            const BusElement before = m_window.findFocused();
            m_desktop->press(tabKey);
            EVENTUALLY(m_window.findFocused() != before);
            QVERIFY2(m_window.findFocused().isWithin(dialog),
                     qPrintable(m_window.findFocused().name()));
            reached.append(m_window.findFocused().name());
        }
        reached.removeDuplicates();
        QVERIFY(reached.contains(entry == u"Models" ? u"Refresh"_s : u"Close"_s));
        m_desktop->press(escapeKey);
        EVENTUALLY(find(Role::Text, u"Message"_s).is(State::Focused));
    }

private:
    BusElement find(Role role, const QString& name) const { return m_window.find(role, name); }
    bool shows(Role role, const QString& name) const { return !find(role, name).isNull(); }
    /// Whether this has come up in time.
    bool appears(Role role, const QString& name) const {
        return eventually([&] { return shows(role, name); });
    }
    /// Presses it once it can be pressed.
    bool press(Role role, const QString& name) const {
        return eventually([&] { return find(role, name).is(State::Enabled); }) &&
               find(role, name).act();
    }
    bool openFromMenu(const QString& entry) const {
        return press(Role::PushButton, u"More"_s) && press(Role::MenuItem, entry) &&
               appears(Role::Dialog, entry);
    }
    bool chooseModel() {
        const auto model = u"llama3.2:3b"_s;
        if (!openFromMenu(u"Models"_s) || !press(Role::ListItem, model) ||
            !eventually([&] { return find(Role::ListItem, model).is(State::Selected); }))
            return false;
        m_desktop->press(escapeKey);
        return eventually([&] { return !shows(Role::Dialog, u"Models"_s); });
    }

    bool write(const QString& text) const {
        const BusElement field = find(Role::Text, u"Message"_s);
        return field.setText(text) && eventually([&] { return field.text() == text; });
    }
    bool send(const QString& text) const {
        return write(text) && press(Role::PushButton, u"Send"_s) &&
               appears(Role::PushButton, u"Stop"_s);
    }
    QStringList messages() const {
        return find(Role::List, u"Conversation"_s).namesOf(Role::ListItem);
    }

    /// Lets the reply that has been asked for go on by so many words.
    void release(int words) {
        const auto last = [this] { return m_server->requestCount() - 1; };
        EVENTUALLY(m_server->request(last()).target == "/api/chat");
        for (int word = 0; word < words; ++word)
            m_server->release(last());
    }

    std::unique_ptr<AccessibleDesktop> m_desktop;
    std::unique_ptr<ScriptedServer> m_server;
    BusElement m_window;
    QStringList m_announced;
};

TELLWICK_TEST(AccessibilityBusTests, EventLoop)
#include "AccessibilityBusTests.moc"

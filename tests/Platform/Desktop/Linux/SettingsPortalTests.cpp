// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Linux/SettingsPortal.h"
#include "tests/Platform/Desktop/Linux/PrivateBus.h"
#include "tests/Platform/Desktop/Linux/ScriptedPortal.h"
#include "tests/support/TestMain.h"

#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QProcess>

#include <cmath>
#include <limits>
#include <thread>

using namespace platform;
using namespace Qt::StringLiterals;

namespace {

const auto appearance = u"org.freedesktop.appearance"_s;
const auto gnome = u"org.gnome.desktop.interface"_s;
const auto plasma = u"org.kde.kdeglobals.KDE"_s;
const PortalKey scheme{appearance, u"color-scheme"_s};
const PortalKey accent{appearance, u"accent-color"_s};
const PortalKey contrast{appearance, u"contrast"_s};
const PortalKey motion{appearance, u"reduced-motion"_s};
const PortalKey buttons{u"org.gnome.desktop.wm.preferences"_s, u"button-layout"_s};
const PortalKey animations{gnome, u"enable-animations"_s};
const PortalKey duration{plasma, u"AnimationDurationFactor"_s};

} // namespace

Q_DECLARE_METATYPE(DesktopAppearance)

/// The columns of a table of settings, and what adds a row to it.
static auto settingColumns() {
    QTest::addColumn<PortalKey>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<DesktopAppearance>("expected");
    return [](const char* name, const PortalKey& key, const QVariant& value,
              const DesktopAppearance& expected = {}) {
        QTest::newRow(name) << key << value << expected;
    };
}

/// Waits until so much has been told, this last.
#define EXPECT_TOLD(count, last)                                                                   \
    do {                                                                                           \
        QTRY_COMPARE(m_told.size(), count);                                                        \
        QVERIFY(m_told.constLast() == last);                                                       \
    } while (false)

class SettingsPortalTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (!PrivateBus::isPossible())
            QSKIP("dbus-daemon is not installed: the portal cannot be tried.");
    }

    void init() {
        m_bus = std::make_unique<PrivateBus>();
        QVERIFY(m_bus->isRunning());
        m_portal = std::make_unique<ScriptedPortal>(m_bus->connect());
        QVERIFY(m_portal->appear());
        m_source = std::make_unique<SettingsPortal>();
    }

    void cleanup() {
        m_source.reset();
        m_portal.reset();
        m_bus.reset();
        m_told.clear();
    }

    void whatThePortalSaysIsTold_data() {
        const auto row = settingColumns();
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double endless = std::numeric_limits<double>::infinity();
        row("no preference", scheme, 0U);
        row("dark", scheme, 1U, {.isDark = true});
        row("light", scheme, 2U, {.isDark = false});
        row("a scheme of the future", scheme, 7U);
        row("a scheme as text", scheme, u"1"_s);
        row("a dark theme elsewhere", PortalKey{gnome, u"color-scheme"_s}, u"prefer-dark"_s);
        row("dark, wrapped twice", scheme, QVariant::fromValue(QDBusVariant(1U)), {.isDark = true});
        row("accent", accent, portalColor(0.2, 0.4, 0.6), {.accent = QColor(51, 102, 153)});
        row("black accent", accent, portalColor(0, 0, 0), {.accent = QColor(0, 0, 0)});
        row("white accent", accent, portalColor(1, 1, 1), {.accent = QColor(Qt::white)});
        row("unset accent", accent, portalColor(-1, -1, -1));
        row("accent out of range", accent, portalColor(0.5, 1.01, 0.5));
        row("accent that is no number", accent, portalColor(nan, 0.5, 0.5));
        row("endless accent", accent, portalColor(0.5, 0.5, endless));
        row("accent as text", accent, u"blue"_s);
        row("normal contrast", contrast, 0U, {.increasesContrast = false});
        row("more contrast", contrast, 1U, {.increasesContrast = true});
        row("motion", motion, 0U, {.reducesMotion = false});
        row("reduced motion", motion, 1U, {.reducesMotion = true});
        row("buttons of windows", buttons, u"close:"_s, {.windowButtons = u"close:"_s});
        row("buttons as a number", buttons, 1U);
        row("animations", animations, true, {.reducesMotion = false});
        row("no animations", animations, false, {.reducesMotion = true});
        row("animations as a number", animations, 0U);
        row("slow animations", duration, u"2.5"_s, {.reducesMotion = false});
        row("instant animations", duration, u"0"_s, {.reducesMotion = true});
        row("instant animations, a number", duration, 0.0, {.reducesMotion = true});
        row("nonsense animations", duration, u"fast"_s);
        const auto made = [](const QString& family, double size) {
            QFont font(family);
            font.setPointSizeF(size);
            return font;
        };
        QFont strong = made(u"Noto Sans"_s, 10.5);
        strong.setWeight(QFont::DemiBold);
        strong.setItalic(true);
        const PortalKey font{gnome, u"font-name"_s};
        row("font", font, u"Cantarell 11"_s, {.font = made(u"Cantarell"_s, 11)});
        row("font of a style", font, u"Noto Sans, Semi-Bold Italic 10.5"_s, {.font = strong});
        row("font without a size", font, u"Cantarell"_s);
        row("font of nothing", font, u"11"_s);
        row("font as a number", font, 11U);
        row("monospaced font", PortalKey{gnome, u"monospace-font-name"_s}, u"Source Code Pro 10"_s,
            {.monospacedFont = made(u"Source Code Pro"_s, 10)});
    }
    void whatThePortalSaysIsTold() {
        QFETCH(PortalKey, key);
        QFETCH(QVariant, value);
        QFETCH(DesktopAppearance, expected);
        m_portal->setValue(key, value);
        startSource();
        EXPECT_TOLD(1, expected);
    }

    void onlyTheNeededGroupsAreAskedFor() {
        startSource();
        QTRY_COMPARE(m_portal->questions().size(), 1);
        QCOMPARE(m_portal->questions().constFirst(),
                 (QStringList{appearance, gnome, buttons.first, plasma}));
    }

    void whereThePortalIsPlasmasItsFontsAreLeftToQt() {
        m_portal->setValue({gnome, u"font-name"_s}, u"Cantarell 11"_s);
        m_portal->setValue(duration, u"1"_s);
        startSource();
        EXPECT_TOLD(1, (DesktopAppearance{.reducesMotion = false}));
    }

    void aChangeIsHeardWhereNothingElseKnowsTheBus() {
        m_portal->setValue(scheme, 1U);
        QProcess listener;
        listener.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        listener.start(QStringLiteral(SETTINGS_LISTENER), {m_bus->address()});
        const auto said = [&] {
            const bool isLine = QTest::qWaitFor([&] { return listener.canReadLine(); }, 10'000);
            return isLine ? listener.readLine().trimmed() : QByteArray();
        };
        QCOMPARE(said(), QByteArray("dark"));
        m_portal->changeValue(scheme, 2U);
        QCOMPARE(said(), QByteArray("light"));
        listener.kill();
        QVERIFY(listener.waitForFinished());
    }

    void aLiveChangeIsTold_data() {
        const auto row = settingColumns();
        const QColor blue(0, 0, 255);
        row("to light", scheme, 2U, {.isDark = false, .accent = blue});
        row("to no preference", scheme, 0U, {.accent = blue});
        row("accent", accent, portalColor(1, 0, 0), {.isDark = true, .accent = QColor(255, 0, 0)});
        row("accent taken back", accent, portalColor(-1, 0, 0), {.isDark = true});
        row("contrast", contrast, 1U, {.isDark = true, .accent = blue, .increasesContrast = true});
        row("motion", motion, 1U, {.isDark = true, .accent = blue, .reducesMotion = true});
        row("animations", animations, false,
            {.isDark = true, .accent = blue, .reducesMotion = true});
        row("buttons of windows", buttons, u":"_s,
            {.isDark = true, .accent = blue, .windowButtons = u":"_s});
    }
    void aLiveChangeIsTold() {
        QFETCH(PortalKey, key);
        QFETCH(QVariant, value);
        QFETCH(DesktopAppearance, expected);
        m_portal->setValue(scheme, 1U);
        m_portal->setValue(accent, portalColor(0, 0, 1));
        startSource();
        QTRY_COMPARE(m_told.size(), 1);
        m_portal->changeValue(key, value);
        EXPECT_TOLD(2, expected);
    }

    void aChangeOfSomethingElseIsNotTold() {
        startSource();
        QTRY_COMPARE(m_told.size(), 1);
        m_portal->changeValue({gnome, u"cursor-size"_s}, 24);
        m_portal->changeValue({u"org.example"_s, u"color-scheme"_s}, 1U);
        m_portal->changeValue(scheme, 1U); // messages keep their order
        EXPECT_TOLD(2, (DesktopAppearance{.isDark = true}));
    }

    void anAnswerThatHasComeCanBeTakenAtOnce() {
        m_portal->setValue(scheme, 1U);
        startSource();
        while (m_portal->questions().isEmpty())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        // The answer is on its way now; from here on no event is processed.
        const QDeadlineTimer limit(5000);
        while (m_told.isEmpty() && !limit.hasExpired()) {
            m_source->settle();
            std::this_thread::yield();
        }
        EXPECT_TOLD(1, (DesktopAppearance{.isDark = true}));
        m_portal->changeValue(scheme, 2U);
        EXPECT_TOLD(2, (DesktopAppearance{.isDark = false})); // and it is told once only
    }

    void settlingBeforeTheAnswerTellsNothing() {
        m_source->settle(); // not even started
        m_portal->setAnswers(false);
        startSource();
        m_source->settle();
        QVERIFY(m_told.isEmpty());
    }

    void aPortalThatNeverAnswersTellsNothing() {
        m_portal->setAnswers(false);
        startSource();
        QTRY_COMPARE(m_portal->questions().size(), 1);
        QVERIFY(m_told.isEmpty());
        // What it does say later counts all the same.
        m_portal->changeValue(scheme, 1U);
        EXPECT_TOLD(1, (DesktopAppearance{.isDark = true}));
    }

    void anAnswerOfAnotherTypeTellsNothing_data() {
        QTest::addColumn<QVariant>("answer");
        QTest::newRow("text") << QVariant(u"dark"_s);
        QTest::newRow("number") << QVariant(1U);
        QTest::newRow("flat map") << QVariant(QVariantMap{{u"color-scheme"_s, 1U}});
    }
    void anAnswerOfAnotherTypeTellsNothing() {
        QFETCH(QVariant, answer);
        m_portal->setAnswer(answer);
        startSource();
        QTRY_COMPARE(m_portal->questions().size(), 1);
        m_portal->changeValue(contrast, 1U); // comes after the answer
        EXPECT_TOLD(1, (DesktopAppearance{.increasesContrast = true}));
    }

    void withoutAPortalNothingIsTold() {
        m_portal->disappear();
        m_portal->setValue(scheme, 1U);
        startSource();
        QDBusConnection bus = m_bus->connect();
        const auto question = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/"_s,
                                                             u"org.freedesktop.DBus"_s, u"GetId"_s);
        QCOMPARE(bus.call(question, QDBus::BlockWithGui).type(), QDBusMessage::ReplyMessage);
        QVERIFY(m_told.isEmpty());
        QVERIFY(m_portal->questions().isEmpty());
    }

    void aPortalThatStartsLaterIsAsked() {
        m_portal->disappear();
        m_portal->setValue(scheme, 1U);
        startSource();
        QVERIFY(m_portal->appear());
        EXPECT_TOLD(1, (DesktopAppearance{.isDark = true}));
    }

    void aPortalThatStartsAnewIsAskedAgain() {
        m_portal->setValue(scheme, 1U);
        startSource();
        QTRY_COMPARE(m_told.size(), 1);
        m_portal->disappear();
        m_portal->setValue(scheme, 2U);
        QVERIFY(m_portal->appear());
        EXPECT_TOLD(2, (DesktopAppearance{.isDark = false}));
    }

    void withoutABusNothingIsTold() {
        startSource(std::nullopt);
        m_source->settle();
        QCoreApplication::processEvents();
        QVERIFY(m_told.isEmpty());
    }

    void whenTheBusDiesTheLastWordHolds_data() {
        QTest::addColumn<bool>("hasAnswered");
        QTest::newRow("after the answer") << true;
        QTest::newRow("before the answer") << false;
    }
    void whenTheBusDiesTheLastWordHolds() {
        QFETCH(bool, hasAnswered);
        m_portal->setAnswers(hasAnswered);
        const QDBusConnection client = m_bus->connect();
        startSource(client);
        QTRY_COMPARE(m_portal->questions().size(), 1);
        QTRY_COMPARE(m_told.size(), hasAnswered ? 1 : 0);
        m_bus->kill();
        QTRY_VERIFY(!client.isConnected());
        m_source->settle();
        QCoreApplication::processEvents();
        QCOMPARE(m_told.size(), hasAnswered ? 1 : 0);
    }

    void anEndedSourceTellsNothing() {
        m_portal->setAnswers(false);
        startSource();
        QTRY_COMPARE(m_portal->questions().size(), 1);
        m_source.reset();
        m_portal->changeValue(scheme, 1U);
        // Another source hears that change: so the first one would have heard it, too.
        m_portal->setAnswers(true);
        SettingsPortal another;
        int told = 0;
        another.start(m_bus->connect(), [&told](const DesktopAppearance& /*told*/) { ++told; });
        QTRY_VERIFY(told > 0);
        QVERIFY(m_told.isEmpty());
    }

private:
    void startSource(const std::optional<QDBusConnection>& bus) {
        m_source->start(
            bus, [this](const DesktopAppearance& told) { m_told.append(told); });
    }
    void startSource() { startSource(m_bus->connect()); }

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<ScriptedPortal> m_portal;
    std::unique_ptr<SettingsPortal> m_source;
    QList<DesktopAppearance> m_told;
};

TELLWICK_TEST(SettingsPortalTests, Widgets)
#include "SettingsPortalTests.moc"

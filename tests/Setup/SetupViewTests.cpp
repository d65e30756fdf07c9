// SPDX-License-Identifier: MIT
// What the window of the set-up shows in each phase.
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/ProgressBar.h"
#include "tests/Setup/SetupWindow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

using namespace Qt::StringLiterals;
using platform::ColorRole;
using setup::EnginePhase;
using setup::ModelPhase;

class SetupViewTests final : public QObject {
    Q_OBJECT

    std::optional<tests::SetupWindow> m;

    platform::ProgressBar* bar() const {
        for (auto* bar : m->view->findChildren<platform::ProgressBar*>())
            if (bar->isVisible())
                return bar;
        return nullptr;
    }
    /// What the label says to the eye, whatever it says to the ear.
    bool isRead(const QString& text) const {
        return std::ranges::any_of(
            m->view->findChildren<QLabel*>(),
            [&](const QLabel* label) { return label->isVisible() && label->text() == text; });
    }
    /// The one button on the accent; empty: there is none.
    QString defaultButton() const {
        QStringList found;
        for (auto* button : m->view->findChildren<platform::Button*>()) {
            if (!button->isVisible())
                continue;
            const tests::PaintRecorder painted(*button);
            for (const auto& part : painted.all())
                if (part.color == m->theme.color(ColorRole::AccentFill))
                    found += button->text();
        }
        return found.join(u", "_s);
    }

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void whatIsOfferedIsToldInReadingOrder() {
        QVERIFY(m->show());
        QCOMPARE(m->view->windowTitle(), u"Tellwick Set-up"_s);
        const QList<int> roles{QAccessible::Heading, QAccessible::StaticText, QAccessible::ListItem,
                               QAccessible::Button, QAccessible::Link};
        QStringList read;
        for (auto* element : m->screen().elements())
            if (roles.contains(element->role()))
                read.append(element->text(QAccessible::Name));
        QCOMPARE(read, (QStringList{
                           u"Set up Tellwick"_s,
                           u"Its model is fetched once and answers on this computer.\nAfter that, "
                           "no network is needed."_s,
                           u"Model"_s, u"Use a File…"_s, u"Small 1.5B"_s, u"Large 4B"_s,
                           u"Not on this computer yet"_s, u"Download"_s,
                           u"From large.example into ~/data/models, where 45.3 GB are free."_s,
                           u"Not Now"_s, u"Open Tellwick"_s}));
        const auto* chosen = m->screen().find(u"Large 4B"_s);
        QCOMPARE(chosen->text(QAccessible::Description),
                 u"2.5 GB · MIT · for 12 GB of memory or more, Selected"_s);
        QVERIFY(chosen->state().selected);
        QCOMPARE(m->screen().find(u"Small 1.5B"_s)->text(QAccessible::Description),
                 u"1.1 GB · Apache-2.0"_s);
        QCOMPARE(m->screen().find(u"Download"_s)->text(QAccessible::Description), u"Model"_s);
        QVERIFY(!bar());
    }

    void eachPhaseHasItsTextAndButtons_data() {
        QTest::addColumn<ModelPhase>("phase");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<QString>("defaultButton");
        const auto row = [](const char* name, ModelPhase phase, const QString& text,
                            const QStringList& buttons, const QString& defaultButton) {
            QTest::newRow(name) << phase << text << buttons << defaultButton;
        };
        const auto open = u"Open Tellwick"_s;
        const auto notNow = u"Not Now"_s;
        row("offered", ModelPhase::Offered, u"Not on this computer yet"_s,
            {u"Download"_s, notNow, open}, u"Download"_s);
        row("fetching", ModelPhase::Fetching, u"1.2 of 2.5 GB · 11 MB/s · about 2 minutes left"_s,
            {u"Pause"_s, open}, {});
        row("paused", ModelPhase::Paused, u"Paused · 1.2 of 2.5 GB"_s, {u"Resume"_s, notNow, open},
            u"Resume"_s);
        row("checking", ModelPhase::Checking, u"Checking…"_s, {open}, {});
        row("ready", ModelPhase::Ready, u"Ready"_s, {open}, open);
        row("failed", ModelPhase::Failed, u"There is no network."_s, {u"Try Again"_s, notNow, open},
            u"Try Again"_s);
    }
    void eachPhaseHasItsTextAndButtons() {
        QFETCH(ModelPhase, phase);
        QFETCH(QString, text);
        m->state.received = 1'200'000'000;
        m->state.rate = 11'000'000;
        m->state.modelProblem = u"There is no network."_s;
        QVERIFY(m->show());
        m->set(phase);
        QVERIFY2(isRead(text), qPrintable(m->screen().texts().join(u'\n')));
        QTEST(m->buttons(), "buttons");
        QTEST(defaultButton(), "defaultButton");
        const bool hasBar = phase == ModelPhase::Fetching || phase == ModelPhase::Paused ||
                            phase == ModelPhase::Checking;
        QCOMPARE(bar() != nullptr, hasBar);
        const bool canChoose = phase != ModelPhase::Fetching && phase != ModelPhase::Checking;
        QCOMPARE(m->screen().shows(u"Small 1.5B"_s), canChoose);
        QCOMPARE(m->screen().shows(u"Use a File…"_s), canChoose);
        QVERIFY(m->screen().shows(u"Large 4B"_s));
    }

    void nothingMovesWhenOnlyTheButtonGoes() {
        QVERIFY(m->show());
        const int before = m->view->sizeHint().height();
        m->set(ModelPhase::Ready);
        QVERIFY(isRead(u"Kept in ~/data/models."_s));
        const auto* text = m->screen().widget(u"Ready"_s, QAccessible::StaticText);
        QVERIFY(text->parentWidget()->height() >=
                m->screen().widget(u"Open Tellwick"_s)->height() + 20);
        QVERIFY(m->view->sizeHint().height() <= before);
        m->set(ModelPhase::Offered);
        QCOMPARE(m->view->sizeHint().height(), before);
    }

    void theBarShowsHowMuchIsThere() {
        QVERIFY(m->show());
        m->set(ModelPhase::Fetching);
        QCOMPARE(bar()->maximum(), 0); // nobody can tell
        QVERIFY(isRead(u"Connecting…"_s));
        m->state.received = 1'000'000'000;
        m->flush();
        QCOMPARE(bar()->maximum(), 100);
        QCOMPARE(bar()->value(), 40);
        m->set(ModelPhase::Paused);
        QCOMPARE(bar()->value(), 40);
        m->set(ModelPhase::Checking);
        QCOMPARE(bar()->maximum(), 0);
    }

    void whatIsSaidOfTheProgressChangesSparingly() {
        QVERIFY(m->show());
        m->set(ModelPhase::Fetching);
        m->state.rate = 11'000'000;
        QStringList said;
        for (qint64 percent = 0; percent <= 35; ++percent) {
            m->state.received = percent * 25'000'000;
            m->flush();
            for (const QString& text : m->screen().texts())
                if (text.startsWith(u"Fetching"_s) && !said.contains(text))
                    said += text;
        }
        QCOMPARE(said, (QStringList{u"Fetching, 0 per cent"_s, u"Fetching, 10 per cent"_s,
                                    u"Fetching, 20 per cent"_s, u"Fetching, 30 per cent"_s}));
        QVERIFY(isRead(u"0.8 of 2.5 GB · 11 MB/s · about 2 minutes left"_s));
        m->set(ModelPhase::Ready);
        QVERIFY(m->screen().shows(u"Ready"_s, QAccessible::StaticText));
    }

    void tooLittleRoomIsToldBefore() {
        m->state.room = 1'200'000'000;
        QVERIFY(m->show());
        QVERIFY(
            isRead(u"There is too little room for it: 2.5 GB are needed, and 1.2 GB are free."_s));
        m->state.chosen = 0;
        m->flush();
        QVERIFY(isRead(u"Not on this computer yet"_s));
    }

    void theEngineIsThereToInstallWhereItIsMissing() {
        m->state.engine = EnginePhase::Missing;
        m->state.engineOffer = u"15 MB into %1/engine."_s.arg(QDir::homePath());
        m->state.engineProblem = u"The packages cannot be reached."_s;
        QVERIFY(m->show());
        QVERIFY(m->screen().shows(u"Engine"_s, QAccessible::Heading));
        QVERIFY(isRead(u"15 MB into ~/engine."_s));
        QCOMPARE(defaultButton(), u"Download"_s);
        QVERIFY(m->screen().press(u"Install"_s));
        QCOMPARE(m->done, QStringList{u"install"_s});
        m->set(ModelPhase::Fetching);
        QCOMPARE(defaultButton(), u"Install"_s);
        m->set(EnginePhase::Installing);
        QVERIFY(isRead(u"Installing…"_s));
        QCOMPARE(defaultButton(), QString());
        m->set(ModelPhase::Ready);
        QVERIFY(!m->screen().shows(u"Not Now"_s));
        QCOMPARE(defaultButton(), QString());
        QVERIFY(m->screen().shows(u"Set up Tellwick"_s));
        m->set(EnginePhase::Failed);
        QVERIFY(isRead(u"The packages cannot be reached."_s));
        QCOMPARE(defaultButton(), u"Try Again"_s);
        QVERIFY(m->screen().press(u"Try Again"_s));
        QCOMPARE(m->done.size(), 2);
        m->set(EnginePhase::Ready);
        QVERIFY(m->screen().shows(u"Engine"_s, QAccessible::Heading));
        QCOMPARE(defaultButton(), u"Open Tellwick"_s);
        QVERIFY(m->screen().shows(u"Tellwick is ready"_s));
    }

    void ofAnEngineThatWasThereNobodyHears() {
        QVERIFY(m->show());
        QVERIFY(!m->screen().shows(u"Engine"_s));
    }

    void aFileOfTheUsersOwnHasItsRow() {
        QVERIFY(m->show());
        m->state.ownFile = QDir::homePath() + u"/models/mine.gguf"_s;
        m->set(ModelPhase::Ready);
        const auto* row = m->screen().find(u"mine.gguf"_s, QAccessible::ListItem);
        QVERIFY(row);
        QCOMPARE(row->text(QAccessible::Description), u"Your own file · ~/models, Selected"_s);
        QVERIFY(!m->screen().find(u"Large 4B"_s)->state().selected);
        m->set(ModelPhase::Offered);
        QVERIFY(!m->screen().shows(u"mine.gguf"_s));
        QVERIFY(m->screen().find(u"Large 4B"_s)->state().selected);
    }

    void theHeaderIsThereWhereTheDesktopDrawsNone() {
        QVERIFY(m->show());
        QVERIFY(!m->screen().shows(u"Tellwick Set-up"_s, QAccessible::Heading));
        const int before = m->view->sizeHint().height();
        m->windowButtons = platform::WindowButtonLayout::parsed(u":minimize,close");
        m->flush();
        QVERIFY(m->screen().shows(u"Tellwick Set-up"_s, QAccessible::Heading));
        QVERIFY(m->view->sizeHint().height() > before);
    }

    void everythingIsInViewAndNothingOverlaps_data() {
        QTest::addColumn<double>("zoom");
        QTest::newRow("usual text") << 1.0;
        QTest::newRow("large text") << 2.0;
    }
    void everythingIsInViewAndNothingOverlaps() {
        QFETCH(double, zoom);
        m->theme.setZoom(zoom);
        m->state.engine = EnginePhase::Missing;
        m->state.engineOffer = u"15 MB from the system's own packages."_s;
        QVERIFY(m->show());
        QVERIFY(m->view->width() >= 480 * zoom * 0.8);
        for (const auto* label : m->view->findChildren<QLabel*>()) {
            if (!label->isVisible())
                continue;
            const QRect place(label->mapTo(m->view.get(), QPoint()), label->size());
            QVERIFY2(m->view->rect().contains(place), qPrintable(label->text()));
            if (label->wordWrap())
                QVERIFY2(label->height() >= label->heightForWidth(label->width()),
                         qPrintable(label->text()));
        }
    }
};

TELLWICK_TEST(SetupViewTests, Widgets)
#include "SetupViewTests.moc"

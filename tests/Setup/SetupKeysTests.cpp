// SPDX-License-Identifier: MIT
// What can be done in the window of the set-up, by key and pointer.
#include "Platform/Widgets/Controls/Button.h"
#include "tests/Setup/SetupWindow.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QFileDialog>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using setup::EnginePhase;
using setup::ModelPhase;

class SetupKeysTests final : public QObject {
    Q_OBJECT

    std::optional<tests::SetupWindow> m;

    static QString focused() {
        const auto* button = qobject_cast<platform::Button*>(QApplication::focusWidget());
        return button ? button->text() : QString();
    }

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void theButtonsDoWhatTheySay_data() {
        QTest::addColumn<ModelPhase>("phase");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("action");
        QTest::addColumn<bool>("stays");
        QTest::newRow("download") << ModelPhase::Offered << u"Download"_s << u"download"_s << true;
        QTest::newRow("pause") << ModelPhase::Fetching << u"Pause"_s << u"pause"_s << true;
        QTest::newRow("resume") << ModelPhase::Paused << u"Resume"_s << u"download"_s << true;
        QTest::newRow("again") << ModelPhase::Failed << u"Try Again"_s << u"download"_s << true;
        QTest::newRow("other size")
            << ModelPhase::Offered << u"Small 1.5B"_s << u"choose 0"_s << true;
        QTest::newRow("other size, later")
            << ModelPhase::Ready << u"Small 1.5B"_s << u"choose 0"_s << true;
        QTest::newRow("not now") << ModelPhase::Offered << u"Not Now"_s << u"not now"_s << false;
        QTest::newRow("open") << ModelPhase::Offered << u"Open Tellwick"_s << u"open"_s << false;
        QTest::newRow("open, ready")
            << ModelPhase::Ready << u"Open Tellwick"_s << u"open"_s << false;
        // The download goes on beside the program.
        QTest::newRow("open, fetching")
            << ModelPhase::Fetching << u"Open Tellwick"_s << u"open"_s << true;
        QTest::newRow("open, checking")
            << ModelPhase::Checking << u"Open Tellwick"_s << u"open"_s << true;
    }
    void theButtonsDoWhatTheySay() {
        QFETCH(ModelPhase, phase);
        QFETCH(QString, button);
        QFETCH(QString, action);
        m->state.model = phase;
        QVERIFY(m->show());
        QVERIFY(m->screen().click(button));
        QCOMPARE(m->done, QStringList{action});
        QTEST(m->view->isVisible(), "stays");
    }

    void aDoubleClickIsOneClick() {
        QVERIFY(m->show());
        auto* button = m->screen().widget(u"Download"_s);
        const QPoint at = button->mapTo(m->view.get(), button->rect().center());
        QTest::mouseClick(m->view->windowHandle(), Qt::LeftButton, {}, at);
        m->set(ModelPhase::Fetching);
        // What a window gets as a second press at once.
        QTest::mouseDClick(button, Qt::LeftButton);
        QVERIFY(m->done.count(u"pause"_s) <= 1);
        m->done.clear();
        QMouseEvent second(QEvent::MouseButtonDblClick, button->rect().center(),
                           button->mapToGlobal(QPointF(button->rect().center())), Qt::LeftButton,
                           Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(button, &second);
        QTest::mouseRelease(button, Qt::LeftButton);
        QCOMPARE(m->done, QStringList());
    }

    void returnPressesTheDefaultButton_data() {
        QTest::addColumn<ModelPhase>("phase");
        QTest::addColumn<EnginePhase>("engine");
        QTest::addColumn<QString>("action");
        const auto row = [](const char* name, ModelPhase phase, EnginePhase engine,
                            const QString& action) {
            QTest::newRow(name) << phase << engine << action;
        };
        row("offered", ModelPhase::Offered, EnginePhase::Missing, u"download"_s);
        row("paused", ModelPhase::Paused, EnginePhase::Ready, u"download"_s);
        row("failed", ModelPhase::Failed, EnginePhase::Ready, u"download"_s);
        row("fetching", ModelPhase::Fetching, EnginePhase::Ready, {});
        row("checking", ModelPhase::Checking, EnginePhase::Ready, {});
        row("engine missing", ModelPhase::Ready, EnginePhase::Missing, u"install"_s);
        row("engine failed", ModelPhase::Ready, EnginePhase::Failed, u"install"_s);
        row("installing", ModelPhase::Ready, EnginePhase::Installing, {});
        row("all ready", ModelPhase::Ready, EnginePhase::Ready, u"open"_s);
    }
    void returnPressesTheDefaultButton() {
        QFETCH(ModelPhase, phase);
        QFETCH(EnginePhase, engine);
        QFETCH(QString, action);
        m->state.model = phase;
        m->state.engine = engine;
        QVERIFY(m->show());
        m->view->setFocus(); // no button has it
        m->screen().key(Qt::Key_Return);
        QCOMPARE(m->done.join(u' '), action);
    }

    void returnOnAButtonPressesThatOne() {
        QVERIFY(m->show());
        m->screen().widget(u"Small 1.5B"_s)->setFocus();
        m->screen().key(Qt::Key_Return);
        QCOMPARE(m->done, QStringList{u"choose 0"_s});
    }

    void tabGoesInReadingOrder() {
        m->state.engine = EnginePhase::Missing;
        QVERIFY(m->show());
        QCOMPARE(focused(), u"Download"_s);
        QStringList order;
        for (int i = 0; i < 7; ++i) {
            m->screen().key(Qt::Key_Tab);
            order += focused();
        }
        QCOMPARE(order,
                 (QStringList{u"Install"_s, u"Not Now"_s, u"Open Tellwick"_s, u"Use a File…"_s,
                              u"Small 1.5B"_s, u"Large 4B"_s, u"Download"_s}));
    }

    void arrowsGoThroughTheModels() {
        QVERIFY(m->show());
        m->screen().widget(u"Small 1.5B"_s)->setFocus();
        for (const auto& [key, name] : {std::pair(Qt::Key_Down, u"Large 4B"_s),
                                        {Qt::Key_Down, u"Large 4B"_s},
                                        {Qt::Key_Up, u"Small 1.5B"_s},
                                        {Qt::Key_End, u"Large 4B"_s},
                                        {Qt::Key_Home, u"Small 1.5B"_s}}) {
            m->screen().key(key);
            QCOMPARE(focused(), name);
        }
        QVERIFY(m->done.isEmpty());
    }

    void theFocusStaysOnTheButtonThatChangesAndThenGoesToTheWayOut() {
        QVERIFY(m->show());
        QCOMPARE(focused(), u"Download"_s);
        m->set(ModelPhase::Fetching);
        QCOMPARE(focused(), u"Pause"_s);
        m->set(ModelPhase::Checking);
        QCOMPARE(focused(), u"Open Tellwick"_s);
        QVERIFY(!m->screen().widget<platform::Button>(u"Open Tellwick"_s)->showsFocus());
        m->set(ModelPhase::Ready);
        m->screen().key(Qt::Key_Return);
        QCOMPARE(m->done, QStringList{u"open"_s});
    }

    void escapeClosesAndPausesWhatIsBeingFetched() {
        QVERIFY(m->show());
        m->set(ModelPhase::Fetching);
        m->screen().key(Qt::Key_Escape);
        QVERIFY(!m->view->isVisible());
        QCOMPARE(m->done, QStringList{u"pause"_s});
    }

    void escapeWhileNothingIsFetchedJustCloses() {
        QVERIFY(m->show());
        m->screen().key(Qt::Key_Escape);
        QVERIFY(!m->view->isVisible());
        QVERIFY(m->done.isEmpty());
    }

    void aFileIsAskedForAndAfterAWrongOneTheDownloadIsStillThere() {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"mine.gguf"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(m->show());
        QVERIFY(m->screen().press(u"Use a File…"_s));
        auto* dialog = m->view->findChild<QFileDialog*>();
        QVERIFY(dialog);
        QCOMPARE(dialog->nameFilters(), QStringList{u"Models (*.gguf)"_s});
        dialog->selectFile(path);
        QMetaObject::invokeMethod(dialog, "accept");
        QCOMPARE(m->done, QStringList{u"use "_s + path});
        m->state.modelProblem = u"This file is no model."_s;
        m->set(ModelPhase::Failed);
        QVERIFY(!m->screen().shows(u"Try Again"_s));
        QVERIFY(m->screen().press(u"Download"_s));
        m->set(ModelPhase::Fetching);
        m->set(ModelPhase::Failed);
        QVERIFY(m->screen().shows(u"Try Again"_s));
    }
};

TELLWICK_TEST(SetupKeysTests, Widgets)
#include "SetupKeysTests.moc"

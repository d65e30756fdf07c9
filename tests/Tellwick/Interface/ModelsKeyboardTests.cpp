// SPDX-License-Identifier: MIT
// The Models screen by keyboard, and with long names.
#include "tests/Tellwick/Interface/ModelsWindow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <QHelpEvent>
#include <QToolTip>

using namespace Qt::StringLiterals;

class ModelsKeyboardTests final : public QObject {
    Q_OBJECT

    std::optional<tests::ModelsWindow> m;

    QString focused() const {
        auto* focus = QAccessible::queryAccessibleInterface(QGuiApplication::focusObject());
        return focus ? focus->text(QAccessible::Name) : QString();
    }
    void key(Qt::Key key) { m->screen().key(key); }

private Q_SLOTS:
    void init() { m.emplace(); }
    void cleanup() { m.reset(); }

    void arrowsWalkTheModels() {
        QVERIFY(m->openOver({u"one"_s, u"two"_s}));
        m->row(u"one"_s)->setFocus(Qt::TabFocusReason);
        key(Qt::Key_Down);
        QCOMPARE(focused(), u"two"_s);
        key(Qt::Key_Down);
        QCOMPARE(focused(), u"two"_s);
        key(Qt::Key_Home);
        QCOMPARE(focused(), u"Apple Intelligence"_s);
        key(Qt::Key_Up);
        QCOMPARE(focused(), u"Apple Intelligence"_s);
        key(Qt::Key_End);
        QCOMPARE(focused(), u"two"_s);
        m->refreshButton()->setFocus(Qt::TabFocusReason);
        key(Qt::Key_Down);
        QCOMPARE(focused(), u"Apple Intelligence"_s);
    }

    void theKeyboardStaysWhenTheNumberOfModelsChanges() {
        QVERIFY(m->openOver({u"one"_s}));
        m->row(u"one"_s)->setFocus(Qt::TabFocusReason);
        QVERIFY(m->refresh({u"one"_s, u"two"_s}));
        QCOMPARE(focused(), u"one"_s);
        QVERIFY(m->row(u"one"_s)->showsFocus());
        QVERIFY(m->refresh({}));
        QCOMPARE(focused(), u"Apple Intelligence"_s); // the chosen one
        m->refreshButton()->setFocus(Qt::TabFocusReason);
        QVERIFY(m->refresh({u"three"_s}));
        QCOMPARE(focused(), u"Refresh"_s);
    }

    void refreshKeepsTheFocusAndTakesNoSecondPress() {
        QVERIFY(m->openOver({u"one"_s, u"two"_s}));
        m->conversation.server.holdsListings = true;
        const auto asked = m->listingsAsked();
        m->refreshButton()->setFocus(Qt::TabFocusReason);
        key(Qt::Key_Return);
        QTRY_COMPARE(m->listingsAsked(), asked + 1);
        m->flush();
        key(Qt::Key_Return);
        QCOMPARE(focused(), u"Refresh"_s);
        QCOMPARE(m->listingsAsked(), asked + 1);
        QCOMPARE(m->manager().selectedID.value(), u"apple-intelligence"_s);
        m->conversation.server.answerListing({u"three"_s, u"four"_s});
        QVERIFY(m->settle());
        QCOMPARE(focused(), u"Refresh"_s);
    }

    void theKeyboardBeginsAtTheChosenModel() {
        QVERIFY(m->openOver({u"one"_s, u"two"_s}));
        m->manager().select(m->manager().ollamaBackends.value().at(1));
        m->flush();
        QCOMPARE(m->view->focusProxy(), m->row(u"two"_s));
    }

    void aLongNameKeepsItsEndAndIsWholeInItsToolTip() {
        const QString name = u"a-very-long-name-of-a-model/that-does-not-fit-in-a-row:70b-q4"_s;
        QVERIFY(m->openOver({name, u"short"_s}));
        QString painted;
        const tests::PaintRecorder row(*m->row(name));
        for (const auto& part : row.all())
            painted += part.text;
        QVERIFY2(painted.contains(u"\u2026") && painted.contains(u":70b-q4"), qPrintable(painted));
        const auto tip = [this](const QString& row) {
            QHelpEvent event(QEvent::ToolTip, {5, 5}, m->row(row)->mapToGlobal(QPoint(5, 5)));
            QCoreApplication::sendEvent(m->row(row), &event);
            return QToolTip::text();
        };
        QCOMPARE(tip(u"short"_s), QString());
        QCOMPARE(tip(name), name);
    }
};

TELLWICK_TEST(ModelsKeyboardTests, Widgets)
#include "ModelsKeyboardTests.moc"

// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Scrolling/OverlayScrollBar.h"
#include "Platform/Widgets/Scrolling/ScrollView.h"
#include "tests/support/TestMain.h"

#include <QVBoxLayout>
#include <QWheelEvent>

#include <optional>

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ScrollView;

namespace {

/// A view of 200 by 300 over ten buttons, 100 pixels apart.
struct Fixture {
    Fixture() {
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
        for (int i = 0; i < 10; ++i) {
            auto* button = new Button(theme, Button::Look::Default, QString::number(i));
            button->setFixedHeight(100);
            column->addWidget(button);
            buttons.append(button);
        }
        view.setContent(content);
        view.resize(200, 300);
        view.show();
        isActive = QTest::qWaitForWindowActive(&view);
        view.setFocus();
    }

    void wheel(QPoint pixels, QPoint angle) {
        const QPointF at(50, 50);
        QWheelEvent event(at, view.mapToGlobal(at), pixels, angle, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &event);
    }

    bool isActive = false;
    platform::Theme theme;
    ScrollView view{theme};
    QList<Button*> buttons;
};

} // namespace

class ScrollViewTests final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theContentHasTheViewsWidthAndItsOwnHeight() {
        Fixture f;
        QVERIFY(f.isActive);
        QCOMPARE(f.view.content()->width(), 200);
        QCOMPARE(f.view.content()->height(), 1000);
        QCOMPARE(f.view.maximum(), 700);
        QCOMPARE(f.view.heightForWidth(200), 1000);
    }

    void offsetsStayWithinTheContent() {
        Fixture f;
        QVERIFY(f.isActive);
        f.view.setOffset(5000);
        QCOMPARE(f.view.offset(), 700);
        QCOMPARE(f.view.content()->y(), -700);
        f.view.setOffset(-5);
        QCOMPARE(f.view.offset(), 0);
        f.view.setOffset(700);
        f.view.resize(200, 900);
        QTRY_COMPARE(f.view.offset(), 100);
    }

    void theWheelScrolls() {
        Fixture f;
        QVERIFY(f.isActive);
        f.wheel({}, {0, -120});
        const auto notch = f.view.offset();
        QVERIFY(notch > 20);
        f.wheel({}, {0, -60}); // a free-spinning wheel: half a notch at a time
        f.wheel({}, {0, -60});
        QCOMPARE(f.view.offset(), 2 * notch);
        f.wheel({0, 7}, {0, 7});
        QCOMPARE(f.view.offset(), 2 * notch - 7);
        f.wheel({}, {0, 1200});
        QCOMPARE(f.view.offset(), 0);
    }

    void keysScroll() {
        Fixture f;
        QVERIFY(f.isActive);
        QTest::keyClick(&f.view, Qt::Key_End);
        QCOMPARE(f.view.offset(), 700);
        QTest::keyClick(&f.view, Qt::Key_PageUp);
        QVERIFY(f.view.offset() < 500);
        QTest::keyClick(&f.view, Qt::Key_Home);
        QCOMPARE(f.view.offset(), 0);
        QTest::keyClick(&f.view, Qt::Key_Down);
        QVERIFY(f.view.offset() > 0);
    }

    void whatTakesTheFocusComesIntoView() {
        Fixture f;
        QVERIFY(f.isActive);
        f.buttons.at(7)->setFocus(Qt::TabFocusReason);
        QVERIFY(f.view.offset() >= 500 && f.view.offset() <= 700);
        f.buttons.at(0)->setFocus(Qt::TabFocusReason);
        QCOMPARE(f.view.offset(), 0);
        f.buttons.at(1)->setFocus(Qt::TabFocusReason); // in view already
        QCOMPARE(f.view.offset(), 0);
    }

    void contentThatGrowsAndShrinksIsFollowed() {
        Fixture f;
        QVERIFY(f.isActive);
        f.view.setOffset(700);
        f.buttons.at(9)->hide();
        QTRY_COMPARE(f.view.maximum(), 600);
        QCOMPARE(f.view.offset(), 600);
        f.buttons.at(9)->show();
        QTRY_COMPARE(f.view.maximum(), 700);
    }

    void onlyAViewThatScrollsTakesTheKeyboard() {
        Fixture f;
        QVERIFY(f.isActive);
        QCOMPARE(f.view.focusPolicy(), Qt::TabFocus);
        f.view.resize(200, 1200);
        QTRY_COMPARE(f.view.focusPolicy(), Qt::NoFocus);
        QCOMPARE(f.view.maximum(), 0);
        QVERIFY(!f.view.findChild<platform::OverlayScrollBar*>()->isVisible());
    }

    void draggingTheThumbScrolls() {
        Fixture f;
        QVERIFY(f.isActive);
        auto* thumb = f.view.findChild<platform::OverlayScrollBar*>();
        QVERIFY(thumb->isVisible());
        QTest::mousePress(thumb, Qt::LeftButton, {}, QPoint(9, 20));
        QTest::mouseMove(thumb, QPoint(9, 120));
        QVERIFY(f.view.offset() > 200);
        QTest::mouseMove(thumb, QPoint(9, 1000));
        QCOMPARE(f.view.offset(), 700);
        QTest::mouseRelease(thumb, Qt::LeftButton, {}, QPoint(9, 1000));
        QTest::mouseMove(thumb, QPoint(9, 20));
        QCOMPARE(f.view.offset(), 700);
    }

    void newContentReplacesTheOldAndStartsAtItsTop() {
        Fixture f;
        QVERIFY(f.isActive);
        f.view.setOffset(300);
        const QPointer<QWidget> old(f.view.content());
        auto* content = new QWidget;
        content->setLayout(new QVBoxLayout);
        f.view.setContent(content);
        QVERIFY(old.isNull());
        QCOMPARE(f.view.offset(), 0);
        QCOMPARE(f.view.maximum(), 0);
    }
};

TELLWICK_TEST(ScrollViewTests, Widgets)
#include "ScrollViewTests.moc"

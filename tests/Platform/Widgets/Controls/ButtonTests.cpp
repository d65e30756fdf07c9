// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QLineEdit>
#include <QVBoxLayout>
#include <QVariantAnimation>

using namespace Qt::StringLiterals;
using platform::Button;
using Look = platform::Button::Look;

class ButtonTests final : public QObject {
    Q_OBJECT

    platform::Theme m_theme;

private Q_SLOTS:
    void plainReturnSpaceAndAClickPress_data() {
        QTest::addColumn<int>("key"); // none: the pointer
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::addColumn<int>("expected");
        const auto row = [](const char* name, int key, Qt::KeyboardModifiers modifiers,
                            int expected) { QTest::newRow(name) << key << modifiers << expected; };
        row("return", Qt::Key_Return, {}, 1);
        row("enter", Qt::Key_Enter, {}, 1);
        row("enter of the keypad", Qt::Key_Enter, Qt::KeypadModifier, 1);
        row("space", Qt::Key_Space, {}, 1);
        row("pointer", 0, {}, 1);
        row("control-return", Qt::Key_Return, Qt::ControlModifier, 0);
        row("down", Qt::Key_Down, {}, 0);
    }
    void plainReturnSpaceAndAClickPress() {
        QFETCH(int, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QFETCH(int, expected);
        Button button(m_theme, Look::Icon, u"New Chat"_s, u"square.and.pencil"_s);
        int presses = 0;
        button.setAction([&] { ++presses; });
        button.show();
        for (const bool isEnabled : {true, false}) {
            button.setEnabled(isEnabled);
            if (key != 0)
                QTest::keyClick(&button, static_cast<Qt::Key>(key), modifiers);
            else
                QTest::mouseClick(&button, Qt::LeftButton);
            QCOMPARE(presses, expected);
        }
    }

    void aSymbolTurnsUnlessMotionIsReduced() {
        platform::Theme theme;
        Button button(theme, Look::Icon, u"Refresh"_s, u"arrow.clockwise"_s);
        for (const bool isMoving : {true, false}) {
            theme.motion().setEnabled(isMoving);
            button.setTurning(true);
            QCOMPARE(button.findChild<QVariantAnimation*>() != nullptr, isMoving);
            button.setTurning(false);
            QVERIFY(!button.findChild<QVariantAnimation*>());
        }
    }

    void anActionMayDestroyItsButton() {
        auto* button = new Button(m_theme, Look::Icon, u"Gone"_s, u"cpu"_s);
        const QPointer<Button> alive(button);
        button->setAction([button, kept = u"kept"_s] {
            delete button;
            QCOMPARE(kept, u"kept"_s);
        });
        button->click();
        QVERIFY(alive.isNull());
    }

    void aClickLeavesTheFocusWhereItWas() {
        QWidget window;
        auto* column = new QVBoxLayout(&window);
        auto* field = new QLineEdit;
        auto* button = new Button(m_theme, Look::Icon, u"New Chat"_s, u"square.and.pencil"_s);
        column->addWidget(field);
        column->addWidget(button);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        field->setFocus();
        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(field->hasFocus());
        QTest::keyClick(field, Qt::Key_Tab);
        QVERIFY(button->hasFocus());
    }

    void aChipShowsTheStateOfItsOwnerAndNeverItsOwn() {
        Button chip(m_theme, Look::Chip, u"Proofread"_s, u"checkmark.circle"_s);
        int presses = 0;
        chip.setAction([&] { ++presses; });
        chip.show();
        for (const bool isOn : {false, true}) {
            chip.setChecked(isOn);
            QTest::mouseClick(&chip, Qt::LeftButton);
            QCOMPARE(chip.isChecked(), isOn);
        }
        QCOMPARE(presses, 2);
    }

    void assistiveTechnologyMeetsEachLookAsWhatItIs_data() {
        QTest::addColumn<Look>("look");
        for (const auto look :
             {Look::Icon, Look::Disc, Look::Default, Look::Link, Look::Chip, Look::MenuRow})
            QTest::addRow("look %d", int(look)) << look;
    }
    void assistiveTechnologyMeetsEachLookAsWhatItIs() {
        QFETCH(Look, look);
        Button button(m_theme, look, u"Send"_s, u"arrow.up.circle.fill"_s);
        int presses = 0;
        button.setAction([&] { ++presses; });
        auto* interface = QAccessible::queryAccessibleInterface(&button);
        QCOMPARE(interface->role(), look == Look::Link      ? QAccessible::Link
                                    : look == Look::MenuRow ? QAccessible::MenuItem
                                                            : QAccessible::Button);
        QCOMPARE(interface->text(QAccessible::Name), u"Send"_s);
        QCOMPARE(interface->text(QAccessible::Description), QString());
        const bool isSymbolAlone = look == Look::Icon || look == Look::Disc;
        QCOMPARE(button.toolTip(), isSymbolAlone ? u"Send"_s : QString());
        button.setName(u"Stop & go"_s);
        QCOMPARE(interface->text(QAccessible::Name), u"Stop & go"_s);
        QCOMPARE(button.toolTip(), isSymbolAlone ? u"Stop & go"_s : QString());
        QVERIFY(button.shortcut().isEmpty());

        QCOMPARE(bool(interface->state().checkable), look == Look::Chip);
        QVERIFY(!interface->state().pressed);
        button.setChecked(true);
        QCOMPARE(bool(interface->state().checked), look == Look::Chip);
        QCOMPARE(bool(interface->state().pressed), look == Look::Chip);
        QCOMPARE(interface->text(QAccessible::Description),
                 look == Look::Chip ? u"Pressed"_s : QString());

        auto* actions = interface->actionInterface();
        QVERIFY(actions->actionNames().contains(QAccessibleActionInterface::pressAction()));
        actions->doAction(QAccessibleActionInterface::pressAction());
        button.setEnabled(false);
        actions->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(presses, 1);
        QVERIFY(interface->state().disabled);
    }

    void buttonsGrowWithTheFont() {
        platform::Theme theme;
        QFont font;
        font.setPixelSize(13);
        theme.setBodyFont(font);
        Button chip(theme, Look::Chip, u"Proofread"_s, u"checkmark.circle"_s);
        Button button(theme, Look::Disc, u"Send"_s, u"arrow.up.circle.fill"_s);
        button.setSymbolPoints(30);
        const auto chipBefore = chip.sizeHint();
        const auto buttonBefore = button.sizeHint();
        font.setPixelSize(26);
        theme.setBodyFont(font);
        QVERIFY(chip.sizeHint().height() > chipBefore.height() + 10);
        QVERIFY(button.sizeHint().height() > buttonBefore.height() + 25);
    }
};

TELLWICK_TEST(ButtonTests, Widgets)
#include "ButtonTests.moc"

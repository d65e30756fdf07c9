// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/HeaderBar.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QLineEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using platform::Button;

class ButtonTests final : public QObject {
    Q_OBJECT

    platform::Theme m_theme;

private Q_SLOTS:
    void returnAndSpaceAndAClickPress_data() {
        QTest::addColumn<int>("key");
        QTest::newRow("return") << int{Qt::Key_Return};
        QTest::newRow("enter") << int{Qt::Key_Enter};
        QTest::newRow("space") << int{Qt::Key_Space};
        QTest::newRow("pointer") << 0;
    }
    void returnAndSpaceAndAClickPress() {
        QFETCH(int, key);
        Button button(m_theme, platform::Button::Look::Icon, u"New Chat"_s, u"square.and.pencil"_s);
        int presses = 0;
        button.setAction([&] { ++presses; });
        button.show();
        if (key != 0)
            QTest::keyClick(&button, static_cast<Qt::Key>(key));
        else
            QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(presses, 1);
        button.setEnabled(false);
        QTest::keyClick(&button, Qt::Key_Return);
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(presses, 1);
    }

    void returnWithAModifierIsNotAPress() {
        Button button(m_theme, platform::Button::Look::Icon, u"New Chat"_s, u"square.and.pencil"_s);
        int presses = 0;
        button.setAction([&] { ++presses; });
        button.show();
        QTest::keyClick(&button, Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(presses, 0);
    }

    void anActionMayDestroyItsButton() {
        auto* button = new Button(m_theme, platform::Button::Look::Icon, u"Gone"_s, u"cpu"_s);
        const QPointer<Button> alive(button);
        QString kept = u"kept"_s;
        button->setAction([button, kept] {
            button->deleteLater();
            QCOMPARE(kept, u"kept"_s);
        });
        button->click();
        QTRY_VERIFY(alive.isNull());
    }

    void aClickLeavesTheFocusWhereItWas() {
        QWidget window;
        auto* column = new QVBoxLayout(&window);
        auto* field = new QLineEdit;
        auto* button = new Button(m_theme, platform::Button::Look::Icon, u"New Chat"_s,
                                  u"square.and.pencil"_s);
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

    void theFocusRingIsPaintedForTheKeyboardOnly_data() {
        QTest::addColumn<Qt::FocusReason>("reason");
        QTest::addColumn<bool>("isShown");
        QTest::newRow("tab") << Qt::TabFocusReason << true;
        QTest::newRow("backtab") << Qt::BacktabFocusReason << true;
        QTest::newRow("pointer") << Qt::MouseFocusReason << false;
        QTest::newRow("program") << Qt::OtherFocusReason << false;
    }
    void theFocusRingIsPaintedForTheKeyboardOnly() {
        QFETCH(Qt::FocusReason, reason);
        QFETCH(bool, isShown);
        Button button(m_theme, platform::Button::Look::Icon, u"New Chat"_s, u"square.and.pencil"_s);
        button.show();
        QVERIFY(QTest::qWaitForWindowActive(&button));
        button.clearFocus();
        const auto without = button.grab().toImage();
        button.setFocus(reason);
        QVERIFY(button.hasFocus());
        QCOMPARE(button.grab().toImage() != without, isShown);
    }

    void aChipShowsTheStateOfItsOwnerAndNeverItsOwn() {
        Button chip(m_theme, Button::Look::Chip, u"Proofread"_s, u"checkmark.circle"_s);
        int presses = 0;
        chip.setAction([&] { ++presses; });
        chip.show();
        QTest::mouseClick(&chip, Qt::LeftButton);
        QCOMPARE(presses, 1);
        QVERIFY(!chip.isChecked());
        chip.setChecked(true);
        QTest::mouseClick(&chip, Qt::LeftButton);
        QCOMPARE(presses, 2);
        QVERIFY(chip.isChecked());
    }

    void aChipIsAToggleButtonToAssistiveTechnology() {
        Button chip(m_theme, Button::Look::Chip, u"Proofread"_s, u"checkmark.circle"_s);
        int presses = 0;
        chip.setAction([&] { ++presses; });
        auto* interface = QAccessible::queryAccessibleInterface(&chip);
        QVERIFY(interface);
        QCOMPARE(interface->role(), QAccessible::Button);
        QCOMPARE(interface->text(QAccessible::Name), u"Proofread"_s);
        QVERIFY(interface->state().checkable);
        QVERIFY(!interface->state().pressed);
        chip.setChecked(true);
        QVERIFY(interface->state().checked);
        QVERIFY(interface->state().pressed);
        auto* actions = interface->actionInterface();
        QVERIFY(actions);
        QVERIFY(actions->actionNames().contains(QAccessibleActionInterface::pressAction()));
        actions->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(presses, 1);
        chip.setEnabled(false);
        actions->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(presses, 1);
        QVERIFY(interface->state().disabled);
    }

    void aSymbolHasItsNameForAssistiveTechnologyAndTheToolTip() {
        Button button(m_theme, platform::Button::Look::Icon, u"Send"_s, u"arrow.up.circle.fill"_s);
        auto* interface = QAccessible::queryAccessibleInterface(&button);
        QVERIFY(interface);
        QCOMPARE(interface->text(QAccessible::Name), u"Send"_s);
        QCOMPARE(button.toolTip(), u"Send"_s);
        button.setName(u"Stop"_s);
        button.setIcon(u"stop.circle.fill"_s);
        QCOMPARE(interface->text(QAccessible::Name), u"Stop"_s);
        QCOMPARE(button.toolTip(), u"Stop"_s);
    }

    void aLinkIsALinkToAssistiveTechnology() {
        Button link(m_theme, Button::Look::Link, u"example.org"_s);
        auto* interface = QAccessible::queryAccessibleInterface(&link);
        QVERIFY(interface);
        QCOMPARE(interface->role(), QAccessible::Link);
        QCOMPARE(interface->text(QAccessible::Name), u"example.org"_s);
        Button button(m_theme, Button::Look::Default, u"OK"_s);
        QCOMPARE(QAccessible::queryAccessibleInterface(&button)->role(), QAccessible::Button);
    }

    void buttonsGrowWithTheFont() {
        platform::Theme theme;
        QFont font;
        font.setPixelSize(13);
        theme.setBodyFont(font);
        Button chip(theme, Button::Look::Chip, u"Proofread"_s, u"checkmark.circle"_s);
        Button button(theme, platform::Button::Look::Icon, u"Send"_s, u"arrow.up.circle.fill"_s);
        button.setSymbolPoints(30);
        const auto chipBefore = chip.sizeHint();
        const auto buttonBefore = button.sizeHint();
        font.setPixelSize(26);
        theme.setBodyFont(font);
        QVERIFY(chip.sizeHint().height() > chipBefore.height() + 10);
        QVERIFY(button.sizeHint().height() > buttonBefore.height() + 25);
    }

    void theHeaderBarShowsTitleSubtitleAndItsItemsInOrder() {
        platform::HeaderBar bar(m_theme);
        bar.setTitle(u"Tellwick"_s);
        bar.setSubtitle(u"llama3 · Ollama"_s);
        auto* first = new Button(m_theme, platform::Button::Look::Icon, u"New Chat"_s,
                                 u"square.and.pencil"_s);
        auto* second =
            new Button(m_theme, platform::Button::Look::Icon, u"More"_s, u"ellipsis.circle"_s);
        bar.addTrailing(first);
        bar.addTrailing(second);
        bar.resize(400, bar.sizeHint().height());
        bar.show();
        QVERIFY(first->x() > 200);
        QVERIFY(second->x() >= first->x() + first->width());
        QStringList names;
        auto* interface = QAccessible::queryAccessibleInterface(&bar);
        for (int i = 0; i < interface->childCount(); ++i)
            names << interface->child(i)->text(QAccessible::Name);
        QCOMPARE(names,
                 QStringList({u"Tellwick"_s, u"llama3 · Ollama"_s, u"New Chat"_s, u"More"_s}));
    }
};

TELLWICK_TEST(ButtonTests, Widgets)
#include "ButtonTests.moc"

// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Overlays/Menu.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Platform/Widgets/Overlays/PullDownButton.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QLineEdit>
#include <QVBoxLayout>

#include <optional>

using namespace Qt::StringLiterals;
using platform::Button;
using platform::Menu;
using platform::MenuEntry;

namespace {

struct Window {
    Window() {
        auto* column = new QVBoxLayout(&widget);
        column->addWidget(button, 0, Qt::AlignRight);
        column->addStretch();
        column->addWidget(field);
        widget.resize(400, 500);
        widget.show();
        field->setFocus();
    }

    std::vector<MenuEntry> entries() {
        const auto choose = [this](const QString& name) {
            return [this, name] {
                chosen << name;
                wasOpenWhenChosen = host->isPresenting();
            };
        };
        return {{u"Models"_s, u"cpu"_s, choose(u"Models"_s)},
                MenuEntry::separator(),
                {u"About"_s, u"info.circle"_s, choose(u"About"_s)}};
    }

    platform::Theme theme;
    QWidget widget;
    QLineEdit* field = new QLineEdit;
    platform::OverlayHost* host = new platform::OverlayHost(theme, &widget);
    platform::PullDownButton* button = new platform::PullDownButton(
        theme, u"More"_s, u"ellipsis.circle"_s, *host, [this] { return entries(); });
    QStringList chosen;
    bool wasOpenWhenChosen = false;
};

QString focusName() {
    auto* focus = QApplication::focusWidget();
    return focus == nullptr ? QString()
                            : QAccessible::queryAccessibleInterface(focus)->text(QAccessible::Name);
}

} // namespace

class MenuTests final : public QObject {
    Q_OBJECT

    std::optional<Window> m;

    /// The open menu; none: null.
    Menu* menu() const { return qobject_cast<Menu*>(m->host->top()); }
    static void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }

private Q_SLOTS:
    void init() {
        m.emplace();
        QVERIFY(QTest::qWaitForWindowActive(&m->widget));
    }
    void cleanup() { m.reset(); }

    void aPressOpensTheMenuBelowTheButton() {
        QTest::mousePress(m->button, Qt::LeftButton);
        auto* open = menu();
        QVERIFY(open);
        const auto body = open->bodyRect().translated(open->pos());
        QVERIFY(m->host->rect().contains(body));
        QVERIFY(body.top() >= m->button->geometry().bottom());
        QCOMPARE(open->findChildren<Button*>().size(), 2);
        QTest::mouseRelease(m->button, Qt::LeftButton);
        QVERIFY(menu());
    }

    void aClickOnAnEntryClosesTheMenuAndRunsIt() {
        QTest::mouseClick(m->button, Qt::LeftButton);
        QTest::mouseClick(menu()->findChildren<Button*>().at(1), Qt::LeftButton);
        QCOMPARE(m->chosen, QStringList{u"About"_s});
        QVERIFY(!m->wasOpenWhenChosen);
        QVERIFY(!menu());
        QVERIFY(m->field->hasFocus());
    }

    void aReleaseOverAnEntryChoosesIt() {
        QTest::mousePress(m->button, Qt::LeftButton);
        auto* row = menu()->findChildren<Button*>().at(0);
        const auto at = m->button->mapFromGlobal(row->mapToGlobal(row->rect().center()));
        QTest::mouseMove(m->button, at);
        QTest::mouseRelease(m->button, Qt::LeftButton, {}, at);
        QCOMPARE(m->chosen, QStringList{u"Models"_s});
    }

    void arrowsWalkRoundAndReturnChooses() {
        m->button->setFocus(Qt::TabFocusReason);
        press(Qt::Key_Return);
        QCOMPARE(focusName(), u"Models"_s);
        for (const auto& [key, name] : {std::pair(Qt::Key_Down, u"About"_s),
                                        {Qt::Key_Down, u"Models"_s},
                                        {Qt::Key_Up, u"About"_s},
                                        {Qt::Key_Up, u"Models"_s},
                                        {Qt::Key_End, u"About"_s},
                                        {Qt::Key_Home, u"Models"_s},
                                        {Qt::Key_Tab, u"About"_s}}) {
            press(key);
            QCOMPARE(focusName(), name);
        }
        press(Qt::Key_Return);
        QCOMPARE(m->chosen, QStringList{u"About"_s});
        QVERIFY(m->button->hasFocus());
    }

    void everyOpeningKeyOpens() {
        m->button->setFocus(Qt::TabFocusReason);
        for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_Down}) {
            QTest::keyClick(m->widget.windowHandle(), key); // the release goes to the menu
            QVERIFY(menu());
            QVERIFY(m->button->isDown());
            press(Qt::Key_Escape);
            QVERIFY(!m->button->isDown());
            QVERIFY(!menu());
            QVERIFY(m->chosen.isEmpty());
            QVERIFY(m->button->hasFocus());
        }
    }

    void aMenuOpenedByThePointerStartsWithoutAChoice() {
        QTest::mouseClick(m->button, Qt::LeftButton);
        QCOMPARE(QApplication::focusWidget(), menu());
        press(Qt::Key_Return);
        QVERIFY(m->chosen.isEmpty());
        press(Qt::Key_Up);
        QCOMPARE(focusName(), u"About"_s);
    }

    void thePointerBringsTheFocusAlong() {
        QTest::mouseClick(m->button, Qt::LeftButton);
        auto* row = menu()->findChildren<Button*>().at(1);
        QTest::mouseMove(row, row->rect().center() - QPoint(2, 0));
        QTest::mouseMove(row, row->rect().center());
        QTRY_COMPARE(focusName(), u"About"_s);
    }

    void aClickBesideClosesTheMenu() {
        QTest::mouseClick(m->button, Qt::LeftButton);
        QTest::mouseClick(m->host, Qt::LeftButton, {}, QPoint(10, 480));
        QVERIFY(!menu());
        QVERIFY(m->chosen.isEmpty());
    }

    void aContextMenuOpensWhereItIsAskedForButWithinTheWindow() {
        for (const QPoint at : {QPoint(200, 200), QPoint(398, 498), QPoint(900, -50)}) {
            auto* menu = m->host->present(std::make_unique<Menu>(
                m->theme, u"Message"_s, m->entries(), m->widget.mapToGlobal(at)));
            const auto body = menu->bodyRect().translated(menu->pos());
            QVERIFY(m->host->rect().contains(body));
            if (at == QPoint(200, 200))
                QCOMPARE(body.topLeft(), at);
            press(Qt::Key_Down);
            press(Qt::Key_Return);
            QCOMPARE(std::exchange(m->chosen, {}), QStringList{u"Models"_s});
        }
    }

    void assistiveTechnologySeesAMenuOfItems() {
        auto* button = QAccessible::queryAccessibleInterface(m->button);
        QCOMPARE(button->role(), QAccessible::ButtonMenu);
        QVERIFY(button->state().hasPopup);
        QVERIFY(button->state().collapsed);
        button->actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
        QVERIFY(button->state().expanded);
        auto* open = QAccessible::queryAccessibleInterface(menu());
        QCOMPARE(open->role(), QAccessible::PopupMenu);
        QCOMPARE(open->text(QAccessible::Name), u"More"_s);
        QStringList items;
        for (int i = 0; i < open->childCount(); ++i)
            if (open->child(i)->role() == QAccessible::MenuItem)
                items << open->child(i)->text(QAccessible::Name);
        QCOMPARE(items, QStringList({u"Models"_s, u"About"_s}));
    }
};

TELLWICK_TEST(MenuTests, Widgets)
#include "MenuTests.moc"

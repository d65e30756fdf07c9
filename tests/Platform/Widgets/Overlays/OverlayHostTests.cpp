// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Platform/Widgets/Overlays/Panel.h"
#include "Platform/Widgets/Scrolling/ScrollArea.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QLineEdit>
#include <QShortcut>
#include <QVBoxLayout>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using platform::Button;
using platform::Panel;
using Kind = platform::Panel::Kind;

namespace {

/// A window with a field and a button, and content for panels.
struct Window {
    Window() {
        auto* column = new QVBoxLayout(&widget);
        column->addWidget(anchor, 0, Qt::AlignRight);
        column->addStretch();
        column->addWidget(field);
        widget.resize(640, 800);
        widget.show();
        field->setFocus();
    }

    /// Two buttons above and below a block of the given height.
    QWidget* content(int height) {
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        first = new Button(theme, Button::Look::Default, u"First"_s);
        second = new Button(theme, Button::Look::Default, u"Second"_s);
        auto* block = new QWidget;
        block->setFixedHeight(height);
        for (auto* widget : {static_cast<QWidget*>(first), block, static_cast<QWidget*>(second)})
            column->addWidget(widget);
        return content;
    }

    std::unique_ptr<Panel> make(Kind kind, int height) {
        if (kind == Kind::Popover)
            return Panel::popover(theme, u"Models"_s, content(height), 360, anchor);
        if (kind == Kind::Sheet)
            return Panel::sheet(theme, u"About"_s, content(height), 400);
        return Panel::alert(theme, u"Unavailable"_s, u"Not now."_s, u"OK"_s);
    }
    Panel* present(Kind kind, int height = 100) {
        return host->present(
            make(kind, height), [this] { ++dismissals; });
    }

    platform::Theme theme;
    QWidget widget;
    QLineEdit* field = new QLineEdit;
    Button* anchor = new Button(theme, Button::Look::Icon, u"More"_s, u"ellipsis.circle"_s);
    platform::OverlayHost* host = new platform::OverlayHost(theme, &widget);
    QPointer<Button> first;
    QPointer<Button> second;
    int dismissals = 0;
};

QRect bodyInHost(const Panel* panel) {
    return panel->bodyRect().translated(panel->pos());
}

} // namespace

class OverlayHostTests final : public QObject {
    Q_OBJECT

    std::optional<Window> m;

    static QWidget* focus() { return QApplication::focusWidget(); }
    static void press(Qt::Key key) { QTest::keyClick(focus(), key); }
    void clickBeside() { QTest::mouseClick(m->host, Qt::LeftButton, {}, QPoint(20, 780)); }

    static void addKinds() {
        QTest::addColumn<Kind>("kind");
        QTest::newRow("popover") << Kind::Popover;
        QTest::newRow("sheet") << Kind::Sheet;
        QTest::newRow("alert") << Kind::Alert;
    }

private Q_SLOTS:
    void init() {
        m.emplace();
        QVERIFY(QTest::qWaitForWindowActive(&m->widget));
        QVERIFY(m->field->hasFocus());
    }
    void cleanup() { m.reset(); }

    void focusGoesInAndComesBack_data() { addKinds(); }
    void focusGoesInAndComesBack() {
        QFETCH(Kind, kind);
        QVERIFY(!m->host->isPresenting());
        QVERIFY(!m->host->isVisible());
        auto* panel = m->present(kind);
        QVERIFY(m->host->isPresenting());
        QVERIFY(m->host->isVisible());
        QVERIFY(panel->isAncestorOf(focus()));
        press(Qt::Key_Escape);
        QVERIFY(!m->host->isPresenting());
        QVERIFY(!m->host->isVisible());
        QVERIFY(m->field->hasFocus());
        QCOMPARE(m->dismissals, 1);
    }

    void tabStaysInside() {
        auto* sheet = m->present(Kind::Sheet);
        QStringList visited;
        for (int i = 0; i < 6; ++i) {
            visited << QAccessible::queryAccessibleInterface(focus())->text(QAccessible::Name);
            press(Qt::Key_Tab);
            QVERIFY(sheet->isAncestorOf(focus()));
        }
        const QStringList round{u"Close"_s, u"First"_s, u"Second"_s};
        QCOMPARE(visited, round + round);
        press(Qt::Key_Backtab);
        QCOMPARE(focus(), m->second.data());
    }

    void tabSkipsWhatIsDisabledOrHidden() {
        m->present(Kind::Popover);
        m->second->setFocus();
        m->first->setEnabled(false);
        press(Qt::Key_Tab);
        QCOMPARE(focus(), m->second.data());
        m->first->setEnabled(true);
        m->first->hide();
        press(Qt::Key_Tab);
        QCOMPARE(focus(), m->second.data());
        m->first->show();
        press(Qt::Key_Tab);
        QCOMPARE(focus(), m->first.data());
    }

    void aPanelWithNothingToFocusHasTheFocusItself() {
        auto* panel =
            m->host->present(Panel::popover(m->theme, u"Empty"_s, new QWidget, 200, nullptr));
        QCOMPARE(focus(), panel);
        press(Qt::Key_Tab);
        QCOMPARE(focus(), panel);
        press(Qt::Key_Escape);
        QVERIFY(m->field->hasFocus());
    }

    void aClickBesideClosesPopoverAndSheetButNotTheAlert_data() { addKinds(); }
    void aClickBesideClosesPopoverAndSheetButNotTheAlert() {
        QFETCH(Kind, kind);
        m->present(kind);
        clickBeside();
        QCOMPARE(m->host->isPresenting(), kind == Kind::Alert);
        QCOMPARE(m->dismissals, kind == Kind::Alert ? 0 : 1);
    }

    void aClickInTheShadowIsBesideAndOneOnTheBodyIsNot() {
        auto* sheet = m->present(Kind::Sheet);
        QTest::mouseClick(sheet, Qt::LeftButton, {}, sheet->bodyRect().topLeft() + QPoint(40, 6));
        QVERIFY(m->host->isPresenting());
        QTest::mouseClick(sheet, Qt::LeftButton, {}, QPoint(3, 3));
        QVERIFY(!m->host->isPresenting());
    }

    void theWindowBeneathHearsNeitherPointerNorKeys() {
        m->present(Kind::Sheet);
        const auto at = m->anchor->mapTo(&m->widget, m->anchor->rect().center());
        QCOMPARE(m->widget.childAt(at), m->host);
        QTest::keyClicks(focus(), u"abc"_s);
        QVERIFY(m->field->text().isEmpty());
    }

    void anAlertClosesByItsButtonReturnOrEscape_data() {
        QTest::addColumn<int>("key"); // none: the pointer
        QTest::addColumn<bool>("isFromText");
        QTest::newRow("return") << int{Qt::Key_Return} << false;
        QTest::newRow("return from its text") << int{Qt::Key_Return} << true;
        QTest::newRow("enter") << int{Qt::Key_Enter} << false;
        QTest::newRow("escape") << int{Qt::Key_Escape} << false;
        QTest::newRow("space") << int{Qt::Key_Space} << false;
        QTest::newRow("click") << 0 << false;
    }
    void anAlertClosesByItsButtonReturnOrEscape() {
        QFETCH(int, key);
        QFETCH(bool, isFromText);
        auto* alert = m->present(Kind::Alert);
        auto* button = alert->findChild<Button*>();
        QVERIFY(button->hasFocus());
        if (isFromText)
            alert->setFocus();
        if (key != 0)
            press(static_cast<Qt::Key>(key));
        else
            QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(!m->host->isPresenting());
        QCOMPARE(m->dismissals, 1);
        QVERIFY(m->field->hasFocus());
    }

    void escapeOfThePanelGoesBeforeAShortcutOfTheWindow() {
        QShortcut shortcut(Qt::Key_Escape, &m->widget);
        int activations = 0;
        connect(&shortcut, &QShortcut::activated, this, [&] { ++activations; });
        m->present(Kind::Sheet);
        QTest::keyClick(m->widget.windowHandle(), Qt::Key_Escape);
        QVERIFY(!m->host->isPresenting());
        QCOMPARE(activations, 0);
        QTest::keyClick(m->widget.windowHandle(), Qt::Key_Escape);
        QCOMPARE(activations, 1);
    }

    void panelsCloseFromTheTop() {
        auto* sheet = m->present(Kind::Sheet);
        m->present(Kind::Alert);
        press(Qt::Key_Escape);
        QCOMPARE(m->host->top(), sheet);
        QVERIFY(sheet->isAncestorOf(focus()));
        m->present(Kind::Alert);
        m->host->dismiss(sheet); // takes the alert above it along
        QVERIFY(!m->host->isPresenting());
        QCOMPARE(m->dismissals, 3);
        QVERIFY(m->field->hasFocus());
        m->host->dismiss(sheet); // gone already
        QCOMPARE(m->dismissals, 3);
    }

    void whatTakesTheFocusOnDismissalKeepsIt() {
        auto* other = new QLineEdit(&m->widget);
        other->show();
        m->host->present(m->make(Kind::Alert, 0), [&] { other->setFocus(); })->dismiss();
        QCOMPARE(focus(), other);
    }

    void aDismissalMayPresentTheNext() {
        m->host->present(m->make(Kind::Alert, 0), [&] { m->present(Kind::Sheet); })->dismiss();
        QCOMPARE(m->host->top()->accessibleName(), u"About"_s);
        QVERIFY(m->host->isVisible());
        press(Qt::Key_Escape);
        QVERIFY(m->field->hasFocus());
    }

    void panelsFitASmallWindowAndScroll_data() { addKinds(); }
    void panelsFitASmallWindowAndScroll() {
        QFETCH(Kind, kind);
        QFont font;
        font.setPixelSize(26); // and large letters
        m->theme.setBodyFont(font);
        m->widget.resize(360, 480);
        QTRY_COMPARE(m->host->size(), QSize(360, 480));
        auto* panel = m->present(kind, 2000);
        QVERIFY(m->host->rect().contains(bodyInHost(panel)));
        if (kind == Kind::Alert)
            return;
        auto* scroll = panel->findChild<platform::ScrollArea*>();
        QVERIFY(scroll->maximum() > 1000);
        m->second->setFocus(Qt::TabFocusReason);
        const auto top = m->second->mapTo(scroll, QPoint(0, 0)).y();
        QVERIFY(top >= 0 && top + m->second->height() <= scroll->height());
    }

    void theScrollingKeysWorkFromAnywhereInAPanel_data() { addKinds(); }
    void theScrollingKeysWorkFromAnywhereInAPanel() {
        QFETCH(Kind, kind);
        auto* panel = kind == Kind::Alert
                          ? m->host->present(Panel::alert(m->theme, u"Unavailable"_s,
                                                          u"why\n"_s.repeated(300), u"OK"_s))
                          : m->present(kind, 3000);
        auto* scroll = panel->findChild<platform::ScrollArea*>();
        for (auto* from : {static_cast<QWidget*>(panel), focus()}) { // the panel and what is in it
            from->setFocus();
            press(Qt::Key_PageDown);
            const auto page = scroll->offset();
            QVERIFY(page > 200);
            press(Qt::Key_Down);
            QVERIFY(scroll->offset() > page);
            press(Qt::Key_End);
            QCOMPARE(scroll->offset(), scroll->maximum());
            press(Qt::Key_Home);
            QCOMPARE(scroll->offset(), 0);
        }
        press(Qt::Key_F5); // of no use to anybody
        QVERIFY(m->host->isPresenting());
    }

    void panelsFollowTheSizeOfTheWindow() {
        auto* sheet = m->present(Kind::Sheet);
        m->widget.resize(900, 500);
        QTRY_COMPARE(bodyInHost(sheet).center(), m->host->rect().center());
        m->widget.resize(380, 300);
        QTRY_VERIFY(m->host->rect().contains(bodyInHost(sheet)));
    }

    void aPopoverStandsBelowItsAnchorAndGrowsWithItsContent() {
        auto* popover = m->present(Kind::Popover);
        const QRect anchor(m->anchor->mapTo(&m->widget, QPoint(0, 0)), m->anchor->size());
        const auto body = bodyInHost(popover);
        QVERIFY(body.top() > anchor.bottom());
        QVERIFY(body.top() - anchor.bottom() < 15);
        QVERIFY(body.left() < anchor.center().x() && anchor.center().x() < body.right());
        QVERIFY(m->host->rect().contains(body));
        QCOMPARE(body.width(), 360);
        m->first->parentWidget()->layout()->addWidget(
            new Button(m->theme, Button::Look::Default, u"Third"_s));
        QTRY_VERIFY(bodyInHost(popover).height() > body.height() + 10);
        QCOMPARE(popover->findChild<platform::ScrollArea*>()->maximum(), 0);
    }

    void theWindowIsDimmedUnderSheetAndAlertAndNotUnderAPopover_data() { addKinds(); }
    void theWindowIsDimmedUnderSheetAndAlertAndNotUnderAPopover() {
        QFETCH(Kind, kind);
        const auto pixel = [this] { return m->widget.grab().toImage().pixelColor(5, 400); };
        const auto plain = pixel();
        m->present(kind);
        QCOMPARE(pixel().lightness() < plain.lightness() - 20, kind != Kind::Popover);
        m->host->top()->dismiss();
        QCOMPARE(pixel(), plain);
    }

    void assistiveTechnologyHearsWhatOpens() {
        for (const auto& [kind, role, name, detail] :
             {std::tuple(Kind::Popover, QAccessible::Dialog, u"Models"_s, QString()),
              {Kind::Sheet, QAccessible::Dialog, u"About"_s, QString()},
              {Kind::Alert, QAccessible::AlertMessage, u"Unavailable"_s, u"Not now."_s}}) {
            auto* interface = QAccessible::queryAccessibleInterface(m->present(kind));
            QCOMPARE(interface->role(), role);
            QCOMPARE(interface->text(QAccessible::Name), name);
            QCOMPARE(interface->text(QAccessible::Description), detail);
            QVERIFY(interface->state().modal);
        }
    }

    void aWindowMayGoWhilePanelsAreShown() {
        m->present(Kind::Sheet);
        m->present(Kind::Alert);
        delete m->host;
        QCOMPARE(m->dismissals, 0);
    }

    void animationsEndWithTheSameStateAsNone() {
        m->theme.motion().setEnabled(true);
        auto* sheet = m->present(Kind::Sheet);
        QVERIFY(sheet->graphicsEffect());
        QVERIFY(sheet->isAncestorOf(focus())); // at once, not when the animation is over
        QTRY_VERIFY(!sheet->graphicsEffect());
        QCOMPARE(bodyInHost(sheet).center(), m->host->rect().center());
        sheet->dismiss();
        QVERIFY(m->field->hasFocus());
        QVERIFY(m->host->testAttribute(Qt::WA_TransparentForMouseEvents));
        QTRY_VERIFY(!m->host->isVisible());
    }

    void closingWhileOpeningLeavesNothingBehind() {
        m->theme.motion().setEnabled(true);
        m->present(Kind::Sheet)->dismiss();
        m->present(Kind::Alert)->dismiss();
        QTRY_VERIFY(!m->host->isVisible());
        QTRY_VERIFY(m->host->findChildren<Panel*>().isEmpty());
    }
};

TELLWICK_TEST(OverlayHostTests, Widgets)
#include "OverlayHostTests.moc"

// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Overlays/Alert.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Platform/Widgets/Overlays/Popover.h"
#include "Platform/Widgets/Overlays/Sheet.h"
#include "Platform/Widgets/Scrolling/ScrollView.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QLineEdit>
#include <QShortcut>
#include <QSignalSpy>
#include <QVBoxLayout>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using platform::Alert;
using platform::Button;
using platform::OverlaySurface;
using platform::Popover;
using platform::Sheet;

namespace {

/// A window with a field and a button, and content for overlays.
struct Window {
    explicit Window(QSize size = {640, 800}) {
        auto* column = new QVBoxLayout(&widget);
        column->addWidget(anchor, 0, Qt::AlignRight);
        column->addStretch();
        column->addWidget(field);
        widget.resize(size);
        widget.show();
        field->setFocus();
    }

    /// Two buttons above a block of the given height.
    QWidget* content(int height = 100) {
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        first = new Button(theme, Button::Look::Default, u"First"_s);
        second = new Button(theme, Button::Look::Default, u"Second"_s);
        column->addWidget(first);
        auto* block = new QWidget;
        block->setFixedHeight(height);
        column->addWidget(block);
        column->addWidget(second);
        return content;
    }

    Sheet* presentSheet(int height = 100) {
        return host->present(
            std::make_unique<Sheet>(theme, u"About"_s, content(height), 400),
            [this] { ++dismissals; });
    }
    Popover* presentPopover(int height = 100) {
        return host->present(
            std::make_unique<Popover>(theme, u"Models"_s, content(height), 360, anchor),
            [this] { ++dismissals; });
    }
    Alert* presentAlert() {
        return host->present(
            std::make_unique<Alert>(theme, u"Unavailable"_s, u"Not now."_s, u"OK"_s),
            [this] { ++dismissals; });
    }

    platform::Theme theme;
    QWidget widget;
    QLineEdit* field = new QLineEdit;
    platform::Button* anchor =
        new platform::Button(theme, platform::Button::Look::Icon, u"More"_s, u"ellipsis.circle"_s);
    platform::OverlayHost* host = new platform::OverlayHost(theme, &widget);
    QPointer<Button> first;
    QPointer<Button> second;
    int dismissals = 0;
};

QRect bodyInHost(const OverlaySurface* surface) {
    return surface->bodyRect().translated(surface->pos());
}

} // namespace

class OverlayHostTests final : public QObject {
    Q_OBJECT

    std::optional<Window> m;

    static QWidget* focus() { return QApplication::focusWidget(); }

private Q_SLOTS:
    void init() {
        m.emplace();
        QVERIFY(QTest::qWaitForWindowActive(&m->widget));
        QVERIFY(m->field->hasFocus());
    }
    void cleanup() { m.reset(); }

    void nothingIsShownAtFirst() {
        QVERIFY(!m->host->isPresenting());
        QVERIFY(!m->host->isVisible());
    }

    void focusGoesInAndComesBack_data() {
        QTest::addColumn<int>("kind");
        QTest::newRow("popover") << 0;
        QTest::newRow("sheet") << 1;
        QTest::newRow("alert") << 2;
    }
    void focusGoesInAndComesBack() {
        QFETCH(int, kind);
        auto* surface = kind == 0   ? static_cast<OverlaySurface*>(m->presentPopover())
                        : kind == 1 ? m->presentSheet()
                                    : static_cast<OverlaySurface*>(m->presentAlert());
        QVERIFY(m->host->isPresenting());
        QVERIFY(m->host->isVisible());
        QVERIFY(surface->isAncestorOf(focus()));
        QTest::keyClick(focus(), Qt::Key_Escape);
        QVERIFY(!m->host->isPresenting());
        QVERIFY(!m->host->isVisible());
        QVERIFY(m->field->hasFocus());
        QCOMPARE(m->dismissals, 1);
    }

    void tabStaysInside() {
        auto* sheet = m->presentSheet();
        QStringList visited;
        for (int i = 0; i < 6; ++i) {
            visited << QAccessible::queryAccessibleInterface(focus())->text(QAccessible::Name);
            QTest::keyClick(focus(), Qt::Key_Tab);
            QVERIFY(sheet->isAncestorOf(focus()));
        }
        QCOMPARE(visited, QStringList({u"Close"_s, u"First"_s, u"Second"_s, u"Close"_s, u"First"_s,
                                       u"Second"_s}));
        QTest::keyClick(focus(), Qt::Key_Backtab);
        QCOMPARE(focus(), m->second.data());
    }

    void tabSkipsWhatIsDisabledOrHidden() {
        m->presentPopover();
        m->first->setEnabled(false);
        m->second->setFocus();
        QTest::keyClick(focus(), Qt::Key_Tab);
        QCOMPARE(focus(), m->second.data());
        m->first->setEnabled(true);
        QTest::keyClick(focus(), Qt::Key_Tab);
        QCOMPARE(focus(), m->first.data());
    }

    void aSurfaceWithNothingToFocusHasTheFocusItself() {
        auto* sheet = m->host->present(
            std::make_unique<Popover>(m->theme, u"Empty"_s, new QWidget, 200, nullptr));
        QCOMPARE(focus(), sheet);
        QTest::keyClick(sheet, Qt::Key_Tab);
        QCOMPARE(focus(), sheet);
        QTest::keyClick(sheet, Qt::Key_Escape);
        QVERIFY(m->field->hasFocus());
    }

    void aClickBesideClosesPopoverAndSheetButNotTheAlert() {
        m->presentPopover();
        QTest::mouseClick(m->host, Qt::LeftButton, {}, QPoint(20, 780));
        QVERIFY(!m->host->isPresenting());
        m->presentSheet();
        QTest::mouseClick(m->host, Qt::LeftButton, {}, QPoint(20, 780));
        QVERIFY(!m->host->isPresenting());
        QCOMPARE(m->dismissals, 2);
        m->presentAlert();
        QTest::mouseClick(m->host, Qt::LeftButton, {}, QPoint(20, 780));
        QVERIFY(m->host->isPresenting());
    }

    void aClickInTheShadowIsBesideAndOneOnTheBodyIsNot() {
        auto* sheet = m->presentSheet();
        QTest::mouseClick(sheet, Qt::LeftButton, {}, sheet->bodyRect().topLeft() + QPoint(40, 6));
        QVERIFY(m->host->isPresenting());
        QTest::mouseClick(sheet, Qt::LeftButton, {}, QPoint(3, 3));
        QVERIFY(!m->host->isPresenting());
    }

    void theWindowBeneathHearsNeitherPointerNorKeys() {
        int presses = 0;
        m->anchor->setAction([&] { ++presses; });
        m->presentSheet();
        const auto at = m->anchor->mapTo(&m->widget, m->anchor->rect().center());
        QCOMPARE(m->widget.childAt(at), m->host);
        QTest::keyClicks(focus(), u"abc"_s);
        QVERIFY(m->field->text().isEmpty());
        QCOMPARE(presses, 0);
    }

    void anAlertClosesByItsButtonReturnOrEscape_data() {
        QTest::addColumn<int>("key");
        QTest::newRow("return") << int{Qt::Key_Return};
        QTest::newRow("enter") << int{Qt::Key_Enter};
        QTest::newRow("escape") << int{Qt::Key_Escape};
        QTest::newRow("space") << int{Qt::Key_Space};
        QTest::newRow("click") << 0;
    }
    void anAlertClosesByItsButtonReturnOrEscape() {
        QFETCH(int, key);
        auto* alert = m->presentAlert();
        auto* button = alert->findChild<Button*>();
        QVERIFY(button->hasFocus());
        if (key != 0)
            QTest::keyClick(focus(), static_cast<Qt::Key>(key));
        else
            QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(!m->host->isPresenting());
        QCOMPARE(m->dismissals, 1);
        QVERIFY(m->field->hasFocus());
    }

    void escapeOfTheSurfaceGoesBeforeAShortcutOfTheWindow() {
        QShortcut shortcut(Qt::Key_Escape, &m->widget);
        int activations = 0;
        connect(&shortcut, &QShortcut::activated, this, [&] { ++activations; });
        m->presentSheet();
        QTest::keyClick(m->widget.windowHandle(), Qt::Key_Escape);
        QVERIFY(!m->host->isPresenting());
        QCOMPARE(activations, 0);
        QTest::keyClick(m->widget.windowHandle(), Qt::Key_Escape);
        QCOMPARE(activations, 1);
    }

    void surfacesCloseFromTheTop() {
        auto* sheet = m->presentSheet();
        m->presentAlert();
        QTest::keyClick(focus(), Qt::Key_Escape);
        QCOMPARE(m->host->top(), sheet);
        QVERIFY(sheet->isAncestorOf(focus()));
        m->presentAlert();
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
        auto* alert = m->host->present(
            std::make_unique<Alert>(m->theme, u"Unavailable"_s, u"Not now."_s, u"OK"_s),
            [&] { other->setFocus(); });
        alert->dismiss();
        QCOMPARE(focus(), other);
    }

    void aDismissalMayPresentTheNext() {
        auto* alert = m->host->present(
            std::make_unique<Alert>(m->theme, u"Unavailable"_s, u"Not now."_s, u"OK"_s),
            [&] { m->presentSheet(); });
        alert->dismiss();
        QVERIFY(m->host->isPresenting());
        QCOMPARE(m->host->top()->title(), u"About"_s);
        QVERIFY(m->host->isVisible());
        QTest::keyClick(focus(), Qt::Key_Escape);
        QVERIFY(m->field->hasFocus());
    }

    void surfacesFitASmallWindowAndScroll_data() {
        QTest::addColumn<int>("pixels");
        QTest::newRow("usual font") << 13;
        QTest::newRow("font of twice the size") << 26;
    }
    void surfacesFitASmallWindowAndScroll() {
        QFETCH(int, pixels);
        QFont font;
        font.setPixelSize(pixels);
        m->theme.setBodyFont(font);
        m->widget.resize(360, 480);
        QTRY_COMPARE(m->host->size(), QSize(360, 480));
        for (const auto kind : {0, 1, 2}) {
            auto* surface = kind == 0   ? static_cast<OverlaySurface*>(m->presentPopover(2000))
                            : kind == 1 ? m->presentSheet(2000)
                                        : static_cast<OverlaySurface*>(m->presentAlert());
            QVERIFY(m->host->rect().contains(bodyInHost(surface)));
            if (kind < 2) {
                auto* scroll = surface->findChild<platform::ScrollView*>();
                QVERIFY(scroll->maximum() > 1000);
                m->second->setFocus(Qt::TabFocusReason);
                const auto top = m->second->mapTo(scroll, QPoint(0, 0)).y();
                QVERIFY(top >= 0 && top + m->second->height() <= scroll->height());
            }
            surface->dismiss();
        }
    }

    void theScrollingKeysWorkFromAnywhereInASheet() {
        auto* sheet = m->presentSheet(3000);
        auto* scroll = sheet->findChild<platform::ScrollView*>();
        QTest::keyClick(focus(), Qt::Key_PageDown);
        const auto page = scroll->offset();
        QVERIFY(page > 300);
        QTest::keyClick(focus(), Qt::Key_Down);
        QVERIFY(scroll->offset() > page);
        QTest::keyClick(focus(), Qt::Key_End);
        QCOMPARE(scroll->offset(), scroll->maximum());
        QTest::keyClick(focus(), Qt::Key_Home);
        QCOMPARE(scroll->offset(), 0);
    }

    void surfacesFollowTheSizeOfTheWindow() {
        auto* sheet = m->presentSheet();
        m->widget.resize(900, 500);
        QTRY_COMPARE(bodyInHost(sheet).center(), m->host->rect().center());
        m->widget.resize(380, 300);
        QTRY_VERIFY(m->host->rect().contains(bodyInHost(sheet)));
    }

    void aPopoverStandsBelowItsAnchorWithinTheWindow() {
        auto* popover = m->presentPopover();
        const QRect anchor(m->anchor->mapTo(&m->widget, QPoint(0, 0)), m->anchor->size());
        const auto body = bodyInHost(popover);
        QVERIFY(body.top() > anchor.bottom());
        QVERIFY(body.top() - anchor.bottom() < 15);
        QVERIFY(body.left() < anchor.center().x() && anchor.center().x() < body.right());
        QVERIFY(m->host->rect().contains(body));
        QCOMPARE(body.width(), 360);
    }

    void aPopoverGrowsWithItsContent() {
        auto* popover = m->presentPopover();
        const auto before = bodyInHost(popover).height();
        m->first->parentWidget()->layout()->addWidget(
            new Button(m->theme, Button::Look::Default, u"Third"_s));
        QTRY_VERIFY(bodyInHost(popover).height() > before + 10);
        QCOMPARE(popover->findChild<platform::ScrollView*>()->maximum(), 0);
    }

    void theGroundIsDimmedUnderASheetAndNotUnderAPopover() {
        const auto pixel = [this] { return m->widget.grab().toImage().pixelColor(5, 400); };
        const auto plain = pixel();
        m->presentPopover();
        QCOMPARE(pixel(), plain);
        m->host->top()->dismiss();
        m->presentSheet();
        QVERIFY(pixel().lightness() < plain.lightness() - 20);
        m->host->top()->dismiss();
        QCOMPARE(pixel(), plain);
    }

    void assistiveTechnologyHearsWhatOpens() {
        const auto describe = [](QObject* surface) {
            auto* interface = QAccessible::queryAccessibleInterface(surface);
            return std::pair(interface->role(), interface->text(QAccessible::Name));
        };
        QCOMPARE(describe(m->presentSheet()), std::pair(QAccessible::Dialog, u"About"_s));
        QCOMPARE(describe(m->presentPopover()), std::pair(QAccessible::Dialog, u"Models"_s));
        auto* alert = m->presentAlert();
        QCOMPARE(describe(alert), std::pair(QAccessible::AlertMessage, u"Unavailable"_s));
        QCOMPARE(QAccessible::queryAccessibleInterface(alert)->text(QAccessible::Description),
                 u"Not now."_s);
    }

    void aWindowMayGoWhileSurfacesAreShown() {
        m->presentSheet();
        m->presentAlert();
        const auto* dismissals = &m->dismissals;
        delete m->host;
        m->host = nullptr;
        QCOMPARE(*dismissals, 0);
        m.reset();
    }

    void animationsEndWithTheSameStateAsNone() {
        m->theme.motion().setEnabled(true);
        auto* sheet = m->presentSheet();
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
        m->presentSheet()->dismiss();
        m->presentAlert();
        m->host->top()->dismiss();
        QTRY_VERIFY(!m->host->isVisible());
        QVERIFY(m->host->children().isEmpty() ||
                m->host->findChildren<OverlaySurface*>().isEmpty());
    }
};

TELLWICK_TEST(OverlayHostTests, Widgets)
#include "OverlayHostTests.moc"

// SPDX-License-Identifier: MIT
// A window that draws its own title bar, while something lies over its content.
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/HeaderBar.h"
#include "Platform/Widgets/Look/Contrast.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Platform/Widgets/Overlays/Panel.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>
#include <QVBoxLayout>
#include <QWindow>

#include <optional>

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;
using platform::HeaderBar;
using platform::Panel;
using Kind = platform::Panel::Kind;

namespace {

/// A header that counts how often it has had the window moved.
class CountingHeader final : public HeaderBar {
public:
    using HeaderBar::HeaderBar;
    int moves = 0;

protected:
    void moveWindow() override { ++moves; }
};

/// A window with a title bar, which has one item, and a field.
struct Window {
    Window() {
        item->setAction([this] { ++presses; });
        header->addTrailing(item);
        header->setWindowButtons(
            platform::WindowButtonLayout::parsed(u":minimize,maximize,close"_s));
        auto* column = new QVBoxLayout(&widget);
        column->setContentsMargins({});
        column->addWidget(header);
        column->addStretch();
        column->addWidget(field);
        widget.resize(640, 800);
        widget.show();
        field->setFocus();
    }

    QWidget* content(int height) {
        auto* content = new QWidget;
        auto* column = new QVBoxLayout(content);
        column->addWidget(new Button(theme, Button::Look::Default, u"First"_s));
        column->addSpacing(height);
        return content;
    }

    Panel* present(Kind kind, int height = 100) {
        if (kind == Kind::Popover)
            return host->present(Panel::popover(theme, u"Models"_s, content(height), 360, item));
        if (kind == Kind::Sheet)
            return host->present(Panel::sheet(theme, u"About"_s, content(height), 400));
        return host->present(Panel::alert(theme, u"Unavailable"_s, u"Not now."_s, u"OK"_s));
    }

    platform::Theme theme;
    QWidget widget;
    CountingHeader* header = new CountingHeader(theme, u"Tellwick"_s);
    Button* item = new Button(theme, Button::Look::Icon, u"More"_s, u"ellipsis.circle"_s);
    QLineEdit* field = new QLineEdit;
    platform::OverlayHost* host = new platform::OverlayHost(theme, &widget);
    int presses = 0;
};

} // namespace

class TitleBarUnderPanelsTests final : public QObject {
    Q_OBJECT

    static constexpr QPoint m_free{200, 20}; // of the title bar

    std::optional<Window> m;

    QWindow* window() const { return m->widget.windowHandle(); }
    QPoint middleOf(const QWidget* widget) const {
        return widget->mapTo(&m->widget, widget->rect().center());
    }
    Button* button(const QString& name) const {
        for (auto* button : m->header->findChildren<Button*>())
            if (button->text() == name)
                return button;
        return nullptr;
    }
    void click(QPoint at) const { QTest::mouseClick(window(), Qt::LeftButton, {}, at); }
    void drag(QPoint from) const {
        const QPoint to = from + QPoint(0, QApplication::startDragDistance());
        QTest::mousePress(window(), Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, m->widget.mapToGlobal(to), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window(), &move);
        QTest::mouseRelease(window(), Qt::LeftButton, {}, to);
    }

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
    }
    void cleanup() { m.reset(); }

    void aDragMovesTheWindow_data() { addKinds(); }
    void aDragMovesTheWindow() {
        QFETCH(Kind, kind);
        m->present(kind);
        drag(m_free);
        QCOMPARE(m->header->moves, 1);
        QCOMPARE(m->host->isPresenting(), kind != Kind::Popover); // what dims the window stays
    }

    void aDoubleClickMaximisesTheWindow_data() { addKinds(); }
    void aDoubleClickMaximisesTheWindow() {
        QFETCH(Kind, kind);
        m->present(kind);
        click(m_free);
        QTest::mouseDClick(window(), Qt::LeftButton, {}, m_free);
        QTRY_VERIFY(m->widget.isMaximized());
        QCOMPARE(m->host->isPresenting(), kind != Kind::Popover);
    }

    void theButtonsOfTheWindowWork_data() { addKinds(); }
    void theButtonsOfTheWindowWork() {
        QFETCH(Kind, kind);
        m->present(kind);
        click(middleOf(button(u"Maximise"_s)));
        QTRY_VERIFY(m->widget.isMaximized());
        m->present(kind);
        QTRY_VERIFY(middleOf(button(u"Restore"_s)).x() > 640);
        click(middleOf(button(u"Restore"_s)));
        QTRY_VERIFY(!m->widget.isMaximized());
        QTRY_COMPARE(m->widget.width(), 640);
        m->present(kind);
        click(middleOf(button(u"Close"_s)));
        QVERIFY(!m->widget.isVisible());
    }

    void aButtonOfTheWindowShowsThePointer() {
        m->present(Kind::Sheet);
        auto* close = button(u"Close"_s);
        QTest::mouseMove(window(), {320, 700});
        QTest::mouseMove(window(), middleOf(close));
        QVERIFY(close->underMouse());
        QTest::mouseMove(window(), {320, 700});
        QVERIFY(!close->underMouse());
    }

    void theFocusStaysInThePanel() {
        const QPointer<Panel> sheet = m->present(Kind::Sheet);
        drag(m_free);
        QVERIFY(sheet && sheet->isAncestorOf(QApplication::focusWidget()));
    }

    void theItemsOfTheTitleBarAreCovered_data() { addKinds(); }
    void theItemsOfTheTitleBarAreCovered() {
        QFETCH(Kind, kind);
        m->present(kind);
        click(middleOf(m->item));
        QCOMPARE(m->presses, 0);
        QCOMPARE(m->host->isPresenting(), kind == Kind::Alert); // it is a click beside
    }

    void whatIsDimmedIsNotMadeQuieterStill_data() { addKinds(); }
    void whatIsDimmedIsNotMadeQuieterStill() {
        QFETCH(Kind, kind);
        QWidget other;
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        const auto* close = button(u"Close"_s);
        QTRY_COMPARE(close->colorRole(), ColorRole::TertiaryLabel);
        auto* panel = m->present(kind);
        QCOMPARE(close->colorRole(),
                 kind == Kind::Popover ? ColorRole::TertiaryLabel : ColorRole::Label);
        panel->dismiss();
        QCOMPARE(close->colorRole(), ColorRole::TertiaryLabel);
    }

    void aButtonOfTheWindowIsSeenWhileItIsDimmed_data() {
        QTest::addColumn<bool>("isDark");
        QTest::addColumn<bool>("hasContrast");
        QTest::newRow("light") << false << false;
        QTest::newRow("dark") << true << false;
        QTest::newRow("light, more contrast") << false << true;
        QTest::newRow("dark, more contrast") << true << true;
    }
    void aButtonOfTheWindowIsSeenWhileItIsDimmed() {
        QFETCH(bool, isDark);
        QFETCH(bool, hasContrast);
        m->theme.setDark(isDark);
        m->theme.setIncreasedContrast(hasContrast);
        const auto color = [this](ColorRole role) { return m->theme.color(role); };
        const auto dimmed = [&color](const QColor& beneath) {
            return platform::composed(color(ColorRole::Scrim), beneath);
        };
        QColor disc = color(ColorRole::Header);
        for (int i = 0; i < 2; ++i) // the button's own, and the pointer's
            disc = platform::composed(color(ColorRole::Hover), disc);
        QVERIFY(platform::contrastRatio(dimmed(color(ColorRole::Label)), dimmed(disc)) >= 3);
    }

    void aPanelOverTheTitleBarGoesFirst() {
        m->widget.resize(640, 480);
        QTRY_COMPARE(m->host->height(), 480);
        auto* sheet = m->present(Kind::Sheet, 2000);
        const QPoint onBoth(320, m->header->height() - 4);
        QVERIFY(sheet->bodyRect().translated(sheet->pos()).contains(onBoth));
        drag(onBoth);
        QCOMPARE(m->header->moves, 0);
        QVERIFY(m->host->isPresenting());
    }

    void aPressClosesAMenuAndNotTheSheetBelowIt() {
        const QPointer<Panel> sheet = m->present(Kind::Sheet);
        m->present(Kind::Popover);
        drag(m_free);
        QVERIFY(sheet && m->host->top() == sheet);
        QCOMPARE(m->header->moves, 1);
    }

    void theContentIsCoveredOnceThePointerHasGone() {
        m->present(Kind::Sheet);
        const auto beneath = [this] { return m->widget.childAt(middleOf(m->field)); };
        QTest::mouseMove(window(), m_free);
        QTest::mouseMove(window(), {320, 700});
        QCOMPARE(beneath(), m->host);
        QTest::mouseMove(window(), m_free);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(window(), &leave);
        QCOMPARE(beneath(), m->host);
    }

    void aHeaderThatIsNoTitleBarIsCovered_data() { addKinds(); }
    void aHeaderThatIsNoTitleBarIsCovered() {
        QFETCH(Kind, kind);
        m->header->setWindowButtons(std::nullopt);
        m->present(kind);
        drag(m_free);
        QCOMPARE(m->header->moves, 0);
        QCOMPARE(m->host->isPresenting(), kind == Kind::Alert);
    }
};

TELLWICK_TEST(TitleBarUnderPanelsTests, Widgets)
#include "TitleBarUnderPanelsTests.moc"

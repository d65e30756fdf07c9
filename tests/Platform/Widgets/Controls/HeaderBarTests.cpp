// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/HeaderBar.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Look/Contrast.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QHBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;
using platform::Button;
using platform::HeaderBar;
using platform::WindowButton;
using platform::WindowButtonLayout;
using enum platform::ColorRole;
using Kinds = QList<WindowButton>;

namespace {

/// A header that counts how often it has had the window moved.
class CountingHeader final : public HeaderBar {
public:
    using HeaderBar::HeaderBar;
    int moves = 0;

protected:
    void moveWindow() override { ++moves; }
};

} // namespace

class HeaderBarTests final : public QObject {
    Q_OBJECT

    platform::Theme m_theme;
    std::unique_ptr<QWidget> m_window;
    CountingHeader* m_header = nullptr;

    /// The names of the buttons from left to right.
    QStringList names() const {
        QList<Button*> shown;
        for (auto* button : m_header->findChildren<Button*>())
            if (button->isVisible())
                shown.append(button);
        const auto x = [this](const Button* button) {
            return button->mapTo(m_header, QPoint()).x();
        };
        std::sort(shown.begin(), shown.end(),
                  [&x](const Button* a, const Button* b) { return x(a) < x(b); });
        QStringList names;
        for (const auto* button : shown)
            names.append(button->text());
        return names;
    }

    Button* button(const QString& name) const {
        for (auto* button : m_header->findChildren<Button*>())
            if (button->text() == name)
                return button;
        return nullptr;
    }

    /// In which colours title and subtitle are.
    QList<platform::ColorRole> textRoles() const {
        QList<platform::ColorRole> roles;
        for (const auto* label : m_header->findChildren<platform::Label*>())
            roles.append(label->colorRole());
        return roles;
    }

    void setButtons(const QString& setting) {
        m_header->setWindowButtons(WindowButtonLayout::parsed(setting));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    }

    void send(QEvent::Type type, QPoint at, Qt::MouseButton button = Qt::LeftButton) const {
        QMouseEvent event(type, at, m_header->mapToGlobal(at), button, button, Qt::NoModifier);
        QCoreApplication::sendEvent(m_header, &event);
    }

private Q_SLOTS:
    void init() {
        m_window = std::make_unique<QWidget>();
        m_header = new CountingHeader(m_theme, u"Tellwick"_s);
        m_header->setSubtitle(u"On-device"_s);
        m_header->addTrailing(new Button(m_theme, Button::Look::Icon, u"More"_s, u"cpu"_s));
        auto* column = new QHBoxLayout(m_window.get());
        column->setContentsMargins({});
        column->addWidget(m_header, 0, Qt::AlignTop);
        m_window->resize(600, 400);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    void cleanup() { m_window.reset(); }

    void theDesktopsSettingSaysWhichButtonsStandWhere_data() {
        using enum WindowButton;
        QTest::addColumn<QString>("setting");
        QTest::addColumn<Kinds>("left");
        QTest::addColumn<Kinds>("right");
        const auto row = [](const char* setting, const Kinds& left, const Kinds& right) {
            QTest::newRow(*setting ? setting : "nothing")
                << QString::fromLatin1(setting) << left << right;
        };
        row(":close", {}, {Close});
        row("appmenu:close", {}, {Close});
        row("appmenu:minimize,maximize,close", {}, {Minimize, Maximize, Close});
        row("close,minimize,maximize:", {Close, Minimize, Maximize}, {});
        row("close:maximize", {Close}, {Maximize});
        row("close,minimize", {Close, Minimize}, {});
        row(" close , icon : spacer ,maximize ", {Close}, {Maximize});
        row("close:close,minimize,minimize", {Close}, {Minimize});
        row("close:minimize:maximize", {Close}, {Minimize, Maximize});
        row(",:,", {}, {});
        row(":", {}, {});
        row("", {}, {});
    }
    void theDesktopsSettingSaysWhichButtonsStandWhere() {
        QFETCH(QString, setting);
        QFETCH(Kinds, left);
        QFETCH(Kinds, right);
        const auto layout = WindowButtonLayout::parsed(setting);
        QCOMPARE(layout.left, left);
        QCOMPARE(layout.right, right);
    }

    void theHeaderHasNoButtonsOfTheWindowWhereTheDesktopDrawsThem() {
        QCOMPARE(names(), QStringList{u"More"_s});
        send(QEvent::MouseButtonDblClick, {200, 20});
        QVERIFY(!m_window->isMaximized());
    }

    void aTitleBarHasTheButtonsOnTheSidesOfTheSetting() {
        setButtons(u"appmenu:minimize,maximize,close"_s);
        QCOMPARE(names(), (QStringList{u"More"_s, u"Minimise"_s, u"Maximise"_s, u"Close"_s}));
        setButtons(u"close,maximize:minimize"_s);
        QCOMPARE(names(), (QStringList{u"Close"_s, u"Maximise"_s, u"More"_s, u"Minimise"_s}));
        setButtons(u":"_s);
        QCOMPARE(names(), QStringList{u"More"_s});
        m_header->setWindowButtons(std::nullopt);
        QCOMPARE(names(), QStringList{u"More"_s});
    }

    void theButtonsDoNotChangeTheHeightOfTheHeader() {
        const int height = m_header->height();
        setButtons(u"close:minimize,maximize"_s);
        QCOMPARE(m_header->height(), height);
    }

    void theKeyboardPassesTheButtonsBy() {
        setButtons(u":minimize,maximize,close"_s);
        for (const auto& name : {u"Minimise"_s, u"Maximise"_s, u"Close"_s})
            QCOMPARE(button(name)->focusPolicy(), Qt::NoFocus);
    }

    void closeClosesTheWindow() {
        setButtons(u":close"_s);
        button(u"Close"_s)->click();
        QVERIFY(!m_window->isVisible());
    }

    void minimiseMinimisesTheWindow() {
        setButtons(u":minimize"_s);
        button(u"Minimise"_s)->click();
        QVERIFY(m_window->isMinimized());
    }

    void maximiseMaximisesTheWindowAndGivesItBack() {
        setButtons(u":maximize"_s);
        const QSize size = m_window->size();
        auto* maximize = button(u"Maximise"_s);
        const QString icon = maximize->icon();
        maximize->click();
        QTRY_VERIFY(m_window->isMaximized());
        QTRY_COMPARE(maximize->text(), u"Restore"_s);
        QVERIFY(maximize->icon() != icon);
        maximize->click();
        QTRY_COMPARE(m_window->size(), size);
        QVERIFY(!m_window->isMaximized());
        QTRY_COMPARE(maximize->text(), u"Maximise"_s);
        QCOMPARE(maximize->icon(), icon);
    }

    void aDoubleClickOnATitleBarMaximisesTheWindowAndGivesItBack() {
        setButtons(u":"_s);
        send(QEvent::MouseButtonDblClick, {200, 20}, Qt::RightButton);
        QVERIFY(!m_window->isMaximized());
        send(QEvent::MouseButtonDblClick, {200, 20});
        QTRY_VERIFY(m_window->isMaximized());
        send(QEvent::MouseButtonDblClick, {200, 20});
        QTRY_VERIFY(!m_window->isMaximized());
        QCOMPARE(m_header->moves, 0);
    }

    void aPressOnTheHeaderMovesTheWindow() {
        send(QEvent::MouseButtonPress, {200, 20}, Qt::RightButton);
        QCOMPARE(m_header->moves, 0);
        send(QEvent::MouseButtonPress, {200, 20});
        QCOMPARE(m_header->moves, 1);
    }

    void aTitleBarMovesTheWindowOnceThePointerHasGoneAWay() {
        setButtons(u":close"_s);
        const int way = QApplication::startDragDistance();
        send(QEvent::MouseButtonPress, {200, 20});
        send(QEvent::MouseMove, {200 + way - 1, 20});
        QCOMPARE(m_header->moves, 0);
        send(QEvent::MouseMove, {200 + way, 20});
        QCOMPARE(m_header->moves, 1);
        send(QEvent::MouseMove, {200 + 2 * way, 20});
        QCOMPARE(m_header->moves, 1);
        send(QEvent::MouseButtonPress, {200, 20});
        send(QEvent::MouseButtonRelease, {200, 20});
        send(QEvent::MouseMove, {300, 20});
        QCOMPARE(m_header->moves, 1);
        send(QEvent::MouseButtonPress, {200, 20}, Qt::RightButton);
        send(QEvent::MouseMove, {300, 20}, Qt::RightButton);
        QCOMPARE(m_header->moves, 1);
    }

    void aTitleBarIsQuieterWhileTheKeyboardIsElsewhere() {
        setButtons(u":close"_s);
        const auto roles = [this] {
            auto found = textRoles();
            return found << button(u"Close"_s)->colorRole() << button(u"More"_s)->colorRole();
        };
        const QList loud{Label, SecondaryLabel, Label, SecondaryLabel};
        QCOMPARE(roles(), loud);
        {
            QWidget other;
            other.show();
            QVERIFY(QTest::qWaitForWindowActive(&other));
            const QList quiet{TertiaryLabel, TertiaryLabel, TertiaryLabel, SecondaryLabel};
            QTRY_COMPARE(roles(), quiet);
            m_header->setWindowButtons(std::nullopt); // the desktop draws it: as ever
            QCOMPARE(textRoles(), (QList{Label, SecondaryLabel}));
            setButtons(u":close"_s);
            QCOMPARE(roles(), quiet);
        }
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QTRY_COMPARE(roles(), loud);
    }

    void aHeaderThatIsNoTitleBarLooksTheSameWhereverTheKeyboardIs() {
        QWidget other;
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QTRY_VERIFY(!m_window->isActiveWindow());
        QCOMPARE(textRoles(), (QList{Label, SecondaryLabel}));
    }

    void aTitleBarCanBeReadWhileItIsQuiet_data() {
        QTest::addColumn<bool>("isDark");
        QTest::addColumn<bool>("hasContrast");
        QTest::addColumn<double>("ratio");
        QTest::newRow("light") << false << false << 4.5;
        QTest::newRow("dark") << true << false << 4.5;
        QTest::newRow("light, more contrast") << false << true << 7.0;
        QTest::newRow("dark, more contrast") << true << true << 7.0;
    }
    void aTitleBarCanBeReadWhileItIsQuiet() {
        QFETCH(bool, isDark);
        QFETCH(bool, hasContrast);
        QFETCH(double, ratio);
        platform::Theme theme;
        theme.setDark(isDark);
        theme.setIncreasedContrast(hasContrast);
        const QColor quiet = theme.color(TertiaryLabel);
        const QColor header = theme.color(Header);
        QVERIFY(platform::contrastRatio(quiet, header) >= ratio);
        // A symbol, on its disc with the pointer over it.
        const QColor hover = theme.color(Hover);
        const QColor disc = platform::composed(hover, platform::composed(hover, header));
        QVERIFY(platform::contrastRatio(quiet, disc) >= 3);
    }
};

TELLWICK_TEST(HeaderBarTests, Widgets)
#include "HeaderBarTests.moc"

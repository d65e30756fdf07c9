// SPDX-License-Identifier: MIT
// The ring is one rule for all that the keyboard reaches.
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/GrowingTextField.h"
#include "Platform/Widgets/Controls/LineField.h"
#include "Platform/Widgets/Controls/ListRow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using platform::Button;
using platform::ColorRole;

class FocusRingTests final : public QObject {
    Q_OBJECT

    platform::Theme m_theme;

    std::unique_ptr<QWidget> make(const QString& widget) const {
        if (widget == u"field"_s)
            return std::make_unique<platform::GrowingTextField>(m_theme);
        if (widget == u"line"_s)
            return std::make_unique<platform::LineField>(m_theme, u"Find"_s);
        if (widget == u"row"_s)
            return std::make_unique<platform::ListRow>(m_theme);
        const auto look = widget == u"icon"_s   ? Button::Look::Icon
                          : widget == u"link"_s ? Button::Look::Link
                          : widget == u"chip"_s ? Button::Look::Chip
                                                : Button::Look::Default;
        return std::make_unique<Button>(m_theme, look, u"OK"_s,
                                        look == Button::Look::Icon ? u"cpu"_s : QString());
    }

private Q_SLOTS:
    void itShowsWhenTheKeyboardCameHere_data() {
        QTest::addColumn<QString>("widget");
        QTest::addColumn<QList<Qt::FocusReason>>("reasons"); // one after the other
        QTest::addColumn<bool>("isShown");
        for (const auto& widget :
             {u"field"_s, u"line"_s, u"row"_s, u"icon"_s, u"link"_s, u"chip"_s, u"default"_s}) {
            const auto row = [&](const char* name, QList<Qt::FocusReason> reasons, bool isShown) {
                QTest::addRow("%s: %s", qPrintable(widget), name) << widget << reasons << isShown;
            };
            row("tab", {Qt::TabFocusReason}, true);
            row("backtab", {Qt::BacktabFocusReason}, true);
            row("shortcut", {Qt::ShortcutFocusReason}, true);
            row("pointer", {Qt::MouseFocusReason}, false);
            row("program", {Qt::OtherFocusReason}, false);
            row("pointer after tab", {Qt::TabFocusReason, Qt::MouseFocusReason}, false);
            row("window after tab", {Qt::TabFocusReason, Qt::ActiveWindowFocusReason}, true);
            row("window after pointer", {Qt::MouseFocusReason, Qt::ActiveWindowFocusReason}, false);
        }
    }
    void itShowsWhenTheKeyboardCameHere() {
        QFETCH(QString, widget);
        QFETCH(QList<Qt::FocusReason>, reasons);
        QFETCH(bool, isShown);
        const auto tried = make(widget);
        tried->show();
        QVERIFY(QTest::qWaitForWindowActive(tried.get()));
        tried->setFocus(Qt::OtherFocusReason);
        for (const auto reason : reasons) {
            QFocusEvent event(QEvent::FocusIn, reason);
            QCoreApplication::sendEvent(tried.get(), &event);
        }
        // On the accent the ring is white.
        const auto color =
            m_theme.color(widget == u"default"_s ? ColorRole::OnAccent : ColorRole::FocusRing);
        const auto paintsRing = [&] {
            return std::ranges::any_of(tests::PaintRecorder(*tried).all(), [&](const auto& part) {
                return part.text.isEmpty() && part.color == color;
            });
        };
        QCOMPARE(paintsRing(), isShown);
        if (widget == u"field"_s) { // where the cursor tells, once something is written
            QTest::keyClick(tried.get(), Qt::Key_A);
            QVERIFY(!paintsRing());
        }
        tried->clearFocus();
        QVERIFY(!paintsRing());
    }
};

TELLWICK_TEST(FocusRingTests, Widgets)
#include "FocusRingTests.moc"

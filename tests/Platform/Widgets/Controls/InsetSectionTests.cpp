// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/Button.h"
#include "Platform/Widgets/Controls/InsetSection.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/ListRow.h"
#include "tests/support/PaintRecorder.h"
#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QLabel>

using namespace Qt::StringLiterals;
using platform::ListRow;

class InsetSectionTests final : public QObject {
    Q_OBJECT

    platform::Theme m_theme;

private Q_SLOTS:
    void rowsStandInOrderWithLinesBetween() {
        platform::InsetSection section(m_theme, u"Other Models"_s, u"For advanced users."_s);
        const QList<QWidget*> rows{new ListRow(m_theme), new ListRow(m_theme),
                                   new ListRow(m_theme)};
        for (auto* row : rows)
            section.addRow(row);
        section.resize(360, 400);
        section.show();
        QVERIFY(rows.at(0)->y() < rows.at(1)->y());
        QVERIFY(rows.at(1)->y() < rows.at(2)->y());
        const tests::PaintRecorder painted(section);
        std::vector<QRectF> lines;
        for (const auto& part : painted.all())
            if (part.color == m_theme.color(platform::ColorRole::Divider))
                lines.push_back(part.rect);
        QCOMPARE(lines.size(), 2U);
        for (qsizetype i = 0; i < 2; ++i) {
            const auto top = rows.at(i + 1)->mapTo(&section, QPoint()).y();
            QCOMPARE(lines.at(static_cast<size_t>(i)), QRectF(14, top - 1, 360 - 2 * 14, 1));
        }
    }

    void aHiddenRowHasNoLineAndAnEmptyFooterNoRoom() {
        platform::InsetSection section(m_theme, u"Model"_s, u"From a server."_s);
        const QList<QWidget*> rows{new ListRow(m_theme), new ListRow(m_theme),
                                   new ListRow(m_theme)};
        for (auto* row : rows)
            section.addRow(row);
        section.resize(360, 400);
        section.show();
        const int whole = section.heightForWidth(360);
        section.setFooter({});
        QCoreApplication::processEvents();
        QVERIFY(section.heightForWidth(360) < whole - 6);
        rows.at(0)->hide();
        QCoreApplication::processEvents(); // the rest moves up
        const tests::PaintRecorder painted(section);
        QList<qreal> lines;
        for (const auto& part : painted.all())
            if (part.color == m_theme.color(platform::ColorRole::Divider))
                lines.append(part.rect.top());
        QCOMPARE(lines, QList<qreal>{rows.at(2)->mapTo(&section, QPoint()).y() - 1.0});
        section.setFooter(u"From another server."_s);
        QVERIFY(section.findChildren<QLabel*>().constLast()->isVisible());
    }

    void assistiveTechnologySeesAListOfItems() {
        platform::InsetSection section(m_theme, u"Other Models"_s, u"For advanced users."_s);
        auto* row = new ListRow(m_theme);
        row->setName(u"llama3:8b"_s);
        row->setDetail(u"4.7 GB"_s);
        row->setMark({u"Selected"_s, u"checkmark"_s, platform::ColorRole::Accent});
        row->setSelected(true);
        section.addRow(row);
        auto* list = QAccessible::queryAccessibleInterface(row->parentWidget());
        QCOMPARE(list->role(), QAccessible::List);
        QCOMPARE(list->text(QAccessible::Name), u"Other Models"_s);
        auto* item = QAccessible::queryAccessibleInterface(row);
        QCOMPARE(item->role(), QAccessible::ListItem);
        QCOMPARE(item->text(QAccessible::Name), u"llama3:8b"_s);
        QCOMPARE(item->text(QAccessible::Description), u"4.7 GB, Selected"_s);
        QVERIFY(item->state().selectable);
        QVERIFY(item->state().selected);
        row->setMark({});
        row->setSelected(false);
        QCOMPARE(item->text(QAccessible::Description), u"4.7 GB"_s);
        QVERIFY(!item->state().selected);
    }

    void theHeaderItemComesBeforeTheRows() {
        platform::InsetSection section(m_theme, u"Other Models"_s, {});
        auto* row = new ListRow(m_theme);
        section.addRow(row);
        auto* refresh = new platform::Button(m_theme, platform::Button::Look::Icon, u"Refresh"_s,
                                             u"arrow.clockwise"_s);
        section.setHeaderItem(refresh);
        section.show();
        QVERIFY(QTest::qWaitForWindowActive(&section));
        refresh->setFocus();
        QTest::keyClick(refresh, Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), row);
    }
};

TELLWICK_TEST(InsetSectionTests, Widgets)
#include "InsetSectionTests.moc"

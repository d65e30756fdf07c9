// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/InsetSection.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/Surface.h"

#include <QHBoxLayout>
#include <QStyle>
#include <QVBoxLayout>

#include <utility>

namespace platform {

namespace {

constexpr int inset = 14;          // of texts and lines from the card's edge
constexpr qreal headerHeight = 24; // the same with an item and without

/// What the rows stand on; paints the lines between them.
class Card final : public Surface, public AccessibleElement {
public:
    Card(const Theme& theme, const QString& name)
        : Surface(theme, ColorRole::Card, Theme::cardRadius) {
        setAccessibleName(name);
        auto* rows = new QVBoxLayout(this);
        rows->setContentsMargins({});
        rows->setSpacing(1); // for the line
    }

    QAccessible::Role accessibleRole() const override { return QAccessible::List; }

protected:
    void paintEvent(QPaintEvent* event) override {
        Surface::paintEvent(event);
        QPainter painter(this);
        bool isFirst = true;
        for (int i = 0; i < layout()->count(); ++i) {
            if (layout()->itemAt(i)->isEmpty() || std::exchange(isFirst, false)) // hidden, or first
                continue;
            const auto y = layout()->itemAt(i)->geometry().top() - 1;
            const auto line = QRect(inset, y, width() - 2 * inset, 1);
            painter.fillRect(QStyle::visualRect(layoutDirection(), rect(), line),
                             m_theme.color(ColorRole::Divider));
        }
    }
};

} // namespace

InsetSection::InsetSection(const Theme& theme, const QString& header, const QString& footer)
    : m_headerRow(new QHBoxLayout)
    , m_card(new Card(theme, header))
    , m_footer(new Label(theme, footer, TextStyle::Caption, ColorRole::SecondaryLabel)) {
    auto* title = new Label(theme, header, TextStyle::Subheadline, ColorRole::SecondaryLabel,
                            QFont::DemiBold);
    title->setHeading();
    m_headerRow->setContentsMargins(inset, 0, inset / 2, 0);
    m_headerRow->addWidget(title, 1);
    observe(title,
            [&theme, title] { title->setMinimumHeight(qRound(theme.scaled(headerHeight))); });
    m_footer->setWrapping(true);
    auto* footerRow = new QHBoxLayout;
    footerRow->setContentsMargins(inset, 0, inset, 0);
    footerRow->addWidget(m_footer);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(6);
    column->addLayout(m_headerRow);
    column->addWidget(m_card);
    column->addLayout(footerRow);
    setFooter(footer);
}

void InsetSection::setFooter(const QString& footer) {
    m_footer->setText(footer);
    m_footer->setHidden(footer.isEmpty());
}

void InsetSection::setHeaderItem(QWidget* item) {
    m_headerRow->addWidget(item, 0, Qt::AlignVCenter);
    item->stackUnder(m_card);
    setTabOrder(item, m_card); // before the rows, as it stands
}

void InsetSection::addRow(QWidget* row) {
    m_card->layout()->addWidget(row);
}

} // namespace platform

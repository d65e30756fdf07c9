// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/InsetSection.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Controls/Label.h"
#include "Platform/Widgets/Controls/Surface.h"

#include <QHBoxLayout>
#include <QStyle>
#include <QVBoxLayout>

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
        for (int i = 1; i < layout()->count(); ++i) {
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
    , m_card(new Card(theme, header)) {
    auto* title = new Label(theme, header, TextStyle::Subheadline, ColorRole::SecondaryLabel,
                            QFont::DemiBold);
    title->setHeading();
    m_headerRow->setContentsMargins(inset, 0, inset / 2, 0);
    m_headerRow->addWidget(title, 1);
    observe(title,
            [&theme, title] { title->setMinimumHeight(qRound(theme.scaled(headerHeight))); });
    auto* explanation = new Label(theme, footer, TextStyle::Caption, ColorRole::SecondaryLabel);
    explanation->setWrapping(true);
    auto* footerRow = new QHBoxLayout;
    footerRow->setContentsMargins(inset, 0, inset, 0);
    footerRow->addWidget(explanation);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(6);
    column->addLayout(m_headerRow);
    column->addWidget(m_card);
    column->addLayout(footerRow);
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

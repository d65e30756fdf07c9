// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/InsetSection.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/InsetCard.h"
#include "Platform/Widgets/Controls/Label.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace platform {

namespace {

constexpr int inset = 14;          // of texts from the card's edge
constexpr qreal headerHeight = 24; // the same with an item and without

} // namespace

InsetSection::InsetSection(const Theme& theme, const QString& header, const QString& footer,
                           QWidget* parent)
    : QWidget(parent)
    , m_headerRow(new QHBoxLayout)
    , m_card(new InsetCard(theme, this)) {
    auto* title = new Label(theme, header, TextStyle::Subheadline, this);
    title->setWeight(QFont::DemiBold);
    title->setColorRole(ColorRole::SecondaryLabel);
    title->setHeading(true);
    m_headerRow->setContentsMargins(inset, 0, inset / 2, 0);
    m_headerRow->addWidget(title, 1);
    observe(title,
            [&theme, title] { title->setMinimumHeight(qRound(theme.scaled(headerHeight))); });
    m_card->setAccessibleName(header);
    m_card->raise(); // read out after its heading

    auto* explanation = new Label(theme, footer, TextStyle::Caption, this);
    explanation->setColorRole(ColorRole::SecondaryLabel);
    explanation->setWrapping(true);
    auto* footerRow = new QHBoxLayout;
    footerRow->setContentsMargins(inset, 0, inset, 0);
    footerRow->addWidget(explanation);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    column->addLayout(m_headerRow);
    column->addWidget(m_card);
    column->addLayout(footerRow);
    explanation->setVisible(!footer.isEmpty());
}

void InsetSection::setHeaderItem(QWidget* item) {
    m_headerRow->addWidget(item, 0, Qt::AlignVCenter);
    item->stackUnder(m_card);
    setTabOrder(item, m_card); // before the rows, as it stands
}

void InsetSection::setRows(const QList<QWidget*>& rows) {
    m_card->setRows(rows);
}

const QList<QWidget*>& InsetSection::rows() const {
    return m_card->rows();
}

} // namespace platform

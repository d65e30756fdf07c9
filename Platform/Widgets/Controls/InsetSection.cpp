// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/InsetSection.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Accessible.h"
#include "Platform/Widgets/Controls/Label.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>

namespace platform {

namespace {

constexpr int inset = 14;          // of texts and lines from the card's edge
constexpr qreal headerHeight = 24; // the same with an item and without

/// What the rows stand on; paints the lines between them.
class Card final : public QWidget, public AccessibleElement {
public:
    Card(const Theme& theme, const QString& name, QWidget* parent)
        : QWidget(parent)
        , m_theme(theme) {
        setAccessibleName(name);
        auto* rows = new QVBoxLayout(this);
        rows->setContentsMargins({});
        rows->setSpacing(1); // for the line
    }

    QAccessible::Role accessibleRole() const override { return QAccessible::List; }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        fillRounded(painter, rect(), Theme::cardRadius, m_theme.color(ColorRole::Card));
        for (int i = 1; i < layout()->count(); ++i) {
            const auto y = layout()->itemAt(i)->geometry().top() - 1;
            const auto line = QRect(inset, y, width() - inset, 1);
            painter.fillRect(QStyle::visualRect(layoutDirection(), rect(), line),
                             m_theme.color(ColorRole::Divider));
        }
    }

private:
    const Theme& m_theme;
};

} // namespace

InsetSection::InsetSection(const Theme& theme, const QString& header, const QString& footer,
                           QWidget* parent)
    : QWidget(parent)
    , m_headerRow(new QHBoxLayout) {
    auto* title = new Label(theme, header, TextStyle::Subheadline, this);
    title->setWeight(QFont::DemiBold);
    title->setColorRole(ColorRole::SecondaryLabel);
    title->setHeading(true);
    m_headerRow->setContentsMargins(inset, 0, inset / 2, 0);
    m_headerRow->addWidget(title, 1);
    observe(title,
            [&theme, title] { title->setMinimumHeight(qRound(theme.scaled(headerHeight))); });
    m_card = new Card(theme, header, this); // read out after its heading

    auto* explanation = new Label(theme, footer, TextStyle::Caption, this);
    explanation->setColorRole(ColorRole::SecondaryLabel);
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

void InsetSection::setRows(const QList<QWidget*>& rows) {
    m_rows = rows;
    for (auto* row : rows)
        m_card->layout()->addWidget(row);
}

} // namespace platform

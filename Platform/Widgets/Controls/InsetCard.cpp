// SPDX-License-Identifier: MIT
#include "Platform/Widgets/Controls/InsetCard.h"

#include "Platform/Observation/Observer.h"
#include "Platform/Widgets/Controls/Divider.h"
#include "Platform/Widgets/Look/Painting.h"

#include <QPainter>
#include <QVBoxLayout>

namespace platform {

namespace {

constexpr int inset = 14; // of the lines from the card's leading edge

} // namespace

InsetCard::InsetCard(const Theme& theme, QWidget* parent)
    : QWidget(parent)
    , m_theme(theme)
    , m_column(new QVBoxLayout(this)) {
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    observe(this, [this] {
        [[maybe_unused]] const auto tracked = m_theme.color(ColorRole::Card);
        update();
    });
}

void InsetCard::setRows(const QList<QWidget*>& rows) {
    if (rows == m_rows)
        return;
    for (auto* row : m_rows) {
        m_column->removeWidget(row);
        if (!rows.contains(row)) {
            row->hide();
            row->deleteLater(); // it may be the one whose action asked for this
        }
    }
    qDeleteAll(m_lines);
    m_lines.clear();
    m_rows = rows;
    QWidget* before = nullptr;
    for (auto* row : rows) {
        if (before != nullptr) {
            auto* line = new Divider(m_theme, this);
            line->setLeadingInset(inset);
            m_column->addWidget(line);
            m_lines.append(line);
        }
        m_column->addWidget(row);
        if (before != nullptr)
            setTabOrder(before, row);
        before = row;
    }
    update();
}

void InsetCard::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    fillRounded(painter, rect(), Theme::cardRadius, m_theme.color(ColorRole::Card));
}

} // namespace platform

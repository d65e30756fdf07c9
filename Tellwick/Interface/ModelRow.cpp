// SPDX-License-Identifier: MIT
#include "Tellwick/Interface/ModelRow.h"

#include "Platform/Widgets/IconView.h"
#include "Platform/Widgets/Label.h"
#include "Platform/Widgets/Painting.h"
#include "Tellwick/Core/ModelBackend.h"

#include <QBoxLayout>
#include <QPainter>

namespace tellwick {

using namespace Qt::StringLiterals;
using platform::ColorRole;
using platform::IconView;
using platform::Label;
using platform::TextStyle;
using platform::Theme;

ModelRow::ModelRow(const Theme& theme, const ModelBackend& backend, bool isSelected,
                   std::function<void()> onSelect, QWidget* parent)
    : Button(theme, parent)
    , m_name(new Label(theme, {}, TextStyle::Subheadline))
    , m_detail(new Label(theme, {}, TextStyle::Caption))
    , m_unavailable(new Label(theme, u"Unavailable"_s, TextStyle::Caption))
    , m_checkmark(new IconView(theme, u"checkmark"_s, TextStyle::Subheadline)) {
    setCheckable(true);
    m_name->setWeight(QFont::Medium);
    m_detail->setColorRole(ColorRole::SecondaryLabel);
    m_unavailable->setColorRole(ColorRole::Orange);
    m_checkmark->setColorRole(ColorRole::Accent);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addStretch(1);
    texts->addWidget(m_name);
    texts->addWidget(m_detail);
    texts->addStretch(1);
    auto* row = new QHBoxLayout(this);
    row->setSpacing(Theme::defaultSpacing);
    row->setContentsMargins(12, 8, 12, 8);
    row->addLayout(texts, 1);
    row->addWidget(m_unavailable);
    row->addWidget(m_checkmark);
    // The whole rectangle is the button's, and so is what is read out.
    for (auto* part : findChildren<QWidget*>())
        part->setAttribute(Qt::WA_TransparentForMouseEvents);

    show(backend, isSelected, std::move(onSelect));
}

void ModelRow::show(const ModelBackend& backend, bool isSelected, std::function<void()> onSelect) {
    const ModelInfo& info = backend.info();
    const bool isAvailable = backend.isAvailable();
    setText(info.name());
    setChecked(isSelected);
    setAction(std::move(onSelect));
    m_name->setText(info.name());
    m_detail->setText(info.detail.value_or(QString()));
    m_detail->setVisible(info.detail.has_value());
    m_unavailable->setVisible(!isAvailable);
    m_checkmark->setVisible(isAvailable && isSelected);
}

QSize ModelRow::sizeHint() const {
    return layout()->sizeHint();
}

QString ModelRow::accessibleDetail() const {
    QStringList parts;
    if (!m_detail->isHidden())
        parts.append(m_detail->text());
    if (!m_unavailable->isHidden())
        parts.append(m_unavailable->text());
    else if (isChecked())
        parts.append(u"Selected"_s);
    return parts.join(", "_L1);
}

void ModelRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (isDown() || isHovered())
        painter.fillRect(rect(), theme().color(isDown() ? ColorRole::Pressed : ColorRole::Hover));
    if (showsFocusRing())
        platform::paintFocusRing(painter, theme(), rect(), Theme::cardRadius);
}

} // namespace tellwick

// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"

#include <QWidget>

namespace tellwick {

/// The greeting of an empty conversation: centred lines on a quiet bubble. Shown, never a message.
class GreetingBubble final : public QWidget {
    Q_OBJECT

public:
    GreetingBubble(const platform::Theme& theme, const QString& text, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const platform::Theme& m_theme;
};

} // namespace tellwick

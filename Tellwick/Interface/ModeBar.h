// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"
#include "Tellwick/Core/AppConfig.h"

#include <QWidget>

#include <functional>

namespace platform {
class Button;
class Label;
} // namespace platform

namespace tellwick {

/// The bar above the message field that names the chosen writing mode and clears it.
class ModeBar final : public QWidget {
    Q_OBJECT

public:
    explicit ModeBar(const platform::Theme& theme, QWidget* parent = nullptr);

    void setMode(const AppConfig::WritingMode& mode);
    void onClear(std::function<void()> clear);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const platform::Theme& m_theme;
    platform::Label* m_label;
    platform::Button* m_clear;
};

} // namespace tellwick

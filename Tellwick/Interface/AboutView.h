// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Widgets/Look/Theme.h"
#include "Tellwick/Interface/Environment.h"

#include <QWidget>

namespace tellwick {

/// What the application is, what it promises and what it cannot do. Static; shown in a sheet, which
/// scrolls and closes it.
class AboutView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int width = 400;

    explicit AboutView(const Environment& environment);

    /// The last line but one: a link to `website` where that is an address, else its plain text.
    static QWidget* websiteLine(const Environment& environment, const QString& website);
};

/// A symbol and a line of text, in a list of such rows.
class AboutRow final : public QWidget {
    Q_OBJECT

public:
    AboutRow(const platform::Theme& theme, const QString& icon, const QString& text,
             platform::ColorRole color);
};

} // namespace tellwick

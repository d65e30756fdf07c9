// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/UrlOpener.h"
#include "Platform/Widgets/Look/Theme.h"
#include "Platform/Widgets/Overlays/OverlayHost.h"
#include "Tellwick/Interface/Environment.h"
#include "tests/support/ScreenReader.h"

#include <QApplication>
#include <QLabel>
#include <QPalette>

#include <memory>

namespace tests {

/// The desktop as a test wants it: addresses are noted and not opened, the program is
/// version 2.3.1.
struct TestDesktop {
    TestDesktop() { QCoreApplication::setApplicationVersion(QStringLiteral("2.3.1")); }

    platform::Theme theme;
    platform::Observed<std::optional<platform::WindowButtonLayout>> windowButtons;
    QList<QUrl> opened;
    platform::UrlOpener urlOpener{[this](const QUrl& url) {
        opened.append(url);
        return true;
    }};

    /// Whether a label shows its text in this style, weight and colour.
    bool isStyled(const QLabel* label, platform::TextStyle style, platform::ColorRole role,
                  QFont::Weight weight = QFont::Normal) const {
        return label && label->font() == theme.font(style, weight) &&
               label->palette().color(QPalette::WindowText) == theme.color(role);
    }

    tellwick::Services services() { return {theme, urlOpener, windowButtons}; }
};

/// A window for a single screen, in the theme's colour, with its layer for overlays.
class TestWindow {
public:
    explicit TestWindow(QSize size = {640, 800}) {
        QPalette palette;
        palette.setColor(QPalette::Window, desktop.theme.color(platform::ColorRole::Window));
        window->setPalette(palette);
        window->resize(size);
    }

    bool show() {
        window->show();
        return QTest::qWaitForWindowActive(window.get());
    }

    ScreenReader screen() const { return ScreenReader(window.get()); }

    TestDesktop desktop;
    const std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
    platform::OverlayHost* const overlays = new platform::OverlayHost(desktop.theme, window.get());
    const tellwick::Environment environment{desktop.services(), *overlays};
};

} // namespace tests

// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class QApplication;
class QByteArray;

namespace tellwick {

/// The application: makes every object of the program once, hands each to those that need it, and
/// opens the window.
class TellwickApp final {
public:
    /// The size of a newly opened window, in device-independent pixels.
    static constexpr int defaultWidth = 640;
    static constexpr int defaultHeight = 800;

    /// Runs the program: opens the window, or brings that of a running instance to the front.
    /// Returns the exit status when the last window has been closed or the user has quit.
    static int main(int argc, char** argv);

    explicit TellwickApp(QApplication& application);
    ~TellwickApp();

    /// Shows the window, or brings it to the front.
    /// @param activationToken what the desktop gave to the start that asks for it; may be empty.
    void openWindow(const QByteArray& activationToken);

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace tellwick

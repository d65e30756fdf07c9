// SPDX-License-Identifier: MIT
#pragma once

namespace setup {

/// The set-up without a display: `tellwick-setup --terminal [--model NAME] [--file PATH]`.
///
/// Fetches the model where there is none, or the named one, or takes the user's own file; then
/// installs the engine where there is none. What it does it says on standard error. Returns the
/// exit status: 0, all is there; 1, something is not, and the last line says why; 2, a wrong call;
/// 130, stopped with Ctrl-C, and what has come is kept.
///
/// Makes the application object itself.
int runTerminalSetup(int argc, char** argv);

} // namespace setup

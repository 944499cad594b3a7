// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::app {

/// Ends the program on SIGINT, SIGTERM and SIGHUP (a logout, a closed terminal) as closing the
/// window does, with the exit status 128 and the signal's number: running exports are cancelled and
/// leave no part of a file. A second signal, half a second later or more, ends it at once. Signals
/// that the parent ignores stay ignored. Called once, with an application.
void quitOnSignals();

} // namespace clipheave::app

// The signals corvelsim takes over for itself while it serves the printer,
// and how the command gets them back.
#pragma once

namespace corvelsim {

// Keyboard signals (SIGINT, SIGQUIT) reach the command through the terminal,
// so corvelsim ignores them and stays to clean up once the command ends;
// SIGPIPE is ignored so that a closed reader is an error, not an end. SIGTERM
// and SIGHUP go to `onTerminate`.
void takeOverSignals(void (*onTerminate)(int));

// For the child between fork and exec (async-signal-safe): every signal
// taken over back to its default action, and nothing blocked, so that the
// command starts as it would from a shell.
void giveBackSignals();

}  // namespace corvelsim

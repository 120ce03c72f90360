// The fatal-signal report of the compatibility start-up.
#pragma once

#include <signal.h>

extern "C" {
// Signals the compatibility start-up catches, zero-terminated.
extern const int f90_signals_id[];
// Signal names by this platform's signal numbers; slot 0 is empty.
extern const char *const f90_signals_name[34];
extern const int f90_signals_name_length;

void __f90_signals_f77compat(int sig, siginfo_t *info, void *context);
}

namespace krm {

// Installs the handler for each caught signal whose present action is the
// default; a signal the program or its parent set up stays as it is.
void install_fatal_signal_handler();

}  // namespace krm

// Running a piece of a test in another process and looking at what a user
// would see: exit status or signal, and every byte of stdout and stderr.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace krm_test {

struct child_result {
    int exit_code = -1;  // -1 when ended by a signal
    int signal = 0;      // the signal that ended it, or 0
    std::string out;     // everything written to fd 1
    std::string err;     // everything written to fd 2
};

struct child_options {
    bool close_stdin = false;
    bool close_stdout = false;
    std::string stdin_text;            // fed on fd 0 unless close_stdin
    std::vector<std::string> env;      // NAME=value pairs added
};

// Runs fn in a forked child (library state as the parent has it); the child
// exits 0 when fn returns.
child_result run_forked(const std::function<void()> &fn, const child_options &opt = {});

// As run_forked, for a child that makes test assertions: the child exits 1
// when any of them failed (their text is then in out), 0 otherwise. The
// child starts from unit tables that hold only the default records, as a
// fresh process would: units the parent connected are forgotten unwritten.
child_result run_checked(const std::function<void()> &fn, const child_options &opt = {});

// In a child: drops every numbered unit record it inherited, closing the
// files without writing what their buffers owe.
void forget_inherited_units();

// In a child: exits with 1 at once when an assertion of the running test has
// failed. For children that end in a call that does not return (STOP, abort).
void exit_if_failed();

// Runs a scenario in a fresh process: this test binary started again, so the
// library starts from its state at load. The child exits 0 when it returns.
child_result run_scenario(const char *name, const child_options &opt = {});

// Registers a scenario under its name; used by KRM_SCENARIO.
struct scenario_registration {
    scenario_registration(const char *name, void (*fn)());
};

// Runs the scenario named in the environment, if any; called from main.
void run_scenario_if_asked();

}  // namespace krm_test

#define KRM_SCENARIO(name)                                                              \
    static void krm_scenario_##name();                                                  \
    static ::krm_test::scenario_registration krm_scenario_reg_##name(#name,             \
                                                                    krm_scenario_##name); \
    static void krm_scenario_##name()

// Fatal signals under the compatibility start-up: the short report on
// standard error, unit buffers written out first, and death by the same
// signal, so that the parent sees how the program ended. Each case runs in a
// fresh process so that the handler is installed from the state at load.

#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>

#include "frame/signals.h"
#include "krm.h"
#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"

using namespace krm_test;

namespace {

// Lives in read-only storage: writing to it is an access fault.
const char kConstant[] = "a constant";

// The fresh process learns its case from the environment.
constexpr const char *kSignalVar = "KRM_TEST_SIGNAL";
constexpr const char *kArgvVar = "KRM_TEST_ARGV";  // "prog" (default), "null0", "none"

// Under AddressSanitizer the sanitizer claims SIGSEGV at load, and the
// start-up rightly keeps a handler that is already there; these cases are
// about the library's own handler, so the sanitizer is asked to stay away.
child_options fresh_process(int signal = 0, const char *argv_form = "prog") {
    child_options opt;
    const char *asan = getenv("ASAN_OPTIONS");
    opt.env.push_back(std::string("ASAN_OPTIONS=") + (asan && *asan ? std::string(asan) + ":" : "") +
                      "handle_segv=0:allow_user_segv_handler=1");
    opt.env.push_back(std::string(kSignalVar) + "=" + std::to_string(signal));
    opt.env.push_back(std::string(kArgvVar) + "=" + argv_form);
    return opt;
}

// No core files from the deaths these tests provoke.
void no_core_dumps() {
    struct rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

void start_f77compat() {
    no_core_dumps();
    static char prog[] = "prog";
    static char *with_name[] = {prog, nullptr};
    static char *null_first[] = {nullptr};
    const char *form = getenv(kArgvVar);
    if (form && strcmp(form, "none") == 0)
        __f90_init_f77compat(0, nullptr);
    else if (form && strcmp(form, "null0") == 0)
        __f90_init_f77compat(0, null_first);
    else
        __f90_init_f77compat(1, with_name);
}

int signal_of_case() {
    const char *s = getenv(kSignalVar);
    return s ? atoi(s) : 0;
}

void write_to_constant() {
    char *volatile p = const_cast<char *>(kConstant);
    p[0] = 'A';
}

// ---------------------------------------------------------------- write to a constant

KRM_SCENARIO(f77_write_to_constant) {
    start_f77compat();
    if (write_list(10, {ch("before the fault")}, IO_RETURNING) != 0) _exit(3);
    if (read_file("fort.10") != "") _exit(4);  // still in the unit's buffer
    write_to_constant();
    _exit(5);
}

class FatalSignal : public InTempDir {};

TEST_F(FatalSignal, WriteToConstantIsReportedAndEndsBySigsegv) {
    child_result r = run_scenario("f77_write_to_constant", fresh_process());
    EXPECT_EQ(r.exit_code, -1);
    EXPECT_EQ(r.signal, SIGSEGV);
    EXPECT_EQ(r.err, "\n*** TERMINATING  prog\n*** Received signal 11\nPOSSIBLE ATTEMPT TO MODIFY CONSTANT\n");
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(read_file("fort.10"), " before the fault\n");
}

// ---------------------------------------------------------------- signals sent

KRM_SCENARIO(f77_kill_self) {
    start_f77compat();
    if (write_list(11, {ch("buffered")}, IO_RETURNING) != 0) _exit(3);
    kill(getpid(), signal_of_case());
    // Reached only if the signal did not end the process.
    fputs("still running\n", stdout);
}

struct sent_case {
    const char *name;
    int signal;
    const char *argv_form;
    const char *err;  // all of standard error
    bool written;     // the unit's buffer reached fort.11
};

void PrintTo(const sent_case &c, std::ostream *os) { *os << c.name; }

class SentSignal : public InTempDir, public ::testing::WithParamInterface<sent_case> {};

TEST_P(SentSignal, ReportThenDeathBySameSignal) {
    const sent_case &c = GetParam();
    child_result r = run_scenario("f77_kill_self", fresh_process(c.signal, c.argv_form));
    EXPECT_EQ(r.exit_code, -1) << r.out;
    EXPECT_EQ(r.signal, c.signal);
    EXPECT_EQ(r.err, c.err);
    EXPECT_EQ(read_file("fort.11"), c.written ? " buffered\n" : "");
}

// Names follow this platform's numbering of the signals.
const sent_case kSentCases[] = {
    {"sigterm", SIGTERM, "prog", "\n*** TERMINATING  prog\n*** Received signal 15 SIGTERM\n", true},
    {"sighup", SIGHUP, "prog", "\n*** TERMINATING  prog\n*** Received signal 1 SIGHUP\n", true},
    {"sigint", SIGINT, "prog", "\n*** TERMINATING  prog\n*** Received signal 2 SIGINT\n", true},
    {"sigpipe", SIGPIPE, "prog", "\n*** TERMINATING  prog\n*** Received signal 13 SIGPIPE\n", true},
    {"sigxcpu", SIGXCPU, "prog", "\n*** TERMINATING  prog\n*** Received signal 24 SIGXCPU\n", true},
    // Sent, not a fault: no access-fault code, so the plain form with a name.
    {"sigsegv_sent", SIGSEGV, "prog", "\n*** TERMINATING  prog\n*** Received signal 11 SIGSEGV\n", true},
    {"no_argv", SIGTERM, "none", "\n*** TERMINATING\n*** Received signal 15 SIGTERM\n", true},
    {"argv_without_name", SIGTERM, "null0", "\n*** TERMINATING\n*** Received signal 15 SIGTERM\n", true},
    // Not among the caught signals: the default action, no report, no cleanup.
    {"sigusr1_not_caught", SIGUSR1, "prog", "", false},
    {"sigalrm_not_caught", SIGALRM, "prog", "", false},
};

INSTANTIATE_TEST_SUITE_P(Cases, SentSignal, ::testing::ValuesIn(kSentCases),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- numbers without a name

// The handler called as the system would, with a number the platform has
// but the name table doesn't.
KRM_SCENARIO(f77_handler_direct) {
    start_f77compat();
    __f90_signals_f77compat(signal_of_case(), nullptr, nullptr);
    _exit(5);
}

TEST(FatalSignalNumber, AboveTheNameTableNoName) {
    int sig = SIGRTMIN + 6;  // below 49: raised again with the default action
    ASSERT_LE(sig, 48);
    ASSERT_GT(sig, 33);
    child_result r = run_scenario("f77_handler_direct", fresh_process(sig));
    EXPECT_EQ(r.signal, sig);
    EXPECT_EQ(r.err, "\n*** TERMINATING  prog\n*** Received signal " + std::to_string(sig) + "\n");
}

TEST(FatalSignalNumber, Above48Aborts) {
    child_result r = run_scenario("f77_handler_direct", fresh_process(50));
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, "\n*** TERMINATING  prog\n*** Received signal 50\n");
}

// ---------------------------------------------------------------- actions that stay

const char kOwnHandlerText[] = "the program's own handler\n";

void own_segv_handler(int) {
    ssize_t n = write(2, kOwnHandlerText, sizeof kOwnHandlerText - 1);
    _exit(n > 0 ? 7 : 8);
}

void own_segv_action(int, siginfo_t *, void *) { own_segv_handler(SIGSEGV); }

KRM_SCENARIO(f77_keeps_own_segv_handler) {
    struct sigaction act = {};
    sigemptyset(&act.sa_mask);
    if (signal_of_case() == 1) {
        act.sa_sigaction = own_segv_action;
        act.sa_flags = SA_SIGINFO;
    } else {
        act.sa_handler = own_segv_handler;
    }
    sigaction(SIGSEGV, &act, nullptr);
    start_f77compat();
    write_to_constant();
    _exit(5);
}

class KeptAction : public InTempDir {};

TEST_F(KeptAction, HandlerInstalledBeforeStartUpRunsInstead) {
    child_result r = run_scenario("f77_keeps_own_segv_handler", fresh_process(0));
    EXPECT_EQ(r.signal, 0);
    EXPECT_EQ(r.exit_code, 7);
    EXPECT_EQ(r.err, kOwnHandlerText);
}

TEST_F(KeptAction, SiginfoHandlerInstalledBeforeStartUpRunsInstead) {
    child_result r = run_scenario("f77_keeps_own_segv_handler", fresh_process(1));
    EXPECT_EQ(r.signal, 0);
    EXPECT_EQ(r.exit_code, 7);
    EXPECT_EQ(r.err, kOwnHandlerText);
}

KRM_SCENARIO(f77_keeps_ignored_signal) {
    signal(SIGHUP, SIG_IGN);
    start_f77compat();
    kill(getpid(), SIGHUP);
    fputs("still running\n", stdout);
}

TEST_F(KeptAction, IgnoredSignalStaysIgnored) {
    child_result r = run_scenario("f77_keeps_ignored_signal", fresh_process());
    EXPECT_EQ(r.signal, 0);
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.out, "still running\n");
    EXPECT_EQ(r.err, "");
}

// The plain start-up installs no handler: a sent SIGTERM kills silently.
KRM_SCENARIO(plain_init_kill_self) {
    no_core_dumps();
    static char prog[] = "prog";
    static char *argv[] = {prog, nullptr};
    __f90_init(1, argv);
    kill(getpid(), SIGTERM);
    _exit(5);
}

TEST_F(KeptAction, PlainStartUpCatchesNothing) {
    child_result r = run_scenario("plain_init_kill_self", fresh_process());
    EXPECT_EQ(r.signal, SIGTERM);
    EXPECT_EQ(r.err, "");
}

}  // namespace

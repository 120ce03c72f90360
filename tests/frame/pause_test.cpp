// PAUSE as a user meets it: without a terminal the program says how to send
// SIGINT and waits for it; at a terminal it waits for "go". The parent here
// plays the user, reacting to what the child has printed, never to a clock.

#include <gtest/gtest.h>
#include <errno.h>
#include <fcntl.h>
#include <pty.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "krm.h"
#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"

using namespace krm_test;

namespace {

// Reads fd into text until done(text) holds; false at end of input first.
bool read_until(int fd, std::string &text, const std::function<bool(const std::string &)> &done) {
    while (!done(text)) {
        char buf[512];
        ssize_t n = read(fd, buf, sizeof buf);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;  // a pty master reports EIO once the child is gone
        text.append(buf, static_cast<size_t>(n));
    }
    return true;
}

void read_to_end(int fd, std::string &text) {
    read_until(fd, text, [](const std::string &) { return false; });
}

struct waited {
    int exit_code = -1;
    int signal = 0;
};

waited wait_for(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    waited w;
    if (WIFEXITED(status)) w.exit_code = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) w.signal = WTERMSIG(status);
    return w;
}

// ---------------------------------------------------------------- without a terminal

// A child whose stdin is /dev/null and whose stdout and stderr are pipes the
// parent reads while the child runs.
struct piped_child {
    pid_t pid = -1;
    int out = -1;
    int err = -1;
};

piped_child start_piped(const std::function<void()> &fn) {
    int out[2], err[2];
    piped_child c;
    if (pipe(out) != 0 || pipe(err) != 0) return c;
    fflush(nullptr);
    c.pid = fork();
    if (c.pid == 0) {
        int null_fd = open("/dev/null", O_RDONLY);
        dup2(null_fd, 0);
        dup2(out[1], 1);
        dup2(err[1], 2);
        close(null_fd);
        close(out[0]);
        close(out[1]);
        close(err[0]);
        close(err[1]);
        fn();
        fflush(nullptr);
        _exit(0);
    }
    close(out[1]);
    close(err[1]);
    c.out = out[0];
    c.err = err[0];
    return c;
}

std::string sigint_prompt(pid_t pid) {
    return "To continue execution, type Control-C or \"kill -2 " + std::to_string(pid) + "\"\n";
}

bool has_complete_line_after(const std::string &text, const char *what) {
    size_t at = text.find(what);
    return at != std::string::npos && text.find('\n', at) != std::string::npos;
}

struct pause_case {
    const char *name;
    const char *text;  // null: PAUSE without a text
    int32_t length;
    const char *first_line;
};

void PrintTo(const pause_case &c, std::ostream *os) { *os << c.name; }

class PauseWithoutTerminal : public InTempDir, public ::testing::WithParamInterface<pause_case> {};

TEST_P(PauseWithoutTerminal, WaitsForSigintThenResumes) {
    const pause_case &c = GetParam();
    piped_child child = start_piped([&] {
        if (write_list(10, {ch("written before the pause")}, IO_RETURNING) != 0) _exit(3);
        __f90_pause(c.text, c.length);
        // I/O still works after PAUSE.
        print_list({ch("after")});
    });
    ASSERT_GT(child.pid, 0);

    std::string err;
    bool prompted = read_until(child.err, err, [](const std::string &t) {
        return has_complete_line_after(t, "kill -2 ");
    });
    EXPECT_TRUE(prompted) << err;
    // PAUSE ran cleanup before it started to wait.
    EXPECT_EQ(read_file("fort.10"), " written before the pause\n");
    if (prompted) kill(child.pid, SIGINT);

    read_to_end(child.err, err);
    std::string out;
    read_to_end(child.out, out);
    close(child.err);
    close(child.out);
    waited w = wait_for(child.pid);

    EXPECT_EQ(w.signal, 0);
    EXPECT_EQ(w.exit_code, 0);
    EXPECT_EQ(err, std::string(c.first_line) + sigint_prompt(child.pid) + "Execution resumed after PAUSE.\n");
    EXPECT_EQ(out, " after\n");
}

// Not terminated: the length alone says where the text ends.
const char kPauseText[] = {'h', 'i', 'g', 'h'};

const pause_case kPauseCases[] = {
    {"text", "hi", 2, "PAUSE: hi\n"},
    {"text_cut_by_length", kPauseText, 4, "PAUSE: high\n"},
    {"length_shorter_than_text", kPauseText, 2, "PAUSE: hi\n"},
    {"no_text", nullptr, 0, "PAUSE\n"},
};

INSTANTIATE_TEST_SUITE_P(Cases, PauseWithoutTerminal, ::testing::ValuesIn(kPauseCases),
                         [](const auto &info) { return std::string(info.param.name); });

int own_sigint_calls;
void own_sigint(int) { ++own_sigint_calls; }

// The program's own SIGINT action is back after PAUSE, and the SIGINT that
// ended the wait did not reach it.
TEST(PauseWithoutTerminalAction, ProgramsSigintActionIsRestored) {
    piped_child child = start_piped([] {
        struct sigaction act = {};
        act.sa_handler = own_sigint;
        sigemptyset(&act.sa_mask);
        sigaction(SIGINT, &act, nullptr);
        __f90_pause("x", 1);
        printf("calls after pause: %d\n", own_sigint_calls);
        raise(SIGINT);
        printf("calls after raise: %d\n", own_sigint_calls);
    });
    ASSERT_GT(child.pid, 0);
    std::string err;
    bool prompted = read_until(child.err, err, [](const std::string &t) {
        return has_complete_line_after(t, "kill -2 ");
    });
    EXPECT_TRUE(prompted) << err;
    if (prompted) kill(child.pid, SIGINT);
    read_to_end(child.err, err);
    std::string out;
    read_to_end(child.out, out);
    close(child.err);
    close(child.out);
    waited w = wait_for(child.pid);
    EXPECT_EQ(w.exit_code, 0);
    EXPECT_EQ(err, "PAUSE: x\n" + sigint_prompt(child.pid) + "Execution resumed after PAUSE.\n");
    EXPECT_EQ(out, "calls after pause: 0\ncalls after raise: 1\n");
}

// ---------------------------------------------------------------- at a terminal

// The child's standard streams are a pseudo-terminal. The terminal echoes
// what the parent types and turns "\n" into "\r\n" on output, so the checks
// look for pieces of the text, in order, rather than at whole strings.
struct terminal_case {
    const char *name;
    const char *typed;
    bool resumes;
};

void PrintTo(const terminal_case &c, std::ostream *os) { *os << c.name; }

class PauseAtTerminal : public ::testing::TestWithParam<terminal_case> {};

const char kTerminalPrompt[] = "To continue execution, type \"go\"";
const char kResumed[] = "Execution resumed after PAUSE.";
const char kMarker[] = "MARKER-AFTER-PAUSE";

TEST_P(PauseAtTerminal, GoResumesAnythingElseEnds) {
    const terminal_case &c = GetParam();
    int master = -1;
    fflush(nullptr);
    pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        __f90_pause("hi", 2);
        printf("%s\n", kMarker);
        fflush(nullptr);
        _exit(0);
    }

    std::string seen;
    bool prompted = read_until(master, seen, [](const std::string &t) {
        return has_complete_line_after(t, kTerminalPrompt);
    });
    EXPECT_TRUE(prompted) << seen;
    if (prompted) {
        ssize_t n = write(master, c.typed, strlen(c.typed));
        EXPECT_EQ(n, static_cast<ssize_t>(strlen(c.typed)));
    }
    read_to_end(master, seen);
    close(master);
    waited w = wait_for(pid);

    EXPECT_EQ(w.signal, 0);
    EXPECT_EQ(w.exit_code, 0) << seen;
    size_t text_at = seen.find("PAUSE: hi\r\n");
    size_t prompt_at = seen.find(kTerminalPrompt);
    ASSERT_NE(text_at, std::string::npos) << seen;
    ASSERT_NE(prompt_at, std::string::npos) << seen;
    EXPECT_LT(text_at, prompt_at);
    size_t resumed_at = seen.find(kResumed);
    size_t marker_at = seen.find(kMarker);
    if (c.resumes) {
        ASSERT_NE(resumed_at, std::string::npos) << seen;
        ASSERT_NE(marker_at, std::string::npos) << seen;
        EXPECT_LT(prompt_at, resumed_at);
        EXPECT_LT(resumed_at, marker_at);
    } else {
        EXPECT_EQ(resumed_at, std::string::npos) << seen;
        EXPECT_EQ(marker_at, std::string::npos) << seen;
    }
}

const terminal_case kTerminalCases[] = {
    {"go", "go\n", true},
    {"no", "no\n", false},
    {"go_and_more", "gone\n", false},
    {"go_upper_case", "GO\n", false},
    {"leading_blank", " go\n", false},
    {"only_newline", "\n", false},
    {"end_of_file", "\x04", false},  // the terminal's EOF character: getchar gives EOF
};

INSTANTIATE_TEST_SUITE_P(Cases, PauseAtTerminal, ::testing::ValuesIn(kTerminalCases),
                         [](const auto &info) { return std::string(info.param.name); });

}  // namespace

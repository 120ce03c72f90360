// The start call's tests of the connection, in their order, with the unit
// set up as an OPEN would have left it; and PRINT on a closed standard output.

#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>

#include <string>

#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"
#include "units/units.h"

using namespace krm_test;

namespace {

const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";

struct start_case {
    const char *name;
    bool connect;          // connect unit 11 first with a WRITE
    uint32_t unit_clear;   // then clear these bits of the unit
    uint32_t unit_set;     // and set these
    uint32_t stmt_flags;   // the second statement's flags, IO_RETURNING added
    int expected;          // the start call's result
    const char *file;      // fort.11 at the end; null: no such file
};

void PrintTo(const start_case &c, std::ostream *os) { *os << c.name; }

class StatementStartTest : public InTempDir, public ::testing::WithParamInterface<start_case> {};

TEST_P(StatementStartTest, ReturnForm) {
    const start_case &c = GetParam();
    child_result r = run_checked([&] {
        if (c.connect) {
            ASSERT_EQ(write_list(11, {ch("first")}), 0);
            with_unit(11, [&](unit *up) { up->flags = (up->flags & ~c.unit_clear) | c.unit_set; });
        }
        io_control_list_write ctl = {IO_RETURNING | c.stmt_flags, &kWriteAt, 11, nullptr};
        const int got = __f90_sslw(&ctl);
        EXPECT_EQ(got, c.expected);
        if (got == 0) {
            EXPECT_EQ(__f90_slw_ch(&ctl, "second", 6), 0);
            EXPECT_EQ(__f90_eslw(&ctl), 0);
        }
        if (c.connect) {
            // Whatever happened, the statement no longer holds the unit.
            with_unit(11, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
        } else {
            pthread_mutex_lock(&__f90_io_master_lock);
            EXPECT_EQ(__f90_small_unit_pointer_table[11], nullptr);
            pthread_mutex_unlock(&__f90_io_master_lock);
        }
        exit_if_failed();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(r.err, "");
    if (c.file)
        EXPECT_EQ(read_file("fort.11"), c.file);
    else
        EXPECT_FALSE(file_exists("fort.11"));
}

const start_case kStartCases[] = {
    {"writing_not_allowed", true, UNIT_CAN_WRITE, 0, 0, 1028, " first\n"},
    {"direct_access", true, UNIT_SEQUENTIAL, 0, 0, 1005, " first\n"},
    {"stream_access_allowed", true, UNIT_SEQUENTIAL, UNIT_STREAM, 0, 0, " first\n second\n"},
    {"unformatted", true, UNIT_FORMATTED, 0, 0, 1002, " first\n"},
    {"binary_is_not_formatted", true, UNIT_FORMATTED, UNIT_BINARY, 0, 1002, " first\n"},
    // FORM='PRINT' is formatted; list output writes no leading blank on it.
    {"print_form_allowed", true, UNIT_FORMATTED, UNIT_PRINT, 0, 0, " first\nsecond\n"},
    {"asynchronous_on_synchronous_unit", true, 0, 0, IO_ASYNCHRONOUS, 1214, " first\n"},
    {"asynchronous_on_asynchronous_unit", true, 0, UNIT_ASYNC, IO_ASYNCHRONOUS, 0, " first\n second\n"},
    {"asynchronous_on_unconnected_unit", false, 0, 0, IO_ASYNCHRONOUS, 1213, nullptr},
    // The order of the tests: direction, access, form, asynchronous.
    {"direction_before_access", true, UNIT_CAN_WRITE | UNIT_SEQUENTIAL, 0, 0, 1028, " first\n"},
    {"access_before_form", true, UNIT_SEQUENTIAL | UNIT_FORMATTED, 0, 0, 1005, " first\n"},
    {"form_before_asynchronous", true, UNIT_FORMATTED, 0, IO_ASYNCHRONOUS, 1002, " first\n"},
};

INSTANTIATE_TEST_SUITE_P(Cases, StatementStartTest, ::testing::ValuesIn(kStartCases),
                         [](const auto &info) { return std::string(info.param.name); });

struct start_abort_case {
    const char *name;
    bool connect;
    uint32_t unit_clear;
    uint32_t stmt_flags;
    const char *lines;  // after banner
};

void PrintTo(const start_abort_case &c, std::ostream *os) { *os << c.name; }

class StatementStartAbortTest : public InTempDir, public ::testing::WithParamInterface<start_abort_case> {};

TEST_P(StatementStartAbortTest, Report) {
    const start_abort_case &c = GetParam();
    child_result r = run_checked([&] {
        if (c.connect) {
            write_list(11, {ch("first")});
            with_unit(11, [&](unit *up) { up->flags &= ~c.unit_clear; });
        }
        write_list(11, {ch("second")}, c.stmt_flags);
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + c.lines);
    // The report's cleanup wrote out the first statement's record.
    if (c.connect) {
        EXPECT_EQ(read_file("fort.11"), " first\n");
    }
}

const start_abort_case kStartAbortCases[] = {
    {"writing_not_allowed", true, UNIT_CAN_WRITE, 0,
     " Error 1028:  writing not allowed\n"
     " Location:  the WRITE statement at line 20 of \"t.f90\"\n"
     " Unit:  11\n"
     " File:  fort.11\n"},
    {"direct_access", true, UNIT_SEQUENTIAL, 0,
     " Error 1005:  sequential-access I/O on direct-access unit\n"
     " Location:  the WRITE statement at line 20 of \"t.f90\"\n"
     " Unit:  11\n"
     " File:  fort.11\n"},
    // An unconnected unit has no file to name.
    {"asynchronous_on_unconnected_unit", false, 0, IO_ASYNCHRONOUS,
     " Error 1213:  asynchronous I/O on unconnected unit\n"
     " Location:  the WRITE statement at line 20 of \"t.f90\"\n"
     " Unit:  11\n"},
};

INSTANTIATE_TEST_SUITE_P(Cases, StatementStartAbortTest, ::testing::ValuesIn(kStartAbortCases),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- closed standard output

KRM_SCENARIO(print_on_closed_stdout_returning) {
    for (int i = 0; i < 2; ++i) {
        int rc = print_list({ch("x"), i4(1)}, IO_RETURNING);
        fprintf(stderr, "rc=%d depth=%d connected=%d\n", rc, __f90_default_output_unit.lock_depth,
                (__f90_default_output_unit.flags & UNIT_CONNECTED) ? 1 : 0);
    }
}

KRM_SCENARIO(print_on_closed_stdout_abort) { print_list({ch("x")}); }

TEST(ClosedStdoutTest, PrintReturns1052AndReleasesTheUnit) {
    child_options opt;
    opt.close_stdout = true;
    child_result r = run_scenario("print_on_closed_stdout_returning", opt);
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.err, "rc=1052 depth=0 connected=0\nrc=1052 depth=0 connected=0\n");
}

TEST(ClosedStdoutTest, PrintReportHasNoUnitAndNoFileLine) {
    child_options opt;
    opt.close_stdout = true;
    child_result r = run_scenario("print_on_closed_stdout_abort", opt);
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) +
                         " Error 1052:  default output unit closed\n"
                         " Location:  the PRINT statement at line 10 of \"t.f90\"\n");
}

}  // namespace

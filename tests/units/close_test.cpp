// CLOSE end to end: units connected by OPEN or by a first WRITE, closed with
// and without STATUS=, and what is on disk and in the unit tables after.
// Every test runs its statements in a child whose unit tables hold only the
// default records, in a fresh directory.

#include <errno.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

#include "frame/report.h"
#include "support/child.h"
#include "support/files.h"
#include "support/open_close.h"
#include "support/statements.h"
#include "units/units.h"

using namespace krm_test;

namespace {

const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";
const char kCloseLocation[] = " Location:  the CLOSE statement at line 40 of \"t.f90\"\n";

// CLOSE (n, STATUS=text), the status parsed at run time.
int close_with_status(int64_t n, const char *text, uint32_t flags = CLOSE_RETURNING) {
    if (int err = __f90_close_status(&flags, text, static_cast<int32_t>(strlen(text)), &kCloseAt)) return err;
    return close_unit(n, flags);
}

std::string unit_file_name(int64_t n) {
    std::string name;
    with_unit(n, [&](unit *up) { name = up->file_name ? up->file_name : "(null)"; });
    return name;
}

unit *slot(int n) {
    pthread_mutex_lock(&__f90_io_master_lock);
    unit *up = __f90_small_unit_pointer_table[n];
    pthread_mutex_unlock(&__f90_io_master_lock);
    return up;
}

child_options with_env(const std::string &name_value) {
    child_options opt;
    opt.env.push_back(name_value);
    return opt;
}

using Close = InTempDir;

// ---------------------------------------------------------------- units never used

class CloseNeverUsed : public InTempDir, public ::testing::WithParamInterface<int64_t> {};

// Nothing to do: no record is made, no file.
TEST_P(CloseNeverUsed, DoesNothing) {
    const int64_t n = GetParam();
    child_result r = run_checked([&] {
        EXPECT_EQ(close_unit(n), 0);
        EXPECT_FALSE(in_tables(n));
        EXPECT_EQ(close_unit(n, 0), 0);
        EXPECT_EQ(close_with_status(n, "DELETE"), 0);
        EXPECT_EQ(close_with_status(n, "keep"), 0);
        EXPECT_FALSE(in_tables(n));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_FALSE(file_exists("fort." + std::to_string(n)));
}

INSTANTIATE_TEST_SUITE_P(Units, CloseNeverUsed, ::testing::Values(1, 99, 127, 128, 1152, 2147483647),
                         [](const auto &info) { return std::to_string(info.param); });

// A unit in the hashed table whose slot holds other units.
TEST_F(Close, NeverUsedUnitBesideOthersInItsSlot) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(128, "a"), 0);
        ASSERT_EQ(open_file(2176, "c"), 0);
        EXPECT_EQ(close_unit(1152), 0);
        EXPECT_FALSE(in_tables(1152));
        EXPECT_TRUE(in_tables(128));
        EXPECT_TRUE(in_tables(2176));
        EXPECT_EQ(close_unit(128), 0);
        EXPECT_EQ(close_unit(2176), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_FALSE(file_exists("fort.1152"));
}

// ---------------------------------------------------------------- bad unit numbers

struct bad_unit_case {
    const char *name;
    int64_t unit;
    uint32_t flags;
};

void PrintTo(const bad_unit_case &c, std::ostream *os) { *os << c.name; }

class CloseBadUnit : public InTempDir, public ::testing::WithParamInterface<bad_unit_case> {};

TEST_P(CloseBadUnit, Is1001) {
    const bad_unit_case &c = GetParam();
    child_result r = run_checked([&] { EXPECT_EQ(close_unit(c.unit, CLOSE_RETURNING | c.flags), 1001); });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

const bad_unit_case kBadUnits[] = {
    {"minus_1", -1, 0},
    {"two_to_31", 2147483648LL, 0},
    {"high_word", (1LL << 32) + 10, 0},
    {"most_negative", INT64_MIN, 0},
    // In the older dialect unit 0 is no unit.
    {"zero_f77compat", 0, CLOSE_F77COMPAT},
    {"zero_f77_read_compat", 0, CLOSE_F77_READ_COMPAT},
};

INSTANTIATE_TEST_SUITE_P(Units, CloseBadUnit, ::testing::ValuesIn(kBadUnits),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(Close, BadUnitAbortReport) {
    child_result r = run_checked([] { close_unit(-1, 0); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1001:  illegal unit number\n" + kCloseLocation + " Unit:  *\n");
}

// ---------------------------------------------------------------- the status

struct status_case {
    const char *name;
    const char *status;  // STATUS=, or null
    bool kept;
};

void PrintTo(const status_case &c, std::ostream *os) { *os << c.name; }

class CloseStatus : public InTempDir, public ::testing::WithParamInterface<status_case> {};

// What the buffer holds reaches the file, the file stays or goes, and the
// record is destroyed by the release that ends the CLOSE.
TEST_P(CloseStatus, FileAndRecord) {
    const status_case &c = GetParam();
    child_result r = run_checked([&] {
        ASSERT_EQ(open_file(10, "x"), 0);
        EXPECT_EQ(write_list(10, {ch("owed"), i4(10)}), 0);
        EXPECT_EQ(read_file("x"), "");
        // Unit 11 is connected by its first WRITE.
        EXPECT_EQ(write_list(11, {ch("eleven")}), 0);
        EXPECT_EQ(c.status ? close_with_status(10, c.status) : close_unit(10), 0);
        EXPECT_EQ(c.status ? close_with_status(11, c.status) : close_unit(11), 0);
        EXPECT_FALSE(in_tables(10));
        EXPECT_FALSE(in_tables(11));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(file_exists("x"), c.kept);
    EXPECT_EQ(file_exists("fort.11"), c.kept);
    if (c.kept) {
        EXPECT_EQ(read_file("x"), " owed 10\n");
        EXPECT_EQ(read_file("fort.11"), " eleven\n");
    }
}

const status_case kStatuses[] = {
    {"none", nullptr, true},
    {"keep", "KEEP", true},
    {"keep_lower_blanks", "keep   ", true},
    {"delete", "DELETE", false},
    {"delete_mixed", "Delete ", false},
};

INSTANTIATE_TEST_SUITE_P(Statuses, CloseStatus, ::testing::ValuesIn(kStatuses),
                         [](const auto &info) { return std::string(info.param.name); });

// A file removed behind the unit's back cannot be deleted: the system's
// error, except in the older dialect.
TEST_F(Close, DeleteOfVanishedFile) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        ASSERT_EQ(unlink("x"), 0);
        EXPECT_EQ(close_unit(10, CLOSE_RETURNING | CLOSE_STATUS_DELETE), ENOENT);
        EXPECT_FALSE(in_tables(10));
        ASSERT_EQ(open_file(10, "y"), 0);
        ASSERT_EQ(unlink("y"), 0);
        EXPECT_EQ(close_unit(10, CLOSE_RETURNING | CLOSE_STATUS_DELETE | CLOSE_F77COMPAT), 0);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

TEST_F(Close, DeleteOfVanishedFileAbortReport) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        ASSERT_EQ(unlink("x"), 0);
        exit_if_failed();
        close_unit(10, CLOSE_STATUS_DELETE);
    });
    EXPECT_EQ(r.signal, SIGABRT) << r.out;
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 2:  No such file or directory\n" + kCloseLocation +
                         " Unit:  10\n File:  x\n");
}

// Status bits 6 are no status: the file is closed all the same, with what
// its buffer owed, and 1144 comes back.
TEST_F(Close, StatusBits6Is1144) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        EXPECT_EQ(write_list(10, {ch("owed")}), 0);
        EXPECT_EQ(close_unit(10, CLOSE_RETURNING | CLOSE_STATUS_MASK), 1144);
        EXPECT_EQ(read_file("x"), " owed\n");
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_TRUE(file_exists("x"));
}

TEST_F(Close, StatusBits6AbortReport) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        exit_if_failed();
        close_unit(10, CLOSE_STATUS_MASK);
    });
    EXPECT_EQ(r.signal, SIGABRT) << r.out;
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1144:  impossible status value\n" + kCloseLocation +
                         " Unit:  10\n File:  x\n");
}

// ---------------------------------------------------------------- scratch files

using CloseScratch = InTempDir;

TEST_F(CloseScratch, DefaultAndDeleteRemoveIt) {
    child_result r = run_checked(
        [] {
            for (const char *status : {"", "DELETE"}) {
                ASSERT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 0);
                const std::string name = unit_file_name(10);
                EXPECT_EQ(write_list(10, {ch("s")}), 0);
                EXPECT_TRUE(file_exists(name));
                EXPECT_EQ(*status ? close_with_status(10, status) : close_unit(10), 0);
                EXPECT_FALSE(file_exists(name)) << status;
                EXPECT_FALSE(in_tables(10));
            }
        },
        with_env("TMPDIR=."));
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

// KEEP of a scratch file is an error; the file is closed and stays on disk.
TEST_F(CloseScratch, KeepIs1143) {
    child_result r = run_checked(
        [] {
            ASSERT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 0);
            const std::string name = unit_file_name(10);
            EXPECT_EQ(write_list(10, {ch("kept")}), 0);
            EXPECT_EQ(close_with_status(10, "KEEP"), 1143);
            EXPECT_FALSE(in_tables(10));
            EXPECT_EQ(read_file(name), " kept\n");
            printf("%s", name.c_str());
        },
        with_env("TMPDIR=" + dir_));
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_TRUE(file_exists(r.out));
}

TEST_F(CloseScratch, KeepAbortReport) {
    child_result r = run_checked(
        [] {
            ASSERT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 0);
            printf("%s", unit_file_name(10).c_str());
            fflush(stdout);
            exit_if_failed();
            close_with_status(10, "KEEP", 0);
        },
        with_env("TMPDIR=" + dir_));
    EXPECT_EQ(r.signal, SIGABRT) << r.out;
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1143:  status 'KEEP' specified for a scratch file\n" +
                         kCloseLocation + " Unit:  10\n File:  " + r.out + "\n");
}

// The older dialect keeps it, under its generated name.
TEST_F(CloseScratch, KeepUnderDialect) {
    child_result r = run_checked(
        [] {
            ASSERT_EQ(open_unit(10, OPEN_RETURNING | OPEN_STATUS_SCRATCH), 0);
            const std::string name = unit_file_name(10);
            EXPECT_EQ(write_list(10, {ch("kept")}), 0);
            EXPECT_EQ(close_with_status(10, "KEEP", CLOSE_RETURNING | CLOSE_F77COMPAT), 0);
            EXPECT_EQ(read_file(name), " kept\n");
        },
        with_env("TMPDIR=" + dir_));
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

// ---------------------------------------------------------------- open again

TEST_F(Close, SameNumberOpensAgainWithANewRecord) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x", OPEN_RETURNING | OPEN_DELIM_QUOTE | OPEN_BLANK_ZERO), 0);
        EXPECT_EQ(write_list(10, {ch("x")}), 0);
        EXPECT_EQ(close_unit(10), 0);
        EXPECT_FALSE(in_tables(10));
        ASSERT_EQ(open_file(10, "y"), 0);
        with_unit(10, [](unit *up) {
            EXPECT_EQ(up->flags, UNIT_CONNECTED | UNIT_CAN_READ | UNIT_CAN_WRITE | UNIT_REGULAR | UNIT_SEQUENTIAL |
                                     UNIT_FORMATTED | UNIT_BLANK_NULL);
            EXPECT_STREQ(up->file_name, "y");
            EXPECT_EQ(up->buffer, nullptr);
            EXPECT_EQ(up->lock_depth, 1);
        });
        EXPECT_EQ(write_list(10, {ch("y")}), 0);
        EXPECT_EQ(close_unit(10), 0);
        // And implicitly, by a WRITE.
        EXPECT_EQ(write_list(10, {ch("z")}), 0);
        EXPECT_EQ(unit_file_name(10), "fort.10");
        EXPECT_EQ(close_unit(10), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " \"x\"\n");
    EXPECT_EQ(read_file("y"), " y\n");
    EXPECT_EQ(read_file("fort.10"), " z\n");
}

// ---------------------------------------------------------------- default units

class CloseDefaultUnit : public InTempDir, public ::testing::WithParamInterface<int> {};

// CLOSE of 0, 5 or 6 only frees the number: the static record stays
// connected for the '*' statements, and a WRITE on the number connects it
// to fort.N.
TEST_P(CloseDefaultUnit, FreesTheNumber) {
    const int n = GetParam();
    child_result r = run_checked([&] {
        __f90_initio_r();
        unit *const record = slot(n);
        ASSERT_TRUE(is_default_record(record));
        EXPECT_EQ(print_list({ch("before")}), 0);
        EXPECT_EQ(close_unit(n), 0);
        EXPECT_EQ(slot(n), nullptr);
        EXPECT_NE(record->flags & UNIT_CONNECTED, 0u);
        EXPECT_EQ(record->lock_depth, 0);
        EXPECT_EQ(close_unit(n), 0);  // nothing there now
        EXPECT_EQ(print_list({ch("after")}), 0);
        EXPECT_EQ(write_list(n, {ch("to"), i4(n)}), 0);
        EXPECT_NE(slot(n), nullptr);
        EXPECT_FALSE(is_default_record(slot(n)));
        EXPECT_EQ(print_list({ch("still")}), 0);
        EXPECT_EQ(close_unit(n), 0);
        EXPECT_EQ(slot(n), nullptr);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(r.out, " before\n after\n still\n");
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(read_file("fort." + std::to_string(n)), " to " + std::to_string(n) + "\n");
}

INSTANTIATE_TEST_SUITE_P(Units, CloseDefaultUnit, ::testing::Values(0, 5, 6));

// ---------------------------------------------------------------- a unit in use

// CLOSE from a function called in the I/O list of a statement on the same
// unit: 1147, and the outer statement goes on.
TEST_F(Close, UnitHeldBySameThreadIs1147) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        io_control_list_write outer = {0, &kWriteAt, 10, nullptr};
        ASSERT_EQ(__f90_sslw(&outer), 0);
        EXPECT_EQ(__f90_slw_i4(&outer, 1), 0);
        EXPECT_EQ(close_unit(10), 1147);
        EXPECT_EQ(close_unit(10, CLOSE_RETURNING | CLOSE_STATUS_DELETE), 1147);
        EXPECT_EQ(outer.up->lock_depth, 1);
        EXPECT_NE(outer.up->flags & UNIT_CONNECTED, 0u);
        EXPECT_EQ(__f90_slw_i4(&outer, 2), 0);
        EXPECT_EQ(__f90_eslw(&outer), 0);
        EXPECT_EQ(close_unit(10), 0);
        // The same on the default record of unit 6, held by WRITE (6,*).
        io_control_list_write on6 = {0, &kWriteAt, 6, nullptr};
        ASSERT_EQ(__f90_sslw(&on6), 0);
        EXPECT_EQ(close_unit(6), 1147);
        EXPECT_TRUE(is_default_record(slot(6)));
        EXPECT_EQ(__f90_slw_ch(&on6, "six", 3), 0);
        EXPECT_EQ(__f90_eslw(&on6), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " 1 2\n");
    EXPECT_EQ(r.out, " six\n");
}

TEST_F(Close, UnitHeldBySameThreadAbortReport) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        io_control_list_write outer = {0, &kWriteAt, 10, nullptr};
        ASSERT_EQ(__f90_sslw(&outer), 0);
        exit_if_failed();
        close_unit(10, 0);
    });
    EXPECT_EQ(r.signal, SIGABRT) << r.out;
    EXPECT_EQ(r.err, std::string(kBanner) +
                         " Error 1147:  attempting to close a unit that is being read from or written to\n" +
                         kCloseLocation + " Unit:  10\n File:  x\n");
}

// CLOSE waits for another thread's statement on the unit and closes it
// after that statement's end, with its record in the file.
TEST_F(Close, WaitsForAnotherThreadsStatement) {
    child_result r = run_checked([] {
        ASSERT_EQ(open_file(10, "x"), 0);
        io_control_list_write ctl = {0, &kWriteAt, 10, nullptr};
        ASSERT_EQ(__f90_sslw(&ctl), 0);  // this thread holds unit 10
        unit *const up = ctl.up;
        EXPECT_EQ(__f90_slw_ch(&ctl, "held", 4), 0);

        std::atomic<int> closed{-1};
        std::thread closer([&] { closed = close_unit(10); });
        // Until the closer waits on the unit (or, wrongly, is done).
        for (;;) {
            pthread_mutex_lock(&up->mutex);
            const uint32_t waiters = up->waiters;
            pthread_mutex_unlock(&up->mutex);
            if (waiters == 1 || closed.load() != -1) break;
            sched_yield();
        }
        EXPECT_EQ(closed.load(), -1);
        EXPECT_EQ(__f90_slw_i4(&ctl, 10), 0);
        EXPECT_EQ(__f90_eslw(&ctl), 0);
        closer.join();
        EXPECT_EQ(closed.load(), 0);
        EXPECT_FALSE(in_tables(10));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("x"), " held 10\n");
}

}  // namespace

// STOP as the user sees it (exit status, the line on standard error), and the
// cleanup that runs on every way out: unit buffers reach their files, scratch
// files go away, a unit another thread holds is not waited for.

#include <gtest/gtest.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "frame/report.h"
#include "krm.h"
#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"
#include "units/unit_tables.h"

using namespace krm_test;

namespace {

// ---------------------------------------------------------------- the forms of STOP

struct stop_case {
    const char *name;
    std::function<void()> stop;
    int exit_code;
    const char *err;  // all of standard error
};

void PrintTo(const stop_case &c, std::ostream *os) { *os << c.name; }

class StopFormTest : public ::testing::TestWithParam<stop_case> {};

TEST_P(StopFormTest, StatusAndLine) {
    const stop_case &c = GetParam();
    child_result r = run_forked([&] {
        c.stop();
        _exit(77);  // STOP did return
    });
    EXPECT_EQ(r.signal, 0);
    EXPECT_EQ(r.exit_code, c.exit_code);
    EXPECT_EQ(r.err, c.err);
    EXPECT_EQ(r.out, "");
}

const int32_t kThree = 3;
const int32_t kZero = 0;
const int32_t kMinusFive = -5;
const int32_t k258 = 258;
// Not terminated: the length alone says where the text ends.
const char kStopText[] = {'d', 'o', 'n', 'e', '!', '!'};

const stop_case kStopCases[] = {
    {"plain", [] { __f90_stop(); }, 0, ""},
    {"int_passes_value", [] { __f90_stop_int(&kThree); }, 3, "STOP: 3\n"},
    {"int_zero", [] { __f90_stop_int(&kZero); }, 0, "STOP: 0\n"},
    // The shell sees the low eight bits of what exit() is given.
    {"int_above_255", [] { __f90_stop_int(&k258); }, 2, "STOP: 258\n"},
    {"nostatus_exits_0", [] { __f90_stop_nostatus(&kThree); }, 0, "STOP: 3\n"},
    {"nostatus_negative", [] { __f90_stop_nostatus(&kMinusFive); }, 0, "STOP: -5\n"},
    {"char", [] { __f90_stop_char("x", 1); }, 0, "STOP: x\n"},
    {"char_length_cuts", [] { __f90_stop_char(kStopText, 4); }, 0, "STOP: done\n"},
    {"char_whole_unterminated", [] { __f90_stop_char(kStopText, 6); }, 0, "STOP: done!!\n"},
    {"char_empty", [] { __f90_stop_char(kStopText, 0); }, 0, "STOP: \n"},
};

INSTANTIATE_TEST_SUITE_P(Forms, StopFormTest, ::testing::ValuesIn(kStopCases),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- buffers at STOP

class StopWritesUnits : public InTempDir {};

// Units 10 (small table), 200 (hashed slot) and 1224 (same slot as 200, so
// one of them sits in the slot's chain): every kind of place is visited.
TEST_F(StopWritesUnits, BufferedRecordsReachTheirFiles) {
    child_result r = run_forked([] {
        EXPECT_EQ(write_list(10, {ch("ten")}, IO_RETURNING), 0);
        EXPECT_EQ(write_list(200, {ch("two hundred")}, IO_RETURNING), 0);
        EXPECT_EQ(write_list(1224, {ch("chained")}, IO_RETURNING), 0);
        EXPECT_EQ(write_list(10, {ch("ten again")}, IO_RETURNING), 0);
        // Still in the buffers: nothing has gone to the files yet.
        EXPECT_EQ(read_file("fort.10"), "");
        EXPECT_EQ(read_file("fort.200"), "");
        EXPECT_EQ(read_file("fort.1224"), "");
        exit_if_failed();
        const int32_t code = 4;
        __f90_stop_int(&code);
    });
    EXPECT_EQ(r.exit_code, 4) << r.out;
    EXPECT_EQ(r.err, "STOP: 4\n");
    EXPECT_EQ(read_file("fort.10"), " ten\n ten again\n");
    EXPECT_EQ(read_file("fort.200"), " two hundred\n");
    EXPECT_EQ(read_file("fort.1224"), " chained\n");
}

// The records are in the file before the STOP line is written.
TEST_F(StopWritesUnits, FilesAreWrittenBeforeTheStopLine) {
    child_result r = run_forked([] {
        EXPECT_EQ(write_list(10, {ch("first")}, IO_RETURNING), 0);
        exit_if_failed();
        // Standard error appends to fort.10: the STOP line follows the
        // record only if the record was written first.
        int fd = open("fort.10", O_WRONLY | O_APPEND);
        dup2(fd, 2);
        close(fd);
        __f90_stop_char("end", 3);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out;
    EXPECT_EQ(read_file("fort.10"), " first\nSTOP: end\n");
}

// ---------------------------------------------------------------- scratch files

class CleanupTest : public InTempDir {};

// What OPEN(STATUS='SCRATCH') would leave: unit 12 connected, with a buffer
// that holds a record, marked scratch.
void make_scratch_unit_12() {
    ASSERT_EQ(write_list(12, {ch("scratch data")}, IO_RETURNING), 0);
    with_unit(12, [](unit *up) { up->flags |= UNIT_SCRATCH; });
    ASSERT_TRUE(file_exists("fort.12"));
    ASSERT_EQ(read_file("fort.12"), "");
}

TEST_F(CleanupTest, ScratchFileIsRemovedAndItsBufferDropped) {
    child_result r = run_checked([] {
        make_scratch_unit_12();
        // Keeps the file itself in view after its name is gone.
        int fd = open("fort.12", O_RDONLY);
        ASSERT_GE(fd, 0);
        __f90_cleanup();
        EXPECT_FALSE(file_exists("fort.12"));
        struct stat st;
        ASSERT_EQ(fstat(fd, &st), 0);
        EXPECT_EQ(st.st_size, 0) << "the scratch buffer was written";
        close(fd);
        with_unit(12, [](unit *up) {
            EXPECT_NE(up->flags & UNIT_CONNECTED, 0u);
            EXPECT_EQ(up->file_name, nullptr);
        });
        // A second cleanup finds nothing to remove and does no harm.
        __f90_cleanup();
    });
    EXPECT_EQ(r.exit_code, 0) << r.out;
    EXPECT_EQ(r.err, "");
}

TEST_F(CleanupTest, FlushAllWritesScratchBufferAndKeepsTheFile) {
    child_result r = run_checked([] {
        make_scratch_unit_12();
        __f90_flush_all();
        EXPECT_TRUE(file_exists("fort.12"));
        EXPECT_EQ(read_file("fort.12"), " scratch data\n");
        with_unit(12, [](unit *up) { EXPECT_NE(up->file_name, nullptr); });
        // Cleanup still removes it afterwards.
        __f90_cleanup();
        EXPECT_FALSE(file_exists("fort.12"));
    });
    EXPECT_EQ(r.exit_code, 0) << r.out;
    EXPECT_EQ(r.err, "");
}

// ---------------------------------------------------------------- held units

TEST_F(CleanupTest, UnitHeldByThisThreadIsWritten) {
    child_result r = run_checked([] {
        ASSERT_EQ(write_list(13, {ch("mine")}, IO_RETURNING), 0);
        with_unit(13, [](unit *up) {
            int depth = up->lock_depth;
            __f90_cleanup();
            EXPECT_EQ(read_file("fort.13"), " mine\n");
            EXPECT_EQ(up->lock_depth, depth);
        });
    });
    EXPECT_EQ(r.exit_code, 0) << r.out;
}

TEST_F(CleanupTest, UnitHeldByAnotherThreadIsSkippedWithoutWaiting) {
    child_result r = run_checked([] {
        ASSERT_EQ(write_list(14, {ch("theirs")}, IO_RETURNING), 0);
        ASSERT_EQ(write_list(15, {ch("free")}, IO_RETURNING), 0);
        std::mutex m;
        std::condition_variable cv;
        bool held = false, done = false;
        std::thread holder([&] {
            with_unit(14, [&](unit *) {
                std::unique_lock<std::mutex> lk(m);
                held = true;
                cv.notify_all();
                cv.wait(lk, [&] { return done; });
            });
        });
        {
            std::unique_lock<std::mutex> lk(m);
            cv.wait(lk, [&] { return held; });
        }
        // Would never return if cleanup waited for unit 14.
        __f90_cleanup();
        EXPECT_EQ(read_file("fort.14"), "");
        EXPECT_EQ(read_file("fort.15"), " free\n");
        {
            std::lock_guard<std::mutex> lk(m);
            done = true;
        }
        cv.notify_all();
        holder.join();
        __f90_cleanup();
        EXPECT_EQ(read_file("fort.14"), " theirs\n");
    });
    EXPECT_EQ(r.exit_code, 0) << r.out;
}

// ---------------------------------------------------------------- before any I/O

// A fresh process in which no statement has run: cleanup must not set up the
// units, only flush the streams. _exit afterwards skips exit's own flush, so
// whatever appears was flushed by cleanup.
KRM_SCENARIO(cleanup_before_any_io) {
    printf("no newline");
    FILE *own = fopen("own.txt", "w");
    if (!own) _exit(3);
    fputs("own stream", own);
    if (__f90_initio_done != 0) _exit(4);
    int rc = __f90_cleanup();
    if (rc != 0) _exit(5);
    if (__f90_initio_done != 0) _exit(6);
    _exit(0);
}

TEST_F(CleanupTest, BeforeAnyIoOnlyFlushesTheStreams) {
    child_result r = run_scenario("cleanup_before_any_io");
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.out, "no newline");
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(read_file("own.txt"), "own stream");
}

}  // namespace

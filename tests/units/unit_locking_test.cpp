// A statement holds its unit from start call to end call: a nested statement
// of the same thread goes ahead, statements of other threads wait, and no
// record is lost or torn apart.

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "frame/report.h"
#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"
#include "units/units.h"

using namespace krm_test;

namespace {

// ---------------------------------------------------------------- nested statement

struct nested_case {
    const char *name;
    bool connected_before;  // unit 11 already connected when the outer statement starts
    uint32_t flags;
};

void PrintTo(const nested_case &c, std::ostream *os) { *os << c.name; }

class NestedStatementTest : public InTempDir, public ::testing::WithParamInterface<nested_case> {};

// A function in the outer list writes to the same unit: its statement runs
// inside the outer one, and the outer list-directed end call doesn't object.
TEST_P(NestedStatementTest, InnerRunsAndOuterEnds) {
    const nested_case &c = GetParam();
    child_result r = run_checked([&] {
        if (c.connected_before) {
            ASSERT_EQ(write_list(11, {ch("before")}), 0);
        }

        io_control_list_write outer = {c.flags, &kWriteAt, 11, nullptr};
        ASSERT_EQ(__f90_sslw(&outer), 0);
        unit *up = outer.up;
        ASSERT_NE(up, nullptr);
        ASSERT_EQ(__f90_slw_i4(&outer, 1), 0);
        EXPECT_EQ(up->lock_depth, 1);
        EXPECT_EQ(up->flags & UNIT_NESTED, 0u);

        io_control_list_write inner = {c.flags, &kWriteAt, 11, nullptr};
        ASSERT_EQ(__f90_sslw(&inner), 0);
        EXPECT_EQ(inner.up, up);
        EXPECT_EQ(up->lock_depth, 2);
        EXPECT_EQ(__f90_slw_i4(&inner, 2), 0);
        EXPECT_EQ(__f90_eslw(&inner), 0);
        EXPECT_EQ(up->lock_depth, 1);
        EXPECT_NE(up->flags & UNIT_NESTED, 0u);

        EXPECT_EQ(__f90_slw_i4(&outer, 3), 0);
        EXPECT_EQ(__f90_eslw(&outer), 0);
        EXPECT_EQ(up->lock_depth, 0);
        EXPECT_EQ(up->flags & UNIT_NESTED, 0u);
        exit_if_failed();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(r.err, "");
    // The inner statement continues the open record and ends it; the outer
    // one's next item starts a record of its own, with its separator blank.
    EXPECT_EQ(read_file("fort.11"), std::string(c.connected_before ? " before\n" : "") + " 12\n 3\n");
}

const nested_case kNestedCases[] = {
    {"connected_by_outer", false, 0},
    {"already_connected", true, 0},
    {"returning", true, IO_RETURNING},
};

INSTANTIATE_TEST_SUITE_P(Cases, NestedStatementTest, ::testing::ValuesIn(kNestedCases),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- threads

using HeldUnit = InTempDir;

// A statement of another thread on a unit in the middle of a statement waits
// for its end call: the open record is finished first, whole.
TEST_F(HeldUnit, OtherThreadWaitsForTheEndCall) {
    child_result r = run_checked([] {
        ASSERT_EQ(write_list(11, {ch("first")}), 0);
        io_control_list_write ctl = {0, &kWriteAt, 11, nullptr};
        ASSERT_EQ(__f90_sslw(&ctl), 0);
        ASSERT_EQ(__f90_slw_i4(&ctl, 1), 0);
        unit *up = ctl.up;

        std::atomic<bool> other_done{false};
        std::atomic<int> other_result{-1};
        std::thread other([&] {
            other_result = write_list(11, {i4(2)}, IO_RETURNING);
            other_done = true;
        });
        // Until the other thread is blocked on the unit (or, wrongly, got through).
        for (;;) {
            pthread_mutex_lock(&up->mutex);
            uint32_t w = up->waiters;
            pthread_mutex_unlock(&up->mutex);
            if (w == 1 || other_done) break;
            std::this_thread::yield();
        }
        EXPECT_FALSE(other_done) << "a statement ran on a unit another thread holds";
        EXPECT_EQ(__f90_slw_i4(&ctl, 3), 0);
        EXPECT_EQ(__f90_eslw(&ctl), 0);
        other.join();
        EXPECT_EQ(other_result.load(), 0);
        exit_if_failed();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
    EXPECT_EQ(read_file("fort.11"), " first\n 1 3\n 2\n");
}

constexpr int kThreads = 4;
constexpr int kStatements = 20000;  // enough for the threads' statements to overlap
constexpr int64_t kSharedUnit = 40;
constexpr int64_t kFirstOwnUnit = 41;  // thread t writes to unit 41 + t

struct threads_case {
    const char *name;
    bool shared;    // all threads on one unit, else one unit each
    bool by_stop;   // bytes reach the files by STOP, else by a flush of all units
};

void PrintTo(const threads_case &c, std::ostream *os) { *os << c.name; }

class ThreadedWriteTest : public InTempDir, public ::testing::WithParamInterface<threads_case> {};

// Every record " t s": checks that each is whole and that the records of a
// thread come in its order with none missing. Returns the count per thread.
std::map<int, int> check_records(const std::string &bytes, const std::string &file) {
    std::map<int, int> next;
    std::istringstream in(bytes);
    std::string line;
    int n = 0;
    while (std::getline(in, line)) {
        ++n;
        int t = -1, s = -1;
        char tail = 0;
        const bool parsed = sscanf(line.c_str(), " %d %d%c", &t, &s, &tail) == 2;
        EXPECT_TRUE(parsed && t >= 0 && t < kThreads && line == " " + std::to_string(t) + " " + std::to_string(s))
            << file << " line " << n << ": '" << line << "'";
        if (!parsed || t < 0 || t >= kThreads) continue;
        EXPECT_EQ(s, next[t]) << file << " line " << n << ": thread " << t << " out of order";
        next[t] = s + 1;
    }
    EXPECT_TRUE(bytes.empty() || bytes.back() == '\n') << file << ": last record unfinished";
    return next;
}

TEST_P(ThreadedWriteTest, EveryRecordWholeNoneLost) {
    const threads_case &c = GetParam();
    child_result r = run_checked([&] {
        std::atomic<int> failures{0};
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                const int64_t u = c.shared ? kSharedUnit : kFirstOwnUnit + t;
                // All start together, so that their statements overlap.
                ++ready;
                while (ready.load() < kThreads) std::this_thread::yield();
                for (int s = 0; s < kStatements; ++s)
                    if (write_list(u, {i4(t), i4(s)}, IO_RETURNING) != 0) ++failures;
            });
        }
        for (std::thread &th : threads) th.join();
        EXPECT_EQ(failures.load(), 0);
        exit_if_failed();
        if (c.by_stop) __f90_stop();
        EXPECT_EQ(__f90_flush_all(), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;

    if (c.shared) {
        std::map<int, int> counts = check_records(read_file("fort.40"), "fort.40");
        for (int t = 0; t < kThreads; ++t) EXPECT_EQ(counts[t], kStatements) << "thread " << t;
    } else {
        for (int t = 0; t < kThreads; ++t) {
            const std::string name = "fort." + std::to_string(kFirstOwnUnit + t);
            std::map<int, int> counts = check_records(read_file(name), name);
            EXPECT_EQ(counts.size(), 1u) << name;
            EXPECT_EQ(counts[t], kStatements) << name;
        }
    }
}

const threads_case kThreadsCases[] = {
    {"one_unit_flush_all", true, false},
    {"one_unit_stop", true, true},
    {"own_units_flush_all", false, false},
    {"own_units_stop", false, true},
};

INSTANTIATE_TEST_SUITE_P(Cases, ThreadedWriteTest, ::testing::ValuesIn(kThreadsCases),
                         [](const auto &info) { return std::string(info.param.name); });

}  // namespace

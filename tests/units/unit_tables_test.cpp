// Where unit records live: the small table below 128, the hashed table and
// its chains from 128 up; holding a record recursively, and removing an
// unconnected record when its last hold ends. Every test runs in a child so
// that the tables it leaves behind do not meet the next test.

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "support/child.h"
#include "support/statements.h"
#include "units/units.h"

using namespace krm_test;

namespace {

const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";

// Every record the tables hold for unit n, wherever it stands; the static
// default records aside.
std::vector<unit *> records_of(int64_t n) {
    std::vector<unit *> found;
    pthread_mutex_lock(&__f90_io_master_lock);
    for (unit *up : __f90_small_unit_pointer_table)
        if (up && !is_default_record(up) && up->unit_number == n) found.push_back(up);
    for (int slot = 0; slot < HASHED_UNIT_SLOTS; ++slot) {
        unit *head = __f90_unit_pointer_table[slot];
        if (head && head->unit_number == n) found.push_back(head);
        for (collision_cell *c = __f90_unit_collision_table[slot]; c; c = c->next)
            if (c->u && c->u->unit_number == n) found.push_back(c->u);
    }
    pthread_mutex_unlock(&__f90_io_master_lock);
    return found;
}

// The records on a hashed slot's chain, first cell first (null for an empty cell).
std::vector<unit *> chain_of(int slot) {
    std::vector<unit *> cells;
    for (collision_cell *c = __f90_unit_collision_table[slot]; c; c = c->next) cells.push_back(c->u);
    return cells;
}

unit *hold(int64_t n) {
    unit *up = nullptr;
    EXPECT_EQ(__f90_get_numbered_unit_r(&up, n), 0) << n;
    return up;
}

// ---------------------------------------------------------------- placement

struct placement_case {
    int64_t number;
    bool small;  // in the small table, else at slot number AND 0x3ff of the hashed one
};

class UnitPlacementTest : public ::testing::TestWithParam<placement_case> {};

TEST_P(UnitPlacementTest, HeldFoundAgainAndRemovedOnLastRelease) {
    const placement_case c = GetParam();
    child_result r = run_checked([&] {
        unit *up = hold(c.number);
        ASSERT_NE(up, nullptr);
        EXPECT_EQ(up->unit_number, c.number);
        EXPECT_EQ(up->lock_depth, 1);
        EXPECT_TRUE(pthread_equal(up->owner, pthread_self()));
        EXPECT_EQ(up->flags, 0u);
        EXPECT_EQ(up->buffer, nullptr);
        EXPECT_EQ(records_of(c.number), std::vector<unit *>{up});
        const int slot = static_cast<int>(c.number & HASH_MASK);
        if (c.small) {
            EXPECT_EQ(__f90_small_unit_pointer_table[c.number], up);
        } else {
            EXPECT_EQ(__f90_unit_pointer_table[slot], up);
        }

        // The same thread again: the same record, one hold deeper.
        EXPECT_EQ(hold(c.number), up);
        EXPECT_EQ(up->lock_depth, 2);

        __f90_release_unit(up);
        EXPECT_EQ(up->lock_depth, 1);
        EXPECT_NE(up->flags & UNIT_NESTED, 0u);
        EXPECT_EQ(records_of(c.number), std::vector<unit *>{up});

        __f90_release_unit(up);  // unconnected and unwanted: gone
        EXPECT_TRUE(records_of(c.number).empty());
        if (c.small)
            EXPECT_EQ(__f90_small_unit_pointer_table[c.number], nullptr);
        else
            EXPECT_EQ(__f90_unit_pointer_table[slot], nullptr);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

const placement_case kPlacementCases[] = {
    {1, true},    {11, true},   {127, true},        {128, false},
    {1023, false}, {1024, false}, {1152, false}, {2147483647, false},
};

INSTANTIATE_TEST_SUITE_P(Units, UnitPlacementTest, ::testing::ValuesIn(kPlacementCases),
                         [](const auto &info) { return std::to_string(info.param.number); });

// ---------------------------------------------------------------- one slot, two units

class SharedSlotTest : public ::testing::TestWithParam<bool> {};

// 1152 is 128 + 1024: both hash to slot 128, the newer record heads the slot
// and the older one moves to the chain.
TEST_P(SharedSlotTest, ChainKeepsTheOlderRecord) {
    const bool release_newer_first = GetParam();
    child_result r = run_checked([&] {
        const int slot = 128;
        ASSERT_EQ(__f90_unit_pointer_table[slot], nullptr);
        ASSERT_EQ(__f90_unit_collision_table[slot], nullptr);

        unit *u128 = hold(128);
        EXPECT_EQ(__f90_unit_pointer_table[slot], u128);
        // The empty head it displaced went on the chain as an empty cell.
        EXPECT_EQ(chain_of(slot), std::vector<unit *>{nullptr});

        unit *u1152 = hold(1152);
        ASSERT_NE(u1152, u128);
        EXPECT_EQ(__f90_unit_pointer_table[slot], u1152);
        EXPECT_EQ(chain_of(slot), (std::vector<unit *>{u128, nullptr}));
        EXPECT_EQ(records_of(128), std::vector<unit *>{u128});
        EXPECT_EQ(records_of(1152), std::vector<unit *>{u1152});

        // Looked up again: the head for 1152, through the chain for 128.
        EXPECT_EQ(hold(128), u128);
        EXPECT_EQ(hold(1152), u1152);
        EXPECT_EQ(u128->lock_depth, 2);
        EXPECT_EQ(u1152->lock_depth, 2);
        EXPECT_EQ(u128->unit_number, 128);
        EXPECT_EQ(u1152->unit_number, 1152);

        unit *first = release_newer_first ? u1152 : u128;
        unit *second = release_newer_first ? u128 : u1152;
        const int64_t first_no = first->unit_number, second_no = second->unit_number;
        __f90_release_unit(first);
        __f90_release_unit(first);
        EXPECT_TRUE(records_of(first_no).empty());
        EXPECT_EQ(records_of(second_no), std::vector<unit *>{second});
        // The survivor is still found, as the same record.
        EXPECT_EQ(hold(second_no), second);
        __f90_release_unit(second);

        __f90_release_unit(second);
        __f90_release_unit(second);
        EXPECT_TRUE(records_of(second_no).empty());
        EXPECT_EQ(__f90_unit_pointer_table[slot], nullptr);
        EXPECT_EQ(__f90_unit_collision_table[slot], nullptr);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

INSTANTIATE_TEST_SUITE_P(ReleaseOrder, SharedSlotTest, ::testing::Bool(),
                         [](const auto &info) { return info.param ? "newer_first" : "older_first"; });

// A record made after an older one of its slot was removed takes the head
// again and is found.
TEST(SharedSlotTest, SlotReusedAfterRemoval) {
    child_result r = run_checked([] {
        unit *a = hold(2176);  // 128 + 2 * 1024
        unit *b = hold(128);
        __f90_release_unit(a);
        EXPECT_TRUE(records_of(2176).empty());
        unit *c = hold(1152);
        EXPECT_EQ(hold(128), b);
        EXPECT_EQ(hold(1152), c);
        EXPECT_EQ(records_of(128), std::vector<unit *>{b});
        EXPECT_EQ(records_of(1152), std::vector<unit *>{c});
        for (int i = 0; i < 2; ++i) {
            __f90_release_unit(b);
            __f90_release_unit(c);
        }
        EXPECT_TRUE(records_of(128).empty());
        EXPECT_TRUE(records_of(1152).empty());
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

// ---------------------------------------------------------------- a waiting thread

// A release that finds a waiter hands the record over instead of destroying it.
TEST(UnitWaiterTest, ReleaseWithWaiterKeepsTheRecord) {
    child_result r = run_checked([] {
        unit *up = hold(300);
        unit *seen_by_waiter = nullptr;
        int32_t depth_in_waiter = 0;
        bool waiter_owned = false;
        std::atomic<bool> waiter_done{false};
        std::thread waiter([&] {
            unit *p = nullptr;
            if (__f90_get_numbered_unit_r(&p, 300) == 0) {
                seen_by_waiter = p;
                depth_in_waiter = p->lock_depth;
                waiter_owned = pthread_equal(p->owner, pthread_self());
                __f90_release_unit(p);
            }
            waiter_done = true;
        });
        // Until the other thread is blocked on the record (or, wrongly, got it).
        for (;;) {
            pthread_mutex_lock(&up->mutex);
            uint32_t w = up->waiters;
            pthread_mutex_unlock(&up->mutex);
            if (w == 1 || waiter_done) break;
            sched_yield();
        }
        EXPECT_FALSE(waiter_done) << "the record was taken while held by another thread";
        EXPECT_EQ(up->lock_depth, 1);
        __f90_release_unit(up);
        waiter.join();
        EXPECT_EQ(seen_by_waiter, up);
        EXPECT_EQ(depth_in_waiter, 1);
        EXPECT_TRUE(waiter_owned);
        EXPECT_TRUE(records_of(300).empty());
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

// ---------------------------------------------------------------- unit numbers out of range

class BadUnitNumberTest : public ::testing::TestWithParam<int64_t> {};

TEST_P(BadUnitNumberTest, ReturnFormGives1001AndMakesNoRecord) {
    const int64_t n = GetParam();
    child_result r = run_checked([&] {
        unit *up = nullptr;
        EXPECT_EQ(__f90_get_numbered_unit_r(&up, n), 1001);
        EXPECT_EQ(up, nullptr);
        // The low word alone must not be taken for a unit number.
        EXPECT_TRUE(records_of(static_cast<int32_t>(n)).empty());
        EXPECT_TRUE(records_of(n & 0xffffffff).empty());

        io_control_list_write ctl = {IO_RETURNING, &kWriteAt, n, nullptr};
        EXPECT_EQ(__f90_sslw(&ctl), 1001);
        EXPECT_TRUE(records_of(n & 0xffffffff).empty());
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

INSTANTIATE_TEST_SUITE_P(Numbers, BadUnitNumberTest,
                         ::testing::Values(-1, INT64_MIN, 2147483648LL, 4294967307LL /* 2^32 + 11 */,
                                           -4294967285LL /* low word 11 */),
                         [](const auto &info) {
                             const int64_t n = info.param;
                             if (n >= 0) return std::to_string(n);
                             return "minus_" + std::to_string(static_cast<uint64_t>(-(n + 1)) + 1);
                         });

struct abort_1001_case {
    const char *name;
    int64_t number;
    enum how { lookup_a, lookup_f, statement } via;
    const char *unit_line;
};

void PrintTo(const abort_1001_case &c, std::ostream *os) { *os << c.name; }

class Abort1001Test : public ::testing::TestWithParam<abort_1001_case> {};

TEST_P(Abort1001Test, BannerMessageLocationUnit) {
    const abort_1001_case &c = GetParam();
    child_result r = run_checked([&] {
        unit *up = nullptr;
        switch (c.via) {
            case abort_1001_case::lookup_a: __f90_get_numbered_unit_a(&up, c.number, &kWriteAt); break;
            case abort_1001_case::lookup_f: __f90_get_numbered_unit_f(&up, c.number, &kWriteAt); break;
            case abort_1001_case::statement: {
                io_control_list_write ctl = {0, &kWriteAt, c.number, nullptr};
                __f90_sslw(&ctl);
                break;
            }
        }
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) +
                         " Error 1001:  illegal unit number\n"
                         " Location:  the WRITE statement at line 20 of \"t.f90\"\n" +
                         c.unit_line);
}

const abort_1001_case kAbort1001Cases[] = {
    {"minus_one_lookup", -1, abort_1001_case::lookup_a, " Unit:  *\n"},
    {"minus_one_outside_caller", -1, abort_1001_case::lookup_f, " Unit:  *\n"},
    {"minus_one_statement", -1, abort_1001_case::statement, " Unit:  *\n"},
    {"two_to_31_lookup", 2147483648LL, abort_1001_case::lookup_a, " Unit:  2147483648\n"},
    {"two_to_31_statement", 2147483648LL, abort_1001_case::statement, " Unit:  2147483648\n"},
};

INSTANTIATE_TEST_SUITE_P(Cases, Abort1001Test, ::testing::ValuesIn(kAbort1001Cases),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(OutsideCallerTest, GetNumberedUnitReturnsTheCell) {
    child_result r = run_checked([] {
        unit *up = nullptr;
        EXPECT_EQ(__f90_get_numbered_unit_f(&up, 131, &kWriteAt), &up);
        ASSERT_NE(up, nullptr);
        EXPECT_EQ(up->unit_number, 131);
        EXPECT_EQ(records_of(131), std::vector<unit *>{up});
        __f90_release_unit(up);
        EXPECT_TRUE(records_of(131).empty());
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

}  // namespace

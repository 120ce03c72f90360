// The start-up entries: what they keep (command line, start time), that a
// repeated start-up harms nothing, and the entries that do less. Cases that
// depend on the state at load run in a fresh process and print what they
// found; the parent compares the whole text.

#include <gtest/gtest.h>
#include <stdio.h>

#include <string>

#include "frame/program_state.h"
#include "krm.h"
#include "platform/clock.h"
#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"
#include "units/unit_tables.h"

using namespace krm_test;

namespace {

// Whether the start time was taken between the two readings around a call.
int taken_between(int64_t before, int64_t after) {
    return before <= __f90_start_time && __f90_start_time <= after;
}

void print_command_line() {
    printf("argc=%d argv=", __xargc);
    if (!__xargv) {
        printf("null");
    } else {
        for (int i = 0; __xargv[i]; ++i) printf("%s%s", i ? "," : "", __xargv[i]);
    }
}

// ---------------------------------------------------------------- __f90_init twice

KRM_SCENARIO(init_twice) {
    static char a0[] = "first", b0[] = "second", b1[] = "arg";
    static char *argv_a[] = {a0, nullptr};
    static char *argv_b[] = {b0, b1, nullptr};

    int64_t before = gethrtime();
    __f90_init(1, argv_a);
    int64_t after = gethrtime();
    print_command_line();
    printf(" same_vector=%d time_taken=%d\n", __xargv == argv_a, taken_between(before, after));
    int64_t first_time = __f90_start_time;
    if (write_list(16, {ch("one")}, IO_RETURNING) != 0) _exit(3);

    before = gethrtime();
    __f90_init(2, argv_b);
    after = gethrtime();
    print_command_line();
    printf(" same_vector=%d time_taken=%d not_earlier=%d\n", __xargv == argv_b, taken_between(before, after),
           __f90_start_time >= first_time);
    // The unit connected before the second start-up still holds its record.
    if (write_list(16, {ch("two")}, IO_RETURNING) != 0) _exit(4);
    if (print_list({ch("printed")}, IO_RETURNING) != 0) _exit(5);
    __f90_stop();
}

class StartUp : public InTempDir {};

TEST_F(StartUp, InitTwiceDoesNoHarm) {
    child_result r = run_scenario("init_twice");
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out,
              "argc=1 argv=first same_vector=1 time_taken=1\n"
              "argc=2 argv=second,arg same_vector=1 time_taken=1 not_earlier=1\n"
              " printed\n");
    EXPECT_EQ(read_file("fort.16"), " one\n two\n");
}

// ---------------------------------------------------------------- entries without arguments

KRM_SCENARIO(f_init_fresh) {
    int64_t before = gethrtime();
    __f_init();
    int64_t after = gethrtime();
    print_command_line();
    printf(" initio=%d time_taken=%d\n", __f90_initio_done, taken_between(before, after));
}

TEST(StartUpWithoutArguments, FInitSetsUpButKeepsNoCommandLine) {
    child_result r = run_scenario("f_init_fresh");
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out, "argc=0 argv=null initio=1 time_taken=1\n");
}

KRM_SCENARIO(f90_init_fresh) {
    f90_init();
    f_exit();
    print_command_line();
    printf(" initio=%d start_time=%lld\n", __f90_initio_done, static_cast<long long>(__f90_start_time));
}

TEST(StartUpWithoutArguments, F90InitAndFExitDoNothing) {
    child_result r = run_scenario("f90_init_fresh");
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out, "argc=0 argv=null initio=0 start_time=0\n");
}

struct no_argument_case {
    const char *name;
    void (*entry)(void);
};

void PrintTo(const no_argument_case &c, std::ostream *os) { *os << c.name; }

class StartUpAgain : public ::testing::TestWithParam<no_argument_case> {};

// After __f90_init, the entries without arguments leave the command line
// alone and take the start time again.
TEST_P(StartUpAgain, KeepsCommandLineAndRetakesTime) {
    const no_argument_case &c = GetParam();
    child_result r = run_checked([&] {
        static char p0[] = "prog", p1[] = "-x";
        static char *argv[] = {p0, p1, nullptr};
        __f90_init(2, argv);
        int64_t first_time = __f90_start_time;
        int64_t before = gethrtime();
        c.entry();
        int64_t after = gethrtime();
        EXPECT_EQ(__xargc, 2);
        EXPECT_EQ(__xargv, argv);
        EXPECT_TRUE(taken_between(before, after));
        EXPECT_GE(__f90_start_time, first_time);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out;
}

const no_argument_case kNoArgumentCases[] = {
    {"__f_init", __f_init},
    {"f_init", f_init},
};

INSTANTIATE_TEST_SUITE_P(Entries, StartUpAgain, ::testing::ValuesIn(kNoArgumentCases),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- delayed truncation

KRM_SCENARIO(delay_ftruncate_flag) {
    int before = __f90_io_delay_ftrunc;
    int *flag = __f90_io_delay_ftruncate();
    int *again = __f90_io_delay_ftruncate();
    printf("before=%d value=%d is_flag=%d same=%d\n", before, *flag, flag == &__f90_io_delay_ftrunc,
           again == flag);
}

TEST(StartUpDelayFtruncate, ReturnsTheFlagNowSet) {
    child_result r = run_scenario("delay_ftruncate_flag");
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.out, "before=0 value=1 is_flag=1 same=1\n");
}

}  // namespace

// Reports of checked code: each is exact to the byte, and each aborts.

#include <gtest/gtest.h>

#include <signal.h>

#include <functional>

#include "krm.h"
#include "support/child.h"

using namespace krm_test;

namespace {

const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";

struct report_case {
    const char *name;
    std::function<void()> call;
    const char *lines;  // after the banner
};
void PrintTo(const report_case &c, std::ostream *os) { *os << c.name; }

class CheckedCodeReport : public ::testing::TestWithParam<report_case> {};

TEST_P(CheckedCodeReport, WritesExactLinesAndAborts) {
    const report_case &c = GetParam();
    child_result r = run_forked(c.call);
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + c.lines);
    EXPECT_EQ(r.out, "");
}

const report_case kReports[] = {
    {"subscript_location_on_message_line", [] { __f90_cb_error(2, 11, "a", 5, 3, "t.f90"); },
     " Error 1037:  Subscript out of range. Location:  line 5 column 3 of 't.f90'\n"
     "Subscript number 2 has value 11 in array 'a'\n"},
    {"subscript_64_bit_value", [] { __f90_cb_error_long(1, -5000000000LL, "big", 7, 9, "u.f90"); },
     " Error 1037:  Subscript out of range. Location:  line 7 column 9 of 'u.f90'\n"
     "Subscript number 1 has value -5000000000 in array 'big'\n"},
    {"substring_end", [] { __f90_cb_err_str(2, 12, "s", 4, 8, "t.f90"); },
     " Error 1038:  Substring out of range. Location:  line 4 column 8 of 't.f90'\n"
     "The ending point has value 12 for substring of 's'\n"},
    {"substring_start", [] { __f90_cb_err_str(1, 0, "s", 4, 8, "t.f90"); },
     " Error 1038:  Substring out of range. Location:  line 4 column 8 of 't.f90'\n"
     "The starting point has value 0 for substring of 's'\n"},
    {"substring_end_64_bit", [] { __f90_cb_err_str_long(2, INT64_MIN, "s", 1, 2, "t.f90"); },
     " Error 1038:  Substring out of range. Location:  line 1 column 2 of 't.f90'\n"
     "The ending point has value -9223372036854775808 for substring of 's'\n"},
    {"substring_start_64_bit", [] { __f90_cb_err_str_long(1, 4294967296LL, "s", 1, 2, "t.f90"); },
     " Error 1038:  Substring out of range. Location:  line 1 column 2 of 't.f90'\n"
     "The starting point has value 4294967296 for substring of 's'\n"},
    {"shape", [] { __f90_shape_err(2, 3, 4, 10, 1, "t.f90"); },
     " An array expression does not conform : dim 2 is 3 , not 4\n"
     " Location:  line 10 column 1 of 't.f90'\n"},
    {"shape_long", [] { __f90_shape_err_long(1, 30, 40, 10, 1, "t.f90"); },
     " An array expression does not conform : dim 1 is 30 , not 40\n"
     " Location:  line 10 column 1 of 't.f90'\n"},
    {"shape_of_arguments", [] { __f90_shape_arguments_err(1, 5, 6, 3, 4, "t.f90", "MATMUL"); },
     " Arguments of function \"MATMUL\" do not conform : dim 1 is 5 , not 6\n"
     " Location:  line 3 column 4 of 't.f90'\n"},
    {"reshape", [] { __f90_reshape_err(3, 8, 2, 2, "t.f90"); },
     " The SOURCE argument to RESHAPE is not large enough : it has 3 elements and needs to have 8 elements\n"
     " Location:  line 2 column 2 of 't.f90'\n"},
    {"reshape_long", [] { __f90_reshape_err_long(30, 80, 2, 2, "t.f90"); },
     " The SOURCE argument to RESHAPE is not large enough : it has 30 elements and needs to have 80 elements\n"
     " Location:  line 2 column 2 of 't.f90'\n"},
    {"unassociated_pointer", [] { __f95_null_pointer_err("p", 0, 6, 5, "t.f90"); },
     " Attempting to use an unassociated POINTER 'p'\n"
     " Location:  line 6 column 5 of 't.f90'\n"},
    {"unallocated_allocatable", [] { __f95_null_pointer_err("x", 1, 6, 5, "t.f90"); },
     " Attempting to use an unallocated ALLOCATABLE 'x'\n"
     " Location:  line 6 column 5 of 't.f90'\n"},
    {"missing_optional", [] { __f95_missing_optional_err("opt", 9, 1, "t.f90"); },
     " Attempting to use a missing optional dummy 'opt'\n"
     " Location:  line 9 column 1 of 't.f90'\n"},
};
INSTANTIATE_TEST_SUITE_P(Cases, CheckedCodeReport, ::testing::ValuesIn(kReports),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(CheckedCodeReport, UnitBuffersReachTheirFilesBeforeTheReport) {
    child_result r = run_forked([] {
        io_control_list_write w = {IO_DEFAULT_UNIT, nullptr, 0, nullptr};
        __f90_sslw(&w);
        __f90_slw_ch(&w, "before", 6);
        __f90_eslw(&w);
        __f90_cb_error(1, 0, "a", 1, 1, "t.f90");
    });
    EXPECT_EQ(r.out, " before\n");
    EXPECT_EQ(r.signal, SIGABRT);
}

struct ll2str_case {
    int64_t value;
    const char *text;
};

TEST(Ll2str, WritesDecimal) {
    const ll2str_case cases[] = {{0, "0"},
                                 {7, "7"},
                                 {-1, "-1"},
                                 {1234567890123LL, "1234567890123"},
                                 {INT64_MAX, "9223372036854775807"},
                                 {INT64_MIN, "-9223372036854775808"},
                                 {INT64_MIN + 1, "-9223372036854775807"}};
    for (const ll2str_case &c : cases) {
        char buf[21];
        memset(buf, 'x', sizeof buf);
        EXPECT_EQ(ll2str(c.value, buf), buf);
        EXPECT_STREQ(buf, c.text);
    }
}

TEST(RunTime, PrintsBothStringsAndTheValueTwice) {
    child_result r = run_forked([] { __f90_run_time("here", "n", 255); });
    EXPECT_EQ(r.err, "here: n 0xff = 255\n");
    EXPECT_EQ(r.exit_code, 0);
}

}  // namespace

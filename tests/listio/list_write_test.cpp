// PRINT * and WRITE (u, *) of characters, integers and logicals: the exact
// bytes of each record.

#include <gtest/gtest.h>

#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"

using namespace krm_test;

namespace {

class PrintTest : public ::testing::TestWithParam<print_case> {};

TEST_P(PrintTest, WritesExactBytesToStdout) { expect_prints(GetParam()); }

const print_case kPrintCases[] = {
    {"text_then_integer", {ch("x ="), i4(42)}, 0, " x = 42\n"},
    {"two_integers", {i4(1), i4(2)}, 0, " 1 2\n"},
    {"adjacent_bare_strings", {ch("A"), ch("B")}, 0, " AB\n"},
    {"strings_around_integer", {ch("A"), i4(1), ch("B")}, 0, " A 1 B\n"},
    {"empty_string_vanishes", {ch("A"), ch(""), ch("B")}, 0, " AB\n"},
    {"negative_length_is_empty", {ch("A"), ch_len("zz", -5), ch("B")}, 0, " AB\n"},
    {"empty_list_is_one_blank", {}, 0, " \n"},
    {"zero", {i4(0)}, 0, " 0\n"},
    {"most_negative_i4", {i4(INT32_MIN)}, 0, " -2147483648\n"},
    {"most_positive_i4", {i4(INT32_MAX)}, 0, " 2147483647\n"},
    {"most_negative_i8", {i8(INT64_MIN)}, 0, " -9223372036854775808\n"},
    {"most_positive_i8", {i8(INT64_MAX)}, 0, " 9223372036854775807\n"},
    {"largest_u4", {u4(UINT32_MAX)}, 0, " 4294967295\n"},
    {"largest_u8", {u8(UINT64_MAX)}, 0, " 18446744073709551615\n"},
    {"u8_above_u32", {u8(4294967296ull)}, 0, " 4294967296\n"},
    {"logicals", {l4(1), l4(0), l8(-1), l1(7)}, 0, " T F T T\n"},
    {"logical_after_text", {ch("ok"), l4(1)}, 0, " ok T\n"},
    {"no_leading_blank", {i4(5), i4(6)}, IO_NO_LEADING_BLANK, "5 6\n"},
    {"no_leading_blank_text", {ch("hi")}, IO_NO_LEADING_BLANK, "hi\n"},
    {"no_character_separator", {i4(1), ch("a"), ch("b")}, IO_NO_CHARACTER_SEPARATOR, " 1ab\n"},
    {"integer_after_string_separated", {ch("n="), i4(3), i4(4)}, 0, " n= 3 4\n"},
    {"f77_two_blanks", {i4(1), i4(2)}, IO_F77COMPAT, "   1  2\n"},
    {"f77_l1_is_integer", {l1(1), l1(0)}, IO_F77COMPAT, "   1  0\n"},
    {"f77_strings_unseparated", {ch("a"), ch("b"), i4(3)}, IO_F77COMPAT, " ab  3\n"},
};

INSTANTIATE_TEST_SUITE_P(Cases, PrintTest, ::testing::ValuesIn(kPrintCases),
                         [](const auto &info) { return std::string(info.param.name); });

}  // namespace

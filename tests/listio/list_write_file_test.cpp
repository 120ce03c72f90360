// List-directed WRITE to numbered units: record lengths, folding, delimiters,
// buffering, and the failures of the item calls.

#include <gtest/gtest.h>

#include <string>

#include "support/child.h"
#include "support/files.h"
#include "support/statements.h"

using namespace krm_test;

namespace {

// What OPEN would leave on unit n: connected to fort.n with RECL= and the
// given extra unit flags (DELIM=, for instance).
void connect_like_open(int64_t n, int64_t recl, uint32_t extra_flags) {
    with_unit(n, [&](unit *up) {
        ASSERT_EQ(__f90_open_for_output_r(n, up), 0);
        up->flags |= UNIT_SEQUENTIAL | UNIT_FORMATTED | extra_flags;
        up->recl = recl;
        up->record_limit = recl;
    });
}

// Ends the process with STOP so that the unit's buffer reaches its file.
std::string file_after_stop(const std::function<void()> &statements, const char *file = "fort.11") {
    child_result r = run_forked([&] {
        statements();
        __f90_stop();
    });
    EXPECT_EQ(r.exit_code, 0) << r.err;
    return read_file(file);
}

struct record_case {
    const char *name;
    int64_t recl;
    uint32_t unit_flags;
    std::initializer_list<item> items;
    uint32_t stmt_flags;
    const char *expected;
};
void PrintTo(const record_case &c, std::ostream *os) { *os << c.name; }

class RecordTest : public InTempDir, public ::testing::WithParamInterface<record_case> {};

TEST_P(RecordTest, FileHoldsExactRecords) {
    const record_case &c = GetParam();
    std::string got = file_after_stop([&] {
        if (c.recl) connect_like_open(11, c.recl, c.unit_flags);
        EXPECT_EQ(write_list(11, c.items, c.stmt_flags | IO_RETURNING), 0);
    });
    EXPECT_EQ(got, c.expected);
}

constexpr uint32_t kApostrophes = UNIT_DELIM;
constexpr uint32_t kQuotes = UNIT_DELIM | UNIT_DELIM_QUOTE;

const record_case kRecordCases[] = {
    // recl 0 here: implicit connection, where a record never folds.
    {"implicit_never_folds", 0, 0, {ch(std::string(300, 'x')), i4(1)}, 0,
     nullptr},  // filled in below
    {"item_fits_exactly", 6, 0, {i4(12345)}, 0, " 12345\n"},
    {"second_item_folds", 6, 0, {i4(12345), i4(12345)}, 0, " 12345\n 12345\n"},
    {"fold_keeps_separator_blank", 8, 0, {i4(123), i4(45), i4(6)}, 0, " 123 45\n 6\n"},
    {"bare_string_continues_with_blank", 10, 0, {ch("abcdefghijklmnopqrstuvwxy")}, 0,
     " abcdefghi\n jklmnopqr\n stuvwxy\n"},
    {"delimited_apostrophes", 0, kApostrophes, {ch("it's"), ch("b")}, 0, nullptr},
    {"delimited_quote_doubled", 10, kQuotes, {ch("ab\"cd")}, 0, " \"ab\"\"cd\"\n"},
    {"doubled_pair_not_split", 6, kQuotes, {ch("abc\"d")}, 0, " \"abc\n\"\"d\"\n"},
    {"delimited_long_string_no_blank", 5, kApostrophes, {ch("abcdefgh")}, 0, " 'abc\ndefgh\n'\n"},
    {"delimited_empty_string", 20, kApostrophes, {ch("A"), ch("")}, 0, " 'A' ''\n"},
    {"delimited_strings_separated", 20, kQuotes, {ch("a"), ch("b"), i4(1)}, 0, " \"a\" \"b\" 1\n"},
    {"print_form_no_leading_blank", 20, UNIT_PRINT, {i4(1), i4(2)}, 0, "1 2\n"},
};

INSTANTIATE_TEST_SUITE_P(Cases, RecordTest, ::testing::ValuesIn([] {
                             std::vector<record_case> v(std::begin(kRecordCases), std::end(kRecordCases));
                             static const std::string long_line = " " + std::string(300, 'x') + " 1\n";
                             v[0].expected = long_line.c_str();
                             static const std::string apostrophes = " 'it''s' 'b'\n";
                             v[5].recl = RECL_FORMATTED_DEFAULT;
                             v[5].expected = apostrophes.c_str();
                             return v;
                         }()),
                         [](const auto &info) { return std::string(info.param.name); });

class ListWriteFile : public InTempDir {};

// The older dialect folds at column 80 on a file and never makes an empty line.
TEST_F(ListWriteFile, OlderDialectFoldsAtColumn80) {
    std::string got = file_after_stop([] {
        io_control_list_write ctl = {IO_F77COMPAT, &kWriteAt, 11, nullptr};
        ASSERT_EQ(__f90_sslw(&ctl), 0);
        for (int i = 0; i < 30; ++i) ASSERT_EQ(__f90_slw_i4(&ctl, 1), 0);
        ASSERT_EQ(__f90_eslw(&ctl), 0);
    });
    std::string first = " ";
    for (int i = 0; i < 26; ++i) first += "  1";
    std::string second = " ";
    for (int i = 0; i < 4; ++i) second += "  1";
    EXPECT_EQ(got, first + "\n" + second + "\n");
}

// PRINT has the standard output's record length, 81: a long list folds there.
TEST(ListWritePrint, FoldsAtRecordLengthOfStandardOutput) {
    child_result r = run_forked([] {
        io_control_list_write ctl = {IO_DEFAULT_UNIT, &kPrintAt, 0, nullptr};
        ASSERT_EQ(__f90_sslw(&ctl), 0);
        for (int i = 0; i < 30; ++i) ASSERT_EQ(__f90_slw_i4(&ctl, 10), 0);
        ASSERT_EQ(__f90_eslw(&ctl), 0);
    });
    std::string first, second;
    for (int i = 0; i < 27; ++i) first += " 10";
    for (int i = 0; i < 3; ++i) second += " 10";
    EXPECT_EQ(r.out, first + "\n" + second + "\n");
}

// Many items in one statement and many statements: every byte arrives, in
// order, through the buffer and past it.
TEST_F(ListWriteFile, LongOutputArrivesWhole) {
    std::string expected;
    std::string got = file_after_stop([] {
        io_control_list_write ctl = {0, &kWriteAt, 11, nullptr};
        ASSERT_EQ(__f90_sslw(&ctl), 0);
        for (int32_t i = -50000; i < 50000; ++i) ASSERT_EQ(__f90_slw_i4(&ctl, i * 7919), 0);
        ASSERT_EQ(__f90_eslw(&ctl), 0);
        std::string big(100000, 'q');
        for (int s = 0; s < 3; ++s) ASSERT_EQ(write_list(11, {i8(s), ch(big), l4(s & 1)}), 0);
    });
    expected += " ";
    for (int32_t i = -50000; i < 50000; ++i) {
        if (i != -50000) expected += ' ';
        expected += std::to_string(i * 7919);
    }
    expected += "\n";
    for (int s = 0; s < 3; ++s) expected += " " + std::to_string(s) + " " + std::string(100000, 'q') + " " + (s & 1 ? "T" : "F") + "\n";
    EXPECT_EQ(got.size(), expected.size());
    EXPECT_TRUE(got == expected);
}

// A numbered unit keeps its bytes in the buffer between statements, unless
// the synchronous flag asks for every statement end to pass them on.
TEST_F(ListWriteFile, SynchronousFlagPassesBytesAtEveryStatementEnd) {
    child_result r = run_forked([] {
        ASSERT_EQ(write_list(11, {i4(1)}), 0);
        EXPECT_EQ(read_file("fort.11"), "");
        EXPECT_EQ(__f90_set_synchronous_flag(1), 0);
        ASSERT_EQ(write_list(11, {i4(2)}), 0);
        EXPECT_EQ(read_file("fort.11"), " 1\n 2\n");
        EXPECT_EQ(__f90_set_synchronous_flag(0), 1);
        ASSERT_EQ(write_list(11, {i4(3)}), 0);
        EXPECT_EQ(read_file("fort.11"), " 1\n 2\n");
        if (::testing::Test::HasFailure()) _exit(1);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out;
}

struct too_long_case {
    const char *name;
    int64_t recl;
    item it;
};
void PrintTo(const too_long_case &c, std::ostream *os) { *os << c.name; }

class RecordTooLong : public InTempDir, public ::testing::WithParamInterface<too_long_case> {};

// An item that can never fit in a record (with its blank) is error 1010.
TEST_P(RecordTooLong, ReturnsTheNumberAndReleasesTheUnit) {
    const too_long_case &c = GetParam();
    child_result r = run_checked([&] {
        connect_like_open(11, c.recl, 0);
        EXPECT_EQ(write_list(11, {c.it}, IO_RETURNING), 1010);
        // The unit was released: another statement on it can start.
        EXPECT_EQ(write_list(11, {}, IO_RETURNING), 0);
    });
    EXPECT_EQ(r.exit_code, 0) << r.out;
}

const too_long_case kTooLong[] = {
    {"integer_longer_than_record", 6, i4(123456)},
    {"record_without_room_for_blank", 5, i4(12345)},
    {"logical_in_one_column_record", 1, l4(1)},
    {"character_in_one_column_record", 1, ch("a")},
};
INSTANTIATE_TEST_SUITE_P(Cases, RecordTooLong, ::testing::ValuesIn(kTooLong),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(ListWriteFile, RecordTooLongReportWithoutIostat) {
    child_result r = run_forked([] {
        connect_like_open(11, 6, 0);
        write_list(11, {i4(1), i4(1234567)});
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err,
              "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n"
              " Error 1010:  record too long\n"
              " Location:  the WRITE statement at line 20 of \"t.f90\"\n"
              " Unit:  11\n"
              " File:  fort.11\n");
    // The report runs the cleanup first: what the record held so far is in the file.
    EXPECT_EQ(read_file("fort.11"), " 1");
}

}  // namespace

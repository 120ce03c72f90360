// The lines of a report, the texts behind error numbers, IOMSG=, and the
// one-call report of callers without a unit. Expected texts are the system's
// own wording, written out here rather than taken from the library's tables.

#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>

#include <functional>
#include <string>

#include "frame/messages.h"
#include "frame/report.h"
#include "krm.h"
#include "support/child.h"

using namespace krm_test;

namespace {

const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";

// ---------------------------------------------------------------- report lines

struct line_case {
    const char *name;
    std::function<void()> write;
    const char *expected;  // exactly what reaches standard error
};

void PrintTo(const line_case &c, std::ostream *os) { *os << c.name; }

class ReportLineTest : public ::testing::TestWithParam<line_case> {};

TEST_P(ReportLineTest, WritesExactlyThisToStderr) {
    const line_case &c = GetParam();
    child_result r = run_checked(c.write);
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.err, c.expected);
    EXPECT_EQ(r.out, "");
}

const stmt_location kWriteLine20 = {STMT_WRITE, 20, "t.f90"};
const stmt_location kLibraryInit = {STMT_LIB_F90_INIT, 99, "ignored.f90"};
const stmt_location kLibraryTtynam = {STMT_LIB_TTYNAM, 99, "ignored.f90"};
const stmt_location kLibraryIsatty = {STMT_LIB_ISATTY, 4, "x.f"};
const stmt_location kFlushLine3 = {STMT_FLUSH, 3, "f.f90"};
const stmt_location kPlainLine = {STMT_LINE, 5, "a.f"};
const stmt_location kReadLine7 = {STMT_READ, 7, "r.f90"};

const line_case kLineCases[] = {
    {"message_with_text", [] { __f90_write_message(1001); }, " Error 1001:  illegal unit number\n"},
    {"message_null_row", [] { __f90_write_message(1034); }, " Error 1034\n"},
    {"message_null_row_1160", [] { __f90_write_message(1160); }, " Error 1160\n"},
    {"message_empty_row", [] { __f90_write_message(1219); }, " Error 1219\n"},
    {"message_posix_interface", [] { __f90_write_message(2001); },
     " Error 2001:  invalid constant, structure, or component name\n"},
    {"message_posix_null_row", [] { __f90_write_message(2006); }, " Error 2006\n"},
    {"message_system_errno", [] { __f90_write_message(28); }, " Error 28:  No space left on device\n"},
    // Used by its callers as it stands: the text's own newline is printed too.
    {"message_row_ending_in_newline", [] { __f90_write_message(1212); },
     " Error 1212:  invalid interval value\n\n"},
    {"system_message", [] { __f90_write_system_message(2); }, " Error 2:  No such file or directory\n"},
    {"unit_star", [] { __f90_write_unit_number(-1); }, " Unit:  *\n"},
    {"unit_very_negative", [] { __f90_write_unit_number(INT64_MIN); }, " Unit:  *\n"},
    {"unit_zero", [] { __f90_write_unit_number(0); }, " Unit:  0\n"},
    {"unit_above_32_bits", [] { __f90_write_unit_number(2147483648LL); }, " Unit:  2147483648\n"},
    {"filename_null_writes_nothing", [] { __f90_write_filename(nullptr); }, ""},
    {"filename", [] { __f90_write_filename("fort.11"); }, " File:  fort.11\n"},
    {"loc_library_routine_takes_no_arguments", [] { __f90_write_loc(&kLibraryInit); },
     " Location:  the library routine \"f90_init\"\n"},
    {"loc_library_routine_36", [] { __f90_write_loc(&kLibraryTtynam); },
     " Location:  the library routine \"ttynam\"\n"},
    {"loc_library_routine_39", [] { __f90_write_loc(&kLibraryIsatty); },
     " Location:  the library routine \"isatty\"\n"},
    {"loc_write", [] { __f90_write_loc(&kWriteLine20); },
     " Location:  the WRITE statement at line 20 of \"t.f90\"\n"},
    {"loc_read", [] { __f90_write_loc(&kReadLine7); }, " Location:  the READ statement at line 7 of \"r.f90\"\n"},
    {"loc_flush", [] { __f90_write_loc(&kFlushLine3); },
     " Location:  the FLUSH statement at line 3 of \"f.f90\"\n"},
    {"loc_line_only", [] { __f90_write_loc(&kPlainLine); }, " Location:  line 5 of \"a.f\"\n"},
    {"record_number", [] { __f90_write_record_number(12); }, " Record number 12\n"},
    {"status", [] { __f90_write_status("NEW"); }, " Status:  NEW\n"},
    {"bytes_requested_widened", [] { __f90_write_bytes_requested(4294967295u); },
     " Bytes requested:  4294967295\n"},
    {"byte_discrepancy", [] { __f90_write_byte_discrepancy(8, 4294967295u); },
     " Expected 8 bytes, got 4294967295 bytes\n"},
    {"eof", [] { __f90_write_eof(); }, " End-of-file:  -1\n"},
    {"eor", [] { __f90_write_eor(); }, " End-of-record:  -2\n"},
    {"bad_format_empty", [] { __f90_write_bad_format(1, "", ""); }, " Format string is empty!\n"},
    {"bad_format_mark", [] { __f90_write_bad_format(2, "(I3,Q)", "    "); },
     " Format string:    \"(I3,Q)\"\n Incorrect symbol:      ^\n"},
    {"bad_format_no_paren", [] { __f90_write_bad_format(3, "(I3", ""); },
     " Format string has no right parenthesis!\n"},
    {"banner", [] { __f90_banner(); }, kBanner},
};

INSTANTIATE_TEST_SUITE_P(Lines, ReportLineTest, ::testing::ValuesIn(kLineCases),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- message rows

struct row_case {
    int number;
    const char *text;  // null: the row has no text
};

class MessageRowTest : public ::testing::TestWithParam<row_case> {};

TEST_P(MessageRowTest, TextOfNumber) {
    const row_case &c = GetParam();
    const char *text = c.number >= 2000 ? __f90_pmsg(c.number) : __f90_rmsg(c.number);
    if (!c.text)
        EXPECT_EQ(text, nullptr) << text;
    else
        EXPECT_STREQ(text, c.text);
}

const row_case kRowCases[] = {
    {1000, "format error"},
    {1010, "record too long"},
    {1024, "reentrant I/O"},
    {1033, "unsigned integer overflow on input"},
    {1034, nullptr},
    {1036, nullptr},
    {1037, "Subscript out of range."},
    {1039, nullptr},
    {1050, nullptr},
    {1051, "default input unit closed"},
    {1102, "unexpected character in unsigned integer value"},
    {1103, nullptr},
    {1110, nullptr},
    {1111, "unassociated ACCESS specifier"},
    {1141, "status is specified and not 'OLD' for connected unit"},
    {1155, "The buffer size value in a FILEOPT= specifier is out of range"},
    {1156, nullptr},
    {1160, nullptr},
    {1161, "device does not support REWIND"},
    {1178, "ROUND specifier is not 'UP', 'DOWN', 'ZERO', 'NEAREST', 'COMPATIBLE' or 'PROCESSOR_DEFINED'"},
    {1193, "illegal rank %d"},
    {1197, "illegal kind"},
    {1198, nullptr},
    {1210, nullptr},
    {1211, "unexpected form of interval value\n"},
    {1219, ""},
    {1221, "data in a UNION cannot be read from or written to an incompatible file type"},
    {2000, nullptr},
    {2005, "end of file, record, or directory stream"},
    {2006, nullptr},
    {2020, nullptr},
    {2021, "lock not initialized"},
    {2023, "lock not set"},
};

INSTANTIATE_TEST_SUITE_P(Rows, MessageRowTest, ::testing::ValuesIn(kRowCases),
                         [](const auto &info) { return std::to_string(info.param.number); });

TEST(MessageRowTest, RowsPastTheTablesHaveNoText) {
    EXPECT_EQ(__f90_rmsg(1222), nullptr);
    EXPECT_EQ(__f90_rmsg(999), nullptr);
    EXPECT_EQ(__f90_pmsg(2024), nullptr);
    EXPECT_EQ(__f90_lfmt(61), nullptr);
    EXPECT_EQ(__f90_lfmt(0), nullptr);
    EXPECT_EQ(__f90_mfmt(30), nullptr);
    EXPECT_EQ(__f90_mfmt(-1), nullptr);
}

TEST(MessageRowTest, ReservedLocationRows) {
    for (int kind = 40; kind <= 59; ++kind)
        EXPECT_STREQ(__f90_lfmt(kind), " UNUSED: reserved for future runtime errors") << kind;
    EXPECT_STREQ(__f90_lfmt(37), " Location:  line %ld column %ld of '%s'\n");
    EXPECT_STREQ(__f90_lfmt(29), " Location:  the AUTOMATIC variable declaration at line %ld of \"%s\"\n");
}

// ---------------------------------------------------------------- IOMSG=

struct iomsg_case {
    const char *name;
    int32_t number;
    int32_t length;
    std::string expected;  // the whole variable afterwards
};

void PrintTo(const iomsg_case &c, std::ostream *os) { *os << c.name; }

class AssignIomsgTest : public ::testing::TestWithParam<iomsg_case> {};

constexpr char kUntouched = '#';
constexpr int kGuard = 8;  // bytes past the variable that must stay as they were

TEST_P(AssignIomsgTest, FillsTheVariable) {
    const iomsg_case &c = GetParam();
    const int32_t length = c.length > 0 ? c.length : 0;
    std::string var(static_cast<size_t>(length) + kGuard, kUntouched);
    __f90_assign_iomsg(c.number, var.data(), c.length);
    EXPECT_EQ(var.substr(0, static_cast<size_t>(length)), c.expected);
    EXPECT_EQ(var.substr(static_cast<size_t>(length)), std::string(kGuard, kUntouched));
}

std::string padded(const std::string &text, size_t length) {
    return text + std::string(length - text.size(), ' ');
}

const iomsg_case kIomsgCases[] = {
    {"end_of_file", -1, 20, padded(" End-of-file:  -1", 20)},
    {"end_of_record", -2, 20, padded(" End-of-record:  -2", 20)},
    {"system_errno", 2, 30, padded("No such file or directory", 30)},
    {"library_error", 1001, 25, padded("illegal unit number", 25)},
    {"exact_length_no_padding", 1001, 19, "illegal unit number"},
    {"short_length_cuts_without_blank", 1001, 7, "illegal"},
    {"one_character", 1028, 1, "w"},
    {"null_row", 1034, 16, padded(" Unknown error", 16)},
    {"empty_row", 1219, 16, padded(" Unknown error", 16)},
    {"unknown_error_cut", 1040, 5, " Unkn"},
    {"past_the_table", 1500, 14, " Unknown error"},
    {"posix_interface", 2001, 50, padded("invalid constant, structure, or component name", 50)},
    {"posix_interface_null_row", 2010, 15, padded(" Unknown error", 15)},
    {"row_ends_at_newline", 1211, 40, padded("unexpected form of interval value", 40)},
    {"row_ends_at_newline_1212", 1212, 30, padded("invalid interval value", 30)},
    {"newline_not_copied_at_exact_length", 1212, 23, padded("invalid interval value", 23)},
    {"format_kept_as_it_stands", 1193, 20, padded("illegal rank %d", 20)},
    {"length_zero_writes_nothing", 1001, 0, ""},
    {"negative_length_writes_nothing", 1001, -4, ""},
};

INSTANTIATE_TEST_SUITE_P(Cases, AssignIomsgTest, ::testing::ValuesIn(kIomsgCases),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(AssignIomsgTest, NullBufferIsLeftAlone) { __f90_assign_iomsg(1001, nullptr, 10); }

// ---------------------------------------------------------------- one-call report

struct abort_case {
    const char *name;
    int32_t number;
    stmt_location loc;
    const char *lines;  // after the banner
};

void PrintTo(const abort_case &c, std::ostream *os) { *os << c.name; }

class ErrorMessageAndAbortTest : public ::testing::TestWithParam<abort_case> {};

TEST_P(ErrorMessageAndAbortTest, ReportsAndAborts) {
    const abort_case &c = GetParam();
    child_result r = run_checked([&] { __f95_error_message_and_abort(c.number, &c.loc); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + c.lines);
    EXPECT_EQ(r.out, "");
}

const abort_case kAbortCases[] = {
    {"allocate",
     1181,
     {STMT_ALLOCATE, 7, "a.f90"},
     " Error 1181:  attempting to allocate an allocated array\n"
     " Location:  the ALLOCATE statement at line 7 of \"a.f90\"\n"},
    {"null_row",
     1040,
     {STMT_DEALLOCATE, 12, "d.f90"},
     " Error 1040\n"
     " Location:  the DEALLOCATE statement at line 12 of \"d.f90\"\n"},
    {"system_error_in_library_routine",
     12,
     {STMT_LIB_NEWUNIT, 0, nullptr},
     " Error 12:  Cannot allocate memory\n"
     " Location:  the library routine \"__newunit\"\n"},
};

INSTANTIATE_TEST_SUITE_P(Cases, ErrorMessageAndAbortTest, ::testing::ValuesIn(kAbortCases),
                         [](const auto &info) { return std::string(info.param.name); });

// The report's cleanup writes out what the program's standard output holds
// before the report appears.
TEST(ErrorMessageAndAbortTest, StandardOutputIsFlushedFirst) {
    const stmt_location at = {STMT_CALL, 3, "c.f90"};
    child_result r = run_checked([&] {
        fputs("pending output", stdout);  // a file: fully buffered
        __f95_error_message_and_abort(1021, &at);
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.out, "pending output");
    EXPECT_EQ(r.err, std::string(kBanner) +
                         " Error 1021:  illegal argument\n"
                         " Location:  the CALL statement at line 3 of \"c.f90\"\n");
}

}  // namespace

// The parsers of OPEN's and CLOSE's run-time character specifiers, called as
// compiled code calls them: with the address of the statement's flags word.
// Each clears its field and sets it from the word it recognises, in any
// case, with trailing blanks; anything else is an error of its own.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/child.h"
#include "support/open_close.h"
#include "units/units.h"

using namespace krm_test;

namespace {

const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";
const char kOpenLocation[] = " Location:  the OPEN statement at line 30 of \"t.f90\"\n";
const char kCloseLocation[] = " Location:  the CLOSE statement at line 40 of \"t.f90\"\n";

using parser_fn = int (*)(uint32_t *, const char *, int32_t, const stmt_location *);

struct keyword_value {
    const char *word;
    uint32_t value;
};

struct parser_case {
    const char *name;
    parser_fn fn;
    uint32_t mask;
    std::vector<keyword_value> accepted;
    int unassociated;  // null pointer
    int not_accepted;  // any other value
    const char *foreign;  // a word that belongs to another specifier or dialect
};

void PrintTo(const parser_case &c, std::ostream *os) { *os << c.name; }

const parser_case kParsers[] = {
    {"access", __f90_open_access, OPEN_ACCESS_MASK,
     {{"SEQUENTIAL", OPEN_ACCESS_SEQUENTIAL}, {"DIRECT", OPEN_ACCESS_DIRECT}, {"STREAM", OPEN_ACCESS_STREAM}},
     1111, 1131, "APPEND"},
    {"access_f77compat", __f90_open_access_f77compat, OPEN_ACCESS_MASK,
     {{"SEQUENTIAL", OPEN_ACCESS_SEQUENTIAL},
      {"DIRECT", OPEN_ACCESS_DIRECT},
      {"STREAM", OPEN_ACCESS_STREAM},
      {"APPEND", OPEN_ACCESS_APPEND}},
     1111, 1131, "REWIND"},
    {"action", __f90_open_action, OPEN_ACTION_MASK,
     {{"READ", OPEN_ACTION_READ}, {"WRITE", OPEN_ACTION_WRITE}, {"READWRITE", OPEN_ACTION_READWRITE}}, 1112,
     1132, "READ WRITE"},
    {"blank", __f90_open_blank, OPEN_BLANK_ZERO, {{"NULL", 0}, {"ZERO", OPEN_BLANK_ZERO}}, 1114, 1133, "NONE"},
    {"delim", __f90_open_delim, OPEN_DELIM_MASK,
     {{"APOSTROPHE", OPEN_DELIM_APOSTROPHE}, {"QUOTE", OPEN_DELIM_QUOTE}, {"NONE", 0}}, 1115, 1134, "NULL"},
    {"form", __f90_open_form, OPEN_FORM_MASK,
     {{"FORMATTED", OPEN_FORM_FORMATTED}, {"UNFORMATTED", OPEN_FORM_UNFORMATTED}, {"BINARY", OPEN_FORM_BINARY}},
     1119, 1135, "PRINT"},
    {"form_f77compat", __f90_open_form_f77compat, OPEN_FORM_MASK,
     {{"FORMATTED", OPEN_FORM_FORMATTED},
      {"UNFORMATTED", OPEN_FORM_UNFORMATTED},
      {"BINARY", OPEN_FORM_BINARY},
      {"PRINT", OPEN_FORM_PRINT}},
     1119, 1135, "PRINTER"},
    {"pad", __f90_open_pad, OPEN_PAD_NO, {{"YES", 0}, {"NO", OPEN_PAD_NO}}, 1122, 1136, "ZERO"},
    {"position", __f90_open_position, OPEN_POSITION_MASK,
     {{"ASIS", 0}, {"REWIND", OPEN_POSITION_REWIND}, {"APPEND", OPEN_POSITION_APPEND}}, 1123, 1137, "OLD"},
    {"status", __f90_open_status, OPEN_STATUS_MASK,
     {{"OLD", OPEN_STATUS_OLD},
      {"NEW", OPEN_STATUS_NEW},
      {"UNKNOWN", OPEN_STATUS_UNKNOWN},
      {"REPLACE", OPEN_STATUS_REPLACE},
      {"SCRATCH", OPEN_STATUS_SCRATCH}},
     1127, 1140, "KEEP"},
    {"open_asynchronous", __f90_open_asynchronous, OPEN_ASYNCHRONOUS, {{"YES", OPEN_ASYNCHRONOUS}, {"NO", 0}},
     1172, 1177, "TRUE"},
    {"parse_asynchronous", __f90_parse_asynchronous, OPEN_ASYNCHRONOUS,
     {{"YES", OPEN_ASYNCHRONOUS}, {"NO", 0}}, 1172, 1177, "NONE"},
    {"open_decimal", __f90_open_decimal, OPEN_DECIMAL_MASK,
     {{"POINT", OPEN_DECIMAL_POINT}, {"COMMA", OPEN_DECIMAL_COMMA}}, 1173, 1179, "PERIOD"},
    {"parse_decimal", __f90_parse_decimal, OPEN_DECIMAL_MASK,
     {{"POINT", OPEN_DECIMAL_POINT}, {"COMMA", OPEN_DECIMAL_COMMA}}, 1173, 1179, "DOT"},
    {"open_round", __f90_open_round, OPEN_ROUND_MASK,
     {{"UP", OPEN_ROUND_UP},
      {"DOWN", OPEN_ROUND_DOWN},
      {"ZERO", OPEN_ROUND_ZERO},
      {"NEAREST", OPEN_ROUND_NEAREST},
      {"COMPATIBLE", OPEN_ROUND_COMPATIBLE},
      {"PROCESSOR_DEFINED", OPEN_ROUND_PROCESSOR_DEFINED}},
     1175, 1178, "PROCESSOR DEFINED"},
    {"parse_round", __f90_parse_round, OPEN_ROUND_MASK,
     {{"UP", OPEN_ROUND_UP},
      {"DOWN", OPEN_ROUND_DOWN},
      {"ZERO", OPEN_ROUND_ZERO},
      {"NEAREST", OPEN_ROUND_NEAREST},
      {"COMPATIBLE", OPEN_ROUND_COMPATIBLE},
      {"PROCESSOR_DEFINED", OPEN_ROUND_PROCESSOR_DEFINED}},
     1175, 1178, "NEAR"},
    {"close_status", __f90_close_status, CLOSE_STATUS_MASK,
     {{"KEEP", CLOSE_STATUS_KEEP}, {"DELETE", CLOSE_STATUS_DELETE}}, 1127, 1142, "SCRATCH"},
};

std::string lower(std::string s) {
    for (char &c : s)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return s;
}

// Every other letter in lower case: "SeQuEnTiAl".
std::string mixed(std::string s) {
    for (size_t i = 1; i < s.size(); i += 2)
        if (s[i] >= 'A' && s[i] <= 'Z') s[i] = static_cast<char>(s[i] - 'A' + 'a');
    return s;
}

// Calls the parser with exactly `text` as the value; the characters stand in
// a buffer with more behind them, since compiled code's strings end nowhere.
int call(const parser_case &c, uint32_t *flags, const std::string &text,
         std::optional<int32_t> length = std::nullopt) {
    std::string buffer = text + "Q#";
    return c.fn(flags, buffer.data(), length ? *length : static_cast<int32_t>(text.size()), &kOpenAt);
}

class SpecifierParserTest : public ::testing::TestWithParam<parser_case> {};

// Each accepted word in upper, lower and mixed case, bare and with trailing
// blanks: the field is replaced, every other bit of the word kept.
TEST_P(SpecifierParserTest, AcceptsEachWordInAnyCaseWithTrailingBlanks) {
    const parser_case &c = GetParam();
    for (const keyword_value &kw : c.accepted) {
        const std::string word = kw.word;
        for (const std::string &text : {word, lower(word), mixed(word), word + " ", lower(word) + "     "}) {
            SCOPED_TRACE("'" + text + "'");
            uint32_t flags = 0xffffffffu;  // the field holds something else
            EXPECT_EQ(call(c, &flags, text), 0);
            EXPECT_EQ(flags, (0xffffffffu & ~c.mask) | kw.value);
            flags = OPEN_RETURNING;
            EXPECT_EQ(call(c, &flags, text), 0);
            EXPECT_EQ(flags, OPEN_RETURNING | kw.value);
        }
    }
}

// A second value for the same field replaces the first.
TEST_P(SpecifierParserTest, LaterValueReplacesEarlier) {
    const parser_case &c = GetParam();
    uint32_t flags = OPEN_RETURNING;
    for (const keyword_value &kw : c.accepted) {
        ASSERT_EQ(call(c, &flags, kw.word), 0);
        EXPECT_EQ(flags, OPEN_RETURNING | kw.value) << kw.word;
    }
    for (auto it = c.accepted.rbegin(); it != c.accepted.rend(); ++it) {
        ASSERT_EQ(call(c, &flags, it->word), 0);
        EXPECT_EQ(flags, OPEN_RETURNING | it->value) << it->word;
    }
}

TEST_P(SpecifierParserTest, NullValueIsUnassociated) {
    const parser_case &c = GetParam();
    uint32_t flags = OPEN_RETURNING;
    EXPECT_EQ(c.fn(&flags, nullptr, 5, &kOpenAt), c.unassociated);
    EXPECT_EQ(c.fn(&flags, nullptr, 0, &kOpenAt), c.unassociated);
    EXPECT_EQ(c.fn(&flags, nullptr, -1, &kOpenAt), c.unassociated);
    EXPECT_EQ(flags & ~c.mask, OPEN_RETURNING);
}

TEST_P(SpecifierParserTest, RejectsAnythingElse) {
    const parser_case &c = GetParam();
    std::vector<std::pair<std::string, std::optional<int32_t>>> rejected = {
        {"", std::nullopt},
        {"     ", std::nullopt},
        {c.foreign, std::nullopt},
        {"SEQUENTIALLY", std::nullopt},
    };
    for (const keyword_value &kw : c.accepted) {
        const std::string word = kw.word;
        rejected.push_back({word.substr(0, word.size() - 1), std::nullopt});  // too short
        rejected.push_back({word, static_cast<int32_t>(word.size()) - 1});     // the length cuts it
        rejected.push_back({word + "  X", std::nullopt});  // something after the blanks
        rejected.push_back({word + "S", std::nullopt});
        rejected.push_back({" " + word, std::nullopt});   // a leading blank
        rejected.push_back({word + "\t", std::nullopt});  // only blanks may follow
        rejected.push_back({word + std::string(1, '\0'), std::nullopt});
        rejected.push_back({word, 0});
        rejected.push_back({word, -3});  // a negative length is an empty value
    }
    for (const auto &[text, length] : rejected) {
        SCOPED_TRACE("'" + text + "' length " + (length ? std::to_string(*length) : "natural"));
        uint32_t flags = OPEN_RETURNING;
        EXPECT_EQ(call(c, &flags, text, length), c.not_accepted);
        EXPECT_EQ(flags & ~c.mask, OPEN_RETURNING);
    }
}

INSTANTIATE_TEST_SUITE_P(Parsers, SpecifierParserTest, ::testing::ValuesIn(kParsers),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- FILEOPT=

struct fileopt_case {
    const char *text;
    int result;
    uint32_t field;  // OPEN_FILEOPT_* after a successful parse
    int64_t size;    // the buffer size for BUFFER=N
};

void PrintTo(const fileopt_case &c, std::ostream *os) { *os << "'" << c.text << "'"; }

const fileopt_case kFileopts[] = {
    {"EOF", 0, OPEN_FILEOPT_EOF, -7},
    {"eof  ", 0, OPEN_FILEOPT_EOF, -7},
    {"NOPAD", 0, OPEN_FILEOPT_NOPAD, -7},
    {"NoPad ", 0, OPEN_FILEOPT_NOPAD, -7},
    {"BUFFER=8192", 0, OPEN_FILEOPT_BUFFER, 8192},
    {"buffer=1", 0, OPEN_FILEOPT_BUFFER, 1},
    {"Buffer = 8192", 0, OPEN_FILEOPT_BUFFER, 8192},
    {"BUFFER   =   4096   ", 0, OPEN_FILEOPT_BUFFER, 4096},
    {"BUFFER=+512", 0, OPEN_FILEOPT_BUFFER, 512},
    {"BUFFER = + 512", 0, OPEN_FILEOPT_BUFFER, 512},
    {"BUFFER=-5", 0, OPEN_FILEOPT_BUFFER, -5},
    {"BUFFER= -  1 0", 0, OPEN_FILEOPT_BUFFER, -10},
    {"BUFFER=1 048 576", 0, OPEN_FILEOPT_BUFFER, 1048576},
    {"BUFFER=0", 0, OPEN_FILEOPT_BUFFER, 0},
    {"BUFFER=000000000000000000000000000000064", 0, OPEN_FILEOPT_BUFFER, 64},
    {"BUFFER=9223372036854775807", 0, OPEN_FILEOPT_BUFFER, INT64_MAX},
    {"BUFFER=-9223372036854775807", 0, OPEN_FILEOPT_BUFFER, -INT64_MAX},
    // Beyond 63 bits.
    {"BUFFER=9223372036854775808", 1155, 0, 0},
    {"BUFFER=-9223372036854775808", 1155, 0, 0},
    {"BUFFER=18446744073709551616", 1155, 0, 0},
    {"BUFFER=20000000000000000000", 1155, 0, 0},
    {"BUFFER=99999999999999999999", 1155, 0, 0},
    {"BUFFER=1000000000000000000000000000000000000000", 1155, 0, 0},
    // Not the syntax.
    {"", 1189, 0, 0},
    {"   ", 1189, 0, 0},
    {"EO", 1189, 0, 0},
    {"EOF X", 1189, 0, 0},
    {"EOFS", 1189, 0, 0},
    {" EOF", 1189, 0, 0},
    {"NOPADDING", 1189, 0, 0},
    {"BUFFER", 1189, 0, 0},
    {"BUFFER=", 1189, 0, 0},
    {"BUFFER=  ", 1189, 0, 0},
    {"BUFFER=-", 1189, 0, 0},
    {"BUFFER 12", 1189, 0, 0},
    {"BUFFER==12", 1189, 0, 0},
    {"BUFFER=+-12", 1189, 0, 0},
    {"BUFFER=12x", 1189, 0, 0},
    {"BUFFER=12 x", 1189, 0, 0},
    {"BUFFER=0x10", 1189, 0, 0},
    {"BUFFER=1.5", 1189, 0, 0},
    {"BUFFERS=12", 1189, 0, 0},
    {"BUFF=12", 1189, 0, 0},
    {" BUFFER=12", 1189, 0, 0},
    {"=12", 1189, 0, 0},
};

class FileoptTest : public ::testing::TestWithParam<fileopt_case> {};

// With a place for the size (__f95_open_fileopt, __f90_parse_fileopt).
TEST_P(FileoptTest, WithSizePointer) {
    const fileopt_case &c = GetParam();
    using entry = int (*)(uint32_t *, const char *, int32_t, const stmt_location *, int64_t *);
    for (entry fn : {__f95_open_fileopt, __f90_parse_fileopt}) {
        const std::string buffer = std::string(c.text) + "99";
        uint32_t flags = 0xffffffffu;
        int64_t size = -7;
        EXPECT_EQ(fn(&flags, buffer.data(), static_cast<int32_t>(strlen(c.text)), &kOpenAt, &size), c.result);
        EXPECT_EQ(flags & ~OPEN_FILEOPT_MASK, ~OPEN_FILEOPT_MASK);
        if (c.result == 0) {
            EXPECT_EQ(flags & OPEN_FILEOPT_MASK, c.field);
            EXPECT_EQ(size, c.size);
        }
    }
}

// Without one (__f90_open_fileopt) BUFFER=N is accepted and has no effect:
// the field is left empty. The other values are as before.
TEST_P(FileoptTest, WithoutSizePointer) {
    const fileopt_case &c = GetParam();
    const std::string buffer = std::string(c.text) + "99";
    uint32_t flags = 0xffffffffu;
    EXPECT_EQ(__f90_open_fileopt(&flags, buffer.data(), static_cast<int32_t>(strlen(c.text)), &kOpenAt), c.result);
    EXPECT_EQ(flags & ~OPEN_FILEOPT_MASK, ~OPEN_FILEOPT_MASK);
    if (c.result == 0) {
        EXPECT_EQ(flags & OPEN_FILEOPT_MASK, c.field == OPEN_FILEOPT_BUFFER ? 0u : c.field);
    }
}

INSTANTIATE_TEST_SUITE_P(Values, FileoptTest, ::testing::ValuesIn(kFileopts));

TEST(Fileopt, NullValueIsUnassociated) {
    uint32_t flags = OPEN_RETURNING;
    int64_t size = 5;
    EXPECT_EQ(__f95_open_fileopt(&flags, nullptr, 3, &kOpenAt, &size), 1188);
    EXPECT_EQ(__f90_parse_fileopt(&flags, nullptr, 3, &kOpenAt, &size), 1188);
    EXPECT_EQ(__f90_open_fileopt(&flags, nullptr, 3, &kOpenAt), 1188);
    EXPECT_EQ(__f95_open_fileopt(&flags, nullptr, 0, &kOpenAt, nullptr), 1188);
    EXPECT_EQ(flags, OPEN_RETURNING);
    EXPECT_EQ(size, 5);
}

TEST(Fileopt, TheLengthEndsTheValue) {
    uint32_t flags = OPEN_RETURNING;
    int64_t size = 0;
    // "BUFFER=12" of which only "BUFFER=1" is the value.
    EXPECT_EQ(__f95_open_fileopt(&flags, "BUFFER=12", 8, &kOpenAt, &size), 0);
    EXPECT_EQ(size, 1);
    EXPECT_EQ(__f95_open_fileopt(&flags, "EOF", 2, &kOpenAt, &size), 1189);
    EXPECT_EQ(__f95_open_fileopt(&flags, "EOF", -1, &kOpenAt, &size), 1189);
}

// ---------------------------------------------------------------- abort form

struct abort_case {
    const char *name;
    std::function<void()> call;
    std::string report;
};

void PrintTo(const abort_case &c, std::ostream *os) { *os << c.name; }

class ParserAbortTest : public ::testing::TestWithParam<abort_case> {};

// Without the returning bit the parser writes banner, message and location
// (no unit is known yet) and aborts.
TEST_P(ParserAbortTest, Report) {
    const abort_case &c = GetParam();
    child_result r = run_checked([&] { c.call(); });
    EXPECT_EQ(r.signal, SIGABRT) << r.out << r.err;
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, std::string(kBanner) + c.report);
}

const abort_case kParserAborts[] = {
    {"access_bad",
     [] {
         uint32_t flags = OPEN_FILE;
         __f90_open_access(&flags, "RANDOM", 6, &kOpenAt);
     },
     std::string(" Error 1131:  ACCESS specifier is not 'SEQUENTIAL' or 'DIRECT'\n") + kOpenLocation},
    {"status_null",
     [] {
         uint32_t flags = 0;
         __f90_open_status(&flags, nullptr, 3, &kOpenAt);
     },
     std::string(" Error 1127:  unassociated STATUS specifier\n") + kOpenLocation},
    {"close_status_bad",
     [] {
         uint32_t flags = 0;
         __f90_close_status(&flags, "KEEP IT", 7, &kCloseAt);
     },
     std::string(" Error 1142:  STATUS specifier is not 'KEEP' or 'DELETE'\n") + kCloseLocation},
    {"fileopt_out_of_range",
     [] {
         uint32_t flags = 0;
         int64_t size = 0;
         __f95_open_fileopt(&flags, "BUFFER=99999999999999999999", 27, &kOpenAt, &size);
     },
     std::string(" Error 1155:  The buffer size value in a FILEOPT= specifier is out of range\n") + kOpenLocation},
    {"fileopt_null",
     [] {
         uint32_t flags = 0;
         __f90_open_fileopt(&flags, nullptr, 3, &kOpenAt);
     },
     std::string(" Error 1188:  unassociated FILEOPT specifier\n") + kOpenLocation},
};

INSTANTIATE_TEST_SUITE_P(Parsers, ParserAbortTest, ::testing::ValuesIn(kParserAborts),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- set-up

// A parser may be the first call of a program: it runs the one-time set-up.
KRM_SCENARIO(parser_runs_setup) {
    if (__f90_initio_done) _exit(3);
    uint32_t flags = OPEN_RETURNING;
    if (__f90_open_pad(&flags, "NO", 2, &kOpenAt) != 0) _exit(4);
    _exit(__f90_initio_done == 1 && __f90_small_unit_pointer_table[6] == &__f90_default_output_unit ? 0 : 5);
}

TEST(SpecifierParsers, RunTheSetUp) {
    child_result r = run_scenario("parser_runs_setup");
    EXPECT_EQ(r.exit_code, 0) << r.err;
}

}  // namespace

// Sequential formatted WRITE beyond what gfortran can check: the library's
// own rules where they depart from gfortran (each case says why), the
// record frame (ADVANCE='NO', "$", records longer than the buffer, carriage
// control on FORM='PRINT' units), and every failure with its number in the
// returning form and its exact report in the aborting one.

#include <gtest/gtest.h>

#include <signal.h>
#include <stdint.h>
#include <string.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "formatted/formatted_statements.h"
#include "support/child.h"
#include "support/files.h"
#include "support/open_close.h"
#include "support/statements.h"

using namespace krm_test;

namespace {

const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";
const char kWriteLocation[] = " Location:  the WRITE statement at line 20 of \"t.f90\"\n";
const char kUnit11[] = " Unit:  11\n File:  fort.11\n";

std::string blanks(size_t n) { return std::string(n, ' '); }

// WRITE (11, format) items, then CLOSE (11): the file's bytes.
std::string written(const std::string &format, const std::vector<fitem> &items, const fw_options &opt = {}) {
    fw_options o = opt;
    o.flags |= IO_RETURNING;
    int rc = formatted_write(11, format, items, o);
    EXPECT_EQ(rc, 0) << format;
    EXPECT_EQ(close_unit(11), 0);
    return read_file("fort.11");
}

// ---------------------------------------------------------------- the library's own editing rules

struct rule_case {
    const char *name;
    const char *format;
    std::vector<fitem> items;
    const char *expected;  // the record, without its newline
    bool f77compat;        // the older dialect: its format compiler and its item calls
    const char *why;       // why gfortran cannot be the judge
};

void PrintTo(const rule_case &c, std::ostream *os) { *os << c.name << " " << c.format; }

class EditingRule : public InTempDir, public ::testing::WithParamInterface<rule_case> {};

TEST_P(EditingRule, WritesTheRecord) {
    const rule_case &c = GetParam();
    fw_options opt;
    if (c.f77compat) {
        opt.flags = IO_F77COMPAT;
        opt.f77compat_format = true;
    }
    EXPECT_TRUE(same_records(written(c.format, c.items, opt), std::string(c.expected) + "\n")) << c.why;
}

const char kNoWidth[] = "gfortran requires w with I, B, O, Z and L; the item's size gives the width";
const char kCharBits[] = "gfortran refuses character items under I, B, O, Z; their bytes are a big-endian integer";
const char kUnsigned[] = "gfortran has no unsigned integers";
const char kLogicalAsInteger[] = "gfortran refuses logical items under I, B, O, Z; they edit as integers";
const char kBytesUnderA[] = "gfortran refuses non-character items under A; A copies the item's bytes";
const char kMAboveW[] = "gfortran refuses m greater than w; the field is too narrow and filled with asterisks";
const char kSU[] = "SU is not a gfortran descriptor: every integer edits as unsigned";
const char kRadix[] = "the R descriptor belongs to the older dialect";
const char kOlder[] = "older-dialect rule";

const rule_case kRuleCases[] = {
    // Widths of descriptors without w, by the item's size.
    {"i_default_i1", "(I)", {fi1(-5)}, "     -5", false, kNoWidth},
    {"i_default_i2", "(I)", {fi2(7)}, "      7", false, kNoWidth},
    {"i_default_i4", "(I)", {fi4(42)}, "          42", false, kNoWidth},
    {"i_default_i4_zero", "(I)", {fi4(0)}, "           0", false, kNoWidth},
    {"i_default_i8", "(I)", {fi8(-1)}, "                     -1", false, kNoWidth},
    {"i_default_i8_extreme", "(I)", {fi8(INT64_MIN)}, "   -9223372036854775808", false, kNoWidth},
    {"b_default_i1", "(B)", {fi1(-1)}, " 11111111", false, kNoWidth},
    {"b_default_i2", "(B)", {fi2(-1)}, " 1111111111111111", false, kNoWidth},
    {"b_default_i4", "(B)", {fi4(5)}, "                              101", false, kNoWidth},
    {"b_default_i8", "(B)", {fi8(-1)}, " 1111111111111111111111111111111111111111111111111111111111111111", false, kNoWidth},
    {"o_default_i1", "(O)", {fi1(-1)}, "    377", false, kNoWidth},
    {"o_default_i4", "(O)", {fi4(-1)}, " 37777777777", false, kNoWidth},
    {"z_default_i2", "(Z)", {fi2(-1)}, "   FFFF", false, kNoWidth},
    {"z_default_i8", "(Z)", {fi8(-1)}, "       FFFFFFFFFFFFFFFF", false, kNoWidth},
    {"l_default_l1", "(L)", {fl1(1)}, " T", false, kNoWidth},
    {"l_default_l4", "(L)", {fl4(0)}, " F", false, kNoWidth},
    {"l_default_l8", "(L)", {fl8(1)}, " T", false, kNoWidth},
    {"g_default_integer", "(G)", {fi4(42)}, "          42", false, kNoWidth},
    {"g_default_logical", "(G)", {fl4(1)}, " T", false, kNoWidth},
    {"g_default_character", "(G,'#')", {fch("abc")}, "abc#", false, kNoWidth},

    // Character items under I, B, O, Z: the first byte is the most significant.
    {"z_character", "(Z4)", {fch("AB")}, "4142", false, kCharBits},
    {"z_character_default", "(Z)", {fch("AB")}, " 4142", false, kCharBits},
    {"z_character_empty", "(Z)", {fch("")}, " 0", false, kCharBits},
    {"z_character_m", "(Z3.2)", {fch(std::string("\x05", 1))}, " 05", false, kCharBits},
    {"b_character_default", "(B)", {fch("A")}, "  1000001", false, kCharBits},
    {"b_character_zero", "(B8)", {fch(std::string("\0", 1))}, "       0", false, kCharBits},
    {"o_character_default_2", "(O)", {fch("AB")}, "  40502", false, kCharBits},
    {"o_character_default_3", "(O)", {fch("ABC")}, " 20241103", false, kCharBits},
    {"i_character_default", "(I)", {fch("A")}, "  65", false, kCharBits},
    {"i_character_negative", "(I)", {fch("\xff")}, " -1", false, kCharBits},
    {"i_character_zero", "(I)", {fch(std::string("\0\0", 2))}, "  0", false, kCharBits},
    {"i_character_w", "(I6)", {fch(std::string("\x01\x00", 2))}, "   256", false, kCharBits},
    {"i_character_i0", "(I0)", {fch("\x80")}, "-128", false, kCharBits},
    {"i_character_sp", "(SP,I)", {fch("A")}, " +65", false, kCharBits},
    {"i_character_su", "(SU,I)", {fch("\xff")}, "  255", false, kCharBits},
    {"i_character_sign_bytes", "(I7)", {fch(std::string("\xff\xff\x80\x00", 4))}, " -32768", false, kCharBits},

    // Unsigned items; under SP the "+" counts as a digit, so zeros for m stand in front of it.
    {"u4_largest", "(I12)", {fu4(UINT32_MAX)}, "  4294967295", false, kUnsigned},
    {"u8_largest", "(I20)", {fu8(UINT64_MAX)}, "18446744073709551615", false, kUnsigned},
    {"u1_u2_largest", "(I3,I5)", {fu1(255), fu2(65535)}, "25565535", false, kUnsigned},
    {"u4_sp", "(SP,I6)", {fu4(5)}, "    +5", false, kUnsigned},
    {"u4_sp_m", "(SP,I6.4)", {fu4(5)}, "  00+5", false, kUnsigned},
    {"u4_sp_narrow", "(SP,I2)", {fu4(10)}, "**", false, kUnsigned},
    {"u4_sp_no_width", "(SP,I)", {fu4(5)}, "           5", false, kUnsigned},
    {"u4_sp_no_width_zero", "(SP,I)", {fu4(0)}, "          +0", false, kUnsigned},
    {"u1_b_default", "(B)", {fu1(255)}, " 11111111", false, kUnsigned},
    {"u8_z_default", "(Z)", {fu8(UINT64_MAX)}, "       FFFFFFFFFFFFFFFF", false, kUnsigned},
    {"u4_z_sp", "(SP,Z4)", {fu4(255)}, "  FF", false, kUnsigned},

    // Logical items.
    {"l_any_nonzero", "(L5,L2)", {fl4(2), fl2(256)}, "    T T", false, "a logical other than 0 and 1 is not standard; any nonzero value is true"},
    {"l8_high_bits", "(L3)", {fl8(INT64_C(0x100000000))}, "  T", false, "a logical other than 0 and 1 is not standard; any nonzero value is true"},
    {"l_under_i", "(I3,1X,Z4,1X,B2)", {fl4(1), fl4(1), fl1(1)}, "  1    1  1", false, kLogicalAsInteger},

    // A on items that are not characters: the item's bytes in memory order.
    {"a_on_i4", "(A,'#',A2,'#',A6)", {fi4(0x64636261), fi4(0x64636261), fi4(0x64636261)}, "abcd#ab#  abcd", false, kBytesUnderA},
    {"a_on_short_items", "(A,A)", {fi1(0x41), fi2(0x4342)}, "ABC", false, kBytesUnderA},
    {"a_on_i8", "(A)", {fi8(INT64_C(0x6867666564636261))}, "abcdefgh", false, kBytesUnderA},
    {"a_on_l4", "(A)", {fl4(0x2a2a2a2a)}, "****", false, kBytesUnderA},
    {"a0_writes_nothing", "(A0,'#')", {fch("abc")}, "#", false, "gfortran refuses A0; it writes nothing"},

    // A field too narrow for m.
    {"i_m_above_w", "(I2.3)", {fi4(1)}, "**", false, kMAboveW},
    {"i_m_above_w_zero", "(I2.3)", {fi4(0)}, "**", false, kMAboveW},
    {"b_m_above_w", "(B3.5)", {fi4(1)}, "***", false, kMAboveW},
    {"z_m_above_w_zero", "(Z1.2)", {fi4(0)}, "*", false, kMAboveW},

    // SU.
    {"su_i4", "(SU,I12)", {fi4(-1)}, "  4294967295", false, kSU},
    {"su_i1_zero_extended", "(SU,I5)", {fi1(-1)}, "  255", false, kSU},
    {"su_i2", "(SU,I6)", {fi2(-2)}, " 65534", false, kSU},
    {"su_i8", "(SU,I0)", {fi8(-1)}, "18446744073709551615", false, kSU},
    {"su_zero", "(SU,I4)", {fi4(0)}, "   0", false, kSU},
    {"su_then_ss", "(SU,I4,SS,I3)", {fi1(-1), fi1(-1)}, " 255 -1", false, kSU},

    // Positioning that gfortran does otherwise or refuses.
    {"x_then_empty_field", "(5X,A)", {fch("")}, "", false, "gfortran writes the skipped blanks even when no character follows them"},
    {"x_then_tl", "(A,5X,TL3,A)", {fch("a"), fch("b")}, "a  b", false, "gfortran misplaces a field after nX then TLn; here the moves add up"},
    {"signed_x_moves_left", "(A,-2X,A)", {fch("abc"), fch("Z")}, "aZc", false, "a signed X is an extension"},
    {"x_left_stops_at_start", "(A,-9X,A)", {fch("abc"), fch("Z")}, "Zbc", false, "a signed X is an extension"},
    {"repeat_zero_runs_once", "(0I3)", {fi4(1), fi4(2)}, "  1\n  2", false, "a repeat count of 0 is an extension; the item runs once"},

    // The older dialect.
    {"radix_16", "(16R,I8)", {fi4(255)}, "      FF", true, kRadix},
    {"radix_36", "(36R,I4)", {fi4(35)}, "   Z", true, kRadix},
    {"radix_2", "(2R,I9)", {fi4(5)}, "      101", true, kRadix},
    {"radix_negative", "(16R,I4)", {fi4(-255)}, " -FF", true, kRadix},
    {"radix_back_to_10", "(16R,I4,R,I4,10R,I4)", {fi4(255), fi4(255), fi4(255)}, "  FF 255 255", true, kRadix},
    {"radix_i8", "(16R,I17)", {fi8(INT64_MAX)}, " 7FFFFFFFFFFFFFFF", true, kRadix},
    {"radix_no_effect_on_z", "(8R,Z4)", {fi4(255)}, "  FF", true, kRadix},
    {"f77_i0_writes_nothing", "(I0,'#',I0,'#')", {fi4(5), fi4(0)}, "##", true, kOlder},
    {"f77_l0_is_l1", "(L0,L0)", {fl4(1), fl4(0)}, "TF", true, kOlder},
    {"f77_l_on_integer", "(L3)", {fi4(5)}, "  T", true, kOlder},
    {"f77_l_on_character", "(2L3)", {fch("ab"), fch(std::string("\0\0", 2))}, "  T  F", true, kOlder},
    {"f77_l_on_character_3_bytes", "(L3)", {fch(std::string("\0\0\x01", 3))}, "  T", true, kOlder},
    {"f77_i_on_logical", "(I5)", {fl4(1)}, "    1", true, kOlder},
    {"f77_i_on_character_in_memory_order", "(I5)", {fch(std::string("\x01\x00", 2))}, "    1", true, kOlder},
    {"f77_a_on_integer", "(A)", {fi4(0x64636261)}, "abcd", true, kOlder},
};

INSTANTIATE_TEST_SUITE_P(Cases, EditingRule, ::testing::ValuesIn(kRuleCases),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- wide integers as character values

std::string bytes_of_hex(const std::string &hex) {
    std::string b;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) b += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return b;
}

// The reference digits of a character value taken as a big-endian two's
// complement integer, by schoolbook division on 32-bit limbs.
std::string decimal_of_bytes(std::string b) {
    const bool negative = !b.empty() && (static_cast<uint8_t>(b[0]) & 0x80);
    if (negative) {
        for (char &c : b) c = static_cast<char>(~c);
        for (size_t i = b.size(); i-- > 0;)
            if (++b[i] != 0) break;
    }
    while (b.size() % 4) b.insert(b.begin(), '\0');
    std::vector<uint32_t> limbs;  // most significant first
    for (size_t i = 0; i < b.size(); i += 4) {
        uint32_t l = 0;
        for (size_t k = 0; k < 4; ++k) l = (l << 8) | static_cast<uint8_t>(b[i + k]);
        limbs.push_back(l);
    }
    std::string d;
    for (;;) {
        bool zero = true;
        uint64_t rem = 0;
        for (uint32_t &l : limbs) {
            uint64_t cur = (rem << 32) | l;
            l = static_cast<uint32_t>(cur / 10);
            rem = cur % 10;
            zero = zero && l == 0;
        }
        d.insert(d.begin(), static_cast<char>('0' + rem));
        if (zero) break;
    }
    return negative ? "-" + d : d;
}

// Digits of the bytes' bits, `bits` to a digit, without leading zeros.
std::string digits_by_bits(const std::string &b, int bits) {
    std::string d;
    uint32_t acc = 0;
    int have = 0;
    for (size_t i = b.size(); i-- > 0;) {
        acc |= static_cast<uint32_t>(static_cast<uint8_t>(b[i])) << have;
        for (have += 8; have >= bits; have -= bits, acc >>= bits)
            d.insert(d.begin(), "0123456789ABCDEF"[acc & ((1u << bits) - 1)]);
    }
    if (have) d.insert(d.begin(), "0123456789ABCDEF"[acc]);
    size_t first = d.find_first_not_of('0');
    return first == std::string::npos ? "0" : d.substr(first);
}

class WideCharacterInteger : public InTempDir {};

TEST_F(WideCharacterInteger, DecimalDigitsOfLongValues) {
    const char *const values[] = {
        "00000000000000000000000000000000", "00000000000000000000000000000001",
        "ffffffffffffffffffffffffffffffff", "000000000000000000000000000000ff",
        "00000000000000000000000000010000", "ffffffffffffffffffffffffffff0000",
        "0000000000000000ffffffffffffffff", "ffffffffffffffff0000000000000000",
        "00000010000000000000000000003039", "7fffffffffffffffffffffffffffffff",
        "80000000000000000000000000000000", "7fffffffffffffffffffffffffffffffffffffff",
        "8000000000000000000000000000000000000001", "0000ff",
    };
    std::vector<fitem> items;
    std::string expected;
    for (const char *hex : values) {
        const std::string v = bytes_of_hex(hex);
        const std::string d = decimal_of_bytes(v);
        items.push_back(fch(v));
        expected += blanks(50 - d.size()) + d + "\n";
        // Without w the field has two positions more than the digits.
        items.push_back(fch(v));
        const size_t digits = d.size() - (d[0] == '-' ? 1 : 0);
        expected += d == "0" ? "  0\n" : blanks(digits + 2 - d.size()) + d + "\n";
    }
    EXPECT_TRUE(same_records(written("(I50,/,I)", items), expected));
}

TEST_F(WideCharacterInteger, HexOctalAndBinaryOfTwelveBytes) {
    const std::string v("\x00\x00\xa5\x01\x02\x03\x04\x05\x06\x07\x08\x09", 12);
    const std::string hex = digits_by_bits(v, 4), oct = digits_by_bits(v, 3), bin = digits_by_bits(v, 1);
    ASSERT_EQ(hex, "A5010203040506070809");
    // Default widths for 12 bytes: 2n + 1, 8n / 3 + 1, 8n + 1.
    EXPECT_TRUE(same_records(written("(Z,/,O,/,B,/,Z22.21)", {fch(v), fch(v), fch(v), fch(v)}),
                             blanks(25 - hex.size()) + hex + "\n" + blanks(33 - oct.size()) + oct + "\n" +
                                 blanks(97 - bin.size()) + bin + "\n" + " 0" + hex + "\n"));
}

// ---------------------------------------------------------------- the record frame

class RecordFrame : public InTempDir {};

TEST_F(RecordFrame, NonAdvancingStatementIsContinuedByTheNext) {
    fw_options no;
    no.flags = IO_RETURNING;
    no.advance = "NO";
    ASSERT_EQ(formatted_write(11, "(A)", {fch("abc")}, no), 0);
    // The second statement's T1 is its own first column.
    ASSERT_EQ(formatted_write(11, "(A,T1,A)", {fch("xy"), fch("z")}, {IO_RETURNING}), 0);
    ASSERT_EQ(formatted_write(11, "(I3,' x')", {fi4(1)}, no), 0);
    ASSERT_EQ(formatted_write(11, "(TL5,A)", {fch("!")}, no), 0);
    ASSERT_EQ(formatted_write(11, "(T3,A)", {fch("q")}, {IO_RETURNING}), 0);
    ASSERT_EQ(close_unit(11), 0);
    EXPECT_TRUE(same_records(read_file("fort.11"), "abczy\n  1 x!  q\n"));
}

TEST_F(RecordFrame, AdvanceYesEndsTheRecord) {
    fw_options yes;
    yes.flags = IO_RETURNING;
    yes.advance = "YES";
    ASSERT_EQ(formatted_write(11, "(A)", {fch("a")}, yes), 0);
    ASSERT_EQ(formatted_write(11, "(A)", {fch("b")}, yes), 0);
    ASSERT_EQ(close_unit(11), 0);
    EXPECT_EQ(read_file("fort.11"), "a\nb\n");
}

TEST_F(RecordFrame, DollarKeepsTheRecordOpen) {
    ASSERT_EQ(formatted_write(11, "(I3,$)", {fi4(1)}, {IO_RETURNING}), 0);
    ASSERT_EQ(formatted_write(11, "(I3,' end',$,' never')", {fi4(2)}, {IO_RETURNING}), 0);
    ASSERT_EQ(formatted_write(11, "(T2,A)", {fch("!")}, {IO_RETURNING}), 0);
    ASSERT_EQ(close_unit(11), 0);
    EXPECT_EQ(read_file("fort.11"), "  1  2 end !\n");
}

TEST_F(RecordFrame, RecordLongerThanTheBufferGrowsIt) {
    const std::string big(100000, 'x');
    ASSERT_EQ(formatted_write(11, "(A)", {fch("small")}, {IO_RETURNING}), 0);  // stays in the buffer
    ASSERT_EQ(formatted_write(11, "('<',A,'>')", {fch(big)}, {IO_RETURNING}), 0);
    with_unit(11, [](unit *up) {
        // The grown buffer was given back at the end of the statement.
        EXPECT_EQ(up->buffer, nullptr);
        EXPECT_EQ(up->flags & UNIT_BUFFER_GROWN, 0u);
    });
    ASSERT_EQ(formatted_write(11, "(A)", {fch("after")}, {IO_RETURNING}), 0);
    ASSERT_EQ(close_unit(11), 0);
    EXPECT_TRUE(same_records(read_file("fort.11"), "small\n<" + big + ">\nafter\n"));
}

TEST_F(RecordFrame, PositionFarBeyondTheBuffer) {
    EXPECT_TRUE(same_records(written("(T100000,A,TL3,A)", {fch("a"), fch("b")}),
                             blanks(99997) + "b a\n"));
}

TEST_F(RecordFrame, ManyRecordsInOneStatementPassThroughTheBuffer) {
    std::vector<fitem> items;
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        std::string text = "record " + std::to_string(i) + std::string(static_cast<size_t>(i % 50), '.');
        items.push_back(fch(text));
        items.push_back(fi4(i));
        expected += text + blanks(i < 10 ? 5 : i < 100 ? 4 : i < 1000 ? 3 : 2) + std::to_string(i) + "\n";
    }
    EXPECT_TRUE(same_records(written("(A,I6)", items), expected));
}

TEST_F(RecordFrame, NonAdvancingRecordLongerThanTheBuffer) {
    fw_options no;
    no.flags = IO_RETURNING;
    no.advance = "no ";
    const std::string big(9000, 'y');
    ASSERT_EQ(formatted_write(11, "(A)", {fch(big)}, no), 0);
    ASSERT_EQ(formatted_write(11, "(A)", {fch(big)}, no), 0);
    ASSERT_EQ(formatted_write(11, "(A)", {fch("end")}, {IO_RETURNING}), 0);
    ASSERT_EQ(close_unit(11), 0);
    EXPECT_TRUE(same_records(read_file("fort.11"), big + big + "end\n"));
}

TEST_F(RecordFrame, FormatWithoutDataEditDescriptorAndNoItems) {
    ASSERT_EQ(formatted_write(11, "()", {}, {IO_RETURNING}), 0);
    ASSERT_EQ(formatted_write(11, "('x',/)", {}, {IO_RETURNING}), 0);
    ASSERT_EQ(formatted_write(11, "(5X,I3)", {}, {IO_RETURNING}), 0);
    ASSERT_EQ(close_unit(11), 0);
    EXPECT_EQ(read_file("fort.11"), "\nx\n\n\n");
}

TEST_F(RecordFrame, CharacterItemOfLengthZeroTakesADescriptor) {
    EXPECT_EQ(written("(A,'|',A3,'|',A)", {fch(""), fch(""), fch("z")}), "|   |z\n");
}

TEST_F(RecordFrame, HandBuiltBlockWithReservedSignCode) {
    // Code 10 is never compiled; engines take it as SS.
    hand_format f({KRM_FMT_SP, KRM_FMT_IW, 3, 1, KRM_FMT_S_RESERVED, KRM_FMT_IW, 3, 1, KRM_FMT_END, 4});
    ASSERT_EQ(formatted_write_block(11, f, {fi4(1), fi4(2), fi4(3), fi4(4)}, {IO_RETURNING}), 0);
    ASSERT_EQ(close_unit(11), 0);
    EXPECT_EQ(read_file("fort.11"), " +1  2\n +3  4\n");
}

TEST_F(RecordFrame, HandBuiltRepeatGroupServesStatementsInTurn) {
    // "(2(I2),'.')": the counter lives outside the operations, which no
    // statement changes.
    hand_format f({KRM_FMT_REPEAT, 0, 2, KRM_FMT_IW, 2, 4, KRM_FMT_REPEAT_END, 0, 7, KRM_FMT_STRING, 1, '.',
                   KRM_FMT_END, 4},
                  1);
    ASSERT_EQ(formatted_write_block(11, f, {fi4(1), fi4(2), fi4(3)}, {IO_RETURNING}), 0);
    ASSERT_EQ(formatted_write_block(11, f, {fi4(4)}, {IO_RETURNING}), 0);
    ASSERT_EQ(close_unit(11), 0);
    EXPECT_EQ(read_file("fort.11"), " 1 2.\n 3\n 4\n");
}

TEST_F(RecordFrame, PrintGoesToStandardOutput) {
    child_result r = run_forked([] {
        EXPECT_EQ(formatted_write(-1, "(A,I3)", {fch("x ="), fi4(42), fch("y ="), fi4(-1)}), 0);
        EXPECT_EQ(formatted_write(-1, "(2(A,:,', '))", {fch("last")}), 0);
    });
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.out, "x = 42\ny = -1\nlast\n");
    EXPECT_EQ(r.err, "");
}

// ---------------------------------------------------------------- carriage control on FORM='PRINT'

class CarriageControl : public InTempDir {
protected:
    void SetUp() override {
        InTempDir::SetUp();
        ASSERT_EQ(open_file(12, "p.txt", OPEN_RETURNING | OPEN_FORM_PRINT | OPEN_F77COMPAT), 0);
        with_unit(12, [](unit *up) { EXPECT_NE(up->flags & UNIT_PRINT, 0u); });
    }
    std::string closed() {
        EXPECT_EQ(close_unit(12), 0);
        return read_file("p.txt");
    }
};

TEST_F(CarriageControl, FirstByteOfEachRecordInOneStatement) {
    ASSERT_EQ(formatted_write(12, "(A)", {fch(" first"), fch("0abc"), fch("1abc"), fch("+abc"), fch(" abc"),
                                          fch("xabc")}, {IO_RETURNING}),
              0);
    EXPECT_EQ(closed(), "first\n\nabc\n\fabc\rabc\nabc\nabc\n");
}

TEST_F(CarriageControl, FirstByteOfEachStatement) {
    for (const char *text : {" first", "0abc", "1abc", "+abc", " abc", "xabc"})
        ASSERT_EQ(formatted_write(12, "(A)", {fch(text)}, {IO_RETURNING}), 0);
    EXPECT_EQ(closed(), "first\n\nabc\n\fabc\rabc\nabc\nabc\n");
}

TEST_F(CarriageControl, RecordsEndedBySlash) {
    ASSERT_EQ(formatted_write(12, "(A,/,A)", {fch(" a"), fch("0b")}, {IO_RETURNING}), 0);
    // The further records of n/ are empty and get no carriage control.
    ASSERT_EQ(formatted_write(12, "(A,2/,A)", {fch("1c"), fch(" d")}, {IO_RETURNING}), 0);
    EXPECT_EQ(closed(), "a\n\nb\n\fc\n\nd\n");
}

TEST_F(CarriageControl, PositionedFieldLeavesABlankFirstByte) {
    ASSERT_EQ(formatted_write(12, "(T2,A)", {fch("abc")}, {IO_RETURNING}), 0);
    ASSERT_EQ(formatted_write(12, "(T3,A,T1,A)", {fch("def"), fch("0")}, {IO_RETURNING}), 0);
    EXPECT_EQ(closed(), "abc\n\n def\n");
}

TEST_F(CarriageControl, OverprintAtTheStartOfTheFile) {
    ASSERT_EQ(formatted_write(12, "(A)", {fch("+abc")}, {IO_RETURNING}), 0);
    EXPECT_EQ(closed(), "abc\n");
}

TEST_F(CarriageControl, OverprintAfterThePreviousRecordLeftTheBuffer) {
    // Each statement passes its bytes on: the newline before "+" is already
    // in the file, which steps back over it.
    int before = __f90_set_synchronous_flag(1);
    ASSERT_EQ(formatted_write(12, "(A)", {fch(" first")}, {IO_RETURNING}), 0);
    EXPECT_EQ(read_file("p.txt"), "first\n");
    ASSERT_EQ(formatted_write(12, "(A)", {fch("+abc")}, {IO_RETURNING}), 0);
    __f90_set_synchronous_flag(before);
    EXPECT_EQ(closed(), "firstabc\n");
}

// ---------------------------------------------------------------- ADVANCE=

struct advance_case {
    const char *name;
    const char *text;  // null: the specifier's variable is not associated
    int32_t length;
    int expected;      // 0: accepted
    bool no_advance;   // what an accepted text means
};

void PrintTo(const advance_case &c, std::ostream *os) { *os << c.name; }

class AdvanceSpecifier : public InTempDir, public ::testing::WithParamInterface<advance_case> {};

TEST_P(AdvanceSpecifier, SetsTheModeOrFails) {
    const advance_case &c = GetParam();
    io_control_formatted_write ctl = {};
    ctl.unit_no = 11;
    ctl.flags = IO_RETURNING | IO_OWNED_FORMAT;
    ctl.loc = &kFormattedWriteAt;
    ASSERT_EQ(__f90_parse_format(&ctl.format, &ctl.format_counters, 1, ctl.loc, "(A)", 3, 0), 0);
    ASSERT_EQ(__f90_ssfw(&ctl), 0);
    ASSERT_EQ(__f90_sfw_advance(&ctl, c.text, c.length), c.expected);
    if (c.expected == 0) {
        ASSERT_EQ(__f90_sfw_ch(&ctl, "ab", 2), 0);
        ASSERT_EQ(__f90_esfw(&ctl), 0);
        ASSERT_EQ(formatted_write(11, "(A)", {fch("c")}, {IO_RETURNING}), 0);
    }
    // The unit was released either way.
    with_unit(11, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
    ASSERT_EQ(close_unit(11), 0);
    if (c.expected == 0) {
        EXPECT_EQ(read_file("fort.11"), c.no_advance ? "abc\n" : "ab\nc\n");
    }
}

const advance_case kAdvanceCases[] = {
    {"no", "NO", 2, 0, true},
    {"no_lower", "no", 2, 0, true},
    {"no_mixed_blanks", "nO   ", 5, 0, true},
    {"yes", "YES", 3, 0, false},
    {"yes_lower_blanks", "yes ", 4, 0, false},
    {"yes_mixed", "yEs", 3, 0, false},
    {"unassociated", nullptr, 2, 1061, false},
    {"empty", "", 0, 1062, false},
    {"one_letter_n", "N", 1, 1062, false},
    {"one_letter_y", "Y", 1, 1062, false},
    {"ye", "YE", 2, 1062, false},
    {"nope", "NOPE", 4, 1062, false},
    {"yesno", "YESNO", 5, 1062, false},
    {"leading_blank", " NO", 3, 1062, false},
    {"maybe", "MAYBE", 5, 1062, false},
    {"no_cut_by_length", "NOPE", 2, 0, true},
};

INSTANTIATE_TEST_SUITE_P(Cases, AdvanceSpecifier, ::testing::ValuesIn(kAdvanceCases),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- failures: the returned number

// A statement that fails part way: run with IO_RETURNING, its number is
// returned, the unit is released, and the next statement on it works.
struct failure_case {
    const char *name;
    const char *format;               // compiled at run time, or
    std::vector<int32_t> block;       // the operations of a hand-built block
    std::vector<fitem> items;
    uint32_t flags;
    int expected;
};

void PrintTo(const failure_case &c, std::ostream *os) { *os << c.name; }

int run_failure_case(const failure_case &c, uint32_t extra_flags) {
    fw_options opt;
    opt.flags = c.flags | extra_flags;
    opt.f77compat_format = (c.flags & IO_F77COMPAT) != 0;
    if (c.format) return formatted_write(11, c.format, c.items, opt);
    hand_format f(c.block);
    return formatted_write_block(11, f, c.items, opt);
}

class StatementFailure : public InTempDir, public ::testing::WithParamInterface<failure_case> {};

TEST_P(StatementFailure, ReturnsItsNumberAndReleasesTheUnit) {
    const failure_case &c = GetParam();
    EXPECT_EQ(run_failure_case(c, IO_RETURNING), c.expected);
    with_unit(11, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
    EXPECT_EQ(formatted_write(11, "(A)", {fch("next")}, {IO_RETURNING}), 0);
    EXPECT_EQ(close_unit(11), 0);
}

const failure_case kFailureCases[] = {
    // 1215: no row for the item type.
    {"l_on_integer", "(L3)", {}, {fi4(1)}, 0, 1215},
    {"l_on_unsigned", "(L3)", {}, {fu8(1)}, 0, 1215},
    {"l_on_character", "(I2,L3)", {}, {fi4(1), fch("T")}, 0, 1215},
    {"f_on_character", "(F10.3)", {}, {fch("1.5")}, 0, 1215},
    {"e_on_character", "(E10.3)", {}, {fch("1.5")}, 0, 1215},
    {"d_with_exponent_on_character", "(D12.4E3)", {}, {fch("x")}, 0, 1215},
    {"q_on_integer", "(Q)", {}, {fi4(1)}, 0, 1215},
    {"interval_on_integer", nullptr, {KRM_FMT_VFWD, 10, 2, 1, KRM_FMT_END, 4}, {fi4(1)}, 0, 1215},
    {"y_on_character", nullptr, {KRM_FMT_YWD, 10, 2, 1, KRM_FMT_END, 4}, {fch("x")}, 0, 1215},
    // 1216: the format reverts with no data edit descriptor since it last did.
    {"empty_format_with_item", "()", {}, {fi4(1)}, 0, 1216},
    {"strings_only_with_item", "('x')", {}, {fch("y")}, 0, 1216},
    {"positions_only_with_item", "(5X,/)", {}, {fl4(1)}, 0, 1216},
    {"older_dialect_says_format_error", "('x')", {}, {fi4(1)}, IO_F77COMPAT, 1000},
    // 1067: no block, a block without its magic, an opcode no engine knows.
    {"bad_opcode_94", nullptr, {94, KRM_FMT_IW, 3, 1, KRM_FMT_END, 4}, {fi4(1)}, 0, 1067},
    {"bad_opcode_0", nullptr, {KRM_FMT_IW, 3, 1, 0, KRM_FMT_END, 4}, {fi4(1), fi4(2)}, 0, 1067},
    {"bad_opcode_in_reverted_part", nullptr, {KRM_FMT_IW, 3, 1, KRM_FMT_END, 9, 200}, {fi4(1), fi4(2)}, 0, 1067},
    // 1072 and 1073: widths no compiler text gives.
    {"negative_iw", nullptr, {KRM_FMT_IW, -3, 1, KRM_FMT_END, 4}, {fi4(5)}, 0, 1072},
    {"negative_iw_zero_value", nullptr, {KRM_FMT_IW, -3, 1, KRM_FMT_END, 4}, {fi4(0)}, 0, 1072},
    {"negative_iwm", nullptr, {KRM_FMT_IWM, -1, 1, 1, KRM_FMT_END, 4}, {fi8(5)}, 0, 1072},
    {"negative_bw", nullptr, {KRM_FMT_BW, -2, 1, KRM_FMT_END, 4}, {fi4(5)}, 0, 1072},
    {"negative_zw_character", nullptr, {KRM_FMT_ZW, -2, 1, KRM_FMT_END, 4}, {fch("ab")}, 0, 1072},
    {"negative_aw", nullptr, {KRM_FMT_AW, -1, 1, KRM_FMT_END, 4}, {fch("abc")}, 0, 1072},
    {"negative_lw", nullptr, {KRM_FMT_LW, -1, 1, KRM_FMT_END, 4}, {fl4(1)}, 0, 1072},
    {"zero_lw", "(L0)", {}, {fl4(1)}, 0, 1073},
};

INSTANTIATE_TEST_SUITE_P(Cases, StatementFailure, ::testing::ValuesIn(kFailureCases),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(RecordFrame, BlockWithoutMagicOrAlignment) {
    hand_format f({KRM_FMT_IW, 3, 1, KRM_FMT_END, 4});
    f.words[0] = 0x544D4624;  // "$FMT"
    fw_options opt;
    opt.flags = IO_RETURNING;
    EXPECT_EQ(formatted_write_block(11, f, {fi4(1)}, opt), 1067);

    io_control_formatted_write ctl = {};
    ctl.unit_no = 11;
    ctl.flags = IO_RETURNING;
    ctl.loc = &kFormattedWriteAt;
    EXPECT_EQ(__f90_ssfw(&ctl), 1067);  // no block at all

    hand_format g({KRM_FMT_IW, 3, 1, KRM_FMT_END, 4});
    std::vector<char> shifted(g.words.size() * 4 + 1);
    memcpy(shifted.data() + 1, g.words.data(), g.words.size() * 4);
    ctl.format = reinterpret_cast<parsed_format *>(shifted.data() + 1);
    ctl.format_counters = nullptr;
    EXPECT_EQ(__f90_ssfw(&ctl), 1067);
    with_unit(11, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
    EXPECT_EQ(close_unit(11), 0);
}

// A statement started on a unit between the items of another statement on
// the same unit runs; the outer statement's end call then fails.
int nested_statements(uint32_t flags) {
    io_control_formatted_write outer = {};
    outer.unit_no = 11;
    outer.flags = flags | IO_OWNED_FORMAT;
    outer.loc = &kFormattedWriteAt;
    if (__f90_parse_format(&outer.format, &outer.format_counters, 1, outer.loc, "(I3)", 4, 0) != 0) return -1;
    if (__f90_ssfw(&outer) != 0 || __f90_sfw_i4(&outer, 1) != 0) return -1;
    if (formatted_write(11, "(A)", {fch("inner")}, {flags}) != 0) return -2;
    if (__f90_sfw_i4(&outer, 2) != 0) return -3;
    return __f90_esfw(&outer);
}

TEST_F(RecordFrame, NestedStatementOnTheSameUnit) {
    EXPECT_EQ(nested_statements(IO_RETURNING), 1024);
    with_unit(11, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
    EXPECT_EQ(formatted_write(11, "(A)", {fch("next")}, {IO_RETURNING}), 0);
    EXPECT_EQ(close_unit(11), 0);
}

// ---------------------------------------------------------------- failures: the report

struct report_case {
    const char *name;
    int number;
    const char *text;
    void (*run)();
};

void PrintTo(const report_case &c, std::ostream *os) { *os << c.name; }

class FailureReport : public InTempDir, public ::testing::WithParamInterface<report_case> {};

TEST_P(FailureReport, ReportsAndAborts) {
    const report_case &c = GetParam();
    child_result r = run_checked(c.run);
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, std::string(kBanner) + " Error " + std::to_string(c.number) + ":  " + c.text + "\n" +
                         kWriteLocation + kUnit11);
}

const failure_case &failure_named(const char *name) {
    for (const failure_case &c : kFailureCases)
        if (strcmp(c.name, name) == 0) return c;
    abort();
}

const report_case kReportCases[] = {
    {"incompatible_item", 1215, "a data edit descriptor and I/O list item type are incompatible",
     [] { run_failure_case(failure_named("l_on_integer"), 0); }},
    {"no_data_edit_descriptor", 1216, "current I/O list item doesn't match with any data edit descriptor",
     [] { run_failure_case(failure_named("strings_only_with_item"), 0); }},
    {"corrupted_block", 1067, "corrupted format", [] { run_failure_case(failure_named("bad_opcode_94"), 0); }},
    {"negative_width", 1072, "negative field width", [] { run_failure_case(failure_named("negative_iw"), 0); }},
    {"zero_width", 1073, "zero field width", [] { run_failure_case(failure_named("zero_lw"), 0); }},
    {"nested_statement", 1024, "reentrant I/O", [] { nested_statements(0); }},
    {"unassociated_advance", 1061, "unassociated ADVANCE specifier",
     [] {
         io_control_formatted_write ctl = {};
         ctl.unit_no = 11;
         ctl.flags = IO_OWNED_FORMAT;
         ctl.loc = &kFormattedWriteAt;
         __f90_parse_format(&ctl.format, &ctl.format_counters, 0, ctl.loc, "(A)", 3, 0);
         __f90_ssfw(&ctl);
         __f90_sfw_advance(&ctl, nullptr, 2);
     }},
    {"bad_advance", 1062, "ADVANCE specifier is not 'YES' or 'NO'",
     [] {
         fw_options opt;
         opt.advance = "MAYBE";
         formatted_write(11, "(A)", {fch("x")}, opt);
     }},
};

INSTANTIATE_TEST_SUITE_P(Cases, FailureReport, ::testing::ValuesIn(kReportCases),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- a device that fills

class FormattedFullDevice : public InTempDir {
protected:
    void SetUp() override {
        InTempDir::SetUp();
        if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
        ASSERT_EQ(symlink("/dev/full", "fort.11"), 0);
    }
};

// The statement frees its format and releases the unit when the file
// refuses the bytes, wherever that happens.
TEST_F(FormattedFullDevice, WriteFailuresReturnTheSystemsNumber) {
    child_result r = run_checked([] {
        io_control_formatted_write ctl = {};
        ctl.unit_no = 11;
        ctl.flags = IO_RETURNING | IO_OWNED_FORMAT;
        ctl.loc = &kFormattedWriteAt;
        ASSERT_EQ(__f90_parse_format(&ctl.format, &ctl.format_counters, 1, ctl.loc, "(A)", 3, 0), 0);
        ASSERT_EQ(__f90_ssfw(&ctl), 0);
        const std::string big(20000, 'x');
        ASSERT_EQ(__f90_sfw_ch(&ctl, big.data(), static_cast<int32_t>(big.size())), 0);
        EXPECT_EQ(__f90_esfw(&ctl), ENOSPC);  // the grown buffer goes to the file at the end call
        EXPECT_EQ(ctl.format, nullptr);
        with_unit(11, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });

        ASSERT_EQ(__f90_parse_format(&ctl.format, &ctl.format_counters, 1, ctl.loc, "(A)", 3, 0), 0);
        ASSERT_EQ(__f90_ssfw(&ctl), 0);
        const std::string line(40, 'y');
        int rc = 0;
        for (int i = 0; i < 3000 && rc == 0; ++i) rc = __f90_sfw_ch(&ctl, line.data(), 40);
        EXPECT_EQ(rc, ENOSPC);  // finished records leave a full buffer in an item call
        EXPECT_EQ(ctl.format, nullptr);
        with_unit(11, [](unit *up) { EXPECT_EQ(up->lock_depth, 1); });
    });
    EXPECT_EQ(r.exit_code, 0) << r.out << r.err;
}

TEST_F(FormattedFullDevice, AbortReport) {
    child_result r = run_checked([] { formatted_write(11, "(A)", {fch(std::string(20000, 'x'))}); });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 28:  No space left on device\n" + kWriteLocation + kUnit11);
}

}  // namespace

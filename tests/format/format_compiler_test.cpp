// The format compiler: the exact words of the blocks it builds, the
// character-array source, the older dialect, and every failure with its
// number and its report.
//
// Expected words are written out from the block's layout: `pos` is the
// number of text bytes up to and including the descriptor's letter; counter
// slots are numbered by the nesting of repeated items, from 0.

#include <gtest/gtest.h>

#include <signal.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "krm.h"
#include "support/child.h"
#include "support/statements.h"

using namespace krm_test;

namespace {

constexpr int32_t kMagic = 0x544D4623;  // "#FMT"
const char kBanner[] = "\n ******  FORTRAN RUN-TIME SYSTEM  ******\n";
const char kLocation[] = " Location:  the WRITE statement at line 20 of \"t.f90\"\n";
const char kFormatError[] = " Error 1000:  format error\n";

using entry_fn = int32_t (*)(parsed_format **, int32_t **, int32_t, const stmt_location *,
                             const void *, int32_t, int32_t);

entry_fn entry(bool compat) { return compat ? __f90_parse_format_f77compat : __f90_parse_format; }

// A compiled block, copied out word by word.
struct compiled {
    int32_t rc = -1;
    std::vector<int32_t> words;  // the whole block
    ptrdiff_t counters_at = -1;  // word index of the counters pointer
};

compiled take_block(int32_t rc, parsed_format *f, int32_t *counters) {
    compiled r;
    r.rc = rc;
    if (rc != 0) return r;
    const int32_t *w = reinterpret_cast<const int32_t *>(f);
    size_t total = 4 + static_cast<size_t>(w[2]) + (static_cast<size_t>(w[3]) + 3) / 4;
    r.words.assign(w, w + total);
    r.counters_at = counters - w;
    free(f);
    return r;
}

compiled compile_source(const void *source, int32_t length, int32_t rank, bool compat) {
    parsed_format *f = nullptr;
    int32_t *counters = nullptr;
    int32_t rc = entry(compat)(&f, &counters, 1, &kWriteAt, source, length, rank);
    return take_block(rc, f, counters);
}

compiled compile(const std::string &text, bool compat = false) {
    return compile_source(text.data(), static_cast<int32_t>(text.size()), 0, compat);
}

// What a block must hold: the operations from word 4 (the end operation
// included), the number of counter slots, and the saved text.
struct expected_block {
    std::vector<int32_t> ops;
    int32_t slots;
    std::string text;
};

void expect_block(const compiled &c, const expected_block &e) {
    ASSERT_EQ(c.rc, 0);
    const size_t nops = e.ops.size();
    const size_t text_words = (e.text.size() + 1 + 3) / 4;
    ASSERT_EQ(c.words.size(), 4 + nops + e.slots + text_words);
    EXPECT_EQ(c.words[0], kMagic);
    EXPECT_EQ(c.words[1], 4);
    EXPECT_EQ(c.words[2], static_cast<int32_t>(nops) + e.slots);
    EXPECT_EQ(c.words[3], static_cast<int32_t>(e.text.size() + 1));
    EXPECT_EQ(std::vector<int32_t>(c.words.begin() + 4, c.words.begin() + 4 + nops), e.ops);
    EXPECT_EQ(c.counters_at, static_cast<ptrdiff_t>(4 + nops));
    for (int32_t s = 0; s < e.slots; ++s) EXPECT_EQ(c.words[4 + nops + s], 0) << "slot " << s;
    std::string saved(text_words * 4, '\0');
    memcpy(&saved[0], c.words.data() + 4 + nops + e.slots, text_words * 4);
    std::string want = e.text;
    want.resize(text_words * 4, '\0');
    EXPECT_EQ(saved, want) << "saved text and its NUL padding";
}

// ---------------------------------------------------------------- blocks

struct block_case {
    const char *name;
    std::string source;
    bool compat;
    expected_block block;
};
void PrintTo(const block_case &c, std::ostream *os) { *os << c.name; }

class FormatBlock : public ::testing::TestWithParam<block_case> {};

TEST_P(FormatBlock, HasExactWords) {
    const block_case &c = GetParam();
    expect_block(compile(c.source, c.compat), c.block);
}

const block_case kBlocks[] = {
    // The end operation alone; reversion to the start.
    {"empty_group", "()", false, {{1, 4}, 0, "()"}},
    {"one_integer", "(I3)", false, {{51, 3, 2, 1, 4}, 0, "(I3)"}},
    {"reversion_4_without_inner_group", "(1X,I3)", false,
     {{17, 1, 51, 3, 5, 1, 4}, 0, "(1X,I3)"}},
    // Reversion goes to the code 2 of the last group at depth 2.
    {"reversion_to_second_group", "(2(I3),3(F5.1))", false,
     {{2, 0, 2, 51, 3, 4, 3, 0, 7, 2, 0, 3, 45, 5, 1, 10, 3, 0, 16, 1, 13}, 1, "(2(I3),3(F5.1))"}},
    // A group at depth 3 does not move the reversion index.
    {"reversion_ignores_depth_3", "(2(I3,(F5.1)))", false,
     {{2, 0, 2, 51, 3, 4, 45, 5, 1, 8, 3, 0, 7, 1, 4}, 1, "(2(I3,(F5.1)))"}},
    {"reversion_to_plain_inner_group", "(I3,(A))", false, {{51, 3, 2, 22, 6, 1, 7}, 0, "(I3,(A))"}},
    // An empty inner group reverts onto the end operation itself.
    {"reversion_to_empty_inner_group", "(I3,())", false, {{51, 3, 2, 1, 7}, 0, "(I3,())"}},
    {"count_1_group_is_plain", "(1(I3))", false, {{51, 3, 4, 1, 4}, 0, "(1(I3))"}},
    {"nested_repeats_use_two_slots", "(2(3(I2)))", false,
     {{2, 0, 2, 2, 1, 3, 51, 2, 6, 3, 1, 10, 3, 0, 7, 1, 4}, 2, "(2(3(I2)))"}},
    // Siblings share slots; the deepest nesting decides their number.
    {"sibling_groups_share_slots", "(2(I1),2(2(I2)),I3)", false,
     {{2, 0, 2, 51, 1, 4, 3, 0, 7, 2, 0, 2, 2, 1, 2, 51, 2, 12, 3, 1, 19, 3, 0, 16, 51, 3, 17, 1, 13},
      2,
      "(2(I1),2(2(I2)),I3)"}},
    {"repeated_descriptor", "(3I4)", false, {{2, 0, 3, 51, 4, 3, 3, 0, 7, 1, 4}, 1, "(3I4)"}},
    {"repeat_count_0_on_descriptor", "(0I3)", false, {{2, 0, 0, 51, 3, 3, 3, 0, 7, 1, 4}, 1, "(0I3)"}},
    // A repeated descriptor is no group: reversion stays at 4.
    {"repeated_descriptor_keeps_reversion", "(1X,2I3)", false,
     {{17, 1, 2, 0, 2, 51, 3, 6, 3, 0, 9, 1, 4}, 1, "(1X,2I3)"}},
    {"repeated_descriptor_inside_repeated_group", "(2(3A))", false,
     {{2, 0, 2, 2, 1, 3, 22, 5, 3, 1, 10, 3, 0, 7, 1, 4}, 2, "(2(3A))"}},
    {"blanks_between_digits", "(1 2X)", false, {{17, 12, 1, 4}, 0, "(1 2X)"}},
    {"blanks_inside_width", "(i 1 2)", false, {{51, 12, 2, 1, 4}, 0, "(i 1 2)"}},
    {"largest_number", "(2147483647X)", false, {{17, 2147483647, 1, 4}, 0, "(2147483647X)"}},
    {"blanks_are_saved", "( I 3 , A )", false, {{51, 3, 3, 22, 9, 1, 4}, 0, "( I 3 , A )"}},
    {"leading_blanks_are_not_saved", "  \t (I3)", false, {{51, 3, 2, 1, 4}, 0, "(I3)"}},
    {"separators_optional_and_repeatable", "(,,I3,,)", false, {{51, 3, 4, 1, 4}, 0, "(,,I3,,)"}},
    {"no_separator", "(I3I4)", false, {{51, 3, 2, 51, 4, 4, 1, 4}, 0, "(I3I4)"}},
    {"tab_separates", "(I3\tA)", false, {{51, 3, 2, 22, 5, 1, 4}, 0, "(I3\tA)"}},
    {"text_behind_is_not_read", "(A5)junk", false, {{23, 5, 2, 1, 4}, 0, "(A5)"}},
    {"control_descriptors", "($,:,BN,BZ,2P,-1P,SP,SS,S,SU,T5,TL2,TR3,4X,-3X,2/,/,Q)", false,
     {{5, 4, 6, 7, 8, 2, 8, -1, 11, 12, 12, 13, 14, 5, 15, 2, 16, 3, 17, 4, 17, -3, 18, 2, 18, 1,
       21, 1, 1, 4},
      0,
      "($,:,BN,BZ,2P,-1P,SP,SS,S,SU,T5,TL2,TR3,4X,-3X,2/,/,Q)"}},
    {"plain_s_before_close", "(S)", false, {{12, 1, 4}, 0, "(S)"}},
    {"lower_case_controls", "(sp,ss,s,su,x,5x,bn,bz,tl1,tr2,t3,q)", false,
     {{11, 12, 12, 13, 17, 1, 17, 5, 6, 7, 15, 1, 16, 2, 14, 3, 21, 1, 1, 4},
      0,
      "(sp,ss,s,su,x,5x,bn,bz,tl1,tr2,t3,q)"}},
    {"signed_counts", "(+3X,-2P,+1P,0P,0X)", false,
     {{17, 3, 8, -2, 8, 1, 8, 0, 17, 0, 1, 4}, 0, "(+3X,-2P,+1P,0P,0X)"}},
    {"position_without_number", "(T,TL,TR)", false,
     {{14, 1, 15, 1, 16, 1, 1, 4}, 0, "(T,TL,TR)"}},
    {"position_with_blanks", "(T L 5,T 1 0)", false,
     {{15, 5, 14, 10, 1, 4}, 0, "(T L 5,T 1 0)"}},
    {"rounding_and_decimal", "(RU,RD,RZ,RN,RC,RP,DC,DP,rc,dp)", false,
     {{88, 89, 90, 91, 92, 93, 86, 87, 92, 87, 1, 4}, 0, "(RU,RD,RZ,RN,RC,RP,DC,DP,rc,dp)"}},
    {"integer_character_logical_forms", "(A,A5,B,B8,B8.3,I,I6,I6.2,O,O4,O4.2,Z,Z4,Z4.2,L,L2)", false,
     {{22, 2, 23, 5, 4, 24, 7, 25, 8, 9, 26, 8, 3, 12, 50, 17, 51, 6, 19, 52, 6, 2, 22, 55, 27,
       56, 4, 29, 57, 4, 2, 32, 58, 37, 59, 4, 39, 60, 4, 2, 42, 53, 47, 54, 2, 49, 1, 4},
      0,
      "(A,A5,B,B8,B8.3,I,I6,I6.2,O,O4,O4.2,Z,Z4,Z4.2,L,L2)"}},
    // Widths of 0 where nothing forbids them.
    {"zero_widths", "(A0,L0,I0,I0.0,F0.3)", false,
     {{23, 0, 2, 54, 0, 5, 51, 0, 8, 52, 0, 0, 11, 45, 0, 3, 16, 1, 4}, 0, "(A0,L0,I0,I0.0,F0.3)"}},
    {"real_forms",
     "(D,D10,D10.3,D10.3E2,E,E12,E12.4,E12.4E3,EN,EN9,EN9.2,EN9.2E2,ES,ES9,ES9.2,ES9.2E2,F,F5,"
     "F5.1,G,G8,G8.2,G8.2E1)",
     false,
     {{27, 2,   28, 10, 4,  29, 10, 3,  8,  30, 10, 3,  2,  14, 31, 22, 32, 12, 24, 33, 12,
       4,  28,  34, 12, 4,  3,  34, 35, 42, 36, 9,  45, 37, 9,  2,  49, 38, 9,  2,  2,  55,
       39, 63,  40, 9,  66, 41, 9,  2,  70, 42, 9,  2,  2,  76, 43, 84, 44, 5,  86, 45, 5,
       1,  89,  46, 94, 47, 8,  96, 48, 8,  2,  99, 49, 8,  2,  1,  104, 1, 4},
      0,
      "(D,D10,D10.3,D10.3E2,E,E12,E12.4,E12.4E3,EN,EN9,EN9.2,EN9.2E2,ES,ES9,ES9.2,ES9.2E2,F,F5,"
      "F5.1,G,G8,G8.2,G8.2E1)"}},
    {"e_with_exponent_is_34", "(E12.4E3)", false, {{34, 12, 4, 3, 2, 1, 4}, 0, "(E12.4E3)"}},
    {"d_with_exponent_is_30", "(D12.4E3)", false, {{30, 12, 4, 3, 2, 1, 4}, 0, "(D12.4E3)"}},
    // F has no exponent form: the E is the next descriptor.
    {"f_then_e", "(F5.1E2)", false, {{45, 5, 1, 2, 32, 2, 6, 1, 4}, 0, "(F5.1E2)"}},
    {"interval_forms", "(VE9.2,VE9.2E2,VEN9.2,VEN9.2E2,VES9.2,VES9.2E2,VF9.2,VG9.2,VG9.2E2,Y9.2,Y9.2E2)",
     false,
     {{67, 9, 2, 2,  68, 9, 2, 2, 8,  71, 9, 2, 16, 72, 9, 2, 2, 23, 75, 9, 2, 32,
       76, 9, 2, 2, 39, 79, 9, 2, 48, 82, 9, 2, 54, 83, 9, 2, 2, 60, 84, 9, 2, 68,
       85, 9, 2, 2, 73, 1, 4},
      0,
      "(VE9.2,VE9.2E2,VEN9.2,VEN9.2E2,VES9.2,VES9.2E2,VF9.2,VG9.2,VG9.2E2,Y9.2,Y9.2E2)"}},
    // Without d the interval mark changes nothing.
    {"interval_without_d", "(VE,VF,VG,VE9,VEN,VES)", false,
     {{31, 2, 43, 5, 46, 8, 32, 9, 11, 35, 15, 39, 19, 1, 4}, 0, "(VE,VF,VG,VE9,VEN,VES)"}},
    {"lower_case_data", "(d1.0,e2.1e3,en3.1,es4.1,f5.2,g6.1,i7,b8,o9,z1,l1,a2,vf3.1,y4.1)", false,
     {{29, 1, 0, 2,  34, 2, 1, 3, 7,  37, 3, 1, 14, 41, 4, 1, 20, 45, 5, 2, 26, 48, 6, 1, 31,
       51, 7, 36, 25, 8, 39, 56, 9, 42, 59, 1, 45, 54, 1, 48, 23, 2, 51, 79, 3, 1, 54, 84, 4,
       1, 60, 1,  4},
      0,
      "(d1.0,e2.1e3,en3.1,es4.1,f5.2,g6.1,i7,b8,o9,z1,l1,a2,vf3.1,y4.1)"}},
    // d and e take whatever stands there as a first digit: ',' is 44, so -4.
    {"unchecked_d", "(F10.,I3)", false, {{45, 10, -4, 2, 51, 3, 7, 1, 4}, 0, "(F10.,I3)"}},
    {"unchecked_e", "(E9.2E,I1)", false, {{34, 9, 2, -4, 2, 51, 1, 8, 1, 4}, 0, "(E9.2E,I1)"}},
    {"blanks_around_point", "(F5 . 1,I3 . 2)", false,
     {{45, 5, 1, 2, 52, 3, 2, 9, 1, 4}, 0, "(F5 . 1,I3 . 2)"}},
    // Strings: bytes four to a word in storage order, NUL padded.
    {"quoted_strings", "('ab''c',\"x\")", false,
     {{19, 4, 0x63276261, 19, 1, 0x00000078, 1, 4}, 0, "('ab''c',\"x\")"}},
    {"five_byte_string", "('hello')", false, {{19, 5, 0x6c6c6568, 0x0000006f, 1, 4}, 0, "('hello')"}},
    {"empty_string", "('')", false, {{19, 0, 1, 4}, 0, "('')"}},
    {"other_quote_inside", "(\"it's\")", false, {{19, 4, 0x73277469, 1, 4}, 0, "(\"it's\")"}},
    {"string_keeps_blanks_and_case", "(' a,)B ')", false,
     {{19, 6, 0x292c6120, 0x00002042, 1, 4}, 0, "(' a,)B ')"}},
    {"string_followed_by_blank", "('x' I2)", false, {{19, 1, 0x78, 51, 2, 6, 1, 4}, 0, "('x' I2)"}},
    {"hollerith", "(3Hab,I2)", false, {{20, 3, 0x002c6261, 51, 2, 7, 1, 4}, 0, "(3Hab,I2)"}},
    {"hollerith_keeps_blanks_and_quotes", "(4H ' ))", false,
     {{20, 4, 0x29202720, 1, 4}, 0, "(4H ' ))"}},
    {"hollerith_lower_h", "(1hx)", false, {{20, 1, 0x78, 1, 4}, 0, "(1hx)"}},
    {"repeated_group_with_slash", "(2(I3),/)", false,
     {{2, 0, 2, 51, 3, 4, 3, 0, 7, 18, 1, 1, 4}, 1, "(2(I3),/)"}},

    // The older dialect.
    {"compat_bare_p_is_0p", "(P,F5.1)", true, {{8, 0, 45, 5, 1, 4, 1, 4}, 0, "(P,F5.1)"}},
    {"compat_bare_signs", "(+X,-X,+P,-P)", true,
     {{17, 1, 17, -1, 8, 1, 8, -1, 1, 4}, 0, "(+X,-X,+P,-P)"}},
    {"compat_radix", "(R,16R,2R,36R,RD,I4)", true,
     {{9, 10, 9, 16, 9, 2, 9, 36, 89, 51, 4, 18, 1, 4}, 0, "(R,16R,2R,36R,RD,I4)"}},
    {"compat_signed_radix", "(+8R)", true, {{9, 8, 1, 4}, 0, "(+8R)"}},
    {"compat_b_is_bn", "(B,BN,BZ,b)", true, {{6, 6, 7, 6, 1, 4}, 0, "(B,BN,BZ,b)"}},
    {"compat_positions", "(T,TL,TR,T0,TL0,TR0,T3,TL2)", true,
     {{14, 9, 15, 0, 16, 0, 14, 9, 15, 0, 16, 0, 14, 3, 15, 2, 1, 4},
      0,
      "(T,TL,TR,T0,TL0,TR0,T3,TL2)"}},
    {"compat_empty_hollerith", "(0H,I2)", true, {{20, 0, 51, 2, 5, 1, 4}, 0, "(0H,I2)"}},
    {"compat_zero_widths", "(E0.3,D0.1,G0.2,F0.1)", true,
     {{33, 0, 3, 2, 29, 0, 1, 7, 48, 0, 2, 12, 45, 0, 1, 17, 1, 4}, 0, "(E0.3,D0.1,G0.2,F0.1)"}},
    {"compat_point_exponent", "(D10.3.2,E10.3.2,G10.3.2)", true,
     {{30, 10, 3, 2, 2, 34, 10, 3, 2, 10, 49, 10, 3, 2, 18, 1, 4}, 0, "(D10.3.2,E10.3.2,G10.3.2)"}},
    {"compat_same_as_plain_otherwise", "(2(I3),3(F5.1))", true,
     {{2, 0, 2, 51, 3, 4, 3, 0, 7, 2, 0, 3, 45, 5, 1, 10, 3, 0, 16, 1, 13}, 1, "(2(I3),3(F5.1))"}},
};
INSTANTIATE_TEST_SUITE_P(Cases, FormatBlock, ::testing::ValuesIn(kBlocks),
                         [](const auto &info) { return std::string(info.param.name); });

// Deep nesting: a text nests as deep as it likes without exhausting the
// stack; each repeated level has a slot of its own.
TEST(FormatBlockNesting, DeepPlainGroups) {
    const int n = 200000;
    std::string text = "(" + std::string(n, '(') + "I1" + std::string(n, ')') + ")";
    expect_block(compile(text), {{51, 1, n + 2, 1, 4}, 0, text});
}

TEST(FormatBlockNesting, DeepRepeatedGroups) {
    const int n = 50000;
    std::string text = "(";
    for (int k = 0; k < n; ++k) text += "2(";
    text += "I1" + std::string(n, ')') + ")";
    std::vector<int32_t> ops;
    for (int k = 0; k < n; ++k) ops.insert(ops.end(), {2, k, 2});
    ops.insert(ops.end(), {51, 1, 2 * n + 2});
    for (int k = n - 1; k >= 0; --k) ops.insert(ops.end(), {3, k, 4 + 3 * k + 3});
    ops.insert(ops.end(), {1, 4});
    expect_block(compile(text), {ops, n, text});
}

// Buffers grow past their first sizes: a long string and a long text.
TEST(FormatBlockSize, LongStringAndText) {
    std::string body(5000, 'q');
    body[4999] = 'z';
    std::string text = "('" + body + "')";
    std::vector<int32_t> ops = {19, 5000};
    for (int k = 0; k < 1249; ++k) ops.push_back(0x71717171);
    ops.push_back(0x7a717171);
    ops.insert(ops.end(), {1, 4});
    expect_block(compile(text), {ops, 0, text});
}

TEST(FormatBlockSize, LongHollerith) {
    std::string body(4099, 'h');
    std::string text = "(4099H" + body + ")";
    std::vector<int32_t> ops = {20, 4099};
    for (int k = 0; k < 1024; ++k) ops.push_back(0x68686868);
    ops.push_back(0x00686868);
    ops.insert(ops.end(), {1, 4});
    expect_block(compile(text), {ops, 0, text});
}

TEST(FormatBlockSize, ManyOperations) {
    std::string text = "(";
    std::vector<int32_t> ops;
    for (int k = 0; k < 3000; ++k) {
        text += "X,";
        ops.insert(ops.end(), {17, 1});
    }
    text += ")";
    ops.insert(ops.end(), {1, 4});
    expect_block(compile(text), {ops, 0, text});
}

// ---------------------------------------------------------------- the character-array source

// A character array's descriptor as compiled code builds it: base address,
// extents, strides, in machine words.
std::vector<intptr_t> descriptor(const char *base, std::vector<intptr_t> extents,
                                 std::vector<intptr_t> strides) {
    std::vector<intptr_t> d = {reinterpret_cast<intptr_t>(base)};
    d.insert(d.end(), extents.begin(), extents.end());
    d.insert(d.end(), strides.begin(), strides.end());
    return d;
}

compiled compile_array(const std::vector<intptr_t> &desc, int32_t element_length,
                       bool compat = false) {
    return compile_source(desc.data(), element_length, static_cast<int32_t>((desc.size() - 1) / 2),
                          compat);
}

TEST(FormatArraySource, ElementsFollowOneAnother) {
    const char storage[] = "(I3,A5) ";
    expect_block(compile_array(descriptor(storage, {2}, {4}), 4),
                 {{51, 3, 2, 23, 5, 5, 1, 4}, 0, "(I3,A5)"});
}

TEST(FormatArraySource, NumberRunsAcrossElements) {
    const char storage[] = "(I12)   ";
    expect_block(compile_array(descriptor(storage, {4}, {2}), 2), {{51, 12, 2, 1, 4}, 0, "(I12)"});
}

TEST(FormatArraySource, NegativeStride) {
    const char storage[] = "A5) (I3,";
    expect_block(compile_array(descriptor(storage + 4, {2}, {-4}), 4),
                 {{51, 3, 2, 23, 5, 5, 1, 4}, 0, "(I3,A5)"});
}

// A section of a larger array: the second dimension strides over elements
// that are not part of it.
TEST(FormatArraySource, TwoDimensionsInArrayElementOrder) {
    const char storage[] = "(I3,......A2).";
    expect_block(compile_array(descriptor(storage, {2, 2}, {2, 10}), 2),
                 {{51, 3, 2, 23, 2, 5, 1, 4}, 0, "(I3,A2)"});
}

// A dimension of extent 1 carries at once into the next one.
TEST(FormatArraySource, ThreeDimensionsWithExtentOne) {
    const char storage[] = "(I3,A2,X)!!!";
    expect_block(compile_array(descriptor(storage, {1, 2, 2}, {100, 3, 6}), 3),
                 {{51, 3, 2, 23, 2, 5, 17, 1, 1, 4}, 0, "(I3,A2,X)"});
}

TEST(FormatArraySource, LeadingBlanksSpanElements) {
    const char storage[] = "    (X) ";
    expect_block(compile_array(descriptor(storage, {4}, {2}), 2), {{17, 1, 1, 4}, 0, "(X)"});
}

// A page that may not be read stands right behind what the format needs:
// the compiler must stop at the closing parenthesis.
struct guarded_page {
    char *page = nullptr;
    size_t size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    guarded_page() {
        void *p = mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        page = static_cast<char *>(p);
        mprotect(page + size, size, PROT_NONE);
    }
    ~guarded_page() { munmap(page, 2 * size); }
    // Puts text at the very end of the readable page.
    char *place(const char *text) {
        size_t n = strlen(text);
        char *at = page + size - n;
        memcpy(at, text, n);
        return at;
    }
};

TEST(FormatSource, NothingBehindTheFormatIsRead) {
    guarded_page g;
    char *text = g.place("(A5)");
    expect_block(compile_source(text, 8, 0, false), {{23, 5, 2, 1, 4}, 0, "(A5)"});
}

TEST(FormatSource, NoArrayElementBehindTheFormatIsTouched) {
    guarded_page g;
    char *text = g.place("(A5)");
    expect_block(compile_array(descriptor(text, {2}, {4}), 4), {{23, 5, 2, 1, 4}, 0, "(A5)"});
}

// ---------------------------------------------------------------- failures

struct failure_case {
    const char *name;
    std::string source;
    bool compat;
    const char *tail;  // the report's lines after the location
};
void PrintTo(const failure_case &c, std::ostream *os) { *os << c.name; }

const char kNoParen[] = " Format string has no right parenthesis!\n";
const char kEmpty[] = " Format string is empty!\n";

class FormatFailure : public ::testing::TestWithParam<failure_case> {};

TEST_P(FormatFailure, ReturnsFormatErrorAndStoresNothing) {
    const failure_case &c = GetParam();
    parsed_format *f = reinterpret_cast<parsed_format *>(0x1234);
    int32_t *counters = reinterpret_cast<int32_t *>(0x5678);
    int32_t rc = entry(c.compat)(&f, &counters, 1, &kWriteAt, c.source.data(),
                                 static_cast<int32_t>(c.source.size()), 0);
    EXPECT_EQ(rc, 1000);
    EXPECT_EQ(f, reinterpret_cast<parsed_format *>(0x1234));
    EXPECT_EQ(counters, reinterpret_cast<int32_t *>(0x5678));
}

TEST_P(FormatFailure, ReportsAndAborts) {
    const failure_case &c = GetParam();
    child_result r = run_forked([&c] {
        parsed_format *f = nullptr;
        int32_t *counters = nullptr;
        entry(c.compat)(&f, &counters, 0, &kWriteAt, c.source.data(),
                        static_cast<int32_t>(c.source.size()), 0);
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + kFormatError + kLocation + c.tail);
    EXPECT_EQ(r.out, "");
}

#define SHOWN(text, blanks) " Format string:    \"" text "\"\n Incorrect symbol:  " blanks "^\n"

const failure_case kFailures[] = {
    {"no_parenthesis", "I3", false, SHOWN("I3", "")},
    {"no_parenthesis_after_blanks", "  I3", false, SHOWN("I3", "")},
    {"group_before_parenthesis", "X(I3)", false, SHOWN("X(I3)", "")},
    {"unclosed", "(I3", false, kNoParen},
    {"unclosed_inner_group", "((I3)", false, kNoParen},
    {"empty_text", "", false, kEmpty},
    {"only_blanks", "   ", false, kNoParen},
    {"unclosed_string", "('abc)", false, kNoParen},
    {"hollerith_beyond_text", "(5Habc)", false, kNoParen},
    // The unchecked d swallows the ")".
    {"d_eats_parenthesis", "(F10.)", false, kNoParen},
    {"bare_p", "(P)", false, SHOWN("(P)", " ")},
    {"bare_sign", "(+X)", false, SHOWN("(+X)", "  ")},
    {"sign_before_descriptor", "(+I3)", false, SHOWN("(+I3)", "  ")},
    {"sign_before_descriptor_compat", "(+I3)", true, SHOWN("(+I3)", "  ")},
    {"signed_group", "(-2(I3))", false, SHOWN("(-2(I3))", "   ")},
    {"sign_after_count", "(2+X)", false, SHOWN("(2+X)", "  ")},
    {"bare_r", "(R)", false, SHOWN("(R)", "  ")},
    {"radix_in_plain_dialect", "(3R)", false, SHOWN("(3R)", "  ")},
    {"radix_1_compat", "(1R)", true, SHOWN("(1R)", "  ")},
    {"radix_37_compat", "(37R)", true, SHOWN("(37R)", "   ")},
    {"negative_radix_compat", "(-5R)", true, SHOWN("(-5R)", "   ")},
    {"t0", "(T0)", false, SHOWN("(T0)", "   ")},
    {"tl0", "(TL0)", false, SHOWN("(TL0)", "    ")},
    {"tr0", "(TR0)", false, SHOWN("(TR0)", "    ")},
    {"zero_h", "(0H)", false, SHOWN("(0H)", "  ")},
    {"e_width_0", "(E0.3)", false, SHOWN("(E0.3)", "   ")},
    {"d_width_0", "(D0)", false, SHOWN("(D0)", "   ")},
    {"g_width_0", "(G0.1)", false, SHOWN("(G0.1)", "   ")},
    {"en_width_0", "(EN0.3)", false, SHOWN("(EN0.3)", "    ")},
    {"en_width_0_compat", "(EN0.3)", true, SHOWN("(EN0.3)", "    ")},
    {"es_width_0_compat", "(ES0.3)", true, SHOWN("(ES0.3)", "    ")},
    {"y_width_0", "(Y0.1)", false, SHOWN("(Y0.1)", "   ")},
    {"y_without_d", "(Y9)", false, SHOWN("(Y9)", "   ")},
    {"y_bare", "(Y)", false, SHOWN("(Y)", "  ")},
    {"vd_not_accepted", "(VD9.2)", false, SHOWN("(VD9.2)", "  ")},
    {"v_without_kind", "(VX)", false, SHOWN("(VX)", "  ")},
    {"group_count_0", "(0(I3))", false, SHOWN("(0(I3))", "  ")},
    {"slash_count_0", "(0/)", false, SHOWN("(0/)", "  ")},
    {"count_before_q", "(3Q)", false, SHOWN("(3Q)", "  ")},
    {"count_before_string", "(3'a')", false, SHOWN("(3'a')", "  ")},
    {"count_at_close", "(I3,3)", false, SHOWN("(I3,3)", "     ")},
    // The caret stands under the digit that makes the number too large.
    {"number_too_large", "(2147483648X)", false, SHOWN("(2147483648X)", "          ")},
    {"number_far_too_large", "(99999999999)", false, SHOWN("(99999999999)", "          ")},
    {"width_too_large", "(I3000000000)", false, SHOWN("(I3000000000)", "           ")},
    {"point_without_m", "(I3.)", false, SHOWN("(I3.)", "    ")},
    {"point_then_letter", "(I3.X)", false, SHOWN("(I3.X)", "    ")},
    {"unknown_letter", "(W)", false, SHOWN("(W)", " ")},
    {"unknown_after_items", "(1X,K)", false, SHOWN("(1X,K)", "    ")},
    {"second_point_in_plain_dialect", "(E12.4.2)", false, SHOWN("(E12.4.2)", "      ")},
    {"f_second_point_compat", "(F12.4.2)", true, SHOWN("(F12.4.2)", "      ")},
    {"binary_width_in_compat", "(B8)", true, SHOWN("(B8)", "   ")},
    // At most 16 characters read are shown, then the source up to 31.
    {"long_text_is_cut", "(I3,I4,I5,I6,I7,K,I8,I9,I10,I11,I12,I13)", false,
     SHOWN("I3,I4,I5,I6,I7,K,I8,I9,I10,I11,", "               ")},
    {"nul_and_0x90_shown_as_question_marks", std::string("(I3,\0\x90)", 7), false,
     SHOWN("(I3,?\?)", "    ")},
};
INSTANTIATE_TEST_SUITE_P(Cases, FormatFailure, ::testing::ValuesIn(kFailures),
                         [](const auto &info) { return std::string(info.param.name); });

TEST(FormatFailure, ReturnFormPrintsNothing) {
    child_result r = run_forked([] {
        parsed_format *f = nullptr;
        int32_t *counters = nullptr;
        if (__f90_parse_format(&f, &counters, 1, &kWriteAt, "(I3", 3, 0) != 1000) abort();
    });
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out, "");
}

struct array_failure_case {
    const char *name;
    std::string storage;
    std::vector<intptr_t> extents, strides;
    int32_t element_length;
    const char *tail;
};
void PrintTo(const array_failure_case &c, std::ostream *os) { *os << c.name; }

class FormatArrayFailure : public ::testing::TestWithParam<array_failure_case> {};

TEST_P(FormatArrayFailure, ReturnsAndReports) {
    const array_failure_case &c = GetParam();
    std::vector<intptr_t> desc = descriptor(c.storage.data(), c.extents, c.strides);
    EXPECT_EQ(compile_array(desc, c.element_length).rc, 1000);
    child_result r = run_forked([&] {
        parsed_format *f = nullptr;
        int32_t *counters = nullptr;
        __f90_parse_format(&f, &counters, 0, &kWriteAt, desc.data(), c.element_length,
                           static_cast<int32_t>(c.extents.size()));
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + kFormatError + kLocation + c.tail);
}

const array_failure_case kArrayFailures[] = {
    {"runs_out_after_last_element", "(I3,A5  ", {2}, {4}, 4, kNoParen},
    {"element_length_0", "(I3)", {4}, {1}, 0, kEmpty},
    {"no_elements", "(I3)", {0}, {4}, 4, kNoParen},
    {"no_elements_in_second_dimension", "(I3)", {1, 0}, {4, 4}, 4, kNoParen},
    // The shown text runs on through the following elements.
    {"shown_text_crosses_elements", "(I3,K,I4)   ", {3}, {4}, 4, SHOWN("(I3,K,I4)   ", "    ")},
};
INSTANTIATE_TEST_SUITE_P(Cases, FormatArrayFailure, ::testing::ValuesIn(kArrayFailures),
                         [](const auto &info) { return std::string(info.param.name); });

// ---------------------------------------------------------------- no format at all

TEST(FormatUnassociated, NullTextReturns1118) {
    parsed_format *f = nullptr;
    int32_t *counters = nullptr;
    EXPECT_EQ(__f90_parse_format(&f, &counters, 1, &kWriteAt, nullptr, 4, 0), 1118);
    EXPECT_EQ(__f90_parse_format_f77compat(&f, &counters, 1, &kWriteAt, nullptr, 4, 0), 1118);
    EXPECT_EQ(f, nullptr);
}

TEST(FormatUnassociated, NullArrayBaseReturns1118) {
    std::vector<intptr_t> desc = descriptor(nullptr, {2}, {4});
    EXPECT_EQ(compile_array(desc, 4).rc, 1118);
}

TEST(FormatUnassociated, NullTextReportsAndAborts) {
    child_result r = run_forked([] {
        parsed_format *f = nullptr;
        int32_t *counters = nullptr;
        __f90_parse_format(&f, &counters, 0, &kWriteAt, nullptr, 4, 0);
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1118:  unassociated FMT specifier\n" + kLocation);
}

TEST(FormatUnassociated, NullArrayBaseReportsAndAborts) {
    child_result r = run_forked([] {
        std::vector<intptr_t> desc = descriptor(nullptr, {2}, {4});
        parsed_format *f = nullptr;
        int32_t *counters = nullptr;
        __f90_parse_format_f77compat(&f, &counters, 0, &kWriteAt, desc.data(), 4, 1);
    });
    EXPECT_EQ(r.signal, SIGABRT);
    EXPECT_EQ(r.err, std::string(kBanner) + " Error 1118:  unassociated FMT specifier\n" + kLocation);
}

// ---------------------------------------------------------------- threads

// Compilations share nothing: many at once give the same blocks.
TEST(FormatThreads, CompileConcurrently) {
    const std::string text = "(2(I3,'x'),3(F5.1,2(A)))";
    compiled want = compile(text);
    ASSERT_EQ(want.rc, 0);
    std::vector<std::thread> threads;
    std::vector<int> mismatches(4, 0);
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int k = 0; k < 500; ++k)
                if (compile(text).words != want.words) ++mismatches[t];
        });
    for (std::thread &th : threads) th.join();
    EXPECT_EQ(mismatches, std::vector<int>(4, 0));
}

}  // namespace

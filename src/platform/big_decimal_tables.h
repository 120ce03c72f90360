// Read-only tables of the decimal engine. Each table of powers is an array of
// 16-bit digits, least significant first, and an array of offsets into it:
// power k is the digits from start[k] up to start[k + 1].
#pragma once

#include <stdint.h>

// Digits of base**n in radix: floor(n * log_radix(base)) + 1, exactly, for
// the n the tables use.
constexpr unsigned five_power_cells(unsigned n) {
    // floor(n * log2(5)), exact for n below 20000
    return static_cast<unsigned>((static_cast<uint64_t>(n) * 9972605231ull) >> 32) / 16 + 1;
}
constexpr unsigned two_power_cells(unsigned n) {
    // floor(n * log10(2)), exact for n below 17000
    return static_cast<unsigned>((static_cast<uint64_t>(n) * 1292913986ull) >> 32) / 4 + 1;
}
constexpr unsigned table_cells(bool five, unsigned step, unsigned rows) {
    unsigned total = 0;
    for (unsigned k = 0; k < rows; ++k) total += five ? five_power_cells(step * k) : two_power_cells(step * k);
    return total;
}

// 5**k, k from 0 to 63; 5**(64 k), k from 0 to 15; 5**(1024 k), k from 0 to 4; radix 65536.
constexpr unsigned tbl_10_small_cells = table_cells(true, 1, 64);
constexpr unsigned tbl_10_big_cells = table_cells(true, 64, 16);
constexpr unsigned tbl_10_huge_cells = table_cells(true, 1024, 5);
extern const uint16_t __x86quad__tbl_10_small_digits[tbl_10_small_cells];
extern const uint16_t __x86quad__tbl_10_small_start[65];
extern const uint16_t __x86quad__tbl_10_big_digits[tbl_10_big_cells];
extern const uint16_t __x86quad__tbl_10_big_start[17];
extern const uint16_t __x86quad__tbl_10_huge_digits[tbl_10_huge_cells];
extern const uint16_t __x86quad__tbl_10_huge_start[6];

// 2**k, k from 0 to 175; 2**(176 k), k from 0 to 15; 2**(2816 k), k from 0 to 5; radix 10000.
constexpr unsigned tbl_2_small_cells = table_cells(false, 1, 176);
constexpr unsigned tbl_2_big_cells = table_cells(false, 176, 16);
constexpr unsigned tbl_2_huge_cells = table_cells(false, 2816, 6);
extern const uint16_t __x86quad__tbl_2_small_digits[tbl_2_small_cells];
extern const uint16_t __x86quad__tbl_2_small_start[177];
extern const uint16_t __x86quad__tbl_2_big_digits[tbl_2_big_cells];
extern const uint16_t __x86quad__tbl_2_big_start[17];
extern const uint16_t __x86quad__tbl_2_huge_digits[tbl_2_huge_cells];
extern const uint16_t __x86quad__tbl_2_huge_start[7];

// Row k spells 8 k in four ASCII digits.
extern const char __x86quad__four_digits_quick_table[1250][4];

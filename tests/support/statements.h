// Statements built the way compiled code builds them: an io_control on the
// stack, a start call, one call per item, an end call.
#pragma once

#include <stdint.h>
#include <string.h>

#include <initializer_list>
#include <ostream>
#include <string>

#include "krm.h"
#include "units/unit.h"

namespace krm_test {

extern const stmt_location kPrintAt;  // PRINT at line 10 of "t.f90"
extern const stmt_location kWriteAt;  // WRITE at line 20 of "t.f90"

// One item of a list-directed output list.
struct item {
    enum kind { ch, i4, i8, u4, u8, l1, l4, l8, r4, r8, r16, r16_ref, c4, c8, c16, ia8, ia16 } k;
    std::string text;
    int64_t value = 0;
    int32_t length = -2;  // -2: the length of text
    uint32_t words[8] = {};  // reals, complex values, intervals: the data as it lies in memory
};
inline item ch(const std::string &s) { return {item::ch, s}; }
inline item ch_len(const char *s, int32_t len) { return {item::ch, s ? s : "", 0, len}; }
inline item i4(int32_t v) { return {item::i4, "", v}; }
inline item i8(int64_t v) { return {item::i8, "", v}; }
inline item u4(uint32_t v) { return {item::u4, "", static_cast<int64_t>(v)}; }
inline item u8(uint64_t v) { return {item::u8, "", static_cast<int64_t>(v)}; }
inline item l1(int32_t v) { return {item::l1, "", v}; }
inline item l4(int32_t v) { return {item::l4, "", v}; }
inline item l8(int64_t v) { return {item::l8, "", v}; }

// Items with the bytes of their data: a REAL(16) is a __float128, whose
// layout is the storage order.
template <typename T>
item data_item(item::kind k, std::initializer_list<T> parts) {
    item it{k, ""};
    static_assert(sizeof(T) * 2 <= sizeof it.words, "two parts fit");
    size_t at = 0;
    for (const T &p : parts) {
        memcpy(reinterpret_cast<char *>(it.words) + at, &p, sizeof p);
        at += sizeof p;
    }
    return it;
}
inline item r4(float v) { return data_item(item::r4, {v}); }
inline item r8(double v) { return data_item(item::r8, {v}); }
inline item r16(__float128 v) { return data_item(item::r16, {v}); }
inline item r16_ref(__float128 v) { return data_item(item::r16_ref, {v}); }
inline item c4(float re, float im) { return data_item(item::c4, {re, im}); }
inline item c8(double re, double im) { return data_item(item::c8, {re, im}); }
inline item c16(__float128 re, __float128 im) { return data_item(item::c16, {re, im}); }
inline item ia8(float lo, float hi) { return data_item(item::ia8, {lo, hi}); }
inline item ia16(double lo, double hi) { return data_item(item::ia16, {lo, hi}); }

// Calls the item's entry; returns its result.
int put_item(io_control_list_write &ctl, const item &it);

// A whole list-directed output statement. Returns 0, or the first non-zero
// result, after which (as compiled code does) no further call is made.
int list_write(io_control_list_write &ctl, std::initializer_list<item> items);

// PRINT *, items (flags added to IO_DEFAULT_UNIT).
int print_list(std::initializer_list<item> items, uint32_t flags = 0);

// A PRINT * statement and the exact bytes it must write to standard output,
// for tables of cases.
struct print_case {
    const char *name;
    std::initializer_list<item> items;
    uint32_t flags;
    const char *expected;
};
inline void PrintTo(const print_case &c, std::ostream *os) { *os << c.name; }

// Runs the statement in a child; its standard output must be c.expected
// byte for byte, with nothing on standard error.
void expect_prints(const print_case &c);

// WRITE (unit, *) items.
int write_list(int64_t unit_number, std::initializer_list<item> items, uint32_t flags = 0);

// Holds unit n for the span of fn, as a statement would, so that a test can
// look at or set up the record (what OPEN would have left, for instance).
template <typename Fn>
void with_unit(int64_t n, Fn fn);

}  // namespace krm_test

#include "units/units.h"

template <typename Fn>
void krm_test::with_unit(int64_t n, Fn fn) {
    unit *up = nullptr;
    if (__f90_get_numbered_unit_r(&up, n) != 0) return;
    fn(up);
    __f90_release_unit(up);
}

// Sequential formatted WRITE and PRINT statements built the way compiled code
// builds them: an io_control_formatted_write on the stack, the format either
// compiled at run time by __f90_parse_format (owned by the statement, which
// frees it) or a block laid out by hand, the start call, ADVANCE= if given,
// one typed call per item, the end call.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "krm.h"

namespace krm_test {

extern const stmt_location kFormattedWriteAt;  // WRITE at line 20 of "t.f90"
extern const stmt_location kFormattedPrintAt;  // PRINT at line 10 of "t.f90"

// One item of a formatted output list.
struct fitem {
    enum kind { ch, i1, i2, i4, i8, u1, u2, u4, u8, l1, l2, l4, l8 } k;
    int64_t value = 0;
    std::string text;
    int32_t length = -2;  // ch: -2 means the length of text
};
inline fitem fch(const std::string &s) { return {fitem::ch, 0, s}; }
inline fitem fch_len(const std::string &s, int32_t len) { return {fitem::ch, 0, s, len}; }
inline fitem fi1(int32_t v) { return {fitem::i1, v}; }
inline fitem fi2(int32_t v) { return {fitem::i2, v}; }
inline fitem fi4(int32_t v) { return {fitem::i4, v}; }
inline fitem fi8(int64_t v) { return {fitem::i8, v}; }
inline fitem fu1(uint32_t v) { return {fitem::u1, static_cast<int64_t>(v)}; }
inline fitem fu2(uint32_t v) { return {fitem::u2, static_cast<int64_t>(v)}; }
inline fitem fu4(uint32_t v) { return {fitem::u4, static_cast<int64_t>(v)}; }
inline fitem fu8(uint64_t v) { return {fitem::u8, static_cast<int64_t>(v)}; }
inline fitem fl1(int32_t v) { return {fitem::l1, v}; }
inline fitem fl2(int32_t v) { return {fitem::l2, v}; }
inline fitem fl4(int32_t v) { return {fitem::l4, v}; }
inline fitem fl8(int64_t v) { return {fitem::l8, v}; }

// Calls the item's entry; returns its result.
int put_fitem(io_control_formatted_write &ctl, const fitem &it);

// A format block laid out by hand: the header, the operations given (the end
// operation included), `slots` repeat counter slots and no saved text.
struct hand_format {
    std::vector<int32_t> words;
    explicit hand_format(const std::vector<int32_t> &ops, int32_t slots = 0);
    parsed_format *block() { return reinterpret_cast<parsed_format *>(words.data()); }
    int32_t *counters() { return words.data() + 4 + (words[2] - counters_count_); }

private:
    int32_t counters_count_ = 0;
};

// What a statement is given besides its items.
struct fw_options {
    uint32_t flags = 0;             // io_control flags besides IO_OWNED_FORMAT
    const char *advance = nullptr;  // ADVANCE= text, when given
    bool f77compat_format = false;  // compile with __f90_parse_format_f77compat
};

// WRITE (unit, fmt) items, or with unit -1 PRINT fmt, items (IO_DEFAULT_UNIT).
// The format text is compiled at run time into a block the statement owns.
// Returns 0, or the first non-zero result, after which (as compiled code
// does) no further call is made; a format that does not compile returns
// the compiler's number.
int formatted_write(int64_t unit, const std::string &format, const std::vector<fitem> &items,
                    const fw_options &opt = {});

// The same with a block laid out by hand, which the statement does not own.
int formatted_write_block(int64_t unit, hand_format &format, const std::vector<fitem> &items,
                          const fw_options &opt = {});

// Compares two outputs record by record (newline-ended); on a difference it
// names the first record that differs and shows both, long ones cut.
::testing::AssertionResult same_records(const std::string &got, const std::string &want);

}  // namespace krm_test

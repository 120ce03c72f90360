// The walk of a parsed_format during output, written once for every kind of
// formatted output transfer. A transfer kind X provides
//   const int32_t *ops()            the block's words
//   uint32_t &pc()                  index of the current operation
//   int32_t *counters()             the statement's repeat counters
//   uint32_t &flags()               the statement's flags word
//   void set_radix(int32_t), set_scale(int32_t), set_sign_mode(int32_t)
//   char *&record_start(), *&field_ptr()
//   int allocate_field(int32_t width, char **field)
//   int end_record(int32_t count)   count >= 1
//   int fail(int number)
//   bool f77compat() const
#pragma once

#include <stdint.h>
#include <string.h>

#include "format/parsed_format.h"
#include "krm/io_flags.h"

namespace krm::fmtw {

// Writes a string operation's bytes at the current position.
template <class X>
int put_string(X &x, const int32_t *op) {
    if (x.field_ptr() < x.record_start()) x.field_ptr() = x.record_start();
    const int32_t len = op[1];
    char *f = nullptr;
    if (int err = x.allocate_field(len, &f)) return err;
    memcpy(f, op + 2, static_cast<size_t>(len));
    return 0;
}

// Position and text operations, shared by the walk to the next data edit
// descriptor and the walk at the end of the statement. Returns 1 when `code`
// is not one of them.
template <class X>
int position_or_text(X &x, const int32_t *op, int *err) {
    *err = 0;
    char *&field = x.field_ptr();
    char *const start = x.record_start();
    switch (op[0]) {
        case KRM_FMT_T:
            field = op[1] < 1 ? start : start + (op[1] - 1);
            return 0;
        case KRM_FMT_TL:
            field = field - start > op[1] ? field - op[1] : start;
            return 0;
        case KRM_FMT_TR:
        case KRM_FMT_X:
            field += op[1];
            return 0;
        case KRM_FMT_SLASH:
            if (op[1] >= 1) *err = x.end_record(op[1]);
            return 0;
        case KRM_FMT_STRING:
        case KRM_FMT_HOLLERITH:
            *err = put_string(x, op);
            return 0;
        default:
            return 1;
    }
}

// The edit descriptors that set how later items are edited and write
// nothing themselves.
inline bool is_mode_op(int32_t code) {
    switch (code) {
        case KRM_FMT_BN: case KRM_FMT_BZ: case KRM_FMT_P: case KRM_FMT_RADIX:
        case KRM_FMT_S_RESERVED: case KRM_FMT_SP: case KRM_FMT_SS: case KRM_FMT_SU:
        case KRM_FMT_DC: case KRM_FMT_DP: case KRM_FMT_RU: case KRM_FMT_RD:
        case KRM_FMT_RZ: case KRM_FMT_RN: case KRM_FMT_RC: case KRM_FMT_RP:
            return true;
        default:
            return false;
    }
}

template <class X>
void apply_mode(X &x, const int32_t *op) {
    const int32_t code = op[0];
    switch (code) {
        case KRM_FMT_P: x.set_scale(op[1]); break;
        case KRM_FMT_RADIX: x.set_radix(op[1]); break;
        case KRM_FMT_S_RESERVED:
        case KRM_FMT_SS: x.set_sign_mode(2); break;
        case KRM_FMT_SP: x.set_sign_mode(1); break;
        case KRM_FMT_SU: x.set_sign_mode(3); break;
        case KRM_FMT_DC: x.flags() = (x.flags() & ~IO_DECIMAL_POINT) | IO_DECIMAL_COMMA; break;
        case KRM_FMT_DP: x.flags() = (x.flags() & ~IO_DECIMAL_COMMA) | IO_DECIMAL_POINT; break;
        case KRM_FMT_RU: case KRM_FMT_RD: case KRM_FMT_RZ:
        case KRM_FMT_RN: case KRM_FMT_RC: case KRM_FMT_RP:
            x.flags() = (x.flags() & ~IO_ROUND_MASK) | (static_cast<uint32_t>(code - KRM_FMT_RU + 1) << IO_ROUND_SHIFT);
            break;
        default:  // BN and BZ: for input only
            break;
    }
}

// A group's start sets its counter; its end goes back to the group's first
// operation while the counter lasts, and then tells so.
template <class X>
bool repeat_goes_back(X &x, const int32_t *op, uint32_t *pc) {
    if (op[0] == KRM_FMT_REPEAT) {
        x.counters()[op[1]] = op[2];
        return false;
    }
    if (--x.counters()[op[1]] <= 0) return false;
    *pc = static_cast<uint32_t>(op[2]);
    return true;
}

// Runs the format to the next data edit descriptor and leaves pc on it.
// Reaching the end of the format there reverts it, once per data item.
template <class X>
int write_to_data_edit_descriptor(X &x) {
    const int32_t *ops = x.ops();
    uint32_t pc = x.pc();
    for (;;) {
        const int32_t *op = ops + pc;
        const int32_t code = op[0];
        if (fmt::is_data_op(code)) {
            x.flags() &= ~IO_NO_DATA_SINCE_REVERSION;
            x.pc() = pc;
            if (x.field_ptr() < x.record_start()) x.field_ptr() = x.record_start();
            return 0;
        }
        int err = 0;
        switch (code) {
            case KRM_FMT_END:
                if (x.flags() & IO_NO_DATA_SINCE_REVERSION) return x.fail(x.f77compat() ? 1000 : 1216);
                x.flags() |= IO_NO_DATA_SINCE_REVERSION;
                if ((err = x.end_record(1))) return err;
                pc = static_cast<uint32_t>(op[1]);
                continue;
            case KRM_FMT_REPEAT:
            case KRM_FMT_REPEAT_END:
                if (repeat_goes_back(x, op, &pc)) continue;
                break;
            case KRM_FMT_COLON:
            case KRM_FMT_DOLLAR:
                break;
            default:
                if (is_mode_op(code)) {
                    apply_mode(x, op);
                    break;
                }
                if (position_or_text(x, op, &err)) return x.fail(1067);
                if (err) return err;
                break;
        }
        int64_t n = fmt::op_words(op);
        if (n <= 0) return x.fail(1067);
        pc += static_cast<uint32_t>(n);
    }
}

// The end call's walk: what stands behind the last data edit descriptor the
// list used is written up to the end of the format, a ":", a "$" or the next
// data edit descriptor. *keep_open tells that a "$" was met. Runs on a copy
// of the cursor, so the statement's own state is not disturbed.
template <class X>
int walk_to_end(X &x, bool *keep_open) {
    *keep_open = false;
    const int32_t *ops = x.ops();
    uint32_t pc = x.pc();
    for (;;) {
        const int32_t *op = ops + pc;
        const int32_t code = op[0];
        if (code == KRM_FMT_END || code == KRM_FMT_COLON || fmt::is_data_op(code)) return 0;
        if (code == KRM_FMT_DOLLAR) {
            *keep_open = true;
            return 0;
        }
        int err = 0;
        switch (code) {
            case KRM_FMT_REPEAT:
            case KRM_FMT_REPEAT_END:
                if (repeat_goes_back(x, op, &pc)) continue;
                break;
            default:
                if (is_mode_op(code)) break;  // nothing is edited after them
                if (position_or_text(x, op, &err)) return x.fail(1067);
                if (err) return err;
                break;
        }
        int64_t n = fmt::op_words(op);
        if (n <= 0) return x.fail(1067);
        pc += static_cast<uint32_t>(n);
    }
}

}  // namespace krm::fmtw

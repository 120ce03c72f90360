// The parsed_format block as the library's engines see it: the header word
// places, and the size of each operation, which every walk of the block uses
// to step from one operation to the next.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "krm/format.h"

namespace krm::fmt {

// Header words.
constexpr int word_magic = 0;
constexpr int word_first_op = 1;
constexpr int word_extent = 2;
constexpr int word_text_bytes = 3;
constexpr int first_op = KRM_FORMAT_FIRST_OP;
constexpr int32_t magic = static_cast<int32_t>(KRM_FORMAT_MAGIC);

static_assert(sizeof(parsed_format) == 4 * 4, "parsed_format has four header words");
static_assert(offsetof(parsed_format, magic) == 4 * word_magic, "magic is word 0");
static_assert(offsetof(parsed_format, first_op) == 4 * word_first_op, "first_op is word 1");
static_assert(offsetof(parsed_format, extent) == 4 * word_extent, "extent is word 2");
static_assert(offsetof(parsed_format, text_bytes) == 4 * word_text_bytes, "text_bytes is word 3");

inline const int32_t *words(const parsed_format *f) { return reinterpret_cast<const int32_t *>(f); }

// Data edit operations stop the walk and are taken over by an item call.
constexpr bool is_data_op(int32_t code) { return code >= KRM_FMT_FIRST_DATA && code <= KRM_FMT_LAST_DATA; }

// Words of a string operation (19, 20) with `length` bytes: opcode, length,
// the bytes four to a word.
constexpr int64_t string_words(int64_t length) { return (length + 11) / 4; }

// Words that an operation other than a string occupies, its opcode included;
// 0 for a code that no engine has a row for (a corrupt block).
constexpr int fixed_op_words(int32_t code) {
    switch (code) {
    case KRM_FMT_COLON: case KRM_FMT_DOLLAR: case KRM_FMT_BN: case KRM_FMT_BZ:
    case KRM_FMT_S_RESERVED: case KRM_FMT_SP: case KRM_FMT_SS: case KRM_FMT_SU:
    case KRM_FMT_DC: case KRM_FMT_DP: case KRM_FMT_RU: case KRM_FMT_RD:
    case KRM_FMT_RZ: case KRM_FMT_RN: case KRM_FMT_RC: case KRM_FMT_RP:
        return 1;
    case KRM_FMT_END: case KRM_FMT_P: case KRM_FMT_RADIX: case KRM_FMT_T:
    case KRM_FMT_TL: case KRM_FMT_TR: case KRM_FMT_X: case KRM_FMT_SLASH:
    case KRM_FMT_Q:
    case KRM_FMT_A: case KRM_FMT_B: case KRM_FMT_D: case KRM_FMT_E: case KRM_FMT_EN:
    case KRM_FMT_ES: case KRM_FMT_F: case KRM_FMT_G: case KRM_FMT_I: case KRM_FMT_L:
    case KRM_FMT_O: case KRM_FMT_Z:
        return 2;
    case KRM_FMT_REPEAT: case KRM_FMT_REPEAT_END:
    case KRM_FMT_AW: case KRM_FMT_BW: case KRM_FMT_DW: case KRM_FMT_EW: case KRM_FMT_ENW:
    case KRM_FMT_ESW: case KRM_FMT_FW: case KRM_FMT_GW: case KRM_FMT_IW: case KRM_FMT_LW:
    case KRM_FMT_OW: case KRM_FMT_ZW:
        return 3;
    case KRM_FMT_BWM: case KRM_FMT_DWD: case KRM_FMT_EWD: case KRM_FMT_ENWD:
    case KRM_FMT_ESWD: case KRM_FMT_FWD: case KRM_FMT_GWD: case KRM_FMT_IWM:
    case KRM_FMT_OWM: case KRM_FMT_ZWM:
    case KRM_FMT_VDWD: case KRM_FMT_VEWD: case KRM_FMT_VENWD: case KRM_FMT_VESWD:
    case KRM_FMT_VFWD: case KRM_FMT_VGWD: case KRM_FMT_YWD:
        return 4;
    case KRM_FMT_DWDE: case KRM_FMT_EWDE: case KRM_FMT_ENWDE: case KRM_FMT_ESWDE:
    case KRM_FMT_GWDE:
    case KRM_FMT_VDWDE: case KRM_FMT_VEWDE: case KRM_FMT_VENWDE: case KRM_FMT_VESWDE:
    case KRM_FMT_VGWDE: case KRM_FMT_YWDE:
        return 5;
    default:
        return 0;
    }
}

// Words of the operation at `op`, strings included; 0 for a corrupt one.
inline int64_t op_words(const int32_t *op) {
    if (op[0] == KRM_FMT_STRING || op[0] == KRM_FMT_HOLLERITH)
        return op[1] < 0 ? 0 : string_words(op[1]);
    return fixed_op_words(op[0]);
}

}  // namespace krm::fmt

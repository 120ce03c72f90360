// The item calls of a sequential formatted WRITE: each runs the format to
// its data edit descriptor and edits the item there.

#include <string.h>

#include "formatted/format_walk.h"
#include "formatted/item_edit.h"
#include "formatted/sequential_write.h"
#include "krm/formatted_write.h"

using namespace krm;

namespace {

// Items of the older dialect all go through its own entry, by size.
int to_f77compat(io_control_formatted_write *ctl, const void *item, int32_t size) {
    uint32_t w[4] = {0, 0, 0, 0};
    memcpy(w, item, static_cast<size_t>(size));
    return __f90_sfw_f77compat(ctl, w[0], w[1], w[2], w[3], nullptr, size);
}

template <typename T>
int integer_item(io_control_formatted_write *ctl, T value, int32_t size) {
    if (ctl->flags & IO_F77COMPAT) return to_f77compat(ctl, &value, size);
    sequential_write x{ctl, ctl->up};
    if (int err = fmtw::write_to_data_edit_descriptor(x)) return err;
    constexpr bool is_unsigned = static_cast<T>(-1) > 0;
    const uint64_t mask = size == 8 ? ~0ull : (1ull << (8 * size)) - 1;
    const uint64_t bits = static_cast<uint64_t>(value) & mask;
    return items::edit_integer(x, static_cast<int64_t>(value), bits, is_unsigned, size, &value);
}

template <typename T>
int logical_item(io_control_formatted_write *ctl, T value, int32_t size) {
    if (ctl->flags & IO_F77COMPAT) return to_f77compat(ctl, &value, size);
    sequential_write x{ctl, ctl->up};
    if (int err = fmtw::write_to_data_edit_descriptor(x)) return err;
    const uint64_t mask = size == 8 ? ~0ull : (1ull << (8 * size)) - 1;
    return items::edit_logical(x, static_cast<int64_t>(value), static_cast<uint64_t>(value) & mask, size, &value);
}

}  // namespace

extern "C" {

// One- and two-byte items arrive widened to a word; their own bytes are the
// low ones.
KRM_API int __f90_sfw_i1(io_control_formatted_write *ctl, int32_t v) { return integer_item(ctl, static_cast<int8_t>(v), 1); }
KRM_API int __f90_sfw_i2(io_control_formatted_write *ctl, int32_t v) { return integer_item(ctl, static_cast<int16_t>(v), 2); }
KRM_API int __f90_sfw_i4(io_control_formatted_write *ctl, int32_t v) { return integer_item(ctl, v, 4); }
KRM_API int __f90_sfw_i8(io_control_formatted_write *ctl, int64_t v) { return integer_item(ctl, v, 8); }
KRM_API int __f90_sfw_u1(io_control_formatted_write *ctl, uint32_t v) { return integer_item(ctl, static_cast<uint8_t>(v), 1); }
KRM_API int __f90_sfw_u2(io_control_formatted_write *ctl, uint32_t v) { return integer_item(ctl, static_cast<uint16_t>(v), 2); }
KRM_API int __f90_sfw_u4(io_control_formatted_write *ctl, uint32_t v) { return integer_item(ctl, v, 4); }
KRM_API int __f90_sfw_u8(io_control_formatted_write *ctl, uint64_t v) { return integer_item(ctl, v, 8); }
KRM_API int __f90_sfw_l1(io_control_formatted_write *ctl, int32_t v) { return logical_item(ctl, static_cast<int8_t>(v), 1); }
KRM_API int __f90_sfw_l2(io_control_formatted_write *ctl, int32_t v) { return logical_item(ctl, static_cast<int16_t>(v), 2); }
KRM_API int __f90_sfw_l4(io_control_formatted_write *ctl, int32_t v) { return logical_item(ctl, v, 4); }
KRM_API int __f90_sfw_l8(io_control_formatted_write *ctl, int64_t v) { return logical_item(ctl, v, 8); }

KRM_API int __f90_sfw_ch(io_control_formatted_write *ctl, const char *text, int32_t length) {
    if (ctl->flags & IO_F77COMPAT)
        return __f90_sfw_f77compat(ctl, 0, 0, 0, 0, text, length > 0 ? length : 0);
    sequential_write x{ctl, ctl->up};
    if (int err = fmtw::write_to_data_edit_descriptor(x)) return err;
    return items::edit_character(x, text, length);
}

KRM_API int __f90_sfw_f77compat(io_control_formatted_write *ctl, uint32_t w0, uint32_t w1, uint32_t w2,
                                uint32_t w3, const void *address, int32_t size) {
    const uint32_t words[4] = {w0, w1, w2, w3};
    sequential_write x{ctl, ctl->up};
    if (int err = fmtw::write_to_data_edit_descriptor(x)) return err;
    return items::edit_f77compat(x, address ? address : words, size);
}

}  // extern "C"

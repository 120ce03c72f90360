#include "support/statements.h"

#include <gtest/gtest.h>

#include "support/child.h"

namespace krm_test {

const stmt_location kPrintAt = {STMT_PRINT, 10, "t.f90"};
const stmt_location kWriteAt = {STMT_WRITE, 20, "t.f90"};

int put_item(io_control_list_write &ctl, const item &it) {
    switch (it.k) {
        case item::ch: {
            int32_t len = it.length == -2 ? static_cast<int32_t>(it.text.size()) : it.length;
            return __f90_slw_ch(&ctl, it.text.data(), len);
        }
        case item::i4: return __f90_slw_i4(&ctl, static_cast<int32_t>(it.value));
        case item::i8: return __f90_slw_i8(&ctl, it.value);
        case item::u4: return __f90_slw_u4(&ctl, static_cast<uint32_t>(it.value));
        case item::u8: return __f90_slw_u8(&ctl, static_cast<uint64_t>(it.value));
        case item::l1: return __f90_slw_l1(&ctl, static_cast<int32_t>(it.value));
        case item::l4: return __f90_slw_l4(&ctl, static_cast<int32_t>(it.value));
        case item::l8: return __f90_slw_l8(&ctl, it.value);
        case item::r4: {
            float v;
            memcpy(&v, it.words, sizeof v);
            return __f90_slw_r4(&ctl, v);
        }
        case item::r8: {
            double v;
            memcpy(&v, it.words, sizeof v);
            return __f90_slw_r8(&ctl, v);
        }
        case item::r16: return __f90_slw_r16(&ctl, it.words[0], it.words[1], it.words[2], it.words[3]);
        case item::r16_ref: return __f90_slw_r16_ref(&ctl, it.words);
        case item::c4: return __f90_slw_c4(&ctl, reinterpret_cast<const float *>(it.words));
        case item::c8: return __f90_slw_c8(&ctl, reinterpret_cast<const double *>(it.words));
        case item::c16: return __f90_slw_c16(&ctl, it.words);
        case item::ia8: return __f90_slw_ia8(&ctl, reinterpret_cast<const float *>(it.words));
        case item::ia16: return __f90_slw_ia16(&ctl, reinterpret_cast<const double *>(it.words));
    }
    return -99;
}

int list_write(io_control_list_write &ctl, std::initializer_list<item> items) {
    if (int err = __f90_sslw(&ctl)) return err;
    for (const item &it : items)
        if (int err = put_item(ctl, it)) return err;
    return __f90_eslw(&ctl);
}

int print_list(std::initializer_list<item> items, uint32_t flags) {
    io_control_list_write ctl = {IO_DEFAULT_UNIT | flags, &kPrintAt, 0, nullptr};
    return list_write(ctl, items);
}

int write_list(int64_t unit_number, std::initializer_list<item> items, uint32_t flags) {
    io_control_list_write ctl = {flags, &kWriteAt, unit_number, nullptr};
    return list_write(ctl, items);
}

void expect_prints(const print_case &c) {
    child_result r = run_forked([&] { EXPECT_EQ(print_list(c.items, c.flags), 0); });
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_EQ(r.out, c.expected);
    EXPECT_EQ(r.err, "");
}

}  // namespace krm_test

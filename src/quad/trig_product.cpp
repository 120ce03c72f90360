// A number of up to 113 bits times a constant to twice the working
// precision, without a fused multiply-add: the number is cut into its top
// 56 bits and the 57 below, so that each part times the 56-bit head of the
// constant is exact, and only the product by the constant's small tail
// rounds.
#include "quad/trig_product.h"

#include "quad/ldmath.h"

namespace {

const long_double two120(0x40770000u, 0u, 0u, 0u);
const long_double twom120(0x3F870000u, 0u, 0u, 0u);
const long_double zero(0u, 0u, 0u, 0u);

void split_product(const long_double &d, const long_double &c_h, const long_double &c_l, long_double &hi,
                   long_double &lo) {
    long_double dh = d;  // the hidden bit, 16 + 32 fraction bits and 7 more
    dh.word[2] &= 0xFE000000u;
    dh.word[3] = 0;
    const long_double dl = d - dh;  // exact
    const long_double head = dh * c_h;
    const long_double rest = dl * c_h + d * c_l;
    hi = head + rest;
    lo = rest - (hi - head);
}

}  // namespace

namespace krm::ldmath {

void times_split_constant(const long_double &d, const long_double &c_h, const long_double &c_l, long_double &hi,
                          long_double &lo) {
    if (magnitude_top(d) < 0x01000000u) {  // below 2^-16127: keep the parts normal
        split_product(d * two120, c_h, c_l, hi, lo);
        hi = (hi + lo) * twom120;
        lo = zero;
        return;
    }
    split_product(d, c_h, c_l, hi, lo);
}

}  // namespace krm::ldmath

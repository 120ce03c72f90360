// cbrt: x = m * 2^(3k) with m in [1, 8); the platform's double cbrt of m is
// good to 53 bits, and one Halley step, taken as a correction to that start,
// brings it past 113 (the error cubes). The residual m - y^3 is formed
// exactly: y has 53 bits, so y^2 is exact, and y times the halves of y^2 is.
#include <math.h>

#include "platform/fp_flags.h"
#include "quad/ldmath.h"

namespace {

const long_double two(0x40000000u, 0u, 0u, 0u);
const long_double three(0x40008000u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

long_double cbrtl(long_double x) {
    krm::platform::keep_fp_flags flags;  // the double arithmetic here leaves no flag behind

    unsigned ix = magnitude_top(x);
    if (ix >= 0x7FFF0000u || iszerol(x)) return x + x;  // zero, infinity, NaN
    int e = ilogbl(x);
    int k = e >= 0 ? e / 3 : -((2 - e) / 3);  // floor(e / 3)
    long_double m = __scalbnl(fabsl(x), -3 * k);
    long_double y(cbrt(static_cast<double>(m)));
    long_double y2 = y * y;  // exact: 106 bits
    long_double y2h = y2;
    y2h.word[2] &= 0xFFE00000u;  // the top 60 bits
    y2h.word[3] = 0;
    long_double y2l = y2 - y2h;
    // m - y^3, exact to far below its own last bit: m - y y2h is exact.
    long_double r = (m - y * y2h) - y * y2l;
    // Halley: y (m - y^3) / (2 y^3 + m), with 2 y^3 + m = 3 m - 2 r.
    long_double c = y * r / (three * m - two * r);
    long_double root = __scalbnl(y + c, k);
    return sign_of(x) ? -root : root;
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qcbrt(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, cbrtl(load(x)));
}

// x times 2^n, rounded once in the current direction.
#include "quad/ldmath.h"

namespace {

const long_double two16383(0x7FFE0000u, 0u, 0u, 0u);
// 2^-16382 * 2^113: a step down that keeps 113 bits clear of the
// subnormals, so that only the last multiplication can round.
const long_double twom16269(0x00720000u, 0u, 0u, 0u);

long_double power_of_two(int n) {  // -16382 <= n <= 16383
    return long_double(static_cast<unsigned>(n + 16383) << 16, 0u, 0u, 0u);
}

}  // namespace

namespace krm::ldmath {

long_double __scalbnl(long_double x, int n) {
    unsigned field = (x.word[0] >> 16) & 0x7FFFu;
    if (field == 0x7FFFu || iszerol(x)) return x + x;
    // A normal value with a normal result: only the exponent field changes.
    if (field != 0 && n > -16382 && n < 16383) {
        int f = static_cast<int>(field) + n;
        if (f >= 1 && f <= 0x7FFE) {
            x.word[0] = (x.word[0] & 0x8000FFFFu) | (static_cast<unsigned>(f) << 16);
            return x;
        }
    }
    if (n > 16383) {
        x = x * two16383;
        n -= 16383;
        if (n > 16383) {
            x = x * two16383;
            n -= 16383;
            if (n > 16383) n = 16383;
        }
    } else if (n < -16382) {
        x = x * twom16269;
        n += 16269;
        if (n < -16382) {
            x = x * twom16269;
            n += 16269;
            if (n < -16382) n = -16382;
        }
    }
    return x * power_of_two(n);
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qscalbn(krm_real16 *result, const krm_real16 *x, const int32_t *n) {
    using namespace krm::ldmath;
    store(result, __scalbnl(load(x), *n));
}

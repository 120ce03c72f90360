// The neighbour of x in the direction of y, by stepping the bits.
#include "quad/ldmath.h"

namespace krm::ldmath {

long_double nextafterl(const long_double &x, const long_double &y) {
    if (isnanl(x) || isnanl(y)) return x + y;
    if (x == y) return y;
    if (iszerol(x)) {
        long_double least(0u, 0u, 0u, 1u);  // the least subnormal, with y's sign
        return copysignl(least, y);
    }
    // Away from zero when y lies beyond x, towards it otherwise: one step of
    // the 128-bit magnitude, carries and borrows running through the words.
    bool away = (x < y) != sign_of(x);
    long_double r = x;
    if (away) {
        for (int i = 3; i >= 0 && ++r.word[i] == 0; --i) {
        }
    } else {
        for (int i = 3; i >= 0 && r.word[i]-- == 0; --i) {
        }
    }
    return r;
}

}  // namespace krm::ldmath

extern "C" KRM_API void __Qnextafter(krm_real16 *result, const krm_real16 *x, const krm_real16 *y) {
    using namespace krm::ldmath;
    store(result, nextafterl(load(x), load(y)));
}

// Shared by the tests of the exponential, logarithm, power and hyperbolic
// functions: calls in __float128 terms, and wrappers that give the
// functions without an entry an entry's shape.
#pragma once

#include <quadmath.h>
#include <stdio.h>
#include <string.h>

#include <string>

#include "quad/function_accuracy.h"
#include "quad/ldmath.h"
#include "quad/quad_support.h"

namespace exptest {

using fn1 = long_double (*)(long_double);
using fn2 = long_double (*)(long_double, long_double);

inline long_double ld(__float128 x) { return long_double::of_storage(quadtest::from_f128(x)); }
inline __float128 f128(const long_double &x) { return quadtest::to_f128(x.storage()); }

inline __float128 call(fn1 f, __float128 x) { return f128(f(ld(x))); }
inline __float128 call(fn2 f, __float128 x, __float128 y) { return f128(f(ld(x), ld(y))); }

inline __float128 entry(void (*e)(krm_real16 *, const krm_real16 *), __float128 x) {
    krm_real16 in = quadtest::from_f128(x), out;
    e(&out, &in);
    return quadtest::to_f128(out);
}
inline __float128 entry(void (*e)(krm_real16 *, const krm_real16 *, const krm_real16 *), __float128 x,
                        __float128 y) {
    krm_real16 a = quadtest::from_f128(x), b = quadtest::from_f128(y), out;
    e(&out, &a, &b);
    return quadtest::to_f128(out);
}

inline bool same_bits_f(__float128 a, __float128 b) { return memcmp(&a, &b, 16) == 0; }
// Bit for bit, but any NaN matches any NaN.
inline bool same_value(__float128 a, __float128 b) {
    if (isnanq(a) || isnanq(b)) return isnanq(a) && isnanq(b);
    return same_bits_f(a, b);
}

inline std::string show(__float128 x) {
    char buf[64];
    quadmath_snprintf(buf, sizeof buf, "%.36Qa", x);
    return buf;
}

inline long_double exp_(long_double x) { return krm::ldmath::expl(x); }
inline long_double exp2_(long_double x) { return krm::ldmath::exp2l(x); }
inline long_double expm1_(long_double x) { return krm::ldmath::expm1l(x); }
inline long_double log_(long_double x) { return krm::ldmath::logl(x); }
inline long_double log10_(long_double x) { return krm::ldmath::log10l(x); }
inline long_double log1p_(long_double x) { return krm::ldmath::log1pl(x); }
inline long_double sinh_(long_double x) { return krm::ldmath::sinhl(x); }
inline long_double cosh_(long_double x) { return krm::ldmath::coshl(x); }
inline long_double tanh_(long_double x) { return krm::ldmath::tanhl(x); }
inline long_double pow_(long_double x, long_double y) { return krm::ldmath::powl(x, y); }

// An entry's shape for a class-order function.
template <fn1 F>
void wrap(krm_real16 *r, const krm_real16 *x) {
    *r = F(long_double::of_storage(*x)).storage();
}
template <fn2 F>
void wrap2(krm_real16 *r, const krm_real16 *x, const krm_real16 *y) {
    *r = F(long_double::of_storage(*x), long_double::of_storage(*y)).storage();
}

}  // namespace exptest

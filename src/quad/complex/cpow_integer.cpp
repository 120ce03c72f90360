// COMPLEX(16) to a whole-number power: by squaring, with a real base sent to
// the real power.
#include "quad/ldmath.h"

namespace {

using namespace krm::ldmath;

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double zero(0u, 0u, 0u, 0u);

ldcomplex times(const ldcomplex &a, const ldcomplex &b) {
    return ldcomplex{a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

// z to the power m, m > 0, by squaring. The square of a + ib is taken as
// (a + b)(a - b) + i 2ab, which keeps a real part near zero accurate.
ldcomplex power(ldcomplex z, unsigned long long m) {
    ldcomplex r{one, zero};
    bool first = true;
    for (;;) {
        if (m & 1) {
            r = first ? z : times(r, z);
            first = false;
        }
        m >>= 1;
        if (!m) return r;
        long_double ab = z.re * z.im;
        z = ldcomplex{(z.re + z.im) * (z.re - z.im), ab + ab};
    }
}

// z^n for a magnitude m of n and its sign.
ldcomplex signed_power(const ldcomplex &z, unsigned long long m, bool negative, const long_double &n) {
    if (m == 0) return ldcomplex{one, zero};
    if (iszerol(z.im)) return ldcomplex{powl(z.re, n), zero};
    ldcomplex r = power(z, m);
    if (!negative) return r;
    // 1/r = conj(r) / |r|^2.
    long_double d = r.re * r.re + r.im * r.im;
    return ldcomplex{r.re / d, -r.im / d};
}

}  // namespace

namespace krm::ldmath {

ldcomplex cpow_wi(ldcomplex z, int n) {
    unsigned long long m = n < 0 ? 0ull - static_cast<unsigned long long>(static_cast<long long>(n)) : static_cast<unsigned long long>(n);
    return signed_power(z, m, n < 0, long_double(n));
}

ldcomplex cpow_wl(ldcomplex z, long long n) {
    unsigned long long m = n < 0 ? 0ull - static_cast<unsigned long long>(n) : static_cast<unsigned long long>(n);
    return signed_power(z, m, n < 0, long_double(n));
}

ldcomplex cpow_wu8(ldcomplex z, unsigned long long n) { return signed_power(z, n, false, long_double(n)); }

}  // namespace krm::ldmath

extern "C" KRM_API void __Wpowi(krm_complex16 *result, const krm_complex16 *z, const int32_t *n) {
    using namespace krm::ldmath;
    store(result, cpow_wi(load(z), *n));
}

extern "C" KRM_API void __Wpowl(krm_complex16 *result, const krm_complex16 *z, const int64_t *n) {
    using namespace krm::ldmath;
    store(result, cpow_wl(load(z), *n));
}

extern "C" KRM_API void __Wpowu8(krm_complex16 *result, const krm_complex16 *z, const uint64_t *n) {
    using namespace krm::ldmath;
    store(result, cpow_wu8(load(z), *n));
}

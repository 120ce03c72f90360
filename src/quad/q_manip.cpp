// Sign manipulation, classification and the named constants: word
// operations, no arithmetic.
#include "quad/ldbl_constants.h"
#include "quad/long_double.h"
#include "quad/quad_core.h"

using namespace krm::quad;

extern "C" KRM_API void __Qabs(krm_real16 *result, const krm_real16 *a) {
    u128 x = load(a);
    store(result, x.hi & ~sign_bit, x.lo);
}

extern "C" KRM_API void __Qcopysign(krm_real16 *result, const krm_real16 *a, const krm_real16 *b) {
    u128 x = load(a);
    uint32_t sign = b->word[3] & 0x80000000u;
    store(result, (x.hi & ~sign_bit) | (static_cast<uint64_t>(sign) << 32), x.lo);
}

extern "C" KRM_API void __Qf95_sign(krm_real16 *result, const krm_real16 *a, const krm_real16 *b) {
    __Qcopysign(result, a, b);
}

// This one looks at neither sign: bit 31 of the result's least significant
// word is set when b's least significant word, read as the top of a number,
// says "negative and not zero", and cleared otherwise; the other words are
// a's. Compiled code depends on it as it is.
extern "C" KRM_API void __Qsign(krm_real16 *result, const krm_real16 *a, const krm_real16 *b) {
    uint32_t b0 = b->word[0];
    bool set = b0 > 0x80000000u || (b0 == 0x80000000u && (b->word[1] | b->word[2] | b->word[3]) != 0);
    krm_real16 r = *a;
    r.word[0] = set ? (a->word[0] | 0x80000000u) : (a->word[0] & 0x7FFFFFFFu);
    *result = r;
}

extern "C" KRM_API int __Qfinite(const krm_real16 *a) {
    return (a->word[3] & 0x7FFF0000u) != 0x7FFF0000u;
}

extern "C" KRM_API int __Qisinf(const krm_real16 *a) {
    return (a->word[3] & 0x7FFFFFFFu) == 0x7FFF0000u && (a->word[2] | a->word[1] | a->word[0]) == 0;
}

extern "C" KRM_API int __Qisnormal(const krm_real16 *a) {
    uint32_t e = a->word[3] & 0x7FFF0000u;
    return e != 0 && e != 0x7FFF0000u;
}

extern "C" KRM_API int __Qissubnormal(const krm_real16 *a) {
    return (a->word[3] & 0x7FFF0000u) == 0 &&
           ((a->word[3] & 0xFFFFu) | a->word[2] | a->word[1] | a->word[0]) != 0;
}

extern "C" KRM_API int __Qiszero(const krm_real16 *a) {
    return ((a->word[3] & 0x7FFFFFFFu) | a->word[2] | a->word[1] | a->word[0]) == 0;
}

extern "C" KRM_API int __Qsignbit(const krm_real16 *a) { return a->word[3] >> 31; }

extern "C" KRM_API void __infinityq(krm_real16 *result) { *result = _ldbl_infinity.storage(); }
extern "C" KRM_API void __quiet_nanq(krm_real16 *result) { *result = _ldbl_quiet_nan.storage(); }
extern "C" KRM_API void __signaling_nanq(krm_real16 *result) { *result = _ldbl_signalling_nan.storage(); }
extern "C" KRM_API void __max_normalq(krm_real16 *result) { *result = _ldbl_max_normal.storage(); }
extern "C" KRM_API void __min_normalq(krm_real16 *result) { *result = _ldbl_min_normal.storage(); }
extern "C" KRM_API void __max_subnormalq(krm_real16 *result) { *result = _ldbl_max_subnormal.storage(); }
extern "C" KRM_API void __min_subnormalq(krm_real16 *result) { *result = _ldbl_min_subnormal.storage(); }

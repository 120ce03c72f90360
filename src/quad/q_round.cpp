// Rounding to integral values: rintl, AINT, ANINT, NINT.
#include "quad/long_double.h"
#include "quad/quad_core.h"

namespace {

// Built at load, as every unit's constants are.
const long_double qone(0x3FFF0000u, 0u, 0u, 0u);
const long_double qhalf(0x3FFE0000u, 0u, 0u, 0u);
const long_double qmhalf(0xBFFE0000u, 0u, 0u, 0u);
const long_double two112(0x406F0000u, 0u, 0u, 0u);

// The NINT limits: 2147483647.5 and -2147483648.5, and their 64-bit like,
// 2^63 - 0.5 and -2^63 - 0.5.
const long_double int_upper(0x401DFFFFu, 0xFFFE0000u, 0u, 0u);
const long_double int_lower(0xC01E0000u, 0x00010000u, 0u, 0u);
const long_double long_upper(0x403DFFFFu, 0xFFFFFFFFu, 0xFFFE0000u, 0u);
const long_double long_lower(0xC03E0000u, 0u, 0x00010000u, 0u);
// Beyond every integer range: converts to the integer with only its top bit set.
const long_double huge(0x7FFE0000u, 0u, 0u, 0u);

inline bool negative(const long_double &x) { return x.word[0] >> 31; }

inline long_double magnitude(const long_double &x) {
    long_double t = x;
    t.word[0] &= 0x7FFFFFFFu;
    return t;
}

inline long_double with_sign_of(long_double r, const long_double &x) {
    r.word[0] = (r.word[0] & 0x7FFFFFFFu) | (x.word[0] & 0x80000000u);
    return r;
}

inline bool nan_or_infinity(const long_double &x) { return (x.word[0] & 0x7FFF0000u) == 0x7FFF0000u; }

}  // namespace

long_double rintl(const long_double &x) {
    // At 2^112 and above every number is an integer (NaNs and infinities
    // come back as they are); below, adding and taking away 2^112 rounds in
    // the current direction.
    if ((x.word[0] & 0x7FFFFFFFu) >= two112.word[0]) return x;
    long_double big = with_sign_of(two112, x);
    long_double r = (x + big) - big;
    if ((r.word[0] & 0x7FFFFFFFu) == 0 && (r.word[1] | r.word[2] | r.word[3]) == 0) r = with_sign_of(r, x);
    return r;
}

long_double aintl(const long_double &x) {
    if (nan_or_infinity(x)) return x + x;
    long_double t = magnitude(x);
    long_double r = rintl(t);
    if (!(r <= t)) r = r - qone;
    return with_sign_of(r, x);
}

long_double anintl(const long_double &x) {
    long_double t = magnitude(x);
    long_double r = rintl(t);
    if (!(r == t)) {
        // Ties go away from zero, whichever way rintl went.
        long_double d = r - t;
        if (d > qhalf)
            r = r - qone;
        else if (d <= qmhalf)
            r = r + qone;
    }
    return with_sign_of(r, x);
}

int nintl(const long_double &x) {
    if (x > int_lower && x < int_upper) return static_cast<int>(anintl(x));
    return static_cast<int>(with_sign_of(huge, x));
}

long long llnintl(const long_double &x) {
    if (x > long_lower && x < long_upper) return static_cast<long long>(anintl(x));
    return static_cast<long long>(with_sign_of(huge, x));
}

extern "C" KRM_API void __Qaint(krm_real16 *result, const krm_real16 *a) {
    *result = aintl(long_double::of_storage(*a)).storage();
}

extern "C" KRM_API void __Qanint(krm_real16 *result, const krm_real16 *a) {
    *result = anintl(long_double::of_storage(*a)).storage();
}

extern "C" KRM_API int32_t __Qnint(const krm_real16 *a) { return nintl(long_double::of_storage(*a)); }

extern "C" KRM_API int32_t __i_Qnnt(const krm_real16 *a) { return nintl(long_double::of_storage(*a)); }

// The 32-bit result cut to 16 bits.
extern "C" KRM_API int16_t __h_Qnnt(const krm_real16 *a) {
    return static_cast<int16_t>(static_cast<uint16_t>(nintl(long_double::of_storage(*a))));
}

extern "C" KRM_API int64_t __il_Qnnt(const krm_real16 *a) { return llnintl(long_double::of_storage(*a)); }

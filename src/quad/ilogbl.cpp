// The unbiased exponent of x, and x scaled into [1, 2).
#include "quad/ldmath.h"

namespace {

const long_double xscale(0x406F0000u, 0u, 0u, 0u);  // 2^112: lifts a subnormal into the normal range

}  // namespace

namespace krm::ldmath {

int ilogbl(long_double x) {
    unsigned field = (x.word[0] >> 16) & 0x7FFFu;
    if (field == 0x7FFFu) return 0x7FFFFFFF;
    if (field != 0) return static_cast<int>(field) - 16383;
    if (iszerol(x)) return static_cast<int>(0x80000001u);
    x = x * xscale;
    return static_cast<int>((x.word[0] >> 16) & 0x7FFFu) - 16495;
}

long_double significandl(long_double x) {
    if (!finitel(x) || iszerol(x)) return x + x;
    return __scalbnl(x, -ilogbl(x));
}

}  // namespace krm::ldmath

extern "C" KRM_API int32_t __Qilogb(const krm_real16 *x) { return krm::ldmath::ilogbl(krm::ldmath::load(x)); }

extern "C" KRM_API void __Qsignificand(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, significandl(load(x)));
}

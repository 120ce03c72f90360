// CEILING and FLOOR by AINT, and the integer nearest in the current direction.
#include "quad/ldmath.h"

namespace {

const long_double qone(0x3FFF0000u, 0u, 0u, 0u);

}  // namespace

namespace krm::ldmath {

long_double __ceill(const long_double &x) {
    long_double t = aintl(x);
    // A positive fraction goes up; a negative one truncates to -0 or above,
    // which is already the ceiling.
    if (!sign_of(x) && t != x && !isnanl(x)) t = t + qone;
    return t;
}

long_double __floorl(const long_double &x) {
    long_double t = aintl(x);
    if (sign_of(x) && t != x && !isnanl(x)) t = t - qone;
    return t;
}

int irintl(const long_double &x) { return static_cast<int>(rintl(x)); }

}  // namespace krm::ldmath

extern "C" KRM_API void __Qceil(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, __ceill(load(x)));
}

extern "C" KRM_API void __Qfloor(krm_real16 *result, const krm_real16 *x) {
    using namespace krm::ldmath;
    store(result, __floorl(load(x)));
}

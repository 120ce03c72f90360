// ABS of a COMPLEX(16) value, and its conjugate.
#include "quad/ldmath.h"

namespace krm::ldmath {

long_double cabsl(ldcomplex z) { return hypotl(z.re, z.im); }

ldcomplex conjl(ldcomplex z) { return ldcomplex{z.re, -z.im}; }

}  // namespace krm::ldmath

extern "C" KRM_API void __Wabs(krm_real16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, cabsl(load(z)));
}

extern "C" KRM_API void __Qcnjg(krm_complex16 *result, const krm_complex16 *z) {
    using namespace krm::ldmath;
    store(result, conjl(load(z)));
}

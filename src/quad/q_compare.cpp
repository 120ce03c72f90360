// Comparisons. A NaN is unordered with everything, itself included; the two
// zeros are equal.
#include "quad/long_double.h"
#include "quad/quad_core.h"

using namespace krm::quad;

namespace {

enum order { less = -1, equal = 0, greater = 1, unordered = 2 };

inline order compare(const krm_real16 *pa, const krm_real16 *pb) {
    u128 a = load(pa), b = load(pb);
    if (is_nan(a) || is_nan(b)) return unordered;
    if (is_zero(a)) a.hi = 0;
    if (is_zero(b)) b.hi = 0;
    uint64_t sa = a.hi & sign_bit, sb = b.hi & sign_bit;
    if (sa != sb) return sa ? less : greater;
    // Equal signs: the magnitudes as one number, from the top.
    order magnitude = a.hi != b.hi ? (a.hi < b.hi ? less : greater)
                      : a.lo != b.lo ? (a.lo < b.lo ? less : greater)
                                     : equal;
    return sa ? static_cast<order>(-magnitude) : magnitude;
}

}  // namespace

extern "C" int _Qeq(const krm_real16 *a, const krm_real16 *b) { return compare(a, b) == equal; }
extern "C" int _Qne(const krm_real16 *a, const krm_real16 *b) { return compare(a, b) != equal; }
extern "C" int _Qlt(const krm_real16 *a, const krm_real16 *b) { return compare(a, b) == less; }
extern "C" int _Qle(const krm_real16 *a, const krm_real16 *b) {
    order o = compare(a, b);
    return o == less || o == equal;
}
extern "C" int _Qgt(const krm_real16 *a, const krm_real16 *b) { return compare(a, b) == greater; }
extern "C" int _Qge(const krm_real16 *a, const krm_real16 *b) {
    order o = compare(a, b);
    return o == greater || o == equal;
}

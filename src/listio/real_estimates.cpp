// Decimal exponent estimates from a value's bits, by shifts and one
// multiplication: the exponent and the leading fraction bits, taken as a
// piecewise linear log2, times log10(2). They can be one below the true
// exponent, and the older dialect's fixed-width forms are built on them as
// they are.

#include <string.h>

#include "krm/list_write.h"

extern "C" {

KRM_API int __f90_silog(const float *value) {
    uint32_t bits;
    memcpy(&bits, value, sizeof bits);
    int32_t x = static_cast<int32_t>(bits & 0x7fffffff) - 0x3f800000;
    return ((x >> 11) * 1233) >> 24;
}

KRM_API int __f90_ilog(double value) {
    uint64_t bits;
    memcpy(&bits, &value, sizeof bits);
    int32_t e = static_cast<int32_t>(bits >> 52 & 0x7ff) - 1023;
    int32_t m = static_cast<int32_t>(bits >> 44 & 0xff);
    return ((e * 256 + m) * 1233) >> 20;
}

KRM_API int __f90_qilog(const uint32_t *value) {
    const uint32_t top = value[3];
    int32_t t = (static_cast<int32_t>(top >> 16 & 0x7fff) - 16383) * 256 + static_cast<int32_t>(top >> 8 & 0xff);
    return (t * 77 + (t >> 4)) >> 16;
}

// A negative estimate taken as unsigned is large: every magnitude below 1
// gets the wide field.
KRM_API int __f90_width_f77compat(const float *value) {
    if (*value == 0.0f) return 10;
    return static_cast<unsigned>(__f90_silog(value)) < 7 ? 10 : 14;
}

KRM_API int __f90_dwidth_f77compat(double value) {
    return static_cast<unsigned>(__f90_ilog(value)) >= 15 ? 22 : 18;
}

// Zero is +0.0 by its bits; -0.0 gets the estimate of a tiny number.
KRM_API int __f90_qwidth_f77compat(uint32_t w0, uint32_t w1, uint32_t w2, uint32_t w3) {
    if ((w0 | w1 | w2 | w3) == 0) return 39;
    const uint32_t v[4] = {w0, w1, w2, w3};
    return static_cast<unsigned>(__f90_qilog(v)) >= 36 ? 44 : 39;
}

}  // extern "C"

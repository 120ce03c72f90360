/* REAL(16): IEEE binary128 in software.
 *
 * Every entry here takes and gives values in storage order, as REAL(16) data
 * lies in a program's memory: four 32-bit words, the least significant first,
 * so that word 3 holds the sign, the 15-bit exponent and the top 16 fraction
 * bits. Results come back through the first pointer unless a function returns
 * them. No entry raises a floating-point exception flag; the rounding
 * direction is the one the processor is set to. */
#ifndef KRM_QUAD_H
#define KRM_QUAD_H

#include <stdint.h>

#include "krm/api.h"

/* One REAL(16) value in storage order. Only 4-byte alignment is assumed. */
typedef struct krm_real16 {
    uint32_t word[4];
} krm_real16;

KRM_BEGIN_DECLS

/* Square root, correctly rounded in the current direction. */
KRM_API void __Qsqrt(krm_real16 *result, const krm_real16 *a);

/* Sign manipulation. __Qcopysign and __Qf95_sign give a's magnitude with b's
 * sign bit. __Qsign takes the sign from b's least significant word instead
 * (see its definition); words 1 to 3 of the result are a's. */
KRM_API void __Qabs(krm_real16 *result, const krm_real16 *a);
KRM_API void __Qcopysign(krm_real16 *result, const krm_real16 *a, const krm_real16 *b);
KRM_API void __Qf95_sign(krm_real16 *result, const krm_real16 *a, const krm_real16 *b);
KRM_API void __Qsign(krm_real16 *result, const krm_real16 *a, const krm_real16 *b);

/* Classification by the bits, 1 or 0. */
KRM_API int __Qfinite(const krm_real16 *a);
KRM_API int __Qisinf(const krm_real16 *a);
KRM_API int __Qisnormal(const krm_real16 *a);
KRM_API int __Qissubnormal(const krm_real16 *a);
KRM_API int __Qiszero(const krm_real16 *a);
KRM_API int __Qsignbit(const krm_real16 *a);

/* Constants. */
KRM_API void __infinityq(krm_real16 *result);
KRM_API void __quiet_nanq(krm_real16 *result);
KRM_API void __signaling_nanq(krm_real16 *result);
KRM_API void __max_normalq(krm_real16 *result);
KRM_API void __min_normalq(krm_real16 *result);
KRM_API void __max_subnormalq(krm_real16 *result);
KRM_API void __min_subnormalq(krm_real16 *result);

/* AINT and ANINT; NINT to 32, 32, 16 and 64-bit integers. */
KRM_API void __Qaint(krm_real16 *result, const krm_real16 *a);
KRM_API void __Qanint(krm_real16 *result, const krm_real16 *a);
KRM_API int32_t __Qnint(const krm_real16 *a);
KRM_API int32_t __i_Qnnt(const krm_real16 *a);
KRM_API int16_t __h_Qnnt(const krm_real16 *a);
KRM_API int64_t __il_Qnnt(const krm_real16 *a);

/* DPROD with a REAL(16) result, and MODULO. */
KRM_API void __Qprod(krm_real16 *result, const double *x, const double *y);
KRM_API void __f_modulo_Q(krm_real16 *result, const krm_real16 *a, const krm_real16 *p);

KRM_END_DECLS

#endif

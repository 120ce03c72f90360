// The kernels shared by the exponential, logarithm, power and hyperbolic
// functions: exact products and sums, log in head and tail form, and exp
// by the 32-row table, with one final rounding.
#include "quad/exact_product.h"
#include "quad/exp_log_tables.h"
#include "quad/quad_core.h"

namespace krm::ldmath {

namespace {

const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double two(0x40000000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);

// The top 56 significant bits: products of two such heads, and of a head
// and a 57-bit rest, are exact; rest times rest rounds, 2^-226 below the
// product, which is all the tails need.
inline long_double top56(const long_double &a) {
    return long_double(a.word[0], a.word[1], a.word[2] & 0xFE000000u, 0u);
}

// a + b and its error when a is the greater in exponent (or zero).
inline long_double fast_sum(const long_double &a, const long_double &b, long_double *err) {
    long_double s = a + b;
    *err = b - (s - a);
    return s;
}

inline long_double power_of_two(int n) {  // -16382 <= n <= 16383
    return long_double(static_cast<unsigned>(n + 16383) << 16, 0u, 0u, 0u);
}

}  // namespace

namespace {

inline int field_of(const long_double &x) { return static_cast<int>((x.word[0] >> 16) & 0x7FFFu); }

}  // namespace

long_double __explog_mul(const long_double &a, const long_double &b, long_double *lo) {
    // A normal product: the tail from the integers. Otherwise (a product
    // in the subnormals, an infinity, a NaN) the halves of the factors.
    long_double p = exact_product(a, b, lo);
    const int ep = field_of(p);
    if (ep != 0 && ep != 0x7FFF) return p;
    long_double ah = top56(a), al = a - ah;
    long_double bh = top56(b), bl = b - bh;
    *lo = (((ah * bh - p) + ah * bl) + al * bh) + al * bl;
    return p;
}

long_double __explog_add(const long_double &a, const long_double &b, long_double *err) {
    // Ordered by magnitude on the top words, the fast sum is exact.
    if (magnitude_top(a) >= magnitude_top(b)) return fast_sum(a, b, err);
    return fast_sum(b, a, err);
}

namespace {

// log1p(u) for u = u + u_lo, |u| <= 2^-8, as v + tail unsummed:
// log1p(u) = u - u^2/2 + s (u^2/2 + R(s^2)), s = u / (2 + u): the error of
// s only meets terms of order u^3.
long_double log1p_parts(const long_double &u, const long_double &u_lo, bool precise, long_double *tail) {
    const exp_log_constants &c = _exp_log;
    long_double s = u / (two + u);
    long_double z = s * s;
    long_double R = z * (c.A1 + z * (c.A2 + z * (c.A3 + z * (c.A4 + z * (c.A5 + z * (c.A6 + z * c.A7))))));
    long_double hf, hf_lo;
    if (precise) {
        long_double sq_lo;
        hf = __explog_mul(u, u, &sq_lo) * half;
        hf_lo = sq_lo * half + u * u_lo;
    } else {
        hf = u * u * half;
        hf_lo = iszerol(u_lo) ? u_lo : u * u_lo;
    }
    long_double W = s * (hf + R);
    long_double v = u - hf;  // exact error below: |hf| < |u|
    long_double err = (u - v) - hf;
    *tail = ((err - hf_lo) + W) + u_lo;
    return v;
}

}  // namespace

long_double __log1p_hl(const long_double &u, const long_double &u_lo, long_double *lo, bool precise) {
    long_double tail;
    long_double v = log1p_parts(u, u_lo, precise, &tail);
    long_double hi = v + tail;
    if (lo) *lo = tail - (hi - v);
    return hi;
}

long_double __log_hl(long_double x, long_double *lo, bool precise) {
    const exp_log_constants &c = _exp_log;
    int k = 0;
    unsigned hx = x.word[0];
    if (hx < 0x00010000u) {  // subnormal: scaled into the normal range first
        x = x * c.two113;
        k = -113;
        hx = x.word[0];
    }
    k += static_cast<int>(hx >> 16) - 16383;
    int j = (hx >> 8) & 0xFF;
    long_double u, u_lo;
    if (j == 0) {  // m in [1, 1 + 2^-8): u = m - 1 exactly
        u = long_double(0x3FFF0000u | (hx & 0xFFFFu), x.word[1], x.word[2], x.word[3]) - one;
        u_lo = long_double(0u, 0u, 0u, 0u);
    } else if (j == 255) {  // m/2 in [1 - 2^-9, 1): u = m/2 - 1 exactly
        u = long_double(0x3FFE0000u | (hx & 0xFFFFu), x.word[1], x.word[2], x.word[3]) - one;
        u_lo = long_double(0u, 0u, 0u, 0u);
        k += 1;
    } else {
        // u = m r - 1 exactly, from integers: with M the 113-bit
        // significand and r = R 2^-10, M R - 2^122 = u 2^122 has at most
        // 114 bits (|u| < 2^-8); a 114th bit goes to the tail.
        const long_double &r = _TBL_logl_inv[j];
        int er = field_of(r) - 16383;  // -1 or 0
        uint64_t R = ((static_cast<uint64_t>((r.word[0] & 0xFFFFu) | 0x10000u) << 32) | r.word[1]) >> (38 - er);
        uint64_t mh = (static_cast<uint64_t>((hx & 0xFFFFu) | 0x10000u) << 32) | x.word[1];
        uint64_t ml = (static_cast<uint64_t>(x.word[2]) << 32) | x.word[3];
        uint64_t h, l;
        quad::mul_64(ml, R, h, l);
        h += mh * R - (static_cast<uint64_t>(1) << 58);
        unsigned sign = 0;
        if (h >> 63) {
            l = ~l + 1;
            h = ~h + (l == 0);
            sign = 0x80000000u;
        }
        u_lo = long_double(0u, 0u, 0u, 0u);
        if ((h | l) == 0) {
            u = u_lo;
        } else {
            int L = h ? 127 - quad::leading_zeros(h) : 63 - quad::leading_zeros(l);
            if (L == 113) {
                if (l & 1) u_lo = long_double(sign | static_cast<unsigned>(16383 - 122) << 16, 0u, 0u, 0u);
                l = (l >> 1) | (h << 63);
                h >>= 1;
            } else if (L < 112) {
                int n = 112 - L;
                h = n >= 64 ? l << (n - 64) : (h << n) | (l >> (64 - n));
                l = n >= 64 ? 0 : l << n;
            }
            unsigned field = static_cast<unsigned>(L - 122 + 16383);
            u = long_double(sign | field << 16 | static_cast<unsigned>((h >> 32) & 0xFFFFu), static_cast<unsigned>(h),
                            static_cast<unsigned>(l >> 32), static_cast<unsigned>(l));
        }
        if (j >= 106) k += 1;
    }
    if (k == 0 && (j == 0 || j == 255)) return __log1p_hl(u, u_lo, lo, precise);
    long_double p_lo;
    long_double p = log1p_parts(u, u_lo, precise, &p_lo);
    // k ln2 + T + p: k * ln2hi is exact, and the table's head is smaller
    // than it unless k is 0.
    long_double s1, e1, e2, t;
    if (k != 0) {
        long_double fk(k);
        s1 = fast_sum(fk * c.ln2hi, _TBL_logl_hi[j], &e1);
        long_double s2 = __explog_add(s1, p, &e2);
        t = (e1 + e2) + (p_lo + (_TBL_logl_lo[j] + fk * c.ln2lo));
        s1 = s2;
    } else {
        s1 = __explog_add(_TBL_logl_hi[j], p, &e2);
        t = e2 + (p_lo + _TBL_logl_lo[j]);
    }
    long_double hi = s1 + t;
    if (lo) *lo = t - (hi - s1);
    return hi;
}

void __exp_pieces(const long_double &hi, const long_double &lo, int *m, long_double *s_hi, long_double *s_lo) {
    const exp_log_constants &c = _exp_log;
    // k = nearest(hi * 32/ln2); r = hi - k ln2/32 + lo, |r| <= ln2/64.
    long_double t = hi * c.invln2_32;
    int k = static_cast<int>(sign_of(t) ? t - half : t + half);
    long_double fk(k);
    long_double r = (hi - fk * c.ln2_32hi) - fk * c.ln2_32lo;
    if (!iszerol(lo)) r = r + lo;
    // expm1(r) = r + r^2 (t1 + ... + t11 r^10)
    long_double q =
        c.t1 + r * (c.t2 + r * (c.t3 + r * (c.t4 + r * (c.t5 + r * (c.t6 + r * (c.t7 + r * (c.t8 + r * (c.t9 + r * (c.t10 + r * c.t11)))))))));
    long_double p = r + r * r * q;
    int j = k & 31;
    *m = k >> 5;
    *s_hi = _TBL_expl_hi[j];
    *s_lo = _TBL_expl_lo[j] + _TBL_expl_hi[j] * p;
}

long_double __exp_finish(const long_double &s_hi, const long_double &s_lo, int m) {
    long_double s = s_hi + s_lo;
    int field = static_cast<int>((s.word[0] >> 16) & 0x7FFFu);
    if (field + m >= 1) return __scalbnl(s, m);  // normal, or overflowing by __scalbnl's rounding
    long_double err = s_lo - (s - s_hi);
    // A subnormal result: s is rounded to 113 bits already, and scaling it
    // rounds again. Only a tie of the second rounding can go wrong; there
    // the first rounding's error decides, by moving s one step its way.
    long_double r = __scalbnl(s, m);
    if (!iszerol(err)) {
        long_double back = __scalbnl(r, -m);
        long_double d = fabsl(s - back);
        long_double half_step = __scalbnl(power_of_two(-16382), -113 - m);  // half the subnormal quantum, scaled
        if (d == half_step) {
            long_double toward = sign_of(err) ? -one : one;
            s = nextafterl(s, s + toward);
            r = __scalbnl(s, m);
        }
    }
    return r;
}

long_double __expm1_hl(const long_double &x, long_double *lo) {
    const exp_log_constants &c = _exp_log;
    // As __exp_pieces, but with the reduced argument and the polynomial as
    // pairs: the result may be far smaller than the table's row, so the
    // rounding errors of r, of 1 + p and of the row times p would all show.
    long_double t = x * c.invln2_32;
    int k = static_cast<int>(sign_of(t) ? t - half : t + half);
    long_double fk(k);
    long_double r1 = x - fk * c.ln2_32hi;  // exact
    long_double r_lo;
    long_double r = fast_sum(r1, -(fk * c.ln2_32lo), &r_lo);
    long_double q =
        c.t1 + r * (c.t2 + r * (c.t3 + r * (c.t4 + r * (c.t5 + r * (c.t6 + r * (c.t7 + r * (c.t8 + r * (c.t9 + r * (c.t10 + r * c.t11)))))))));
    long_double p_lo;
    long_double p = fast_sum(r, r * r * q, &p_lo);
    p_lo = p_lo + r_lo * (one + r);
    if (k == 0) {
        long_double hi = p + p_lo;
        *lo = p_lo - (hi - p);
        return hi;
    }
    int j = k & 31, m = k >> 5;
    const long_double &T = _TBL_expl_hi[j];
    // 2^m (T + T_lo) (1 + p) - 1 = (2^m T - 1) + 2^m T p + 2^m (T p_lo + T_lo (1 + p))
    long_double err, e3, tp_lo;
    long_double d = __explog_add(__scalbnl(T, m), -one, &err);
    long_double tp = __explog_mul(T, p, &tp_lo);
    long_double s = __explog_add(d, __scalbnl(tp, m), &e3);
    long_double rest = __scalbnl(tp_lo + (T * p_lo + _TBL_expl_lo[j] * (one + p)), m);
    long_double tail = (err + e3) + rest;
    long_double hi = s + tail;
    *lo = tail - (hi - s);
    return hi;
}

long_double __explog_div(const long_double &a, const long_double &a_lo, const long_double &b, const long_double &b_lo,
                     long_double *lo) {
    long_double q = a / b;
    long_double p_lo;
    long_double p = __explog_mul(q, b, &p_lo);
    // a - q b is exact: q b lies within a rounding of a.
    *lo = ((((a - p) - p_lo) + a_lo) - q * b_lo) / b;
    return q;
}

void __sinh_cosh_parts(const long_double &x, long_double *t, long_double *t_lo, long_double *u, long_double *u_lo) {
    *t = __expm1_hl(x, t_lo);
    long_double d_lo;
    long_double d = __explog_add(one, *t, &d_lo);
    d_lo = d_lo + *t_lo;
    *u = __explog_div(*t, *t_lo, d, d_lo, u_lo);
}

}  // namespace krm::ldmath

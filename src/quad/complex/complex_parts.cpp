// The head-and-tail steps of the complex power and cube root.
#include "quad/complex/complex_parts.h"
#include "quad/exp_log_tables.h"

namespace {

using namespace krm::ldmath;

const long_double zero(0u, 0u, 0u, 0u);
const long_double one(0x3FFF0000u, 0u, 0u, 0u);
const long_double half(0x3FFE0000u, 0u, 0u, 0u);
const long_double ln2_hi(0x3FFE62E4u, 0x2FEFA39Eu, 0xF35793C7u, 0x673007E6u);
const long_double ln2_lo(0xBF8A2A17u, 0xE1979B31u, 0xACE93A4Eu, 0xBE5D148Fu);

}  // namespace

namespace krm::ldmath::complex_detail {

pair sum(const pair &a, const pair &b) {
    long_double e;
    long_double h = __explog_add(a.hi, b.hi, &e);
    long_double t = e + (a.lo + b.lo);
    long_double hi = h + t;
    return pair{hi, t - (hi - h)};
}

// a times the pair p.
pair times(const long_double &a, const pair &p) {
    long_double lo;
    long_double hi = __explog_mul(a, p.hi, &lo);
    long_double t = lo + a * p.lo;
    long_double h = hi + t;
    return pair{h, t - (h - hi)};
}

// ln |x + iy| as a pair, for finite x, y not both zero: the parts scaled by
// a power of two 2^k so that their squares stay in range, then
// k ln 2 + log(s)/2 with s = x^2 + y^2 as a pair.
pair log_modulus_pair(long_double x, long_double y) {
    long_double ax = fabsl(x), ay = fabsl(y);
    int k = ilogbl(ax > ay ? ax : ay);
    ax = __scalbnl(ax, -k);
    ay = __scalbnl(ay, -k);
    long_double xl, yl, e;
    long_double xx = __explog_mul(ax, ax, &xl), yy = __explog_mul(ay, ay, &yl);
    long_double s = __explog_add(xx, yy, &e);
    long_double sl = e + (xl + yl);
    long_double h = s + sl;
    sl = sl - (h - s);
    // log(h + sl) = log h + sl/h to far below the last bit.
    long_double lo;
    long_double hi = __log_hl(h, &lo, true);
    pair l = sum(pair{hi, lo}, pair{sl / h, zero});
    l.hi = l.hi * half;
    l.lo = l.lo * half;
    if (k == 0) return l;
    long_double kk(k);
    return sum(l, times(kk, pair{ln2_hi, ln2_lo}));
}

// The sine and cosine of a + al, |al| far below a's last bit.
void sincos_pair(const pair &a, long_double *s, long_double *c) {
    long_double y[2];
    int n = __rem_pio2l(a.hi, y);
    long_double sn, cs;
    __k_sincosl(y[0], y[1] + a.lo, &sn, &cs);
    by_quadrant(n, sn, cs, s, c);
}

ldcomplex exp_times(const pair &size, const long_double &c, const long_double &s) {
    int m;
    long_double sh, sl;
    __exp_pieces(size.hi, size.lo, &m, &sh, &sl);
    // 2^m (sh + sl) c, with the product's tail, rounded once.
    long_double pl, ql;
    long_double p = __explog_mul(sh, c, &pl), q = __explog_mul(sh, s, &ql);
    return ldcomplex{__exp_finish(p, pl + sl * c, m), __exp_finish(q, ql + sl * s, m)};
}

void sinh_cosh_pairs(const long_double &ax, pair *sh, pair *ch) {
    // t = e^x - 1 and u = 1 - e^-x: sinh = (t + u)/2, cosh = 1 + (t - u)/2.
    long_double t, tl, u, ul;
    __sinh_cosh_parts(ax, &t, &tl, &u, &ul);
    pair s = sum(pair{t, tl}, pair{u, ul});
    *sh = pair{s.hi * half, s.lo * half};
    pair d = sum(pair{t, tl}, pair{-u, -ul});
    *ch = sum(pair{one, zero}, pair{d.hi * half, d.lo * half});
}

long_double times_rounded(const pair &p, const long_double &f) {
    long_double lo;
    long_double hi = __explog_mul(p.hi, f, &lo);
    return hi + (lo + p.lo * f);
}

}  // namespace krm::ldmath::complex_detail

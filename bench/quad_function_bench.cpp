// REAL(16) functions: time per call of each libkrm entry against the
// libquadmath function of the same name, in the same run, on the same
// arguments.
//
//   quad_function_bench [calls per timing, default 200000]
//
// Each timing calls the function over an array of 1024 arguments drawn from
// the range where programs call it; CPU time of the thread, best of 5.
// Before timing, both sides are run on every argument and their results
// compared: the greatest difference in ulps is shown beside the timing, as
// a guard against timing code that gives something else.
#include <math.h>
#include <quadmath.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "bench_timing.h"
#include "krm/quad_functions.h"

namespace {

constexpr int size = bench::batch;


// A random number in [lo, hi) with every bit of the significand random.
__float128 in_range(__float128 lo, __float128 hi) {
    __float128 u = static_cast<__float128>(bench::next() >> 11) * 0x1p-53Q + static_cast<__float128>(bench::next() >> 11) * 0x1p-106Q;
    return lo + (hi - lo) * u;
}

__float128 xs[size], ys[size], ours[size], theirs[size];

using entry1 = void (*)(krm_real16 *, const krm_real16 *);
using entry2 = void (*)(krm_real16 *, const krm_real16 *, const krm_real16 *);
using peer1 = __float128 (*)(__float128);
using peer2 = __float128 (*)(__float128, __float128);

struct row {
    const char *name;
    entry1 f1;
    peer1 g1;
    entry2 f2;
    peer2 g2;
    __float128 lo, hi;      // x's range
    __float128 ylo, yhi;    // y's, for two arguments
};

__attribute__((noinline)) void run_ours(const row &r) {
    if (r.f1)
        for (int i = 0; i < size; ++i)
            r.f1(reinterpret_cast<krm_real16 *>(&ours[i]), reinterpret_cast<const krm_real16 *>(&xs[i]));
    else
        for (int i = 0; i < size; ++i)
            r.f2(reinterpret_cast<krm_real16 *>(&ours[i]), reinterpret_cast<const krm_real16 *>(&xs[i]),
                 reinterpret_cast<const krm_real16 *>(&ys[i]));
}

__attribute__((noinline)) void run_theirs(const row &r) {
    if (r.g1)
        for (int i = 0; i < size; ++i) theirs[i] = r.g1(xs[i]);
    else
        for (int i = 0; i < size; ++i) theirs[i] = r.g2(xs[i], ys[i]);
}

// The difference of a and b in units of b's last place.
double ulps(__float128 a, __float128 b) {
    if (isnanq(a) || isnanq(b)) return isnanq(a) && isnanq(b) ? 0 : INFINITY;
    if (a == b) return 0;
    int e = ilogbq(b);
    if (e < -16382) e = -16382;
    return static_cast<double>(fabsq(a - b) / ldexpq(1, e - 112));
}

__float128 powi_peer(__float128 x, __float128 n) { return powq(x, n); }
void powi_entry(krm_real16 *r, const krm_real16 *x, const krm_real16 *n) {
    __float128 f;
    memcpy(&f, n, 16);
    int32_t k = static_cast<int32_t>(f);
    __Qpowi(r, x, &k);
}

const row rows[] = {
    {"sin", __Qsin, sinq, nullptr, nullptr, -3.2Q, 3.2Q, 0, 0},
    {"sin (large)", __Qsin, sinq, nullptr, nullptr, 1e3Q, 1e30Q, 0, 0},
    {"cos", __Qcos, cosq, nullptr, nullptr, -3.2Q, 3.2Q, 0, 0},
    {"tan", __Qtan, tanq, nullptr, nullptr, -1.5Q, 1.5Q, 0, 0},
    {"asin", __Qasin, asinq, nullptr, nullptr, -1, 1, 0, 0},
    {"acos", __Qacos, acosq, nullptr, nullptr, -1, 1, 0, 0},
    {"atan", __Qatan, atanq, nullptr, nullptr, -10, 10, 0, 0},
    {"atan2", nullptr, nullptr, __Qatan2, atan2q, -10, 10, -10, 10},
    {"exp", __Qexp, expq, nullptr, nullptr, -100, 100, 0, 0},
    {"log", __Qlog, logq, nullptr, nullptr, 1e-10Q, 1e10Q, 0, 0},
    {"log10", __Qlog10, log10q, nullptr, nullptr, 1e-10Q, 1e10Q, 0, 0},
    {"pow", nullptr, nullptr, __Qpow, powq, 0.01Q, 100, -20, 20},
    {"powi", nullptr, nullptr, powi_entry, powi_peer, 0.5Q, 2, -60, 60},
    {"sinh", __Qsinh, sinhq, nullptr, nullptr, -20, 20, 0, 0},
    {"cosh", __Qcosh, coshq, nullptr, nullptr, -20, 20, 0, 0},
    {"tanh", __Qtanh, tanhq, nullptr, nullptr, -5, 5, 0, 0},
    {"cbrt", __Qcbrt, cbrtq, nullptr, nullptr, -1e10Q, 1e10Q, 0, 0},
    {"fmod", nullptr, nullptr, __Qfmod, fmodq, -1e6Q, 1e6Q, 0.5Q, 10},
};

}  // namespace

int main(int argc, char **argv) {
    long n = argc > 1 ? atol(argv[1]) : 200000;
    printf("REAL(16) functions, ns per call (best of 5 timings of %ld calls)\n", n);
    printf("%-12s %10s %12s %8s %14s\n", "function", "libkrm", "libquadmath", "ratio", "max diff ulp");
    for (const row &r : rows) {
        for (int i = 0; i < size; ++i) {
            xs[i] = in_range(r.lo, r.hi);
            ys[i] = r.f1 ? 0 : in_range(r.ylo, r.yhi);
            if (r.f2 == powi_entry) ys[i] = static_cast<int>(ys[i]);
        }
        run_ours(r);
        run_theirs(r);
        double worst = 0;
        for (int i = 0; i < size; ++i) {
            double d = ulps(ours[i], theirs[i]);
            if (d > worst) worst = d;
        }
        double a = bench::best_ns(n, 5, [&] { run_ours(r); });
        double b = bench::best_ns(n, 5, [&] { run_theirs(r); });
        printf("%-12s %10.1f %12.1f %8.2f %14.2f\n", r.name, a, b, b / a, worst);
    }
    return 0;
}

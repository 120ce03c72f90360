// Shortest digits per value: __f_cvt_real against std::to_chars (shortest
// round-trip form) on the same values, in CPU time per value. Both produce
// digits only, no layout; to_chars also writes the exponent, which is its
// fair share of the work. The exact multi-precision method, which
// __f_cvt_real falls back on and which REAL(16) always takes, is timed too.
//
// Usage: cvt_real_bench [values per set]
//
// The sets: REAL(8) from random bit patterns (every binade alike), REAL(8)
// values as programs print them (random fractions times 1E-6 to 1E6),
// REAL(4) from random bit patterns.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <charconv>
#include <random>
#include <vector>

#include "krm/list_write.h"
#include "listio/shortest_digits.h"

namespace {

double cpu_seconds() {
    timespec ts;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// What list-directed output hands __f_cvt_real: the limbs of the significand
// with its hidden bit, and the exponent.
struct unpacked {
    uint16_t limbs[8];
    int bits, e;
};

unpacked unpack(double x) {
    uint64_t b;
    memcpy(&b, &x, sizeof b);
    uint64_t f = (b & ((uint64_t{1} << 52) - 1)) | (uint64_t{1} << 52);
    unpacked u = {};
    for (int i = 0; i < 4; ++i) u.limbs[i] = static_cast<uint16_t>(f >> (16 * i));
    u.bits = 53;
    u.e = static_cast<int>(b >> 52) - 1075;
    return u;
}

unpacked unpack(float x) {
    uint32_t b;
    memcpy(&b, &x, sizeof b);
    uint32_t f = (b & 0x7fffff) | 0x800000;
    unpacked u = {};
    u.limbs[0] = static_cast<uint16_t>(f);
    u.limbs[1] = static_cast<uint16_t>(f >> 16);
    u.bits = 24;
    u.e = static_cast<int>(b >> 23) - 150;
    return u;
}

template <typename T>
void run(const char *name, const std::vector<T> &values, int repeats) {
    std::vector<unpacked> u;
    u.reserve(values.size());
    for (T x : values) u.push_back(unpack(x));
    char digits[64];
    int nd, k;
    long sink = 0;

    double best_cvt = 1e30, best_tc = 1e30;
    for (int r = 0; r < repeats; ++r) {
        double t0 = cpu_seconds();
        for (const unpacked &v : u) {
            __f_cvt_real(v.limbs, v.bits, v.e, 0, digits, &nd, &k);
            sink += nd + k;
        }
        double t1 = cpu_seconds();
        for (T x : values) {
            char buf[64];
            auto res = std::to_chars(buf, buf + sizeof buf, x);
            sink += res.ptr - buf;
        }
        double t2 = cpu_seconds();
        if (t1 - t0 < best_cvt) best_cvt = t1 - t0;
        if (t2 - t1 < best_tc) best_tc = t2 - t1;
    }
    // The exact method on a share of the values: it is much slower.
    size_t n_exact = values.size() / 20 > 0 ? values.size() / 20 : 1;
    double t3 = cpu_seconds();
    for (size_t i = 0; i < n_exact; ++i) {
        krm::shortest::exact_digits(u[i].limbs, u[i].bits, u[i].e, 0, digits, &nd, &k);
        sink += nd;
    }
    double t4 = cpu_seconds();
    const double n = static_cast<double>(values.size());
    printf("%-34s %10.1f %10.1f %8.2f %12.0f\n", name, best_cvt / n * 1e9, best_tc / n * 1e9, best_cvt / best_tc,
           (t4 - t3) / static_cast<double>(n_exact) * 1e9);
    if (sink == 42) puts("");
}

}  // namespace

int main(int argc, char **argv) {
    const long n = argc > 1 ? strtol(argv[1], nullptr, 10) : 1000000;
    std::mt19937_64 rng(2024);

    std::vector<double> bits8, typical8;
    std::vector<float> bits4;
    while (static_cast<long>(bits8.size()) < n) {
        uint64_t b = rng() & 0x7fffffffffffffffull;
        if ((b >> 52) == 0 || (b >> 52) == 0x7ff) continue;
        double x;
        memcpy(&x, &b, sizeof x);
        bits8.push_back(x);
    }
    static const double p10[13] = {1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};
    for (long i = 0; i < n; ++i)
        typical8.push_back(static_cast<double>(rng() >> 11) * 0x1p-53 * p10[i % 13] + 1e-7);
    while (static_cast<long>(bits4.size()) < n) {
        uint32_t b = static_cast<uint32_t>(rng()) & 0x7fffffff;
        if ((b >> 23) == 0 || (b >> 23) == 0xff) continue;
        float x;
        memcpy(&x, &b, sizeof x);
        bits4.push_back(x);
    }

    printf("shortest digits, CPU ns per value (best of 5 runs over %ld values)\n", n);
    printf("%-34s %10s %10s %8s %12s\n", "values", "cvt_real", "to_chars", "ratio", "exact only");
    run("REAL(8), random bit patterns", bits8, 5);
    run("REAL(8), fractions x 1E-6..1E6", typical8, 5);
    run("REAL(4), random bit patterns", bits4, 5);

    // REAL(16): the exact method only, near 1 and over the whole range.
    for (int span : {64, 16000}) {
        std::vector<unpacked> q(static_cast<size_t>(span > 1000 ? 2000 : 100000));
        for (unpacked &u : q) {
            for (int i = 0; i < 7; ++i) u.limbs[i] = static_cast<uint16_t>(rng());
            u.limbs[7] = 1;
            u.bits = 113;
            u.e = static_cast<int>(rng() % static_cast<uint64_t>(2 * span + 1)) - span - 112;
        }
        char digits[64];
        int nd, k;
        long sink = 0;
        double t0 = cpu_seconds();
        for (const unpacked &u : q) {
            __f_cvt_real(u.limbs, u.bits, u.e, 0, digits, &nd, &k);
            sink += nd;
        }
        double t1 = cpu_seconds();
        printf("REAL(16), binary exponents within %-5d %9.0f ns per value (exact method)%s\n", span,
               (t1 - t0) / static_cast<double>(q.size()) * 1e9, sink == 42 ? " " : "");
    }
    return 0;
}

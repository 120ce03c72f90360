// Decimal conversion throughput: REAL(16) to 36 significant digits by
// x86_qeconvert against libquadmath's quadmath_snprintf("%.35Qe"), and
// REAL(8) to 17 and 18 digits by econvert against glibc's snprintf
// ("%.16e", "%.17e"), on the same values in the same run. The digits of
// each pair are compared first: both sides must give the same digits.
//
//   decimal_convert_bench [values] [repeats]
//
// Values come in two sets: "everyday" magnitudes (10**-30 to 10**30) and
// the whole exponent range. Each timing is the best of the repeats, in
// nanoseconds per conversion.
#include <quadmath.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <random>
#include <string>
#include <vector>

#include "krm/quad_decimal.h"
#include "platform/decimal_record.h"

namespace {

double now() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) + ts.tv_nsec * 1e-9;
}

volatile unsigned sink;

template <class F>
double best_ns(int repeats, size_t n, F &&run) {
    double best = 1e30;
    for (int r = 0; r < repeats; ++r) {
        double t0 = now();
        run();
        double t = (now() - t0) / static_cast<double>(n) * 1e9;
        if (t < best) best = t;
    }
    return best;
}

std::vector<__float128> quad_values(std::mt19937_64 &rng, size_t n, bool everyday) {
    std::vector<__float128> v;
    while (v.size() < n) {
        uint64_t lo = rng(), hi = rng();
        int e = everyday ? 16383 + static_cast<int>(rng() % 200) - 100 : static_cast<int>(rng() % 32767);
        hi = (hi & 0x8000FFFFFFFFFFFFull) | (static_cast<uint64_t>(e) << 48);
        __float128 x;
        memcpy(&x, &lo, 8);
        memcpy(reinterpret_cast<char *>(&x) + 8, &hi, 8);
        if (e == 0 || e == 32767) continue;
        v.push_back(x);
    }
    return v;
}

std::vector<double> double_values(std::mt19937_64 &rng, size_t n, bool everyday) {
    std::vector<double> v;
    while (v.size() < n) {
        uint64_t b = rng();
        int e = everyday ? 1023 + static_cast<int>(rng() % 200) - 100 : static_cast<int>(rng() % 2047);
        if (e == 0) continue;
        b = (b & 0x800FFFFFFFFFFFFFull) | (static_cast<uint64_t>(e) << 52);
        double x;
        memcpy(&x, &b, 8);
        v.push_back(x);
    }
    return v;
}

// The digits of a "%.*e" text, without sign, point and exponent.
std::string mantissa_digits(const char *text) {
    std::string d;
    for (const char *p = text; *p && *p != 'e'; ++p)
        if (*p >= '0' && *p <= '9') d.push_back(*p);
    return d;
}

int check_quad(const std::vector<__float128> &v) {
    int bad = 0;
    for (__float128 x : v) {
        char a[64], b[64];
        int dp, sign;
        x86_qeconvert(reinterpret_cast<const krm_real16 *>(&x), 36, &dp, &sign, a);
        quadmath_snprintf(b, sizeof b, "%.35Qe", x);
        if (mantissa_digits(b) != a) ++bad;
    }
    return bad;
}

int check_double(const std::vector<double> &v, int digits) {
    int bad = 0;
    for (double x : v) {
        char a[64], b[64];
        int dp, sign;
        econvert(x, digits, &dp, &sign, a);
        snprintf(b, sizeof b, "%.*e", digits - 1, x);
        if (mantissa_digits(b) != a) ++bad;
    }
    return bad;
}

}  // namespace

int main(int argc, char **argv) {
    size_t n = argc > 1 ? strtoul(argv[1], nullptr, 10) : 200000;
    int repeats = argc > 2 ? atoi(argv[2]) : 5;
    std::mt19937_64 rng(20240601);
    int status = 0;
    printf("%-36s %12s %12s %7s\n", "conversion", "libkrm ns", "peer ns", "ratio");
    for (int everyday = 1; everyday >= 0; --everyday) {
        const char *set = everyday ? "everyday" : "whole range";
        std::vector<__float128> qv = quad_values(rng, n, everyday);
        int bad = check_quad(qv);
        if (bad) {
            printf("REAL(16) %s: %d values differ from quadmath_snprintf\n", set, bad);
            status = 1;
        }
        double k = best_ns(repeats, qv.size(), [&] {
            char buf[64];
            int dp, sign;
            unsigned s = 0;
            for (const __float128 &x : qv) s += x86_qeconvert(reinterpret_cast<const krm_real16 *>(&x), 36, &dp, &sign, buf)[5];
            sink = s;
        });
        double p = best_ns(repeats, qv.size(), [&] {
            char buf[64];
            unsigned s = 0;
            for (__float128 x : qv) s += static_cast<unsigned>(quadmath_snprintf(buf, sizeof buf, "%.35Qe", x));
            sink = s;
        });
        printf("%-36s %12.1f %12.1f %7.2f\n", (std::string("REAL(16) 36 digits, ") + set).c_str(), k, p, p / k);

        std::vector<double> dv = double_values(rng, n, everyday);
        for (int digits : {17, 18}) {
            bad = check_double(dv, digits);
            if (bad) {
                printf("REAL(8) %s: %d values differ from snprintf at %d digits\n", set, bad, digits);
                status = 1;
            }
            k = best_ns(repeats, dv.size(), [&] {
                char buf[64];
                int dp, sign;
                unsigned s = 0;
                for (double x : dv) s += econvert(x, digits, &dp, &sign, buf)[5];
                sink = s;
            });
            p = best_ns(repeats, dv.size(), [&] {
                char buf[64];
                unsigned s = 0;
                for (double x : dv) s += static_cast<unsigned>(snprintf(buf, sizeof buf, "%.*e", digits - 1, x));
                sink = s;
            });
            char what[64];
            snprintf(what, sizeof what, "REAL(8) %d digits (%%.%de), %s", digits, digits - 1, set);
            printf("%-36s %12.1f %12.1f %7.2f\n", what, k, p, p / k);
        }
    }
    printf("ns per conversion, best of %d runs of %zu values; ratio = peer time / libkrm time,\n"
           "above 1 means libkrm is faster\n",
           repeats, n);
    return status;
}

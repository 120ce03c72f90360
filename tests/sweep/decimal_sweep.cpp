// A long sweep of the decimal conversions of all four binary formats against
// the exact references, both ways, in the four directions. Not a test of
// ctest: run it by hand after changing the engine.
//
//   decimal_sweep [cases per kind and kind of check] [seed]
//
// Two threads share the work, so conversions also run concurrently. Prints
// the count of checks and the first mismatches; exits 1 on any mismatch.
#include <stdio.h>
#include <stdlib.h>

#include <atomic>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/decimal_harness.h"

using namespace krm_test;

namespace {

std::mutex report_lock;
std::atomic<long> checks{0}, failures{0};

void report(const std::string &err) {
    if (err.empty()) return;
    long n = ++failures;
    std::lock_guard<std::mutex> g(report_lock);
    if (n <= 20) printf("MISMATCH %s\n", err.c_str());
}

int random_length(std::mt19937_64 &rng) {
    switch (rng() % 4) {
    case 0: return 1 + static_cast<int>(rng() % 9);
    case 1: return 10 + static_cast<int>(rng() % 30);
    case 2: return 40 + static_cast<int>(rng() % 80);
    default: return 120 + static_cast<int>(rng() % 392);
    }
}

void sweep(fp_kind k, long cases, uint64_t seed) {
    const format_info &f = kind_format(k);
    std::mt19937_64 rng(seed);
    const long low = static_cast<long>(f.min_exponent - f.precision) * 30103 / 100000 - 3;
    const long high = static_cast<long>(f.max_exponent) * 30103 / 100000 + 3;
    for (long i = 0; i < cases; ++i) {
        // digits to binary
        int n = random_length(rng);
        std::string d = random_digits(rng, n);
        long lead = i % 3 == 0 ? static_cast<long>(rng() % 80) - 40
                               : low + static_cast<long>(rng() % static_cast<uint64_t>(high - low + 1));
        bool more = n == 511 && rng() % 2;
        bool negative = rng() % 2;
        for (int rd = 0; rd < 4; ++rd) report(check_to_binary(k, d, lead - n + 1, negative, more, rd));
        // near a binary tie
        bits128 b = random_value(k, rng, i % 2 == 0);
        exact_expansion h = halfway_above(k, b);
        long len = static_cast<long>(h.digits.size());
        long cut = len <= 511 ? 1 + static_cast<long>(rng() % static_cast<uint64_t>(len)) : 1 + static_cast<long>(rng() % 511);
        std::string c = h.digits.substr(0, static_cast<size_t>(cut));
        for (int rd = 0; rd < 4; ++rd) {
            report(check_to_binary(k, c, h.exponent + len - cut, negative, cut == 511, rd));
            if (len <= 511) report(check_to_binary(k, h.digits, h.exponent, negative, false, rd));
        }
        // binary to digits
        for (int rd = 0; rd < 4; ++rd) {
            int nd = i % 5 == 0 ? random_length(rng) : 1 + static_cast<int>(rng() % 40);
            report(check_to_decimal(k, b, rd, true, nd));
            int places = i % 7 == 0 ? static_cast<int>(rng() % 5200) : static_cast<int>(rng() % 60) - 10;
            report(check_to_decimal(k, b, rd, false, places));
        }
        checks += 4 * (len <= 511 ? 5 : 4) + 8;
    }
}

}  // namespace

int main(int argc, char **argv) {
    long cases = argc > 1 ? atol(argv[1]) : 20000;
    uint64_t seed = argc > 2 ? strtoull(argv[2], nullptr, 0) : 20240601;
    const fp_kind kinds[] = {fp_kind::single, fp_kind::double_, fp_kind::extended, fp_kind::quad};
    for (fp_kind k : kinds) {
        long before = checks, failed_before = failures;
        std::vector<std::thread> workers;
        for (int t = 0; t < 2; ++t)
            workers.emplace_back(sweep, k, cases / 2, seed + 7919 * static_cast<uint64_t>(t) + static_cast<uint64_t>(k));
        for (auto &w : workers) w.join();
        printf("%-9s %9ld checks, %ld mismatches\n", kind_name(k), checks - before, failures - failed_before);
        fflush(stdout);
    }
    printf("total     %9ld checks, %ld mismatches\n", static_cast<long>(checks), static_cast<long>(failures));
    return failures ? 1 : 0;
}

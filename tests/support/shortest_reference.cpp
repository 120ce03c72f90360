#include "support/shortest_reference.h"

#include <stdlib.h>
#include <string.h>

#include <ostream>

#include "krm/list_write.h"

#if defined(KRM_TEST_GMP)
#include <gmp.h>
#endif

namespace krm_test {

namespace {

// Shifts a significand of fewer than `bits` bits up to exactly `bits`.
void normalise(binary_value &v) {
    if (v.f_lo == 0 && v.f_hi == 0) return;  // zero: not a value the rule takes
    auto top_set = [&] {
        return v.bits <= 64 ? (v.f_lo >> (v.bits - 1)) & 1 : (v.f_hi >> (v.bits - 65)) & 1;
    };
    while (!top_set()) {
        v.f_hi = (v.f_hi << 1) | (v.f_lo >> 63);
        v.f_lo <<= 1;
        --v.e;
    }
}

}  // namespace

binary_value of_real4(float x) {
    uint32_t b;
    memcpy(&b, &x, sizeof b);
    binary_value v;
    v.bits = 24;
    const int biased = b >> 23 & 0xff;
    v.f_lo = b & 0x7fffff;
    if (biased) {
        v.f_lo |= 0x800000;
        v.e = biased - 150;
    } else {
        v.e = 1 - 150;
        normalise(v);
    }
    return v;
}

binary_value of_real8(double x) {
    uint64_t b;
    memcpy(&b, &x, sizeof b);
    binary_value v;
    v.bits = 53;
    const int biased = static_cast<int>(b >> 52 & 0x7ff);
    v.f_lo = b & ((uint64_t{1} << 52) - 1);
    if (biased) {
        v.f_lo |= uint64_t{1} << 52;
        v.e = biased - 1075;
    } else {
        v.e = 1 - 1075;
        normalise(v);
    }
    return v;
}

binary_value of_real16(__float128 x) {
    uint64_t w[2];
    memcpy(w, &x, sizeof w);
    binary_value v;
    v.bits = 113;
    const int biased = static_cast<int>(w[1] >> 48 & 0x7fff);
    v.f_lo = w[0];
    v.f_hi = w[1] & ((uint64_t{1} << 48) - 1);
    if (biased) {
        v.f_hi |= uint64_t{1} << 48;
        v.e = biased - 16495;
    } else {
        v.e = 1 - 16495;
        normalise(v);
    }
    return v;
}

std::ostream &operator<<(std::ostream &os, const shortest_digits &d) {
    return os << '"' << d.digits << "\" k " << d.k;
}

shortest_digits library_digits(const binary_value &v, bool unequal_gap) {
    uint16_t limbs[8];
    for (int i = 0; i < 4; ++i) {
        limbs[i] = static_cast<uint16_t>(v.f_lo >> (16 * i));
        limbs[4 + i] = static_cast<uint16_t>(v.f_hi >> (16 * i));
    }
    char digits[64];
    memset(digits, '#', sizeof digits);
    int n = -1, k = 0;
    __f_cvt_real(limbs, v.bits, v.e, unequal_gap ? 1 : 0, digits, &n, &k);
    shortest_digits d;
    if (n >= 0 && n <= 40) d.digits.assign(digits, static_cast<size_t>(n));
    else d.digits = "<bad count " + std::to_string(n) + ">";
    d.k = k;
    return d;
}

std::string as_number(const shortest_digits &d) { return d.digits + "e" + std::to_string(d.k); }

#if defined(KRM_TEST_GMP)

namespace {

// RAII for the handful of numbers of one evaluation.
struct z {
    mpz_t v;
    z() { mpz_init(v); }
    ~z() { mpz_clear(v); }
    z(const z &) = delete;
    z &operator=(const z &) = delete;
    operator mpz_ptr() { return v; }
};

void set_u64(mpz_t r, uint64_t x) {
    mpz_set_ui(r, static_cast<unsigned long>(x >> 32));
    mpz_mul_2exp(r, r, 32);
    mpz_add_ui(r, r, static_cast<unsigned long>(x & 0xffffffffu));
}

// The interval and the value as N * 2**s: N = 4f -+ 2 (or 4f - 1 for the
// narrow lower side) and 4f, s = e - 2.
struct problem {
    z low, value, high;
    int s;
};

// The multiples c of 10**j with low < c * 10**j < high, as cmin..cmax, and
// the c nearest the value, halves up.
void multiples(problem &p, int j, mpz_t cmin, mpz_t cmax, mpz_t nearest) {
    // c * 10**j against N * 2**s, both sides made whole: c * X against N * Y.
    z x, y, t, two_x;
    mpz_ui_pow_ui(x, 10, static_cast<unsigned long>(j > 0 ? j : 0));
    mpz_mul_2exp(x, x, static_cast<unsigned long>(p.s < 0 ? -p.s : 0));
    mpz_ui_pow_ui(y, 10, static_cast<unsigned long>(j < 0 ? -j : 0));
    mpz_mul_2exp(y, y, static_cast<unsigned long>(p.s > 0 ? p.s : 0));
    mpz_mul(t, p.low, y);
    mpz_fdiv_q(cmin, t, x);
    mpz_add_ui(cmin, cmin, 1);
    mpz_mul(t, p.high, y);
    mpz_cdiv_q(cmax, t, x);
    mpz_sub_ui(cmax, cmax, 1);
    if (nearest) {
        mpz_mul(t, p.value, y);
        mpz_mul_2exp(t, t, 1);
        mpz_add(t, t, x);
        mpz_mul_2exp(two_x, x, 1);
        mpz_fdiv_q(nearest, t, two_x);
    }
}

bool has_multiple(problem &p, int j) {
    z cmin, cmax;
    multiples(p, j, cmin, cmax, nullptr);
    return mpz_cmp(cmin, cmax) <= 0;
}

}  // namespace

shortest_digits reference_digits(const binary_value &v, bool unequal_gap) {
    problem p;
    z f, t;
    set_u64(f, v.f_hi);
    mpz_mul_2exp(f, f, 64);
    set_u64(t, v.f_lo);
    mpz_add(f, f, t);
    mpz_mul_2exp(p.value, f, 2);
    mpz_add_ui(p.high, p.value, 2);
    mpz_sub_ui(p.low, p.value, unequal_gap ? 1 : 2);
    p.s = v.e - 2;

    // Any start will do: step down to a power that has a multiple inside,
    // then up while the next one has too.
    int j = static_cast<int>(v.e * 0.30103) - 2;
    while (!has_multiple(p, j)) --j;
    while (has_multiple(p, j + 1)) ++j;

    z cmin, cmax, c;
    multiples(p, j, cmin, cmax, c);
    if (mpz_cmp(c, cmin) < 0) mpz_set(c, cmin);
    if (mpz_cmp(c, cmax) > 0) mpz_set(c, cmax);
    char *s = mpz_get_str(nullptr, 10, c);
    shortest_digits d;
    d.digits = s;
    d.k = j;
    void (*free_fn)(void *, size_t);
    mp_get_memory_functions(nullptr, nullptr, &free_fn);
    free_fn(s, strlen(s) + 1);
    return d;
}

#endif

long scaled_count(long optimised_count) {
    // KRM_TEST_SAMPLE_FACTOR multiplies the counts for a long run by hand.
    long factor = 1;
    if (const char *f = getenv("KRM_TEST_SAMPLE_FACTOR")) factor = atol(f) > 0 ? atol(f) : 1;
#if defined(__SANITIZE_ADDRESS__) || !defined(__OPTIMIZE__)
    optimised_count /= 20;
#endif
    return optimised_count * factor > 0 ? optimised_count * factor : 1;
}

}  // namespace krm_test

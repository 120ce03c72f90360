#include "support/decimal_harness.h"

#include <stdio.h>
#include <string.h>

#include <sstream>

#include "krm/quad_decimal.h"

namespace krm_test {

const char *kind_name(fp_kind k) {
    switch (k) {
    case fp_kind::single: return "REAL4";
    case fp_kind::double_: return "REAL8";
    case fp_kind::extended: return "EXTENDED";
    default: return "REAL16";
    }
}

std::string kind_test_name(const ::testing::TestParamInfo<fp_kind> &p) { return kind_name(p.param); }

const format_info &kind_format(fp_kind k) {
    switch (k) {
    case fp_kind::single: return single_info;
    case fp_kind::double_: return double_info;
    case fp_kind::extended: return extended_info;
    default: return quad_info;
    }
}

int library_to_binary(fp_kind k, const decimal_record &rec, int rd, bits128 &out) {
    decimal_mode mode = {rd, 1, 0};
    int flags = -1;
    out = {0, 0, 0, 0};
    switch (k) {
    case fp_kind::single: {
        float f = 0;
        decimal_to_single(&f, &mode, &rec, &flags);
        memcpy(&out[0], &f, 4);
        break;
    }
    case fp_kind::double_: {
        double d = 0;
        decimal_to_double(&d, &mode, &rec, &flags);
        memcpy(&out[0], &d, 8);
        break;
    }
    case fp_kind::extended: {
        long double x = 0;
        decimal_to_extended(&x, &mode, &rec, &flags);
        memcpy(&out[0], &x, 10);
        out[2] &= 0xFFFF;
        break;
    }
    case fp_kind::quad: {
        krm_real16 q = {{0, 0, 0, 0}};
        x86_decimal_to_quadruple(&q, &mode, &rec, &flags);
        for (int i = 0; i < 4; ++i) out[i] = q.word[i];
        break;
    }
    }
    return flags;
}

int library_to_decimal(fp_kind k, const bits128 &bits, const decimal_mode &mode, decimal_record &rec) {
    int flags = -1;
    switch (k) {
    case fp_kind::single: {
        float f;
        memcpy(&f, &bits[0], 4);
        single_to_decimal(&f, &mode, &rec, &flags);
        break;
    }
    case fp_kind::double_: {
        double d;
        memcpy(&d, &bits[0], 8);
        double_to_decimal(&d, &mode, &rec, &flags);
        break;
    }
    case fp_kind::extended: {
        long double x = 0;
        memcpy(&x, &bits[0], 10);
        extended_to_decimal(&x, &mode, &rec, &flags);
        break;
    }
    case fp_kind::quad: {
        krm_real16 q;
        for (int i = 0; i < 4; ++i) q.word[i] = bits[i];
        x86_quadruple_to_decimal(&q, &mode, &rec, &flags);
        break;
    }
    }
    return flags;
}

bits128 reference_bits(fp_kind k, const binary_result &r) {
    bits128 b = {0, 0, 0, 0};
    const format_info &f = kind_format(k);
    uint32_t sign = r.negative ? 1 : 0;
    switch (k) {
    case fp_kind::single:
        b[0] = (sign << 31) | (static_cast<uint32_t>(r.biased) << 23) |
               (static_cast<uint32_t>(r.significand.low64()) & 0x7FFFFF);
        break;
    case fp_kind::double_: {
        uint64_t v = (static_cast<uint64_t>(sign) << 63) | (static_cast<uint64_t>(r.biased) << 52) |
                     (r.significand.low64() & 0xFFFFFFFFFFFFFull);
        b[0] = static_cast<uint32_t>(v);
        b[1] = static_cast<uint32_t>(v >> 32);
        break;
    }
    case fp_kind::extended: {
        uint64_t s = r.significand.low64();
        if (r.biased == 2L * f.max_exponent + 1) s |= 1ull << 63;
        b[0] = static_cast<uint32_t>(s);
        b[1] = static_cast<uint32_t>(s >> 32);
        b[2] = (sign << 15) | static_cast<uint32_t>(r.biased);
        break;
    }
    case fp_kind::quad: {
        big_uint s = r.significand;
        b[0] = static_cast<uint32_t>(s.low64());
        b[1] = static_cast<uint32_t>(s.low64() >> 32);
        big_uint hi = s >> 64;
        b[2] = static_cast<uint32_t>(hi.low64());
        b[3] = (sign << 31) | (static_cast<uint32_t>(r.biased) << 16) |
               (static_cast<uint32_t>(hi.low64() >> 32) & 0xFFFF);
        break;
    }
    }
    return b;
}

namespace {

// sign, biased exponent, significand with the leading bit where it belongs
void fields(fp_kind k, const bits128 &b, bool &negative, long &biased, big_uint &sig) {
    switch (k) {
    case fp_kind::single:
        negative = b[0] >> 31;
        biased = (b[0] >> 23) & 0xFF;
        sig = big_uint(b[0] & 0x7FFFFF);
        if (biased && biased != 0xFF) sig = sig + big_uint(1u << 23);
        break;
    case fp_kind::double_: {
        uint64_t v = (static_cast<uint64_t>(b[1]) << 32) | b[0];
        negative = v >> 63;
        biased = static_cast<long>((v >> 52) & 0x7FF);
        sig = big_uint(v & 0xFFFFFFFFFFFFFull);
        if (biased && biased != 0x7FF) sig = sig + (big_uint(1) << 52);
        break;
    }
    case fp_kind::extended:
        negative = (b[2] >> 15) & 1;
        biased = b[2] & 0x7FFF;
        sig = big_uint((static_cast<uint64_t>(b[1]) << 32) | b[0]);
        break;
    case fp_kind::quad: {
        negative = b[3] >> 31;
        biased = (b[3] >> 16) & 0x7FFF;
        big_uint hi((static_cast<uint64_t>(b[3] & 0xFFFF) << 32) | b[2]);
        sig = (hi << 64) + big_uint((static_cast<uint64_t>(b[1]) << 32) | b[0]);
        if (biased && biased != 0x7FFF) sig = sig + (big_uint(1) << 112);
        break;
    }
    }
}

}  // namespace

binary_number decode(fp_kind k, const bits128 &bits) {
    const format_info &f = kind_format(k);
    binary_number x;
    long biased;
    fields(k, bits, x.negative, biased, x.m);
    x.e = (biased == 0 ? f.min_exponent : biased - f.max_exponent) - (f.precision - 1);
    return x;
}

bool is_finite_nonzero(fp_kind k, const bits128 &bits) {
    bool negative;
    long biased;
    big_uint sig;
    fields(k, bits, negative, biased, sig);
    return biased != 2L * kind_format(k).max_exponent + 1 && !sig.is_zero();
}

std::string bits_text(fp_kind k, const bits128 &b) {
    char text[64];
    switch (k) {
    case fp_kind::single: snprintf(text, sizeof text, "%08x", b[0]); break;
    case fp_kind::double_: snprintf(text, sizeof text, "%08x%08x", b[1], b[0]); break;
    case fp_kind::extended: snprintf(text, sizeof text, "%04x:%08x%08x", b[2], b[1], b[0]); break;
    case fp_kind::quad: snprintf(text, sizeof text, "%08x%08x%08x%08x", b[3], b[2], b[1], b[0]); break;
    }
    return text;
}

decimal_record make_record(const std::string &digits, long exponent, bool negative, bool more) {
    decimal_record rec;
    memset(&rec, 0, sizeof rec);
    rec.fpclass = DECIMAL_NORMAL;
    rec.sign = negative;
    rec.exponent = static_cast<int>(exponent);
    size_t n = digits.size() < 511 ? digits.size() : 511;
    memcpy(rec.ds, digits.data(), n);
    rec.ds[n] = '\0';
    rec.ndigits = static_cast<int>(n);
    rec.more = more;
    return rec;
}

bits128 random_value(fp_kind k, std::mt19937_64 &rng, bool moderate) {
    const format_info &f = kind_format(k);
    for (;;) {
        bits128 b = {static_cast<uint32_t>(rng()), static_cast<uint32_t>(rng()), static_cast<uint32_t>(rng()),
                     static_cast<uint32_t>(rng())};
        long biased;
        switch (k) {
        case fp_kind::single: biased = (b[0] >> 23) & 0xFF; break;
        case fp_kind::double_: biased = (b[1] >> 20) & 0x7FF; break;
        case fp_kind::extended: biased = b[2] & 0x7FFF; break;
        default: biased = (b[3] >> 16) & 0x7FFF; break;
        }
        if (moderate) {
            long e = static_cast<long>(rng() % 400) - 200;
            biased = e + f.max_exponent;
        } else if (rng() % 8 == 0) {
            biased = 0;  // subnormals get their share
        }
        switch (k) {
        case fp_kind::single: b[0] = (b[0] & 0x807FFFFF) | (static_cast<uint32_t>(biased) << 23); break;
        case fp_kind::double_: b[1] = (b[1] & 0x800FFFFF) | (static_cast<uint32_t>(biased) << 20); break;
        case fp_kind::extended:
            b[2] = (b[2] & 0x8000) | static_cast<uint32_t>(biased);
            // the explicit leading bit is set exactly for normal values
            b[1] = biased ? (b[1] | 0x80000000u) : (b[1] & 0x7FFFFFFFu);
            break;
        case fp_kind::quad: b[3] = (b[3] & 0x8000FFFF) | (static_cast<uint32_t>(biased) << 16); break;
        }
        if (is_finite_nonzero(k, b)) return b;
    }
}

std::string random_digits(std::mt19937_64 &rng, int n) {
    std::string s;
    for (int i = 0; i < n; ++i) s.push_back(static_cast<char>('0' + rng() % 10));
    if (n > 0 && s[0] == '0') s[0] = static_cast<char>('1' + rng() % 9);
    return s;
}

exact_expansion halfway_above(fp_kind k, const bits128 &bits) {
    binary_number x = decode(k, bits);
    x.m = (x.m << 1) + big_uint(1);
    x.e -= 1;
    return expand(x);
}

std::string check_to_binary(fp_kind k, const std::string &digits, long exponent, bool negative, bool more, int rd) {
    decimal_record rec = make_record(digits, exponent, negative, more);
    bits128 got;
    int flags = library_to_binary(k, rec, rd, got);
    binary_result want = round_to_binary(digits, exponent, more, negative, rd, kind_format(k));
    bits128 want_bits = reference_bits(k, want);
    if (got == want_bits && flags == want.flags) return "";
    std::ostringstream o;
    o << kind_name(k) << " digits " << (digits.size() > 60 ? digits.substr(0, 60) + "..." : digits) << " ("
      << digits.size() << " digits) e" << exponent << (negative ? " negative" : "") << (more ? " more" : "")
      << " rd " << rd << ": got " << bits_text(k, got) << " flags " << flags << ", want "
      << bits_text(k, want_bits) << " flags " << want.flags;
    return o.str();
}

std::string check_to_decimal(fp_kind k, const bits128 &bits, int rd, bool floating, int ndigits) {
    decimal_mode mode = {rd, floating ? 1 : 0, ndigits};
    decimal_record rec;
    memset(&rec, 0x55, sizeof rec);
    int flags = library_to_decimal(k, bits, mode, rec);
    binary_number x = decode(k, bits);
    // The same value is usually checked in several ways in a row; its
    // expansion (thousands of digits at the ends of the range) is kept.
    thread_local fp_kind last_kind;
    thread_local bits128 last_bits = {0, 0, 0, 0};
    thread_local exact_expansion last;
    if (last.digits.empty() || last_kind != k || last_bits != bits) {
        last = expand(x);
        last_kind = k;
        last_bits = bits;
    }
    decimal_result want = round_to_decimal(last, x.negative, rd, floating, ndigits);
    std::string got_ds(rec.ds, strnlen(rec.ds, sizeof rec.ds));
    bool ok = got_ds == want.ds && rec.ndigits == static_cast<int>(want.ds.size()) && rec.exponent == want.exponent &&
              flags == want.flags && rec.sign == (x.negative ? 1 : 0) &&
              rec.fpclass == (x.m.bit_length() < kind_format(k).precision ? DECIMAL_SUBNORMAL : DECIMAL_NORMAL);
    if (ok) return "";
    std::ostringstream o;
    o << kind_name(k) << " " << bits_text(k, bits) << (floating ? " floating " : " fixed ") << ndigits << " rd "
      << rd << ": got " << got_ds << " e" << rec.exponent << " n" << rec.ndigits << " flags " << flags
      << " class " << rec.fpclass << ", want " << want.ds << " e" << want.exponent << " flags " << want.flags;
    return o.str();
}

}  // namespace krm_test

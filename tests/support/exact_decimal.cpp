#include "support/exact_decimal.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <stdexcept>

namespace krm_test {

const format_info single_info = {24, 127, -126, false};
const format_info double_info = {53, 1023, -1022, false};
const format_info extended_info = {64, 16383, -16382, true};
const format_info quad_info = {113, 16383, -16382, false};

big_uint::big_uint(uint64_t v) {
    if (v) w_.push_back(static_cast<uint32_t>(v));
    if (v >> 32) w_.push_back(static_cast<uint32_t>(v >> 32));
}

void big_uint::trim() {
    while (!w_.empty() && w_.back() == 0) w_.pop_back();
}

big_uint big_uint::from_decimal(const std::string &digits) {
    big_uint r;
    for (char c : digits) {
        uint64_t carry = static_cast<uint64_t>(c - '0');
        for (auto &x : r.w_) {
            uint64_t t = static_cast<uint64_t>(x) * 10 + carry;
            x = static_cast<uint32_t>(t);
            carry = t >> 32;
        }
        if (carry) r.w_.push_back(static_cast<uint32_t>(carry));
    }
    r.trim();
    return r;
}

big_uint big_uint::power(uint32_t base, unsigned n) {
    static std::mutex lock;
    static std::map<std::pair<uint32_t, unsigned>, big_uint> known;
    {
        std::lock_guard<std::mutex> g(lock);
        auto it = known.find({base, n});
        if (it != known.end()) return it->second;
    }
    big_uint r(1), b(base);
    for (unsigned k = n; k; k >>= 1) {
        if (k & 1) r = r * b;
        if (k > 1) b = b * b;
    }
    std::lock_guard<std::mutex> g(lock);
    known[{base, n}] = r;
    return r;
}

long big_uint::bit_length() const {
    if (w_.empty()) return 0;
    return 32 * static_cast<long>(w_.size() - 1) + (32 - __builtin_clz(w_.back()));
}

bool big_uint::bit(long i) const {
    if (i < 0 || i / 32 >= static_cast<long>(w_.size())) return false;
    return (w_[i / 32] >> (i % 32)) & 1;
}

uint64_t big_uint::low64() const {
    uint64_t v = w_.empty() ? 0 : w_[0];
    if (w_.size() > 1) v |= static_cast<uint64_t>(w_[1]) << 32;
    return v;
}

big_uint big_uint::operator*(const big_uint &b) const {
    big_uint r;
    if (is_zero() || b.is_zero()) return r;
    r.w_.assign(w_.size() + b.w_.size(), 0);
    for (size_t i = 0; i < w_.size(); ++i) {
        uint64_t carry = 0;
        for (size_t j = 0; j < b.w_.size(); ++j) {
            uint64_t t = static_cast<uint64_t>(w_[i]) * b.w_[j] + r.w_[i + j] + carry;
            r.w_[i + j] = static_cast<uint32_t>(t);
            carry = t >> 32;
        }
        r.w_[i + b.w_.size()] = static_cast<uint32_t>(carry);
    }
    r.trim();
    return r;
}

big_uint big_uint::operator+(const big_uint &b) const {
    big_uint r;
    size_t n = std::max(w_.size(), b.w_.size());
    r.w_.assign(n + 1, 0);
    uint64_t carry = 0;
    for (size_t i = 0; i < n; ++i) {
        uint64_t t = carry + (i < w_.size() ? w_[i] : 0) + (i < b.w_.size() ? b.w_[i] : 0);
        r.w_[i] = static_cast<uint32_t>(t);
        carry = t >> 32;
    }
    r.w_[n] = static_cast<uint32_t>(carry);
    r.trim();
    return r;
}

big_uint big_uint::operator-(const big_uint &b) const {
    if (compare(b) < 0) throw std::logic_error("big_uint: negative difference");
    big_uint r = *this;
    int64_t borrow = 0;
    for (size_t i = 0; i < r.w_.size(); ++i) {
        int64_t t = static_cast<int64_t>(r.w_[i]) - (i < b.w_.size() ? b.w_[i] : 0) - borrow;
        borrow = t < 0;
        r.w_[i] = static_cast<uint32_t>(t + (borrow << 32));
    }
    r.trim();
    return r;
}

big_uint big_uint::operator<<(long n) const {
    if (is_zero() || n == 0) return *this;
    if (n < 0) return *this >> -n;
    big_uint r;
    long words = n / 32, bits = n % 32;
    r.w_.assign(w_.size() + words + 1, 0);
    for (size_t i = 0; i < w_.size(); ++i) {
        uint64_t t = static_cast<uint64_t>(w_[i]) << bits;
        r.w_[i + words] |= static_cast<uint32_t>(t);
        r.w_[i + words + 1] |= static_cast<uint32_t>(t >> 32);
    }
    r.trim();
    return r;
}

big_uint big_uint::operator>>(long n) const {
    if (n == 0) return *this;
    if (n < 0) return *this << -n;
    long words = n / 32, bits = n % 32;
    big_uint r;
    if (words >= static_cast<long>(w_.size())) return r;
    r.w_.assign(w_.size() - words, 0);
    for (size_t i = 0; i < r.w_.size(); ++i) {
        uint64_t lo = w_[i + words];
        uint64_t hi = i + words + 1 < w_.size() ? w_[i + words + 1] : 0;
        r.w_[i] = static_cast<uint32_t>(((hi << 32) | lo) >> bits);
    }
    r.trim();
    return r;
}

int big_uint::compare(const big_uint &b) const {
    if (w_.size() != b.w_.size()) return w_.size() < b.w_.size() ? -1 : 1;
    for (size_t i = w_.size(); i-- > 0;)
        if (w_[i] != b.w_[i]) return w_[i] < b.w_[i] ? -1 : 1;
    return 0;
}

namespace {

// r >= b * 2**shift, on the words
bool at_least_shifted(const std::vector<uint32_t> &r, const std::vector<uint32_t> &b, long shift) {
    long words = shift / 32, bits = shift % 32;
    long top = static_cast<long>(b.size()) + words + 1;  // words of b * 2**shift, at most
    for (long i = std::max(top, static_cast<long>(r.size())); i-- > 0;) {
        uint64_t bi = 0;
        long j = i - words;
        if (j >= 0 && j < static_cast<long>(b.size())) bi |= static_cast<uint64_t>(b[j]) << bits;
        if (bits && j - 1 >= 0 && j - 1 < static_cast<long>(b.size())) bi |= b[j - 1] >> (32 - bits);
        uint32_t shifted = static_cast<uint32_t>(bi);
        uint32_t ri = i < static_cast<long>(r.size()) ? r[i] : 0;
        if (ri != shifted) return ri > shifted;
    }
    return true;
}

// r -= b * 2**shift, on the words; r >= b * 2**shift
void subtract_shifted(std::vector<uint32_t> &r, const std::vector<uint32_t> &b, long shift) {
    long words = shift / 32, bits = shift % 32;
    int64_t borrow = 0;
    for (long i = words; i < static_cast<long>(r.size()); ++i) {
        long j = i - words;
        uint64_t bi = 0;
        if (j < static_cast<long>(b.size())) bi |= static_cast<uint64_t>(b[j]) << bits;
        if (bits && j - 1 >= 0 && j - 1 < static_cast<long>(b.size())) bi |= b[j - 1] >> (32 - bits);
        int64_t t = static_cast<int64_t>(r[i]) - static_cast<int64_t>(static_cast<uint32_t>(bi)) - borrow;
        borrow = t < 0;
        r[i] = static_cast<uint32_t>(t + (borrow << 32));
        if (j >= static_cast<long>(b.size()) && !borrow) break;
    }
    while (!r.empty() && r.back() == 0) r.pop_back();
}

}  // namespace

void big_uint::divide(const big_uint &a, const big_uint &b, big_uint &q, big_uint &r) {
    if (b.is_zero()) throw std::logic_error("big_uint: division by zero");
    r = a;
    long top = a.bit_length() - b.bit_length();
    q = big_uint();
    if (top < 0) return;
    q.w_.assign(static_cast<size_t>(top / 32 + 1), 0);
    for (long i = top; i >= 0; --i) {
        if (at_least_shifted(r.w_, b.w_, i)) {
            subtract_shifted(r.w_, b.w_, i);
            q.w_[i / 32] |= 1u << (i % 32);
        }
    }
    q.trim();
}

std::string big_uint::to_decimal() const {
    if (is_zero()) return "0";
    std::vector<uint32_t> n = w_;
    std::string out;
    while (!n.empty()) {
        uint64_t rem = 0;
        for (size_t i = n.size(); i-- > 0;) {
            uint64_t t = (rem << 32) | n[i];
            n[i] = static_cast<uint32_t>(t / 1000000000u);
            rem = t % 1000000000u;
        }
        while (!n.empty() && n.back() == 0) n.pop_back();
        for (int k = 0; k < 9; ++k) {
            out.push_back(static_cast<char>('0' + rem % 10));
            rem /= 10;
        }
    }
    while (out.size() > 1 && out.back() == '0') out.pop_back();
    return std::string(out.rbegin(), out.rend());
}

exact_expansion expand(const binary_number &x) {
    exact_expansion r;
    if (x.e >= 0) {
        r.digits = (x.m << x.e).to_decimal();
        r.exponent = 0;
    } else {
        // M * 2**e = M * 5**-e / 10**-e
        r.digits = (x.m * big_uint::power(5, static_cast<unsigned>(-x.e))).to_decimal();
        r.exponent = x.e;
    }
    while (r.digits.size() > 1 && r.digits.back() == '0') {
        r.digits.pop_back();
        ++r.exponent;
    }
    return r;
}

namespace {

// Adds one to the last digit of s, carrying; returns false when all were nines
// (s is then all zeros).
bool increment(std::string &s) {
    for (size_t i = s.size(); i-- > 0;) {
        if (s[i] != '9') {
            ++s[i];
            return true;
        }
        s[i] = '0';
    }
    return false;
}

}  // namespace

decimal_result round_to_decimal(const exact_expansion &x, bool negative, int rd, bool floating, int ndigits) {
    const long L = static_cast<long>(x.digits.size());
    const long lead = x.exponent + L - 1;  // place of the leading digit
    long P;                                // place of the last kept digit
    if (floating) {
        P = lead - ndigits + 1;
    } else {
        P = ndigits > 0 ? -ndigits : 0;  // no places behind the point: rounded to units
        if (lead - P + 1 > 511) P = lead - 510;
    }
    // digit at place k
    auto digit_at = [&](long k) -> char {
        long i = lead - k;
        return i >= 0 && i < L ? x.digits[static_cast<size_t>(i)] : '0';
    };
    decimal_result r;
    for (long k = lead; k >= P; --k) r.ds.push_back(digit_at(k));
    bool rest_nonzero = false;
    char next = digit_at(P - 1);
    for (long k = P - 2; k >= x.exponent && !rest_nonzero; --k) rest_nonzero = digit_at(k) != '0';
    r.exponent = static_cast<int>(P);
    if (next == '0' && !rest_nonzero) {
        if (r.ds.empty()) r.ds = "0";
        return r;
    }
    r.flags = 32;
    bool up;
    switch (rd) {
    case 1: up = negative; break;
    case 2: up = !negative; break;
    case 3: up = false; break;
    default:
        up = next > '5' || (next == '5' && (rest_nonzero || (!r.ds.empty() && (r.ds.back() - '0') % 2 == 1)));
        break;
    }
    if (up && !increment(r.ds)) {
        if (floating || r.ds.size() + 1 > 511) {
            r.ds = "1" + r.ds.substr(r.ds.empty() ? 0 : 1);
            ++r.exponent;
        } else {
            r.ds = "1" + r.ds;
        }
    }
    return r;
}

binary_result round_to_binary(const std::string &digits, long exponent, bool more, bool negative, int rd,
                              const format_info &f) {
    const int p = f.precision;
    const long lsb_min = f.min_exponent - (p - 1);  // exponent of the least subnormal
    binary_result r;
    r.negative = negative;
    big_uint d = big_uint::from_decimal(digits);
    if (d.is_zero()) return r;  // zero, whatever `more` says
    // value = num / den
    big_uint num = d, den(1);
    if (exponent >= 0)
        num = d * (big_uint::power(5, static_cast<unsigned>(exponent)) << exponent);
    else
        den = big_uint::power(5, static_cast<unsigned>(-exponent)) << -exponent;
    // q = floor(value / 2**e), 2**(p-1) <= q < 2**p unless e is the least one
    long e = num.bit_length() - den.bit_length() - p;
    if (e < lsb_min) e = lsb_min;
    big_uint q, rem, divisor;
    auto divide_at = [&](long ee) {
        big_uint n = ee < 0 ? num << -ee : num;
        divisor = ee > 0 ? den << ee : den;
        big_uint::divide(n, divisor, q, rem);
    };
    for (;;) {
        divide_at(e);
        if (q.bit_length() > p) {
            ++e;
            continue;
        }
        if (q.bit_length() < p && e > lsb_min) {
            --e;
            continue;
        }
        break;
    }
    bool tiny = q.bit_length() < p;
    bool inexact = !rem.is_zero() || more;
    int half = (rem << 1).compare(divisor);  // rem against half the divisor
    bool up = false;
    if (inexact) {
        switch (rd) {
        case 1: up = negative; break;
        case 2: up = !negative; break;
        case 3: up = false; break;
        default: up = half > 0 || (half == 0 && (more || q.bit(0))); break;
        }
    }
    if (up) q = q + big_uint(1);
    if (q.bit_length() > p) {
        q = q >> 1;
        ++e;
    }
    r.flags = inexact ? 32 : 0;
    if (tiny && inexact) r.flags |= 16;
    long top = e + p - 1;  // exponent of the leading bit place
    if (top > f.max_exponent) {
        r.flags = 8 | 32;
        bool infinite = rd == 0 || (rd == 1 && negative) || (rd == 2 && !negative);
        r.biased = 2L * f.max_exponent + 1;
        r.significand = infinite ? big_uint() : (big_uint(1) << p) - big_uint(1);
        if (!infinite) r.biased -= 1;
        return r;
    }
    r.significand = q;
    r.biased = q.bit_length() < p ? 0 : top + f.max_exponent;
    return r;
}

binary_number value_of(const binary_result &r, const format_info &f) {
    binary_number x;
    x.negative = r.negative;
    x.m = r.significand;
    x.e = (r.biased == 0 ? f.min_exponent : r.biased - f.max_exponent) - (f.precision - 1);
    return x;
}

}  // namespace krm_test

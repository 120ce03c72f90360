#include "listio/real_layout.h"

#include <string.h>

#include "krm/list_write.h"
#include "krm/quad_decimal.h"
#include "platform/decimal_record.h"
#include "listio/shortest_digits.h"

namespace krm::real_layout {

namespace {

char *put(char *p, const char *s) {
    size_t n = strlen(s);
    memcpy(p, s, n);
    return p + n;
}

// "%+d" without the formatting library.
char *put_exponent(char *p, int x) {
    *p++ = x < 0 ? '-' : '+';
    unsigned u = x < 0 ? 0u - static_cast<unsigned>(x) : static_cast<unsigned>(x);
    char buf[12];
    int n = 0;
    do {
        buf[n++] = static_cast<char>('0' + u % 10);
        u /= 10;
    } while (u);
    while (n) *p++ = buf[--n];
    return p;
}

// The negative zero's sign is not written.
int zero_text(char *out, char point) {
    char *p = out;
    *p++ = '0';
    *p++ = point;
    p = put(p, "0E+0");
    return static_cast<int>(p - out);
}

int special_text(char *out, bool negative, bool infinity) {
    char *p = out;
    if (negative) *p++ = '-';
    p = put(p, infinity ? "Inf" : "NaN");
    return static_cast<int>(p - out);
}

// Shifts a significand with its leading one somewhere below bit `bits` - 1
// up to that bit, lowering the exponent in step.
void normalise(uint64_t &f, int bits, int &e) {
    while (!(f >> (bits - 1))) {
        f <<= 1;
        --e;
    }
}

int shortest_text(char *out, bool negative, uint64_t f, int bits, int e, char point, bool subnormal) {
    char digits[shortest::max_digits];
    int n, k;
    shortest::digits_of(f, bits, e, digits, &n, &k);
    return digits_text(out, negative, digits, n, k, point, subnormal);
}

}  // namespace

int digits_text(char *out, bool negative, const char *digits, int n, int k, char point, bool e_form) {
    char *p = out;
    if (negative) *p++ = '-';
    const int pos = n + k;  // where the symbol stands, counted from the first digit
    if (e_form || pos < -1 || pos > 9) {
        *p++ = digits[0];
        *p++ = point;
        if (n > 1) {
            memcpy(p, digits + 1, static_cast<size_t>(n - 1));
            p += n - 1;
        } else {
            *p++ = '0';
        }
        *p++ = 'E';
        p = put_exponent(p, pos - 1);
    } else if (pos <= 0) {
        *p++ = '0';
        *p++ = point;
        for (int i = 0; i < -pos; ++i) *p++ = '0';
        memcpy(p, digits, static_cast<size_t>(n));
        p += n;
    } else {
        if (n >= pos) {
            memcpy(p, digits, static_cast<size_t>(pos));
            p += pos;
        } else {
            memcpy(p, digits, static_cast<size_t>(n));
            p += n;
            for (int i = n; i < pos; ++i) *p++ = '0';
        }
        *p++ = point;
        if (n > pos) {
            memcpy(p, digits + pos, static_cast<size_t>(n - pos));
            p += n - pos;
        } else {
            *p++ = '0';
        }
    }
    return static_cast<int>(p - out);
}

int real4_text(char *out, uint32_t bits, char point) {
    const bool negative = bits >> 31;
    const int biased = static_cast<int>(bits >> 23 & 0xff);
    uint64_t f = bits & 0x7fffff;
    if (biased == 0xff) return special_text(out, negative, f == 0);
    if (biased == 0) {
        if (f == 0) return zero_text(out, point);
        int e = 1 - 150;
        normalise(f, 24, e);
        return shortest_text(out, negative, f, 24, e, point, true);
    }
    return shortest_text(out, negative, f | 0x800000, 24, biased - 150, point, false);
}

int real8_text(char *out, uint64_t bits, char point) {
    const bool negative = bits >> 63;
    const int biased = static_cast<int>(bits >> 52 & 0x7ff);
    uint64_t f = bits & ((uint64_t{1} << 52) - 1);
    if (biased == 0x7ff) return special_text(out, negative, f == 0);
    if (biased == 0) {
        if (f == 0) return zero_text(out, point);
        int e = 1 - 1075;
        normalise(f, 53, e);
        return shortest_text(out, negative, f, 53, e, point, true);
    }
    return shortest_text(out, negative, f | (uint64_t{1} << 52), 53, biased - 1075, point, false);
}

int real16_text(char *out, const real16 &value, char point) {
    const uint32_t top = value.word[3];
    const bool negative = top >> 31;
    const int biased = static_cast<int>(top >> 16 & 0x7fff);
    // The 112 fraction bits as hi (48 bits) and lo.
    uint64_t hi = (static_cast<uint64_t>(top & 0xffff) << 32) | value.word[2];
    uint64_t lo = (static_cast<uint64_t>(value.word[1]) << 32) | value.word[0];
    if (biased == 0x7fff) return special_text(out, negative, hi == 0 && lo == 0);
    int e = biased - 16495;
    bool subnormal = false;
    if (biased == 0) {
        if (hi == 0 && lo == 0) return zero_text(out, point);
        subnormal = true;
        e = 1 - 16495;
        while (!(hi >> 48)) {
            hi = (hi << 1) | (lo >> 63);
            lo <<= 1;
            --e;
        }
    } else {
        hi |= uint64_t{1} << 48;
    }
    uint16_t limbs[8];
    for (int i = 0; i < 4; ++i) {
        limbs[i] = static_cast<uint16_t>(lo >> (16 * i));
        limbs[4 + i] = static_cast<uint16_t>(hi >> (16 * i));
    }
    char digits[shortest::max_digits];
    int n, k;
    shortest::exact_digits(limbs, 113, e, 0, digits, &n, &k);
    return digits_text(out, negative, digits, n, k, point, subnormal);
}

namespace {

// An endpoint from `count` digits rounded in its direction, trailing zeros
// dropped (one digit kept).
int endpoint_text(char *out, double value, int count, bool up, bool negative, bool subnormal, char point) {
    const decimal_mode mode = {up ? DECIMAL_ROUND_UP : DECIMAL_ROUND_DOWN, 1, count};
    decimal_record record;
    int flags = 0;
    double_to_decimal(&value, &mode, &record, &flags);
    const char *buf = record.ds;
    int n = static_cast<int>(strlen(buf));
    const int position = record.exponent + n;
    while (n > 1 && buf[n - 1] == '0') --n;
    return digits_text(out, negative, buf, n, position - n, point, subnormal);
}

}  // namespace

int interval4_text(char *out, float value, bool up, char point) {
    uint32_t bits;
    memcpy(&bits, &value, sizeof bits);
    const bool negative = bits >> 31;
    const int biased = static_cast<int>(bits >> 23 & 0xff);
    const uint32_t f = bits & 0x7fffff;
    if (biased == 0xff) return special_text(out, negative, f == 0);
    if (biased == 0 && f == 0) return zero_text(out, point);
    return endpoint_text(out, value, 8, up, negative, biased == 0, point);
}

int interval8_text(char *out, double value, bool up, char point) {
    uint64_t bits;
    memcpy(&bits, &value, sizeof bits);
    const bool negative = bits >> 63;
    const int biased = static_cast<int>(bits >> 52 & 0x7ff);
    const uint64_t f = bits & ((uint64_t{1} << 52) - 1);
    if (biased == 0x7ff) return special_text(out, negative, f == 0);
    if (biased == 0 && f == 0) return zero_text(out, point);
    return endpoint_text(out, value, 17, up, negative, biased == 0, point);
}

namespace {

// The fixed-width forms of one kind.
struct f77_kind {
    int digits;      // significant digits
    int f_width;     // whole F field
    int e_width;     // whole E field
    int fold_width;  // what the fold test counts
    char letter;     // exponent letter
    int exp_digits;  // exponent digits after the letter
    int wide_at;     // from this exponent magnitude on: no letter, one digit more
    const char *infinity;
};
constexpr f77_kind kind4 = {6, 11, 15, 7, 'E', 2, 1000000, "Inf"};
constexpr f77_kind kind8 = {14, 19, 23, 15, 'D', 2, 100, "Infinity"};
constexpr f77_kind kind16 = {35, 40, 45, 36, 'Q', 3, 1000, "Infinity"};

char *pad_to(char *out, char *p, int width) {
    // Right-aligns the text out..p in a field of `width`.
    int n = static_cast<int>(p - out);
    if (n >= width) return p;
    memmove(out + (width - n), out, static_cast<size_t>(n));
    memset(out, ' ', static_cast<size_t>(width - n));
    return out + width;
}

int f77_zero(char *out, char point, int *fold_width) {
    out[0] = ' ';
    out[1] = ' ';
    out[2] = '0';
    out[3] = point;
    *fold_width = 4;
    return 4;
}

int f77_special(char *out, const f77_kind &kd, bool negative, bool infinity, int *fold_width) {
    char *p = out;
    *p++ = ' ';
    if (negative) *p++ = '-';
    p = put(p, infinity ? kd.infinity : "NaN");
    while (p - out < kd.e_width) *p++ = ' ';
    *fold_width = kd.fold_width;
    return static_cast<int>(p - out);
}

// E form from ndigit significant digits and the point position.
int f77_e_form(char *out, const f77_kind &kd, bool negative, const char *buf, int decpt, char point) {
    const int len = static_cast<int>(strlen(buf));
    char *p = out;
    for (int i = 0; i < 4 - (negative ? 1 : 0); ++i) *p++ = ' ';
    if (negative) *p++ = '-';
    *p++ = len > 0 ? buf[0] : '0';
    *p++ = point;
    for (int i = 1; i < kd.digits; ++i) *p++ = i < len ? buf[i] : '0';
    const int x = decpt - 1;
    const unsigned magnitude = x < 0 ? 0u - static_cast<unsigned>(x) : static_cast<unsigned>(x);
    int width = kd.exp_digits;
    if (magnitude >= static_cast<unsigned>(kd.wide_at))
        ++width;
    else
        *p++ = kd.letter;
    *p++ = x < 0 ? '-' : '+';
    char d[12];
    unsigned u = magnitude;
    for (int i = width - 1; i >= 0; --i) {
        d[i] = static_cast<char>('0' + u % 10);
        u /= 10;
    }
    memcpy(p, d, static_cast<size_t>(width));
    p += width;
    return static_cast<int>(p - out);
}

// F form: the digits of buf (value 0.buf * 10**decpt) with f places behind
// the symbol, right-aligned in the F width.
int f77_f_form(char *out, const f77_kind &kd, bool negative, const char *buf, int decpt, int f, char point) {
    const int len = static_cast<int>(strlen(buf));
    auto digit_at = [&](int i) { return i >= 0 && i < len ? buf[i] : '0'; };
    char *p = out;
    if (negative) *p++ = '-';
    if (decpt < 1) {
        *p++ = '0';
    } else {
        for (int i = 0; i < decpt; ++i) *p++ = digit_at(i);
    }
    *p++ = point;
    for (int i = 0; i < f; ++i) *p++ = digit_at(decpt + i);
    return static_cast<int>(pad_to(out, p, kd.f_width) - out);
}

// F-form fraction digits: one less than the digits for each place before the
// point the estimate counts.
int fraction_digits(const f77_kind &kd, int est) { return est + 1 > 0 ? kd.digits - 1 - est : kd.digits; }

bool e_form_for(const f77_kind &kd, int est) { return est + 1 < 0 || est + 1 > kd.digits; }

}  // namespace

int f77_real4_text(char *out, float value, char point, int *fold_width) {
    uint32_t bits;
    memcpy(&bits, &value, sizeof bits);
    const bool negative = bits >> 31;
    if ((bits & 0x7fffffff) == 0) return f77_zero(out, point, fold_width);
    if ((bits >> 23 & 0xff) == 0xff) return f77_special(out, kind4, negative, (bits & 0x7fffff) == 0, fold_width);
    *fold_width = kind4.fold_width;
    const int est = __f90_silog(&value);
    char buf[DECIMAL_STRING_SIZE];
    int decpt, sign;
    if (e_form_for(kind4, est)) {
        econvert(value, kind4.digits, &decpt, &sign, buf);
        return f77_e_form(out, kind4, negative, buf, decpt, point);
    }
    const int f = fraction_digits(kind4, est);
    fconvert(value, f, &decpt, &sign, buf);
    return f77_f_form(out, kind4, negative, buf, decpt, f, point);
}

int f77_real8_text(char *out, double value, char point, int *fold_width) {
    uint64_t bits;
    memcpy(&bits, &value, sizeof bits);
    const bool negative = bits >> 63;
    if ((bits << 1) == 0) return f77_zero(out, point, fold_width);
    if ((bits >> 52 & 0x7ff) == 0x7ff)
        return f77_special(out, kind8, negative, (bits & ((uint64_t{1} << 52) - 1)) == 0, fold_width);
    *fold_width = kind8.fold_width;
    const int est = __f90_ilog(value);
    char buf[DECIMAL_STRING_SIZE];
    int decpt, sign;
    if (e_form_for(kind8, est)) {
        econvert(value, kind8.digits, &decpt, &sign, buf);
        return f77_e_form(out, kind8, negative, buf, decpt, point);
    }
    const int f = fraction_digits(kind8, est);
    fconvert(value, f, &decpt, &sign, buf);
    return f77_f_form(out, kind8, negative, buf, decpt, f, point);
}

int f77_real16_text(char *out, const real16 &value, char point, int *fold_width) {
    const uint32_t top = value.word[3];
    const bool negative = top >> 31;
    const bool low_zero = (value.word[0] | value.word[1] | value.word[2]) == 0;
    if ((top & 0x7fffffff) == 0 && low_zero) return f77_zero(out, point, fold_width);
    if ((top >> 16 & 0x7fff) == 0x7fff)
        return f77_special(out, kind16, negative, (top & 0xffff) == 0 && low_zero, fold_width);
    *fold_width = kind16.fold_width;
    const int est = __f90_qilog(value.word);
    krm_real16 q;
    memcpy(&q, &value, sizeof q);
    char buf[DECIMAL_STRING_SIZE];
    int decpt = 0, sign = 0;
    if (e_form_for(kind16, est)) {
        x86_qeconvert(&q, kind16.digits, &decpt, &sign, buf);
        return f77_e_form(out, kind16, negative, buf, decpt, point);
    }
    const int f = fraction_digits(kind16, est);
    x86_qfconvert(&q, f, &decpt, &sign, buf);
    return f77_f_form(out, kind16, negative, buf, decpt, f, point);
}

}  // namespace krm::real_layout

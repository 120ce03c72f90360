#include "platform/big_decimal.h"

#include <errno.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include "platform/big_decimal_tables.h"

static_assert(offsetof(decimal_record, fpclass) == 0 && offsetof(decimal_record, sign) == 4 &&
                  offsetof(decimal_record, exponent) == 8 && offsetof(decimal_record, ds) == 12 &&
                  offsetof(decimal_record, more) == 524 && offsetof(decimal_record, ndigits) == 528 &&
                  sizeof(decimal_record) == 532,
              "decimal_record is laid out as the platform lays it out");
static_assert(offsetof(decimal_mode, rd) == 0 && offsetof(decimal_mode, df) == 4 &&
                  offsetof(decimal_mode, ndigits) == 8 && sizeof(decimal_mode) == 12,
              "decimal_mode is laid out as the platform lays it out");

const binary_format single_format = {24, 127, -126, 38, -46};
const binary_format double_format = {53, 1023, -1022, 308, -324};
const binary_format extended_format = {64, 16383, -16382, 4932, -4951};
const binary_format quadruple_format = {113, 16383, -16382, 4932, -4966};

// Written by __x86quad__base_conversion_set_exception and never read.
volatile double __base_conversion_write_only_double;

// ------------------------------------------------------------- big numbers

void big_float_init(big_float *b) {
    b->digit_capacity = big_float_stack_digits;
    b->digit_count = 0;
    b->scale_exponent = 0;
    b->truncated = 0;
    b->digits = b->cells;
}

void __x86quad__free_big_float(big_float *b) {
    if (b->digits != b->cells) free(b->digits);
    big_float_init(b);
}

void __x86quad__base_conversion_abort(int n) {
    errno = n;
    abort();
}

namespace {

constexpr uint32_t binary_radix = 65536;
constexpr uint32_t decimal_radix = 10000;

// Room for n cells; with keep set, the cells in use survive the move.
void reserve(big_float *b, unsigned n, bool keep = true) {
    if (n <= b->digit_capacity) return;
    if (n > 0xFFFF) __x86quad__base_conversion_abort(ERANGE);
    uint16_t *block = static_cast<uint16_t *>(malloc(n * sizeof(uint16_t)));
    if (block == nullptr) __x86quad__base_conversion_abort(ENOMEM);
    if (keep) memcpy(block, b->digits, b->digit_count * sizeof(uint16_t));
    if (b->digits != b->cells) free(b->digits);
    b->digits = block;
    b->digit_capacity = static_cast<uint16_t>(n);
}

void trim(big_float *b) {
    while (b->digit_count > 0 && b->digits[b->digit_count - 1] == 0) --b->digit_count;
}

void set_zero(big_float *b) {
    b->digit_count = 0;
    b->scale_exponent = 0;
    b->truncated = 0;
}

void copy(big_float *to, const big_float *from) {
    reserve(to, from->digit_count, false);
    memcpy(to->digits, from->digits, from->digit_count * sizeof(uint16_t));
    to->digit_count = from->digit_count;
    to->scale_exponent = from->scale_exponent;
    to->truncated = from->truncated;
}

// The binary integer of the words, most significant first.
void set_binary(big_float *b, const uint32_t *words, int nwords) {
    set_zero(b);
    reserve(b, 2 * nwords, false);
    for (int i = nwords - 1; i >= 0; --i) {
        b->digits[b->digit_count++] = static_cast<uint16_t>(words[i]);
        b->digits[b->digit_count++] = static_cast<uint16_t>(words[i] >> 16);
    }
    trim(b);
}

int bit_length(uint32_t v) { return v ? 32 - __builtin_clz(v) : 0; }

// Bits of the integer in the cells, scale left out.
int binary_cells_bits(const big_float *b) {
    if (b->digit_count == 0) return 0;
    return 16 * (b->digit_count - 1) + bit_length(b->digits[b->digit_count - 1]);
}

// Keeps the `keep` leading cells (all of them for 0), recording a drop of
// non-zero cells.
void truncate(big_float *b, unsigned keep, bool decimal) {
    if (keep == 0 || b->digit_count <= keep) return;
    unsigned drop = b->digit_count - keep;
    bool lost = false;
    for (unsigned i = 0; i < drop && !lost; ++i) lost = b->digits[i] != 0;
    memmove(b->digits, b->digits + drop, keep * sizeof(uint16_t));
    b->digit_count = static_cast<uint16_t>(keep);
    b->scale_exponent = static_cast<int16_t>(b->scale_exponent + drop * (decimal ? 4 : 16));
    if (lost) ++b->truncated;
}

// The cells of r = a * b (r distinct from the operands); the caller sets
// scale and truncation.
void multiply_cells(const uint16_t *ad, unsigned na, const uint16_t *bd, unsigned nb, big_float *r, bool decimal) {
    if (na == 0 || nb == 0) {
        r->digit_count = 0;
        return;
    }
    if (na < nb) {
        const uint16_t *t = ad;
        ad = bd;
        bd = t;
        unsigned u = na;
        na = nb;
        nb = u;
    }
    reserve(r, na + nb, false);
    uint16_t *rd = r->digits;
    memset(rd, 0, (na + nb) * sizeof(uint16_t));
    // The outer loop runs over the shorter operand.
    if (!decimal) {
        for (unsigned j = 0; j < nb; ++j) {
            uint32_t bj = bd[j];
            if (bj == 0) continue;
            uint32_t carry = 0;
            uint16_t *row = rd + j;
            for (unsigned i = 0; i < na; ++i) {
                uint32_t t = ad[i] * bj + row[i] + carry;
                row[i] = static_cast<uint16_t>(t);
                carry = t >> 16;
            }
            row[na] = static_cast<uint16_t>(carry);
        }
    } else {
        for (unsigned j = 0; j < nb; ++j) {
            uint32_t bj = bd[j];
            if (bj == 0) continue;
            uint32_t carry = 0;
            uint16_t *row = rd + j;
            for (unsigned i = 0; i < na; ++i) {
                uint32_t t = ad[i] * bj + row[i] + carry;
                carry = t / decimal_radix;
                row[i] = static_cast<uint16_t>(t - carry * decimal_radix);
            }
            row[na] = static_cast<uint16_t>(carry);
        }
    }
    r->digit_count = static_cast<uint16_t>(na + nb);
    trim(r);
}

// b = b * factor + add, factor and add below the radix.
void multiply_add_small(big_float *b, uint32_t factor, uint32_t add, bool decimal) {
    uint32_t carry = add;
    for (unsigned i = 0; i < b->digit_count; ++i) {
        uint32_t t = b->digits[i] * factor + carry;
        if (decimal) {
            carry = t / decimal_radix;
            b->digits[i] = static_cast<uint16_t>(t - carry * decimal_radix);
        } else {
            b->digits[i] = static_cast<uint16_t>(t);
            carry = t >> 16;
        }
    }
    while (carry) {
        reserve(b, b->digit_count + 1);
        uint32_t radix = decimal ? decimal_radix : binary_radix;
        b->digits[b->digit_count++] = static_cast<uint16_t>(carry % radix);
        carry /= radix;
    }
}

// Adds `amount` (below 65536) at cell `index`, carrying upwards.
void add_at_cell(big_float *b, unsigned index, uint32_t amount, bool decimal) {
    uint32_t radix = decimal ? decimal_radix : binary_radix;
    reserve(b, (index > b->digit_count ? index : b->digit_count) + 2);
    while (b->digit_count < index) b->digits[b->digit_count++] = 0;
    for (unsigned i = index; amount != 0; ++i) {
        if (i == b->digit_count) b->digits[b->digit_count++] = 0;
        uint32_t t = b->digits[i] + amount;
        b->digits[i] = static_cast<uint16_t>(t % radix);
        amount = t / radix;
    }
}

bool same_cells(const big_float *a, const big_float *b) {
    return a->digit_count == b->digit_count &&
           memcmp(a->digits, b->digits, a->digit_count * sizeof(uint16_t)) == 0;
}

// out = floor(v / 2**drop) for a radix-65536 v, as an integer (scale 0);
// *rest tells whether the bits below were not all zero.
void binary_floor(const big_float *v, int drop, big_float *out, bool *rest) {
    set_zero(out);
    *rest = false;
    if (v->digit_count == 0) return;
    long shift = static_cast<long>(v->scale_exponent) - drop;  // left shift of the cells
    if (shift >= 0) {
        unsigned cells = static_cast<unsigned>(shift / 16), bits = static_cast<unsigned>(shift % 16);
        reserve(out, v->digit_count + cells + 1, false);
        memset(out->digits, 0, cells * sizeof(uint16_t));
        uint32_t carry = 0;
        for (unsigned i = 0; i < v->digit_count; ++i) {
            uint32_t t = (static_cast<uint32_t>(v->digits[i]) << bits) | carry;
            out->digits[cells + i] = static_cast<uint16_t>(t);
            carry = t >> 16;
        }
        out->digits[cells + v->digit_count] = static_cast<uint16_t>(carry);
        out->digit_count = static_cast<uint16_t>(cells + v->digit_count + 1);
        trim(out);
        return;
    }
    unsigned long right = static_cast<unsigned long>(-shift);
    unsigned long cells = right / 16;
    unsigned bits = static_cast<unsigned>(right % 16);
    if (cells >= v->digit_count) {
        *rest = true;  // v is not zero
        return;
    }
    for (unsigned i = 0; i < cells && !*rest; ++i) *rest = v->digits[i] != 0;
    if (bits && (v->digits[cells] & ((1u << bits) - 1))) *rest = true;
    unsigned n = v->digit_count - static_cast<unsigned>(cells);
    reserve(out, n, false);
    for (unsigned i = 0; i < n; ++i) {
        uint32_t lo = v->digits[cells + i];
        uint32_t hi = cells + i + 1 < v->digit_count ? v->digits[cells + i + 1] : 0;
        out->digits[i] = static_cast<uint16_t>(((hi << 16) | lo) >> bits);
    }
    out->digit_count = static_cast<uint16_t>(n);
    trim(out);
}

const uint32_t powers_of_ten[4] = {1, 10, 100, 1000};

// out = floor(v / 10**drop) for a radix-10000 v, as an integer (scale 0);
// *rest tells whether the digits below were not all zero. A negative drop
// multiplies.
void decimal_floor(const big_float *v, long drop, big_float *out, bool *rest) {
    set_zero(out);
    *rest = false;
    if (v->digit_count == 0) return;
    long shift = static_cast<long>(v->scale_exponent) - drop;
    if (shift >= 0) {
        unsigned cells = static_cast<unsigned>(shift / 4);
        reserve(out, v->digit_count + cells + 1, false);
        memset(out->digits, 0, cells * sizeof(uint16_t));
        memcpy(out->digits + cells, v->digits, v->digit_count * sizeof(uint16_t));
        out->digit_count = static_cast<uint16_t>(cells + v->digit_count);
        if (shift % 4) multiply_add_small(out, powers_of_ten[shift % 4], 0, true);
        return;
    }
    unsigned long right = static_cast<unsigned long>(-shift);
    unsigned long cells = right / 4;
    unsigned places = static_cast<unsigned>(right % 4);
    if (cells >= v->digit_count) {
        *rest = true;
        return;
    }
    for (unsigned i = 0; i < cells && !*rest; ++i) *rest = v->digits[i] != 0;
    unsigned n = v->digit_count - static_cast<unsigned>(cells);
    reserve(out, n, false);
    memcpy(out->digits, v->digits + cells, n * sizeof(uint16_t));
    out->digit_count = static_cast<uint16_t>(n);
    if (places) {
        // divide by 10**places from the top, keeping the remainder
        uint32_t divisor = powers_of_ten[places], high = decimal_radix / divisor, r = 0;
        for (unsigned i = n; i-- > 0;) {
            uint32_t d = out->digits[i];
            out->digits[i] = static_cast<uint16_t>(r * high + d / divisor);
            r = d % divisor;
        }
        if (r) *rest = true;
    }
    trim(out);
}

// Decimal digits of a radix-10000 integer, without leading zeros ("0" for
// zero); returns their count.
int decimal_to_characters(const big_float *d, char *out) {
    if (d->digit_count == 0) {
        out[0] = '0';
        return 1;
    }
    char four[4];
    __x86quad__four_digits_quick(d->digits[d->digit_count - 1], four);
    int lead = 0;
    while (lead < 3 && four[lead] == '0') ++lead;
    int n = 0;
    for (int i = lead; i < 4; ++i) out[n++] = four[i];
    for (unsigned i = d->digit_count - 1; i-- > 0;) {
        __x86quad__four_digits_quick(d->digits[i], out + n);
        n += 4;
    }
    return n;
}

// The integer of a digit string, in radix 10000.
void digits_to_big_decimal(const char *s, int n, big_float *d) {
    set_zero(d);
    reserve(d, static_cast<unsigned>(n) / 4 + 1, false);
    for (int end = n; end > 0; end -= 4) {
        int begin = end >= 4 ? end - 4 : 0;
        uint32_t v = 0;
        for (int i = begin; i < end; ++i) v = v * 10 + static_cast<uint32_t>(s[i] - '0');
        d->digits[d->digit_count++] = static_cast<uint16_t>(v);
    }
    trim(d);
}

// floor(n * log10(2)) and floor(n * log2(10)), exact over the exponent
// ranges of the formats.
int floor_log10_pow2(int n) { return static_cast<int>((static_cast<int64_t>(n) * 1292913986) >> 32); }
long floor_log2_pow10(long n) { return static_cast<long>((static_cast<int64_t>(n) * 14267572527LL) >> 32); }

// Products that would drop fewer bits than this are kept whole: truncation
// saves nothing there, and the check it calls for costs as much.
constexpr long exact_margin_bits = 192;

// Bound on the error of a value that products truncated: fewer than this many
// units of its second-lowest cell (it takes one unit per truncation, and no
// chain here truncates more than ten times).
constexpr uint32_t truncation_slack = 16;

}  // namespace

int __x86quad__big_float_times_power(const big_float *value, int base, int n, int precision,
                                     big_float *result) {
    const bool decimal = base == 2;  // powers of two multiply radix-10000 numbers
    const uint16_t *digits[3], *start[3];  // the three tables of the base
    unsigned rows[3];
    if (base == 10) {
        if (n < 0 || n >= 5120) return 1;
        digits[0] = __x86quad__tbl_10_small_digits, start[0] = __x86quad__tbl_10_small_start, rows[0] = n % 64;
        digits[1] = __x86quad__tbl_10_big_digits, start[1] = __x86quad__tbl_10_big_start, rows[1] = n / 64 % 16;
        digits[2] = __x86quad__tbl_10_huge_digits, start[2] = __x86quad__tbl_10_huge_start, rows[2] = n / 1024;
    } else if (base == 2) {
        if (n < 0 || n >= 16896) return 1;
        digits[0] = __x86quad__tbl_2_small_digits, start[0] = __x86quad__tbl_2_small_start, rows[0] = n % 176;
        digits[1] = __x86quad__tbl_2_big_digits, start[1] = __x86quad__tbl_2_big_start, rows[1] = n / 176 % 16;
        digits[2] = __x86quad__tbl_2_huge_digits, start[2] = __x86quad__tbl_2_huge_start, rows[2] = n / 2816;
    } else {
        return 1;
    }
    const unsigned keep = precision <= 0 ? 0 : decimal ? precision / 4 + 2 : precision / 16 + 2;
    const int cell_scale = decimal ? 4 : 16;
    unsigned count = 0;
    for (int i = 0; i < 3; ++i) count += rows[i] != 0;
    // The operands are read in place, each cut to its `keep` leading cells;
    // the products alternate between result and a spare so that the last
    // one lands in result.
    big_float spare;
    big_float_init(&spare);
    const uint16_t *a = value->digits;
    unsigned na = value->digit_count;
    int scale = value->scale_exponent;
    unsigned truncated = value->truncated;
    auto cut = [&](const uint16_t *&d, unsigned &cells) {
        if (keep == 0 || cells <= keep) return;
        unsigned drop = cells - keep;
        bool lost = false;
        for (unsigned i = 0; i < drop && !lost; ++i) lost = d[i] != 0;
        d += drop;
        cells = keep;
        scale += static_cast<int>(drop) * cell_scale;
        truncated += lost;
    };
    cut(a, na);
    if (count == 0) {
        set_zero(result);
        reserve(result, na, false);
        memcpy(result->digits, a, na * sizeof(uint16_t));
        result->digit_count = static_cast<uint16_t>(na);
    }
    for (int i = 0; i < 3; ++i) {
        if (rows[i] == 0) continue;
        const uint16_t *b = digits[i] + start[i][rows[i]];
        unsigned nb = start[i][rows[i] + 1] - start[i][rows[i]];
        cut(b, nb);
        big_float *product = --count % 2 == 0 ? result : &spare;
        multiply_cells(a, na, b, nb, product, decimal);
        product->scale_exponent = static_cast<int16_t>(scale);
        product->truncated = static_cast<uint16_t>(truncated);
        truncate(product, keep, decimal);
        a = product->digits;
        na = product->digit_count;
        scale = product->scale_exponent;
        truncated = product->truncated;
    }
    result->scale_exponent = static_cast<int16_t>(scale + (base == 10 ? n : 0));
    result->truncated = static_cast<uint16_t>(truncated);
    __x86quad__free_big_float(&spare);
    return 0;
}

namespace {

// (high * 2**32 + low) / 100000000 and its remainder, for high below 10**8,
// so that the quotient fits in 32 bits.
inline uint32_t divide_by_10e8(uint32_t high, uint32_t low, uint32_t *remainder) {
#if defined(__i386__)
    uint32_t quotient, rest;
    __asm__("divl %4" : "=a"(quotient), "=d"(rest) : "a"(low), "d"(high), "rm"(100000000u));
    *remainder = rest;
    return quotient;
#else
    uint64_t t = (static_cast<uint64_t>(high) << 32) | low;
    uint64_t quotient = t / 100000000u;
    *remainder = static_cast<uint32_t>(t - quotient * 100000000u);
    return static_cast<uint32_t>(quotient);
#endif
}

}  // namespace

void __x86quad__big_binary_to_big_decimal(const big_float *binary, big_float *decimal) {
    // The cells in pairs as 32-bit words; each pass divides them by 10**8 from
    // the top, and the remainder gives the next two radix-10000 digits.
    uint32_t stack_words[big_float_stack_digits / 2 + 1];
    uint32_t *words = stack_words;
    unsigned n = (binary->digit_count + 1u) / 2;
    if (n > sizeof stack_words / sizeof stack_words[0]) {
        words = static_cast<uint32_t *>(malloc(n * sizeof(uint32_t)));
        if (words == nullptr) __x86quad__base_conversion_abort(ENOMEM);
    }
    for (unsigned i = 0; i < n; ++i) {
        uint32_t hi = 2 * i + 1 < binary->digit_count ? binary->digits[2 * i + 1] : 0;
        words[i] = (hi << 16) | binary->digits[2 * i];
    }
    set_zero(decimal);
    // 16 bits are 1.2042 radix-10000 digits; the pairs may add one
    reserve(decimal, binary->digit_count * 1205u / 1000 + 3, false);
    while (n > 0 && words[n - 1] == 0) --n;
    while (n > 0) {
        uint32_t r = 0;
        for (unsigned i = n; i-- > 0;) words[i] = divide_by_10e8(r, words[i], &r);
        while (n > 0 && words[n - 1] == 0) --n;
        uint32_t high = r / decimal_radix;
        decimal->digits[decimal->digit_count++] = static_cast<uint16_t>(r - high * decimal_radix);
        decimal->digits[decimal->digit_count++] = static_cast<uint16_t>(high);
    }
    trim(decimal);
    if (words != stack_words) free(words);
}

void __x86quad__big_decimal_to_big_binary(const big_float *decimal, big_float *binary) {
    set_zero(binary);
    reserve(binary, decimal->digit_count * 7 / 8 + 2, false);
    for (unsigned i = decimal->digit_count; i-- > 0;) multiply_add_small(binary, decimal_radix, decimal->digits[i], false);
}

void __x86quad__four_digits_quick(unsigned value, char *out) {
    const char *row = __x86quad__four_digits_quick_table[value >> 3];
    out[0] = row[0], out[1] = row[1], out[2] = row[2];
    unsigned last = static_cast<unsigned>(row[3] - '0') + (value & 7);
    if (last < 10) {
        out[3] = static_cast<char>('0' + last);
        return;
    }
    out[3] = static_cast<char>('0' + last - 10);
    // carry by hand through the digits above
    for (int i = 2; i >= 0; --i) {
        if (out[i] != '9') {
            ++out[i];
            return;
        }
        out[i] = '0';
    }
}

void __x86quad__fp_set_exception(conversion_state *state, int n) { state->_fp_current_exceptions |= n; }

void __x86quad__base_conversion_set_exception(int flags) {
    // The squares: 0.99999999627 squared is inexact; a signalling NaN is
    // invalid; 4.1e180 squared overflows; the least normal squared underflows.
    static volatile const double inexact_only = 0.9999999962747097;
    static volatile const double huge = 4.149515553422843e180;
    static volatile const double tiny = 2.2250738585072014e-308;
    static volatile const uint64_t signalling = 0x7FF0000000000001ull;
    double x;
    if (flags == DECIMAL_INEXACT) {
        x = inexact_only;
    } else if (flags & DECIMAL_INVALID) {
        uint64_t bits = signalling;
        memcpy(&x, &bits, sizeof x);
    } else if (flags & DECIMAL_OVERFLOW) {
        x = huge;
    } else if (flags & DECIMAL_UNDERFLOW) {
        x = tiny;
    } else {
        return;
    }
    __base_conversion_write_only_double = x * x;
}

void __x86quad__fp_rightshift(uint32_t w[5], int n) {
    if (n <= 0) return;
    uint32_t sticky = 0;
    if (n >= 160) {
        for (int i = 0; i < 5; ++i) sticky |= w[i], w[i] = 0;
        w[4] = sticky != 0;
        return;
    }
    int words = n / 32, bits = n % 32;
    for (int i = 5 - words; i < 5; ++i) sticky |= w[i];
    if (bits) sticky |= w[4 - words] & ((1u << bits) - 1);
    for (int i = 4; i >= 0; --i) {
        int from = i - words;
        uint32_t lo = from >= 0 ? w[from] : 0;
        uint32_t hi = from - 1 >= 0 ? w[from - 1] : 0;
        w[i] = bits ? (lo >> bits) | (hi << (32 - bits)) : lo;
    }
    if (sticky) w[4] |= 1;
}

// ------------------------------------------------------- binary to digits

namespace {

// The value M * 2**e with M odd.
struct binary_value {
    uint32_t words[4];  // M, most significant first
    int e;
};

// floor(I / 10**drop) into q (radix 10000) for the integer I = M * 2**sh;
// a negative drop multiplies. Returns whether anything was lost.
bool __x86quad__binary_to_decimal_integer(const big_float *int_binary, int sh, long drop, big_float *q) {
    // I in radix 10000, then 2**sh from the tables of two.
    big_float dec, scaled, upper, q_upper;
    big_float_init(&dec);
    big_float_init(&scaled);
    big_float_init(&upper);
    big_float_init(&q_upper);
    __x86quad__big_binary_to_big_decimal(int_binary, &dec);
    // Decimal digits of I and of what must survive, with room for the slack.
    long length = floor_log10_pow2(binary_cells_bits(int_binary) + sh) + 1;
    long wanted = length - drop + 12;
    bool rest = false;
    for (int exact = (length - wanted) * 10 / 3 <= exact_margin_bits ? 1 : 0; exact < 2; ++exact) {
        int precision = exact ? 0 : static_cast<int>(wanted);
        __x86quad__big_float_times_power(&dec, 2, sh, precision, &scaled);
        decimal_floor(&scaled, drop, q, &rest);
        if (scaled.truncated == 0) break;
        copy(&upper, &scaled);
        add_at_cell(&upper, 1, truncation_slack, true);
        bool upper_rest;
        decimal_floor(&upper, drop, &q_upper, &upper_rest);
        if (same_cells(q, &q_upper)) {
            rest = true;
            break;
        }
    }
    __x86quad__free_big_float(&dec);
    __x86quad__free_big_float(&scaled);
    __x86quad__free_big_float(&upper);
    __x86quad__free_big_float(&q_upper);
    return rest;
}

// value * 10**n (radix 65536), in steps the tables allow.
void times_power_of_ten(const big_float *value, int n, int precision, big_float *result) {
    big_float step;
    big_float_init(&step);
    copy(&step, value);
    while (n >= 5120) {
        __x86quad__big_float_times_power(&step, 10, 5119, precision, result);
        copy(&step, result);
        n -= 5119;
    }
    __x86quad__big_float_times_power(&step, 10, n, precision, result);
    __x86quad__free_big_float(&step);
}

// floor(M * 2**-m * 10**s) into q (radix 10000), for s > 0: the digits down
// to s places behind the point; m may be negative. Returns whether anything
// was lost.
bool __x86quad__binary_to_decimal_fraction(const big_float *significand, long m, int s, big_float *q) {
    big_float scaled, upper, w, w_upper;
    big_float_init(&scaled);
    big_float_init(&upper);
    big_float_init(&w);
    big_float_init(&w_upper);
    // Bits of the product M * 10**s, and how many of them lie above the point.
    long product_bits = binary_cells_bits(significand) + floor_log2_pow10(s) + 2;
    long above = product_bits - m;
    if (above < 0) above = 0;
    bool rest = false;
    for (int exact = above + 48 + exact_margin_bits >= product_bits ? 1 : 0; exact < 2; ++exact) {
        int precision = exact ? 0 : static_cast<int>(above + 48);
        times_power_of_ten(significand, s, precision, &scaled);
        binary_floor(&scaled, static_cast<int>(m), &w, &rest);
        if (scaled.truncated == 0) break;
        copy(&upper, &scaled);
        add_at_cell(&upper, 1, truncation_slack, false);
        bool upper_rest;
        binary_floor(&upper, static_cast<int>(m), &w_upper, &upper_rest);
        if (same_cells(&w, &w_upper)) {
            rest = true;
            break;
        }
    }
    __x86quad__big_binary_to_big_decimal(&w, q);
    __x86quad__free_big_float(&scaled);
    __x86quad__free_big_float(&upper);
    __x86quad__free_big_float(&w);
    __x86quad__free_big_float(&w_upper);
    return rest;
}

// Q = floor(x / 10**(P - 1)) for x = M * 2**e, into q; returns whether the
// remainder is not zero. When no digit behind the point is wanted, the
// integer part of x goes to radix 10000 and is scaled there by the powers of
// two, its fraction only telling whether anything is left; otherwise the
// whole significand is scaled by 10**s in radix 65536, so that one product
// and one change of radix serve integer and fraction digits alike.
bool __x86quad_unpacked_to_decimal_two(const binary_value *x, int P, big_float *q) {
    long s = 1 - static_cast<long>(P);  // Q = floor(x * 10**s)
    big_float significand;
    big_float_init(&significand);
    set_binary(&significand, x->words, 4);
    bool more;
    if (s > 0) {
        more = __x86quad__binary_to_decimal_fraction(&significand, -x->e, static_cast<int>(s), q);
    } else if (x->e >= 0) {
        more = __x86quad__binary_to_decimal_integer(&significand, x->e, -s, q);
    } else {
        // the integer part, and whether the fraction bits are all zero
        big_float whole;
        big_float_init(&whole);
        bool fraction;
        binary_floor(&significand, -x->e, &whole, &fraction);
        if (whole.digit_count > 0) {
            more = __x86quad__binary_to_decimal_integer(&whole, 0, -s, q) || fraction;
        } else {
            set_zero(q);
            more = true;
        }
        __x86quad__free_big_float(&whole);
    }
    __x86quad__free_big_float(&significand);
    return more;
}

}  // namespace

void __x86quad__decimal_round(const decimal_mode *mode, decimal_record *rec, int *flags, char next, int more) {
    int n = rec->ndigits;
    if (next == '0' && !more) {
        rec->ds[n > 0 ? n : 0] = '\0';
        if (n <= 0) {
            rec->ds[0] = '0';
            rec->ds[1] = '\0';
            rec->ndigits = 1;
        }
        return;
    }
    *flags |= DECIMAL_INEXACT;
    bool up;
    switch (mode->rd) {
    case DECIMAL_ROUND_DOWN: up = rec->sign != 0; break;
    case DECIMAL_ROUND_UP: up = rec->sign == 0; break;
    case DECIMAL_ROUND_TO_ZERO: up = false; break;
    default:
        up = next > '5' ||
             (next == '5' && (more || (n > 0 && ((rec->ds[n - 1] - '0') & 1))));
        break;
    }
    if (n < 0) n = 0;
    rec->ds[n] = '\0';
    if (!up) return;
    int i = n - 1;
    while (i >= 0 && rec->ds[i] == '9') rec->ds[i--] = '0';
    if (i >= 0) {
        ++rec->ds[i];
        return;
    }
    // All nines: a one and zeros, one place further left.
    rec->ds[0] = '1';
    if (mode->df == 0 && n + 1 < DECIMAL_STRING_SIZE) {
        if (n > 0) rec->ds[n] = '0';
        rec->ds[n + 1] = '\0';
        rec->ndigits = n + 1;
    } else {
        ++rec->exponent;
        if (n == 0) {
            rec->ds[1] = '\0';
            rec->ndigits = 1;
        }
    }
}

int binary_to_decimal_record(const unpacked *value, const decimal_mode *mode, decimal_record *rec) {
    rec->sign = value->sign != 0;
    rec->fpclass = value->fpclass;
    rec->more = 0;
    rec->exponent = 0;
    rec->ndigits = 0;
    rec->ds[0] = '\0';
    if (value->fpclass != DECIMAL_NORMAL && value->fpclass != DECIMAL_SUBNORMAL) return 0;

    // M * 2**e with M odd
    binary_value x;
    uint32_t w[4] = {value->significand[0], value->significand[1], value->significand[2],
                     value->significand[3]};
    int tz = 0;
    for (int i = 3; i >= 0 && w[i] == 0; --i) tz += 32;
    if (tz >= 128) return 0;
    tz += __builtin_ctz(w[3 - tz / 32]);
    uint32_t shifted[5] = {w[0], w[1], w[2], w[3], 0};
    __x86quad__fp_rightshift(shifted, tz);
    for (int i = 0; i < 4; ++i) x.words[i] = shifted[i];
    x.e = value->exponent - 127 + tz;

    // The value lies in [10**k, 10**(k+1)) with k = k_est or k_est + 1.
    int k_est = floor_log10_pow2(value->exponent);
    bool floating = mode->df != 0;
    int N = mode->ndigits;
    if (N < 1) N = 1;
    if (N > DECIMAL_STRING_SIZE - 1) N = DECIMAL_STRING_SIZE - 1;
    int F = mode->ndigits < 0 ? 0 : mode->ndigits > 20000 ? 20000 : mode->ndigits;
    int P;  // the place of the last digit kept: 10**P
    if (floating) {
        P = k_est + 1 - N;
    } else {
        P = -F;
        if (k_est + 1 - P > DECIMAL_STRING_SIZE - 1) P = k_est + 1 - (DECIMAL_STRING_SIZE - 1);
    }
    // Q = floor(x / 10**(P-1)): the kept digits and the next one.
    int limit = floating ? N + 1 : DECIMAL_STRING_SIZE;
    char digits[DECIMAL_STRING_SIZE + 16];
    int len;
    bool more;
    big_float q;
    big_float_init(&q);
    for (;;) {
        more = __x86quad_unpacked_to_decimal_two(&x, P, &q);
        // Q holds at most limit + 2 digits here, with a fixed form capped by k_est.
        len = decimal_to_characters(&q, digits);
        if (floating && len < N + 1) {
            P -= N + 1 - len;  // an estimate one too high: never with exact floors
            continue;
        }
        break;
    }
    __x86quad__free_big_float(&q);
    while (len > limit) {
        more = more || digits[len - 1] != '0';
        --len;
        ++P;
    }
    char next = digits[len - 1];
    int kept = len - 1;
    memcpy(rec->ds, digits, kept);
    rec->ds[kept] = '\0';
    rec->ndigits = kept;
    rec->exponent = P;
    int flags = 0;
    __x86quad__decimal_round(mode, rec, &flags, next, more);
    return flags;
}

// ------------------------------------------------------- digits to binary

namespace {

// The binary integer in cells, at the top of the unpacked significand, with
// the exponent of its lowest bit b and a sticky bit.
void big_binary_to_unpacked(const big_float *y, long b, bool sticky, unpacked *u) {
    for (int i = 0; i < 5; ++i) u->significand[i] = 0;
    int bits = binary_cells_bits(y);
    if (bits == 0) {
        // below anything the format holds: a tiny non-zero value
        u->exponent = -0xFFFFF;
        u->significand[0] = 0x80000000u;
        return;
    }
    // y has at most 128 bits here; put its top bit at bit 127
    uint32_t words[5] = {0, 0, 0, 0, 0};
    for (unsigned i = 0; i < y->digit_count && i < 8; ++i) {
        unsigned word = 3 - i / 2;
        words[word] |= static_cast<uint32_t>(y->digits[i]) << (16 * (i % 2));
    }
    int up = 128 - bits;
    int wshift = up / 32, bshift = up % 32;
    for (int i = 0; i < 4; ++i) {
        uint32_t hi = i + wshift < 4 ? words[i + wshift] : 0;
        uint32_t lo = i + wshift + 1 < 4 ? words[i + wshift + 1] : 0;
        u->significand[i] = bshift ? (hi << bshift) | (lo >> (32 - bshift)) : hi;
    }
    u->significand[4] = sticky ? 1 : 0;
    long exponent = b + bits - 1;
    u->exponent = static_cast<int>(exponent);
}

}  // namespace

// The digits, n of them without leading or trailing zeros, times 10**E, with
// more for a non-zero tail, in u.
static void decimal_to_unpacked(unpacked *u, const char *digits, int n, long E, bool more,
                                const binary_format *fmt) {
    const int p = fmt->precision;
    // The integer part: digits before the point; the fraction: the others.
    int n_int = E >= 0 ? n : (n + E > 0 ? static_cast<int>(n + E) : 0);
    long m = E < 0 ? -E : 0;  // places of the fraction
    const char *fdigits = digits + n_int;
    int n_frac = n - n_int;
    bool sticky = more;
    big_float a, upper, y, w, t;
    big_float_init(&a);
    big_float_init(&upper);
    big_float_init(&y);
    big_float_init(&w);
    big_float_init(&t);
    long b;
    if (n_int > 0) {
        big_float dec, bin;
        big_float_init(&dec);
        big_float_init(&bin);
        digits_to_big_decimal(digits, n_int, &dec);
        __x86quad__big_decimal_to_big_binary(&dec, &bin);
        int e10 = E > 0 ? static_cast<int>(E) : 0;
        long cut = 0;
        bool rest = false;
        long product_bits = binary_cells_bits(&bin) + floor_log2_pow10(e10) + 2;
        for (int exact = product_bits <= p + 50 + exact_margin_bits ? 1 : 0; exact < 2; ++exact) {
            __x86quad__big_float_times_power(&bin, 10, e10, exact ? 0 : p + 2 + 48, &a);
            long bl = binary_cells_bits(&a) + a.scale_exponent;
            if (bl < p + 2) break;  // small: exact, the fraction supplies the rest
            cut = bl - (p + 2);
            binary_floor(&a, static_cast<int>(cut), &y, &rest);
            if (a.truncated == 0) break;
            copy(&upper, &a);
            add_at_cell(&upper, 1, truncation_slack, false);
            bool upper_rest;
            binary_floor(&upper, static_cast<int>(cut), &t, &upper_rest);
            if (same_cells(&y, &t)) {
                rest = true;
                break;
            }
        }
        long bl = binary_cells_bits(&a) + a.scale_exponent;
        if (bl >= p + 2) {
            b = cut;
            for (int i = 0; i < n_frac && !rest; ++i) rest = fdigits[i] != '0';
            sticky = sticky || rest;
        } else {
            // I has fewer than p + 2 bits: take j bits of the fraction as well.
            long j = p + 2 - bl;
            bool frac_rest = false;
            big_float wbin;
            big_float_init(&wbin);
            if (n_frac > 0) {
                digits_to_big_decimal(fdigits, n_frac, &dec);
                dec.scale_exponent = static_cast<int16_t>(-m);
                __x86quad__big_float_times_power(&dec, 2, static_cast<int>(j), 0, &t);
                decimal_floor(&t, 0, &w, &frac_rest);
                __x86quad__big_decimal_to_big_binary(&w, &wbin);
            }
            // y = I * 2**j + W
            binary_floor(&a, static_cast<int>(-j), &y, &rest);
            big_float sum;
            big_float_init(&sum);
            copy(&sum, &y);
            reserve(&sum, (sum.digit_count > wbin.digit_count ? sum.digit_count : wbin.digit_count) + 1);
            while (sum.digit_count < wbin.digit_count) sum.digits[sum.digit_count++] = 0;
            uint32_t carry = 0;
            for (unsigned i = 0; i < sum.digit_count; ++i) {
                uint32_t v = sum.digits[i] + (i < wbin.digit_count ? wbin.digits[i] : 0u) + carry;
                sum.digits[i] = static_cast<uint16_t>(v);
                carry = v >> 16;
            }
            if (carry) sum.digits[sum.digit_count++] = static_cast<uint16_t>(carry);
            copy(&y, &sum);
            __x86quad__free_big_float(&sum);
            __x86quad__free_big_float(&wbin);
            b = -j;
            sticky = sticky || frac_rest;
        }
        __x86quad__free_big_float(&dec);
        __x86quad__free_big_float(&bin);
    } else {
        // A pure fraction F = D * 10**E, at least 10**(n + E - 1).
        long lb = floor_log2_pow10(n + E - 1);  // 2**lb <= F
        long j = p + 1 - lb;                    // F * 2**j >= 2**(p+1)
        long deepest = 1 - (static_cast<long>(fmt->min_exponent) - (p - 1));  // bits below the least subnormal's
        if (j > deepest) j = deepest;
        big_float dec;
        big_float_init(&dec);
        digits_to_big_decimal(fdigits, n_frac, &dec);
        dec.scale_exponent = static_cast<int16_t>(-m);
        // Decimal digits of D * 2**j, and how many lie above the point.
        long length = n_frac + floor_log10_pow2(static_cast<int>(j)) + 1;
        long wanted = length - m + 12;
        if (wanted < 16) wanted = 16;
        bool rest = false;
        for (int exact = (length - wanted) * 10 / 3 <= exact_margin_bits ? 1 : 0; exact < 2; ++exact) {
            __x86quad__big_float_times_power(&dec, 2, static_cast<int>(j), exact ? 0 : static_cast<int>(wanted), &a);
            decimal_floor(&a, 0, &w, &rest);
            if (a.truncated == 0) break;
            copy(&upper, &a);
            add_at_cell(&upper, 1, truncation_slack, true);
            bool upper_rest;
            decimal_floor(&upper, 0, &t, &upper_rest);
            if (same_cells(&w, &t)) {
                rest = true;
                break;
            }
        }
        __x86quad__big_decimal_to_big_binary(&w, &y);
        b = -j;
        sticky = sticky || rest;
        __x86quad__free_big_float(&dec);
    }
    big_binary_to_unpacked(&y, b, sticky, u);
    __x86quad__free_big_float(&a);
    __x86quad__free_big_float(&upper);
    __x86quad__free_big_float(&y);
    __x86quad__free_big_float(&w);
    __x86quad__free_big_float(&t);
}

namespace {

bool significand_at_least(const uint32_t s[4], int bit) {
    // s >= 2**bit
    int word = 3 - bit / 32;
    for (int i = 0; i < word; ++i)
        if (s[i]) return true;
    return s[word] >= (1u << (bit % 32));
}

void overflow_result(const binary_format *fmt, int rd, int sign, packed_binary *out, conversion_state *st) {
    __x86quad__fp_set_exception(st, DECIMAL_OVERFLOW | DECIMAL_INEXACT);
    bool to_infinity = rd == DECIMAL_ROUND_NEAREST || (rd == DECIMAL_ROUND_DOWN && sign) ||
                       (rd == DECIMAL_ROUND_UP && !sign);
    for (int i = 0; i < 4; ++i) out->significand[i] = 0;
    if (to_infinity) {
        out->biased_exponent = 2 * fmt->max_exponent + 1;
        return;
    }
    // the greatest finite magnitude: every significand bit set
    out->biased_exponent = 2 * fmt->max_exponent;
    int p = fmt->precision;
    for (int i = 3; i >= 0 && p > 0; --i, p -= 32) out->significand[i] = p >= 32 ? 0xFFFFFFFFu : (1u << p) - 1;
}

}  // namespace

// Rounds the unpacked value to the format in direction rd.
static void round_unpacked(unpacked *u, const binary_format *fmt, int rd, packed_binary *out, conversion_state *st) {
    const int p = fmt->precision;
    const long max_biased = 2L * fmt->max_exponent + 1;
    out->sign = u->sign;
    long biased = static_cast<long>(u->exponent) + fmt->max_exponent;
    if (biased >= max_biased) return overflow_result(fmt, rd, u->sign, out, st);
    long shift = 128 - p;
    bool tiny = false;
    if (biased < 1) {
        tiny = true;
        shift += 1 - biased;
        biased = 0;
    }
    __x86quad__fp_rightshift(u->significand, shift > 200 ? 200 : static_cast<int>(shift));
    uint32_t *s = u->significand;
    uint32_t rest = s[4];
    if (rest) {
        __x86quad__fp_set_exception(st, DECIMAL_INEXACT);
        bool up;
        switch (rd) {
        case DECIMAL_ROUND_DOWN: up = u->sign != 0; break;
        case DECIMAL_ROUND_UP: up = u->sign == 0; break;
        case DECIMAL_ROUND_TO_ZERO: up = false; break;
        default: up = rest > 0x80000000u || (rest == 0x80000000u && (s[3] & 1)); break;
        }
        if (up) {
            for (int i = 3; i >= 0; --i)
                if (++s[i] != 0) break;
        }
    }
    if (tiny) {
        if (significand_at_least(s, p - 1)) biased = 1;  // rounded up to the least normal
        if (rest) __x86quad__fp_set_exception(st, DECIMAL_UNDERFLOW);
    } else if (significand_at_least(s, p)) {
        // carried out of the top
        uint32_t w[5] = {s[0], s[1], s[2], s[3], 0};
        __x86quad__fp_rightshift(w, 1);
        for (int i = 0; i < 4; ++i) s[i] = w[i];
        if (++biased >= max_biased) return overflow_result(fmt, rd, u->sign, out, st);
    }
    out->biased_exponent = static_cast<int>(biased);
    for (int i = 0; i < 4; ++i) out->significand[i] = s[i];
}

int decimal_record_to_binary(const decimal_record *rec, const binary_format *fmt, int rd, packed_binary *out,
                             int *flags) {
    if (rd < DECIMAL_ROUND_NEAREST || rd > DECIMAL_ROUND_TO_ZERO) rd = DECIMAL_ROUND_NEAREST;
    conversion_state st = {rd, 0, fmt->precision};
    const int sign = rec->sign != 0;
    out->sign = sign;
    out->biased_exponent = 0;
    for (int i = 0; i < 4; ++i) out->significand[i] = 0;
    const int all_ones = 2 * fmt->max_exponent + 1;
    switch (rec->fpclass) {
    case DECIMAL_ZERO:
        *flags = 0;
        return 1;
    case DECIMAL_INFINITY:
        out->biased_exponent = all_ones;
        *flags = 0;
        return 1;
    case DECIMAL_QUIET_NAN:
    case DECIMAL_SIGNALING_NAN: {
        // every fraction bit set; a signalling NaN lacks the top one
        out->biased_exponent = all_ones;
        int bits = fmt->precision - 1;
        for (int i = 3; i >= 0 && bits > 0; --i, bits -= 32)
            out->significand[i] = bits >= 32 ? 0xFFFFFFFFu : (1u << bits) - 1;
        if (rec->fpclass == DECIMAL_SIGNALING_NAN) {
            int top = fmt->precision - 2;
            out->significand[3 - top / 32] &= ~(1u << (top % 32));
        }
        *flags = 0;
        return 1;
    }
    default: break;
    }
    if (rec->ndigits < 0) {
        *flags = 0;
        return 0;
    }
    // The digits: up to ndigits of them, at most 511, to the first non-digit.
    int count = rec->ndigits < DECIMAL_STRING_SIZE - 1 ? rec->ndigits : DECIMAL_STRING_SIZE - 1;
    int n = 0;
    while (n < count && rec->ds[n] >= '0' && rec->ds[n] <= '9') ++n;
    const char *d = rec->ds;
    while (n > 0 && *d == '0') ++d, --n;
    int64_t E = rec->exponent;  // 64 bits: trailing zeros may raise INT_MAX
    while (n > 0 && d[n - 1] == '0') --n, ++E;
    if (n == 0) {
        *flags = 0;  // zero, with its sign
        return 1;
    }
    unpacked u;
    u.sign = sign;
    u.fpclass = DECIMAL_NORMAL;
    if (n + E - 1 > fmt->max_decimal) {
        // at least 10**(max_decimal + 1): overflows whatever the digits
        u.exponent = 0xFFFFF;
        u.significand[0] = 0x80000000u;
        u.significand[1] = u.significand[2] = u.significand[3] = u.significand[4] = 0;
    } else if (n + E <= fmt->min_decimal) {
        // under half the least subnormal: rounds to zero or to it
        u.exponent = -0xFFFFF;
        u.significand[0] = 0x80000000u;
        u.significand[1] = u.significand[2] = u.significand[3] = 0;
        u.significand[4] = 1;
    } else {
        decimal_to_unpacked(&u, d, n, static_cast<long>(E), rec->more != 0, fmt);  // |E| < 6000 here
    }
    round_unpacked(&u, fmt, rd, out, &st);
    *flags = st._fp_current_exceptions;
    return 1;
}

// ------------------------------------------------------- format helpers

void unpack_single(uint32_t bits, unpacked *u) {
    u->sign = bits >> 31;
    int biased = (bits >> 23) & 0xFF;
    uint32_t frac = bits & 0x7FFFFF;
    for (int i = 0; i < 5; ++i) u->significand[i] = 0;
    if (biased == 0xFF) {
        u->fpclass = frac == 0 ? DECIMAL_INFINITY : (frac & 0x400000) ? DECIMAL_QUIET_NAN : DECIMAL_SIGNALING_NAN;
        u->exponent = 0;
        return;
    }
    if (biased == 0) {
        if (frac == 0) {
            u->fpclass = DECIMAL_ZERO;
            u->exponent = 0;
            return;
        }
        u->fpclass = DECIMAL_SUBNORMAL;
        int lead = bit_length(frac) - 1;  // below bit 23
        u->exponent = -126 - (23 - lead);
        u->significand[0] = frac << (31 - lead);
        return;
    }
    u->fpclass = DECIMAL_NORMAL;
    u->exponent = biased - 127;
    u->significand[0] = (frac | 0x800000) << 8;
}

void unpack_double(uint64_t bits, unpacked *u) {
    u->sign = static_cast<int>(bits >> 63);
    int biased = static_cast<int>((bits >> 52) & 0x7FF);
    uint64_t frac = bits & 0xFFFFFFFFFFFFFull;
    for (int i = 0; i < 5; ++i) u->significand[i] = 0;
    if (biased == 0x7FF) {
        u->fpclass = frac == 0 ? DECIMAL_INFINITY
                     : (frac >> 51) & 1 ? DECIMAL_QUIET_NAN
                                         : DECIMAL_SIGNALING_NAN;
        u->exponent = 0;
        return;
    }
    uint64_t sig;
    if (biased == 0) {
        if (frac == 0) {
            u->fpclass = DECIMAL_ZERO;
            u->exponent = 0;
            return;
        }
        u->fpclass = DECIMAL_SUBNORMAL;
        int lead = 63 - __builtin_clzll(frac);
        u->exponent = -1022 - (52 - lead);
        sig = frac << (63 - lead);
    } else {
        u->fpclass = DECIMAL_NORMAL;
        u->exponent = biased - 1023;
        sig = (frac | (1ull << 52)) << 11;
    }
    u->significand[0] = static_cast<uint32_t>(sig >> 32);
    u->significand[1] = static_cast<uint32_t>(sig);
}

void unpack_extended(uint64_t sig, uint32_t sign_exponent, unpacked *u) {
    u->sign = (sign_exponent >> 15) & 1;
    int biased = sign_exponent & 0x7FFF;
    for (int i = 0; i < 5; ++i) u->significand[i] = 0;
    if (biased == 0x7FFF) {
        uint64_t frac = sig & 0x7FFFFFFFFFFFFFFFull;
        u->fpclass = frac == 0 ? DECIMAL_INFINITY
                     : (frac >> 62) & 1 ? DECIMAL_QUIET_NAN
                                         : DECIMAL_SIGNALING_NAN;
        u->exponent = 0;
        return;
    }
    if (sig == 0) {
        u->fpclass = DECIMAL_ZERO;
        u->exponent = 0;
        return;
    }
    int lead = 63 - __builtin_clzll(sig);
    int e = (biased == 0 ? 1 : biased) - 16383 - (63 - lead);
    u->fpclass = e < -16382 ? DECIMAL_SUBNORMAL : DECIMAL_NORMAL;
    u->exponent = e;
    sig <<= 63 - lead;
    u->significand[0] = static_cast<uint32_t>(sig >> 32);
    u->significand[1] = static_cast<uint32_t>(sig);
}

void unpack_quadruple(const uint32_t storage[4], unpacked *u) {
    uint32_t top = storage[3];
    u->sign = top >> 31;
    int biased = (top >> 16) & 0x7FFF;
    uint32_t f[4] = {top & 0xFFFF, storage[2], storage[1], storage[0]};
    bool frac_zero = (f[0] | f[1] | f[2] | f[3]) == 0;
    for (int i = 0; i < 5; ++i) u->significand[i] = 0;
    if (biased == 0x7FFF) {
        u->fpclass = frac_zero ? DECIMAL_INFINITY : (top & 0x8000) ? DECIMAL_QUIET_NAN : DECIMAL_SIGNALING_NAN;
        u->exponent = 0;
        return;
    }
    if (biased == 0 && frac_zero) {
        u->fpclass = DECIMAL_ZERO;
        u->exponent = 0;
        return;
    }
    if (biased != 0) f[0] |= 0x10000;
    // the leading bit to bit 127
    int lead = 0;
    for (int i = 0; i < 4; ++i)
        if (f[i]) {
            lead = 32 * (3 - i) + bit_length(f[i]) - 1;
            break;
        }
    int up = 127 - lead;
    uint32_t w[4];
    int ws = up / 32, bs = up % 32;
    for (int i = 0; i < 4; ++i) {
        uint32_t hi = i + ws < 4 ? f[i + ws] : 0;
        uint32_t lo = i + ws + 1 < 4 ? f[i + ws + 1] : 0;
        w[i] = bs ? (hi << bs) | (lo >> (32 - bs)) : hi;
    }
    for (int i = 0; i < 4; ++i) u->significand[i] = w[i];
    u->fpclass = biased == 0 ? DECIMAL_SUBNORMAL : DECIMAL_NORMAL;
    u->exponent = (biased == 0 ? 1 : biased) - 16383 - (112 - lead);
}

uint32_t pack_single(const packed_binary *p) {
    return (static_cast<uint32_t>(p->sign) << 31) | (static_cast<uint32_t>(p->biased_exponent) << 23) |
           (p->significand[3] & 0x7FFFFF);
}

uint64_t pack_double(const packed_binary *p) {
    uint64_t sig = (static_cast<uint64_t>(p->significand[2]) << 32) | p->significand[3];
    return (static_cast<uint64_t>(p->sign) << 63) | (static_cast<uint64_t>(p->biased_exponent) << 52) |
           (sig & 0xFFFFFFFFFFFFFull);
}

void pack_extended(const packed_binary *p, uint64_t *significand, uint16_t *sign_exponent) {
    uint64_t sig = (static_cast<uint64_t>(p->significand[2]) << 32) | p->significand[3];
    if (p->biased_exponent == 0x7FFF) sig |= 1ull << 63;  // the explicit leading bit of infinity and NaN
    *significand = sig;
    *sign_exponent = static_cast<uint16_t>((p->sign << 15) | p->biased_exponent);
}

void pack_quadruple(const packed_binary *p, uint32_t storage[4]) {
    storage[3] = (static_cast<uint32_t>(p->sign) << 31) | (static_cast<uint32_t>(p->biased_exponent) << 16) |
                 (p->significand[0] & 0xFFFF);
    storage[2] = p->significand[1];
    storage[1] = p->significand[2];
    storage[0] = p->significand[3];
}

// Digit strings from the decimal engine: the tails shared by econvert,
// fconvert and their REAL(4) and REAL(16) kin, and the directed forms that
// output under RU, RD and RZ uses.
#include <string.h>

#include "platform/big_decimal.h"

namespace {

int convert(const unpacked *value, int rd, int df, int ndigits, decimal_record *rec) {
    decimal_mode mode = {rd, df, ndigits};
    int flags = binary_to_decimal_record(value, &mode, rec);
    if (flags) __x86quad__base_conversion_set_exception(flags);
    return flags;
}

const char *infinity_text(int ndigits) { return ndigits >= 8 ? "Infinity" : "Inf"; }

}  // namespace

char *convert_significant_digits(const unpacked *value, int rd, int ndigits, int *decimal_point, int *sign,
                                 char *buf) {
    decimal_record rec;
    convert(value, rd, 1, ndigits, &rec);
    *sign = rec.sign;
    switch (rec.fpclass) {
    case DECIMAL_ZERO:
        *decimal_point = 1;
        if (ndigits >= 1) {
            memset(buf, '0', static_cast<size_t>(ndigits));
            buf[ndigits] = '\0';
        }
        break;
    case DECIMAL_INFINITY:
        *decimal_point = 0;
        strcpy(buf, infinity_text(ndigits));
        break;
    case DECIMAL_QUIET_NAN:
    case DECIMAL_SIGNALING_NAN:
        *decimal_point = 0;
        strcpy(buf, "NaN");
        break;
    default:
        *decimal_point = rec.exponent + rec.ndigits;
        if (ndigits >= 1) {
            // More digits than the record holds are zeros.
            memcpy(buf, rec.ds, static_cast<size_t>(rec.ndigits));
            if (ndigits > rec.ndigits) memset(buf + rec.ndigits, '0', static_cast<size_t>(ndigits - rec.ndigits));
            buf[ndigits] = '\0';
        }
        break;
    }
    return buf;
}

char *convert_fixed_digits(const unpacked *value, int rd, int ndigits, int *decimal_point, int *sign, char *buf) {
    decimal_record rec;
    convert(value, rd, 0, ndigits, &rec);
    *sign = rec.sign;
    switch (rec.fpclass) {
    case DECIMAL_ZERO: {
        int n = ndigits > 1 ? ndigits : 1;
        *decimal_point = 0;
        memset(buf, '0', static_cast<size_t>(n));
        buf[n] = '\0';
        return buf;
    }
    case DECIMAL_INFINITY:
        *decimal_point = 0;
        return const_cast<char *>(infinity_text(ndigits));
    case DECIMAL_QUIET_NAN:
    case DECIMAL_SIGNALING_NAN:
        *decimal_point = 0;
        return const_cast<char *>("NaN");
    default:
        *decimal_point = rec.ndigits + rec.exponent;
        memcpy(buf, rec.ds, static_cast<size_t>(rec.ndigits) + 1);
        return buf;
    }
}

namespace {

// The digits of ds * 10**exponent down to the place 10**-d, dropped digits
// cut off (up clear) or raising the last kept digit by one (up set), with
// zeros filled in as far as that place.
void convert_string(const decimal_record *rec, int d, bool up, int *decimal_point, char *buf) {
    const int nd = rec->ndigits;
    const long decpt = static_cast<long>(nd) + rec->exponent;
    const int64_t keep = static_cast<int64_t>(decpt) + d;  // digits down to 10**-d
    bool dropped = false;
    if (keep <= 0) {
        // the whole value lies below the last kept place
        if (up) {
            *decimal_point = 1 - d;
            strcpy(buf, "1");
        } else {
            int n = d + 1 > 1 ? d + 1 : 1;
            *decimal_point = 0;
            memset(buf, '0', static_cast<size_t>(n));
            buf[n] = '\0';
        }
        return;
    }
    const long n = static_cast<long>(keep);
    if (keep >= nd) {
        memcpy(buf, rec->ds, static_cast<size_t>(nd));
        memset(buf + nd, '0', static_cast<size_t>(keep - nd));
    } else {
        memcpy(buf, rec->ds, static_cast<size_t>(keep));
        for (long i = keep; i < nd && !dropped; ++i) dropped = rec->ds[i] != '0';
    }
    buf[n] = '\0';
    *decimal_point = static_cast<int>(decpt);
    if (!up || !dropped) return;
    long i = n - 1;
    while (i >= 0 && buf[i] == '9') buf[i--] = '0';
    if (i >= 0) {
        ++buf[i];
        return;
    }
    // a carry past the first digit: one digit more
    memmove(buf + 1, buf, static_cast<size_t>(n) + 1);
    buf[0] = '1';
    ++*decimal_point;
}

}  // namespace

char *convert_directed(const unpacked *value, int up, int significant, int ndigits, int *decimal_point, int *sign,
                       char *buf) {
    decimal_record rec;
    convert(value, up ? DECIMAL_ROUND_UP : DECIMAL_ROUND_DOWN, 1, significant, &rec);
    *sign = rec.sign;
    switch (rec.fpclass) {
    case DECIMAL_INFINITY:
        *decimal_point = 0;
        strcpy(buf, "Inf");
        return buf;
    case DECIMAL_QUIET_NAN:
    case DECIMAL_SIGNALING_NAN:
        *decimal_point = 0;
        strcpy(buf, "NaN");
        return buf;
    case DECIMAL_ZERO: {
        int n = ndigits + 1 > 1 ? ndigits + 1 : 1;
        *decimal_point = 0;
        memset(buf, '0', static_cast<size_t>(n));
        buf[n] = '\0';
        return buf;
    }
    default:
        // Up for a positive value going up or a negative one going down.
        convert_string(&rec, ndigits, (up != 0) != (rec.sign != 0), decimal_point, buf);
        return buf;
    }
}

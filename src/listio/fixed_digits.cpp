#include "listio/fixed_digits.h"

#include <fenv.h>
#include <stdio.h>

namespace krm::fixed_digits {

namespace {

// Copies the digits of text (sign and point skipped) up to `stop` (0 or the
// exponent letter); returns how many.
int copy_digits(const char *text, char stop, char *buf) {
    int n = 0;
    for (const char *p = text; *p && *p != stop; ++p)
        if (*p >= '0' && *p <= '9') buf[n++] = *p;
    buf[n] = 0;
    return n;
}

int parse_exponent(const char *p) {
    int sign = 1, x = 0;
    if (*p == '-') sign = -1;
    if (*p == '-' || *p == '+') ++p;
    while (*p >= '0' && *p <= '9') x = x * 10 + (*p++ - '0');
    return sign * x;
}

}  // namespace

int significant(double x, int count, char *buf) {
    char text[buffer_size];
    snprintf(text, sizeof text, "%.*e", count - 1, x);
    const char *e = text;
    while (*e && *e != 'e') ++e;
    copy_digits(text, 'e', buf);
    return *e ? parse_exponent(e + 1) + 1 : 1;
}

int fixed(double x, int places, char *buf) {
    char text[buffer_size];
    snprintf(text, sizeof text, "%.*f", places, x);
    const char *p = text;
    if (*p == '-') ++p;
    int integer = 0;
    while (p[integer] >= '0' && p[integer] <= '9') ++integer;
    if (integer == 1 && p[0] == '0') {
        // no integer digits: only the fraction's
        copy_digits(p + 1, 0, buf);
        return 0;
    }
    copy_digits(p, 0, buf);
    return integer;
}

int significant_directed(double x, int count, bool up, char *buf) {
    const int saved = fegetround();
    fesetround(up ? FE_UPWARD : FE_DOWNWARD);
    const int position = significant(x, count, buf);
    fesetround(saved);
    return position;
}

}  // namespace krm::fixed_digits

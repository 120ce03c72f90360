#include "listio/fixed_digits.h"

#include <string.h>

#include "platform/decimal_record.h"

namespace krm::fixed_digits {

int significant(double x, int count, char *buf) {
    int decpt = 0, sign = 0;
    econvert(x, count, &decpt, &sign, buf);
    return decpt;
}

int fixed(double x, int places, char *buf) {
    int decpt = 0, sign = 0;
    fconvert(x, places, &decpt, &sign, buf);
    return decpt;
}

int significant_directed(double x, int count, bool up, char *buf) {
    const decimal_mode mode = {up ? DECIMAL_ROUND_UP : DECIMAL_ROUND_DOWN, 1, count};
    decimal_record record;
    int flags = 0;
    double_to_decimal(&x, &mode, &record, &flags);
    const size_t n = strlen(record.ds);
    memcpy(buf, record.ds, n + 1);
    return record.exponent + static_cast<int>(n);
}

}  // namespace krm::fixed_digits

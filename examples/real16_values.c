/* REAL(16) arithmetic as a compiler emits it for
 *
 *       real(16) :: r, p, m
 *       r = sqrt(2.0_16)
 *       p = dprod(1.1d0, 3.0d0)
 *       m = modulo(-7.5_16, 2.0_16)
 *       print *, r, p, m, nint(2.5_16), huge(r)
 *
 * REAL(16) data lies in storage order: the word with the sign and exponent
 * last. The values are shown to 36 significant digits by the library's own
 * exact decimal conversion. */
#include <stdio.h>

#include <krm.h>
#include <krm/quad.h>
#include <krm/quad_decimal.h>

/* A REAL(16) constant, sign-and-exponent word first as one writes it. */
static krm_real16 q(uint32_t top, uint32_t w2, uint32_t w1, uint32_t w0) {
    krm_real16 v = {{w0, w1, w2, top}};
    return v;
}

static void show(const char *what, const krm_real16 *x) {
    char digits[DECIMAL_STRING_SIZE];
    int point = 0, sign = 0;
    x86_qeconvert(x, 36, &point, &sign, digits);
    printf("%-28s %s%c.%sE%+d\n", what, sign ? "-" : " ", digits[0], digits + 1, point - 1);
}

int main(void) {
    const krm_real16 two = q(0x40000000, 0, 0, 0);
    const krm_real16 minus_7_5 = q(0xC001E000, 0, 0, 0);
    const krm_real16 two_and_a_half = q(0x40004000, 0, 0, 0);
    const double a = 1.1, b = 3.0;
    krm_real16 r, p, m, h;

    __Qsqrt(&r, &two);
    __Qprod(&p, &a, &b);
    __f_modulo_Q(&m, &minus_7_5, &two);
    __max_normalq(&h);

    show("sqrt(2.0_16)", &r);
    show("dprod(1.1d0, 3.0d0)", &p);
    show("modulo(-7.5_16, 2.0_16)", &m);
    printf("%-28s %d\n", "nint(2.5_16)", __Qnint(&two_and_a_half));
    show("huge(1.0_16)", &h);
    return 0;
}

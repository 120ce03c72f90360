/* REAL(16) and COMPLEX(16) intrinsics as a compiler emits them for
 *
 *       real(16) :: x = 0.5_16, y = -1.0_16
 *       complex(16) :: z = (3.0_16, 4.0_16)
 *       print *, sin(x), cos(x), tan(x)
 *       print *, exp(x), log(x), log10(x), x ** 0.75_16
 *       print *, atan2(x, y), asin(x), sinh(x), tanh(x)
 *       print *, sqrt(z), exp(z), log(z), abs(z)
 *
 * Each intrinsic is a call with a pointer to its result and pointers to its
 * arguments; the results are printed in their shortest form. */
#include <krm.h>
#include <krm/quad.h>
#include <krm/quad_functions.h>

static const stmt_location at[4] = {
    {STMT_PRINT, 4, "functions.f90"},
    {STMT_PRINT, 5, "functions.f90"},
    {STMT_PRINT, 6, "functions.f90"},
    {STMT_PRINT, 7, "functions.f90"},
};

typedef void (*function1)(krm_real16 *, const krm_real16 *);

static void print_values(int line, const krm_real16 *values, int count) {
    io_control_list_write p = {IO_DEFAULT_UNIT, &at[line], 0, 0};
    __f90_sslw(&p);
    for (int i = 0; i < count; ++i) __f90_slw_r16_ref(&p, values[i].word);
    __f90_eslw(&p);
}

int main(void) {
    /* Storage order: the word with the sign and the exponent last. */
    const krm_real16 x = {{0, 0, 0, 0x3FFE0000u}};         /* 0.5 */
    const krm_real16 y = {{0, 0, 0, 0xBFFF0000u}};         /* -1.0 */
    const krm_real16 three_quarters = {{0, 0, 0, 0x3FFE8000u}};
    const krm_complex16 z = {{{0, 0, 0, 0x40008000u}}, {{0, 0, 0, 0x40010000u}}}; /* (3, 4) */
    krm_real16 r[4];

    const function1 trig[3] = {__Qsin, __Qcos, __Qtan};
    for (int i = 0; i < 3; ++i) trig[i](&r[i], &x);
    print_values(0, r, 3);

    __Qexp(&r[0], &x);
    __Qlog(&r[1], &x);
    __Qlog10(&r[2], &x);
    __Qpow(&r[3], &x, &three_quarters);
    print_values(1, r, 4);

    __Qatan2(&r[0], &x, &y);
    __Qasin(&r[1], &x);
    __Qsinh(&r[2], &x);
    __Qtanh(&r[3], &x);
    print_values(2, r, 4);

    krm_complex16 w[3];
    krm_real16 a;
    __Wsqrt(&w[0], &z);
    __Wexp(&w[1], &z);
    __Wlog(&w[2], &z);
    __Wabs(&a, &z);
    io_control_list_write p = {IO_DEFAULT_UNIT, &at[3], 0, 0};
    __f90_sslw(&p);
    for (int i = 0; i < 3; ++i) __f90_slw_c16(&p, w[i].re.word);
    __f90_slw_r16_ref(&p, a.word);
    __f90_eslw(&p);
    __f90_stop();
}

/* What a compiler emits for
 *
 *       real(16) :: third
 *       third = 1.0_16 / 3
 *       print *, 0.1, 0.1d0, 1.0d23, 2.0d0**(-1074)
 *       print *, (1.5, -2.0), 1.0/0.0, third
 *
 * Every real is written with the fewest digits that read back as the same
 * value. The REAL(16) third is passed as its four words in storage order. */
#include <math.h>

#include <krm.h>

static const stmt_location first_at = {STMT_PRINT, 3, "reals.f90"};
static const stmt_location second_at = {STMT_PRINT, 4, "reals.f90"};

int main(void) {
    io_control_list_write p = {IO_DEFAULT_UNIT, &first_at, 0, 0};
    __f90_sslw(&p);
    __f90_slw_r4(&p, 0.1f);
    __f90_slw_r8(&p, 0.1);
    __f90_slw_r8(&p, 1.0e23);
    __f90_slw_r8(&p, ldexp(1.0, -1074));
    __f90_eslw(&p);

    /* 1/3 in binary128: 0x3FFD5555...5555, the last word rounded to nearest. */
    const uint32_t third[4] = {0x55555555u, 0x55555555u, 0x55555555u, 0x3FFD5555u};
    const float z[2] = {1.5f, -2.0f};
    io_control_list_write q = {IO_DEFAULT_UNIT, &second_at, 0, 0};
    __f90_sslw(&q);
    __f90_slw_c4(&q, z);
    __f90_slw_r4(&q, INFINITY);
    __f90_slw_r16_ref(&q, third);
    __f90_eslw(&q);
    __f90_stop();
}

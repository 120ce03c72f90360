// The current rounding direction, numbered as the library numbers it:
// 0 to nearest, 1 down, 2 up, 3 towards zero.
#pragma once

#include <fenv.h>

namespace krm::platform {

enum rounding_direction : int {
    round_nearest = 0,
    round_down = 1,
    round_up = 2,
    round_to_zero = 3,
};

}  // namespace krm::platform

// The direction is the RC field of the x87 control word (bits 10 and 11),
// which fesetround sets together with the SSE one. glibc's fegetround hands
// the field back in place (0, 0x400, 0x800, 0xc00: FE_TONEAREST and its
// kin); the library counts the directions 0..3, which is the field shifted
// down. This is the only place that knows it. The word is read here
// directly rather than through fegetround, because the software REAL(16)
// arithmetic asks on every inexact result and a call into libm costs as
// much as the addition itself.
inline int krm_rounding_direction() {
#if defined(__i386__) || defined(__x86_64__)
    unsigned short control;
    __asm__ __volatile__("fnstcw %0" : "=m"(control));
    return (control >> 10) & 3;
#else
    switch (fegetround()) {
    case FE_DOWNWARD: return krm::platform::round_down;
    case FE_UPWARD: return krm::platform::round_up;
    case FE_TOWARDZERO: return krm::platform::round_to_zero;
    default: return krm::platform::round_nearest;
    }
#endif
}

extern "C" {
// The platform's name for the same question; conversions read it before
// each number.
int __xgetRD(void);
}

// The floating-point status flags kept as they were across a computation in
// double arithmetic. The REAL(16) functions raise no flag, yet some of their
// low-order terms, their large-argument reduction and the start of the cube
// root are computed in doubles; a scope of this kind puts the flags back at
// its end. Our doubles are SSE arithmetic in both builds, so their flags
// live in MXCSR; on i386 the C library's own functions may use the x87 as
// well, whose flags are put back only when the scope raised one.
#pragma once

#include <stdint.h>

namespace krm::platform {

class keep_fp_flags {
public:
    keep_fp_flags() : saved_(__builtin_ia32_stmxcsr()) {
#if defined(__i386__)
        __asm__ __volatile__("fnstsw %0" : "=m"(x87_status_));
#endif
    }
    ~keep_fp_flags() {
        __builtin_ia32_ldmxcsr(saved_);
#if defined(__i386__)
        uint16_t now;
        __asm__ __volatile__("fnstsw %0" : "=m"(now));
        if ((now ^ x87_status_) & 0xFF) {
            // The status word is only written through a whole environment;
            // storing it masks the exceptions, loading it back restores the
            // control word as it was.
            uint32_t env[7];
            __asm__ __volatile__("fnstenv %0" : "=m"(env));
            env[1] = (env[1] & ~0xFFu) | (x87_status_ & 0xFFu);
            __asm__ __volatile__("fldenv %0" : : "m"(env));
        }
#endif
    }
    keep_fp_flags(const keep_fp_flags &) = delete;
    keep_fp_flags &operator=(const keep_fp_flags &) = delete;

private:
    unsigned saved_;
#if defined(__i386__)
    uint16_t x87_status_;
#endif
};

}  // namespace krm::platform

// The floating-point status flags kept as they were across a computation in
// double arithmetic. The REAL(16) functions raise no flag, yet some of their
// low-order terms and their large-argument reduction are computed in
// doubles; a scope of this kind puts the flags back at its end. Doubles are
// SSE arithmetic in both builds, so the flags live in MXCSR alone.
#pragma once

namespace krm::platform {

class keep_fp_flags {
public:
    keep_fp_flags() : saved_(__builtin_ia32_stmxcsr()) {}
    ~keep_fp_flags() { __builtin_ia32_ldmxcsr(saved_); }
    keep_fp_flags(const keep_fp_flags &) = delete;
    keep_fp_flags &operator=(const keep_fp_flags &) = delete;

private:
    unsigned saved_;
};

}  // namespace krm::platform

// Timing and operands shared by the REAL(16) benchmarks.
#pragma once

#include <stdint.h>
#include <time.h>

namespace bench {

// Every timing runs over arrays of this many operands, so that throughput,
// not latency, is measured.
constexpr int batch = 1024;

// CPU time of this thread: other work on the machine then slows the
// timings less than it would wall time.
inline double now() {
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec * 1e-9;
}

// xorshift64: cheap, and plenty for operands.
inline uint64_t next() {
    static uint64_t state = 0x2545F4914F6CDD1Dull;
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
}

// The best time per operation of body(), which does `batch` operations,
// over `timings` timings of about n operations each.
template <class Body>
double best_ns(long n, int timings, Body body) {
    double best = 1e30;
    for (int t = 0; t < timings; ++t) {
        double start = now();
        for (long done = 0; done < n; done += batch) body();
        double ns = (now() - start) * 1e9 / static_cast<double>((n + batch - 1) / batch * batch);
        if (ns < best) best = ns;
    }
    return best;
}

}  // namespace bench

// REAL(16) arithmetic: throughput of libkrm's software binary128 against
// GCC's __float128 (libgcc's software routines) and libquadmath's sqrtq, in
// the same run, on the same operands.
//
//   quad_bench [operations per timing, default 4000000]
//
// Each timing runs independent operations over arrays of 1024 operands (so
// that throughput, not latency, is measured), in CPU time of the thread;
// the best of 7 timings counts.
// Both sides are called out of line, libgcc linked statically like libkrm.
// Before timing, the results of the two are compared on every operand: the
// bench refuses to time code that disagrees (sqrtq excepted, which is not
// correctly rounded; its differences are counted).
#include <math.h>
#include <quadmath.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <initializer_list>

#include "bench_timing.h"
#include "quad/long_double.h"

namespace {

constexpr int size = bench::batch;

krm_real16 a[size], b[size], r[size];
__float128 x[size], y[size], z[size];


// Operands with random 112-bit fractions and exponents within a few
// powers of two of 1, so that every operation does its full work.
void fill() {
    for (int i = 0; i < size; ++i) {
        for (krm_real16 *v : {&a[i], &b[i]}) {
            uint64_t hi = (bench::next() & 0x0000FFFFFFFFFFFFull) | (static_cast<uint64_t>(16383 - 8 + bench::next() % 16) << 48);
            uint64_t lo = bench::next();
            if (v == &a[i] && (bench::next() & 1)) hi |= 0x8000000000000000ull;
            memcpy(&v->word[0], &lo, 8);
            memcpy(&v->word[2], &hi, 8);
        }
        memcpy(&x[i], &a[i], 16);
        memcpy(&y[i], &b[i], 16);
    }
}

__attribute__((noinline)) void krm_add() {
    for (int i = 0; i < size; ++i) _Qadd(&r[i], &a[i], &b[i]);
}
__attribute__((noinline)) void krm_mul() {
    for (int i = 0; i < size; ++i) _Qmul(&r[i], &a[i], &b[i]);
}
__attribute__((noinline)) void krm_div() {
    for (int i = 0; i < size; ++i) _Qdiv(&r[i], &a[i], &b[i]);
}
__attribute__((noinline)) void krm_sqrt() {
    for (int i = 0; i < size; ++i) __Qsqrt(&r[i], &b[i]);
}
__attribute__((noinline)) void gcc_add() {
    for (int i = 0; i < size; ++i) z[i] = x[i] + y[i];
}
__attribute__((noinline)) void gcc_mul() {
    for (int i = 0; i < size; ++i) z[i] = x[i] * y[i];
}
__attribute__((noinline)) void gcc_div() {
    for (int i = 0; i < size; ++i) z[i] = x[i] / y[i];
}
__attribute__((noinline)) void gcc_sqrt() {
    for (int i = 0; i < size; ++i) z[i] = sqrtq(y[i]);
}

// How many results of the last two runs differ in any bit.
long differences() {
    long n = 0;
    for (int i = 0; i < size; ++i) n += memcmp(&r[i], &z[i], 16) != 0;
    return n;
}

#if defined(__i386__)
// The floor of the other way to multiply on i386: the whole x87 state saved
// to a static area and the control word switched and restored, as a scheme
// computing on double pieces must do, with the pieces' work in between (two
// significands cut into pieces of 17, 24, 24, 24 and 24 bits, converted, the
// 25 partial products summed in five columns, four magic additions to carve
// the result). It leaves out the normalising, the exact splitting of the
// column sums and the rounding, so it costs less than a real
// multiplication of that kind: if it is already slower than _Qmul, so would
// that be. Its results mean nothing and are not compared.
unsigned char x87_area[108];
// With whole_state false, only the control word is saved and switched: the
// floor of the pieces' arithmetic alone.
template <bool whole_state>
__attribute__((noinline)) void piece_floor_one(krm_real16 *res, const krm_real16 *p, const krm_real16 *q) {
    unsigned short old_cw;
    if (whole_state)
        __asm__ __volatile__("fnsave %0" : "=m"(x87_area));
    else
        __asm__ __volatile__("fnstcw %0" : "=m"(old_cw));
    unsigned short cw = whole_state ? (0x037F & 0xF0C0) | 0x063F : (old_cw & 0xF0C0) | 0x063F;
    __asm__ __volatile__("fldcw %0" : : "m"(cw));
    double u[5], v[5];
    const uint32_t *pw = p->word, *qw = q->word;
    u[0] = static_cast<double>(static_cast<int>((pw[3] & 0xFFFF) | 0x10000));
    u[1] = static_cast<double>(static_cast<int>(pw[2] >> 8));
    u[2] = static_cast<double>(static_cast<int>(((pw[2] & 0xFF) << 16) | (pw[1] >> 16)));
    u[3] = static_cast<double>(static_cast<int>(((pw[1] & 0xFFFF) << 8) | (pw[0] >> 24)));
    u[4] = static_cast<double>(static_cast<int>(pw[0] & 0xFFFFFF));
    v[0] = static_cast<double>(static_cast<int>((qw[3] & 0xFFFF) | 0x10000));
    v[1] = static_cast<double>(static_cast<int>(qw[2] >> 8));
    v[2] = static_cast<double>(static_cast<int>(((qw[2] & 0xFF) << 16) | (qw[1] >> 16)));
    v[3] = static_cast<double>(static_cast<int>(((qw[1] & 0xFFFF) << 8) | (qw[0] >> 24)));
    v[4] = static_cast<double>(static_cast<int>(qw[0] & 0xFFFFFF));
    double col[9] = {};
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j) col[i + j] += u[i] * v[j];
    double sum = 0;
    for (int k = 8; k >= 0; --k) sum = sum * 5.9604644775390625e-08 + col[k];
    volatile double carve = sum + 68719476736.0;
    double c1 = carve - 68719476736.0;
    volatile double c2 = (sum - c1) + 16.0;
    volatile double c3 = (sum - c1) + 3.725290298461914e-09;
    volatile double c4 = (sum - c1) + 8.673617379884035e-19;
    res->word[0] = static_cast<uint32_t>(c4);
    res->word[1] = static_cast<uint32_t>(c3);
    res->word[2] = static_cast<uint32_t>(c2);
    res->word[3] = static_cast<uint32_t>(c1);
    if (whole_state)
        __asm__ __volatile__("frstor %0" : : "m"(x87_area));
    else
        __asm__ __volatile__("fldcw %0" : : "m"(old_cw));
}
template <bool whole_state>
__attribute__((noinline)) void piece_floor() {
    for (int i = 0; i < size; ++i) piece_floor_one<whole_state>(&r[i], &a[i], &b[i]);
}
#endif

}  // namespace

int main(int argc, char **argv) {
    long n = argc > 1 ? atol(argv[1]) : 4000000;
    fill();
    struct {
        const char *name;
        void (*krm)();
        void (*gcc)();
        const char *peer;
        bool must_agree;
    } ops[] = {
        {"add", krm_add, gcc_add, "__float128 +", true},
        {"mul", krm_mul, gcc_mul, "__float128 *", true},
        {"div", krm_div, gcc_div, "__float128 /", true},
        {"sqrt", krm_sqrt, gcc_sqrt, "sqrtq", false},
    };
    printf("REAL(16) throughput, %s build, round to nearest; best of 7 timings of %ld operations\n",
           sizeof(void *) == 8 ? "x86-64" : "i386", n);
    printf("%-5s %12s %14s %-13s %7s\n", "op", "libkrm ns/op", "peer ns/op", "peer", "ratio");
    int status = 0;
    for (const auto &op : ops) {
        op.krm();
        op.gcc();
        long diff = differences();
        if (diff && op.must_agree) {
            fprintf(stderr, "quad_bench: %s: libkrm and %s differ on %ld of %d operands\n", op.name, op.peer, diff,
                    size);
            status = 1;
            continue;
        }
        double k = bench::best_ns(n, 7, op.krm), g = bench::best_ns(n, 7, op.gcc);
        printf("%-5s %12.2f %14.2f %-13s %7.2f", op.name, k, g, op.peer, g / k);
        if (diff) printf("   (%ld of %d results differ: %s is not correctly rounded)", diff, size, op.peer);
        printf("\n");
    }
#if defined(__i386__)
    printf("%-5s %12.2f   (the floor of a multiplication on double pieces, x87 state saved)\n", "mul'",
           bench::best_ns(n, 7, piece_floor<true>));
    printf("%-5s %12.2f   (the same, only the control word saved)\n", "mul''", bench::best_ns(n, 7, piece_floor<false>));
#endif
    printf("ratio = peer time / libkrm time; above 1 means libkrm is faster\n");
    return status;
}

// The long sweep of the REAL(16) primitives: the same oracles as the tests,
// over many more operands, with a digest of every result so that the i386
// and x86-64 builds can be shown to agree bit for bit. Not part of ctest.
//
//   quad_sweep [operands per operation and direction, default 25000000]
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "quad/quad_support.h"

using namespace quadtest;

namespace {

struct tally {
    const char *name;
    long checked = 0, wrong = 0, oracle_wrong = 0;
    uint64_t digest = 0xCBF29CE484222325ull;

    void fold(const krm_real16 &r) {
        for (uint32_t w : r.word) {
            for (int i = 0; i < 4; ++i) {
                digest ^= (w >> (8 * i)) & 0xFF;
                digest *= 0x100000001B3ull;
            }
        }
    }
    void fail(const char *what, const krm_real16 &a, const krm_real16 &b, const krm_real16 &r) {
        if (wrong++ < 5)
            fprintf(stderr, "%s %s: %s , %s gave %s\n", name, what, hex(a).c_str(), hex(b).c_str(), hex(r).c_str());
    }
};

bool finite_nonzero(__float128 x) { return x == x && x != 0 && !__builtin_isinf_sign(x); }

}  // namespace

int main(int argc, char **argv) {
    long n = argc > 1 ? atol(argv[1]) : 25000000;
    tally t[6] = {{"add"}, {"sub"}, {"mul"}, {"div"}, {"sqrt"}, {"qtod"}};
    time_t start = time(nullptr);
    for (const direction &d : directions) {
        rounding_scope mode(d.fe);
        operands gen(0xC0FFEE00 + d.number);
        for (long i = 0; i < n; ++i) {
            krm_real16 a, b, r;
            for (int o = 0; o < 4; ++o) {
                if (o < 2)
                    gen.for_add(a, b);
                else
                    gen.for_mul(a, b, o == 3);
                __float128 x = to_f128(a), y = to_f128(b), e;
                switch (o) {
                case 0: _Qadd(&r, &a, &b); e = x + y; break;
                case 1: _Qsub(&r, &a, &b); e = x - y; break;
                case 2: _Qmul(&r, &a, &b); e = x * y; break;
                default: _Qdiv(&r, &a, &b); e = x / y; break;
                }
                t[o].checked++;
                t[o].fold(r);
                krm_real16 expected = e != e ? default_nan() : from_f128(e);
                if (!same_bits(r, expected)) {
                    if (o == 3 && finite_nonzero(x) && finite_nonzero(y) && quotient_is_correct(a, b, r, d.number) &&
                        !quotient_is_correct(a, b, expected, d.number))
                        t[o].oracle_wrong++;
                    else
                        t[o].fail(d.name, a, b, r);
                }
            }
            krm_real16 s = gen.for_sqrt();
            __Qsqrt(&r, &s);
            t[4].checked++;
            t[4].fold(r);
            if (!sqrt_is_correct(s, r, d.number)) t[4].fail(d.name, s, s, r);

            krm_real16 q = gen.any();
            double v = _Qqtod(&q);
            uint32_t top = q.word[3] & 0x7FFFFFFFu;
            if (top >= 0x3C010000u && top < 0x7FFF0000u) {
                // The normal range and overflow: IEEE rounding.
                double e = static_cast<double>(to_f128(q));
                t[5].checked++;
                if (memcmp(&v, &e, 8) != 0) t[5].fail(d.name, q, q, q);
            }
            krm_real16 vr;
            memcpy(&vr, &v, 8);
            vr.word[2] = vr.word[3] = 0;
            t[5].fold(vr);
        }
    }
    long bad = 0;
    printf("%-5s %12s %8s %14s  %s\n", "op", "checked", "wrong", "oracle wrong", "digest of the results");
    for (const tally &x : t) {
        printf("%-5s %12ld %8ld %14ld  %016llx\n", x.name, x.checked, x.wrong, x.oracle_wrong,
               static_cast<unsigned long long>(x.digest));
        bad += x.wrong;
    }
    printf("%ld operands per operation and direction, 4 directions, %s build, %lds\n", n,
           sizeof(void *) == 8 ? "x86-64" : "i386", static_cast<long>(time(nullptr) - start));
    return bad != 0;
}

// Every positive finite REAL(4) value through both shortest-digit methods:
// the fixed-width one must give the exact one's digits wherever it answers.
// Each value's digits must also read back as the value, powers of two
// excepted (the equal gap may give a shorter string on their lower side).
// Not a ctest test: it takes the better part of an hour on two cores.
//
//   cvt_real_exhaustive [threads [first_bits last_bits]]
//
// Prints the counts and every difference; exits 1 if there was any.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "listio/shortest_digits.h"

namespace {

struct tally {
    uint64_t values = 0, answered = 0, gave_up = 0, differ = 0, not_read_back = 0, powers_not_read_back = 0;
};

std::atomic<uint32_t> next_chunk{0};
constexpr uint32_t kChunk = 1u << 20;

void run(uint32_t first, uint32_t last, tally &t) {
    for (;;) {
        uint64_t start = static_cast<uint64_t>(first) + static_cast<uint64_t>(next_chunk.fetch_add(1)) * kChunk;
        if (start > last) return;
        uint64_t end = start + kChunk - 1 < last ? start + kChunk - 1 : last;
        for (uint64_t b = start; b <= end; ++b) {
            const uint32_t bits = static_cast<uint32_t>(b);
            const int biased = static_cast<int>(bits >> 23);
            uint64_t f = bits & 0x7fffff;
            int e;
            if (biased == 0) {
                e = 1 - 150;
                while (!(f >> 23)) {
                    f <<= 1;
                    --e;
                }
            } else {
                f |= 0x800000;
                e = biased - 150;
            }
            ++t.values;
            char exact[krm::shortest::max_digits], fast[krm::shortest::max_digits];
            int ne, ke, nf, kf;
            uint16_t limbs[2] = {static_cast<uint16_t>(f), static_cast<uint16_t>(f >> 16)};
            krm::shortest::exact_digits(limbs, 24, e, 0, exact, &ne, &ke);
            if (krm::shortest::fast_digits(f, e, fast, &nf, &kf)) {
                ++t.answered;
                if (nf != ne || kf != ke || memcmp(fast, exact, static_cast<size_t>(ne)) != 0) {
                    if (++t.differ <= 20)
                        printf("DIFFER 0x%08x: exact %.*se%d fixed-width %.*se%d\n", bits, ne, exact, ke, nf, fast,
                               kf);
                }
            } else {
                ++t.gave_up;
            }
            char text[64];
            snprintf(text, sizeof text, "%.*se%d", ne, exact, ke);
            float x = strtof(text, nullptr);
            uint32_t xb;
            memcpy(&xb, &x, sizeof xb);
            if (xb != bits) {
                if ((bits & 0x7fffff) == 0 && biased != 0)
                    ++t.powers_not_read_back;
                else if (++t.not_read_back <= 20)
                    printf("NOT READ BACK 0x%08x: %s gives 0x%08x\n", bits, text, xb);
            }
        }
    }
}

}  // namespace

int main(int argc, char **argv) {
    unsigned threads = argc > 1 ? static_cast<unsigned>(atoi(argv[1])) : std::thread::hardware_concurrency();
    if (threads == 0) threads = 1;
    uint32_t first = argc > 3 ? static_cast<uint32_t>(strtoul(argv[2], nullptr, 0)) : 0x00000001u;
    uint32_t last = argc > 3 ? static_cast<uint32_t>(strtoul(argv[3], nullptr, 0)) : 0x7f7fffffu;
    auto t0 = std::chrono::steady_clock::now();
    std::vector<tally> tallies(threads);
    std::vector<std::thread> workers;
    for (unsigned i = 0; i < threads; ++i) workers.emplace_back(run, first, last, std::ref(tallies[i]));
    for (auto &w : workers) w.join();
    tally all;
    for (const tally &t : tallies) {
        all.values += t.values;
        all.answered += t.answered;
        all.gave_up += t.gave_up;
        all.differ += t.differ;
        all.not_read_back += t.not_read_back;
        all.powers_not_read_back += t.powers_not_read_back;
    }
    double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    printf("REAL(4) bit patterns 0x%08x to 0x%08x: %llu values in %.0f s on %u threads\n", first, last,
           static_cast<unsigned long long>(all.values), secs, threads);
    printf("fixed-width method answered %llu, gave up %llu, differed from the exact method %llu\n",
           static_cast<unsigned long long>(all.answered), static_cast<unsigned long long>(all.gave_up),
           static_cast<unsigned long long>(all.differ));
    printf("digits not reading back: %llu (powers of two, allowed: %llu)\n",
           static_cast<unsigned long long>(all.not_read_back),
           static_cast<unsigned long long>(all.powers_not_read_back));
    return all.differ == 0 && all.not_read_back == 0 ? 0 : 1;
}

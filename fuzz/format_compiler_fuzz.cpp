// Arbitrary bytes as the text of a run-time format, compiled in return form;
// every block that comes out is checked word by word against the rules of
// its layout. Nothing is printed: a broken rule traps.
//
// The first byte chooses how the rest is offered:
//   bit 0     the older dialect
//   bits 1-2  0, 3: one character variable; 1: a character array, its
//             elements in storage order (bit 6: in reverse, by a negative
//             stride); 2: a two-dimensional array read across its storage
//             (column order over row-major elements)
//   bits 3-5  element length less 1

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "format/parsed_format.h"
#include "krm/format.h"

namespace {

void check(bool ok) {
    if (!ok) __builtin_trap();
}

bool is_blank(unsigned char c) { return c == ' ' || c == '\t'; }

int upper(int c) { return c >= 'a' && c <= 'z' ? c - 32 : c; }

// The letters a data operation's pos may point at.
const char *letters_of(int32_t code) {
    if (code == KRM_FMT_A || code == KRM_FMT_AW) return "A";
    if (code >= KRM_FMT_B && code <= KRM_FMT_BWM) return "B";
    if (code >= KRM_FMT_D && code <= KRM_FMT_DWDE) return "D";
    if (code >= KRM_FMT_E && code <= KRM_FMT_ESWDE) return "EV";  // V: VE, VEN, VES without d
    if (code >= KRM_FMT_F && code <= KRM_FMT_FWD) return "FV";
    if (code >= KRM_FMT_G && code <= KRM_FMT_GWDE) return "GV";
    if (code >= KRM_FMT_I && code <= KRM_FMT_IWM) return "I";
    if (code == KRM_FMT_L || code == KRM_FMT_LW) return "L";
    if (code >= KRM_FMT_O && code <= KRM_FMT_OWM) return "O";
    if (code >= KRM_FMT_Z && code <= KRM_FMT_ZWM) return "Z";
    if (code >= KRM_FMT_VEWD && code <= KRM_FMT_VGWDE) return "V";
    if (code == KRM_FMT_YWD || code == KRM_FMT_YWDE) return "Y";
    return nullptr;
}

// Codes that the compiler may emit at all.
bool emitted(int32_t code) {
    if (code < 1 || code > KRM_FMT_LAST) return false;
    if (code == KRM_FMT_S_RESERVED || code == KRM_FMT_VDWD || code == KRM_FMT_VDWDE) return false;
    return krm::fmt::fixed_op_words(code) > 0 || code == KRM_FMT_STRING ||
           code == KRM_FMT_HOLLERITH;
}

// `text` is the source in the order the compiler reads it.
void check_block(const parsed_format *f, const int32_t *counters, const std::string &text,
                 bool compat) {
    const int32_t *w = krm::fmt::words(f);
    check(static_cast<uint32_t>(w[0]) == KRM_FORMAT_MAGIC);
    check(w[1] == 4);
    const int32_t extent = w[2];
    const int32_t text_bytes = w[3];
    check(extent >= 2 && text_bytes >= 3);

    // The saved text is the source from its first non-blank character up to
    // the closing parenthesis, then a NUL and zero padding.
    size_t start = 0;
    while (start < text.size() && is_blank(static_cast<unsigned char>(text[start]))) ++start;
    const size_t saved_len = static_cast<size_t>(text_bytes) - 1;
    check(start + saved_len <= text.size());
    const char *saved = reinterpret_cast<const char *>(w + 4 + extent);
    check(memcmp(saved, text.data() + start, saved_len) == 0);
    check(saved[0] == '(' && saved[saved_len - 1] == ')');
    for (size_t k = saved_len; k < (static_cast<size_t>(text_bytes) + 3) / 4 * 4; ++k)
        check(saved[k] == 0);

    // The operations, up to the one end operation.
    struct open_repeat {
        int32_t at, slot;
    };
    std::vector<open_repeat> repeats;
    std::vector<int32_t> starts;
    int32_t deepest = 0;
    int32_t pc = 4;
    const int32_t limit = 4 + extent;
    for (;;) {
        check(pc < limit);
        const int32_t *op = w + pc;
        const int32_t code = op[0];
        check(emitted(code));
        if (code == KRM_FMT_STRING || code == KRM_FMT_HOLLERITH) check(pc + 1 < limit && op[1] >= 0);
        const int64_t n = krm::fmt::op_words(op);
        check(n > 0 && pc + n <= limit);
        starts.push_back(pc);
        switch (code) {
        case KRM_FMT_REPEAT:
            check(op[1] == static_cast<int32_t>(repeats.size()) && op[2] >= 0);
            repeats.push_back({pc, op[1]});
            if (static_cast<int32_t>(repeats.size()) > deepest) deepest = static_cast<int32_t>(repeats.size());
            break;
        case KRM_FMT_REPEAT_END:
            check(!repeats.empty() && repeats.back().slot == op[1] && repeats.back().at + 3 == op[2]);
            repeats.pop_back();
            break;
        case KRM_FMT_RADIX:
            check(compat && op[1] >= 2 && op[1] <= 36);
            break;
        case KRM_FMT_SLASH:
            check(op[1] >= 1);
            break;
        case KRM_FMT_T:
            check(op[1] >= 1);
            break;
        case KRM_FMT_TL:
        case KRM_FMT_TR:
            check(op[1] >= (compat ? 0 : 1));
            break;
        case KRM_FMT_Q:
            check(op[1] == 1);
            break;
        case KRM_FMT_STRING:
        case KRM_FMT_HOLLERITH: {
            // NUL padding behind the bytes.
            const unsigned char *bytes = reinterpret_cast<const unsigned char *>(op + 2);
            for (int64_t k = op[1]; k < (n - 2) * 4; ++k) check(bytes[k] == 0);
            check(op[1] > 0 || compat || code == KRM_FMT_STRING);
            break;
        }
        default:
            break;
        }
        if (const char *letters = letters_of(code)) {
            const int32_t pos = op[n - 1];
            check(pos >= 1 && static_cast<size_t>(pos) <= saved_len);
            check(strchr(letters, upper(static_cast<unsigned char>(saved[pos - 1]))) != nullptr);
        }
        pc += static_cast<int32_t>(n);
        if (code == KRM_FMT_END) break;
    }
    check(repeats.empty());
    // The counter slots follow the end operation; one per level of nesting.
    check(limit - pc == deepest);
    check(counters == w + pc);
    for (int32_t s = 0; s < deepest; ++s) check(counters[s] == 0);
    // Reversion goes to an operation, or to the end operation itself.
    const int32_t reversion = w[pc - 1];
    bool found = false;
    for (int32_t s : starts) found = found || s == reversion;
    check(found);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1) return 0;
    const uint8_t mode = data[0];
    ++data;
    --size;
    if (size > 1u << 20) return 0;
    const bool compat = mode & 1;
    const int shape = (mode >> 1) & 3;
    const int32_t elem = ((mode >> 3) & 7) + 1;

    static int32_t unset;
    parsed_format *const not_stored = reinterpret_cast<parsed_format *>(&unset);
    parsed_format *f = not_stored;
    int32_t *counters = nullptr;
    auto entry = compat ? __f90_parse_format_f77compat : __f90_parse_format;
    std::string text;
    int32_t rc;

    // Every source lies in an allocation of its exact size, so that a read
    // beyond it is caught.
    if (shape == 1 || shape == 2) {
        const size_t count = size / static_cast<size_t>(elem);
        if (count == 0) return 0;
        char *storage = static_cast<char *>(malloc(count * elem));
        memcpy(storage, data, count * elem);
        std::vector<intptr_t> desc;
        if (shape == 1) {
            const bool reverse = mode & 0x40;
            desc = {reinterpret_cast<intptr_t>(reverse ? storage + (count - 1) * elem : storage),
                    static_cast<intptr_t>(count), reverse ? -elem : elem};
            for (size_t k = 0; k < count; ++k) {
                size_t e = reverse ? count - 1 - k : k;
                text.append(storage + e * elem, elem);
            }
        } else {
            // Rows of e1 elements in storage, read down the columns.
            const size_t e1 = count >= 2 ? 2 : 1;
            const size_t e0 = count / e1;
            desc = {reinterpret_cast<intptr_t>(storage), static_cast<intptr_t>(e0),
                    static_cast<intptr_t>(e1), static_cast<intptr_t>(e1 * elem), elem};
            for (size_t j = 0; j < e1; ++j)
                for (size_t i = 0; i < e0; ++i) text.append(storage + (i * e1 + j) * elem, elem);
        }
        rc = entry(&f, &counters, 1, nullptr, desc.data(), elem, static_cast<int32_t>(desc.size() / 2));
        if (rc == 0) check_block(f, counters, text, compat);
        free(storage);
    } else {
        char *storage = static_cast<char *>(malloc(size ? size : 1));
        memcpy(storage, data, size);
        text.assign(storage, size);
        rc = entry(&f, &counters, 1, nullptr, storage, static_cast<int32_t>(size), 0);
        if (rc == 0) check_block(f, counters, text, compat);
        free(storage);
    }
    if (rc == 0) {
        free(f);
    } else {
        // A failure stores nothing.
        check(rc == 1000);
        check(f == not_stored && counters == nullptr);
    }
    return 0;
}

// Compiles format text to a parsed_format in one pass: every character read
// is saved (for the report, and as the block's saved text) and acted on at
// once; one character of lookahead is all the reader ever keeps.
//
// Every operation returns 0 or an error number, and a caller returns at once
// on a nonzero one. In return mode the entry frees the record; in abort mode
// the failing operation has already reported and never comes back.
#include "format/format_compiler.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "format/parsed_format.h"
#include "krm/api.h"

namespace krm::fmt {

namespace {

constexpr size_t text_step = 1024;   // bytes: first size and growth of the saved text
constexpr size_t ops_step = 1024;    // words: first size and growth of the operations
constexpr size_t groups_first = 32;  // open groups, doubled as needed

// Indexes and lengths inside a block are 32-bit words, and its bytes must
// be addressable.
constexpr size_t max_words = INT32_MAX < SIZE_MAX / 4 ? INT32_MAX : SIZE_MAX / 4;
constexpr size_t max_text = INT32_MAX - 1;  // the NUL must fit in word 3 too

// The largest value that may take another digit.
constexpr int32_t last_tens = 214748364;

bool is_digit(int c) { return c >= '0' && c <= '9'; }
bool is_blank(int c) { return c == ' ' || c == '\t'; }
int upper(int c) { return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c; }

size_t words_bytes(size_t words) { return words <= SIZE_MAX / 4 ? 4 * words : SIZE_MAX; }

// ---------------------------------------------------------------- reading

// Appends a character to the saved text. -1 is the text ending inside the
// format: get_c has set the mark that the report looks for.
int save_c(compile_record &cr, int c) {
    if (c < 0) return bad_format(cr);
    if (cr.text_len == cr.text_cap) {
        size_t cap = cr.text_cap + text_step;
        if (cr.text_cap >= max_text) return out_of_memory(cr, cap);
        char *p = static_cast<char *>(realloc(cr.text, cap));
        if (!p) return out_of_memory(cr, cap);
        cr.text = p;
        cr.text_cap = cap;
    }
    cr.text[cr.text_len++] = static_cast<char>(c);
    return 0;
}

// The lookahead if there is one, otherwise the next character, saved.
int next(compile_record &cr, int &c) {
    if (cr.look != no_look) {
        c = cr.look;
        cr.look = no_look;
        return 0;
    }
    c = get_c(cr.src);
    return save_c(cr, c);
}

// The same, skipping blanks and tabs (which are saved all the same).
int next_nonblank(compile_record &cr, int &c) {
    do {
        if (int e = next(cr, c)) return e;
    } while (is_blank(c));
    return 0;
}

// Digits from `first` on, blanks and tabs between them skipped; the first
// other character becomes the lookahead. `first` is not checked: a caller
// that hands over a non-digit gets its code less 48 as the first digit.
int get_number(compile_record &cr, int first, int32_t &value) {
    int32_t v = first - '0';
    for (;;) {
        int c;
        if (int e = next(cr, c)) return e;
        if (is_blank(c)) continue;
        if (!is_digit(c)) {
            cr.look = c;
            value = v;
            return 0;
        }
        if (v > last_tens || (v == last_tens && c > '7')) return bad_format(cr);
        // An unchecked first character may have made v negative; let it wrap
        // as 32-bit arithmetic does rather than be undefined.
        v = static_cast<int32_t>(static_cast<uint32_t>(v) * 10u + static_cast<uint32_t>(c - '0'));
    }
}

// A number after "+" or "-". The older dialect lets the digits be missing.
int get_sign_number(compile_record &cr, int sign, int32_t &value) {
    int c;
    if (int e = next_nonblank(cr, c)) return e;
    if (is_digit(c)) {
        int32_t v = 0;
        if (int e = get_number(cr, c, v)) return e;
        value = sign == '-' ? -v : v;
        return 0;
    }
    if (!cr.compat) return bad_format(cr);
    cr.look = c;
    value = sign == '-' ? -1 : 1;
    return 0;
}

// ---------------------------------------------------------------- writing

int grow_ops(compile_record &cr, size_t cap) {
    if (cap > max_words) return out_of_memory(cr, words_bytes(cap));
    int32_t *p = static_cast<int32_t *>(realloc(cr.ops, 4 * cap));
    if (!p) return out_of_memory(cr, 4 * cap);
    cr.ops = p;
    cr.ops_cap = cap;
    return 0;
}

int insert_op(compile_record &cr, int32_t word) {
    if (cr.ops_len == cr.ops_cap)
        if (int e = grow_ops(cr, cr.ops_cap + ops_step)) return e;
    cr.ops[cr.ops_len++] = word;
    return 0;
}

template <typename... W>
int emit(compile_record &cr, W... w) {
    const int32_t words[] = {static_cast<int32_t>(w)...};
    for (int32_t word : words)
        if (int e = insert_op(cr, word)) return e;
    return 0;
}

// Appends bytes four to a word, the last word NUL padded.
int insert_string(compile_record &cr, const char *bytes, size_t n) {
    size_t need = (n + 3) / 4;
    if (need > max_words - cr.ops_len) return out_of_memory(cr, words_bytes(cr.ops_len + need));
    if (cr.ops_len + need > cr.ops_cap)
        if (int e = grow_ops(cr, cr.ops_len + need + ops_step)) return e;
    if (need) cr.ops[cr.ops_len + need - 1] = 0;
    memcpy(cr.ops + cr.ops_len, bytes, n);
    cr.ops_len += need;
    return 0;
}

int32_t here(const compile_record &cr) { return static_cast<int32_t>(cr.ops_len); }

// Code 2 of a repeated item, on the next counter slot.
int begin_repeat(compile_record &cr, int32_t count, int32_t &at, int32_t &slot) {
    at = here(cr);
    slot = cr.level;
    if (int e = emit(cr, KRM_FMT_REPEAT, slot, count)) return e;
    if (++cr.level > cr.deepest) cr.deepest = cr.level;
    return 0;
}

// Code 3, and the slot is free again for the items that follow.
int end_repeat(compile_record &cr, int32_t at, int32_t slot) {
    if (int e = emit(cr, KRM_FMT_REPEAT_END, slot, at + 3)) return e;
    --cr.level;
    return 0;
}

// ---------------------------------------------------------------- groups

// A "(" was read. `start` is where the group's operations begin, its code
// 2 if it is repeated.
int open_group_at(compile_record &cr, int32_t start, int32_t repeat_at, int32_t slot) {
    size_t depth = cr.groups_len + 1;
    // Reversion goes back to the last group opened directly inside the
    // outermost one, or to the whole format.
    if (depth < 3) cr.reversion = start;
    if (cr.groups_len == cr.groups_cap) {
        size_t cap = cr.groups_cap ? 2 * cr.groups_cap : groups_first;
        if (cap > SIZE_MAX / sizeof(open_group)) return out_of_memory(cr, SIZE_MAX);
        open_group *p = static_cast<open_group *>(realloc(cr.groups, cap * sizeof(open_group)));
        if (!p) return out_of_memory(cr, cap * sizeof(open_group));
        cr.groups = p;
        cr.groups_cap = cap;
    }
    cr.groups[cr.groups_len++] = {repeat_at, slot};
    return 0;
}

int close_group(compile_record &cr) {
    open_group g = cr.groups[--cr.groups_len];
    return g.repeat_at >= 0 ? end_repeat(cr, g.repeat_at, g.slot) : 0;
}

// ---------------------------------------------------------------- strings

// After the opening quote: up to the same quote again, a doubled one
// standing for one.
int get_string(compile_record &cr, int quote) {
    if (int e = emit(cr, KRM_FMT_STRING, 0)) return e;
    size_t length_at = cr.ops_len - 1;
    unsigned char bytes[4] = {0, 0, 0, 0};
    int32_t length = 0;
    for (;;) {
        int c;
        if (int e = next(cr, c)) return e;
        if (c == quote) {
            if (int e = next(cr, c)) return e;
            if (c != quote) {
                cr.look = c;
                break;
            }
        }
        if (length == INT32_MAX) return out_of_memory(cr, words_bytes(cr.ops_len + 1));
        bytes[length++ % 4] = static_cast<unsigned char>(c);
        if (length % 4 == 0) {
            int32_t word;
            memcpy(&word, bytes, 4);
            if (int e = insert_op(cr, word)) return e;
        }
    }
    if (length % 4) {
        memset(bytes + length % 4, 0, 4 - length % 4);
        int32_t word;
        memcpy(&word, bytes, 4);
        if (int e = insert_op(cr, word)) return e;
    }
    cr.ops[length_at] = length;
    return 0;
}

// nH: the next n characters as they stand, blanks and all.
int get_hollerith(compile_record &cr, int32_t n) {
    size_t start = cr.text_len;
    for (int32_t i = 0; i < n; ++i)
        if (int e = save_c(cr, get_c(cr.src))) return e;
    if (int e = emit(cr, KRM_FMT_HOLLERITH, n)) return e;
    return insert_string(cr, cr.text + start, static_cast<size_t>(n));
}

// ---------------------------------------------------------------- data edit descriptors

// Each is called with its letter read; pos is then the saved length.

int get_character_edit_descriptor(compile_record &cr, int32_t bare, int32_t with_w) {
    int32_t pos = static_cast<int32_t>(cr.text_len);
    int c;
    if (int e = next_nonblank(cr, c)) return e;
    if (!is_digit(c)) {
        cr.look = c;
        return emit(cr, bare, pos);
    }
    int32_t w = 0;
    if (int e = get_number(cr, c, w)) return e;
    return emit(cr, with_w, w, pos);
}

int get_logical_edit_descriptor(compile_record &cr) {
    return get_character_edit_descriptor(cr, KRM_FMT_L, KRM_FMT_LW);
}

int get_integer_edit_descriptor(compile_record &cr, int letter) {
    int32_t pos = static_cast<int32_t>(cr.text_len);
    int c;
    if (int e = next_nonblank(cr, c)) return e;
    if (letter == 'B') {
        if (upper(c) == 'Z') return emit(cr, KRM_FMT_BZ);
        if (upper(c) == 'N') return emit(cr, KRM_FMT_BN);
        // The older dialect has no binary editing: a plain B is BN.
        if (cr.compat) {
            cr.look = c;
            return emit(cr, KRM_FMT_BN);
        }
    }
    int32_t first;
    switch (letter) {
    case 'B': first = KRM_FMT_B; break;
    case 'I': first = KRM_FMT_I; break;
    case 'O': first = KRM_FMT_O; break;
    default: first = KRM_FMT_Z; break;
    }
    if (!is_digit(c)) {
        cr.look = c;
        return emit(cr, first, pos);
    }
    int32_t w = 0;
    if (int e = get_number(cr, c, w)) return e;
    if (cr.look != '.') return emit(cr, first + 1, w, pos);
    cr.look = no_look;
    if (int e = next_nonblank(cr, c)) return e;
    if (!is_digit(c)) return bad_format(cr);
    int32_t m = 0;
    if (int e = get_number(cr, c, m)) return e;
    return emit(cr, first + 2, w, m, pos);
}

enum class real_kind { D, E, EN, ES, F, G, Y };

// The codes of a real descriptor's forms: bare, w, w.d, w.dEe (0: none).
struct real_codes {
    int32_t bare, w, wd, wde;
};

real_codes codes_of(real_kind kind, bool interval) {
    switch (kind) {
    case real_kind::D: return {KRM_FMT_D, KRM_FMT_DW, KRM_FMT_DWD, KRM_FMT_DWDE};
    case real_kind::E:
        return {KRM_FMT_E, KRM_FMT_EW, interval ? KRM_FMT_VEWD : KRM_FMT_EWD,
                interval ? KRM_FMT_VEWDE : KRM_FMT_EWDE};
    case real_kind::EN:
        return {KRM_FMT_EN, KRM_FMT_ENW, interval ? KRM_FMT_VENWD : KRM_FMT_ENWD,
                interval ? KRM_FMT_VENWDE : KRM_FMT_ENWDE};
    case real_kind::ES:
        return {KRM_FMT_ES, KRM_FMT_ESW, interval ? KRM_FMT_VESWD : KRM_FMT_ESWD,
                interval ? KRM_FMT_VESWDE : KRM_FMT_ESWDE};
    case real_kind::F: return {KRM_FMT_F, KRM_FMT_FW, interval ? KRM_FMT_VFWD : KRM_FMT_FWD, 0};
    case real_kind::G:
        return {KRM_FMT_G, KRM_FMT_GW, interval ? KRM_FMT_VGWD : KRM_FMT_GWD,
                interval ? KRM_FMT_VGWDE : KRM_FMT_GWDE};
    case real_kind::Y: return {0, 0, KRM_FMT_YWD, KRM_FMT_YWDE};
    }
    return {0, 0, 0, 0};
}

int get_real_edit_descriptor(compile_record &cr, int letter) {
    int32_t pos = static_cast<int32_t>(cr.text_len);
    int c;
    bool interval = false;
    real_kind kind;
    switch (letter) {
    case 'D': kind = real_kind::D; break;
    case 'E': kind = real_kind::E; break;
    case 'F': kind = real_kind::F; break;
    case 'G': kind = real_kind::G; break;
    case 'Y': kind = real_kind::Y; break;
    default:  // V: interval editing by E, F or G
        if (int e = next_nonblank(cr, c)) return e;
        interval = true;
        switch (upper(c)) {
        case 'E': kind = real_kind::E; break;
        case 'F': kind = real_kind::F; break;
        case 'G': kind = real_kind::G; break;
        default: return bad_format(cr);
        }
        break;
    }
    if (int e = next_nonblank(cr, c)) return e;
    if (kind == real_kind::D) {
        if (upper(c) == 'C') return emit(cr, KRM_FMT_DC);
        if (upper(c) == 'P') return emit(cr, KRM_FMT_DP);
    } else if (kind == real_kind::E && (upper(c) == 'N' || upper(c) == 'S')) {
        kind = upper(c) == 'N' ? real_kind::EN : real_kind::ES;
        if (int e = next_nonblank(cr, c)) return e;
    }
    real_codes codes = codes_of(kind, interval);
    if (!is_digit(c)) {
        if (kind == real_kind::Y) return bad_format(cr);
        cr.look = c;
        return emit(cr, codes.bare, pos);
    }
    int32_t w = 0;
    if (int e = get_number(cr, c, w)) return e;
    if (w == 0) {
        bool plain_dialect_kind = kind == real_kind::D || kind == real_kind::E || kind == real_kind::G;
        if (kind != real_kind::F && !(cr.compat && plain_dialect_kind)) return bad_format(cr);
    }
    if (cr.look != '.') {
        if (kind == real_kind::Y) return bad_format(cr);
        return emit(cr, codes.w, w, pos);
    }
    cr.look = no_look;
    // d (and e) take whatever character stands there as their first digit.
    int32_t d = 0;
    if (int e = next_nonblank(cr, c)) return e;
    if (int e = get_number(cr, c, d)) return e;
    if (kind != real_kind::F) {
        bool exponent = upper(cr.look) == 'E';
        if (cr.compat && cr.look == '.' &&
            (kind == real_kind::D || kind == real_kind::E || kind == real_kind::G))
            exponent = true;
        if (exponent) {
            cr.look = no_look;
            int32_t x = 0;
            if (int e = next_nonblank(cr, c)) return e;
            if (int e = get_number(cr, c, x)) return e;
            return emit(cr, codes.wde, w, d, x, pos);
        }
    }
    return emit(cr, codes.wd, w, d, pos);
}

int descriptor(compile_record &cr, int letter) {
    switch (letter) {
    case 'A': return get_character_edit_descriptor(cr, KRM_FMT_A, KRM_FMT_AW);
    case 'L': return get_logical_edit_descriptor(cr);
    case 'B': case 'I': case 'O': case 'Z': return get_integer_edit_descriptor(cr, letter);
    default: return get_real_edit_descriptor(cr, letter);
    }
}

bool is_data_letter(int u) {
    switch (u) {
    case 'A': case 'B': case 'D': case 'E': case 'F': case 'G': case 'I':
    case 'L': case 'O': case 'V': case 'Y': case 'Z':
        return true;
    default:
        return false;
    }
}

// ---------------------------------------------------------------- the group

// A number n was read and `follower` stands behind it.
int counted(compile_record &cr, int32_t n, int follower) {
    int u = upper(follower);
    if (is_data_letter(u)) {
        if (n == 1) return descriptor(cr, u);
        int32_t at = 0, slot = 0;
        if (int e = begin_repeat(cr, n, at, slot)) return e;
        if (int e = descriptor(cr, u)) return e;
        return end_repeat(cr, at, slot);
    }
    switch (u) {
    case '(': {
        if (n == 0) return bad_format(cr);
        if (n == 1) return open_group_at(cr, here(cr), -1, 0);
        int32_t at = 0, slot = 0;
        if (int e = begin_repeat(cr, n, at, slot)) return e;
        return open_group_at(cr, at, at, slot);
    }
    case '/':
        if (n == 0) return bad_format(cr);
        return emit(cr, KRM_FMT_SLASH, n);
    case 'H':
        if (n == 0 && !cr.compat) return bad_format(cr);
        return get_hollerith(cr, n);
    case 'P':
        return emit(cr, KRM_FMT_P, n);
    case 'R':
        if (!cr.compat || n < 2 || n > 36) return bad_format(cr);
        return emit(cr, KRM_FMT_RADIX, n);
    case 'X':
        return emit(cr, KRM_FMT_X, n);
    default:
        return bad_format(cr);
    }
}

// T, TL, TR with or without a number.
int position(compile_record &cr) {
    int c;
    if (int e = next_nonblank(cr, c)) return e;
    int32_t code = KRM_FMT_T;
    if (upper(c) == 'L' || upper(c) == 'R') {
        code = upper(c) == 'L' ? KRM_FMT_TL : KRM_FMT_TR;
        if (int e = next_nonblank(cr, c)) return e;
    }
    // The older dialect's stand-in for a missing or zero n.
    int32_t compat_n = code == KRM_FMT_T ? 9 : 0;
    int32_t n = 0;
    if (is_digit(c)) {
        if (int e = get_number(cr, c, n)) return e;
        if (n == 0) {
            if (!cr.compat) return bad_format(cr);
            n = compat_n;
        }
    } else {
        cr.look = c;
        n = cr.compat ? compat_n : 1;
    }
    return emit(cr, code, n);
}

// Reads the outermost group, whose "(" has been read, with every group
// inside it, up to its ")".
int parse_group(compile_record &cr) {
    if (int e = open_group_at(cr, first_op, -1, 0)) return e;
    for (;;) {
        int c;
        do {
            if (int e = next(cr, c)) return e;
        } while (is_blank(c) || c == ',');
        int u = upper(c);
        int e = 0;
        if (is_digit(c)) {
            int32_t n = 0;
            if ((e = get_number(cr, c, n))) return e;
            int follower = cr.look;
            cr.look = no_look;
            e = counted(cr, n, follower);
        } else if (is_data_letter(u)) {
            e = descriptor(cr, u);
        } else {
            switch (u) {
            case '\'':
            case '"':
                e = get_string(cr, c);
                break;
            case '$': e = emit(cr, KRM_FMT_DOLLAR); break;
            case ':': e = emit(cr, KRM_FMT_COLON); break;
            case '/': e = emit(cr, KRM_FMT_SLASH, 1); break;
            case 'X': e = emit(cr, KRM_FMT_X, 1); break;
            case 'Q': e = emit(cr, KRM_FMT_Q, 1); break;
            case '(': e = open_group_at(cr, here(cr), -1, 0); break;
            case ')':
                if ((e = close_group(cr))) return e;
                if (cr.groups_len == 0) return 0;
                break;
            case '+':
            case '-': {
                int32_t n = 0;
                if ((e = get_sign_number(cr, c, n))) return e;
                int follower = upper(cr.look);
                if (follower != 'P' && follower != 'X' && follower != 'R') return bad_format(cr);
                cr.look = no_look;
                e = counted(cr, n, follower);
                break;
            }
            case 'P':
                e = cr.compat ? emit(cr, KRM_FMT_P, 0) : bad_format(cr);
                break;
            case 'R': {
                if ((e = next_nonblank(cr, c))) return e;
                switch (upper(c)) {
                case 'U': e = emit(cr, KRM_FMT_RU); break;
                case 'D': e = emit(cr, KRM_FMT_RD); break;
                case 'Z': e = emit(cr, KRM_FMT_RZ); break;
                case 'N': e = emit(cr, KRM_FMT_RN); break;
                case 'C': e = emit(cr, KRM_FMT_RC); break;
                case 'P': e = emit(cr, KRM_FMT_RP); break;
                default:
                    // The older dialect's R alone: radix 10.
                    if (!cr.compat) return bad_format(cr);
                    cr.look = c;
                    e = emit(cr, KRM_FMT_RADIX, 10);
                    break;
                }
                break;
            }
            case 'S': {
                if ((e = next_nonblank(cr, c))) return e;
                switch (upper(c)) {
                case 'P': e = emit(cr, KRM_FMT_SP); break;
                case 'S': e = emit(cr, KRM_FMT_SS); break;
                case 'U': e = emit(cr, KRM_FMT_SU); break;
                default:
                    cr.look = c;
                    e = emit(cr, KRM_FMT_SS);
                    break;
                }
                break;
            }
            case 'T': e = position(cr); break;
            default: return bad_format(cr);
            }
        }
        if (e) return e;
    }
}

// The header words, the end operation and the saved text around the
// operations; the block is trimmed to its size on the way.
int finish_block(compile_record &cr, parsed_format **format, int32_t **counters) {
    if (int e = emit(cr, KRM_FMT_END, cr.reversion)) return e;
    if (int e = save_c(cr, '\0')) return e;
    size_t slots = static_cast<size_t>(cr.deepest);
    size_t text_words = (cr.text_len + 3) / 4;
    if (slots > max_words - cr.ops_len || text_words > max_words - cr.ops_len - slots)
        return out_of_memory(cr, SIZE_MAX);
    size_t total = cr.ops_len + slots + text_words;
    cr.ops[word_extent] = static_cast<int32_t>(cr.ops_len + slots - first_op);
    cr.ops[word_text_bytes] = static_cast<int32_t>(cr.text_len);
    int32_t *block = static_cast<int32_t *>(realloc(cr.ops, 4 * total));
    if (!block) return out_of_memory(cr, 4 * total);
    cr.ops = block;
    int32_t *slot = block + cr.ops_len;
    memset(slot, 0, 4 * slots);
    char *text = reinterpret_cast<char *>(slot + slots);
    memset(text + 4 * text_words - 4, 0, 4);
    memcpy(text, cr.text, cr.text_len);
    *format = reinterpret_cast<parsed_format *>(block);
    *counters = slot;
    cr.ops = nullptr;
    return 0;
}

int compile(compile_record &cr, parsed_format **format, int32_t **counters, const void *source,
            int32_t length, int32_t rank) {
    size_t source_size = source_bytes(rank);
    if (source_size == 0) return out_of_memory(cr, SIZE_MAX);
    cr.src = static_cast<format_source *>(malloc(source_size));
    if (!cr.src) return out_of_memory(cr, source_size);
    open_source(cr.src, source, length, rank);
    cr.text = static_cast<char *>(malloc(text_step));
    if (!cr.text) return out_of_memory(cr, text_step);
    cr.text_cap = text_step;

    // Blanks ahead of the format are neither kept nor shown.
    int c;
    do {
        c = get_c(cr.src);
    } while (is_blank(c));
    if (int e = save_c(cr, c)) return e;
    if (c != '(') return bad_format(cr);

    cr.ops = static_cast<int32_t *>(malloc(4 * ops_step));
    if (!cr.ops) return out_of_memory(cr, 4 * ops_step);
    cr.ops_cap = ops_step;
    cr.ops[word_magic] = magic;
    cr.ops[word_first_op] = first_op;
    cr.ops[word_extent] = 0;
    cr.ops[word_text_bytes] = 0;
    cr.ops_len = first_op;
    if (int e = parse_group(cr)) return e;
    return finish_block(cr, format, counters);
}

}  // namespace

void free_record(compile_record &cr) {
    free(cr.src);
    free(cr.text);
    free(cr.ops);
    free(cr.groups);
    cr.src = nullptr;
    cr.text = nullptr;
    cr.ops = nullptr;
    cr.groups = nullptr;
}

int32_t compile_format(parsed_format **format, int32_t **counters, bool returning,
                       const stmt_location *loc, const void *source, int32_t length,
                       int32_t rank, bool compat) {
    if (!source_base(source, rank)) {
        if (returning) return err_no_format;
        report_unassociated(loc);
    }
    compile_record cr = {};
    cr.compat = compat;
    cr.returning = returning;
    cr.loc = loc;
    cr.look = no_look;
    cr.reversion = first_op;
    int e = compile(cr, format, counters, source, length, rank);
    free_record(cr);
    return e;
}

}  // namespace krm::fmt

extern "C" {

KRM_API int32_t __f90_parse_format(parsed_format **format, int32_t **counters, int32_t returning,
                                   const stmt_location *loc, const void *source, int32_t length,
                                   int32_t rank) {
    return krm::fmt::compile_format(format, counters, returning != 0, loc, source, length, rank,
                                    false);
}

KRM_API int32_t __f90_parse_format_f77compat(parsed_format **format, int32_t **counters,
                                             int32_t returning, const stmt_location *loc,
                                             const void *source, int32_t length, int32_t rank) {
    return krm::fmt::compile_format(format, counters, returning != 0, loc, source, length, rank,
                                    true);
}

}  // extern "C"

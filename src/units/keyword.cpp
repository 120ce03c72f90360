#include "units/keyword.h"

namespace krm {

bool spells_keyword(const char *text, int32_t len, const char *word) {
    int32_t i = 0;
    for (; word[i]; ++i) {
        if (i >= len) return false;
        char c = text[i];
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        if (c != word[i]) return false;
    }
    for (; i < len; ++i)
        if (text[i] != ' ') return false;
    return true;
}

int match_keyword(const char *text, int32_t len, const char *const *words) {
    for (int k = 0; words[k]; ++k)
        if (spells_keyword(text, len, words[k])) return k;
    return -1;
}

}  // namespace krm

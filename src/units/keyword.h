// Matching a specifier's character value against its keywords: any case, and
// nothing but blanks after the word.
#pragma once

#include <stdint.h>

namespace krm {

// Does text[0..len) spell `word` (upper case), followed only by blanks?
bool spells_keyword(const char *text, int32_t len, const char *word);

// Index of the first keyword of `words` (null-terminated list) that text
// spells, or -1.
int match_keyword(const char *text, int32_t len, const char *const *words);

}  // namespace krm

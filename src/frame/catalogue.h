// The installed message catalogue, when one is found.
#pragma once

#include <nl_types.h>
#include <stddef.h>

extern "C" {
// Descriptor of the catalogue; (nl_catd)-1 when none was found.
extern nl_catd catd;

// Finds the catalogue through NLSPATH and the locale, once at start-up.
// Leaves errno 0 on every exit.
void __f90_opencat(void);
}

namespace krm {

constexpr const char *catalogue_name = "KORM_RTL_FC_libf90";

// Catalogue sets.
constexpr int set_errors = 1;
constexpr int set_locations = 2;
constexpr int set_misc = 3;
constexpr int set_stop_pause = 4;

// Builds the path that one NLSPATH template names for the catalogue `name`
// in locale `locale`; a template is the text up to the next ':' or the end.
// Returns the length written to out (at most out_size - 1).
size_t expand_nls_template(const char *tmpl, size_t tmpl_len, const char *name, const char *locale,
                           char *out, size_t out_size);

}  // namespace krm

#include "frame/catalogue.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

extern "C" {
nl_catd catd = reinterpret_cast<nl_catd>(-1);
}

namespace krm {
namespace {

struct span {
    const char *p = "";
    size_t n = 0;
};

// language_territory.codeset@modifier
struct locale_parts {
    span whole, language, territory, codeset;
};

locale_parts split_locale(const char *name) {
    locale_parts parts;
    size_t len = strlen(name);
    parts.whole = {name, len};
    const char *under = strchr(name, '_');
    parts.language = {name, under ? static_cast<size_t>(under - name) : len};
    const char *at = strchr(name, '@');
    const char *end = at ? at : name + len;
    const char *dot = strchr(name, '.');
    if (dot && dot > end) dot = nullptr;
    if (under && under < end) {
        const char *t = under + 1;
        const char *t_end = dot && dot > t ? dot : end;
        parts.territory = {t, static_cast<size_t>(t_end - t)};
    }
    if (dot) parts.codeset = {dot + 1, static_cast<size_t>(end - dot - 1)};
    return parts;
}

const char *locale_name() {
    const char *vars[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
    for (const char *v : vars) {
        const char *value = getenv(v);
        if (value && *value) return value;
    }
    return "C";
}

}  // namespace

size_t expand_nls_template(const char *tmpl, size_t tmpl_len, const char *name, const char *locale,
                           char *out, size_t out_size) {
    // The text as the template gives it; "./" goes in front unless it holds a
    // slash, so that catopen never searches on its own.
    char text[1024];
    size_t n = 0;
    auto append = [&](const char *p, size_t len) {
        for (size_t i = 0; i < len && n + 1 < sizeof text; ++i) text[n++] = p[i];
    };
    if (tmpl_len == 0) {
        append(name, strlen(name));
    } else {
        locale_parts parts = split_locale(locale);
        for (size_t i = 0; i < tmpl_len && n + 1 < sizeof text; ++i) {
            char c = tmpl[i];
            if (c != '%') {
                append(&c, 1);
                continue;
            }
            if (++i == tmpl_len) break;  // a lone '%' at the end copies nothing
            switch (tmpl[i]) {
                case 'N': append(name, strlen(name)); break;
                case 'L': append(parts.whole.p, parts.whole.n); break;
                case 'l': append(parts.language.p, parts.language.n); break;
                case 't': append(parts.territory.p, parts.territory.n); break;
                case 'c': append(parts.codeset.p, parts.codeset.n); break;
                default: append(&tmpl[i], 1); break;
            }
        }
    }
    size_t o = 0;
    if (!memchr(text, '/', n)) {
        const char prefix[] = "./";
        for (size_t i = 0; i < 2 && o + 1 < out_size; ++i) out[o++] = prefix[i];
    }
    for (size_t i = 0; i < n && o + 1 < out_size; ++i) out[o++] = text[i];
    if (out_size) out[o] = '\0';
    return o;
}

}  // namespace krm

extern "C" void __f90_opencat(void) {
    const char *nlspath = getenv("NLSPATH");
    if (!nlspath) {
        errno = 0;
        return;
    }
    const char *locale = krm::locale_name();
    const char *p = nlspath;
    for (;;) {
        const char *colon = strchr(p, ':');
        size_t len = colon ? static_cast<size_t>(colon - p) : strlen(p);
        char path[1024];
        krm::expand_nls_template(p, len, krm::catalogue_name, locale, path, sizeof path);
        nl_catd d = catopen(path, -1);
        if (d != reinterpret_cast<nl_catd>(-1)) {
            catd = d;
            errno = 0;
            return;
        }
        if (!colon) break;
        p = colon + 1;
    }
    errno = 0;
}

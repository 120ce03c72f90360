#include "formatted/formatted_statements.h"

#include <stdio.h>
#include <string.h>

namespace krm_test {

const stmt_location kFormattedWriteAt = {STMT_WRITE, 20, "t.f90"};
const stmt_location kFormattedPrintAt = {STMT_PRINT, 10, "t.f90"};

int put_fitem(io_control_formatted_write &ctl, const fitem &it) {
    const int64_t v = it.value;
    switch (it.k) {
        case fitem::ch: {
            int32_t len = it.length == -2 ? static_cast<int32_t>(it.text.size()) : it.length;
            return __f90_sfw_ch(&ctl, it.text.data(), len);
        }
        // Short items reach their entries widened to a word, as compiled
        // code passes them.
        case fitem::i1: return __f90_sfw_i1(&ctl, static_cast<int8_t>(v));
        case fitem::i2: return __f90_sfw_i2(&ctl, static_cast<int16_t>(v));
        case fitem::i4: return __f90_sfw_i4(&ctl, static_cast<int32_t>(v));
        case fitem::i8: return __f90_sfw_i8(&ctl, v);
        case fitem::u1: return __f90_sfw_u1(&ctl, static_cast<uint8_t>(v));
        case fitem::u2: return __f90_sfw_u2(&ctl, static_cast<uint16_t>(v));
        case fitem::u4: return __f90_sfw_u4(&ctl, static_cast<uint32_t>(v));
        case fitem::u8: return __f90_sfw_u8(&ctl, static_cast<uint64_t>(v));
        case fitem::l1: return __f90_sfw_l1(&ctl, static_cast<int8_t>(v));
        case fitem::l2: return __f90_sfw_l2(&ctl, static_cast<int16_t>(v));
        case fitem::l4: return __f90_sfw_l4(&ctl, static_cast<int32_t>(v));
        case fitem::l8: return __f90_sfw_l8(&ctl, v);
    }
    return -99;
}

hand_format::hand_format(const std::vector<int32_t> &ops, int32_t slots) : counters_count_(slots) {
    words = {static_cast<int32_t>(KRM_FORMAT_MAGIC), KRM_FORMAT_FIRST_OP,
             static_cast<int32_t>(ops.size()) + slots, 1};
    words.insert(words.end(), ops.begin(), ops.end());
    words.insert(words.end(), static_cast<size_t>(slots), 0);
    words.push_back(0);  // the saved text: a NUL alone
}

namespace {

int run_statement(io_control_formatted_write &ctl, const std::vector<fitem> &items, const fw_options &opt) {
    if (int err = __f90_ssfw(&ctl)) return err;
    if (opt.advance) {
        if (int err = __f90_sfw_advance(&ctl, opt.advance, static_cast<int32_t>(strlen(opt.advance))))
            return err;
    }
    for (const fitem &it : items)
        if (int err = put_fitem(ctl, it)) return err;
    return __f90_esfw(&ctl);
}

io_control_formatted_write control_for(int64_t unit, uint32_t flags) {
    io_control_formatted_write ctl = {};
    ctl.unit_no = unit < 0 ? 0 : unit;
    ctl.flags = flags | (unit < 0 ? IO_DEFAULT_UNIT : 0);
    ctl.loc = unit < 0 ? &kFormattedPrintAt : &kFormattedWriteAt;
    return ctl;
}

}  // namespace

int formatted_write(int64_t unit, const std::string &format, const std::vector<fitem> &items,
                    const fw_options &opt) {
    io_control_formatted_write ctl = control_for(unit, opt.flags | IO_OWNED_FORMAT);
    const int32_t returning = (opt.flags & IO_RETURNING) ? 1 : 0;
    auto parse = opt.f77compat_format ? __f90_parse_format_f77compat : __f90_parse_format;
    if (int err = parse(&ctl.format, &ctl.format_counters, returning, ctl.loc, format.data(),
                        static_cast<int32_t>(format.size()), 0))
        return err;
    return run_statement(ctl, items, opt);
}

int formatted_write_block(int64_t unit, hand_format &format, const std::vector<fitem> &items,
                          const fw_options &opt) {
    io_control_formatted_write ctl = control_for(unit, opt.flags & ~IO_OWNED_FORMAT);
    ctl.format = format.block();
    ctl.format_counters = format.counters();
    return run_statement(ctl, items, opt);
}

namespace {

std::vector<std::string> split_records(const std::string &bytes) {
    std::vector<std::string> r;
    size_t at = 0;
    while (at < bytes.size()) {
        size_t nl = bytes.find('\n', at);
        if (nl == std::string::npos) {
            r.push_back(bytes.substr(at) + "<no newline>");
            break;
        }
        r.push_back(bytes.substr(at, nl - at));
        at = nl + 1;
    }
    return r;
}

std::string shown(const std::string &record) {
    std::string s = "\"";
    const size_t limit = 160;
    for (size_t i = 0; i < record.size() && i < limit; ++i) {
        unsigned char c = static_cast<unsigned char>(record[i]);
        if (c >= 32 && c < 127) {
            s += static_cast<char>(c);
        } else {
            char hex[8];
            snprintf(hex, sizeof hex, "\\x%02x", c);
            s += hex;
        }
    }
    s += "\"";
    if (record.size() > limit) s += "... (" + std::to_string(record.size()) + " bytes)";
    return s;
}

}  // namespace

::testing::AssertionResult same_records(const std::string &got, const std::string &want) {
    if (got == want) return ::testing::AssertionSuccess();
    std::vector<std::string> g = split_records(got), w = split_records(want);
    size_t i = 0;
    while (i < g.size() && i < w.size() && g[i] == w[i]) ++i;
    auto r = ::testing::AssertionFailure();
    r << got.size() << " bytes in " << g.size() << " records where " << want.size() << " bytes in "
      << w.size() << " records were expected; record " << i + 1 << " differs:\n  got:      "
      << (i < g.size() ? shown(g[i]) : "(none)") << "\n  expected: " << (i < w.size() ? shown(w[i]) : "(none)");
    return r;
}

}  // namespace krm_test

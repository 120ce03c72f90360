#include <string.h>

#include "frame/message_tables.h"
#include "frame/messages.h"
#include "frame/report.h"
#include "krm/errors.h"

// IOMSG= gets the text of the IOSTAT value compiled code passes back in: the
// message without its line end, blank-padded to the variable's length.
extern "C" KRM_API void __f90_assign_iomsg(int32_t number, char *buffer, int32_t length) {
    if (!buffer || length <= 0) return;
    const char *text;
    if (number == -1)
        text = __f90_mfmt(krm::misc_row::end_of_file);
    else if (number == -2)
        text = __f90_mfmt(krm::misc_row::end_of_record);
    else
        text = krm::error_text(number);
    if (!text || !*text) text = __f90_mfmt(krm::misc_row::unknown_error);
    if (!text) text = "";

    int32_t n = 0;
    while (n < length && text[n] && text[n] != '\n') {
        buffer[n] = text[n];
        ++n;
    }
    memset(buffer + n, ' ', static_cast<size_t>(length - n));
}

/* Sequential formatted output: WRITE (u, fmt) ... and PRINT fmt, ...
 * One start call, ADVANCE= if given, one call per list item, one end call.
 * Every call returns 0 or, when IO_RETURNING is set, an error number; after
 * a non-zero return the statement is over and no further call is made. */
#ifndef KRM_FORMATTED_WRITE_H
#define KRM_FORMATTED_WRITE_H

#include <stdint.h>

#include "krm/io_control.h"

KRM_BEGIN_DECLS

KRM_API int __f90_ssfw(io_control_formatted_write *ctl);
KRM_API int __f90_sfw_advance(io_control_formatted_write *ctl, const char *text, int32_t length);

KRM_API int __f90_sfw_i1(io_control_formatted_write *ctl, int32_t value);
KRM_API int __f90_sfw_i2(io_control_formatted_write *ctl, int32_t value);
KRM_API int __f90_sfw_i4(io_control_formatted_write *ctl, int32_t value);
KRM_API int __f90_sfw_i8(io_control_formatted_write *ctl, int64_t value);
KRM_API int __f90_sfw_u1(io_control_formatted_write *ctl, uint32_t value);
KRM_API int __f90_sfw_u2(io_control_formatted_write *ctl, uint32_t value);
KRM_API int __f90_sfw_u4(io_control_formatted_write *ctl, uint32_t value);
KRM_API int __f90_sfw_u8(io_control_formatted_write *ctl, uint64_t value);
KRM_API int __f90_sfw_l1(io_control_formatted_write *ctl, int32_t value);
KRM_API int __f90_sfw_l2(io_control_formatted_write *ctl, int32_t value);
KRM_API int __f90_sfw_l4(io_control_formatted_write *ctl, int32_t value);
KRM_API int __f90_sfw_l8(io_control_formatted_write *ctl, int64_t value);
KRM_API int __f90_sfw_ch(io_control_formatted_write *ctl, const char *text, int32_t length);

/* The older dialect's item call: the item widened into four words (least
 * significant first) or, when address is not null, the item at address;
 * size is the item's size in bytes. */
KRM_API int __f90_sfw_f77compat(io_control_formatted_write *ctl, uint32_t w0, uint32_t w1, uint32_t w2,
                                uint32_t w3, const void *address, int32_t size);

KRM_API int __f90_esfw(io_control_formatted_write *ctl);

KRM_END_DECLS

#endif

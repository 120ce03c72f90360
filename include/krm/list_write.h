/* List-directed output: PRINT *, ... and WRITE (u, *) ...
 * One start call, one call per list item, one end call, all with the same
 * io_control. Every call returns 0 or, when IO_RETURNING is set, an error
 * number; after a non-zero return the statement is over (the unit has been
 * released) and compiled code makes no further call, not even the end call. */
#ifndef KRM_LIST_WRITE_H
#define KRM_LIST_WRITE_H

#include <stdint.h>

#include "krm/io_control.h"

KRM_BEGIN_DECLS

KRM_API int __f90_sslw(io_control_list_write *ctl);

KRM_API int __f90_slw_ch(io_control_list_write *ctl, const char *text, int32_t length);
KRM_API int __f90_slw_i4(io_control_list_write *ctl, int32_t value);
KRM_API int __f90_slw_i8(io_control_list_write *ctl, int64_t value);
KRM_API int __f90_slw_u4(io_control_list_write *ctl, uint32_t value);
KRM_API int __f90_slw_u8(io_control_list_write *ctl, uint64_t value);
KRM_API int __f90_slw_l1(io_control_list_write *ctl, int32_t value);
KRM_API int __f90_slw_l4(io_control_list_write *ctl, int32_t value);
KRM_API int __f90_slw_l8(io_control_list_write *ctl, int64_t value);

KRM_API int __f90_eslw(io_control_list_write *ctl);

KRM_END_DECLS

#endif

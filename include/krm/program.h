/* Start-up and the end of a program: what compiled main calls first, PAUSE,
 * and the reports of checked code. */
#ifndef KRM_PROGRAM_H
#define KRM_PROGRAM_H

#include <stdint.h>

#include "krm/api.h"

KRM_BEGIN_DECLS

KRM_API void __f90_init(int argc, char **argv);
KRM_API void __f90_init_f77compat(int argc, char **argv);
KRM_API void __f_init(void);
KRM_API void f_init(void);
KRM_API void f90_init(void);
KRM_API void f_exit(void);
KRM_API void __f90_exit_f77compat(void);
KRM_API int *__f90_io_delay_ftruncate(void);
KRM_API void __f90_pause(const char *text, int32_t length);

/* Run-time checks that failed: each writes its report and aborts. */
KRM_API void __f95_missing_optional_err(const char *name, int32_t line, int32_t column, const char *file)
    __attribute__((noreturn));
KRM_API void __f95_null_pointer_err(const char *name, int32_t kind, int32_t line, int32_t column,
                                    const char *file) __attribute__((noreturn));
KRM_API void __f90_shape_err(int32_t dim, int32_t found, int32_t expected, int32_t line, int32_t column,
                             const char *file) __attribute__((noreturn));
KRM_API void __f90_shape_err_long(int32_t dim, int64_t found, int64_t expected, int32_t line,
                                  int32_t column, const char *file) __attribute__((noreturn));
KRM_API void __f90_shape_arguments_err(int32_t dim, int32_t found, int32_t expected, int32_t line,
                                       int32_t column, const char *file, const char *function)
    __attribute__((noreturn));
KRM_API void __f90_reshape_err(int32_t has, int32_t needs, int32_t line, int32_t column, const char *file)
    __attribute__((noreturn));
KRM_API void __f90_reshape_err_long(int64_t has, int64_t needs, int32_t line, int32_t column,
                                    const char *file) __attribute__((noreturn));
KRM_API void __f90_cb_error(int32_t subscript, int32_t value, const char *array, int32_t line,
                            int32_t column, const char *file) __attribute__((noreturn));
KRM_API void __f90_cb_err_str(int32_t which_end, int32_t value, const char *name, int32_t line,
                              int32_t column, const char *file) __attribute__((noreturn));
KRM_API void __f90_cb_error_long(int32_t subscript, int64_t value, const char *array, int32_t line,
                                 int32_t column, const char *file) __attribute__((noreturn));
KRM_API void __f90_cb_err_str_long(int32_t which_end, int64_t value, const char *name, int32_t line,
                                   int32_t column, const char *file) __attribute__((noreturn));
KRM_API char *ll2str(int64_t value, char *buffer);
KRM_API int __f90_run_time(const char *a, const char *b, int32_t value);

KRM_END_DECLS

#endif

/* Visibility of the library's entry points. Inside the library everything is
 * hidden unless marked KRM_API; the linker version script then decides which
 * of the marked names a program can bind to. */
#ifndef KRM_API_H
#define KRM_API_H

#if defined(KRM_BUILDING_LIBRARY)
#define KRM_API __attribute__((visibility("default")))
#else
#define KRM_API
#endif

#ifdef __cplusplus
#define KRM_BEGIN_DECLS extern "C" {
#define KRM_END_DECLS }
#else
#define KRM_BEGIN_DECLS
#define KRM_END_DECLS
#endif

#endif

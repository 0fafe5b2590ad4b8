#ifndef QV_CPU_PRIVATE_H
#define QV_CPU_PRIVATE_H

/* What the processor can do beyond the least of its architecture, where the C library tells it and the build may use it:
   QV___CPU_FEATURES is defined then, and CPU_FEATURE_ACTIVE( AVX2 ) is a read of memory. The C library's header uses the C name of the truth type, which not
   every C++ compiler knows. */

#if defined( __x86_64__ ) && !defined( QV___WITHOUT_VECTORS ) && __has_include( <sys/platform/x86.h> )
#include <stdbool.h>

#ifdef _Bool
#include <sys/platform/x86.h>
#else
#define _Bool bool
#include <sys/platform/x86.h>
#undef _Bool
#endif

#define QV___CPU_FEATURES
#endif

#endif

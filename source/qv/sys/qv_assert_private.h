/** @file
    Assertions and marks on free memory, which show faults of the library itself.

    Both exist in builds with assertions (the presets debug, asan, tsan and fuzz) and cost nothing in others. They check
    what the library itself guarantees; what a caller may break is a QV_CHECK() in every build. Structures are the same
    in all builds. */

#ifndef QV_ASSERT_PRIVATE_H
#define QV_ASSERT_PRIVATE_H

#include "qv/sys/qv_abort.h"

#include <stddef.h>
#include <string.h>

#ifndef QV___ASSERTIONS
#define QV___ASSERTIONS 0
#endif

#if defined( __SANITIZE_ADDRESS__ )
#define QV___ASAN 1
#elif defined( __has_feature )
#if __has_feature( address_sanitizer )
#define QV___ASAN 1
#endif
#endif

#ifndef QV___ASAN
#define QV___ASAN 0
#endif

#if QV___ASAN
#include <sanitizer/asan_interface.h>
#endif

/** Ends the process in builds with assertions unless `expression` holds. Elsewhere it is compiled, but
    not evaluated. */
#if QV___ASSERTIONS
#define QV_ASSERT( expression ) QV_CHECK( expression )
#else
#define QV_ASSERT( expression ) ( (void)sizeof( !!( expression ) ) )
#endif

namespace qv
{
/** What free places hold in builds with assertions: no character, no address, no small number. */
const unsigned char FREE_PATTERN = 0xF5;

/** Marks memory as free: reading or writing it is reported by AddressSanitizer until it is opened. */
inline void poison( [[maybe_unused]] const void *memory, [[maybe_unused]] size_t bytes )
{
#if QV___ASAN
    __asan_poison_memory_region( memory, bytes );
#endif
}

/** Makes memory accessible that was marked as free. A block is opened as a whole before it is freed or reallocated. */
inline void unpoison( [[maybe_unused]] const void *memory, [[maybe_unused]] size_t bytes )
{
#if QV___ASAN
    __asan_unpoison_memory_region( memory, bytes );
#endif
}

/** Marks places of a block as free and fills them with the pattern, so that what is read there is noticed in builds
    with assertions but without AddressSanitizer too. */
inline void markFree( [[maybe_unused]] void *memory, [[maybe_unused]] size_t bytes )
{
#if QV___ASSERTIONS
    if( bytes )
    {
        unpoison( memory, bytes );
        memset( memory, FREE_PATTERN, bytes );
        poison( memory, bytes );
    }
#endif
}
} // namespace qv

#endif

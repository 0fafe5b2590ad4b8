#include "qv/sys/qv_large_private.h"

#include <malloc.h>

QV_INT qv::allocatedBytes( void *block )
{
    return static_cast< QV_INT >( malloc_usable_size( block ) );
}

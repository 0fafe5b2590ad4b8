// The text form of documents: nothing is an error, and what was read can be written and read again.

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"

#include <cstdlib>

using qv::Ref;

namespace
{
void check( bool ok )
{
    if( !ok )
        abort();
}

bool start()
{
    qvRuntimeStartup( QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS, nullptr, nullptr, nullptr, nullptr );
    return true;
}

Ref< QV_STORE > throughText( QV_STORE *store )
{
    Ref< QV_BUFFER > text( qvStoreEncodeToTextBuffer( store ) );
    return Ref< QV_STORE >( qvStoreTryDecodeFromTextBuffer( text ) );
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )
{
    static const bool started = start();
    check( started );

    Ref< QV_BUFFER > bytes( qvBufferCreateFromBytesCopy( data, static_cast< QV_INT >( size ) ) );
    Ref< QV_STORE >  store( qvStoreTryDecodeFromTextBuffer( bytes ) );
    check( store );

    Ref< QV_VECTOR > lines( qvStoreEncodeToStringVector( store ) );
    Ref< QV_STORE >  again( qvStoreDecodeFromStringVector( lines ) );
    check( qvStoreEquals( store, again ) );

    // Line and paragraph separators in a value end its line the first time; then there are none left.
    Ref< QV_STORE > first  = throughText( store );
    Ref< QV_STORE > second = throughText( first );
    check( qvStoreEquals( first, second ) );

    return 0;
}

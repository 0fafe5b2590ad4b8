// The binary form of documents: what is not an error can be written and read again, in both forms.

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
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )
{
    static const bool started = start();
    check( started );

    Ref< QV_BUFFER > bytes( qvBufferCreateFromBytesCopy( data, static_cast< QV_INT >( size ) ) );
    Ref< QV_STORE >  store( qvStoreTryDecodeFromBuffer( bytes ) );

    if( !store )
        return 0;

    Ref< QV_BUFFER > written( qvStoreEncodeToBuffer( store ) );
    Ref< QV_STORE >  again( qvStoreTryDecodeFromBuffer( written ) );
    check( again && qvStoreEquals( store, again ) );

    Ref< QV_BUFFER > writtenAgain( qvStoreEncodeToBuffer( again ) );
    check( qvBufferEquals( written, writtenAgain ) );

    Ref< QV_VECTOR > lines( qvStoreEncodeToStringVector( store ) );
    again.reset( qvStoreDecodeFromStringVector( lines ) );
    check( qvStoreEquals( store, again ) );

    return 0;
}

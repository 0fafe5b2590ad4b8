// The text form of documents: nothing is an error, and what was read can be written and read again.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
Ref< QV_STORE > throughText( QV_STORE *store )
{
    return Ref< QV_STORE >( qvStoreTryDecodeFromTextBuffer( Ref< QV_BUFFER >( qvStoreEncodeToTextBuffer( store ) ) ) );
}

void decode( const uint8_t *data, size_t size )
{
    Ref< QV_BUFFER > bytes( qvBufferCreateFromBytesCopy( data, static_cast< QV_INT >( size ) ) );
    Ref< QV_STORE >  store( qvStoreTryDecodeFromTextBuffer( bytes ) );
    require( store );

    // The strict reader fails exactly if there is a line to tell, of which each lies in the text.
    Ref< QV_VECTOR > errors( qvVectorCreate() );
    Ref< QV_STORE >  strict( qvStoreTryDecodeFromTextBufferStrict( bytes ) );
    require(
        qvStoreEquals( store, Ref< QV_STORE >( qvStoreTryDecodeFromTextBufferWithErrors( bytes, errors.at() ) ) ) );
    require( qvVectorLength( errors ) == 0 ? qvStoreEquals( store, strict ) : !strict );

    for( QV_INT i = 0, line = 0; i < qvVectorLength( errors ); i++ )
    {
        QV_ERROR *error = qvErrorFrom( qvVectorBacking( errors )[i] );
        require( qvErrorLine( error ) > line && qvErrorOffset( error ) < static_cast< QV_INT >( size ) );
        line = qvErrorLine( error );
    }

    Ref< QV_VECTOR > lines( qvStoreEncodeToStringVector( store ) );
    require( qvStoreEquals( store, Ref< QV_STORE >( qvStoreDecodeFromStringVector( lines ) ) ) );

    // Line and paragraph separators in a value end its line the first time; then there are none left.
    Ref< QV_STORE > first = throughText( store );
    require( qvStoreEquals( first, throughText( first ) ) );
}
} // namespace qv::fuzz

QV_FUZZ_READER( decode )

// Decodes bytes in a UTF charset, at once and in pieces, which must come to the same, and encodes the text again.

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_string.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_source.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"

#include <algorithm>
#include <cstdlib>

using qv::Ref;

namespace
{
void require( bool condition )
{
    if( !condition )
        abort();
}

Ref< QV_STRING > decodeInPieces( QV_INT charset, QV_BUFFER *bytes, QV_INT flags, QV_INT piece )
{
    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( bytes ) );
    Ref< QV_BYTE_SOURCE >        byteSource( qvBufferByteSourceByteSource( bbs ) );
    Ref< QV_CHAR_SOURCE >        charSource( qvCharsetCreateCharSource( byteSource, charset, flags ) );
    Ref< QV_STRING >             text( qvStringCreate() );

    while( !qvCharSourceEnd( charSource ) )
    {
        QV_CHAR chars[64];
        QV_INT  count = qvCharSourceReadChars( charSource, chars, piece );
        require( count >= 0 && count <= piece );
        qvStringAppendChars( text.at(), chars, count );
        qvCharSourceRead( charSource, text.at(), piece );
    }

    return qvCharSourceError( charSource ) ? Ref< QV_STRING >() : std::move( text );
}

bool hasSurrogates( QV_STRING *text )
{
    const QV_CHAR *chars = qvStringBacking( text );
    return std::any_of( chars, chars + qvStringLength( text ), []( QV_CHAR ch ) { return ch >> 11 == 0xD800 >> 11; } );
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size )
{
    [[maybe_unused]] static const bool started =
        ( qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr ), true );

    if( size < 2 )
        return 0;

    QV_INT flags   = data[0] & 0xF;
    QV_INT charset = QV_CHARSET_UTF_8 + ( data[0] >> 4 ) % 7;
    QV_INT piece   = data[1] % 64 + 1;

    Ref< QV_BUFFER > bytes( qvBufferCreateFromBytesCopy( data + 2, static_cast< QV_INT >( size - 2 ) ) );
    Ref< QV_STRING > whole( qvCharsetBufferToStringWithFlags( charset, bytes, flags ) );
    Ref< QV_STRING > pieces = decodeInPieces( charset, bytes, flags, piece );

    require( !whole == !pieces );
    require( whole || ( flags & QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER ) );

    if( !whole )
        return 0;

    require( qvStringEquals( whole, pieces ) );

    // UTF-16 reads two surrogates in a row as one character.
    if( charset >= QV_CHARSET_UTF_16 && charset <= QV_CHARSET_UTF_16_LE && hasSurrogates( whole ) )
        return 0;

    Ref< QV_BUFFER > encoded( qvCharsetStringToBuffer( charset, whole ) );
    Ref< QV_STRING > again( qvCharsetBufferToStringWithFlags(
        charset, encoded, QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK | QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER ) );
    require( again && qvStringEquals( whole, again ) );

    return 0;
}

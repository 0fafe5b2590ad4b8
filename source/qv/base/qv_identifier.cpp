#include "qv/base/qv_identifier.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_random.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"

struct QV_IDENTIFIER : QV_OBJ
{
    QV_STRING *text; // 32 of 0-9 and A-F
};

namespace
{
const QV_INT BYTES  = 16;
const QV_INT DIGITS = 2 * BYTES;

bool isIdentifierDigit( QV_CHAR ch )
{
    return ( ch >= U'0' && ch <= U'9' ) || ( ch >= U'A' && ch <= U'F' );
}

// Takes over the text.
QV_IDENTIFIER *createIdentifier( QV_STRING *text )
{
    QV_IDENTIFIER *ident = qv::create< QV_IDENTIFIER >( qvIdentifierSort() );
    ident->text          = text;

    return ident;
}

void freeIdentifier( QV_OBJ *thisObj )
{
    qv::drop( qvIdentifierFrom( thisObj )->text );
}

QV_INT compareIdentifiers( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    return qvObjCompare( qv::obj( qvIdentifierFrom( thisObj )->text ), qv::obj( qvIdentifierFrom( thatObj )->text ) );
}

QV_STRING *identifierToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    return qv::retain( qvIdentifierFrom( thisObj )->text );
}
} // namespace

QV___FAMILY( Identifier, QV_IDENTIFIER, freeIdentifier, compareIdentifiers, identifierToString )

QV_IDENTIFIER *qvIdentifierCreate( void )
{
    static const char32_t HEX[] = U"0123456789ABCDEF";

    uint8_t bytes[BYTES];
    QV_CHAR chs[DIGITS];
    qvRandomBytes( bytes, BYTES );

    for( QV_INT i = 0; i < BYTES; i++ )
    {
        chs[2 * i]     = HEX[bytes[i] >> 4];
        chs[2 * i + 1] = HEX[bytes[i] & 15];
    }

    return createIdentifier( qvStringCreateFromCharsCopy( chs, DIGITS ) );
}

QV_IDENTIFIER *qvIdentifierTryCreateFromString( QV_STRING *qvs )
{
    QV_CHECK( qvs );

    if( qvs->length != DIGITS )
        return nullptr;

    for( QV_INT i = 0; i < DIGITS; i++ )
        if( !isIdentifierDigit( qv::chars( qvs )[i] ) )
            return nullptr;

    return createIdentifier( qv::retain( qvs ) );
}

QV_IDENTIFIER *qvIdentifierTryCreateFromBuffer( QV_BUFFER *buffer )
{
    QV_CHECK( buffer );

    if( qvBufferLength( buffer ) != DIGITS )
        return nullptr;

    // Read as UTF-8, which is ASCII if this is the text of an Identifier.
    qv::Ref< QV_STRING > text(
        qvStringCreateFromCstr( reinterpret_cast< const char * >( qvBufferBacking( buffer ) ), DIGITS ) );

    return qvIdentifierTryCreateFromString( text );
}

QV_BUFFER *qvIdentifierBuffer( QV_IDENTIFIER *ident )
{
    QV_CHECK( ident );

    uint8_t bytes[DIGITS];

    for( QV_INT i = 0; i < DIGITS; i++ )
        bytes[i] = static_cast< uint8_t >( qv::chars( ident->text )[i] );

    return qvBufferCreateFromBytesCopy( bytes, DIGITS );
}

QV_STRING *qvIdentifierString( QV_IDENTIFIER *ident )
{
    QV_CHECK( ident );
    return qv::retain( ident->text );
}

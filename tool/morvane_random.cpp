#include "morvane_tool.h"

#include "qv/base/qv_random.h"
#include "qv/io/qv_print.h"

namespace morvane
{
namespace
{
const char COMMAND[] = "morvane random";

// Reads a word as an integer that isn't negative. False, with a line on the standard error stream, for any other word.
bool readNumber( QV_STRING *word, QV_INT *value )
{
    if( readInteger( word, value ) && *value >= 0 )
        return true;

    complain( COMMAND, word, "no integer from 0 to 9223372036854775807" );
    return false;
}

// One line of any length, written in pieces.
QV_BOOL bytes( QV_VECTOR *argv, void *context )
{
    if( qvVectorLength( argv ) != 1 )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    QV_INT count;

    if( !readNumber( wordAt( argv, 0 ), &count ) )
        return QV_FALSE;

    const QV_INT PIECE   = 1024;
    bool         written = true;

    while( count > 0 && written )
    {
        uint8_t piece[PIECE];
        char    digits[2 * PIECE];
        QV_INT  length = count < PIECE ? count : PIECE;
        qvRandomBytes( piece, length );

        for( QV_INT i = 0; i < length; i++ )
        {
            digits[2 * i]     = "0123456789abcdef"[piece[i] >> 4];
            digits[2 * i + 1] = "0123456789abcdef"[piece[i] & 0xF];
        }

        written = put( digits, 2 * length );
        count -= length;
    }

    put( "\n", 1 );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

QV_BOOL integer( QV_VECTOR *argv, void *context )
{
    if( qvVectorLength( argv ) != 2 )
        return QV_FALSE;

    contextOf( context )->status = FAILURE;
    QV_INT low;
    QV_INT high;

    if( !readNumber( wordAt( argv, 0 ), &low ) || !readNumber( wordAt( argv, 1 ), &high ) )
        return QV_FALSE;

    if( low > high )
    {
        complain( COMMAND, wordAt( argv, 1 ), "less than the lowest value" );
        return QV_FALSE;
    }

    qvPrintFormatCstr( "%i", -1, qvRandomNonNegativeIntRange( low, high ) );
    contextOf( context )->status = SUCCESS;

    return QV_TRUE;
}

const Tool TOOLS[] = {
    { "bytes", "COUNT", "prints random bytes, two hexadecimal digits each", bytes },
    { "int", "LOW HIGH", "prints an integer from LOW to HIGH, both included", integer },
};
} // namespace

QV_BOOL randomTool( QV_VECTOR *argv, void *context )
{
    runTool( COMMAND, TOOLS, sizeof( TOOLS ) / sizeof( TOOLS[0] ), argv, contextOf( context ) );
    return contextOf( context )->status == SUCCESS ? QV_TRUE : QV_FALSE;
}
} // namespace morvane

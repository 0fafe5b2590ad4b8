#include "morvane_file.h"
#include "morvane_progress.h"
#include "morvane_tool.h"

#include "qv/base/qv_random.h"
#include "qv/io/qv_print.h"
#include "qv/sys/qv_int.h"

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
} // namespace

// One line of any length, written in pieces.
int randomBytes( const Arguments &arguments )
{
    QV_INT count;

    if( !readNumber( arguments.wordAt( 0 ), &count ) )
        return FAILURE;

    const QV_INT PIECE   = 1024;
    bool         written = true;

    if( !isOutputTerminal() )
        beginProgress( nullptr, QV_INT_ADD_OK( count, count ) ? 2 * count : -1 );

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
        addProgress( 2 * length );
        count -= length;
    }

    endProgress();
    put( "\n", 1 );
    return SUCCESS;
}

int randomInteger( const Arguments &arguments )
{
    QV_INT low;
    QV_INT high;

    if( !readNumber( arguments.wordAt( 0 ), &low ) || !readNumber( arguments.wordAt( 1 ), &high ) )
        return FAILURE;

    if( low > high )
    {
        complain( COMMAND, arguments.wordAt( 1 ), "less than the lowest value" );
        return FAILURE;
    }

    qvPrintFormatCstr( "%i", -1, qvRandomNonNegativeIntRange( low, high ) );
    return SUCCESS;
}
} // namespace morvane

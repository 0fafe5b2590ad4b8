#include "qv/unicode/qv_unicode_normalizer_stages_private.h"

#include "qv/base/qv_string_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

namespace
{
using namespace qv::normalizer;

// Declares the array to the object.
void account( QV_UNICODE_NORMALIZER *norm )
{
    qv___ObjDbgSetAllocationSizeN( norm, norm->capacity, sizeof( QV_CHAR ) );
}
} // namespace

/* The array ------------------------------------------------------------------------------------------------------ */

void qv::normalizer::toFront( QV_UNICODE_NORMALIZER *norm )
{
    QV_INT by = norm->first;

    qvMemMoveN( norm->chars, norm->chars + by, norm->length - by, sizeof( QV_CHAR ) );
    norm->first = 0;
    norm->readable -= by;
    norm->pending -= by;
    norm->length -= by;
}

__attribute__( ( noinline ) ) void qv::normalizer::enlarge( QV_UNICODE_NORMALIZER *norm, QV_INT count )
{
    // Moving is cheaper than enlarging, and paid for by the characters that were read: there are as many. The places
    // that a whole text keeps free before it are not worth it.
    if( norm->first > QV_STRING_FSPACE && norm->first >= norm->length - norm->first )
        toFront( norm );

    QV_CHECK( QV_INT_ADD_OK( norm->length, count ) );

    if( norm->length + count <= norm->capacity )
        return;

    QV_INT   room = norm->length + count;
    QV_CHAR *lent = norm->isLent ? norm->chars : nullptr;
    norm->isLent  = false;
    norm->chars   = lent ? nullptr : norm->chars;

    norm->capacity = QV_INT_ADD_OK( room, room / 2 ) ? room + room / 2 : room;
    norm->chars    = static_cast< QV_CHAR * >( qvMemReallocN( norm->chars, norm->capacity, sizeof( QV_CHAR ) ) );
    account( norm );

    if( lent )
        qvMemCopyN( norm->chars, lent, norm->length, sizeof( QV_CHAR ) );
}

void qv::normalizer::freeArray( QV_UNICODE_NORMALIZER *norm )
{
    if( !norm->isLent )
        qvMemFree( norm->chars );

    norm->isLent   = false;
    norm->chars    = nullptr;
    norm->capacity = 0;
    account( norm );
}

/* Ordering ------------------------------------------------------------------------------------------------------- */

namespace
{
// Brings a run of marks into the order of their classes. Marks of one class keep their order.
void orderRun( QV_CHAR *run, QV_INT length )
{
    if( length <= 16 )
    {
        for( QV_INT i = 1; i < length; i++ )
        {
            QV_CHAR ch   = run[i];
            QV_INT  cccv = combiningClass( ch );
            QV_INT  at   = i;

            for( ; at > 0 && combiningClass( run[at - 1] ) > cccv; at-- )
                run[at] = run[at - 1];

            run[at] = ch;
        }

        return;
    }

    // Sorts by counting, so that the time is linear for runs of any length.
    QV_CHAR ordered[LIMIT + LONGEST_DECOMPOSITION];
    QV_INT  places[257] = {};

    for( QV_INT i = 0; i < length; i++ )
        places[combiningClass( run[i] ) + 1]++;

    for( int i = 1; i < 256; i++ )
        places[i] += places[i - 1];

    for( QV_INT i = 0; i < length; i++ )
        ordered[places[combiningClass( run[i] )]++] = run[i];

    qvMemCopyN( run, ordered, length, sizeof( QV_CHAR ) );
}
} // namespace

__attribute__( ( noinline ) ) void qv::normalizer::order( QV_CHAR *chars, QV_INT length )
{
    for( QV_INT i = 0; i < length; i++ )
    {
        QV_INT start = i;

        while( i < length && combiningClass( chars[i] ) != 0 )
            i++;

        orderRun( chars + start, i - start );
    }
}

/* Decomposing ---------------------------------------------------------------------------------------------------- */

namespace
{
// Calls `put` with each character of a decomposition in all steps and its class. `value` is that of decomposeFully().
template< class Put >
inline void decomposeOne( QV_CHAR ch, uint32_t value, Put put )
{
    if( value < LOOK_CLOSER )
    {
        put( ch, value );
    }
    else if( value > LOOK_CLOSER )
    {
        Decomposition full = fullDecomposition( value );

        for( QV_INT i = 0; i < full.length; i++ )
            put( full.chars[i] & 0xFFFFFF, full.chars[i] >> 24 );
    }
    else
    {
        QV_CHAR hangul[3];
        QV_INT  length = decomposeHangul( ch, hangul );

        for( QV_INT i = 0; i < length; i++ )
            put( hangul[i], 0 );
    }
}
} // namespace

/* Composing ------------------------------------------------------------------------------------------------------ */

void qv::normalizer::composeTo( QV_UNICODE_NORMALIZER *norm, QV_INT end )
{
    QV_CHAR *chars    = norm->chars;
    QV_INT   readable = norm->readable;
    QV_INT   to       = norm->pending;
    QV_CHAR  starter  = norm->starter;
    QV_INT   lastCccv = norm->lastCccv;

    for( QV_INT from = to; from < end; from++ )
    {
        QV_CHAR ch   = chars[from];
        QV_INT  cccv = combiningClass( ch );

        if( readable < to && ( lastCccv < cccv || ( lastCccv | cccv ) == 0 ) )
        {
            if( QV_CHAR composite = composePair( starter, ch, lastCccv == 0 ) )
            {
                chars[readable] = composite;
                starter         = composite;
                continue;
            }
        }

        if( cccv == 0 )
        {
            starter  = ch;
            readable = to;
            lastCccv = 0;
        }
        else if( lastCccv < cccv )
        {
            lastCccv = cccv;
        }

        chars[to++] = ch;
    }

    if( to < end )
    {
        for( QV_INT from = end; from < norm->length; from++ )
            chars[to + from - end] = chars[from];

        norm->length -= end - to;
    }

    norm->pending = to;

    // With so many marks, the starter composes with no further ones.
    if( to - readable >= LIMIT )
    {
        readable = to;
        starter  = 0;
        lastCccv = 255;
    }

    norm->readable = readable;
    norm->starter  = starter;
    norm->lastCccv = lastCccv;
}

/* Steps ---------------------------------------------------------------------------------------------------------- */

void qv::normalizer::step( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch )
{
    reserve( norm, LONGEST_DECOMPOSITION );

    QV_INT lastStarter = -1; // index of the last starter that this step has written

    auto put = [norm, &lastStarter]( QV_CHAR each, QV_INT cccv )
    {
        if( cccv == 0 )
            lastStarter = norm->length;
        else if( cccv < norm->pendingCccv )
            norm->unordered = true;

        norm->chars[norm->length++] = each;
        norm->pendingCccv           = cccv;
    };

    decomposeOne( ch, decomposeFully( ch, isCompatible( norm ) ), put );

    if( lastStarter > norm->pending )
    {
        moveOn( norm, lastStarter );
    }
    else if( norm->length - norm->pending >= LIMIT )
    {
        moveOn( norm, norm->length );
        norm->pendingCccv = 0;
    }
}

void qv::normalizer::writeChar( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch )
{
    QV_CHAR high        = norm->highSurrogate;
    norm->highSurrogate = 0;

    if( ch - 0xD800 < 0x400 )
        norm->highSurrogate = ch;
    else if( ch - 0xDC00 >= 0x400 && QV_CHAR_OK( ch ) )
        step( norm, ch );
    else if( ch - 0xDC00 < 0x400 && high )
        step( norm, 0x10000 + ( ( high - 0xD800 ) << 10 ) + ( ch - 0xDC00 ) );
}

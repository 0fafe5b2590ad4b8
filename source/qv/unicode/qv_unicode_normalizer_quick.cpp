#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/unicode/qv_unicode_normalizer_stages_private.h"

/* The shorter ways of writing a text, each of which leaves the state that as many steps would. */

namespace
{
using namespace qv::normalizer;

// Marks after a starter that the quick check accepts, far fewer than LIMIT.
const QV_INT QUICK_MARKS = 64;

/* Checking ------------------------------------------------------------------------------------------------------- */

// Eight characters are checked at once, so that text without marks takes one decision for all of them.
const QV_INT GROUP = 8;

// What the form makes of a character: a value below LOOK_CLOSER is the class of one that stays as it is and joins no
// other.
template< QV_INT form >
inline uint32_t quickCheck( QV_CHAR ch )
{
    return form <= QV_UNICODE_NORMAL_FORM_NFKC ? composedQuickCheck( ch, form & 1 ) : decomposeFully( ch, form & 1 );
}

template< QV_INT form >
inline bool isStarter( QV_CHAR ch )
{
    return ch < SIMPLE[form] || ( QV_CHAR_OK( ch ) && quickCheck< form >( ch ) == 0 );
}

// How many characters are checked one by one after a group that is not all starters: LEAST if there was a whole group
// of starters before, then twice as many each time, up to MOST.
const QV_INT LEAST = 2 * GROUP, MOST = 16 * GROUP;

// True if the groups that vectors have taken are what the tables tell of each character.
template< QV_INT form >
[[maybe_unused]] bool areOrdered( const QV_CHAR *chs, QV_INT count )
{
    for( QV_INT i = 0; i < count; i++ )
    {
        uint32_t cccv = quickCheck< form >( chs[i] );

        if( cccv >= LOOK_CLOSER || ( i > 0 && cccv > 0 && quickCheck< form >( chs[i - 1] ) > cccv ) )
            return false;
    }

    return true;
}

// The number of characters for the next piece, by that of the last one and that of the characters in groups before it.
inline QV_INT nextPiece( QV_INT piece, QV_INT whole )
{
    return whole > 0 ? LEAST : piece < MOST ? 2 * piece : MOST;
}

// The number of characters at the start that are in whole groups of starters.
template< QV_INT form >
inline QV_INT checkGroups( const QV_CHAR *chs, QV_INT count )
{
    static_assert( GROUP == 8 );

    QV_INT i = qv::groupsBelow( chs, count, SIMPLE[form] );

    for( ; i + GROUP <= count && qv::groupsBelow( chs + i, GROUP, 0x110000 ); i += GROUP )
    {
        uint32_t all = 0;

        for( QV_INT k = 0; k < GROUP; k++ )
            all |= quickCheck< form >( chs[i + k] );

        if( all != 0 )
            break;
    }

    return i;
}

// The index of the last starter before a place, or -1.
template< QV_INT form >
inline QV_INT lastStarter( const QV_CHAR *chs, QV_INT end )
{
    QV_INT i = end - 1;

    while( i >= 0 && quickCheck< form >( chs[i] ) != 0 )
        i--;

    return i;
}

// The number of characters at the start in groups that are in the form: with vectors of 64 bytes starters and marks, and
// the last group need not be whole; else starters in whole groups. `last` is as in checkRun().
template< QV_INT form >
inline QV_INT checkOrdered( const QV_CHAR *chs, QV_INT count, uint32_t *last, bool isLong )
{
    if( !isLong || !qv::vectors::has64() )
    {
        QV_INT whole = checkGroups< form >( chs, count );
        *last        = whole > 0 ? 0 : *last;

        return whole;
    }

    // A mark of class 1 comes before all others, so that it need not be told from a starter.
    uint32_t cccv  = *last + ( *last != 0 );
    QV_INT   whole = qv::orderedGroups64( chs, count, inertBits + form * 768, markClasses + form * 256, &cccv );
    QV_ASSERT( areOrdered< form >( chs, whole ) );
    *last = cccv - ( cccv != 0 );

    return whole;
}

// The length for which a text is in the form. `isLong` tells that this is likely to be more than a few characters.
template< QV_INT form >
QV_INT checkRun( const QV_CHAR *chs, QV_INT count, bool isLong )
{
    QV_INT   i     = 0;
    QV_INT   piece = LEAST;
    uint32_t last  = 0; // the class of the last character: for a mark, less 1
    QV_INT   marks = 0; // since the last starter
    bool     holds = true;

    while( i < count && holds )
    {
        QV_INT whole = checkOrdered< form >( chs + i, count - i, &last, isLong );
        piece        = nextPiece( piece, whole );
        i += whole;

        if( whole > 0 )
            marks = i - 1 - lastStarter< form >( chs, i );

        // Starters and marks take the same way without a branch, since no prediction of the next one would be right.
        for( QV_INT end = i + piece < count ? i + piece : count; i < end; i++ )
        {
            uint32_t cccv = QV_CHAR_OK( chs[i] ) ? quickCheck< form >( chs[i] ) : LOOK_CLOSER;

            // The class less 1 of a starter is above those of all marks, so a starter passes.
            if( cccv >= LOOK_CLOSER || cccv - 1 < last || marks > QUICK_MARKS )
            {
                holds = false;
                break;
            }

            last  = cccv - ( cccv != 0 );
            marks = ( marks + 1 ) & -static_cast< QV_INT >( cccv != 0 );
        }
    }

    return i;
}

template< QV_INT form >
inline Run runOf( const QV_CHAR *chs, QV_INT length )
{
    QV_INT starter = lastStarter< form >( chs, length );

    return { length, starter, lastStarter< form >( chs, starter ) };
}

// The length for which a whole text is in the form.
template< QV_INT form >
Run checkAll( const QV_CHAR *chs, QV_INT count )
{
    // A short text is looked at for characters below the limit of the form first.
    if( count <= FEW )
    {
        QV_INT i = qv::groupsBelow( chs, count, SIMPLE[form] );

        while( i < count && chs[i] < SIMPLE[form] )
            i++;

        if( i == count )
            return { count, -1, -1 };
    }

    QV_INT length = checkRun< form >( chs, count, true );

    return length == count ? Run{ count, -1, -1 } : runOf< form >( chs, length );
}

/* Composing ------------------------------------------------------------------------------------------------------ */

// What a text has become whose marks are in order: so many characters read and written, up to a starter or the end.
struct Composed
{
    QV_INT   read;
    QV_INT   written;
    QV_INT   unit;  // where the last starter was written
    uint32_t after; // the class of the last mark that stands after it, or 0
};

// The class of the last character of what a starter decomposes to, which marks after it must not be below.
template< QV_INT form >
inline uint32_t lastClassOf( QV_CHAR starter )
{
    uint32_t value = decomposeFully( starter, form & 1 );

    if( value <= LOOK_CLOSER )
        return 0;

    Decomposition full = fullDecomposition( value );

    return full.chars[full.length - 1] >> 24;
}

// Composes a text that begins with a starter, unit by unit: a starter and what comes up to the next one that does not join
// it. Ends before a unit that only the stages can tell, before the last one unless the text ends with it, or after
// `patience` units of one character in a row. Nothing is written beyond as many characters as are read. Its loop is bound
// by the fetching of code: where it does not begin with a line of the cache, short texts take a tenth longer.
template< QV_INT form >
[[gnu::aligned( 64 )]] inline Composed composeInOrder(
    const QV_CHAR *chs, QV_INT count, QV_CHAR *to, bool isEnd, QV_INT patience )
{
    Composed done  = { 0, 0, 0, 0 };
    QV_INT   alone = 0;

    for( QV_INT i = 0; i < count && alone < patience; )
    {
        if( i + 1 < count && isStarter< form >( chs[i + 1] ) )
        {
            to[done.written] = chs[i++];
            done             = { i, done.written + 1, done.written, 0 };
            alone++;
            continue;
        }

        // A pair before a starter, as most of what changes: nothing else can join it, and it takes no ordering.
        if( i + 2 < count && isStarter< form >( chs[i + 2] ) && QV_CHAR_OK( chs[i + 1] )
            && decomposeFully( chs[i], form & 1 ) < LOOK_CLOSER
            && decomposeFully( chs[i + 1], form & 1 ) < LOOK_CLOSER )
        {
            if( QV_CHAR composite = composePair( chs[i], chs[i + 1], true ) )
            {
                to[done.written] = composite;
                done             = { i + 2, done.written + 1, done.written, 0 };
                i                = done.read;
                alone            = 0;
                continue;
            }
        }

        QV_INT   start   = i;
        QV_INT   out     = done.written;
        QV_CHAR  starter = chs[i++];
        uint32_t last    = 0; // the class of the last mark
        uint32_t after   = 0; // and of the last one that has not joined

        // Syllables take no look at the tables.
        if( i < count && starter - HANGUL_L < L_COUNT && chs[i] - HANGUL_V < V_COUNT )
        {
            starter = HANGUL_S + ( ( starter - HANGUL_L ) * V_COUNT + ( chs[i++] - HANGUL_V ) ) * T_COUNT;

            if( i < count && chs[i] - HANGUL_T - 1 < T_COUNT - 1 )
                starter += chs[i++] - HANGUL_T;
        }

        for( ; i < count; i++ )
        {
            QV_CHAR  ch   = chs[i];
            uint32_t cccv = QV_CHAR_OK( ch ) ? quickCheck< form >( ch ) : LOOK_CLOSER;

            if( cccv == 0 )
                break;

            if( i == start + 1 )
                last = lastClassOf< form >( starter );

            bool joins = cccv == LOOK_CLOSER;

            if( joins )
                cccv = QV_CHAR_OK( ch ) ? decomposeFully( ch, form & 1 ) : LOOK_CLOSER;

            if( cccv >= LOOK_CLOSER || ( cccv > 0 && cccv < last ) || i - start > QUICK_MARKS )
                return done;

            QV_CHAR composite =
                joins && ( after < cccv || ( after | cccv ) == 0 ) ? composePair( starter, ch, after == 0 ) : 0;
            last = cccv;

            if( composite != 0 )
            {
                starter = composite;
                continue;
            }

            if( cccv == 0 )
                break;

            to[++out] = ch;
            after     = cccv;
        }

        if( i == count && !isEnd )
            break;

        to[done.written] = starter;
        alone            = 0;
        done             = { i, out + 1, done.written, after };
    }

    return done;
}

// Composes what needs no stages. Returns the number of characters that it has taken from the text, which begins with a
// starter.
template< QV_INT form >
QV_INT composeUnits( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    const QV_INT PIECE = 1024, PATIENCE = 8;

    if( norm->pending < norm->length )
        moveOn( norm, norm->length );

    // A piece at a time, since what is reserved costs memory.
    QV_INT piece = count < PIECE ? count : PIECE;
    reserve( norm, piece );
    Composed done = composeInOrder< form >( chs, piece, norm->chars + norm->length, false, PATIENCE );

    if( done.read > 0 )
    {
        norm->readable    = norm->length + done.unit;
        norm->starter     = norm->chars[norm->readable];
        norm->lastCccv    = static_cast< QV_INT >( done.after );
        norm->pendingCccv = 0;
        norm->length += done.written;
        norm->pending = norm->length;
    }

    return done.read;
}

// Writes characters in a form that composes.
template< QV_INT form >
void writeComposed( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    QV_INT i      = 0;
    bool   isLong = true;

    while( i < count )
    {
        if( norm->highSurrogate || !isStarter< form >( chs[i] ) )
        {
            writeChar( norm, chs[i++] );
            continue;
        }

        Run    run = runOf< form >( chs + i, checkRun< form >( chs + i, count - i, isLong ) );
        QV_INT end = i + run.length;
        isLong     = run.length >= MOST; // as the last one was

        if( run.previous >= 0 )
        {
            pass( norm, chs + i, run );
            i += run.starter;
        }

        if( QV_INT composed = composeUnits< form >( norm, chs + i, count - i ) )
            i += composed;
        else
            for( ; i < end; i++ )
                step( norm, chs[i] );
    }
}

/* Decomposing ---------------------------------------------------------------------------------------------------- */

// What characters have become that were decomposed as long as they were in order, so that none had to move.
struct Decomposed
{
    QV_INT   read;
    QV_CHAR *end;
    QV_CHAR *starter; // the last one that was written, or null
    uint32_t last;    // the class of the last character: for a mark, less 1
};

// `last` is that of the character before. A character writes up to LONGEST_DECOMPOSITION, and at least four.
inline Decomposed decomposeInOrder( const QV_CHAR *chs, QV_INT count, QV_CHAR *to, bool byAll, uint32_t last )
{
    QV_CHAR *starter = nullptr;
    QV_INT   i       = 0;

    for( ; i < count && QV_CHAR_OK( chs[i] ); i++ )
    {
        uint32_t value = decomposeFully( chs[i], byAll );

        if( value < LOOK_CLOSER )
        {
            // The class less 1 of a starter is above those of all marks, so a starter passes.
            if( value - 1 < last )
                break;

            starter = value == 0 ? to : starter;
            last    = value - ( value != 0 );
            *to++   = chs[i];
        }
        else if( value > LOOK_CLOSER )
        {
            Decomposition full = fullDecomposition( value );

            if( !full.ordered )
                break;

            // Most decompositions have no more than four characters, and storing four without a condition costs less.
            for( QV_INT k = 0; k < 4; k++ )
                to[k] = full.chars[k] & 0xFFFFFF;

            for( QV_INT k = 4; k < full.length; k++ )
                to[k] = full.chars[k] & 0xFFFFFF;

            uint32_t cccv = full.chars[full.length - 1] >> 24;
            starter       = to + full.lastStarter;
            last          = cccv - ( cccv != 0 );
            to += full.length;
        }
        else if( chs[i] - HANGUL_S < S_COUNT )
        {
            to += decomposeHangul( chs[i], to );
            starter = to - 1;
            last    = 0;
        }
        else
        {
            break;
        }
    }

    return { i, to, starter, last };
}

// Decomposes what needs no ordering. Returns the number of characters that it has taken from the text. There must be so
// few that LIMIT cannot be reached.
QV_INT decomposeInOrder( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    QV_ASSERT( norm->length - norm->pending + count * LONGEST_DECOMPOSITION < LIMIT );
    reserve( norm, ( count + 1 ) * LONGEST_DECOMPOSITION );

    uint32_t   last = norm->pendingCccv ? static_cast< uint32_t >( norm->pendingCccv - 1 ) : 0;
    Decomposed done = decomposeInOrder( chs, count, norm->chars + norm->length, isCompatible( norm ), last );

    norm->length      = done.end - norm->chars;
    norm->pending     = done.starter ? done.starter - norm->chars : norm->pending;
    norm->readable    = norm->pending;
    norm->pendingCccv = norm->length > norm->pending ? combiningClass( done.end[-1] ) : 0;

    return done.read;
}

// Writes characters in a form that does not compose.
template< QV_INT form >
void writeDecomposed( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    static_assert( ( MOST + 1 ) * LONGEST_DECOMPOSITION < LIMIT / 2 + LIMIT / 4 );

    QV_INT i     = 0;
    QV_INT piece = LEAST;

    while( i < count )
    {
        if( norm->highSurrogate || norm->unordered || norm->length - norm->pending > LIMIT / 4 )
        {
            writeChar( norm, chs[i++] );
            continue;
        }

        QV_INT whole = checkGroups< form >( chs + i, count - i );

        if( whole > 0 )
        {
            // The last one is written next.
            pass( norm, chs + i, { whole, whole - 1, whole - 2 } );
            i += whole - 1;
        }

        piece      = nextPiece( piece, whole );
        QV_INT end = i + piece < count ? i + piece : count;
        i += decomposeInOrder( norm, chs + i, end - i );

        if( i < end )
            writeChar( norm, chs[i++] );
    }
}
} // namespace

qv::normalizer::Run qv::normalizer::check( const QV_CHAR *chs, QV_INT count, QV_INT form )
{
    switch( form )
    {
    case QV_UNICODE_NORMAL_FORM_NFC:
        return checkAll< QV_UNICODE_NORMAL_FORM_NFC >( chs, count );
    case QV_UNICODE_NORMAL_FORM_NFKC:
        return checkAll< QV_UNICODE_NORMAL_FORM_NFKC >( chs, count );
    case QV_UNICODE_NORMAL_FORM_NFD:
        return checkAll< QV_UNICODE_NORMAL_FORM_NFD >( chs, count );
    default:
        return checkAll< QV_UNICODE_NORMAL_FORM_NFKD >( chs, count );
    }
}

namespace
{
template< QV_INT form >
inline QV_INT writeInOrder( const QV_CHAR *chs, QV_INT count, QV_CHAR *to )
{
    if constexpr( form <= QV_UNICODE_NORMAL_FORM_NFKC )
    {
        if( !isStarter< form >( chs[0] ) )
            return -1;

        Composed done = composeInOrder< form >( chs, count, to, true, count );

        return done.read == count ? done.written : -1;
    }
    else
    {
        Decomposed done = decomposeInOrder( chs, count, to, form & 1, 0 );

        return done.read == count ? done.end - to : -1;
    }
}
} // namespace

QV_INT qv::normalizer::writeInOrder( const QV_CHAR *chs, QV_INT count, QV_INT form, QV_CHAR *to )
{
    QV_ASSERT( count > 0 && count <= FEW );

    switch( form )
    {
    case QV_UNICODE_NORMAL_FORM_NFC:
        return ::writeInOrder< QV_UNICODE_NORMAL_FORM_NFC >( chs, count, to );
    case QV_UNICODE_NORMAL_FORM_NFKC:
        return ::writeInOrder< QV_UNICODE_NORMAL_FORM_NFKC >( chs, count, to );
    case QV_UNICODE_NORMAL_FORM_NFD:
        return ::writeInOrder< QV_UNICODE_NORMAL_FORM_NFD >( chs, count, to );
    default:
        return ::writeInOrder< QV_UNICODE_NORMAL_FORM_NFKD >( chs, count, to );
    }
}

void qv::normalizer::pass( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, const Run &run )
{
    QV_ASSERT( combiningClass( chs[0] ) == 0 && run.previous >= 0 && run.previous < run.starter );

    if( norm->pending < norm->length )
        moveOn( norm, norm->length );

    reserve( norm, run.starter + LONGEST_DECOMPOSITION );

    QV_INT at = norm->length;
    qvMemCopyN( norm->chars + at, chs, run.starter, sizeof( QV_CHAR ) );
    norm->length += run.starter;
    norm->pending     = norm->length;
    norm->pendingCccv = 0;

    if( composes( norm ) )
    {
        norm->readable = at + run.previous;
        norm->starter  = chs[run.previous];
        norm->lastCccv = combiningClass( chs[run.starter - 1] );
    }
    else
    {
        norm->readable = norm->length;
    }
}

void qv::normalizer::writeChars( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    switch( norm->normalForm )
    {
    case QV_UNICODE_NORMAL_FORM_NFC:
        return writeComposed< QV_UNICODE_NORMAL_FORM_NFC >( norm, chs, count );
    case QV_UNICODE_NORMAL_FORM_NFKC:
        return writeComposed< QV_UNICODE_NORMAL_FORM_NFKC >( norm, chs, count );
    case QV_UNICODE_NORMAL_FORM_NFD:
        return writeDecomposed< QV_UNICODE_NORMAL_FORM_NFD >( norm, chs, count );
    default:
        return writeDecomposed< QV_UNICODE_NORMAL_FORM_NFKD >( norm, chs, count );
    }
}

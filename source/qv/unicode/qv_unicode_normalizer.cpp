#include "qv/unicode/qv_unicode_normalizer.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/unicode/qv_unicode_normalizer_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

/* One array holds the text on its way, in three parts one behind the other:

   - from `first` to `readable` what is finished;
   - from `readable` to `pending`, only with composition, the current starter and the marks behind it that it did not
     take up;
   - from `pending` to `length` what was decomposed and is not in order yet: the last character of class 0 and what
     follows it.

   So characters move on by moving a border, and most of them never move themselves.

   Every character can go through step(), which is all that the algorithm needs. Most text goes by shorter ways, which
   leave the same state behind: what is normal already is copied by pass(), as far as check() tells; composeUnits()
   composes pairs and syllables that nothing else can join; decomposeInOrder() decomposes what needs no ordering. */

struct QV_UNICODE_NORMALIZER : QV_OBJ
{
    QV_CHAR  highSurrogate; // waits for the low one, or 0
    QV_INT   normalForm;
    QV_CHAR *chars; // the array, or null
    QV_INT   capacity;
    QV_INT   first;
    QV_INT   readable;
    QV_INT   pending;
    QV_INT   length;
    QV_CHAR  starter;     // the current starter, chars[readable], or 0 if there is none
    QV_INT   lastCccv;    // the highest class since the starter; 255 without one, so that nothing joins
    QV_INT   pendingCccv; // class of the last pending character; 0 if there is none
    bool     unordered;   // the marks among the pending characters are not in order
};

namespace
{
using namespace qv::unicode;

const QV_INT LIMIT = 4096; // characters that wait for the end of a run of marks

// Marks behind a starter up to which the quick check goes, far from where the limit begins to count.
const QV_INT QUICK_MARKS = 64;

// Below these no character changes or joins another one, by form.
const QV_CHAR SIMPLE[] = { 0x300, 0xA0, 0xC0, 0xA0 };

const QV_CHAR HANGUL_S = 0xAC00, HANGUL_L = 0x1100, HANGUL_V = 0x1161, HANGUL_T = 0x11A7; // no trailing one is T
const QV_CHAR L_COUNT = 19, V_COUNT = 21, T_COUNT = 28, S_COUNT = L_COUNT * V_COUNT * T_COUNT;

bool composes( const QV_UNICODE_NORMALIZER *norm )
{
    return norm->normalForm <= QV_UNICODE_NORMAL_FORM_NFKC;
}

bool isCompatible( const QV_UNICODE_NORMALIZER *norm )
{
    return norm->normalForm & 1;
}

void account( QV_UNICODE_NORMALIZER *norm )
{
    qv___ObjDbgSetAllocationSizeN( norm, norm->capacity, sizeof( QV_CHAR ) );
}

void reset( QV_UNICODE_NORMALIZER *norm )
{
    norm->highSurrogate = 0;
    norm->first         = 0;
    norm->readable      = 0;
    norm->pending       = 0;
    norm->length        = 0;
    norm->starter       = 0;
    norm->lastCccv      = 255;
    norm->pendingCccv   = 0;
    norm->unordered     = false;
}

// Puts the text at the front of the array.
void toFront( QV_UNICODE_NORMALIZER *norm )
{
    QV_INT by = norm->first;

    qvMemMoveN( norm->chars, norm->chars + by, norm->length - by, sizeof( QV_CHAR ) );
    norm->first = 0;
    norm->readable -= by;
    norm->pending -= by;
    norm->length -= by;
}

__attribute__( ( noinline ) ) void enlarge( QV_UNICODE_NORMALIZER *norm, QV_INT count )
{
    // What was read has paid for the move. A whole text keeps the places in front of it, which are not more than these.
    if( norm->first > QV_STRING_FSPACE && norm->first >= norm->length - norm->first )
        toFront( norm );

    QV_CHECK( QV_INT_ADD_OK( norm->length, count ) );

    if( norm->length + count <= norm->capacity )
        return;

    QV_INT room    = norm->length + count;
    norm->capacity = QV_INT_ADD_OK( room, room / 2 ) ? room + room / 2 : room;
    norm->chars    = static_cast< QV_CHAR * >( qvMemReallocN( norm->chars, norm->capacity, sizeof( QV_CHAR ) ) );
    account( norm );
}

// Looks at what a change has left behind.
inline void watch( const QV_UNICODE_NORMALIZER *norm )
{
    QV_ASSERT( norm->first >= 0 && norm->first <= norm->readable && norm->readable <= norm->pending );
    QV_ASSERT( norm->pending <= norm->length && norm->length <= norm->capacity );
    QV_ASSERT( composes( norm ) || norm->readable == norm->pending );
    QV_ASSERT( norm->starter == 0 || norm->chars[norm->readable] == norm->starter );
    QV_ASSERT( norm->highSurrogate == 0 || norm->highSurrogate - 0xD800 < 0x400 );
    QV_ASSERT( norm->lastCccv >= 0 && norm->lastCccv <= 255 && norm->pendingCccv >= 0 && norm->pendingCccv < 255 );
    QV_ASSERT( norm->length - norm->pending < LIMIT + LONGEST_DECOMPOSITION );
}

// Makes sure that so many more characters have room.
inline void reserve( QV_UNICODE_NORMALIZER *norm, QV_INT count )
{
    if( norm->capacity - norm->length < count )
        enlarge( norm, count );
}

/* Ordering ------------------------------------------------------------------------------------------------------- */

// Brings a run of marks into the order of their classes. Those of one class keep theirs.
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

    // By counting, so that the time stays linear for runs of any length.
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

// The same for all runs of a text.
__attribute__( ( noinline ) ) void order( QV_CHAR *chars, QV_INT length )
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

// The decomposition of a Hangul syllable, and of how many characters it is; three are written.
inline QV_INT decomposeHangul( QV_CHAR ch, QV_CHAR *to )
{
    QV_CHAR syllable = ch - HANGUL_S;
    QV_CHAR trailing = syllable % T_COUNT;

    to[0] = HANGUL_L + syllable / ( V_COUNT * T_COUNT );
    to[1] = HANGUL_V + syllable % ( V_COUNT * T_COUNT ) / T_COUNT;
    to[2] = HANGUL_T + trailing;

    return trailing ? 3 : 2;
}

// Gives `put` each character of a decomposition in all steps with its class. `value` is what decomposeFully() tells.
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

/* Composing ------------------------------------------------------------------------------------------------------ */

// What the starter and a character behind it compose to, or 0. Hangul is composed only where nothing stands between.
inline QV_CHAR composePair( QV_CHAR starter, QV_CHAR ch, bool adjacent )
{
    if( isSecond( ch ) )
        return qv::unicode::compose( starter, ch );

    if( !adjacent )
        return 0;

    if( starter - HANGUL_L < L_COUNT && ch - HANGUL_V < V_COUNT )
        return HANGUL_S + ( ( starter - HANGUL_L ) * V_COUNT + ( ch - HANGUL_V ) ) * T_COUNT;

    if( starter - HANGUL_S < S_COUNT && ( starter - HANGUL_S ) % T_COUNT == 0 && ch - HANGUL_T - 1 < T_COUNT - 1 )
        return starter + ( ch - HANGUL_T );

    return 0;
}

// Composes what is pending up to `end` and closes the gap behind it.
void composeTo( QV_UNICODE_NORMALIZER *norm, QV_INT end )
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

    // The starter is given up for good: what follows must not find it again.
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

// Nothing can change what is pending up to `end` any more.
inline void moveOn( QV_UNICODE_NORMALIZER *norm, QV_INT end )
{
    if( norm->unordered )
        order( norm->chars + norm->pending, norm->length - norm->pending );

    norm->unordered = false;

    if( composes( norm ) )
        composeTo( norm, end );
    else
        norm->pending = norm->readable = end;
}

// One character, which is no surrogate, decomposed. What a later one can no longer change moves on.
void step( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch )
{
    reserve( norm, LONGEST_DECOMPOSITION );

    QV_INT lastStarter = -1; // the last one that is new

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

void write( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch )
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

/* Passing -------------------------------------------------------------------------------------------------------- */

// How far the quick check holds. Starters are places of characters of class 0 that stay as they are, or -1.
struct Run
{
    QV_INT length;
    QV_INT starter;  // the last starter
    QV_INT previous; // the one before it
};

// Eight characters at once, so that text without marks needs one decision for all of them.
const QV_INT GROUP = 8;

// What a character does in a text in the form: below LOOK_CLOSER its class, if it stays as it is and joins nothing.
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

// Characters that are looked at one by one where a group is not one of starters; more where such groups are rare.
const QV_INT LEAST = 2 * GROUP, MOST = 16 * GROUP;

inline QV_INT nextPiece( QV_INT piece, QV_INT whole )
{
    return whole > 0 ? LEAST : piece < MOST ? 2 * piece : MOST;
}

// How many characters from the first one on are in whole groups of starters.
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

// The last starter in front of a place, or -1.
template< QV_INT form >
inline QV_INT lastStarter( const QV_CHAR *chs, QV_INT end )
{
    QV_INT i = end - 1;

    while( i >= 0 && quickCheck< form >( chs[i] ) != 0 )
        i--;

    return i;
}

template< QV_INT form >
Run check( const QV_CHAR *chs, QV_INT count )
{
    QV_INT   i     = 0;
    QV_INT   piece = LEAST;
    uint32_t last  = 0; // the class of the last character, less 1 for a mark
    QV_INT   marks = 0; // since the last starter
    bool     holds = true;

    while( i < count && holds )
    {
        QV_INT whole = checkGroups< form >( chs + i, count - i );
        piece        = nextPiece( piece, whole );
        last         = whole > 0 ? 0 : last;
        marks        = whole > 0 ? 0 : marks;
        i += whole;

        // Starters and marks alike, without a branch between them, since which one comes next cannot be guessed.
        for( QV_INT end = i + piece < count ? i + piece : count; i < end; i++ )
        {
            uint32_t cccv = QV_CHAR_OK( chs[i] ) ? quickCheck< form >( chs[i] ) : LOOK_CLOSER;

            // Less 1, a starter is above all classes.
            if( cccv >= LOOK_CLOSER || cccv - 1 < last || marks > QUICK_MARKS )
            {
                holds = false;
                break;
            }

            last  = cccv - ( cccv != 0 );
            marks = ( marks + 1 ) & -static_cast< QV_INT >( cccv != 0 );
        }
    }

    QV_INT starter = lastStarter< form >( chs, i );

    return { i, starter, lastStarter< form >( chs, starter ) };
}

// Takes a run that begins with a starter over as it is, up to its last starter, which comes next.
void pass( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, const Run &run )
{
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

// What the first characters of a text compose to, of which the first one is a starter, and how many these are: 1 where
// it stays alone; 0 where that takes a closer look. A starter has to follow, so that nothing else can join.
struct Unit
{
    QV_CHAR ch;
    QV_INT  length;
};

template< QV_INT form >
inline Unit composeUnit( const QV_CHAR *chs, QV_INT count )
{
    if( count > 1 && isStarter< form >( chs[1] ) )
        return { chs[0], 1 };

    const Unit none = { 0, 0 };

    if( count < 3 || !QV_CHAR_OK( chs[1] ) || decomposeFully( chs[0], form & 1 ) >= LOOK_CLOSER
        || decomposeFully( chs[1], form & 1 ) >= LOOK_CLOSER )
        return none;

    Unit unit = { composePair( chs[0], chs[1], true ), 2 };

    if( unit.ch - HANGUL_S < S_COUNT && chs[2] - HANGUL_T - 1 < T_COUNT - 1 )
        unit = { unit.ch + ( chs[2] - HANGUL_T ), 3 };

    return unit.ch != 0 && unit.length < count && isStarter< form >( chs[unit.length] ) ? unit : none;
}

// Composes pairs and syllables that stand between starters, which is most of what changes, without the way through
// all stages. Gives how many characters these were, and stops where several in a row stay alone.
template< QV_INT form >
QV_INT composeUnits( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    const int PATIENCE = 3;

    QV_INT i     = 0;
    int    alone = 0;

    while( i < count && alone < PATIENCE )
    {
        Unit unit = composeUnit< form >( chs + i, count - i );

        if( unit.length == 0 )
            break;

        if( i == 0 && norm->pending < norm->length )
            moveOn( norm, norm->length );

        reserve( norm, 1 );
        norm->chars[norm->length++] = unit.ch;
        norm->readable              = norm->length - 1;
        norm->pending               = norm->length;
        norm->starter               = unit.ch;
        norm->lastCccv              = 0;
        norm->pendingCccv           = 0;

        alone = unit.length == 1 ? alone + 1 : 0;
        i += unit.length;
    }

    return i;
}

template< QV_INT form >
void writeComposed( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    QV_INT i = 0;

    while( i < count )
    {
        if( norm->highSurrogate || !isStarter< form >( chs[i] ) )
        {
            write( norm, chs[i++] );
            continue;
        }

        Run    run = check< form >( chs + i, count - i );
        QV_INT end = i + run.length;

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

// Decomposes as long as everything is in order, so that nothing but a border moves; gives how many characters it took.
// It makes what as many steps make, for less than the limit can be reached with.
QV_INT decomposeInOrder( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    reserve( norm, ( count + 1 ) * LONGEST_DECOMPOSITION );

    const bool byAll   = isCompatible( norm );
    QV_CHAR   *to      = norm->chars + norm->length;
    QV_CHAR   *pending = norm->chars + norm->pending;
    uint32_t   last    = norm->pendingCccv ? static_cast< uint32_t >( norm->pendingCccv - 1 ) : 0;
    QV_INT     i       = 0;

    for( ; i < count && QV_CHAR_OK( chs[i] ); i++ )
    {
        uint32_t value = decomposeFully( chs[i], byAll );

        if( value < LOOK_CLOSER )
        {
            // Less 1, a starter is above all classes.
            if( value - 1 < last )
                break;

            pending = value == 0 ? to : pending;
            last    = value - ( value != 0 );
            *to++   = chs[i];
        }
        else if( value > LOOK_CLOSER )
        {
            Decomposition full = fullDecomposition( value );

            if( !full.ordered )
                break;

            // Mostly there are no more than four, and four without a condition cost less.
            for( QV_INT k = 0; k < 4; k++ )
                to[k] = full.chars[k] & 0xFFFFFF;

            for( QV_INT k = 4; k < full.length; k++ )
                to[k] = full.chars[k] & 0xFFFFFF;

            uint32_t cccv = full.chars[full.length - 1] >> 24;
            pending       = to + full.lastStarter;
            last          = cccv - ( cccv != 0 );
            to += full.length;
        }
        else if( chs[i] - HANGUL_S < S_COUNT )
        {
            to += decomposeHangul( chs[i], to );
            pending = to - 1;
            last    = 0;
        }
        else
        {
            break;
        }
    }

    norm->length      = to - norm->chars;
    norm->pending     = pending - norm->chars;
    norm->readable    = norm->pending;
    norm->pendingCccv = norm->length > norm->pending ? combiningClass( to[-1] ) : 0;

    return i;
}

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
            write( norm, chs[i++] );
            continue;
        }

        QV_INT whole = checkGroups< form >( chs + i, count - i );

        if( whole > 0 )
        {
            // The last one comes next.
            pass( norm, chs + i, { whole, whole - 1, whole - 2 } );
            i += whole - 1;
        }

        piece      = nextPiece( piece, whole );
        QV_INT end = i + piece < count ? i + piece : count;
        i += decomposeInOrder( norm, chs + i, end - i );

        if( i < end )
            write( norm, chs[i++] );
    }
}

void write( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
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

void writeAndWatch( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT count )
{
    write( norm, chs, count );
    watch( norm );
}

Run check( const QV_CHAR *chs, QV_INT count, QV_INT form )
{
    switch( form )
    {
    case QV_UNICODE_NORMAL_FORM_NFC:
        return check< QV_UNICODE_NORMAL_FORM_NFC >( chs, count );
    case QV_UNICODE_NORMAL_FORM_NFKC:
        return check< QV_UNICODE_NORMAL_FORM_NFKC >( chs, count );
    case QV_UNICODE_NORMAL_FORM_NFD:
        return check< QV_UNICODE_NORMAL_FORM_NFD >( chs, count );
    default:
        return check< QV_UNICODE_NORMAL_FORM_NFKD >( chs, count );
    }
}

void freeFunc( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_UNICODE_NORMALIZER *norm = qvUnicodeNormalizerFrom( thisObj );
    qvMemFree( norm->chars );
    norm->chars    = nullptr;
    norm->capacity = 0;
    account( norm );
}
} // namespace

QV___FAMILY( UnicodeNormalizer, QV_UNICODE_NORMALIZER, freeFunc, nullptr, nullptr )

QV_UNICODE_NORMALIZER *qvUnicodeNormalizerCreate( QV_INT normalForm )
{
    QV_CHECK( QV_UNICODE_NORMAL_FORM_OK( normalForm ) );

    QV_UNICODE_NORMALIZER *norm = qv::create< QV_UNICODE_NORMALIZER >( qvUnicodeNormalizerSort() );
    norm->normalForm            = normalForm;
    norm->chars                 = nullptr;
    norm->capacity              = 0;
    reset( norm );

    return norm;
}

/* Writing -------------------------------------------------------------------------------------------------------- */

void qvUnicodeNormalizerWriteChar( QV_UNICODE_NORMALIZER *norm, QV_CHAR ch )
{
    QV_CHECK( norm );
    write( norm, ch );
    watch( norm );
}

void qvUnicodeNormalizerWriteChars( QV_UNICODE_NORMALIZER *norm, const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( norm );
    QV_CHECK( chsLength >= 0 );
    QV_CHECK( chs || chsLength == 0 );

    writeAndWatch( norm, chs, chsLength );
}

void qvUnicodeNormalizerWrite( QV_UNICODE_NORMALIZER *norm, QV_STRING *src )
{
    QV_CHECK( norm );
    QV_CHECK( src );

    writeAndWatch( norm, qv::chars( src ), src->length );
}

void qvUnicodeNormalizerWriteInner( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( norm );
    QV_CHECK( src );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= qvStringLength( src ) );

    writeAndWatch( norm, qv::chars( src ) + offset, count );
}

void qvUnicodeNormalizerWriteOuter( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( norm );
    QV_CHECK( src );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= qvStringLength( src ) );

    writeAndWatch( norm, qv::chars( src ), offset );
    writeAndWatch( norm, qv::chars( src ) + offset + count, src->length - offset - count );
}

void qvUnicodeNormalizerWriteLeading( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT count )
{
    qvUnicodeNormalizerWriteInner( norm, src, 0, count );
}

void qvUnicodeNormalizerWriteTrailing( QV_UNICODE_NORMALIZER *norm, QV_STRING *src, QV_INT count )
{
    QV_CHECK( norm );
    QV_CHECK( src );
    QV_CHECK( count >= 0 );

    qvUnicodeNormalizerWriteInner( norm, src, src->length - count, count );
}

void qvUnicodeNormalizerFlush( QV_UNICODE_NORMALIZER *norm )
{
    QV_CHECK( norm );

    moveOn( norm, norm->length );
    norm->highSurrogate = 0;
    norm->readable      = norm->length;
    norm->starter       = 0;
    norm->lastCccv      = 255;
    norm->pendingCccv   = 0;
    watch( norm );
}

void qvUnicodeNormalizerClear( QV_UNICODE_NORMALIZER *norm )
{
    QV_CHECK( norm );

    qvMemFree( norm->chars );
    norm->chars    = nullptr;
    norm->capacity = 0;
    account( norm );
    reset( norm );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

namespace
{
// The first readable characters, at most so many unless that is -1; taken() has to follow.
QV_INT readable( QV_UNICODE_NORMALIZER *norm, QV_INT limit )
{
    QV_INT count = norm->readable - norm->first;

    return limit == -1 || limit > count ? count : limit;
}

void taken( QV_UNICODE_NORMALIZER *norm, QV_INT count )
{
    norm->first += count;

    if( norm->first == norm->length )
        toFront( norm );

    watch( norm );
}
} // namespace

QV_INT qvUnicodeNormalizerReadable( QV_UNICODE_NORMALIZER *norm )
{
    QV_CHECK( norm );
    return readable( norm, -1 );
}

QV_INT qvUnicodeNormalizerRead( QV_UNICODE_NORMALIZER *norm, QV_STRING **string, QV_INT maxLen )
{
    QV_CHECK( norm );
    QV_CHECK( string );
    QV_CHECK( *string );
    QV_CHECK( maxLen == -1 || maxLen >= 0 );

    QV_INT count = readable( norm, maxLen );

    if( count > 0 )
    {
        qvStringAppendChars( string, norm->chars + norm->first, count );
        taken( norm, count );
    }

    return count;
}

QV_INT qvUnicodeNormalizerReadChars( QV_UNICODE_NORMALIZER *norm, QV_CHAR *dest, QV_INT destLen )
{
    QV_CHECK( norm );
    QV_CHECK( destLen >= 0 );
    QV_CHECK( dest || destLen == 0 );

    QV_INT count = readable( norm, destLen );

    if( count > 0 )
    {
        qvMemCopyN( dest, norm->chars + norm->first, count, sizeof( QV_CHAR ) );
        taken( norm, count );
    }

    return count;
}

/* Whole texts ---------------------------------------------------------------------------------------------------- */

QV_STRING *qv::normalize( QV_STRING *qvs, QV_INT normalForm )
{
    const QV_CHAR *chs    = qv::chars( qvs );
    QV_INT         length = qvs->length;
    Run            run    = check( chs, length, normalForm );

    if( run.length == length )
        return qv::retain( qvs );

    Ref< QV_UNICODE_NORMALIZER > norm( qvUnicodeNormalizerCreate( normalForm ) );
    // With the free places of a String at both ends.
    reserve( norm, QV_STRING_FSPACE + length + LONGEST_DECOMPOSITION + QV_STRING_BSPACE );
    norm->first = norm->readable = norm->pending = norm->length = QV_STRING_FSPACE;

    // What has been checked need not be looked at twice.
    if( run.previous >= 0 && combiningClass( chs[0] ) == 0 )
        pass( norm, chs, run );
    else
        run.starter = 0;

    writeAndWatch( norm, chs + run.starter, length - run.starter );
    qvUnicodeNormalizerFlush( norm );

    if( norm->length == norm->first )
        return qvStringCreate();

    // The array becomes the block of the String.
    QV_INT   size  = norm->length + QV_STRING_BSPACE;
    QV_CHAR *block = static_cast< QV_CHAR * >( qvMemReallocN( norm->chars, size, sizeof( QV_CHAR ) ) );
    norm->chars    = nullptr;

    return createStringUse( block, norm->length - QV_STRING_FSPACE, QV_STRING_FSPACE, QV_STRING_BSPACE );
}

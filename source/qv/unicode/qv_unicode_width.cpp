#include "qv/unicode/qv_unicode_width.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_ref.h"
#include "qv/unicode/qv_unicode_properties.h"
#include "qv/unicode/qv_unicode_tables_private.h"
#include "qv/unicode/qv_unicode_width_private.h"

#include <algorithm>

using namespace qv::unicode;

namespace
{
const QV_CHAR JOINER          = 0x200D;
const QV_CHAR PICTURE_FORM    = 0xFE0F; // asks for the form as an emoji
const QV_CHAR ELLIPSIS        = 0x2026;
const QV_CHAR FIRST_INDICATOR = 0x1F1E6; // regional indicators: two of them are a flag
const QV_CHAR LAST_INDICATOR  = 0x1F1FF;
const QV_CHAR FIRST_COLOUR    = 0x1F3FB; // skin colours
const QV_CHAR LAST_COLOUR     = 0x1F3FF;

bool isIndicator( QV_CHAR ch )
{
    return ch >= FIRST_INDICATOR && ch <= LAST_INDICATOR;
}

bool isColour( QV_CHAR ch )
{
    return ch >= FIRST_COLOUR && ch <= LAST_COLOUR;
}

QV_INT cellsOf( uint8_t value, QV_INT flags )
{
    QV_INT cells = value & WIDTH_CELLS;
    return cells == WIDTH_AMBIGUOUS ? ( flags & QV_DISPLAY_FLAG_AMBIGUOUS_WIDE ? 2 : 1 ) : cells;
}

bool isPlain( QV_CHAR ch )
{
    return ch - 0x20 < 0x7F - 0x20;
}

// Whether a character takes part in pictures with joiners and skin colours. Digits have a form as an emoji too, as keycaps
// alone.
bool joinsPictures( QV_CHAR ch, uint8_t value )
{
    return ch > 0x7F && ( value & WIDTH_PICTURE );
}

// Moves `*at`, which is before `end`, past the characters that are shown as one, and returns their cells.
QV_INT nextPicture( const QV_CHAR **at, const QV_CHAR *end, QV_INT flags )
{
    const QV_CHAR *ch = ( *at )++;

    if( isPlain( *ch ) && ( *at == end || isPlain( **at ) ) )
        return 1;

    const QV_CHAR first     = *ch;
    const uint8_t value     = lookUp( widthBlocks, width, first );
    const bool    isPicture = value & WIDTH_PICTURE;
    const bool    canJoin   = joinsPictures( first, value );
    QV_INT        cells     = cellsOf( value, flags );

    if( generalCategory( first ) == QV_UNICODE_GENC_OTHER_CONTROL )
        return cells;

    if( isIndicator( first ) && *at < end && isIndicator( **at ) )
    {
        ( *at )++;
        cells = 2;
    }

    for( ; *at < end; ( *at )++ )
    {
        const QV_CHAR next   = **at;
        const uint8_t nexts  = lookUp( widthBlocks, width, next );
        const bool    joined = ( *at )[-1] == JOINER && joinsPictures( next, nexts );

        if( ( isPicture && next == PICTURE_FORM ) || ( canJoin && ( joined || isColour( next ) ) ) )
            cells = 2;
        else if( nexts & WIDTH_EXTENDS )
            cells += cellsOf( nexts, flags );
        else
            break;
    }

    return cells;
}

QV_INT cellsBetween( const QV_CHAR *at, const QV_CHAR *end, QV_INT flags )
{
    QV_INT cells = 0;

    while( at < end )
        cells += nextPicture( &at, end, flags );

    return cells;
}

// White space where a line may be broken.
bool isBreak( QV_CHAR ch )
{
    return isWhiteSpace( ch ) && ch != 0xA0 && ch != 0x2007 && ch != 0x202F;
}

void appendPart( QV_VECTOR **lines, QV_STRING *qvs, QV_INT from, QV_INT to )
{
    qv::Ref< QV_STRING > line( qvStringCreateFromInner( qvs, from, to - from ) );
    qvVectorAppendObj( lines, qvStringObj( line ) );
}

// Wraps the line of the text that begins at `from`, and returns where it ends.
QV_INT wrapLine( QV_VECTOR **lines, QV_STRING *qvs, QV_INT from, QV_INT width, QV_INT flags )
{
    const QV_CHAR *chs   = qv::chars( qvs );
    const QV_INT   total = qvStringLength( qvs );
    QV_INT         at = from, wordEnd = from, cells = 0;

    for( ;; )
    {
        // The white space up to the next word, and that word.
        QV_INT word = at;

        while( word < total && isBreak( chs[word] ) && !isNlf( chs[word] ) )
            word++;

        QV_INT end = word;

        while( end < total && !isBreak( chs[end] ) )
            end++;

        if( end == word )
        {
            appendPart( lines, qvs, from, wordEnd );
            return word;
        }

        QV_INT more = cellsBetween( chs + at, chs + end, flags );

        if( wordEnd > from && more > width - cells )
        {
            appendPart( lines, qvs, from, wordEnd );
            from  = word;
            more  = cellsBetween( chs + word, chs + end, flags );
            cells = 0;
        }

        cells += more;
        at = wordEnd = end;
    }
}
} // namespace

QV_INT qvUnicodeDisplayWidth( QV_CHAR ch, QV_INT flags )
{
    QV_CHECK( QV_CHAR_OK( ch ) );
    return cellsOf( lookUp( widthBlocks, width, ch ), flags );
}

QV_INT qvStringDisplayWidth( QV_STRING *qvs, QV_INT flags )
{
    QV_CHECK( qvs );

    const QV_CHAR *chs = qv::chars( qvs );
    return cellsBetween( chs, chs + qvStringLength( qvs ), flags );
}

QV_INT qvStringDisplayPrefix( QV_STRING *qvs, QV_INT width, QV_INT flags )
{
    QV_CHECK( qvs );
    QV_CHECK( width >= 0 );

    const QV_CHAR *chs = qv::chars( qvs ), *at = chs, *fits = chs, *end = chs + qvStringLength( qvs );

    for( QV_INT room = width; at < end; fits = at )
    {
        room -= nextPicture( &at, end, flags );

        if( room < 0 )
            break;
    }

    return fits - chs;
}

void qvStringDisplayTruncate( QV_STRING **qvs, QV_INT width, QV_INT flags )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( width >= 0 );

    const QV_INT length = qvStringLength( *qvs );
    QV_INT       fits   = qvStringDisplayPrefix( *qvs, width, flags );

    if( fits == length )
        return;

    QV_INT ellipsis = qvUnicodeDisplayWidth( ELLIPSIS, flags );
    bool   isMarked = ( flags & QV_DISPLAY_FLAG_ELLIPSIS ) && ellipsis <= width;

    if( isMarked )
        fits = qvStringDisplayPrefix( *qvs, width - ellipsis, flags );

    qvStringDelTrailing( qvs, length - fits );

    if( isMarked )
        qvStringAppendChar( qvs, ELLIPSIS );
}

void qvStringDisplayPad( QV_STRING **qvs, QV_INT width, QV_INT flags )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( width >= 0 );

    QV_INT lacking = width - qvStringDisplayWidth( *qvs, flags );

    if( lacking <= 0 )
        return;

    QV_INT before = flags & QV_DISPLAY_FLAG_RIGHT ? lacking : flags & QV_DISPLAY_FLAG_CENTER ? lacking / 2 : 0;
    QV_INT after  = lacking - before;

    qv::Ref< QV_STRING > spaces( qv::createString( std::max( before, after ) ) );
    std::fill_n( qv::chars( spaces ), std::max( before, after ), U' ' );
    qvStringPrependLeading( qvs, spaces, before );
    qvStringAppendLeading( qvs, spaces, after );
}

void qvStringDisplayFit( QV_STRING **qvs, QV_INT width, QV_INT flags )
{
    qvStringDisplayTruncate( qvs, width, flags );
    qvStringDisplayPad( qvs, width, flags );
}

QV_VECTOR *qvStringDisplayWrap( QV_STRING *qvs, QV_INT width, QV_INT flags )
{
    QV_CHECK( qvs );
    QV_CHECK( width >= 0 );

    const QV_INT         length = qvStringLength( qvs );
    qv::Ref< QV_VECTOR > lines( qvVectorCreate() );

    for( QV_INT at = 0;; )
    {
        at = wrapLine( lines.at(), qvs, at, width, flags );

        if( at == length )
            return lines.give();

        // An end of a line at the end of the text begins no other one.
        bool isPair = qvStringCharAt( qvs, at ) == U'\r' && at + 1 < length && qvStringCharAt( qvs, at + 1 ) == U'\n';
        at += isPair ? 2 : 1;

        if( at == length )
            return lines.give();
    }
}

#include "morvane_text.h"

#include "qv/io/qv_nlf.h"
#include "qv/unicode/qv_unicode_normalizer.h"

namespace morvane
{
using qv::Ref;

QV_INT placeOf( QV_STRING *word, const char *const *words, QV_INT count )
{
    for( QV_INT place = 0; place < count; place++ )
        if( qvStringEqualsCstr( word, words[place], -1 ) )
            return place;

    return -1;
}

namespace
{
void normalize( void *context, QV_STRING **piece, bool end )
{
    QV_UNICODE_NORMALIZER *norm = static_cast< QV_UNICODE_NORMALIZER * >( context );
    qvUnicodeNormalizerWrite( norm, *piece );

    // Nothing composes with the end of a line, so that whole lines are complete.
    if( end || qvStringEndsWithChar( *piece, U'\n' ) )
        qvUnicodeNormalizerFlush( norm );

    qv::assign( piece, qvStringCreate() );
    qvUnicodeNormalizerRead( norm, piece, -1 );
}
} // namespace

int normalizeText( const Arguments &arguments )
{
    static const char *const FORMS[] = { "nfc", "nfkc", "nfd", "nfkd" }; // in the order of the values

    Ref< QV_STRING > form       = arguments.valueOf( "form" );
    QV_INT           normalForm = placeOf( form, FORMS, 4 );

    if( normalForm < 0 )
    {
        complain( TEXT_COMMAND, form, "no normal form" );
        return MISUSE;
    }

    Ref< QV_UNICODE_NORMALIZER > norm( qvUnicodeNormalizerCreate( normalForm ) );
    return passText( arguments, normalize, norm );
}

namespace
{
// True for each character that ends a line, alone or followed by a line feed.
bool endsLine( QV_CHAR ch )
{
    return ( ch >= U'\n' && ch <= U'\r' ) || ch == U'\x85' || ch == U'\u2028' || ch == U'\u2029';
}

struct Newlines
{
    Ref< QV_STRING > terminator;
    bool             cut; // the piece before ended with a carriage return, which a line feed belongs to
};

// Replaces every form of a newline by the terminator.
void replaceNewlines( void *context, QV_STRING **piece, bool end )
{
    Newlines        &newlines = *static_cast< Newlines * >( context );
    Ref< QV_STRING > changed( qvStringCreate() );
    const QV_CHAR   *chars  = qvStringBacking( *piece );
    QV_INT           length = qvStringLength( *piece );
    QV_INT           begin  = newlines.cut && length > 0 && chars[0] == U'\n' ? 1 : 0;

    for( QV_INT i = begin; i < length; i++ )
    {
        if( !endsLine( chars[i] ) )
            continue;

        qvStringAppendInner( changed.at(), *piece, begin, i - begin );
        qvStringAppend( changed.at(), newlines.terminator );

        if( chars[i] == U'\r' && i + 1 < length && chars[i + 1] == U'\n' )
            i++;

        begin = i + 1;
    }

    newlines.cut = !end && length > 0 && chars[length - 1] == U'\r';
    qvStringAppendInner( changed.at(), *piece, begin, length - begin );
    qv::assign( piece, changed.give() );
}
} // namespace

int setNewlines( const Arguments &arguments )
{
    static const char *const NAMES[] = { "lf", "cr", "crlf", "nel",
                                         "vt", "ff", "ls",   "ps" }; // in the order of the flags

    Ref< QV_STRING > newline = arguments.valueOf( "newline" );
    QV_INT           bit     = placeOf( newline, NAMES, 8 );

    if( bit < 0 )
    {
        complain( TEXT_COMMAND, newline, "no newline function" );
        return MISUSE;
    }

    Newlines newlines = { Ref< QV_STRING >( qvNlfFlagsNlfString( 1 << bit ) ), false };
    return passText( arguments, replaceNewlines, &newlines );
}

int mapCase( const Arguments &arguments )
{
    if( arguments.has( "upper" ) )
        return passText( arguments, []( void *, QV_STRING **piece, bool ) { qvStringToUpper( piece ); }, nullptr );

    if( arguments.has( "lower" ) )
        return passText( arguments, []( void *, QV_STRING **piece, bool ) { qvStringToLower( piece ); }, nullptr );

    return passText( arguments, []( void *, QV_STRING **piece, bool ) { qvStringToCaseFold( piece ); }, nullptr );
}
} // namespace morvane

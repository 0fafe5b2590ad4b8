#include "morvane_text.h"

#include "morvane_decoder.h"

#include "qv/charset/qv_charset.h"
#include "qv/io/qv_nlf.h"
#include "qv/unicode/qv_unicode_normalizer.h"

namespace morvane
{
using qv::Ref;

bool readNames( const Arguments &arguments, Ref< QV_STRING > *in, Ref< QV_STRING > *out )
{
    QV_INT count = qvVectorLength( arguments.words() );

    if( count > 0 )
        *in = wordAt( arguments.words(), 0 );

    if( count > 1 )
        *out = wordAt( arguments.words(), 1 );

    return count <= 2;
}

QV_INT placeOf( QV_STRING *word, const char *const *words, QV_INT count )
{
    for( QV_INT place = 0; place < count; place++ )
        if( qvStringEqualsCstr( word, words[place], -1 ) )
            return place;

    return -1;
}

namespace
{
// Passes UTF-8 text through `change` piece by piece, as it arrives. `change` gets a String to change in place, and
// `end` is true with the last one.
template< class Change >
bool filter( QV_STRING *in, QV_STRING *out, Change change )
{
    Streams streams;

    if( !streams.open( TEXT_COMMAND, in, out ) )
        return false;

    Decoder decoder( QV_CHARSET_UTF_8, QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK );

    while( !decoder.end() )
    {
        Ref< QV_STRING > piece = decoder.read( &streams );
        change( piece.at(), decoder.end() );
        streams.write( Ref< QV_BUFFER >( qvCharsetStringToBuffer( QV_CHARSET_UTF_8, piece ) ) );
    }

    return streams.finish();
}

QV_BOOL normalize( QV_VECTOR *argv, void *context )
{
    static const Option      FORM    = { "form", true };
    static const char *const FORMS[] = { "nfc", "nfkc", "nfd", "nfkd" }; // in the order of the values

    Arguments        arguments;
    Ref< QV_STRING > in, out;

    if( !arguments.read( argv, &FORM, 1 ) || !readNames( arguments, &in, &out ) || arguments.optionCount() != 1 )
        return QV_FALSE;

    QV_INT normalForm = placeOf( arguments.argumentAt( 0 ), FORMS, 4 );

    if( normalForm < 0 )
    {
        complain( TEXT_COMMAND, arguments.argumentAt( 0 ), "no normal form" );
        return QV_FALSE;
    }

    Ref< QV_UNICODE_NORMALIZER > norm( qvUnicodeNormalizerCreate( normalForm ) );

    bool done = filter(
        in, out,
        [&norm]( QV_STRING **piece, bool end )
        {
            qvUnicodeNormalizerWrite( norm, *piece );

            // Nothing composes with the end of a line, so that whole lines are complete.
            if( end || qvStringEndsWithChar( *piece, U'\n' ) )
                qvUnicodeNormalizerFlush( norm );

            qv::assign( piece, qvStringCreate() );
            qvUnicodeNormalizerRead( norm, piece, -1 );
        } );

    contextOf( context )->status = done ? SUCCESS : FAILURE;
    return done ? QV_TRUE : QV_FALSE;
}

// True for each character that ends a line, alone or followed by a line feed.
bool endsLine( QV_CHAR ch )
{
    return ( ch >= U'\n' && ch <= U'\r' ) || ch == U'\x85' || ch == U'\u2028' || ch == U'\u2029';
}

// Replaces every form of a newline by a terminator. `*cut` is true if the piece before ended with a carriage return,
// which a line feed at the start of this one belongs to.
void replaceNewlines( QV_STRING **piece, QV_STRING *terminator, bool *cut )
{
    Ref< QV_STRING > changed( qvStringCreate() );
    const QV_CHAR   *chars  = qvStringBacking( *piece );
    QV_INT           length = qvStringLength( *piece );
    QV_INT           begin  = *cut && length > 0 && chars[0] == U'\n' ? 1 : 0;

    for( QV_INT i = begin; i < length; i++ )
    {
        if( !endsLine( chars[i] ) )
            continue;

        qvStringAppendInner( changed.at(), *piece, begin, i - begin );
        qvStringAppend( changed.at(), terminator );

        if( chars[i] == U'\r' && i + 1 < length && chars[i + 1] == U'\n' )
            i++;

        begin = i + 1;
    }

    *cut = length > 0 && chars[length - 1] == U'\r';
    qvStringAppendInner( changed.at(), *piece, begin, length - begin );
    qv::assign( piece, changed.give() );
}

QV_BOOL setNewlines( QV_VECTOR *argv, void *context )
{
    static const Option      NEWLINE = { "newline", true };
    static const char *const NAMES[] = { "lf", "cr", "crlf", "nel",
                                         "vt", "ff", "ls",   "ps" }; // in the order of the flags

    Arguments        arguments;
    Ref< QV_STRING > in, out;

    if( !arguments.read( argv, &NEWLINE, 1 ) || !readNames( arguments, &in, &out ) || arguments.optionCount() != 1 )
        return QV_FALSE;

    QV_INT bit = placeOf( arguments.argumentAt( 0 ), NAMES, 8 );

    if( bit < 0 )
    {
        complain( TEXT_COMMAND, arguments.argumentAt( 0 ), "no newline function" );
        return QV_FALSE;
    }

    Ref< QV_STRING > terminator( qvNlfFlagsNlfString( 1 << bit ) );
    bool             cut = false;

    bool done = filter(
        in, out, [&terminator, &cut]( QV_STRING **piece, bool ) { replaceNewlines( piece, terminator, &cut ); } );

    contextOf( context )->status = done ? SUCCESS : FAILURE;
    return done ? QV_TRUE : QV_FALSE;
}

QV_BOOL mapCase( QV_VECTOR *argv, void *context )
{
    static const Option OPTIONS[] = { { "upper", false }, { "lower", false }, { "fold", false } };
    static void ( *const MAPPINGS[] )( QV_STRING **qvs ) = { qvStringToUpper, qvStringToLower, qvStringToCaseFold };

    Arguments        arguments;
    Ref< QV_STRING > in, out;

    if( !arguments.read( argv, OPTIONS, 3 ) || !readNames( arguments, &in, &out ) || arguments.optionCount() != 1 )
        return QV_FALSE;

    auto mapping = MAPPINGS[arguments.optionAt( 0 )];
    bool done    = filter( in, out, [mapping]( QV_STRING **piece, bool ) { mapping( piece ); } );

    contextOf( context )->status = done ? SUCCESS : FAILURE;
    return done ? QV_TRUE : QV_FALSE;
}

const Tool TOOLS[] = {
    { "convert", "--from NAME --to NAME [--invalid replace|skip|fail] [--bom] [IN [OUT]]",
      "converts text from one character set to another", convertText },
    { "normalize", "--form nfc|nfd|nfkc|nfkd [IN [OUT]]", "brings UTF-8 text into a normal form", normalize },
    { "case", "--upper|--lower|--fold [IN [OUT]]", "maps the case of UTF-8 text", mapCase },
    { "lines", "--newline lf|cr|crlf|nel|vt|ff|ls|ps [IN [OUT]]", "ends the lines of UTF-8 text in one way",
      setNewlines },
};
} // namespace

QV_BOOL textTool( QV_VECTOR *argv, void *context )
{
    runTool( TEXT_COMMAND, TOOLS, sizeof( TOOLS ) / sizeof( TOOLS[0] ), argv, contextOf( context ) );
    return contextOf( context )->status == SUCCESS ? QV_TRUE : QV_FALSE;
}
} // namespace morvane

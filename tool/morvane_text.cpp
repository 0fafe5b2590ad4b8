#include "morvane_stream.h"
#include "morvane_tool.h"

#include "qv/base/qv_buffer.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_source.h"
#include "qv/unicode/qv_unicode_normalizer.h"

namespace morvane
{
using qv::Ref;

namespace
{
const char COMMAND[] = "morvane text";

const QV_INT PIECE = 16384; // characters that are in work at a time

// The plain words of these tools: the file to read and the file to write.
bool readNames( const Arguments &arguments, Ref< QV_STRING > *in, Ref< QV_STRING > *out )
{
    QV_INT count = qvVectorLength( arguments.words() );

    if( count > 0 )
        *in = wordAt( arguments.words(), 0 );

    if( count > 1 )
        *out = wordAt( arguments.words(), 1 );

    return count <= 2;
}

// Passes UTF-8 text through `change` piece by piece. It gets a String to change in place, and with the last one `end`
// is true.
template< class Change >
bool filter( QV_STRING *in, QV_STRING *out, Change change )
{
    Streams streams;

    if( !streams.open( COMMAND, in, out ) )
        return false;

    Ref< QV_CHAR_SOURCE > source( qvCharsetCreateCharSource(
        streams.source(), QV_CHARSET_UTF_8, QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK ) );
    Ref< QV_CHAR_SINK >   sink( qvCharsetCreateCharSink( streams.sink(), QV_CHARSET_UTF_8, 0 ) );
    bool                  end = false;

    while( !end && !qvCharSinkError( sink ) )
    {
        Ref< QV_STRING > piece( qvStringCreate() );
        end = qvCharSourceRead( source, piece.at(), PIECE ) < PIECE;
        change( piece.at(), end );
        qvCharSinkWrite( sink, piece );
    }

    qvCharSinkFlush( sink );

    return streams.finish();
}

QV_INT normalFormOf( QV_STRING *name )
{
    static const char *const NAMES[] = { "nfc", "nfkc", "nfd", "nfkd" }; // in the order of the values

    for( QV_INT form = 0; form < 4; form++ )
        if( qvStringEqualsCstr( name, NAMES[form], -1 ) )
            return form;

    return -1;
}

QV_BOOL normalize( QV_VECTOR *argv, void *context )
{
    static const Option FORM = { "form", true };
    Arguments           arguments;
    Ref< QV_STRING >    in, out;

    if( !arguments.read( argv, &FORM, 1 ) || !readNames( arguments, &in, &out ) || arguments.optionCount() != 1 )
        return QV_FALSE;

    QV_INT normalForm = normalFormOf( arguments.argumentAt( 0 ) );

    if( normalForm < 0 )
    {
        complain( COMMAND, arguments.argumentAt( 0 ), "no normal form" );
        return QV_FALSE;
    }

    Ref< QV_UNICODE_NORMALIZER > norm( qvUnicodeNormalizerCreate( normalForm ) );

    bool done = filter(
        in, out,
        [&norm]( QV_STRING **piece, bool end )
        {
            qvUnicodeNormalizerWrite( norm, *piece );

            if( end )
                qvUnicodeNormalizerFlush( norm );

            qv::assign( piece, qvStringCreate() );
            qvUnicodeNormalizerRead( norm, piece, -1 );
        } );

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
    { "normalize", "--form nfc|nfd|nfkc|nfkd [IN [OUT]]", "brings UTF-8 text into a normal form", normalize },
    { "case", "--upper|--lower|--fold [IN [OUT]]", "maps the case of UTF-8 text", mapCase },
};
} // namespace

QV_BOOL textTool( QV_VECTOR *argv, void *context )
{
    runTool( COMMAND, TOOLS, sizeof( TOOLS ) / sizeof( TOOLS[0] ), argv, contextOf( context ) );
    return contextOf( context )->status == SUCCESS ? QV_TRUE : QV_FALSE;
}
} // namespace morvane

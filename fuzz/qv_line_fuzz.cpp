// Lines of any text with any newline flags. The first byte is the flags, the others choose characters from an alphabet
// in which terminators are frequent. The lines must be those of a simple model, through arrays and through Strings.

#include "qv_fuzz_walk.h"

#include "qv/io/qv_char_source_private.h"

using namespace qv::fuzz;

namespace
{
const Text ALPHABET = U"\n\r\x85\v\f\u2028\u2029a\t\x0E\x84\u202A";

// A char source over another one that reads Strings, never arrays.
QV_BOOL readString( QV_OBJ *closure, QV_STRING **qvs, QV_INT maxCharCount, QV_INT *charsRead )
{
    *charsRead = qvCharSourceRead( qvCharSourceFrom( closure ), qvs, maxCharCount );
    return QV_TRUE;
}

// The text with one character that occurs nowhere else for each terminator.
Text marked( const Text &text, QV_INT flags )
{
    static const std::map< QV_CHAR, QV_INT > FLAGS = { { U'\n', QV_NLF_FLAG_LF },    { U'\r', QV_NLF_FLAG_CR },
                                                       { U'\x85', QV_NLF_FLAG_NEL }, { U'\v', QV_NLF_FLAG_VT },
                                                       { U'\f', QV_NLF_FLAG_FF },    { U'\u2028', QV_NLF_FLAG_LS },
                                                       { U'\u2029', QV_NLF_FLAG_PS } };
    Text                                     result;

    for( size_t i = 0; i < text.size(); i++ )
    {
        bool pair = flags & QV_NLF_FLAG_CRLF && text.compare( i, 2, U"\r\n" ) == 0;
        auto at   = FLAGS.find( text[i] );
        result += pair || ( at != FLAGS.end() && flags & at->second ) ? U'#' : text[i];
        i += pair;
    }

    return result.empty() || result.back() == U'#' ? result : result + U'#';
}

Text readAll( QV_CHAR_SOURCE *charSource, QV_INT flags )
{
    Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreate( charSource, flags ) );
    Ref< QV_LINE_SOURCE >     source( qvNlfLineSourceLineSource( nls ) );
    Text                      result;
    QV_INT                    count = 0;

    for( ; QV_STRING *line = qvLineSourceRead( source ); count++ )
        result += takeText( line ) + U'#';

    require( qvLineSourceEnd( source ) && !qvLineSourceError( source ) && qvLineSourceLinesRead( source ) == count );

    return result;
}

void readLines( const uint8_t *data, size_t size )
{
    QV_INT flags = size ? data[0] : 0;
    Text   text;

    // A byte from 0x80 on stands for a run, so that short inputs get across the refills of the source.
    for( size_t i = 1; i < size && text.size() < 20000; i++ )
        text.append( data[i] < 0x80 ? 1 : ( data[i] - 0x7F ) * 9, ALPHABET[data[i] % ALPHABET.size()] );

    Ref< QV_STRING > qvs = stringOf( text );

    Ref< QV_STRING_CHAR_SOURCE > arrays( qvStringCharSourceCreate( qvs ) ), strings( qvStringCharSourceCreate( qvs ) );
    Ref< QV_CHAR_SOURCE >        ofArrays( qvStringCharSourceCharSource( arrays ) );
    Ref< QV_CHAR_SOURCE >        inner( qvStringCharSourceCharSource( strings ) );
    Ref< QV_CHAR_SOURCE >        ofStrings( qv___CharSourceCreate( readString, qv::obj( inner.get() ) ) );

    require( readAll( ofArrays, flags ) == marked( text, flags ) );
    require( readAll( ofStrings, flags ) == marked( text, flags ) );
}
} // namespace

QV_FUZZ_READER( readLines )

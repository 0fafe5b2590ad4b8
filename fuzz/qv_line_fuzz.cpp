// Lines of any text with any newline flags. The first byte is the flags, the others choose characters from an alphabet
// in which terminators are frequent. The lines must be those of a simple model, through arrays and through Strings.

#include "qv_fuzz_walk.h"

#include "qv/io/qv_char_source.h"
#include "qv/io/qv_char_source_private.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_source.h"
#include "qv/io/qv_string_char_source.h"

using namespace qv::fuzz;
using qv::Ref;

namespace
{
const Text ALPHABET = U"\n\r\x85\v\f\u2028\u2029a\t\x0E\x84\u202A";

// A char source over another one that reads Strings, never arrays.
QV_BOOL readString( QV_OBJ *closure, QV_STRING **qvs, QV_INT maxCharCount, QV_INT *charsRead )
{
    *charsRead = qvCharSourceRead( qvCharSourceFrom( closure ), qvs, maxCharCount );
    return QV_TRUE;
}

bool isTerminator( QV_CHAR ch, QV_INT flags )
{
    return ( ch == U'\n' && ( flags & QV_NLF_FLAG_LF ) ) || ( ch == U'\r' && ( flags & QV_NLF_FLAG_CR ) )
           || ( ch == U'\x85' && ( flags & QV_NLF_FLAG_NEL ) ) || ( ch == U'\v' && ( flags & QV_NLF_FLAG_VT ) )
           || ( ch == U'\f' && ( flags & QV_NLF_FLAG_FF ) ) || ( ch == U'\u2028' && ( flags & QV_NLF_FLAG_LS ) )
           || ( ch == U'\u2029' && ( flags & QV_NLF_FLAG_PS ) );
}

// The text with one character that occurs nowhere else for each terminator.
Text marked( const Text &text, QV_INT flags )
{
    Text result;

    for( size_t i = 0; i < text.size(); i++ )
    {
        if( ( flags & QV_NLF_FLAG_CRLF ) && text.compare( i, 2, U"\r\n" ) == 0 )
        {
            result += U'#';
            i++;
        }
        else
            result += isTerminator( text[i], flags ) ? U'#' : text[i];
    }

    if( !result.empty() && result.back() != U'#' )
        result += U'#';

    return result;
}

Text readAll( QV_CHAR_SOURCE *charSource, QV_INT flags )
{
    Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreate( charSource, flags ) );
    Ref< QV_LINE_SOURCE >     source( qvNlfLineSourceLineSource( nls ) );
    Text                      result;
    QV_INT                    count = 0;

    while( QV_STRING *line = qvLineSourceRead( source ) )
    {
        result += takeText( line ) + U'#';
        count++;
    }

    require( qvLineSourceEnd( source ) && !qvLineSourceError( source ) && qvLineSourceLinesRead( source ) == count );

    return result;
}
void readLines( const uint8_t *data, size_t size )
{
    if( size == 0 )
        return;

    QV_INT flags = data[0];
    Text   text;

    // A byte from 0x80 on stands for a run, so that short inputs get across the refills of the source.
    for( size_t i = 1; i < size && text.size() < 20000; i++ )
        text.append( data[i] < 0x80 ? 1 : ( data[i] - 0x7F ) * 9, ALPHABET[data[i] % ALPHABET.size()] );

    Ref< QV_STRING > qvs = stringOf( text );

    Ref< QV_STRING_CHAR_SOURCE > arrays( qvStringCharSourceCreate( qvs ) ), strings( qvStringCharSourceCreate( qvs ) );
    Ref< QV_CHAR_SOURCE >        ofArrays( qvStringCharSourceCharSource( arrays ) );
    Ref< QV_CHAR_SOURCE >        inner( qvStringCharSourceCharSource( strings ) );
    Ref< QV_CHAR_SOURCE >        ofStrings( qv___CharSourceCreate( readString, qv::obj( inner.get() ) ) );

    Text expected = marked( text, flags );
    require( readAll( ofArrays, flags ) == expected );
    require( readAll( ofStrings, flags ) == expected );
}
} // namespace

QV_FUZZ_READER( readLines )

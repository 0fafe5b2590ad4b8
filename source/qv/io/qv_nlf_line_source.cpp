#include "qv/io/qv_nlf_line_source.h"

#include "qv/base/qv_string.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_line_source_private.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_string_char_source.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars_private.h"

// The characters that one refill asks for.
const QV_INT REFILL_CHARS = 1024;

// What has been read but not given is chars[charsOffset] to chars[charsLength - 1]. A character is judged when the one
// behind it has been read or the data has ended. Where it is the last one in the array, it moves to the place in front
// of the refill, so that a line that one refill brought is one run of the array.
struct QV_NLF_LINE_SOURCE : QV_OBJ
{
    QV_CHAR_SOURCE *charSource;
    QV_INT          nlfFlags;
    QV_INT          charsOffset;
    QV_INT          charsLength;
    QV_CHAR         chars[1 + REFILL_CHARS];
};

namespace
{
void freeFunc( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_NLF_LINE_SOURCE *nls = qvNlfLineSourceFrom( thisObj );
    qv::unpoison( nls->chars, sizeof( nls->chars ) );
    qv::drop( nls->charSource );
}

// The flags with which the character ends a line, whatever is behind it. CRLF is not one of them.
QV_INT flagsOf( QV_CHAR ch )
{
    switch( ch )
    {
    case U'\n':
        return QV_NLF_FLAG_LF;
    case U'\r':
        return QV_NLF_FLAG_CR;
    case U'\x85':
        return QV_NLF_FLAG_NEL;
    case U'\v':
        return QV_NLF_FLAG_VT;
    case U'\f':
        return QV_NLF_FLAG_FF;
    case U'\u2028':
        return QV_NLF_FLAG_LS;
    case U'\u2029':
        return QV_NLF_FLAG_PS;
    default:
        return 0;
    }
}

// Reads on. The last unread character, if there is one, stays. False when nothing came.
bool refill( QV_NLF_LINE_SOURCE *nls )
{
    QV_INT kept = nls->charsLength - nls->charsOffset;

    QV_ASSERT( kept == 0 || kept == 1 );
    qv::unpoison( nls->chars, sizeof( nls->chars ) );

    if( kept )
        nls->chars[0] = nls->chars[nls->charsOffset];

    QV_INT count = qvCharSourceReadChars( nls->charSource, nls->chars + 1, REFILL_CHARS );

    nls->charsOffset = 1 - kept;
    nls->charsLength = 1 + count;
    qv::markFree( nls->chars + nls->charsLength, static_cast< size_t >( REFILL_CHARS - count ) * sizeof( QV_CHAR ) );

    return count > 0;
}

// Notes how far the characters of a line and its terminator went.
void take( QV_NLF_LINE_SOURCE *nls, QV_INT end )
{
    QV_ASSERT( end >= nls->charsOffset && end <= nls->charsLength && nls->charsLength <= 1 + REFILL_CHARS );
    nls->charsOffset = end;
}

// Adds characters to the line, which is null before the first ones.
void add( qv::Ref< QV_STRING > *line, const QV_CHAR *chars, QV_INT count )
{
    if( !*line )
    {
        line->reset( qvStringCreateFromCharsCopy( chars, count ) );
        return;
    }

    qvStringAppendChars( line->at(), chars, count );
}

QV_BOOL read( QV_OBJ *closure, QV_STRING **result )
{
    QV_NLF_LINE_SOURCE  *nls   = qvNlfLineSourceFrom( closure );
    QV_CHAR             *chars = nls->chars;
    const QV_INT         flags = nls->nlfFlags;
    qv::Ref< QV_STRING > line;

    if( nls->charsOffset == nls->charsLength && !refill( nls ) )
        return !qvCharSourceError( nls->charSource );

    // What stands from charsOffset up to `at` belongs to the line.
    for( QV_INT at = nls->charsOffset;; at++ )
    {
        at = qv::findLineEnd( chars, at, nls->charsLength );

        while( at >= nls->charsLength - 1 )
        {
            QV_INT last = nls->charsLength - 1;

            add( &line, chars + nls->charsOffset, last - nls->charsOffset );
            take( nls, last );

            if( !refill( nls ) )
            {
                if( !( flagsOf( chars[0] ) & flags ) )
                    add( &line, chars, 1 );

                take( nls, nls->charsLength );
                *result = line.give();

                return QV_TRUE;
            }

            at = qv::findLineEnd( chars, 0, nls->charsLength );
        }

        QV_INT terminatorLength = ( flagsOf( chars[at] ) & flags ) ? 1 : 0;

        if( ( flags & QV_NLF_FLAG_CRLF ) && chars[at] == U'\r' && chars[at + 1] == U'\n' )
            terminatorLength = 2;

        if( terminatorLength )
        {
            add( &line, chars + nls->charsOffset, at - nls->charsOffset );
            take( nls, at + terminatorLength );
            *result = line.give();

            return QV_TRUE;
        }
    }
}
} // namespace

QV___FAMILY( NlfLineSource, QV_NLF_LINE_SOURCE, freeFunc, nullptr, nullptr )

QV_NLF_LINE_SOURCE *qvNlfLineSourceCreate( QV_CHAR_SOURCE *charSource, QV_INT nlfFlags )
{
    QV_CHECK( charSource );

    QV_NLF_LINE_SOURCE *nls = qv::create< QV_NLF_LINE_SOURCE >( qvNlfLineSourceSort() );
    nls->charSource         = qv::retain( charSource );
    nls->nlfFlags           = qvNlfFlagsNormalize( nlfFlags );
    nls->charsOffset        = 0;
    nls->charsLength        = 0;

    return nls;
}

QV_NLF_LINE_SOURCE *qvNlfLineSourceCreateFromString( QV_STRING *qvs, QV_INT nlfFlags )
{
    QV_CHECK( qvs );

    qv::Ref< QV_STRING_CHAR_SOURCE > scs( qvStringCharSourceCreate( qvs ) );
    qv::Ref< QV_CHAR_SOURCE >        charSource( qvStringCharSourceCharSource( scs ) );

    return qvNlfLineSourceCreate( charSource, nlfFlags );
}

QV_LINE_SOURCE *qvNlfLineSourceLineSource( QV_NLF_LINE_SOURCE *nls )
{
    QV_CHECK( nls );
    return qv___LineSourceCreate( read, nls );
}

QV_INT qvNlfLineSourceNlfFlags( QV_NLF_LINE_SOURCE *nls )
{
    QV_CHECK( nls );
    return nls->nlfFlags;
}

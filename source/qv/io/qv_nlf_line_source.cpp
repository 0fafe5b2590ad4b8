#include "qv/io/qv_nlf_line_source.h"

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_create_private.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_line_source_private.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_private.h"
#include "qv/io/qv_stream_private.h"
#include "qv/io/qv_string_char_source.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_chars_private.h"

#include <utility>

// The limit of one read from the char source.
const QV_INT REFILL_CHARS = 1024;

// The characters that were read and belong to no line yet are chars[charsOffset] to chars[charsLength - 1]. Whether a
// character ends a line is decided when the next one has been read or the data has ended. If it is the last one in the
// array, it moves to the place before the refill, so that a line out of one refill is contiguous. A length of 0 means
// that the characters have ended inside of the last line.
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
void freeNlfLineSource( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_NLF_LINE_SOURCE *nls = qvNlfLineSourceFrom( thisObj );
    qv::unpoison( nls->chars, sizeof( nls->chars ) );
    qv::drop( nls->charSource );
}

// The flag with which the character ends a line on its own, or 0. It is never CRLF, which takes two characters.
QV_INT flagOf( QV_CHAR ch )
{
    for( const qv::NlfTerminator &terminator : qv::NLF_TERMINATORS )
        if( terminator.length == 1 && terminator.chars[0] == ch )
            return terminator.flag;

    return 0;
}

// Reads more characters; the one that is left, if there is one, stays. False if there are none.
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

// Moves on to the end of what was taken into a line, or of a terminator.
void moveTo( QV_NLF_LINE_SOURCE *nls, QV_INT end )
{
    QV_ASSERT( end >= nls->charsOffset && end <= nls->charsLength && nls->charsLength <= 1 + REFILL_CHARS );
    nls->charsOffset = end;
}

// Appends characters to the line, which is null before the first ones. They come from a char source, so that they are
// good.
void appendTo( qv::Ref< QV_STRING > *line, const QV_CHAR *chars, QV_INT count )
{
    if( !*line )
    {
        QV_ASSERT( qv::allCharsOk( chars, count ) );
        line->reset( qv::newExactCopy( chars, count ) );
        return;
    }

    qvStringAppendChars( line->at(), chars, count );
}

// The result of a read that has met the end of the characters.
QV_BOOL endOfChars( QV_NLF_LINE_SOURCE *nls, bool wasCut )
{
    if( qv::stillGood( static_cast< const qv::AnySource * >( qvCharSourceObj( nls->charSource ) ) ) )
        return QV_TRUE;

    if( wasCut )
        qv::setErrorInLastLine();

    return QV_FALSE;
}

// Ends the last line with the last character. Not inline: the rest of the reader is faster without.
__attribute__( ( noinline ) ) QV_BOOL endLine( QV_NLF_LINE_SOURCE *nls, qv::Ref< QV_STRING > line, QV_STRING **result )
{
    bool isWhole = flagOf( nls->chars[0] ) & nls->nlfFlags;

    if( !isWhole )
        appendTo( &line, nls->chars, 1 );

    nls->charsLength = isWhole;
    moveTo( nls, nls->charsLength );
    *result = line.give();

    return QV_TRUE;
}

QV_BOOL readNlfLine( QV_OBJ *closure, QV_STRING **result )
{
    QV_NLF_LINE_SOURCE  *nls   = qvNlfLineSourceFrom( closure );
    QV_CHAR             *chars = nls->chars;
    const QV_INT         flags = nls->nlfFlags;
    qv::Ref< QV_STRING > line;

    if( nls->charsOffset == nls->charsLength )
    {
        bool wasCut = nls->charsLength == 0;

        if( !refill( nls ) )
            return endOfChars( nls, wasCut );
    }

    // The characters from charsOffset up to `at`, without the one there, belong to the line.
    for( QV_INT at = nls->charsOffset;; at++ )
    {
        at = qv::findLineEnd( chars, at, nls->charsLength );

        while( at >= nls->charsLength - 1 )
        {
            QV_INT last = nls->charsLength - 1;

            appendTo( &line, chars + nls->charsOffset, last - nls->charsOffset );
            moveTo( nls, last );

            if( !refill( nls ) )
                return endLine( nls, std::move( line ), result );

            at = qv::findLineEnd( chars, 0, nls->charsLength );
        }

        QV_INT terminatorLength = ( flagOf( chars[at] ) & flags ) ? 1 : 0;

        if( ( flags & QV_NLF_FLAG_CRLF ) && chars[at] == U'\r' && chars[at + 1] == U'\n' )
            terminatorLength = 2;

        if( terminatorLength )
        {
            appendTo( &line, chars + nls->charsOffset, at - nls->charsOffset );
            moveTo( nls, at + terminatorLength );
            *result = line.give();

            return QV_TRUE;
        }
    }
}
} // namespace

QV___FAMILY( NlfLineSource, QV_NLF_LINE_SOURCE, freeNlfLineSource, nullptr, nullptr )

QV_NLF_LINE_SOURCE *qvNlfLineSourceCreate( QV_CHAR_SOURCE *charSource, QV_INT nlfFlags )
{
    QV_CHECK( charSource );

    QV_NLF_LINE_SOURCE *nls = qv::create< QV_NLF_LINE_SOURCE >( qvNlfLineSourceSort() );
    nls->charSource         = qv::retain( charSource );
    nls->nlfFlags           = qvNlfFlagsNormalize( nlfFlags );
    nls->charsOffset        = 1;
    nls->charsLength        = 1;

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
    return qv___LineSourceCreate( readNlfLine, nls );
}

QV_INT qvNlfLineSourceNlfFlags( QV_NLF_LINE_SOURCE *nls )
{
    QV_CHECK( nls );
    return nls->nlfFlags;
}

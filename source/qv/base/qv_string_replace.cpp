#include "qv/base/qv_string.h"
#include "qv/base/qv_string_create_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string_stack_private.h"
#include "qv/sys/qv_char_matches_private.h"
#include "qv/sys/qv_int.h"

namespace
{
// The places of a text, without overlaps.
class TextMatches
{
public:
    TextMatches( QV_STRING *text, QV_STRING *sought ) :
        chs_( qv::chars( text ) ), count_( text->length ), sought_( sought )
    {
    }

    QV_INT next()
    {
        if( count_ - seen_ < sought_->length )
            return -1;

        QV_INT positions = count_ - seen_ - sought_->length + 1;
        QV_INT found     = qv::findChars( chs_ + seen_, positions, qv::chars( sought_ ), sought_->length );

        if( found < 0 )
            return -1;

        QV_INT place = seen_ + found;
        seen_        = place + sought_->length;

        return place;
    }

private:
    const QV_CHAR *chs_;
    QV_INT         count_;
    QV_STRING     *sought_;
    QV_INT         seen_ = 0; // characters that no later match has
};

// Copies a piece of `*from` to `*to` and moves both to after it. A short piece is copied with what follows it, where both
// have that many characters left: the result is filled in order and to its end, so that what is too much is overwritten.
void copyPiece( QV_CHAR **to, const QV_CHAR *toEnd, const QV_CHAR **from, const QV_CHAR *fromEnd, QV_INT count )
{
    const QV_INT SHORT = 16;
    QV_ASSERT( count <= toEnd - *to && count <= fromEnd - *from );

    if( count <= SHORT && toEnd - *to >= SHORT && fromEnd - *from >= SHORT )
        memcpy( *to, *from, SHORT * sizeof( QV_CHAR ) );
    else
        qv::copyChars( *to, *from, count );

    *to += count;
    *from += count;
}

// Replaces the first `count` matches, of which there are so many, each `soughtLength` characters long.
template< class Matches >
QV_INT replace( QV_STRING **qvs, QV_INT soughtLength, QV_STRING *replacement, QV_INT count, Matches matches )
{
    if( count == 0 )
        return 0;

    QV_INT kept   = ( *qvs )->length - count * soughtLength;
    QV_INT length = replacement->length;

    QV_CHECK_AS(
        QV_INT_MUL_OK( count, length ) && QV_INT_ADD_OK( kept + QV_STRING_FSPACE + QV_STRING_BSPACE, count * length ),
        "the text has a length" );

    if( kept + count * length == 0 )
    {
        qvStringClear( qvs );
        return count;
    }

    QV_STRING     *result  = qv::newString( kept + count * length, nullptr, QV_STRING_FSPACE );
    QV_CHAR       *to      = qv::chars( result );
    const QV_CHAR *toEnd   = to + result->length;
    const QV_CHAR *start   = qv::chars( *qvs );
    const QV_CHAR *from    = start;
    const QV_CHAR *fromEnd = start + ( *qvs )->length;

    for( QV_INT i = 0; i < count; i++ )
    {
        QV_INT place = matches.next();
        copyPiece( &to, toEnd, &from, fromEnd, start + place - from );
        qv::copyChars( to, qv::chars( replacement ), length );
        to += length;
        from += soughtLength;
    }

    copyPiece( &to, toEnd, &from, fromEnd, fromEnd - from );
    QV_ASSERT( to == toEnd );
    qv::assign( qvs, result );

    return count;
}

// How many of `count` matches are replaced.
QV_INT limited( QV_INT count, QV_INT maxMatches )
{
    return maxMatches == -1 || count < maxMatches ? count : maxMatches;
}
} // namespace

QV_INT qvStringReplace( QV_STRING **qvs, QV_STRING *sought, QV_STRING *replacement, QV_INT maxMatches )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( sought );
    QV_CHECK( sought->length > 0 );
    QV_CHECK( replacement );
    QV_CHECK( maxMatches >= -1 );

    if( sought->length == 1 )
    {
        QV_CHAR ch = *qv::chars( sought );

        if( replacement->length == 1 )
            return qvStringReplaceChar( qvs, ch, *qv::chars( replacement ), maxMatches );

        QV_INT count = limited( qv::countChar( qv::chars( *qvs ), ( *qvs )->length, ch ), maxMatches );

        return replace( qvs, 1, replacement, count, qv::CharMatches( qv::chars( *qvs ), ( *qvs )->length, ch ) );
    }

    QV_INT      count = 0;
    TextMatches counted( *qvs, sought );

    while( count != maxMatches && counted.next() >= 0 )
        count++;

    return replace( qvs, sought->length, replacement, count, TextMatches( *qvs, sought ) );
}

QV_INT qvStringReplaceChar( QV_STRING **qvs, QV_CHAR sought, QV_CHAR replacement, QV_INT maxMatches )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( QV_CHAR_OK( sought ) );
    QV_CHECK( QV_CHAR_OK( replacement ) );
    QV_CHECK( maxMatches >= -1 );

    QV_INT count = limited( qv::countChar( qv::chars( *qvs ), ( *qvs )->length, sought ), maxMatches );

    if( count == 0 || sought == replacement )
        return count;

    qv::makeOwn( qvs );
    QV_CHAR        *chs = qv::chars( *qvs );
    qv::CharMatches matches( chs, ( *qvs )->length, sought );

    for( QV_INT i = 0; i < count; i++ )
        chs[matches.next()] = replacement;

    return count;
}

QV_INT qvStringReplaceCstr(
    QV_STRING **qvs, const char *sought, QV_INT soughtLength, const char *replacement, QV_INT replacementLength,
    QV_INT maxMatches )
{
    return qvStringReplace(
        qvs, qv::SoughtString( sought, soughtLength ), qv::SoughtString( replacement, replacementLength ), maxMatches );
}

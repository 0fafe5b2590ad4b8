#include "qv/base/qv_format.h"
#include "qv/base/qv_number_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_create_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string_stack_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_int.h"
#include "qv/unicode/qv_unicode_tables_private.h"

#include <string.h>

using qv::asString;

/* Comparing ------------------------------------------------------------------------------------------------------ */

namespace
{
// A String with the case-folded text.
qv::Ref< QV_STRING > folded( QV_STRING *qvs )
{
    qv::Ref< QV_STRING > result = asString( qvs );
    qvStringToCaseFold( result.at() );

    return result;
}
} // namespace

QV_BOOL qvStringEqualsChars( QV_STRING *qvs, const QV_CHAR *chs, QV_INT chsLen )
{
    QV_CHECK( qvs );
    QV_CHECK( chsLen >= 0 );
    QV_CHECK( chs || chsLen == 0 );

    return qvs->length == chsLen && qv::equalChars( qv::chars( qvs ), chs, chsLen ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvStringEqualsChar( QV_STRING *qvs, QV_CHAR ch )
{
    QV_CHECK( qvs );
    QV_CHECK( QV_CHAR_OK( ch ) );

    return qvStringEqualsChars( qvs, &ch, 1 );
}

// Compares ASCII with the bytes as they stand. From the first other byte on, up to SHORT bytes are decoded on the stack, with
// the usual replacement of invalid ones; where more follow, the whole text becomes a String. That way also reports wrong
// arguments.
QV_BOOL qvStringEqualsCstr( QV_STRING *qvs, const char *text, QV_INT length )
{
    if( qvs && text && length >= -1 )
    {
        QV_INT         size  = length == -1 ? static_cast< QV_INT >( strlen( text ) ) : length;
        QV_INT         count = qvs->length < size ? qvs->length : size;
        const uint8_t *bytes = reinterpret_cast< const uint8_t * >( text );
        QV_INT         same  = qv::equalAsciiLength( qv::chars( qvs ), bytes, count );

        if( same == count && ( same == size || bytes[same] < 0x80 ) )
            return qvs->length == size ? QV_TRUE : QV_FALSE;

        if( same < count && bytes[same] < 0x80 )
            return QV_FALSE;

        const QV_INT SHORT = 128;

        if( size - same <= SHORT )
        {
            QV_CHAR chs[SHORT + qv::utf8::SHORT_ROOM];
            QV_INT  rest = qv::utf8::decodeShort( bytes + same, size - same, chs );

            if( rest < 0 )
                rest = qvCharsConvertFromUtf8( chs, SHORT, text + same, size - same );

            return qvs->length - same == rest && qv::equalChars( qv::chars( qvs ) + same, chs, rest ) ? QV_TRUE
                                                                                                      : QV_FALSE;
        }
    }

    return qvStringEquals( qvs, asString( text, length ) );
}

QV_BOOL qvStringEqualsWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length )
{
    return qvStringEquals( qvs, asString( text, length ) );
}

QV_INT qvStringCompareCaseFold( QV_STRING *a, QV_STRING *b )
{
    QV_CHECK( a );
    QV_CHECK( b );

    return qvStringCompare( folded( a ), folded( b ) );
}

QV_BOOL qvStringEqualsCaseFold( QV_STRING *a, QV_STRING *b )
{
    return qvStringCompareCaseFold( a, b ) == 0 ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvStringEqualsCharCaseFold( QV_STRING *qvs, QV_CHAR ch )
{
    QV_CHECK( qvs );
    QV_CHECK( QV_CHAR_OK( ch ) );

    return qvStringEqualsCharsCaseFold( qvs, &ch, 1 );
}

QV_BOOL qvStringEqualsCharsCaseFold( QV_STRING *qvs, const QV_CHAR *chs, QV_INT length )
{
    QV_CHECK( qvs );
    return qvStringEqualsCaseFold( qvs, qv::Ref< QV_STRING >( qvStringCreateFromCharsCopy( chs, length ) ) );
}

QV_BOOL qvStringEqualsCaseFoldCstr( QV_STRING *qvs, const char *text, QV_INT length )
{
    QV_CHECK( qvs );
    return qvStringEqualsCaseFold( qvs, asString( text, length ) );
}

QV_BOOL qvStringEqualsCaseFoldWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length )
{
    QV_CHECK( qvs );
    return qvStringEqualsCaseFold( qvs, asString( text, length ) );
}

/* Beginnings and ends -------------------------------------------------------------------------------------------- */

namespace
{
QV_BOOL standsAt( QV_STRING *qvs, QV_INT idx, const QV_CHAR *sub, QV_INT subLen )
{
    return idx >= 0 && subLen <= qvs->length - idx && qv::equalChars( qv::chars( qvs ) + idx, sub, subLen ) ? QV_TRUE
                                                                                                            : QV_FALSE;
}
} // namespace

QV_BOOL qvStringBeginsWith( QV_STRING *qvs, QV_STRING *sub )
{
    QV_CHECK( qvs );
    QV_CHECK( sub );

    return standsAt( qvs, 0, qv::chars( sub ), sub->length );
}

QV_BOOL qvStringBeginsWithChars( QV_STRING *qvs, const QV_CHAR *sub, QV_INT subLen )
{
    QV_CHECK( qvs );
    QV_CHECK( subLen >= 0 );
    QV_CHECK( sub || subLen == 0 );
    QV_CHECK( qvCharsAllOk( sub, subLen ) );

    return standsAt( qvs, 0, sub, subLen );
}

QV_BOOL qvStringBeginsWithChar( QV_STRING *qvs, QV_CHAR ch )
{
    QV_CHECK( qvs );
    QV_CHECK( QV_CHAR_OK( ch ) );

    return standsAt( qvs, 0, &ch, 1 );
}

QV_BOOL qvStringBeginsWithCstr( QV_STRING *qvs, const char *text, QV_INT length )
{
    return qvStringBeginsWith( qvs, qv::SoughtString( text, length ) );
}

QV_BOOL qvStringBeginsWithWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length )
{
    return qvStringBeginsWith( qvs, asString( text, length ) );
}

QV_BOOL qvStringEndsWith( QV_STRING *qvs, QV_STRING *sub )
{
    QV_CHECK( qvs );
    QV_CHECK( sub );

    return standsAt( qvs, qvs->length - sub->length, qv::chars( sub ), sub->length );
}

QV_BOOL qvStringEndsWithChars( QV_STRING *qvs, const QV_CHAR *sub, QV_INT subLen )
{
    QV_CHECK( qvs );
    QV_CHECK( subLen >= 0 );
    QV_CHECK( sub || subLen == 0 );
    QV_CHECK( qvCharsAllOk( sub, subLen ) );

    return standsAt( qvs, qvs->length - subLen, sub, subLen );
}

QV_BOOL qvStringEndsWithChar( QV_STRING *qvs, QV_CHAR ch )
{
    QV_CHECK( qvs );
    QV_CHECK( QV_CHAR_OK( ch ) );

    return standsAt( qvs, qvs->length - 1, &ch, 1 );
}

QV_BOOL qvStringEndsWithCstr( QV_STRING *qvs, const char *text, QV_INT length )
{
    return qvStringEndsWith( qvs, qv::SoughtString( text, length ) );
}

QV_BOOL qvStringEndsWithWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length )
{
    return qvStringEndsWith( qvs, asString( text, length ) );
}

/* Searching ------------------------------------------------------------------------------------------------------ */

QV_INT qvStringFind( QV_STRING *qvs, QV_INT offset, QV_STRING *subString )
{
    QV_CHECK( qvs );
    QV_CHECK( subString );

    return qvStringFindChars( qvs, offset, qv::chars( subString ), subString->length );
}

QV_INT qvStringFindChars( QV_STRING *qvs, QV_INT offset, const QV_CHAR *sub, QV_INT subLength )
{
    QV_CHECK( qvs );
    QV_CHECK( offset >= 0 );
    QV_CHECK( offset <= qvs->length );
    QV_CHECK( sub );
    QV_CHECK( subLength > 0 );

    if( subLength > qvs->length - offset )
        return -1;

    QV_INT found = qv::findChars( qv::chars( qvs ) + offset, qvs->length - offset - subLength + 1, sub, subLength );

    return found < 0 ? -1 : offset + found;
}

QV_INT qvStringFindChar( QV_STRING *qvs, QV_INT offset, QV_CHAR ch )
{
    QV_CHECK( qvs );
    QV_CHECK( offset >= 0 );
    QV_CHECK( offset <= qvs->length );
    QV_CHECK( QV_CHAR_OK( ch ) );

    QV_INT found = qv::findChar( qv::chars( qvs ) + offset, qvs->length - offset, ch );

    return found < 0 ? -1 : offset + found;
}

QV_INT qvStringFindCstr( QV_STRING *qvs, QV_INT offset, const char *text, QV_INT length )
{
    return qvStringFind( qvs, offset, qv::SoughtString( text, length ) );
}

QV_INT qvStringFindWcstr( QV_STRING *qvs, QV_INT offset, const wchar_t *text, QV_INT length )
{
    return qvStringFind( qvs, offset, asString( text, length ) );
}

QV_INT qvStringFindFromRight( QV_STRING *qvs, QV_INT offset, QV_STRING *subString )
{
    QV_CHECK( qvs );
    QV_CHECK( subString );

    return qvStringFindCharsFromRight( qvs, offset, qv::chars( subString ), subString->length );
}

QV_INT qvStringFindCharsFromRight( QV_STRING *qvs, QV_INT offset, const QV_CHAR *sub, QV_INT subLength )
{
    QV_CHECK( qvs );
    QV_CHECK( offset >= 0 || offset == -1 );
    QV_CHECK( offset <= qvs->length );
    QV_CHECK( sub );
    QV_CHECK( subLength > 0 );

    if( subLength > qvs->length )
        return -1;

    QV_INT last = qvs->length - subLength;

    if( offset >= 0 && offset < last )
        last = offset;

    return qv::findLastChars( qv::chars( qvs ), last + 1, sub, subLength );
}

QV_INT qvStringFindCharFromRight( QV_STRING *qvs, QV_INT offset, QV_CHAR ch )
{
    QV_CHECK( qvs );
    QV_CHECK( offset >= 0 || offset == -1 );
    QV_CHECK( offset <= qvs->length );
    QV_CHECK( QV_CHAR_OK( ch ) );

    return qv::findLastChar( qv::chars( qvs ), offset == -1 ? qvs->length : offset, ch );
}

QV_INT qvStringFindFromRightCstr( QV_STRING *qvs, QV_INT offset, const char *text, QV_INT length )
{
    return qvStringFindFromRight( qvs, offset, qv::SoughtString( text, length ) );
}

QV_INT qvStringFindFromRightWcstr( QV_STRING *qvs, QV_INT offset, const wchar_t *text, QV_INT length )
{
    return qvStringFindFromRight( qvs, offset, asString( text, length ) );
}

/* Splitting ------------------------------------------------------------------------------------------------------ */

namespace
{
// Collects parts and puts them into a Vector many at a time.
class Parts
{
public:
    // Parts have no free places: they are many, and most are only read.
    void push( const QV_CHAR *chs, QV_INT count )
    {
        if( __builtin_expect( waiting_ == WAITING, 0 ) )
            flush();

        objs_[waiting_++] = qv::newExactCopy( chs, count, &batch_ );
    }

    QV_VECTOR *give()
    {
        if( !vec_ )
            return qv::createVector( objs_, waiting_ );

        flush();
        return vec_.give();
    }

private:
    static const QV_INT WAITING = 32;

    __attribute__( ( noinline ) ) void flush()
    {
        if( vec_ )
            qv___VectorPushNoRetain( vec_.at(), objs_, waiting_ );
        else
            vec_.reset( qv::createVector( objs_, waiting_ ) );

        waiting_ = 0;
    }

    qv::ObjBatch         batch_{ qvStringSort() };
    qv::Ref< QV_VECTOR > vec_; // none as long as few parts wait
    QV_OBJ              *objs_[WAITING];
    QV_INT               waiting_ = 0;
};

// `find` returns the index of the first separator among so many characters, or -1.
template< class Find >
QV_VECTOR *split( QV_STRING *qvs, QV_INT sepLength, QV_INT maxParts, Find find )
{
    if( maxParts == -1 )
        maxParts = QV_INT_MAX;

    QV_CHECK( maxParts > 0 );

    Parts          parts;
    const QV_CHAR *chs    = qv::chars( qvs );
    QV_INT         length = qvs->length;
    QV_INT         pos    = 0;

    while( pos < length && maxParts >= 2 )
    {
        QV_INT count = find( chs + pos, length - pos );

        if( count < 0 )
            break;

        parts.push( chs + pos, count );
        pos += count + sepLength;
        maxParts--;
    }

    parts.push( chs + pos, length - pos );

    return parts.give();
}
} // namespace

QV_VECTOR *qvStringSplit( QV_STRING *qvs, QV_STRING *sep, QV_INT maxParts )
{
    QV_CHECK( qvs );
    QV_CHECK( sep );
    QV_CHECK( qvStringLength( sep ) );

    const QV_CHAR *sepChars  = qv::chars( sep );
    QV_INT         sepLength = sep->length;

    auto find = [=]( const QV_CHAR *chs, QV_INT length )
    { return qv::findChars( chs, length - sepLength + 1, sepChars, sepLength ); };

    return split( qvs, sepLength, maxParts, find );
}

QV_VECTOR *qvStringSplitChars( QV_STRING *qvs, const QV_CHAR *sepChars, QV_INT sepLength, QV_INT maxParts )
{
    return qvStringSplit( qvs, qv::Ref< QV_STRING >( qvStringCreateFromCharsCopy( sepChars, sepLength ) ), maxParts );
}

QV_VECTOR *qvStringSplitChar( QV_STRING *qvs, QV_CHAR sep, QV_INT maxParts )
{
    QV_CHECK( qvs );
    QV_CHECK( QV_CHAR_OK( sep ) );

    auto find = [=]( const QV_CHAR *chs, QV_INT length ) { return qv::findChar( chs, length, sep ); };

    return split( qvs, 1, maxParts, find );
}

QV_VECTOR *qvStringSplitCstr( QV_STRING *qvs, const char *text, QV_INT length, QV_INT maxParts )
{
    return qvStringSplit( qvs, qv::SoughtString( text, length ), maxParts );
}

QV_VECTOR *qvStringSplitWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length, QV_INT maxParts )
{
    return qvStringSplit( qvs, asString( text, length ), maxParts );
}

QV_VECTOR *qvStringSplitWhitespace( QV_STRING *qvs, QV_INT maxParts )
{
    QV_CHECK( qvs );

    if( maxParts == -1 )
        maxParts = QV_INT_MAX;

    QV_CHECK( maxParts > 0 );

    Parts          parts;
    const QV_CHAR *chs    = qv::chars( qvs );
    QV_INT         length = qvs->length - qv::trailingWhiteSpace( qvs );
    QV_INT         start  = -1; // where the current part begins; -1 while there is none

    for( QV_INT i = qv::leadingWhiteSpace( qvs ); i < length; i++ )
    {
        // While more parts than the last may follow, white space ends a part; then it belongs to the last.
        if( maxParts >= 2 && qv::unicode::isWhiteSpace( chs[i] ) )
        {
            if( start >= 0 )
            {
                parts.push( chs + start, i - start );
                start = -1;
                maxParts--;
            }
        }
        else if( start < 0 )
        {
            start = i;
        }
    }

    // There is a last part unless the whole text is blank.
    parts.push( chs + ( start < 0 ? 0 : start ), start < 0 ? 0 : length - start );

    return parts.give();
}

/* Reading values ------------------------------------------------------------------------------------------------- */

namespace
{
// How many characters from `offset` on are to be read.
QV_INT scanRange( QV_STRING *qvs, QV_INT offset, QV_INT maxChars )
{
    QV_CHECK( qvs );
    QV_CHECK( offset >= 0 );
    QV_CHECK( offset <= qvs->length );
    QV_CHECK( maxChars >= -1 );

    QV_INT rest = qvs->length - offset;

    return maxChars == -1 || maxChars > rest ? rest : maxChars;
}
} // namespace

QV_BOOL qvStringScanBool(
    QV_STRING *qvs, QV_INT offset, QV_INT maxChars, QV_BOOL allowNumeric, QV_BOOL *value, QV_INT *consumed )
{
    QV_INT count = scanRange( qvs, offset, maxChars );
    return qvFormatTryDecodeBool( qvs, offset, count, allowNumeric, value, consumed );
}

QV_BOOL
qvStringScanInt( QV_STRING *qvs, QV_INT offset, QV_INT maxChars, QV_INT base, QV_INT *value, QV_INT *consumed )
{
    QV_INT count = scanRange( qvs, offset, maxChars );
    return qv::decodeIntIn( qvs, qv::chars( qvs ) + offset, count, base, value, consumed );
}

QV_BOOL
qvStringScanReal( QV_STRING *qvs, QV_INT offset, QV_INT maxChars, QV_INT base, QV_REAL *value, QV_INT *consumed )
{
    QV_INT count = scanRange( qvs, offset, maxChars );
    return qvFormatTryDecodeReal( qvs, offset, count, base, value, consumed );
}

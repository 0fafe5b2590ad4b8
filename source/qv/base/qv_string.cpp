#include "qv/base/qv_string.h"

#include "qv/base/qv_string_create_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_order_private.h"
#include "qv/unicode/qv_unicode_case_private.h"
#include "qv/unicode/qv_unicode_normalizer.h"
#include "qv/unicode/qv_unicode_normalizer_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

QV_STRING *qv___StringEmpty = nullptr;

namespace
{
QV_STRING *createWithoutBlock()
{
    QV_STRING *qvs = qv::create< QV_STRING >( qvStringSort() );
    qvs->initBlock();

    return qvs;
}

// A String of `count` undefined characters in a block with the free places that a new one has.
QV_STRING *createWithSpace( QV_INT count )
{
    static_assert( QV_STRING_FSPACE == QV_STRING_BSPACE );
    QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE, count ) );

    return qv::newString( count, nullptr, QV_STRING_FSPACE );
}

void freeString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_STRING *qvs = qvStringFrom( thisObj );
    QV_ASSERT( !( thisObj->memory & QV___MEMORY_ENDS_ALONE ) || qv::isFixed( qvs ) || qvs->endsAlone() );

    if( !qv::isFixed( qvs ) )
        return qvs->freeBlock();

    qvs->dbgAllocationSize = 0;
    qvs->dbgObjectSize     = qv::FIXED_STRING; // what is really there, which may be poisoned
}

QV_INT compareStrings( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_STRING *a = qvStringFrom( thisObj );
    QV_STRING *b = qvStringFrom( thatObj );

    return qv::order( qv::chars( a ), a->length, qv::chars( b ), b->length );
}

QV_STRING *stringToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    return qv::retain( qvStringFrom( thisObj ) );
}
} // namespace

#undef QV___FAMILY_RELEASE
#define QV___FAMILY_RELEASE( obj ) qv::releaseInline( obj )

QV___FAMILY( String, QV_STRING, freeString, compareStrings, stringToString )

void qv___StringStartup( void )
{
    qv___StringEmpty = createWithoutBlock();
}

void qv___StringShutdown( void )
{
    qv::drop( qv___StringEmpty );
}

/* Room ----------------------------------------------------------------------------------------------------------- */

QV_CHAR *qv___StringMakeRoom( QV_STRING *qvs, QV_INT atIndex, QV_INT count )
{
    QV_CHECK( qvs );
    QV_CHECK( atIndex >= 0 );
    QV_CHECK( atIndex <= qvs->length );
    QV_CHECK( count > 0 );
    QV_ASSERT( !qv::isFixed( qvs ) );

    if( !qvs->memory )
    {
        QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE, count ) );
    }
    else if( !qvs->fits( atIndex, count ) )
    {
        if( atIndex == qvs->length && atIndex != 0 )
        {
            QV_CHECK( QV_INT_ADD_OK( qvs->fspace + qvs->length, count ) );
            QV_CHECK( QV_INT_ADD_OK( qvs->fspace + qvs->length + count, QV_STRING_BSPACE ) );
        }
        else
        {
            QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE, qvs->length ) );
            QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE + qvs->length, count ) );
        }
    }

    return qvs->openGap( atIndex, count );
}

void qv___StringCompact( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    QV_ASSERT( !qv::isFixed( qvs ) );
    qvs->compact();
}

namespace
{
// Makes a fixed String that nobody else holds one that can change, of the same contents, sizes, number and log. Has no
// effect on others.
void unfix( QV_STRING **qvs )
{
    if( qv::isShared< QV_STRING >( *qvs ) || !qv::isFixed( *qvs ) )
        return;

    QV_STRING *same = qv::newExactCopy( qv::chars( *qvs ), ( *qvs )->length );
    qv::exchangeIdentities( same, *qvs );
    qv::assign( qvs, same );
}
} // namespace

void qv::makeOwn( QV_STRING **qvs )
{
    if( isShared< QV_STRING >( *qvs ) )
        assign( qvs, qvStringCreateFrom( *qvs ) );
    else
        unfix( qvs );
}

/* Creation ------------------------------------------------------------------------------------------------------- */

QV_STRING *qv::createString( QV_INT count )
{
    return newString( count, nullptr, 0 );
}

QV_STRING *qv::createStringUse( QV_CHAR *block, QV_INT length, QV_INT front, QV_INT back )
{
    QV_STRING *qvs = createWithoutBlock();
    qvs->adoptBlock( block, length, { front, back } );

    return qvs;
}

namespace
{
// A String with a copy of good characters, and with free places unless there are none.
QV_STRING *createCopy( const QV_CHAR *chs, QV_INT count )
{
    if( count == 0 )
        return createWithoutBlock();

    QV_STRING *qvs = createWithSpace( count );
    qv::copyChars( qv::chars( qvs ), chs, count );

    return qvs;
}
} // namespace

QV_STRING *qvStringCreate( void )
{
    return qv::retainOfRun( qv___StringEmpty );
}

QV_STRING *qvStringCreateFrom( QV_STRING *src )
{
    QV_CHECK( src );
    return createCopy( qv::chars( src ), src->length );
}

QV_STRING *qvStringCreateFromLeading( QV_STRING *src, QV_INT count )
{
    return qvStringCreateFromInner( src, 0, count );
}

QV_STRING *qvStringCreateFromTrailing( QV_STRING *src, QV_INT count )
{
    QV_CHECK( src );
    QV_CHECK( count >= 0 );
    QV_CHECK( count <= src->length );

    return qvStringCreateFromInner( src, src->length - count, count );
}

QV_STRING *qvStringCreateFromInner( QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( src );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= src->length );

    return createCopy( qv::chars( src ) + offset, count );
}

QV_STRING *qvStringCreateFromOuter( QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( src );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= src->length );

    QV_INT left = src->length - count;

    if( left == 0 )
        return createWithoutBlock();

    QV_STRING *qvs = createWithSpace( left );
    QV_CHAR   *to  = qv::chars( qvs );
    qv::copyChars( to, qv::chars( src ), offset );
    qv::copyChars( to + offset, qv::chars( src ) + offset + count, left - offset );

    return qvs;
}

QV_STRING *qvStringCreateFromCharsUse( QV_CHAR *chars, QV_INT length )
{
    QV_CHECK_AS( length >= 0, "srcLength >= 0" );
    QV_CHECK_AS( length == 0 || chars, "srcLength == 0 || src" );
    QV_CHECK_AS( qvCharsAllOk( chars, length ), "qvCharsAllOk( src, srcLength )" );

    return length == 0 ? qvStringCreate() : qv::createStringUse( chars, length );
}

QV_STRING *qvStringCreateFromCharsCopy( const QV_CHAR *chars, QV_INT length )
{
    QV_CHECK_AS( length >= 0, "srcLength >= 0" );
    QV_CHECK_AS( length == 0 || chars, "srcLength == 0 || src" );
    QV_CHECK_AS( qvCharsAllOk( chars, length ), "qvCharsAllOk( src, srcLength )" );

    return qv::newExactCopy( chars, length );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

QV_INT qv::leadingWhiteSpace( QV_STRING *qvs )
{
    const QV_CHAR *chs   = chars( qvs );
    QV_INT         count = 0;

    while( count < qvs->length && unicode::isWhiteSpace( chs[count] ) )
        count++;

    return count;
}

QV_INT qv::trailingWhiteSpace( QV_STRING *qvs )
{
    const QV_CHAR *chs  = chars( qvs );
    QV_INT         left = qvs->length;

    while( left > 0 && unicode::isWhiteSpace( chs[left - 1] ) )
        left--;

    return qvs->length - left;
}

QV_INT qvStringLength( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qvs->length;
}

const QV_CHAR *qvStringBacking( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qv::chars( qvs );
}

QV_CHAR qvStringCharAt( QV_STRING *qvs, QV_INT idx )
{
    QV_CHECK( qvs );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < qvs->length );

    return qv::chars( qvs )[idx];
}

QV_BOOL qvStringIsBlank( QV_STRING *qvs )
{
    QV_CHECK( qvs );
    return qv::leadingWhiteSpace( qvs ) == qvs->length ? QV_TRUE : QV_FALSE;
}

/* Inserting ------------------------------------------------------------------------------------------------------ */

namespace
{
// What every insertion ends in: the gap in a String of the caller's own, filled. The characters may be its own.
void insertChars( QV_STRING **dest, QV_INT idx, const QV_CHAR *chs, QV_INT count )
{
    QV_STRING *old = *dest;

    if( !qv::isShared( old ) )
    {
        // What most insertions are: at the end of a text, with room after it.
        if( idx == old->length && idx > 0 && ( old->bspace >= count || old->stretch( count ) ) )
        {
            qv::copyChars( old->takeBack( count ), chs, count );
            return;
        }
    }

    if( !qv::isShared< QV_STRING >( old ) && !qv::holdsChar( old, chs ) )
    {
        unfix( dest );
        qv::copyChars( qv___StringMakeRoom( *dest, idx, count ), chs, count );
        return;
    }

    // A copy with the gap filled in one go.
    QV_STRING *copy = createWithSpace( old->length + count );
    QV_CHAR   *to   = qv::chars( copy );
    qv::copyChars( to, qv::chars( old ), idx );
    qv::copyChars( to + idx, chs, count );
    qv::copyChars( to + idx + count, qv::chars( old ) + idx, old->length - idx );
    qv::assign( dest, copy );
}
} // namespace

void qvStringInsertInner( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );
    QV_CHECK( idx >= 0 );
    QV_CHECK_AS( idx <= ( *dest )->length, "idx <= (*dest)->length" );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= src->length );

    if( count == 0 )
        return;

    QV_CHECK_AS( QV_INT_ADD_OK( ( *dest )->length, count ), "QV_INT_ADD_OK( (*dest)->length, count )" );

    // Held, a String that goes into itself counts as shared and is copied.
    qv::Ref< QV_STRING > held = qv::Ref< QV_STRING >::share( *dest == src ? src : nullptr );
    insertChars( dest, idx, qv::chars( src ) + offset, count );
}

// It begins with a line of the cache: elsewhere a piece took 13 to 25 % longer.
__attribute__( ( aligned( 64 ) ) ) void qvStringAppend( QV_STRING **dest, QV_STRING *src )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    QV_STRING *own   = *dest;
    QV_INT     count = src->length;

    // Places that are free after some text, of a String that nobody else holds.
    if( __builtin_expect( own != src && own->length > 0 && !qv::isShared( own ), 1 )
        && ( count <= own->bspace || own->stretch( count ) ) )
        qv::copyChars( own->takeBack( count ), qv::chars( src ), count );
    else
        qvStringInsertInner( dest, own->length, src, 0, count );
}

void qvStringInsertChars( QV_STRING **qvs, QV_INT idx, const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( idx >= 0 );
    QV_CHECK_AS( idx <= ( *qvs )->length, "idx <= (*qvs)->length" );
    QV_CHECK( chsLength >= 0 );
    QV_CHECK( chsLength == 0 || chs );

    if( chsLength == 0 )
        return;

    QV_CHECK_AS( QV_INT_ADD_OK( ( *qvs )->length, chsLength ), "QV_INT_ADD_OK( (*qvs)->length, chsLength )" );
    QV_CHECK_AS( qv::allCharsOk( chs, chsLength ), "qvCharsAllOk( chs, chsLength )" );

    insertChars( qvs, idx, chs, chsLength );
}

namespace
{
__attribute__( ( noinline ) ) void appendCharSlowly( QV_STRING **dest, QV_CHAR ch )
{
    qvStringInsertChars( dest, ( *dest )->length, &ch, 1 );
}
} // namespace

// The loops that build a text character by character end here. Where there is a free place after some text that
// nobody else holds, a few instructions do it, without a frame for the call.
void qvStringAppendChar( QV_STRING **dest, QV_CHAR ch )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );

    QV_STRING *qvs = *dest;

    if( __builtin_expect( qv::isShared( qvs ) || qvs->bspace == 0 || qvs->length == 0 || !QV_CHAR_OK( ch ), 0 ) )
        return appendCharSlowly( dest, ch );

    *qvs->takeBack( 1 ) = ch;
}

QV_CHAR *qvStringAppendRoom( QV_STRING **dest, QV_INT count )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( count > 0 );
    QV_CHECK_AS( QV_INT_ADD_OK( ( *dest )->length, count ), "QV_INT_ADD_OK( (*dest)->length, count )" );

    unfix( dest );

    if( qv::isShared( *dest ) )
    {
        QV_STRING *copy = createWithSpace( ( *dest )->length + count );
        qv::copyChars( qv::chars( copy ), qv::chars( *dest ), ( *dest )->length );
        copy->dropBack( count );
        qv::assign( dest, copy );
    }

    QV_STRING *own = *dest;

    if( own->bspace < count && ( own->length == 0 || !own->stretch( count ) ) )
    {
        qv___StringMakeRoom( own, own->length, count );
        own->dropBack( count );
    }

    own->openBack();

    return qv::chars( own ) + own->length;
}

void qvStringAppendWritten( QV_STRING **dest, QV_INT count )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( count >= 0 );
    QV_CHECK_AS( count <= ( qv::isFixed( *dest ) ? 0 : ( *dest )->bspace ), "count <= (*dest)->bspace" );

    if( qv::isFixed( *dest ) ) // which no room was made in
        return;

    QV_STRING     *own     = *dest;
    const QV_CHAR *written = qv::chars( own ) + own->length;

    QV_CHECK_AS( qv::allCharsOk( written, count ), "qvCharsAllOk( written, count )" );

    if( !qv::isShared( own ) )
    {
        own->takeWritten( count );
        own->compact();
        return;
    }

    // Somebody holds the String who did not when the room was made: a snapshot of live objects, for one.
    QV_STRING *copy = qvStringCreateFrom( own );
    qvStringAppendChars( &copy, written, count );
    own->closeBack();
    qv::assign( dest, copy );
}

/* Changing and deleting ------------------------------------------------------------------------------------------ */

void qvStringClear( QV_STRING **qvs )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    qv::assign( qvs, qvStringCreate() );
}

void qvStringSetCharAt( QV_STRING **qvs, QV_INT idx, QV_CHAR ch )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( idx >= -1 );
    QV_CHECK_AS( idx <= ( *qvs )->length, "idx <= (*qvs)->length" );
    QV_CHECK( QV_CHAR_OK( ch ) );

    if( idx == -1 )
    {
        qvStringPrependChar( qvs, ch );
    }
    else if( idx == ( *qvs )->length )
    {
        qvStringAppendChar( qvs, ch );
    }
    else
    {
        qv::makeOwn( qvs );
        qv::chars( *qvs )[idx] = ch;
    }
}

void qvStringDelLeading( QV_STRING **qvs, QV_INT count )
{
    qvStringDelInner( qvs, 0, count );
}

void qvStringDelTrailing( QV_STRING **qvs, QV_INT count )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( count >= 0 );
    QV_CHECK_AS( count <= ( *qvs )->length, "count <= (*qvs)->length" );

    qvStringDelInner( qvs, ( *qvs )->length - count, count );
}

void qvStringDelInner( QV_STRING **qvs, QV_INT offset, QV_INT count )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK_AS( offset + count <= ( *qvs )->length, "offset + count <= (*qvs)->length" );

    if( count == 0 )
        return;

    if( count == ( *qvs )->length )
    {
        qvStringClear( qvs );
        return;
    }

    qv::makeOwn( qvs );
    QV_STRING *own = *qvs;

    if( offset == 0 )
        own->dropFront( count );
    else
        own->dropInside( offset, count );

    own->compact();
}

void qvStringDelOuter( QV_STRING **qvs, QV_INT offset, QV_INT count )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK_AS( offset + count <= ( *qvs )->length, "offset + count <= (*qvs)->length" );

    if( count == 0 )
    {
        qvStringClear( qvs );
        return;
    }

    if( count == ( *qvs )->length )
        return;

    qv::makeOwn( qvs );
    QV_STRING *own = *qvs;
    own->dropBack( own->length - offset - count );
    own->dropFront( offset );
    own->compact();
}

void qvStringTrimLeading( QV_STRING **qvs )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    qvStringDelLeading( qvs, qv::leadingWhiteSpace( *qvs ) );
}

void qvStringTrimTrailing( QV_STRING **qvs )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    qvStringDelTrailing( qvs, qv::trailingWhiteSpace( *qvs ) );
}

void qvStringTrim( QV_STRING **qvs )
{
    qvStringTrimLeading( qvs );
    qvStringTrimTrailing( qvs );
}

namespace
{
// Goes on with a mapping for which there is no room, `done` of which is in a String that is open to its end, more by halves
// each time. The result has the free places of a new String.
void mapRest( QV_STRING **qvs, qv::unicode::CaseMapping *mapping, QV_STRING *mapped, qv::unicode::CaseMapped done )
{
    const QV_CHAR *from   = qv::chars( *qvs );
    QV_INT         length = ( *qvs )->length;

    while( done.read < length )
    {
        qv___StringMakeRoom( mapped, mapped->length, mapped->length / 2 + qv::unicode::LONGEST_CASE_MAPPING );

        qv::unicode::CaseMapped more = mapping(
            from + done.read, length - done.read, qv::chars( mapped ) + done.written, mapped->length - done.written );
        done.read += more.read;
        done.written += more.written;
    }

    mapped->dropBack( mapped->length - done.written );
    mapped->refresh();
    qv::assign( qvs, mapped );
}

// Most texts keep their length or become little longer: there is room for that.
__attribute__( ( noinline ) ) void mapAny( QV_STRING **qvs, qv::unicode::CaseMapping *mapping )
{
    const QV_CHAR *from   = qv::chars( *qvs );
    QV_INT         length = ( *qvs )->length;

    if( length == 0 )
        return;

    QV_STRING *mapped = createWithSpace( length + length / 16 + qv::unicode::LONGEST_CASE_MAPPING );
    mapRest( qvs, mapping, mapped, mapping( from, length, qv::chars( mapped ), mapped->length ) );
}

// Replaces the text by its mapping. That of few characters is written where it stays, with memory for some more and for the
// free places of a new String.
inline void mapCase( QV_STRING **qvs, qv::unicode::CaseMapping *mapping )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    static_assert( qv::MOST_OPEN >= qv::unicode::FEW_CASE );
    QV_INT length = ( *qvs )->length;

    if( length == 0 || length > qv::unicode::FEW_CASE )
        return mapAny( qvs, mapping );

    QV_STRING              *mapped = qv::newOpenString();
    qv::unicode::CaseMapped done   = mapping( qv::chars( *qvs ), length, qv::openChars( mapped ), qv::MOST_OPEN );
    bool                    fits   = done.read == length;

    qv::closeOpen( mapped, fits ? done.written : qv::MOST_OPEN );

    if( __builtin_expect( fits, 1 ) )
        qv::assign( qvs, mapped );
    else
        mapRest( qvs, mapping, mapped, done );
}
} // namespace

void qvStringToUpper( QV_STRING **qvs )
{
    mapCase( qvs, qv::unicode::mapToUpper );
}

void qvStringToLower( QV_STRING **qvs )
{
    mapCase( qvs, qv::unicode::mapToLower );
}

void qvStringToCaseFold( QV_STRING **qvs )
{
    mapCase( qvs, qv::unicode::mapToCaseFold );
}

void qvStringSanitize( QV_STRING **qvs )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    if( ( *qvs )->length == 0 )
        return;

    qv::makeOwn( qvs );
    QV_STRING *own   = *qvs;
    QV_INT     count = qvCharsSanitize( qv::chars( own ), own->length, qv::chars( own ), own->length );
    own->dropBack( own->length - count );
    own->compact();
}

namespace
{
void normalize( QV_STRING **qvs, QV_INT normalForm )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    if( QV_STRING *changed = qv::normalize( *qvs, normalForm ) )
        qv::assign( qvs, changed );
}
} // namespace

void qvStringNormalizeNFC( QV_STRING **qvs )
{
    normalize( qvs, QV_UNICODE_NORMAL_FORM_NFC );
}

void qvStringNormalizeNFD( QV_STRING **qvs )
{
    normalize( qvs, QV_UNICODE_NORMAL_FORM_NFD );
}

void qvStringNormalizeNFKC( QV_STRING **qvs )
{
    normalize( qvs, QV_UNICODE_NORMAL_FORM_NFKC );
}

void qvStringNormalizeNFKD( QV_STRING **qvs )
{
    normalize( qvs, QV_UNICODE_NORMAL_FORM_NFKD );
}

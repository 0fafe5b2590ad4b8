#include "qv/base/qv_string.h"

#include "qv/base/qv_format.h"
#include "qv/base/qv_format_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_chars_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/unicode/qv_unicode_normalizer.h"
#include "qv/unicode/qv_unicode_normalizer_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

#include <string.h>
#include <wchar.h>

QV_STRING *qv___StringEmpty = nullptr;

namespace
{
const QV_INT OVERSIZED = 64;  // an end with more free places than this is given back
const QV_INT EMBEDDED  = 512; // a block of so many characters at most is allocated with its String

// Declares the block to the object frame. Whoever changes the block is alone with the String, so that a plain store
// does what qv___ObjDbgSetAllocationSizeN() does with a locked instruction; the block's own size has been checked.
void account( QV_STRING *qvs )
{
    QV_INT places = qvs->fspace + qvs->bspace + qvs->length;
    __atomic_store_n( &qvs->dbgAllocationSize, places * QV_INT( sizeof( QV_CHAR ) ), __ATOMIC_RELAXED );
}

QV_CHAR *allocate( QV_INT count )
{
    return static_cast< QV_CHAR * >( qvMemAllocN( count, sizeof( QV_CHAR ) ) );
}

// All that is copied here fits a block, so that there is nothing to check; most of it is short.
void copyChars( QV_CHAR *dest, const QV_CHAR *src, QV_INT count )
{
    if( count > 0 )
        memcpy( dest, src, static_cast< size_t >( count ) * sizeof( QV_CHAR ) );
}

void moveChars( QV_CHAR *dest, const QV_CHAR *src, QV_INT count )
{
    qvMemMoveN( dest, src, count, sizeof( QV_CHAR ) );
}

// Where a block stands that was allocated with its String.
QV_CHAR *embedded( QV_STRING *qvs )
{
    return reinterpret_cast< QV_CHAR * >( qvs + 1 );
}

QV_STRING *createWithoutBlock()
{
    QV_STRING *qvs = qv::create< QV_STRING >( qvStringSort() );
    qvs->length    = 0;
    qvs->fspace    = 0;
    qvs->bspace    = 0;
    qvs->chars     = nullptr;
    qvs->blockSize = 0;

    return qvs;
}

// A String of undefined characters, and with so many free places at each end. The sum is above 0.
QV_STRING *createWithBlock( QV_INT length, QV_INT space, qv::ObjBatch *batch = nullptr )
{
    QV_INT     places = length + 2 * space;
    bool       embeds = places <= EMBEDDED;
    QV_INT     extra  = embeds ? places * QV_INT( sizeof( QV_CHAR ) ) : 0;
    QV_CHAR   *block  = embeds ? nullptr : allocate( places );
    QV_OBJ    *object = batch ? batch->create( sizeof( QV_STRING ), extra )
                              : qv::createWithRoom( sizeof( QV_STRING ), extra, qvStringSort() );
    QV_STRING *qvs    = static_cast< QV_STRING * >( object );
    qvs->length       = length;
    qvs->fspace       = space;
    qvs->bspace       = space;
    qvs->chars        = embeds ? embedded( qvs ) : block;
    qvs->blockSize    = places;
    account( qvs );

    return qvs;
}

// A String of `count` characters in a block with the free places that a new one has.
QV_STRING *createWithSpace( QV_INT count )
{
    static_assert( QV_STRING_FSPACE == QV_STRING_BSPACE );
    QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE, count ) );

    return createWithBlock( count, QV_STRING_FSPACE );
}

// The memory at `chars`, if it is an allocation of its own.
void freeBlock( QV_STRING *qvs )
{
    if( qvs->chars != embedded( qvs ) )
        qvMemFree( qvs->chars );
}

// Where appending so many doesn't fit, makes as much space behind as it would, if there is the memory for that.
bool growsInPlace( QV_STRING *qvs, QV_INT count )
{
    QV_INT used = qvs->fspace + qvs->length;

    if( count + QV_STRING_BSPACE > qvs->blockSize - used )
        return false;

    qvs->bspace = count + QV_STRING_BSPACE;
    account( qvs );

    return true;
}

// Sees to memory for `places` characters. What is in the block stays where it is in it.
void growBlock( QV_STRING *qvs, QV_INT places )
{
    if( places <= qvs->blockSize )
        return;

    // Half of it more, unless that is no size any more: then the allocation is the one to say so.
    QV_INT size = QV_INT_MUL_OK( places, 8 ) ? places + places / 2 : places;

    if( qvs->chars == embedded( qvs ) )
    {
        QV_CHAR *block = allocate( size );
        copyChars( block, qvs->chars, qvs->blockSize );
        qvs->chars = block;
    }
    else
    {
        qvs->chars = static_cast< QV_CHAR * >( qvMemReallocN( qvs->chars, size, sizeof( QV_CHAR ) ) );
    }

    qvs->blockSize = size;
}

QV_INT leadingWhiteSpace( QV_STRING *qvs )
{
    const QV_CHAR *chs   = qv::chars( qvs );
    QV_INT         count = 0;

    while( count < qvs->length && qv::unicode::isWhiteSpace( chs[count] ) )
        count++;

    return count;
}

QV_INT trailingWhiteSpace( QV_STRING *qvs )
{
    const QV_CHAR *chs  = qv::chars( qvs );
    QV_INT         left = qvs->length;

    while( left > 0 && qv::unicode::isWhiteSpace( chs[left - 1] ) )
        left--;

    return qvs->length - left;
}

// A reference to a text in any form, for a scope.
qv::Ref< QV_STRING > asString( QV_STRING *qvs )
{
    return qv::Ref< QV_STRING >::share( qvs );
}

qv::Ref< QV_STRING > asString( const char *text, QV_INT length )
{
    return qv::Ref< QV_STRING >( qvStringCreateFromCstr( text, length ) );
}

qv::Ref< QV_STRING > asString( const wchar_t *text, QV_INT length )
{
    return qv::Ref< QV_STRING >( qvStringCreateFromWcstr( text, length ) );
}

void freeString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_STRING *qvs = qvStringFrom( thisObj );

    freeBlock( qvs );
    qvs->dbgAllocationSize = 0; // without an atomic operation, since nobody else is left
}

QV_INT compare( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_STRING *a      = qvStringFrom( thisObj );
    QV_STRING *b      = qvStringFrom( thatObj );
    QV_INT     common = a->length < b->length ? a->length : b->length;

    if( int order = qv::compareChars( qv::chars( a ), qv::chars( b ), common ) )
        return order < 0 ? -1 : 1;

    return ( a->length > b->length ) - ( a->length < b->length );
}

QV_STRING *toString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    return qv::retain( qvStringFrom( thisObj ) );
}
} // namespace

QV___FAMILY( String, QV_STRING, freeString, compare, toString )

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

    QV_INT length = qvs->length;

    if( !qvs->chars )
    {
        QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE, count ) );

        qvs->blockSize = QV_STRING_FSPACE + QV_STRING_BSPACE + count;
        qvs->chars     = allocate( qvs->blockSize );
        qvs->length    = count;
        qvs->fspace    = QV_STRING_FSPACE;
        qvs->bspace    = QV_STRING_BSPACE;
        account( qvs );

        return qv::chars( qvs );
    }

    if( atIndex == 0 && qvs->fspace >= count )
    {
        qvs->fspace -= count;
        qvs->length += count;

        return qv::chars( qvs );
    }

    if( atIndex == 0 && qvs->fspace + qvs->bspace >= count )
    {
        moveChars( qvs->chars + count, qv::chars( qvs ), length );
        qvs->bspace -= count - qvs->fspace;
        qvs->fspace = 0;
        qvs->length += count;

        return qvs->chars;
    }

    if( atIndex == length && atIndex != 0 )
    {
        if( qvs->bspace < count )
        {
            QV_CHECK( QV_INT_ADD_OK( qvs->fspace + qvs->length, count ) );
            QV_CHECK( QV_INT_ADD_OK( qvs->fspace + qvs->length + count, QV_STRING_BSPACE ) );

            growBlock( qvs, qvs->fspace + length + count + QV_STRING_BSPACE );
            qvs->bspace = QV_STRING_BSPACE;
            qvs->length += count;
            account( qvs );
        }
        else
        {
            qvs->bspace -= count;
            qvs->length += count;
        }

        return qv::chars( qvs ) + length;
    }

    QV_INT tail = length - atIndex;

    if( atIndex != 0 && qvs->bspace >= count )
    {
        QV_CHAR *gap = qv::chars( qvs ) + atIndex;
        moveChars( gap + count, gap, tail );
        qvs->bspace -= count;
        qvs->length += count;

        return gap;
    }

    if( atIndex != 0 && qvs->fspace + qvs->bspace >= count )
    {
        QV_CHAR *from = qv::chars( qvs );
        QV_CHAR *to   = qvs->chars + ( qvs->fspace + qvs->bspace - count );
        moveChars( from + atIndex + qvs->bspace, from + atIndex, tail );
        moveChars( to, from, atIndex );
        qvs->fspace -= count - qvs->bspace;
        qvs->bspace = 0;
        qvs->length += count;

        return to + atIndex;
    }

    QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE, qvs->length ) );
    QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE + qvs->length, count ) );

    growBlock( qvs, length + count + QV_STRING_FSPACE + QV_STRING_BSPACE );
    QV_CHAR *from = qvs->chars + qvs->fspace;
    QV_CHAR *to   = qvs->chars + QV_STRING_FSPACE;
    moveChars( to + ( atIndex == 0 ? count : 0 ), from, length );

    if( atIndex != 0 )
        moveChars( to + atIndex + count, to + atIndex, tail );

    qvs->fspace = QV_STRING_FSPACE;
    qvs->bspace = QV_STRING_BSPACE;
    qvs->length += count;
    account( qvs );

    return to + atIndex;
}

void qv___StringCompact( QV_STRING *qvs )
{
    QV_CHECK( qvs );

    if( qvs->fspace <= OVERSIZED && qvs->bspace <= OVERSIZED )
        return;

    if( qvs->length == 0 )
    {
        freeBlock( qvs );
        qvs->chars     = nullptr;
        qvs->blockSize = 0;
        qvs->fspace    = 0;
        qvs->bspace    = 0;
        account( qvs );
        return;
    }

    QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE, qvs->length ) );

    QV_INT places = qvs->length + QV_STRING_FSPACE + QV_STRING_BSPACE;

    if( places <= qvs->blockSize && qvs->blockSize <= places + places / 2 )
    {
        // The memory is little more than the block has to have.
        if( qvs->fspace != QV_STRING_FSPACE )
            moveChars( qvs->chars + QV_STRING_FSPACE, qv::chars( qvs ), qvs->length );
    }
    else
    {
        QV_CHAR *block = allocate( places );
        copyChars( block + QV_STRING_FSPACE, qv::chars( qvs ), qvs->length );
        freeBlock( qvs );
        qvs->chars     = block;
        qvs->blockSize = places;
    }

    qvs->fspace = QV_STRING_FSPACE;
    qvs->bspace = QV_STRING_BSPACE;
    account( qvs );
}

QV_STRING *qv::createString( QV_INT count, ObjBatch *batch )
{
    return createWithBlock( count, 0, batch );
}

QV_STRING *qv::createStringUse( QV_CHAR *block, QV_INT length )
{
    QV_STRING *qvs = createWithoutBlock();
    qvs->chars     = block;
    qvs->blockSize = length;
    qvs->length    = length;
    account( qvs );

    return qvs;
}

/* Creation ------------------------------------------------------------------------------------------------------- */

namespace
{
// A String with a copy of good characters in a block exactly as long as the text.
QV_STRING *createExactCopy( const QV_CHAR *chs, QV_INT count, qv::ObjBatch *batch = nullptr )
{
    if( count == 0 )
        return qvStringCreate();

    QV_STRING *qvs = qv::createString( count, batch );
    copyChars( qvs->chars, chs, count );

    return qvs;
}

// A String with a copy of good characters, and with free places unless there are none.
QV_STRING *createCopy( const QV_CHAR *chs, QV_INT count )
{
    if( count == 0 )
        return createWithoutBlock();

    QV_STRING *qvs = createWithSpace( count );
    copyChars( qv::chars( qvs ), chs, count );

    return qvs;
}

QV_INT unitsOf( const char *text )
{
    return static_cast< QV_INT >( strlen( text ) );
}

QV_INT unitsOf( const wchar_t *text )
{
    return static_cast< QV_INT >( wcslen( text ) );
}

// Decodes into a block of just the length of the result. As no form gives more characters than it has units, one pass
// does: a short text goes by way of the stack, and the block of a long one gives back what it didn't need.
template< class Unit >
QV_STRING *
createDecoded( QV_INT ( *convert )( QV_CHAR *, QV_INT, const Unit *, QV_INT ), const Unit *text, QV_INT length )
{
    const QV_INT SHORT = 512;

    if( text && length == -1 )
        length = unitsOf( text );

    if( !text || length <= SHORT ) // which leaves what is wrong to the conversion
    {
        QV_CHAR chs[SHORT];
        return createExactCopy( chs, convert( chs, SHORT, text, length ) );
    }

    QV_CHAR *block = allocate( length );
    QV_INT   count = convert( block, length, text, length );

    if( count == 0 )
    {
        qvMemFree( block );
        return qvStringCreate();
    }

    if( count < length )
        block = static_cast< QV_CHAR * >( qvMemReallocN( block, count, sizeof( QV_CHAR ) ) );

    return qv::createStringUse( block, count );
}
} // namespace

QV_STRING *qvStringCreate( void )
{
    return qv::retain( qv___StringEmpty );
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
    copyChars( to, qv::chars( src ), offset );
    copyChars( to + offset, qv::chars( src ) + offset + count, left - offset );

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

    return createExactCopy( chars, length );
}

QV_STRING *qvStringCreateFromAscii( const char *text, QV_INT length )
{
    return createDecoded( qvCharsConvertFromAscii, text, length );
}

QV_STRING *qvStringCreateFromCstr( const char *text, QV_INT length )
{
    return createDecoded( qvCharsConvertFromCstr, text, length );
}

QV_STRING *qvStringCreateFromUtf8( const char *text, QV_INT length )
{
    return createDecoded( qvCharsConvertFromUtf8, text, length );
}

QV_STRING *qvStringCreateFromWcstr( const wchar_t *text, QV_INT length )
{
    return createDecoded( qvCharsConvertFromWcstr, text, length );
}

QV_STRING *qvStringCreateFromFormat( QV_STRING *fmt, ... )
{
    va_list argList;
    va_start( argList, fmt );
    QV_STRING *result = qvStringCreateFromFormatArgList( fmt, &argList );
    va_end( argList );

    return result;
}

QV_STRING *qvStringCreateFromFormatArgList( QV_STRING *fmt, va_list *argList )
{
    QV_CHECK( fmt );
    return qv___FormatArgList( fmt, argList );
}

QV_STRING *qvStringCreateFromFormatCstr( const char *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    QV_STRING *result = qvStringCreateFromFormatCstrArgList( fmt, fmtLength, &argList );
    va_end( argList );

    return result;
}

QV_STRING *qvStringCreateFromFormatCstrArgList( const char *fmt, QV_INT fmtLength, va_list *argList )
{
    return qv::formatCstr( fmt, fmtLength, argList );
}

QV_STRING *qvStringCreateFromFormatWcstr( const wchar_t *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    QV_STRING *result = qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, &argList );
    va_end( argList );

    return result;
}

QV_STRING *qvStringCreateFromFormatWcstrArgList( const wchar_t *fmt, QV_INT fmtLength, va_list *argList )
{
    return qv::formatWcstr( fmt, fmtLength, argList );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

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
    return leadingWhiteSpace( qvs ) == qvs->length ? QV_TRUE : QV_FALSE;
}

/* Inserting ------------------------------------------------------------------------------------------------------ */

namespace
{
// What every insertion ends in: the gap in a String of the caller's own, filled.
void insertChars( QV_STRING **dest, QV_INT idx, const QV_CHAR *chs, QV_INT count )
{
    QV_STRING *old = *dest;

    if( !qv::isShared( old ) )
    {
        // What most insertions are: at the end of a text, with room behind it.
        if( idx == old->length && idx > 0 && ( old->bspace >= count || growsInPlace( old, count ) ) )
        {
            copyChars( qv::chars( old ) + idx, chs, count );
            old->length += count;
            old->bspace -= count;
            return;
        }

        copyChars( qv___StringMakeRoom( old, idx, count ), chs, count );
        return;
    }

    // A copy with the gap filled in one go.
    QV_STRING *copy = createWithSpace( old->length + count );
    QV_CHAR   *to   = qv::chars( copy );
    copyChars( to, qv::chars( old ), idx );
    copyChars( to + idx, chs, count );
    copyChars( to + idx + count, qv::chars( old ) + idx, old->length - idx );
    qv::assign( dest, copy );
}
} // namespace

void qvStringInsert( QV_STRING **dest, QV_INT idx, QV_STRING *src )
{
    QV_CHECK( src );
    qvStringInsertInner( dest, idx, src, 0, src->length );
}

void qvStringInsertLeading( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT count )
{
    qvStringInsertInner( dest, idx, src, 0, count );
}

void qvStringInsertTrailing( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT count )
{
    QV_CHECK( src );
    QV_CHECK( count >= 0 );
    QV_CHECK( count <= src->length );

    qvStringInsertInner( dest, idx, src, src->length - count, count );
}

void qvStringInsertInner( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx <= (*dest)->length );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= src->length );

    if( count == 0 )
        return;

    QV_CHECK( QV_INT_ADD_OK( (*dest)->length, count ) );

    // Held, a String that goes into itself counts as shared and is copied.
    qv::Ref< QV_STRING > held = qv::Ref< QV_STRING >::share( *dest == src ? src : nullptr );
    insertChars( dest, idx, qv::chars( src ) + offset, count );
}

void qvStringInsertOuter( QV_STRING **dest, QV_INT idx, QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx <= (*dest)->length );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= src->length );

    // Held across both insertions, a String that goes into itself is read as it was.
    qv::Ref< QV_STRING > held = qv::Ref< QV_STRING >::share( *dest == src ? src : nullptr );
    qvStringInsertInner( dest, idx, src, offset + count, src->length - offset - count );
    qvStringInsertInner( dest, idx, src, 0, offset );
}

void qvStringInsertChars( QV_STRING **qvs, QV_INT idx, const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx <= (*qvs)->length );
    QV_CHECK( chsLength >= 0 );
    QV_CHECK( chsLength == 0 || chs );

    if( chsLength == 0 )
        return;

    QV_CHECK( QV_INT_ADD_OK( (*qvs)->length, chsLength ) );
    QV_CHECK_AS( qv::allCharsOk( chs, chsLength ), "qvCharsAllOk( chs, chsLength )" );

    insertChars( qvs, idx, chs, chsLength );
}

void qvStringInsertChar( QV_STRING **dest, QV_INT idx, QV_CHAR ch )
{
    qvStringInsertChars( dest, idx, &ch, 1 );
}

void qvStringInsertCstr( QV_STRING **dest, QV_INT idx, const char *text, QV_INT length )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromCstr( text, length ) );
    qvStringInsert( dest, idx, src );
}

void qvStringInsertWcstr( QV_STRING **dest, QV_INT idx, const wchar_t *text, QV_INT length )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromWcstr( text, length ) );
    qvStringInsert( dest, idx, src );
}

void qvStringInsertObj( QV_STRING **dest, QV_INT idx, QV_OBJ *obj )
{
    QV_CHECK( obj );

    qv::Ref< QV_STRING > src( qvObjToString( obj ) );
    qvStringInsert( dest, idx, src );
}

void qvStringInsertFormat( QV_STRING **dest, QV_INT idx, QV_STRING *fmt, ... )
{
    va_list argList;
    va_start( argList, fmt );
    qvStringInsertFormatArgList( dest, idx, fmt, &argList );
    va_end( argList );
}

void qvStringInsertFormatArgList( QV_STRING **dest, QV_INT idx, QV_STRING *fmt, va_list *argList )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromFormatArgList( fmt, argList ) );
    qvStringInsert( dest, idx, src );
}

void qvStringInsertFormatCstr( QV_STRING **dest, QV_INT idx, const char *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    qvStringInsertFormatCstrArgList( dest, idx, fmt, fmtLength, &argList );
    va_end( argList );
}

void qvStringInsertFormatCstrArgList(
    QV_STRING **dest, QV_INT idx, const char *fmt, QV_INT fmtLength, va_list *argList )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromFormatCstrArgList( fmt, fmtLength, argList ) );
    qvStringInsert( dest, idx, src );
}

void qvStringInsertFormatWcstr( QV_STRING **dest, QV_INT idx, const wchar_t *fmt, QV_INT fmtLength, ... )
{
    va_list argList;
    va_start( argList, fmtLength );
    qvStringInsertFormatWcstrArgList( dest, idx, fmt, fmtLength, &argList );
    va_end( argList );
}

void qvStringInsertFormatWcstrArgList(
    QV_STRING **dest, QV_INT idx, const wchar_t *fmt, QV_INT fmtLength, va_list *argList )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, argList ) );
    qvStringInsert( dest, idx, src );
}

// The same forms at one end: `Place` is the word in the names, `INDEX` where they insert.
#define AT_END( Place, INDEX, Form, PARAMETERS, ... )                                                                  \
    void qvString##Place##Form PARAMETERS                                                                              \
    {                                                                                                                  \
        QV_CHECK( dest );                                                                                              \
        QV_CHECK( *dest );                                                                                             \
        qvStringInsert##Form( dest, INDEX, __VA_ARGS__ );                                                              \
    }

#define AT_END_VARIADIC( Place, INDEX, Form, PARAMETERS, LAST, ... )                                                   \
    void qvString##Place##Form PARAMETERS                                                                              \
    {                                                                                                                  \
        QV_CHECK( dest );                                                                                              \
        QV_CHECK( *dest );                                                                                             \
                                                                                                                       \
        va_list argList;                                                                                               \
        va_start( argList, LAST );                                                                                     \
        qvStringInsert##Form##ArgList( dest, INDEX, __VA_ARGS__, &argList );                                           \
        va_end( argList );                                                                                             \
    }

// clang-format off
#define FORMS_AT_END( Place, INDEX )                                                                                   \
    AT_END( Place, INDEX, ,              ( QV_STRING **dest, QV_STRING *src ), src )                                   \
    AT_END( Place, INDEX, Leading,       ( QV_STRING **dest, QV_STRING *src, QV_INT count ), src, count )              \
    AT_END( Place, INDEX, Trailing,      ( QV_STRING **dest, QV_STRING *src, QV_INT count ), src, count )              \
    AT_END( Place, INDEX, Inner,         ( QV_STRING **dest, QV_STRING *src, QV_INT offset, QV_INT count ),            \
            src, offset, count )                                                                                       \
    AT_END( Place, INDEX, Outer,         ( QV_STRING **dest, QV_STRING *src, QV_INT offset, QV_INT count ),            \
            src, offset, count )                                                                                       \
    AT_END( Place, INDEX, Chars,         ( QV_STRING **dest, const QV_CHAR *chs, QV_INT chsLength ), chs, chsLength )  \
    AT_END( Place, INDEX, Cstr,          ( QV_STRING **dest, const char *text, QV_INT length ), text, length )         \
    AT_END( Place, INDEX, Wcstr,         ( QV_STRING **dest, const wchar_t *text, QV_INT length ), text, length )      \
    AT_END( Place, INDEX, Obj,           ( QV_STRING **dest, QV_OBJ *obj ), obj )                                      \
    AT_END( Place, INDEX, FormatArgList, ( QV_STRING **dest, QV_STRING *fmt, va_list *argList ), fmt, argList )        \
    AT_END( Place, INDEX, FormatCstrArgList,                                                                           \
            ( QV_STRING **dest, const char *fmt, QV_INT fmtLength, va_list *argList ), fmt, fmtLength, argList )       \
    AT_END( Place, INDEX, FormatWcstrArgList,                                                                          \
            ( QV_STRING **dest, const wchar_t *fmt, QV_INT fmtLength, va_list *argList ), fmt, fmtLength, argList )    \
    AT_END_VARIADIC( Place, INDEX, Format, ( QV_STRING **dest, QV_STRING *fmt, ... ), fmt, fmt )                       \
    AT_END_VARIADIC( Place, INDEX, FormatCstr,                                                                         \
            ( QV_STRING **dest, const char *fmt, QV_INT fmtLength, ... ), fmtLength, fmt, fmtLength )                  \
    AT_END_VARIADIC( Place, INDEX, FormatWcstr,                                                                        \
            ( QV_STRING **dest, const wchar_t *fmt, QV_INT fmtLength, ... ), fmtLength, fmt, fmtLength )

FORMS_AT_END( Prepend, 0 )
FORMS_AT_END( Append, (*dest)->length )
// clang-format on

void qvStringPrependChar( QV_STRING **dest, QV_CHAR ch )
{
    qvStringPrependChars( dest, &ch, 1 );
}

namespace
{
__attribute__( ( noinline ) ) void appendCharSlowly( QV_STRING **dest, QV_CHAR ch )
{
    qvStringInsertChars( dest, (*dest)->length, &ch, 1 );
}
} // namespace

// The loops that build a text character by character end here. Where there is a free place behind some text that
// nobody else holds, a few instructions do it, without a frame for the call.
void qvStringAppendChar( QV_STRING **dest, QV_CHAR ch )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );

    QV_STRING *qvs = *dest;

    if( __builtin_expect( qv::isShared( qvs ) || qvs->bspace == 0 || qvs->length == 0 || !QV_CHAR_OK( ch ), 0 ) )
        return appendCharSlowly( dest, ch );

    QV_INT length = qvs->length;

    qvs->chars[qvs->fspace + length] = ch;
    qvs->length                      = length + 1;
    qvs->bspace--;
}

/* Delimited ------------------------------------------------------------------------------------------------------ */

namespace
{
// Holds what `*dest` is now if that is one of the texts to add, so that the text is read as it was.
qv::Ref< QV_STRING > heldIfAdded( QV_STRING **dest, QV_STRING *src, QV_STRING *delimiter )
{
    return qv::Ref< QV_STRING >::share( *dest == src || *dest == delimiter ? *dest : nullptr );
}
} // namespace

void qvStringDelimitedAppend( QV_STRING **dest, QV_STRING *src, QV_STRING *delimiter )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );
    QV_CHECK( delimiter );

    qv::Ref< QV_STRING > held = heldIfAdded( dest, src, delimiter );

    if( (*dest)->length > 0 )
        qvStringAppend( dest, delimiter );

    qvStringAppend( dest, src );
}

void qvStringDelimitedPrepend( QV_STRING **dest, QV_STRING *src, QV_STRING *delimiter )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );
    QV_CHECK( delimiter );

    qv::Ref< QV_STRING > held = heldIfAdded( dest, src, delimiter );

    if( (*dest)->length > 0 )
        qvStringPrepend( dest, delimiter );

    qvStringPrepend( dest, src );
}

void qvStringDelimitedAppendCharDelimiter( QV_STRING **dest, QV_STRING *src, QV_CHAR delimiter )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    qv::Ref< QV_STRING > held = heldIfAdded( dest, src, nullptr );

    if( (*dest)->length > 0 )
        qvStringAppendChar( dest, delimiter );

    qvStringAppend( dest, src );
}

void qvStringDelimitedPrependCharDelimiter( QV_STRING **dest, QV_STRING *src, QV_CHAR delimiter )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    QV_CHECK( src );

    qv::Ref< QV_STRING > held = heldIfAdded( dest, src, nullptr );

    if( (*dest)->length > 0 )
        qvStringPrependChar( dest, delimiter );

    qvStringPrepend( dest, src );
}

// Both places for one form of the two texts: what isn't a String yet becomes one for the call.
#define DELIMITED( Form, PARAMETERS, SOURCE, DELIMITER )                                                               \
    void qvStringDelimitedAppend##Form PARAMETERS                                                                      \
    {                                                                                                                  \
        qv::Ref< QV_STRING > source = SOURCE, separator = DELIMITER;                                                   \
        qvStringDelimitedAppend( dest, source, separator );                                                            \
    }                                                                                                                  \
                                                                                                                       \
    void qvStringDelimitedPrepend##Form PARAMETERS                                                                     \
    {                                                                                                                  \
        qv::Ref< QV_STRING > source = SOURCE, separator = DELIMITER;                                                   \
        qvStringDelimitedPrepend( dest, source, separator );                                                           \
    }

// clang-format off
DELIMITED( Cstr, ( QV_STRING **dest, const char *src, QV_INT srcLength, const char *delimiter, QV_INT delimiterLength ),
           asString( src, srcLength ), asString( delimiter, delimiterLength ) )
DELIMITED( CstrSource, ( QV_STRING **dest, const char *src, QV_INT srcLength, QV_STRING *delimiter ),
           asString( src, srcLength ), asString( delimiter ) )
DELIMITED( CstrDelimiter, ( QV_STRING **dest, QV_STRING *src, const char *delimiter, QV_INT delimiterLength ),
           asString( src ), asString( delimiter, delimiterLength ) )
DELIMITED( Wcstr,
           ( QV_STRING **dest, const wchar_t *src, QV_INT srcLength, const wchar_t *delimiter, QV_INT delimiterLength ),
           asString( src, srcLength ), asString( delimiter, delimiterLength ) )
DELIMITED( WcstrSource, ( QV_STRING **dest, const wchar_t *src, QV_INT srcLength, QV_STRING *delimiter ),
           asString( src, srcLength ), asString( delimiter ) )
DELIMITED( WcstrDelimiter, ( QV_STRING **dest, QV_STRING *src, const wchar_t *delimiter, QV_INT delimiterLength ),
           asString( src ), asString( delimiter, delimiterLength ) )
// clang-format on

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
    QV_CHECK( idx <= (*qvs)->length );
    QV_CHECK( QV_CHAR_OK( ch ) );

    if( idx == -1 )
    {
        qvStringPrependChar( qvs, ch );
    }
    else if( idx == (*qvs)->length )
    {
        qvStringAppendChar( qvs, ch );
    }
    else
    {
        qv::makePrivate( qvs, qvStringCreateFrom );
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
    QV_CHECK( count <= (*qvs)->length );

    qvStringDelInner( qvs, (*qvs)->length - count, count );
}

void qvStringDelInner( QV_STRING **qvs, QV_INT offset, QV_INT count )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= (*qvs)->length );

    if( count == 0 )
        return;

    if( count == (*qvs)->length )
    {
        qvStringClear( qvs );
        return;
    }

    qv::makePrivate( qvs, qvStringCreateFrom );
    QV_STRING *own = *qvs;

    if( offset == 0 )
    {
        own->fspace += count;
    }
    else
    {
        QV_CHAR *gap = qv::chars( own ) + offset;
        moveChars( gap, gap + count, own->length - offset - count );
        own->bspace += count;
    }

    own->length -= count;
    qv___StringCompact( own );
}

void qvStringDelOuter( QV_STRING **qvs, QV_INT offset, QV_INT count )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= (*qvs)->length );

    if( count == 0 )
    {
        qvStringClear( qvs );
        return;
    }

    if( count == (*qvs)->length )
        return;

    qv::makePrivate( qvs, qvStringCreateFrom );
    QV_STRING *own = *qvs;
    own->fspace += offset;
    own->bspace += own->length - offset - count;
    own->length = count;
    qv___StringCompact( own );
}

void qvStringTrimLeading( QV_STRING **qvs )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    qvStringDelLeading( qvs, leadingWhiteSpace( *qvs ) );
}

void qvStringTrimTrailing( QV_STRING **qvs )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    qvStringDelTrailing( qvs, trailingWhiteSpace( *qvs ) );
}

void qvStringTrim( QV_STRING **qvs )
{
    qvStringTrimLeading( qvs );
    qvStringTrimTrailing( qvs );
}

namespace
{
// Replaces the text by its mapping; `asciiFirst` is the first of the 26 letters of ASCII that change. Most texts keep
// their length: the new String gets room for that, more by halves if a mapping is longer, and in the end the free
// places of a new one.
template< const uint8_t *blocks, const uint16_t *values, QV_CHAR asciiFirst >
void mapCase( QV_STRING **qvs )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    QV_INT         length = (*qvs)->length;
    const QV_CHAR *from   = qv::chars( *qvs );

    if( length == 0 )
        return;

    QV_STRING *mapped = createWithSpace( length );
    QV_CHAR   *to     = qv::chars( mapped );
    QV_INT     count  = 0;
    QV_INT     i      = 0;

    // What the tables hold: the length in the upper two bits, the place of the mapping below.
    const unsigned ONE    = 1 << 14;
    const unsigned LONGER = 2 << 14;

    const qv::CharVector belowFirst = qv::CharVector {} + static_cast< int32_t >( asciiFirst - 1 );
    const qv::CharVector behindLast = qv::CharVector {} + static_cast< int32_t >( asciiFirst + 26 );

    while( i < length )
    {
        QV_INT stop = length - i < 4 ? length : i + 4;

        // Four at once of ASCII, where the two cases of a letter differ in one bit, or of characters that map to one
        // each, which may be themselves.
        if( stop - i == 4 )
        {
            qv::CharVector four = qv::loadChars( from + i );

            if( !qv::anyBit( four & ~0x7F ) )
            {
                four ^= ( four > belowFirst ) & ( four < behindLast ) & 0x20;
                qv::storeChars( to + count, four );
                count += 4;
                i += 4;
                continue;
            }

            uint16_t found[4];

            for( int k = 0; k < 4; k++ )
                found[k] = qv::unicode::lookUp( blocks, values, from[i + k] );

            if( ( found[0] | found[1] | found[2] | found[3] ) < LONGER )
            {
                for( int k = 0; k < 4; k++ )
                {
                    QV_CHAR other = qv::unicode::caseMappings[found[k] % ONE];
                    to[count + k] = found[k] ? other : from[i + k];
                }

                count += 4;
                i += 4;
                continue;
            }
        }

        for( ; i < stop; i++ )
        {
            qv::unicode::Mapping mapping
                = qv::unicode::caseMapping( qv::unicode::lookUp( blocks, values, from[i] ) );

            if( !mapping.chars )
            {
                to[count++] = from[i];
                continue;
            }

            // Every character that follows needs a place at least.
            if( count + mapping.length + ( length - i - 1 ) > mapped->length )
            {
                qv___StringMakeRoom( mapped, mapped->length, mapped->length / 2 + mapping.length );
                to = qv::chars( mapped );
            }

            for( QV_INT k = 0; k < mapping.length; k++ )
                to[count++] = mapping.chars[k];
        }
    }

    mapped->length = count;
    mapped->bspace = QV_STRING_BSPACE;
    account( mapped );

    qv::assign( qvs, mapped );
}

// A String with the case-folded text.
qv::Ref< QV_STRING > folded( QV_STRING *qvs )
{
    qv::Ref< QV_STRING > result = asString( qvs );
    qvStringToCaseFold( result.at() );

    return result;
}
} // namespace

void qvStringToUpper( QV_STRING **qvs )
{
    mapCase< qv::unicode::upperBlocks, qv::unicode::upper, U'a' >( qvs );
}

void qvStringToLower( QV_STRING **qvs )
{
    mapCase< qv::unicode::lowerBlocks, qv::unicode::lower, U'A' >( qvs );
}

void qvStringToCaseFold( QV_STRING **qvs )
{
    mapCase< qv::unicode::foldBlocks, qv::unicode::fold, U'A' >( qvs );
}

void qvStringSanitize( QV_STRING **qvs )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    if( (*qvs)->length == 0 )
        return;

    qv::makePrivate( qvs, qvStringCreateFrom );
    QV_STRING *own   = *qvs;
    QV_INT     count = qvCharsSanitize( qv::chars( own ), own->length, qv::chars( own ), own->length );
    own->bspace += own->length - count;
    own->length = count;
    qv___StringCompact( own );
}

namespace
{
void normalize( QV_STRING **qvs, QV_INT normalForm )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    qv::assign( qvs, qv::normalize( *qvs, normalForm ) );
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

/* Comparing ------------------------------------------------------------------------------------------------------ */

namespace
{
bool standsAt( QV_STRING *qvs, QV_INT idx, const QV_CHAR *sub, QV_INT subLen )
{
    return idx >= 0 && subLen <= qvs->length - idx && qv::equalChars( qv::chars( qvs ) + idx, sub, subLen );
}
} // namespace

QV_BOOL qvStringEqualsChars( QV_STRING *qvs, const QV_CHAR *chs, QV_INT chsLen )
{
    QV_CHECK( qvs );
    QV_CHECK( chsLen >= 0 );
    QV_CHECK( chs || chsLen == 0 );

    return qvs->length == chsLen && standsAt( qvs, 0, chs, chsLen ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvStringEqualsChar( QV_STRING *qvs, QV_CHAR ch )
{
    QV_CHECK( qvs );
    QV_CHECK( QV_CHAR_OK( ch ) );

    return qvStringEqualsChars( qvs, &ch, 1 );
}

QV_BOOL qvStringEqualsCstr( QV_STRING *qvs, const char *text, QV_INT length )
{
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

// The five forms of a test at `IDX`, the beginning or the end.
#define STANDS( Where, IDX )                                                                                           \
    QV_BOOL qvString##Where##With( QV_STRING *qvs, QV_STRING *sub )                                                    \
    {                                                                                                                  \
        QV_CHECK( qvs );                                                                                               \
        QV_CHECK( sub );                                                                                               \
                                                                                                                       \
        QV_INT subLen = sub->length;                                                                                   \
        return standsAt( qvs, IDX, qv::chars( sub ), subLen ) ? QV_TRUE : QV_FALSE;                                    \
    }                                                                                                                  \
                                                                                                                       \
    QV_BOOL qvString##Where##WithChars( QV_STRING *qvs, const QV_CHAR *sub, QV_INT subLen )                            \
    {                                                                                                                  \
        QV_CHECK( qvs );                                                                                               \
        QV_CHECK( subLen >= 0 );                                                                                       \
        QV_CHECK( sub || subLen == 0 );                                                                                \
        QV_CHECK( qvCharsAllOk( sub, subLen ) );                                                                       \
                                                                                                                       \
        return standsAt( qvs, IDX, sub, subLen ) ? QV_TRUE : QV_FALSE;                                                 \
    }                                                                                                                  \
                                                                                                                       \
    QV_BOOL qvString##Where##WithChar( QV_STRING *qvs, QV_CHAR ch )                                                    \
    {                                                                                                                  \
        QV_CHECK( qvs );                                                                                               \
        QV_CHECK( QV_CHAR_OK( ch ) );                                                                                  \
                                                                                                                       \
        return qvString##Where##WithChars( qvs, &ch, 1 );                                                              \
    }                                                                                                                  \
                                                                                                                       \
    QV_BOOL qvString##Where##WithCstr( QV_STRING *qvs, const char *text, QV_INT length )                               \
    {                                                                                                                  \
        return qvString##Where##With( qvs, asString( text, length ) );                                                 \
    }                                                                                                                  \
                                                                                                                       \
    QV_BOOL qvString##Where##WithWcstr( QV_STRING *qvs, const wchar_t *text, QV_INT length )                           \
    {                                                                                                                  \
        return qvString##Where##With( qvs, asString( text, length ) );                                                 \
    }

STANDS( Begins, 0 )
STANDS( Ends, qvs->length - subLen )

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

    QV_INT found =
        qv::findChars( qv::chars( qvs ) + offset, qvs->length - offset - subLength + 1, sub, subLength );

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
    return qvStringFind( qvs, offset, asString( text, length ) );
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
    return qvStringFindFromRight( qvs, offset, asString( text, length ) );
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
        if( waiting_ == WAITING )
            flush();

        objs_[waiting_++] = createExactCopy( chs, count, &batch_ );
    }

    QV_VECTOR *give()
    {
        flush();
        return vec_.give();
    }

private:
    static const QV_INT WAITING = 32;

    void flush()
    {
        qv___VectorPushNoRetain( vec_.at(), objs_, waiting_ );
        waiting_ = 0;
    }

    qv::ObjBatch         batch_ { qvStringSort() };
    qv::Ref< QV_VECTOR > vec_ { qvVectorCreate() };
    QV_OBJ              *objs_[WAITING];
    QV_INT               waiting_ = 0;
};

// `find` gives the first separator among so many characters, or -1.
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
    return qvStringSplit( qvs, asString( text, length ), maxParts );
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
    QV_INT         length = qvs->length - trailingWhiteSpace( qvs );
    QV_INT         start  = -1; // where the current part begins; -1 while there is none

    for( QV_INT i = leadingWhiteSpace( qvs ); i < length; i++ )
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
    return qvFormatTryDecodeInt( qvs, offset, count, base, value, consumed );
}

QV_BOOL
qvStringScanReal( QV_STRING *qvs, QV_INT offset, QV_INT maxChars, QV_INT base, QV_REAL *value, QV_INT *consumed )
{
    QV_INT count = scanRange( qvs, offset, maxChars );
    return qvFormatTryDecodeReal( qvs, offset, count, base, value, consumed );
}

/* Converting ----------------------------------------------------------------------------------------------------- */

namespace
{
// Encodes twice: first to learn the size, then into a block of just that size.
template< class Unit >
Unit *createEncoded(
    QV_INT ( *convert )( Unit *, QV_INT, const QV_CHAR *, QV_INT, QV_BOOL ), QV_STRING *qvs, QV_BOOL addNull,
    QV_INT *outLength )
{
    if( outLength )
        *outLength = 0;

    QV_CHECK( qvs );

    QV_INT size = convert( nullptr, 0, qv::chars( qvs ), qvs->length, addNull );

    if( size == 0 )
        return nullptr;

    Unit *block = static_cast< Unit * >( qvMemAllocN( size, sizeof( Unit ) ) );
    convert( block, size, qv::chars( qvs ), qvs->length, addNull );

    if( outLength )
        *outLength = size;

    return block;
}
} // namespace

char *qvStringConvertToAscii( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength )
{
    return createEncoded( qvCharsConvertToAscii, qvs, addNull, outLength );
}

char *qvStringConvertToCstr( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength )
{
    return createEncoded( qvCharsConvertToCstr, qvs, addNull, outLength );
}

char *qvStringConvertToUtf8( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength )
{
    if( outLength )
        *outLength = 0;

    QV_CHECK( qvs );

    const QV_CHAR *chs    = qv::chars( qvs );
    QV_INT         length = qvs->length;

    if( length == 0 )
        return createEncoded( qvCharsConvertToUtf8, qvs, addNull, outLength );

    // A block for ASCII first. Only what stands behind the first other character is encoded twice.
    QV_INT null  = addNull ? 1 : 0;
    QV_INT size  = length + null;
    char  *block = static_cast< char * >( qvMemAlloc( size ) );
    QV_INT ascii = qv::encodeLeadingAscii( block, chs, length );

    if( ascii < length )
    {
        QV_INT rest = qvCharsConvertToUtf8( nullptr, 0, chs + ascii, length - ascii, addNull );
        QV_CHECK( QV_INT_ADD_OK( ascii, rest ) );

        if( ascii + rest > size )
        {
            size  = ascii + rest;
            block = static_cast< char * >( qvMemRealloc( block, size ) );
        }
    }

    qvCharsConvertToUtf8( block + ascii, size - ascii, chs + ascii, length - ascii, addNull );

    if( outLength )
        *outLength = size;

    return block;
}

wchar_t *qvStringConvertToWcstr( QV_STRING *qvs, QV_BOOL addNull, QV_INT *outLength )
{
    return createEncoded( qvCharsConvertToWcstr, qvs, addNull, outLength );
}

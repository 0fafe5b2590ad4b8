#include "qv/base/qv_string.h"

#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

QV_STRING *qv___StringEmpty = nullptr;

namespace
{
const QV_INT OVERSIZED = 64; // an end with more free places than this is given back

// Declares the block to the object frame.
void account( QV_STRING *qvs )
{
    qv___ObjDbgSetAllocationSizeN( qvs, qvs->fspace + qvs->bspace + qvs->length, sizeof( QV_CHAR ) );
}

QV_CHAR *allocate( QV_INT count )
{
    return static_cast< QV_CHAR * >( qvMemAllocN( count, sizeof( QV_CHAR ) ) );
}

QV_CHAR *reallocate( QV_CHAR *chars, QV_INT count )
{
    return static_cast< QV_CHAR * >( qvMemReallocN( chars, count, sizeof( QV_CHAR ) ) );
}

void copyChars( QV_CHAR *dest, const QV_CHAR *src, QV_INT count )
{
    qvMemCopyN( dest, src, count, sizeof( QV_CHAR ) );
}

void moveChars( QV_CHAR *dest, const QV_CHAR *src, QV_INT count )
{
    qvMemMoveN( dest, src, count, sizeof( QV_CHAR ) );
}

QV_STRING *createWithoutBlock()
{
    QV_STRING *qvs = qv::create< QV_STRING >( qvStringSort() );
    qvs->length    = 0;
    qvs->fspace    = 0;
    qvs->bspace    = 0;
    qvs->chars     = nullptr;

    return qvs;
}

void freeString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_STRING *qvs = qvStringFrom( thisObj );

    if( qvs->chars )
    {
        qvMemFree( qvs->chars );
        qv___ObjDbgSetAllocationSize( qvs, 0 );
    }
}

QV_INT compare( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_STRING     *a      = qvStringFrom( thisObj );
    QV_STRING     *b      = qvStringFrom( thatObj );
    QV_INT         common = qvIntMin( a->length, b->length );
    const QV_CHAR *aChars = qv::chars( a );
    const QV_CHAR *bChars = qv::chars( b );

    for( QV_INT i = 0; i < common; i++ )
        if( aChars[i] != bChars[i] )
            return aChars[i] < bChars[i] ? -1 : 1;

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

        qvs->chars  = allocate( QV_STRING_FSPACE + QV_STRING_BSPACE + count );
        qvs->length = count;
        qvs->fspace = QV_STRING_FSPACE;
        qvs->bspace = QV_STRING_BSPACE;
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

            qvs->chars  = reallocate( qvs->chars, qvs->fspace + length + count + QV_STRING_BSPACE );
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

    qvs->chars    = reallocate( qvs->chars, length + count + QV_STRING_FSPACE + QV_STRING_BSPACE );
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
        qvMemFree( qvs->chars );
        qvs->chars  = nullptr;
        qvs->fspace = 0;
        qvs->bspace = 0;
        account( qvs );
        return;
    }

    QV_CHECK( QV_INT_ADD_OK( QV_STRING_FSPACE + QV_STRING_BSPACE, qvs->length ) );

    QV_CHAR *block = allocate( qvs->length + QV_STRING_FSPACE + QV_STRING_BSPACE );
    copyChars( block + QV_STRING_FSPACE, qv::chars( qvs ), qvs->length );
    qvMemFree( qvs->chars );
    qvs->chars  = block;
    qvs->fspace = QV_STRING_FSPACE;
    qvs->bspace = QV_STRING_BSPACE;
    account( qvs );
}

/* Creation ------------------------------------------------------------------------------------------------------- */

QV_STRING *qvStringCreate( void )
{
    return qv::retain( qv___StringEmpty );
}

QV_STRING *qvStringCreateFrom( QV_STRING *src )
{
    QV_CHECK( src );
    return qvStringCreateFromInner( src, 0, src->length );
}

QV_STRING *qvStringCreateFromInner( QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( src );

    qv::Ref< QV_STRING > result( createWithoutBlock() );
    qvStringInsertInner( result.at(), 0, src, offset, count );

    return result.give();
}

QV_STRING *qvStringCreateFromCharsUse( QV_CHAR *chars, QV_INT length )
{
    QV_CHECK_AS( length >= 0, "srcLength >= 0" );
    QV_CHECK_AS( length == 0 || chars, "srcLength == 0 || src" );
    QV_CHECK_AS( qvCharsAllOk( chars, length ), "qvCharsAllOk( src, srcLength )" );

    if( length == 0 )
        return qvStringCreate();

    QV_STRING *qvs = createWithoutBlock();
    qvs->chars     = chars;
    qvs->length    = length;
    account( qvs );

    return qvs;
}

QV_STRING *qvStringCreateFromCharsCopy( const QV_CHAR *chars, QV_INT length )
{
    QV_CHECK_AS( length >= 0, "srcLength >= 0" );
    QV_CHECK_AS( length == 0 || chars, "srcLength == 0 || src" );

    if( length == 0 )
        return qvStringCreate();

    QV_CHAR *block = allocate( length );
    copyChars( block, chars, length );

    return qvStringCreateFromCharsUse( block, length );
}

QV_STRING *qvStringCreateFromCstr( const char *text, QV_INT length )
{
    QV_INT count = qvCharsConvertFromCstr( nullptr, 0, text, length );

    if( count == 0 )
        return qvStringCreate();

    QV_CHAR *block = allocate( count );
    qvCharsConvertFromCstr( block, count, text, length );

    return qvStringCreateFromCharsUse( block, count );
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

/* Inserting ------------------------------------------------------------------------------------------------------ */

namespace
{
// What every insertion ends in: the gap in a String of the caller's own, filled.
void insertChars( QV_STRING **dest, QV_INT idx, const QV_CHAR *chs, QV_INT count )
{
    QV_STRING *old = *dest;

    if( !qv::isShared( old ) )
    {
        copyChars( qv___StringMakeRoom( old, idx, count ), chs, count );
        return;
    }

    // A copy with the gap filled in one go.
    QV_STRING *copy = createWithoutBlock();
    QV_CHAR   *to   = qv___StringMakeRoom( copy, 0, old->length + count );
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
    QV_CHECK( qvCharsAllOk( chs, chsLength ) );

    insertChars( qvs, idx, chs, chsLength );
}

void qvStringAppend( QV_STRING **dest, QV_STRING *src )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    qvStringInsert( dest, (*dest)->length, src );
}

void qvStringAppendInner( QV_STRING **dest, QV_STRING *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    qvStringInsertInner( dest, (*dest)->length, src, offset, count );
}

void qvStringAppendChars( QV_STRING **dest, const QV_CHAR *chs, QV_INT chsLength )
{
    QV_CHECK( dest );
    QV_CHECK( *dest );
    qvStringInsertChars( dest, (*dest)->length, chs, chsLength );
}

void qvStringAppendChar( QV_STRING **dest, QV_CHAR ch )
{
    qvStringAppendChars( dest, &ch, 1 );
}

void qvStringAppendCstr( QV_STRING **dest, const char *text, QV_INT length )
{
    qv::Ref< QV_STRING > src( qvStringCreateFromCstr( text, length ) );
    qvStringAppend( dest, src );
}

void qvStringAppendObj( QV_STRING **dest, QV_OBJ *obj )
{
    qv::Ref< QV_STRING > src( qvObjToString( obj ) );
    qvStringAppend( dest, src );
}

/* Deleting ------------------------------------------------------------------------------------------------------- */

void qvStringClear( QV_STRING **qvs )
{
    QV_CHECK( qvs );
    QV_CHECK( *qvs );

    qv::assign( qvs, qvStringCreate() );
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

    if( count == (*qvs)->length )
        return;

    if( count == 0 )
    {
        qvStringClear( qvs );
        return;
    }

    qv::makePrivate( qvs, qvStringCreateFrom );
    QV_STRING *own = *qvs;
    own->fspace += offset;
    own->bspace += own->length - offset - count;
    own->length = count;
    qv___StringCompact( own );
}

#include "qv/base/qv_vector.h"

#include "qv/base/qv_random.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_life_private.h"
#include "qv/runtime/qv_obj_parts_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_mem_private.h"
#include "qv/sys/qv_order_private.h"

#include <algorithm>

QV_VECTOR *qv___VectorEmpty = nullptr;

namespace
{
void copyObjs( QV_OBJ **dest, QV_OBJ *const *src, QV_INT count )
{
    qvMemCopyN( dest, src, count, sizeof( QV_OBJ * ) );
}

void retainObjs( QV_OBJ *const *objs, QV_INT count )
{
    for( QV_INT i = 0; i < count; i++ )
        qv::retain( objs[i] );
}

void releaseObjs( QV_OBJ *const *objs, QV_INT count )
{
    for( QV_INT i = 0; i < count; i++ )
        qv::release( objs[i] );
}

QV_VECTOR *createWithoutBlock()
{
    QV_VECTOR *vec = qv::create< QV_VECTOR >( qvVectorSort() );
    vec->initBlock();

    return vec;
}

void freeVector( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_VECTOR *vec = qvVectorFrom( thisObj );

    // Parts of a text share memory, which they leave together.
    qv::ObjReleases releases;

    for( QV_INT i = 0; i < vec->length; i++ )
        releases.release( qv::objs( vec )[i], qv::endsInShared( qv::objs( vec )[i] ) );

    vec->freeBlock();
}

QV_INT compareVectorsStep( QV_OBJ *thisObj, QV_OBJ *thatObj, QV___COMPARE_WALK *walk )
{
    QV_VECTOR *a      = qvVectorFrom( thisObj );
    QV_VECTOR *b      = qvVectorFrom( thatObj );
    QV_INT     common = std::min( a->length, b->length );

    while( walk->at < common )
    {
        QV_INT i = walk->at++;

        if( QV_INT order = qv::comparePart( walk, qv::objs( a )[i], qv::objs( b )[i] ) )
            return order;
    }

    return qv::order( a->length, b->length );
}

QV_OBJ *vectorToStringStep( QV_OBJ *thisObj, QV___TEXT_WALK *walk )
{
    QV_VECTOR *vec = qvVectorFrom( thisObj );

    if( walk->at == 0 )
        qvStringAppendChar( &walk->text, U'<' );

    while( walk->at < vec->length )
    {
        if( walk->at > 0 )
            qvStringAppendChars( &walk->text, U", ", 2 );

        if( QV_OBJ *part = qv::textPart( walk, qv::objs( vec )[walk->at++] ) )
            return part;
    }

    qvStringAppendChar( &walk->text, U'>' );

    return nullptr;
}
} // namespace

QV___FAMILY_OF_PARTS(
    Vector, QV_VECTOR, freeVector, qv::compareByParts, qv::textByParts, compareVectorsStep, vectorToStringStep )

void qv___VectorStartup( void )
{
    qv___VectorEmpty = createWithoutBlock();
}

void qv___VectorShutdown( void )
{
    qv::drop( qv___VectorEmpty );
}

/* Room ----------------------------------------------------------------------------------------------------------- */

QV_OBJ **qv___VectorMakeRoom( QV_VECTOR *vec, QV_INT atIndex, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( atIndex >= 0 );
    QV_CHECK( atIndex <= vec->length );
    QV_CHECK( count > 0 );

    if( !vec->fits( atIndex, count ) )
    {
        if( atIndex == vec->length )
        {
            QV_CHECK( QV_INT_ADD_OK( vec->fspace + vec->bspace + vec->length, QV_VECTOR_BSPACE ) );
            QV_CHECK( QV_INT_ADD_OK( vec->fspace + vec->bspace + vec->length + QV_VECTOR_BSPACE, count ) );
        }
        else
        {
            QV_CHECK( QV_INT_ADD_OK( QV_VECTOR_FSPACE + QV_VECTOR_BSPACE, vec->length ) );
            QV_CHECK( QV_INT_ADD_OK( QV_VECTOR_FSPACE + QV_VECTOR_BSPACE + vec->length, count ) );
        }
    }

    QV_OBJ **gap = vec->openGap( atIndex, count );
    qvMemSetN( gap, 0, count, sizeof( QV_OBJ * ) );

    return gap;
}

// A snapshot of live objects may hold the Vector for a while although its owner is the only one to use it. So only
// a caller from outside is asked whether it is the only holder.
void qv___VectorCompact( QV_VECTOR *vec )
{
    QV_CHECK( vec );
    QV_CHECK_AS( qv___AtomicLoad32( &vec->retainCount ) == 1, "QV_REF_RETAIN_COUNT( vec ) == 1" );

    vec->compact();
}

namespace
{
// A gap in a Vector of the caller's own.
__attribute__( ( noinline ) ) QV_OBJ **makeRoom( QV_VECTOR **vec, QV_INT idx, QV_INT count )
{
    qv::makePrivate( vec, qvVectorCreateFrom );
    return qv___VectorMakeRoom( *vec, idx, count );
}

// Where the last `count` elements start.
QV_INT trailingOffset( QV_VECTOR *src, QV_INT count )
{
    QV_CHECK( count >= 0 );
    return src->length - count;
}
} // namespace

void qv::insertOwned( QV_VECTOR **vec, QV_INT idx, QV_OBJ *owned )
{
    QV_CHECK( idx >= 0 );
    QV_CHECK_AS( idx <= ( *vec )->length, "idx <= (*vec)->length" );

    *makeRoom( vec, idx, 1 ) = owned;
}

void qv::appendMakingRoom( QV_VECTOR **vec, QV_OBJ *owned )
{
    *makeRoom( vec, ( *vec )->length, 1 ) = owned;
}

void qv::prependOwned( QV_VECTOR **vec, QV_OBJ *owned )
{
    QV_VECTOR *own = *vec;

    if( __builtin_expect( own->fspace > 0 && own->length > 0 && !isShared( own ), 1 ) )
    {
        *own->takeFront( 1 ) = owned;
        return;
    }

    *makeRoom( vec, 0, 1 ) = owned;
}

void qv::setOwned( QV_VECTOR **vec, QV_INT idx, QV_OBJ *owned )
{
    QV_CHECK( idx >= -1 );
    QV_CHECK_AS( idx <= ( *vec )->length, "idx <= (*vec)->length" );

    if( idx == -1 )
        return prependOwned( vec, owned );

    if( idx == ( *vec )->length )
        return appendOwned( vec, owned );

    makePrivate( vec, qvVectorCreateFrom );
    assign( &objs( *vec )[idx], owned );
}

/* Creation ------------------------------------------------------------------------------------------------------- */

QV_VECTOR *qvVectorCreate( void )
{
    return qv::retainOfRun( qv___VectorEmpty );
}

QV_VECTOR *qv::createVector( QV_OBJ *const *objs, QV_INT count )
{
    QV_ASSERT( count >= 0 && count <= QV_VECTOR_BSPACE );

    if( count == 0 )
        return createWithoutBlock();

    QV_INT  slots  = count + QV_VECTOR_BSPACE;
    QV_INT  bytes  = slots * QV_INT( sizeof( QV_OBJ * ) );
    QV_OBJ *object = createQuickly( sizeof( QV_VECTOR ), bytes, qvVectorSort(), 0 );

    if( !object )
        object = createWithRoom( sizeof( QV_VECTOR ), bytes, qvVectorSort() );

    QV_VECTOR *vec = static_cast< QV_VECTOR * >( object );
    vec->initBlock( slots, count, { 0, QV_VECTOR_BSPACE } );
    copyBytes( qv::objs( vec ), objs, static_cast< size_t >( count ) * sizeof( QV_OBJ * ) );

    return vec;
}

QV_VECTOR *qvVectorCreateFrom( QV_VECTOR *src )
{
    QV_CHECK( src );
    return qvVectorCreateFromInner( src, 0, src->length );
}

QV_VECTOR *qvVectorCreateFromLeading( QV_VECTOR *src, QV_INT count )
{
    return qvVectorCreateFromInner( src, 0, count );
}

QV_VECTOR *qvVectorCreateFromTrailing( QV_VECTOR *src, QV_INT count )
{
    QV_CHECK( src );
    return qvVectorCreateFromInner( src, trailingOffset( src, count ), count );
}

QV_VECTOR *qvVectorCreateFromInner( QV_VECTOR *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( src );

    qv::Ref< QV_VECTOR > result( createWithoutBlock() );
    qvVectorInsertInner( result.at(), 0, src, offset, count );

    return result.give();
}

QV_VECTOR *qvVectorCreateFromOuter( QV_VECTOR *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( src );

    qv::Ref< QV_VECTOR > result( createWithoutBlock() );
    qvVectorInsertOuter( result.at(), 0, src, offset, count );

    return result.give();
}

QV_VECTOR *qvVectorCreateFromObj( QV_OBJ *obj )
{
    QV_CHECK( obj );

    QV_VECTOR *result = createWithoutBlock();
    qv::appendOwned( &result, qv::retain( obj ) );

    return result;
}

QV_VECTOR *qvVectorCreateFromObjsUse( QV_OBJ **src, QV_INT count )
{
    QV_CHECK( count >= 0 );
    QV_CHECK( count == 0 || src );

    for( QV_INT i = 0; i < count; i++ )
        QV_CHECK( src[i] );

    if( count == 0 )
        return qvVectorCreate();

    QV_VECTOR *vec = createWithoutBlock();
    vec->adoptBlock( src, count, { 0, 0 } );

    return vec;
}

QV_VECTOR *qvVectorCreateFromObjsCopy( QV_OBJ *const *src, QV_INT count )
{
    QV_CHECK( count >= 0 );
    QV_CHECK( count == 0 || src );

    if( count == 0 )
        return qvVectorCreate();

    QV_OBJ **block = static_cast< QV_OBJ ** >( qvMemAllocN( count, sizeof( QV_OBJ * ) ) );
    copyObjs( block, src, count );

    return qvVectorCreateFromObjsUse( block, count );
}

void qvVectorClear( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );

    qv::assign( vec, qvVectorCreate() );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

QV_INT qvVectorLength( QV_VECTOR *vec )
{
    QV_CHECK( vec );
    return vec->length;
}

QV_OBJ *const *qvVectorBacking( QV_VECTOR *vec )
{
    QV_CHECK( vec );
    return qv::objs( vec );
}

QV_OBJ *qvVectorObjAt( QV_VECTOR *vec, QV_INT idx )
{
    QV_CHECK( vec );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < vec->length );

    return qv::retain( qv::objs( vec )[idx] );
}

QV_SORT *qvVectorSortAt( QV_VECTOR *vec, QV_INT idx )
{
    QV_CHECK( vec );
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx < vec->length );

    return qvObjSort( qv::objs( vec )[idx] );
}

QV_BOOL qvVectorContainsOnly( QV_VECTOR *vec, QV_SORT *sort )
{
    QV_CHECK( vec );
    QV_CHECK( sort );

    for( QV_INT i = 0; i < vec->length; i++ )
        if( qvObjSort( qv::objs( vec )[i] ) != sort )
            return QV_FALSE;

    return QV_TRUE;
}

QV_INT qvVectorIndexOfObj( QV_VECTOR *vec, QV_OBJ *obj, QV_BOOL byCompare )
{
    QV_CHECK( vec );
    QV_CHECK( obj );

    for( QV_INT i = 0; i < vec->length; i++ )
        if( qv::objs( vec )[i] == obj || ( byCompare && qvObjCompare( qv::objs( vec )[i], obj ) == 0 ) )
            return i;

    return -1;
}

QV_BOOL qvVectorHasObj( QV_VECTOR *vec, QV_OBJ *obj, QV_BOOL byCompare )
{
    return qvVectorIndexOfObj( vec, obj, byCompare ) >= 0 ? QV_TRUE : QV_FALSE;
}

/* Inserting ------------------------------------------------------------------------------------------------------ */

void qvVectorInsert( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( src );

    qvVectorInsertInner( vec, idx, src, 0, src->length );
}

void qvVectorInsertLeading( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src, QV_INT count )
{
    qvVectorInsertInner( vec, idx, src, 0, count );
}

void qvVectorInsertTrailing( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( src );

    qvVectorInsertInner( vec, idx, src, trailingOffset( src, count ), count );
}

void qvVectorInsertInner( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( src );
    QV_CHECK( idx >= 0 );
    QV_CHECK_AS( idx <= ( *vec )->length, "idx <= (*vec)->length" );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= src->length );
    QV_CHECK( QV_INT_ADD_OK( idx, count ) );

    if( count == 0 )
        return;

    // Held, a Vector that goes into itself counts as shared and is copied.
    qv::Ref< QV_VECTOR > held = qv::Ref< QV_VECTOR >::share( *vec == src ? src : nullptr );
    QV_OBJ             **gap  = makeRoom( vec, idx, count );
    copyObjs( gap, qv::objs( src ) + offset, count );
    retainObjs( gap, count );
}

void qvVectorInsertOuter( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src, QV_INT offset, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( src );
    QV_CHECK( idx >= 0 );
    QV_CHECK_AS( idx <= ( *vec )->length, "idx <= (*vec)->length" );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= src->length );

    if( count == src->length )
        return;

    qv::Ref< QV_VECTOR > held = qv::Ref< QV_VECTOR >::share( *vec == src ? src : nullptr );
    qvVectorInsertInner( vec, idx, src, offset + count, src->length - offset - count );
    qvVectorInsertInner( vec, idx, src, 0, offset );
}

void qvVectorInsertObjs( QV_VECTOR **vec, QV_INT idx, QV_OBJ *const *objs, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( idx >= 0 );
    QV_CHECK_AS( idx <= ( *vec )->length, "idx <= (*vec)->length" );
    QV_CHECK( count >= 0 );
    QV_CHECK_AS( count == 0 || objs, "count == 0 || src" );

    if( count == 0 )
        return;

    for( QV_INT i = 0; i < count; i++ )
    {
        QV_CHECK_AS( objs[i], "obj" );
        qv::retain( objs[i] );
    }

    // Held, a Vector that is given elements out of its own block is copied.
    qv::Ref< QV_VECTOR > held = qv::Ref< QV_VECTOR >::share( ( *vec )->holds( objs ) ? *vec : nullptr );
    copyObjs( makeRoom( vec, idx, count ), objs, count );
}

void qvVectorInsertObj( QV_VECTOR **vec, QV_INT idx, QV_OBJ *obj )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( obj );

    qv::insertOwned( vec, idx, qv::retain( obj ) );
}

void qvVectorPrependObj( QV_VECTOR **vec, QV_OBJ *obj )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( obj );

    qv::prependOwned( vec, qv::retain( obj ) );
}

void qvVectorAppendObj( QV_VECTOR **vec, QV_OBJ *obj )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( obj );

    qv::appendOwned( vec, qv::retain( obj ) );
}

void qvVectorSetObjAt( QV_VECTOR **vec, QV_INT idx, QV_OBJ *obj )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( obj );

    qv::setOwned( vec, idx, qv::retain( obj ) );
}

void qv___VectorPushNoRetain( QV_VECTOR **vec, QV_OBJ *const *objs, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( count >= 0 );
    QV_CHECK_AS( count == 0 || objs, "count == 0 || src" );

    if( count > 0 )
        copyObjs( makeRoom( vec, ( *vec )->length, count ), objs, count );
}

/* Deleting ------------------------------------------------------------------------------------------------------- */

void qvVectorDelAt( QV_VECTOR **vec, QV_INT idx )
{
    qvVectorDelInner( vec, idx, 1 );
}

void qvVectorDelLeading( QV_VECTOR **vec, QV_INT count )
{
    qvVectorDelInner( vec, 0, count );
}

void qvVectorDelTrailing( QV_VECTOR **vec, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( count >= 0 );
    QV_CHECK_AS( count <= ( *vec )->length, "count <= (*vec)->length" );

    qvVectorDelInner( vec, ( *vec )->length - count, count );
}

void qvVectorDelInner( QV_VECTOR **vec, QV_INT offset, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK_AS( offset + count <= ( *vec )->length, "offset + count <= (*vec)->length" );

    if( count == 0 )
        return;

    if( count == ( *vec )->length )
    {
        qvVectorClear( vec );
        return;
    }

    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_VECTOR *own = *vec;
    releaseObjs( qv::objs( own ) + offset, count );

    if( offset == 0 )
        own->dropFront( count );
    else
        own->dropInside( offset, count );

    own->compact();
}

void qvVectorDelOuter( QV_VECTOR **vec, QV_INT offset, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK_AS( offset + count <= ( *vec )->length, "offset + count <= (*vec)->length" );

    if( count == 0 )
    {
        qvVectorClear( vec );
    }
    else if( count < ( *vec )->length )
    {
        qvVectorDelInner( vec, 0, offset );
        qvVectorDelInner( vec, count, ( *vec )->length - count );
    }
}

/* Stack and queue ------------------------------------------------------------------------------------------------ */

namespace
{
__attribute__( ( noinline ) ) QV_OBJ *popAndCompact( QV_VECTOR **vec )
{
    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_VECTOR *own = *vec;
    QV_OBJ    *obj = qv::objs( own )[own->length - 1];
    own->dropBack( 1 );
    own->compact();

    return obj;
}
} // namespace

void qvVectorPush( QV_VECTOR **vec, QV_OBJ *obj )
{
    qvVectorAppendObj( vec, obj );
}

void qvVectorShift( QV_VECTOR **vec, QV_OBJ *obj )
{
    qvVectorPrependObj( vec, obj );
}

QV_OBJ *qvVectorPop( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK_AS( ( *vec )->length, "(*vec)->length" );
    QV_CHECK_AS( QV_INT_ADD_OK( ( *vec )->bspace, 1 ), "QV_INT_ADD_OK( (*vec)->bspace, 1 )" );

    QV_VECTOR *own = *vec;

    // Another free slot is not too many, and something is left: nothing is given back.
    if( __builtin_expect( own->bspace < qv::VectorRules::MOST && own->fspace <= qv::VectorRules::MOST, 1 )
        && own->length > 1 && !qv::isShared( own ) )
    {
        QV_OBJ *obj = qv::objs( own )[own->length - 1];
        own->dropBack( 1 );
        own->check();
        return obj;
    }

    return popAndCompact( vec );
}

QV_OBJ *qvVectorUnshift( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK_AS( ( *vec )->length, "(*vec)->length" );
    QV_CHECK_AS( QV_INT_ADD_OK( ( *vec )->fspace, 1 ), "QV_INT_ADD_OK( (*vec)->fspace, 1 )" );

    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_VECTOR *own = *vec;
    QV_OBJ    *obj = qv::objs( own )[0];
    own->dropFront( 1 );
    own->compact();

    return obj;
}

/* The whole Vector ----------------------------------------------------------------------------------------------- */

void qvVectorReverse( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );

    if( ( *vec )->length < 2 )
        return;

    qv::makePrivate( vec, qvVectorCreateFrom );
    std::reverse( qv::objs( *vec ), qv::objs( *vec ) + ( *vec )->length );
}

void qvVectorShuffle( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );

    if( ( *vec )->length < 2 )
        return;

    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_OBJ **objs = qv::objs( *vec );
    QV_INT   last = ( *vec )->length - 1;

    // What is drawn goes after what has been drawn; the rest keeps its order.
    for( QV_INT i = 0; i < last; i++ )
    {
        QV_INT  drawn = i + qvRandomNonNegativeIntRange( 0, last - i );
        QV_OBJ *obj   = objs[drawn];
        qvMemMoveN( objs + i + 1, objs + i, drawn - i, sizeof( QV_OBJ * ) );
        objs[i] = obj;
    }
}

void qvVectorStringize( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );

    if( ( *vec )->length == 0 )
        return;

    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_VECTOR *own = *vec;

    for( QV_INT i = 0; i < own->length; i++ )
        qv::assign( &qv::objs( own )[i], qv::obj( qvObjToString( qv::objs( own )[i] ) ) );
}

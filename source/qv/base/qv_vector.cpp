#include "qv/base/qv_vector.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_random.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_parts_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

QV_VECTOR *qv___VectorEmpty = nullptr;

namespace
{
const QV_INT OVERSIZED = 64; // an end with more free slots than this is given back

// Declares the block to the object frame.
void account( QV_VECTOR *vec )
{
    qv___ObjDbgSetAllocationSizeN( vec, vec->fspace + vec->bspace + vec->length, sizeof( QV_OBJ * ) );
}

QV_OBJ **allocate( QV_INT count )
{
    return static_cast< QV_OBJ ** >( qvMemAllocN( count, sizeof( QV_OBJ * ) ) );
}

void copyObjs( QV_OBJ **dest, QV_OBJ *const *src, QV_INT count )
{
    qvMemCopyN( dest, src, count, sizeof( QV_OBJ * ) );
}

void moveObjs( QV_OBJ **dest, QV_OBJ *const *src, QV_INT count )
{
    qvMemMoveN( dest, src, count, sizeof( QV_OBJ * ) );
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
    vec->length    = 0;
    vec->fspace    = 0;
    vec->bspace    = 0;
    vec->objs      = nullptr;
    vec->block     = nullptr;
    vec->blockSize = 0;

    return vec;
}

void freeVector( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_VECTOR *vec = qvVectorFrom( thisObj );

    if( vec->block )
    {
        releaseObjs( qv::objs( vec ), vec->length );
        qvMemFree( vec->block );
        qv___ObjDbgSetAllocationSize( vec, 0 );
    }
}

QV_INT compareStep( QV_OBJ *thisObj, QV_OBJ *thatObj, QV___COMPARE_WALK *walk )
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

    return ( a->length > b->length ) - ( a->length < b->length );
}

QV_OBJ *textStep( QV_OBJ *thisObj, QV___TEXT_WALK *walk )
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
    Vector, QV_VECTOR, freeVector, qv::compareByParts, qv::textByParts, compareStep, textStep )

void qv___VectorStartup( void )
{
    qv___VectorEmpty = createWithoutBlock();
}

void qv___VectorShutdown( void )
{
    qv::drop( qv___VectorEmpty );
}

/* Room ----------------------------------------------------------------------------------------------------------- */

namespace
{
// Opens a gap of `count` slots at `atIndex` and makes the accounted block one with `front` and `back` free slots.
//
// In place where the allocated block has the room, moving the shorter of what stands before and behind the gap. Else
// the block grows an eighth beyond the need: an end that is added to again and again is copied once for every eighth
// that it grows, and one that is taken from once for every third that it shrinks.
QV_OBJ **resize( QV_VECTOR *vec, QV_INT atIndex, QV_INT count, QV_INT front, QV_INT back )
{
    QV_INT   length   = vec->length;
    QV_INT   tail     = length - atIndex;
    QV_INT   need     = front + length + count + back;
    QV_OBJ **first    = qv::objs( vec );
    QV_INT   before   = vec->block ? first - vec->block : 0; // really free in front, and behind
    QV_INT   behind   = vec->blockSize - before - length;
    bool     tooLarge = count == 0 && vec->blockSize > need + need / 2;
    bool     tailUp   = !tooLarge && before >= front && behind >= back + count;
    bool     headDown = !tooLarge && before >= front + count && behind >= back;

    if( tailUp && ( !headDown || tail <= atIndex ) )
    {
        moveObjs( first + atIndex + count, first + atIndex, tail );
    }
    else if( headDown )
    {
        moveObjs( first - count, first, atIndex );
        first -= count;
    }
    else
    {
        QV_INT spare = vec->block && count > 0 ? need / 8 : 0;

        if( tail == 0 && count > 0 && before - front <= need / 8 )
        {
            // At the end the C library may extend the block where it is.
            vec->blockSize = before - front + need + spare;
            vec->block     = static_cast< QV_OBJ ** >(
                qvMemReallocN( vec->block, vec->blockSize, sizeof( QV_OBJ * ) ) );
            first          = vec->block + before;
        }
        else
        {
            QV_OBJ **block = allocate( need + spare );
            QV_OBJ **to    = block + front + ( atIndex == 0 ? spare : tail == 0 ? 0 : spare / 2 );

            copyObjs( to, first, atIndex );
            copyObjs( to + atIndex + count, first + atIndex, tail );
            qvMemFree( vec->block );
            vec->blockSize = need + spare;
            vec->block     = block;
            first          = to;
        }
    }

    vec->length = length + count;
    vec->fspace = front;
    vec->bspace = back;
    vec->objs   = first - front;
    account( vec );

    return first + atIndex;
}
} // namespace

QV_OBJ **qv___VectorMakeRoom( QV_VECTOR *vec, QV_INT atIndex, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( atIndex >= 0 );
    QV_CHECK( atIndex <= vec->length );
    QV_CHECK( count > 0 );

    QV_OBJ **gap;

    if( atIndex == vec->length )
    {
        if( vec->bspace >= count )
        {
            gap = qv::objs( vec ) + atIndex;
            vec->bspace -= count;
            vec->length += count;
        }
        else
        {
            QV_CHECK( QV_INT_ADD_OK( vec->fspace + vec->bspace + vec->length, QV_VECTOR_BSPACE ) );
            QV_CHECK( QV_INT_ADD_OK( vec->fspace + vec->bspace + vec->length + QV_VECTOR_BSPACE, count ) );

            gap = resize( vec, atIndex, count, vec->fspace, vec->bspace + QV_VECTOR_BSPACE );
        }
    }
    else if( atIndex == 0 && vec->fspace >= count )
    {
        vec->fspace -= count;
        vec->length += count;
        gap = qv::objs( vec );
    }
    else
    {
        QV_CHECK( QV_INT_ADD_OK( QV_VECTOR_FSPACE + QV_VECTOR_BSPACE, vec->length ) );
        QV_CHECK( QV_INT_ADD_OK( QV_VECTOR_FSPACE + QV_VECTOR_BSPACE + vec->length, count ) );

        gap = resize( vec, atIndex, count, QV_VECTOR_FSPACE, QV_VECTOR_BSPACE );
    }

    qvMemSetN( gap, 0, count, sizeof( QV_OBJ * ) );

    return gap;
}

namespace
{
// A snapshot of live objects may hold the Vector for a while although its owner is the only one to use it. So only who
// calls from outside is asked whether it is his own.
void compact( QV_VECTOR *vec )
{
    if( vec->length == 0 )
    {
        QV_INT space = vec->fspace + vec->bspace;
        vec->fspace  = space / 2;
        vec->bspace  = space - space / 2;
    }
    else if( vec->fspace > OVERSIZED || vec->bspace > OVERSIZED )
    {
        resize( vec, 0, 0, QV_VECTOR_FSPACE, QV_VECTOR_BSPACE );
    }
}
} // namespace

void qv___VectorCompact( QV_VECTOR *vec )
{
    QV_CHECK( vec );
    QV_CHECK_AS( qv___AtomicLoad32( &vec->retainCount ) == 1, "QV_REF_RETAIN_COUNT( vec ) == 1" );

    compact( vec );
}

namespace
{
// A gap in a Vector of the caller's own.
__attribute__( ( noinline ) ) QV_OBJ **makeRoom( QV_VECTOR **vec, QV_INT idx, QV_INT count )
{
    qv::makePrivate( vec, qvVectorCreateFrom );
    return qv___VectorMakeRoom( *vec, idx, count );
}

// What every insertion of one object ends in. Takes over the reference. An object that is `*vec` itself has made it
// shared by that reference, and so goes in as it was.
void insertOwned( QV_VECTOR **vec, QV_INT idx, QV_OBJ *owned )
{
    QV_CHECK( idx >= 0 );
    QV_CHECK( idx <= (*vec)->length );

    *makeRoom( vec, idx, 1 ) = owned;
}

void appendOwned( QV_VECTOR **vec, QV_OBJ *owned )
{
    QV_VECTOR *own = *vec;

    if( __builtin_expect( own->bspace > 0 && !qv::isShared( own ), 1 ) )
    {
        qv::objs( own )[own->length++] = owned;
        own->bspace--;
        return;
    }

    *makeRoom( vec, own->length, 1 ) = owned;
}

void prependOwned( QV_VECTOR **vec, QV_OBJ *owned )
{
    QV_VECTOR *own = *vec;

    if( __builtin_expect( own->fspace > 0 && own->length > 0 && !qv::isShared( own ), 1 ) )
    {
        own->objs[--own->fspace] = owned;
        own->length++;
        return;
    }

    *makeRoom( vec, 0, 1 ) = owned;
}

void setOwned( QV_VECTOR **vec, QV_INT idx, QV_OBJ *owned )
{
    QV_CHECK( idx >= -1 );
    QV_CHECK( idx <= (*vec)->length );

    if( idx == -1 )
        return prependOwned( vec, owned );

    if( idx == (*vec)->length )
        return appendOwned( vec, owned );

    qv::makePrivate( vec, qvVectorCreateFrom );
    qv::assign( &qv::objs( *vec )[idx], owned );
}

// Where the last `count` elements start.
QV_INT trailingOffset( QV_VECTOR *src, QV_INT count )
{
    QV_CHECK( count >= 0 );
    return src->length - count;
}
} // namespace

/* Creation ------------------------------------------------------------------------------------------------------- */

QV_VECTOR *qvVectorCreate( void )
{
    return qv::retain( qv___VectorEmpty );
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
    appendOwned( &result, qv::retain( obj ) );

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
    vec->length    = count;
    vec->objs      = src;
    vec->block     = src;
    vec->blockSize = count;
    account( vec );

    return vec;
}

QV_VECTOR *qvVectorCreateFromObjsCopy( QV_OBJ *const *src, QV_INT count )
{
    QV_CHECK( count >= 0 );
    QV_CHECK( count == 0 || src );

    if( count == 0 )
        return qvVectorCreate();

    QV_OBJ **block = allocate( count );
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
    QV_CHECK( idx <= (*vec)->length );
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
    QV_CHECK( idx <= (*vec)->length );
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
    QV_CHECK( idx <= (*vec)->length );
    QV_CHECK( count >= 0 );
    QV_CHECK_AS( count == 0 || objs, "count == 0 || src" );

    if( count == 0 )
        return;

    for( QV_INT i = 0; i < count; i++ )
    {
        QV_CHECK_AS( objs[i], "obj" );
        qv::retain( objs[i] );
    }

    copyObjs( makeRoom( vec, idx, count ), objs, count );
}

void qvVectorInsertObj( QV_VECTOR **vec, QV_INT idx, QV_OBJ *obj )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( obj );

    insertOwned( vec, idx, qv::retain( obj ) );
}

void qvVectorPrependObj( QV_VECTOR **vec, QV_OBJ *obj )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( obj );

    prependOwned( vec, qv::retain( obj ) );
}

void qvVectorAppendObj( QV_VECTOR **vec, QV_OBJ *obj )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( obj );

    appendOwned( vec, qv::retain( obj ) );
}

void qvVectorSetObjAt( QV_VECTOR **vec, QV_INT idx, QV_OBJ *obj )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( obj );

    setOwned( vec, idx, qv::retain( obj ) );
}

void qv___VectorPushNoRetain( QV_VECTOR **vec, QV_OBJ *const *objs, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( count >= 0 );
    QV_CHECK_AS( count == 0 || objs, "count == 0 || src" );

    if( count > 0 )
        copyObjs( makeRoom( vec, (*vec)->length, count ), objs, count );
}

// Prepend and Append of everything that has an Insert of its own: at index 0 and at the length.
#define ENDS( Suffix, PARAMETERS, ... )                                                                                \
    void qvVectorPrepend##Suffix( QV_VECTOR **vec, PARAMETERS )                                                        \
    {                                                                                                                  \
        qvVectorInsert##Suffix( vec, 0, __VA_ARGS__ );                                                                 \
    }                                                                                                                  \
                                                                                                                       \
    void qvVectorAppend##Suffix( QV_VECTOR **vec, PARAMETERS )                                                         \
    {                                                                                                                  \
        QV_CHECK( vec );                                                                                               \
        QV_CHECK( *vec );                                                                                              \
        qvVectorInsert##Suffix( vec, (*vec)->length, __VA_ARGS__ );                                                    \
    }

#define WITH_COUNT QV_VECTOR *src, QV_INT count
#define WITH_RANGE QV_VECTOR *src, QV_INT offset, QV_INT count
#define WITH_ARRAY QV_OBJ *const *objs, QV_INT count

ENDS( , QV_VECTOR *src, src )
ENDS( Leading, WITH_COUNT, src, count )
ENDS( Trailing, WITH_COUNT, src, count )
ENDS( Inner, WITH_RANGE, src, offset, count )
ENDS( Outer, WITH_RANGE, src, offset, count )
ENDS( Objs, WITH_ARRAY, objs, count )

// The forms with a value or a text: CREATE makes the object, which the Vector takes over.
#define FORMS( Kind, PARAMETERS, BEFORE, CREATE, AFTER )                                                               \
    void qvVectorInsert##Kind( QV_VECTOR **vec, QV_INT idx PARAMETERS )                                                \
    {                                                                                                                  \
        FORM_BODY( BEFORE, CREATE, AFTER, insertOwned( vec, idx, owned ) )                                             \
    }                                                                                                                  \
                                                                                                                       \
    void qvVectorPrepend##Kind( QV_VECTOR **vec PARAMETERS )                                                           \
    {                                                                                                                  \
        FORM_BODY( BEFORE, CREATE, AFTER, prependOwned( vec, owned ) )                                                 \
    }                                                                                                                  \
                                                                                                                       \
    void qvVectorAppend##Kind( QV_VECTOR **vec PARAMETERS )                                                            \
    {                                                                                                                  \
        FORM_BODY( BEFORE, CREATE, AFTER, appendOwned( vec, owned ) )                                                  \
    }                                                                                                                  \
                                                                                                                       \
    void qvVectorSet##Kind##At( QV_VECTOR **vec, QV_INT idx PARAMETERS )                                               \
    {                                                                                                                  \
        FORM_BODY( BEFORE, CREATE, AFTER, setOwned( vec, idx, owned ) )                                                \
    }

#define FORM_BODY( BEFORE, CREATE, AFTER, PUT )                                                                        \
    QV_CHECK( vec );                                                                                                   \
    QV_CHECK( *vec );                                                                                                  \
    BEFORE                                                                                                             \
    QV_OBJ *owned = qv::obj( CREATE );                                                                                 \
    AFTER                                                                                                              \
    PUT;

// Each begins with the comma behind the parameter in front of it.
#define NO_VALUE
#define BOOL_VALUE    , QV_BOOL value
#define INT_VALUE     , QV_INT value
#define REAL_VALUE    , QV_REAL value
#define STRING_VALUE  , QV_STRING *qvs
#define CSTR_TEXT     , const char *text, QV_INT length
#define WCSTR_TEXT    , const wchar_t *text, QV_INT length
#define STRING_FORMAT , QV_STRING *fmt, ...
#define CSTR_FORMAT   , const char *fmt, QV_INT fmtLength, ...
#define WCSTR_FORMAT  , const wchar_t *fmt, QV_INT fmtLength, ...

#define HELD         QV_CHECK_AS( qvs, "obj" );
#define ARGUMENTS    va_list argList; va_start( argList, fmt );
#define MORE         va_list argList; va_start( argList, fmtLength );
#define ARGUMENT_END va_end( argList );

FORMS( Null, NO_VALUE, , qvBoxedNullCreate(), )
FORMS( Bool, BOOL_VALUE, , qvBoxedBoolCreate( value ), )
FORMS( Int, INT_VALUE, , qvBoxedIntCreate( value ), )
FORMS( Real, REAL_VALUE, , qvBoxedRealCreate( value ), )
FORMS( String, STRING_VALUE, HELD, qv::retain( qvs ), )
FORMS( StringCstr, CSTR_TEXT, , qvStringCreateFromCstr( text, length ), )
FORMS( StringWcstr, WCSTR_TEXT, , qvStringCreateFromWcstr( text, length ), )
FORMS( StringFormat, STRING_FORMAT, ARGUMENTS, qvStringCreateFromFormatArgList( fmt, &argList ), ARGUMENT_END )
FORMS( StringFormatCstr, CSTR_FORMAT, MORE,
       qvStringCreateFromFormatCstrArgList( fmt, fmtLength, &argList ), ARGUMENT_END )
FORMS( StringFormatWcstr, WCSTR_FORMAT, MORE,
       qvStringCreateFromFormatWcstrArgList( fmt, fmtLength, &argList ), ARGUMENT_END )

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
    QV_CHECK( count <= (*vec)->length );

    qvVectorDelInner( vec, (*vec)->length - count, count );
}

void qvVectorDelInner( QV_VECTOR **vec, QV_INT offset, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= (*vec)->length );

    if( count == 0 )
        return;

    if( count == (*vec)->length )
    {
        qvVectorClear( vec );
        return;
    }

    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_VECTOR *own = *vec;
    QV_OBJ   **gap = qv::objs( own ) + offset;
    releaseObjs( gap, count );

    if( offset == 0 )
    {
        QV_CHECK( QV_INT_ADD_OK( (*vec)->fspace, count ) );
        own->fspace += count;
    }
    else
    {
        QV_CHECK( QV_INT_ADD_OK( (*vec)->bspace, count ) );
        moveObjs( gap, gap + count, own->length - offset - count );
        own->bspace += count;
    }

    own->length -= count;
    compact( own );
}

void qvVectorDelOuter( QV_VECTOR **vec, QV_INT offset, QV_INT count )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( offset >= 0 );
    QV_CHECK( count >= 0 );
    QV_CHECK( QV_INT_ADD_OK( offset, count ) );
    QV_CHECK( offset + count <= (*vec)->length );

    if( count == 0 )
    {
        qvVectorClear( vec );
    }
    else if( count < (*vec)->length )
    {
        qvVectorDelInner( vec, 0, offset );
        qvVectorDelInner( vec, count, (*vec)->length - count );
    }
}

/* Stack and queue ------------------------------------------------------------------------------------------------ */

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
    QV_CHECK( (*vec)->length );
    QV_CHECK( QV_INT_ADD_OK( (*vec)->bspace, 1 ) );

    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_VECTOR *own  = *vec;
    QV_OBJ   **slot = qv::objs( own ) + --own->length;
    QV_OBJ    *obj  = *slot;
    *slot           = nullptr;

    // What the compaction looks at, without the call.
    if( __builtin_expect( ++own->bspace > OVERSIZED || own->fspace > OVERSIZED || own->length == 0, 0 ) )
        compact( own );

    return obj;
}

QV_OBJ *qvVectorUnshift( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( (*vec)->length );
    QV_CHECK( QV_INT_ADD_OK( (*vec)->fspace, 1 ) );

    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_VECTOR *own  = *vec;
    QV_OBJ   **slot = own->objs + own->fspace++;
    QV_OBJ    *obj  = *slot;
    *slot           = nullptr;
    own->length--;

    if( __builtin_expect( own->fspace > OVERSIZED || own->bspace > OVERSIZED || own->length == 0, 0 ) )
        compact( own );

    return obj;
}

/* The whole Vector ----------------------------------------------------------------------------------------------- */

void qvVectorReverse( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );

    if( (*vec)->length < 2 )
        return;

    qv::makePrivate( vec, qvVectorCreateFrom );
    std::reverse( qv::objs( *vec ), qv::objs( *vec ) + (*vec)->length );
}

void qvVectorShuffle( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );

    if( (*vec)->length < 2 )
        return;

    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_OBJ **objs = qv::objs( *vec );
    QV_INT   last = (*vec)->length - 1;

    // What is drawn goes behind what has been drawn; the rest keeps its order.
    for( QV_INT i = 0; i < last; i++ )
    {
        QV_INT  drawn = i + qvRandomNonNegativeIntRange( 0, last - i );
        QV_OBJ *obj   = objs[drawn];
        moveObjs( objs + i + 1, objs + i, drawn - i );
        objs[i] = obj;
    }
}

void qvVectorStringize( QV_VECTOR **vec )
{
    QV_CHECK( vec );
    QV_CHECK( *vec );

    if( (*vec)->length == 0 )
        return;

    qv::makePrivate( vec, qvVectorCreateFrom );
    QV_VECTOR *own = *vec;

    for( QV_INT i = 0; i < own->length; i++ )
        qv::assign( &qv::objs( own )[i], qv::obj( qvObjToString( qv::objs( own )[i] ) ) );
}

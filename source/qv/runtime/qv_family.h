/** @file
    What a family is made of: the header that every object starts with, the record that describes a sort, and the
    macro that defines a family in its source. Valid C11 and C++20, since modules define families of their own.

        // qv_point.h
        QV_FAMILY( Point, QV_POINT )
        QV_API QV_POINT *qvPointCreate( QV_INT x, QV_INT y );

        // qv_point.cpp
        struct QV_POINT : QV_OBJ            // in C: struct QV_POINT { QV_OBJ obj; ...
        {
            QV_INT x, y;
        };

        QV___FAMILY( Point, QV_POINT, NULL, NULL, NULL )

        QV_POINT *qvPointCreate( QV_INT x, QV_INT y )
        {
            QV_POINT *point = (QV_POINT *)qv___ObjCreate( sizeof( QV_POINT ), qvPointSort() );
            ...

    A free function releases what the object's fields own; it does not free the object itself. What it releases ends at
    once or, nested more than 32 levels deep, before the outermost release returns; so a free function must not wait for
    the end of another object. A compare function returns -1, 0 or 1, a to-string function a new text. Each may be null:
    then the fields own nothing, objects have the order of their unique numbers, and the text is the sort's name with
    the unique number. */

#ifndef QV_FAMILY_H
#define QV_FAMILY_H

#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_atomic.h"
#include "qv/sys/qv_types.h"

/* Object header -------------------------------------------------------------------------------------------------- */

#define QV___OBJ_TYPE_OBJECT 0 /**< an object of a sort */
#define QV___OBJ_TYPE_SORT   1 /**< a sort record, static */
#define QV___OBJ_TYPE_MODULE 2 /**< a module object, static */

/** A line of an object's log. */
typedef struct QV___OBJ_LOG_ENTRY QV___OBJ_LOG_ENTRY;

/** The header. "Atomic" fields are read and written through qv_atomic.h only, where several threads know the object. */
struct QV_OBJ
{
    uint64_t            type;              /**< QV___OBJ_TYPE_... */
    QV_SORT            *sort;              /**< null in sort records and module objects */
    QV___ATOMIC_INT     unique;            /**< atomic; a number and its run, -1 until it is first needed */
    int32_t             retainCount;       /**< atomic */
    uint16_t            memory;            /**< even: place in shared memory; odd: size of a block; and a bit: below */
    uint16_t            isListed;          /**< the run that created it keeps lists; never changes */
    QV_INT              dbgObjectSize;     /**< the size given to qv___ObjCreate() */
    QV___ATOMIC_INT     dbgAllocationSize; /**< atomic; bytes of storage outside the object */
    QV___OBJ_LOG_ENTRY *logFirst;          /**< null if the log is empty; guarded by the lock of all logs */
    QV___OBJ_LOG_ENTRY *logLast;           /**< likewise */
    QV_OBJ             *odbPrevious;       /**< link in the sort's list of live objects, null if it is in none */
    QV_OBJ             *odbNext;           /**< likewise */
};

/** In `memory`: all that the object owns is in its memory, so that it can end without a call of its free function, which
    would only declare that no storage is left. Set by families of the library when they create an object, cleared by them
    when it gets something else to own. */
#define QV___MEMORY_ENDS_ALONE 0x8000

/* Sort record ---------------------------------------------------------------------------------------------------- */

/** Releases what the fields of an object own. Called once, by the thread that released the last reference. */
typedef void ( *QV___FREE_FUNC )( QV_OBJ *thisObj );

/** The order of two objects of the sort: -1, 0 or 1. Called from any thread. */
typedef QV_INT ( *QV___COMPARE_FUNC )( QV_OBJ *thisObj, QV_OBJ *thatObj );

/** A new text of an object. Called from any thread. */
typedef QV_STRING *( *QV___TO_STRING_FUNC )( QV_OBJ *thisObj );

/** @{ */
/** Steps through the parts of an object, for families of the library that may be nested: see qv_obj_parts_private.h. */
typedef struct QV___COMPARE_WALK QV___COMPARE_WALK;
typedef struct QV___TEXT_WALK    QV___TEXT_WALK;
typedef QV_INT ( *QV___COMPARE_STEP )( QV_OBJ *thisObj, QV_OBJ *thatObj, QV___COMPARE_WALK *walk );
typedef QV_OBJ *( *QV___TEXT_STEP )( QV_OBJ *thisObj, QV___TEXT_WALK *walk );
/** @} */

/** A sort record. The lists are guarded by the lock of the object database. */

#ifdef __cplusplus
struct QV_SORT : QV_OBJ
{
#else
struct QV_SORT
{
    QV_OBJ obj; /**< the header */
#endif
    QV_MODULE          *module;        /**< that the family belongs to, or null */
    const char         *name;          /**< static, zero-terminated */
    QV___FREE_FUNC      freeFunc;      /**< each of the three functions may be null */
    QV___COMPARE_FUNC   compareFunc;   /**< null: the order of the unique numbers */
    QV___TO_STRING_FUNC toStringFunc;  /**< null: the name and the unique number */
    int32_t             created;       /**< atomic; objects that no table of a thread counts: qv_obj_count_private.h */
    int32_t             ended;         /**< likewise */
    QV_OBJ             *odbFirst;      /**< the listed objects, oldest first */
    QV_OBJ             *odbLast;       /**< the newest of them */
    QV_SORT            *sortsPrevious; /**< link in the module's list of sorts with listed objects */
    QV_SORT            *sortsNext;     /**< likewise */
    int32_t             listed;        /**< listed objects and those whose free function runs */
    int32_t             own;           /**< atomic; live objects that the library holds for itself while it runs */
    QV___COMPARE_STEP   compareStep;   /**< null for families that are not made of parts */
    QV___TEXT_STEP      textStep;      /**< likewise */
};

/** The header of a static sort record or module object. */
#define QV___STATIC_HEADER( type ) { type, NULL, -1, 1, 0, 0, 0, 0, NULL, NULL, NULL, NULL }

/** A static sort record. It lasts as long as the process: once it has had an object, the library may read it at any
    time. */
#define QV___STATIC_SORT( module, name, freeFunc, compareFunc, toStringFunc, compareStep, textStep )                   \
    { QV___STATIC_HEADER( QV___OBJ_TYPE_SORT ),                                                                        \
      module,                                                                                                          \
      name,                                                                                                            \
      freeFunc,                                                                                                        \
      compareFunc,                                                                                                     \
      toStringFunc,                                                                                                    \
      0,                                                                                                               \
      0,                                                                                                               \
      NULL,                                                                                                            \
      NULL,                                                                                                            \
      NULL,                                                                                                            \
      NULL,                                                                                                            \
      0,                                                                                                               \
      0,                                                                                                               \
      compareStep,                                                                                                     \
      textStep }

/* Creation and destruction --------------------------------------------------------------------------------------- */

/** A new object of `size` bytes, header included, with one reference, which the caller owns. Its fields after the
    header are undefined. Any thread. A null `sort`, a size that no block can have and exhausted memory end the
    process. */
QV_API QV_OBJ *qv___ObjCreate( QV_INT size, QV_SORT *sort );

/** Ends an object whose count has reached 0. Called by releases only. */
QV_API void qv___ObjFree( QV_OBJ *thisObj );

/** Gives up the reference of a caller that has found a count of 1. Called by releases only. */
QV_API void qv___ObjReleaseLast( QV_OBJ *thisObj );

/** Takes one more reference: what every retain does. The caller holds a reference, or knows of one that lasts. */
static inline void qv___ObjRetain( QV_OBJ *obj )
{
#if defined( QV___ASSERTIONS ) && QV___ASSERTIONS
    QV_CHECK( obj->type <= QV___OBJ_TYPE_MODULE );
    QV_CHECK( obj->type != QV___OBJ_TYPE_OBJECT || qv___AtomicLoad32( &obj->retainCount ) > 0 );
#endif
    qv___AtomicAdd32( &obj->retainCount, 1 );
}

/** Gives one reference up: what every release does. A caller that finds a count of 1 holds the only reference, so that
    the common end of an object needs no locked instruction, unless the object can be found without a reference:
    qv___ObjReleaseLast() distinguishes the two. */
static inline void qv___ObjRelease( QV_OBJ *obj )
{
    if( qv___AtomicLoad32( &obj->retainCount ) == 1 )
        qv___ObjReleaseLast( obj );
    else if( qv___AtomicAdd32( &obj->retainCount, -1 ) == 0 )
        qv___ObjFree( obj );
}

/** @{ */
/** Adds 1 to a count and subtracts 1, returning the new value, and reads it. Any thread. */
QV_API int32_t qv___RetainCountIncrement( int32_t *counter );
QV_API int32_t qv___RetainCountDecrement( int32_t *counter );
QV_API int32_t qv___RetainCountValue( int32_t *counter );
/** @} */

/** The count as it is at some moment of the call, by a locked instruction. */
#define QV___RETAIN_COUNT_VALUE( counter ) qv___AtomicCompareExchange32( &( counter ), 0, 0 )

/** The object's unique number, drawn on first need; -1 for sorts and modules. */
QV_API QV_INT qv___ObjUnique( QV_OBJ *thisObj );

/** @{ */
/** The size given at creation, in bytes, and the size of the storage outside the object that its family has declared
    for it. A family that has such storage declares it whenever it changes, and must be back at 0 when its free function
    returns. Any thread may read both; only the owner of an object may set the second, to `size` or to `count * size`
    bytes. Null, a negative number and an overflow end the process. */
QV_API QV_INT qv___ObjDbgObjectSize( QV_OBJ *thisObj );
QV_API QV_INT qv___ObjDbgAllocationSize( QV_OBJ *thisObj );
QV_API void   qv___ObjDbgSetAllocationSize( QV_OBJ *thisObj, QV_INT size );
QV_API void   qv___ObjDbgSetAllocationSizeN( QV_OBJ *thisObj, QV_INT count, QV_INT size );
/** @} */

/** @{ */
/** Public functions that the macros below need: see qv_obj.h. */
QV_API QV_SORT   *qvObjSort( QV_OBJ *thisObj );
QV_API QV_STRING *qvObjToString( QV_OBJ *thisObj );
QV_API QV_INT     qvObjCompare( QV_OBJ *objA, QV_OBJ *objB );
/** @} */

/** The order of two objects, as qvObjCompare() tells it, without a look at the sort's record where both are of the sort
    that the caller knows. `compareFunc` is that of the sort, or null. */
static inline QV_INT qv___CompareAs( QV_OBJ *objA, QV_OBJ *objB, QV_SORT *sort, QV___COMPARE_FUNC compareFunc )
{
    if( compareFunc && objA && objB && objA != objB && objA->sort == sort && objB->sort == sort )
        return compareFunc( objA, objB );

    return qvObjCompare( objA, objB );
}

/* The family macro ----------------------------------------------------------------------------------------------- */

/** The module object that the sorts of a source belong to. */
#ifndef QV_THIS_MODULE
#define QV_THIS_MODULE qv___module
#endif

/** The library's own module object. */
QV_API_DATA QV_MODULE qv___module;

/** Marks what all sources of the library or module share and none exports. C linkage. */
#ifdef __cplusplus
#define QV___HIDDEN extern "C" __attribute__( ( visibility( "hidden" ) ) )
#else
#define QV___HIDDEN __attribute__( ( visibility( "hidden" ) ) )
#endif

/** Defines what QV_FAMILY() declared: the sort record and the eight functions. Each of the three functions may be NULL.
    Stands once for a family, in its source, outside every namespace. */
#define QV___FAMILY( Name, TYPE, freeFunction, compareFunction, toStringFunction )                                     \
    QV___FAMILY_OF_PARTS( Name, TYPE, freeFunction, compareFunction, toStringFunction, NULL, NULL )

/** The same for a family of the library whose objects may be nested, with its two steps. */
#define QV___FAMILY_OF_PARTS( Name, TYPE, freeFunction, compareFunction, toStringFunction, compareStep, textStep )     \
    QV___HIDDEN QV_SORT qv___sort_##TYPE;                                                                              \
    QV_SORT             qv___sort_##TYPE = QV___STATIC_SORT(                                                           \
        &QV_THIS_MODULE, #TYPE, freeFunction, compareFunction, toStringFunction, compareStep, textStep );  \
                                                                                                                       \
    QV_SORT *qv##Name##Sort( void )                                                                                    \
    {                                                                                                                  \
        return &qv___sort_##TYPE;                                                                                      \
    }                                                                                                                  \
                                                                                                                       \
    QV___STANDARD_FUNCTIONS( Name, TYPE, compareFunction )

/** What the release functions of a source do. A source of the library may have another way to the same. */
#define QV___FAMILY_RELEASE( obj ) qv___ObjRelease( obj )

/** The seven functions beside that of the sort: the second part of QV___FAMILY_OF_PARTS(). */
#define QV___STANDARD_FUNCTIONS( Name, TYPE, compareFunction )                                                         \
    void qv##Name##Retain( TYPE *obj )                                                                                 \
    {                                                                                                                  \
        if( !obj )                                                                                                     \
            qv___Abort( "stdfunc retain", QV___SOURCE, __LINE__, "obj" );                                              \
        qv___ObjRetain( (QV_OBJ *)obj );                                                                               \
    }                                                                                                                  \
                                                                                                                       \
    void qv##Name##Release( TYPE *obj )                                                                                \
    {                                                                                                                  \
        if( !obj )                                                                                                     \
            qv___Abort( "stdfunc release", QV___SOURCE, __LINE__, "obj" );                                             \
        QV___FAMILY_RELEASE( (QV_OBJ *)obj );                                                                          \
    }                                                                                                                  \
                                                                                                                       \
    QV_OBJ *qv##Name##Obj( TYPE *obj )                                                                                 \
    {                                                                                                                  \
        return (QV_OBJ *)obj;                                                                                          \
    }                                                                                                                  \
                                                                                                                       \
    TYPE *qv##Name##From( QV_OBJ *obj )                                                                                \
    {                                                                                                                  \
        if( obj && obj->sort != &qv___sort_##TYPE && qvObjSort( obj ) != &qv___sort_##TYPE )                           \
            qv___Abort( "stdfunc from", QV___SOURCE, __LINE__, "!obj || qvObjSort(obj)==&qv___sort_" #TYPE );          \
        return (TYPE *)obj;                                                                                            \
    }                                                                                                                  \
                                                                                                                       \
    QV_STRING *qv##Name##ToString( TYPE *obj )                                                                         \
    {                                                                                                                  \
        if( !obj )                                                                                                     \
            qv___Abort( "stdfunc tostring", QV___SOURCE, __LINE__, "obj" );                                            \
        return qvObjToString( (QV_OBJ *)obj );                                                                         \
    }                                                                                                                  \
                                                                                                                       \
    QV_INT qv##Name##Compare( TYPE *objA, TYPE *objB )                                                                 \
    {                                                                                                                  \
        if( !objA )                                                                                                    \
            qv___Abort( "stdfunc compare a", QV___SOURCE, __LINE__, "objA" );                                          \
        if( !objB )                                                                                                    \
            qv___Abort( "stdfunc compare b", QV___SOURCE, __LINE__, "objB" );                                          \
        return qv___CompareAs( (QV_OBJ *)objA, (QV_OBJ *)objB, &qv___sort_##TYPE, compareFunction );                   \
    }                                                                                                                  \
                                                                                                                       \
    QV_BOOL qv##Name##Equals( TYPE *objA, TYPE *objB )                                                                 \
    {                                                                                                                  \
        return qv___CompareAs( (QV_OBJ *)objA, (QV_OBJ *)objB, &qv___sort_##TYPE, compareFunction ) == 0 ? QV_TRUE     \
                                                                                                         : QV_FALSE;   \
    }

#endif

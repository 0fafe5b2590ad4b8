/** @file
    Vector: a sequence of objects of any sort.

        QV_VECTOR *vec = qvVectorCreate();
        qvVectorAppendStringCstr( &vec, "port", -1 );
        qvVectorAppendInt( &vec, 8080 );
        qvVectorPrependBool( &vec, QV_TRUE );       // <true, port, 8080>
        QV_OBJ *last = qvVectorPop( &vec );         // 8080; ours now
        qvVectorPush( &vec, last );                 // the vector takes a reference of its own
        qvObjRelease( last );
        qvVectorDelLeading( &vec, 1 );              // <port, 8080>
        qvVectorRelease( vec );

    Elements. Each holds one reference of its own; none is null. A missing value is a boxed null. Results that are
    objects belong to the caller, arguments are borrowed, unless a comment says otherwise.

    Value and copy. A Vector that somebody else holds is never changed: a mutator takes the address of the caller's
    reference and, where the Vector is shared, replaces it by a private copy first. So retaining is copying, and the
    copy is made when it is needed, once: it costs one retain for each element. A Vector may be put into itself; what
    goes in is the Vector as it was.

    Ranges. Indexes and counts count from 0. Leading is the first `count` elements, Trailing the last, Inner the
    `count` from `offset`, Outer everything but those.

    Costs. Adding and removing at either end cost what is added or removed: the elements move as a whole when the memory
    at that end is used up, each time by a constant part of their number, so that this is little in the long run,
    whichever ends take turns. Inserting inside moves the shorter side, or all elements; deleting inside what
    follows. Reading an element costs one retain.

    Memory. A block grows by 32 free slots at the end, and has 32 at both ends when a gap anywhere else needs a larger
    one. An end with more than 64 free slots makes the Vector give memory back, except that popping the last element
    leaves the block. That is what is declared; at most twice as much is allocated. What free slots hold has no meaning.

    Threads. Any thread may read a Vector, also one that others hold. A variable that mutators work on belongs to one
    thread at a time.

    Null as a Vector, as `*vec` or as an object, and an index or a range outside the Vector, end the process. */

#ifndef QV_VECTOR_H
#define QV_VECTOR_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Vector, QV_VECTOR )

/** The order of two objects, which are lent for the call: negative if the first one belongs before the second, positive
    if it belongs after it, else 0. `data` is the caller's. Runs in the thread of the caller. */
typedef QV_INT ( *QV_VECTOR_COMPARE_FUNC )( QV_OBJ *thisObj, QV_OBJ *thatObj, void *data );

/* Creation ------------------------------------------------------------------------------------------------------- */

/** The empty Vector. Constant time: there is one, which everybody shares. */
QV_API QV_VECTOR *qvVectorCreate( void );

/** @{ */
/** A new Vector with the elements of `src` or with a part of them. */
QV_API QV_VECTOR *qvVectorCreateFrom( QV_VECTOR *src );
QV_API QV_VECTOR *qvVectorCreateFromLeading( QV_VECTOR *src, QV_INT count );
QV_API QV_VECTOR *qvVectorCreateFromTrailing( QV_VECTOR *src, QV_INT count );
QV_API QV_VECTOR *qvVectorCreateFromInner( QV_VECTOR *src, QV_INT offset, QV_INT count );
QV_API QV_VECTOR *qvVectorCreateFromOuter( QV_VECTOR *src, QV_INT offset, QV_INT count );
/** @} */

/** A new Vector of one element. */
QV_API QV_VECTOR *qvVectorCreateFromObj( QV_OBJ *obj );

/** A new Vector that takes over `src`, a block from qvMemAlloc(), and the references in it. With a count of 0 the
    block stays the caller's. */
QV_API QV_VECTOR *qvVectorCreateFromObjsUse( QV_OBJ **src, QV_INT count );

/** A new Vector with a copy of the array, which takes over the references in it. */
QV_API QV_VECTOR *qvVectorCreateFromObjsCopy( QV_OBJ *const *src, QV_INT count );

/** Makes `*vec` the empty Vector. */
QV_API void qvVectorClear( QV_VECTOR **vec );

/* Reading -------------------------------------------------------------------------------------------------------- */

/** How many elements there are. */
QV_API QV_INT qvVectorLength( QV_VECTOR *vec );

/** The first element, valid until the Vector is changed or released; the references stay the Vector's. May be null
    for an empty Vector. */
QV_API QV_OBJ *const *qvVectorBacking( QV_VECTOR *vec );

/** The element at an index. */
QV_API QV_OBJ *qvVectorObjAt( QV_VECTOR *vec, QV_INT idx );

/** The sort of the element at an index, borrowed. */
QV_API QV_SORT *qvVectorSortAt( QV_VECTOR *vec, QV_INT idx );

/** True when every element has that sort; an empty Vector's have. */
QV_API QV_BOOL qvVectorContainsOnly( QV_VECTOR *vec, QV_SORT *sort );

/** @{ */
/** The first index at which `obj` itself stands, or with `byCompare` an object that compares equal to it; -1 when
    there is none. Has: whether there is one. Costs a walk through the elements. */
QV_API QV_INT  qvVectorIndexOfObj( QV_VECTOR *vec, QV_OBJ *obj, QV_BOOL byCompare );
QV_API QV_BOOL qvVectorHasObj( QV_VECTOR *vec, QV_OBJ *obj, QV_BOOL byCompare );
/** @} */

/* Inserting ------------------------------------------------------------------------------------------------------ */

/** @{ */
/** Inserts before the element at `idx`, or at the end where `idx` is the length.

    What goes in: the elements of another Vector or a part of them; an array, of which each element is retained and
    which may lie in the Vector's own block; an object, which is retained, or with Use one whose reference the caller
    gives up, so that nothing is counted; a boxed value; a String, or a new one of decoded or
    formatted text. The length of a text is in bytes for a Cstr, which is UTF-8, and in units for a Wcstr; -1 means
    that it ends at its terminator. qv_format.h tells the language of formats. */
QV_API void qvVectorInsert( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src );
QV_API void qvVectorInsertLeading( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src, QV_INT count );
QV_API void qvVectorInsertTrailing( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src, QV_INT count );
QV_API void qvVectorInsertInner( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src, QV_INT offset, QV_INT count );
QV_API void qvVectorInsertOuter( QV_VECTOR **vec, QV_INT idx, QV_VECTOR *src, QV_INT offset, QV_INT count );
QV_API void qvVectorInsertObjs( QV_VECTOR **vec, QV_INT idx, QV_OBJ *const *objs, QV_INT count );
QV_API void qvVectorInsertObj( QV_VECTOR **vec, QV_INT idx, QV_OBJ *obj );
QV_API void qvVectorInsertObjUse( QV_VECTOR **vec, QV_INT idx, QV_OBJ *obj );
QV_API void qvVectorInsertNull( QV_VECTOR **vec, QV_INT idx );
QV_API void qvVectorInsertBool( QV_VECTOR **vec, QV_INT idx, QV_BOOL value );
QV_API void qvVectorInsertInt( QV_VECTOR **vec, QV_INT idx, QV_INT value );
QV_API void qvVectorInsertReal( QV_VECTOR **vec, QV_INT idx, QV_REAL value );
QV_API void qvVectorInsertString( QV_VECTOR **vec, QV_INT idx, QV_STRING *qvs );
QV_API void qvVectorInsertStringCstr( QV_VECTOR **vec, QV_INT idx, const char *text, QV_INT length );
QV_API void qvVectorInsertStringWcstr( QV_VECTOR **vec, QV_INT idx, const wchar_t *text, QV_INT length );
QV_API void qvVectorInsertStringFormat( QV_VECTOR **vec, QV_INT idx, QV_STRING *fmt, ... );
QV_API void qvVectorInsertStringFormatCstr( QV_VECTOR **vec, QV_INT idx, const char *fmt, QV_INT fmtLength, ... );
QV_API void qvVectorInsertStringFormatWcstr( QV_VECTOR **vec, QV_INT idx, const wchar_t *fmt, QV_INT fmtLength, ... );
/** @} */

/** @{ */
/** Inserts at the start what qvVectorInsert...() inserts at an index. */
QV_API void qvVectorPrepend( QV_VECTOR **vec, QV_VECTOR *src );
QV_API void qvVectorPrependLeading( QV_VECTOR **vec, QV_VECTOR *src, QV_INT count );
QV_API void qvVectorPrependTrailing( QV_VECTOR **vec, QV_VECTOR *src, QV_INT count );
QV_API void qvVectorPrependInner( QV_VECTOR **vec, QV_VECTOR *src, QV_INT offset, QV_INT count );
QV_API void qvVectorPrependOuter( QV_VECTOR **vec, QV_VECTOR *src, QV_INT offset, QV_INT count );
QV_API void qvVectorPrependObjs( QV_VECTOR **vec, QV_OBJ *const *objs, QV_INT count );
QV_API void qvVectorPrependObj( QV_VECTOR **vec, QV_OBJ *obj );
QV_API void qvVectorPrependObjUse( QV_VECTOR **vec, QV_OBJ *obj );
QV_API void qvVectorPrependNull( QV_VECTOR **vec );
QV_API void qvVectorPrependBool( QV_VECTOR **vec, QV_BOOL value );
QV_API void qvVectorPrependInt( QV_VECTOR **vec, QV_INT value );
QV_API void qvVectorPrependReal( QV_VECTOR **vec, QV_REAL value );
QV_API void qvVectorPrependString( QV_VECTOR **vec, QV_STRING *qvs );
QV_API void qvVectorPrependStringCstr( QV_VECTOR **vec, const char *text, QV_INT length );
QV_API void qvVectorPrependStringWcstr( QV_VECTOR **vec, const wchar_t *text, QV_INT length );
QV_API void qvVectorPrependStringFormat( QV_VECTOR **vec, QV_STRING *fmt, ... );
QV_API void qvVectorPrependStringFormatCstr( QV_VECTOR **vec, const char *fmt, QV_INT fmtLength, ... );
QV_API void qvVectorPrependStringFormatWcstr( QV_VECTOR **vec, const wchar_t *fmt, QV_INT fmtLength, ... );
/** @} */

/** @{ */
/** Inserts at the end what qvVectorInsert...() inserts at an index. */
QV_API void qvVectorAppend( QV_VECTOR **vec, QV_VECTOR *src );
QV_API void qvVectorAppendLeading( QV_VECTOR **vec, QV_VECTOR *src, QV_INT count );
QV_API void qvVectorAppendTrailing( QV_VECTOR **vec, QV_VECTOR *src, QV_INT count );
QV_API void qvVectorAppendInner( QV_VECTOR **vec, QV_VECTOR *src, QV_INT offset, QV_INT count );
QV_API void qvVectorAppendOuter( QV_VECTOR **vec, QV_VECTOR *src, QV_INT offset, QV_INT count );
QV_API void qvVectorAppendObjs( QV_VECTOR **vec, QV_OBJ *const *objs, QV_INT count );
QV_API void qvVectorAppendObj( QV_VECTOR **vec, QV_OBJ *obj );
QV_API void qvVectorAppendObjUse( QV_VECTOR **vec, QV_OBJ *obj );
QV_API void qvVectorAppendNull( QV_VECTOR **vec );
QV_API void qvVectorAppendBool( QV_VECTOR **vec, QV_BOOL value );
QV_API void qvVectorAppendInt( QV_VECTOR **vec, QV_INT value );
QV_API void qvVectorAppendReal( QV_VECTOR **vec, QV_REAL value );
QV_API void qvVectorAppendString( QV_VECTOR **vec, QV_STRING *qvs );
QV_API void qvVectorAppendStringCstr( QV_VECTOR **vec, const char *text, QV_INT length );
QV_API void qvVectorAppendStringWcstr( QV_VECTOR **vec, const wchar_t *text, QV_INT length );
QV_API void qvVectorAppendStringFormat( QV_VECTOR **vec, QV_STRING *fmt, ... );
QV_API void qvVectorAppendStringFormatCstr( QV_VECTOR **vec, const char *fmt, QV_INT fmtLength, ... );
QV_API void qvVectorAppendStringFormatWcstr( QV_VECTOR **vec, const wchar_t *fmt, QV_INT fmtLength, ... );
/** @} */

/* Replacing ------------------------------------------------------------------------------------------------------ */

/** @{ */
/** Replaces the element at `idx` by an object or by what a value or a text becomes, as above; the old one is released.
    An index of -1 prepends, one that is the length appends. */
QV_API void qvVectorSetObjAt( QV_VECTOR **vec, QV_INT idx, QV_OBJ *obj );
QV_API void qvVectorSetObjUseAt( QV_VECTOR **vec, QV_INT idx, QV_OBJ *obj );
QV_API void qvVectorSetNullAt( QV_VECTOR **vec, QV_INT idx );
QV_API void qvVectorSetBoolAt( QV_VECTOR **vec, QV_INT idx, QV_BOOL value );
QV_API void qvVectorSetIntAt( QV_VECTOR **vec, QV_INT idx, QV_INT value );
QV_API void qvVectorSetRealAt( QV_VECTOR **vec, QV_INT idx, QV_REAL value );
QV_API void qvVectorSetStringAt( QV_VECTOR **vec, QV_INT idx, QV_STRING *qvs );
QV_API void qvVectorSetStringCstrAt( QV_VECTOR **vec, QV_INT idx, const char *text, QV_INT length );
QV_API void qvVectorSetStringWcstrAt( QV_VECTOR **vec, QV_INT idx, const wchar_t *text, QV_INT length );
QV_API void qvVectorSetStringFormatAt( QV_VECTOR **vec, QV_INT idx, QV_STRING *fmt, ... );
QV_API void qvVectorSetStringFormatCstrAt( QV_VECTOR **vec, QV_INT idx, const char *fmt, QV_INT fmtLength, ... );
QV_API void qvVectorSetStringFormatWcstrAt( QV_VECTOR **vec, QV_INT idx, const wchar_t *fmt, QV_INT fmtLength, ... );
/** @} */

/* Deleting ------------------------------------------------------------------------------------------------------- */

/** @{ */
/** Deletes one element or the range, or with Outer everything but the range. */
QV_API void qvVectorDelAt( QV_VECTOR **vec, QV_INT idx );
QV_API void qvVectorDelLeading( QV_VECTOR **vec, QV_INT count );
QV_API void qvVectorDelTrailing( QV_VECTOR **vec, QV_INT count );
QV_API void qvVectorDelInner( QV_VECTOR **vec, QV_INT offset, QV_INT count );
QV_API void qvVectorDelOuter( QV_VECTOR **vec, QV_INT offset, QV_INT count );
/** @} */

/* Stack and queue ------------------------------------------------------------------------------------------------ */

/** @{ */
/** Push puts an object at the end, Shift at the start. What takes the caller's reference over in their place is
    qvVectorAppendObjUse() and qvVectorPrependObjUse(). */
QV_API void qvVectorPush( QV_VECTOR **vec, QV_OBJ *obj );
QV_API void qvVectorShift( QV_VECTOR **vec, QV_OBJ *obj );
/** @} */

/** @{ */
/** Pop takes the last element off, Unshift the first. The caller gets the Vector's reference. An empty Vector ends
    the process. */
QV_API QV_OBJ *qvVectorPop( QV_VECTOR **vec );
QV_API QV_OBJ *qvVectorUnshift( QV_VECTOR **vec );
/** @} */

/* Order ----------------------------------------------------------------------------------------------------------

       qvVectorOrder( &names );
       QV_BOOL found;
       QV_INT  idx = qvVectorSearch( names, name, &found );
       if( !found )
           qvVectorInsertObj( &names, idx, name );

   (qvVectorSort() is something else: the sort that Vectors have.) Objects are compared by qvObjCompare() or by a function
   of the caller's. A compare function that uses this same variable finds the Vector as it was; what it makes of it is
   given up when the call returns. A function that contradicts itself leaves the objects in some order, all of them.
   Null as a function ends the process. */

/** @{ */
/** Puts the elements in ascending order, or with Inner those of a range; equal ones stay as they follow each other. A
    shared Vector that is in order stays shared.

    Costs n log n comparisons at most, and few more than n where the elements are in order, in reverse order, or in a
    few such parts one after the other. References change places without being counted, unless the Vector is shared.
    Takes up to 24 bytes for each of them, for the time of the call. */
QV_API void qvVectorOrder( QV_VECTOR **vec );
QV_API void qvVectorOrderBy( QV_VECTOR **vec, QV_VECTOR_COMPARE_FUNC compare, void *data );
QV_API void qvVectorOrderInner( QV_VECTOR **vec, QV_INT offset, QV_INT count );
QV_API void qvVectorOrderInnerBy(
    QV_VECTOR **vec, QV_INT offset, QV_INT count, QV_VECTOR_COMPARE_FUNC compare, void *data );
/** @} */

/** @{ */
/** True when no element belongs before the one that it follows. Costs a comparison for each element at most. */
QV_API QV_BOOL qvVectorIsOrdered( QV_VECTOR *vec );
QV_API QV_BOOL qvVectorIsOrderedBy( QV_VECTOR *vec, QV_VECTOR_COMPARE_FUNC compare, void *data );
/** @} */

/** @{ */
/** The first index in an ordered Vector whose element does not belong before `obj`: where `obj` can be inserted, up to
    the length. `*found`, unless `found` is null, tells whether the element there is equal to it. The function gets an
    element and `obj`, in this order, so that `obj` need not be of their sort. Costs the logarithm of the length. What a
    Vector that is not in order gives has no meaning. */
QV_API QV_INT qvVectorSearch( QV_VECTOR *vec, QV_OBJ *obj, QV_BOOL *found );
QV_API QV_INT qvVectorSearchBy(
    QV_VECTOR *vec, QV_OBJ *obj, QV_VECTOR_COMPARE_FUNC compare, void *data, QV_BOOL *found );
/** @} */

/* The whole Vector ----------------------------------------------------------------------------------------------- */

/** Puts the elements in the opposite order. */
QV_API void qvVectorReverse( QV_VECTOR **vec );

/** Puts the elements in a random order, by qv_random.h. The time grows with the square of the length. */
QV_API void qvVectorShuffle( QV_VECTOR **vec );

/** Replaces each element by its text. */
QV_API void qvVectorStringize( QV_VECTOR **vec );

#endif

/** @file
    Dict: a map from objects to objects, kept in the order of the keys.

        QV_DICT *dict = qvDictCreate();
        QV_OBJ  *port = qvBoxedIntObj( qvBoxedIntCreate( 8080 ) );
        qvDictSetStringKeyCstr( &dict, "port", -1, port );      // {port=8080}
        qvDictSetIntKey( &dict, 7, port );                      // {7=8080, port=8080}
        qvObjRelease( port );
        QV_OBJ *found = qvDictStringKeyCstr( dict, "port", -1 );
        if( found )
            qvObjRelease( found );
        qvDictDelIntKey( &dict, 7 );                            // {port=8080}
        qvDictRelease( dict );

    Entries. A key and a value, each an object with a reference of the Dict's own, neither null. The keys ascend in
    the order of qvObjCompare(): by sort, and within a sort as its family compares. Keys that compare equal are one
    key. Any object can be a key, but its order must not change while it is in a Dict. Walking the indexes from 0
    meets the entries in the order of their keys. Results that are objects belong to the caller; arguments are
    borrowed.

    Value and copy. A Dict that somebody else holds is never changed: a mutator takes the address of the caller's
    reference and, where the Dict is shared, replaces it by a private copy first. So retaining is copying, and the
    copy is made when it is needed, once: it costs two retains for each entry. A Dict may be a value in itself; what
    goes in is the Dict as it was.

    Costs. A search compares the two ends first and then halves the rest: two comparisons for a key at or beyond an
    end, else a number of comparisons that grows with the logarithm of the length. Comparing Strings or boxed
    integers with their like is fast, other keys go through their family's compare function. Entering and deleting
    move some hundreds of entries at most, whatever the length and the order, and cost the logarithm besides; at
    either end they move none. Reading by index costs the logarithm too, and one retain; qvDictBacking() reads many
    entries without any. An operation on sets costs a
    search for each entry of the smaller Dict, or a walk through both where they are of like length; and a copy where
    the one that changes is shared. Up to 1,024 entries a Dict is one block, which grows by a half, unless keys are
    entered more than 64 entries from both ends, where it is divided; what is declared for it grows by 32 entries at a
    time and shrinks when more than 64 are free.

    Threads. Any thread may read a Dict, also one that others hold; compare functions run in the thread that searches.
    A variable that mutators work on belongs to one thread at a time. Compare and free functions that use this same
    variable meanwhile find the Dict as it was, or as it has become; what they make of it while keys are compared is
    replaced by the result of the call.

    Null as a Dict, as `*dict`, as a key or as a value, and an index outside the Dict, end the process. A key that is
    absent is no failure: reading returns null, -1 or false, deleting does nothing. */

#ifndef QV_DICT_H
#define QV_DICT_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Dict, QV_DICT )

/** Changes a value: `*value` is a reference that the function owns until it returns, null where there is no entry. It may
    replace it, or release it and leave null there. `data` is the caller's. Runs in the thread of the caller. */
typedef void ( *QV_DICT_UPDATE_FUNC )( QV_OBJ **value, void *data );

/* Creation ------------------------------------------------------------------------------------------------------- */

/** The empty Dict. Constant time: there is one, which everybody shares. */
QV_API QV_DICT *qvDictCreate( void );

/** A new Dict with the entries of `src`. */
QV_API QV_DICT *qvDictCreateFrom( QV_DICT *src );

/** A new Dict of keys and values that stand at the same indexes of two Vectors of one length. Of equal keys the one at
    the lowest index counts. */
QV_API QV_DICT *qvDictCreateWithKeysAndValues( QV_VECTOR *keysVector, QV_VECTOR *valuesVector );

/** Makes `*dict` the empty Dict. */
QV_API void qvDictClear( QV_DICT **dict );

/* By index ------------------------------------------------------------------------------------------------------- */

/** How many entries there are. */
QV_API QV_INT qvDictLength( QV_DICT *dict );

/** @{ */
/** The key, or the value, at an index. */
QV_API QV_OBJ *qvDictKeyAt( QV_DICT *dict, QV_INT idx );
QV_API QV_OBJ *qvDictValueAt( QV_DICT *dict, QV_INT idx );
/** @} */

/** An entry as a Dict keeps it. */
typedef struct QV_DICT_ENTRY
{
    QV_OBJ  *key;         /**< never null */
    QV_OBJ  *value;       /**< never null */
    uint64_t reserved[2]; /**< the Dict's own */
} QV_DICT_ENTRY;

/** Entries from an index on, which may be the length: `*count` of them in a row, at least one unless there are none. They
    are valid until the Dict is changed or released, and the references stay the Dict's. All of them, without taking and
    giving up a reference for each:

        QV_INT count;
        for( QV_INT i = 0; i < qvDictLength( dict ); i += count )
        {
            const QV_DICT_ENTRY *entries = qvDictBacking( dict, i, &count );
            for( QV_INT k = 0; k < count; k++ )
                use( entries[k].key, entries[k].value );
        }

    Costs the logarithm of the length. A Dict that never had more than 129 entries is one row, and so is one of up to
    1,024 whose keys were entered at its ends; rows of others are of some tens to hundreds. */
QV_API const QV_DICT_ENTRY *qvDictBacking( QV_DICT *dict, QV_INT idx, QV_INT *count );

/** Replaces the value at an index and keeps the key. */
QV_API void qvDictSetValueAt( QV_DICT **dict, QV_INT idx, QV_OBJ *value );

/** Deletes the entry at an index. */
QV_API void qvDictDelAt( QV_DICT **dict, QV_INT idx );

/** @{ */
/** New Vectors of all keys and of all values, in the order of the indexes. */
QV_API QV_VECTOR *qvDictKeysVector( QV_DICT *dict );
QV_API QV_VECTOR *qvDictValuesVector( QV_DICT *dict );
/** @} */

/* By key --------------------------------------------------------------------------------------------------------- */

/** @{ */
/** The value of a key, or null.

    What a key can be, here and below: any object; the boxed null; a boxed truth value, integer or real; a sort; a
    String, or a new one of decoded text, of which the length is in bytes for a Cstr, which is UTF-8, and in units for a
    Wcstr, and -1 means that it ends at its terminator. */
QV_API QV_OBJ *qvDictObjKey( QV_DICT *dict, QV_OBJ *key );
QV_API QV_OBJ *qvDictNullKey( QV_DICT *dict );
QV_API QV_OBJ *qvDictBoolKey( QV_DICT *dict, QV_BOOL key );
QV_API QV_OBJ *qvDictIntKey( QV_DICT *dict, QV_INT key );
QV_API QV_OBJ *qvDictRealKey( QV_DICT *dict, QV_REAL key );
QV_API QV_OBJ *qvDictSortKey( QV_DICT *dict, QV_SORT *key );
QV_API QV_OBJ *qvDictStringKey( QV_DICT *dict, QV_STRING *key );
QV_API QV_OBJ *qvDictStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length );
QV_API QV_OBJ *qvDictStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** The same value, or null, without a reference: lent until the Dict is changed or released, and not for the caller to
    release. For values that are read at once, without the two locked instructions of a reference:

        QV_OBJ *port = qvDictLendStringKeyCstr( options, "port", -1 );
        listen( port ? qvBoxedIntValue( qvBoxedIntFrom( port ) ) : 80 );

    Where several threads use a variable, or a compare function of the key's family changes it, take a reference. */
QV_API QV_OBJ *qvDictLendObjKey( QV_DICT *dict, QV_OBJ *key );
QV_API QV_OBJ *qvDictLendNullKey( QV_DICT *dict );
QV_API QV_OBJ *qvDictLendBoolKey( QV_DICT *dict, QV_BOOL key );
QV_API QV_OBJ *qvDictLendIntKey( QV_DICT *dict, QV_INT key );
QV_API QV_OBJ *qvDictLendRealKey( QV_DICT *dict, QV_REAL key );
QV_API QV_OBJ *qvDictLendSortKey( QV_DICT *dict, QV_SORT *key );
QV_API QV_OBJ *qvDictLendStringKey( QV_DICT *dict, QV_STRING *key );
QV_API QV_OBJ *qvDictLendStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length );
QV_API QV_OBJ *qvDictLendStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** True when the key is present. */
QV_API QV_BOOL qvDictHasObjKey( QV_DICT *dict, QV_OBJ *key );
QV_API QV_BOOL qvDictHasNullKey( QV_DICT *dict );
QV_API QV_BOOL qvDictHasBoolKey( QV_DICT *dict, QV_BOOL key );
QV_API QV_BOOL qvDictHasIntKey( QV_DICT *dict, QV_INT key );
QV_API QV_BOOL qvDictHasRealKey( QV_DICT *dict, QV_REAL key );
QV_API QV_BOOL qvDictHasSortKey( QV_DICT *dict, QV_SORT *key );
QV_API QV_BOOL qvDictHasStringKey( QV_DICT *dict, QV_STRING *key );
QV_API QV_BOOL qvDictHasStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length );
QV_API QV_BOOL qvDictHasStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** The index of the key, or -1. */
QV_API QV_INT qvDictIndexOfObjKey( QV_DICT *dict, QV_OBJ *key );
QV_API QV_INT qvDictIndexOfNullKey( QV_DICT *dict );
QV_API QV_INT qvDictIndexOfBoolKey( QV_DICT *dict, QV_BOOL key );
QV_API QV_INT qvDictIndexOfIntKey( QV_DICT *dict, QV_INT key );
QV_API QV_INT qvDictIndexOfRealKey( QV_DICT *dict, QV_REAL key );
QV_API QV_INT qvDictIndexOfSortKey( QV_DICT *dict, QV_SORT *key );
QV_API QV_INT qvDictIndexOfStringKey( QV_DICT *dict, QV_STRING *key );
QV_API QV_INT qvDictIndexOfStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length );
QV_API QV_INT qvDictIndexOfStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length );
/** @} */

/** @{ */
/** Sets the value of a key. Where the key is present already, the new key object takes the place of the old one. */
QV_API void qvDictSetObjKey( QV_DICT **dict, QV_OBJ *key, QV_OBJ *value );
QV_API void qvDictSetNullKey( QV_DICT **dict, QV_OBJ *value );
QV_API void qvDictSetBoolKey( QV_DICT **dict, QV_BOOL key, QV_OBJ *value );
QV_API void qvDictSetIntKey( QV_DICT **dict, QV_INT key, QV_OBJ *value );
QV_API void qvDictSetRealKey( QV_DICT **dict, QV_REAL key, QV_OBJ *value );
QV_API void qvDictSetSortKey( QV_DICT **dict, QV_SORT *key, QV_OBJ *value );
QV_API void qvDictSetStringKey( QV_DICT **dict, QV_STRING *key, QV_OBJ *value );
QV_API void qvDictSetStringKeyCstr( QV_DICT **dict, const char *text, QV_INT length, QV_OBJ *value );
QV_API void qvDictSetStringKeyWcstr( QV_DICT **dict, const wchar_t *text, QV_INT length, QV_OBJ *value );
/** @} */

/** @{ */
/** The same with a reference to the value that the caller gives up, so that nothing is counted: for a value that is made
    for the Dict.

        qvDictSetStringKeyCstrUse( &dict, "port", -1, qvBoxedIntObj( qvBoxedIntCreate( 8080 ) ) ); */
QV_API void qvDictSetObjKeyUse( QV_DICT **dict, QV_OBJ *key, QV_OBJ *value );
QV_API void qvDictSetNullKeyUse( QV_DICT **dict, QV_OBJ *value );
QV_API void qvDictSetBoolKeyUse( QV_DICT **dict, QV_BOOL key, QV_OBJ *value );
QV_API void qvDictSetIntKeyUse( QV_DICT **dict, QV_INT key, QV_OBJ *value );
QV_API void qvDictSetRealKeyUse( QV_DICT **dict, QV_REAL key, QV_OBJ *value );
QV_API void qvDictSetSortKeyUse( QV_DICT **dict, QV_SORT *key, QV_OBJ *value );
QV_API void qvDictSetStringKeyUse( QV_DICT **dict, QV_STRING *key, QV_OBJ *value );
QV_API void qvDictSetStringKeyCstrUse( QV_DICT **dict, const char *text, QV_INT length, QV_OBJ *value );
QV_API void qvDictSetStringKeyWcstrUse( QV_DICT **dict, const wchar_t *text, QV_INT length, QV_OBJ *value );
/** @} */

/** @{ */
/** Has a function change the value of a key, or enter or delete it, with one search: what is in `*value` when the function
    returns is the value of the key, and where null is there, it has none. A key that is present stays the same object.

        static void addToGroup( QV_OBJ **value, void *data )
        {
            QV_VECTOR *group = *value ? qvVectorFrom( *value ) : qvVectorCreate();
            qvVectorAppendObj( &group, (QV_OBJ *)data );
            *value = qvVectorObj( group );
        }

        qvDictUpdateStringKeyCstr( &groups, "red", -1, addToGroup, qvStringObj( name ) );

    Where neither the Dict nor the value is shared, the function has the only reference, so that a container grows in
    place. Meanwhile `*dict` is null: a function that uses the variable ends the process. A null function does too. */
QV_API void qvDictUpdateObjKey( QV_DICT **dict, QV_OBJ *key, QV_DICT_UPDATE_FUNC update, void *data );
QV_API void qvDictUpdateNullKey( QV_DICT **dict, QV_DICT_UPDATE_FUNC update, void *data );
QV_API void qvDictUpdateBoolKey( QV_DICT **dict, QV_BOOL key, QV_DICT_UPDATE_FUNC update, void *data );
QV_API void qvDictUpdateIntKey( QV_DICT **dict, QV_INT key, QV_DICT_UPDATE_FUNC update, void *data );
QV_API void qvDictUpdateRealKey( QV_DICT **dict, QV_REAL key, QV_DICT_UPDATE_FUNC update, void *data );
QV_API void qvDictUpdateSortKey( QV_DICT **dict, QV_SORT *key, QV_DICT_UPDATE_FUNC update, void *data );
QV_API void qvDictUpdateStringKey( QV_DICT **dict, QV_STRING *key, QV_DICT_UPDATE_FUNC update, void *data );
QV_API void qvDictUpdateStringKeyCstr(
    QV_DICT **dict, const char *text, QV_INT length, QV_DICT_UPDATE_FUNC update, void *data );
QV_API void qvDictUpdateStringKeyWcstr(
    QV_DICT **dict, const wchar_t *text, QV_INT length, QV_DICT_UPDATE_FUNC update, void *data );
/** @} */

/** @{ */
/** Deletes the entry of a key, if there is one; a shared Dict without it stays shared. */
QV_API void qvDictDelObjKey( QV_DICT **dict, QV_OBJ *key );
QV_API void qvDictDelNullKey( QV_DICT **dict );
QV_API void qvDictDelBoolKey( QV_DICT **dict, QV_BOOL key );
QV_API void qvDictDelIntKey( QV_DICT **dict, QV_INT key );
QV_API void qvDictDelRealKey( QV_DICT **dict, QV_REAL key );
QV_API void qvDictDelSortKey( QV_DICT **dict, QV_SORT *key );
QV_API void qvDictDelStringKey( QV_DICT **dict, QV_STRING *key );
QV_API void qvDictDelStringKeyCstr( QV_DICT **dict, const char *text, QV_INT length );
QV_API void qvDictDelStringKeyWcstr( QV_DICT **dict, const wchar_t *text, QV_INT length );
/** @} */

/* By value ------------------------------------------------------------------------------------------------------- */

/** Deletes all entries whose value is `value` itself, or with `byCompare` compares equal to it; `value` may be
    one that only the Dict holds. Costs the length. */
QV_API void qvDictDelValue( QV_DICT **dict, QV_OBJ *value, QV_BOOL byCompare );

/* Sets of keys --------------------------------------------------------------------------------------------------- */

/** Enters the entries of `src`. A key that `*dest` already has keeps its value unless `overwrite` is true. */
QV_API void qvDictInclude( QV_DICT **dest, QV_DICT *src, QV_BOOL overwrite );

/** Deletes the keys of `src`, whatever their values. */
QV_API void qvDictExclude( QV_DICT **dest, QV_DICT *src );

/** Keeps the entries whose keys `src` has; with `useSrcValues` their values become those of `src`. */
QV_API void qvDictIntersect( QV_DICT **dest, QV_DICT *src, QV_BOOL useSrcValues );

/** True when the two have no key in common. */
QV_API QV_BOOL qvDictDisjoint( QV_DICT *dictA, QV_DICT *dictB );

#endif

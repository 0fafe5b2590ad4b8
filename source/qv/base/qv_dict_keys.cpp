// The operations by key, for each kind of key.

#include "qv/base/qv_dict.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_dict_tree_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_string_stack_private.h"
#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_ref.h"

namespace
{
// References to keys that go into a Dict: to one that is an object, and to a new one like one on the stack.
QV_OBJ *keepObject( QV_OBJ *key )
{
    return qv::retain( key );
}

QV_OBJ *keepInt( QV_OBJ *key )
{
    return qv::obj( qvBoxedIntCreate( static_cast< QV_BOXED_INT * >( key )->value ) );
}

QV_OBJ *keepString( QV_OBJ *key )
{
    return qv::obj( qvStringCreateFrom( static_cast< QV_STRING * >( key ) ) );
}

// A key that is made for the call.
template< class T >
qv::Ref< QV_OBJ > made( T *owned )
{
    return qv::Ref< QV_OBJ >( qv::obj( owned ) );
}

// Has the characters of a key fetched where it is a String: they follow it as a rule, and need not wait for its fields.
void fetchText( QV_OBJ *key )
{
    __builtin_prefetch( reinterpret_cast< char * >( key ) + sizeof( QV_STRING ) );
}

// The kinds of keys. Each makes the object that the plain operation takes.

struct ObjKey
{
    QV_OBJ *key;

    QV_OBJ *object() const
    {
        fetchText( key );
        return key;
    }
};

struct NullKey
{
    auto object() const
    {
        return made( qvBoxedNullCreate() );
    }
};

struct BoolKey
{
    QV_BOOL key;

    auto object() const
    {
        return made( qvBoxedBoolCreate( key ) );
    }
};

struct RealKey
{
    QV_REAL key;

    auto object() const
    {
        return made( qvBoxedRealCreate( key ) );
    }
};

struct NewIntKey
{
    QV_INT key;

    auto object() const
    {
        return made( qvBoxedIntCreate( key ) );
    }
};

// A boxed integer for the time of a search, without the allocation. No search keeps its key.
class IntOnStack
{
public:
    explicit IntOnStack( QV_INT value )
    {
        static_cast< QV_OBJ & >( box_ ) = QV___STATIC_HEADER( QV___OBJ_TYPE_OBJECT );
        box_.sort                       = &qv___sort_QV_BOXED_INT;
        box_.value                      = value;
    }

    operator QV_OBJ *()
    {
        return &box_;
    }

private:
    QV_BOXED_INT box_;
};

struct IntKey
{
    QV_INT key;

    auto object() const
    {
        return IntOnStack( key );
    }
};

struct SortKey
{
    QV_SORT *key;

    auto object() const
    {
        return qv::obj( key );
    }
};

struct StringKey
{
    QV_STRING *key;

    auto object() const
    {
        fetchText( qv::obj( key ) );
        return qv::obj( key );
    }
};

struct CstrKey
{
    const char *text;
    QV_INT      length;

    auto object() const
    {
        return qv::SoughtString( text, length );
    }
};

struct NewCstrKey
{
    const char *text;
    QV_INT      length;

    auto object() const
    {
        return made( qvStringCreateFromCstr( text, length ) );
    }
};

struct WcstrKey
{
    const wchar_t *text;
    QV_INT         length;

    auto object() const
    {
        return made( qvStringCreateFromWcstr( text, length ) );
    }
};

// The entry of a key, if there is one, for the time of `use`. Straight to the search: a call more would be a tenth of it.
template< class Key, class Use >
inline auto withItemOfKey( QV_DICT *dict, const Key &kind, const Use &use )
{
    QV_CHECK( dict );
    auto    object = kind.object();
    QV_OBJ *key    = object;
    QV_CHECK( key );

    qv::Ref< QV_DICT > held;
    return use( qv::findDictItem( dict, key, &held ) );
}

template< class Key >
QV_OBJ *valueOfKey( QV_DICT *dict, const Key &key )
{
    return withItemOfKey(
        dict, key, []( const QV___DICT_ITEM *item ) { return item ? qv::retain( item->val ) : nullptr; } );
}

template< class Key >
QV_OBJ *lentValueOfKey( QV_DICT *dict, const Key &key )
{
    return withItemOfKey( dict, key, []( const QV___DICT_ITEM *item ) { return item ? item->val : nullptr; } );
}

template< class Key >
QV_BOOL hasKey( QV_DICT *dict, const Key &key )
{
    return withItemOfKey( dict, key, []( const QV___DICT_ITEM *item ) { return item ? QV_TRUE : QV_FALSE; } );
}

template< class Key >
QV_INT indexOfKey( QV_DICT *dict, const Key &key )
{
    QV_CHECK( dict );
    auto object = key.object();
    return qvDictIndexOfObjKey( dict, object );
}

// A reference for the Dict to a key: one more to what the caller lends, its own to what was made for the call.
QV_OBJ *ownKey( QV_OBJ *key )
{
    return qv::retain( key );
}

QV_OBJ *ownKey( qv::Ref< QV_OBJ > &key )
{
    return key.give();
}

// Takes over the reference to the value with `uses`.
template< class Key >
inline void setKey( QV_DICT **dict, const Key &kind, QV_OBJ *value, bool uses = false )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( value );
    auto    object = kind.object();
    QV_OBJ *key    = object;
    QV_CHECK( key );
    qv::setInDict( dict, ownKey( object ), uses ? value : qv::retain( value ) );
}

template< class Key >
void updateKey(
    QV_DICT **dict, const Key &key, QV_DICT_UPDATE_FUNC update, void *data,
    QV_OBJ *( *keep )( QV_OBJ *key ) = keepObject )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    auto object = key.object();
    qv::updateDict( dict, object, keep, update, data );
}

template< class Key >
void deleteKey( QV_DICT **dict, const Key &key )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    auto object = key.object();
    qvDictDelObjKey( dict, object );
}
} // namespace

QV_OBJ *qvDictObjKey( QV_DICT *dict, QV_OBJ *key )
{
    return valueOfKey( dict, ObjKey{ key } );
}

QV_OBJ *qvDictNullKey( QV_DICT *dict )
{
    return valueOfKey( dict, NullKey{} );
}

QV_OBJ *qvDictBoolKey( QV_DICT *dict, QV_BOOL key )
{
    return valueOfKey( dict, BoolKey{ key } );
}

QV_OBJ *qvDictIntKey( QV_DICT *dict, QV_INT key )
{
    return valueOfKey( dict, IntKey{ key } );
}

QV_OBJ *qvDictRealKey( QV_DICT *dict, QV_REAL key )
{
    return valueOfKey( dict, RealKey{ key } );
}

QV_OBJ *qvDictSortKey( QV_DICT *dict, QV_SORT *key )
{
    return valueOfKey( dict, SortKey{ key } );
}

QV_OBJ *qvDictStringKey( QV_DICT *dict, QV_STRING *key )
{
    return valueOfKey( dict, StringKey{ key } );
}

QV_OBJ *qvDictStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length )
{
    return valueOfKey( dict, CstrKey{ text, length } );
}

QV_OBJ *qvDictStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length )
{
    return valueOfKey( dict, WcstrKey{ text, length } );
}

QV_OBJ *qvDictLendObjKey( QV_DICT *dict, QV_OBJ *key )
{
    return lentValueOfKey( dict, ObjKey{ key } );
}

QV_OBJ *qvDictLendNullKey( QV_DICT *dict )
{
    return lentValueOfKey( dict, NullKey{} );
}

QV_OBJ *qvDictLendBoolKey( QV_DICT *dict, QV_BOOL key )
{
    return lentValueOfKey( dict, BoolKey{ key } );
}

QV_OBJ *qvDictLendIntKey( QV_DICT *dict, QV_INT key )
{
    return lentValueOfKey( dict, IntKey{ key } );
}

QV_OBJ *qvDictLendRealKey( QV_DICT *dict, QV_REAL key )
{
    return lentValueOfKey( dict, RealKey{ key } );
}

QV_OBJ *qvDictLendSortKey( QV_DICT *dict, QV_SORT *key )
{
    return lentValueOfKey( dict, SortKey{ key } );
}

QV_OBJ *qvDictLendStringKey( QV_DICT *dict, QV_STRING *key )
{
    return lentValueOfKey( dict, StringKey{ key } );
}

QV_OBJ *qvDictLendStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length )
{
    return lentValueOfKey( dict, CstrKey{ text, length } );
}

QV_OBJ *qvDictLendStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length )
{
    return lentValueOfKey( dict, WcstrKey{ text, length } );
}

QV_BOOL qvDictHasObjKey( QV_DICT *dict, QV_OBJ *key )
{
    return hasKey( dict, ObjKey{ key } );
}

QV_BOOL qvDictHasNullKey( QV_DICT *dict )
{
    return hasKey( dict, NullKey{} );
}

QV_BOOL qvDictHasBoolKey( QV_DICT *dict, QV_BOOL key )
{
    return hasKey( dict, BoolKey{ key } );
}

QV_BOOL qvDictHasIntKey( QV_DICT *dict, QV_INT key )
{
    return hasKey( dict, IntKey{ key } );
}

QV_BOOL qvDictHasRealKey( QV_DICT *dict, QV_REAL key )
{
    return hasKey( dict, RealKey{ key } );
}

QV_BOOL qvDictHasSortKey( QV_DICT *dict, QV_SORT *key )
{
    return hasKey( dict, SortKey{ key } );
}

QV_BOOL qvDictHasStringKey( QV_DICT *dict, QV_STRING *key )
{
    return hasKey( dict, StringKey{ key } );
}

QV_BOOL qvDictHasStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length )
{
    return hasKey( dict, CstrKey{ text, length } );
}

QV_BOOL qvDictHasStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length )
{
    return hasKey( dict, WcstrKey{ text, length } );
}

QV_INT qvDictIndexOfNullKey( QV_DICT *dict )
{
    return indexOfKey( dict, NullKey{} );
}

QV_INT qvDictIndexOfBoolKey( QV_DICT *dict, QV_BOOL key )
{
    return indexOfKey( dict, BoolKey{ key } );
}

QV_INT qvDictIndexOfIntKey( QV_DICT *dict, QV_INT key )
{
    return indexOfKey( dict, IntKey{ key } );
}

QV_INT qvDictIndexOfRealKey( QV_DICT *dict, QV_REAL key )
{
    return indexOfKey( dict, RealKey{ key } );
}

QV_INT qvDictIndexOfSortKey( QV_DICT *dict, QV_SORT *key )
{
    return indexOfKey( dict, SortKey{ key } );
}

QV_INT qvDictIndexOfStringKey( QV_DICT *dict, QV_STRING *key )
{
    return indexOfKey( dict, StringKey{ key } );
}

QV_INT qvDictIndexOfStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length )
{
    return indexOfKey( dict, CstrKey{ text, length } );
}

QV_INT qvDictIndexOfStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length )
{
    return indexOfKey( dict, WcstrKey{ text, length } );
}

void qvDictSetObjKey( QV_DICT **dict, QV_OBJ *key, QV_OBJ *value )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( key );
    setKey( dict, ObjKey{ key }, value );
}

void qvDictSetNullKey( QV_DICT **dict, QV_OBJ *value )
{
    setKey( dict, NullKey{}, value );
}

void qvDictSetBoolKey( QV_DICT **dict, QV_BOOL key, QV_OBJ *value )
{
    setKey( dict, BoolKey{ key }, value );
}

void qvDictSetIntKey( QV_DICT **dict, QV_INT key, QV_OBJ *value )
{
    setKey( dict, NewIntKey{ key }, value );
}

void qvDictSetRealKey( QV_DICT **dict, QV_REAL key, QV_OBJ *value )
{
    setKey( dict, RealKey{ key }, value );
}

void qvDictSetSortKey( QV_DICT **dict, QV_SORT *key, QV_OBJ *value )
{
    setKey( dict, SortKey{ key }, value );
}

void qvDictSetStringKey( QV_DICT **dict, QV_STRING *key, QV_OBJ *value )
{
    setKey( dict, StringKey{ key }, value );
}

void qvDictSetStringKeyCstr( QV_DICT **dict, const char *text, QV_INT length, QV_OBJ *value )
{
    setKey( dict, NewCstrKey{ text, length }, value );
}

void qvDictSetStringKeyWcstr( QV_DICT **dict, const wchar_t *text, QV_INT length, QV_OBJ *value )
{
    setKey( dict, WcstrKey{ text, length }, value );
}

void qvDictSetObjKeyUse( QV_DICT **dict, QV_OBJ *key, QV_OBJ *value )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( key );
    setKey( dict, ObjKey{ key }, value, true );
}

void qvDictSetNullKeyUse( QV_DICT **dict, QV_OBJ *value )
{
    setKey( dict, NullKey{}, value, true );
}

void qvDictSetBoolKeyUse( QV_DICT **dict, QV_BOOL key, QV_OBJ *value )
{
    setKey( dict, BoolKey{ key }, value, true );
}

void qvDictSetIntKeyUse( QV_DICT **dict, QV_INT key, QV_OBJ *value )
{
    setKey( dict, NewIntKey{ key }, value, true );
}

void qvDictSetRealKeyUse( QV_DICT **dict, QV_REAL key, QV_OBJ *value )
{
    setKey( dict, RealKey{ key }, value, true );
}

void qvDictSetSortKeyUse( QV_DICT **dict, QV_SORT *key, QV_OBJ *value )
{
    setKey( dict, SortKey{ key }, value, true );
}

void qvDictSetStringKeyUse( QV_DICT **dict, QV_STRING *key, QV_OBJ *value )
{
    setKey( dict, StringKey{ key }, value, true );
}

void qvDictSetStringKeyCstrUse( QV_DICT **dict, const char *text, QV_INT length, QV_OBJ *value )
{
    setKey( dict, NewCstrKey{ text, length }, value, true );
}

void qvDictSetStringKeyWcstrUse( QV_DICT **dict, const wchar_t *text, QV_INT length, QV_OBJ *value )
{
    setKey( dict, WcstrKey{ text, length }, value, true );
}

void qvDictUpdateNullKey( QV_DICT **dict, QV_DICT_UPDATE_FUNC update, void *data )
{
    updateKey( dict, NullKey{}, update, data );
}

void qvDictUpdateBoolKey( QV_DICT **dict, QV_BOOL key, QV_DICT_UPDATE_FUNC update, void *data )
{
    updateKey( dict, BoolKey{ key }, update, data );
}

void qvDictUpdateIntKey( QV_DICT **dict, QV_INT key, QV_DICT_UPDATE_FUNC update, void *data )
{
    updateKey( dict, IntKey{ key }, update, data, keepInt );
}

void qvDictUpdateRealKey( QV_DICT **dict, QV_REAL key, QV_DICT_UPDATE_FUNC update, void *data )
{
    updateKey( dict, RealKey{ key }, update, data );
}

void qvDictUpdateSortKey( QV_DICT **dict, QV_SORT *key, QV_DICT_UPDATE_FUNC update, void *data )
{
    updateKey( dict, SortKey{ key }, update, data );
}

void qvDictUpdateStringKey( QV_DICT **dict, QV_STRING *key, QV_DICT_UPDATE_FUNC update, void *data )
{
    updateKey( dict, StringKey{ key }, update, data );
}

void qvDictUpdateStringKeyCstr(
    QV_DICT **dict, const char *text, QV_INT length, QV_DICT_UPDATE_FUNC update, void *data )
{
    updateKey( dict, CstrKey{ text, length }, update, data, keepString );
}

void qvDictUpdateStringKeyWcstr(
    QV_DICT **dict, const wchar_t *text, QV_INT length, QV_DICT_UPDATE_FUNC update, void *data )
{
    updateKey( dict, WcstrKey{ text, length }, update, data );
}

void qvDictDelNullKey( QV_DICT **dict )
{
    deleteKey( dict, NullKey{} );
}

void qvDictDelBoolKey( QV_DICT **dict, QV_BOOL key )
{
    deleteKey( dict, BoolKey{ key } );
}

void qvDictDelIntKey( QV_DICT **dict, QV_INT key )
{
    deleteKey( dict, IntKey{ key } );
}

void qvDictDelRealKey( QV_DICT **dict, QV_REAL key )
{
    deleteKey( dict, RealKey{ key } );
}

void qvDictDelSortKey( QV_DICT **dict, QV_SORT *key )
{
    deleteKey( dict, SortKey{ key } );
}

void qvDictDelStringKey( QV_DICT **dict, QV_STRING *key )
{
    deleteKey( dict, StringKey{ key } );
}

void qvDictDelStringKeyCstr( QV_DICT **dict, const char *text, QV_INT length )
{
    deleteKey( dict, CstrKey{ text, length } );
}

void qvDictDelStringKeyWcstr( QV_DICT **dict, const wchar_t *text, QV_INT length )
{
    deleteKey( dict, WcstrKey{ text, length } );
}

// The operations by key, for each kind of key.

#include "qv/base/qv_dict.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_string.h"
#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_ref.h"

namespace
{
// A key that is made for the call.
template< class T >
qv::Ref< QV_OBJ > made( T *owned )
{
    return qv::Ref< QV_OBJ >( qv::obj( owned ) );
}

// The kinds of keys. Each gives the object that the plain operation takes.

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
        return qv::obj( key );
    }
};

struct CstrKey
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

template< class Key >
QV_OBJ *get( QV_DICT *dict, const Key &key )
{
    QV_CHECK( dict );
    auto object = key.object();
    return qvDictObjKey( dict, object );
}

template< class Key >
QV_BOOL has( QV_DICT *dict, const Key &key )
{
    QV_CHECK( dict );
    auto object = key.object();
    return qvDictHasObjKey( dict, object );
}

template< class Key >
QV_INT indexOf( QV_DICT *dict, const Key &key )
{
    QV_CHECK( dict );
    auto object = key.object();
    return qvDictIndexOfObjKey( dict, object );
}

template< class Key >
void set( QV_DICT **dict, const Key &key, QV_OBJ *value )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    QV_CHECK( value );
    auto object = key.object();
    qvDictSetObjKey( dict, object, value );
}

template< class Key >
void del( QV_DICT **dict, const Key &key )
{
    QV_CHECK( dict );
    QV_CHECK( *dict );
    auto object = key.object();
    qvDictDelObjKey( dict, object );
}
} // namespace

QV_OBJ *qvDictNullKey( QV_DICT *dict )
{
    return get( dict, NullKey{} );
}

QV_OBJ *qvDictBoolKey( QV_DICT *dict, QV_BOOL key )
{
    return get( dict, BoolKey{ key } );
}

QV_OBJ *qvDictIntKey( QV_DICT *dict, QV_INT key )
{
    return get( dict, IntKey{ key } );
}

QV_OBJ *qvDictRealKey( QV_DICT *dict, QV_REAL key )
{
    return get( dict, RealKey{ key } );
}

QV_OBJ *qvDictSortKey( QV_DICT *dict, QV_SORT *key )
{
    return get( dict, SortKey{ key } );
}

QV_OBJ *qvDictStringKey( QV_DICT *dict, QV_STRING *key )
{
    return get( dict, StringKey{ key } );
}

QV_OBJ *qvDictStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length )
{
    return get( dict, CstrKey{ text, length } );
}

QV_OBJ *qvDictStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length )
{
    return get( dict, WcstrKey{ text, length } );
}

QV_BOOL qvDictHasNullKey( QV_DICT *dict )
{
    return has( dict, NullKey{} );
}

QV_BOOL qvDictHasBoolKey( QV_DICT *dict, QV_BOOL key )
{
    return has( dict, BoolKey{ key } );
}

QV_BOOL qvDictHasIntKey( QV_DICT *dict, QV_INT key )
{
    return has( dict, IntKey{ key } );
}

QV_BOOL qvDictHasRealKey( QV_DICT *dict, QV_REAL key )
{
    return has( dict, RealKey{ key } );
}

QV_BOOL qvDictHasSortKey( QV_DICT *dict, QV_SORT *key )
{
    return has( dict, SortKey{ key } );
}

QV_BOOL qvDictHasStringKey( QV_DICT *dict, QV_STRING *key )
{
    return has( dict, StringKey{ key } );
}

QV_BOOL qvDictHasStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length )
{
    return has( dict, CstrKey{ text, length } );
}

QV_BOOL qvDictHasStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length )
{
    return has( dict, WcstrKey{ text, length } );
}

QV_INT qvDictIndexOfNullKey( QV_DICT *dict )
{
    return indexOf( dict, NullKey{} );
}

QV_INT qvDictIndexOfBoolKey( QV_DICT *dict, QV_BOOL key )
{
    return indexOf( dict, BoolKey{ key } );
}

QV_INT qvDictIndexOfIntKey( QV_DICT *dict, QV_INT key )
{
    return indexOf( dict, IntKey{ key } );
}

QV_INT qvDictIndexOfRealKey( QV_DICT *dict, QV_REAL key )
{
    return indexOf( dict, RealKey{ key } );
}

QV_INT qvDictIndexOfSortKey( QV_DICT *dict, QV_SORT *key )
{
    return indexOf( dict, SortKey{ key } );
}

QV_INT qvDictIndexOfStringKey( QV_DICT *dict, QV_STRING *key )
{
    return indexOf( dict, StringKey{ key } );
}

QV_INT qvDictIndexOfStringKeyCstr( QV_DICT *dict, const char *text, QV_INT length )
{
    return indexOf( dict, CstrKey{ text, length } );
}

QV_INT qvDictIndexOfStringKeyWcstr( QV_DICT *dict, const wchar_t *text, QV_INT length )
{
    return indexOf( dict, WcstrKey{ text, length } );
}

void qvDictSetNullKey( QV_DICT **dict, QV_OBJ *value )
{
    set( dict, NullKey{}, value );
}

void qvDictSetBoolKey( QV_DICT **dict, QV_BOOL key, QV_OBJ *value )
{
    set( dict, BoolKey{ key }, value );
}

void qvDictSetIntKey( QV_DICT **dict, QV_INT key, QV_OBJ *value )
{
    set( dict, NewIntKey{ key }, value );
}

void qvDictSetRealKey( QV_DICT **dict, QV_REAL key, QV_OBJ *value )
{
    set( dict, RealKey{ key }, value );
}

void qvDictSetSortKey( QV_DICT **dict, QV_SORT *key, QV_OBJ *value )
{
    set( dict, SortKey{ key }, value );
}

void qvDictSetStringKey( QV_DICT **dict, QV_STRING *key, QV_OBJ *value )
{
    set( dict, StringKey{ key }, value );
}

void qvDictSetStringKeyCstr( QV_DICT **dict, const char *text, QV_INT length, QV_OBJ *value )
{
    set( dict, CstrKey{ text, length }, value );
}

void qvDictSetStringKeyWcstr( QV_DICT **dict, const wchar_t *text, QV_INT length, QV_OBJ *value )
{
    set( dict, WcstrKey{ text, length }, value );
}

void qvDictDelNullKey( QV_DICT **dict )
{
    del( dict, NullKey{} );
}

void qvDictDelBoolKey( QV_DICT **dict, QV_BOOL key )
{
    del( dict, BoolKey{ key } );
}

void qvDictDelIntKey( QV_DICT **dict, QV_INT key )
{
    del( dict, IntKey{ key } );
}

void qvDictDelRealKey( QV_DICT **dict, QV_REAL key )
{
    del( dict, RealKey{ key } );
}

void qvDictDelSortKey( QV_DICT **dict, QV_SORT *key )
{
    del( dict, SortKey{ key } );
}

void qvDictDelStringKey( QV_DICT **dict, QV_STRING *key )
{
    del( dict, StringKey{ key } );
}

void qvDictDelStringKeyCstr( QV_DICT **dict, const char *text, QV_INT length )
{
    del( dict, CstrKey{ text, length } );
}

void qvDictDelStringKeyWcstr( QV_DICT **dict, const wchar_t *text, QV_INT length )
{
    del( dict, WcstrKey{ text, length } );
}

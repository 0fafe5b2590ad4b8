// What a debugger is asked to print: stops in ready() with objects of many families, whole and damaged.

#include "qv/qv.hpp"

#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector_private.h"

#include <cstdlib>
#include <cstring>

template< class T >
T *copied( T *object )
{
    return static_cast< T * >( memcpy( malloc( sizeof( T ) ), static_cast< void * >( object ), sizeof( T ) ) );
}

[[gnu::noinline]] void ready( const void *const *objects )
{
    asm volatile( "" : : "r"( objects ) : "memory" );
}

int main()
{
    qvRuntimeStartup( QV_RUNTIME_FLAG_OBJECT_DATABASE, nullptr, "objects", "Objects", "1.0" );

    QV_STRING *text   = qvStringCreateFromCstr( "tab\t\"\xC3\xA4\xF0\x9F\x98\x80", -1 );
    QV_STRING *longer = qvStringCreate();
    QV_STRING *none   = nullptr;
    QV_STRING *gone   = reinterpret_cast< QV_STRING * >( UINTPTR_MAX );

    for( int i = 0; i < 1000; i++ )
        qvStringAppendChar( &longer, U'x' );

    const uint8_t bytes[] = { 0, 0xA5, 0xFF };
    QV_BUFFER    *buffer  = qvBufferCreateFromBytesCopy( bytes, 3 );
    QV_OBJ       *one     = qvBoxedIntObj( qvBoxedIntCreate( -1 ) );
    QV_VECTOR    *list    = qvVectorCreate();
    qvVectorAppendObj( &list, qvStringObj( text ) );
    qvVectorAppendObj( &list, one );
    qvVectorAppendObj( &list, qvBoxedRealObj( qvBoxedRealCreate( 0.5 ) ) );
    qvVectorAppendObj( &list, qvBoxedBoolObj( qvBoxedBoolCreate( QV_TRUE ) ) );
    qvVectorAppendObj( &list, qvBoxedNullObj( qvBoxedNullCreate() ) );

    QV_DICT *small = qvDictCreate(), *large = qvDictCreate();
    qvDictSetStringKeyCstr( &small, "b", -1, qvVectorObj( list ) );
    qvDictSetStringKeyCstr( &small, "a", -1, one );

    for( QV_INT i = 5000; i > 0; i-- )
        qvDictSetIntKey( &large, i, one );

    QV_PRIORITY_MAP *queue = qvPriorityMapCreate();
    qvPriorityMapSet( &queue, 7, one );
    qvPriorityMapSet( &queue, -7, qvStringObj( text ) );

    QV_RANGE_MAP *ranges = qvRangeMapCreate();
    qvRangeMapSetRangeKey( &ranges, 3, 5, one );

    QV_STORE *store = qvStoreCreate(), *below = qvStoreCreate();
    qvStoreSetValueIntCstr( &below, "port", -1, 9090 );
    qvStoreSetValueIntCstr( &store, "net", -1, 1 );
    qvStoreSetValueCstr( &store, "zone", -1, text );
    qvStoreSetStoreCstr( &store, "net", -1, below );

    QV_TIME *leap = qvTimeCreate();
    qvTimeSetYear( &leap, 2024 ), qvTimeSetMonth( &leap, 2 ), qvTimeSetDay( &leap, 29 );
    qvTimeSetHour( &leap, 12 ), qvTimeSetMinute( &leap, 30 ), qvTimeSetSecond( &leap, 0 );
    QV_SIGNAL *signal = qvSignalCreate();
    QV_SORT   *sort   = qvStoreSort();
    QV_OBJ    *module = qvModuleObj( &qv___module );

    qv::String                      value( "in C++" );
    qv::Dict< qv::String, int64_t > counts;
    counts.set( "one", 1 );

    QV_STRING *noText  = copied( longer );
    noText->first      = reinterpret_cast< QV_CHAR * >( 16 );
    QV_STRING *noSort  = copied( longer );
    noSort->sort       = reinterpret_cast< QV_SORT * >( longer );
    QV_VECTOR *endless = copied( list );
    endless->length    = QV_INT_MAX;

    const void *const objects[] = { none, gone,   small,  large,  queue,  ranges,  store,  leap,   signal,
                                    sort, module, buffer, noText, noSort, endless, &value, &counts };
    ready( objects );
}

#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/io/qv_print.h"
#include "qv/qv_tool_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_count_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_runtime_leaks_private.h"
#include "qv/runtime/qv_runtime_module_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>

#include <string.h>

namespace
{
const QV_INT SHOWN_TEXT = 200; // characters of an object's text that a report shows

QV_INT leaksOf( QV_SORT *sort )
{
    // An object may be between the two counts: its creation is counted first.
    return qvIntMax( 0, qv::liveObjects( sort ) - qv___AtomicLoad32( &sort->own ) );
}

// The sorts of a module, or all, that have leaks now, in the order of their names. In plain memory: the look changes no
// count.
class Leaks
{
public:
    struct Row
    {
        QV_SORT *sort;
        QV_INT   objects;
    };

    explicit Leaks( QV_MODULE *module )
    {
        QV_INT   known = 0;
        QV_SORT *first = qv::newestSort();

        for( QV_SORT *sort = first; sort; sort = qv::sortBefore( sort ) )
            known++;

        rows_ = static_cast< Row * >( qvMemAllocN( known + 1, sizeof( Row ) ) );

        for( QV_SORT *sort = first; sort; sort = qv::sortBefore( sort ) )
            if( QV_INT objects = leaksOf( sort ); objects > 0 && ( !module || sort->module == module ) )
                rows_[length_++] = { sort, objects };

        std::sort(
            begin(), end(), []( const Row &a, const Row &b ) { return strcmp( a.sort->name, b.sort->name ) < 0; } );
    }

    ~Leaks()
    {
        qvMemFree( rows_ );
    }

    Leaks( const Leaks & )            = delete;
    Leaks &operator=( const Leaks & ) = delete;

    Row *begin() const
    {
        return rows_;
    }

    Row *end() const
    {
        return rows_ + length_;
    }

    void visit( QV_RUNTIME_LEAK_FUNC func, void *context ) const
    {
        for( const Row &row : *this )
            func( row.sort, row.sort->name, row.objects, context );
    }

private:
    Row   *rows_;
    QV_INT length_ = 0;
};

// The line of an object and those of its log.
void appendObject( QV_STRING **report, QV_OBJ *object, QV_INT references )
{
    QV_SORT *sort = qvObjSort( object );
    qvStringAppendFormatCstr( report, "%lc (%i)", -1, sort->name, references );

    if( sort->toStringFunc )
    {
        qv::Ref< QV_STRING > text( qvObjToString( object ) );

        if( qvStringLength( text ) > SHOWN_TEXT )
        {
            qvStringDelTrailing( text.at(), qvStringLength( text ) - SHOWN_TEXT );
            qvStringAppendCstr( text.at(), " ...", -1 );
        }

        qvStringAppendFormatCstr( report, " %s", -1, text.get() );
    }

    qvStringAppendChar( report, U'\n' );
    qv::Ref< QV_VECTOR > log( qv___ObjLog( object ) );

    for( QV_INT i = 0; log && i < qvVectorLength( log ); i++ )
        qvStringAppendFormatCstr( report, "\t%~o\n", -1, qvVectorObjAt( log, i ) );
}

// The listed objects of the sorts that are not the library's own.
void gatherObjects( qv::Snapshot *snapshot, const Leaks &leaks )
{
    if( !qv___ObjOdbEnabled() )
        return;

    qv::HeldOdb held;

    for( const Leaks::Row &row : leaks )
        snapshot->addObjects( row.sort, false );
}

void appendObjects( QV_STRING **report, QV_VECTOR *objects )
{
    bool isFirst = true;

    for( QV_INT i = 0; i < objects->length; i++ )
    {
        QV_OBJ *object = qv::objs( objects )[i];

        if( qv::isOfModules( object ) )
            continue;

        if( isFirst )
            qvStringAppendChar( report, U'\n' );

        isFirst = false;
        appendObject( report, object, qv___AtomicLoad32( &object->retainCount ) - 1 ); // less the snapshot's
    }
}
} // namespace

/* What the library holds for itself ------------------------------------------------------------------------------ */

void qv::beginOwn()
{
    for( QV_SORT *sort = newestSort(); sort; sort = sortBefore( sort ) )
        qv___AtomicStore32( &sort->own, -static_cast< int32_t >( liveObjects( sort ) ) );
}

void qv::endOwn()
{
    for( QV_SORT *sort = newestSort(); sort; sort = sortBefore( sort ) )
        qv___AtomicAdd32( &sort->own, static_cast< int32_t >( liveObjects( sort ) ) );
}

void qv::addOwn( QV_SORT *sort, int32_t more )
{
    qv___AtomicAdd32( &sort->own, more );
}

void qv::forgetOwn()
{
    for( QV_SORT *sort = newestSort(); sort; sort = sortBefore( sort ) )
        qv___AtomicStore32( &sort->own, 0 );
}

/* Leaks ---------------------------------------------------------------------------------------------------------- */

QV_INT qvRuntimeLeakCount( void )
{
    QV_INT count = 0;

    for( QV_SORT *sort = qv::newestSort(); sort; sort = qv::sortBefore( sort ) )
        count += leaksOf( sort );

    return count;
}

void qvRuntimeLeakVisit( QV_RUNTIME_LEAK_FUNC func, void *context )
{
    QV_CHECK( func );
    Leaks( nullptr ).visit( func, context );
}

void qv___ModuleLeakVisit( QV_MODULE *module, QV_RUNTIME_LEAK_FUNC func, void *context )
{
    QV_CHECK( module );
    QV_CHECK( func );
    Leaks( module ).visit( func, context );
}

QV_STRING *qvRuntimeLeakReport( void )
{
    qv::checkRun();

    // Both before the first object of the report.
    Leaks        leaks( nullptr );
    qv::Snapshot snapshot;
    gatherObjects( &snapshot, leaks );

    qv::Ref< QV_VECTOR > objects( snapshot.vector() );
    qv::Ref< QV_STRING > report( qvStringCreate() );
    QV_INT               width = 0;

    for( const Leaks::Row &row : leaks )
        width = qvIntMax( width, static_cast< QV_INT >( strlen( row.sort->name ) ) );

    for( const Leaks::Row &row : leaks )
        qvStringAppendFormatCstr( report.at(), "%-*lc %i\n", -1, width, row.sort->name, row.objects );

    appendObjects( report.at(), objects );
    return report.give();
}

void qvRuntimeLeakPrint( void )
{
    qv::Ref< QV_STRING > report( qvRuntimeLeakReport() );
    qv::Ref< QV_VECTOR > lines( qvStringSplitChar( report, U'\n', -1 ) );

    // The last line has an end too.
    for( QV_INT i = 0; i < qvVectorLength( lines ) - 1; i++ )
        qvPrint( qv::Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( lines, i ) ) ) );
}

#include "qv/base/qv_generation.h"

#include "qv/base/qv_generation_private.h"
#include "qv/base/qv_monitor_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_component_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_int.h"

namespace
{
QV_MONITOR *qv___GenerationMonitor          = nullptr; // guards the number
QV_INT      qv___GenerationGenerationNumber = 0;       // what the next root gets

// Takes over the references to `parent`, which may be null, and to the parent's path, to which it appends `number`.
QV_GENERATION *createGeneration( QV_GENERATION *parent, QV_VECTOR *path, QV_INT number )
{
    QV_GENERATION *generation         = qv::create< QV_GENERATION >( qvGenerationSort() );
    generation->parent                = parent;
    generation->monitor               = qvMonitorCreate();
    generation->childGenerationNumber = 0;
    generation->path                  = path;
    qvVectorAppendInt( &generation->path, number );

    return generation;
}

void freeGeneration( QV_OBJ *thisObj )
{
    QV_GENERATION *generation = qvGenerationFrom( thisObj );
    qv::drop( generation->monitor );
    qv::drop( generation->path );

    // Ancestors that nobody else holds end here one by one, each with its parent taken out before. If each of them
    // released its own parent, a long line would need as many nested calls. A count of 1 is the reference in hand, so
    // no other thread reads the field.
    QV_GENERATION *ancestor = std::exchange( generation->parent, nullptr );

    while( ancestor && !qv::isShared( ancestor ) )
        qv::release( std::exchange( ancestor, std::exchange( ancestor->parent, nullptr ) ) );

    qv::release( ancestor );
}

QV_INT compareGenerations( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    return qvObjCompare( qv::obj( qvGenerationFrom( thisObj )->path ), qv::obj( qvGenerationFrom( thatObj )->path ) );
}

QV_STRING *generationToString( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_VECTOR           *path = qvGenerationFrom( thisObj )->path;
    qv::Ref< QV_STRING > text( qvStringCreate() );

    for( QV_INT i = 0; i < qvVectorLength( path ); i++ )
        qvStringAppendFormatCstr( text.at(), i == 0 ? "%~o" : ":%~o", -1, qvVectorObjAt( path, i ) );

    return text.give();
}
} // namespace

QV___FAMILY( Generation, QV_GENERATION, freeGeneration, compareGenerations, generationToString )

void qv___GenerationStartup( void )
{
    qv___GenerationMonitor          = qvMonitorCreate();
    qv___GenerationGenerationNumber = 0;
}

void qv___GenerationShutdown( void )
{
    qv::drop( qv___GenerationMonitor );
}

QV_GENERATION *qvGenerationCreate( void )
{
    qv::checkRun();
    QV_INT number;

    {
        qv::HeldMonitor held( qv___GenerationMonitor );
        QV_CHECK( QV_INT_ADD_OK( qv___GenerationGenerationNumber, 1 ) );
        number = qv___GenerationGenerationNumber++;
    }

    return createGeneration( nullptr, qvVectorCreate(), number );
}

QV_GENERATION *qvGenerationCreateWithParent( QV_GENERATION *parentGeneration )
{
    QV_CHECK( parentGeneration );

    QV_INT number;

    {
        qv::HeldMonitor held( parentGeneration->monitor );
        QV_CHECK( QV_INT_ADD_OK( parentGeneration->childGenerationNumber, 1 ) );
        number = parentGeneration->childGenerationNumber++;
    }

    return createGeneration( qv::retain( parentGeneration ), qv::retain( parentGeneration->path ), number );
}

QV_GENERATION *qvGenerationParent( QV_GENERATION *generation )
{
    QV_CHECK( generation );
    return generation->parent ? qv::retain( generation->parent ) : nullptr;
}

QV_BOOL qvGenerationHasParent( QV_GENERATION *generation )
{
    QV_CHECK( generation );
    return generation->parent ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvGenerationIsParent( QV_GENERATION *generation, QV_GENERATION *otherGeneration )
{
    QV_CHECK( generation );
    QV_CHECK( otherGeneration );

    return otherGeneration->parent == generation ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvGenerationIsChild( QV_GENERATION *generation, QV_GENERATION *otherGeneration )
{
    QV_CHECK( generation );
    QV_CHECK( otherGeneration );

    return qvGenerationIsParent( otherGeneration, generation );
}

QV_BOOL qvGenerationIsAncestor( QV_GENERATION *generation, QV_GENERATION *otherGeneration )
{
    QV_CHECK( generation );
    QV_CHECK( otherGeneration );

    for( QV_GENERATION *step = otherGeneration->parent; step; step = step->parent )
        if( step == generation )
            return QV_TRUE;

    return QV_FALSE;
}

QV_BOOL qvGenerationIsDescendant( QV_GENERATION *generation, QV_GENERATION *otherGeneration )
{
    QV_CHECK( generation );
    QV_CHECK( otherGeneration );

    return qvGenerationIsAncestor( otherGeneration, generation );
}

QV_BOOL qvGenerationIsOlder( QV_GENERATION *genA, QV_GENERATION *genB )
{
    QV_CHECK( genA );
    QV_CHECK( genB );

    return qvGenerationCompare( genA, genB ) < 0 ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvGenerationIsYounger( QV_GENERATION *genA, QV_GENERATION *genB )
{
    QV_CHECK( genA );
    QV_CHECK( genB );

    return qvGenerationCompare( genA, genB ) > 0 ? QV_TRUE : QV_FALSE;
}

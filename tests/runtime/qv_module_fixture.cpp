/* A module that the tests load. Each is built from this source with definitions of its own: FIXTURE is its name as a
   word, the others replace what stands here. It prints what is called in it. */

#include "qv/base/qv_string.h"
#include "qv/io/qv_print.h"
#include "qv/runtime/qv_module_record.h"

#define TEXT( word )    TEXT_OF( word )
#define TEXT_OF( word ) #word
#define JOIN( a, b )    JOIN_OF( a, b )
#define JOIN_OF( a, b ) a##b

#ifndef FIXTURE_NAME
#define FIXTURE_NAME TEXT( FIXTURE )
#endif
#ifndef FIXTURE_PRODUCT
#define FIXTURE_PRODUCT "morvane"
#endif
#ifndef FIXTURE_SYMBOL
#define FIXTURE_SYMBOL JOIN( FIXTURE, ___module )
#endif
#ifndef FIXTURE_DEPS
#define FIXTURE_DEPS ""
#endif
#ifndef FIXTURE_EXTS
#define FIXTURE_EXTS ""
#endif
#ifndef FIXTURE_STARTS
#define FIXTURE_STARTS QV_TRUE
#endif

QV_API QV_MODULE FIXTURE_SYMBOL;

#undef QV_THIS_MODULE
#define QV_THIS_MODULE FIXTURE_SYMBOL

typedef struct QV_FIXTURE_THING QV_FIXTURE_THING;
typedef struct QV_FIXTURE_ODD   QV_FIXTURE_ODD;

QV_FAMILY( FixtureThing, QV_FIXTURE_THING )
QV_FAMILY( FixtureOdd, QV_FIXTURE_ODD )

struct QV_FIXTURE_THING : QV_OBJ
{
};

struct QV_FIXTURE_ODD : QV_OBJ
{
};

namespace
{
void say( const char *what )
{
    qvPrintFormatCstr( "%lc %lc", -1, FIXTURE_NAME, what );
}

QV_BOOL startup( void )
{
    say( "startup" );
    return FIXTURE_STARTS;
}

void shutdownBegin( void )
{
    say( "shutdownBegin" );
}

void shutdown( void )
{
    say( "shutdown" );
}

void shutdownEnd( void )
{
    say( "shutdownEnd" );
}

// Makes as many things as `b` says in the array `a`, and one object of another sort behind them.
QV_INT personality( intptr_t a, intptr_t b )
{
    QV_OBJ **objects = reinterpret_cast< QV_OBJ ** >( a );

    for( intptr_t i = 0; i < b; i++ )
        objects[i] = qv___ObjCreate( sizeof( QV_FIXTURE_THING ), qvFixtureThingSort() );

    objects[b] = qv___ObjCreate( sizeof( QV_FIXTURE_ODD ), qvFixtureOddSort() );
    return b + 1;
}

QV_STRING *thingToString( QV_OBJ * )
{
    return qvStringCreateFromCstr( "a thing of " FIXTURE_NAME, -1 );
}

const QV_MODULE_RECORD record = { QV_MODULE_RECORD_VERSION,
                                  FIXTURE_PRODUCT,
                                  nullptr,
                                  -1,
                                  -1,
                                  -1,
                                  nullptr,
                                  nullptr,
                                  nullptr,
                                  FIXTURE_NAME,
                                  "Module of the tests",
                                  "1#2.3",
                                  FIXTURE_DEPS,
                                  FIXTURE_EXTS };
} // namespace

QV___FAMILY( FixtureThing, QV_FIXTURE_THING, nullptr, nullptr, thingToString )
QV___FAMILY( FixtureOdd, QV_FIXTURE_ODD, nullptr, nullptr, nullptr )

QV_MODULE FIXTURE_SYMBOL = {
    QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ),
    &record,
    startup,
    shutdownBegin,
    shutdown,
    shutdownEnd,
    personality,
    0,
    nullptr,
    nullptr };

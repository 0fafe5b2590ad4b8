/* A module that the tests load. Each is built from this source with a name of its own, QV_MODULE_NAME, and with what else
   its record contains, FIXTURE_INFO. It prints what is called in it. */

#include "qv/qv_extend.h"

#include <string.h>

#define NAME QV___QUOTE( QV_MODULE_NAME )

QV_LOCAL_FAMILY( FixtureThing, QV_FIXTURE_THING )
QV_LOCAL_FAMILY( FixtureOdd, QV_FIXTURE_ODD )

struct QV_FIXTURE_THING
{
    QV_OBJ obj;
};

struct QV_FIXTURE_ODD
{
    QV_OBJ obj;
};

static QV_STRING *thingToString( QV_OBJ *thisObj )
{
    (void)thisObj;
    return qvStringCreateFromCstr( "a thing of " NAME, -1 );
}

QV___FAMILY( FixtureThing, QV_FIXTURE_THING, NULL, NULL, thingToString )
QV___FAMILY( FixtureOdd, QV_FIXTURE_ODD, NULL, NULL, NULL )

static QV_BOOL startup( void )
{
    qvPrintCstr( NAME " startup", -1 );
    return strcmp( NAME, "unwilling" ) != 0;
}

static void shutdownBegin( void )
{
    qvPrintCstr( NAME " shutdownBegin", -1 );
}

static void shutdown( void )
{
    qvPrintCstr( NAME " shutdown", -1 );
}

static void shutdownEnd( void )
{
    qvPrintCstr( NAME " shutdownEnd", -1 );
}

/* Makes as many things as `b` says in the array `a`, and one object of another sort after them. */
static QV_INT makeObjects( intptr_t a, intptr_t b )
{
    QV_OBJ **objects = (QV_OBJ **)a;

    for( intptr_t i = 0; i < b; i++ )
        objects[i] = qv___ObjCreate( sizeof( QV_FIXTURE_THING ), qvFixtureThingSort() );

    objects[b] = qv___ObjCreate( sizeof( QV_FIXTURE_ODD ), qvFixtureOddSort() );
    return b + 1;
}

QV_MODULE_DEFINE(
    QV_MODULE_INFO(.productName = "morvane", .description = "Module of the tests", .version = "1#2.3", FIXTURE_INFO ),
    QV_MODULE_FUNCS( startup, shutdownBegin, shutdown, shutdownEnd, makeObjects ) );

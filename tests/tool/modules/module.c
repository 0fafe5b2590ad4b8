/* The modules that the tests of `morvane module` and of the examples load: one source, and what tells them apart is
   defined for each. */

#include <qv/qv_extend.h>
#include <unistd.h>

#ifndef DEPS
#define DEPS ""
#endif

#ifndef STARTS
#define STARTS QV_TRUE
#endif

#ifdef KEEPS
/* Objects that nobody releases. */
QV_LOCAL_FAMILY( Kept, QV_KEPT )

struct QV_KEPT
{
    QV_OBJ obj;
};

QV___FAMILY( Kept, QV_KEPT, NULL, NULL, NULL )
#endif

static QV_BOOL start( void )
{
#ifdef KEEPS
    for( int i = 0; i < KEEPS; i++ )
        qv___ObjCreate( sizeof( QV_KEPT ), qvKeptSort() );
#endif

    qvPrintCstr( "starts", -1 );
    return STARTS;
}

static void stop( void )
{
    qvPrintCstr( "stops", -1 );
}

#ifndef DETAILED
/* Prints all arguments but the first, which is the result, and `write`, for which it writes a line itself. */
static QV_INT run( intptr_t a, intptr_t b )
{
    QV_VECTOR *arguments = (QV_VECTOR *)a;
    QV_INT     result    = b ? 99 : 0;

    for( QV_INT i = 0; i < qvVectorLength( arguments ); i++ )
    {
        QV_STRING *argument = qvStringFrom( qvVectorObjAt( arguments, i ) );
        QV_INT     consumed;

        if( i == 0 )
            qvStringScanInt( argument, 0, -1, 10, &result, &consumed );
        else if( qvStringEqualsCstr( argument, "write", -1 ) )
            result += write( STDOUT_FILENO, "written\n", 8 ) != 8;
        else
            qvPrint( argument );

#ifndef LEAKS
        qvStringRelease( argument );
#endif
    }

    return result;
}
#endif

#if defined( MISNAMED )
static const QV_MODULE_RECORD record = { QV_MODULE_RECORD_VERSION, NULL,  NULL, -1, -1, -1, NULL, NULL, NULL, "another",
                                         "Bears a wrong name",     "1.0", "",   "" };
QV_MODULE                     QV_THIS_MODULE = {
    QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ), &record, start, NULL, stop, NULL, run, 0, NULL, NULL };
#elif defined( DETAILED )
QV_MODULE_DEFINE(
    QV_MODULE_INFO(
            .productName = "morvane", .productFriendlyName = "morvane", .productVersionMajor = 4,
            .productVersionMinor = 0, .productVendorName = "Wexcraft GmbH", .description = "Tells \303\241ll",
            .version = "2#5.1", .deps = DEPS, .exts = "extra more" ),
    QV_MODULE_FUNCS(.startupFunc = start, .shutdownFunc = stop ) );
#elif defined( STRANGE )
QV_MODULE_DEFINE(
    QV_MODULE_INFO(.productName = "another", .description = "For another product", .version = "1.0" ),
    QV_MODULE_FUNCS(.startupFunc = start, .shutdownFunc = stop, .personalityFunc = run ) );
#else
QV_MODULE_DEFINE(
    QV_MODULE_INFO(.description = "Gives its first argument", .version = "1.0", .deps = DEPS ),
    QV_MODULE_FUNCS(.startupFunc = start, .shutdownFunc = stop, .personalityFunc = run ) );
#endif

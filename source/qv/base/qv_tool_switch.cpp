#include "qv/base/qv_tool_switch.h"

#include "qv/base/qv_dict.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_tool_switch_private.h"
#include "qv/base/qv_vector.h"
#include "qv/io/qv_print.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"

struct QV_TOOL_SWITCH : QV_OBJ
{
    QV_DICT *tools; // String to tool object
};

struct QV___TOOL_SWITCH_TOOL : QV_OBJ
{
    QV_TOOL_SWITCH_FUNC func;
};

namespace
{
void freeToolSwitch( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );
    qv::drop( qvToolSwitchFrom( thisObj )->tools );
}

// The caller's own switch, to be written.
QV_TOOL_SWITCH *writableSwitch( QV_TOOL_SWITCH **ts )
{
    qv::makePrivate( ts, qvToolSwitchCreateFrom );
    return *ts;
}

// Prints the names, if there are any.
void printTools( QV_TOOL_SWITCH *ts )
{
    if( qvDictLength( ts->tools ) > 0 )
        qvPrintFormatCstr( "%~o", -1, qvToolSwitchToolsVector( ts ) );
}
} // namespace

QV___FAMILY( ToolSwitch, QV_TOOL_SWITCH, freeToolSwitch, nullptr, nullptr )

QV___FAMILY( ___ToolSwitchTool, QV___TOOL_SWITCH_TOOL, nullptr, nullptr, nullptr )

QV_TOOL_SWITCH *qvToolSwitchCreate( void )
{
    QV_TOOL_SWITCH *ts = qv::create< QV_TOOL_SWITCH >( qvToolSwitchSort() );
    ts->tools          = qvDictCreate();

    return ts;
}

QV_TOOL_SWITCH *qvToolSwitchCreateFrom( QV_TOOL_SWITCH *ts )
{
    QV_CHECK( ts );

    QV_TOOL_SWITCH *copy = qv::create< QV_TOOL_SWITCH >( qvToolSwitchSort() );
    copy->tools          = qv::retain( ts->tools );

    return copy;
}

QV_VECTOR *qvToolSwitchToolsVector( QV_TOOL_SWITCH *ts )
{
    QV_CHECK( ts );
    return qvDictKeysVector( ts->tools );
}

QV_BOOL qvToolSwitchHasTool( QV_TOOL_SWITCH *ts, QV_STRING *tool )
{
    QV_CHECK( ts );
    QV_CHECK( tool );

    return qvDictHasStringKey( ts->tools, tool );
}

QV_BOOL qvToolSwitchHasToolCstr( QV_TOOL_SWITCH *ts, const char *cstr, QV_INT length )
{
    return qvToolSwitchHasTool( ts, qv::asString( cstr, length ) );
}

QV_BOOL qvToolSwitchHasToolWcstr( QV_TOOL_SWITCH *ts, const wchar_t *wcstr, QV_INT length )
{
    return qvToolSwitchHasTool( ts, qv::asString( wcstr, length ) );
}

void qvToolSwitchSetTool( QV_TOOL_SWITCH **ts, QV_STRING *tool, QV_TOOL_SWITCH_FUNC func )
{
    QV_CHECK( ts );
    QV_CHECK( *ts );
    QV_CHECK( tool );

    qv::Ref< QV___TOOL_SWITCH_TOOL > entry( qv::create< QV___TOOL_SWITCH_TOOL >( qv___ToolSwitchToolSort() ) );
    entry->func = func;
    qvDictSetStringKey( &writableSwitch( ts )->tools, tool, qv___ToolSwitchToolObj( entry ) );
}

void qvToolSwitchSetToolCstr( QV_TOOL_SWITCH **ts, const char *cstr, QV_INT length, QV_TOOL_SWITCH_FUNC func )
{
    qvToolSwitchSetTool( ts, qv::asString( cstr, length ), func );
}

void qvToolSwitchSetToolWcstr( QV_TOOL_SWITCH **ts, const wchar_t *wcstr, QV_INT length, QV_TOOL_SWITCH_FUNC func )
{
    qvToolSwitchSetTool( ts, qv::asString( wcstr, length ), func );
}

void qvToolSwitchDelTool( QV_TOOL_SWITCH **ts, QV_STRING *tool )
{
    QV_CHECK( ts );
    QV_CHECK( *ts );
    QV_CHECK( tool );

    if( qvDictHasStringKey( ( *ts )->tools, tool ) )
        qvDictDelStringKey( &writableSwitch( ts )->tools, tool );
}

void qvToolSwitchDelToolCstr( QV_TOOL_SWITCH **ts, const char *cstr, QV_INT length )
{
    qvToolSwitchDelTool( ts, qv::asString( cstr, length ) );
}

void qvToolSwitchDelToolWcstr( QV_TOOL_SWITCH **ts, const wchar_t *wcstr, QV_INT length )
{
    qvToolSwitchDelTool( ts, qv::asString( wcstr, length ) );
}

QV_BOOL qvToolSwitchRunTool( QV_TOOL_SWITCH *ts, QV_VECTOR *argv, void *context )
{
    QV_CHECK( ts );
    QV_CHECK( argv );

    if( qvVectorLength( argv ) == 0 )
    {
        qvPrintCstr( "missing argument", -1 );
        printTools( ts );
        return QV_FALSE;
    }

    qv::Ref< QV_VECTOR > rest = qv::Ref< QV_VECTOR >::share( argv );
    qv::Ref< QV_OBJ >    first( qvVectorUnshift( rest.at() ) );
    qv::Ref< QV_STRING > name( qvObjToString( first ) );
    QV_INT               length    = qvDictLength( ts->tools );
    QV_INT               chosen    = -1;
    bool                 ambiguous = false;

    for( QV_INT i = 0; i < length; i++ )
    {
        qv::Ref< QV_STRING > key( qvStringFrom( qvDictKeyAt( ts->tools, i ) ) );

        if( qvStringEquals( key, name ) )
        {
            chosen = i;
            break;
        }

        if( !qvStringBeginsWith( key, name ) )
            continue;

        // A second candidate makes the name ambiguous, unless a later key is the whole name.
        chosen    = chosen < 0 && !ambiguous ? i : -1;
        ambiguous = chosen < 0;
    }

    if( chosen < 0 )
    {
        qvPrintFormatCstr( ambiguous ? "%s: ambiguous" : "%s: invalid argument", -1, name.get() );
        printTools( ts );
        return QV_FALSE;
    }

    qv::Ref< QV___TOOL_SWITCH_TOOL > tool( qv___ToolSwitchToolFrom( qvDictValueAt( ts->tools, chosen ) ) );

    return tool->func ? tool->func( rest, context ) : QV_TRUE;
}

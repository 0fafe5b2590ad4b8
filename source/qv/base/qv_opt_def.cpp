#include "qv/base/qv_opt_def.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_opt_seq.h"
#include "qv/base/qv_range_map.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_ref.h"

struct QV_OPT_DEF : QV_OBJ
{
    QV_RANGE_MAP *flagsForId;    // option id to boxed integer
    QV_DICT      *idForShortOpt; // boxed integer of the character to boxed integer
    QV_DICT      *idForLongOpt;  // String to boxed integer
    QV_INT        argOnly;
    QV_BOOL       reorder;
    QV_BOOL       stringize;
};

namespace
{
void freeOptDef( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_OPT_DEF *def = qvOptDefFrom( thisObj );
    qv::drop( def->flagsForId );
    qv::drop( def->idForShortOpt );
    qv::drop( def->idForLongOpt );
}

qv::Ref< QV_OBJ > boxedInt( QV_INT value )
{
    return qv::Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

// The caller's own definition, to be written.
QV_OPT_DEF *writableDef( QV_OPT_DEF **def )
{
    QV_CHECK( def );
    QV_CHECK( *def );

    qv::makePrivate( def, qvOptDefCreateFrom );
    return *def;
}
} // namespace

QV___FAMILY( OptDef, QV_OPT_DEF, freeOptDef, nullptr, nullptr )

QV_STRING *qvOptFlagsToString( QV_INT flags )
{
    static const char *const NAMES[] = { "ARGUMENT", "IGNORE", "ONCE", "NO_ABBREV" };

    qv::Ref< QV_STRING > result( qvStringCreate() );

    for( int bit = 0; bit < 4; bit++ )
        if( flags & ( 1 << bit ) )
            qvStringDelimitedAppendCstr( result.at(), NAMES[bit], -1, "|", -1 );

    return result.give();
}

QV_OPT_DEF *qvOptDefCreate( void )
{
    QV_OPT_DEF *def    = qv::create< QV_OPT_DEF >( qvOptDefSort() );
    def->flagsForId    = qvRangeMapCreateAutoCollapsing();
    def->idForShortOpt = qvDictCreate();
    def->idForLongOpt  = qvDictCreate();
    def->argOnly       = QV_OPT_SEQ_ARGUMENT_DISALLOWED_ALONE;
    def->reorder       = QV_FALSE;
    def->stringize     = QV_FALSE;

    return def;
}

QV_OPT_DEF *qvOptDefCreateFrom( QV_OPT_DEF *def )
{
    QV_CHECK( def );

    QV_OPT_DEF *copy    = qv::create< QV_OPT_DEF >( qvOptDefSort() );
    copy->flagsForId    = qv::retain( def->flagsForId );
    copy->idForShortOpt = qv::retain( def->idForShortOpt );
    copy->idForLongOpt  = qv::retain( def->idForLongOpt );
    copy->argOnly       = def->argOnly;
    copy->reorder       = def->reorder;
    copy->stringize     = def->stringize;

    return copy;
}

QV_BOOL qvOptDefReorder( QV_OPT_DEF *def )
{
    QV_CHECK( def );
    return def->reorder;
}

void qvOptDefSetReorder( QV_OPT_DEF **def, QV_BOOL value )
{
    writableDef( def )->reorder = value ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvOptDefStringize( QV_OPT_DEF *def )
{
    QV_CHECK( def );
    return def->stringize;
}

void qvOptDefSetStringize( QV_OPT_DEF **def, QV_BOOL value )
{
    writableDef( def )->stringize = value ? QV_TRUE : QV_FALSE;
}

QV_INT qvOptDefFlags( QV_OPT_DEF *def, QV_INT optId )
{
    QV_CHECK( def );
    QV_CHECK( optId >= 0 );

    return qv::takeInt( qvRangeMapIntKey( def->flagsForId, optId ), 0 );
}

void qvOptDefSetFlags( QV_OPT_DEF **def, QV_INT optId, QV_INT flags )
{
    QV_CHECK( def );
    QV_CHECK( *def );
    QV_CHECK( optId >= 0 );

    qvRangeMapSetIntKey( &writableDef( def )->flagsForId, optId, boxedInt( flags ) );
}

QV_INT qvOptDefShortOpt( QV_OPT_DEF *def, QV_CHAR optChar )
{
    QV_CHECK( def );
    QV_CHECK( QV_CHAR_OK( optChar ) );

    return qv::takeInt( qvDictIntKey( def->idForShortOpt, optChar ), -1 );
}

void qvOptDefSetShortOpt( QV_OPT_DEF **def, QV_CHAR optChar, QV_INT optId )
{
    QV_CHECK( def );
    QV_CHECK( *def );
    QV_CHECK( QV_CHAR_OK( optChar ) );

    qvDictSetIntKey( &writableDef( def )->idForShortOpt, optChar, boxedInt( optId ) );
}

QV_INT qvOptDefLongOpt( QV_OPT_DEF *def, QV_STRING *optString, QV_BOOL allowAbbreviated, QV_BOOL *abbreviated )
{
    QV_CHECK( def );
    QV_CHECK( optString );
    QV_CHECK( qvStringLength( optString ) > 0 );

    if( abbreviated )
        *abbreviated = QV_FALSE;

    qv::Ref< QV_OBJ > exact( qvDictStringKey( def->idForLongOpt, optString ) );

    if( exact )
        return qv::takeInt( exact.give(), -1 );

    if( !allowAbbreviated )
        return -1;

    QV_INT length = qvDictLength( def->idForLongOpt );
    QV_INT match  = -1;
    bool   found  = false;

    for( QV_INT i = 0; i < length; i++ )
    {
        qv::Ref< QV_STRING > name( qvStringFrom( qvDictKeyAt( def->idForLongOpt, i ) ) );

        if( !qvStringBeginsWith( name, optString ) )
            continue;

        if( abbreviated )
            *abbreviated = QV_TRUE;

        if( found )
            return QV_OPT_SEQ_AMBIGUOUS;

        found = true;
        match = qv::takeInt( qvDictValueAt( def->idForLongOpt, i ), -1 );
    }

    return match;
}

void qvOptDefSetLongOpt( QV_OPT_DEF **def, QV_STRING *optString, QV_INT optId )
{
    QV_CHECK( def );
    QV_CHECK( *def );
    QV_CHECK( optString );

    qvDictSetStringKey( &writableDef( def )->idForLongOpt, optString, boxedInt( optId ) );
}

void qvOptDefSetLongOptCstr( QV_OPT_DEF **def, const char *cstr, QV_INT length, QV_INT optId )
{
    qvOptDefSetLongOpt( def, qv::asString( cstr, length ), optId );
}

void qvOptDefSetLongOptWcstr( QV_OPT_DEF **def, const wchar_t *wcstr, QV_INT length, QV_INT optId )
{
    qvOptDefSetLongOpt( def, qv::asString( wcstr, length ), optId );
}

QV_INT qvOptDefArgOnly( QV_OPT_DEF *def )
{
    QV_CHECK( def );
    return def->argOnly;
}

void qvOptDefSetArgOnly( QV_OPT_DEF **def, QV_INT optId )
{
    writableDef( def )->argOnly = optId;
}

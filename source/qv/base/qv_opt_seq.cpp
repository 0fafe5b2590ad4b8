#include "qv/base/qv_opt_seq.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_range_map.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_real.h"

struct QV_OPT_SEQ : QV_OBJ
{
    QV_OPT_DEF   *def;
    QV_VECTOR    *argv; // what remains to be read
    QV_INT        id;   // of the last step
    QV_INT        idSecondary;
    QV_STRING    *opt;     // or null, as are the next two
    QV_OBJ       *arg;
    QV_STRING    *error;
    QV_RANGE_MAP *once;    // ids seen that may appear once
    QV_BOOL       options; // false behind `--`
};

namespace
{
const QV_CHAR DASH = U'-';

void freeOptSeq( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_OPT_SEQ *seq = qvOptSeqFrom( thisObj );
    qv::drop( seq->def );
    qv::drop( seq->argv );
    qv::drop( seq->opt );
    qv::drop( seq->arg );
    qv::drop( seq->error );
    qv::drop( seq->once );
}

template< class T >
T *shareOrNull( T *object )
{
    return object ? qv::retain( object ) : nullptr;
}

bool isText( QV_OBJ *object )
{
    return qvObjSort( object ) == qvStringSort();
}

// A `--` at the very end leaves nothing to report.
void dropFinalDashes( QV_OPT_SEQ *seq )
{
    if( qvVectorLength( seq->argv ) != 1 )
        return;

    qv::Ref< QV_OBJ > last( qvVectorObjAt( seq->argv, 0 ) );

    if( isText( last ) && qvStringEqualsCstr( qvStringFrom( last ), "--", -1 ) )
        qvVectorClear( &seq->argv );
}

void clearOption( QV_OPT_SEQ *seq )
{
    qv::assign( &seq->opt, static_cast< QV_STRING * >( nullptr ) );
    qv::assign( &seq->arg, static_cast< QV_OBJ * >( nullptr ) );
}

// The result for what the user did wrong, with its text.
QV_INT fail( QV_OPT_SEQ *seq, QV_INT id )
{
    static const char *const TEXTS[] = {
        "%s: option undefined",
        "%s: ambiguous",
        "%s: argument missing",
        "%s: argument disallowed",
        "%s: multiple options disallowed",
        "%s: abbreviated option disallowed" };

    if( id == QV_OPT_SEQ_ARGUMENT_DISALLOWED_ALONE )
        qv::assign( &seq->error, qvStringCreateFromCstr( "non-option argument disallowed", -1 ) );
    else
        qv::assign(
            &seq->error,
            qvStringCreateFromFormatCstr(
                id >= QV_OPT_SEQ_ABBREVIATED ? TEXTS[-1 - id] : "%s: error", -1, seq->opt ) );

    return id;
}

// The next element becomes the argument, if there is one.
bool takeArgument( QV_OPT_SEQ *seq, QV_INT i )
{
    if( i >= qvVectorLength( seq->argv ) )
        return false;

    qv::assign( &seq->arg, qvVectorObjAt( seq->argv, i ) );
    qvVectorDelAt( &seq->argv, i );

    return true;
}

QV_INT readPlainArgument( QV_OPT_SEQ *seq, QV_INT i )
{
    qv::Ref< QV_OBJ > element( qvVectorObjAt( seq->argv, i ) );
    qvVectorDelAt( &seq->argv, i );

    QV_INT argOnly = qvOptDefArgOnly( seq->def );

    if( argOnly < 0 )
        return fail( seq, QV_OPT_SEQ_ARGUMENT_DISALLOWED_ALONE );

    qv::assign( &seq->arg, element.give() );
    return argOnly;
}

// Reads the first option of a text like `-abc` and leaves the others.
QV_INT readShortOption( QV_OPT_SEQ *seq, QV_INT i, qv::Ref< QV_STRING > text )
{
    QV_CHAR c        = qvStringCharAt( text, 1 );
    QV_INT  id       = qvOptDefShortOpt( seq->def, c );
    bool    textLeft = qvStringLength( text ) > 2;

    if( textLeft )
    {
        qvStringDelInner( text.at(), 1, 1 );
        qvVectorSetObjAt( &seq->argv, i, qvStringObj( text ) );
    }
    else
    {
        qvVectorDelAt( &seq->argv, i );
    }

    qv::assign( &seq->opt, qvStringCreateFromFormatCstr( "-%c", -1, c ) );

    if( id < 0 )
        return fail( seq, id );

    if( !( qvOptDefFlags( seq->def, id ) & QV_OPT_FLAG_ARGUMENT ) )
        return id;

    if( textLeft )
    {
        qvVectorDelAt( &seq->argv, i );
        qvStringDelLeading( text.at(), 1 );
        qv::assign( &seq->arg, qvStringObj( text.give() ) );
    }
    else if( !takeArgument( seq, i ) )
    {
        return fail( seq, QV_OPT_SEQ_ARGUMENT_MISSING );
    }

    return id;
}

QV_INT readLongOption( QV_OPT_SEQ *seq, QV_INT i, qv::Ref< QV_STRING > text )
{
    qvVectorDelAt( &seq->argv, i );

    QV_INT equals = qvStringFindChar( text, 2, U'=' );

    if( equals >= 0 )
    {
        QV_INT valueAt = equals + 1;
        qv::assign(
            &seq->arg, qvStringObj( qvStringCreateFromInner( text, valueAt, qvStringLength( text ) - valueAt ) ) );
        qvStringDelTrailing( text.at(), qvStringLength( text ) - equals );
    }

    qv::assign( &seq->opt, qv::retain( text.get() ) );
    qvStringDelLeading( text.at(), 2 );

    QV_BOOL abbreviated = QV_FALSE;
    QV_INT  id          = qvStringLength( text ) > 0 ? qvOptDefLongOpt( seq->def, text, QV_TRUE, &abbreviated )
                                                     : QV_OPT_SEQ_UNDEFINED;

    if( id < 0 )
        return fail( seq, id );

    QV_INT flags = qvOptDefFlags( seq->def, id );

    if( ( flags & QV_OPT_FLAG_ARGUMENT ) && !seq->arg && !takeArgument( seq, i ) )
        return fail( seq, QV_OPT_SEQ_ARGUMENT_MISSING );

    if( ( flags & QV_OPT_FLAG_NO_ABBREV ) && abbreviated )
        return fail( seq, QV_OPT_SEQ_ABBREVIATED );

    if( !( flags & QV_OPT_FLAG_ARGUMENT ) && seq->arg )
        return fail( seq, QV_OPT_SEQ_ARGUMENT_DISALLOWED );

    return id;
}

QV_INT step( QV_OPT_SEQ *seq )
{
    QV_INT length = qvVectorLength( seq->argv );
    bool   passed = false;
    QV_INT i      = 0;

    while( i < qvVectorLength( seq->argv ) )
    {
        qv::Ref< QV_OBJ > obj( qvVectorObjAt( seq->argv, i ) );
        QV_CHECK( obj );

        if( !isText( obj ) && qvOptDefReorder( seq->def ) && seq->options )
        {
            passed = true;
            i++;

            if( i >= length )
                break;

            continue;
        }

        qv::Ref< QV_STRING > text;

        if( isText( obj ) )
            text.reset( qvStringFrom( obj.give() ) );

        if( !text || !seq->options || qvStringLength( text ) < 2 || qvStringCharAt( text, 0 ) != DASH )
            return readPlainArgument( seq, i );

        bool isLong = qvStringCharAt( text, 1 ) == DASH;

        if( isLong && qvStringLength( text ) == 2 )
        {
            seq->options = QV_FALSE;
            qvVectorDelAt( &seq->argv, i );
            return step( seq );
        }

        QV_INT id = isLong ? readLongOption( seq, i, std::move( text ) ) : readShortOption( seq, i, std::move( text ) );

        if( id < 0 )
            return id;

        QV_INT flags = qvOptDefFlags( seq->def, id );

        if( flags & QV_OPT_FLAG_ONCE )
        {
            if( qvRangeMapHasIntKey( seq->once, id ) )
                return fail( seq, QV_OPT_SEQ_MULTIPLE );

            qv::Ref< QV_BOXED_NULL > seen( qvBoxedNullCreate() );
            qvRangeMapSetIntKey( &seq->once, id, qvBoxedNullObj( seen ) );
        }

        if( !( flags & QV_OPT_FLAG_IGNORE ) )
            return id;

        clearOption( seq );
        i++;
    }

    // Objects that were passed over are read in order now.
    if( passed )
    {
        seq->options = QV_FALSE;
        return step( seq );
    }

    return QV_OPT_SEQ_NOTHING;
}

bool scansAsReal( QV_OPT_SEQ *seq, QV_REAL *value )
{
    qv::Ref< QV_STRING > text( qvOptSeqArgString( seq ) );
    QV_INT               consumed;

    return text && qvStringScanReal( text, 0, -1, -1, value, &consumed ) && consumed == qvStringLength( text );
}

bool scansAsInt( QV_OPT_SEQ *seq, QV_INT *value )
{
    qv::Ref< QV_STRING > text( qvOptSeqArgString( seq ) );
    QV_INT               consumed;

    return text && qvStringScanInt( text, 0, -1, -1, value, &consumed ) && consumed == qvStringLength( text );
}

bool scansAsBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric, QV_BOOL *value )
{
    qv::Ref< QV_STRING > text( qvOptSeqArgString( seq ) );
    QV_INT               consumed;

    return text && qvStringScanBool( text, 0, -1, allowNumeric, value, &consumed )
           && consumed == qvStringLength( text );
}

bool argHasSort( QV_OPT_SEQ *seq, QV_SORT *sort )
{
    return seq->arg && qvObjSort( seq->arg ) == sort;
}
} // namespace

QV___FAMILY( OptSeq, QV_OPT_SEQ, freeOptSeq, nullptr, nullptr )

QV_OPT_SEQ *qvOptSeqCreate( QV_OPT_DEF *def, QV_VECTOR *argv )
{
    QV_CHECK( def );
    QV_CHECK( argv );

    QV_OPT_SEQ *seq  = qv::create< QV_OPT_SEQ >( qvOptSeqSort() );
    seq->def         = qv::retain( def );
    seq->argv        = qv::retain( argv );
    seq->id          = QV_OPT_SEQ_NOTHING;
    seq->idSecondary = QV_OPT_SEQ_NOTHING;
    seq->opt         = nullptr;
    seq->arg         = nullptr;
    seq->error       = nullptr;
    seq->once        = qvRangeMapCreateAutoCollapsing();
    seq->options     = QV_TRUE;

    if( qvOptDefStringize( def ) )
        qvVectorStringize( &seq->argv );

    dropFinalDashes( seq );
    return seq;
}

QV_VECTOR *qvOptSeqRemainingArgv( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return qv::retain( seq->argv );
}

QV_BOOL qvOptSeqHasNext( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return qvVectorLength( seq->argv ) > 0 ? QV_TRUE : QV_FALSE;
}

QV_INT qvOptSeqNext( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    clearOption( seq );
    qv::assign( &seq->error, static_cast< QV_STRING * >( nullptr ) );

    QV_INT length = qvVectorLength( seq->argv );
    QV_CHECK( length );

    seq->id          = step( seq );
    seq->idSecondary = seq->id;
    dropFinalDashes( seq );

    return seq->id;
}

QV_INT qvOptSeqId( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return seq->id;
}

QV_INT qvOptSeqIdSecondary( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return seq->idSecondary;
}

QV_BOOL qvOptSeqHasOpt( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return seq->opt ? QV_TRUE : QV_FALSE;
}

QV_STRING *qvOptSeqOpt( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return shareOrNull( seq->opt );
}

QV_BOOL qvOptSeqHasArg( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return seq->arg ? QV_TRUE : QV_FALSE;
}

QV_OBJ *qvOptSeqArgObj( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return shareOrNull( seq->arg );
}

QV_STRING *qvOptSeqArgString( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return seq->arg ? qvObjToString( seq->arg ) : nullptr;
}

QV_BOOL qvOptSeqArgIsReal( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    QV_REAL ignored;

    return argHasSort( seq, qvBoxedRealSort() ) || argHasSort( seq, qvBoxedIntSort() ) || scansAsReal( seq, &ignored )
               ? QV_TRUE
               : QV_FALSE;
}

QV_REAL qvOptSeqArgReal( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    if( argHasSort( seq, qvBoxedRealSort() ) )
        return qvBoxedRealValue( qvBoxedRealFrom( seq->arg ) );

    if( argHasSort( seq, qvBoxedIntSort() ) )
        return static_cast< QV_REAL >( qvBoxedIntValue( qvBoxedIntFrom( seq->arg ) ) );

    QV_REAL value;

    return scansAsReal( seq, &value ) ? value : 0.0;
}

QV_BOOL qvOptSeqArgIsInt( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    QV_INT ignored;

    return argHasSort( seq, qvBoxedRealSort() ) || argHasSort( seq, qvBoxedIntSort() ) || scansAsInt( seq, &ignored )
               ? QV_TRUE
               : QV_FALSE;
}

QV_INT qvOptSeqArgInt( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    if( argHasSort( seq, qvBoxedIntSort() ) )
        return qvBoxedIntValue( qvBoxedIntFrom( seq->arg ) );

    if( argHasSort( seq, qvBoxedRealSort() ) )
        return qvRealToInt( qvBoxedRealValue( qvBoxedRealFrom( seq->arg ) ) );

    QV_INT value;

    return scansAsInt( seq, &value ) ? value : 0;
}

QV_BOOL qvOptSeqArgIsBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric )
{
    QV_CHECK( seq );

    QV_BOOL ignored;

    return ( allowNumeric && qvOptSeqArgIsReal( seq ) ) || argHasSort( seq, qvBoxedBoolSort() )
                   || scansAsBool( seq, allowNumeric, &ignored )
               ? QV_TRUE
               : QV_FALSE;
}

QV_BOOL qvOptSeqArgBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric )
{
    QV_CHECK( seq );

    if( argHasSort( seq, qvBoxedBoolSort() ) )
        return qvBoxedBoolValue( qvBoxedBoolFrom( seq->arg ) );

    QV_BOOL value;

    return scansAsBool( seq, allowNumeric, &value ) ? value : QV_FALSE;
}

QV_BOOL qvOptSeqHasError( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return seq->error ? QV_TRUE : QV_FALSE;
}

QV_STRING *qvOptSeqError( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return shareOrNull( seq->error );
}

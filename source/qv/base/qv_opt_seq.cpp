#include "qv/base/qv_opt_seq.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_range_map.h"
#include "qv/base/qv_scan_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_real.h"

namespace
{
// One element of what remains to be read. They are linked, in order, by their indexes in one block.
struct Argument
{
    QV_OBJ *obj;
    QV_INT  letters; // how many of the options of a text like `-abc` were read
    QV_INT  next;    // or NONE
    QV_INT  runEnd;  // if this is no text: the index of an element up to which all that remain are no texts
};
} // namespace

struct QV_OPT_SEQ : QV_OBJ
{
    QV_OPT_DEF   *def;
    Argument     *args;   // as they were given
    QV_INT        first;  // of those that remain, or NONE
    QV_INT        length; // how many remain
    QV_VECTOR    *argv;   // what remains, as a Vector; null until a caller asks for it
    QV_INT        id;     // of the last step
    QV_INT        idSecondary;
    QV_STRING    *opt; // or null, as are the next two
    QV_OBJ       *arg;
    QV_STRING    *error;
    QV_RANGE_MAP *once;    // ids seen that may appear once
    QV_BOOL       options; // false after `--`
};

namespace
{
const QV_INT  NONE = -1;
const QV_CHAR DASH = U'-';

bool isText( QV_OBJ *object )
{
    return qvObjSort( object ) == qvStringSort();
}

/* What remains to be read ---------------------------------------------------------------------------------------- */

// Whether the links lead through all that remains, and runs hold no texts. Checked where few elements remain, since it
// is checked in every step.
[[maybe_unused]] bool isSoundOptSeq( QV_OPT_SEQ *seq )
{
    const QV_INT FEW = 64;

    if( seq->length > FEW )
        return true;

    QV_INT count = 0, runEnd = NONE;

    for( QV_INT i = seq->first; i != NONE && count <= FEW; i = seq->args[i].next, count++ )
    {
        if( isText( seq->args[i].obj ) ? runEnd > i : seq->args[i].runEnd < i )
            return false;

        runEnd = qvIntMax( runEnd, seq->args[i].runEnd );
    }

    return count == seq->length;
}

// The element as it would be without the options that were read from it, as a new reference.
QV_OBJ *whatIsLeft( const Argument &argument )
{
    if( argument.letters == 0 )
        return qv::retain( argument.obj );

    QV_STRING           *whole = qvStringFrom( argument.obj );
    QV_INT               from  = argument.letters;
    qv::Ref< QV_STRING > text( qvStringCreateFromInner( whole, from, qvStringLength( whole ) - from ) );
    qvStringSetCharAt( text.at(), 0, DASH );

    return qvStringObj( text.give() );
}

void forgetVector( QV_OPT_SEQ *seq )
{
    qv::assign( &seq->argv, static_cast< QV_VECTOR * >( nullptr ) );
}

// Drops the element that the link `at` leads to.
void dropNext( QV_OPT_SEQ *seq, QV_INT *at )
{
    Argument &dropped = seq->args[*at];

    // What follows in a run is a run too.
    if( dropped.runEnd > *at )
        seq->args[dropped.next].runEnd = dropped.runEnd;

    *at = dropped.next;
    seq->length--;
    qv::release( dropped.obj );
    forgetVector( seq );
}

// The same; returns what is left of the element.
qv::Ref< QV_OBJ > takeNext( QV_OPT_SEQ *seq, QV_INT *at )
{
    qv::Ref< QV_OBJ > taken( whatIsLeft( seq->args[*at] ) );
    dropNext( seq, at );

    return taken;
}

// Passes over the element that the link `at` leads to, which is no text, and all others up to the next text. Returns
// the link after them. The first one remembers the last one, so that no later step walks through them again.
QV_INT *passObjects( QV_OPT_SEQ *seq, QV_INT *at )
{
    QV_INT last = seq->args[*at].runEnd;

    for( QV_INT next; ( next = seq->args[last].next ) != NONE && !isText( seq->args[next].obj ); )
        last = seq->args[next].runEnd;

    seq->args[*at].runEnd = last;
    return &seq->args[last].next;
}

void dropAll( QV_OPT_SEQ *seq )
{
    while( seq->first != NONE )
        dropNext( seq, &seq->first );
}

// A `--` at the very end leaves nothing to report.
void dropFinalDashes( QV_OPT_SEQ *seq )
{
    QV_ASSERT( isSoundOptSeq( seq ) );

    if( seq->length != 1 )
        return;

    const Argument &last = seq->args[seq->first];

    if( !isText( last.obj ) || qvStringLength( qvStringFrom( last.obj ) ) - last.letters != 2 )
        return;

    qv::Ref< QV_OBJ > left( whatIsLeft( last ) );

    if( qvStringEqualsCstr( qvStringFrom( left ), "--", -1 ) )
        dropAll( seq );
}

void freeOptSeq( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_OPT_SEQ *seq = qvOptSeqFrom( thisObj );
    dropAll( seq );
    qvMemFree( seq->args );
    qv::drop( seq->def );
    qv::drop( seq->argv );
    qv::drop( seq->opt );
    qv::drop( seq->arg );
    qv::drop( seq->error );
    qv::drop( seq->once );
}

/* One step ------------------------------------------------------------------------------------------------------- */

void clearOption( QV_OPT_SEQ *seq )
{
    qv::assign( &seq->opt, static_cast< QV_STRING * >( nullptr ) );
    qv::assign( &seq->arg, static_cast< QV_OBJ * >( nullptr ) );
}

// The result for what the user did wrong, with its text.
QV_INT failStep( QV_OPT_SEQ *seq, QV_INT id )
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
            qvStringCreateFromFormatCstr( id >= QV_OPT_SEQ_ABBREVIATED ? TEXTS[-1 - id] : "%s: error", -1, seq->opt ) );

    return id;
}

// The next element becomes the argument, if there is one.
bool takeArgument( QV_OPT_SEQ *seq, QV_INT *at )
{
    if( *at == NONE )
        return false;

    qv::assign( &seq->arg, takeNext( seq, at ).give() );
    return true;
}

QV_INT readPlainArgument( QV_OPT_SEQ *seq, QV_INT *at )
{
    qv::Ref< QV_OBJ > element = takeNext( seq, at );
    QV_INT            argOnly = qvOptDefArgOnly( seq->def );

    if( argOnly < 0 )
        return failStep( seq, QV_OPT_SEQ_ARGUMENT_DISALLOWED_ALONE );

    qv::assign( &seq->arg, element.give() );
    return argOnly;
}

// Reads the first option of a text like `-abc` and leaves the others.
QV_INT readShortOption( QV_OPT_SEQ *seq, QV_INT *at, qv::Ref< QV_STRING > text )
{
    QV_INT  letter   = ++seq->args[*at].letters;
    QV_CHAR c        = qvStringCharAt( text, letter );
    QV_INT  id       = qvOptDefShortOpt( seq->def, c );
    QV_INT  left     = qvStringLength( text ) - letter - 1;
    bool    takesArg = id >= 0 && ( qvOptDefFlags( seq->def, id ) & QV_OPT_FLAG_ARGUMENT );

    if( left > 0 && !takesArg )
        forgetVector( seq );
    else
        dropNext( seq, at );

    qv::assign( &seq->opt, qvStringCreateFromFormatCstr( "-%c", -1, c ) );

    if( id < 0 )
        return failStep( seq, id );

    if( takesArg && left > 0 )
        qv::assign( &seq->arg, qvStringObj( qvStringCreateFromInner( text, letter + 1, left ) ) );
    else if( takesArg && !takeArgument( seq, at ) )
        return failStep( seq, QV_OPT_SEQ_ARGUMENT_MISSING );

    return id;
}

QV_INT readLongOption( QV_OPT_SEQ *seq, QV_INT *at )
{
    qv::Ref< QV_STRING > text( qvStringFrom( takeNext( seq, at ).give() ) );
    QV_INT               equals = qvStringFindChar( text, 2, U'=' );

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
    QV_INT  id =
        qvStringLength( text ) > 0 ? qvOptDefLongOpt( seq->def, text, QV_TRUE, &abbreviated ) : QV_OPT_SEQ_UNDEFINED;

    if( id < 0 )
        return failStep( seq, id );

    QV_INT flags = qvOptDefFlags( seq->def, id );

    if( ( flags & QV_OPT_FLAG_ARGUMENT ) && !seq->arg && !takeArgument( seq, at ) )
        return failStep( seq, QV_OPT_SEQ_ARGUMENT_MISSING );

    if( ( flags & QV_OPT_FLAG_NO_ABBREV ) && abbreviated )
        return failStep( seq, QV_OPT_SEQ_ABBREVIATED );

    if( !( flags & QV_OPT_FLAG_ARGUMENT ) && seq->arg )
        return failStep( seq, QV_OPT_SEQ_ARGUMENT_DISALLOWED );

    return id;
}

// Elements that are no texts are passed over as long as options may follow; they are read, in order, when nothing else
// remains. What comes after an ignored option is left for the next step.
QV_INT readStep( QV_OPT_SEQ *seq )
{
    const QV_INT length    = seq->length;
    QV_INT      *at        = &seq->first; // the link to the element that is looked at
    bool         afterPass = false;

    while( *at != NONE )
    {
        const Argument &next = seq->args[*at];
        QV_OBJ         *obj  = next.obj;
        QV_CHECK( obj );

        if( !isText( obj ) && qvOptDefReorder( seq->def ) && seq->options )
        {
            at        = passObjects( seq, at );
            afterPass = true;
            continue;
        }

        afterPass = false;

        if( !isText( obj ) )
            return readPlainArgument( seq, at );

        qv::Ref< QV_STRING > text = qv::Ref< QV_STRING >::share( qvStringFrom( obj ) );
        QV_INT               left = qvStringLength( text ) - next.letters;

        if( !seq->options || left < 2 || qvStringCharAt( text, 0 ) != DASH )
            return readPlainArgument( seq, at );

        bool isLong = qvStringCharAt( text, 1 + next.letters ) == DASH;

        if( isLong && left == 2 )
        {
            seq->options = QV_FALSE;
            dropNext( seq, at );
            return readStep( seq );
        }

        QV_INT id = isLong ? readLongOption( seq, at ) : readShortOption( seq, at, std::move( text ) );

        if( id < 0 )
            return id;

        QV_INT flags = qvOptDefFlags( seq->def, id );

        if( flags & QV_OPT_FLAG_ONCE )
        {
            if( qvRangeMapHasIntKey( seq->once, id ) )
                return failStep( seq, QV_OPT_SEQ_MULTIPLE );

            qv::Ref< QV_BOXED_NULL > seen( qvBoxedNullCreate() );
            qvRangeMapSetIntKey( &seq->once, id, qvBoxedNullObj( seen ) );
        }

        if( !( flags & QV_OPT_FLAG_IGNORE ) )
            return id;

        clearOption( seq );

        // What comes after the ignored option is left, unless it is passed over anyway.
        if( *at != NONE && ( isText( seq->args[*at].obj ) || !qvOptDefReorder( seq->def ) ) )
            at = &seq->args[*at].next;
    }

    // There were only elements that were passed over.
    if( afterPass && seq->length == length )
    {
        seq->options = QV_FALSE;
        return readStep( seq );
    }

    return QV_OPT_SEQ_NOTHING;
}

/* Arguments of a kind -------------------------------------------------------------------------------------------- */

bool argHasSort( QV_OPT_SEQ *seq, QV_SORT *sort )
{
    return seq->arg && qvObjSort( seq->arg ) == sort;
}

// The text of an argument that is a text or a boxed number; null for any other object, whatever its text.
qv::Ref< QV_STRING > scannedText( QV_OPT_SEQ *seq )
{
    bool scanned = argHasSort( seq, qvStringSort() ) || argHasSort( seq, qvBoxedIntSort() )
                   || argHasSort( seq, qvBoxedRealSort() );

    return qv::Ref< QV_STRING >( scanned ? qvObjToString( seq->arg ) : nullptr );
}

// Whether the argument is a real, which `*value` becomes then. The next two are the same for the other kinds.
bool readReal( QV_OPT_SEQ *seq, QV_REAL *value )
{
    if( argHasSort( seq, qvBoxedRealSort() ) )
        *value = qvBoxedRealValue( qvBoxedRealFrom( seq->arg ) );
    else if( argHasSort( seq, qvBoxedIntSort() ) )
        *value = static_cast< QV_REAL >( qvBoxedIntValue( qvBoxedIntFrom( seq->arg ) ) );
    else
    {
        qv::Ref< QV_STRING > text = scannedText( seq );
        return text && qv::scansAsReal( text, -1, value );
    }

    return true;
}

bool readInt( QV_OPT_SEQ *seq, QV_INT *value )
{
    if( argHasSort( seq, qvBoxedIntSort() ) )
        *value = qvBoxedIntValue( qvBoxedIntFrom( seq->arg ) );
    else if( argHasSort( seq, qvBoxedRealSort() ) )
        *value = qvRealToInt( qvBoxedRealValue( qvBoxedRealFrom( seq->arg ) ) );
    else
    {
        qv::Ref< QV_STRING > text = scannedText( seq );
        return text && qv::scansAsInt( text, -1, value );
    }

    return true;
}

// Here `*value` becomes false if the argument is no truth value.
bool readBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric, QV_BOOL *value )
{
    if( argHasSort( seq, qvBoxedBoolSort() ) )
    {
        *value = qvBoxedBoolValue( qvBoxedBoolFrom( seq->arg ) );
        return true;
    }

    qv::Ref< QV_STRING > text = scannedText( seq );

    if( text && qv::scansAsBool( text, allowNumeric, value ) )
        return true;

    // The text of a boxed NaN or infinity is no number.
    *value = QV_FALSE;
    return allowNumeric && argHasSort( seq, qvBoxedRealSort() );
}
} // namespace

QV___FAMILY( OptSeq, QV_OPT_SEQ, freeOptSeq, nullptr, nullptr )

QV_OPT_SEQ *qvOptSeqCreate( QV_OPT_DEF *def, QV_VECTOR *argv )
{
    QV_CHECK( def );
    QV_CHECK( argv );

    qv::Ref< QV_VECTOR > given = qv::Ref< QV_VECTOR >::share( argv );

    if( qvOptDefStringize( def ) )
        qvVectorStringize( given.at() );

    QV_OPT_SEQ *seq  = qv::create< QV_OPT_SEQ >( qvOptSeqSort() );
    seq->def         = qv::retain( def );
    seq->args        = nullptr;
    seq->first       = NONE;
    seq->length      = qvVectorLength( given );
    seq->id          = QV_OPT_SEQ_NOTHING;
    seq->idSecondary = QV_OPT_SEQ_NOTHING;
    seq->opt         = nullptr;
    seq->arg         = nullptr;
    seq->error       = nullptr;
    seq->once        = qvRangeMapCreateAutoCollapsing();
    seq->options     = QV_TRUE;

    if( seq->length > 0 )
        seq->args = static_cast< Argument * >( qvMemAllocN( seq->length, sizeof( Argument ) ) );

    for( QV_INT i = seq->length; i-- > 0; seq->first = i )
        seq->args[i] = { qvVectorObjAt( given, i ), 0, seq->first, i };

    seq->argv = given.give();
    dropFinalDashes( seq );
    return seq;
}

QV_VECTOR *qvOptSeqRemainingArgv( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    if( !seq->argv )
    {
        qv::Ref< QV_VECTOR > argv( qvVectorCreate() );

        for( QV_INT i = seq->first; i != NONE; i = seq->args[i].next )
            qvVectorAppendObj( argv.at(), qv::Ref< QV_OBJ >( whatIsLeft( seq->args[i] ) ) );

        seq->argv = argv.give();
    }

    return qv::retain( seq->argv );
}

QV_BOOL qvOptSeqHasNext( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return seq->length > 0 ? QV_TRUE : QV_FALSE;
}

QV_INT qvOptSeqNext( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    clearOption( seq );
    qv::assign( &seq->error, static_cast< QV_STRING * >( nullptr ) );

    QV_INT length = seq->length;
    QV_CHECK( length );

    seq->id          = readStep( seq );
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
    return qv::Ref< QV_STRING >::share( seq->opt ).give();
}

QV_BOOL qvOptSeqHasArg( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return seq->arg ? QV_TRUE : QV_FALSE;
}

QV_OBJ *qvOptSeqArgObj( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return qv::Ref< QV_OBJ >::share( seq->arg ).give();
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
    return readReal( seq, &ignored ) ? QV_TRUE : QV_FALSE;
}

QV_REAL qvOptSeqArgReal( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    QV_REAL value;
    return readReal( seq, &value ) ? value : 0.0;
}

QV_BOOL qvOptSeqArgIsInt( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    QV_INT ignored;
    return readInt( seq, &ignored ) ? QV_TRUE : QV_FALSE;
}

QV_INT qvOptSeqArgInt( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );

    QV_INT value;
    return readInt( seq, &value ) ? value : 0;
}

QV_BOOL qvOptSeqArgIsBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric )
{
    QV_CHECK( seq );

    QV_BOOL ignored;
    return readBool( seq, allowNumeric, &ignored ) ? QV_TRUE : QV_FALSE;
}

QV_BOOL qvOptSeqArgBool( QV_OPT_SEQ *seq, QV_BOOL allowNumeric )
{
    QV_CHECK( seq );

    QV_BOOL value;
    readBool( seq, allowNumeric, &value );

    return value;
}

QV_BOOL qvOptSeqHasError( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return seq->error ? QV_TRUE : QV_FALSE;
}

QV_STRING *qvOptSeqError( QV_OPT_SEQ *seq )
{
    QV_CHECK( seq );
    return qv::Ref< QV_STRING >::share( seq->error ).give();
}

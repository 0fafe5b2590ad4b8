#include "qv/base/qv_options.h"

#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_opt_seq.h"
#include "qv/base/qv_options_private.h"
#include "qv/base/qv_scan_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/unicode/qv_unicode_properties.h"

#include <math.h>

using qv::Option;
using qv::Ref;
using qv::takesArgument;

namespace
{
// A reference, or null, for a field of a copy.
template< class T >
T *sharedOrNull( T *object )
{
    return Ref< T >::share( object ).give();
}

void freeOption( Option &option )
{
    qv::release( option.name );
    qv::release( option.argument );
    qv::release( option.text );
    qv::release( option.group );
    qv::release( option.fallback );
    qv::release( option.given );
}

void freeOptions( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_OPTIONS *options = qvOptionsFrom( thisObj );

    for( QV_INT i = 0; i < options->count; i++ )
        freeOption( options->all[i] );

    qvMemFree( options->all );
    qv::drop( options->program );
    qv::drop( options->words );
    qv::drop( options->text );
    qv::drop( options->notes );
    qv::drop( options->group );
    qv::drop( options->error );
    qv::drop( options->given );
    qv::drop( options->def );
}

// The caller's own Options, to be written.
QV_OPTIONS *writableOptions( QV_OPTIONS **options )
{
    QV_CHECK( options );
    QV_CHECK( *options );

    qv::makePrivate( options, qvOptionsCreateFrom );
    return *options;
}

Option &optionOf( QV_OPTIONS *options, QV_INT option )
{
    QV_CHECK( options );
    QV_CHECK( option >= 0 );
    QV_CHECK( option < options->count );

    return options->all[option];
}

Option &writableOption( QV_OPTIONS **options, QV_INT option )
{
    return optionOf( writableOptions( options ), option );
}

// Enters what an OptSeq has to know about an option.
void defineFlags( QV_OPTIONS *options, QV_INT option )
{
    const Option &one = options->all[option];

    qvOptDefSetFlags(
        &options->def, option,
        ( takesArgument( one ) ? QV_OPT_FLAG_ARGUMENT : 0 )
            | ( one.flags & QV_OPTION_FLAG_ONCE ? QV_OPT_FLAG_ONCE : 0 ) );
}

/* Arguments ------------------------------------------------------------------------------------------------------ */

// The argument that counts, borrowed; null if there is none.
Ref< QV_STRING > argumentOf( const Option &option )
{
    if( option.given )
        return Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( option.given, qvVectorLength( option.given ) - 1 ) ) );

    return Ref< QV_STRING >::share( option.fallback );
}

// The index of a word in a text like `nfc|nfd`, or -1.
QV_INT choiceOf( QV_STRING *words, QV_STRING *argument )
{
    Ref< QV_VECTOR > choices( qvStringSplitChar( words, U'|', -1 ) );
    return qvVectorIndexOfObj( choices, qvStringObj( argument ), QV_TRUE );
}

struct Unit
{
    const char *name;
    QV_INT      milliseconds;
};

const Unit UNITS[] = { { "ms", 1 },      { "s", 1000 },    { "m", 60000 },
                       { "min", 60000 }, { "h", 3600000 }, { "d", 86400000 } };

// Reads a duration in milliseconds: numbers with units, or a number of seconds. False if the text is none, or if it is
// beyond QV_INT.
bool scansAsDuration( QV_STRING *text, QV_INT *milliseconds )
{
    const QV_CHAR *at = qv::chars( text ), *start = at, *end = at + qvStringLength( text );
    auto           isDigit = [&] { return at < end && *at >= U'0' && *at <= U'9'; };

    *milliseconds = 0;

    while( at < end )
    {
        const QV_CHAR *number  = at;
        bool           isFirst = at == start;
        QV_INT         whole = 0, part = 0, scale = 1;

        for( ; isDigit(); at++ )
            whole = qvIntAddSaturating( qvIntMulSaturating( whole, 10 ), *at - U'0' );

        bool isNumber = at > number;

        if( at < end && *at == U'.' )
        {
            number = ++at;

            for( ; isDigit(); at++ )
                if( scale < 1000000000 )
                {
                    part = part * 10 + ( *at - U'0' );
                    scale *= 10;
                }

            isNumber = at > number;
        }

        const QV_CHAR *unit = at;

        while( at < end && *at >= U'a' && *at <= U'z' )
            at++;

        Ref< QV_STRING > name( qvStringCreateFromCharsCopy( unit, at - unit ) );
        QV_INT           factor = isFirst && unit == end ? 1000 : 0;

        for( const Unit &each : UNITS )
            if( qvStringEqualsCstr( name, each.name, -1 ) )
                factor = each.milliseconds;

        if( !isNumber || factor == 0 || whole > QV_INT_MAX / factor )
            return false;

        *milliseconds = qvIntAddSaturating( *milliseconds, whole * factor );
        *milliseconds = qvIntAddSaturating( *milliseconds, part * factor / scale );
    }

    return end > start && *milliseconds < QV_INT_MAX;
}

// Reads an argument as a whole number of its type.
bool readWhole( const Option &option, QV_STRING *argument, QV_INT *value )
{
    if( option.type == QV_OPTION_TYPE_CHOICE )
    {
        *value = choiceOf( option.argument, argument );
        return *value >= 0;
    }

    bool ok = option.type == QV_OPTION_TYPE_DURATION ? scansAsDuration( argument, value )
                                                     : qv::scansAsInt( argument, -1, value );

    return ok && *value >= option.least && *value <= option.most;
}

bool readReal( const Option &option, QV_STRING *argument, QV_REAL *value )
{
    return qv::scansAsReal( argument, -1, value ) && *value >= option.leastReal && *value <= option.mostReal;
}

// A real without zeros at its end.
QV_STRING *plainReal( QV_REAL value )
{
    Ref< QV_STRING > text( qvStringCreateFromFormatCstr( "%r", -1, value ) );

    while( qvStringEndsWithChar( text, U'0' ) )
        qvStringDelTrailing( text.at(), 1 );

    if( qvStringEndsWithChar( text, U'.' ) )
        qvStringDelTrailing( text.at(), 1 );

    return text.give();
}

QV_STRING *plainInt( QV_INT value )
{
    return qvStringCreateFromFormatCstr( "%i", -1, value );
}

// What a value has to be, with the bounds that there are, which the call takes over, and their unit.
QV_STRING *withBounds( const char *kind, QV_STRING *least, QV_STRING *most, const char *unit )
{
    if( least && most )
        return qvStringCreateFromFormatCstr( "%lc from %~s to %~s%lc", -1, kind, least, most, unit );

    if( least )
        return qvStringCreateFromFormatCstr( "%lc of at least %~s%lc", -1, kind, least, unit );

    if( most )
        return qvStringCreateFromFormatCstr( "%lc of at most %~s%lc", -1, kind, most, unit );

    return qvStringCreateFromCstr( kind, -1 );
}

// What an argument has to be, as a sentence goes on after "is not"; null if it is that.
QV_STRING *demandOn( const Option &option, QV_STRING *argument )
{
    QV_INT  whole;
    QV_REAL real;

    switch( option.type )
    {
    case QV_OPTION_TYPE_CHOICE:
        if( readWhole( option, argument, &whole ) )
            return nullptr;

        return qvStringCreateFromFormatCstr( "one of %s", -1, option.argument );

    case QV_OPTION_TYPE_INTEGER:
        if( readWhole( option, argument, &whole ) )
            return nullptr;

        return withBounds(
            "an integer", option.least == QV_INT_MIN ? nullptr : plainInt( option.least ),
            option.most == QV_INT_MAX ? nullptr : plainInt( option.most ), "" );

    case QV_OPTION_TYPE_DURATION:
        if( readWhole( option, argument, &whole ) )
            return nullptr;

        // No duration is below 0.
        return withBounds(
            "a duration like 90s or 1h30m", option.least <= 0 ? nullptr : plainInt( option.least ),
            option.most == QV_INT_MAX ? nullptr : plainInt( option.most ), " milliseconds" );

    case QV_OPTION_TYPE_REAL:
        if( readReal( option, argument, &real ) )
            return nullptr;

        return withBounds(
            "a number", isinf( option.leastReal ) ? nullptr : plainReal( option.leastReal ),
            isinf( option.mostReal ) ? nullptr : plainReal( option.mostReal ), "" );

    default:
        return nullptr;
    }
}

/* Reading -------------------------------------------------------------------------------------------------------- */

// Records a mistake.
QV_BOOL fail( QV_OPTIONS *options, QV_STRING *owned )
{
    qv::assign( &options->error, owned );
    return QV_FALSE;
}

// Whether an argument is as its option wants it; if not, that is recorded.
QV_BOOL checkArgument( QV_OPTIONS *options, const Option &option, QV_STRING *argument )
{
    QV_STRING *demand = demandOn( option, argument );

    return demand ? fail(
                        options,
                        qvStringCreateFromFormatCstr( "--%s: '%s' is not %~s", -1, option.name, argument, demand ) )
                  : QV_TRUE;
}

QV_BOOL readArguments( QV_OPTIONS *options, QV_VECTOR *argv )
{
    Ref< QV_OPT_DEF > def( qvOptDefCreateFrom( options->def ) );
    qvOptDefSetArgOnly( def.at(), options->count );
    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );

    while( qvOptSeqHasNext( seq ) )
    {
        QV_INT id = qvOptSeqNext( seq );

        if( id < 0 )
            return fail( options, qvOptSeqError( seq ) );

        Ref< QV_STRING > argument( qvOptSeqHasArg( seq ) ? qvOptSeqArgString( seq ) : qvStringCreate() );

        if( id == options->count )
        {
            qvVectorAppendString( &options->given, argument );
            continue;
        }

        Option &option = options->all[id];

        if( !checkArgument( options, option, argument ) )
            return QV_FALSE;

        if( !option.given )
            option.given = qvVectorCreate();

        qvVectorAppendString( &option.given, argument );
    }

    return QV_TRUE;
}

QV_BOOL checkOptions( QV_OPTIONS *options )
{
    for( QV_INT i = 0; i < options->count; i++ )
    {
        const Option &option = options->all[i];

        if( !option.given && option.fallback && !checkArgument( options, option, option.fallback ) )
            return QV_FALSE;

        if( !option.given && !option.fallback && ( option.flags & QV_OPTION_FLAG_REQUIRED ) )
            return fail( options, qvStringCreateFromFormatCstr( "--%s: this option is needed", -1, option.name ) );
    }

    return QV_TRUE;
}

QV_BOOL checkWords( QV_OPTIONS *options )
{
    qv::WordCount words = qv::wordCountOf( options->words );
    QV_INT        count = qvVectorLength( options->given );

    if( count < words.least )
        return fail( options, qvStringCreateFromCstr( "too few arguments", -1 ) );

    if( count > words.most )
        return fail(
            options, qvStringCreateFromFormatCstr(
                         "%~o: one argument too many", -1, qvVectorObjAt( options->given, words.most ) ) );

    return QV_TRUE;
}
} // namespace

QV___FAMILY( Options, QV_OPTIONS, freeOptions, nullptr, nullptr )

qv::WordCount qv::wordCountOf( QV_STRING *words )
{
    const QV_CHAR *chs    = qv::chars( words );
    const QV_INT   length = qvStringLength( words );
    WordCount      count  = { 0, 0 };
    QV_INT         depth  = 0; // of brackets around what may be left out
    QV_INT         dots   = 0;
    bool           begins = true;

    for( QV_INT i = 0; i < length; i++ )
    {
        const QV_CHAR ch = chs[i];
        depth += ( ch == U'[' ) - ( ch == U']' );
        dots = ch == U'.' ? dots + 1 : 0;

        if( dots == 3 )
            count.most = QV_INT_MAX;

        if( begins && ch != U' ' && ch != U'[' && ch != U']' && ch != U'.' && count.most < QV_INT_MAX )
        {
            count.most++;
            count.least += depth == 0;
        }

        begins = ch == U' ' || ch == U'[';
    }

    return count;
}

/* Definition ----------------------------------------------------------------------------------------------------- */

QV_OPTIONS *qvOptionsCreate( QV_STRING *program, QV_STRING *words, QV_STRING *text )
{
    QV_CHECK( program );
    QV_CHECK( words );
    QV_CHECK( text );

    QV_OPTIONS *options = qv::create< QV_OPTIONS >( qvOptionsSort() );
    options->program    = qv::retain( program );
    options->words      = qv::retain( words );
    options->text       = qv::retain( text );
    options->notes      = nullptr;
    options->group      = nullptr;
    options->error      = nullptr;
    options->given      = qvVectorCreate();
    options->def        = qvOptDefCreate();
    options->all        = nullptr;
    options->count      = 0;
    options->room       = 0;

    return options;
}

QV_OPTIONS *qvOptionsCreateCstr(
    const char *program, QV_INT programLength, const char *words, QV_INT wordsLength, const char *text,
    QV_INT textLength )
{
    return qvOptionsCreate(
        qv::asString( program, programLength ), qv::asString( words, wordsLength ), qv::asString( text, textLength ) );
}

QV_OPTIONS *qvOptionsCreateWcstr(
    const wchar_t *program, QV_INT programLength, const wchar_t *words, QV_INT wordsLength, const wchar_t *text,
    QV_INT textLength )
{
    return qvOptionsCreate(
        qv::asString( program, programLength ), qv::asString( words, wordsLength ), qv::asString( text, textLength ) );
}

QV_OPTIONS *qvOptionsCreateFrom( QV_OPTIONS *options )
{
    QV_CHECK( options );

    QV_OPTIONS *copy = qv::create< QV_OPTIONS >( qvOptionsSort() );
    copy->program    = qv::retain( options->program );
    copy->words      = qv::retain( options->words );
    copy->text       = qv::retain( options->text );
    copy->notes      = sharedOrNull( options->notes );
    copy->group      = sharedOrNull( options->group );
    copy->error      = sharedOrNull( options->error );
    copy->given      = qv::retain( options->given );
    copy->def        = qv::retain( options->def );
    copy->all        = nullptr;
    copy->count      = options->count;
    copy->room       = options->count;

    if( copy->count > 0 )
        copy->all = static_cast< Option * >( qvMemAllocN( copy->count, sizeof( Option ) ) );

    for( QV_INT i = 0; i < copy->count; i++ )
    {
        Option &option = copy->all[i];
        option         = options->all[i];
        qv::retain( option.name );
        qv::retain( option.argument );
        qv::retain( option.text );
        option.group    = sharedOrNull( option.group );
        option.fallback = sharedOrNull( option.fallback );
        option.given    = sharedOrNull( option.given );
    }

    return copy;
}

QV_INT qvOptionsAdd( QV_OPTIONS **options, QV_CHAR shortOpt, QV_STRING *longOpt, QV_INT type, QV_STRING *text )
{
    QV_CHECK( options );
    QV_CHECK( *options );
    QV_CHECK( longOpt );
    QV_CHECK( text );
    QV_CHECK( QV_CHAR_OK( shortOpt ) );
    QV_CHECK( QV_OPTION_TYPE_OK( type ) );

    QV_INT equals     = qvStringFindChar( longOpt, 0, U'=' );
    QV_INT nameLength = equals < 0 ? qvStringLength( longOpt ) : equals;
    QV_CHECK( nameLength > 0 );

    Ref< QV_STRING > name( qvStringCreateFromLeading( longOpt, nameLength ) );
    Ref< QV_STRING > argument( qvStringCreate() );
    bool             takesOne = type != QV_OPTION_TYPE_FLAG;

    if( takesOne && equals >= 0 )
        argument.reset( qvStringCreateFromTrailing( longOpt, qvStringLength( longOpt ) - equals - 1 ) );
    else if( takesOne )
        argument.reset( qvStringCreateFromCstr( "VALUE", -1 ) );

    QV_OPTIONS *own         = writableOptions( options );
    QV_INT      otherByName = qvOptDefLongOpt( own->def, name, QV_FALSE, nullptr );
    QV_INT      otherByChar = shortOpt ? qvOptDefShortOpt( own->def, shortOpt ) : -1;
    QV_CHECK( otherByName < 0 );
    QV_CHECK( otherByChar < 0 );

    if( own->count == own->room )
    {
        own->room = own->room * 2 + 8;
        own->all  = static_cast< Option * >( qvMemReallocN( own->all, own->room, sizeof( Option ) ) );
    }

    Option &option   = own->all[own->count];
    option.letter    = shortOpt;
    option.name      = name.give();
    option.argument  = argument.give();
    option.text      = qv::retain( text );
    option.group     = sharedOrNull( own->group );
    option.fallback  = nullptr;
    option.given     = nullptr;
    option.type      = type;
    option.flags     = 0;
    option.least     = type == QV_OPTION_TYPE_DURATION ? 0 : QV_INT_MIN;
    option.most      = QV_INT_MAX;
    option.leastReal = -HUGE_VAL;
    option.mostReal  = HUGE_VAL;

    if( shortOpt )
        qvOptDefSetShortOpt( &own->def, shortOpt, own->count );

    qvOptDefSetLongOpt( &own->def, option.name, own->count );
    defineFlags( own, own->count );
    return own->count++;
}

QV_INT qvOptionsAddCstr(
    QV_OPTIONS **options, QV_CHAR shortOpt, const char *longOpt, QV_INT longOptLength, QV_INT type, const char *text,
    QV_INT textLength )
{
    return qvOptionsAdd(
        options, shortOpt, qv::asString( longOpt, longOptLength ), type, qv::asString( text, textLength ) );
}

QV_INT qvOptionsAddWcstr(
    QV_OPTIONS **options, QV_CHAR shortOpt, const wchar_t *longOpt, QV_INT longOptLength, QV_INT type,
    const wchar_t *text, QV_INT textLength )
{
    return qvOptionsAdd(
        options, shortOpt, qv::asString( longOpt, longOptLength ), type, qv::asString( text, textLength ) );
}

void qvOptionsBeginGroup( QV_OPTIONS **options, QV_STRING *heading )
{
    QV_CHECK( heading );
    qv::assign( &writableOptions( options )->group, qv::retain( heading ) );
}

void qvOptionsBeginGroupCstr( QV_OPTIONS **options, const char *heading, QV_INT length )
{
    qvOptionsBeginGroup( options, qv::asString( heading, length ) );
}

void qvOptionsBeginGroupWcstr( QV_OPTIONS **options, const wchar_t *heading, QV_INT length )
{
    qvOptionsBeginGroup( options, qv::asString( heading, length ) );
}

void qvOptionsSetNotes( QV_OPTIONS **options, QV_STRING *text )
{
    QV_CHECK( text );
    qv::assign( &writableOptions( options )->notes, qv::retain( text ) );
}

void qvOptionsSetNotesCstr( QV_OPTIONS **options, const char *text, QV_INT length )
{
    qvOptionsSetNotes( options, qv::asString( text, length ) );
}

void qvOptionsSetNotesWcstr( QV_OPTIONS **options, const wchar_t *text, QV_INT length )
{
    qvOptionsSetNotes( options, qv::asString( text, length ) );
}

QV_INT qvOptionsFlags( QV_OPTIONS *options, QV_INT option )
{
    return optionOf( options, option ).flags;
}

void qvOptionsSetFlags( QV_OPTIONS **options, QV_INT option, QV_INT flags )
{
    writableOption( options, option ).flags = flags;
    defineFlags( *options, option );
}

void qvOptionsSetDefault( QV_OPTIONS **options, QV_INT option, QV_STRING *argument )
{
    QV_CHECK( argument );
    qv::assign( &writableOption( options, option ).fallback, qv::retain( argument ) );
}

void qvOptionsSetDefaultCstr( QV_OPTIONS **options, QV_INT option, const char *argument, QV_INT length )
{
    qvOptionsSetDefault( options, option, qv::asString( argument, length ) );
}

void qvOptionsSetDefaultWcstr( QV_OPTIONS **options, QV_INT option, const wchar_t *argument, QV_INT length )
{
    qvOptionsSetDefault( options, option, qv::asString( argument, length ) );
}

void qvOptionsSetRange( QV_OPTIONS **options, QV_INT option, QV_INT least, QV_INT most )
{
    Option      &own  = writableOption( options, option );
    const QV_INT type = own.type;
    QV_CHECK( type == QV_OPTION_TYPE_INTEGER || type == QV_OPTION_TYPE_DURATION );
    QV_CHECK( least <= most );

    own.least = least;
    own.most  = most;
}

void qvOptionsSetRealRange( QV_OPTIONS **options, QV_INT option, QV_REAL least, QV_REAL most )
{
    Option      &own  = writableOption( options, option );
    const QV_INT type = own.type;
    QV_CHECK( type == QV_OPTION_TYPE_REAL );
    QV_CHECK( least <= most );

    own.leastReal = least;
    own.mostReal  = most;
}

QV_INT qvOptionsLength( QV_OPTIONS *options )
{
    QV_CHECK( options );
    return options->count;
}

QV_OPT_DEF *qvOptionsOptDef( QV_OPTIONS *options )
{
    QV_CHECK( options );
    return qv::retain( options->def );
}

/* Reading -------------------------------------------------------------------------------------------------------- */

QV_BOOL qvOptionsRead( QV_OPTIONS **options, QV_VECTOR *argv )
{
    QV_CHECK( argv );

    QV_OPTIONS *own = writableOptions( options );
    qv::assign( &own->error, static_cast< QV_STRING * >( nullptr ) );
    qvVectorClear( &own->given );

    for( QV_INT i = 0; i < own->count; i++ )
        qv::assign( &own->all[i].given, static_cast< QV_VECTOR * >( nullptr ) );

    return readArguments( own, argv ) && checkOptions( own ) && checkWords( own );
}

QV_BOOL qvOptionsHasError( QV_OPTIONS *options )
{
    QV_CHECK( options );
    return options->error ? QV_TRUE : QV_FALSE;
}

QV_STRING *qvOptionsError( QV_OPTIONS *options )
{
    QV_CHECK( options );
    return sharedOrNull( options->error );
}

QV_BOOL qvOptionsHas( QV_OPTIONS *options, QV_INT option )
{
    return optionOf( options, option ).given ? QV_TRUE : QV_FALSE;
}

QV_INT qvOptionsCount( QV_OPTIONS *options, QV_INT option )
{
    const Option &one = optionOf( options, option );
    return one.given ? qvVectorLength( one.given ) : 0;
}

QV_STRING *qvOptionsString( QV_OPTIONS *options, QV_INT option )
{
    return argumentOf( optionOf( options, option ) ).give();
}

QV_VECTOR *qvOptionsStrings( QV_OPTIONS *options, QV_INT option )
{
    const Option &one = optionOf( options, option );

    if( one.given )
        return qv::retain( one.given );

    Ref< QV_VECTOR > strings( qvVectorCreate() );

    if( one.fallback )
        qvVectorAppendString( strings.at(), one.fallback );

    return strings.give();
}

QV_INT qvOptionsInt( QV_OPTIONS *options, QV_INT option )
{
    const Option &one  = optionOf( options, option );
    const QV_INT  type = one.type;
    QV_CHECK( type == QV_OPTION_TYPE_INTEGER || type == QV_OPTION_TYPE_CHOICE || type == QV_OPTION_TYPE_DURATION );

    Ref< QV_STRING > argument = argumentOf( one );
    QV_INT           value;

    if( argument && readWhole( one, argument, &value ) )
        return value;

    return type == QV_OPTION_TYPE_CHOICE ? -1 : 0;
}

QV_REAL qvOptionsReal( QV_OPTIONS *options, QV_INT option )
{
    const Option &one  = optionOf( options, option );
    const QV_INT  type = one.type;
    QV_CHECK( type == QV_OPTION_TYPE_REAL || type == QV_OPTION_TYPE_INTEGER );

    if( type == QV_OPTION_TYPE_INTEGER )
        return static_cast< QV_REAL >( qvOptionsInt( options, option ) );

    Ref< QV_STRING > argument = argumentOf( one );
    QV_REAL          value;

    return argument && readReal( one, argument, &value ) ? value : 0.0;
}

QV_VECTOR *qvOptionsWords( QV_OPTIONS *options )
{
    QV_CHECK( options );
    return qv::retain( options->given );
}

#include "morvane_output.h"
#include "morvane_tool.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_opt_seq.h"

namespace morvane
{
using qv::Ref;

namespace
{
QV_INT flagsOf( const Option &option )
{
    return ( option.argument ? QV_OPT_FLAG_ARGUMENT : 0 ) | ( ( option.flags & REPEATS ) ? 0 : QV_OPT_FLAG_ONCE );
}
} // namespace

bool Arguments::read( const Tool &tool, QV_VECTOR *argv )
{
    tool_ = &tool;
    words_.reset( qvVectorCreate() );
    options_.reset( qvVectorCreate() );
    arguments_.reset( qvVectorCreate() );

    if( tool.kind != HAS_OPTIONS )
        words_ = Ref< QV_VECTOR >::share( argv );

    return ( tool.kind != HAS_OPTIONS || readOptions( argv ) ) && hasRightOptions() && hasRightWords();
}

bool Arguments::readOptions( QV_VECTOR *argv )
{
    Ref< QV_OPT_DEF > def( qvOptDefCreate() );
    QV_INT            count = 0;

    for( const Option *option = tool_->options; option->name; option++ )
    {
        qvOptDefSetLongOptCstr( def.at(), option->name, -1, count );
        qvOptDefSetFlags( def.at(), count, flagsOf( *option ) );
        count++;
    }

    qvOptDefSetArgOnly( def.at(), count );
    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );

    while( qvOptSeqHasNext( seq ) )
    {
        QV_INT id = qvOptSeqNext( seq );

        if( id < 0 )
        {
            Ref< QV_STRING > error( qvOptSeqError( seq ) );
            writeUtf8( stderr, error );
            fputc( '\n', stderr );
            return false;
        }

        Ref< QV_STRING > argument( qvOptSeqHasArg( seq ) ? qvOptSeqArgString( seq ) : qvStringCreate() );

        if( id == count )
        {
            qvVectorAppendString( words_.at(), argument );
            continue;
        }

        qvVectorAppendInt( options_.at(), id );
        qvVectorAppendString( arguments_.at(), argument );
    }

    return true;
}

bool Arguments::hasRightWords() const
{
    QV_INT least = 0; // words that have to be there
    QV_INT most  = 0; // those that may be
    QV_INT depth = 0; // of brackets around optional words
    QV_INT count = wordCount();

    for( const char *at = tool_->words; *at; at++ )
    {
        bool begins = at == tool_->words || at[-1] == ' ' || at[-1] == '[';

        depth += ( *at == '[' ) - ( *at == ']' );

        if( strncmp( at, "...", 3 ) == 0 )
            most = QV_INT_MAX;

        if( *at == '[' || !begins || most == QV_INT_MAX )
            continue;

        most++;
        least += depth == 0;
    }

    if( count < least )
        complain( *tool_, "too few arguments" );
    else if( count > most )
        complain( *tool_, wordAt( most ), "one argument too many" );

    return count >= least && count <= most;
}

bool Arguments::hasRightOptions() const
{
    for( const Option *option = tool_->options; option->name; option++ )
    {
        Ref< QV_STRING > names( qvStringCreate() );
        QV_INT           given = 0;

        for( const Option *other = tool_->options; other->name; other++ )
        {
            if( other != option && ( option->group == 0 || other->group != option->group ) )
                continue;

            given += has( other->name );
            qvStringAppendFormatCstr( names.at(), qvStringLength( names ) ? ", --%lc" : "--%lc", -1, other->name );
        }

        bool lacks = ( option->flags & REQUIRED ) && given == 0;

        if( !lacks && ( given <= 1 || ( option->flags & REPEATS ) ) )
            continue;

        complain(
            *tool_, names,
            given           ? "only one of these options"
            : option->group ? "one of these options is needed"
                            : "this option is needed" );
        return false;
    }

    return true;
}

QV_INT Arguments::wordCount() const
{
    return qvVectorLength( words_ );
}

Ref< QV_STRING > Arguments::wordAt( QV_INT idx ) const
{
    return morvane::wordAt( words_, idx );
}

// The place of an option among those that were given, or -1.
QV_INT Arguments::placeOf( const char *option ) const
{
    for( QV_INT i = 0; i < optionCount(); i++ )
        if( strcmp( tool_->options[optionAt( i )].name, option ) == 0 )
            return i;

    return -1;
}

bool Arguments::has( const char *option ) const
{
    return placeOf( option ) >= 0;
}

Ref< QV_STRING > Arguments::valueOf( const char *option ) const
{
    QV_INT place = placeOf( option );

    if( place >= 0 )
        return argumentAt( place );

    for( const Option *each = tool_->options; each->name; each++ )
        if( strcmp( each->name, option ) == 0 && each->fallback )
            return Ref< QV_STRING >( qvStringCreateFromCstr( each->fallback, -1 ) );

    return {};
}

QV_INT Arguments::optionCount() const
{
    return qvVectorLength( options_ );
}

QV_INT Arguments::optionAt( QV_INT idx ) const
{
    Ref< QV_BOXED_INT > place( qvBoxedIntFrom( qvVectorObjAt( options_, idx ) ) );
    return qvBoxedIntValue( place );
}

Ref< QV_STRING > Arguments::argumentAt( QV_INT idx ) const
{
    return morvane::wordAt( arguments_, idx );
}

bool readInteger( QV_STRING *text, QV_INT *value )
{
    QV_INT consumed;
    return qvStringScanInt( text, 0, -1, 10, value, &consumed ) && consumed == qvStringLength( text );
}

Ref< QV_STRING > wordAt( QV_VECTOR *words, QV_INT idx )
{
    return Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( words, idx ) ) );
}
} // namespace morvane

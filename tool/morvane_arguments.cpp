#include "morvane_output.h"
#include "morvane_tool.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_opt_seq.h"

namespace morvane
{
using qv::Ref;

namespace
{
QV_INT flagsOf( const Option &option )
{
    return ( option.hasArgument ? QV_OPT_FLAG_ARGUMENT : 0 ) | ( option.repeats ? 0 : QV_OPT_FLAG_ONCE );
}
} // namespace

bool Arguments::read( QV_VECTOR *argv, const Option *options, int count )
{
    Ref< QV_OPT_DEF > def( qvOptDefCreate() );
    qvOptDefSetArgOnly( def.at(), count );

    for( int i = 0; i < count; i++ )
    {
        qvOptDefSetLongOptCstr( def.at(), options[i].name, -1, i );
        qvOptDefSetFlags( def.at(), i, flagsOf( options[i] ) );
    }

    Ref< QV_OPT_SEQ > seq( qvOptSeqCreate( def, argv ) );
    words_.reset( qvVectorCreate() );
    options_.reset( qvVectorCreate() );
    arguments_.reset( qvVectorCreate() );

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
    return wordAt( arguments_, idx );
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

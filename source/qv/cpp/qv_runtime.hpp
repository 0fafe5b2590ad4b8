/** @file
    A run of the library as a scope, what has outlived its use, and the options of a command line.

        int main( int argc, char **argv )
        {
            qv::Runtime run( "first", "First program", "1.0" );
            {
                qv::String pattern;
                bool       all = false;
                qv::Options options( "first [OPTION...] FILE..." );
                options.add( U'a', "all", all, "shows all of them" );
                options.add( U'p', "pattern", pattern, "shows those with this TEXT" );
                qv::Result< qv::Vector< qv::String > > files = options.read( argc, argv );
                ...
            }
            return run.stop().empty() ? 0 : 1;
        }

    All values end before the run does: they stand in an inner scope. */

#ifndef QV_RUNTIME_HPP
#define QV_RUNTIME_HPP

#include "qv/cpp/qv_result.hpp"

#include <cstdio>
#include <memory>
#include <vector>

namespace qv
{
/** Objects of one sort that live. */
struct Leak
{
    const char *sort;    /**< the name, as `QV_STRING`; static */
    QV_INT      objects; /**< how many, above 0 */
};

/** Starts the library, and stops it at its end. There is one at a time, on the thread that made it. */
class Runtime
{
public:
    /** `flags` are QV_RUNTIME_FLAG values. The texts are UTF-8 or null. What is printed goes to `print`, and with null
        nowhere. A failure ends the process. */
    explicit Runtime(
        const char *identifier, const char *friendlyName = nullptr, const char *version = nullptr, QV_INT flags = 0,
        QV_RUNTIME_PRINT_FUNC print = toStandardOutput )
    {
        qvRuntimeStartup( flags, print, identifier, friendlyName, version );
    }

    Runtime( const Runtime & )            = delete;
    Runtime &operator=( const Runtime & ) = delete;

    ~Runtime()
    {
        stop();
    }

    /** Stops the library, if it runs, and returns what still lives then: what was not given up. */
    std::vector< Leak > stop()
    {
        if( std::exchange( running_, false ) )
            qvRuntimeShutdown();

        return leaks();
    }

    /** What lives of the public families of the library, by sort; constant time. While the library runs this counts what
        it has made for itself too. Works with all flags. */
    [[nodiscard]] std::vector< Leak > leaks() const
    {
        std::vector< Leak > found;

        auto look = [&found]( const char *name, QV_SORT *sort )
        {
            if( QV_INT objects = qvSortObjects( sort ) )
                found.push_back( { name, objects } );
        };

        // clang-format off
        look( "QV_ALERT", qvAlertSort() );
        look( "QV_ALERTABLE", qvAlertableSort() );
        look( "QV_BARRIER", qvBarrierSort() );
        look( "QV_BOXED_BOOL", qvBoxedBoolSort() );
        look( "QV_BOXED_INT", qvBoxedIntSort() );
        look( "QV_BOXED_NULL", qvBoxedNullSort() );
        look( "QV_BOXED_REAL", qvBoxedRealSort() );
        look( "QV_BOXED_UNIQUE", qvBoxedUniqueSort() );
        look( "QV_BUFFER", qvBufferSort() );
        look( "QV_BUFFER_BYTE_SINK", qvBufferByteSinkSort() );
        look( "QV_BUFFER_BYTE_SOURCE", qvBufferByteSourceSort() );
        look( "QV_BYTE_SINK", qvByteSinkSort() );
        look( "QV_BYTE_SOURCE", qvByteSourceSort() );
        look( "QV_CHAR_SINK", qvCharSinkSort() );
        look( "QV_CHAR_SOURCE", qvCharSourceSort() );
        look( "QV_CONDSET", qvCondsetSort() );
        look( "QV_COUNTER", qvCounterSort() );
        look( "QV_DECODER", qvDecoderSort() );
        look( "QV_DICT", qvDictSort() );
        look( "QV_ENCODER", qvEncoderSort() );
        look( "QV_ENUM", qvEnumSort() );
        look( "QV_FLAGSET", qvFlagsetSort() );
        look( "QV_GENERATION", qvGenerationSort() );
        look( "QV_GENERATION_MUTEX", qvGenerationMutexSort() );
        look( "QV_IDENTIFIER", qvIdentifierSort() );
        look( "QV_LINE_SINK", qvLineSinkSort() );
        look( "QV_LINE_SOURCE", qvLineSourceSort() );
        look( "QV_MODULE_VERSION", qvModuleVersionSort() );
        look( "QV_MONITOR", qvMonitorSort() );
        look( "QV_NLF_LINE_SINK", qvNlfLineSinkSort() );
        look( "QV_NLF_LINE_SOURCE", qvNlfLineSourceSort() );
        look( "QV_OPT_DEF", qvOptDefSort() );
        look( "QV_OPT_SEQ", qvOptSeqSort() );
        look( "QV_PRIORITY_MAP", qvPriorityMapSort() );
        look( "QV_RANGE_MAP", qvRangeMapSort() );
        look( "QV_REGION", qvRegionSort() );
        look( "QV_SIGNAL", qvSignalSort() );
        look( "QV_SIGNALABLE", qvSignalableSort() );
        look( "QV_STACK_TRACE", qvStackTraceSort() );
        look( "QV_STORE", qvStoreSort() );
        look( "QV_STRING", qvStringSort() );
        look( "QV_STRING_CHAR_SINK", qvStringCharSinkSort() );
        look( "QV_STRING_CHAR_SOURCE", qvStringCharSourceSort() );
        look( "QV_THREAD", qvThreadSort() );
        look( "QV_TIME", qvTimeSort() );
        look( "QV_TIMER", qvTimerSort() );
        look( "QV_TOOL_SWITCH", qvToolSwitchSort() );
        look( "QV_UNICODE_NORMALIZER", qvUnicodeNormalizerSort() );
        look( "QV_VECTOR", qvVectorSort() );
        // clang-format on
        return found;
    }

    /** Writes what is printed to the standard output, in UTF-8. */
    static void toStandardOutput( const QV_CHAR *chars, QV_INT length )
    {
        char   local[512];
        QV_INT needed = qvCharsConvertToUtf8( local, sizeof( local ), chars, length, QV_FALSE );

        if( needed <= static_cast< QV_INT >( sizeof( local ) ) )
            std::fwrite( local, 1, static_cast< size_t >( needed ), stdout );
        else
        {
            std::string text = detail::utf8( chars, length );
            std::fwrite( text.data(), 1, text.size(), stdout );
        }
    }

private:
    bool running_ = true;
};

/** The options of a program, and the usage text that they make. An option is a truth value, which it sets to true, or a
    text or number, which its argument becomes. The variables live as long as the Options. */
class Options
{
public:
    /** `synopsis` is the first line of the usage text. */
    explicit Options( const String &synopsis ) : usage_( format( "Usage: %s\n", synopsis ) )
    {
        qvOptDefSetArgOnly( def_.variable(), 0 );
    }

    /** Adds an option with a short name, U'\0' for none, and a long one. T is bool, String, QV_INT or QV_REAL. */
    template< class T >
    Options &add( char32_t shortName, const String &longName, T &variable, const String &help )
    {
        variables_.push_back( &variable );
        QV_INT id = static_cast< QV_INT >( variables_.size() );

        if( shortName )
            qvOptDefSetShortOpt( def_.variable(), shortName, id );

        qvOptDefSetLongOpt( def_.variable(), longName.c(), id );

        if( !std::same_as< T, bool > )
            qvOptDefSetFlags( def_.variable(), id, QV_OPT_FLAG_ARGUMENT );

        String names = format( "--%s", longName );

        if( shortName )
            names = format( "-%c, %s", shortName, names );

        append( usage_, "  %-24s %s\n", names, help );
        return *this;
    }

    /** A line for each option, after the synopsis. */
    [[nodiscard]] const String &usage() const
    {
        return usage_;
    }

    /** Reads the arguments of main(), which are UTF-8, sets the variables, and returns the words that are no options. An
        error tells what is wrong for the user. */
    [[nodiscard]] Result< Vector< String > > read( int argc, char **argv ) const
    {
        Vector< String > arguments, words;

        for( int i = 1; i < argc; i++ )
            arguments.append( argv[i] );

        auto seq = Held< QV_OPT_SEQ >::own( qvOptSeqCreate( def_.c(), arguments.c() ) );

        while( qvOptSeqHasNext( seq.c() ) )
        {
            QV_INT id = qvOptSeqNext( seq.c() );

            if( qvOptSeqHasError( seq.c() ) )
                return Error{ String::own( qvOptSeqError( seq.c() ) ), {} };

            if( id == 0 )
                words.append( String::own( qvOptSeqArgString( seq.c() ) ) );
            else if( id > 0 && !set( variables_[static_cast< size_t >( id - 1 )], seq.c() ) )
                return Error{ format( "%~s is no number", String::own( qvOptSeqArgString( seq.c() ) ) ), {} };
        }

        return words;
    }

private:
    using Variable = std::variant< bool *, String *, QV_INT *, QV_REAL * >;

    static bool set( const Variable &variable, QV_OPT_SEQ *seq )
    {
        if( bool *const *truth = std::get_if< bool * >( &variable ) )
            **truth = true;
        else if( String *const *text = std::get_if< String * >( &variable ) )
            **text = String::own( qvOptSeqArgString( seq ) );
        else if( QV_INT *const *number = std::get_if< QV_INT * >( &variable ) )
        {
            **number = qvOptSeqArgInt( seq );
            return qvOptSeqArgIsInt( seq );
        }
        else if( QV_REAL *const *real = std::get_if< QV_REAL * >( &variable ) )
        {
            **real = qvOptSeqArgReal( seq );
            return qvOptSeqArgIsReal( seq );
        }

        return true;
    }

    Held< QV_OPT_DEF >      def_ = Held< QV_OPT_DEF >::own( qvOptDefCreate() );
    std::vector< Variable > variables_;
    String                  usage_;
};
} // namespace qv

#endif

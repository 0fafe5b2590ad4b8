/** @file
    A run of the library as a scope, and what has outlived its use.

        int main()
        {
            qv::Runtime run( "first", "First program", "1.0" );
            {
                qv::String name = "world";
                qv::print( "Hello, %s\n", name );
            }
            return run.stop().empty() ? 0 : 1;
        }

    All values end before the run does: they stand in an inner scope. */

#ifndef QV_RUNTIME_HPP
#define QV_RUNTIME_HPP

#include "qv/cpp/qv_print_hook.hpp"
#include "qv/cpp/qv_result.hpp"

#include <cstdio>
#include <memory>

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
        nowhere; unless it is told otherwise, it goes to the innermost PrintHook, else to the standard output. A failure
        ends the process. */
    explicit Runtime(
        const char *identifier, const char *friendlyName = nullptr, const char *version = nullptr, QV_INT flags = 0,
        QV_RUNTIME_PRINT_FUNC print = PrintHook::print )
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
        qvStandardOutputPrint( chars, length );
    }

private:
    bool running_ = true;
};
} // namespace qv

#endif

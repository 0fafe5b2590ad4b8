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
        end();
    }

    /** Stops the library, if it runs, and returns what still lives then: what was not given up. */
    std::vector< Leak > stop()
    {
        end();
        return leaks();
    }

    /** What lives and isn't the library's own, by sort, in the order of the names: empty when all has been given up. Works
        with all flags, at any time. As qvRuntimeLeakVisit(). */
    [[nodiscard]] std::vector< Leak > leaks() const
    {
        std::vector< Leak > found;
        qvRuntimeLeakVisit(
            []( QV_SORT *, const char *name, QV_INT objects, void *context )
            { static_cast< std::vector< Leak > * >( context )->push_back( { name, objects } ); }, &found );

        return found;
    }

    /** The same as a text for people, with each object in a run with QV_RUNTIME_FLAG_OBJECT_DATABASE, where no other
        thread may create or change objects meanwhile. Only while the library runs. As qvRuntimeLeakReport(). */
    [[nodiscard]] String leakReport() const
    {
        return String::own( qvRuntimeLeakReport() );
    }

    /** Writes what is printed to the standard output, in UTF-8. */
    static void toStandardOutput( const QV_CHAR *chars, QV_INT length )
    {
        qvStandardOutputPrint( chars, length );
    }

private:
    void end()
    {
        if( std::exchange( running_, false ) )
            qvRuntimeShutdown();
    }

    bool running_ = true;
};
} // namespace qv

#endif

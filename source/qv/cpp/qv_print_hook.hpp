/** @file
    A function with what it captures as the print hook, for a scope.

        qv::Runtime run( "my-app" );                    // prints to the standard output
        {
            qv::String     all;
            qv::PrintHook  hook( [&]( std::u32string_view text ) { all += text; } );
            qv::print( "%s\n", "gathered" );
        }

    A run that was started with PrintHook::print(), as qv::Runtime does unless it is told otherwise, prints to the innermost
    hook there is, and without one to the standard output in UTF-8. Hooks end in the opposite order of their making. The
    end of one waits for a call that is running. Calls come one at a time, from any thread; the function must neither print
    nor make or end hooks. */

#ifndef QV_PRINT_HOOK_HPP
#define QV_PRINT_HOOK_HPP

#include "qv/cpp/qv_object.hpp"

#include <mutex>

namespace qv
{
/** Receives what is printed as long as it lives. */
class PrintHook
{
public:
    /** Calls `function` with each text that is printed from now on. */
    template< std::invocable< std::u32string_view > F >
    explicit PrintHook( F function ) :
        function_( new F( std::move( function ) ) ),
        call_( []( void *f, std::u32string_view text ) { ( *static_cast< F * >( f ) )( text ); } ),
        end_( []( void *f ) { delete static_cast< F * >( f ); } )
    {
        std::scoped_lock lock( mutex_ );
        before_ = std::exchange( innermost_, this );
    }

    PrintHook( const PrintHook & )            = delete;
    PrintHook &operator=( const PrintHook & ) = delete;

    ~PrintHook()
    {
        {
            std::scoped_lock lock( mutex_ );
            detail::demand( innermost_ == this, "innermost_ == this" );
            innermost_ = before_;
        }

        end_( function_ );
    }

    /** The hook for qvRuntimeStartup(). */
    static void print( const QV_CHAR *chars, QV_INT length )
    {
        std::scoped_lock lock( mutex_ );

        if( innermost_ )
            innermost_->call_( innermost_->function_, { chars, static_cast< size_t >( length ) } );
        else
            qvStandardOutputPrint( chars, length );
    }

private:
    static inline std::mutex mutex_;
    static inline PrintHook *innermost_ = nullptr;

    void *function_;
    void ( *call_ )( void *, std::u32string_view );
    void ( *end_ )( void * );
    PrintHook *before_ = nullptr;
};
} // namespace qv

#endif

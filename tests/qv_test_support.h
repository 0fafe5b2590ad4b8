/** @file
    What the tests share: text in and out of Strings, and the environment that starts the library and watches its
    live objects. */

#ifndef QV_TEST_SUPPORT_H
#define QV_TEST_SUPPORT_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qv/base/qv_string.h"
#include "qv/runtime/qv_ref.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace qv::test
{
/** A new String of UTF-8 text. */
inline Ref< QV_STRING > text( std::string_view utf8 )
{
    return Ref< QV_STRING >( qvStringCreateFromCstr( utf8.data(), static_cast< QV_INT >( utf8.size() ) ) );
}

/** A new String of code points, of which any may occur. */
inline Ref< QV_STRING > text( std::u32string_view chars )
{
    return Ref< QV_STRING >( qvStringCreateFromCharsCopy( chars.data(), static_cast< QV_INT >( chars.size() ) ) );
}

/** The code points of a String, which stays with the caller. */
std::u32string chars( QV_STRING *qvs );

/** A String as UTF-8, which stays with the caller. */
std::string utf8( QV_STRING *qvs );

/** The same for a String that the call takes over, for results that are looked at once. */
std::string take( QV_STRING *owned );

/** The text of an object, which stays with the caller. */
std::string textOf( QV_OBJ *object );

template< class T >
std::string textOf( T *object )
{
    return textOf( reinterpret_cast< QV_OBJ * >( object ) );
}

/** How many references an object has. */
template< class T >
int32_t references( T *object )
{
    return qv___RetainCountValue( &reinterpret_cast< QV_OBJ * >( object )->retainCount );
}

/** The bytes that an object has declared outside itself. */
template< class T >
QV_INT allocated( T *object )
{
    return qv___ObjDbgAllocationSize( reinterpret_cast< QV_OBJ * >( object ) );
}

/** How many objects of all sorts live now. Needs the object database, with which the tests run. */
QV_INT liveObjects();

/** Starts the library as the tests need it: with lists of all live objects, and keeping what is printed. */
void startLibrary();

/** Waits until the threads that have ended are gone from the process as well: up to then they may hold a lock of the
    heap, and a copy of the process would wait for it for ever. The library's own thread, which sleeps, may stay. */
void settle();

/** Stops the library for `body`, which may start and stop it in its own ways, and then starts it again. */
void withoutLibrary( const std::function< void() > &body );

/** A folder for files of the running test binary; it goes when the binary ends. Ends with a solidus. */
const std::string &scratch();

/** What was printed through the library since the last call. */
std::u32string takePrinted();
/** A row of a table of broken contracts: what breaks one, and the expression of its report. */
struct Misuse
{
    void ( *call )();
    std::string expression;
};

void expectReports( const std::vector< Misuse > &rows );

/** Matches a report of exactly this expression, with a message if there is one. */
testing::Matcher< const std::string & > reportOf( const std::string &expression, const std::string &message = "" );
} // namespace qv::test

/** Called by main() first, where a test defines it. True if that was all that the process is to do. */
extern "C" __attribute__( ( weak ) ) bool qvTestRunInstead();

/** A broken contract has to end the process with a report of exactly this expression. */
#define EXPECT_BROKEN( statement, expression ) EXPECT_BROKEN_MESSAGE( statement, "", expression )

/** The same with a message in the report. */
#define EXPECT_BROKEN_MESSAGE( statement, message, expression )                                                        \
    if( ::qv::test::settle(), false )                                                                                  \
        ;                                                                                                              \
    else                                                                                                               \
        EXPECT_DEATH( statement, ::qv::test::reportOf( expression, message ) )

#endif

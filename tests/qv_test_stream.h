/** @file
    Streams over callbacks for the tests: they keep or give what they are told to, note the calls, and fail where they
    should. */

#ifndef QV_TEST_STREAM_H
#define QV_TEST_STREAM_H

#include "qv_test_support.h"

#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/base/qv_buffer.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_byte_source_private.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_char_source_private.h"

#include <vector>

namespace qv::test
{
inline Ref< QV_BUFFER > buffer( std::string_view bytes )
{
    return Ref< QV_BUFFER >( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );
}

inline std::string bytes( QV_BUFFER *buf )
{
    return std::string(
        reinterpret_cast< const char * >( qvBufferBacking( buf ) ), static_cast< size_t >( qvBufferLength( buf ) ) );
}

/** What bytes and characters differ in. */
struct Bytes
{
    typedef std::string    Text;
    typedef QV_BUFFER      Carrier;
    typedef QV_BYTE_SINK   Sink;
    typedef QV_BYTE_SOURCE Source;

    static constexpr auto createSink   = qv___ByteSinkCreate;
    static constexpr auto createSource = []( QV___BYTE_SOURCE_READ_FUNC readFunc, QV_OBJ *closure )
    { return qv___ByteSourceCreate( readFunc, nullptr, closure ); };
    static constexpr auto append = qvBufferAppendBytes;
    static constexpr auto textOf = bytes;
};

struct Chars
{
    typedef std::u32string Text;
    typedef QV_STRING      Carrier;
    typedef QV_CHAR_SINK   Sink;
    typedef QV_CHAR_SOURCE Source;

    static constexpr auto createSink   = qv___CharSinkCreate;
    static constexpr auto createSource = qv___CharSourceCreate;
    static constexpr auto append       = qvStringAppendChars;
    static constexpr auto textOf       = chars;
};

/** A closure that leads to an object of the tests. */
inline Ref< QV_OBJ > closureOf( void *log, QV___BOXED_POINTER_FREE_FUNC freeFunc = nullptr )
{
    return Ref< QV_OBJ >( obj( qv___BoxedPointerCreate( log, freeFunc ) ) );
}

template< class Log >
Log &logOf( QV_OBJ *closure )
{
    return *static_cast< Log * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
}

template< class Unit >
struct SinkLog
{
    std::string         calls; // w: write, f: flush, e: end of the closure
    typename Unit::Text written;
    int                 callsUntilFailure = -1;

    Ref< typename Unit::Sink > sink()
    {
        auto end   = []( void *log ) { static_cast< SinkLog * >( log )->calls += 'e'; };
        auto flush = []( QV_OBJ *closure ) -> QV_BOOL { return logOf< SinkLog >( closure ).note( 'f' ); };
        auto write = []( QV_OBJ *closure, typename Unit::Carrier *data, QV_INT offset, QV_INT count ) -> QV_BOOL
        {
            SinkLog   &log = logOf< SinkLog >( closure );
            const bool ok  = log.note( 'w' );

            if( ok )
                log.written += Unit::textOf( data ).substr( size_t( offset ), size_t( count ) );

            return ok;
        };
        return Ref< typename Unit::Sink >( Unit::createSink( write, flush, closureOf( this, end ) ) );
    }

private:
    bool note( char call )
    {
        calls += call;
        return callsUntilFailure-- != 0;
    }
};

template< class Unit >
struct SourceLog
{
    typename Unit::Text   data;
    bool                  fails  = false; // with the call that meets the end of the data
    QV_INT                extra  = 0;     // added to the counts, for broken callbacks
    size_t                offset = 0;
    std::vector< QV_INT > limits = {}; // of the calls

    Ref< typename Unit::Source > source()
    {
        auto read = []( QV_OBJ *closure, typename Unit::Carrier **dest, QV_INT limit, QV_INT *count ) -> QV_BOOL
        {
            SourceLog                &log = logOf< SourceLog >( closure );
            const typename Unit::Text run = log.data.substr( log.offset, size_t( limit ) );

            EXPECT_EQ( 0, *count );
            log.limits.push_back( limit );
            log.offset += run.size();
            *count = QV_INT( run.size() ) + log.extra;
            Unit::append( dest, run.data(), QV_INT( run.size() ) );

            return !( log.fails && log.offset == log.data.size() );
        };
        return Ref< typename Unit::Source >( Unit::createSource( read, closureOf( this ) ) );
    }
};
} // namespace qv::test

#endif

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

/** A closure for an object of the tests, and the way back. */
inline Ref< QV___BOXED_POINTER > closureOf( void *log, QV___BOXED_POINTER_FREE_FUNC freeFunc = nullptr )
{
    return Ref< QV___BOXED_POINTER >( qv___BoxedPointerCreate( log, freeFunc ) );
}

template< class Log >
Log *logOf( QV_OBJ *closure )
{
    return static_cast< Log * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
}

template< class Unit >
struct SinkLog
{
    std::string         calls;   // w: write, f: flush, e: end of the closure
    std::string         lengths; // of what came with the writes
    typename Unit::Text written;
    int                 callsUntilFailure = -1;

    Ref< typename Unit::Sink > sink()
    {
        auto closure = closureOf( this, []( void *log ) { static_cast< SinkLog * >( log )->calls += 'e'; } );
        return Ref< typename Unit::Sink >( Unit::createSink( write, flush, obj( closure.get() ) ) );
    }

private:
    static QV_BOOL write( QV_OBJ *closure, typename Unit::Carrier *data, QV_INT offset, QV_INT count )
    {
        auto *log = logOf< SinkLog >( closure );
        log->calls += 'w';
        log->lengths += std::to_string( count ) + " ";

        if( log->callsUntilFailure-- == 0 )
            return QV_FALSE;

        log->written += Unit::textOf( data ).substr( static_cast< size_t >( offset ), static_cast< size_t >( count ) );
        return QV_TRUE;
    }

    static QV_BOOL flush( QV_OBJ *closure )
    {
        logOf< SinkLog >( closure )->calls += 'f';
        return logOf< SinkLog >( closure )->callsUntilFailure-- != 0;
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
        return Ref< typename Unit::Source >( Unit::createSource( read, obj( closureOf( this ).get() ) ) );
    }

private:
    static QV_BOOL read( QV_OBJ *closure, typename Unit::Carrier **dest, QV_INT limit, QV_INT *count )
    {
        auto                     *log = logOf< SourceLog >( closure );
        const typename Unit::Text run = log->data.substr( log->offset, static_cast< size_t >( limit ) );

        EXPECT_EQ( 0, *count );
        log->limits.push_back( limit );
        log->offset += run.size();
        *count = static_cast< QV_INT >( run.size() ) + log->extra;
        Unit::append( dest, run.data(), static_cast< QV_INT >( run.size() ) );

        return !( log->fails && log->offset == log->data.size() );
    }
};
} // namespace qv::test

#endif

#include "qv_test_support.h"

#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/base/qv_buffer.h"
#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_sink_private.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_byte_source_private.h"

#include <algorithm>
#include <random>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
Ref< QV_BUFFER > buffer( std::string_view bytes )
{
    return Ref< QV_BUFFER >( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );
}

std::string bytes( QV_BUFFER *buf )
{
    return std::string( reinterpret_cast< const char * >( qvBufferBacking( buf ) ),
                        static_cast< size_t >( qvBufferLength( buf ) ) );
}

std::string take( QV_BUFFER *owned )
{
    Ref< QV_BUFFER > buf( owned );
    return bytes( buf );
}

// Some bytes that differ from their neighbours.
std::string pattern( size_t count )
{
    std::string result( count, '\0' );

    for( size_t i = 0; i < count; i++ )
        result[i] = static_cast< char >( i * 7 + i / 256 );

    return result;
}

// A sink that keeps what it is given and fails where it is told to.
struct SinkLog
{
    std::string calls;               // w: write, f: flush, e: end of the closure
    std::string written;
    int         writesUntilFailure = -1;
    bool        flushFails         = false;

    Ref< QV_BYTE_SINK > sink()
    {
        Ref< QV___BOXED_POINTER > closure(
            qv___BoxedPointerCreate( this, []( void *log ) { static_cast< SinkLog * >( log )->calls += 'e'; } ) );

        return Ref< QV_BYTE_SINK >( qv___ByteSinkCreate( write, flush, qv::obj( closure.get() ) ) );
    }

private:
    static SinkLog *of( QV_OBJ *closure )
    {
        return static_cast< SinkLog * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
    }

    static QV_BOOL write( QV_OBJ *closure, QV_BUFFER *buf, QV_INT byteOffset, QV_INT byteCount )
    {
        SinkLog *log = of( closure );
        log->calls += 'w';

        if( log->writesUntilFailure-- == 0 )
            return QV_FALSE;

        log->written += bytes( buf ).substr( static_cast< size_t >( byteOffset ), static_cast< size_t >( byteCount ) );
        return QV_TRUE;
    }

    static QV_BOOL flush( QV_OBJ *closure )
    {
        of( closure )->calls += 'f';
        return !of( closure )->flushFails;
    }
};

// A source of the bytes that it is given, which fails behind them if told to.
struct SourceLog
{
    std::string           data;
    bool                  fails  = false;
    QV_INT                extra  = 0; // added to the counts, for broken callbacks
    size_t                offset = 0;
    std::vector< QV_INT > limits = {}; // of the calls

    Ref< QV_BYTE_SOURCE > source( bool withSkip = false )
    {
        Ref< QV___BOXED_POINTER > closure( qv___BoxedPointerCreate( this, nullptr ) );

        return Ref< QV_BYTE_SOURCE >(
            qv___ByteSourceCreate( read, withSkip ? skip : nullptr, qv::obj( closure.get() ) ) );
    }

private:
    QV_BOOL advance( QV_INT limit, std::string_view *run, QV_INT *count )
    {
        limits.push_back( limit );
        *run = std::string_view( data ).substr( offset, static_cast< size_t >( limit ) );
        offset += run->size();
        *count = static_cast< QV_INT >( run->size() ) + extra;

        return !( fails && offset == data.size() );
    }

    static SourceLog *of( QV_OBJ *closure )
    {
        return static_cast< SourceLog * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
    }

    static QV_BOOL read( QV_OBJ *closure, QV_BUFFER **buf, QV_INT maxByteCount, QV_INT *bytesRead )
    {
        EXPECT_EQ( 0, *bytesRead );

        std::string_view run;
        QV_BOOL          ok = of( closure )->advance( maxByteCount, &run, bytesRead );
        qvBufferAppendBytes( buf, run.data(), static_cast< QV_INT >( run.size() ) );

        return ok;
    }

    static QV_BOOL skip( QV_OBJ *closure, QV_INT maxByteCount, QV_INT *bytesSkipped )
    {
        std::string_view run;
        return of( closure )->advance( maxByteCount, &run, bytesSkipped );
    }
};
} // namespace

TEST( ByteSink, WritesTheRangesOfABuffer )
{
    Ref< QV_BUFFER > abcdef = buffer( "abcdef" );

    const struct
    {
        std::string written, calls;
        QV_BOOL ( *write )( QV_BYTE_SINK *sink, QV_BUFFER *buf );
    } CASES[] = {
        { "abcdef", "w", qvByteSinkWrite },
        { "ab", "w", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteLeading( s, b, 2 ); } },
        { "", "", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteLeading( s, b, 0 ); } },
        { "ef", "w", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteTrailing( s, b, 2 ); } },
        { "abcdef", "w", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteTrailing( s, b, 6 ); } },
        { "cd", "w", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteInner( s, b, 2, 2 ); } },
        { "", "", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteInner( s, b, 6, 0 ); } },
        { "abef", "ww", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteOuter( s, b, 2, 2 ); } },
        { "ef", "w", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteOuter( s, b, 0, 4 ); } },
        { "abcd", "w", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteOuter( s, b, 4, 2 ); } },
        { "abcdef", "w", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteOuter( s, b, 0, 0 ); } },
        { "", "", []( QV_BYTE_SINK *s, QV_BUFFER *b ) { return qvByteSinkWriteOuter( s, b, 0, 6 ); } },
        { "xyz", "w", []( QV_BYTE_SINK *s, QV_BUFFER * ) { return qvByteSinkWriteBytes( s, "xyz", 3 ); } },
        { "", "", []( QV_BYTE_SINK *s, QV_BUFFER * ) { return qvByteSinkWriteBytes( s, nullptr, 0 ); } },
        { "", "", []( QV_BYTE_SINK *s, QV_BUFFER * ) { return qvByteSinkWriteInner( s, nullptr, 0, 0 ); } },
        { "", "", []( QV_BYTE_SINK *s, QV_BUFFER * ) { return qvByteSinkWriteOuter( s, nullptr, 0, 0 ); } },
    };

    for( const auto &c : CASES )
    {
        SCOPED_TRACE( &c - CASES );

        SinkLog             log;
        Ref< QV_BYTE_SINK > sink = log.sink();

        EXPECT_EQ( QV_TRUE, c.write( sink, abcdef ) );
        EXPECT_EQ( c.written, log.written );
        EXPECT_EQ( c.calls, log.calls );
    }
}

TEST( ByteSink, StaysFailedOnceAWriteHasFailed )
{
    SinkLog             log;
    Ref< QV_BUFFER >    abcdef = buffer( "abcdef" );
    Ref< QV_BYTE_SINK > sink   = log.sink();

    // The second half of the second write fails; its first half is written.
    log.writesUntilFailure = 2;
    EXPECT_TRUE( qvByteSinkWrite( sink, abcdef ) );
    EXPECT_FALSE( qvByteSinkError( sink ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkWriteOuter( sink, abcdef, 1, 4 ) );
    EXPECT_EQ( QV_TRUE, qvByteSinkError( sink ) );
    EXPECT_EQ( "abcdefa", log.written );
    EXPECT_EQ( "www", log.calls );

    EXPECT_EQ( QV_FALSE, qvByteSinkWrite( sink, abcdef ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkWriteTrailing( sink, abcdef, 1 ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkWriteOuter( sink, abcdef, 0, 6 ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkWriteInner( sink, abcdef, 6, 0 ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkWriteInner( sink, nullptr, 0, 0 ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkWriteTrailing( sink, nullptr, 0 ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkWriteBytes( sink, "x", 1 ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkWriteBytes( sink, nullptr, 0 ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkFlush( sink ) );

    sink.reset();
    EXPECT_EQ( "wwwe", log.calls );
}

TEST( ByteSink, FlushesBeforeItGivesItsClosureUp )
{
    SinkLog             log;
    Ref< QV_BYTE_SINK > sink = log.sink();

    EXPECT_EQ( QV_TRUE, qvByteSinkFlush( sink ) );
    sink.reset();
    EXPECT_EQ( "ffe", log.calls );

    SinkLog failing;
    failing.flushFails = true;
    sink               = failing.sink();
    EXPECT_EQ( QV_FALSE, qvByteSinkFlush( sink ) );
    EXPECT_EQ( QV_TRUE, qvByteSinkError( sink ) );
    EXPECT_FALSE( qvByteSinkWriteBytes( sink, "x", 1 ) );
    sink.reset();
    EXPECT_EQ( "fe", failing.calls );
}

TEST( ByteSink, RangesAreChecked )
{
    SinkLog             log;
    Ref< QV_BUFFER >    abc  = buffer( "abc" );
    Ref< QV_BYTE_SINK > sink = log.sink();

    EXPECT_BROKEN( qvByteSinkWriteInner( sink, abc, -1, 1 ), "byteOffset >= 0" );
    EXPECT_BROKEN( qvByteSinkWriteInner( sink, nullptr, 0, 1 ), "byteCount == 0 || buf" );
    EXPECT_BROKEN( qvByteSinkWriteOuter( sink, nullptr, 1, 0 ), "byteOffset == 0 || buf" );
    EXPECT_BROKEN( qvByteSinkWriteInner( sink, abc, 1, QV_INT_MAX ), "QV_INT_ADD_OK( byteOffset, byteCount )" );
    EXPECT_BROKEN( qvByteSinkWriteInner( sink, abc, 2, 2 ), "byteOffset + byteCount <= qvBufferLength( buf )" );
    EXPECT_BROKEN( qvByteSinkWriteBytes( sink, nullptr, 1 ), "bytes || byteCount == 0" );
    EXPECT_BROKEN( qvByteSinkWrite( nullptr, abc ), "sink" );
    EXPECT_BROKEN( qvByteSinkWrite( sink, nullptr ), "buf" );
}

TEST( ByteSource, OnlyAShortReadMeetsTheEnd )
{
    for( bool whole : { true, false } )
    {
        SourceLog             log{ .data = pattern( 10 ) };
        Ref< QV_BYTE_SOURCE > source = log.source();
        Ref< QV_BUFFER >      buf    = buffer( "<" );

        EXPECT_EQ( 0, qvByteSourceRead( source, buf.at(), 0 ) );
        EXPECT_TRUE( log.limits.empty() );

        EXPECT_EQ( 10, qvByteSourceRead( source, buf.at(), whole ? 10 : 11 ) );
        EXPECT_EQ( std::string( 1, '<' ).append( pattern( 10 ) ), bytes( buf ) );
        EXPECT_EQ( whole ? QV_FALSE : QV_TRUE, qvByteSourceEnd( source ) );

        EXPECT_EQ( 0, qvByteSourceRead( source, buf.at(), -1 ) );
        EXPECT_EQ( QV_TRUE, qvByteSourceEnd( source ) );
        EXPECT_EQ( QV_FALSE, qvByteSourceError( source ) );

        // No operation gets through any more.
        size_t calls = log.limits.size();
        char   byte  = 'x';
        log.data += "more";
        EXPECT_EQ( 0, qvByteSourceRead( source, buf.at(), 1 ) );
        EXPECT_EQ( 0, qvByteSourceReadBytes( source, &byte, 1 ) );
        EXPECT_EQ( 0, qvByteSourceSkip( source, 1 ) );
        EXPECT_EQ( calls, log.limits.size() );
        EXPECT_EQ( 'x', byte );
    }
}

TEST( ByteSource, WhatCameBeforeAFailureIsDelivered )
{
    SourceLog             log{ .data = "abcd", .fails = true };
    Ref< QV_BYTE_SOURCE > source = log.source();
    Ref< QV_BUFFER >      buf( qvBufferCreate() );

    EXPECT_EQ( 4, qvByteSourceRead( source, buf.at(), 4 ) );
    EXPECT_EQ( "abcd", bytes( buf ) );
    EXPECT_TRUE( qvByteSourceEnd( source ) );
    EXPECT_TRUE( qvByteSourceError( source ) );

    log.offset = 0;
    source     = log.source();
    char array[6] = "-----";
    EXPECT_EQ( 4, qvByteSourceReadBytes( source, array, 5 ) );
    EXPECT_STREQ( "abcd-", array );
    EXPECT_TRUE( qvByteSourceError( source ) );

    for( bool withSkip : { false, true } )
    {
        log.offset = 0;
        source     = log.source( withSkip );
        EXPECT_EQ( 3, qvByteSourceSkip( source, 3 ) );
        EXPECT_FALSE( qvByteSourceError( source ) );
        EXPECT_EQ( 1, qvByteSourceSkip( source, -1 ) );
        EXPECT_TRUE( qvByteSourceEnd( source ) );
        EXPECT_TRUE( qvByteSourceError( source ) );
    }
}

TEST( ByteSource, SkippingWithoutACallbackReadsInPieces )
{
    SourceLog             log{ .data = pattern( 10001 ) };
    Ref< QV_BYTE_SOURCE > source = log.source();
    Ref< QV_BUFFER >      buf( qvBufferCreate() );

    EXPECT_EQ( 0, qvByteSourceSkip( source, 0 ) );
    EXPECT_EQ( 10000, qvByteSourceSkip( source, 10000 ) );
    EXPECT_EQ( ( std::vector< QV_INT >{ 4096, 4096, 1808 } ), log.limits );
    EXPECT_FALSE( qvByteSourceEnd( source ) );

    EXPECT_EQ( 1, qvByteSourceSkip( source, -1 ) );
    EXPECT_TRUE( qvByteSourceEnd( source ) );
    EXPECT_EQ( 4096, log.limits.back() );
}

TEST( ByteSource, CountsOfCallbacksAreChecked )
{
    SourceLog             tooMany{ .data = "abc", .extra = 1 }, negative{ .data = "", .extra = -1 };
    Ref< QV_BYTE_SOURCE > many = tooMany.source( true ), less = negative.source( true );
    Ref< QV_BUFFER >      buf( qvBufferCreate() );
    char                  array[8];

    EXPECT_BROKEN( qvByteSourceRead( many, buf.at(), 3 ), "bytesRead <= maxByteCount" );
    EXPECT_BROKEN( qvByteSourceReadBytes( less, array, 3 ), "bytesRead >= 0" );
    EXPECT_BROKEN( qvByteSourceSkip( many, 3 ), "bytesSkipped <= maxByteCount" );
    EXPECT_BROKEN( qvByteSourceRead( many, buf.at(), -2 ), "maxByteCount >= -1" );
    EXPECT_BROKEN( qvByteSourceReadBytes( many, nullptr, 1 ), "bytes || maxByteCount == 0" );
    EXPECT_EQ( 0, qvByteSourceReadBytes( many, nullptr, 0 ) );
}

TEST( BufferByteSink, HandsOutWhatHasBeenWritten )
{
    Ref< QV_BUFFER_BYTE_SINK > bbs( qvBufferByteSinkCreate() );
    Ref< QV_BYTE_SINK >        first( qvBufferByteSinkByteSink( bbs ) ), second( qvBufferByteSinkByteSink( bbs ) );
    Ref< QV_BUFFER >           source = buffer( "abcdef" );

    EXPECT_TRUE( qvByteSinkWriteInner( first, source, 1, 2 ) );
    EXPECT_TRUE( qvByteSinkWriteBytes( second, "xy", 2 ) );
    EXPECT_TRUE( qvByteSinkFlush( first ) );
    EXPECT_EQ( "bcxy", take( qvBufferByteSinkBuffer( bbs ) ) );
    EXPECT_EQ( "", take( qvBufferByteSinkBuffer( bbs ) ) );

    // A Buffer that was handed out doesn't change any more.
    EXPECT_TRUE( qvByteSinkWriteBytes( first, "1", 1 ) );
    Ref< QV_BUFFER > one( qvBufferByteSinkBuffer( bbs ) );
    EXPECT_TRUE( qvByteSinkWriteBytes( first, "2", 1 ) );
    EXPECT_EQ( "1", bytes( one ) );
    EXPECT_EQ( "2", take( qvBufferByteSinkBuffer( bbs ) ) );
}

TEST( BufferByteSource, IsReadInPiecesOfAnySize )
{
    const std::string             DATA = pattern( 20000 );
    Ref< QV_BUFFER >              src  = buffer( DATA );
    Ref< QV_BUFFER_BYTE_SOURCE >  bbs( qvBufferByteSourceCreate( src ) );
    Ref< QV_BYTE_SOURCE >         sources[] = { Ref< QV_BYTE_SOURCE >( qvBufferByteSourceByteSource( bbs ) ),
                                                Ref< QV_BYTE_SOURCE >( qvBufferByteSourceByteSource( bbs ) ) };
    std::mt19937                  random( 71 );
    std::string                   got;
    char                          array[300];
    Ref< QV_BUFFER >              buf( qvBufferCreate() );

    // The sources share the position, so either gives what comes next, until one of them comes up short.
    while( !qvByteSourceEnd( sources[0] ) && !qvByteSourceEnd( sources[1] ) )
    {
        QV_BYTE_SOURCE *source = sources[random() % 2];
        QV_INT          limit  = random() % 301;
        QV_INT          count;

        switch( random() % 3 )
        {
        case 0:
            count = qvByteSourceRead( source, buf.at(), limit );
            got += bytes( buf );
            qvBufferClear( buf.at() );
            break;
        case 1:
            count = qvByteSourceReadBytes( source, array, limit );
            got.append( array, static_cast< size_t >( count ) );
            break;
        default:
            count = qvByteSourceSkip( source, limit );
            got += DATA.substr( got.size(), static_cast< size_t >( count ) );
        }

        EXPECT_EQ( count < limit, qvByteSourceEnd( source ) == QV_TRUE );
    }

    EXPECT_EQ( DATA, got );
    EXPECT_FALSE( qvByteSourceError( sources[0] ) );
    EXPECT_EQ( DATA, take( qvBufferByteSourceBuffer( bbs ) ) );
}

TEST( BufferByteSource, KeepsItsBufferAsItWas )
{
    Ref< QV_BUFFER >             src = buffer( "abc" );
    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( src ) );
    Ref< QV_BYTE_SOURCE >        source( qvBufferByteSourceByteSource( bbs ) );

    qvBufferAppendByte( src.at(), 'd' );
    bbs.reset();

    // Reading a Buffer into a reference to the same one.
    Ref< QV_BUFFER > dest( qvBufferCreate() );
    EXPECT_EQ( 3, qvByteSourceRead( source, dest.at(), -1 ) );
    EXPECT_EQ( "abc", bytes( dest ) );
    EXPECT_EQ( "abcd", bytes( src ) );
}

#include "qv_stream_log.h"

#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_buffer_byte_source.h"

#include <random>

using qv::Ref;
using namespace qv::test;

namespace
{
std::string take( QV_BUFFER *owned )
{
    return bytes( Ref< QV_BUFFER >( owned ) );
}

// Some bytes that differ from their neighbours.
std::string pattern( size_t count )
{
    std::string result( count, '\0' );

    for( size_t i = 0; i < count; i++ )
        result[i] = static_cast< char >( i * 7 + i / 256 );

    return result;
}

// The source of a log with a callback for skipping.
Ref< QV_BYTE_SOURCE > skippable( SourceLog< Bytes > *log )
{
    auto read = []( QV_OBJ *, QV_BUFFER **, QV_INT, QV_INT * ) -> QV_BOOL { return QV_FALSE; };
    auto skip = []( QV_OBJ *closure, QV_INT limit, QV_INT *count ) -> QV_BOOL
    {
        std::string run;
        return logOf< SourceLog< Bytes > >( closure )->take( limit, &run, count );
    };

    return Ref< QV_BYTE_SOURCE >( qv___ByteSourceCreate( read, skip, qv::obj( closureOf( log ).get() ) ) );
}
} // namespace

TEST( ByteSink, WritesTheRangesOfABuffer )
{
    typedef QV_BYTE_SINK S;
    typedef QV_BUFFER    B;

    const struct
    {
        std::string written, calls;
        QV_BOOL ( *write )( S *sink, B *buf );
    } CASES[] = {
        { "abcdef", "w", qvByteSinkWrite },
        { "ab", "w", []( S *s, B *b ) { return qvByteSinkWriteLeading( s, b, 2 ); } },
        { "", "", []( S *s, B *b ) { return qvByteSinkWriteLeading( s, b, 0 ); } },
        { "ef", "w", []( S *s, B *b ) { return qvByteSinkWriteTrailing( s, b, 2 ); } },
        { "cd", "w", []( S *s, B *b ) { return qvByteSinkWriteInner( s, b, 2, 2 ); } },
        { "", "", []( S *s, B *b ) { return qvByteSinkWriteInner( s, b, 6, 0 ); } },
        { "abef", "ww", []( S *s, B *b ) { return qvByteSinkWriteOuter( s, b, 2, 2 ); } },
        { "ef", "w", []( S *s, B *b ) { return qvByteSinkWriteOuter( s, b, 0, 4 ); } },
        { "abcd", "w", []( S *s, B *b ) { return qvByteSinkWriteOuter( s, b, 4, 2 ); } },
        { "abcdef", "w", []( S *s, B *b ) { return qvByteSinkWriteOuter( s, b, 0, 0 ); } },
        { "", "", []( S *s, B *b ) { return qvByteSinkWriteOuter( s, b, 0, 6 ); } },
        { "xyz", "w", []( S *s, B * ) { return qvByteSinkWriteBytes( s, "xyz", 3 ); } },
        { "", "", []( S *s, B * ) { return qvByteSinkWriteBytes( s, nullptr, 0 ); } },
        { "", "", []( S *s, B * ) { return qvByteSinkWriteInner( s, nullptr, 0, 0 ); } },
    };

    Ref< QV_BUFFER > abcdef = buffer( "abcdef" );

    for( const auto &c : CASES )
    {
        SCOPED_TRACE( &c - CASES );

        SinkLog< Bytes >    log;
        Ref< QV_BYTE_SINK > sink = log.sink();

        EXPECT_EQ( QV_TRUE, c.write( sink, abcdef ) );
        EXPECT_EQ( c.written, log.written );
        EXPECT_EQ( c.calls, log.calls );

        // Once the sink has failed, nothing gets through.
        log.callsUntilFailure = 0;
        EXPECT_EQ( QV_FALSE, qvByteSinkFlush( sink ) );
        EXPECT_EQ( QV_FALSE, c.write( sink, abcdef ) );
        EXPECT_EQ( c.calls + "f", log.calls );
    }
}

TEST( ByteSink, KeepsWhatCameBeforeAFailure )
{
    SinkLog< Bytes >    log;
    Ref< QV_BUFFER >    abcdef = buffer( "abcdef" );
    Ref< QV_BYTE_SINK > sink   = log.sink();

    log.callsUntilFailure = 2;
    EXPECT_TRUE( qvByteSinkWrite( sink, abcdef ) );
    EXPECT_FALSE( qvByteSinkError( sink ) );
    EXPECT_EQ( QV_FALSE, qvByteSinkWriteOuter( sink, abcdef, 1, 4 ) );
    EXPECT_EQ( QV_TRUE, qvByteSinkError( sink ) );
    EXPECT_EQ( "abcdefa", log.written );

    // A failed sink isn't flushed at its end.
    sink.reset();
    EXPECT_EQ( "wwwe", log.calls );

    SinkLog< Bytes > good;
    sink = good.sink();
    EXPECT_EQ( QV_TRUE, qvByteSinkFlush( sink ) );
    sink.reset();
    EXPECT_EQ( "ffe", good.calls );
}

TEST( ByteSink, RangesAreChecked )
{
    SinkLog< Bytes >    log;
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
        SourceLog< Bytes >    log{ .data = pattern( 10 ) };
        Ref< QV_BYTE_SOURCE > source = log.source();
        Ref< QV_BUFFER >      buf    = buffer( pattern( 1 ) );

        EXPECT_EQ( 0, qvByteSourceRead( source, buf.at(), 0 ) );
        EXPECT_TRUE( log.limits.empty() );

        EXPECT_EQ( 10, qvByteSourceRead( source, buf.at(), whole ? 10 : 11 ) );
        EXPECT_EQ( pattern( 1 ).append( pattern( 10 ) ), bytes( buf ) );
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

TEST( ByteSource, DeliversWhatCameBeforeAFailure )
{
    SourceLog< Bytes >    log{ .data = "abcd", .fails = true };
    Ref< QV_BYTE_SOURCE > source = log.source();
    Ref< QV_BUFFER >      buf( qvBufferCreate() );
    char                  array[6] = "-----";

    EXPECT_EQ( 4, qvByteSourceRead( source, buf.at(), 4 ) );
    EXPECT_EQ( "abcd", bytes( buf ) );
    EXPECT_TRUE( qvByteSourceEnd( source ) );
    EXPECT_TRUE( qvByteSourceError( source ) );

    log.offset = 0;
    source     = log.source();
    EXPECT_EQ( 4, qvByteSourceReadBytes( source, array, 5 ) );
    EXPECT_STREQ( "abcd-", array );
    EXPECT_TRUE( qvByteSourceError( source ) );

    for( bool withCallback : { false, true } )
    {
        log.offset = 0;
        source     = withCallback ? skippable( &log ) : log.source();
        EXPECT_EQ( 3, qvByteSourceSkip( source, 3 ) );
        EXPECT_FALSE( qvByteSourceEnd( source ) );
        EXPECT_EQ( 1, qvByteSourceSkip( source, -1 ) );
        EXPECT_TRUE( qvByteSourceEnd( source ) );
        EXPECT_TRUE( qvByteSourceError( source ) );
    }
}

TEST( ByteSource, SkippingWithoutACallbackReadsInPieces )
{
    SourceLog< Bytes >    log{ .data = pattern( 10001 ) };
    Ref< QV_BYTE_SOURCE > source = log.source();

    EXPECT_EQ( 10000, qvByteSourceSkip( source, 10000 ) );
    EXPECT_EQ( ( std::vector< QV_INT >{ 4096, 4096, 1808 } ), log.limits );
    EXPECT_FALSE( qvByteSourceEnd( source ) );
    EXPECT_EQ( 1, qvByteSourceSkip( source, -1 ) );
    EXPECT_TRUE( qvByteSourceEnd( source ) );
    EXPECT_EQ( 4096, log.limits.back() );
}

TEST( ByteSource, CountsAreChecked )
{
    SourceLog< Bytes >    tooMany{ .data = "abc", .extra = 1 }, negative{ .data = "", .extra = -1 };
    Ref< QV_BYTE_SOURCE > many = tooMany.source(), less = negative.source(), skipping = skippable( &tooMany );
    Ref< QV_BUFFER >      buf( qvBufferCreate() );
    char                  array[8];

    EXPECT_BROKEN( qvByteSourceRead( many, buf.at(), 3 ), "bytesRead <= maxByteCount" );
    EXPECT_BROKEN( qvByteSourceReadBytes( less, array, 3 ), "bytesRead >= 0" );
    EXPECT_BROKEN( qvByteSourceSkip( skipping, 3 ), "bytesSkipped <= maxByteCount" );
    EXPECT_BROKEN( qvByteSourceRead( many, buf.at(), -2 ), "maxByteCount >= -1" );
    EXPECT_BROKEN( qvByteSourceReadBytes( many, nullptr, 1 ), "bytes || maxByteCount == 0" );
    EXPECT_EQ( 0, qvByteSourceReadBytes( many, nullptr, 0 ) );
}

TEST( BufferByteSink, HandsOutWhatHasBeenWritten )
{
    const std::string          DATA = pattern( 4000 );
    std::mt19937               random( 70 );
    std::string                written;
    Ref< QV_BUFFER >           source = buffer( DATA );
    Ref< QV_BUFFER_BYTE_SINK > bbs( qvBufferByteSinkCreate() );
    Ref< QV_BYTE_SINK >        first( qvBufferByteSinkByteSink( bbs ) ), second( qvBufferByteSinkByteSink( bbs ) );

    for( int round = 0; round < 300; round++ )
    {
        QV_INT count = random() % ( round % 50 ? 200 : 4000 );

        written += DATA.substr( 0, static_cast< size_t >( count ) );
        EXPECT_TRUE( random() % 2 ? qvByteSinkWriteLeading( first, source, count )
                                  : qvByteSinkWriteBytes( second, DATA.data(), count ) );
    }

    // No more free space than any Buffer has, and nothing that comes later.
    Ref< QV_BUFFER > result( qvBufferByteSinkBuffer( bbs ) );
    EXPECT_GE( static_cast< QV_INT >( written.size() + 480 ), allocated( result.get() ) );
    EXPECT_EQ( "", take( qvBufferByteSinkBuffer( bbs ) ) );
    EXPECT_TRUE( qvByteSinkWriteBytes( first, "x", 1 ) );
    EXPECT_EQ( written, bytes( result ) );
    EXPECT_EQ( "x", take( qvBufferByteSinkBuffer( bbs ) ) );
}

TEST( BufferByteSource, IsReadInPiecesOfAnySize )
{
    const std::string            DATA = pattern( 20000 );
    Ref< QV_BUFFER >             src  = buffer( DATA );
    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( src ) );
    Ref< QV_BYTE_SOURCE >        sources[] = { Ref< QV_BYTE_SOURCE >( qvBufferByteSourceByteSource( bbs ) ),
                                               Ref< QV_BYTE_SOURCE >( qvBufferByteSourceByteSource( bbs ) ) };
    std::mt19937                 random( 71 );
    std::string                  got;
    char                         array[300];
    Ref< QV_BUFFER >             buf( qvBufferCreate() );

    // The source keeps the Buffer as it was.
    qvBufferAppendByte( src.at(), 'x' );

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

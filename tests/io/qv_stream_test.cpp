// Byte and char streams over callbacks; walks beside models try what they carry.

#include "qv_test_stream.h"

#include "qv/io/qv_buffer_byte_source.h"

using qv::Ref;
using namespace qv::test;

TEST( Sink, RangesGoOutInAsManyWritesAsTheyHaveParts )
{
    SinkLog< Bytes >    log;
    Ref< QV_BYTE_SINK > sink = log.sink();
    Ref< QV_BUFFER >    six  = buffer( "123456" );

    // What is empty in none, also where there is no Buffer.
    EXPECT_TRUE( qvByteSinkWriteTrailing( sink, nullptr, 0 ) && qvByteSinkWriteInner( sink, nullptr, 0, 0 ) );
    EXPECT_TRUE( qvByteSinkWriteOuter( sink, six, 0, 6 ) && qvByteSinkWriteBytes( sink, nullptr, 0 ) );
    EXPECT_EQ( "", log.calls );
    EXPECT_TRUE( qvByteSinkWriteOuter( sink, six, 4, 2 ) && qvByteSinkWriteBytes( sink, "78", 2 ) );
    EXPECT_EQ( "ww", log.calls );
    EXPECT_TRUE( qvByteSinkWriteOuter( sink, six, 2, 2 ) && qvByteSinkFlush( sink ) && !qvByteSinkError( sink ) );
    EXPECT_EQ( "wwwwf", log.calls );

    // What came before a failure stays written. After it nothing gets through, the flush at the end included.
    log.callsUntilFailure = 1;
    EXPECT_FALSE( qvByteSinkWriteOuter( sink, six, 1, 4 ) );
    EXPECT_TRUE( qvByteSinkError( sink ) );
    EXPECT_FALSE( qvByteSinkWriteInner( sink, nullptr, 0, 0 ) || qvByteSinkWriteBytes( sink, nullptr, 0 ) );
    EXPECT_FALSE( qvByteSinkWriteOuter( sink, six, 0, 6 ) || qvByteSinkFlush( sink ) );
    sink.reset();
    EXPECT_EQ( "wwwwfwwe", log.calls );
    EXPECT_EQ( "12347812561", log.written );

    SinkLog< Chars > chars;
    EXPECT_TRUE(
        qvCharSinkWriteTrailing( chars.sink(), nullptr, 0 ) && qvCharSinkWriteChars( chars.sink(), nullptr, 0 ) );
    EXPECT_TRUE( qvCharSinkWriteInner( chars.sink(), nullptr, 0, 0 ) );
    EXPECT_EQ( "fefefe", chars.calls );
}

TEST( Source, OnlyAShortReadOrAFailureMeetsTheEnd )
{
    for( bool whole : { false, true } )
        for( bool fails : { false, true } )
        {
            SourceLog< Bytes >    log{ .data = "0123456789", .fails = fails };
            Ref< QV_BYTE_SOURCE > source    = log.source();
            Ref< QV_BUFFER >      dest      = buffer( "x" );
            char                  array[12] = {};

            EXPECT_EQ( 0, qvByteSourceRead( source, dest.at(), 0 ) + qvByteSourceReadBytes( source, nullptr, 0 ) );
            EXPECT_TRUE( log.limits.empty() );

            // What comes with a failure is delivered.
            EXPECT_EQ( 4, qvByteSourceReadBytes( source, array, 4 ) );
            EXPECT_STREQ( "0123", array );
            EXPECT_EQ( 6, qvByteSourceRead( source, dest.at(), whole ? 6 : 7 ) );
            EXPECT_EQ( "x456789", bytes( dest ) );
            EXPECT_EQ( !whole || fails, qvByteSourceEnd( source ) == QV_TRUE );
            EXPECT_EQ( fails, qvByteSourceError( source ) == QV_TRUE );

            // The end is met once, and then no operation gets through.
            EXPECT_EQ( 0, qvByteSourceReadBytes( source, array, -1 ) );
            EXPECT_EQ( QV_TRUE, qvByteSourceEnd( source ) );
            EXPECT_EQ( fails, qvByteSourceError( source ) == QV_TRUE );

            const size_t calls = log.limits.size();
            log.data += "more";
            EXPECT_EQ( 0, qvByteSourceRead( source, dest.at(), 1 ) + qvByteSourceReadBytes( source, array, 1 ) );
            EXPECT_EQ( calls, log.limits.size() );
        }
}

// Also of sources whose callbacks tell more or less than is true.
TEST( Source, WhatCannotSkipIsRead )
{
    SourceLog< Bytes >    log{ .data = std::string( 9999, '-' ) + "z" };
    Ref< QV_BYTE_SOURCE > source = log.source();
    char                  last   = 0;

    EXPECT_EQ( 9999, qvByteSourceSkip( source, 9999 ) );
    EXPECT_THAT( log.limits, testing::ElementsAre( 4096, 4096, 1807 ) );
    EXPECT_EQ( 1, qvByteSourceReadBytes( source, &last, 1 ) );
    EXPECT_EQ( 'z', last );
    EXPECT_EQ( 0, qvByteSourceSkip( source, -1 ) );
    EXPECT_EQ( QV_TRUE, qvByteSourceEnd( source ) );

    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( buffer( "0123456789" ) ) );
    Ref< QV_BYTE_SOURCE >        ofBuffer( qvBufferByteSourceByteSource( bbs ) );
    EXPECT_EQ( 3, qvByteSourceSkip( ofBuffer, 3 ) );
    EXPECT_EQ( 1, qvByteSourceReadBytes( ofBuffer, &last, 1 ) );
    EXPECT_EQ( '3', last );
    EXPECT_EQ( 6, qvByteSourceSkip( ofBuffer, 7 ) );
    EXPECT_EQ( QV_TRUE, qvByteSourceEnd( ofBuffer ) );
}

TEST( Misuse, IsReported )
{
    static Ref< QV_BUFFER >   six = buffer( "123456" );
    static Ref< QV_STRING >   qvs = text( "" );
    static uint8_t            array[8];
    static SourceLog< Bytes > many{ .data = "abc", .extra = 1 }, less{ .data = "", .extra = -1 };
    static SourceLog< Chars > manyChars{ .data = U"abc", .extra = 1 };
    static SinkLog< Bytes >   log;
    static SinkLog< Chars >   charLog;

    expectReports( {
        { [] { qvByteSinkWriteInner( log.sink(), six, -1, 1 ); }, "byteOffset >= 0" },
        { [] { qvByteSinkWriteInner( log.sink(), nullptr, 0, 1 ); }, "byteCount == 0 || buf" },
        { [] { qvByteSinkWriteInner( log.sink(), six, 1, QV_INT_MAX ); }, "QV_INT_ADD_OK( byteOffset, byteCount )" },
        { [] { qvByteSinkWriteOuter( log.sink(), six, 5, 2 ); }, "byteOffset + byteCount <= qvBufferLength( buf )" },
        { [] { qvByteSinkWriteTrailing( log.sink(), six, 7 ); }, "byteCount <= qvBufferLength( buf )" },
        { [] { qvByteSinkWriteBytes( log.sink(), array, QV_INT_MAX ); }, "BYTES_TO_BITS_OK( byteCount )" },
        { [] { qv___ByteSinkCreate( nullptr, nullptr, nullptr ); }, "writeFunc" },
        { [] { qvCharSinkWriteOuter( charLog.sink(), qvs, 0, 1 ); },
          "charOffset + charCount <= qvStringLength( qvs )" },
        { [] { qvCharSinkWriteChar( charLog.sink(), 0x80000041u ); }, "qvCharsAllOk( src, srcLength )" },
        { [] { qvByteSourceRead( many.source(), six.at(), 3 ); }, "bytesRead <= maxByteCount" },
        { [] { qvByteSourceReadBytes( less.source(), array, 3 ); }, "bytesRead >= 0" },
        { [] { qvByteSourceRead( many.source(), six.at(), -2 ); }, "maxByteCount >= -1" },
        { [] { qvCharSourceRead( manyChars.source(), qvs.at(), 3 ); }, "charsRead <= maxCharCount" },

        // More than it appended, though not more than it was asked for.
        { [] { qvByteSourceReadBytes( many.source(), array, 8 ); },
          "bitIdx + BYTES_TO_BITS( byteCount ) <= buf->bitLength" },
    } );

    six.reset();
    qvs.reset();
}

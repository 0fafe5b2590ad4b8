// Byte and char streams alike: what one kind does, the other has to do too.

#include "qv_test_stream.h"

#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_string_char_sink.h"

using qv::Ref;
using namespace qv::test;

namespace
{
struct ByteStreams : Bytes
{
    typedef uint8_t             Element;
    typedef QV_BUFFER_BYTE_SINK MemorySink;

    static constexpr QV_INT FREE = 480, SIZE = 1; // free places that any Buffer may have, and bytes of a place

    static constexpr auto write        = qvByteSinkWrite;
    static constexpr auto writeLeading = qvByteSinkWriteLeading, writeTrailing = qvByteSinkWriteTrailing;
    static constexpr auto writeInner = qvByteSinkWriteInner, writeOuter = qvByteSinkWriteOuter;
    static constexpr auto writeArray = qvByteSinkWriteBytes;
    static constexpr auto flush = qvByteSinkFlush, failed = qvByteSinkError;
    static constexpr auto read      = qvByteSourceRead;
    static constexpr auto readArray = qvByteSourceReadBytes;
    static constexpr auto ended = qvByteSourceEnd, broken = qvByteSourceError;
    static constexpr auto newMemorySink = qvBufferByteSinkCreate;
    static constexpr auto sinkOf        = qvBufferByteSinkByteSink;
    static constexpr auto takeWritten   = qvBufferByteSinkBuffer;
    static constexpr auto carrier       = buffer;
};

struct CharStreams : Chars
{
    typedef QV_CHAR             Element;
    typedef QV_STRING_CHAR_SINK MemorySink;

    static constexpr QV_INT FREE = 128, SIZE = 4;

    static constexpr auto write        = qvCharSinkWrite;
    static constexpr auto writeLeading = qvCharSinkWriteLeading, writeTrailing = qvCharSinkWriteTrailing;
    static constexpr auto writeInner = qvCharSinkWriteInner, writeOuter = qvCharSinkWriteOuter;
    static constexpr auto writeArray = qvCharSinkWriteChars;
    static constexpr auto flush = qvCharSinkFlush, failed = qvCharSinkError;
    static constexpr auto read      = qvCharSourceRead;
    static constexpr auto readArray = qvCharSourceReadChars;
    static constexpr auto ended = qvCharSourceEnd, broken = qvCharSourceError;
    static constexpr auto newMemorySink = qvStringCharSinkCreate;
    static constexpr auto sinkOf        = qvStringCharSinkCharSink;
    static constexpr auto takeWritten   = qvStringCharSinkString;
    static constexpr auto carrier       = []( std::u32string_view chars ) { return text( chars ); };
};

// Some elements that differ from their neighbours.
template< class Kind >
typename Kind::Text pattern( size_t count, size_t from = 0 )
{
    typename Kind::Text result;

    for( size_t i = from; i < from + count; i++ )
        result += static_cast< typename Kind::Element >( i * 7 + i / 256 );

    return result;
}

template< class Kind >
struct Stream : testing::Test
{
    typedef typename Kind::Text Text;

    const Text                             six  = pattern< Kind >( 6 );
    const Ref< typename Kind::Carrier >    data = Kind::carrier( six );
    const Ref< typename Kind::MemorySink > memory{ Kind::newMemorySink() };
    const Ref< typename Kind::Sink >       memorySink{ Kind::sinkOf( memory ) };
};

typedef testing::Types< ByteStreams, CharStreams > Kinds;
TYPED_TEST_SUITE( Stream, Kinds );
} // namespace

TYPED_TEST( Stream, RangesGoOutInAsManyWritesAsTheyHaveParts )
{
    typedef TypeParam                  Kind;
    typedef typename Kind::Sink        Sink;
    typedef typename Kind::Carrier     Data;
    typedef typename TestFixture::Text T;

    const T &all = this->six;

    // What lies apart goes out in two writes, and nothing in none. Memory takes arrays, a callback none.
    const struct
    {
        T           written;
        std::string calls;
        QV_BOOL ( *write )( Sink *sink, Data *data );
    } CASES[] = {
        { {}, "", []( Sink *s, Data * ) { return Kind::writeTrailing( s, nullptr, 0 ); } },
        { {}, "", []( Sink *s, Data * ) { return Kind::writeInner( s, nullptr, 0, 0 ); } },
        { all.substr( 0, 2 ) + all.substr( 4 ), "ww",
          []( Sink *s, Data *d ) { return Kind::writeOuter( s, d, 2, 2 ); } },
        { all.substr( 0, 4 ), "w", []( Sink *s, Data *d ) { return Kind::writeOuter( s, d, 4, 2 ); } },
        { {}, "", []( Sink *s, Data *d ) { return Kind::writeOuter( s, d, 0, 6 ); } },
        { all.substr( 0, 3 ), "w",
          []( Sink *s, Data * ) { return Kind::writeArray( s, pattern< Kind >( 3 ).data(), 3 ); } },
        { {}, "", []( Sink *s, Data * ) { return Kind::writeArray( s, nullptr, 0 ); } },
    };

    for( const auto &c : CASES )
    {
        SCOPED_TRACE( &c - CASES );
        SinkLog< Kind > log;
        Ref< Sink >     sink = log.sink();
        EXPECT_TRUE( c.write( sink, this->data ) && c.write( this->memorySink, this->data ) );
        EXPECT_EQ( c.written, log.written );
        Ref< Data > kept( Kind::takeWritten( this->memory ) );
        EXPECT_EQ( c.written, Kind::textOf( kept ) );
        EXPECT_GE( ( 6 + Kind::FREE ) * Kind::SIZE, allocated( kept.get() ) );
        EXPECT_EQ( c.calls, log.calls );

        // Once the sink has failed, nothing gets through, and it isn't flushed at its end.
        log.callsUntilFailure = 0;
        EXPECT_FALSE( Kind::flush( sink ) || c.write( sink, this->data ) );
        sink.reset();
        EXPECT_EQ( c.calls + "fe", log.calls );
    }

    // What came before a failure stays written.
    SinkLog< Kind > log;
    Ref< Sink >     sink  = log.sink();
    log.callsUntilFailure = 1;
    EXPECT_EQ( QV_FALSE, Kind::failed( sink ) );
    EXPECT_EQ( QV_FALSE, Kind::writeOuter( sink, this->data, 1, 4 ) );
    EXPECT_EQ( QV_TRUE, Kind::failed( sink ) );
    EXPECT_EQ( all.substr( 0, 1 ), log.written );

    // A good sink is flushed at its end.
    SinkLog< Kind > good;
    sink = good.sink();
    EXPECT_EQ( QV_TRUE, Kind::flush( sink ) );
    sink.reset();
    EXPECT_EQ( "ffe", good.calls );
}

TYPED_TEST( Stream, OnlyAShortReadOrAFailureMeetsTheEnd )
{
    typedef TypeParam                  Kind;
    typedef typename TestFixture::Text T;

    for( int variant = 0; variant < 4; variant++ )
    {
        bool                         whole = variant & 1, fails = variant & 2;
        SourceLog< Kind >            log{ .data = pattern< Kind >( 10 ), .fails = fails };
        Ref< typename Kind::Source > source    = log.source();
        auto                         dest      = Kind::carrier( pattern< Kind >( 1 ) );
        typename Kind::Element       array[12] = {};

        EXPECT_EQ( 0, Kind::read( source, dest.at(), 0 ) );
        EXPECT_EQ( 0, Kind::readArray( source, nullptr, 0 ) );
        EXPECT_TRUE( log.limits.empty() );

        // What comes with a failure is delivered.
        EXPECT_EQ( 4, Kind::readArray( source, array, 4 ) );
        EXPECT_EQ( pattern< Kind >( 4 ), T( array, array + 4 ) );
        EXPECT_EQ( typename Kind::Element(), array[4] );
        EXPECT_EQ( 6, Kind::read( source, dest.at(), whole ? 6 : 7 ) );
        EXPECT_EQ( pattern< Kind >( 1 ) + pattern< Kind >( 6, 4 ), Kind::textOf( dest ) );
        EXPECT_EQ( !whole || fails, Kind::ended( source ) == QV_TRUE );
        EXPECT_EQ( fails, Kind::broken( source ) == QV_TRUE );

        // The end is met once, and then no operation gets through.
        EXPECT_EQ( 0, Kind::readArray( source, array, -1 ) );
        EXPECT_EQ( QV_TRUE, Kind::ended( source ) );
        EXPECT_EQ( fails, Kind::broken( source ) == QV_TRUE );

        size_t calls = log.limits.size();
        log.data += pattern< Kind >( 1 );
        EXPECT_EQ( 0, Kind::read( source, dest.at(), 1 ) );
        EXPECT_EQ( 0, Kind::readArray( source, array, 1 ) );
        EXPECT_EQ( calls, log.limits.size() );
    }
}

// Of a sink, of memory, and of sources whose callbacks tell more or less than is true.
TEST( Misuse, IsReported )
{
    static Ref< QV_BUFFER_BYTE_SINK > memory( qvBufferByteSinkCreate() );
    static QV_BYTE_SINK              *sink = qvBufferByteSinkByteSink( memory );
    static QV_CHAR_SINK              *charSink;
    static QV_BUFFER                 *six = qvBufferCreateFromBytesCopy( "123456", 6 );
    static QV_STRING                 *qvs = qvStringCreate();
    static uint8_t                    array[8];
    static SourceLog< Bytes >         many{ .data = "abc", .extra = 1 }, less{ .data = "", .extra = -1 };
    static SourceLog< Chars >         manyChars{ .data = U"abc", .extra = 1 };
    static SinkLog< Bytes >           log;
    static SinkLog< Chars >           charLog;
    charSink = charLog.sink().give();

    expectReports( {
        { [] { qvByteSinkWriteInner( sink, six, -1, 1 ); }, "byteOffset >= 0" },
        { [] { qvByteSinkWriteInner( log.sink(), nullptr, 0, 1 ); }, "byteCount == 0 || buf" },
        { [] { qvByteSinkWriteInner( sink, six, 1, QV_INT_MAX ); }, "QV_INT_ADD_OK( byteOffset, byteCount )" },
        { [] { qvByteSinkWriteOuter( sink, six, 5, 2 ); }, "byteOffset + byteCount <= qvBufferLength( buf )" },
        { [] { qvByteSinkWriteTrailing( log.sink(), six, 7 ); }, "byteCount <= qvBufferLength( buf )" },
        { [] { qvByteSinkWriteBytes( sink, array, QV_INT_MAX ); }, "BYTES_TO_BITS_OK( byteCount )" },
        { [] { qv___ByteSinkCreate( nullptr, nullptr, nullptr ); }, "writeFunc" },
        { [] { qvCharSinkWriteOuter( charSink, qvs, 0, 1 ); }, "charOffset + charCount <= qvStringLength( qvs )" },
        { [] { qvCharSinkWriteChar( charSink, 0x80000041u ); }, "qvCharsAllOk( src, srcLength )" },
        { [] { qvByteSourceRead( many.source(), &six, 3 ); }, "bytesRead <= maxByteCount" },
        { [] { qvByteSourceReadBytes( less.source(), array, 3 ); }, "bytesRead >= 0" },
        { [] { qvByteSourceRead( many.source(), &six, -2 ); }, "maxByteCount >= -1" },
        { [] { qvCharSourceRead( manyChars.source(), &qvs, 3 ); }, "charsRead <= maxCharCount" },

        // More than it appended, though not more than it was asked for.
        { [] { qvByteSourceReadBytes( many.source(), array, 8 ); },
          "bitIdx + BYTES_TO_BITS( byteCount ) <= buf->bitLength" },
    } );

    qvByteSinkRelease( sink );
    qvCharSinkRelease( charSink );
    qvBufferRelease( six );
    qvStringRelease( qvs );
    memory.reset();
}

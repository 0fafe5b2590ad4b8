#include "qv_test_call.h"
#include "qv_test_child.h"
#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_random.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_runtime.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <vector>

#include <fcntl.h>

using qv::Ref;
using namespace qv::test;

namespace
{
// The descriptor through which the library reads the device.
int deviceDescriptor()
{
    for( const auto &entry : std::filesystem::directory_iterator( "/proc/self/fd" ) )
    {
        std::error_code error;

        if( std::filesystem::read_symlink( entry.path(), error ) == "/dev/urandom" )
            return std::stoi( entry.path().filename() );
    }

    return -1;
}

// Puts another file in the place of the device for a scope.
class StandIn
{
public:
    explicit StandIn( const std::string &name ) : device_( deviceDescriptor() ), kept_( dup( device_ ) )
    {
        int file = open( name.c_str(), O_RDONLY );
        dup2( file, device_ );
        close( file );
    }

    ~StandIn()
    {
        dup2( kept_, device_ );
        close( kept_ );
    }

private:
    int device_;
    int kept_;
};
} // namespace

TEST( Random, BytesComeOnceAndInOrder )
{
    std::string content;

    for( int i = 0; i < 5000; i++ )
        content += static_cast< char >( i % 251 );

    std::ofstream( scratch() + "bytes", std::ios::binary ) << content;
    ASSERT_GE( deviceDescriptor(), 0 );
    StandIn standIn( scratch() + "bytes" );

    // The rest of the pool, of unknown length, goes first.
    uint8_t rest[128];
    qvRandomBytes( rest, sizeof( rest ) );
    uint8_t expected = qvRandomByte();

    auto next = [&expected] { return expected = static_cast< uint8_t >( ( expected + 1 ) % 251 ); };

    for( QV_INT count : { 1, 0, 127, 128, 129, 200, 500, 3 } )
    {
        std::vector< uint8_t > bytes( static_cast< size_t >( count ) );
        qvRandomBytes( bytes.data(), count );

        for( uint8_t byte : bytes )
            ASSERT_EQ( next(), byte );

        Ref< QV_BUFFER > buffer( qvBufferCreateFromByte( 0xAA ) );
        qvRandom( buffer.at(), count );
        ASSERT_EQ( 1 + count, qvBufferLength( buffer ) );
        ASSERT_EQ( 0xAA, qvBufferReadByte( buffer, 0 ) );

        for( QV_INT i = 1; i <= count; i++ )
            ASSERT_EQ( next(), qvBufferReadByte( buffer, i ) );
    }

    uint64_t value = static_cast< uint64_t >( qvRandomInt() );

    for( int i = 0; i < 8; i++ )
        ASSERT_EQ( next(), reinterpret_cast< uint8_t * >( &value )[i] );

    // Nothing wanted, nothing taken.
    QV_BUFFER *none = nullptr;
    qvRandom( &none, 0 );
    qvRandomBytes( nullptr, 0 );
    EXPECT_EQ( next(), qvRandomByte() );
}

TEST( Random, ValuesStayInTheirRangesAndFillThem )
{
    for( QV_INT bitCount : { 0, 1, 7, 32, 63, 64 } )
    {
        uint64_t seen   = 0;
        uint64_t always = ~uint64_t( 0 );

        for( int i = 0; i < 200; i++ )
        {
            uint64_t value = static_cast< uint64_t >( qvRandomBits( bitCount ) );
            seen |= value;
            always &= value;
        }

        EXPECT_EQ( bitCount == 0 ? 0 : ~uint64_t( 0 ) >> ( 64 - bitCount ), seen );
        EXPECT_EQ( 0u, always );
    }

    std::set< QV_INT >  bits, values;
    std::set< uint8_t > bytes;

    for( int i = 0; i < 5000; i++ )
    {
        bits.insert( qvRandomBit() );
        values.insert( qvRandomNonNegativeIntRange( 9, 3 ) );
        bytes.insert( qvRandomByte() );
        ASSERT_GE( qvRandomNonNegativeInt(), 0 );
        ASSERT_GE( qvRandomNonNegativeIntRange( 0, QV_INT_MAX ), 0 );
        ASSERT_GE( qvRandomNonNegativeIntRange( QV_INT_MAX, QV_INT_MAX - 1 ), QV_INT_MAX - 1 );
    }

    EXPECT_EQ( ( std::set< QV_INT >{ 0, 1 } ), bits );
    EXPECT_EQ( ( std::set< QV_INT >{ 3, 4, 5, 6, 7, 8, 9 } ), values );
    EXPECT_EQ( 256u, bytes.size() );
    EXPECT_EQ( 7, qvRandomNonNegativeIntRange( 7, 7 ) );
}

TEST( Random, ThreadsShareTheBytes )
{
    const size_t          THREADS = 4, COUNT = 5000;
    std::vector< QV_INT > values( THREADS * COUNT );
    onThreads(
        THREADS,
        [&]( size_t t )
        {
            for( size_t i = 0; i < COUNT; i++ )
                values[t * COUNT + i] = qvRandomInt();
        } );

    std::sort( values.begin(), values.end() );
    EXPECT_EQ( values.end(), std::adjacent_find( values.begin(), values.end() ) );
}

TEST( Random, WithoutTheDevice )
{
    // No descriptor left to open it with.
    Ending ending = inOwnRun(
        []
        {
            qvRuntimeShutdown();
            rlimit limit;
            getrlimit( RLIMIT_NOFILE, &limit );
            rlimit none = { 3, limit.rlim_max };
            setrlimit( RLIMIT_NOFILE, &none );
            qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr );
            setrlimit( RLIMIT_NOFILE, &limit );
            std::set< QV_INT > values;

            for( int i = 0; i < 1000; i++ )
                values.insert( qvRandomInt() );

            fprintf( stderr, "%d %zu", deviceDescriptor(), values.size() );
        } );
    EXPECT_EQ( "-1 1000", ending.errors );

    // A device that fails later.
    auto drain = []( const char *name )
    {
        StandIn standIn( name );
        uint8_t bytes[129];
        qvRandomBytes( bytes, sizeof( bytes ) );
    };
    EXPECT_BROKEN( drain( "/dev/null" ), "bytesRead > 0" );
    EXPECT_BROKEN( drain( "/" ), "bytesRead > 0" );
}

TEST( Random, ShufflesVectors )
{
    // Each order of three elements comes up about as often as each other, and what is shared stays.
    Ref< QV_VECTOR > sorted( qvVectorCreate() );

    for( QV_INT i = 1; i <= 3; i++ )
        qvVectorAppendInt( sorted.at(), i );

    std::map< std::string, int > orders;

    for( int i = 0; i < 6000; i++ )
    {
        Ref< QV_VECTOR > vec = Ref< QV_VECTOR >::share( sorted );
        qvVectorShuffle( vec.at() );
        orders[textOf( vec.get() )]++;
    }

    EXPECT_EQ( "<1, 2, 3>", textOf( sorted.get() ) );
    EXPECT_EQ( 6u, orders.size() );

    for( const auto &[order, count] : orders )
        EXPECT_NEAR( 1000, count, 250 ) << order; // more than eight times the standard deviation
}

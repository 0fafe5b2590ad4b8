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
    for( int device = 0; device < 100; device++ )
    {
        std::error_code error;

        if( std::filesystem::read_symlink( "/proc/self/fd/" + std::to_string( device ), error ) == "/dev/urandom" )
            return device;
    }

    return -1;
}

// Puts another file in the place of the device, and lets `body` read that.
void withDevice( const std::string &name, const std::function< void() > &body )
{
    int device = deviceDescriptor(), kept = dup( device ), file = open( name.c_str(), O_RDONLY );
    ASSERT_GE( kept, 0 );
    dup2( file, device );
    close( file );
    body();
    dup2( kept, device );
    close( kept );
}
} // namespace

TEST( Random, BytesComeOnceAndInOrder )
{
    std::string content( 5000, '\0' );

    for( size_t i = 0; i < content.size(); i++ )
        content[i] = static_cast< char >( i % 251 );

    std::ofstream( scratch() + "bytes", std::ios::binary ) << content;
    withDevice(
        scratch() + "bytes",
        []
        {
            // The rest of the pool, of unknown length, goes first.
            uint8_t bytes[512];
            qvRandomBytes( bytes, 128 );
            uint8_t last = qvRandomByte();
            auto    next = [&last] { return last = static_cast< uint8_t >( ( last + 1 ) % 251 ); };

            for( QV_INT count : { 1, 0, 127, 128, 129, 200, 500, 3 } )
            {
                qvRandomBytes( bytes, count );

                for( QV_INT i = 0; i < count; i++ )
                    ASSERT_EQ( next(), bytes[i] );

                Ref buffer( qvBufferCreateFromByte( 0xAA ) );
                qvRandom( buffer.at(), count );
                ASSERT_EQ( 1 + count, qvBufferLength( buffer ) );

                for( QV_INT i = 1; i <= count; i++ )
                    ASSERT_EQ( next(), qvBufferReadByte( buffer, i ) );
            }

            uint64_t value = static_cast< uint64_t >( qvRandomInt() );

            for( int i = 0; i < 8; i++ )
                ASSERT_EQ( next(), reinterpret_cast< uint8_t * >( &value )[i] );
        } );
}

TEST( Random, ValuesStayInTheirRangesAndFillThem )
{
    for( QV_INT bitCount : { 1, 7, 32, 63, 64 } )
    {
        uint64_t seen = 0, always = ~uint64_t( 0 );

        for( int i = 0; i < 200; i++ )
        {
            uint64_t value = static_cast< uint64_t >( qvRandomBits( bitCount ) );
            seen |= value, always &= value;
        }

        EXPECT_EQ( ~uint64_t( 0 ) >> ( 64 - bitCount ), seen );
        EXPECT_EQ( 0u, always );
    }

    std::set< QV_INT > values{ qvRandomBits( 0 ), qvRandomNonNegativeIntRange( 2, 2 ) };

    for( int i = 0; i < 1000; i++ )
    {
        values.insert( { qvRandomBit(), qvRandomNonNegativeIntRange( 9, 3 ) } );
        ASSERT_GE( qvRandomNonNegativeInt(), 0 );
        ASSERT_GE( qvRandomNonNegativeIntRange( 0, QV_INT_MAX ), 0 );
        ASSERT_GE( qvRandomNonNegativeIntRange( QV_INT_MAX, QV_INT_MAX - 1 ), QV_INT_MAX - 1 );
    }

    EXPECT_THAT( values, testing::ElementsAre( 0, 1, 2, 3, 4, 5, 6, 7, 8, 9 ) );
}

TEST( Random, ThreadsShareTheBytes )
{
    const size_t          THREADS = 4, COUNT = 5000;
    std::vector< QV_INT > values( THREADS * COUNT );
    onThreads( THREADS, [&]( size_t t ) { std::generate_n( values.begin() + t * COUNT, COUNT, qvRandomInt ); } );
    std::ranges::sort( values );
    EXPECT_EQ( values.end(), std::ranges::adjacent_find( values ) );
}

TEST( Random, WithoutTheDevice )
{
    // No descriptor left to open it with.
    expectInOwnRun(
        []
        {
            qvRuntimeShutdown();
            rlimit limit;
            getrlimit( RLIMIT_NOFILE, &limit );
            rlimit none = { 3, limit.rlim_max };
            setrlimit( RLIMIT_NOFILE, &none );
            qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr );
            setrlimit( RLIMIT_NOFILE, &limit );
            EXPECT_EQ( -1, deviceDescriptor() );
            std::set< QV_INT > values;

            for( int i = 0; i < 1000; i++ )
                values.insert( qvRandomInt() );

            EXPECT_EQ( 1000u, values.size() );
        } );

    // A device that fails later.
    uint8_t bytes[129];

    for( const char *name : { "/dev/null", "/" } )
        EXPECT_BROKEN( withDevice( name, [&] { qvRandomBytes( bytes, sizeof( bytes ) ); } ), "bytesRead > 0" );
}

TEST( Random, ShufflesVectors )
{
    // Each order of three elements comes up about as often as each other, and what is shared stays.
    Ref                          sorted( qvStringSplitChar( text( "1 2 3" ), U' ', -1 ) );
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

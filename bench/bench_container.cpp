#include "bench.h"

#include <qv/qv.hpp>

#include <cstring>
#include <memory>

#ifdef BENCH_QT
#include <QByteArray>
#endif

// Vector and Buffer.

namespace bench
{
namespace
{
using Shared = std::shared_ptr< int64_t >;

void addVectorCases( int count )
{
    struct Filled
    {
        QV_BOXED_INT         *object = qvBoxedIntCreate( 7 );
        QV_VECTOR            *ours   = qvVectorCreate();
        Shared                shared = std::make_shared< int64_t >( 7 );
        std::vector< Shared > peer;

        // References of the caller's own, to be given over.
        std::vector< QV_OBJ * > held;
        std::vector< Shared >   peerHeld;
    };

    const std::string input  = std::to_string( count ) + " objects";
    Filled           *filled = new Filled;

    for( int i = 0; i < count; i++ )
    {
        qvVectorPush( &filled->ours, qvBoxedIntObj( filled->object ) );
        filled->peer.push_back( filled->shared );
        qvBoxedIntRetain( filled->object );
        filled->held.push_back( qvBoxedIntObj( filled->object ) );
        filled->peerHeld.push_back( filled->shared );
    }

    add(
        { "Vector",
          "push and pop",
          input,
          0.85,
          [filled, count]
          {
              QV_VECTOR *vec = qvVectorCreate();

              for( int i = 0; i < count; i++ )
                  qvVectorPush( &vec, qvBoxedIntObj( filled->object ) );

              for( int i = 0; i < count; i++ )
                  qvObjRelease( qvVectorPop( &vec ) );

              show( uint64_t( qvVectorLength( vec ) ) );
              qvVectorRelease( vec );
          },
          { { "std::vector of std::shared_ptr",
              [filled, count]
              {
                  std::vector< Shared > vec;

                  for( int i = 0; i < count; i++ )
                      vec.push_back( filled->shared );

                  for( int i = 0; i < count; i++ )
                  {
                      Shared last = std::move( vec.back() );
                      vec.pop_back();
                  }

                  show( uint64_t( vec.size() ) );
              } } },
          retainsAndReleases( static_cast< size_t >( count ) ) } );
    add(
        { "Vector",
          "push and pop, references given over",
          input,
          0,
          [filled, count]
          {
              QV_VECTOR *vec = qvVectorCreate();

              for( QV_OBJ *object : filled->held )
                  qvVectorAppendObjUse( &vec, object );

              for( int i = count; i > 0; i-- )
                  filled->held[static_cast< size_t >( i ) - 1] = qvVectorPop( &vec );

              show( uint64_t( qvVectorLength( vec ) ) );
              qvVectorRelease( vec );
          },
          { { "std::vector of std::shared_ptr, moved",
              [filled, count]
              {
                  std::vector< Shared > vec;

                  for( Shared &each : filled->peerHeld )
                      vec.push_back( std::move( each ) );

                  for( int i = count; i > 0; i-- )
                  {
                      filled->peerHeld[static_cast< size_t >( i ) - 1] = std::move( vec.back() );
                      vec.pop_back();
                  }

                  show( uint64_t( vec.size() ) );
              } } },
          exportedCalls( 2 * static_cast< size_t >( count ) ) } );
    add(
        { "Vector",
          "read with retain",
          input,
          1.0,
          [filled, count]
          {
              uint64_t sum = 0;

              for( int i = 0; i < count; i++ )
              {
                  QV_OBJ *object = qvVectorObjAt( filled->ours, i );
                  sum += object != nullptr;
                  qvObjRelease( object );
              }

              show( sum );
          },
          { { "std::vector of std::shared_ptr",
              [filled, count]
              {
                  uint64_t sum = 0;

                  for( int i = 0; i < count; i++ )
                  {
                      Shared object = filled->peer[static_cast< size_t >( i )];
                      sum += object != nullptr;
                  }

                  show( sum );
              } } },
          lockedAdditions( 2 * static_cast< size_t >( count ) ) } );
}

void addAppending()
{
    const int            COUNT     = 100000;
    static const uint8_t BLOCK[64] = { 1, 2, 3 };
    const char          *block     = reinterpret_cast< const char * >( BLOCK );

    Case one{
        "Buffer",
        "append a byte",
        "10^5 times",
        0,
        []
        {
            QV_BUFFER *buf = qvBufferCreate();

            for( int i = 0; i < COUNT; i++ )
                qvBufferAppendByte( &buf, static_cast< uint8_t >( i ) );

            show( buf );
            qvBufferRelease( buf );
        },
        { { "std::string",
            []
            {
                std::string bytes;

                for( int i = 0; i < COUNT; i++ )
                    bytes.push_back( static_cast< char >( i ) );

                show( std::string_view( bytes ) );
            } } },
        exportedCalls( COUNT ) };
    Case inPlace{
        "Buffer",
        "append a byte, in place",
        "10^5 times",
        1.0,
        []
        {
            qv::Buffer buf;

            {
                qv::Appender to( buf );

                for( int i = 0; i < COUNT; i++ )
                    to.push_back( static_cast< uint8_t >( i ) );
            }

            show( buf.c() );
        },
        {} };
    Case more{
        "Buffer",
        "append 64 bytes",
        "10^5 times",
        1.1,
        []
        {
            QV_BUFFER *buf = qvBufferCreate();

            for( int i = 0; i < COUNT; i++ )
                qvBufferAppendBytes( &buf, BLOCK, sizeof( BLOCK ) );

            show( buf );
            qvBufferRelease( buf );
        },
        { { "std::string", [block]
            {
                std::string bytes;

                for( int i = 0; i < COUNT; i++ )
                    bytes.append( block, sizeof( BLOCK ) );

                show( std::string_view( bytes ) );
            } } } };
#ifdef BENCH_QT
    one.peers.push_back(
        { "QByteArray", []
          {
              QByteArray bytes;

              for( int i = 0; i < COUNT; i++ )
                  bytes.append( static_cast< char >( i ) );

              show( std::string_view( bytes.data(), size_t( bytes.size() ) ) );
          } } );
    more.peers.push_back(
        { "QByteArray", [block]
          {
              QByteArray bytes;

              for( int i = 0; i < COUNT; i++ )
                  bytes.append( block, sizeof( BLOCK ) );

              show( std::string_view( bytes.data(), size_t( bytes.size() ) ) );
          } } );
#endif
    inPlace.peers = one.peers;
    add( one );
    add( inPlace );
    add( more );
}

// Bits of a field of up to 57, from the highest of each byte on, by shifts and masks over eight bytes.
uint64_t loadBits( const uint8_t *bytes, size_t offset, int width )
{
    uint64_t word;
    std::memcpy( &word, bytes + offset / 8, sizeof( word ) );
    return __builtin_bswap64( word ) << offset % 8 >> ( 64 - width );
}

void storeBits( uint8_t *bytes, size_t offset, int width, uint64_t value )
{
    uint64_t  word;
    const int shift = 64 - width - static_cast< int >( offset % 8 );
    std::memcpy( &word, bytes + offset / 8, sizeof( word ) );
    word = __builtin_bswap64( word );
    word = ( word & ~( ( ( uint64_t( 1 ) << width ) - 1 ) << shift ) ) | value << shift;
    word = __builtin_bswap64( word );
    std::memcpy( bytes + offset / 8, &word, sizeof( word ) );
}

void addBitFields( int width )
{
    const size_t      FIELDS = 10000;
    const std::string input  = std::to_string( width ) + " bits, 10^4 fields";
    const uint64_t    mask   = ( uint64_t( 1 ) << width ) - 1;
    const auto        value  = [mask]( size_t i ) { return ( i * 2654435761u ) & mask; };
    QV_BUFFER       **ours   = new QV_BUFFER *( qvBufferCreate() );
    auto             *bytes  = new std::vector< uint8_t >( FIELDS * static_cast< size_t >( width ) / 8 + 8 );
    qvBufferBitAppendZero( ours, static_cast< QV_INT >( FIELDS ) * width );

    const auto place = [width]( size_t i ) { return i * static_cast< size_t >( width ); };

    Case writing{
        "Buffer",
        "write bit fields",
        input,
        0,
        [=]
        {
            for( size_t i = 0; i < FIELDS; i++ )
                qvBufferBitWriteBits( ours, static_cast< QV_INT >( place( i ) ), value( i ), width );

            show( *ours );
        },
        { { "shifts and masks, inline", [=]
            {
                for( size_t i = 0; i < FIELDS; i++ )
                    storeBits( bytes->data(), place( i ), width, value( i ) );

                show( std::string_view( reinterpret_cast< char * >( bytes->data() ), bytes->size() - 8 ) );
            } } } };
    Case reading{
        "Buffer",
        "read bit fields",
        input,
        0,
        [=]
        {
            uint64_t sum = 0;

            for( size_t i = 0; i < FIELDS; i++ )
                sum = sum * 3 + qvBufferBitReadBits( *ours, static_cast< QV_INT >( place( i ) ), width );

            show( sum );
        },
        { { "shifts and masks, inline", [=]
            {
                uint64_t sum = 0;

                for( size_t i = 0; i < FIELDS; i++ )
                    sum = sum * 3 + loadBits( bytes->data(), place( i ), width );

                show( sum );
            } } } };
    add( writing );
    add( reading );
}
} // namespace

void addContainerCases()
{
    for( int count : { 100, 10000, 100000 } )
        addVectorCases( count );

    addAppending();

    for( int width : { 3, 11, 17 } )
        addBitFields( width );
}
} // namespace bench

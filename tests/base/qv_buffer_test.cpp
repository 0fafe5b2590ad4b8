#include "qv_test_support.h"

#include "qv/qv.h"

#include <cstring>

using qv::Ref;
using namespace qv::test;

TEST( Buffer, ForeignMemoryIsNarrowedInPlaceAndGivenUpWithTheFirstWrite )
{
    const uint8_t       memory[] = { 1, 2, 3, 4, 5, 6 };
    Ref< QV_BOXED_INT > owner( qvBoxedIntCreate( 0 ) );
    Ref< QV_BUFFER >    buf( qvBufferCreateFromBytesUseWithRef( memory, 6, qv::obj( owner.get() ) ) );

    qvBufferDelLeading( buf.at(), 1 );
    qvBufferBitDelTrailing( buf.at(), 13 );
    EXPECT_EQ( memory + 1, qvBufferBacking( buf ) );
    EXPECT_EQ( 2, references( owner.get() ) );

    qvBufferAppendByte( buf.at(), 0xFF ); // the place for it is there, in memory that is not the Buffer's
    EXPECT_EQ( "[02 03 04 1f e0/3]", textOf( buf.get() ) );
    EXPECT_EQ( 5, memory[4] );
    EXPECT_EQ( 1, references( owner.get() ) );
}

// The Buffer holds the only reference to what it is changed by, and gives that up when it makes a copy of its own.
TEST( Buffer, SourcesOutliveTheOwnerOfForeignMemory )
{
    void ( *const CHANGES[] )( QV_BUFFER **buf, QV_BUFFER *src ) = {
        []( QV_BUFFER **buf, QV_BUFFER *src ) { qvBufferAppend( buf, src ); },
        []( QV_BUFFER **buf, QV_BUFFER *src ) { qvBufferInsertOuter( buf, 2, src, 1, 0 ); },
        []( QV_BUFFER **buf, QV_BUFFER *src ) { qvBufferAppendBytes( buf, qvBufferBacking( src ), 2 ); },
        []( QV_BUFFER **buf, QV_BUFFER *src ) { qvBufferWriteBytes( buf, 0, qvBufferBacking( src ), 2 ); },
        []( QV_BUFFER **buf, QV_BUFFER *src ) { qvBufferWrite( buf, 0, src ); },
        []( QV_BUFFER **buf, QV_BUFFER *src ) { qvBufferWriteOuter( buf, 0, src, 0, 0 ); } };

    for( auto change = CHANGES; change < std::end( CHANGES ); change++ )
    {
        // What is freed too early shows: its first bytes are the heap's then.
        QV_BUFFER       *src = qvBufferCreateFromBytesUse( memcpy( qvMemAlloc( 2 ), "\1\2", 2 ), 2 );
        Ref< QV_BUFFER > buf( qvBufferCreateFromBytesUseWithRef( qvBufferBacking( src ), 2, qvBufferObj( src ) ) );
        qvBufferRelease( src );
        ( *change )( buf.at(), src );
        EXPECT_EQ( change < CHANGES + 3 ? "[01 02 01 02]" : "[01 02]", textOf( buf.get() ) );
    }
}

// They are read as they were, though they move or are written over meanwhile.
TEST( Buffer, MayBeChangedByItsOwnBytes )
{
    Ref< QV_BUFFER > own( qvBufferCreateFromBytesCopy( "\1\2\3\4", 4 ) );
    qvBufferBitWriteBytes( own.at(), 4, qvBufferBacking( own ), 3 );
    EXPECT_EQ( "[00 10 20 34]", textOf( own.get() ) );

    for( int i = 0; i < 8; i++ )
        qvBufferInsertBytes( own.at(), 2, qvBufferBacking( own ), qvBufferLength( own ) );

    EXPECT_EQ( 1024, qvBufferLength( own ) );
    EXPECT_EQ( 0, textOf( own.get() ).find( "[00 10 00 10" ) );
}

// Their first block is in one allocation with them: from there it grows, is exchanged for one of single bits, and moves.
TEST( Buffer, ShortOnesAreLikeOthers )
{
    const std::vector< uint8_t > bytes( 300, 0xA5 );

    for( QV_INT count : { 1, 24, 200, 201 } )
    {
        Ref< QV_BUFFER > all( qvBufferCreateFromBytesCopy( bytes.data(), 300 ) );
        Ref< QV_BUFFER > bufs[] = {
            Ref< QV_BUFFER >( qvBufferCreateFromBytesCopy( bytes.data(), count ) ),
            Ref< QV_BUFFER >( qvBufferRead( all, 7, count ) ), Ref< QV_BUFFER >( qvBufferCreate() ) };

        qvBufferAppendInner( bufs[2].at(), all, 7, count );

        for( Ref< QV_BUFFER > &buf : bufs )
        {
            Ref< QV_BUFFER > copy( qvBufferCreateFrom( buf ) );
            EXPECT_EQ( 240 + count, allocated( copy.get() ) );
            EXPECT_EQ( 240 + count, allocated( buf.get() ) );
            EXPECT_EQ( 0, reinterpret_cast< uintptr_t >( qvBufferBacking( buf ) ) % 16 );

            qvBufferBitInsertOne( buf.at(), 3, 1 );
            EXPECT_EQ( 240 + count + 1, allocated( buf.get() ) );
            qvBufferBitDelInner( buf.at(), 3, 1 );

            for( int i = 0; i < 4; i++ )
                qvBufferInsert( buf.at(), 0, copy );

            qvBufferDelTrailing( buf.at(), count * 4 );
            EXPECT_TRUE( qvBufferEquals( buf, copy ) );
            EXPECT_EQ( allocated( bufs[0].get() ), allocated( buf.get() ) );
        }
    }
}

TEST( Buffer, IsWrittenInPlace )
{
    std::string      all = "foreign";
    Ref< QV_STRING > owner( qvStringCreate() );
    Ref< QV_BUFFER > buf( qvBufferCreateFromBytesUseWithRef( "foreign", 7, qv::obj( owner.get() ) ) ), other;
    Ref< QV_BUFFER > foreign = Ref< QV_BUFFER >::share( buf );

    auto content = []( QV_BUFFER *of )
    {
        return std::string( reinterpret_cast< const char * >( qvBufferBacking( of ) ), size_t( qvBufferLength( of ) ) );
    };

    for( size_t i = 0; i < 100; i++ )
    {
        const size_t room = 1 + i * i % 900, written = std::min( i % 3 ? room : 0, i % 70 );
        memset( qvBufferAppendRoom( buf.at(), QV_INT( room ) ), int( i ), written );

        if( i % 7 == 0 )
            other = Ref< QV_BUFFER >::share( buf );

        qvBufferAppendWritten( buf.at(), QV_INT( written ) );
        ASSERT_TRUE( i % 7 || content( other ) == all );
        all.append( written, char( i ) );
        ASSERT_EQ( all, content( buf ) );
        ASSERT_GE( 160 + QV_INT( all.size() ) + 320, allocated( buf.get() ) );
    }

    EXPECT_EQ( "foreign", content( foreign ) );
}

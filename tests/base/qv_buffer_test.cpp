#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_buffer_private.h"
#include "qv/sys/qv_mem.h"

#include <random>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
using Bits   = std::vector< bool >;
using Buffer = Ref< QV_BUFFER >;

QV_INT as( size_t number )
{
    return static_cast< QV_INT >( number );
}

Bits bitsOf( const uint8_t *bytes, size_t count )
{
    Bits bits( count );

    for( size_t i = 0; i < count; i++ )
        bits[i] = bytes[i / 8] >> ( 7 - i % 8 ) & 1;

    return bits;
}

Bits bitsOf( QV_BUFFER *buf )
{
    return bitsOf( qvBufferBacking( buf ), static_cast< size_t >( qvBufferBitLength( buf ) ) );
}

Bits bitsOf( uint64_t value, size_t count )
{
    Bits bits( count );

    for( size_t i = 0; i < count; i++ )
        bits[i] = value >> ( count - 1 - i ) & 1;

    return bits;
}

std::vector< uint8_t > bytesOf( const Bits &bits )
{
    std::vector< uint8_t > bytes( ( bits.size() + 7 ) / 8 );

    for( size_t i = 0; i < bits.size(); i++ )
        bytes[i / 8] = static_cast< uint8_t >( bytes[i / 8] | bits[i] << ( 7 - i % 8 ) );

    return bytes;
}

Buffer bufferOf( const Bits &bits )
{
    std::vector< uint8_t > bytes = bytesOf( bits );
    Buffer buf( qvBufferCreateFromBytesCopy( bytes.data(), as( bytes.size() ) ) );
    qvBufferBitDelTrailing( buf.at(), as( bytes.size() * 8 - bits.size() ) );

    return buf;
}

Bits part( const Bits &bits, size_t offset, size_t count )
{
    return Bits( bits.begin() + offset, bits.begin() + offset + count );
}

Bits without( Bits bits, size_t offset, size_t count )
{
    bits.erase( bits.begin() + offset, bits.begin() + offset + count );
    return bits;
}

Bits inserted( Bits bits, size_t at, const Bits &more )
{
    bits.insert( bits.begin() + at, more.begin(), more.end() );
    return bits;
}

Bits written( Bits bits, size_t at, const Bits &more )
{
    std::copy( more.begin(), more.end(), bits.begin() + at );
    return bits;
}

// The contents of a Buffer, and the free space that the rules of growth and compaction give it.
struct Model
{
    Bits   bits;
    size_t front   = 0;
    size_t back    = 0;
    bool   block   = false;
    bool   foreign = false;

    QV_INT allocated() const
    {
        return foreign ? 0 : static_cast< QV_INT >( ( front + bits.size() + back ) / 8 );
    }

    void rebuild( size_t length )
    {
        foreign = false;
        block   = length > 0;
        front   = block ? 640 : 0;
        back    = block ? ( length + 1920 + 7 ) / 8 * 8 - 640 - length : 0;
    }

    void copyIfNeeded( bool shared )
    {
        if( shared || foreign )
            rebuild( bits.size() );
    }

    void insert( size_t at, const Bits &more, bool shared )
    {
        size_t count = more.size(), length = bits.size();

        if( count == 0 )
            return;

        copyIfNeeded( shared );

        bool whole = at % 8 == 0 && count % 8 == 0;

        if( !block )
            rebuild( count );
        else if( at == length && at > 0 && back < count )
            back = ( front + length + count + 1280 + 7 ) / 8 * 8 - front - length - count;
        else if( at == length && at > 0 )
            back -= count;
        else if( !whole || front + back < count )
            rebuild( length + count );
        else if( at == 0 && front >= count )
            front -= count;
        else if( at == 0 )
            back = front + back - count, front = 0;
        else if( back >= count )
            back -= count;
        else
            front -= count - back / 8 * 8, back %= 8;

        bits = inserted( bits, at, more );
    }

    void write( size_t at, const Bits &more, bool shared )
    {
        if( more.size() )
            copyIfNeeded( shared );

        bits = written( bits, at, more );
    }

    void erase( size_t offset, size_t count, bool shared )
    {
        if( count == 0 )
            return;

        size_t behind = bits.size() - offset - count;

        if( count == bits.size() )
        {
            *this = Model();
            return;
        }

        if( behind > 0 && ( offset % 8 || count % 8 ) )
        {
            Model rest;
            rest.insert( 0, part( bits, 0, offset ), false );
            rest.insert( offset, part( bits, offset + count, behind ), false );
            *this = rest;
            return;
        }

        if( shared || ( foreign && offset > 0 && behind > 0 ) )
            rebuild( bits.size() );

        ( offset == 0 ? front : back ) += count;
        bits = without( bits, offset, count );
        compact();
    }

    void keep( size_t offset, size_t count, bool shared )
    {
        if( count == bits.size() )
            return;

        if( count == 0 || offset % 8 )
        {
            bits = part( bits, offset, count );
            rebuild( count );
            return;
        }

        if( shared )
            rebuild( bits.size() );

        front += offset;
        back += bits.size() - offset - count;
        bits = part( bits, offset, count );
        compact();
    }

    void compact()
    {
        if( !foreign && ( front > 1280 || back > 2560 ) )
            rebuild( bits.size() );
    }
};

// A random walk through all operations, beside the model.
class Walk
{
public:
    explicit Walk( unsigned seed ) : random_( seed ), memory_( 300 )
    {
        for( uint8_t &byte : memory_ )
            byte = static_cast< uint8_t >( number( 0, 255 ) );

        original_ = memory_;
        owner_.reset( qvBoxedIntCreate( 0 ) );
        buf_.reset( qvBufferCreate() );
    }

    void run( int steps )
    {
        for( int i = 0; i < steps && !testing::Test::HasFailure(); i++ )
        {
            int op = step();
            ASSERT_EQ( model_.bits, bitsOf( buf_ ) ) << "step " << i << ", operation " << op;
            ASSERT_EQ( model_.allocated(), allocated( buf_.get() ) ) << "step " << i << ", operation " << op;
            ASSERT_LE( buf_->size(), 2 * model_.allocated() ) << "step " << i << ", operation " << op;
        }

        EXPECT_EQ( original_, memory_ );
    }

private:
    size_t number( size_t low, size_t high )
    {
        return std::uniform_int_distribution< size_t >( low, high )( random_ );
    }

    // Up to a limit; often whole bytes, often the limits.
    size_t amount( size_t limit )
    {
        switch( number( 0, 7 ) )
        {
        case 0: return 0;
        case 1: return limit;
        case 2: case 3: case 4: return number( 0, limit ) / 8 * 8;
        default: return number( 0, limit );
        }
    }

    Bits randomBits( size_t count )
    {
        Bits bits( count );

        for( size_t i = 0; i < count; i++ )
            bits[i] = number( 0, 1 );

        return bits;
    }

    // Writes, inserts or appends, wherever there is room.
    template< class Write, class Insert, class Append, class... Arguments >
    void put( const Bits &contents, bool self, Write write, Insert insert, Append append, Arguments... arguments )
    {
        bool   shared = references( buf_.get() ) > 1 || self;
        size_t length = model_.bits.size();

        if( number( 0, 2 ) == 0 && contents.size() <= length )
        {
            size_t at = amount( length - contents.size() );
            write( buf_.at(), as( at ), arguments... );
            model_.write( at, contents, shared );
            return;
        }

        size_t     at  = amount( length );
        QV_BUFFER *own = shared || model_.foreign ? nullptr : buf_.get();
        at == length ? append( buf_.at(), arguments... ) : insert( buf_.at(), as( at ), arguments... );
        model_.insert( at, contents, shared );
        EXPECT_TRUE( !own || own == buf_.get() );
    }

    int step()
    {
        size_t length = model_.bits.size();
        int    op     = static_cast< int >( number( 0, length > 9000 ? 9 : 15 ) );
        bool   shared = references( buf_.get() ) > 1;

        switch( op )
        {
        case 0:
        case 1:
        case 2:
        case 3:
        {
            size_t offset = op > 1 ? 0 : amount( length ), count = amount( op > 1 ? std::min< size_t >( length, 900 )
                                                                                  : length - offset );
            if( op < 2 )
                qvBufferBitDelInner( buf_.at(), as( offset ), as( count ) );
            else if( op == 2 )
                qvBufferBitDelLeading( buf_.at(), as( count ) );
            else
                qvBufferBitDelTrailing( buf_.at(), as( count ) ), offset = length - count;

            model_.erase( offset, count, shared );
            break;
        }
        case 4:
        {
            size_t offset = amount( std::min< size_t >( length, 500 ) ), count = amount( length - offset );
            qvBufferBitDelOuter( buf_.at(), as( offset ), as( count ) );
            model_.keep( offset, count, shared );
            break;
        }
        case 5:
            other_.reset( qv::retain( buf_.get() ) );
            otherBits_ = model_.bits;
            break;
        case 6:
            EXPECT_EQ( otherBits_, other_ ? bitsOf( other_ ) : Bits() );
            other_.reset();
            otherBits_.clear();
            break;
        case 7:
            if( number( 0, 3 ) == 0 )
            {
                buf_.reset( qvBufferCreateFromBytesUseWithRef(
                    memory_.data(), as( memory_.size() ), qv::obj( owner_.get() ) ) );
                model_         = Model();
                model_.bits    = bitsOf( memory_.data(), memory_.size() * 8 );
                model_.block   = true;
                model_.foreign = true;
            }
            break;
        case 8:
        case 9:
            look();
            break;
        case 10:
        {
            size_t count = -length % 8;
            qvBufferBitAppendAlignment( buf_.at() );
            model_.insert( length, Bits( count ), shared );
            break;
        }
        case 11:
        {
            uint64_t value = random_();
            QV_INT   count = as( amount( 64 ) );
            put( bitsOf( value, static_cast< size_t >( count ) ), false, qvBufferBitWriteBits, qvBufferBitInsertBits,
                 qvBufferBitAppendBits, value, count );
            break;
        }
        case 12:
        {
            std::vector< uint8_t > bytes = bytesOf( randomBits( amount( 2000 ) / 8 * 8 ) );
            put( bitsOf( bytes.data(), bytes.size() * 8 ), false, qvBufferBitWriteBytes, qvBufferBitInsertBytes,
                 qvBufferBitAppendBytes, bytes.data(), as( bytes.size() ) );
            break;
        }
        case 13:
        {
            size_t count = amount( 700 );
            number( 0, 1 ) ? put( Bits( count, true ), false, qvBufferBitWriteOne, qvBufferBitInsertOne,
                                  qvBufferBitAppendOne, as( count ) )
                           : put( Bits( count ), false, qvBufferBitWriteZero, qvBufferBitInsertZero,
                                  qvBufferBitAppendZero, as( count ) );
            break;
        }
        default:
        {
            Buffer     fresh  = bufferOf( randomBits( amount( 1500 ) ) );
            bool       self   = number( 0, 2 ) == 0;
            QV_BUFFER *src    = self ? buf_.get() : fresh.get();
            Bits       from   = bitsOf( src );
            size_t     offset = amount( from.size() ), count = amount( from.size() - offset );

            op == 14 ? put( part( from, offset, count ), self, qvBufferBitWriteInner, qvBufferBitInsertInner,
                            qvBufferBitAppendInner, src, as( offset ), as( count ) )
                     : put( without( from, offset, count ), self, qvBufferBitWriteOuter, qvBufferBitInsertOuter,
                            qvBufferBitAppendOuter, src, as( offset ), as( count ) );
        }
        }

        return op;
    }

    // Every way to read, at any place.
    void look()
    {
        size_t length = model_.bits.size();
        size_t offset = amount( length ), count = amount( length - offset );
        Bits   range  = part( model_.bits, offset, count );

        Buffer copy( qvBufferBitRead( buf_, as( offset ), as( count ) ) );
        EXPECT_EQ( range, bitsOf( copy ) );

        std::vector< uint8_t > bytes( count / 8 + 1, 0x5A );
        qvBufferBitReadBytes( buf_, as( offset ), bytes.data(), as( count / 8 ) );
        EXPECT_EQ( part( range, 0, count / 8 * 8 ), bitsOf( bytes.data(), count / 8 * 8 ) );
        EXPECT_EQ( 0x5A, bytes.back() );

        size_t few = std::min< size_t >( count, 64 );
        EXPECT_EQ( part( range, 0, few ), bitsOf( qvBufferBitReadBits( buf_, as( offset ), as( few ) ), few ) );
        EXPECT_EQ( model_.bits == range ? 0 : model_.bits < range ? -1 : 1, qvBufferCompare( buf_, copy ) );
    }

    std::mt19937_64        random_;
    std::vector< uint8_t > memory_, original_;
    Ref< QV_BOXED_INT >    owner_;
    Buffer                 buf_, other_;
    Model                  model_;
    Bits                   otherBits_;
};
} // namespace

TEST( Buffer, WalksLikeAVectorOfBits )
{
    for( unsigned seed = 1; seed <= 12 && !HasFailure(); seed++ )
    {
        SCOPED_TRACE( testing::Message() << "seed " << seed );
        Walk( seed ).run( 1500 );
    }
}

/* The grid of forms ---------------------------------------------------------------------------------------------- */

namespace
{
template< class Change >
void expectForm( const char *name, const Bits &old, const Bits &expected, Change change )
{
    Buffer buf = bufferOf( old );
    change( buf.at() );
    EXPECT_EQ( expected, bitsOf( buf ) ) << name;
}

#define FORM( name, expected, ... )                                                                                    \
    expectForm( #name, old, expected, [&]( QV_BUFFER **buf ) { name( buf __VA_OPT__(, ) __VA_ARGS__ ); } )

#define GRID( Unit, Suffix, unit, contents, ... )                                                                      \
    FORM( qvBuffer##Unit##Write##Suffix, written( old, 2 * unit, contents ), 2, __VA_ARGS__ );                         \
    FORM( qvBuffer##Unit##Insert##Suffix, inserted( old, 2 * unit, contents ), 2, __VA_ARGS__ );                       \
    FORM( qvBuffer##Unit##Prepend##Suffix, inserted( old, 0, contents ), __VA_ARGS__ );                                \
    FORM( qvBuffer##Unit##Append##Suffix, inserted( old, old.size(), contents ), __VA_ARGS__ );

#define GRIDS( Unit, unit )                                                                                            \
    GRID( Unit, , unit, from, src )                                                                                    \
    GRID( Unit, Leading, unit, part( from, 0, 3 * unit ), src, 3 )                                                     \
    GRID( Unit, Trailing, unit, part( from, from.size() - 3 * unit, 3 * unit ), src, 3 )                               \
    GRID( Unit, Inner, unit, part( from, unit, 3 * unit ), src, 1, 3 )                                                 \
    GRID( Unit, Outer, unit, without( from, unit, 3 * unit ), src, 1, 3 )                                              \
    GRID( Unit, Bits, unit, bitsOf( 0x2B3, 11 ), 0xFAB3, 11 )                                                          \
    GRID( Unit, Byte, unit, bitsOf( 0xC5, 8 ), 0xC5 )                                                                  \
    GRID( Unit, Bytes, unit, bitsOf( 0xDEAD, 16 ), "\xDE\xAD", 2 )                                                     \
    GRID( Unit, Zero, unit, Bits( 3 * unit, false ), 3 )                                                               \
    GRID( Unit, One, unit, Bits( 3 * unit, true ), 3 )                                                                 \
    FORM( qvBuffer##Unit##InsertAlignment, inserted( old, 2 * unit, Bits( 3 ) ), 2 );                                  \
    FORM( qvBuffer##Unit##PrependAlignment, inserted( old, 0, Bits( 3 ) ) );                                           \
    FORM( qvBuffer##Unit##AppendAlignment, inserted( old, old.size(), Bits( 3 ) ) );                                   \
    FORM( qvBuffer##Unit##DelLeading, without( old, 0, 3 * unit ), 3 );                                                \
    FORM( qvBuffer##Unit##DelTrailing, without( old, old.size() - 3 * unit, 3 * unit ), 3 );                           \
    FORM( qvBuffer##Unit##DelInner, without( old, 2 * unit, 3 * unit ), 2, 3 );                                        \
    FORM( qvBuffer##Unit##DelOuter, part( old, 2 * unit, 3 * unit ), 2, 3 );
} // namespace

TEST( Buffer, EveryFormCountsInItsUnit )
{
    Bits   old  = inserted( bitsOf( 0x0123456789ABCDEF, 64 ), 0, bitsOf( 0x13579BDF02468ACE, 61 ) );
    Bits   from = bitsOf( 0x5A17C3, 43 );
    Buffer src  = bufferOf( from );

    GRIDS( , 8 )
    GRIDS( Bit, 1 )

    uint8_t byte[2] = {};
    Buffer  buf     = bufferOf( old );
    EXPECT_EQ( part( old, 16, 24 ), bitsOf( Buffer( qvBufferRead( buf, 2, 3 ) ) ) );
    EXPECT_EQ( part( old, 16, 11 ), bitsOf( qvBufferReadBits( buf, 2, 11 ), 11 ) );
    EXPECT_EQ( part( old, 16, 8 ), bitsOf( qvBufferReadByte( buf, 2 ), 8 ) );
    EXPECT_EQ( part( old, 2, 8 ), bitsOf( qvBufferBitReadByte( buf, 2 ), 8 ) );
    EXPECT_FALSE( qvBufferBitIsAligned( buf ) );
    qvBufferReadBytes( buf, 2, byte, 2 );
    EXPECT_EQ( part( old, 16, 16 ), bitsOf( byte, 16 ) );
    EXPECT_EQ( 15, qvBufferLength( buf ) );
    EXPECT_EQ( 125, qvBufferBitLength( buf ) );
    EXPECT_EQ( ( QV_INT_MAX - 125 ) / 8, qvBufferSpace( buf ) );
    EXPECT_EQ( QV_INT_MAX - 125, qvBufferBitSpace( buf ) );
    EXPECT_EQ( qvBufferBacking( buf ), qvBufferBitBacking( buf ) );
}

/* Single behaviours ---------------------------------------------------------------------------------------------- */

TEST( Buffer, CreatingGivesPrivateContents )
{
    Buffer number( qvBufferCreateFromBits( 0x1FF5, 11 ) ), byte( qvBufferCreateFromByte( 0xA7 ) );
    Buffer empty( qvBufferCreate() ), copyOfEmpty( qvBufferCreateFrom( empty ) );
    EXPECT_EQ( "[fe a0/3]", textOf( number.get() ) );
    EXPECT_EQ( "[a7]", textOf( byte.get() ) );
    EXPECT_EQ( "[]", textOf( empty.get() ) );
    EXPECT_NE( empty.get(), copyOfEmpty.get() );

    // An adopted block has no space at its ends; what appending adds is declared.
    Buffer use( qvBufferCreateFromBytesUse( qvMemSet( qvMemAlloc( 5 ), 0x11, 5 ), 5 ) );
    EXPECT_EQ( 5, allocated( use.get() ) );
    qvBufferAppendByte( use.at(), 0x22 );
    EXPECT_EQ( "[11 11 11 11 11 22]", textOf( use.get() ) );
    EXPECT_EQ( 6 + 160, allocated( use.get() ) );

    // Clearing and deleting everything give the one empty Buffer.
    qvBufferDelOuter( byte.at(), 1, 0 );
    qvBufferClear( use.at() );
    EXPECT_EQ( empty.get(), byte.get() );
    EXPECT_EQ( empty.get(), use.get() );
}

TEST( Buffer, ForeignMemoryIsNarrowedInPlaceButNeverWritten )
{
    const uint8_t       memory[] = { 1, 2, 3, 4, 5, 6 };
    Ref< QV_BOXED_INT > owner( qvBoxedIntCreate( 0 ) );
    Buffer              buf( qvBufferCreateFromBytesUseWithRef( memory, 6, qv::obj( owner.get() ) ) );
    QV_BUFFER          *before = buf;
    EXPECT_EQ( 2, references( owner.get() ) );

    qvBufferDelLeading( buf.at(), 1 );
    qvBufferBitDelTrailing( buf.at(), 13 );
    EXPECT_EQ( before, buf.get() );
    EXPECT_EQ( memory + 1, qvBufferBacking( buf ) );
    EXPECT_EQ( 0, allocated( buf.get() ) );

    qvBufferAppendByte( buf.at(), 0xFF ); // into what is free behind, but not ours
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

    for( auto change : CHANGES )
    {
        Buffer     inner( qvBufferCreateFromBytesCopy( "\1\2", 2 ) );
        QV_BUFFER *src = inner;
        Buffer     buf( qvBufferCreateFromBytesUseWithRef( qvBufferBacking( src ), 2, qvBufferObj( src ) ) );
        inner.reset();
        change( buf.at(), src );
        EXPECT_EQ( 0, textOf( buf.get() ).find( "[01 02" ) );
    }

    // Its own bytes are read as they were, though they move or are written over meanwhile.
    Buffer own( qvBufferCreateFromBytesCopy( "\1\2\3\4", 4 ) );
    qvBufferBitWriteBytes( own.at(), 4, qvBufferBacking( own ), 3 );
    EXPECT_EQ( "[00 10 20 34]", textOf( own.get() ) );

    for( int i = 0; i < 8; i++ )
        qvBufferInsertBytes( own.at(), 2, qvBufferBacking( own ), qvBufferLength( own ) );

    EXPECT_EQ( 1024, qvBufferLength( own ) );
    EXPECT_EQ( 0, textOf( own.get() ).find( "[00 10 00 10" ) );
}

TEST( Buffer, OrdersByCommonBitsThenLength )
{
    Buffer four( qvBufferCreateFromBits( 0xA, 4 ) ), eight( qvBufferCreateFromByte( 0xA0 ) );
    Buffer high( qvBufferCreateFromBits( 0xB, 4 ) );
    four->first[0] |= 0x0F; // bits behind the last have no meaning

    EXPECT_EQ( -1, qvBufferCompare( four, eight ) );
    EXPECT_EQ( 1, qvBufferCompare( eight, four ) );
    EXPECT_EQ( 1, qvBufferCompare( high, eight ) );
    EXPECT_EQ( "[a0/4]", textOf( four.get() ) );
}

TEST( Buffer, BrokenContractsAreReported )
{
    Buffer  buf  = bufferOf( bitsOf( 0xABCDE, 20 ) ), other = bufferOf( bitsOf( 0x12, 8 ) );
    uint8_t byte = 0;

    EXPECT_BROKEN( qvBufferReadByte( buf, -1 ), "QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( byteIdx )" );
    EXPECT_BROKEN( qvBufferDelInner( buf.at(), (QV_INT)1 << 61, 0 ), "BYTES_TO_BITS_OK( byteOffset )" );
    EXPECT_BROKEN( qvBufferReadByte( buf, 2 ), "bitIdx + bitCount <= buf->bitLength" );
    EXPECT_BROKEN( qvBufferBitWriteBits( buf.at(), 18, 0, 3 ), "bitIdx + bitCount <= (*buf)->bitLength" );
    EXPECT_BROKEN( qvBufferReadBytes( buf, 1, &byte, 2 ), "bitIdx + BYTES_TO_BITS( byteCount ) <= buf->bitLength" );
    EXPECT_BROKEN(
        qvBufferWriteBytes( buf.at(), 1, "ab", 2 ), "bitIdx + BYTES_TO_BITS( byteCount ) <= (*buf)->bitLength" );
    EXPECT_BROKEN( qvBufferBitInsertByte( buf.at(), 21, 0 ), "atBit <= (*buf)->bitLength" );
    EXPECT_BROKEN( qvBufferAppendLeading( buf.at(), other, 2 ), "bitOffset + bitCount <= src->bitLength" );
    EXPECT_BROKEN( qvBufferBitAppendTrailing( buf.at(), other, 9 ), "QV___INT_UNSIGNED_ADD_OK( bitOffset, bitCount )" );
    EXPECT_BROKEN(
        qvBufferBitWriteOuter( buf.at(), 17, other, 1, 4 ),
        "bitIdx + (src->bitLength - bitCount) <= (*buf)->bitLength" );
    EXPECT_BROKEN( qvBufferBitDelInner( buf.at(), 15, 6 ), "bitOffset + bitCount <= (*buf)->bitLength" );
    EXPECT_BROKEN( qvBufferBitAppendZero( buf.at(), QV_INT_MAX ), "QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( sizeBits )" );

    // The size counts as whole bytes, and of several bad arguments the first one.
    QV_INT most = QV_INT_MAX - 1920 - 20;
    EXPECT_BROKEN( qvBufferBitPrependZero( buf.at(), most ), "QV___INT_UNSIGNED_TO_QV_INT_CONV_OK( sizeBits )" );
    EXPECT_BROKEN( qvBufferBitRead( buf, -1, -1 ), "QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( bitIdx )" );
    EXPECT_BROKEN( qvBufferAppendInner( buf.at(), nullptr, -1, -1 ), "src" );
    EXPECT_BROKEN( qvBufferDelOuter( buf.at(), -1, -1 ), "QV___INT_UNSIGNED_FROM_QV_INT_CONV_OK( byteOffset )" );
}

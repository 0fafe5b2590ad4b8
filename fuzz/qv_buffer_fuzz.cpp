// Buffers beside vectors of bits, with the free space that the rules of growth and compaction give their blocks, in
// units of bits and of bytes. Some wrap memory of another object, which must stay as it is.

#include "qv_fuzz_walk.h"

#include "qv/sys/qv_mem.h"

using namespace qv::fuzz;
using qv::Ref;

namespace
{
using Bits = std::vector< bool >;

Bits bitsOf( const uint8_t *bytes, QV_INT count )
{
    Bits bits( static_cast< size_t >( count ) );

    for( size_t i = 0; i < bits.size(); i++ )
        bits[i] = bytes[i / 8] >> ( 7 - i % 8 ) & 1;

    return bits;
}

bool same( const uint8_t *bytes, const Bits &bits )
{
    size_t i = 0;

    for( bool bit : bits )
    {
        if( bit != ( bytes[i / 8] >> ( 7 - i % 8 ) & 1 ) )
            return false;

        i++;
    }

    return true;
}

Bits bitsOf( uint64_t value, QV_INT count )
{
    Bits bits( static_cast< size_t >( count ) );

    for( size_t i = 0; i < bits.size(); i++ )
        bits[i] = value >> ( bits.size() - 1 - i ) & 1;

    return bits;
}

struct Model
{
    Bits   bits;
    QV_INT front = 0, back = 0; // in bits
    bool   block = false, foreign = false;

    QV_INT length() const
    {
        return static_cast< QV_INT >( bits.size() );
    }

    QV_INT declared() const
    {
        return foreign ? 0 : ( front + length() + back ) / 8;
    }

    // A new block for `length` bits with free space at both ends, none for nothing.
    void rebuild( QV_INT length )
    {
        foreign = false;
        block   = length > 0;
        front   = block ? 640 : 0;
        back    = block ? ( length + 1920 + 7 ) / 8 * 8 - 640 - length : 0;
    }

    void own( bool shared )
    {
        if( shared || foreign )
            rebuild( length() );
    }

    void insert( bool shared, QV_INT at, const Bits &more )
    {
        QV_INT count = static_cast< QV_INT >( more.size() ), before = length();

        if( count == 0 )
            return;

        own( shared );

        if( !block )
            rebuild( count );
        else if( at == before && at > 0 && back < count )
            back = ( front + before + count + 1280 + 7 ) / 8 * 8 - front - before - count;
        else if( at == before && at > 0 )
            back -= count;
        else if( at % 8 || count % 8 || front + back < count )
            rebuild( before + count );
        else if( at == 0 && front >= count )
            front -= count;
        else if( at == 0 )
            back = front + back - count, front = 0;
        else if( back >= count )
            back -= count;
        else
            front -= count - back / 8 * 8, back %= 8;

        bits.insert( bits.begin() + at, more.begin(), more.end() );
    }

    void write( bool shared, QV_INT at, const Bits &more )
    {
        if( more.empty() )
            return;

        own( shared );
        std::copy( more.begin(), more.end(), bits.begin() + at );
    }

    void compact()
    {
        if( !foreign && ( front > 1280 || back > 2560 ) )
            rebuild( length() );
    }

    void erase( bool shared, QV_INT offset, QV_INT count )
    {
        QV_INT behind = length() - offset - count;

        if( count == length() )
            *this = Model();

        if( count == 0 || bits.empty() )
            return;

        if( behind > 0 && ( offset % 8 || count % 8 ) )
        {
            Model rest;
            rest.insert( false, 0, part( bits, 0, offset ) );
            rest.insert( false, offset, part( bits, offset + count, behind ) );
            *this = rest;
            return;
        }

        if( shared || ( foreign && offset > 0 && behind > 0 ) )
            rebuild( length() );

        ( offset == 0 ? front : back ) += count;
        bits = without( bits, offset, count );
        compact();
    }

    void keep( bool shared, QV_INT offset, QV_INT count )
    {
        if( count == length() )
            return;

        if( count > 0 && offset % 8 == 0 )
        {
            if( shared )
                rebuild( length() );

            front += offset;
            back += length() - offset - count;
            bits = part( bits, offset, count );
            return compact();
        }

        bits = part( bits, offset, count );
        rebuild( count );
    }
};

struct BufferWalk : SlotWalk< QV_BUFFER, Model, qvBufferCreate >
{
    std::vector< uint8_t > memory;
    Ref< QV_OBJ >          owner = boxedInt( 0 );

    BufferWalk( const uint8_t *data, size_t size ) : SlotWalk( data, size ), memory( 300 )
    {
        for( size_t i = 0; i < memory.size(); i++ )
            memory[i] = static_cast< uint8_t >( i * i );
    }

    // Bits or bytes: what is drawn is in units of them.
    QV_INT unit = 1;

    QV_INT upTo( QV_INT bitLimit )
    {
        return in.upTo( bitLimit / unit ) * unit;
    }

    void create()
    {
        Slot &to = slots.any( in ), &from = slots.any( in );
        Model model;

        switch( in.below( 5 ) )
        {
        case 0:
            model.foreign = model.block = true;
            model.bits                  = bitsOf( memory.data(), static_cast< QV_INT >( memory.size() ) * 8 );
            return to.set(
                qvBufferCreateFromBytesUseWithRef( memory.data(), static_cast< QV_INT >( memory.size() ), owner ),
                model );
        case 1:
        {
            QV_INT count = in.length( 300 );
            auto  *block = static_cast< uint8_t * >( qvMemAlloc( count + 1 ) );
            std::copy( memory.begin(), memory.begin() + count, block );
            model.bits = bitsOf( block, count * 8 );
            to.set( qvBufferCreateFromBytesUse( block, count ), Model() );
            model.block = count > 0;
            to.model    = model;
            return;
        }
        case 2:
            model = from.model;
            model.rebuild( model.length() );
            return to.set( qvBufferCreateFrom( from.ref ), model );
        case 3:
            return to.set( qvBufferCreate(), Model() );
        default:
            qvBufferClear( to.ref.at() );
            to.model = Model();
        }
    }

    // Writes over what is there, or inserts, at the ends in their own forms.
    template< class Writing, class Inserting, class Prepending, class Appending, class... A >
    void put(
        Slot &dest, bool self, const Bits &bits, Writing writing, Inserting inserting, Prepending prepending,
        Appending appending, A... arguments )
    {
        bool   shared = slots.shared( dest ) || self;
        QV_INT length = dest.model.length(), count = static_cast< QV_INT >( bits.size() );
        QV_INT how = in.below( 4 );

        if( how == 0 && count > length )
            how = 1;

        if( length > 16000 && how > 0 )
            return;

        QV_INT at = how == 0 ? upTo( length - count ) : how == 1 ? upTo( length ) : how == 2 ? 0 : length;

        if( how == 0 )
            writing( dest.ref.at(), at / unit, arguments... );
        else if( how == 1 )
            inserting( dest.ref.at(), at / unit, arguments... );
        else if( how == 2 )
            prepending( dest.ref.at(), arguments... );
        else
            appending( dest.ref.at(), arguments... );

        if( how == 0 )
            dest.model.write( shared, at, bits );
        else
            dest.model.insert( shared, at, bits );
    }

// The four operations of a suffix, in bits or in bytes.
#define PUT( dest, self, bits, Suffix, ... )                                                                           \
    ( unit == 1 ? put( dest, self, bits, qvBufferBitWrite##Suffix, qvBufferBitInsert##Suffix,                          \
                       qvBufferBitPrepend##Suffix, qvBufferBitAppend##Suffix, __VA_ARGS__ )                            \
                : put( dest, self, bits, qvBufferWrite##Suffix, qvBufferInsert##Suffix, qvBufferPrepend##Suffix,       \
                       qvBufferAppend##Suffix, __VA_ARGS__ ) )

    void copy()
    {
        unit        = in.flag() ? 8 : 1;
        Slot  &dest = slots.any( in ), &src = slots.any( in );
        bool   self = dest.ref.get() == src.ref.get();
        Span   span = in.span( src.model.length(), in.below( 5 ), unit );
        Bits   bits = span.of( src.model.bits );
        QV_INT a = span.offset / unit, b = span.count / unit;

        switch( span.form )
        {
        case WHOLE:
            return PUT( dest, self, bits, , src.ref.get() );
        case LEADING:
            return PUT( dest, self, bits, Leading, src.ref.get(), a );
        case TRAILING:
            return PUT( dest, self, bits, Trailing, src.ref.get(), a );
        case INNER:
            return PUT( dest, self, bits, Inner, src.ref.get(), a, b );
        default:
            return PUT( dest, self, bits, Outer, src.ref.get(), a, b );
        }
    }

    void put()
    {
        unit          = in.flag() ? 8 : 1;
        Slot  &dest   = slots.any( in );
        QV_INT number = in.number(), few = in.upTo( 64 ), many = in.length( 300 ) * unit;

        switch( in.below( 6 ) )
        {
        case 0:
            return PUT(
                dest, false, bitsOf( static_cast< uint64_t >( number ), few ), Bits, static_cast< uint64_t >( number ),
                few );
        case 1:
            return PUT(
                dest, false, bitsOf( static_cast< uint64_t >( number ) & 255, 8 ), Byte,
                static_cast< uint8_t >( number ) );
        case 2:
            many = std::min< QV_INT >( many / unit, 300 );
            return PUT( dest, false, bitsOf( memory.data(), many * 8 ), Bytes, memory.data(), many );
        case 3:
            return PUT( dest, false, Bits( static_cast< size_t >( many ) ), Zero, many / unit );
        case 4:
            return PUT( dest, false, Bits( static_cast< size_t >( many ), true ), One, many / unit );
        default:
            // Counts by the length, also where it goes elsewhere.
            bool   shared = slots.shared( dest );
            QV_INT at     = upTo( dest.model.length() );

            if( at == 0 )
                ( unit == 1 ? qvBufferBitPrependAlignment : qvBufferPrependAlignment )( dest.ref.at() );
            else if( at == dest.model.length() )
                ( unit == 1 ? qvBufferBitAppendAlignment : qvBufferAppendAlignment )( dest.ref.at() );
            else
                ( unit == 1 ? qvBufferBitInsertAlignment : qvBufferInsertAlignment )( dest.ref.at(), at / unit );

            dest.model.insert( shared, at, Bits( static_cast< size_t >( -dest.model.length() & 7 ) ) );
        }
    }

    void erase()
    {
        unit         = in.flag() ? 8 : 1;
        Slot &slot   = slots.any( in );
        bool  shared = slots.shared( slot );
        Span  span   = in.span( slot.model.length(), LEADING + in.below( 4 ), unit );

        if( unit == 1 )
            CALL_PART( qvBufferBitDel, span, 1, slot.ref.at() );
        else
            CALL_PART( qvBufferDel, span, 8, slot.ref.at() );

        span.erase( slot.model, shared );
    }

    // Byte by byte at an end, as blocks fill up and empty.
    void many()
    {
        Slot  &slot = slots.any( in );
        QV_INT how = in.below( 4 ), count = in.length( 500 );

        for( ; count > 0; count-- )
        {
            bool   shared = slots.shared( slot );
            QV_INT length = slot.model.length(), at = how % 2 ? length : 0;

            if( how < 2 )
            {
                ( how ? qvBufferAppendByte : qvBufferPrependByte )( slot.ref.at(), static_cast< uint8_t >( count ) );
                slot.model.insert( shared, at, bitsOf( static_cast< uint64_t >( count ), 8 ) );
            }
            else if( length >= 8 )
            {
                ( how == 3 ? qvBufferDelTrailing : qvBufferDelLeading )( slot.ref.at(), 1 );
                slot.model.erase( shared, how == 3 ? length - 8 : 0, 8 );
            }
        }
    }

    // Every way to read, at any place.
    void look()
    {
        Slot  &slot = slots.any( in ), &other = slots.any( in );
        QV_INT length = slot.model.length(), offset = in.upTo( length ), count = in.upTo( length - offset );
        Bits   range = part( slot.model.bits, offset, count );

        Ref< QV_BUFFER > read( qvBufferBitRead( slot.ref, offset, count ) );
        require( bitsOf( qvBufferBacking( read ), qvBufferBitLength( read ) ) == range );

        std::vector< uint8_t > bytes( static_cast< size_t >( count / 8 + 1 ), 0x5A );
        qvBufferBitReadBytes( slot.ref, offset, bytes.data(), count / 8 );
        require( bitsOf( bytes.data(), count / 8 * 8 ) == part( range, 0, count / 8 * 8 ) && bytes.back() == 0x5A );

        QV_INT few = std::min< QV_INT >( count, 64 );
        require( bitsOf( qvBufferBitReadBits( slot.ref, offset, few ), few ) == part( range, 0, few ) );

        // What lies behind the last bit does not count.
        Ref< QV_BUFFER > start( qvBufferBitRead( slot.ref, 0, count ) ), cut( qvBufferCreateFrom( slot.ref ) );
        qvBufferBitDelTrailing( cut.at(), length - count );
        require(
            qvBufferCompare( start, cut ) == 0 && qvBufferCompare( start, slot.ref ) == ( count == length ? 0 : -1 ) );

        const Bits &a = slot.model.bits, &b = other.model.bits;
        require( qvBufferCompare( slot.ref, other.ref ) == ( a == b ? 0 : a < b ? -1 : 1 ) );
        require( qvBufferLength( slot.ref ) == length / 8 && qvBufferBitIsAligned( slot.ref ) == ( length % 8 == 0 ) );
    }

    void check()
    {
        for( Slot &slot : slots.slots )
        {
            require( qvBufferBitLength( slot.ref ) == slot.model.length() );
            require( same( qvBufferBacking( slot.ref ), slot.model.bits ) );
            require( declared( slot.ref.get() ) == slot.model.declared() );
        }

        slots.checkCounts();

        for( size_t i = 0; i < memory.size(); i++ )
            require( memory[i] == static_cast< uint8_t >( i * i ) );
    }
};
} // namespace

QV_FUZZ_WALK(
    BufferWalk, OP( share ) OP( create ) OP( copy ) OP( copy ) OP( copy ) OP( put ) OP( put ) OP( put ) OP( erase )
                    OP( erase ) OP( many ) OP( look ) )

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

Bits bitsOf( uint64_t value, QV_INT count )
{
    Bits bits( static_cast< size_t >( count ) );

    for( size_t i = 0; i < bits.size(); i++ )
        bits[i] = value >> ( bits.size() - 1 - i ) & 1;

    return bits;
}

struct Model : Ends< Model, Bits > // the free places are bits
{
    bool block = false, foreign = false;

    QV_INT declared() const
    {
        return foreign ? 0 : places() / 8;
    }

    // A new block for `length` bits with free space at both ends, none for nothing.
    void rebuild( QV_INT length )
    {
        foreign = false;
        block   = length > 0;
        front   = block ? 640 : 0;
        back    = block ? ( length + 1920 + 7 ) / 8 * 8 - 640 - length : 0;
    }

    void copy()
    {
        rebuild( length() );
    }

    void makeRoom( QV_INT at, QV_INT count )
    {
        own( foreign );
        QV_INT before = length();

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
    }

    void write( QV_INT at, const Bits &more )
    {
        if( !more.empty() )
            own( foreign );

        std::copy( more.begin(), more.end(), items.begin() + at );
    }

    void compact()
    {
        if( !foreign && ( front > 1280 || back > 2560 ) )
            rebuild( length() );
    }

    void erase( QV_INT offset, QV_INT count )
    {
        QV_INT after = length() - offset - count;

        if( count > 0 && count < length() && after > 0 && ( offset % 8 || count % 8 ) )
        {
            Model rest;
            rest.insert( 0, part( items, 0, offset ) );
            rest.insert( offset, part( items, offset + count, after ) );
            *this = rest;
            return;
        }

        if( count > 0 && foreign && offset > 0 && after > 0 ) // what is cut at an end stays where it is
            rebuild( length() );

        Ends::erase( offset, count );
    }

    void keep( QV_INT offset, QV_INT count )
    {
        if( count == length() )
            return;

        if( count == 0 || offset % 8 )
        {
            items = part( items, offset, count );
            return rebuild( count );
        }

        if( shared )
            rebuild( length() );

        front += offset;
        back += length() - offset - count;
        items = part( items, offset, count );
        compact();
    }
};

struct BufferWalk : SlotWalk< BufferWalk, QV_BUFFER, Model, qvBufferCreate >
{
    std::vector< uint8_t > memory, memoryBefore;
    Ref< QV_OBJ >          owner = boxedInt( 0 );

    BufferWalk( const uint8_t *data, size_t size ) : SlotWalk( data, size ), memory( 300 )
    {
        for( size_t i = 0; i < memory.size(); i++ )
            memory[i] = static_cast< uint8_t >( i * i );

        memoryBefore = memory;
    }

    // Bits or bytes: what is drawn is in units of them.
    QV_INT unit = 1;

    QV_INT upTo( QV_INT bitLimit )
    {
        return in.upTo( bitLimit / unit ) * unit;
    }

    void create()
    {
        Slot &to = any(), &from = any();
        Model model;

        switch( in.below( 5 ) )
        {
        case 0:
            model.foreign = model.block = true;
            model.items                 = bitsOf( memory.data(), lengthOf( memory ) * 8 );
            return to.set( qvBufferCreateFromBytesUseWithRef( memory.data(), lengthOf( memory ), owner ), model );
        case 1:
        {
            QV_INT count = in.length( 300 );
            auto  *block = static_cast< uint8_t * >( qvMemAlloc( count + 1 ) );
            std::copy( memory.begin(), memory.begin() + count, block );
            model.items = bitsOf( block, count * 8 );
            model.block = count > 0;
            return to.set( qvBufferCreateFromBytesUse( block, count ), model );
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
        dest.model.shared |= self;
        QV_INT length = dest.model.length(), count = lengthOf( bits );
        QV_INT how = in.below( 4 );

        if( how == 0 && count > length )
            how = 1;

        if( length > 16000 && how > 0 )
            return;

        QV_INT at = how == 0 ? upTo( length - count ) : how == 1 ? upTo( length ) : how == 2 ? 0 : length;

        if( how < 2 )
            how == 0 ? writing( dest.ref.at(), at / unit, arguments... )
                     : inserting( dest.ref.at(), at / unit, arguments... );
        else
            how == 2 ? prepending( dest.ref.at(), arguments... ) : appending( dest.ref.at(), arguments... );

        how == 0 ? dest.model.write( at, bits ) : dest.model.insert( at, bits );
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
        Slot  &dest = any(), &src = any();
        bool   self = dest.ref.get() == src.ref.get();
        Span   span = in.span( src.model.length(), in.below( 5 ), unit );
        Bits   bits = span.of( src.model.items );
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
        Slot  &dest   = any();
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
            QV_INT at = upTo( dest.model.length() );

            if( at == 0 )
                ( unit == 1 ? qvBufferBitPrependAlignment : qvBufferPrependAlignment )( dest.ref.at() );
            else if( at == dest.model.length() )
                ( unit == 1 ? qvBufferBitAppendAlignment : qvBufferAppendAlignment )( dest.ref.at() );
            else
                ( unit == 1 ? qvBufferBitInsertAlignment : qvBufferInsertAlignment )( dest.ref.at(), at / unit );

            dest.model.insert( at, Bits( static_cast< size_t >( -dest.model.length() & 7 ) ) );
        }
    }

    void erase()
    {
        unit       = in.flag() ? 8 : 1;
        Slot &slot = any();
        Span  span = in.span( slot.model.length(), LEADING + in.below( 4 ), unit );

        if( unit == 1 )
            CALL_PART( qvBufferBitDel, span, 1, slot.ref.at() );
        else
            CALL_PART( qvBufferDel, span, 8, slot.ref.at() );

        span.erase( slot.model );
    }

    // Byte by byte at an end, as blocks fill up and empty.
    void many()
    {
        Slot  &slot = any();
        QV_INT how = in.below( 4 ), count = in.length( 500 );

        for( ; count > 0; count-- )
        {
            QV_INT length = slot.model.length(), at = how % 2 ? length : 0;

            if( how < 2 )
            {
                ( how ? qvBufferAppendByte : qvBufferPrependByte )( slot.ref.at(), static_cast< uint8_t >( count ) );
                slot.model.insert( at, bitsOf( static_cast< uint64_t >( count ), 8 ) );
            }
            else if( length >= 8 )
            {
                ( how == 3 ? qvBufferDelTrailing : qvBufferDelLeading )( slot.ref.at(), 1 );
                slot.model.erase( how == 3 ? length - 8 : 0, 8 );
            }
        }
    }

    // Every way to read, at any place.
    void look()
    {
        Slot  &slot = any(), &other = any();
        QV_INT length = slot.model.length(), offset = in.upTo( length ), count = in.upTo( length - offset );
        Bits   range = part( slot.model.items, offset, count );

        Ref< QV_BUFFER > read( qvBufferBitRead( slot.ref, offset, count ) );
        require( bitsOf( qvBufferBacking( read ), qvBufferBitLength( read ) ) == range );

        std::vector< uint8_t > bytes( static_cast< size_t >( count / 8 + 1 ), 0x5A );
        qvBufferBitReadBytes( slot.ref, offset, bytes.data(), count / 8 );
        require( bitsOf( bytes.data(), count / 8 * 8 ) == part( range, 0, count / 8 * 8 ) && bytes.back() == 0x5A );

        QV_INT few = std::min< QV_INT >( count, 64 );
        require( bitsOf( qvBufferBitReadBits( slot.ref, offset, few ), few ) == part( range, 0, few ) );

        // What lies after the last bit does not count.
        Ref< QV_BUFFER > start( qvBufferBitRead( slot.ref, 0, count ) ), cut( qvBufferCreateFrom( slot.ref ) );
        qvBufferBitDelTrailing( cut.at(), length - count );
        require(
            qvBufferCompare( start, cut ) == 0 && qvBufferCompare( start, slot.ref ) == ( count == length ? 0 : -1 ) );

        const Bits &a = slot.model.items, &b = other.model.items;
        require( qvBufferCompare( slot.ref, other.ref ) == ( a == b ? 0 : a < b ? -1 : 1 ) );
        require( qvBufferLength( slot.ref ) == length / 8 && qvBufferBitIsAligned( slot.ref ) == ( length % 8 == 0 ) );
    }

    void compare( Slot &slot ) const
    {
        require( qvBufferBitLength( slot.ref ) == slot.model.length() );
        require( bitsOf( qvBufferBacking( slot.ref ), slot.model.length() ) == slot.model.items );
        require( declared( slot.ref.get() ) == slot.model.declared() );
        require( memory == memoryBefore );
    }
};
} // namespace

QV_FUZZ_WALK(
    BufferWalk, OP( share, 1 ) OP( create, 1 ) OP( copy, 3 ) OP( put, 3 ) OP( erase, 2 ) OP( many, 1 ) OP( look, 1 ) )

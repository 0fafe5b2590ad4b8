// Buffers beside vectors of bits, in units of bits and of bytes. Some wrap memory that must stay as it is.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
using Bits = std::vector< bool >;

// Nobody can write to it.
const uint8_t MEMORY[300] = { 0, 1, 4, 9, 16, 25, 36, 49, 64, 81, 100, 121, 144, 169, 196, 225, 255, 0x55, 0xAA, 0x81 };

Bits bitsOf( const uint8_t *bytes, QV_INT count )
{
    Bits bits( static_cast< size_t >( count ) );

    for( size_t i = 0; i < bits.size(); i++ )
        bits[i] = bytes[i / 8] >> ( 7 - i % 8 ) & 1;

    return bits;
}

Bits bitsOf( uint64_t value, QV_INT count )
{
    uint64_t big = count ? __builtin_bswap64( value << ( 64 - count ) ) : 0;
    return bitsOf( reinterpret_cast< const uint8_t * >( &big ), count );
}

struct BufferWalk : Slots< BufferWalk, QV_BUFFER, Bits, qvBufferCreate >
{
    void create( Slot &to, Slot &from )
    {
        QV_INT which = in.below( 3 ), count = in.length( 300 );

        if( which == 0 )
            return to.set( qvBufferCreateFrom( from.ref ), from.model );

        if( which == 1 || count == 0 )
            return to.set(
                qvBufferCreateFromBytesUseWithRef( const_cast< uint8_t * >( MEMORY ), 300, boxedInt( 0 ) ),
                bitsOf( MEMORY, 2400 ) );

        // A block that has no free places.
        auto *block = static_cast< uint8_t * >( qvMemAlloc( count ) );
        std::copy( MEMORY, MEMORY + count, block );
        to.set( qvBufferCreateFromBytesUse( block, count ), bitsOf( MEMORY, count * 8 ) );
    }

    // An operation draws a unit, a destination, and with begin() what it does there; finish() does the same to the model.
    QV_INT unit, how, where;
    Slot  *dest;
    Bits   bits;

    void draw()
    {
        unit = in.flag() ? 8 : 1;
        dest = &any();
    }

    void begin( const Bits &drawn )
    {
        QV_INT length = lengthOf( dest->model ), rest = length - lengthOf( drawn );
        bits  = drawn;
        how   = rest < 0 ? 1 + in.below( 3 ) : in.below( 4 );
        where = how == 2 ? 0 : how == 3 ? length : in.upTo( ( how ? length : rest ) / unit ) * unit;
    }

    void finish()
    {
        if( how == 0 )
            std::copy( bits.begin(), bits.end(), dest->model.begin() + where );
        else
            qv::fuzz::put( dest->model, where, bits );
    }

// Writes over what is there, or inserts, at the ends in their own forms.
#define PUT( drawn, Suffix, ... )                                                                                      \
    ( begin( drawn ), unit == 1 ? PUT_IN( Bit, Suffix, __VA_ARGS__ ) : PUT_IN(, Suffix, __VA_ARGS__ ), finish() )
#define PUT_IN( Bit, Suffix, ... )                                                                                     \
    ( how == 0   ? qvBuffer##Bit##Write##Suffix( dest->ref.at(), where / unit, __VA_ARGS__ )                           \
      : how == 1 ? qvBuffer##Bit##Insert##Suffix( dest->ref.at(), where / unit, __VA_ARGS__ )                          \
      : how == 2 ? qvBuffer##Bit##Prepend##Suffix( dest->ref.at(), __VA_ARGS__ )                                       \
                 : qvBuffer##Bit##Append##Suffix( dest->ref.at(), __VA_ARGS__ ) )

    void copy( Slot &src, Slot & )
    {
        draw();
        Span   span = in.span( lengthOf( src.model ), in.below( 5 ), unit );
        QV_INT a = span.offset / unit, b = span.count / unit;

        span.form == WHOLE      ? PUT( span.of( src.model ), , src.ref )
        : span.form == LEADING  ? PUT( span.of( src.model ), Leading, src.ref, a )
        : span.form == TRAILING ? PUT( span.of( src.model ), Trailing, src.ref, a )
        : span.form == INNER    ? PUT( span.of( src.model ), Inner, src.ref, a, b )
                                : PUT( span.of( src.model ), Outer, src.ref, a, b );
    }

    // A number, memory, or as many zeros or ones as there are free places or nearly.
    void put( Slot &, Slot & )
    {
        draw();
        uint64_t number = static_cast< uint64_t >( in.number() );
        uint8_t  byte   = static_cast< uint8_t >( number );
        QV_INT   few = in.upTo( 64 ), many = in.length( 300 ), what = in.below( 5 );
        QV_INT   fill = in.upTo( declared( dest->ref.get() ) * 8 / unit + 1 );

        what == 0   ? PUT( bitsOf( number, few ), Bits, number, few )
        : what == 1 ? PUT( bitsOf( number & 255, 8 ), Byte, byte )
        : what == 2 ? PUT( bitsOf( MEMORY, many * 8 ), Bytes, MEMORY, many )
        : what == 3 ? PUT( Bits( static_cast< size_t >( fill * unit ) ), Zero, fill )
                    : PUT( Bits( static_cast< size_t >( many * unit ), true ), One, many );
    }

    // Counts by the length, also where it goes elsewhere.
    void align( Slot &, Slot & )
    {
        draw();
        QV_INT at = in.upTo( lengthOf( dest->model ) / unit );
        ( unit == 1 ? qvBufferBitInsertAlignment : qvBufferInsertAlignment )( dest->ref.at(), at );
        qv::fuzz::put( dest->model, at * unit, Bits( static_cast< size_t >( -lengthOf( dest->model ) & 7 ) ) );
    }

    void erase( Slot &, Slot & )
    {
        draw();
        Span span = in.span( lengthOf( dest->model ), LEADING + in.below( 4 ), unit );

        if( unit == 1 )
            CALL_PART( qvBufferBitDel, span, 1, dest->ref.at() );
        else
            CALL_PART( qvBufferDel, span, 8, dest->ref.at() );

        dest->model = span.rest( dest->model );
    }

    // Every way to read, at any place.
    void look( Slot &slot, Slot &other )
    {
        const Bits &a = slot.model, &b = other.model;
        QV_INT      length = lengthOf( a ), offset = place( slot ), count = in.upTo( length - offset );
        Bits        range = part( a, offset, count );

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
        require( qvBufferEquals( start, cut ) );
        require( qvBufferCompare( start, slot.ref ) == ( count == length ? 0 : -1 ) );
        require( qvBufferCompare( slot.ref, other.ref ) == ( a == b ? 0 : a < b ? -1 : 1 ) );
    }

    static void compare( Slot &slot )
    {
        QV_INT length = lengthOf( slot.model );
        require( qvBufferBitLength( slot.ref ) == length && qvBufferLength( slot.ref ) == length / 8 );
        require( bitsOf( qvBufferBacking( slot.ref ), length ) == slot.model );
        require( declared( slot.ref.get() ) <= length / 8 + 500 );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK(
    BufferWalk, OP( share ) OP( create ) OP( copy ) OP( copy ) OP( copy ) OP( put ) OP( put ) OP( put ) OP( align )
                    OP( erase ) OP( erase ) OP( look ) )

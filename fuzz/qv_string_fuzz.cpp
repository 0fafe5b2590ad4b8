// Strings beside Text, with the free places that the rules of growth and compaction give their blocks.
// Sources are often the destination itself, or another variable with the same object.

#include "qv_fuzz_walk.h"

#include "qv/sys/qv_mem.h"
#include "qv/unicode/qv_unicode_properties.h"

using namespace qv::fuzz;
using qv::Ref;

namespace
{
struct Model
{
    Text   text;
    QV_INT fspace = 0, bspace = 0;

    QV_INT length() const
    {
        return size( text );
    }

    QV_INT declared() const
    {
        return 4 * ( fspace + length() + bspace );
    }

    // A new block of just the contents with free places at both ends; none for nothing.
    void rebuild()
    {
        fspace = bspace = text.empty() ? 0 : 32;
    }

    void makeRoom( QV_INT at, QV_INT count )
    {
        if( declared() == 0 || ( at == 0 && fspace + bspace < count ) )
            fspace = bspace = 32;
        else if( at == 0 && fspace >= count )
            fspace -= count;
        else if( at == 0 )
            bspace -= count - fspace, fspace = 0;
        else if( at == length() )
            bspace = bspace >= count ? bspace - count : 32;
        else if( bspace >= count )
            bspace -= count;
        else if( fspace + bspace >= count )
            fspace -= count - bspace, bspace = 0;
        else
            fspace = bspace = 32;
    }

    void insert( bool shared, QV_INT at, const Text &part )
    {
        if( part.empty() )
            return;

        if( shared )
            fspace = bspace = 32;
        else
            makeRoom( at, size( part ) );

        text.insert( static_cast< size_t >( at ), part );
    }

    void own( bool shared )
    {
        if( shared )
            rebuild();
    }

    void compact()
    {
        if( fspace > 64 || bspace > 64 )
            rebuild();
    }

    void erase( bool shared, QV_INT offset, QV_INT count )
    {
        if( count == length() )
            *this = Model();

        if( text.empty() || count == 0 )
            return;

        own( shared );
        ( offset == 0 ? fspace : bspace ) += count;
        text.erase( static_cast< size_t >( offset ), static_cast< size_t >( count ) );
        compact();
    }

    void keep( bool shared, QV_INT offset, QV_INT count )
    {
        if( count == length() )
            return;

        if( count == 0 )
        {
            *this = Model();
            return;
        }

        own( shared );
        fspace += offset;
        bspace += length() - offset - count;
        text = part( text, offset, count );
        compact();
    }
};

bool isSpace( char32_t ch )
{
    return qvUnicodeIsWhiteSpace( ch );
}

struct StringWalk : SlotWalk< QV_STRING, Model, qvStringCreate >
{
    using SlotWalk::SlotWalk;

    void clear()
    {
        Slot &slot = slots.any( in );
        qvStringClear( slot.ref.at() );
        slot.model = Model();
    }

    // What stands at `dest`, and a part of what a variable holds, maybe of the destination itself.
    void insert()
    {
        Slot  &dest = slots.any( in ), &src = slots.any( in );
        bool   self = dest.ref.get() == src.ref.get(), shared = slots.shared( dest ) || self;
        Text   from = src.model.text;
        Span   span = in.span( size( from ), in.below( 7 ) );
        QV_INT at   = in.upTo( dest.model.length() );

        if( dest.model.length() + size( from ) > 20000 )
            return;

        if( span.form == 6 )
        {
            qvStringDelimitedAppend( dest.ref.at(), src.ref, slots.slots[0].ref );
            return delimited( dest, from );
        }

        bool prepends = at == 0 && in.flag(), appends = !prepends && at == dest.model.length() && in.flag();
        bool outer = span.form == OUTER;
        Text front = outer ? part( from, 0, span.offset ) : Text();
        Text back  = outer            ? from.substr( static_cast< size_t >( span.offset + span.count ) )
                     : span.form == 5 ? from
                                      : span.of( from );

        if( span.form == 5 ) // the text of an object, which is itself in the case of a String
            prepends  ? qvStringPrependObj( dest.ref.at(), qv::obj( src.ref.get() ) )
            : appends ? qvStringAppendObj( dest.ref.at(), qv::obj( src.ref.get() ) )
                      : qvStringInsertObj( dest.ref.at(), at, qv::obj( src.ref.get() ) );
        else if( prepends )
            CALL_FORM( qvStringPrepend, span, 1, dest.ref.at(), src.ref );
        else if( appends )
            CALL_FORM( qvStringAppend, span, 1, dest.ref.at(), src.ref );
        else
            CALL_FORM( qvStringInsert, span, 1, dest.ref.at(), at, src.ref );

        dest.model.insert( shared, at, back );
        dest.model.insert( back.empty() && shared, at, front );
    }

    // The block of the result depends on steps that nobody promises.
    void delimited( Slot &dest, const Text &from )
    {
        Text delimiter = &dest == &slots.slots[0] ? dest.model.text : slots.slots[0].model.text;
        dest.model.text += dest.model.text.empty() ? from : delimiter + from;
        adopt( dest );
    }

    // Gives a result a block of its own that is known.
    void adopt( Slot &slot )
    {
        Text text = charsOf( slot.ref );
        require( text == slot.model.text );
        slot.set( qvStringCreateFrom( slot.ref ), Model{ text } );
        slot.model.rebuild();
    }

    void chars()
    {
        Slot  &slot   = slots.any( in );
        bool   shared = slots.shared( slot );
        Text   part   = in.text();
        QV_INT at     = in.upTo( slot.model.length() );

        if( slot.model.length() > 20000 )
            return;

        if( size( part ) == 1 )
            qvStringInsertChar( slot.ref.at(), at, part[0] );
        else
            qvStringInsertChars( slot.ref.at(), at, part.data(), size( part ) );

        slot.model.insert( shared, at, part );
    }

    // One after the other, as blocks fill up.
    void many()
    {
        Slot  &slot  = slots.any( in );
        bool   front = in.flag();
        QV_INT count = in.length( 200 );

        for( QV_INT i = 0; i < count; i++ )
        {
            bool shared = slots.shared( slot );
            ( front ? qvStringPrependChar : qvStringAppendChar )( slot.ref.at(), U'0' + i % 10 );
            slot.model.insert( shared, front ? 0 : slot.model.length(), Text( 1, U'0' + char32_t( i % 10 ) ) );
        }
    }

    void erase()
    {
        Slot &slot   = slots.any( in );
        bool  shared = slots.shared( slot );
        Span  span   = in.span( slot.model.length(), LEADING + in.below( 4 ) );
        CALL_PART( qvStringDel, span, 1, slot.ref.at() );
        span.erase( slot.model, shared );
    }

    void setChar()
    {
        Slot   &slot   = slots.any( in );
        bool    shared = slots.shared( slot );
        QV_INT  idx    = in.upTo( slot.model.length() + 1 ) - 1;
        QV_CHAR ch     = in.character();
        qvStringSetCharAt( slot.ref.at(), idx, ch );

        if( idx == -1 || idx == slot.model.length() )
            return slot.model.insert( shared, std::max< QV_INT >( idx, 0 ), Text( 1, ch ) );

        slot.model.own( shared );
        slot.model.text[static_cast< size_t >( idx )] = ch;
    }

    void trim()
    {
        Slot  &slot  = slots.any( in );
        bool   first = in.flag(), last = in.flag();
        QV_INT from = 0, to = slot.model.length();

        ( first && last ? qvStringTrim : first ? qvStringTrimLeading : qvStringTrimTrailing )( slot.ref.at() );

        for( ; first && from < to && isSpace( slot.model.text[static_cast< size_t >( from )] ); )
            from++;

        for( ; ( last || !first ) && from < to && isSpace( slot.model.text[static_cast< size_t >( to - 1 )] ); )
            to--;

        slot.model.text = part( slot.model.text, from, to - from );
        adopt( slot );
    }

    // Each character maps as it does alone; what grows is the block of the result.
    void mapCase()
    {
        Slot    &slot = slots.any( in );
        auto     map  = in.flag() ? qvStringToUpper : in.flag() ? qvStringToLower : qvStringToCaseFold;
        char32_t last = 0x110000;
        Text     mapped, lastMapped;

        for( char32_t ch : slot.model.text )
        {
            if( ch != last )
            {
                Ref< QV_STRING > one = stringOf( Text( 1, ch ) );
                map( one.at() );
                last = ch, lastMapped = charsOf( one );
            }

            mapped += lastMapped;
        }

        map( slot.ref.at() );

        if( !slot.model.text.empty() )
            slot.model.text = mapped, slot.model.rebuild();
    }

    void sanitize()
    {
        Slot &slot = slots.any( in );
        Text  clean;

        for( size_t i = 0; i < slot.model.text.size(); i++ )
        {
            char32_t ch = slot.model.text[i], next = i + 1 < slot.model.text.size() ? slot.model.text[i + 1] : 0;

            if( ch >> 10 == 0xD800 >> 10 && next >> 10 == 0xDC00 >> 10 )
                clean += 0x10000 + ( ( ch & 0x3FF ) << 10 ) + ( next & 0x3FF ), i++;
            else if( ch >> 11 != 0xD800 >> 11 )
                clean += ch;
        }

        qvStringSanitize( slot.ref.at() );
        slot.model.text = clean;
        adopt( slot );
    }

    void create()
    {
        Slot  &to = slots.any( in ), &from = slots.any( in );
        QV_INT length = from.model.length(), offset = in.upTo( length ), count = in.upTo( length - offset );
        Model  model{ part( from.model.text, offset, count ) };

        if( in.flag() )
        {
            model.rebuild();
            return to.set( qvStringCreateFromInner( from.ref, offset, count ), model );
        }

        // A block that has no free places.
        QV_CHAR *block = static_cast< QV_CHAR * >( qvMemAlloc( count * 4 + 1 ) );
        std::copy( model.text.begin(), model.text.end(), block );
        to.set( qvStringCreateFromCharsUse( block, count ), model );

        if( count == 0 )
            qvMemFree( block );
    }

    // Everything that only looks, at two variables.
    void look()
    {
        Slot       &a = slots.any( in ), &b = slots.any( in );
        const Text &hay = a.model.text, needle = b.model.text.substr( 0, static_cast< size_t >( in.below( 9 ) ) );
        QV_INT      offset = in.upTo( a.model.length() );
        auto        sub    = stringOf( needle );
        auto        at     = []( size_t found ) { return found == Text::npos ? -1 : static_cast< QV_INT >( found ); };

        int order = hay.compare( b.model.text );
        require( qvStringCompare( a.ref, b.ref ) == ( order > 0 ) - ( order < 0 ) );
        require( qvStringEquals( a.ref, b.ref ) == ( order == 0 ) );
        require( qvStringBeginsWith( a.ref, sub ) == hay.starts_with( needle ) );
        require( qvStringEndsWith( a.ref, sub ) == hay.ends_with( needle ) );
        require( qvStringIsBlank( a.ref ) == std::all_of( hay.begin(), hay.end(), isSpace ) );

        if( needle.empty() )
            return;

        require( qvStringFind( a.ref, offset, sub ) == at( hay.find( needle, static_cast< size_t >( offset ) ) ) );
        require(
            qvStringFindFromRight( a.ref, offset, sub ) == at( hay.rfind( needle, static_cast< size_t >( offset ) ) ) );
        require(
            qvStringFindChar( a.ref, offset, needle[0] )
            == at( hay.find( needle[0], static_cast< size_t >( offset ) ) ) );
        require(
            qvStringFindCharFromRight( a.ref, offset, needle[0] )
            == ( offset == 0 ? -1 : at( hay.rfind( needle[0], static_cast< size_t >( offset - 1 ) ) ) ) );

        QV_INT           maxParts = in.flag() ? -1 : 1 + in.below( 9 );
        Ref< QV_VECTOR > parts( qvStringSplit( a.ref, sub, maxParts ) );
        Text             joined;

        // The parts with the separator between them are the text, and no part but the last has it.
        for( QV_INT i = 0; i < qvVectorLength( parts ); i++ )
        {
            Text part = charsOf( reinterpret_cast< QV_STRING * >( qvVectorBacking( parts )[i] ) );
            bool last = i == qvVectorLength( parts ) - 1;
            require( part.find( needle ) == Text::npos || ( last && i + 1 == maxParts ) );
            joined += ( i ? needle : U"" ) + part;
        }

        require( joined == hay && ( maxParts < 0 || qvVectorLength( parts ) <= maxParts ) );
    }

    // Through outside text and back, for texts without surrogates.
    void convert()
    {
        Slot  &slot = slots.any( in );
        QV_INT length;
        char  *utf8 = qvStringConvertToUtf8( slot.ref, QV_FALSE, &length );
        auto   back = Ref< QV_STRING >( qvStringCreateFromUtf8( utf8, length ) );
        qvMemFree( utf8 );

        if( std::none_of(
                slot.model.text.begin(), slot.model.text.end(), []( char32_t ch ) { return ch >> 11 == 0x1B; } ) )
            require( charsOf( back ) == slot.model.text );
    }

    void check()
    {
        for( Slot &slot : slots.slots )
        {
            require( charsOf( slot.ref ) == slot.model.text );
            require( declared( slot.ref.get() ) == slot.model.declared() );
        }

        slots.checkCounts();
    }
};
} // namespace

QV_FUZZ_WALK(
    StringWalk,
    OP( share ) OP( clear ) OP( insert ) OP( insert ) OP( insert ) OP( chars ) OP( chars ) OP( many ) OP( erase )
        OP( erase ) OP( setChar ) OP( trim ) OP( mapCase ) OP( sanitize ) OP( create ) OP( look ) OP( convert ) )

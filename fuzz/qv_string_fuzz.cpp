// Strings beside Text, with the free places that the rules of growth and compaction give their blocks.
// Sources are often the destination itself, another variable with the same object, or the block itself.

#include "qv_fuzz_models.h"

#include "qv/sys/qv_mem.h"

using namespace qv::fuzz;
using qv::Ref;

namespace
{
struct Model : Ends< Model, Text >
{
    // A new block of just the contents with free places at both ends; none for nothing.
    void copy()
    {
        front = back = items.empty() ? 0 : 32;
    }

    void makeRoom( QV_INT at, QV_INT count )
    {
        if( shared || places() == 0 || ( at == 0 && front + back < count ) )
            front = back = 32;
        else if( at == 0 && front >= count )
            front -= count;
        else if( at == 0 )
            back -= count - front, front = 0;
        else if( at == length() )
            back = back >= count ? back - count : 32;
        else if( back >= count )
            back -= count;
        else if( front + back >= count )
            front -= count - back, back = 0;
        else
            front = back = 32;
    }

    void compact()
    {
        if( front > 64 || back > 64 )
            copy();
    }

    void keep( QV_INT offset, QV_INT count )
    {
        if( count == length() )
            return;

        if( count == 0 )
        {
            *this = Model();
            return;
        }

        own();
        front += offset;
        back += length() - offset - count;
        items = part( items, offset, count );
        compact();
    }
};

struct StringWalk : SlotWalk< StringWalk, QV_STRING, Model, qvStringCreate >
{
    using SlotWalk::SlotWalk;

    void clear()
    {
        Slot &slot = any();
        qvStringClear( slot.ref.at() );
        slot.model = Model();
    }

    // What stands at `dest`, and a part of what a variable holds, maybe of the destination itself.
    void insert()
    {
        Slot  &dest = any(), &src = any();
        Text   from = src.model.items;
        Span   span = in.span( lengthOf( from ), in.below( 7 ) );
        QV_INT at   = in.upTo( dest.model.length() );
        dest.model.shared |= &dest == &src;

        if( dest.model.length() + lengthOf( from ) > 20000 )
            return;

        if( span.form == 6 )
        {
            qvStringDelimitedAppend( dest.ref.at(), src.ref, slots.slots[0].ref );
            return become(
                dest, dest.model.items + ( dest.model.items.empty() ? Text() : slots.slots[0].model.items ) + from );
        }

        bool prepends = at == 0 && in.flag(), appends = !prepends && at == dest.model.length() && in.flag();

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

        if( span.form == OUTER )
            dest.model.insertOuter( at, from, span );
        else
            dest.model.insert( at, span.form == 5 ? from : span.of( from ) );
    }

    // The result of something whose block depends on steps that nobody promises gets a block that is known.
    void become( Slot &slot, const Text &text )
    {
        require( charsOf( slot.ref ) == text );
        slot.set( qvStringCreateFrom( slot.ref ), { { text } } );
        slot.model.copy();
    }

    void chars()
    {
        Slot  &slot = any();
        Text   more = in.text();
        QV_INT at   = in.upTo( slot.model.length() );

        if( slot.model.length() > 20000 )
            return;

        // As many as there are free places, or one more or less.
        if( more.empty() )
        {
            more = Text( static_cast< size_t >( std::max< QV_INT >( slot.model.back + at % 3 - 1, 0 ) ), U'f' );
            at   = slot.model.length();
        }

        if( lengthOf( more ) == 1 )
            qvStringInsertChar( slot.ref.at(), at, more[0] );
        else
            qvStringInsertChars( slot.ref.at(), at, more.data(), lengthOf( more ) );

        slot.model.insert( at, more );
    }

    // Characters of the block that they go into.
    void inside()
    {
        Slot  &slot = any();
        Span   span = in.span( slot.model.length(), INNER );
        QV_INT at   = in.upTo( slot.model.length() );

        if( slot.model.length() > 20000 )
            return;

        qvStringInsertChars( slot.ref.at(), at, qvStringBacking( slot.ref ) + span.offset, span.count );
        become(
            slot, part( slot.model.items, 0, at ) + span.of( slot.model.items )
                      + part( slot.model.items, at, slot.model.length() - at ) );
    }

    // One after the other, as blocks fill up.
    void many()
    {
        Slot  &slot  = any();
        bool   front = in.flag();
        QV_INT count = in.length( 200 );

        for( QV_INT i = 0; i < count; i++ )
        {
            ( front ? qvStringPrependChar : qvStringAppendChar )( slot.ref.at(), U'0' + i % 10 );
            slot.model.insert( front ? 0 : slot.model.length(), Text( 1, U'0' + char32_t( i % 10 ) ) );
        }
    }

    void erase()
    {
        Slot &slot = any();
        Span  span = in.span( slot.model.length(), LEADING + in.below( 4 ) );
        CALL_PART( qvStringDel, span, 1, slot.ref.at() );
        span.erase( slot.model );
    }

    void setChar()
    {
        Slot   &slot = any();
        QV_INT  idx  = in.upTo( slot.model.length() + 1 ) - 1;
        QV_CHAR ch   = in.character();
        qvStringSetCharAt( slot.ref.at(), idx, ch );

        if( idx == -1 || idx == slot.model.length() )
            return slot.model.insert( std::max< QV_INT >( idx, 0 ), Text( 1, ch ) );

        slot.model.own();
        at( slot.model.items, idx ) = ch;
    }

    void trim()
    {
        Slot &slot  = any();
        bool  first = in.flag(), last = in.flag();
        ( first && last ? qvStringTrim : first ? qvStringTrimLeading : qvStringTrimTrailing )( slot.ref.at() );
        become( slot, trimmed( slot.model.items, first, last || !first ) );
    }

    // Each character maps as it does alone; what grows is the block of the result.
    void mapCase()
    {
        Slot    &slot = any();
        auto     map  = in.flag() ? qvStringToUpper : in.flag() ? qvStringToLower : qvStringToCaseFold;
        char32_t last = 0x110000;
        Text     mapped, lastMapped;

        for( char32_t ch : slot.model.items )
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

        if( !mapped.empty() )
            slot.model.items = mapped, slot.model.copy();
    }

    void sanitize()
    {
        Slot &slot = any();
        qvStringSanitize( slot.ref.at() );
        become( slot, sanitized( slot.model.items ) );
    }

    void create()
    {
        Slot &to = any(), &from = any();
        Span  span = in.span( from.model.length(), INNER );
        Model model{ { span.of( from.model.items ) } };

        if( in.flag() )
        {
            model.copy();
            return to.set( qvStringCreateFromInner( from.ref, span.offset, span.count ), model );
        }

        // A block that has no free places.
        QV_CHAR *block = static_cast< QV_CHAR * >( qvMemAlloc( span.count * 4 + 1 ) );
        std::copy( model.items.begin(), model.items.end(), block );
        to.set( qvStringCreateFromCharsUse( block, span.count ), model );

        if( span.count == 0 )
            qvMemFree( block );
    }

    // Everything that only looks, at two variables.
    void look()
    {
        Slot       &a = any(), &b = any();
        const Text &hay = a.model.items, needle = b.model.items.substr( 0, static_cast< size_t >( in.below( 9 ) ) );
        QV_INT      offset = in.upTo( a.model.length() ), order = sign( hay.compare( b.model.items ) );
        size_t      from = static_cast< size_t >( offset );
        auto        sub  = stringOf( needle );
        auto        at   = []( size_t found ) { return found == Text::npos ? -1 : static_cast< QV_INT >( found ); };

        require( qvStringCompare( a.ref, b.ref ) == order && qvStringEquals( a.ref, b.ref ) == ( order == 0 ) );
        require( qvStringBeginsWith( a.ref, sub ) == hay.starts_with( needle ) );
        require( qvStringEndsWith( a.ref, sub ) == hay.ends_with( needle ) );
        require( qvStringIsBlank( a.ref ) == std::all_of( hay.begin(), hay.end(), isSpace ) );

        if( needle.empty() )
            return;

        require( qvStringFind( a.ref, offset, sub ) == at( hay.find( needle, from ) ) );
        require( qvStringFindFromRight( a.ref, offset, sub ) == at( hay.rfind( needle, from ) ) );
        require( qvStringFindChar( a.ref, offset, needle[0] ) == at( hay.find( needle[0], from ) ) );
        require(
            qvStringFindCharFromRight( a.ref, offset, needle[0] )
            == ( offset == 0 ? -1 : at( hay.rfind( needle[0], from - 1 ) ) ) );

        QV_INT           most = in.flag() ? -1 : 1 + in.below( 9 );
        Ref< QV_VECTOR > parts( qvStringSplit( a.ref, sub, most ) );
        Text             joined;
        QV_INT           count = 0;

        // The parts with the separator between them are the text, and no part but the last has it.
        for( const Text &piece : textsOf( parts ) )
        {
            joined += ( count++ ? needle : U"" ) + piece;
            require( piece.find( needle ) == Text::npos || ( count == qvVectorLength( parts ) && count == most ) );
        }

        require( joined == hay && ( most < 0 || count <= most ) );
    }

    // Through outside text and back, for texts without surrogates.
    void convert()
    {
        Slot  &slot = any();
        QV_INT length;
        char  *utf8 = qvStringConvertToUtf8( slot.ref, QV_FALSE, &length );
        Text   back = takeText( qvStringCreateFromUtf8( utf8, length ) );
        qvMemFree( utf8 );
        const Text &text = slot.model.items;
        require( back == text || std::any_of( text.begin(), text.end(), isSurrogate ) );
    }

    static void compare( Slot &slot )
    {
        require( charsOf( slot.ref ) == slot.model.items && declared( slot.ref.get() ) == 4 * slot.model.places() );
    }
};
} // namespace

QV_FUZZ_WALK(
    StringWalk, OP( share, 1 ) OP( clear, 1 ) OP( insert, 3 ) OP( chars, 2 ) OP( many, 1 ) OP( erase, 2 )
                    OP( setChar, 1 ) OP( trim, 1 ) OP( mapCase, 1 ) OP( sanitize, 1 ) OP( create, 1 ) OP( look, 1 )
                        OP( convert, 1 ) OP( inside, 1 ) )

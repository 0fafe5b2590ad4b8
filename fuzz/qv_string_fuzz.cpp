// Strings beside Text. Sources are often the destination itself, another variable with the same object, or the block
// itself.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
struct StringWalk : Slots< StringWalk, QV_STRING, Text, qvStringCreate >
{
    void insert( Slot &dest, Slot &src )
    {
        Text   from = src.model;
        QV_INT at   = place( dest );
        Span   span = in.span( lengthOf( from ), in.below( 5 ) );

        if( at == 0 && in.flag() )
            CALL_FORM( qvStringPrepend, span, 1, dest.ref.at(), src.ref );
        else if( at == lengthOf( dest.model ) && in.flag() )
            CALL_FORM( qvStringAppend, span, 1, dest.ref.at(), src.ref );
        else
            CALL_FORM( qvStringInsert, span, 1, dest.ref.at(), at, src.ref );

        put( dest.model, at, span.of( from ) );
    }

    // As many as there are free places or nearly, characters of the block that they go into, or any others.
    void chars( Slot &slot, Slot & )
    {
        QV_INT         how = in.below( 4 ), at = place( slot );
        Span           span = in.span( lengthOf( slot.model ), INNER );
        Text           more = how == 0   ? repeated( in.upTo( freePlaces( slot, 4 ) + 1 ), U'f' )
                              : how == 1 ? span.of( slot.model )
                                         : in.text();
        const QV_CHAR *from = how == 1 ? qvStringBacking( slot.ref ) + span.from : more.data();

        // Written in place: as much as was asked for, or less.
        if( how == 3 && at == lengthOf( slot.model ) && !more.empty() )
        {
            std::copy( more.begin(), more.end(), qvStringAppendRoom( slot.ref.at(), lengthOf( more ) + span.count ) );
            qvStringAppendWritten( slot.ref.at(), lengthOf( more ) );
        }
        else if( lengthOf( more ) == 1 )
            qvStringInsertChar( slot.ref.at(), at, more[0] );
        else
            qvStringInsertChars( slot.ref.at(), at, from, lengthOf( more ) );

        put( slot.model, at, more );
    }

    void erase( Slot &slot, Slot & )
    {
        Span span = in.span( lengthOf( slot.model ), LEADING + in.below( 4 ) );
        CALL_PART( qvStringDel, span, 1, slot.ref.at() );
        slot.model = span.rest( slot.model );
    }

    // At the end, or before the first one, it is entered.
    void setChar( Slot &slot, Slot & )
    {
        QV_INT  idx = in.upTo( lengthOf( slot.model ) + 1 ) - 1;
        QV_CHAR ch  = in.character();
        qvStringSetCharAt( slot.ref.at(), idx, ch );

        if( idx == -1 || idx == lengthOf( slot.model ) )
            put( slot.model, std::max< QV_INT >( idx, 0 ), Text( 1, ch ) );
        else
            at( slot.model, idx ) = ch;
    }

    void clean( Slot &slot, Slot & )
    {
        bool first = in.flag(), last = in.flag();

        if( first || last )
            ( first && last ? qvStringTrim : first ? qvStringTrimLeading : qvStringTrimTrailing )( slot.ref.at() );
        else
            qvStringSanitize( slot.ref.at() );

        slot.model = first || last ? trimmed( slot.model, first, last ) : sanitized( slot.model );
    }

    // Each character maps as it does alone; what grows is the block of the result.
    void mapCase( Slot &slot, Slot & )
    {
        auto                      map = in.flag() ? qvStringToUpper : in.flag() ? qvStringToLower : qvStringToCaseFold;
        std::map< QV_CHAR, Text > known;
        Text                      mapped;

        for( QV_CHAR ch : slot.model )
        {
            if( !known.contains( ch ) )
            {
                Ref< QV_STRING > one = stringOf( Text( 1, ch ) );
                map( one.at() );
                known[ch] = charsOf( one );
            }

            mapped += known[ch];
        }

        map( slot.ref.at() );
        slot.model = mapped;
    }

    void create( Slot &to, Slot &from )
    {
        Span span  = in.span( lengthOf( from.model ), INNER );
        Text model = span.of( from.model );

        if( in.flag() || model.empty() )
            return to.set( qvStringCreateFromInner( from.ref, span.from, span.size ), model );

        // A block that has no free places.
        QV_CHAR *block = static_cast< QV_CHAR * >( qvMemAlloc( span.size * 4 ) );
        std::copy( model.begin(), model.end(), block );
        to.set( qvStringCreateFromCharsUse( block, span.size ), model );
    }

    // Everything that only looks, at two variables.
    void look( Slot &a, Slot &b )
    {
        const Text &hay = a.model, needle = b.model.substr( 0, static_cast< size_t >( in.below( 9 ) ) );
        QV_INT      offset = place( a ), order = sign( hay.compare( b.model ) );
        size_t      from = static_cast< size_t >( offset );
        auto        sub  = stringOf( needle );

        require( qvStringCompare( a.ref, b.ref ) == order && qvStringEquals( a.ref, b.ref ) == ( order == 0 ) );
        require( qvStringBeginsWith( a.ref, sub ) == hay.starts_with( needle ) );
        require( qvStringEndsWith( a.ref, sub ) == hay.ends_with( needle ) );
        require( qvStringIsBlank( a.ref ) == std::all_of( hay.begin(), hay.end(), isSpace ) );

        if( needle.empty() )
            return;

        // Where nothing is found, npos becomes -1.
        require( qvStringFind( a.ref, offset, sub ) == QV_INT( hay.find( needle, from ) ) );
        require( qvStringFindFromRight( a.ref, offset, sub ) == QV_INT( hay.rfind( needle, from ) ) );
        require( qvStringFindChar( a.ref, offset, needle[0] ) == QV_INT( hay.find( needle[0], from ) ) );
        require(
            qvStringFindCharFromRight( a.ref, offset, needle[0] )
            == QV_INT( hay.substr( 0, from ).rfind( needle[0] ) ) );

        QV_INT           most = in.flag() ? -1 : 1 + in.below( 9 ), count = 0;
        Ref< QV_VECTOR > parts( qvStringSplit( a.ref, sub, most ) );
        Text             joined;

        // The parts with the separator between them are the text, and no part but the last has it.
        for( const Text &piece : textsOf( parts ) )
        {
            joined += ( count++ ? needle : U"" ) + piece;
            require( piece.find( needle ) == Text::npos || ( count == qvVectorLength( parts ) && count == most ) );
        }

        require( joined == hay && ( most < 0 || count <= most ) );
    }

    static void compare( Slot &slot )
    {
        require( charsOf( slot.ref ) == slot.model && freePlaces( slot, 4 ) <= 128 );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK(
    StringWalk, OP( share ) OP( insert ) OP( insert ) OP( insert ) OP( chars ) OP( chars ) OP( chars ) OP( erase )
                    OP( erase ) OP( setChar ) OP( clean ) OP( mapCase ) OP( create ) OP( look ) )

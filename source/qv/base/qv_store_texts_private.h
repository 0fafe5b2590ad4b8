/** @file
    The Strings that a reader of documents has made last, by their text. */

#ifndef QV_STORE_TEXTS_PRIVATE_H
#define QV_STORE_TEXTS_PRIVATE_H

#include "qv/base/qv_string.h"
#include "qv/base/qv_string_create_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_vectors_line_private.h"

#include <algorithm>
#include <string.h>

namespace qv
{
/** Part of a text. The units are characters, or bytes if all of them are ASCII. */
template< class Unit >
struct Span
{
    const Unit *begin;
    const Unit *end;

    QV_INT length() const
    {
        return end - begin;
    }
};

/** Makes Strings of texts, and one String of texts that are equal, as far as it has places for: documents repeat
    addresses and values, and a String takes far more memory than its text.

    The Strings are held by the tree that is read and not here. So all that take() returns goes into the tree, and
    forget() is to be called when the tree has given something up. No other thread knows the tree yet. */
class Texts
{
public:
    Texts()                           = default;
    Texts( const Texts & )            = delete;
    Texts &operator=( const Texts & ) = delete;

    ~Texts()
    {
        if( places_ != near_ )
            qvMemFree( places_ );
    }

    /** The String of a text: a new reference, which is the caller's. */
    template< class Unit >
    QV_STRING *take( Span< Unit > text )
    {
        QV_INT length = text.length();

        if( length == 0 )
            return qvStringCreate();

        if( length > LONGEST || pause_ > 0 )
        {
            pause_ -= pause_ > 0;
            return create( text, &strings_ );
        }

        uint64_t hash   = hashOf( text );
        Place   *places = placesOf( hash );

        for( Place *place = places; place != places + WAYS; place++ )
            if( place->hash == hash && place->text && place->text->length == length && equals( place->text, text ) )
            {
                found_++;
                return retainOwn( place->text );
            }

        if( ++made_ % TRIAL == 0 )
        {
            bool areFew = found_ < FEW;
            pause_      = areFew ? next_ : 0;
            next_       = areFew ? std::min( 2 * next_, LONGEST_PAUSE ) : TRIAL;
            found_      = 0;
        }

        if( made_ > MOST_A_PLACE * ( uint64_t( 1 ) << ( 64 - shift_ ) ) && shift_ > 64 - MOST_BITS )
        {
            grow();
            places = placesOf( hash );
        }

        for( int i = WAYS - 1; i > 0; i-- )
            places[i] = places[i - 1];

        places[0] = { hash, create( text, &strings_ ) };

        return places[0].text;
    }

    /** A String that nothing else has, for some look-up. */
    template< class Unit >
    static QV_STRING *create( Span< Unit > text, ObjBatch *batch = nullptr )
    {
        QV_STRING *qvs = newFixedString( text.length(), batch );

        if constexpr( sizeof( Unit ) == 1 )
            widenAscii( chars( qvs ), text.begin, text.length() );
        else
            memcpy( chars( qvs ), text.begin, static_cast< size_t >( text.length() ) * sizeof( Unit ) );

        return qvs;
    }

    void forget()
    {
        memset( places_, 0, sizeof( Place ) << ( 64 - shift_ ) );
    }

private:
    static const QV_INT   LONGEST      = 64; // units of a text that is looked for: longer ones are rarely equal
    static const int      FIRST_BITS   = 6;  // of the number of places
    static const int      STEP_BITS    = 3;
    static const int      MOST_BITS    = 12;
    static const int      WAYS         = 4; // places that a text can have
    static const uint64_t MOST_A_PLACE = 2; // Strings made for each place, until there are more places

    // Where fewer than FEW are found beside TRIAL new ones, the next ones are not looked for: as many, then twice as many
    // each time.
    static constexpr uint64_t TRIAL         = 64;
    static constexpr uint64_t FEW           = 8;
    static constexpr uint64_t LONGEST_PAUSE = 128;

    struct Place
    {
        uint64_t   hash;
        QV_STRING *text;
    };

    template< class Unit >
    static bool equals( QV_STRING *qvs, Span< Unit > text )
    {
        if constexpr( sizeof( Unit ) == 1 )
            return equalsBytes( chars( qvs ), text.begin, text.length() );
        else
            return memcmp( chars( qvs ), text.begin, static_cast< size_t >( text.length() ) * sizeof( Unit ) ) == 0;
    }

    // A String that no other thread knows, so that its count needs no locked instruction, unless a snapshot finds it.
    static QV_STRING *retainOwn( QV_STRING *qvs )
    {
        QV_ASSERT( qv___AtomicLoad32( &qvs->retainCount ) > 0 );

        if( qvs->isListed )
            return retain( qvs );

        qvs->retainCount++;
        return qvs;
    }

    // Most texts differ in the units at one of their ends.
    template< class Unit >
    static uint64_t hashOf( Span< Unit > text )
    {
        uint64_t     first = 0, last = 0;
        const QV_INT both = sizeof( first ) / sizeof( Unit );

        if( text.length() >= both )
        {
            memcpy( &first, text.begin, sizeof( first ) );
            memcpy( &last, text.end - both, sizeof( last ) );
        }
        else
        {
            for( const Unit *unit = text.begin; unit < text.end; unit++ )
                first = first << 8 * sizeof( Unit ) % 64 | *unit;
        }

        uint64_t hash =
            ( ( first ^ static_cast< uint64_t >( text.length() ) ) * 0x9E3779B97F4A7C15u ^ last ) * 0xC2B2AE3D27D4EB4Fu;

        return hash ^ hash >> 29;
    }

    // The first of the places that a text can have: these are one line of the processor's cache, or parts of two.
    Place *placesOf( uint64_t hash ) const
    {
        return places_ + ( hash >> shift_ & ~uint64_t( WAYS - 1 ) );
    }

    void grow()
    {
        Place *old   = places_;
        QV_INT count = QV_INT( 1 ) << ( 64 - shift_ );
        shift_ -= STEP_BITS;

        QV_INT bytes = QV_INT( sizeof( Place ) ) << ( 64 - shift_ );
        places_      = static_cast< Place * >( qvMemSet( qvMemAlloc( bytes ), 0, bytes ) );

        for( QV_INT i = 0; i < count; i++ )
            placesOf( old[i].hash )[i % WAYS] = old[i];

        if( old != near_ )
            qvMemFree( old );
    }

    ObjBatch strings_{ qvStringSort() }; // most of them live as long as the tree
    int      shift_                 = 64 - FIRST_BITS;
    uint64_t made_                  = 0;     // new texts
    uint64_t found_                 = 0;     // since the last trial
    uint64_t pause_                 = 0;     // texts to come that are not looked for
    uint64_t next_                  = TRIAL; // length of the next pause
    Place   *places_                = near_;
    Place    near_[1 << FIRST_BITS] = {};
};
} // namespace qv

#endif

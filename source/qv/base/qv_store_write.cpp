// The writers of the text form.

#include "qv/base/qv_store.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_abort.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_levels_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_slab_private.h"
#include "qv/sys/qv_utf8_private.h"
#include "qv/sys/qv_vectors_line_private.h"

#include <string.h>
#include <type_traits>
#include <utility>

namespace
{
// A block that grows, of UTF-8 if the units are bytes, else of characters.
template< class Unit >
class Output
{
public:
    Output()                            = default;
    Output( const Output & )            = delete;
    Output &operator=( const Output & ) = delete;

    ~Output()
    {
        qvMemFree( units_ );
    }

    const Unit *units() const
    {
        return units_;
    }

    QV_INT length() const
    {
        return length_;
    }

    void cut( QV_INT length )
    {
        length_ = length;
    }

    // The block, which the caller owns from now on; null if nothing was written.
    Unit *take()
    {
        if( length_ > 0 )
            units_ = static_cast< Unit * >( qvMemReallocN( units_, length_, sizeof( Unit ) ) );

        return length_ > 0 ? std::exchange( units_, nullptr ) : nullptr;
    }

    void put( char ch )
    {
        *room( 1 ) = static_cast< Unit >( ch );
        length_++;
    }

    void append( const Output &text )
    {
        if( text.length_ > 0 )
            memcpy( room( text.length_ ), text.units_, static_cast< size_t >( text.length_ ) * sizeof( Unit ) );

        length_ += text.length_;
    }

    // A text, which has to be ASCII if the units are bytes: an address.
    void append( QV_STRING *text )
    {
        putAddress( room( text->length ), qv::chars( text ), text->length );
        length_ += text->length;
    }

    // A line up to its end, and with bytes the line feed too. The length is written once: each time it is read again
    // right after it was written, the next line waits.
    void appendLine( const Output &prefix, QV_STRING *address, QV_STRING *value )
    {
        const QV_INT   prefixLength = prefix.length_, addressLength = address->length, valueLength = value->length;
        const QV_CHAR *addressChars = qv::chars( address ), *valueChars = qv::chars( value );
        const QV_INT   head = prefixLength + addressLength + 1;

        Unit *to = room( head + valueLength + 1 );
        qv::copyBytes( to, prefix.units_, prefixLength * QV_INT( sizeof( Unit ) ) );
        putAddress( to + prefixLength, addressChars, addressLength );
        to[head - 1] = '=';

        if constexpr( sizeof( Unit ) == 1 )
            if( qv::narrowPlain( to + head, valueChars, valueLength ) )
            {
                to[head + valueLength] = '\n';
                length_ += head + valueLength + 1;
                return;
            }

        length_ += head;
        stringToEscape( value );
        endLine();
    }

    // What comes after a line of bytes; one of characters is an element of a Vector.
    void endLine()
    {
        if constexpr( sizeof( Unit ) == 1 )
            put( '\n' );
    }

    // A value with its escapes.
    void stringToEscape( QV_STRING *value )
    {
        const QV_INT   block     = 16;
        const QV_INT   longest   = 7; // units that a character can become
        const QV_CHAR *chars     = qv::chars( value );
        QV_INT         remaining = value->length;

        while( remaining > 0 )
        {
            QV_INT   count = remaining < block ? remaining : block;
            Unit    *to    = room( count * longest );
            unsigned odd   = 0;

            for( QV_INT i = 0; i < count; i++ )
                odd |= ( chars[i] - U' ' > U'~' - U' ' ) | ( chars[i] == U'%' );

            if( !odd )
            {
                for( QV_INT i = 0; i < count; i++ )
                    *to++ = static_cast< Unit >( chars[i] );
            }
            else
            {
                for( QV_INT i = 0; i < count; i++ )
                    to = escape( to, chars[i] );
            }

            length_ = to - units_;
            chars += count;
            remaining -= count;
        }
    }

private:
    static void putAddress( Unit *to, const QV_CHAR *address, QV_INT length )
    {
        if constexpr( sizeof( Unit ) == 1 )
            qv::narrowAscii( to, address, length );
        else if( length > 0 )
            memcpy( to, address, static_cast< size_t >( length ) * sizeof( Unit ) );
    }

    // The place of the next units, with room for `count` of them.
    Unit *room( QV_INT count )
    {
        if( length_ + count > alloc_ )
        {
            QV_CHECK( QV_INT_ADD_OK( length_, count ) );
            QV_CHECK( QV_INT_MUL_OK( length_ + count, 2 ) );

            grow( ( length_ + count ) * 2 );
        }

        return units_ + length_;
    }

    // What is large is going to be larger, as a rule: it moves once, to a block that takes memory as it is written.
    [[gnu::noinline]] void grow( QV_INT units )
    {
        if( length_ < LARGE || alloc_ >= LARGEST )
        {
            alloc_ = qvIntMax( units, 256 );
            units_ = static_cast< Unit * >( qvMemReallocN( units_, alloc_, sizeof( Unit ) ) );
            return;
        }

        alloc_      = qvIntMax( units, LARGEST );
        Unit *large = static_cast< Unit * >( qv::allocLarge( alloc_ * QV_INT( sizeof( Unit ) ) ) );
        memcpy( large, units_, static_cast< size_t >( length_ ) * sizeof( Unit ) );
        qvMemFree( std::exchange( units_, large ) );
    }

    static Unit *escape( Unit *to, QV_CHAR ch )
    {
        if( ch == U'%' )
        {
            *to++ = '%';
            *to++ = '%';
        }
        else if( ch < 0x20 || ( ch >= 0x7F && ch < 0xA0 ) ) // the category of controls
        {
            *to++ = '%';

            for( int shift = 20; shift >= 0; shift -= 4 )
                *to++ = static_cast< Unit >( "0123456789abcdef"[ch >> shift & 0xF] );
        }
        else if constexpr( sizeof( Unit ) == sizeof( QV_CHAR ) )
            *to++ = ch;
        else
            to += qv::utf8::put( ch, to );

        return to;
    }

    static const QV_INT LARGE   = QV_INT( 256 ) << 10;
    static const QV_INT LARGEST = QV_INT( 16 ) << 20; // from here on it doubles

    Unit  *units_  = nullptr;
    QV_INT length_ = 0;
    QV_INT alloc_  = 0;
};

// Writes the lines of the values of one store, each with `prefix` before it and `took` called after it.
template< class Unit, class Took >
void writeValues( QV_STORE *store, const Output< Unit > &prefix, Output< Unit > &out, const Took &took )
{
    const QV_INT AHEAD = 16; // items

    qv::DictIterator ahead( store->values, AHEAD );

    for( const QV___DICT_ITEM &item : qv::dictItems( store->values ) )
    {
        if( ahead )
        {
            qv::fetchString( ahead->key );
            qv::fetchString( ahead->val );
            ++ahead;
        }

        out.appendLine( prefix, static_cast< QV_STRING * >( item.key ), static_cast< QV_STRING * >( item.val ) );
        took();
    }
}

// Writes the lines of a store and of all below it. `prefix` grows and shrinks with the level, so that a level costs its
// own address, however deep it lies.
template< class Unit, class Took >
void writeLines( QV_STORE *store, Output< Unit > &prefix, Output< Unit > &out, const Took &took )
{
    struct Level
    {
        qv::DictIterator stores; // those that are still to come
        QV_INT           prefixLength;
    };

    qv::Levels< Level > levels;
    Level               at = { qv::DictIterator( store->stores, 0 ), prefix.length() };
    writeValues( store, prefix, out, took );

    do
    {
        while( at.stores )
        {
            const QV___DICT_ITEM &item = *at.stores;
            QV_STORE             *sub  = static_cast< QV_STORE * >( item.val );
            ++at.stores;

            prefix.cut( at.prefixLength );
            prefix.append( static_cast< QV_STRING * >( item.key ) );
            prefix.put( '.' );

            if( qv::addressesOf( sub )->length > 0 )
            {
                levels.push( at );
                at = { qv::DictIterator( sub->stores, 0 ), prefix.length() };
                writeValues( sub, prefix, out, took );
            }
            else
            {
                out.append( prefix );
                out.endLine();
                took();
            }
        }
    } while( levels.pop( &at ) );
}
} // namespace

/* Lines ---------------------------------------------------------------------------------------------------------- */

void qv___StoreEncodeToStringVector( QV_STORE *store, QV_VECTOR **vec, QV_STRING *prefix )
{
    QV_CHECK( store );
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( prefix );

    Output< QV_CHAR > path, line;
    path.append( prefix );

    writeLines(
        store, path, line,
        [&]
        {
            QV_OBJ *text = qvStringCreateFromCharsCopy( line.units(), line.length() );
            qv___VectorPushNoRetain( vec, &text, 1 );
            line.cut( 0 );
        } );
}

QV_VECTOR *qvStoreEncodeToStringVector( QV_STORE *store )
{
    QV_CHECK( store );

    qv::Ref< QV_VECTOR > lines( qvVectorCreate() );
    qv::Ref< QV_STRING > prefix( qvStringCreate() );
    qv___StoreEncodeToStringVector( store, lines.at(), prefix );

    return lines.give();
}

QV_STRING *qv___StoreEncodeLine( QV_STRING *path, QV_STRING *value )
{
    QV_CHECK( path );

    Output< QV_CHAR > text;
    text.append( path );

    if( value )
    {
        text.put( '=' );
        text.stringToEscape( value );
    }

    QV_INT length = text.length();

    return length ? qvStringCreateFromCharsUse( text.take(), length ) : qvStringCreate();
}

/* Bytes ---------------------------------------------------------------------------------------------------------- */

QV_BUFFER *qvStoreEncodeToTextBuffer( QV_STORE *store )
{
    QV_CHECK( store );

    Output< uint8_t > path, text;
    writeLines( store, path, text, [] {} );

    QV_INT length = text.length();

    return length ? qvBufferCreateFromBytesUse( text.take(), length ) : qvBufferCreate();
}

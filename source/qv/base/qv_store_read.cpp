// The readers of the text form.

#include "qv/base/qv_store.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_format.h"
#include "qv/base/qv_store_line_private.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_store_texts_private.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_source.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_levels_private.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_order_private.h"
#include "qv/sys/qv_utf8_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

#include <algorithm>
#include <string.h>

namespace
{
/* Lines ---------------------------------------------------------------------------------------------------------- */

using qv::Span;

using qv::Line;
using qv::parseLine;

// The order of an address against a text: -1, 0 or 1.
template< class Unit >
QV_INT compareText( QV_STRING *address, Span< Unit > text )
{
    return qv::order( qv::chars( address ), address->length, text.begin, text.length() );
}

/* Escapes -------------------------------------------------------------------------------------------------------- */

const QV_INT ESCAPE_UNITS = 6; // after the percent sign

// A character of its code in an escape: a number to the base 16 that takes up all the units, in any form in which such
// a number is read, with a sign and white space too.
template< class Unit >
bool decodeCode( const Unit *code, QV_CHAR *ch )
{
    uint32_t value = 0;
    QV_INT   digit = 0;

    for( QV_INT i = 0; i < ESCAPE_UNITS && digit >= 0; i++ )
    {
        digit = qv::unicode::hexDigit( code[i] );
        value = value << 4 | static_cast< uint32_t >( digit );
    }

    if( digit < 0 )
    {
        QV_CHAR units[ESCAPE_UNITS];
        QV_INT  number, consumed;
        std::copy( code, code + ESCAPE_UNITS, units );

        if( !qvFormatTryDecodeIntChars( units, ESCAPE_UNITS, 16, &number, &consumed ) || consumed != ESCAPE_UNITS )
            return false;

        value = static_cast< uint32_t >( number );
    }

    *ch = value;

    return QV_CHAR_OK( value );
}

// The character at `pos`, which moves past it.
template< class Unit >
QV_CHAR stringToUnescapeNext( const Unit *&pos, const Unit *end )
{
    if( *pos == '%' && end - pos > 1 && pos[1] == '%' )
    {
        pos += 2;
        return U'%';
    }

    QV_CHAR ch;

    if( *pos == '%' && end - pos > ESCAPE_UNITS && decodeCode( pos + 1, &ch ) )
    {
        pos += 1 + ESCAPE_UNITS;
        return ch;
    }

    return *pos++;
}

template< class Unit >
QV_STRING *stringToUnescape( Span< Unit > text )
{
    QV_CHAR    *chars  = static_cast< QV_CHAR * >( qvMemAllocN( text.length(), sizeof( QV_CHAR ) ) );
    QV_INT      length = 0;
    const Unit *pos    = text.begin;

    while( pos < text.end )
        chars[length++] = stringToUnescapeNext( pos, text.end );

    chars = static_cast< QV_CHAR * >( qvMemReallocN( chars, length, sizeof( QV_CHAR ) ) );

    return qv::createStringUse( chars, length );
}

/* Reading lines -------------------------------------------------------------------------------------------------- */

// Where lines lead that begin with the same sub-stores, by the text up to the last of these.
class Prefixes
{
public:
    struct Place
    {
        const uint8_t *text;
        QV_INT         length;
        QV_STORE      *store; // null: nothing is here
    };

    // The place of a text, which may be another one's.
    Place &at( Span< uint8_t > text )
    {
        uint64_t last = 0;
        memcpy( &last, text.length() > 8 ? text.end - 8 : text.begin, std::min< size_t >( 8, text.end - text.begin ) );

        return places_[( last ^ static_cast< uint64_t >( text.length() ) << 40 ) * 0x9E3779B97F4A7C15u >> SHIFT];
    }

private:
    static const int SHIFT = 56;

    Place places_[1 << ( 64 - SHIFT )] = {};
};

// A tree that grows line by line. Until give() its stores are held by the tree alone, so that they can be written where
// they are; their values are appended and put in order then.
class Reader
{
public:
    // For lines that lie `depth` sub-stores deep.
    explicit Reader( QV_INT depth ) : depth_( depth ), top_( qvStoreCreate() )
    {
        stores_[0] = top_;
    }

    // Reads lines of one text, whose memory stays as it is until the last of them has been read.
    template< class Unit >
    class Text
    {
    public:
        explicit Text( Reader &reader ) : reader_( reader ), store_( reader.top_ )
        {
        }

        // The first `=` of a line, or null.
        const Unit *findEquals( Span< Unit > line )
        {
            isPrefixFound_ = true;

            if( const Unit *equals = findEqualsAfter( prefix_, line ) )
                return equals;

            if( const Unit *equals = findPrefix( line ) )
                return equals;

            isPrefixFound_ = false;

            if constexpr( sizeof( Unit ) == 1 )
                return static_cast< const Unit * >( memchr( line.begin, '=', static_cast< size_t >( line.length() ) ) );
            else
                return std::find( line.begin, line.end, '=' );
        }

        // Reads a line in which findEquals() has looked before: the head, up to the first `=` and with it, and what
        // comes after that, which is plain if there is no `%` in it.
        template< class ValueUnit >
        void read( Span< Unit > head, Span< ValueUnit > value, bool isPlain )
        {
            if( !isPrefixFound_ )
            {
                readWhole( head, value, isPlain );
                return;
            }

            const Unit *address = head.begin + prefix_.length();
            QV_ASSERT( store_ == reader_.openedBy( Span< Unit >{ head.begin, address } ) );
            reader_.setValue( store_, Span< Unit >{ address, head.end - 1 }, value, isPlain );
        }

    private:
        // The `=` of a line that sets a value in the store to which a prefix leads, without white space around the
        // address; else null. Most lines begin with the same sub-stores as the line before, in the same units.
        static const Unit *findEqualsAfter( Span< Unit > prefix, Span< Unit > line )
        {
            if( line.length() < prefix.length() + 2
                || !qv::sameBytes( line.begin, prefix.begin, prefix.length() * QV_INT( sizeof( Unit ) ) ) )
                return nullptr;

            const Unit *address = line.begin + prefix.length();
            const Unit *end     = addressEnd( address, line.end );

            return end > address && end < line.end && *end == '=' ? end : nullptr;
        }

        static const Unit *addressEnd( const Unit *begin, const Unit *end )
        {
            if constexpr( sizeof( Unit ) == 1 )
                return begin + qv::wordLength( begin, end - begin );
            else
                return qv::skipAddressChars( begin, end );
        }

        // The same for a prefix of another line not long before, which becomes the one of this line.
        const Unit *findPrefix( [[maybe_unused]] Span< Unit > line )
        {
            if constexpr( sizeof( Unit ) == 1 )
            {
                const void *equals = memchr( line.begin, '=', static_cast< size_t >( line.length() ) );
                const void *dot =
                    equals ? memrchr(
                                 line.begin, '.',
                                 static_cast< size_t >( static_cast< const Unit * >( equals ) - line.begin ) )
                           : nullptr;

                if( !dot )
                    return nullptr;

                Span< Unit >           prefix = { line.begin, static_cast< const Unit * >( dot ) + 1 };
                const Prefixes::Place &place  = reader_.prefixes_.at( prefix );

                if( !place.store || place.length != prefix.length() )
                    return nullptr;

                const Unit *found = findEqualsAfter( { place.text, place.text + place.length }, line );

                if( found )
                {
                    prefix_ = prefix;
                    store_  = place.store;
                }

                return found;
            }

            return nullptr;
        }

        template< class ValueUnit >
        void readWhole( Span< Unit > head, Span< ValueUnit > value, bool isPlain )
        {
            parseLine( head, reader_.depth_, line_ );
            QV_STORE *store = reader_.goDown( line_.path, line_.levels );

            // What comes after the prefix lies as deep as something may.
            if( reader_.depth_ + line_.levels < QV_STORE_MAX_DEPTH )
            {
                prefix_ = { head.begin, line_.rest };
                store_  = store;

                if constexpr( sizeof( Unit ) == 1 )
                    if( line_.levels )
                        reader_.prefixes_.at( prefix_ ) = { prefix_.begin, prefix_.length(), store };
            }

            if( line_.kind == QV___STORE_LINE_VALUE )
                reader_.setValue( store, line_.address, value, isPlain );
        }

        Reader      &reader_;
        Span< Unit > prefix_        = {};
        QV_STORE    *store_         = nullptr; // where that leads
        bool         isPrefixFound_ = false;   // the line that is looked at has it
        Line< Unit > line_;
    };

    QV_STORE *give()
    {
        order();
        return top_.give();
    }

    ~Reader()
    {
        if( top_ )
            order();
    }

    Reader( const Reader & )            = delete;
    Reader &operator=( const Reader & ) = delete;

private:
    // Opens the sub-stores of a path, new ones where there are none, and returns the last one.
    template< class Unit >
    QV_STORE *goDown( const Span< Unit > *path, QV_INT count )
    {
        for( QV_INT level = 0; level < count; level++, path++ )
            if( level >= open_ || compareText( addresses_[level], *path ) != 0 )
                openStore( level, *path );

        return stores_[count];
    }

    template< class Unit >
    void openStore( QV_INT level, Span< Unit > text )
    {
        QV_DICT **stores = &stores_[level]->stores;
        QV_INT    idx    = ( *stores )->length;
        bool      found  = false;

        // Most sub-stores come in the order of their addresses.
        if( idx > 0 && compareText( static_cast< QV_STRING * >( qv::lastDictItem( *stores ).key ), text ) >= 0 )
        {
            qv::Ref< QV_STRING > address( qv::Texts::create( text ) );
            idx = qv::searchDict( *stores, address, &found );
        }

        if( !found )
            qv::insertIntoDict( stores, idx, addressTexts_.take( text ), qv::createStoreIn( &newStores_ ) );

        const QV___DICT_ITEM &item = qv::dictItem( *stores, idx );
        addresses_[level]          = static_cast< QV_STRING * >( item.key );
        stores_[level + 1]         = static_cast< QV_STORE * >( item.val );
        open_                      = level + 1;
    }

    template< class Unit, class ValueUnit >
    void setValue( QV_STORE *store, Span< Unit > address, Span< ValueUnit > value, bool isPlain )
    {
        // Mostly a store has as many values as the one that was begun before. Each is the model of one other, so that the
        // room made is no more than the document has filled.
        if( store->values == qv___DictEmpty )
        {
            qv::assign(
                &store->values, qv::createDictWithRoom( std::clamp< QV_INT >( begun_, 4, 1024 ), &newTables_ ) );
            begun_ = 0;
        }

        begun_++;

        QV_STRING *text = isPlain || value.length() == 0 ? valueTexts_.take( value ) : stringToUnescape( value );

        if( qv::appendToDict( store->values, addressTexts_.take( address ), text ) )
        {
            addressTexts_.forget();
            valueTexts_.forget();
        }
    }

    // Puts the values of all stores in order.
    void order()
    {
        qv::Levels< qv::DictIterator > levels;
        qv::DictIterator               next = order( top_ );

        do
        {
            while( next )
            {
                QV_STORE *store = static_cast< QV_STORE * >( next->val );
                ++next;
                levels.push( next );
                next = order( store );
            }
        } while( levels.pop( &next ) );
    }

    // The same for one, of which the sub-stores are next.
    static qv::DictIterator order( QV_STORE *store )
    {
        if( store->values != qv___DictEmpty )
            qv::orderDict( store->values );

        qv::makeAddresses( store );
        return qv::DictIterator( store->stores, 0 );
    }

    // The store that the sub-stores lead to that a line begins with. For assertions.
    template< class Unit >
    QV_STORE *openedBy( Span< Unit > prefix )
    {
        Line< Unit > line;
        parseLine( prefix, depth_, line );
        QV_STORE *store = top_;

        for( QV_INT level = 0; level < line.levels; level++ )
        {
            qv::Ref< QV_STRING > address( qvStringCreate() );

            for( const Unit *unit = line.path[level].begin; unit < line.path[level].end; unit++ )
                qvStringAppendChar( address.at(), *unit );

            bool   found;
            QV_INT idx = qv::searchDict( store->stores, address, &found );
            store      = static_cast< QV_STORE * >( qv::dictItem( store->stores, idx ).val );
        }

        return store;
    }

    QV_INT              depth_;
    qv::Ref< QV_STORE > top_;
    qv::Texts           addressTexts_;
    qv::Texts           valueTexts_;
    Prefixes            prefixes_;
    qv::ObjBatch        newStores_{ qvStoreSort() };
    qv::ObjBatch        newTables_{ qvDictSort() };
    QV_INT              begun_ = 0; // values read since a store got its first one

    // The stores that the last lines went down to, each held by the one above it, and their addresses in that. Of the
    // stores the first open_ + 1 count, of the addresses the first open_.
    QV_INT     open_                           = 0;
    QV_STORE  *stores_[QV_STORE_MAX_DEPTH + 1] = {};
    QV_STRING *addresses_[QV_STORE_MAX_DEPTH];
};

Span< QV_CHAR > spanOf( QV_STRING *text )
{
    return { qv::chars( text ), qv::chars( text ) + text->length };
}

// Reads a line of characters.
void readLine( Reader::Text< QV_CHAR > &text, Span< QV_CHAR > line )
{
    const QV_CHAR *equals = text.findEquals( line );
    const QV_CHAR *value  = equals && equals < line.end ? equals + 1 : line.end;

    text.read(
        Span< QV_CHAR >{ line.begin, value }, Span< QV_CHAR >{ value, line.end },
        std::find( value, line.end, U'%' ) == line.end );
}

/* Reading UTF-8 -------------------------------------------------------------------------------------------------- */

// Memory for the characters of a line, which is used for the next one too.
class Characters
{
public:
    Characters()                                = default;
    Characters( const Characters & )            = delete;
    Characters &operator=( const Characters & ) = delete;

    ~Characters()
    {
        qvMemFree( chars_ );
    }

    // The characters of some bytes; null unless these are UTF-8. A line is as good as the charset finds it: by lengths
    // and the greatest value, with overlong forms and surrogates.
    Span< QV_CHAR > decode( const uint8_t *bytes, const uint8_t *end )
    {
        if( end - bytes > alloc_ )
        {
            alloc_ = 2 * ( end - bytes );
            qvMemFree( chars_ );
            chars_ = static_cast< QV_CHAR * >( qvMemAllocN( alloc_, sizeof( QV_CHAR ) ) );
        }

        qv::utf8::Decoded decoded = qv::utf8::decode( bytes, end, chars_, chars_ + ( end - bytes ) );

        return decoded.in < end ? Span< QV_CHAR >{} : Span< QV_CHAR >{ chars_, decoded.out };
    }

private:
    QV_CHAR *chars_ = nullptr;
    QV_INT   alloc_ = 0;
};

// Reads all text up to the first line that is not UTF-8 and returns what is left. Lines of ASCII are read from the bytes
// as they stand, and so are the addresses before other values.
const uint8_t *readUtf8( Reader &reader, const uint8_t *bytes, const uint8_t *end )
{
    Reader::Text< uint8_t > ascii( reader );
    Characters              characters;
    const uint8_t          *pos = bytes;

    while( pos < end )
    {
        qv::LineOfBytes line   = qv::findLine( pos, end );
        const uint8_t  *last   = line.end > pos && line.end[-1] == '\r' ? line.end - 1 : line.end;
        const uint8_t  *equals = ascii.findEquals( { pos, last } );
        const uint8_t  *value  = equals ? equals + 1 : last;
        const uint8_t  *odd    = line.special ? line.special : last;

        while( odd < last && *odd == '%' )
            odd = std::find_if( odd + 1, last, []( uint8_t byte ) { return qv::isSpecialInLine( byte ); } );

        if( odd >= last )
        {
            ascii.read(
                Span< uint8_t >{ pos, value }, Span< uint8_t >{ value, last }, !line.special || line.special >= last );
        }
        else
        {
            bool            isInValue = odd >= value;
            Span< QV_CHAR > chars     = characters.decode( isInValue ? value : pos, last );

            if( !chars.begin )
                break;

            const QV_CHAR *lineEnd = std::find_if( chars.begin, chars.end, qv::unicode::isNlf );

            if( isInValue && lineEnd == chars.end )
            {
                ascii.read(
                    Span< uint8_t >{ pos, value }, chars, std::find( chars.begin, chars.end, U'%' ) == chars.end );
            }
            else
            {
                // Something else than a line feed ends lines in it.
                chars = characters.decode( pos, last );

                const QV_CHAR          *from = chars.begin + ( pos == bytes && *chars.begin == 0xFEFF ? 1 : 0 );
                Reader::Text< QV_CHAR > text( reader );

                while( from < chars.end )
                {
                    lineEnd = std::find_if( from, chars.end, qv::unicode::isNlf );
                    readLine( text, { from, lineEnd } );
                    from = lineEnd < chars.end ? lineEnd + 1 : chars.end;
                }
            }
        }

        pos = line.end < end ? line.end + 1 : end;
    }

    return pos;
}
} // namespace

/* Lines ---------------------------------------------------------------------------------------------------------- */

QV_STORE *qv___StoreDecodeFromStringVector( QV_VECTOR *vec, QV_INT depth )
{
    QV_CHECK( vec );
    QV_CHECK( depth >= 0 );

    Reader                  reader( depth );
    Reader::Text< QV_CHAR > text( reader );

    for( QV_INT i = 0; i < vec->length; i++ )
        readLine( text, spanOf( static_cast< QV_STRING * >( qv::objs( vec )[i] ) ) );

    return reader.give();
}

QV_STORE *qvStoreDecodeFromStringVector( QV_VECTOR *vec )
{
    QV_CHECK( vec );
    QV_CHECK( qvVectorContainsOnly( vec, qvStringSort() ) );

    return qv___StoreDecodeFromStringVector( vec, 0 );
}

namespace
{
// A value without its escapes.
QV_STRING *textOf( Span< QV_CHAR > value )
{
    return value.length() > 0 ? stringToUnescape( value ) : qvStringCreate();
}
} // namespace

QV_INT qv___StoreParseLine( QV_STRING *line, QV_STRING **path, QV_STRING **value )
{
    QV_CHECK( line );

    // What `path` and `value` hold can be all that keeps the line alive.
    qv::Ref< QV_STRING > held = qv::Ref< QV_STRING >::share( line );
    Line< QV_CHAR >      parsed;
    parseLine( spanOf( line ), 0, parsed );

    bool isValue = parsed.kind == QV___STORE_LINE_VALUE;

    if( path )
    {
        qv::Ref< QV_STRING > text( qvStringCreate() );

        for( QV_INT i = 0; i < parsed.levels; i++ )
        {
            qvStringAppendChars( text.at(), parsed.path[i].begin, parsed.path[i].length() );
            qvStringAppendChar( text.at(), U'.' );
        }

        if( isValue )
            qvStringAppendChars( text.at(), parsed.address.begin, parsed.address.length() );

        qv::assign( path, text->length ? text.give() : nullptr );
    }

    if( value )
        qv::assign( value, isValue ? textOf( parsed.value ) : nullptr );

    return parsed.kind;
}

/* Bytes ---------------------------------------------------------------------------------------------------------- */

QV_STORE *qvStoreTryDecodeFromTextBuffer( QV_BUFFER *buffer )
{
    QV_CHECK( buffer );

    Reader         reader( 0 );
    const uint8_t *bytes  = static_cast< const uint8_t * >( qvBufferBacking( buffer ) );
    QV_INT         length = qvBufferLength( buffer );
    QV_INT         offset = length > 0 ? readUtf8( reader, bytes, bytes + length ) - bytes : 0;

    if( offset < length )
    {
        // What is no UTF-8 is for the charset to mend.
        const QV_INT allLineEnds = 255;
        QV_INT       flags       = offset > 0 ? QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK : 0;

        qv::Ref< QV_BUFFER >             rest( qvBufferRead( buffer, offset, length - offset ) );
        qv::Ref< QV_BUFFER_BYTE_SOURCE > restSource( qvBufferByteSourceCreate( rest ) );
        qv::Ref< QV_BYTE_SOURCE >        byteSource( qvBufferByteSourceByteSource( restSource ) );
        qv::Ref< QV_CHAR_SOURCE >        charSource( qvCharsetCreateCharSource( byteSource, QV_CHARSET_UTF_8, flags ) );
        qv::Ref< QV_NLF_LINE_SOURCE >    nlfSource( qvNlfLineSourceCreate( charSource, allLineEnds ) );
        qv::Ref< QV_LINE_SOURCE >        lineSource( qvNlfLineSourceLineSource( nlfSource ) );

        while( qv::Ref< QV_STRING > line{ qvLineSourceRead( lineSource ) } )
        {
            Reader::Text< QV_CHAR > text( reader );
            readLine( text, spanOf( line ) );
        }

        if( qvLineSourceError( lineSource ) )
            return nullptr;
    }

    return reader.give();
}

// The readers of the text form.

#include "qv/base/qv_store.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_format.h"
#include "qv/base/qv_store_private.h"
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
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_order_private.h"
#include "qv/sys/qv_utf8_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

#include <algorithm>
#include <string.h>

namespace
{
/* Lines ---------------------------------------------------------------------------------------------------------- */

// Part of a line. The units are characters, or bytes if all of them are ASCII.
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

template< class Unit >
struct Line
{
    QV_INT       kind;   // QV___STORE_LINE_...
    QV_INT       levels; // how many sub-stores the line names
    Span< Unit > path[QV_STORE_MAX_DEPTH];
    Span< Unit > address; // of a value
    Span< Unit > value;   // with its escapes
    const Unit  *rest;    // what comes after the separator of the last sub-store
};

// Splits a line, which lies `depth` sub-stores deep, into addresses and a value.
template< class Unit >
void parseLine( Span< Unit > text, QV_INT depth, Line< Unit > &line )
{
    const Unit *pos = text.begin;

    line.levels = 0;
    line.rest   = pos;
    line.kind   = QV___STORE_LINE_EMPTY;

    while( pos < text.end )
    {
        line.kind = QV___STORE_LINE_TOO_DEEP;

        if( depth + line.levels >= QV_STORE_MAX_DEPTH )
            return;

        Span< Unit > address   = { pos, qv::skipAddressChars( pos, text.end ) };
        const Unit  *separator = address.end;

        while( separator < text.end && *separator != '.' && *separator != '=' )
            separator++;

        line.kind = QV___STORE_LINE_NO_SEPARATOR;

        if( separator == text.end )
            return;

        if( separator > address.end )
        {
            const Unit *begin = pos;
            const Unit *end   = separator;

            while( begin < end && qv::unicode::isWhiteSpace( *begin ) )
                begin++;

            while( begin < end && qv::unicode::isWhiteSpace( end[-1] ) )
                end--;

            address = { begin, qv::skipAddressChars( begin, end ) == end ? end : begin };
        }

        line.kind = QV___STORE_LINE_BAD_ADDRESS;

        if( address.length() == 0 )
            return;

        pos = separator + 1;

        if( *separator == '=' )
        {
            line.kind    = QV___STORE_LINE_VALUE;
            line.address = address;
            line.value   = { pos, text.end };
            return;
        }

        line.kind                = QV___STORE_LINE_STORE;
        line.path[line.levels++] = address;
        line.rest                = pos;
    }
}

template< class Unit >
QV_STRING *stringOf( Span< Unit > text, qv::ObjBatch *batch )
{
    if( text.length() == 0 )
        return qvStringCreate();

    QV_STRING *qvs = qv::createString( text.length(), batch );
    std::copy( text.begin, text.end, qv::chars( qvs ) );

    return qvs;
}

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
QV_STRING *stringToUnescape( Span< Unit > text, qv::ObjBatch *batch )
{
    if( std::find( text.begin, text.end, '%' ) == text.end )
        return stringOf( text, batch );

    QV_CHAR    *chars  = static_cast< QV_CHAR * >( qvMemAllocN( text.length(), sizeof( QV_CHAR ) ) );
    QV_INT      length = 0;
    const Unit *pos    = text.begin;

    while( pos < text.end )
        chars[length++] = stringToUnescapeNext( pos, text.end );

    chars = static_cast< QV_CHAR * >( qvMemReallocN( chars, length, sizeof( QV_CHAR ) ) );

    return qv::createStringUse( chars, length );
}

/* Addresses ------------------------------------------------------------------------------------------------------ */

// The Strings of addresses that were entered last. Records repeat their addresses, and a String takes far more memory
// than its text. The reader deletes no address from its tree and replaces none by an equal one, so the Strings live as
// long as the tree and are not held here.
class Addresses
{
public:
    // An address that was found here, borrowed; or a new one, of which the caller owns the only reference.
    struct Found
    {
        QV_STRING *address;
        uint64_t   hash;
        bool       isNew;
    };

    template< class Unit >
    Found find( Span< Unit > text, qv::ObjBatch *batch ) const
    {
        uint64_t     hash = hashOf( text );
        const Place &last = places_[hash >> SHIFT];

        if( last.hash == hash && last.address && compareText( last.address, text ) == 0 )
        {
            QV_ASSERT( QV___RETAIN_COUNT_VALUE( last.address->retainCount ) > 0 );
            return { last.address, hash, false };
        }

        return { stringOf( text, batch ), hash, true };
    }

    // Of an address that the tree has now.
    void keep( const Found &found )
    {
        places_[found.hash >> SHIFT] = { found.hash, found.address };
    }

private:
    static const int SHIFT = 58;

    struct Place
    {
        uint64_t   hash;
        QV_STRING *address;
    };

    // Most addresses differ in the units at one of their ends.
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

        return ( ( first ^ static_cast< uint64_t >( text.length() ) ) * 0x9E3779B97F4A7C15u ^ last )
               * 0xC2B2AE3D27D4EB4Fu;
    }

    Place places_[1 << ( 64 - SHIFT )] = {};
};

/* Reading lines -------------------------------------------------------------------------------------------------- */

// A tree that grows line by line. Until give() its stores are held by the tree alone, so that they can be written where
// they are.
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
        explicit Text( Reader &reader ) : reader_( reader )
        {
        }

        // Most lines name the same sub-stores as the line before, in the same units, which are skipped then. Holds
        // while no other text has moved the reader, see forget().
        void read( Span< Unit > text )
        {
            QV_INT same   = prefix_.length();
            QV_INT levels = 0;

            if( same > 0 && text.length() >= same && memcmp( text.begin, prefix_.begin, same * sizeof( Unit ) ) == 0 )
            {
                QV_ASSERT( leadsHere( { text.begin, text.begin + same } ) );
                levels = levels_;
                text.begin += same;

                if( text.length() == 0 )
                    return;
            }

            parseLine( text, reader_.depth_ + levels, line_ );

            if( line_.levels )
            {
                prefix_ = { text.begin - ( levels ? same : 0 ), line_.rest };
                reader_.goDown( levels, line_.path, line_.levels );
                levels += line_.levels;
                levels_ = levels;
            }

            if( line_.kind == QV___STORE_LINE_VALUE )
                reader_.setValue( levels, line_.address, stringToUnescape( line_.value, &reader_.strings_ ) );
        }

        // To be called when lines of another text have been read in between.
        void forget()
        {
            prefix_ = {};
        }

    private:
        // Whether the sub-stores of a line are those that are open in the reader, level by level.
        bool leadsHere( Span< Unit > text )
        {
            parseLine( text, reader_.depth_, line_ );
            bool ok = line_.levels == levels_;

            for( QV_INT level = 0; ok && level < levels_; level++ )
                ok = compareText( reader_.addresses_[level], line_.path[level] ) == 0 && reader_.isOpen( level );

            return ok;
        }

        Reader      &reader_;
        Span< Unit > prefix_ = {};
        QV_INT       levels_ = 0; // how many sub-stores the prefix names
        Line< Unit > line_;
    };

    QV_STORE *give()
    {
        return top_.give();
    }

private:
    // Opens the sub-stores of the path below stores_[from], new ones where there are none.
    template< class Unit >
    void goDown( QV_INT from, const Span< Unit > *path, QV_INT count )
    {
        for( QV_INT level = from; level < from + count; level++, path++ )
        {
            if( level < open_ && compareText( addresses_[level], *path ) == 0 )
                QV_ASSERT( isOpen( level ) );
            else
                openStore( level, *path );
        }
    }

    template< class Unit >
    void openStore( QV_INT level, Span< Unit > text )
    {
        QV_DICT         *stores  = stores_[level]->stores;
        Addresses::Found address = known_.find( text, &strings_ );
        bool             found   = false;
        QV_INT           idx     = 0;

        if( !comesAfter( text, stores ) )
            idx = qv::searchDict( stores, address.address, &found );

        if( found )
        {
            if( address.isNew )
                qv::release( address.address );

            addresses_[level]  = static_cast< QV_STRING * >( qv::dictItem( stores, idx ).key );
            stores_[level + 1] = static_cast< QV_STORE * >( qv::dictItem( stores, idx ).val );
        }
        else
        {
            // Mostly it has as many entries as the one made before on this level. Each store is the model of one other,
            // so that the room made for entries is no more than the document has filled.
            QV_STORE *before   = made_[level];
            QV_STORE *store    = before ? qv::createStoreLike( before ) : qvStoreCreate();
            addresses_[level]  = set( level, qv::STORE_STORES, text, address, store );
            stores_[level + 1] = made_[level] = store;
        }

        open_ = level + 1;
    }

    // Takes over the value.
    template< class Unit >
    void setValue( QV_INT level, Span< Unit > address, QV_STRING *value )
    {
        set( level, qv::STORE_VALUES, address, known_.find( address, &strings_ ), value );
    }

    // Sets an entry of stores_[level] and returns its address, borrowed. Takes over the value, and the address if it is
    // new.
    template< class Unit >
    QV_STRING *set(
        QV_INT level, qv::StoreTable table, Span< Unit > text, const Addresses::Found &address, QV_OBJ *value )
    {
        QV_STORE *store     = stores_[level];
        QV_DICT  *addresses = store->addresses;
        QV_INT    idx       = addresses->length;
        bool      found     = false;

        // Most lines come in the order of their addresses.
        if( !comesAfter( text, addresses ) )
            idx = qv::searchDict( addresses, address.address, &found );

        if( !found )
        {
            if( address.isNew )
                qv::retainCreated( address.address, 2 );
            else
                qv::retainMore( address.address, 3 );

            qv::insertIntoStore( store, table, idx, address.address, value );
            known_.keep( address );

            return address.address;
        }

        // The tree keeps the String that it has.
        QV_STRING *known = static_cast< QV_STRING * >( qv::dictItem( addresses, idx ).key );

        if( address.isNew )
            qv::release( address.address );

        qvDictSetObjKey( &( store->*table ), known, value );
        qv::release( value );
        QV_ASSERT( qv::isSoundStore( store, known ) );

        return known;
    }

    // Whether an address comes after all that a Dict has.
    template< class Unit >
    static bool comesAfter( Span< Unit > text, QV_DICT *dict )
    {
        return dict->length == 0 || compareText( static_cast< QV_STRING * >( qv::lastDictItem( dict ).key ), text ) < 0;
    }

    // Whether stores_[level + 1] is the sub-store of stores_[level] at addresses_[level].
    bool isOpen( QV_INT level )
    {
        bool   found;
        QV_INT idx = level < open_ ? qv::searchDict( stores_[level]->stores, addresses_[level], &found ) : 0;

        return level < open_ && found && qv::dictItem( stores_[level]->stores, idx ).val == stores_[level + 1];
    }

    QV_INT              depth_;
    qv::Ref< QV_STORE > top_;
    qv::ObjBatch        strings_{ qvStringSort() }; // most of them live as long as the tree
    Addresses           known_;

    // The stores that the last lines went down to, each held by the one above it, and their addresses in that. Of the
    // stores the first open_ + 1 count, of the addresses the first open_.
    QV_INT     open_                           = 0;
    QV_STORE  *stores_[QV_STORE_MAX_DEPTH + 1] = {};
    QV_STRING *addresses_[QV_STORE_MAX_DEPTH];

    // The last store made below each level, held by the tree.
    QV_STORE *made_[QV_STORE_MAX_DEPTH] = {};
};

Span< QV_CHAR > spanOf( QV_STRING *text )
{
    return { qv::chars( text ), qv::chars( text ) + text->length };
}

/* Reading UTF-8 -------------------------------------------------------------------------------------------------- */

// Reads all text up to the first line that is not UTF-8 and gives what is left. Lines of ASCII are read from the bytes
// as they stand.
const uint8_t *readUtf8( Reader &reader, const uint8_t *bytes, const uint8_t *end )
{
    Reader::Text< uint8_t > ascii( reader );
    QV_CHAR                *chars = nullptr;
    QV_INT                  alloc = 0;
    const uint8_t          *pos   = bytes;

    while( pos < end )
    {
        const uint8_t *next = static_cast< const uint8_t * >( memchr( pos, '\n', end - pos ) );

        if( !next )
            next = end;

        const uint8_t *last = next > pos && next[-1] == '\r' ? next - 1 : next;
        unsigned       odd  = 0; // characters beyond ASCII, and further line ends

        for( const uint8_t *at = pos; at < last; at++ )
            odd |= ( *at & 0x80 ) | ( *at >= '\v' && *at <= '\r' );

        if( !odd )
            ascii.read( { pos, last } );
        else
        {
            if( next - pos > alloc )
            {
                alloc = next - pos;
                chars = static_cast< QV_CHAR * >( qvMemReallocN( chars, alloc, sizeof( QV_CHAR ) ) );
            }

            // A line is as good as the charset finds it: by lengths and the greatest value, with overlong forms and
            // surrogates.
            qv::utf8::Decoded decoded = qv::utf8::decode( pos, next, chars, chars + ( next - pos ) );

            if( decoded.in < next )
                break;

            const QV_CHAR          *from = chars + ( pos == bytes && *chars == 0xFEFF ? 1 : 0 );
            const QV_CHAR          *to   = decoded.out;
            Reader::Text< QV_CHAR > text( reader );

            while( from < to )
            {
                const QV_CHAR *lineEnd = std::find_if( from, to, qv::unicode::isNlf );
                text.read( { from, lineEnd } );
                from = lineEnd < to ? lineEnd + 1 : to;
            }

            ascii.forget();
        }

        pos = next < end ? next + 1 : end;
    }

    qvMemFree( chars );

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
        text.read( spanOf( static_cast< QV_STRING * >( qv::objs( vec )[i] ) ) );

    return reader.give();
}

QV_STORE *qvStoreDecodeFromStringVector( QV_VECTOR *vec )
{
    QV_CHECK( vec );
    QV_CHECK( qvVectorContainsOnly( vec, qvStringSort() ) );

    return qv___StoreDecodeFromStringVector( vec, 0 );
}

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
        qv::assign( value, isValue ? stringToUnescape( parsed.value, nullptr ) : nullptr );

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
            text.read( spanOf( line ) );
        }

        if( qvLineSourceError( lineSource ) )
            return nullptr;
    }

    return reader.give();
}

#include "qv/base/qv_store.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_encoder.h"
#include "qv/base/qv_encoder_private.h"
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
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/unicode/qv_unicode_tables_private.h"

#include <algorithm>
#include <array>
#include <string.h>

namespace
{
/* Addresses ------------------------------------------------------------------------------------------------------ */

constexpr std::array< bool, 128 > addressChars = []
{
    std::array< bool, 128 > table {};

    for( char32_t ch = 0; ch < 128; ch++ )
        table[ch] = ( ch >= U'0' && ch <= U'9' ) || ( ch >= U'A' && ch <= U'Z' ) || ( ch >= U'a' && ch <= U'z' ) ||
                    ch == U'_' || ch == U'-';

    return table;
}();

bool isAddressChar( QV_CHAR ch )
{
    return ch < 128 && addressChars[ch];
}

template< class Unit >
const Unit *skipAddressChars( const Unit *pos, const Unit *end )
{
    while( pos < end && isAddressChar( *pos ) )
        pos++;

    return pos;
}

/* Entries -------------------------------------------------------------------------------------------------------- */

// The value of a String key, borrowed, or null.
template< class T >
T *find( QV_DICT *dict, QV_STRING *key )
{
    QV_INT idx = qvDictIndexOfObjKey( dict, key );

    return idx < 0 ? nullptr : static_cast< T * >( dict->items[idx].val );
}

bool has( QV_DICT *dict, QV_STRING *key )
{
    return qvDictIndexOfObjKey( dict, key ) >= 0;
}

// Which of the two tables with entries.
using Table = QV_DICT *QV_STORE::*;

const Table VALUES = &QV_STORE::values;
const Table STORES = &QV_STORE::stores;

QV_STRING *lastKey( QV_DICT *dict )
{
    return static_cast< QV_STRING * >( dict->items[dict->length - 1].key );
}

// Enters a new address in front of that at `idx`. Takes over three references to the address and one to the value.
void insert( QV_STORE *store, Table table, QV_INT idx, QV_STRING *address, QV_OBJ *value )
{
    QV_DICT *&dict    = store->*table;
    QV_INT    dictIdx = idx;
    bool      found;

    // Where all addresses have an entry of this kind, it goes to the same place.
    if( dict->length != store->addresses->length )
        dictIdx = qv::searchDict( dict, address, &found );

    qv::insertIntoDict( &store->addresses, idx, address, address );
    qv::insertIntoDict( &dict, dictIdx, address, value, store->addresses, idx );
}

// Sets an entry of the values or the stores of a store that nobody else holds.
void enter( QV_STORE *store, Table table, QV_STRING *address, QV_OBJ *value )
{
    bool   found;
    QV_INT idx = qv::searchDict( store->addresses, address, &found );

    if( !found )
    {
        qv::retainMore( address, 3 );
        qv::retainMore( value, 1 );
        insert( store, table, idx, address, value );
        return;
    }

    qvDictSetObjKey( &store->addresses, address, address );
    qvDictSetObjKey( &( store->*table ), address, value );
}

QV_STORE *createStore( QV_DICT *addresses, QV_DICT *values, QV_DICT *stores )
{
    QV_STORE *store  = qv::create< QV_STORE >( qvStoreSort() );
    store->addresses = addresses;
    store->values    = values;
    store->stores    = stores;

    return store;
}

void freeStore( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    QV_STORE *store = qvStoreFrom( thisObj );

    qv::drop( store->addresses );
    qv::drop( store->values );
    qv::drop( store->stores );
}

QV_INT compare( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    QV_STORE *a = qvStoreFrom( thisObj );
    QV_STORE *b = qvStoreFrom( thatObj );

    if( QV_INT result = qvObjCompare( a->addresses, b->addresses ) )
        return result;

    if( QV_INT result = qvObjCompare( a->values, b->values ) )
        return result;

    return qvObjCompare( a->stores, b->stores );
}

/* Lines ---------------------------------------------------------------------------------------------------------- */

// Part of a line. The units are characters, or bytes where all of them are ASCII.
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
    QV_INT       levels; // how many sub-stores the line goes down
    Span< Unit > path[QV_STORE_MAX_DEPTH];
    Span< Unit > address; // of a value
    Span< Unit > value;   // with its escapes
    const Unit  *rest;    // what stands behind the separator of the last sub-store
};

// What the reader makes of a line that stands `depth` sub-stores deep.
template< class Unit >
void parse( Span< Unit > text, QV_INT depth, Line< Unit > &line )
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

        Span< Unit > address   = { pos, skipAddressChars( pos, text.end ) };
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

            address = { begin, skipAddressChars( begin, end ) == end ? end : begin };
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

QV_CHAR *allocateChars( QV_INT count )
{
    return static_cast< QV_CHAR * >( qvMemAllocN( count, sizeof( QV_CHAR ) ) );
}

template< class Unit >
QV_STRING *stringOf( Span< Unit > text, qv::ObjBatch *batch = nullptr )
{
    if( text.length() == 0 )
        return qvStringCreate();

    QV_STRING *qvs = qv::createString( text.length(), batch );
    std::copy( text.begin, text.end, qv::chars( qvs ) );

    return qvs;
}

// The order of an address against a text: -1, 0 or 1.
template< class Unit >
QV_INT order( QV_STRING *address, Span< Unit > text )
{
    const QV_CHAR *chars  = qv::chars( address );
    QV_INT         common = std::min( address->length, text.length() );

    for( QV_INT i = 0; i < common; i++ )
        if( chars[i] != text.begin[i] )
            return chars[i] < text.begin[i] ? -1 : 1;

    return ( address->length > text.length() ) - ( address->length < text.length() );
}

// The character at `pos`, which moves behind it.
template< class Unit >
QV_CHAR stringToUnescapeNext( const Unit *&pos, const Unit *end )
{
    if( *pos == '%' && end - pos > 1 && pos[1] == '%' )
    {
        pos += 2;
        return U'%';
    }

    if( *pos == '%' && end - pos > 6 )
    {
        QV_CHAR value = 0;
        bool    ok    = true;

        for( int i = 1; i <= 6; i++ )
        {
            QV_INT digit = qv::unicode::hexDigit( pos[i] );
            ok           = ok && digit >= 0;
            value        = value << 4 | ( digit & 0xF );
        }

        if( ok && QV_CHAR_OK( value ) )
        {
            pos += 7;
            return value;
        }
    }

    return *pos++;
}

template< class Unit >
QV_STRING *stringToUnescape( Span< Unit > text, qv::ObjBatch *batch = nullptr )
{
    if( std::find( text.begin, text.end, '%' ) == text.end )
        return stringOf( text, batch );

    QV_CHAR    *chars  = allocateChars( text.length() );
    QV_INT      length = 0;
    const Unit *pos    = text.begin;

    while( pos < text.end )
        chars[length++] = stringToUnescapeNext( pos, text.end );

    chars = static_cast< QV_CHAR * >( qvMemReallocN( chars, length, sizeof( QV_CHAR ) ) );

    return qv::createStringUse( chars, length );
}

/* Reading lines -------------------------------------------------------------------------------------------------- */

// A tree that grows line by line. As long as nobody else has seen it, its stores can be written where they are.
class Reader
{
public:
    // Reads lines that stand `depth` sub-stores deep.
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

        // Most lines go down to where the one before went, and begin with the same units: those needn't be read
        // again.
        void read( Span< Unit > text )
        {
            QV_INT same   = prefix_.length();
            QV_INT levels = 0;

            if( same > 0 && text.length() >= same && memcmp( text.begin, prefix_.begin, same * sizeof( Unit ) ) == 0 )
            {
                levels = levels_;
                text.begin += same;

                if( text.length() == 0 )
                    return;
            }

            parse( text, reader_.depth_ + levels, line_ );

            if( line_.levels )
            {
                prefix_ = { text.begin - ( levels ? same : 0 ), line_.rest };
                reader_.goDown( levels, line_.path, line_.levels );
                levels += line_.levels;
                levels_ = levels;
            }

            if( line_.kind == QV___STORE_LINE_VALUE )
                reader_.set( levels, VALUES, line_.address, stringToUnescape( line_.value, &reader_.strings_ ) );
        }

        // To be called when lines of another text have been read in between.
        void forget()
        {
            prefix_ = {};
        }

    private:
        Reader      &reader_;
        Span< Unit > prefix_ = {};
        QV_INT       levels_ = 0; // how many sub-stores the prefix goes down
        Line< Unit > line_;
    };

    QV_STORE *give()
    {
        return top_.give();
    }

private:
    // Makes stores_[from + 1] and so on those of the path, new ones where there are none.
    template< class Unit >
    void goDown( QV_INT from, const Span< Unit > *path, QV_INT count )
    {
        for( QV_INT level = from; level < from + count; level++, path++ )
        {
            if( level < open_ && order( addresses_[level], *path ) == 0 )
                continue;

            QV_DICT  *stores  = stores_[level]->stores;
            QV_INT    idx     = search( stores, *path );
            QV_STORE *store   = idx < 0 ? qvStoreCreate() : static_cast< QV_STORE * >( stores->items[idx].val );
            addresses_[level] = idx < 0 ? set( level, STORES, *path, store )
                                        : static_cast< QV_STRING * >( stores->items[idx].key );
            before_[level + 1] = stores_[level + 1];
            stores_[level + 1] = store;
            open_              = level + 1;
        }
    }

    // Sets an entry of stores_[level] and gives its address, borrowed. Takes over the value. No entry ever goes, and
    // no address of one is replaced by an equal one.
    template< class Unit >
    QV_STRING *set( QV_INT level, Table table, Span< Unit > text, QV_OBJ *value )
    {
        QV_STORE  *store     = stores_[level];
        QV_DICT   *addresses = store->addresses;
        QV_STRING *address   = addressOf( level, table, text );
        QV_INT     idx       = addresses->length;
        bool       found     = false;

        if( idx > 0 && order( lastKey( addresses ), text ) >= 0 )
            idx = qv::searchDict( addresses, address, &found );

        if( !found )
        {
            qv::retainMore( address, 2 );
            insert( store, table, idx, address, value );
            return address;
        }

        qv::release( address );
        address = static_cast< QV_STRING * >( addresses->items[idx].key );
        enter( store, table, address, value );
        qv::release( value );

        return address;
    }

    // Addresses repeat from record to record: then the one at the same place of the sub-store before serves again.
    // The first that does not ends it.
    template< class Unit >
    QV_STRING *addressOf( QV_INT level, Table table, Span< Unit > text )
    {
        if( QV_STORE *before = before_[level] )
        {
            QV_INT idx = ( stores_[level]->*table )->length;

            if( idx < ( before->*table )->length )
            {
                QV_STRING *address = static_cast< QV_STRING * >( ( before->*table )->items[idx].key );

                if( order( address, text ) == 0 )
                    return qv::retain( address );
            }

            before_[level] = nullptr;
        }

        return stringOf( text, &strings_ );
    }

    // The index of a key, or -1. Most texts lie behind the last key.
    template< class Unit >
    static QV_INT search( QV_DICT *dict, Span< Unit > text )
    {
        QV_INT lo = 0, hi = dict->length;

        if( hi == 0 || order( lastKey( dict ), text ) < 0 )
            return -1;

        while( lo < hi )
        {
            QV_INT mid    = lo + ( hi - lo ) / 2;
            QV_INT result = order( static_cast< QV_STRING * >( dict->items[mid].key ), text );

            if( result == 0 )
                return mid;

            if( result < 0 )
                lo = mid + 1;
            else
                hi = mid;
        }

        return -1;
    }

    QV_INT              depth_;
    qv::Ref< QV_STORE > top_;
    qv::ObjBatch        strings_ { qvStringSort() }; // most of them live as long as the tree

    // The stores that the last lines went down to, each held by the one above it, and their addresses in that. Of the
    // stores the first open_ + 1 count, of the addresses the first open_.
    QV_INT     open_                            = 0;
    QV_STORE  *stores_[QV_STORE_MAX_DEPTH + 1] = {};
    QV_STRING *addresses_[QV_STORE_MAX_DEPTH];

    // The store that stood in stores_ before.
    QV_STORE *before_[QV_STORE_MAX_DEPTH + 1] = {};
};

// Decodes UTF-8 without a fault; gives the number of characters, or -1 for anything else. `chars` has room for one
// character a byte. What counts as a fault is what does in the charset: lengths and the greatest value, not overlong
// forms and surrogates.
QV_INT decodeUtf8( const uint8_t *pos, const uint8_t *end, QV_CHAR *chars )
{
    QV_INT length = 0;

    while( pos < end )
    {
        QV_CHAR ch   = *pos++;
        int     more = ch < 0x80 ? 0 : ch < 0xC0 ? -1 : ch < 0xE0 ? 1 : ch < 0xF0 ? 2 : ch < 0xF8 ? 3 : -1;

        if( more < 0 || end - pos < more )
            return -1;

        if( more > 0 )
            ch &= 0x3F >> more;

        for( ; more > 0; more--, pos++ )
        {
            if( ( *pos & 0xC0 ) != 0x80 )
                return -1;

            ch = ch << 6 | ( *pos & 0x3F );
        }

        if( !QV_CHAR_OK( ch ) )
            return -1;

        chars[length++] = ch;
    }

    return length;
}

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

            QV_INT length = decodeUtf8( pos, next, chars );

            if( length < 0 )
                break;

            const QV_CHAR          *from = chars + ( pos == bytes && *chars == 0xFEFF ? 1 : 0 );
            const QV_CHAR          *to   = chars + length;
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

/* Writing lines -------------------------------------------------------------------------------------------------- */

// A block that grows. Bytes hold UTF-8, characters themselves.
template< class Unit >
class Output
{
public:
    Output() = default;
    Output( const Output & ) = delete;
    Output &operator=( const Output & ) = delete;

    ~Output()
    {
        qvMemFree( units_ );
    }

    Span< Unit > span() const
    {
        return { units_, units_ + length_ };
    }

    QV_INT length() const
    {
        return length_;
    }

    void cut( QV_INT length )
    {
        length_ = length;
    }

    // Gives the block, of which the caller becomes the owner and which is null if nothing was written.
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

    void append( Span< Unit > text )
    {
        if( text.length() > 0 )
            memcpy( room( text.length() ), text.begin, text.length() * sizeof( Unit ) );

        length_ += text.length();
    }

    // Text that is known to be ASCII where the units are bytes.
    void append( QV_STRING *text )
    {
        const QV_CHAR *chars = qv::chars( text );
        Unit          *to    = room( text->length );

        for( QV_INT i = 0; i < text->length; i++ )
            to[i] = static_cast< Unit >( chars[i] );

        length_ += text->length;
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
    // Where the next units go, with room for so many.
    Unit *room( QV_INT count )
    {
        if( length_ + count > alloc_ )
        {
            QV_CHECK( QV_INT_ADD_OK( length_, count ) );
            QV_CHECK( QV_INT_MUL_OK( length_ + count, 2 ) );

            alloc_ = qvIntMax( ( length_ + count ) * 2, 256 );
            units_ = static_cast< Unit * >( qvMemReallocN( units_, alloc_, sizeof( Unit ) ) );
        }

        return units_ + length_;
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
        else if( ch < 0x80 )
            *to++ = static_cast< Unit >( ch );
        else
        {
            int more = ch < 0x800 ? 1 : ch < 0x10000 ? 2 : 3;
            int lead = more == 1 ? 0xC0 : more == 2 ? 0xE0 : 0xF0;

            *to++ = static_cast< Unit >( lead | ch >> more * 6 );

            while( more-- > 0 )
                *to++ = static_cast< Unit >( 0x80 | ( ch >> more * 6 & 0x3F ) );
        }

        return to;
    }

    Unit  *units_  = nullptr;
    QV_INT length_ = 0;
    QV_INT alloc_  = 0;
};

// Writes the lines of a store, each with `prefix` in front and `endLine` called behind.
template< class Unit, class EndLine >
void writeLines( QV_STORE *store, Output< Unit > &prefix, Output< Unit > &out, const EndLine &endLine )
{
    QV___DICT_ITEM *items = store->values->items;

    for( QV_INT i = 0; i < store->values->length; i++ )
    {
        out.append( prefix.span() );
        out.append( static_cast< QV_STRING * >( items[i].key ) );
        out.put( '=' );
        out.stringToEscape( static_cast< QV_STRING * >( items[i].val ) );
        endLine();
    }

    items = store->stores->items;

    for( QV_INT i = 0; i < store->stores->length; i++ )
    {
        QV_STORE *sub    = static_cast< QV_STORE * >( items[i].val );
        QV_INT    length = prefix.length();

        prefix.append( static_cast< QV_STRING * >( items[i].key ) );
        prefix.put( '.' );

        if( sub->addresses->length > 0 )
            writeLines( sub, prefix, out, endLine );
        else
        {
            out.append( prefix.span() );
            endLine();
        }

        prefix.cut( length );
    }
}

/* Forms of one operation ----------------------------------------------------------------------------------------- */

QV_STRING *addressAt( QV_STORE *store, QV_INT index )
{
    return qvStoreAddressAt( store, index );
}

QV_STRING *addressAt( QV_STORE **store, QV_INT index )
{
    QV_CHECK( store );
    QV_CHECK( *store );

    return qvStoreAddressAt( *store, index );
}

using Address = qv::Ref< QV_STRING >;

// A check of everything that an operation is given; of what it writes, the private copy.
#define CHECK_READ( store, address )                                                                                   \
    QV_CHECK( store );                                                                                                 \
    QV_CHECK( address );                                                                                               \
    QV_CHECK( qvStoreAddressOk( address ) )

#define CHECK_WRITE( store, address )                                                                                  \
    QV_CHECK( store );                                                                                                 \
    QV_CHECK( *store );                                                                                                \
    QV_CHECK( address );                                                                                               \
    QV_CHECK( qvStoreAddressOk( address ) )

// Reads a value with one of the scanners, which has to take all of it.
template< class T, class Scan >
QV_BOOL scanValue( QV_STORE *store, T *out, QV_STRING *address, const Scan &scan )
{
    CHECK_READ( store, address );

    QV_STRING *value    = find< QV_STRING >( store->values, address );
    T          result   = 0;
    QV_INT     consumed = 0;
    bool       ok       = value && scan( value, &result, &consumed ) && consumed == value->length;

    if( out )
        *out = ok ? result : 0;

    return ok ? QV_TRUE : QV_FALSE;
}
} // namespace

QV___FAMILY( Store, QV_STORE, freeStore, compare, nullptr )

/* Whole stores --------------------------------------------------------------------------------------------------- */

QV_STORE *qvStoreCreate( void )
{
    return createStore( qvDictCreate(), qvDictCreate(), qvDictCreate() );
}

QV_STORE *qvStoreCreateFrom( QV_STORE *source )
{
    QV_CHECK( source );
    return createStore( qv::retain( source->addresses ), qv::retain( source->values ), qv::retain( source->stores ) );
}

void qvStoreClear( QV_STORE **store )
{
    QV_CHECK( store );
    QV_CHECK( *store );

    qv::assign( store, qvStoreCreate() );
}

QV_INT qvStoreLength( QV_STORE *store )
{
    QV_CHECK( store );
    return store->addresses->length;
}

QV_STRING *qvStoreAddressAt( QV_STORE *store, QV_INT index )
{
    QV_CHECK( store );
    return static_cast< QV_STRING * >( qvDictKeyAt( store->addresses, index ) );
}

QV_VECTOR *qvStoreAddressesVector( QV_STORE *store )
{
    QV_CHECK( store );
    return qvDictKeysVector( store->addresses );
}

QV_VECTOR *qvStoreValueAddressesVector( QV_STORE *store )
{
    QV_CHECK( store );
    return qvDictKeysVector( store->values );
}

QV_VECTOR *qvStoreStoreAddressesVector( QV_STORE *store )
{
    QV_CHECK( store );
    return qvDictKeysVector( store->stores );
}

QV_BOOL qvStoreAddressOk( QV_STRING *address )
{
    QV_CHECK( address );

    const QV_CHAR *chars = qv::chars( address );
    const QV_CHAR *end   = chars + address->length;

    return address->length > 0 && skipAddressChars( chars, end ) == end ? QV_TRUE : QV_FALSE;
}

void qvStoreMerge( QV_STORE **store, QV_STORE *other )
{
    QV_CHECK( store );
    QV_CHECK( *store );
    QV_CHECK( other );

    // What a store has it needn't be given; that holds for sub-stores that both share too.
    if( *store == other )
        return;

    // The other one can lie inside of this one. With one more reference it is copied before it is changed there.
    qv::Ref< QV_STORE > held = qv::Ref< QV_STORE >::share( other );

    qv::makePrivate( store, qvStoreCreateFrom );
    qvDictInclude( &(*store)->addresses, other->addresses, QV_FALSE );
    qvDictInclude( &(*store)->values, other->values, QV_FALSE );

    for( QV_INT i = 0; i < (*store)->stores->length; i++ )
    {
        QV___DICT_ITEM &item     = (*store)->stores->items[i];
        QV_STORE       *otherSub = find< QV_STORE >( other->stores, static_cast< QV_STRING * >( item.key ) );

        if( !otherSub || otherSub == item.val )
            continue;

        // The sub-store is changed in its place, so that it is copied only if it is shared.
        qv::makePrivate( &(*store)->stores, qvDictCreateFrom );
        QV___DICT_ITEM &own = (*store)->stores->items[i];
        QV_STORE       *sub = static_cast< QV_STORE * >( own.val );
        qvStoreMerge( &sub, otherSub );
        own.val = sub;
    }

    qvDictInclude( &(*store)->stores, other->stores, QV_FALSE );
}

/* One entry: addresses ------------------------------------------------------------------------------------------- */

QV_BOOL qvStoreHasAddress( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return has( store->addresses, address ) ? QV_TRUE : QV_FALSE;
}

/* One entry: values ---------------------------------------------------------------------------------------------- */

QV_STRING *qvStoreValue( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return static_cast< QV_STRING * >( qvDictObjKey( store->values, address ) );
}

QV_BOOL qvStoreHasValue( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return has( store->values, address ) ? QV_TRUE : QV_FALSE;
}

void qvStoreSetValue( QV_STORE **store, QV_STRING *address, QV_STRING *value )
{
    CHECK_WRITE( store, address );
    QV_CHECK( value );

    qv::makePrivate( store, qvStoreCreateFrom );
    enter( *store, VALUES, address, value );
}

void qvStoreDelValue( QV_STORE **store, QV_STRING *address )
{
    CHECK_WRITE( store, address );

    if( !has( (*store)->values, address ) )
        return;

    qv::makePrivate( store, qvStoreCreateFrom );
    qvDictDelObjKey( &(*store)->values, address );

    if( !has( (*store)->stores, address ) )
        qvDictDelObjKey( &(*store)->addresses, address );
}

QV_BOOL qvStoreValueBool( QV_STORE *store, QV_BOOL *out, QV_STRING *address )
{
    return scanValue( store, out, address, []( QV_STRING *value, QV_BOOL *result, QV_INT *consumed ) {
        return qvStringScanBool( value, 0, -1, QV_TRUE, result, consumed );
    } );
}

QV_BOOL qvStoreHasValueBool( QV_STORE *store, QV_STRING *address )
{
    return qvStoreValueBool( store, nullptr, address );
}

void qvStoreSetValueBool( QV_STORE **store, QV_STRING *address, QV_BOOL value )
{
    qv::Ref< QV_STRING > text( qvStringCreateFromFormatCstr( "%b", -1, value ) );
    qvStoreSetValue( store, address, text );
}

QV_BOOL qvStoreValueInt( QV_STORE *store, QV_INT *out, QV_STRING *address )
{
    return scanValue( store, out, address, []( QV_STRING *value, QV_INT *result, QV_INT *consumed ) {
        return qvStringScanInt( value, 0, -1, -1, result, consumed );
    } );
}

QV_BOOL qvStoreHasValueInt( QV_STORE *store, QV_STRING *address )
{
    return qvStoreValueInt( store, nullptr, address );
}

void qvStoreSetValueInt( QV_STORE **store, QV_STRING *address, QV_INT value )
{
    qv::Ref< QV_STRING > text( qvStringCreateFromFormatCstr( "%i", -1, value ) );
    qvStoreSetValue( store, address, text );
}

QV_BOOL qvStoreValueReal( QV_STORE *store, QV_REAL *out, QV_STRING *address )
{
    return scanValue( store, out, address, []( QV_STRING *value, QV_REAL *result, QV_INT *consumed ) {
        return qvStringScanReal( value, 0, -1, -1, result, consumed );
    } );
}

QV_BOOL qvStoreHasValueReal( QV_STORE *store, QV_STRING *address )
{
    return qvStoreValueReal( store, nullptr, address );
}

void qvStoreSetValueReal( QV_STORE **store, QV_STRING *address, QV_REAL value )
{
    qv::Ref< QV_STRING > text( qvStringCreateFromFormatCstr( "%r", -1, value ) );
    qvStoreSetValue( store, address, text );
}

/* One entry: sub-stores ------------------------------------------------------------------------------------------ */

QV_STORE *qvStoreStore( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return static_cast< QV_STORE * >( qvDictObjKey( store->stores, address ) );
}

QV_BOOL qvStoreHasStore( QV_STORE *store, QV_STRING *address )
{
    CHECK_READ( store, address );
    return has( store->stores, address ) ? QV_TRUE : QV_FALSE;
}

void qvStoreSetStore( QV_STORE **store, QV_STRING *address, QV_STORE *other )
{
    CHECK_WRITE( store, address );
    QV_CHECK( other );

    // The other one can be the store itself. With one more reference it is copied before the copy is changed.
    qv::Ref< QV_STORE > held = qv::Ref< QV_STORE >::share( other );

    qv::makePrivate( store, qvStoreCreateFrom );
    enter( *store, STORES, address, other );
}

void qvStoreDelStore( QV_STORE **store, QV_STRING *address )
{
    CHECK_WRITE( store, address );

    if( !has( (*store)->stores, address ) )
        return;

    qv::makePrivate( store, qvStoreCreateFrom );
    qvDictDelObjKey( &(*store)->stores, address );

    if( !has( (*store)->values, address ) )
        qvDictDelObjKey( &(*store)->addresses, address );
}

/* One entry: the other forms ------------------------------------------------------------------------------------- */

// A form makes the address and calls the plain operation. A row has the result, the name, the parameters in front of
// the address and the arguments passed on for them; a row of a setter the type of the value instead.

#define LIST( ... ) __VA_ARGS__

#define FORM_AT( Result, Name, parameters, arguments )                                                                 \
    Result qvStore##Name##At( LIST parameters, QV_INT index )                                                          \
    {                                                                                                                  \
        return qvStore##Name( LIST arguments, Address( addressAt( store, index ) ) );                                  \
    }

#define FORMS( Result, Name, parameters, arguments )                                                                   \
    Result qvStore##Name##Cstr( LIST parameters, const char *address, QV_INT length )                                  \
    {                                                                                                                  \
        return qvStore##Name( LIST arguments, Address( qvStringCreateFromCstr( address, length ) ) );                  \
    }                                                                                                                  \
                                                                                                                       \
    Result qvStore##Name##Wcstr( LIST parameters, const wchar_t *address, QV_INT length )                              \
    {                                                                                                                  \
        return qvStore##Name( LIST arguments, Address( qvStringCreateFromWcstr( address, length ) ) );                 \
    }                                                                                                                  \
                                                                                                                       \
    Result qvStore##Name##Format( LIST parameters, QV_STRING *format, ... )                                            \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, format );                                                                                      \
        Address address( qvStringCreateFromFormatArgList( format, &list ) );                                           \
        va_end( list );                                                                                                \
        return qvStore##Name( LIST arguments, address );                                                               \
    }                                                                                                                  \
                                                                                                                       \
    Result qvStore##Name##FormatCstr( LIST parameters, const char *format, QV_INT length, ... )                        \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, length );                                                                                      \
        Address address( qvStringCreateFromFormatCstrArgList( format, length, &list ) );                               \
        va_end( list );                                                                                                \
        return qvStore##Name( LIST arguments, address );                                                               \
    }                                                                                                                  \
                                                                                                                       \
    Result qvStore##Name##FormatWcstr( LIST parameters, const wchar_t *format, QV_INT length, ... )                    \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, length );                                                                                      \
        Address address( qvStringCreateFromFormatWcstrArgList( format, length, &list ) );                              \
        va_end( list );                                                                                                \
        return qvStore##Name( LIST arguments, address );                                                               \
    }

#define FORMS_OF_SETTER( Name, Type )                                                                                  \
    void qvStoreSet##Name##At( QV_STORE **store, QV_INT index, Type value )                                            \
    {                                                                                                                  \
        qvStoreSet##Name( store, Address( addressAt( store, index ) ), value );                                        \
    }                                                                                                                  \
                                                                                                                       \
    void qvStoreSet##Name##Cstr( QV_STORE **store, const char *address, QV_INT length, Type value )                    \
    {                                                                                                                  \
        qvStoreSet##Name( store, Address( qvStringCreateFromCstr( address, length ) ), value );                        \
    }                                                                                                                  \
                                                                                                                       \
    void qvStoreSet##Name##Wcstr( QV_STORE **store, const wchar_t *address, QV_INT length, Type value )                \
    {                                                                                                                  \
        qvStoreSet##Name( store, Address( qvStringCreateFromWcstr( address, length ) ), value );                       \
    }                                                                                                                  \
                                                                                                                       \
    void qvStoreSet##Name##Format( QV_STORE **store, QV_STRING *format, Type value, ... )                              \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, value );                                                                                       \
        Address address( qvStringCreateFromFormatArgList( format, &list ) );                                           \
        va_end( list );                                                                                                \
        qvStoreSet##Name( store, address, value );                                                                     \
    }                                                                                                                  \
                                                                                                                       \
    void qvStoreSet##Name##FormatCstr( QV_STORE **store, const char *format, QV_INT length, Type value, ... )          \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, value );                                                                                       \
        Address address( qvStringCreateFromFormatCstrArgList( format, length, &list ) );                               \
        va_end( list );                                                                                                \
        qvStoreSet##Name( store, address, value );                                                                     \
    }                                                                                                                  \
                                                                                                                       \
    void qvStoreSet##Name##FormatWcstr( QV_STORE **store, const wchar_t *format, QV_INT length, Type value, ... )      \
    {                                                                                                                  \
        va_list list;                                                                                                  \
        va_start( list, value );                                                                                       \
        Address address( qvStringCreateFromFormatWcstrArgList( format, length, &list ) );                              \
        va_end( list );                                                                                                \
        qvStoreSet##Name( store, address, value );                                                                     \
    }

#define FORMS_OF_READER( Result, Name ) FORMS_WITH_AT( Result, Name, ( QV_STORE *store ), ( store ) )
#define FORMS_OF_SCAN( Name, Type )     FORMS_WITH_AT( QV_BOOL, Name, ( QV_STORE *store, Type *out ), ( store, out ) )
#define FORMS_OF_DEL( Name )            FORMS_WITH_AT( void, Name, ( QV_STORE **store ), ( store ) )

#define FORMS_WITH_AT( Result, Name, parameters, arguments )                                                           \
    FORM_AT( Result, Name, parameters, arguments )                                                                     \
    FORMS( Result, Name, parameters, arguments )

FORMS( QV_BOOL, HasAddress, ( QV_STORE *store ), ( store ) )

FORMS_OF_READER( QV_STRING *, Value )
FORMS_OF_READER( QV_BOOL, HasValue )
FORMS_OF_SETTER( Value, QV_STRING * )
FORMS_OF_DEL( DelValue )

FORMS_OF_SCAN( ValueBool, QV_BOOL )
FORMS_OF_READER( QV_BOOL, HasValueBool )
FORMS_OF_SETTER( ValueBool, QV_BOOL )

FORMS_OF_SCAN( ValueInt, QV_INT )
FORMS_OF_READER( QV_BOOL, HasValueInt )
FORMS_OF_SETTER( ValueInt, QV_INT )

FORMS_OF_SCAN( ValueReal, QV_REAL )
FORMS_OF_READER( QV_BOOL, HasValueReal )
FORMS_OF_SETTER( ValueReal, QV_REAL )

FORMS_OF_READER( QV_STORE *, Store )
FORMS_OF_READER( QV_BOOL, HasStore )
FORMS_OF_SETTER( Store, QV_STORE * )
FORMS_OF_DEL( DelStore )

/* Text form: lines ----------------------------------------------------------------------------------------------- */

void qv___StoreEncodeToStringVector( QV_STORE *store, QV_VECTOR **vec, QV_STRING *prefix )
{
    QV_CHECK( store );
    QV_CHECK( vec );
    QV_CHECK( *vec );
    QV_CHECK( prefix );

    Output< QV_CHAR > path, line;
    path.append( prefix );

    writeLines( store, path, line, [&] {
        QV_OBJ *text = qvStringCreateFromCharsCopy( line.span().begin, line.length() );
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

QV_STORE *qv___StoreDecodeFromStringVector( QV_VECTOR *vec, QV_INT depth )
{
    QV_CHECK( vec );
    QV_CHECK( depth >= 0 );

    Reader                  reader( depth );
    Reader::Text< QV_CHAR > text( reader );

    for( QV_INT i = 0; i < vec->length; i++ )
    {
        QV_STRING *line = static_cast< QV_STRING * >( qv::objs( vec )[i] );
        text.read( { qv::chars( line ), qv::chars( line ) + line->length } );
    }

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

    Line< QV_CHAR > parsed;
    parse( { qv::chars( line ), qv::chars( line ) + line->length }, 0, parsed );

    bool isValue = parsed.kind == QV___STORE_LINE_VALUE;

    if( path )
    {
        Output< QV_CHAR > text;

        for( QV_INT i = 0; i < parsed.levels; i++ )
        {
            text.append( parsed.path[i] );
            text.put( '.' );
        }

        if( isValue )
            text.append( parsed.address );

        QV_INT length = text.length();
        qv::assign( path, length ? qvStringCreateFromCharsUse( text.take(), length ) : nullptr );
    }

    if( value )
        qv::assign( value, isValue ? stringToUnescape( parsed.value ) : nullptr );

    return parsed.kind;
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

/* Text form: bytes ----------------------------------------------------------------------------------------------- */

QV_BUFFER *qvStoreEncodeToTextBuffer( QV_STORE *store )
{
    QV_CHECK( store );

    Output< uint8_t > path, text;
    writeLines( store, path, text, [&] { text.put( '\n' ); } );

    QV_INT length = text.length();

    return length ? qvBufferCreateFromBytesUse( text.take(), length ) : qvBufferCreate();
}

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
        qv::Ref< QV_CHAR_SOURCE >     charSource( qvCharsetCreateCharSource( byteSource, QV_CHARSET_UTF_8, flags ) );
        qv::Ref< QV_NLF_LINE_SOURCE > nlfSource( qvNlfLineSourceCreate( charSource, allLineEnds ) );
        qv::Ref< QV_LINE_SOURCE >     lineSource( qvNlfLineSourceLineSource( nlfSource ) );

        while( qv::Ref< QV_STRING > line { qvLineSourceRead( lineSource ) } )
        {
            Reader::Text< QV_CHAR > text( reader );
            text.read( { qv::chars( line.get() ), qv::chars( line.get() ) + line->length } );
        }

        if( qvLineSourceError( lineSource ) )
            return nullptr;
    }

    return reader.give();
}

/* Binary form ---------------------------------------------------------------------------------------------------- */

void qvStoreEncodeToEncoder( QV_STORE *store, QV_ENCODER *encoder )
{
    QV_CHECK( store );
    QV_CHECK( encoder );

    QV_DICT *values = store->values;
    QV_DICT *stores = store->stores;
    QV_INT   value = 0, sub = 0; // the next ones; all three Dicts have the same order

    qvEncoderEncodeInt( encoder, store->addresses->length );

    for( QV_INT i = 0; i < store->addresses->length; i++ )
    {
        QV_STRING *address = static_cast< QV_STRING * >( store->addresses->items[i].key );
        auto       isNext  = [&]( QV_DICT *dict, QV_INT next ) {
            QV_OBJ *key = next < dict->length ? dict->items[next].key : nullptr;
            return key && ( key == address || qvObjCompare( key, address ) == 0 );
        };

        bool hasValue = isNext( values, value );
        bool hasStore = isNext( stores, sub );

        QV_STRING *text = hasValue ? static_cast< QV_STRING * >( values->items[value++].val ) : nullptr;

        qv::encodeEntry( encoder, address, text, hasStore );

        if( hasStore )
            qvStoreEncodeToEncoder( static_cast< QV_STORE * >( stores->items[sub++].val ), encoder );
    }
}

QV_BUFFER *qvStoreEncodeToBuffer( QV_STORE *store )
{
    QV_CHECK( store );

    qv::Ref< QV_ENCODER > encoder( qvEncoderCreate() );
    qvStoreEncodeToEncoder( store, encoder );

    return qvEncoderBuffer( encoder );
}

QV_STORE *qv___StoreTryDecodeFromDecoder( QV_DECODER *decoder, QV_INT depth )
{
    QV_CHECK( decoder );
    QV_CHECK( depth >= 0 );

    qv::Ref< QV_STORE > store( qvStoreCreate() );
    QV_INT              count = 0;
    bool ok = depth < QV_STORE_MAX_DEPTH && qvDecoderTryDecodeInt( decoder, &count ) && count >= 0;

    for( QV_INT i = 0; ok && i < count; i++ )
    {
        qv::Ref< QV_STRING > address, value;
        qv::Ref< QV_STORE >  sub;
        QV_BOOL              hasStore = QV_FALSE;

        ok = qvDecoderTryDecodeString( decoder, address.at() ) && qvStoreAddressOk( address ) &&
             qvDecoderTryDecodeOptionalString( decoder, value.at() ) && qvDecoderTryDecodeBool( decoder, &hasStore );

        if( ok && hasStore )
        {
            sub.reset( qv___StoreTryDecodeFromDecoder( decoder, depth + 1 ) );
            ok = sub.get() != nullptr;
        }

        if( ok && value )
            enter( store, VALUES, address, value );

        if( ok && sub )
            enter( store, STORES, address, sub );
    }

    if( ok )
        return store.give();

    qvDecoderSetError( decoder );
    return nullptr;
}

QV_STORE *qvStoreTryDecodeFromDecoder( QV_DECODER *decoder )
{
    QV_CHECK( decoder );

    qv::ObjBatch  strings( qvStringSort() );
    qv::ObjBatch *before = qv::setDecoderBatch( decoder, &strings );
    QV_STORE     *store  = qv___StoreTryDecodeFromDecoder( decoder, 0 );
    qv::setDecoderBatch( decoder, before );

    return store;
}

QV_STORE *qvStoreTryDecodeFromBuffer( QV_BUFFER *buffer )
{
    QV_CHECK( buffer );

    qv::Ref< QV_DECODER > decoder( qvDecoderCreate( buffer ) );
    qv::Ref< QV_STORE >   store( qvStoreTryDecodeFromDecoder( decoder ) );

    return store && qvDecoderRemaining( decoder ) == 0 ? store.give() : nullptr;
}

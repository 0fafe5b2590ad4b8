// Stores beside nested maps, and both persisted forms beside a writer and a reader of the maps. Addresses, values and
// sub-stores that are arguments are often held by nobody but the Store.

#include "qv_fuzz_walk.h"

#include "../tests/qv_test_utf8.h"

#include <set>

namespace qv::fuzz
{
using Lines = std::vector< Text >;

struct Doc
{
    std::map< Text, Text > values;
    std::map< Text, Doc >  stores;

    bool operator==( const Doc & ) const = default;

    std::set< Text > addresses() const
    {
        std::set< Text > all;

        for( auto &[address, value] : values )
            all.insert( address );

        for( auto &[address, store] : stores )
            all.insert( address );

        return all;
    }

    size_t size() const
    {
        size_t count = 1 + values.size();

        for( auto &[address, store] : stores )
            count += store.size();

        return count;
    }

    void merge( const Doc &other )
    {
        values.insert( other.values.begin(), other.values.end() );

        for( auto &[address, store] : stores )
            if( auto at = other.stores.find( address ); at != other.stores.end() )
                store.merge( Doc( at->second ) );

        stores.insert( other.stores.begin(), other.stores.end() );
    }
};

/* The text form ---------------------------------------------------------------------------------------------------- */

Text escaped( const Text &value )
{
    Text result;

    for( char32_t ch : value )
    {
        char digits[16];
        snprintf( digits, sizeof( digits ), "%%%06x", static_cast< unsigned >( ch ) );
        result += ch < 0x20 || ( ch >= 0x7F && ch < 0xA0 ) ? wide( digits ) : Text( ch == U'%' ? 2 : 1, ch );
    }

    return result;
}

void write( const Doc &doc, const Text &prefix, Lines &lines )
{
    for( auto &[address, value] : doc.values )
        lines.push_back( prefix + address + U"=" + escaped( value ) );

    for( auto &[address, store] : doc.stores )
        if( store == Doc() )
            lines.push_back( prefix + address + U"." );
        else
            write( store, prefix + address + U".", lines );
}

// Six characters after a mark are a number in base 16 with white space and a sign, if they are nothing else.
Text unescaped( const Text &rest )
{
    Text result;

    for( size_t at = 0; at < rest.size(); at++ )
    {
        bool         mark = rest[at] == U'%';
        NumberReader six{ rest.substr( at + 1, 6 ) };
        QV_INT       value = -1;

        if( mark && six.text.starts_with( U'%' ) )
            result += rest[at++];
        else if(
            mark && six.text.size() == 6 && six.integer( 16, value ) && six.end() && value >> 16 <= 0x10 && value >= 0 )
            result += static_cast< char32_t >( value ), at += 6;
        else
            result += rest[at];
    }

    return result;
}

Doc read( const Lines &lines, int depth )
{
    Doc                     doc;
    std::map< Text, Lines > below;

    if( depth == 100 )
        return doc;

    for( const Text &line : lines )
    {
        static const Text NAME = U"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_-";
        size_t            at   = std::min( line.find_first_of( U".=" ), line.size() );
        Text address = trimmed( line.substr( 0, at ) ), rest = line.substr( std::min( at + 1, line.size() ) );

        if( at == line.size() || address.empty() || address.find_first_not_of( NAME ) != Text::npos )
            continue;

        if( line[at] == U'=' )
            doc.values[address] = unescaped( rest );
        else if( Lines &pending = below[address]; !rest.empty() )
            pending.push_back( rest );
    }

    for( auto &[address, pending] : below )
        doc.stores[address] = read( pending, depth + 1 );

    return doc;
}

/* The binary form -------------------------------------------------------------------------------------------------- */

std::string encoded( const Doc &doc )
{
    std::string bytes = encodedInt( lengthOf( doc.addresses() ) );

    for( const Text &address : doc.addresses() )
    {
        bool value = doc.values.contains( address ), store = doc.stores.contains( address );
        bytes += encodedText( address ) + static_cast< char >( value );
        bytes += ( value ? encodedText( doc.values.at( address ) ) : "" ) + static_cast< char >( store );
        bytes += store ? encoded( doc.stores.at( address ) ) : "";
    }

    return bytes;
}

/* The walk --------------------------------------------------------------------------------------------------------- */

Doc docOf( QV_STORE *store )
{
    Doc  doc;
    Text last;

    for( QV_INT idx = 0; idx < qvStoreLength( store ); idx++ )
    {
        Text       address = charsOf( Ref< QV_STRING >( qvStoreAddressAt( store, idx ) ) );
        QV_STRING *value   = borrow( qvStoreValueAt( store, idx ) );
        QV_STORE  *sub     = borrow( qvStoreStoreAt( store, idx ) );
        require( ( value || sub ) && address > last );

        if( value )
            doc.values[address] = charsOf( value );

        if( sub )
            doc.stores[address] = docOf( sub );

        last = address;
    }

    return doc;
}

struct StoreWalk : Slots< StoreWalk, QV_STORE, Doc, qvStoreCreate, 300 >
{
    Ref< QV_STRING > made, madeValue;

    // An address as a new text, or as the one that the Store has.
    QV_STRING *address( Slot &slot, Text &text )
    {
        auto all = slot.model.addresses();

        if( !all.empty() && in.below( 3 ) )
        {
            QV_INT idx = in.upTo( lengthOf( all ) - 1 );
            text       = at( all, idx );
            return borrow( qvStoreAddressAt( slot.ref, idx ) );
        }

        made = stringOf( text = wide( "n-" + std::to_string( in.below( 40 ) ) ) );

        return made;
    }

    void setValue( Slot &slot, Slot & )
    {
        Text       at, text;
        QV_STRING *addr = address( slot, at ), *value;

        // The very value that is there, or another one.
        if( slot.model.values.contains( at ) && in.flag() )
            value = borrow( qvStoreValue( slot.ref, addr ) ), text = slot.model.values[at];
        else
            value = madeValue = stringOf( text = in.text( 200 ) );

        qvStoreSetValue( slot.ref.at(), addr, value );
        slot.model.values[at] = text;
    }

    void erase( Slot &slot, Slot & )
    {
        Text       at;
        QV_STRING *addr = address( slot, at );

        if( in.flag() )
            qvStoreDelValue( slot.ref.at(), addr ), slot.model.values.erase( at );
        else
            qvStoreDelStore( slot.ref.at(), addr ), slot.model.stores.erase( at );
    }

    // Another variable or the Store itself, as a sub-store or merged.
    void setStore( Slot &slot, Slot &other )
    {
        Text       at;
        Doc        doc  = other.model;
        QV_STRING *addr = address( slot, at );

        if( in.below( 3 ) == 0 )
        {
            qvStoreMerge( slot.ref.at(), other.ref );
            return slot.model.merge( doc );
        }

        qvStoreSetStore( slot.ref.at(), addr, other.ref );
        slot.model.stores[at] = doc;
    }

    // A sub-store is taken, changed, and written back, or put into its own place or merged while only the Store has it.
    void below( Slot &slot, Slot &other )
    {
        QV_INT how = in.below( 3 );

        if( slot.model.stores.empty() )
            return;

        auto &[name, doc] = at( slot.model.stores, in.upTo( lengthOf( slot.model.stores ) - 1 ) );
        made              = stringOf( name );
        Ref< QV_STORE > sub( qvStoreStore( slot.ref, made ) );

        if( how == 0 )
        {
            // With a sub-store of its own address it is both what is merged and what something is merged into.
            qvStoreSetStore( sub.at(), made, other.ref );
            qvStoreSetStore( slot.ref.at(), made, sub );
            doc.stores[name] = Doc( other.model );
        }
        else if( how == 1 )
            qvStoreSetStore( slot.ref.at(), made, borrow( sub.give() ) );
        else
        {
            qvStoreMerge( slot.ref.at(), borrow( sub.give() ) );
            slot.model.merge( Doc( doc ) );
        }
    }

    // Both forms, written, and read again as far as they are not nested too deep.
    void persist( Slot &slot, Slot & )
    {
        Lines lines;
        write( slot.model, {}, lines );
        Doc              doc   = read( lines, 0 );
        bool             whole = doc == slot.model;
        Ref< QV_VECTOR > written( qvStoreEncodeToStringVector( slot.ref ) );
        Ref< QV_STORE >  again( qvStoreDecodeFromStringVector( written ) );
        require( textsOf( written ) == lines && docOf( again ) == doc && qvStoreEquals( again, slot.ref ) == whole );

        Ref< QV_BUFFER > buf( qvStoreEncodeToBuffer( slot.ref ) );
        again.reset( qvStoreTryDecodeFromBuffer( buf ) );
        require( bytesOf( buf ) == encoded( slot.model ) );
        require( whole ? again && qvStoreEquals( again, slot.ref ) : !again );
    }

    // Lines of any kind, as a Vector and as text, where there may be more lines and some bytes are no characters.
    void parse( Slot &slot, Slot & )
    {
        // clang-format off
        static const char32_t *const PIECES[] = {
            U"a", U"b", U".", U".", U"=", U"=", U" ", U"\t", U"%", U"%%", U"%00000a", U"%+00041", U"%  0041",
            U"%      ", U"%\u00A0\u00A00041", U"%0041\u2003\u2003", U"%-00000", U"%41    ", U"%110000", U"%10FFFF",
            U"%00004", U"zz", U"x.y.", U"#", U"10", U"2" };
        // clang-format on
        Lines            lines;
        Text             all;
        Ref< QV_VECTOR > vec( qvVectorCreate() );

        for( QV_INT count = in.below( 30 ); count > 0 && in.at < in.end; count-- )
        {
            Text line;

            for( QV_INT pieces = in.below( 12 ); pieces > 0; pieces-- )
                line += in.below( 27 ) ? Text( in.oneOf( PIECES ) ) : in.text( 30 );

            lines.push_back( line );
            qvVectorAppendString( vec.at(), stringOf( line ) );
            all += line + U"\n\r\u2028"[in.below( 3 )];
        }

        slot.set( qvStoreDecodeFromStringVector( vec ), read( lines, 0 ) );

        std::string bytes = qv::test::encodedUtf8( all );

        if( in.flag() )
            bytes.insert( static_cast< size_t >( in.upTo( lengthOf( bytes ) ) ), 1, static_cast< char >( in.byte() ) );

        Ref< QV_STRING >             decoded( qvCharsetBufferToString( QV_CHARSET_UTF_8, bufferOf( bytes ) ) );
        Ref< QV_STRING_CHAR_SOURCE > chars( qvStringCharSourceCreate( decoded ) );
        Ref< QV_CHAR_SOURCE >        charSource( qvStringCharSourceCharSource( chars ) );
        Ref< QV_NLF_LINE_SOURCE >    nlfSource( qvNlfLineSourceCreate( charSource, 255 ) );
        Ref< QV_LINE_SOURCE >        lineSource( qvNlfLineSourceLineSource( nlfSource ) );
        vec.reset( qvLineSourceReadLines( lineSource, -1 ) );

        Ref< QV_STORE > store( qvStoreTryDecodeFromTextBuffer( bufferOf( bytes ) ) );
        require( store && docOf( store ) == read( textsOf( vec ), 0 ) );
    }

    void check()
    {
        made.reset(), madeValue.reset();

        for( Slot &slot : slots )
            require( docOf( slot.ref ) == slot.model );

        const Slot &a = slots[0], &b = slots[1];
        require( qvStoreEquals( a.ref, b.ref ) == ( a.model == b.model ) );
        require( qvStoreCompare( a.ref, b.ref ) == -qvStoreCompare( b.ref, a.ref ) );
    }
};
} // namespace qv::fuzz

QV_FUZZ_WALK(
    StoreWalk, OP( share ) OP( setValue ) OP( setValue ) OP( erase ) OP( setStore ) OP( setStore ) OP( below )
                   OP( persist ) OP( parse ) )

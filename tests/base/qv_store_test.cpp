#include "qv_test_stream.h"

#include "qv/base/qv_store_private.h"
#include "qv/qv.h"

#include <malloc.h>

#include <map>
#include <mutex>
#include <random>
#include <thread>
#include <unistd.h>
#include <vector>

using qv::Ref;
using namespace qv::test;
using namespace std::string_literals;

namespace
{
Ref< QV_STORE > fromText( std::string_view form )
{
    return Ref( qvStoreTryDecodeFromTextBuffer( buffer( form ) ) );
}

Ref< QV_STORE > fromBinary( std::string_view form )
{
    return Ref( qvStoreTryDecodeFromBuffer( buffer( form ) ) );
}

std::string asText( QV_STORE *store )
{
    return bytes( Ref( qvStoreEncodeToTextBuffer( store ) ) );
}

std::string asBinary( QV_STORE *store )
{
    return bytes( Ref( qvStoreEncodeToBuffer( store ) ) );
}

std::string repeat( std::string_view part, int times )
{
    std::string result;

    while( times-- > 0 )
        result += part;

    return result;
}
} // namespace

TEST( Store, TypedValuesAreReadFromEndToEnd )
{
    // 0 where it is none of the kind
    const std::tuple< const char *, QV_INT, QV_REAL > cases[] = {
        { "a=0x10", 16, 16.0 }, { "a=2,5", 0, 2.5 }, { "a=12 x", 0, 0.0 }, { "a=", 0, 0.0 }, { "a.12=1", 0, 0.0 } };

    for( auto &[line, ofInt, ofReal] : cases )
    {
        Ref< QV_STORE > store  = fromText( line );
        QV_INT          number = 9;
        QV_REAL         real   = 9.0;
        QV_BOOL         truth  = 9;
        EXPECT_TRUE( qvStoreValueIntAt( store, &number, 0 ) == ( ofInt != 0 ) && number == ofInt ) << line;
        EXPECT_TRUE( qvStoreValueRealAt( store, &real, 0 ) == ( ofReal != 0.0 ) && real == ofReal ) << line;
        EXPECT_TRUE( qvStoreValueBoolAt( store, &truth, 0 ) == ( ofReal != 0.0 ) && truth == ( ofReal != 0.0 ) )
            << line;
    }
}

// Numbers get the same text whether their address is new, has a value, or is made of C text.
TEST( Store, NumbersAreSetAsFormatsWriteThem )
{
    Ref< QV_STORE > store( qvStoreCreate() ), other( qvStoreCreate() );

    for( QV_INT value : { QV_INT( 0 ), QV_INT( -17 ), QV_INT_MAX, QV_INT_MIN } )
        for( QV_REAL real : { 0.0, -2.5, 0.999999999, 1e300, double( INFINITY ), double( NAN ) } )
        {
            qvStoreSetValueInt( store.at(), text( "i" ), value );
            qvStoreSetValueReal( store.at(), text( "r" ), real );
            qvStoreSetValueBool( store.at(), text( "b" ), value < 0 );
            qvStoreSetValueIntCstr( other.at(), "i", -1, value );
            qvStoreSetValueRealCstr( other.at(), "r", -1, real );
            qvStoreSetValueBoolCstr( other.at(), "b", -1, value < 0 );

            Ref< QV_STRING > lines(
                qvStringCreateFromFormatCstr( "b=%b\ni=%i\nr=%r\n", -1, QV_BOOL( value < 0 ), value, real ) );
            EXPECT_EQ( utf8( lines ), asText( store ) );
            EXPECT_EQ( utf8( lines ), asText( other ) );
        }
}

TEST( Store, TreesOfAnyDepthAreWrittenMergedAndCompared )
{
#if defined( __SANITIZE_ADDRESS__ ) || defined( __SANITIZE_THREAD__ )
    const int LEVELS = 50000;
#else
    const int LEVELS = 150000;
#endif

    auto chain = []( std::string_view innermost )
    {
        Ref< QV_STORE > store = fromText( innermost );

        for( int level = 0; level < LEVELS; level++ )
        {
            Ref< QV_STORE > outer( qvStoreCreate() );
            qvStoreSetStoreCstr( outer.at(), "a", -1, store );
            store = std::move( outer );
        }

        return store;
    };

    Ref< QV_STORE >   a = chain( "v=1" ), b = chain( "w=2" );
    const std::string path = repeat( "a.", LEVELS );

    EXPECT_TRUE( repeat( "\1\1\1\1a\0\1"s, LEVELS ) + asBinary( fromText( "v=1" ) ) == asBinary( a ) );
    EXPECT_EQ( repeat( "a.", QV_STORE_MAX_DEPTH ) + "\n", asText( fromText( asText( a ) ) ) );
    EXPECT_FALSE( fromBinary( asBinary( a ) ) );
    EXPECT_TRUE( qvStoreEquals( a, chain( "v=1" ) ) );
    EXPECT_EQ( -1, qvStoreCompare( a, b ) );

    // What else is held is copied level by level.
    Ref< QV_STORE > merged = Ref< QV_STORE >::share( a );
    qvStoreMerge( merged.at(), b );
    EXPECT_TRUE( path + "v=1\n" + path + "w=2\n" == asText( merged ) );
    EXPECT_TRUE( path + "v=1\n" == asText( a ) );
}

TEST( Store, WritingDoesNotCopyWhatNobodyElseHolds )
{
    Ref< QV_STORE > store  = fromText( "a.b.c=1\nv=1" );
    QV_STORE       *before = store, *sub = Ref( qvStoreStoreCstr( store, "a", -1 ) ).get();
    qvStoreMerge( store.at(), fromText( "a.b.d=2" ) );
    EXPECT_EQ( sub, Ref( qvStoreStoreCstr( store, "a", -1 ) ).get() );
    EXPECT_EQ( before, store.get() );

    // A copy shares everything; then a write leaves the level that it doesn't touch.
    Ref< QV_STORE > copy( qvStoreCreateFrom( store ) );
    qvStoreSetValueCstr( copy.at(), "v", -1, text( "2" ) );
    EXPECT_EQ( sub, Ref( qvStoreStoreCstr( copy, "a", -1 ) ).get() );
    EXPECT_EQ( "v=1\na.b.c=1\na.b.d=2\n", asText( store ) );

    // Deleting what isn't there copies nothing.
    copy = Ref< QV_STORE >::share( store );
    qvStoreDelStoreCstr( copy.at(), "v", -1 );
    qvStoreDelValueCstr( copy.at(), "a", -1 );
    EXPECT_EQ( store.get(), copy.get() );
}

TEST( Store, LinesTellWhatTheReaderMakesOfThem )
{
    const std::pair< std::string, QV_INT > cases[] = {
        { " a . b = %00000a ", QV___STORE_LINE_VALUE },
        { "a. b .", QV___STORE_LINE_STORE },
        { "", QV___STORE_LINE_EMPTY },
        { "a.b.text", QV___STORE_LINE_NO_SEPARATOR },
        { "# a = 1", QV___STORE_LINE_BAD_ADDRESS },
        { "a.#=1", QV___STORE_LINE_BAD_ADDRESS },
        { repeat( "x.", 99 ) + "y=1", QV___STORE_LINE_VALUE },
        { repeat( "x.", 100 ) + "y=1", QV___STORE_LINE_TOO_DEEP },
        { repeat( "x.", 5000 ), QV___STORE_LINE_TOO_DEEP },
    };

    for( auto &[line, kind] : cases )
    {
        // The line itself is given up for its path.
        Ref< QV_STRING > path = text( line ), value = text( "old" );
        EXPECT_EQ( kind, qv___StoreParseLine( path, path.at(), value.at() ) ) << line;
        EXPECT_EQ( kind == QV___STORE_LINE_VALUE, value.get() != nullptr );
        EXPECT_EQ( path ? take( qv___StoreEncodeLine( path, value ) ) + "\n" : "", asText( fromText( line ) ) );
    }
}

TEST( Store, BinaryFormFromOutsideMayBeAnything )
{
    const std::string A = "\1\1a"s, NOTHING = "\0\0"s;

    // Entries without anything, unsorted and repeated ones.
    EXPECT_EQ(
        "a=2\n",
        asText( fromBinary( "\1\4\1\1b"s + NOTHING + A + "\1\1\1" + "1\0"s + A + "\1\1\1" + "2\0"s + A + NOTHING ) ) );

    // A negative count and one beyond all reason; addresses that are none; a bad truth value; too many levels.
    auto nested = []( int levels ) { return repeat( "\1\1\1\1a\0\1"s, levels ) + "\0"s; };
    EXPECT_EQ( repeat( "a.", 99 ) + "\n", asText( fromBinary( nested( 99 ) ) ) );

    for( const std::string &bad :
         { "\x81\1"s, "\x08\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s, "\1\1\1\1.\0\0"s, "\1\1\0\0\0"s, "\1\1\1\1a\2\0"s,
           nested( 100 ) } )
    {
        Ref< QV_DECODER > decoder( qvDecoderCreate( buffer( bad ) ) );
        EXPECT_EQ( nullptr, qvStoreTryDecodeFromDecoder( decoder ) );
        EXPECT_EQ( QV_TRUE, qvDecoderError( decoder ) );
    }
}

// Levels with values, with sub-stores and with both; with addresses that come again, beyond the places that are put in order
// at once, alike for longer than a Dict knows of each; and values that are one String wherever they stand.
TEST( Store, LinesInAnyOrderMakeTheSameDocument )
{
    std::mt19937                         random( 99 );
    std::map< std::string, std::string > values; // by the whole path
    Ref< QV_STORE >                      model( qvStoreCreate() );
    std::string                          document;

    for( int i = 0; i < 9000; i++ )
    {
        const char *const places[] = { "", "a.", "a.b.", "only.", "only.stores." };
        const char *const stems[]  = { "key-", "key-and-more-", "key-and-more-of-the-same-" };
        const char       *place    = places[random() % 5];
        std::string       path     = place + std::string( stems[random() % 3] ) + std::to_string( random() % 900 );
        std::string value = i % 11 == 0 ? "" : i % 7 ? std::to_string( i % 50 ) : "%% \xC3\xA4 " + std::to_string( i );

        // A sub-store beside others, and of the name of a value.
        if( i % 1000 == 0 )
            path += ".deep.key";

        if( place != std::string( "only." ) )
        {
            values[path] = value;
            document += path + "=" + value + ( i % 3 ? "\n" : "\r\n" );
        }
    }

    for( auto &[path, value] : values )
    {
        Ref< QV_STORE > line = fromText( path + "=" + value );
        qvStoreMerge( model.at(), line );
    }

    Ref< QV_STORE > read = fromText( document );
    EXPECT_EQ( asText( model ), asText( read ) );
    EXPECT_TRUE( qvStoreEquals( model, read ) );
    EXPECT_TRUE( qvStoreEquals( read, fromBinary( asBinary( read ) ) ) );

    // A value that is changed by who reads it stays as it was everywhere.
    Ref< QV_STORE >  same = fromText( "a=text\nb=text\nsub.a=text\n" );
    Ref< QV_STRING > value( qvStoreValueCstr( same, "a", -1 ) );
    qvStringAppendChar( value.at(), U'!' );
    EXPECT_EQ( "a=text\nb=text\nsub.a=text\n", asText( same ) );
}

TEST( Store, AddressesOfBothKindsAreKeptTogether )
{
    Ref< QV_STORE > store( qvStoreCreate() ), sub( qvStoreCreate() );

    auto addresses = [&]
    {
        std::string all;

        for( QV_INT i = 0; i < qvStoreLength( store ); i++ )
            all += utf8( Ref< QV_STRING >( qvStoreAddressAt( store, i ) ) ) + ' ';

        return all;
    };

    qvStoreSetValueCstr( store.at(), "b", -1, text( "1" ) );
    Ref< QV_STORE > before = Ref< QV_STORE >::share( store );
    qvStoreSetStoreCstr( store.at(), "a", -1, sub );
    qvStoreSetStoreCstr( store.at(), "b", -1, sub );
    EXPECT_EQ( "a b ", addresses() );
    EXPECT_LT( 0, qvStoreCompare( before, store ) ); // "b" is after "a"

    qvStoreDelValueCstr( store.at(), "b", -1 );
    EXPECT_EQ( "a b ", addresses() );
    qvStoreDelStoreCstr( store.at(), "b", -1 );
    qvStoreSetValueCstr( store.at(), "c", -1, text( "2" ) );
    qvStoreMerge( store.at(), before );
    EXPECT_EQ( "a b c ", addresses() );
    EXPECT_EQ( 1, qvStoreLength( before ) );

    // Text for a look-up: what is not short, no ASCII or no address.
    std::string longest( 64, 'x' );
    qvStoreSetValueCstr( store.at(), longest.c_str(), -1, text( "3" ) );
    qvStoreSetValueCstr( store.at(), ( longest + 'x' ).c_str(), -1, text( "4" ) );
    qvStoreSetValueCstr( store.at(), longest.c_str(), 64, text( "5" ) );
    qvStoreSetValueCstr( store.at(), ( longest + 'x' ).c_str(), -1, text( "6" ) );
    EXPECT_EQ( "5", utf8( Ref< QV_STRING >( qvStoreValueCstr( store, longest.c_str(), -1 ) ) ) );
    EXPECT_EQ( "6", utf8( Ref< QV_STRING >( qvStoreValueCstr( store, ( longest + 'x' ).c_str(), 65 ) ) ) );
    EXPECT_EQ( 5, qvStoreLength( store ) );
    EXPECT_DEATH( qvStoreHasValueCstr( store, "\xC3\xA4", -1 ), "qvStoreAddressOk" );
}

// Of a document that came from slabs few values are left here and there, and then one: the pages between them go back.
TEST( Store, WhatOutlivesALargeDocumentHoldsLittle )
{
    auto resident = []
    {
        long  pages = 0, all = 0;
        FILE *file = fopen( "/proc/self/statm", "r" );
        EXPECT_EQ( 2, fscanf( file, "%ld %ld", &all, &pages ) );
        fclose( file );
        return pages * sysconf( _SC_PAGESIZE ) / 1024 / 1024;
    };

    std::string document;

    for( int i = 0; i < 60000; i++ )
        document += "key-" + std::to_string( 100000 + i ) + "=" + std::to_string( i ) + std::string( 60, 'v' ) + "\n";

    Ref< QV_STORE >                 store = fromText( document );
    std::vector< Ref< QV_STRING > > kept;

    for( QV_INT i = 0; i < 60000; i += 6000 )
        kept.emplace_back( qvStoreValueAt( store, i ) );

    [[maybe_unused]] long full = resident();
    store.reset();
    [[maybe_unused]] long left = resident();

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
    EXPECT_LE( 25, full - left ); // MiB, of some 32 in slabs
#endif

    for( size_t i = 0; i < kept.size(); i++ )
        EXPECT_EQ( std::to_string( i * 6000 ) + std::string( 60, 'v' ), utf8( kept[i] ) );
}

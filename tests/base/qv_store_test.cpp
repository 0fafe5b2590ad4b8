#include "qv_test_stream.h"

#include "qv/base/qv_store_private.h"
#include "qv/qv.h"

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

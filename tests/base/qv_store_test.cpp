#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_vector.h"

#include <malloc.h>

#include <map>
#include <mutex>
#include <random>
#include <thread>
#include <unistd.h>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
using Lines = std::vector< std::string >;

Lines linesOf( QV_VECTOR *vec )
{
    Lines lines;

    for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
    {
        Ref< QV_OBJ > line( qvVectorObjAt( vec, i ) );
        lines.push_back( utf8( qvStringFrom( line ) ) );
    }

    return lines;
}

Lines linesOf( QV_STORE *store )
{
    return linesOf( Ref< QV_VECTOR >( qvStoreEncodeToStringVector( store ) ) );
}

Ref< QV_STORE > storeOf( const Lines &lines )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );

    for( const std::string &line : lines )
        qvVectorAppendObj( vec.at(), qv::obj( text( line ).get() ) );

    return Ref< QV_STORE >( qvStoreDecodeFromStringVector( vec ) );
}

Ref< QV_BUFFER > bufferOf( std::string_view bytes )
{
    return Ref< QV_BUFFER >( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );
}

std::string bytesOf( QV_BUFFER *buffer )
{
    return {
        static_cast< const char * >( static_cast< const void * >( qvBufferBacking( buffer ) ) ),
        static_cast< size_t >( qvBufferLength( buffer ) ) };
}

Ref< QV_STORE > fromText( std::string_view bytes )
{
    return Ref< QV_STORE >( qvStoreTryDecodeFromTextBuffer( bufferOf( bytes ) ) );
}

Ref< QV_STORE > fromBinary( std::string_view bytes )
{
    return Ref< QV_STORE >( qvStoreTryDecodeFromBuffer( bufferOf( bytes ) ) );
}

std::string textFormOf( QV_STORE *store )
{
    return bytesOf( Ref< QV_BUFFER >( qvStoreEncodeToTextBuffer( store ) ) );
}

std::string binaryOf( QV_STORE *store )
{
    return bytesOf( Ref< QV_BUFFER >( qvStoreEncodeToBuffer( store ) ) );
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
    const std::tuple< const char *, std::string, QV_BOOL, QV_INT, QV_REAL > cases[] = {
        { "a=FALSE ", "B", 0, 0, 0.0 }, { "a=0x10", "BIR", 1, 16, 16.0 }, { "a=2,5", "BR", 1, 0, 2.5 },
        { "a=12 x", "", 0, 0, 0.0 },    { "a=", "", 0, 0, 0.0 },          { "a.12=1", "", 0, 0, 0.0 } };

    for( auto &[line, kinds, ofBool, ofInt, ofReal] : cases )
    {
        Ref< QV_STORE > store  = storeOf( { line } );
        QV_BOOL         truth  = 9;
        QV_INT          number = 9;
        QV_REAL         real   = 9.0;

        EXPECT_EQ( kinds.find( 'B' ) != kinds.npos, qvStoreValueBoolAt( store, &truth, 0 ) ) << line;
        EXPECT_EQ( kinds.find( 'I' ) != kinds.npos, qvStoreValueIntAt( store, &number, 0 ) ) << line;
        EXPECT_EQ( kinds.find( 'R' ) != kinds.npos, qvStoreValueRealAt( store, &real, 0 ) ) << line;
        EXPECT_EQ( kinds.find( 'I' ) != kinds.npos, qvStoreHasValueIntAt( store, 0 ) );
        EXPECT_EQ( std::tuple( ofBool, ofInt, ofReal ), std::tuple( truth, number, real ) ) << line;
    }
}

TEST( Store, TreesOfAnyDepthAreWrittenMergedAndCompared )
{
    using namespace std::string_literals;

#if defined( __SANITIZE_ADDRESS__ ) || defined( __SANITIZE_THREAD__ )
    const int LEVELS = 50000;
#else
    const int LEVELS = 150000;
#endif

    auto chain = []( Ref< QV_STORE > innermost )
    {
        for( int level = 0; level < LEVELS; level++ )
        {
            Ref< QV_STORE > outer( qvStoreCreate() );
            qvStoreSetStoreCstr( outer.at(), "a", -1, innermost );
            innermost = std::move( outer );
        }

        return innermost;
    };

    Ref< QV_STORE >   a = chain( storeOf( { "v=1" } ) ), b = chain( storeOf( { "w=2" } ) );
    const std::string path = repeat( "a.", LEVELS );

    EXPECT_TRUE( ( Lines{ path + "v=1" } ) == linesOf( a ) );
    EXPECT_TRUE( path + "w=2\n" == textFormOf( b ) );
    EXPECT_TRUE( repeat( "\1\1\1\1a\0\1"s, LEVELS ) + binaryOf( storeOf( { "v=1" } ) ) == binaryOf( a ) );
    EXPECT_EQ( Lines{ repeat( "a.", QV_STORE_MAX_DEPTH ) }, linesOf( fromText( textFormOf( a ) ) ) );
    EXPECT_FALSE( fromBinary( binaryOf( a ) ) );

    EXPECT_TRUE( qvStoreEquals( a, chain( storeOf( { "v=1" } ) ) ) );
    EXPECT_EQ( -1, qvStoreCompare( a, b ) );
    // The one that was is copied level by level.
    Ref< QV_STORE > merged = Ref< QV_STORE >::share( a );
    qvStoreMerge( merged.at(), b );
    EXPECT_TRUE( ( Lines{ path + "v=1", path + "w=2" } ) == linesOf( merged ) );
    EXPECT_TRUE( ( Lines{ path + "v=1" } ) == linesOf( a ) );
}

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
TEST( Store, DocumentsTakeMemoryInProportion )
{
    for( int lines : { 3000, 30000 } )
    {
        std::string ports, records, chains, again; // in the last one a full chain is named before each new one

        for( int i = 0; i < 52 * 20; i++ )
            again += repeat( "a.", i / 52 ) + static_cast< char >( 'A' + i % 52 / 2 ) + ( i % 2 ? "=\n" : ".\n" );

        for( int i = 0; i < lines; i++ )
        {
            const char *const fields[] = { ".name=n\n", ".port=1\n", ".host=localhost\n" };
            ports += "port-" + std::to_string( i ) + "=8080\n";
            records += "rec-" + std::to_string( i / 3 ) + fields[i % 3];
            chains += i % 100 ? "" : "x" + std::to_string( i ) + repeat( ".a", 99 ) + ".\n";
            again += i % 10 ? "" : repeat( "a.", 19 ) + "\nx" + std::to_string( i ) + repeat( ".a", 18 ) + ".\n";
        }

        // How many bytes are allocated for one of the text.
        for( auto &[document, limit] :
             { std::pair{ ports, 40u }, { records, 40u }, { chains, 300u }, { again, 300u } } )
        {
            Ref< QV_BUFFER > bytes  = bufferOf( document );
            auto             before = mallinfo2();
            Ref< QV_STORE >  store( qvStoreTryDecodeFromTextBuffer( bytes ) );
            auto             after = mallinfo2();

            EXPECT_GE( limit, ( after.uordblks + after.hblkhd - before.uordblks - before.hblkhd ) / document.size() )
                << document.substr( 0, 20 );
        }
    }
}
#endif

TEST( Store, WritingDoesNotCopyWhatNobodyElseHolds )
{
    Ref< QV_STORE > store = storeOf( { "a.b.c=1", "v=1" } ), other = storeOf( { "a.b.d=2" } );
    QV_STORE       *top = store;

    QV_STORE *sub = qvStoreStoreCstr( store, "a", -1 );
    qvStoreRelease( sub );
    qvStoreMerge( store.at(), other );
    EXPECT_EQ( sub, Ref< QV_STORE >( qvStoreStoreCstr( store, "a", -1 ) ).get() );
    EXPECT_EQ( top, store.get() );

    // A copy shares everything; then a write leaves the level that it doesn't touch.
    Ref< QV_STORE > copy( qvStoreCreateFrom( store ) );
    qvStoreSetValueCstr( copy.at(), "v", -1, text( "2" ) );
    EXPECT_EQ( sub, Ref< QV_STORE >( qvStoreStoreCstr( copy, "a", -1 ) ).get() );
    EXPECT_EQ( ( Lines{ "v=1", "a.b.c=1", "a.b.d=2" } ), linesOf( store ) );

    // What only the store holds goes into it as it was, although it is changed there.
    Ref< QV_STORE > outer  = storeOf( { "a.a.k.x=1", "a.v=1" } );
    QV_STORE       *inside = Ref< QV_STORE >( qvStoreStoreCstr( outer, "a", -1 ) ).get();
    qvStoreMerge( outer.at(), inside );
    EXPECT_EQ( ( Lines{ "v=1", "a.v=1", "a.a.k.x=1", "a.k.x=1" } ), linesOf( outer ) );

    // Deleting what isn't there copies nothing.
    Ref< QV_STORE > shared = Ref< QV_STORE >::share( store );
    qvStoreDelStoreCstr( shared.at(), "v", -1 );
    qvStoreDelValueCstr( shared.at(), "a", -1 );
    EXPECT_EQ( store.get(), shared.get() );
}

TEST( Store, LinesTellWhatTheReaderMakesOfThem )
{
    const std::pair< std::string, QV_INT > cases[] = {
        { " a . b = %00000a ", QV___STORE_LINE_VALUE },
        { "a. b .", QV___STORE_LINE_STORE },
        { "", QV___STORE_LINE_EMPTY },
        { "a.b.text", QV___STORE_LINE_NO_SEPARATOR },
        { " ", QV___STORE_LINE_NO_SEPARATOR },
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
        Lines canonical = path ? Lines{ take( qv___StoreEncodeLine( path, value ) ) } : Lines{};
        EXPECT_EQ( canonical, linesOf( storeOf( { line } ) ) );
    }
}

// Beside what walks write and read back.
TEST( Store, BinaryFormFromOutsideMayBeAnything )
{
    using namespace std::string_literals;

    // Entries without anything, unsorted and repeated ones.
    EXPECT_EQ(
        Lines{ "a=2" }, linesOf( fromBinary( "\x01\x03\x01\x01"s
                                             "b\x00\x00\x01\x01"s
                                             "a\x01\x01\x01"s
                                             "1\x00\x01\x01"s
                                             "a\x01\x01\x01"s
                                             "2\x00"s ) ) );

    // A negative count and one beyond all reason; addresses that are none; a bad truth value; too many levels.
    auto nested = []( int levels )
    {
        return repeat(
                   "\x01\x01\x01\x01"s
                   "a\x00\x01"s,
                   levels )
               + "\x00"s;
    };
    EXPECT_EQ( Lines{ repeat( "a.", 99 ) }, linesOf( fromBinary( nested( 99 ) ) ) );

    for( const std::string &bad :
         { "\x81\x01"s, "\x08\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s, "\x01\x01\x01\x01.\x00\x00"s, "\x01\x01\x00\x00\x00"s,
           "\x01\x01\x01\x01"s
           "a\x02\x00"s,
           nested( 100 ) } )
    {
        Ref< QV_DECODER > decoder( qvDecoderCreate( bufferOf( bad ) ) );
        EXPECT_EQ( nullptr, qvStoreTryDecodeFromDecoder( decoder ) );
        EXPECT_EQ( QV_TRUE, qvDecoderError( decoder ) );
    }
}

// Levels with values, with sub-stores and with both; with addresses that come again, beyond the places that are put in order
// at once; and values that are one String wherever they stand.
TEST( Store, LinesInAnyOrderMakeTheSameDocument )
{
    std::mt19937                         random( 99 );
    std::map< std::string, std::string > values; // by the whole path
    Ref< QV_STORE >                      model( qvStoreCreate() );
    std::string                          document;

    for( int i = 0; i < 9000; i++ )
    {
        const char *const places[] = { "", "a.", "a.b.", "only.", "only.stores." };
        const char       *place    = places[random() % 5];
        std::string       path     = place + std::string( "key-" ) + std::to_string( random() % 2500 );
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
        Ref< QV_STORE > line = storeOf( { path + "=" + value } );
        qvStoreMerge( model.at(), line );
    }

    Ref< QV_STORE > read = fromText( document );
    EXPECT_EQ( textFormOf( model ), textFormOf( read ) );
    EXPECT_TRUE( qvStoreEquals( model, read ) );
    EXPECT_TRUE( qvStoreEquals( read, fromBinary( binaryOf( read ) ) ) );

    // A value that is changed by who reads it stays as it was everywhere.
    Ref< QV_STORE >  same = fromText( "a=text\nb=text\nsub.a=text\n" );
    Ref< QV_STRING > value( qvStoreValueCstr( same, "a", -1 ) );
    qvStringAppendChar( value.at(), U'!' );
    EXPECT_EQ( "a=text\nb=text\nsub.a=text\n", textFormOf( same ) );
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

// Threads read documents and release what others have read, all of it in the same slabs.
TEST( Store, ThreadsReadAndReleaseDocumentsAtOnce )
{
    std::string document;

    for( int i = 0; i < 3000; i++ )
        document += "key-" + std::to_string( 10000 + i ) + "=" + std::to_string( i ) + " value\n";

    Ref< QV_BUFFER >                bytes = bufferOf( document );
    std::mutex                      lock;
    std::vector< Ref< QV_STORE > >  read;
    std::vector< std::thread >      threads;
    std::vector< Ref< QV_STRING > > kept;

    for( int t = 0; t < 3; t++ )
        threads.emplace_back(
            [&]
            {
                for( int i = 0; i < 12; i++ )
                {
                    Ref< QV_STORE >  mine( qvStoreTryDecodeFromTextBuffer( bytes ) ), other;
                    Ref< QV_STRING > one( qvStoreValueAt( mine, i * 200 ) );

                    std::lock_guard< std::mutex > held( lock );
                    read.push_back( std::move( mine ) );
                    kept.push_back( std::move( one ) );

                    if( read.size() > 4 )
                    {
                        other = std::move( read.front() );
                        read.erase( read.begin() );
                    }
                }
            } );

    for( std::thread &thread : threads )
        thread.join();

    for( Ref< QV_STORE > &store : read )
        EXPECT_EQ( document, textFormOf( store ) );

    read.clear();

    for( Ref< QV_STRING > &value : kept )
        EXPECT_NE( std::string::npos, utf8( value ).find( " value" ) );
}

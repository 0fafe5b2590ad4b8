#include "qv_test_support.h"

#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_mem.h"

#include <random>
#include <thread>

using qv::Ref;
using namespace qv::test;

TEST( String, EmptyStringsAreOneObject )
{
    Ref< QV_STRING > empty( qvStringCreate() ), some = text( " \t" );

    // With nothing in it the block stays with the caller.
    QV_CHAR block[1];
    EXPECT_EQ( empty.get(), text( "" ).get() );
    EXPECT_EQ( empty.get(), Ref( qvStringCreateFromCharsUse( block, 0 ) ).get() );
    EXPECT_NE( empty.get(), Ref( qvStringCreateFromInner( some, 1, 0 ) ).get() );

    qvStringTrim( some.at() );
    qvStringAppendChars( some.at(), nullptr, 0 );
    qvStringToUpper( some.at() );
    EXPECT_EQ( empty.get(), some.get() );
}

// A long text that is cut down goes back where it began, if it began in the object's own memory.
TEST( String, MemoryIsGivenBack )
{
    for( QV_INT start : { 70, 500, 600 } )
    {
        Ref< QV_STRING > qvs( qvStringCreateFrom( text( std::u32string( size_t( start ), U'a' ) ) ) );

        while( qvs->length < 250000 )
            qvStringAppend( qvs.at(), text( "bcdefghijklmnopqrstuvwxyz" ) );

        qvStringDelOuter( qvs.at(), 100000, 3 );
        EXPECT_LE( qvs->size(), std::max< QV_INT >( 4 * qvs->home(), 2 * 4 * ( 3 + 64 ) ) );
        EXPECT_EQ( qvs->home() > 0, qvs->size() == 4 * qvs->home() );
    }
}

TEST( String, SplitsAtRunsOfWhiteSpace )
{
    auto split = []( const char *qvs, QV_INT maxParts )
    { return textOf( Ref( qvStringSplitWhitespace( text( qvs ), maxParts ) ).get() ); };

    EXPECT_EQ( "<>", split( "", -1 ) );
    EXPECT_EQ( "<>", split( " \t ", 3 ) );
    EXPECT_EQ( "<a, b, c>", split( " a \t b\u3000c ", -1 ) );
    EXPECT_EQ( "<a,  b>", split( "a  b", 2 ) );
    EXPECT_EQ( "<a, b  c>", split( " a b  c ", 2 ) );
    EXPECT_EQ( "<a b>", split( " a b ", 1 ) );
}

// Many parts share memory. Each stays what it was whichever of the others go, on which thread they do, and whether they
// have outgrown the memory.
TEST( String, PartsOutliveOneAnother )
{
    std::vector< std::u32string > model( 300 );
    std::u32string                whole;

    for( size_t i = 0; i < model.size(); i++ )
    {
        model[i].assign( i == 7 ? 600 : i * 17 % 40, char32_t( U'a' + i % 26 ) );
        whole += ( i == 0 ? U"" : U"," ) + model[i];
    }

    Ref< QV_VECTOR > vec( qvStringSplitChar( text( whole ), U',', -1 ) );
    ASSERT_EQ( QV_INT( model.size() ), qvVectorLength( vec ) );

    auto takeHalf = [&]( size_t half )
    {
        std::vector< std::pair< size_t, Ref< QV_STRING > > > parts;

        for( size_t i = half; i < model.size(); i += 2 )
        {
            parts.emplace_back( i, qvStringFrom( qvVectorObjAt( vec, QV_INT( i ) ) ) );
            EXPECT_EQ( QV_INT( model[i].size() ) * 4, allocated( parts.back().second.get() ) );
        }

        return parts;
    };
    auto thin = [&]( std::vector< std::pair< size_t, Ref< QV_STRING > > > parts )
    {
        std::shuffle( parts.begin(), parts.end(), std::mt19937( 1 ) );

        for( auto &[i, part] : parts )
        {
            if( i % 4 == 0 )
                qvStringAppendChars( part.at(), U"123456789", 9 );

            EXPECT_EQ( model[i], qv::test::chars( part ).substr( 0, model[i].size() ) );
            part.reset();
        }
    };

    auto even = takeHalf( 0 ), odd = takeHalf( 1 );
    vec.reset();
    std::thread other( thin, std::move( even ) );
    thin( std::move( odd ) );
    other.join();
    settle();
}

TEST( String, PartsAreCountedWhereNoListsAreKept )
{
    withoutLibrary(
        []
        {
            qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr );

            for( size_t count : { 1, 8, 9, 31, 32, 33, 100 } )
            {
                QV_INT           before = qvSortObjects( qvStringSort() );
                Ref< QV_VECTOR > vec( qvStringSplitChar( text( std::string( count, ';' ) + "last" ), U';', -1 ) );
                EXPECT_EQ( before + 1, qvSortObjects( qvStringSort() ) ); // all but the last are the empty one
                vec.reset( qvStringSplitWhitespace( text( std::string( count, 'a' ) + " b" ), -1 ) );
                EXPECT_EQ( before + 2, qvSortObjects( qvStringSort() ) );
            }

            qvRuntimeShutdown();
        } );
}

TEST( String, ScansValuesInARange )
{
    Ref< QV_STRING > qvs     = text( "x12345 1.5 true" );
    QV_INT           integer = 0, consumed = 0;
    QV_REAL          real  = 0;
    QV_BOOL          truth = QV_FALSE;

    EXPECT_TRUE( qvStringScanInt( qvs, 1, 3, 10, &integer, &consumed ) && integer == 123 && consumed == 3 );
    EXPECT_TRUE( qvStringScanReal( qvs, 7, 100, 10, &real, nullptr ) && real == 1.5 );
    EXPECT_TRUE( qvStringScanBool( qvs, 11, -1, QV_FALSE, &truth, nullptr ) && truth );
    EXPECT_FALSE( qvStringScanBool( qvs, 15, -1, QV_TRUE, &truth, nullptr ) );
}

TEST( String, ConvertsFromAndToOutsideText )
{
    Ref< QV_STRING > qvs = text( "\u00E9t" ), empty( qvStringCreate() );
    QV_INT           length;

    auto given = [&]( auto *block )
    {
        std::basic_string< std::remove_pointer_t< decltype( block ) > > result( block, size_t( length ) );
        qvMemFree( block );
        return result;
    };

    EXPECT_EQ( std::string( "\u00E9t\0", 4 ), given( qvStringConvertToCstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( "?t", given( qvStringConvertToAscii( qvs, QV_FALSE, &length ) ) );
    EXPECT_EQ( std::wstring( L"\xE9t\0", 3 ), given( qvStringConvertToWcstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( std::string( 1, '\0' ), given( qvStringConvertToAscii( empty, QV_TRUE, &length ) ) );
    EXPECT_EQ( nullptr, qvStringConvertToUtf8( empty, QV_FALSE, &length ) );
    EXPECT_EQ( 0, length );
    EXPECT_EQ( "\uFFFDt", take( qvStringCreateFromAscii( "\xE9t", -1 ) ) );
    EXPECT_EQ( "\u00E9", take( qvStringCreateFromWcstr( L"\xE9", -1 ) ) );

    // Long text is taken as ASCII first: another character turns up at every place of the vectors and behind them.
    for( size_t count : { 31, 32, 97, 130, 511, 513, 700 } )
        for( size_t at = count; at-- > 0; at = at > 100 ? at - 37 : at )
        {
            std::string      utf8 = std::string( at, 'a' ) + "\u4E2D" + std::string( count - at - 1, 'z' );
            Ref< QV_STRING > decoded( qvStringCreateFromUtf8( utf8.data(), QV_INT( utf8.size() ) ) );
            ASSERT_EQ(
                std::u32string( at, U'a' ) + U"\u4E2D" + std::u32string( count - at - 1, U'z' ),
                qv::test::chars( decoded ) );
            ASSERT_EQ( QV_INT( count ) * 4, allocated( decoded.get() ) );
            ASSERT_EQ( utf8 + '\0', given( qvStringConvertToUtf8( decoded, QV_TRUE, &length ) ) );
        }

    // Of what is cut off, nothing may be left.
    EXPECT_EQ( 599, qvStringLength( text( std::string( 600, '\xE4' ) ) ) );
}

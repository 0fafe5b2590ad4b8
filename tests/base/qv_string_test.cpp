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
using testing::ElementsAre;

namespace
{
QV_INT size( const std::u32string &text )
{
    return static_cast< QV_INT >( text.size() );
}

// The texts of a Vector of Strings, which the call takes over.
std::vector< std::string > parts( QV_VECTOR *owned )
{
    Ref< QV_VECTOR >           vec( owned );
    std::vector< std::string > result;

    for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
        result.push_back( utf8( qvStringFrom( qvVectorBacking( vec )[i] ) ) );

    return result;
}

// The text that a mutator makes of another one.
template< class Mutator >
std::string changed( std::string_view before, Mutator mutator )
{
    Ref< QV_STRING > qvs = text( before );
    mutator( qvs.at() );

    return utf8( qvs );
}
} // namespace

TEST( String, EmptyStrings )
{
    Ref< QV_STRING > empty( qvStringCreate() ), some = text( " \t" );

    // With nothing in it the block stays with the caller.
    QV_CHAR block[1];
    EXPECT_EQ( empty.get(), text( "" ).get() );
    EXPECT_EQ( empty.get(), Ref< QV_STRING >( qvStringCreateFromCharsCopy( nullptr, 0 ) ).get() );
    EXPECT_EQ( empty.get(), Ref< QV_STRING >( qvStringCreateFromCharsUse( block, 0 ) ).get() );
    EXPECT_NE( empty.get(), Ref< QV_STRING >( qvStringCreateFromInner( some, 1, 0 ) ).get() );

    qvStringTrim( some.at() );
    EXPECT_EQ( empty.get(), some.get() );
    qvStringAppendChars( some.at(), nullptr, 0 );
    qvStringToUpper( some.at() );
    EXPECT_EQ( empty.get(), some.get() );
}

// The String itself as one of the texts, which is read as it was.
TEST( String, DelimitedTextsMayBeItsOwn )
{
    for( const char *before : { "", "ab" } )
    {
        EXPECT_EQ(
            *before ? "ab;ab" : "",
            changed( before, []( QV_STRING **qvs ) { qvStringDelimitedAppendCharDelimiter( qvs, *qvs, U';' ); } ) );
        EXPECT_EQ(
            *before ? "ababab" : "",
            changed( before, []( QV_STRING **qvs ) { qvStringDelimitedPrepend( qvs, *qvs, *qvs ); } ) );
    }
}

/* Changing ------------------------------------------------------------------------------------------------------- */

// A long text that is cut down gives its memory back, and goes where it began, if it began in the object's own memory.
TEST( String, MemoryIsGivenBack )
{
    for( QV_INT start : { 70, 500, 600 } )
    {
        Ref< QV_STRING > qvs( qvStringCreateFrom( text( std::u32string( size_t( start ), U'a' ) ) ) );

        while( qvs->length < 250000 )
            qvStringAppendChars( qvs.at(), U"bcdefghijklmnopqrstuvwxyzbcdefghijklmnopqrstuvwxyz", 50 );

        qvStringDelOuter( qvs.at(), 100000, 3 );
        EXPECT_LE( qvs->size(), std::max< QV_INT >( 4 * qvs->home(), 2 * 4 * ( 3 + 64 ) ) );
        EXPECT_EQ( qvs->home() > 0, qvs->size() == 4 * qvs->home() );
    }
}

TEST( String, SplitsAtRunsOfWhiteSpace )
{
    auto split = []( const char *qvs, QV_INT maxParts )
    { return parts( qvStringSplitWhitespace( text( qvs ), maxParts ) ); };

    EXPECT_THAT( split( "", -1 ), ElementsAre( "" ) );
    EXPECT_THAT( split( " \t ", 3 ), ElementsAre( "" ) );
    EXPECT_THAT(
        split(
            " a \t b\xE3\x80\x80"
            "c ",
            -1 ),
        ElementsAre( "a", "b", "c" ) );
    EXPECT_THAT( split( "a  b", 2 ), ElementsAre( "a", " b" ) );
    EXPECT_THAT( split( " a b  c ", 2 ), ElementsAre( "a", "b  c" ) );
    EXPECT_THAT( split( " a b ", 1 ), ElementsAre( "a b" ) );
    EXPECT_THAT( split( "a b", 2 ), ElementsAre( "a", "b" ) );
}

// Many parts share memory. Each stays what it was whichever of the others go, on which thread they do, and whether they
// have outgrown the memory.
TEST( String, PartsOutliveOneAnother )
{
    std::mt19937                    random( 1 );
    std::vector< std::u32string >   model( 300 );
    std::u32string                  whole;
    std::vector< Ref< QV_STRING > > live[2];

    for( size_t i = 0; i < model.size(); i++ )
    {
        model[i].assign( i == 7 ? 600 : random() % 40, U'a' + random() % 26 );
        whole += ( i == 0 ? U"" : U"," ) + model[i];
    }

    Ref< QV_VECTOR > vec( qvStringSplitChar( text( whole ), U',', -1 ) );
    ASSERT_EQ( QV_INT( model.size() ), qvVectorLength( vec ) );

    for( size_t i = 0; i < model.size(); i++ )
        live[i % 2].emplace_back( qvStringFrom( qvVectorObjAt( vec, QV_INT( i ) ) ) );

    vec.reset();

    auto thin = [&]( size_t half )
    {
        std::mt19937 own( static_cast< unsigned >( half ) );

        for( size_t i = 0; i < live[half].size(); i++ )
        {
            EXPECT_EQ( size( model[i * 2 + half] ) * 4, allocated( live[half][i].get() ) );

            if( own() % 4 == 0 )
                qvStringAppendChars( live[half][i].at(), U"123456789", 9 );
        }

        for( size_t left = live[half].size(); left > 0; left-- )
        {
            size_t                i   = own() % live[half].size();
            const std::u32string &was = model[i * 2 + half];

            if( live[half][i] )
            {
                EXPECT_EQ( was, qv::test::chars( live[half][i] ).substr( 0, was.size() ) );
            }

            live[half][i].reset();
        }
    };

    std::thread other( thin, 1 );
    thin( 0 );
    other.join();
    settle();
}

TEST( String, PartsAreCountedWhereNoListsAreKept )
{
    withoutLibrary(
        []
        {
            qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr );

            for( size_t count : { 1, 5, 8, 9, 31, 32, 33, 100 } )
            {
                QV_INT           before = qvSortObjects( qvStringSort() );
                Ref< QV_VECTOR > vec( qvStringSplitChar( text( std::string( count, ';' ) + "last" ), U';', -1 ) );
                EXPECT_EQ( before + 1, qvSortObjects( qvStringSort() ) ); // all but the last are the empty one
                vec.reset( qvStringSplitWhitespace( text( std::string( count, 'a' ).append( " b" ) ), -1 ) );
                EXPECT_EQ( before + 2, qvSortObjects( qvStringSort() ) );
            }

            qvRuntimeShutdown();
        } );
}

/* Reading and converting ----------------------------------------------------------------------------------------- */

TEST( String, ScansValuesInARange )
{
    Ref< QV_STRING > qvs     = text( "x12345 1.5 true" );
    QV_INT           integer = 0, consumed = 0;
    QV_REAL          real  = 0;
    QV_BOOL          truth = QV_FALSE;

    EXPECT_TRUE( qvStringScanInt( qvs, 1, 3, 10, &integer, &consumed ) );
    EXPECT_TRUE( qvStringScanReal( qvs, 7, 100, 10, &real, nullptr ) );
    EXPECT_TRUE( qvStringScanBool( qvs, 11, -1, QV_FALSE, &truth, nullptr ) );
    EXPECT_THAT(
        ( std::vector< double >{ double( integer ), double( consumed ), real, double( truth ) } ),
        ElementsAre( 123, 3, 1.5, 1 ) );
    EXPECT_FALSE( qvStringScanBool( qvs, 15, -1, QV_TRUE, &truth, nullptr ) );
}

TEST( String, ConvertsFromAndToOutsideText )
{
    Ref< QV_STRING > qvs = text( "\xC3\xA9t" ), empty( qvStringCreate() );
    QV_INT           length;

    auto given = [&]( auto *block )
    {
        std::basic_string< std::remove_pointer_t< decltype( block ) > > result( block, size_t( length ) );
        qvMemFree( block );
        return result;
    };

    EXPECT_EQ( std::string( "\xC3\xA9t\0", 4 ), given( qvStringConvertToCstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( "?t", given( qvStringConvertToAscii( qvs, QV_FALSE, &length ) ) );
    EXPECT_EQ( std::wstring( L"\xE9t\0", 3 ), given( qvStringConvertToWcstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( std::string( 1, '\0' ), given( qvStringConvertToAscii( empty, QV_TRUE, &length ) ) );
    EXPECT_EQ( nullptr, qvStringConvertToUtf8( empty, QV_FALSE, &length ) );
    EXPECT_EQ( 0, length );
    qvMemFree( qvStringConvertToUtf8( qvs, QV_FALSE, nullptr ) );

    EXPECT_EQ(
        "\xEF\xBF\xBD"
        "a",
        take( qvStringCreateFromAscii(
            "\xE9"
            "a",
            -1 ) ) );
    EXPECT_EQ( "\xC3\xA9", take( qvStringCreateFromWcstr( L"\xE9", -1 ) ) );
    EXPECT_EQ( qvs.get(), Ref< QV_STRING >( qvStringToString( qvs ) ).get() );

    // Long text is taken as ASCII first: another character turns up at every place of the vectors and behind them.
    for( size_t bytes : { 31, 32, 97, 130, 511, 513, 700 } )
        for( size_t at = bytes; at-- > 0; at = at > 100 ? at - 37 : at )
        {
            std::string utf8 = std::string( at, 'a' ) + "\xE4\xB8\xAD" + std::string( bytes - at - 1, 'z' );

            Ref< QV_STRING > decoded( qvStringCreateFromUtf8( utf8.data(), QV_INT( utf8.size() ) ) );
            ASSERT_EQ(
                std::u32string( at, U'a' ) + U"\x4E2D" + std::u32string( bytes - at - 1, U'z' ),
                qv::test::chars( decoded ) );
            ASSERT_EQ( QV_INT( bytes ) * 4, allocated( decoded.get() ) );
            ASSERT_EQ( utf8 + '\0', given( qvStringConvertToUtf8( decoded, QV_TRUE, &length ) ) );
            ASSERT_EQ( utf8, given( qvStringConvertToUtf8( decoded, QV_FALSE, &length ) ) );
        }

    // Of what is cut off, nothing may be left.
    EXPECT_EQ( 599, qvStringLength( text( std::string( 600, '\xE4' ) ) ) );
}

/* Contracts ------------------------------------------------------------------------------------------------------ */

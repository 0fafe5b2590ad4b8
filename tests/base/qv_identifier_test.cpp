#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_identifier.h"

#include <set>
#include <vector>

using qv::Ref;
using namespace qv::test;

TEST( Identifier, IsRandomAndPrintable )
{
    std::set< std::string > texts;
    std::set< char >        digits[32];

    for( int i = 0; i < 1000; i++ )
    {
        Ref< QV_IDENTIFIER > ident( qvIdentifierCreate() );
        std::string          name = textOf( ident.get() );
        ASSERT_EQ( 32u, name.size() );
        texts.insert( name );

        for( size_t place = 0; place < 32; place++ )
            digits[place].insert( name[place] );

        Ref< QV_STRING >     qvs( qvIdentifierString( ident ) );
        Ref< QV_BUFFER >     buffer( qvIdentifierBuffer( ident ) );
        Ref< QV_IDENTIFIER > again( qvIdentifierTryCreateFromString( qvs ) );
        Ref< QV_IDENTIFIER > fromBuffer( qvIdentifierTryCreateFromBuffer( buffer ) );
        ASSERT_EQ( 32, qvBufferLength( buffer ) );
        ASSERT_TRUE( qvIdentifierEquals( ident, again ) );
        ASSERT_TRUE( qvIdentifierEquals( ident, fromBuffer ) );
    }

    EXPECT_EQ( 1000u, texts.size() );

    for( const std::set< char > &seen : digits )
        EXPECT_EQ( "0123456789ABCDEF", std::string( seen.begin(), seen.end() ) );
}

TEST( Identifier, TakesNothingElse )
{
    const std::string GOOD = "0123456789ABCDEF0123456789ABCDEF";
    EXPECT_NE( nullptr, Ref< QV_IDENTIFIER >( qvIdentifierTryCreateFromString( text( GOOD ) ) ).get() );

    std::vector< std::string > bad = { "", GOOD.substr( 1 ), GOOD + "0" };

    for( const char *character : { "a", "f", "G", "/", ":", "@", " ", "\xc3\xa4", "\xef\xbc\x90" } )
        for( size_t at : { 0, 15, 31 } )
            bad.push_back( GOOD.substr( 0, at ) + character + GOOD.substr( at + 1 ) );

    for( const std::string &name : bad )
    {
        Ref< QV_BUFFER > buffer( qvBufferCreateFromBytesCopy( name.data(), static_cast< QV_INT >( name.size() ) ) );
        EXPECT_EQ( nullptr, qvIdentifierTryCreateFromString( text( name ) ) ) << name;
        EXPECT_EQ( nullptr, qvIdentifierTryCreateFromBuffer( buffer ) ) << name;
    }

    Ref< QV_IDENTIFIER > a( qvIdentifierTryCreateFromString( text( GOOD ) ) );
    Ref< QV_IDENTIFIER > b( qvIdentifierTryCreateFromString( text( "FEDCBA9876543210FEDCBA9876543210" ) ) );
    EXPECT_EQ( -1, qvIdentifierCompare( a, b ) );
    EXPECT_EQ( 1, qvIdentifierCompare( b, a ) );
}

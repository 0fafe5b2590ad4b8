#include "qv_test_stream.h"

#include "qv/base/qv_identifier.h"

#include <set>

using qv::Ref;
using namespace qv::test;

TEST( Identifier, IsRandomAndPrintable )
{
    std::set< std::string > texts;
    std::set< char >        digits[32];
    Ref< QV_IDENTIFIER >    last( qvIdentifierCreate() );

    for( int i = 0; i < 1000; i++ )
    {
        Ref< QV_IDENTIFIER > ident( qvIdentifierCreate() );
        std::string          name = textOf( ident.get() );
        ASSERT_EQ( 32u, name.size() );
        texts.insert( name );

        for( size_t place = 0; place < 32; place++ )
            digits[place].insert( name[place] );

        ASSERT_EQ( name, take( qvIdentifierString( ident ) ) );
        ASSERT_EQ( name, bytes( Ref( qvIdentifierBuffer( ident ) ) ) );
        ASSERT_TRUE( qvIdentifierEquals( ident, Ref( qvIdentifierTryCreateFromString( text( name ) ) ) ) );
        ASSERT_TRUE( qvIdentifierEquals( ident, Ref( qvIdentifierTryCreateFromBuffer( buffer( name ) ) ) ) );
        ASSERT_EQ( name < textOf( last.get() ) ? -1 : 1, qvIdentifierCompare( ident, last ) );
        last.reset( ident.give() );
    }

    EXPECT_EQ( 1000u, texts.size() );

    for( const std::set< char > &seen : digits )
        EXPECT_EQ( "0123456789ABCDEF", std::string( seen.begin(), seen.end() ) );
}

TEST( Identifier, TakesNothingElse )
{
    const std::string          GOOD = "0123456789ABCDEF0123456789ABCDEF";
    std::vector< std::string > bad  = { "", GOOD.substr( 1 ), GOOD + "0" };

    for( const char *character : { "a", "f", "G", "/", ":", "@", " ", "\u00E4", "\uFF10" } )
        for( size_t at : { 0, 15, 31 } )
            bad.push_back( GOOD.substr( 0, at ) + character + GOOD.substr( at + 1 ) );

    for( const std::string &name : bad )
    {
        EXPECT_EQ( nullptr, qvIdentifierTryCreateFromString( text( name ) ) ) << name;
        EXPECT_EQ( nullptr, qvIdentifierTryCreateFromBuffer( buffer( name ) ) ) << name;
    }
}

#include "qv_test_support.h"

#include "qv/unicode/qv_unicode_cccv.h"
#include "qv/unicode/qv_unicode_cdmt.h"
#include "qv/unicode/qv_unicode_genc.h"
#include "qv/unicode/qv_unicode_properties.h"
#include "qv/unicode/qv_unicode_script.h"

#include <set>

using namespace qv::test;
using qv::Ref;

namespace
{
using Forward  = QV_STRING *(*)( QV_INT value );
using Backward = QV_INT ( * )( QV_STRING *name );

std::string lower( std::string name )
{
    for( char &ch : name )
        ch = static_cast< char >( std::tolower( ch ) );

    return name;
}

// Every value has a name of its own, which leads back to it; in another spelling only where the case does not count.
void roundTrip( QV_INT first, QV_INT last, Forward name, Backward exact, Backward caseFold )
{
    std::set< std::string > names;

    for( QV_INT value = first; value <= last; value++ )
    {
        std::string each = take( name( value ) );
        EXPECT_TRUE( names.insert( each ).second ) << each;
        EXPECT_EQ( value, exact( text( each ) ) ) << each;
        EXPECT_EQ( value, caseFold( text( each ) ) ) << each;
        EXPECT_EQ( value, caseFold( text( lower( each ) ) ) ) << each;

        EXPECT_EQ( lower( each ) == each ? value : -1, exact( text( lower( each ) ) ) ) << each;

        EXPECT_EQ( -1, caseFold( text( each + "x" ) ) );
        EXPECT_EQ( -1, exact( text( each.substr( 0, each.size() - 1 ) ) ) );
    }

    EXPECT_EQ( -1, exact( text( "" ) ) );
    EXPECT_EQ( -1, caseFold( text( "" ) ) );
}

// The name of the constant is that of the macro.
#define EXPECT_SYM_NAME( function, constant ) EXPECT_EQ( #constant, take( function( constant ) ) )
} // namespace

TEST( UnicodeNames, GeneralCategories )
{
    roundTrip( 0, 29, qvUnicodeGencAbbreviation, qvUnicodeGencFromAbbreviation, qvUnicodeGencFromAbbreviationCaseFold );

    EXPECT_EQ( "Pi", take( qvUnicodeGencAbbreviation( QV_UNICODE_GENC_PUNCTUATION_INITIAL_QUOTE ) ) );
    EXPECT_EQ( "Punctuation, Initial", take( qvUnicodeGencDescription( QV_UNICODE_GENC_PUNCTUATION_INITIAL_QUOTE ) ) );
    EXPECT_SYM_NAME( qvUnicodeGencSymName, QV_UNICODE_GENC_OTHER_NOT_ASSIGNED );
    EXPECT_SYM_NAME( qvUnicodeGencSymName, QV_UNICODE_GENC_OTHER_PRIVATE_USE );
}

TEST( UnicodeNames, CombiningClasses )
{
    int named = 0;

    for( QV_INT cccv = 0; cccv < 256; cccv++ )
    {
        std::string      description = take( qvUnicodeCccvDescription( cccv ) );
        Ref< QV_STRING > symName( qvUnicodeCccvSymName( cccv ) );
        named += symName != nullptr;

        EXPECT_EQ( !symName, description == "Canonical Combining Class Value " + std::to_string( cccv ) );
    }

    EXPECT_EQ( 26, named );
    EXPECT_EQ( "Left attached (reordrant around single base character)", take( qvUnicodeCccvDescription( 208 ) ) );
    EXPECT_SYM_NAME( qvUnicodeCccvSymName, QV_UNICODE_CCCV_FIXED_POS_END );
}

TEST( UnicodeNames, DecompositionTypes )
{
    EXPECT_EQ( nullptr, qvUnicodeCdmtTag( QV_UNICODE_CDMT_NONE ) );
    EXPECT_EQ( nullptr, qvUnicodeCdmtTag( QV_UNICODE_CDMT_CANONICAL ) );
    roundTrip( 2, 17, qvUnicodeCdmtTag, qvUnicodeCdmtFromTag, qvUnicodeCdmtFromTagCaseFold );

    EXPECT_EQ( "<noBreak>", take( qvUnicodeCdmtTag( QV_UNICODE_CDMT_NOBREAK ) ) );
    EXPECT_EQ( "A vulgar fraction form.", take( qvUnicodeCdmtDescription( QV_UNICODE_CDMT_FRACTION ) ) );
    EXPECT_SYM_NAME( qvUnicodeCdmtSymName, QV_UNICODE_CDMT_COMPAT );
}

TEST( UnicodeNames, Scripts )
{
    roundTrip( 0, 92, qvUnicodeScriptName, qvUnicodeScriptFromName, qvUnicodeScriptFromNameCaseFold );

    EXPECT_EQ( QV_UNICODE_SCRIPT_OLD_TURKIC, qvUnicodeScriptFromName( text( "Old_Turkic" ) ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_GREEK, qvUnicodeScriptFromNameCaseFold( text( "GREE\u212A" ) ) );
    EXPECT_SYM_NAME( qvUnicodeScriptSymName, QV_UNICODE_SCRIPT_CANADIAN_ABORIGINAL );
}

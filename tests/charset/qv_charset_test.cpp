#include "qv_test_support.h"

#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset.h"

using qv::Ref;
using namespace qv::test;

TEST( Charset, EveryCharsetIsFoundByItsNamesAgain )
{
    for( QV_INT cs = 0; cs < 51; cs++ )
    {
        Ref< QV_STRING > name( qvCharsetToIanaName( cs ) );
        Ref< QV_VECTOR > names( qvCharsetIanaNames( cs ) );
        EXPECT_EQ( utf8( name ), textOf( qvVectorBacking( names )[0] ) );

        for( QV_INT i = 0; i < qvVectorLength( names ); i++ )
            EXPECT_EQ( cs, qvCharsetFromIanaName( Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( names, i ) ) ) ) );

        // The look-up leaves the caller's text as it is.
        EXPECT_TRUE( qvStringEquals( name, Ref< QV_STRING >( qvCharsetToIanaName( cs ) ) ) );

        // Where there is a code page, its bare number is a name, with a leading zero in one case.
        QV_INT cp = qvCharsetToWindowsCodePage( cs );
        EXPECT_EQ( cp == -1 ? -1 : cs, qvCharsetFromWindowsCodePage( cp == -1 ? QV_INT_MAX : cp ) );
        EXPECT_EQ( cp == -1 ? -1 : cs, qvCharsetFromIanaName( text( cp == 37 ? "037" : std::to_string( cp ) ) ) );
    }

    EXPECT_EQ( 15, qvVectorLength( Ref< QV_VECTOR >( qvCharsetIanaNames( QV_CHARSET_ISO_8859_1 ) ) ) );
    EXPECT_EQ( 1, qvVectorLength( Ref< QV_VECTOR >( qvCharsetIanaNames( QV_CHARSET_UTF_32 ) ) ) );
}

TEST( Charset, ChosenNamesOfChosenCharsets )
{
    const std::pair< const char *, QV_INT > CASES[] = {
        { "LATIN1", QV_CHARSET_ISO_8859_1 },
        { "ISO_8859-1:1987", QV_CHARSET_ISO_8859_1 },
        { "Utf-8", QV_CHARSET_UTF_8 },
        { "65001", QV_CHARSET_UTF_8 },
        { "1201", QV_CHARSET_UTF_16_BE },
        { "csUnicode", QV_CHARSET_UTF_16_BE },
        { "\u212Aoi8-r", QV_CHARSET_KOI_8R }, // the sign for Kelvin folds to a letter
        { "", -1 },
        { "utf-", -1 },
        { "windows-12588", -1 },
        { "utf-8 ", -1 },
        { "20127 us", -1 } };

    for( auto [name, charset] : CASES )
        EXPECT_EQ( charset, qvCharsetFromIanaName( text( name ) ) ) << name;

    for( const char *none : { "51", "-1", "QV_CHARSET_UTF", "qv_charset_utf_8", "" } )
        EXPECT_EQ( -1, qvCharsetFromString( text( none ) ) ) << none;

    EXPECT_EQ( QV_CHARSET_UTF_8, qvCharsetFromString( text( "\tQV_CHARSET_UTF_8 " ) ) );
    EXPECT_EQ( QV_CHARSET_UTF_32_LE, qvCharsetFromString( text( " 50" ) ) );
    EXPECT_EQ( "QV_CHARSET_MSFT_CP037", take( qvCharsetToString( QV_CHARSET_MSFT_CP037 ) ) );

    EXPECT_EQ( "UTF-16BE", take( qvCharsetToIanaName( QV_CHARSET_UTF_16_BE ) ) );
    EXPECT_BROKEN( qvCharsetFromWindowsCodePage( -1 ), "cp >= 0" );
    EXPECT_BROKEN( qvCharsetStringToBuffer( 51, text( "" ) ), "QV_CHARSET_OK( charset )" );
}

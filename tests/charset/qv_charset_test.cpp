#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_source.h"

#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
const QV_INT CHARSETS = 51;

QV_INT fromIanaName( std::string_view name )
{
    return qvCharsetFromIanaName( text( name ) );
}
} // namespace

TEST( Charset, EveryCharsetIsFoundByItsNamesAgain )
{
    for( QV_INT cs = 0; cs < CHARSETS; cs++ )
    {
        Ref< QV_STRING > name( qvCharsetToIanaName( cs ) );
        Ref< QV_VECTOR > names( qvCharsetIanaNames( cs ) );
        EXPECT_TRUE( qvStringEquals( name, Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( names, 0 ) ) ) ) );

        for( QV_INT i = 0; i < qvVectorLength( names ); i++ )
            EXPECT_EQ( cs, qvCharsetFromIanaName( Ref< QV_STRING >( qvStringFrom( qvVectorObjAt( names, i ) ) ) ) );

        // The look-up leaves the caller's text as it is.
        EXPECT_TRUE( qvStringEquals( name, Ref< QV_STRING >( qvCharsetToIanaName( cs ) ) ) );

        QV_INT cp = qvCharsetToWindowsCodePage( cs );
        if( cp != -1 )
        {
            EXPECT_EQ( cs, qvCharsetFromWindowsCodePage( cp ) );

            // Where there is a code page, its bare number is a name, with leading zeros in one case.
            EXPECT_EQ( cs, fromIanaName( cp == 37 ? "037" : std::to_string( cp ) ) ) << cp;
        }
    }

    EXPECT_EQ( 15, qvVectorLength( Ref< QV_VECTOR >( qvCharsetIanaNames( QV_CHARSET_ISO_8859_1 ) ) ) );
    EXPECT_EQ( 1, qvVectorLength( Ref< QV_VECTOR >( qvCharsetIanaNames( QV_CHARSET_UTF_32 ) ) ) );
    EXPECT_EQ( -1, qvCharsetFromWindowsCodePage( QV_INT_MAX ) );
}

TEST( Charset, ChosenNamesOfChosenCharsets )
{
    const struct
    {
        QV_INT                      charset, codePage;
        std::string                 ianaName;
        std::vector< const char * > aliases;
    } CASES[] = {
        { QV_CHARSET_ISO_8859_1, 28591, "ISO-8859-1", { "LATIN1", "ISO_8859-1:1987" } },
        { QV_CHARSET_UTF_8, 65001, "UTF-8", { "utf-8", "Utf-8", "65001" } },
        { QV_CHARSET_UTF_16_BE, 1201, "UTF-16BE", { "csUnicode" } } };

    for( const auto &c : CASES )
    {
        EXPECT_EQ( c.ianaName, take( qvCharsetToIanaName( c.charset ) ) );
        EXPECT_EQ( c.codePage, qvCharsetToWindowsCodePage( c.charset ) );

        for( const char *alias : c.aliases )
            EXPECT_EQ( c.charset, fromIanaName( alias ) ) << alias;
    }

    EXPECT_EQ( -1, fromIanaName( "utf-8 " ) );
    EXPECT_EQ( -1, fromIanaName( "" ) );
    EXPECT_EQ( -1, fromIanaName( "utf-" ) );
    EXPECT_EQ( -1, fromIanaName( "windows-12588" ) );
    EXPECT_EQ( QV_CHARSET_KOI_8R, fromIanaName( "\u212Aoi8-r" ) ); // the sign for Kelvin folds to a letter
    EXPECT_EQ( QV_CHARSET_UTF_8, qvCharsetFromString( text( "\tQV_CHARSET_UTF_8 " ) ) );
    EXPECT_EQ( QV_CHARSET_UTF_32_LE, qvCharsetFromString( text( " 50" ) ) );
    EXPECT_EQ( "QV_CHARSET_MSFT_CP037", take( qvCharsetToString( QV_CHARSET_MSFT_CP037 ) ) );

    for( const char *none : { "51", "-1", "QV_CHARSET_UTF", "qv_charset_utf_8", "" } )
        EXPECT_EQ( -1, qvCharsetFromString( text( none ) ) ) << none;
    EXPECT_EQ( -1, fromIanaName( "20127 us" ) );
}

TEST( Charset, BrokenContracts )
{
    Ref< QV_BUFFER_BYTE_SOURCE > bbs( qvBufferByteSourceCreate( Ref< QV_BUFFER >( qvBufferCreate() ) ) );
    Ref< QV_BYTE_SOURCE >        bytes( qvBufferByteSourceByteSource( bbs ) );

    EXPECT_BROKEN( qvCharsetFromWindowsCodePage( -1 ), "cp >= 0" );
    EXPECT_BROKEN( qvCharsetCreateCharSource( bytes, 51, 0 ), "QV_CHARSET_OK( charset )" );
}

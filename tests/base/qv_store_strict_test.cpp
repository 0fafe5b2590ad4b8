#include "qv_test_program.h"
#include "qv_test_stream.h"

#include "qv/base/qv_error.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_vector.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_source.h"

#include <random>

using qv::Ref;
using namespace qv::test;

namespace
{
// What is told of an Error: code, line, offset and subject.
std::string shown( QV_ERROR *error )
{
    Ref< QV_STRING > subject( qvErrorSubject( error ) );
    return std::to_string( qvErrorCode( error ) ) + " " + std::to_string( qvErrorLine( error ) ) + "@"
           + std::to_string( qvErrorOffset( error ) ) + " " + ( subject ? utf8( subject ) : "none" ) + "\n";
}

// The errors of a text, each in a line.
std::string errorsOf( const std::string &document )
{
    Ref< QV_VECTOR > errors( qvVectorCreate() );
    Ref< QV_STORE >  store( qvStoreTryDecodeFromTextBufferWithErrors( buffer( document ), errors.at() ) );
    Ref< QV_STORE >  tolerant( qvStoreTryDecodeFromTextBuffer( buffer( document ) ) );
    Ref< QV_STORE >  strict( qvStoreTryDecodeFromTextBufferStrict( buffer( document ) ) );
    std::string      result;

    EXPECT_TRUE( qvStoreEquals( tolerant, store ) ) << document;

    for( QV_INT i = 0; i < qvVectorLength( errors ); i++ )
        result += shown( qvErrorFrom( qvVectorBacking( errors )[i] ) );

    // The strict form fails with the first.
    EXPECT_EQ( result.empty(), strict && qvStoreEquals( tolerant, strict ) ) << document;

    if( !result.empty() )
    {
        EXPECT_FALSE( strict );
        EXPECT_EQ( 0, result.find( shown( Ref< QV_ERROR >( qvErrorLast() ) ) ) ) << document;
    }

    return result;
}
} // namespace

TEST( StoreStrict, ListsTheLinesThatAreNotUnderstood )
{
    const std::string bad    = std::to_string( QV_ERROR_BAD_DOCUMENT ) + " ";
    const std::string deeper = std::to_string( QV_ERROR_TOO_DEEP ) + " ";
    const std::string text   = std::to_string( QV_ERROR_BAD_TEXT ) + " ";
    std::string       tooDeep;

    for( int level = 0; level < 101; level++ )
        tooDeep += "a.";

    const std::pair< std::string, std::string > CASES[] = {
        { "", "" },
        { "a=1\n\n \t\n# a comment\n \u00A0#=b\nb.c.\n\uFEFF", bad + "7@32 \uFEFF\n" },
        { "\uFEFFa=1\nx y=2\n", bad + "2@7 x y=2\n" },
        { "a\r\nb\rc\vd\fe\u0085f\u2028g\u2029h=\n", bad + "1@0 a\n" + bad + "2@3 b\n" + bad + "3@5 c\n" + bad
                                                         + "4@7 d\n" + bad + "5@9 e\n" + bad + "6@12 f\n" + bad
                                                         + "7@16 g\n" },
        { "ä=1\n=2\na.=3\na.b\n\u2002a =%ß\n.",
          bad + "1@0 ä=1\n" + bad + "2@5 =2\n" + bad + "3@8 a.=3\n" + bad + "4@13 a.b\n" + bad + "6@27 .\n" },
        { tooDeep + "=1\n" + tooDeep.substr( 4 ) + "=1\n",
          deeper + "1@0 " + tooDeep + "=1\n" + bad + "2@205 " + tooDeep.substr( 4 ) + "=1\n" },
    };

    for( const auto &[document, expected] : CASES )
        EXPECT_EQ( expected, errorsOf( document ) ) << document;

    // Takes minutes if each line looks for a line feed anew.
    EXPECT_EQ( bad + "400001@400000 b\n", errorsOf( std::string( 400000, '\r' ) + "b" ) );

    // No UTF-8: a byte alone, an overlong form, a surrogate, and a sequence that the text cuts off. How the subject shows
    // them is the decoder's matter.
    std::string told = errorsOf( "a=\xFC\nb=1\nc=\xC0\xAF\nd=ä\xED\xA0\x80\n#\xE2\x82" ), places;

    for( size_t at = 0; at != std::string::npos && at < told.size(); at = told.find( '\n', at ) + 1 )
        places += told.substr( at, told.find( ' ', at + 3 ) - at ) + "\n";

    EXPECT_EQ( text + "1@2\n" + text + "3@10\n" + text + "4@17\n" + text + "5@22\n", places );
}

TEST( StoreStrict, AgreesWithTheReaderAboutEveryLine )
{
    // Lines of a few characters that mean much, in any order, long enough for the kernels.
    // clang-format off
    const char *const PARTS[] = { "a", "b-", "=", ".", " ", "#", "%", "\n", "\n", "\r", "\r\n", "ä", "\u0085", "\u2028",
                                  "abcdefghijklmnopq.rstuvw", "\U0001F600" };
    // clang-format on
    std::mt19937 random( 7 );

    for( int round = 0; round < 3000; round++ )
    {
        std::string document, expected;

        for( int parts = static_cast< int >( random() % 40 ); parts > 0; parts-- )
            document += PARTS[random() % std::size( PARTS )];

        Ref< QV_NLF_LINE_SOURCE > lines( qvNlfLineSourceCreateFromString( text( document ), 255 ) );
        Ref< QV_LINE_SOURCE >     source( qvNlfLineSourceLineSource( lines ) );
        size_t                    at = 0;

        for( QV_INT number = 1; Ref< QV_STRING > line{ qvLineSourceRead( source ) }; number++ )
        {
            std::string plain = utf8( line );
            QV_INT      kind  = qv___StoreParseLine( line, nullptr, nullptr );
            size_t      first = plain.find_first_not_of( " " );

            if( kind != QV___STORE_LINE_VALUE && kind != QV___STORE_LINE_STORE && first != std::string::npos
                && plain[first] != '#' )
                expected += std::to_string( QV_ERROR_BAD_DOCUMENT ) + " " + std::to_string( number ) + "@"
                            + std::to_string( at ) + " " + plain + "\n";

            at += plain.size();
            at += document.compare( at, 2, "\r\n" ) == 0 || document[at] == '\xC2' ? 2 : document[at] == '\xE2' ? 3 : 1;
        }

        ASSERT_EQ( expected, errorsOf( document ) ) << document;
    }
}

TEST( StoreStrict, FilesAreNamed )
{
    Ref< QV_STRING > fn = text( path( "strict.conf" ) ), missing = text( path( "strict" ) );
    Ref< QV_VECTOR > errors( qvVectorCreate() );
    write( "strict.conf", "a=1\nb" );

    Ref< QV_STORE > store( qvStoreTryReadTextFile( fn ) ),
        listed( qvStoreTryReadTextFileWithErrors( fn, errors.at() ) );
    EXPECT_TRUE( qvStoreEquals( store, listed ) );
    ASSERT_EQ( 1, qvVectorLength( errors ) );
    EXPECT_EQ( utf8( fn ) + ":2: neither . nor = follows an address", textOf( qvVectorBacking( errors )[0] ) );

    EXPECT_FALSE( qvStoreTryReadTextFileStrict( fn ) );
    EXPECT_EQ( textOf( qvVectorBacking( errors )[0] ), take( qvErrorLastText() ) );

    for( auto read : { qvStoreTryReadTextFile, qvStoreTryReadTextFileStrict, qvStoreTryReadBinaryFile } )
    {
        qvErrorClear();
        EXPECT_FALSE( read( missing ) );
        EXPECT_EQ( utf8( missing ) + ": cannot be opened: No such file or directory", take( qvErrorLastText() ) );
    }

    // A document of "a=1" in the binary form, cut off, with more, with a bad address and with a sub-store too deep.
    const std::string whole = { 1, 1, 1, 1, 'a', 1, 1, 1, '1', 0 };
    std::string       deep;

    for( int i = 0; i < 100; i++ )
        deep += std::string( "\1\1\1\1a\0\1", 7 );

    const std::tuple< std::string, QV_INT, std::string > CASES[] = {
        { whole.substr( 0, 8 ), QV_ERROR_BAD_DOCUMENT, "@8: truncated, or no document in binary form" },
        { whole + "x", QV_ERROR_BAD_DOCUMENT, "@10: bytes behind the end of the document" },
        { "\1\1\1\1 ", QV_ERROR_BAD_DOCUMENT, "@5: truncated, or no document in binary form" },
        { deep + whole, QV_ERROR_TOO_DEEP, "@700: nested too deep" },
    };

    for( const auto &[bytes, code, expected] : CASES )
    {
        write( "strict.bin", bytes );
        EXPECT_FALSE( qvStoreTryReadBinaryFile( text( path( "strict.bin" ) ) ) );
        EXPECT_EQ( path( "strict.bin" ) + expected, take( qvErrorLastText() ) );
        EXPECT_EQ( code, qvErrorLastCode() );
    }

    write( "strict.bin", whole );
    EXPECT_TRUE( qvStoreEquals(
        Ref< QV_STORE >( qvStoreTryReadBinaryFile( text( path( "strict.bin" ) ) ) ),
        Ref< QV_STORE >( qvStoreTryDecodeFromTextBuffer( buffer( "a=1" ) ) ) ) );
    qvErrorClear();
}

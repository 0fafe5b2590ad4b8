#include "qv/qv.hpp"

#include "qv_test_program.h"
#include "qv_test_support.h"

using namespace qv::literals;

namespace
{
// Lines with a bar after each, and the error.
std::string readAll( qv::Lines lines )
{
    std::string all;

    for( const qv::String &line : lines )
        all += line.str() + "|";

    std::optional< qv::Error > error = lines.error();
    return error ? all + "!" + error->text().str() : all;
}
} // namespace

TEST( Lines, ComeFromFilesAndTexts )
{
    qv::test::write( "lines", "a\r\n\xe4\rb\n\nlast" );
    qv::String path( qv::test::path( "lines" ) );

    EXPECT_EQ( "a|ä|b||last|", readAll( qv::lines( path, QV_CHARSET_ISO_8859_1 ) ) );
    EXPECT_EQ( "", readAll( qv::linesOf( "" ) ) );
    EXPECT_EQ( "a\r|b|", readAll( qv::linesOf( "a\r\nb\n", QV_NLF_FLAG_LF ) ) );

    std::string strict = readAll( qv::lines( path, QV_CHARSET_UTF_8, QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER ) );
    EXPECT_THAT( strict, testing::MatchesRegex( "(a\\|)?!.*lines:[12]: cannot be read" ) );
    EXPECT_THAT( readAll( qv::lines( "/nowhere/x" ) ), "!/nowhere/x: cannot be opened" );
}

TEST( Results, HoldAValueOrAnError )
{
    qv::String path( qv::test::path( "result.conf" ) );

    EXPECT_FALSE( qv::writeFile( path, qv::Buffer( "a=1\n" ) ) );
    EXPECT_EQ( "/nowhere/x: cannot be written", qv::writeFile( "/nowhere/x", {} )->text() );
    EXPECT_EQ( qv::readStore( path )->get< int >( "a" ), 1 );

    qv::Result< qv::Buffer > bytes = qv::readFile( path ), none = qv::readFile( "/nowhere/x" );
    EXPECT_EQ( 4, bytes->size() );
    EXPECT_EQ( "/nowhere/x: cannot be read", none.error().text() );
    EXPECT_EQ( none.error().text(), qv::firstError( bytes, none, bytes )->text() );
    EXPECT_FALSE( qv::firstError( bytes, bytes ) );
    EXPECT_EQ( 0, std::move( none ).valueOr( {} ).size() );
    EXPECT_BROKEN( (void)qv::readFile( "/nowhere/x" )->size(), "value" );
    EXPECT_BROKEN( (void)bytes.error(), "error" );
    EXPECT_EQ( "7@9: bad", ( qv::Error{ "bad", {}, 7, 9 }.text() ) );
    EXPECT_FALSE( qv::readFile( path, 3 ) );
}

TEST( Options, SetVariablesAndTellWhatIsWrong )
{
    qv::String  name;
    QV_INT      count = 0;
    QV_REAL     share = 0;
    bool        all   = false;
    qv::Options options( "test WORD..." );
    options.add( U'a', "all", all, "all of it" ).add( U'n', "name", name, "the name" );
    options.add( U'c', "count", count, "how many" ).add( U'\0', "share", share, "how much" );

    auto read = [&]( std::vector< std::string > words ) -> std::string
    {
        std::vector< char * > argv = { nullptr };

        for( std::string &word : words )
            argv.push_back( word.data() );

        qv::Result< qv::Vector< qv::String > > rest = options.read( static_cast< int >( argv.size() ), argv.data() );
        return rest ? rest->str() : rest.error().text().str();
    };

    EXPECT_EQ( "<x, -y>", read( { "-an", "Ω", "x", "--count=0x10", "--share", "0.5", "--", "-y" } ) );
    EXPECT_EQ( "Ω", name );
    EXPECT_TRUE( all && count == 16 && share == 0.5 );
    EXPECT_EQ( "many is no number", read( { "-c", "many" } ) );
    EXPECT_EQ( "--none: option undefined", read( { "--none" } ) );
    EXPECT_EQ( "Usage: test WORD...\n  -a, --all                all of it\n", options.usage().part( 0, 57 ) );
}

TEST( Runtime, TellsWhatIsLeftBySort )
{
    qv::test::withoutLibrary(
        []
        {
            QV_STRING *forgotten = nullptr;
            {
                qv::Runtime run( "test", "Test", "1.0", QV_RUNTIME_FLAG_MINIMAL );
                EXPECT_TRUE( run.leaks().empty() );
                forgotten = qv::String( "forgotten" ).giveUp();
                EXPECT_EQ( 1u, run.leaks().size() );
                EXPECT_EQ( "QV_STRING 1\n", run.leakReport() );

                std::vector< qv::Leak > leaks = run.stop();
                ASSERT_EQ( 1u, leaks.size() );
                EXPECT_STREQ( "QV_STRING", leaks[0].sort );
                EXPECT_EQ( 1, leaks[0].objects );
            }

            qv::Runtime again( nullptr, nullptr, nullptr, QV_RUNTIME_FLAG_MINIMAL, nullptr );
            qv::print( "%s\n", "to nowhere" );
            qvStringRelease( forgotten );
            EXPECT_TRUE( again.stop().empty() );
        } );
}

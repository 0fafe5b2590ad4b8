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
    EXPECT_THAT( strict, testing::MatchesRegex( "a\\|!.*lines:2: bytes that are no text in .*" ) );
    EXPECT_THAT( readAll( qv::lines( "/nowhere/x" ) ), "!/nowhere/x: cannot be opened: No such file or directory" );
}

TEST( Results, HoldAValueOrAnError )
{
    qv::String path( qv::test::path( "result.conf" ) );

    EXPECT_FALSE( qv::writeFile( path, qv::Buffer( "a=1\n" ) ) );
    EXPECT_EQ( "/nowhere/x: cannot be opened: No such file or directory", qv::writeFile( "/nowhere/x", {} )->text() );
    EXPECT_EQ( qv::readStore( path )->get< int >( "a" ), 1 );

    qv::Result< qv::Buffer > bytes = qv::readFile( path ), none = qv::readFile( "/nowhere/x" );
    EXPECT_EQ( 4, bytes->size() );
    EXPECT_EQ( "/nowhere/x: cannot be opened: No such file or directory", none.error().text() );
    EXPECT_EQ( QV_ERROR_NOT_FOUND, none.error().code );
    EXPECT_EQ( none.error().text(), qv::firstError( bytes, none, bytes )->text() );
    EXPECT_FALSE( qv::firstError( bytes, bytes ) );
    EXPECT_EQ( 0, std::move( none ).valueOr( {} ).size() );
    EXPECT_BROKEN( (void)qv::readFile( "/nowhere/x" )->size(), "value" );
    EXPECT_BROKEN( (void)bytes.error(), "error" );
    EXPECT_EQ( "line 7: bad", ( qv::Error{ "bad", {}, 7, 9 }.text() ) );
    EXPECT_FALSE( qv::readFile( path, 3 ) );
}

TEST( Results, OfDocumentsTellTheLinesThatWereNotUnderstood )
{
    qv::String               path( qv::test::path( "strict.conf" ) );
    std::vector< qv::Error > skipped;
    ASSERT_FALSE( qv::writeFile( path, qv::Buffer( "a=1\n\nport 80\n#x\n\xff=2\n" ) ) );

    EXPECT_EQ( *qv::readStore( path ), *qv::readStore( path, skipped ) );
    ASSERT_EQ( 2u, skipped.size() );
    EXPECT_EQ( path + ":3: neither . nor = follows an address", skipped[0].text() );
    EXPECT_EQ( "port 80", skipped[0].subject );
    EXPECT_EQ( 5, skipped[1].line );
    EXPECT_EQ( skipped[0].text(), qv::readStoreStrict( path ).error().text() );
    EXPECT_EQ( 5, qv::parseStoreStrict( qv::Buffer( "a=1\n\nb" ) ).error().offset );
    EXPECT_TRUE( qv::parseStore( qv::Buffer( "b" ), skipped )->empty() && skipped.size() == 3 );
    EXPECT_EQ( QV_ERROR_BAD_DOCUMENT, qv::parseStoreBinary( qv::Buffer( "x" ) ).error().code );
    EXPECT_EQ( QV_ERROR_NOT_FOUND, qv::readStoreBinary( "/nowhere/x" ).error().code );
}

TEST( Options, SetVariablesAndTellWhatIsWrong )
{
    enum class Form : uint8_t
    {
        NFC,
        NFD
    };

    qv::String                name  = "none";
    uint8_t                   count = 3;
    std::optional< double >   share;
    std::chrono::milliseconds wait( 7 );
    Form                      form = Form::NFC;
    qv::Vector< qv::String >  paths;
    bool                      all = false;
    qv::Options               options( "test [OPTION...] WORD...", "Tests." );
    options.add( U'a', "all", all, "all of it" ).add( U'n', "name=TEXT", name, "the name" );
    options.add( U'c', "count", count, "how many" ).add( U'\0', "share", share, "how much" ).realRange( 0, 1 );
    options.group( "More" ).add( U'w', "wait=TIME", wait, "how long" ).add( U'f', "form=nfc|nfd", form, "which form" );
    options.add( U'p', "path=FOLDER", paths, "where" ).once().hidden();

    auto read = [&]( std::vector< std::string > words ) -> std::string
    {
        std::vector< char * > argv = { nullptr };

        for( std::string &word : words )
            argv.push_back( word.data() );

        qv::Result< qv::Vector< qv::String > > rest = options.read( static_cast< int >( argv.size() ), argv.data() );
        return rest ? rest->str() : rest.error().text().str();
    };

    EXPECT_EQ(
        "<x, -y>", read( { "-an", "\u03a9", "x", "--count=0x10", "-w2s", "--form", "nfd", "-p/", "--", "-y" } ) );
    EXPECT_EQ( "\u03a9", name );
    EXPECT_TRUE( all && count == 16 && !share && wait.count() == 2000 && form == Form::NFD );
    EXPECT_EQ( "<x>", read( { "x", "--share", "0.5" } ) );
    EXPECT_TRUE( share == 0.5 && count == 16 );
    EXPECT_EQ( "</>", paths.str() );
    EXPECT_EQ( "--count: '256' is not an integer from 0 to 255", read( { "-c", "1", "-c", "256" } ) );
    EXPECT_EQ( "too few arguments", read( { "-c4" } ) );
    EXPECT_EQ( 16, count ); // nothing changes after a mistake
    EXPECT_EQ(
        "Usage: test [OPTION...] WORD...\n\nTests.\n\nOptions:\n"
        "  -a, --all           all of it\n  -n, --name=TEXT     the name; none by default\n"
        "  -c, --count=VALUE   how many; 3 by default\n      --share=VALUE   how much\n\nMore:\n"
        "  -w, --wait=TIME     how long\n  -f, --form=nfc|nfd  which form\n",
        options.usage().str() );
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

TEST( PrintHooks, ReceiveWhatIsPrinted )
{
    qv::test::withoutLibrary(
        []
        {
            qv::Runtime    run( "test", nullptr, nullptr, QV_RUNTIME_FLAG_MINIMAL );
            std::u32string outer, inner;
            qv::PrintHook  hook( [&]( std::u32string_view text ) { outer += text; } );
            qv::print( "%i", 1 );
            {
                qv::PrintHook other( [&]( std::u32string_view text ) { inner += text; } );
                qv::print( "%i", 2 );
            }
            qv::print( "%i", 3 );
            EXPECT_TRUE( outer == U"13" && inner == U"2" );
        } );
}

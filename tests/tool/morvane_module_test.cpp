#include "morvane_run.h"

#include <algorithm>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

using namespace qv::test;

namespace
{
Outcome module( const std::string &words, const std::string &folder = MODULE_FOLDER )
{
    return morvane( "module " + words, "XZ_MORVANE_BIN_PATH='" + folder + "'" );
}
} // namespace

TEST( MorvaneInfo, IsADocument )
{
    Outcome info = morvane( "info" );
    EXPECT_EQ( 0, info.status ) << info.err;
    EXPECT_THAT( info.out, testing::HasSubstr( "\nmoduleVersions.qv=0.0\n" ) );

    write( "doc", info.out );
    EXPECT_EQ( info.out, morvane( "store show doc" ).out );
}

// What a module needs need not be there.
TEST( MorvaneModule, ShowsWhatAFileTells )
{
    Outcome shown = module( "show detailed" );
    EXPECT_EQ(
        "compatibility=2005\n"
        "deps=absent\n"
        "description=Tells \xc3\xa1ll\n"
        "exts=extra more\n"
        "name=detailed\n"
        "personality=false\n"
        "version=2#5.1\n"
        "product.friendlyName=morvane\n"
        "product.name=morvane\n"
        "product.vendorName=Wexcraft GmbH\n"
        "product.versionMajor=4\n"
        "product.versionMinor=0\n",
        shown.out );
    EXPECT_EQ( "", shown.err );
    EXPECT_EQ( 0, shown.status );

    EXPECT_EQ(
        "compatibility=1000\n"
        "deps=\n"
        "description=Gives its first argument\n"
        "exts=\n"
        "name=result\n"
        "personality=true\n"
        "version=1.0\n",
        module( "show result" ).out );
}

TEST( MorvaneModule, RunsAPersonalityWithItsArguments )
{
    struct
    {
        const char *result;
        int         status;
    } const CASES[] = { { "0", 0 }, { "1", 1 }, { "2", 2 }, { "255", 255 }, { "256", 255 }, { "-1", 255 } };

    for( const auto &row : CASES )
    {
        Outcome outcome = module( std::string( "run result " ) + row.result + " --help 'two words' ''" );
        EXPECT_EQ( "starts\n--help\ntwo words\n\nstops\n", outcome.out );
        EXPECT_EQ( "", outcome.err );
        EXPECT_EQ( row.status, outcome.status );
    }

    // Whatever a module prints goes out as it came, in front of and behind what it writes itself.
    EXPECT_EQ(
        "starts\n[qv___RuntimeTryLoadModule()] module: a\ntwo\nlines\n\nwritten\n"
        "[qvRuntimeUnloadAllModules()] module: result\n"
            + std::string( 30000, 'x' ) + "\nstops\n",
        module(
            "run result 0 '[qv___RuntimeTryLoadModule()] module: a' 'two\nlines\n' write "
            "'[qvRuntimeUnloadAllModules()] module: result' "
            + std::string( 30000, 'x' ) )
            .out );

    // Both start, and both stop.
    EXPECT_EQ( "starts\nstarts\nstops\nstops\n", module( "run needs_result" ).out );
}

TEST( MorvaneModule, FailsInOneLine )
{
    const std::string HERE = scratch();

    // Objects that are none or lack the symbol of their name.
    write( "libmorvane-text.so", "This is no shared object.\n" );
    std::filesystem::copy_file(
        MODULE_FOLDER "/libmorvane-result.so", path( "libmorvane-lacking.so" ),
        std::filesystem::copy_options::overwrite_existing );

    // A copy under way, and what never ends.
    std::filesystem::copy_file(
        MODULE_FOLDER "/libmorvane-result.so", path( "libmorvane-cut.so" ),
        std::filesystem::copy_options::overwrite_existing );
    std::filesystem::resize_file( path( "libmorvane-cut.so" ), 3000 );
    unlink( path( "libmorvane-pipe.so" ).c_str() );
    ASSERT_EQ( 0, mkfifo( path( "libmorvane-pipe.so" ).c_str(), 0600 ) );

    struct
    {
        const std::string folder;
        const char       *words;
        const char       *err; // each line has this inside
        const char       *out; // of those that have been started by then
    } const CASES[] = {
        { MODULE_FOLDER, "show absent", "module: absent: " MODULE_FOLDER "/libmorvane-absent.so: cannot open", "" },
        { HERE, "show text", "libmorvane-text.so: ", "" },
        { HERE, "run cut", "module: cut: the file cannot be loaded\n", "" },
        { HERE, "show pipe", "module: pipe: the file cannot be loaded\n", "" },
        { HERE, "show lacking", "undefined symbol: lacking___module\n", "" },
        { MODULE_FOLDER, "run misnamed", "module: misnamed: the file holds a module of another name\n", "" },
        { MODULE_FOLDER, "run strange", "module: strange: not made for this product, or", "" },
        { MODULE_FOLDER, "run detailed",
          "module: detailed needs absent: " MODULE_FOLDER "/libmorvane-absent.so: ", "" },
        { MODULE_FOLDER, "run broken", "module: broken: it did not start\n", "starts\n" },
        { MODULE_FOLDER, "run needs_broken", "needs_broken needs broken: it did not start\n",
          "starts\nstarts\nstops\n" },
        { MODULE_FOLDER, "run bare", "module: bare: not a module that can be run\n", "starts\nstops\n" },
        { MODULE_FOLDER, "run Result", "module: Result: no name of a module\n", "" },
        { MODULE_FOLDER, "show ../result", "module: ../result: no name of a module\n", "" },
    };

    // Where they are looked for otherwise.
    EXPECT_THAT(
        morvane( "module show absent", "env -u XZ_MORVANE_BIN_PATH" ).err,
        testing::HasSubstr( ": /opt/wexcraft/morvane/bin/libmorvane-absent.so: " ) );

    for( const auto &row : CASES )
    {
        Outcome outcome = module( row.words, row.folder );
        EXPECT_EQ( row.out, outcome.out ) << row.words;
        EXPECT_THAT( outcome.err, testing::HasSubstr( row.err ) ) << row.words;
        EXPECT_EQ( 1, std::count( outcome.err.begin(), outcome.err.end(), '\n' ) ) << outcome.err;
        EXPECT_EQ( 1, outcome.status ) << row.words;
    }
}

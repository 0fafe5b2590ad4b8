#include "morvane_run.h"

#include <algorithm>

using namespace qv::test;

TEST( MorvaneInfo, IsADocument )
{
    expectOutcome(
        { "$M info >doc; $M store show doc | cmp doc; grep -x moduleVersions.qv=0.0 doc", "moduleVersions.qv=0.0\n" } );
}

// What a module needs need not be there.
TEST( MorvaneModule, ShowsWhatAFileTells )
{
    expectOutcomes( {
        { "$M module show detailed", "compatibility=2005\n"
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
                                     "product.versionMinor=0\n" },
        { "$M module show result | grep -E \"compat|personality|exts|product\"",
          "compatibility=1000\nexts=\npersonality=true\n" },

        // Of several each has its name before it; one that is missing leaves the others.
        { "$M module show result bare | grep -E \"(name|deps)=\"",
          "bare.deps=\nbare.name=bare\nbare.product.name=morvane\nresult.deps=\nresult.name=result\n" },
        { "$M module show absent result no 2>told | grep -c ^result.; grep -o \"^[^/]*\" told",
          "7\nmorvane module: absent: \nmorvane module: no: \n" },
    } );
}

TEST( MorvaneModule, RunsAPersonalityWithItsArguments )
{
    const std::string X( 30000, 'x' );

    expectOutcomes( {
        { "for n in 0 1 2 255 256 -1; do $M module run result $n >/dev/null; echo $?; done",
          "0\n1\n2\n255\n255\n255\n" },
        { "$M module run result 0 --help \"two words\" \"\"", "starts\n--help\ntwo words\n\nstops\n" },

        // Whatever a module prints goes out as it came, before and after what it writes itself.
        { "$M module run result 0 \"[qv___RuntimeTryLoadModule()] module: a\" \"two\nlines\n\" write "
          "\"[qvRuntimeUnloadAllModules()] module: result\" "
              + X,
          "starts\n[qv___RuntimeTryLoadModule()] module: a\ntwo\nlines\n\nwritten\n"
          "[qvRuntimeUnloadAllModules()] module: result\n"
              + X + "\nstops\n" },

        // Both start, and both stop.
        { "$M module run needs_result", "starts\nstarts\nstops\nstops\n" },

        // A module that does not end is told of after a second.
        { "$M module run keeping 2>line >/dev/null & while ! [ -s line ]; do sleep 0.1; done; kill $!; cat line",
          "morvane module: keeping: still has 2 QV_KEPT, 59 s left\n" },
    } );
}

TEST( MorvaneModule, FailsInOneLine )
{
    // Objects that are none or lack the symbol of their name, a copy under way, and what never ends.
    shell( "cd $XZ_MORVANE_BIN_PATH; for name in lacking cut; do cp libmorvane-result.so $OLDPWD/libmorvane-$name.so; "
           "done; "
           "cd -; echo text >libmorvane-text.so; truncate -s 3000 libmorvane-cut.so; mkfifo libmorvane-pipe.so" );

    const struct
    {
        const char *words;
        const char *err;      // its one line has this inside
        const char *out = ""; // of those that have been started by then
    } ROWS[] = {
        { "env -u XZ_MORVANE_BIN_PATH $M module show absent", ": /opt/wexcraft/morvane/bin/libmorvane-absent.so: " },
        { "XZ_MORVANE_BIN_PATH=. $M module show text", "libmorvane-text.so: " },
        { "XZ_MORVANE_BIN_PATH=. $M module run cut", "module: cut: the file cannot be loaded: it is cut off\n" },
        { "XZ_MORVANE_BIN_PATH=. $M module show pipe",
          "module: pipe: the file cannot be loaded: it is not a regular one\n" },
        { "XZ_MORVANE_BIN_PATH=. $M module show lacking", "undefined symbol: lacking___module\n" },
        { "$M module show absent", "module: absent: " MODULE_FOLDER "/libmorvane-absent.so: cannot open" },
        { "$M module run misnamed", "module: misnamed: the file holds a module of another name\n" },
        { "$M module run strange", "module: strange: not made for this product, or" },
        { "$M module run detailed", "module: detailed needs absent: " MODULE_FOLDER "/libmorvane-absent.so: " },
        { "$M module run broken", "module: broken: it did not start\n", "starts\n" },
        { "$M module run needs_broken", "needs_broken needs broken: it did not start\n", "starts\nstarts\nstops\n" },
        { "$M module run bare", "module: bare: not a module that can be run\n", "starts\nstops\n" },
        { "$M module run Result", "module: Result: no name of a module\n" },
        { "$M module show ../result", "module: ../result: no name of a module\n" },
    };

    for( const auto &row : ROWS )
    {
        Outcome outcome = shell( row.words );
        EXPECT_EQ( row.out, outcome.out ) << row.words;
        EXPECT_THAT( outcome.err, testing::HasSubstr( row.err ) ) << row.words;
        EXPECT_EQ( 1, std::count( outcome.err.begin(), outcome.err.end(), '\n' ) ) << outcome.err;
        EXPECT_EQ( 1, outcome.status ) << row.words;
    }
}

#include "morvane_run.h"

using namespace qv::test;
using namespace std::string_literals;

TEST( MorvaneText, ChangesWhatItReads )
{
    struct
    {
        const char *words;
        std::string in, out;
    } const CASES[] = {
        { "normalize --form nfc", "e\u0301\u00e9", "\u00e9\u00e9" },

        // A byte order mark is kept.
        { "normalize --form nfkc --replace", "\ufeff\ufb01 \xff\u212b\xed\xa0\x80", "\ufefffi \ufffd\u00c5\ufffd" },
        { "case --lower", "\u00c9Aß", "\u00e9aß" },

        // From and to other sets.
        { "case --upper --from latin1 --to utf-16be", "\xe9\xdf", "\0\xc9\0S\0S"s },
        { "case --upper --from utf-16 --to utf-8", "\xfe\xff\0a"s, "A" },
        { "normalize --form nfd --to latin1", "e\u0301", "\xe9" },
        { "case --upper --to latin1 --replace", "\u0142\u00e9\xff", "?\xc9?" },
        { "lines --newline lf", "a\n\nb\rc\r\nd\u0085\v\f\u2028\u2029e", "a\n\nb\nc\nd\n\n\n\n\ne" },

        // Letters compose with their marks for the sets that have one byte a character.
        { "convert --from utf-8 --to windows-1252", "e\u0301 €", "\xe9 \x80" },
        { "convert --from utf-8 --to latin1 --invalid replace", "a中b\xff\xff.\xe2", "a?b??.?" },
        { "convert --from utf-8 --to latin1 --invalid skip", "a中b\xff\xff.\xe2", "ab." },
        { "convert --from utf-8 --to utf-8 --invalid replace", "\xc0\x80x\xed\xa0\xbd\xed\xb8\x80y\xe2Pz",
          "\ufffdx\ufffd\ufffdy\ufffdz" },
        { "convert --from utf-8 --to utf-8 --invalid replace", "\xff" + std::string( 200000, '\x80' ) + "z",
          "\ufffdz" },
        { "convert --from utf-16le --to utf-8 --invalid replace", "a\0\x01\xd8x\0"s, "a\ufffdx" },
        { "convert --from utf-32be --to utf-16le --invalid skip", "\0\0\xd8\0\0\0\0x"s, "x\0"s },

        // A mark leads the input where it can, and the output begins with one where it has one.
        { "convert --from utf-8 --to utf-8", "\ufeffa", "a" },
        { "convert --from utf-8 --to utf-8 --bom", "\ufeffa\ufeff", "\ufeffa\ufeff" },
        { "convert --from utf-16le --to utf-8 --bom", "\xff\xfex\0"s, "\ufeffx" },
    };

    for( auto &each : CASES )
    {
        write( "in", each.in );
        Outcome outcome = morvane( "text "s + each.words + " in in" );
        EXPECT_EQ( 0, outcome.status ) << outcome.err;
        EXPECT_EQ( each.out, contentOf( "in" ) ) << each.words;
    }
}

TEST( MorvaneText, TellsWhereAConversionFails )
{
    // What the input begins with, what then stands there many times, and what ends in the fault.
    struct
    {
        const char *from, *to;
        std::string start, unit, end;
        size_t      faultAt; // in the end
        const char *reason;
    } cases[] = {
        { "UTF-8", "UTF-16", "\ufeff", "é", "\xe2\x82x\x80\x80", 0, "not valid UTF-8" },
        { "UTF-8", "UTF-8", "a", "€", "\xf0\x9f\x98", 0, "not valid UTF-8" },
        { "UTF-8", "UTF-16", "\ufeff", "\ufffd", "\xed\xa0\x80", 0, "not valid UTF-8" }, // a surrogate
        { "UTF-8", "latin1", "", "\u00a0", "a\xe0\x9f\xbf", 1, "not valid UTF-8" },
        { "UTF-16LE", "UTF-8", "", "\xfd\xff"s, "\x00\xd8x\0"s, 0, "not valid UTF-16LE" }, // a half of a pair
        { "UTF-32BE", "UTF-8", "", "\0\0\xff\xfd"s, "\0\0\xdf\xff"s, 0, "not valid UTF-32BE" },
        { "cp1252", "UTF-8", "", "\xe9", "a\x81", 1, "not valid windows-1252" },
        { "UTF-8", "cp1252", "", "a", "中\xff", 0, "windows-1252 has no U+4E2D" },
        { "UTF-8", "KOI8-R", "", "й", "йµй", 2, "KOI8-R has no U+00B5" },
        { "UTF-16", "latin1", "\xfe\xff", "\0a"s, "\xd8\x3d\xde\x00"s, 0, "ISO-8859-1 has no U+1F600" },
        { "UTF-16BE", "UTF-16", "", "\xd8\x3d\xde\x00\xfe\xff"s, "\xd8", 0, "not valid UTF-16BE" },
        { "UTF-32", "UTF-8", "\xff\xfe\0\0"s, "\0\xf6\1\0"s, "\0\0\x11\0"s, 0, "not valid UTF-32" },
    };

    write( "kept", "old" );

    for( auto &each : cases )
    {
        size_t size = each.unit.size();

        // Around the borders of what is read, decoded and written at a time.
        const size_t counts[] = { 0, 8191 / size, 8192 / size, 65536 / size, 70000 };

        for( size_t count : counts )
        {
            std::string content = each.start;

            for( size_t i = 0; i < count; i++ )
                content += each.unit;

            write( "in", content + each.end );
            Outcome outcome = morvane( "text convert --from "s + each.from + " --to " + each.to + " in kept" );
            ASSERT_EQ(
                "morvane text: in: offset " + std::to_string( content.size() + each.faultAt ) + ": " + each.reason
                    + "\n",
                outcome.err );
            ASSERT_EQ( 1, outcome.status );
        }
    }

    write( "bad", "text\xff" );
    write( "good", "\u0142" );

    // What is changed fails as well, file by file.
    expectFailures( {
        { "text normalize --form nfd bad kept", "text: bad: offset 4: not valid UTF-8" },
        { "text lines --newline crlf <bad", "text: standard input: offset 4: not valid UTF-8" },
        { "text case --upper --to latin1 good kept", "text: good: ISO-8859-1 has no U+0141" },
        { "text case --upper --in-place bad nowhere good",
          "text: bad: offset 4: not valid UTF-8\nmorvane text: nowhere: No such file or directory" },
    } );
    EXPECT_EQ( "\u0141", contentOf( "good" ) );
    EXPECT_EQ( "old", contentOf( "kept" ) );
}

// However the input is cut when it is read, what comes out is the same.
TEST( MorvaneText, ReadsCutAnywhere )
{
    const std::string UTF_8  = "\xed\xa0\x80x\xc0\x80\x80\r\ne\u0301€\r\xe0\x9f\xff\x80y\xe2\x82";
    const std::string UTF_16 = "\x3d\xd8\0\xde\0\xdcx\0\x01\xd8"s;

    const struct
    {
        const char *words;
        std::string unit, end;
    } ROWS[] = {
        { "convert --to utf-8 --invalid replace --from utf-8", "a", UTF_8 },
        { "convert --to latin1 --invalid skip --from utf-8", "a", UTF_8 },
        { "convert --to utf-8 --invalid replace --from utf-16le", "a\0"s, UTF_16 },
        { "normalize --replace --form nfc", "a", UTF_8 },
        { "lines --replace --newline vt", "a", UTF_8 },
    };

    for( const auto &row : ROWS )
    {
        const std::string words = "text "s + row.words + " <in";
        write( "in", row.unit + row.end );
        const std::string whole = morvane( words ).out;

        for( size_t back = 0; back < row.end.size(); back += row.unit.size() )
        {
            const size_t count = ( 65536 - back ) / row.unit.size();
            std::string  content;

            for( size_t i = 0; i < count; i++ )
                content += row.unit;

            write( "in", content + row.end );
            EXPECT_EQ( std::string( count - 1, 'a' ) + whole, morvane( words ).out ) << words << back;
        }
    }
}

TEST( MorvaneText, NamesTheCharacterSetsThatAreNear )
{
    const std::string LONG( 3000, 'x' );

    expectFailures( {
        { "text convert --from utf8 --to x", "text: utf8: no such character set; near are UTF-8, UTF-16, UTF-32" },
        { "text convert --from klingon --to x", "text: klingon: no such character set" },
        { "text convert --from " + LONG + " --to x", "text: " + LONG + ": no such character set" },
    } );
    EXPECT_THAT(
        morvane( "text convert --from windows-1522 --to utf-8" ).err,
        testing::HasSubstr( "near are windows-1252, windows-1250" ) );
}

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
TEST( MorvaneText, TakesFilesOfAnySizeInConstantMemory )
{
    expectOutcomes( {
        { "truncate -s 128M zeros; ulimit -v 100000; $M text convert --from utf-8 --to cp437 zeros /dev/null", "" },
        { "ulimit -v 100000; $M text lines --newline crlf zeros /dev/null; rm zeros", "" },
    } );
}
#endif

TEST( MorvaneUnicode, ShowsCharactersAndCharsets )
{
    expectOutcomes( {
        { "$M unicode show é+ U+301 U+FB01 U+AC01 U+D800 U+10FFFF",
          "U+00E9 é; Ll (Letter, Lowercase); class 0; Latin; decomposition U+0065 U+0301; upper U+00C9\n"
          "U+002B +; Sm (Symbol, Math); class 0; Common\n"
          "U+0301  \u0301; Mn (Mark, Nonspacing); class 230 (Above); Inherited\n"
          "U+FB01 \ufb01; Ll (Letter, Lowercase); class 0; Latin; decomposition <compat> U+0066 U+0069; "
          "upper U+0046 U+0049; fold U+0066 U+0069\n"
          "U+AC01 각; Lo (Letter, Other); class 0; Hangul; decomposition U+1100 U+1161 U+11A8\n"
          "U+D800; Cs (Other, Surrogate); class 0; Unknown\n"
          "U+10FFFF; Cn (Other, Not Assigned); class 0; Unknown\n" },
        { "$M unicode show U+110000 + U+10000000000000061", "U+002B +; Sm (Symbol, Math); class 0; Common\n",
          "morvane unicode: U+110000: there is no such code point\n"
          "morvane unicode: U+10000000000000061: there is no such code point\n" },
        { "$M unicode list charsets | grep -cE \"^[A-Za-z0-9-]+( +[0-9]+)?$\"", "51\n" },
        { "$M unicode list charsets | grep -E \"252|TF-16$\"", "windows-1252     1252\nUTF-16\n" },
    } );
}

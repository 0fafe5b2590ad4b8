// All enumerations and flag sets: each value has a name of its own, which leads back to it.

#include "qv_test_support.h"

#include "qv/qv.h"

#include <random>
#include <set>

using qv::Ref;
using namespace qv::test;

namespace
{
using Forward  = QV_STRING *(*)( QV_INT value );
using Backward = QV_INT ( * )( QV_STRING *name );

struct Names
{
    Forward     name;
    Backward    value;
    QV_INT      first, last;
    std::string contract;          // of the report for other values
    bool        symbols = false;   // the names are those of constants; the numbers are names as well
    Backward    anyCase = nullptr; // the look-up for which the case does not count
};

const Names NAMES[] = {
    { qvMonthToString, qvMonthFromString, 1, 12, "QV_MONTH_OK( mo )", false, qvMonthFromString },
    { qvWeekdayToString, qvWeekdayFromString, 0, 6, "QV_WEEKDAY_OK( wd )", false, qvWeekdayFromString },
    { qvThreadPriorityToString, qvThreadPriorityFromString, 0, 6, "QV_THREAD_PRIORITY_OK( prio )", true },
    { qvRuntimeOsToString, qvRuntimeOsFromString, 0, 9, "QV_RUNTIME_OS_OK( os )", true },
    { qvRuntimeHardwareToString, qvRuntimeHardwareFromString, 0, 7, "QV_RUNTIME_HARDWARE_OK( hw )", true },
    { qvRuntimeVariantToString, qvRuntimeVariantFromString, 0, 1, "QV_RUNTIME_VARIANT_OK( var )", true },
    { qvRuntimePathToString, qvRuntimePathFromString, 0, 6, "QV_RUNTIME_PATH_OK( path )", true },
    { qvRuntimeOsToIdentifier, qvRuntimeOsFromIdentifier, 0, 9, "QV_RUNTIME_OS_OK( os )" },
    { qvRuntimeHardwareToIdentifier, qvRuntimeHardwareFromIdentifier, 0, 7, "QV_RUNTIME_HARDWARE_OK( hw )" },
    { qvRuntimeVariantToIdentifier, qvRuntimeVariantFromIdentifier, 0, 1, "QV_RUNTIME_VARIANT_OK( var )" },
    { qvCharsetToString, qvCharsetFromString, 0, 50, "QV_CHARSET_OK( cs )", true },
    { qvCharsetToIanaName, qvCharsetFromIanaName, 0, 50, "QV_CHARSET_OK( cs )", false, qvCharsetFromIanaName },
    { qvUnicodeGencAbbreviation, qvUnicodeGencFromAbbreviation, 0, 29, "QV_UNICODE_GENC_OK( genc )", false,
      qvUnicodeGencFromAbbreviationCaseFold },
    { qvUnicodeCdmtTag, qvUnicodeCdmtFromTag, 2, 17, "", false, qvUnicodeCdmtFromTagCaseFold },
    { qvUnicodeScriptName, qvUnicodeScriptFromName, 0, 92, "QV_UNICODE_SCRIPT_OK( script )", false,
      qvUnicodeScriptFromNameCaseFold },
};

struct Flags
{
    Forward  text;
    Backward value;
    QV_INT ( *normalize )( QV_INT flags );
    QV_INT      all; // of those with a name, some of which may stand in each other's way
    std::string prefix;

    std::vector< std::pair< QV_INT, QV_INT > > conflicts; // and what is left of them
};

// clang-format off
const Flags FLAGS[] = {
    { qvRuntimeFlagsToString, qvRuntimeFlagsFromString, qvRuntimeFlagsNormalize, 0xFFF, "QV_RUNTIME_FLAG_",
      { { 0xFFF, 1 }, { 0xFFE, 0xFFE }, { 0x20, 0 }, { 0x88, 8 }, { 0x198, 0x18 }, { 0x1F0, 0 } } },
    { qvCharsetFlagsToString, qvCharsetFlagsFromString, qvCharsetFlagsNormalize, 0xF, "QV_CHARSET_FLAG_",
      { { 3, 2 }, { -1, 14 } } },
    { qvNlfFlagsToString, qvNlfFlagsFromString, qvNlfFlagsNormalize, 0xFF, "QV_NLF_FLAG_", { { -1, 0xFF } } },
    { qvFormatFlagsToString, qvFormatFlagsFromString, qvFormatFlagsNormalize, 0xFF, "QV_FORMAT_FLAG_",
      { { 3, 1 }, { 12, 4 }, { 96, 32 } } },
};
// clang-format on

std::string lower( std::string name )
{
    for( char &ch : name )
        ch = static_cast< char >( std::tolower( ch ) );

    return name;
}
} // namespace

TEST( Enumerations, NamesLeadToTheirValues )
{
    for( const Names &names : NAMES )
    {
        std::set< std::string > seen;

        for( QV_INT value = names.first; value <= names.last; value++ )
        {
            const std::string name = take( names.name( value ) );
            SCOPED_TRACE( name );
            EXPECT_TRUE( seen.insert( name ).second );
            EXPECT_EQ( value, names.value( text( name ) ) );
            EXPECT_EQ( -1, names.value( text( name + "x" ) ) );

            if( names.symbols )
            {
                EXPECT_EQ( 0, name.find( names.contract.substr( 0, names.contract.find( "OK" ) ) ) );
                EXPECT_EQ( value, names.value( text( " " + name + "\n" ) ) );
                EXPECT_EQ( value, names.value( text( "\t" + std::to_string( value ) + " " ) ) );
            }

            EXPECT_EQ( value, names.anyCase ? names.anyCase( text( lower( name ) ) ) : value );
            EXPECT_TRUE(
                names.anyCase == names.value || lower( name ) == name || names.value( text( lower( name ) ) ) == -1 );
        }

        for( const std::string &none : { std::string(), std::to_string( names.last + 1 ), std::string( "-1" ) } )
            EXPECT_EQ( -1, names.value( text( none ) ) ) << *seen.begin();

        if( names.contract.empty() )
            continue;

        for( QV_INT value : { names.first - 1, names.last + 1 } )
            EXPECT_BROKEN( names.name( value ), names.contract );
    }

    for( const char *february : { "feb ", "february", " 2\n" } )
        EXPECT_EQ( 2, qvMonthFromString( text( february ) ) );

    EXPECT_EQ( -1, qvMonthFromString( text( "ja" ) ) );
    EXPECT_EQ( QV_UNICODE_SCRIPT_GREEK, qvUnicodeScriptFromNameCaseFold( text( "GREE\u212A" ) ) );
}

TEST( Enumerations, NamesAreThoseOfTheirConstants )
{
#define EXPECT_NAME( function, constant ) EXPECT_EQ( #constant, take( function( constant ) ) )
    EXPECT_NAME( qvRuntimeOsToString, QV_RUNTIME_OS_DEBIAN_7 );
    EXPECT_NAME( qvRuntimeHardwareToString, QV_RUNTIME_HARDWARE_X64 );
    EXPECT_NAME( qvCharsetToString, QV_CHARSET_UTF_16_BE );
    EXPECT_NAME( qvUnicodeGencSymName, QV_UNICODE_GENC_OTHER_PRIVATE_USE );
    EXPECT_NAME( qvUnicodeCccvSymName, QV_UNICODE_CCCV_FIXED_POS_END );
    EXPECT_NAME( qvUnicodeCdmtSymName, QV_UNICODE_CDMT_COMPAT );
    EXPECT_NAME( qvUnicodeScriptSymName, QV_UNICODE_SCRIPT_CANADIAN_ABORIGINAL );
    EXPECT_NAME( qvNlfFlagsToString, QV_NLF_FLAG_PS );

    EXPECT_EQ( "Debian 7", take( qvRuntimeOsFriendlyName( QV_RUNTIME_OS_DEBIAN_7 ) ) );
    EXPECT_EQ( "x86 (64 bit)", take( qvRuntimeHardwareFriendlyName( QV_RUNTIME_HARDWARE_X64 ) ) );
    EXPECT_EQ( "Pi", take( qvUnicodeGencAbbreviation( QV_UNICODE_GENC_PUNCTUATION_INITIAL_QUOTE ) ) );
    EXPECT_EQ( "Punctuation, Initial", take( qvUnicodeGencDescription( QV_UNICODE_GENC_PUNCTUATION_INITIAL_QUOTE ) ) );
    EXPECT_EQ( nullptr, qvUnicodeCdmtTag( QV_UNICODE_CDMT_CANONICAL ) );
    EXPECT_EQ( "A vulgar fraction form.", take( qvUnicodeCdmtDescription( QV_UNICODE_CDMT_FRACTION ) ) );

    // Most combining classes have a number only.
    int named = 0;

    for( QV_INT cccv = 0; cccv < 256; cccv++ )
    {
        bool has  = Ref< QV_STRING >( qvUnicodeCccvSymName( cccv ) ) != nullptr;
        auto bare = "Canonical Combining Class Value " + std::to_string( cccv );
        EXPECT_EQ( has, take( qvUnicodeCccvDescription( cccv ) ) != bare );
        named += has;
    }

    EXPECT_EQ( 26, named );
}

TEST( FlagSets, TextsTellWhatIsLeftAfterConflicts )
{
    std::mt19937_64 random( 1 );

    for( const Flags &flags : FLAGS )
    {
        SCOPED_TRACE( flags.prefix );
        QV_INT seen = 0;

        for( int round = 0; round < 300; round++ )
        {
            // Each one alone, then any with and without those that are none.
            QV_INT given = round < 64 ? static_cast< QV_INT >( 1ull << round ) : static_cast< QV_INT >( random() );
            given &= round % 2 && round > 64 ? flags.all : -1;
            const QV_INT      normal = flags.normalize( given );
            const std::string names  = take( flags.text( given ) );
            seen |= normal;

            EXPECT_EQ( 0, normal & ~flags.all );
            EXPECT_EQ( normal, flags.normalize( normal ) );
            EXPECT_EQ( normal != 0, names.starts_with( flags.prefix ) && !names.empty() );

            for( const std::string &form : { names, " " + names + " |NONE| 0x0", std::to_string( normal ) } )
                EXPECT_EQ( normal, flags.value( text( form ) ) ) << form;
        }

        EXPECT_EQ( flags.all & seen, seen );

        for( auto [given, normal] : flags.conflicts )
            EXPECT_EQ( normal, flags.normalize( given ) ) << given;
    }

    EXPECT_EQ( "QV_NLF_FLAG_LF|QV_NLF_FLAG_CRLF", take( qvNlfFlagsToString( 5 ) ) );
}

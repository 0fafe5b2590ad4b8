#include "qv_test_clock.h"
#include "qv_test_support.h"

#include "qv/base/qv_timezone.h"
#include "qv/base/qv_timezone_private.h"
#include "qv/base/qv_vector.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <optional>
#include <set>

#include <dlfcn.h>

using qv::Ref;
using namespace qv::test;

/* Stand-ins for the system's files --------------------------------------------------------------------------------- */

namespace
{
// What the files hold instead of what they really do; one that isn't here doesn't exist.
std::optional< std::map< std::string, std::string > > systemFiles;
} // namespace

extern "C" FILE *fopen( const char *name, const char *mode )
{
    static auto real = reinterpret_cast< FILE *(*)( const char *, const char * ) >( dlsym( RTLD_NEXT, "fopen" ) );

    if( !systemFiles || std::string( name ).rfind( "/etc/", 0 ) != 0 )
        return real( name, mode );

    auto        found = systemFiles->find( name );
    std::string file  = scratch() + "system";

    if( found == systemFiles->end() )
        return nullptr;

    std::ofstream( file ) << found->second;
    return real( file.c_str(), mode );
}

TEST( Timezone, NamesTranslateBothWays )
{
    auto toIana    = []( std::string_view name ) { return take( qvTimezoneWindowsToIana( text( name ) ) ); };
    auto toWindows = []( std::string_view name ) { return take( qvTimezoneIanaToWindows( text( name ) ) ); };

    EXPECT_EQ( "Pacific/Pago_Pago", toIana( "UTC-11" ) );
    EXPECT_EQ( "UTC+13", toWindows( "Etc/GMT-13" ) );
    EXPECT_EQ( "America/Guatemala", toIana( "Central America Standard Time" ) );

    Ref< QV_VECTOR >        list( qvTimezoneList() );
    std::set< std::string > windows;
    std::string             previous;
    ASSERT_EQ( 455, qvVectorLength( list ) );

    for( QV_INT i = 0; i < 455; i++ )
    {
        Ref< QV_STRING > iana( qvStringFrom( qvVectorObjAt( list, i ) ) );
        ASSERT_TRUE( qvTimezoneIanaOk( iana ) );
        ASSERT_LT( previous, utf8( iana ) );
        previous = utf8( iana );

        // The first name of the zone stands for the same zone.
        std::string zone = toWindows( previous );
        ASSERT_TRUE( qvTimezoneWindowsOk( text( zone ) ) );
        ASSERT_EQ( zone, toWindows( toIana( zone ) ) );
        windows.insert( zone );
    }

    EXPECT_EQ( 132u, windows.size() );

    const std::string_view BAD[] = { "",  "UTC-1", "UTC-111", "utc", { "UTC\0", 4 }, { "\0", 1 }, "\xf0\x9f\x95\x91",
                                     "A", "zzz" };

    for( std::string_view bad : BAD )
    {
        EXPECT_FALSE( qvTimezoneWindowsOk( text( bad ) ) );
        EXPECT_FALSE( qvTimezoneIanaOk( text( bad ) ) );
        EXPECT_EQ( nullptr, qvTimezoneWindowsToIana( text( bad ) ) );
        EXPECT_EQ( nullptr, qvTimezoneIanaToWindows( text( bad ) ) );
    }
}

TEST( Timezone, TheSystemsZone )
{
    const std::string A127( 127, 'a' );

    struct
    {
        std::map< std::string, std::string > files;
        std::string                          zone;
    } const CASES[] = {
        { {}, "" },
        { { { "/etc/timezone", "Europe/Berlin\n" } }, "Europe/Berlin" },
        { { { "/etc/timezone", "# comment\n\n\t Asia/Tokyo  x\n#x\nEurope/Paris y\n \n" } }, "Europe/Paris" },
        { { { "/etc/timezone", "# none\n" }, { "/etc/sysconfig/clock", "ZONE=Asia/Tokyo\n" } }, "" },
        { { { "/etc/timezone", A127 + "bc\n" } }, A127 + "b" },
        { { { "/etc/sysconfig/clock", "ZONE=Asia/Tokyo\n" }, { "/etc/TIMEZONE", "TZ=x\n" } }, "Asia/Tokyo" },
        { { { "/etc/sysconfig/clock", "UTC=true\nZONE=\"Europe/Berlin\"\nZONE=x\n" } }, "Europe/Berlin" },
        { { { "/etc/sysconfig/clock", "ZONE=\t \"Eu\"rope x\"\n" } }, "Europe" },
        { { { "/etc/sysconfig/clock", " ZONE=a\nZONES=b\nzone=c\n" }, { "/etc/TIMEZONE", "TZ=MET=1" } }, "MET=1" },
    };

    for( const auto &row : CASES )
    {
        systemFiles = row.files;
        EXPECT_EQ( row.zone, take( qvTimezone() ) );
    }

    systemFiles.reset();
    EXPECT_EQ( nullptr, qv___TimezoneGetValue( "/nowhere", "TZ" ) );
    EXPECT_EQ( nullptr, qv___TimezoneGetValue( "/", "TZ" ) );
}

TEST( Timezone, TheOffset )
{
    const char                  *surrounding = getenv( "TZ" );
    std::optional< std::string > kept        = surrounding ? std::optional< std::string >( surrounding ) : std::nullopt;

    struct
    {
        const char *zone;
        time_t      now;
        QV_INT      offset;
    } const CASES[] = {
        { "XXX-5:45", 1700000000, 20700 },
        { "XXX3:30:15", 1700000000, -12615 },
        { "CET-1CEST,M3.5.0,M10.5.0/3", 1705000000, 3600 },
        { "CET-1CEST,M3.5.0,M10.5.0/3", 1720000000, 7200 },
        { "XXX-5:45", -1, 0 },
        { "XXX-5:45", INT64_MAX, 0 },
        { "XXX-24:30", 1700000000, 0 },
    };

    for( const auto &row : CASES )
    {
        setenv( "TZ", row.zone, 1 );
        tzset();
        wallClock.time = row.now;
        EXPECT_EQ( row.offset, qvTimezoneUtcOffset() ) << row.zone << " at " << row.now;
    }

    wallClock.time = WallClock::SHOWN;

    if( kept )
        setenv( "TZ", kept->c_str(), 1 );
    else
        unsetenv( "TZ" );

    tzset();
}

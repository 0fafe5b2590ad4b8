#include "qv_test_child.h"
#include "qv_test_clock.h"
#include "qv_test_support.h"

#include "qv/base/qv_timezone.h"
#include "qv/base/qv_timezone_private.h"
#include "qv/base/qv_vector.h"

#include <cstdlib>
#include <ctime>
#include <map>
#include <optional>
#include <set>

#include <dlfcn.h>

using qv::Ref;
using namespace qv::test;

namespace
{
// What the files contain for a test; one that is not here does not exist.
std::optional< std::map< std::string, std::string > > systemFiles;
} // namespace

// Stands in for that of the system.
extern "C" FILE *fopen( const char *name, const char *mode )
{
    static auto real = reinterpret_cast< decltype( &fopen ) >( dlsym( RTLD_NEXT, "fopen" ) );

    if( !systemFiles || !std::string_view( name ).starts_with( "/etc/" ) )
        return real( name, mode );

    auto found = systemFiles->find( name );
    return found == systemFiles->end() ? nullptr : fmemopen( found->second.data(), found->second.size(), "r" );
}

TEST( Timezone, NamesTranslateBothWays )
{
    auto toIana    = []( std::string_view name ) { return take( qvTimezoneWindowsToIana( text( name ) ) ); };
    auto toWindows = []( std::string_view name ) { return take( qvTimezoneIanaToWindows( text( name ) ) ); };

    EXPECT_EQ( "Pacific/Pago_Pago", toIana( "UTC-11" ) );
    EXPECT_EQ( "UTC+13", toWindows( "Etc/GMT-13" ) );
    EXPECT_EQ( "America/Guatemala", toIana( "Central America Standard Time" ) );

    Ref< QV_VECTOR >        list( qvTimezoneList() );
    std::set< std::string > zones;
    std::string             previous;

    for( QV_INT i = 0; i < qvVectorLength( list ); i++ )
    {
        std::string name = take( qvStringFrom( qvVectorObjAt( list, i ) ) ), zone = toWindows( name );
        ASSERT_LT( std::exchange( previous, name ), name );
        ASSERT_TRUE( qvTimezoneIanaOk( text( name ) ) && qvTimezoneWindowsOk( text( zone ) ) );
        ASSERT_EQ( zone, toWindows( toIana( zone ) ) ); // the first name of a zone stands for it
        zones.insert( zone );
    }

    EXPECT_EQ( 455, qvVectorLength( list ) );
    EXPECT_EQ( 132u, zones.size() );

    for( std::string_view bad : { "", "UTC-1", "UTC-111", "utc", "UTC?", "\xf0\x9f\x95\x91", "A", "zzz" } )
    {
        Ref< QV_STRING > name = text( bad );
        EXPECT_FALSE( qvTimezoneWindowsOk( name ) || qvTimezoneIanaOk( name ) ) << bad;
        EXPECT_FALSE( qvTimezoneWindowsToIana( name ) || qvTimezoneIanaToWindows( name ) ) << bad;
    }
}

TEST( Timezone, TheSystemsZone )
{
    const std::string A127( 127, 'a' );

    const std::pair< std::map< std::string, std::string >, std::string > ROWS[] = {
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

    for( const auto &[files, zone] : ROWS )
    {
        systemFiles = files;
        EXPECT_EQ( zone, take( qvTimezone() ) );
    }

    systemFiles.reset();
    EXPECT_EQ( nullptr, qv___TimezoneGetValue( "/nowhere", "TZ" ) );
    EXPECT_EQ( nullptr, qv___TimezoneGetValue( "/", "TZ" ) );
}

TEST( Timezone, TheOffset )
{
    struct Row
    {
        const char *zone;
        time_t      now;
        QV_INT      offset;
    };

    const Row ROWS[] = {
        { "XXX-5:45", 1700000000, 20700 },
        { "CET-1CEST,M3.5.0,M10.5.0/3", 1705000000, 3600 },
        { "CET-1CEST,M3.5.0,M10.5.0/3", 1720000000, 7200 },
        { "XXX-5:45", -1, 0 },
        { "XXX-5:45", INT64_MAX, 0 },
        { "XXX-24:30", 1700000000, 0 },
    };

    for( const Row &row : ROWS )
        expectInOwnRun(
            [&]
            {
                setenv( "TZ", row.zone, 1 );
                tzset();
                wallClock.time = row.now;
                EXPECT_EQ( row.offset, qvTimezoneUtcOffset() ) << row.zone << " at " << row.now;
            } );
}

TEST( Timezone, EachStartTakesTheZoneAnew )
{
    expectInOwnRun(
        []
        {
            for( const char *zone : { "XXX-5:17", "XXX+3" } )
            {
                setenv( "TZ", zone, 1 );
                restart( 0 );
                unsetenv( "TZ" ); // too late for this run
                EXPECT_EQ( zone[3] == '-' ? 19020 : -10800, qvTimezoneUtcOffset() );
            }

            restart( 0 );
            QV_INT    offset = qvTimezoneUtcOffset();
            time_t    now    = time( nullptr );
            struct tm local;
            tzset();
            EXPECT_EQ( localtime_r( &now, &local )->tm_gmtoff, offset );
        } );
}

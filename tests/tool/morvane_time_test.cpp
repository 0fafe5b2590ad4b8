#include "morvane_run.h"

#include <algorithm>
#include <ctime>

using namespace qv::test;

TEST( MorvaneTime, ShowsShiftsAndCompares )
{
    struct
    {
        const char *words;
        const char *out;
    } const CASES[] = {
        { "show 2024-feb-29", "UTC 2024-02-29 00:00:00 (Thursday)\n" },
        { "shift '2024-01-31 12:00' --months 1", "UTC 2024-03-01 12:00:00 (Friday)\n" },
        // In the order of the command line.
        { "shift 2024-1-31 --days -1 --months=1", "UTC 2024-03-01 00:00:00 (Friday)\n" },
        { "shift --years 1 2024 --y 1 --hours 1 --minutes 2 --sec 3", "UTC 2026-01-01 01:02:03 (Thursday)\n" },
        { "shift 2000 --days 146097000000000", "UTC 400000002000-01-01 00:00:00 (Saturday)\n" },
        { "between 2024 2025", "31622400\n" },
        { "zone Europe/Zurich", "W. Europe Standard Time\n" },
    };

    for( const auto &row : CASES )
    {
        Outcome outcome = morvane( std::string( "time " ) + row.words );
        EXPECT_EQ( row.out, outcome.out ) << row.words;
        EXPECT_EQ( 0, outcome.status ) << outcome.err;
    }

    Outcome zones = morvane( "time zones" );
    EXPECT_EQ( 455, std::count( zones.out.begin(), zones.out.end(), '\n' ) );

    // Always in UTC, whatever the surroundings.
    auto utc = []
    {
        char   result[64];
        time_t t = time( nullptr );
        strftime( result, sizeof( result ), "UTC %F %T (%A)\n", gmtime( &t ) );
        return std::string( result );
    };
    std::string before = utc();
    std::string now    = morvane( "time now", "TZ=XXX-5:45" ).out;
    EXPECT_LE( before, now );
    EXPECT_GE( utc(), now );
    EXPECT_THAT( morvane( "time zone", "TZ=XXX-5:45" ).out, testing::EndsWith( "UTC+05:45\n" ) );
    EXPECT_THAT( morvane( "time zone", "TZ=XXX3:30" ).out, testing::EndsWith( "UTC-03:30\n" ) );
}

TEST( MorvaneTime, FailsInOneLine )
{
    const Command ROWS[] = {
        { "$M time show 2023-02-29", 1, "", "morvane time: 2023-02-29: no time\n" },
        { "$M time between 2024 x", 1, "", "morvane time: x: no time\n" },
        { "$M time between 0 9223372036854775807", 1, "",
          "morvane time: 9223372036854775807: too far away to count the seconds\n" },
        { "$M time shift 2024 --days 1.5", 1, "", "morvane time: 1.5: no integer\n" },
        { "$M time shift 9223372036854775807 --seconds 1", 1, "", "morvane time: 1: the year would be out of range\n" },
        { "$M time shift 0 --years -9223372036854775807 --months -999", 1, "",
          "morvane time: -999: the year would be out of range\n" },
        { "$M time zone Atlantis", 1, "", "morvane time: Atlantis: no such time zone\n" },
        { "$M random bytes -1", 1, "", "morvane random: -1: no integer from 0 to 9223372036854775807\n" },
        { "$M random int 1 x", 1, "", "morvane random: x: no integer from 0 to 9223372036854775807\n" },
        { "$M random int 9 3", 1, "", "morvane random: 3: less than the lowest value\n" },
    };

    expectOutcomes( ROWS );
}

TEST( MorvaneRandom, PrintsBytesIntegersAndIdentifiers )
{
    const char *HEX = "0123456789abcdef";

    for( size_t count : { 0, 1, 128, 1000 } )
    {
        std::string out = morvane( "random bytes " + std::to_string( count ) ).out;
        EXPECT_EQ( 2 * count + 1, out.size() );
        EXPECT_EQ( 2 * count, out.find_first_not_of( HEX ) );
    }

    EXPECT_EQ( "7\n", morvane( "random int 7 7" ).out );
    EXPECT_LE( std::stoll( morvane( "random int 0 9223372036854775807" ).out ), INT64_MAX );
    int drawn = std::stoi( morvane( "random int 3 9" ).out );
    EXPECT_LE( 3, drawn );
    EXPECT_GE( 9, drawn );

    Outcome id = morvane( "id" );
    EXPECT_EQ( 33u, id.out.size() );
    EXPECT_EQ( 32u, id.out.find_first_not_of( "0123456789ABCDEF" ) );
    EXPECT_NE( id.out, morvane( "id" ).out );
}

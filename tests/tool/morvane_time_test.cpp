#include "morvane_run.h"

using namespace qv::test;

TEST( MorvaneTime, ShowsShiftsAndCompares )
{
    struct
    {
        std::string zone, words, out;
    } const ROWS[] = {
        { "UTC", "show 2024-feb-29 1 2024-02-29T12:30:15+0545",
          "2024-02-29T00:00:00Z\n0001-01-01T00:00:00Z\n2024-02-29T06:45:15Z\n" },
        { "XXX-5:45", "show 2024-02-29T12:30 \"utc 2024-02-29 (Thursday)\" 2024-02-29T12:00-00:30",
          "2024-02-29T12:30:00+05:45\n2024-02-29T05:45:00+05:45\n2024-02-29T18:15:00+05:45\n" },
        { "XXX0:00:08", "show 2024T00:00Z", "2023-12-31T23:59:52-00:00:08\n" },

        // One that is skipped, and one that comes twice.
        { "CET-1CEST,M3.5.0,M10.5.0/3", "show \"2024-mar-31 02:30\" 2024-10-27T02:30 2024-10-27T03:00",
          "2024-03-31T03:30:00+02:00\n2024-10-27T02:30:00+02:00\n2024-10-27T03:00:00+01:00\n" },
        { "EST5EDT,M3.2.0,M11.1.0", "show 2024-03-10T02:30 2024-11-03T01:30 2024-11-03T02:00",
          "2024-03-10T03:30:00-04:00\n2024-11-03T01:30:00-04:00\n2024-11-03T02:00:00-05:00\n" },

        // In the order of the command line; the date is moved in the zone, and hours are what passes.
        { "UTC", "shift 2024-1-31 --days -1 --months=1", "2024-03-01T00:00:00Z\n" },
        { "UTC", "shift --years 1 2024 --y 1 --hours 1 --minutes 2 --sec 3", "2026-01-01T01:02:03Z\n" },
        { "UTC", "shift 0 --years -44", "-0044-01-01T00:00:00Z\n" },
        { "XXX-1", "shift 2000 --days 146097000000000", "+400000002000-01-01T00:00:00Z\n" },
        { "XXX-1", "show +400000002000-01-01T00:00:00Z", "+400000002000-01-01T00:00:00Z\n" },
        { "CET-1CEST,M3.5.0,M10.5.0/3", "shift 2024-03-30T12:00 --days 1", "2024-03-31T12:00:00+02:00\n" },
        { "CET-1CEST,M3.5.0,M10.5.0/3", "shift 2024-03-30T12:00 --hours 24", "2024-03-31T13:00:00+02:00\n" },
        { "CET-1CEST,M3.5.0,M10.5.0/3", "between 2024-03-31 2024-04-01", "82800\n" },
        { "XXX-5:45", "zone", "UTC+05:45\n" },
        { "XXX3:30", "zone", "UTC-03:30\n" },
        { "Europe/Zurich", "zone | cut -d+ -f1", "Europe/Zurich UTC\n" },
        { "UTC", "zone Europe/Zurich", "W. Europe Standard Time\n" },
        { "UTC", "zones | wc -l", "455\n" },
    };

    for( const auto &row : ROWS )
        expectOutcome( { "TZ=" + row.zone + " $M time " + row.words, row.out } );

    expectOutcome(
        { "export TZ=XXX-5:45; now() { date +%FT%T+05:45; }; { now; $M time now; now; } | LC_ALL=C sort -c", "" } );
}

TEST( MorvaneTime, FailsInOneLine )
{
    expectFailures( {
        { "time show 2023-02-29", "time: 2023-02-29: no time" },
        { "time show 2023-02-28T24:00", "time: 2023-02-28T24:00: no time" },
        { "time show 2023-02-28T20:00+24", "time: 2023-02-28T20:00+24: no time" },
        { "time show 2023-02-28T20:00+01:00Z", "time: 2023-02-28T20:00+01:00Z: no time" },
        { "time show 9223372036854775807-12-31T23:59-01:00", "time: 9223372036854775807-12-31T23:59-01:00: no time" },
        { "time between 2024 x", "time: x: no time" },
        { "time between 0 9223372036854775807", "time: 9223372036854775807: too far away to count the seconds" },
        { "time shift 2024 --days 1.5", "time: 1.5: no integer" },
        { "time shift 9223372036854775807 --seconds 1", "time: 1: the year would be out of range" },
        { "time shift 0 --years -9223372036854775807 --months -999", "time: -999: the year would be out of range" },
        { "time zone Atlantis", "time: Atlantis: no such time zone" },
        { "random int 1 x", "random: x: no integer from 0 to 9223372036854775807" },
        { "random int 9 3", "random: 3: less than the lowest value" },
    } );
}

TEST( MorvaneRandom, PrintsBytesIntegersAndIdentifiers )
{
    expectOutcomes( {
        { "for n in 0 1 128 1000; do $M random bytes $n | wc -c; done", "1\n3\n257\n2001\n" },
        { "$M random bytes 1000 | tr -d 0-9a-f", "\n" },
        { "$M random int 7 7; $M random int 0 9223372036854775807 | tr -d 0-9", "7\n\n" },
        { "for n in 1 2 3 4 5 6 7 8; do $M random int 3 4; done | tr -d \"34\\n\"", "" },
        { "$M id | tr -d 0-9A-F; $M id | wc -c; [ $($M id) != $($M id) ]", "\n33\n" },
    } );
}

#include "morvane_run.h"

using namespace qv::test;

TEST( MorvaneTime, ShowsShiftsAndCompares )
{
    expectOutcomes( {
        { "export TZ=UTC; $M time show 2024-feb-29 1 2024-02-29T12:30:15+0545",
          "2024-02-29T00:00:00Z\n0001-01-01T00:00:00Z\n2024-02-29T06:45:15Z\n" },
        { "TZ=XXX-5:45 $M time show 2024-02-29T12:30 \"utc 2024-02-29 (Thursday)\" 2024-02-29T12:00-00:30",
          "2024-02-29T12:30:00+05:45\n2024-02-29T05:45:00+05:45\n2024-02-29T18:15:00+05:45\n" },

        // Times that are skipped and that come twice. The date is moved in the zone, and hours are what passes.
        { "export TZ=CET-1CEST,M3.5.0,M10.5.0/3; $M time show \"2024-mar-31 02:30\" 2024-10-27T02:30 2024-10-27T03:00; "
          "$M time between 2024-03-31 2024-04-01; for shift in \"--days 1\" \"--hours 24\"; do $M time shift "
          "2024-03-30T12:00 $shift; done",
          "2024-03-31T03:30:00+02:00\n2024-10-27T02:30:00+02:00\n2024-10-27T03:00:00+01:00\n"
          "82800\n2024-03-31T12:00:00+02:00\n2024-03-31T13:00:00+02:00\n" },
        { "TZ=EST5EDT,M3.2.0,M11.1.0 $M time show 2024-03-10T02:30 2024-11-03T01:30 2024-11-03T02:00",
          "2024-03-10T03:30:00-04:00\n2024-11-03T01:30:00-04:00\n2024-11-03T02:00:00-05:00\n" },

        // In the order of the command line.
        { "export TZ=UTC; $M time shift 2024-1-31 --days -1 --months=1; $M time shift 0 --years -44; "
          "$M time shift --years 1 2024 --y 1 --hours 1 --minutes 2 --sec 3",
          "2024-03-01T00:00:00Z\n-0044-01-01T00:00:00Z\n2026-01-01T01:02:03Z\n" },
        { "TZ=XXX-1 $M time shift +2000-01-01T00:00Z --days 146097000000000", "+400000002000-01-01T01:00:00Z\n" },
        { "for zone in XXX-5:45 XXX3:30 Europe/Zurich; do TZ=$zone $M time zone | tr 2 1; done",
          "UTC+05:45\nUTC-03:30\nEurope/Zurich UTC+01:00\n" },
        { "$M time zone Europe/Zurich; $M time zones | wc -l", "W. Europe Standard Time\n455\n" },
        { "export TZ=XXX-5:45; now() { date +%FT%T+05:45; }; { now; $M time now; now; } | LC_ALL=C sort -c", "" },
    } );
}

TEST( MorvaneTime, FailsInOneLine )
{
    expectFailures( {
        { "time show 2023-02-29", "time: 2023-02-29: no time" },
        { "time show 2023-02-28T20:00+24", "time: 2023-02-28T20:00+24: no time" },
        { "time show 9223372036854775807-12-31T23:59-01:00", "time: 9223372036854775807-12-31T23:59-01:00: no time" },
        { "time between 2024 x", "time: x: no time" },
        { "time between 0 9223372036854775807", "time: 9223372036854775807: too far away to count the seconds" },
        { "time shift 2024 --days 1.5", "time: 1.5: no integer" },
        { "time shift 1 --years -9223372036854775807 --months -999", "time: -999: the year would be out of range" },
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

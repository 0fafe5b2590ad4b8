#include "morvane_run.h"

using namespace qv::test;

TEST( MorvaneTime, ShowsShiftsAndCompares )
{
    expectOutcomes( {
        { "$M time show 2024-feb-29", "UTC 2024-02-29 00:00:00 (Thursday)\n" },
        { "$M time shift \"2024-01-31 12:00\" --months 1", "UTC 2024-03-01 12:00:00 (Friday)\n" },

        // In the order of the command line.
        { "$M time shift 2024-1-31 --days -1 --months=1", "UTC 2024-03-01 00:00:00 (Friday)\n" },
        { "$M time shift --years 1 2024 --y 1 --hours 1 --minutes 2 --sec 3", "UTC 2026-01-01 01:02:03 (Thursday)\n" },
        { "$M time shift 2000 --days 146097000000000", "UTC 400000002000-01-01 00:00:00 (Saturday)\n" },
        { "$M time between 2024 2025", "31622400\n" },
        { "$M time zone Europe/Zurich", "W. Europe Standard Time\n" },
        { "$M time zones | wc -l", "455\n" },
        { "for zone in XXX-5:45 XXX3:30; do TZ=$zone $M time zone | grep -o \"UTC[+-].*\"; done",
          "UTC+05:45\nUTC-03:30\n" },

        // Always in UTC, whatever the surroundings.
        { "now() { LC_ALL=C date -u \"+UTC %F %T (%A)\"; }; { now; TZ=XXX-5:45 $M time now; now; } | LC_ALL=C sort -c",
          "" },
    } );
}

TEST( MorvaneTime, FailsInOneLine )
{
    expectFailures( {
        { "time show 2023-02-29", "time: 2023-02-29: no time" },
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

#include "qv_test_support.h"

#include "qv/base/qv_month.h"
#include "qv/base/qv_time.h"
#include "qv/base/qv_weekday.h"

#include <chrono>
#include <ctime>
#include <optional>
#include <random>
#include <vector>
#include <vector>

using qv::Ref;
using namespace qv::test;
using namespace std::chrono;

namespace
{
using Shift = void ( * )( QV_TIME **, QV_INT );

// A time of a year, month, day, hour, minute and second, of which the last ones may be left out.
Ref< QV_TIME > timeOf( const std::vector< QV_INT > &fields )
{
    const Shift SETTERS[] = { qvTimeSetYear, qvTimeSetMonth,  qvTimeSetDay,
                              qvTimeSetHour, qvTimeSetMinute, qvTimeSetSecond };
    Ref         tm( qvTimeCreate() );

    for( size_t i = 0; i < fields.size(); i++ )
        SETTERS[i]( tm.at(), fields[i] );

    return tm;
}

// The calendar of the C++ library, which knows the years up to 32767, is the model.
Ref< QV_TIME > timeOf( sys_seconds point )
{
    sys_days       date = floor< days >( point );
    year_month_day ymd( date );
    hh_mm_ss       clock( point - date );

    return timeOf(
        { static_cast< int >( ymd.year() ), static_cast< unsigned >( ymd.month() ),
          static_cast< unsigned >( ymd.day() ), clock.hours().count(), clock.minutes().count(),
          clock.seconds().count() } );
}

std::optional< QV_INT > delta( QV_TIME *a, QV_TIME *b )
{
    QV_INT  result = 7;
    QV_BOOL ok     = qvTimeDeltaSeconds( a, b, &result );
    EXPECT_EQ( ok, qvTimeDeltaSeconds( a, b, nullptr ) );
    EXPECT_TRUE( ok || result == 0 );

    return ok ? std::optional( result ) : std::nullopt;
}
} // namespace

TEST( Time, RandomShiftsAndDistances )
{
    const std::pair< Shift, QV_INT > SHIFTS[] = {
        { qvTimeShiftDays, 86400 }, { qvTimeShiftHours, 3600 }, { qvTimeShiftMinutes, 60 }, { qvTimeShiftSeconds, 1 } };

    const QV_INT    FIRST = sys_seconds( sys_days( year( 0 ) / 1 / 1 ) ).time_since_epoch().count();
    const QV_INT    LAST  = sys_seconds( sys_days( year( 32767 ) / 12 / 31 ) ).time_since_epoch().count();
    const QV_INT    ERA   = 146097 * INT64_C( 86400 );
    std::mt19937_64 random( 52 );

    for( int i = 0; i < 20000; i++ )
    {
        // Long shifts and short ones, each within what the model knows.
        auto [shift, unit] = SHIFTS[i % 4];
        QV_INT span        = INT64_C( 1 ) << ( random() % 40 );
        QV_INT from        = std::uniform_int_distribution( FIRST, LAST )( random );
        QV_INT to          = from + unit * std::uniform_int_distribution( -span, span )( random );

        if( to < FIRST || to > LAST )
            continue;

        Ref< QV_TIME > a = timeOf( sys_seconds( seconds( from ) ) ), b = timeOf( sys_seconds( seconds( to ) ) );
        Ref            moved( qvTimeCreateFrom( a ) );
        shift( moved.at(), ( to - from ) / unit );
        ASSERT_EQ( textOf( b.get() ), textOf( moved.get() ) ) << textOf( a.get() ) << " by " << to - from;
        ASSERT_EQ( to - from, delta( a, b ) );
        ASSERT_EQ( ( from > to ) - ( from < to ), qvTimeCompare( a, b ) );

        // What a time tells of its day.
        sys_days       date = floor< days >( sys_seconds( seconds( to ) ) );
        year_month_day ymd( date );
        ASSERT_EQ( weekday( date ).iso_encoding() - 1, qvTimeWeekday( moved ) );
        ASSERT_EQ( ( date - sys_days( ymd.year() / 1 / 1 ) ).count() + 1, qvTimeDayOfYear( moved ) );
        ASSERT_EQ( ymd.year().is_leap(), qvTimeLeapYear( moved ) );
        ASSERT_EQ( ymd.year().is_leap() ? 366 : 365, qvTimeDaysInYear( moved ) );
        ASSERT_EQ(
            QV_INT( unsigned( year_month_day_last( ymd.year() / ymd.month() / last ).day() ) ),
            qvTimeDaysInMonth( moved ) );

        time_t t = 1;
        ASSERT_TRUE( qvTimeTryConvertToTimeT( b, &t ) );
        ASSERT_EQ( to, t );
        ASSERT_TRUE( qvTimeEquals( b, Ref( qvTimeTryCreateFromTimeT( to ) ) ) );
        ASSERT_TRUE( qvTimeEquals( b, Ref( qvTimeTryCreateFromString( text( textOf( b.get() ) ) ) ) ) );

        // Whole eras on top of it change nothing but the year, however many there are.
        QV_INT eras = static_cast< QV_INT >( random() ) / ERA / 4;
        shift( moved.at(), eras * ( ERA / unit ) );
        ASSERT_EQ( to - from + eras * ERA, delta( a, moved ) );
        ASSERT_EQ( qvTimeYear( b ) + 400 * eras, qvTimeYear( moved ) );
    }
}

TEST( Time, ShiftsAtTheEdges )
{
    const std::tuple< std::vector< QV_INT >, Shift, QV_INT, const char * > ROWS[] = {
        { { 2024, 1, 1, 10, 59, 61 }, qvTimeShiftSeconds, 0, "UTC 2024-01-01 11:00:01 (Monday)" },
        { { 2024, 1, 1, 10, 0, 61 }, qvTimeShiftSeconds, -1, "UTC 2024-01-01 10:01:00 (Monday)" },
        { { 2024, 2, 29 }, qvTimeShiftYears, 1, "UTC 2025-03-01 00:00:00 (Saturday)" },
        { { 2096, 2, 29, 1, 2, 3 }, qvTimeShiftYears, 4, "UTC 2100-03-01 01:02:03 (Monday)" },
        { { 2024, 1, 31 }, qvTimeShiftMonths, 1, "UTC 2024-03-01 00:00:00 (Friday)" },
        { { 2023, 11, 30 }, qvTimeShiftMonths, 3, "UTC 2024-03-01 00:00:00 (Friday)" },
        { { 2023, 6, 15 }, qvTimeShiftMonths, 19, "UTC 2025-01-15 00:00:00 (Wednesday)" },
        { { 2024, 1, 15 }, qvTimeShiftMonths, -25, "UTC 2021-12-15 00:00:00 (Wednesday)" },
        // A day that the month doesn't have is the last one on the way on, and counts on the way back.
        { { 2023, 2, 31 }, qvTimeShiftMonths, 0, "UTC 2023-03-01 00:00:00 (Wednesday)" },
        { { 2023, 2, 31 }, qvTimeShiftDays, 1, "UTC 2023-03-01 00:00:00 (Wednesday)" },
        { { 2023, 2, 31 }, qvTimeShiftDays, 0, "UTC 2023-02-31 00:00:00" },
        { { 2023, 2, 31 }, qvTimeShiftDays, -1, "UTC 2023-02-30 00:00:00" },
        { { 2023, 2, 31 }, qvTimeShiftDays, -31, "UTC 2023-01-31 00:00:00 (Tuesday)" },
    };

    for( const auto &[from, shift, count, to] : ROWS )
    {
        Ref< QV_TIME > tm = timeOf( from );
        shift( tm.at(), count );
        EXPECT_EQ( to, textOf( tm.get() ) );
    }

    EXPECT_FALSE( qvTimeValid( timeOf( { 2023, 2, 31 } ) ) );
    EXPECT_EQ( 3 * 86400, delta( timeOf( { 2023, 2, 28 } ), timeOf( { 2023, 2, 31 } ) ) );
    EXPECT_EQ( -2 * 86400, delta( timeOf( { 2023, 2, 31 } ), timeOf( { 2023, 3, 1 } ) ) );
}

TEST( Time, TheFarthestShiftsAndDistances )
{
    Ref< QV_TIME > latest = timeOf( { QV_INT_MAX, 12, 31, 23, 59, 59 } ), earliest = timeOf( { QV_INT_MIN } );
    Ref            start( qvTimeCreate() ), farthest( qvTimeCreate() );
    qvTimeShiftDays( start.at(), QV_INT_MAX ), qvTimeShiftDays( start.at(), -QV_INT_MAX );
    qvTimeShiftSeconds( start.at(), QV_INT_MIN ), qvTimeShiftSeconds( start.at(), QV_INT_MAX );
    qvTimeShiftSeconds( start.at(), 1 );
    EXPECT_TRUE( qvTimeEquals( start, farthest ) );

    // Distances tell what doesn't fit.
    qvTimeShiftSeconds( farthest.at(), QV_INT_MAX );
    EXPECT_EQ( QV_INT_MAX, delta( start, farthest ) );
    EXPECT_EQ( -QV_INT_MAX, delta( farthest, start ) );
    qvTimeShiftDays( farthest.at(), 1 );

    for( auto [a, b] : { std::pair( &start, &farthest ), { &earliest, &latest }, { &latest, &earliest } } )
        EXPECT_EQ( std::nullopt, delta( *a, *b ) );

    // The second before the epoch is what the C library returns for errors.
    time_t t = 7;
    EXPECT_FALSE( qvTimeTryConvertToTimeT( latest, &t ) );
    EXPECT_EQ( 0, t );
    EXPECT_FALSE( qvTimeTryConvertToTimeT( timeOf( { 1969, 12, 31, 23, 59, 59 } ), nullptr ) );
    EXPECT_TRUE( qvTimeTryConvertToTimeT( timeOf( { 1969, 12, 31, 23, 59, 58 } ), &t ) );
    EXPECT_EQ( -2, t );
    EXPECT_EQ( nullptr, qvTimeTryCreateFromTimeT( INT64_MAX ) );
}

TEST( Time, ReadsTexts )
{
    const std::pair< const char *, const char * > ROWS[] = {
        { "2024", "UTC 2024-01-01 00:00:00 (Monday)" },
        { "2024-FEB-29", "UTC 2024-02-29 00:00:00 (Thursday)" },
        { "utc  0-september-3\t7", "UTC 0-09-03 07:00:00 (Sunday)" },
        { " 2024-02-29 (THURSDAY) ", "UTC 2024-02-29 00:00:00 (Thursday)" },
        { "UTC 2024-02-29 12:30 ( thursday )", "UTC 2024-02-29 12:30:00 (Thursday)" },
        { "2024 23:59:61", "UTC 2024-01-01 23:59:61 (Monday)" },
    };

    for( auto [from, to] : ROWS )
        EXPECT_EQ( to, textOf( Ref( qvTimeTryCreateFromString( text( from ) ) ).get() ) ) << from;

    for( const char *bad :
         { "", "2024x", "-1", "9223372036854775808", "2024-1-32", "2023-02-29", "2024 24", "2024 1:60", "2024 1:1:62",
           "2024-01-01 (Tuesday)", "2024-01-01 (Monday", "UTC 2024-01-01 12:00:00 (Monday) x", "UTC UTC 2024" } )
        EXPECT_EQ( nullptr, qvTimeTryCreateFromString( text( bad ) ) ) << bad;
}

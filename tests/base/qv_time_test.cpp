#include "qv_test_support.h"

#include "qv/base/qv_month.h"
#include "qv/base/qv_time.h"
#include "qv/base/qv_weekday.h"

#include <chrono>
#include <ctime>
#include <optional>
#include <random>

using qv::Ref;
using namespace qv::test;
using namespace std::chrono;

namespace
{
using Shift = void ( * )( QV_TIME **, QV_INT );

// Parses a text, which has to be a time.
Ref< QV_TIME > parsed( const char *string )
{
    Ref< QV_TIME > tm( qvTimeTryCreateFromString( text( string ) ) );

    if( !tm )
        ADD_FAILURE() << string;

    return tm ? std::move( tm ) : Ref< QV_TIME >( qvTimeCreate() );
}

// The text without the weekday.
std::string shown( QV_TIME *tm )
{
    std::string result = textOf( tm );
    return result.substr( 4, result.find( " (" ) - 4 );
}

std::string shifted( const char *from, Shift shift, QV_INT count )
{
    Ref< QV_TIME > tm = parsed( from );
    shift( tm.at(), count );

    return shown( tm );
}

Ref< QV_TIME > time( QV_INT year, QV_INT month, QV_INT day, QV_INT hour = 0, QV_INT minute = 0, QV_INT second = 0 )
{
    Ref< QV_TIME > tm( qvTimeCreate() );
    qvTimeSetYear( tm.at(), year );
    qvTimeSetMonth( tm.at(), month );
    qvTimeSetDay( tm.at(), day );
    qvTimeSetHour( tm.at(), hour );
    qvTimeSetMinute( tm.at(), minute );
    qvTimeSetSecond( tm.at(), second );

    return tm;
}

// Everything here is checked against the calendar of the C++ library, which knows the years up to 32767.
Ref< QV_TIME > timeOf( sys_seconds point )
{
    sys_days       date = floor< days >( point );
    year_month_day ymd( date );
    hh_mm_ss       clock( point - date );

    return time(
        static_cast< int >( ymd.year() ), static_cast< unsigned >( ymd.month() ), static_cast< unsigned >( ymd.day() ),
        clock.hours().count(), clock.minutes().count(), clock.seconds().count() );
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
    struct
    {
        Shift  shift;
        QV_INT unit;
    } const SHIFTS[] = {
        { qvTimeShiftDays, 86400 }, { qvTimeShiftHours, 3600 }, { qvTimeShiftMinutes, 60 }, { qvTimeShiftSeconds, 1 } };

    const QV_INT    FIRST = sys_seconds( sys_days( year( 0 ) / 1 / 1 ) ).time_since_epoch().count();
    const QV_INT    LAST  = sys_seconds( sys_days( year( 32767 ) / 12 / 31 ) ).time_since_epoch().count();
    const QV_INT    ERA   = 146097 * INT64_C( 86400 );
    std::mt19937_64 random( 52 );

    for( int i = 0; i < 20000; i++ )
    {
        // Long shifts and short ones, each within what the other calendar can tell.
        auto  &by     = SHIFTS[i % 4];
        QV_INT span   = INT64_C( 1 ) << ( random() % 40 );
        QV_INT from   = std::uniform_int_distribution< QV_INT >( FIRST, LAST )( random );
        QV_INT lowest = std::max( -span, ( FIRST - from ) / by.unit );
        QV_INT most   = std::min( span, ( LAST - from ) / by.unit );
        QV_INT count  = std::uniform_int_distribution< QV_INT >( lowest, most )( random );
        QV_INT to     = from + count * by.unit;

        Ref< QV_TIME > a = timeOf( sys_seconds( seconds( from ) ) );
        Ref< QV_TIME > b = timeOf( sys_seconds( seconds( to ) ) );
        Ref< QV_TIME > moved( qvTimeCreateFrom( a ) );
        by.shift( moved.at(), count );

        ASSERT_EQ( textOf( b.get() ), textOf( moved.get() ) ) << textOf( a.get() ) << " by " << count << "*" << by.unit;
        ASSERT_EQ( to - from, delta( a, b ) );
        ASSERT_EQ( from - to, delta( b, a ) );
        ASSERT_EQ( ( from > to ) - ( from < to ), qvTimeCompare( a, b ) );

        // What a time tells of its day.
        sys_days       date = floor< days >( sys_seconds( seconds( to ) ) );
        year_month_day ymd( date );
        ASSERT_EQ( ( weekday( date ).c_encoding() + 6 ) % 7, qvTimeWeekday( moved ) );
        ASSERT_EQ( ( date - sys_days( ymd.year() / 1 / 1 ) ).count() + 1, qvTimeDayOfYear( moved ) );
        ASSERT_EQ( ymd.year().is_leap(), qvTimeLeapYear( moved ) );
        ASSERT_EQ( ymd.year().is_leap() ? 366 : 365, qvTimeDaysInYear( moved ) );
        ASSERT_EQ(
            QV_INT( unsigned( year_month_day_last( ymd.year() / ymd.month() / last ).day() ) ),
            qvTimeDaysInMonth( moved ) );

        time_t t = 1;
        ASSERT_TRUE( qvTimeTryConvertToTimeT( b, &t ) );
        ASSERT_EQ( to, t );
        ASSERT_TRUE( qvTimeEquals( b, Ref< QV_TIME >( qvTimeTryCreateFromTimeT( to ) ) ) );
        ASSERT_TRUE( qvTimeEquals( b, Ref< QV_TIME >( qvTimeTryCreateFromString( text( textOf( b.get() ) ) ) ) ) );

        // Whole eras on top of it change nothing but the year, however many there are.
        QV_INT eras = static_cast< QV_INT >( random() ) / ERA / 4;
        by.shift( moved.at(), eras * ( ERA / by.unit ) );
        ASSERT_EQ( qvTimeYear( b ) + 400 * eras, qvTimeYear( moved ) );
        ASSERT_EQ( to - from + eras * ERA, delta( a, moved ) );
        qvTimeSetYear( moved.at(), qvTimeYear( b ) );
        ASSERT_TRUE( qvTimeEquals( b, moved ) );
    }
}

TEST( Time, ShiftsAtTheEdges )
{
    struct
    {
        const char *from;
        Shift       shift;
        QV_INT      count;
        const char *to;
    } const CASES[] = {
        { "2096-2-29", qvTimeShiftDays, 1461, "2100-03-01 00:00:00" },
        { "2024-12-31 23:59:59", qvTimeShiftSeconds, 1, "2025-01-01 00:00:00" },
        { "2024-1-1 10:59:61", qvTimeShiftSeconds, 0, "2024-01-01 11:00:01" },
        { "2024-1-1 10:00:61", qvTimeShiftSeconds, -1, "2024-01-01 10:01:00" },
        { "2024-2-29", qvTimeShiftYears, 1, "2025-03-01 00:00:00" },
        { "2096-2-29 1:2:3", qvTimeShiftYears, 4, "2100-03-01 01:02:03" },
        { "2024-1-31", qvTimeShiftMonths, 1, "2024-03-01 00:00:00" },
        { "2024-1-15", qvTimeShiftMonths, -25, "2021-12-15 00:00:00" },
    };

    for( const auto &row : CASES )
        EXPECT_EQ( row.to, shifted( row.from, row.shift, row.count ) ) << row.from << " by " << row.count;

    // A day that the month doesn't have is the last one on the way on, and counts on the way back.
    struct
    {
        QV_INT      shift;
        const char *to;
    } const BEYOND[] = {
        { 1, "2023-03-01 00:00:00" },  { 2, "2023-03-02 00:00:00" },   { 0, "2023-02-31 00:00:00" },
        { -1, "2023-02-30 00:00:00" }, { -30, "2023-02-01 00:00:00" }, { -31, "2023-01-31 00:00:00" },
    };

    for( const auto &row : BEYOND )
    {
        Ref< QV_TIME > tm = time( 2023, 2, 31 );
        EXPECT_EQ( "UTC 2023-02-31 00:00:00", textOf( tm.get() ) );
        qvTimeShiftDays( tm.at(), row.shift );
        EXPECT_EQ( row.to, shown( tm ) );
    }

    Ref< QV_TIME > invalid = time( 2023, 2, 31 );
    EXPECT_FALSE( qvTimeValid( invalid ) );
    EXPECT_EQ( 86400, delta( time( 2023, 2, 28 ), time( 2023, 3, 1 ) ) );
    EXPECT_EQ( 3 * 86400, delta( time( 2023, 2, 28 ), invalid ) );
    EXPECT_EQ( -2 * 86400, delta( invalid, time( 2023, 3, 1 ) ) );
    qvTimeShiftMonths( invalid.at(), 0 );
    EXPECT_EQ( "2023-03-01 00:00:00", shown( invalid ) );
}

TEST( Time, TheFarthestShiftsAndDistances )
{
    Ref< QV_TIME > last  = time( QV_INT_MAX, 12, 31, 23, 59, 59 );
    Ref< QV_TIME > first = time( QV_INT_MIN, 1, 1 );

    // The farthest shift that there is stays in range when it begins far enough away.
    Ref< QV_TIME > tm( qvTimeCreate() );
    qvTimeShiftDays( tm.at(), QV_INT_MAX );
    qvTimeShiftDays( tm.at(), QV_INT_MIN );
    qvTimeShiftDays( tm.at(), 1 );
    EXPECT_EQ( "0-01-01 00:00:00", shown( tm ) );
    qvTimeShiftSeconds( tm.at(), QV_INT_MIN );
    qvTimeShiftSeconds( tm.at(), QV_INT_MAX );
    qvTimeShiftSeconds( tm.at(), 1 );
    EXPECT_EQ( "0-01-01 00:00:00", shown( tm ) );

    // Distances tell what doesn't fit.
    EXPECT_EQ( std::nullopt, delta( first, last ) );
    EXPECT_EQ( std::nullopt, delta( last, first ) );
    EXPECT_EQ( 1, delta( last, last ).value() + 1 );
    Ref< QV_TIME > farthest( qvTimeCreate() );
    qvTimeShiftSeconds( farthest.at(), QV_INT_MAX );
    EXPECT_EQ( QV_INT_MAX, delta( tm, farthest ) );
    EXPECT_EQ( -QV_INT_MAX, delta( farthest, tm ) );
    qvTimeShiftDays( farthest.at(), 1 );
    EXPECT_EQ( std::nullopt, delta( tm, farthest ) );

    time_t t = 7;
    EXPECT_FALSE( qvTimeTryConvertToTimeT( last, &t ) );
    EXPECT_EQ( 0, t );
    EXPECT_FALSE( qvTimeTryConvertToTimeT( parsed( "1969-12-31 23:59:59" ), nullptr ) );
    EXPECT_TRUE( qvTimeTryConvertToTimeT( parsed( "1969-12-31 23:59:58" ), &t ) );
    EXPECT_EQ( -2, t );
    EXPECT_EQ( nullptr, qvTimeTryCreateFromTimeT( INT64_MAX ) );
}

TEST( Time, ReadsTexts )
{
    struct
    {
        const char *from;
        const char *to; // null: no time
    } const CASES[] = {
        { "2024", "2024-01-01 00:00:00" },
        { "2024-FEB-29", "2024-02-29 00:00:00" },
        { "utc  0-september-3\t7", "0-09-03 07:00:00" },
        { " 2024-02-29 (THURSDAY) ", "2024-02-29 00:00:00" },
        { "UTC 2024-02-29 12:30 ( thursday )", "2024-02-29 12:30:00" },
        { "2024 23:59:61", "2024-01-01 23:59:61" },
        { "", nullptr },
        { "2024x", nullptr },
        { "-1", nullptr },
        { "9223372036854775808", nullptr },
        { "2024-1-32", nullptr },
        { "2023-02-29", nullptr },
        { "2024 1:1:62", nullptr },
        { "2024-01-01 (Tuesday)", nullptr },
        { "2024-01-01 (Monday", nullptr },
        { "UTC 2024-01-01 12:00:00 (Monday) x", nullptr },
        { "UTC UTC 2024", nullptr },
    };

    for( const auto &row : CASES )
    {
        Ref< QV_TIME > tm( qvTimeTryCreateFromString( text( row.from ) ) );
        EXPECT_EQ( row.to ? row.to : "", tm ? shown( tm ) : "" ) << row.from;
    }

    EXPECT_EQ( "UTC 0-01-01 00:00:00 (Saturday)", textOf( Ref< QV_TIME >( qvTimeCreate() ).get() ) );
    EXPECT_EQ( "UTC 2024-01-01 12:00:00 (Monday)", textOf( parsed( "2024-1-1 12" ).get() ) );
}

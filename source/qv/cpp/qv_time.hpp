/** @file
    qv::Time: a date and a time of day in UTC, as a value.

        qv::Time start = qv::Time::now();
        qv::Time due   = start.shifted( { .days = 30, .hours = -1 } );
        std::optional< QV_INT > seconds = start.secondsTo( due );

    qv_time.h tells the ranges of the fields and the rules of shifting. */

#ifndef QV_TIME_HPP
#define QV_TIME_HPP

#include "qv/cpp/qv_string.hpp"

namespace qv
{
/** How far a Time is shifted, back where negative. Years and months come first. */
struct Shift
{
    QV_INT years   = 0; /**< how many, as the others */
    QV_INT months  = 0; /**< of the calendar */
    QV_INT days    = 0; /**< of 24 hours */
    QV_INT hours   = 0; /**< of 60 minutes */
    QV_INT minutes = 0; /**< of 60 seconds */
    QV_INT seconds = 0; /**< the last to be added */
};

/** A date and a time of day. */
class Time : public Reference< Time, QV_TIME >
{
public:
    using Reference::Reference;

    /** The first second of the year 0. */
    Time() : Time( own( qvTimeCreate() ) )
    {
    }

    /** The present time of the system's clock. */
    [[nodiscard]] static Time now()
    {
        return own( qvTimeNow() );
    }

    /** The time that a text like `2024-feb-29 12:30` tells. */
    [[nodiscard]] static std::optional< Time > fromText( const String &text )
    {
        return ownOptional( qvTimeTryCreateFromString( text.c() ) );
    }

    /** @{ */
    /** A field. */
    // clang-format off
    [[nodiscard]] QV_INT year() const { return qvTimeYear( raw() ); }
    [[nodiscard]] QV_INT month() const { return qvTimeMonth( raw() ); }
    [[nodiscard]] QV_INT day() const { return qvTimeDay( raw() ); }
    [[nodiscard]] QV_INT hour() const { return qvTimeHour( raw() ); }
    [[nodiscard]] QV_INT minute() const { return qvTimeMinute( raw() ); }
    [[nodiscard]] QV_INT second() const { return qvTimeSecond( raw() ); }
    // clang-format on
    /** @} */

    /** The weekday, 0 (Monday) to 6 (Sunday). */
    [[nodiscard]] QV_INT weekday() const
    {
        return qvTimeWeekday( raw() );
    }

    /** A Time that is so far away from this one. A year beyond QV_INT ends the process. */
    [[nodiscard]] Time shifted( const Shift &shift ) const
    {
        Time time( *this );
        qvTimeShiftYears( time.variable(), shift.years );
        qvTimeShiftMonths( time.variable(), shift.months );
        qvTimeShiftDays( time.variable(), shift.days );
        qvTimeShiftHours( time.variable(), shift.hours );
        qvTimeShiftMinutes( time.variable(), shift.minutes );
        qvTimeShiftSeconds( time.variable(), shift.seconds );
        return time;
    }

    /** The seconds from this Time to another, negative if that is earlier; nothing if they are beyond QV_INT. */
    [[nodiscard]] std::optional< QV_INT > secondsTo( const Time &other ) const
    {
        QV_INT seconds;
        return qvTimeDeltaSeconds( raw(), other.raw(), &seconds ) ? std::optional( seconds ) : std::nullopt;
    }
};
} // namespace qv

#endif

// Texts that are times, or nearly: random characters hardly ever make a date, so each of the first bytes chooses a
// word, and only what is after them stands for itself. What is read must be valid, and its text must be read as the
// same time.

#include "qv_fuzz_walk.h"

namespace qv::fuzz
{
// What can stand in each place, in the order of the places.
const char *const WORDS[][8] = {
    { "", "", "", "UTC ", "utc\t", " ", "UTC", "-" },
    { "0", "1", "1900", "2000", "2024", "2100", "400000", "9223372036854775807" },
    { "", "-1", "-02", "-feb", "-2", "-March", "-12", "-13" },
    { "", "-1", "-28", "-28", "-29", "-30", "-31", "-32" },
    { "", " 0", " 12", " 23", "  7", " 24", ":", " x" },
    { "", ":0", ":07", ":59", ":60", "::", "-", "" },
    { "", ":0", ":59", ":60", ":61", ":62", ":", "" },
    { "", "", " (Monday)", " (Thursday)", " ( SUNDAY )", " (", "()", " (Friday" },
};

const size_t PLACES = sizeof( WORDS ) / sizeof( WORDS[0] );

void parse( const uint8_t *data, size_t size )
{
    Ref< QV_STRING > text( qvStringCreate() );

    for( size_t i = 0; i < size; i++ )
    {
        if( i < PLACES )
            qvStringAppendCstr( text.at(), WORDS[i][data[i] % 8], -1 );
        else if( data[PLACES - 1] >= 128 )
            qvStringAppendChar( text.at(), data[i] );
    }

    Ref< QV_TIME > tm( qvTimeTryCreateFromString( text ) );

    if( !tm )
        return;

    Ref< QV_STRING > shown( qvTimeToString( tm ) );
    Ref< QV_TIME >   again( qvTimeTryCreateFromString( shown ) );
    QV_INT           delta;
    require( qvTimeValid( tm ) );
    require( again && qvTimeEquals( tm, again ) );
    require( qvTimeDeltaSeconds( tm, again, &delta ) && delta == 0 );
}
} // namespace qv::fuzz

QV_FUZZ_READER( parse )

#include "qv_test_support.h"

#include "qv/base/qv_error.h"
#include "qv/io/qv_file.h"

#include <thread>

using qv::Ref;
using namespace qv::test;

TEST( Error, TellsWhatIsKnown )
{
    struct
    {
        const char *path;
        QV_INT      line, offset;
        std::string expected;
    } const cases[] = {
        { "a:b.conf", 7, 120, "a:b.conf:7: is ä" },
        { "a", -1, 0, "a@0: is ä" },
        { "a", -1, -1, "a: is ä" },
        { nullptr, 7, 120, "line 7: is ä" },
        { nullptr, -1, 9, "byte 9: is ä" },
        { nullptr, -1, -1, "is ä" },
        { "", 0, -1, ":0: is ä" },
    };

    for( const auto &row : cases )
    {
        Ref< QV_STRING > path = row.path ? text( row.path ) : Ref< QV_STRING >();
        Ref< QV_ERROR >  error( qvErrorCreate( QV_ERROR_OTHER, text( "is ä" ), path, row.line, row.offset ) );
        Ref< QV_STRING > told( qvErrorPath( error ) );

        EXPECT_EQ( row.expected, textOf( error.get() ) );
        EXPECT_EQ( row.path != nullptr, told.get() != nullptr );
        EXPECT_FALSE( qvErrorSubject( error ) );

        // It is the same as the last one, and outlives that.
        qvErrorSetLast( error );
        EXPECT_EQ( row.expected, take( qvErrorLastText() ) );
        Ref< QV_ERROR > last( qvErrorLast() );
        qvErrorClear();
        EXPECT_EQ( row.expected, textOf( last.get() ) );
        EXPECT_EQ( row.line, qvErrorLine( last ) );
        EXPECT_EQ( row.offset, qvErrorOffset( last ) );
        EXPECT_EQ( "is ä", take( qvErrorReason( last ) ) );
    }

    EXPECT_EQ( QV_ERROR_NONE, qvErrorLastCode() );
    EXPECT_EQ( "", take( qvErrorLastText() ) );
    EXPECT_FALSE( qvErrorLast() );

    EXPECT_BROKEN( qvErrorCreate( QV_ERROR_NONE, text( "" ), nullptr, -1, -1 ), "code > QV_ERROR_NONE" );
    EXPECT_BROKEN( qvErrorCreate( QV_ERROR_OTHER, text( "" ), nullptr, -1, -2 ), "offset >= -1" );
}

TEST( Error, EachThreadHasItsOwn )
{
    Ref< QV_STRING > missing = text( "/missing/" + std::string( 5000, 'x' ) ), empty = text( "" );
    QV_INT           live = liveObjects();

    EXPECT_FALSE( qvFileExists( empty ) );

    // Threads that the library does not know; a leak of theirs would be found by a memory checker.
    for( int i = 0; i < 4; i++ )
        std::thread(
            [&]
            {
                EXPECT_EQ( QV_ERROR_NONE, qvErrorLastCode() );
                EXPECT_FALSE( qvFileExists( missing ) );
                EXPECT_EQ( QV_ERROR_BAD_NAME, qvErrorLastCode() );
                EXPECT_EQ( utf8( missing ) + ": cannot be looked up: File name too long", take( qvErrorLastText() ) );
            } )
            .join();

    EXPECT_EQ( QV_ERROR_NOT_FOUND, qvErrorLastCode() );
    EXPECT_EQ( live, liveObjects() ); // it is no object
    qvErrorClear();
}

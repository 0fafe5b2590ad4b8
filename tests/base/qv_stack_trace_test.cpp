#include "qv_test_support.h"

#include "qv/base/qv_stack_trace.h"
#include "qv/base/qv_vector.h"

using qv::Ref;
using namespace qv::test;

namespace
{
// The length of the stack in a function that is `depth` calls deeper than the caller.
__attribute__( ( noinline ) ) QV_INT lengthAt( int depth, QV_INT skip, QV_INT maxLength )
{
    QV_INT result = depth > 0 ? lengthAt( depth - 1, skip, maxLength )
                              : qvStackTraceLength( Ref( qvStackTraceCreate( skip, maxLength ) ) );
    __asm__ volatile( "" : : "r"( result ) : "memory" ); // keeps the frame
    return result;
}
} // namespace

TEST( StackTrace, LengthIsLimitedFromBothSides )
{
    const QV_INT whole = lengthAt( 10, 0, -1 ), MOST = QV_INT_MAX;
    EXPECT_LT( 10, whole );
    EXPECT_EQ( whole + 5, lengthAt( 15, 0, -1 ) );
    EXPECT_EQ( 3, lengthAt( 10, 4, 3 ) );
    EXPECT_EQ( whole - 4, lengthAt( 10, 4, MOST ) );
    EXPECT_EQ( 1, lengthAt( 10, whole - 1, -1 ) );

    for( auto [skip, maxLength] : { std::pair( QV_INT( 0 ), QV_INT( 0 ) ), { whole, -1 }, { MOST, -1 } } )
        EXPECT_EQ( 0, lengthAt( 10, skip, maxLength ) );

    // 4000 calls are looked at, of which one is that of the function itself.
    EXPECT_EQ( 3999, lengthAt( 5000, 0, -1 ) );
}

TEST( StackTrace, LinesNameTheCallersFile )
{
    Ref         st( qvStackTraceCreate( 0, -1 ) );
    Ref         lines( qvStackTraceVector( st ) );
    std::string all;

    EXPECT_THAT( take( qvStackTraceAt( st, 0 ) ), testing::HasSubstr( "test_base" ) );
    ASSERT_EQ( qvStackTraceLength( st ), qvVectorLength( lines ) );

    for( QV_INT i = 0; i < qvVectorLength( lines ); i++ )
        all += take( qvStringFrom( qvVectorObjAt( lines, i ) ) );

    takePrinted();
    qvStackTracePrint( st );
    EXPECT_EQ( all, utf8( text( takePrinted() ) ) );
}

#include "qv_test_support.h"

#include "qv/base/qv_stack_trace.h"
#include "qv/base/qv_vector.h"

using namespace qv;
using namespace qv::test;

namespace
{
// The stack of a thread that is `depth` calls deeper than the caller.
__attribute__( ( noinline ) ) QV_STACK_TRACE *traceAt( int depth, QV_INT skip, QV_INT maxLength )
{
    QV_STACK_TRACE *result = depth > 0 ? traceAt( depth - 1, skip, maxLength ) : qvStackTraceCreate( skip, maxLength );
    __asm__ volatile( "" : : "r"( result ) : "memory" ); // keeps the frame
    return result;
}

__attribute__( ( noinline ) ) QV_INT lengthAt( int depth, QV_INT skip, QV_INT maxLength )
{
    return qvStackTraceLength( Ref< QV_STACK_TRACE >( traceAt( depth, skip, maxLength ) ) );
}
} // namespace

TEST( StackTrace, LengthIsLimitedFromBothSides )
{
    QV_INT whole = lengthAt( 10, 0, -1 );

    EXPECT_LT( 10, whole );
    EXPECT_EQ( whole + 5, lengthAt( 15, 0, -1 ) );
    EXPECT_EQ( whole - 4, lengthAt( 10, 4, -1 ) );
    EXPECT_EQ( 3, lengthAt( 10, 4, 3 ) );
    EXPECT_EQ( whole - 4, lengthAt( 10, 4, QV_INT_MAX ) );
    EXPECT_EQ( 0, lengthAt( 10, 0, 0 ) );
    EXPECT_EQ( 0, lengthAt( 10, whole, -1 ) );
    EXPECT_EQ( 0, lengthAt( 10, QV_INT_MAX, -1 ) );
    EXPECT_EQ( 1, lengthAt( 10, whole - 1, -1 ) );

    // 4000 calls are looked at, of which one is that of the function itself.
    EXPECT_EQ( 3999, lengthAt( 5000, 0, -1 ) );
}

TEST( StackTrace, LinesNameTheCallersFile )
{
    Ref< QV_STACK_TRACE > st( qvStackTraceCreate( 0, -1 ) );
    Ref< QV_VECTOR >      lines( qvStackTraceVector( st ) );
    std::string           first = take( qvStackTraceAt( st, 0 ) );

    EXPECT_THAT( first, testing::HasSubstr( "test_base" ) );
    ASSERT_EQ( qvStackTraceLength( st ), qvVectorLength( lines ) );

    std::u32string all;
    takePrinted();
    qvStackTracePrint( st );

    for( QV_INT i = 0; i < qvVectorLength( lines ); i++ )
    {
        Ref< QV_OBJ > line( qvVectorObjAt( lines, i ) );
        all += chars( qvStringFrom( line ) );
    }

    EXPECT_EQ( all, takePrinted() );
}

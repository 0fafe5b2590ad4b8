#include "qv_test_support.h"

#include "qv/qv.h"

using qv::Ref;
using namespace qv::test;

TEST( Vector, KnowsTheSortsOfItsElements )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );

    for( QV_INT i = 0; i < 3; i++ )
        qvVectorAppendInt( vec.at(), i );

    EXPECT_TRUE( qvVectorContainsOnly( vec, qvBoxedIntSort() ) );
    qvVectorAppendStringCstr( vec.at(), "x", -1 );
    EXPECT_FALSE( qvVectorContainsOnly( vec, qvBoxedIntSort() ) );
    EXPECT_EQ( qvStringSort(), qvVectorSortAt( vec, 3 ) );

    qvVectorStringize( vec.at() );
    EXPECT_TRUE( qvVectorContainsOnly( vec, qvStringSort() ) );
    EXPECT_EQ( "<0, 1, 2, x>", textOf( vec.get() ) );

    // Empty ones are one object.
    qvVectorDelLeading( vec.at(), 4 );
    qvVectorReverse( vec.at() );
    qvVectorStringize( vec.at() );
    EXPECT_EQ( Ref( qvVectorCreate() ).get(), vec.get() );
}

#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_sort.h"

using namespace qv;
using namespace qv::test;

namespace
{
Ref< QV_OBJ > boxed( QV_INT value )
{
    return Ref< QV_OBJ >( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

// A Vector of the integers from 0.
Ref< QV_VECTOR > upTo( QV_INT count )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );

    for( QV_INT i = 0; i < count; i++ )
        qvVectorAppendInt( vec.at(), i );

    return vec;
}
} // namespace

TEST( Vector, ItsOwnBlockMayMoveWhileItTakesElementsOutOfThat )
{
    Ref< QV_VECTOR > vec = upTo( 3 );

    for( int i = 0; i < 8; i++ )
        qvVectorInsertObjs( vec.at(), 1, qvVectorBacking( vec ) + 1, qvVectorLength( vec ) - 1 );

    EXPECT_EQ( 513, qvVectorLength( vec ) );
    EXPECT_TRUE( qvVectorEquals( upTo( 3 ), Ref< QV_VECTOR >( qvVectorCreateFromLeading( vec, 3 ) ) ) );
}

TEST( Vector, EmptyOnesAreOneObjectUnlessPoppedEmpty )
{
    Ref< QV_VECTOR > empty( qvVectorCreate() ), vec = upTo( 2 );

    qvVectorDelInner( vec.at(), 0, 2 );
    qvVectorReverse( vec.at() );
    qvVectorStringize( vec.at() );
    EXPECT_EQ( empty.get(), vec.get() );

    vec = upTo( 1 );
    Ref< QV_OBJ > last( qvVectorPop( vec.at() ) );
    EXPECT_NE( empty.get(), vec.get() );
    EXPECT_EQ( 33 * 8, allocated( vec.get() ) );
    EXPECT_EQ( 16, vec->fspace );
}

TEST( Vector, KnowsTheSortsOfItsElements )
{
    Ref< QV_VECTOR > vec = upTo( 3 );
    EXPECT_TRUE( qvVectorContainsOnly( vec, qvBoxedIntSort() ) );
    qvVectorAppendStringCstr( vec.at(), "x", -1 );
    EXPECT_FALSE( qvVectorContainsOnly( vec, qvBoxedIntSort() ) );
    EXPECT_EQ( qvStringSort(), qvVectorSortAt( vec, 3 ) );

    qvVectorStringize( vec.at() );
    EXPECT_TRUE( qvVectorContainsOnly( vec, qvStringSort() ) );
    EXPECT_EQ( "<0, 1, 2, x>", textOf( vec.get() ) );
}

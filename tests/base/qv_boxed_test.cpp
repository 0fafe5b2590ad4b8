#include "qv_test_support.h"

#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/qv.h"

using qv::Ref;
using namespace qv::test;

TEST( Boxed, ValuesHaveTextsAndOrder )
{
    Ref< QV_VECTOR > boxes( qvVectorCreate() );
    qvVectorAppendBool( boxes.at(), QV_FALSE );
    qvVectorAppendBool( boxes.at(), 2 );
    qvVectorAppendInt( boxes.at(), QV_INT_MIN );
    qvVectorAppendInt( boxes.at(), 1000 );
    qvVectorAppendNull( boxes.at() );
    qvVectorAppendReal( boxes.at(), 1.0 );
    qvVectorAppendReal( boxes.at(), 1.5 );
    EXPECT_EQ( "<false, true, -9223372036854775808, 1000, null, 1.000000, 1.500000>", textOf( boxes.get() ) );

    // The sorts by their names, and within a sort the values.
    QV_OBJ *const *ordered = qvVectorBacking( boxes );

    for( int a = 0; a < 7; a++ )
        for( int b = 0; b < 7; b++ )
            EXPECT_EQ( ( a > b ) - ( a < b ), qvObjCompare( ordered[a], ordered[b] ) );

    EXPECT_EQ( ordered[1], qvBoxedBoolObj( Ref( qvBoxedBoolCreate( QV_TRUE ) ) ) ); // one object
    EXPECT_EQ( QV_FALSE, qvBoxedBoolValue( qvBoxedBoolFrom( ordered[0] ) ) );
    EXPECT_EQ( 1.5, qvBoxedRealValue( qvBoxedRealFrom( ordered[6] ) ) );
}

TEST( Boxed, IdentitiesDifferAndKeepTheirOrder )
{
    Ref< QV_BOXED_UNIQUE > a( qvBoxedUniqueCreate() ), b( qvBoxedUniqueCreate() );
    QV_INT                 order = qvBoxedUniqueCompare( b, a ); // either: numbers are handed out again
    EXPECT_EQ( 1, order * order );
    EXPECT_EQ( -order, qvBoxedUniqueCompare( a, b ) );
    EXPECT_THAT( textOf( a.get() ), testing::MatchesRegex( "QV_BOXED_UNIQUE\\([0-9A-F]+\\)" ) );
}

TEST( Boxed, PointersAreFreedOnceAndOrderByAddress )
{
    int  values[2] = {};
    auto count     = []( void *value ) { ++*static_cast< int * >( value ); };
    {
        Ref< QV___BOXED_POINTER > low( qv___BoxedPointerCreate( &values[0], count ) );
        Ref< QV___BOXED_POINTER > high( qv___BoxedPointerCreate( &values[1], nullptr ) );
        EXPECT_EQ( -1, qv___BoxedPointerCompare( low, high ) );
        EXPECT_EQ( &values[1], qv___BoxedPointerValue( high ) );
    }
    EXPECT_EQ( 1, values[0] );
    EXPECT_EQ( 0, values[1] );
}

TEST( Boxed, StandardFunctionsReportBrokenContracts )
{
    QV_BOXED_INT *box = qvBoxedIntCreate( 1 );

    EXPECT_BROKEN_MESSAGE( qvBoxedIntRelease( nullptr ), "stdfunc release", "obj" );
    EXPECT_BROKEN_MESSAGE( qvBoxedIntCompare( box, nullptr ), "stdfunc compare b", "objB" );
    EXPECT_BROKEN_MESSAGE(
        qvBoxedRealFrom( qv::obj( box ) ), "stdfunc from", "!obj || qvObjSort(obj)==&qv___sort_QV_BOXED_REAL" );
    EXPECT_DEATH( qvBoxedIntRetain( nullptr ), testing::HasSubstr( "    File      : source/qv/base/qv_boxed_int\n" ) );
    qvBoxedIntRelease( box );
}

#include "qv_test_support.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_boxed_unique.h"
#include "qv/runtime/qv_obj.h"

using qv::Ref;
using namespace qv::test;

namespace
{
template< class T >
QV_OBJ *any( const Ref< T > &ref )
{
    return qv::obj( ref.get() );
}
} // namespace

TEST( Boxed, ValuesHaveTextsAndOrder )
{
    Ref< QV_BOXED_BOOL > yes( qvBoxedBoolCreate( 2 ) ), no( qvBoxedBoolCreate( QV_FALSE ) );
    Ref< QV_BOXED_INT >  low( qvBoxedIntCreate( QV_INT_MIN ) ), high( qvBoxedIntCreate( 1000 ) );
    Ref< QV_BOXED_REAL > one( qvBoxedRealCreate( 1.0 ) ), more( qvBoxedRealCreate( 1.5 ) );
    Ref< QV_BOXED_NULL > null( qvBoxedNullCreate() );

    // The sorts by their names, and within a sort the values.
    QV_OBJ *const ordered[] = { any( no ), any( yes ), any( low ), any( high ), any( null ), any( one ), any( more ) };
    const char *const texts[] = { "false", "true", "-9223372036854775808", "1000", "null", "1.000000", "1.500000" };

    for( int a = 0; a < 7; a++ )
    {
        EXPECT_EQ( texts[a], textOf( ordered[a] ) );

        for( int b = 0; b < 7; b++ )
            EXPECT_EQ( ( a > b ) - ( a < b ), qvObjCompare( ordered[a], ordered[b] ) );
    }

    EXPECT_EQ( yes.get(), Ref( qvBoxedBoolCreate( QV_TRUE ) ).get() );
    EXPECT_EQ( null.get(), Ref( qvBoxedNullCreate() ).get() );
    EXPECT_TRUE( qvBoxedBoolValue( yes ) && !qvBoxedBoolValue( no ) );
    EXPECT_EQ( QV_INT_MIN, qvBoxedIntValue( low ) );
    EXPECT_EQ( 1.5, qvBoxedRealValue( more ) );
}

TEST( Boxed, IdentitiesDifferAndKeepTheirOrder )
{
    Ref< QV_BOXED_UNIQUE > a( qvBoxedUniqueCreate() ), b( qvBoxedUniqueCreate() );

    // Which comes first is open: numbers that other objects gave back are handed out again, the last one first.
    QV_INT order = qvBoxedUniqueCompare( b, a );
    EXPECT_EQ( 1, order * order );
    EXPECT_EQ( -order, qvBoxedUniqueCompare( a, b ) );
    EXPECT_EQ( order, qvBoxedUniqueCompare( b, a ) );
    EXPECT_EQ( 0, qvBoxedUniqueCompare( a, a ) );
    EXPECT_FALSE( qvBoxedUniqueEquals( a, b ) );
    EXPECT_THAT( textOf( a.get() ), testing::MatchesRegex( "QV_BOXED_UNIQUE\\([0-9A-F]+\\)" ) );
}

TEST( Boxed, PointersAreFreedOnceAndOrderByAddress )
{
    static int freed;
    freed = 0;

    int                       values[2] = {};
    Ref< QV___BOXED_POINTER > low( qv___BoxedPointerCreate(
        &values[0],
        []( void *value )
        {
            ++*static_cast< int * >( value );
            ++freed;
        } ) );
    Ref< QV___BOXED_POINTER > high( qv___BoxedPointerCreate( &values[1], nullptr ) );

    EXPECT_EQ( -1, qv___BoxedPointerCompare( low, high ) );
    EXPECT_EQ( &values[1], qv___BoxedPointerValue( high ) );

    low.reset();
    high.reset();
    EXPECT_EQ( 1, freed );
    EXPECT_EQ( 1, values[0] );
}

TEST( Boxed, StandardFunctionsReportBrokenContracts )
{
    Ref< QV_BOXED_INT > bint( qvBoxedIntCreate( 1 ) );

    EXPECT_EQ( any( bint ), qvBoxedIntObj( bint ) );
    EXPECT_EQ( bint.get(), qvBoxedIntFrom( any( bint ) ) );
    EXPECT_EQ( nullptr, qvBoxedIntObj( nullptr ) );
    EXPECT_EQ( nullptr, qvBoxedIntFrom( nullptr ) );

    EXPECT_BROKEN_MESSAGE( qvBoxedIntRetain( nullptr ), "stdfunc retain", "obj" );
    EXPECT_BROKEN_MESSAGE( qvBoxedIntRelease( nullptr ), "stdfunc release", "obj" );
    EXPECT_BROKEN_MESSAGE( qvBoxedIntToString( nullptr ), "stdfunc tostring", "obj" );
    EXPECT_BROKEN_MESSAGE( qvBoxedIntCompare( nullptr, bint ), "stdfunc compare a", "objA" );
    EXPECT_BROKEN_MESSAGE( qvBoxedIntCompare( bint, nullptr ), "stdfunc compare b", "objB" );
    EXPECT_BROKEN_MESSAGE(
        qvBoxedRealFrom( any( bint ) ), "stdfunc from", "!obj || qvObjSort(obj)==&qv___sort_QV_BOXED_REAL" );
    EXPECT_DEATH( qvBoxedIntRetain( nullptr ), testing::HasSubstr( "    File      : source/qv/base/qv_boxed_int\n" ) );
}

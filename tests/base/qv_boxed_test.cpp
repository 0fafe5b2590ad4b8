#include "qv_test_support.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_boxed_unique.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_sort.h"

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

TEST( Boxed, TruthValuesAndNullAreSharedObjects )
{
    Ref< QV_BOXED_BOOL > yes( qvBoxedBoolCreate( QV_TRUE ) ), again( qvBoxedBoolCreate( 2 ) );
    Ref< QV_BOXED_BOOL > no( qvBoxedBoolCreate( QV_FALSE ) );
    Ref< QV_BOXED_NULL > null( qvBoxedNullCreate() ), nullAgain( qvBoxedNullCreate() );

    EXPECT_EQ( yes.get(), again.get() );
    EXPECT_EQ( null.get(), nullAgain.get() );
    EXPECT_EQ( QV_TRUE, qvBoxedBoolValue( yes ) );
    EXPECT_EQ( QV_FALSE, qvBoxedBoolValue( no ) );
    EXPECT_EQ( -1, qvBoxedBoolCompare( no, yes ) );
    EXPECT_EQ( 1, qvBoxedBoolCompare( yes, no ) );
}

TEST( Boxed, NumbersOrderByValue )
{
    Ref< QV_BOXED_INT >  low( qvBoxedIntCreate( QV_INT_MIN ) ), high( qvBoxedIntCreate( QV_INT_MAX ) );
    Ref< QV_BOXED_INT >  same( qvBoxedIntCreate( QV_INT_MAX ) );
    Ref< QV_BOXED_REAL > one( qvBoxedRealCreate( 1.0 ) ), nearlyOne( qvBoxedRealCreate( 1.0 + 1e-17 ) );
    Ref< QV_BOXED_REAL > two( qvBoxedRealCreate( 2.0 ) );

    EXPECT_EQ( -1, qvBoxedIntCompare( low, high ) );
    EXPECT_EQ( 1, qvBoxedIntCompare( high, low ) );
    EXPECT_TRUE( qvBoxedIntEquals( high, same ) );
    EXPECT_EQ( QV_INT_MIN, qvBoxedIntValue( low ) );
    EXPECT_EQ( 0, qvBoxedRealCompare( one, nearlyOne ) );
    EXPECT_EQ( 1, qvBoxedRealCompare( two, one ) );
    EXPECT_EQ( 2.0, qvBoxedRealValue( two ) );
}

TEST( Boxed, DifferentSortsOrderByTheirNames )
{
    Ref< QV_BOXED_INT >  big( qvBoxedIntCreate( 1000 ) );
    Ref< QV_BOXED_REAL > small( qvBoxedRealCreate( 1.0 ) );

    EXPECT_EQ( -1, qvObjCompare( any( big ), any( small ) ) );
    EXPECT_EQ( 1, qvObjCompare( any( small ), any( big ) ) );
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
}

TEST( Boxed, PointersAreFreedOnceAndOrderByAddress )
{
    static int freed;
    freed = 0;

    int                       values[2] = {};
    Ref< QV___BOXED_POINTER > low( qv___BoxedPointerCreate( &values[0], []( void *value ) { ++*static_cast< int * >( value ); ++freed; } ) );
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
    EXPECT_BROKEN( qvBoxedIntEquals( bint, nullptr ), "objB" );
    EXPECT_BROKEN_MESSAGE(
        qvBoxedRealFrom( any( bint ) ), "stdfunc from", "!obj || qvObjSort(obj)==&qv___sort_QV_BOXED_REAL" );
    EXPECT_DEATH( qvBoxedIntRetain( nullptr ), testing::HasSubstr( "    File      : source/qv/base/qv_boxed_int\n" ) );
}

TEST( Boxed, TextsAreThoseOfTheValues )
{
    EXPECT_EQ( "true", textOf( Ref< QV_BOXED_BOOL >( qvBoxedBoolCreate( QV_TRUE ) ).get() ) );
    EXPECT_EQ( "-12", textOf( Ref< QV_BOXED_INT >( qvBoxedIntCreate( -12 ) ).get() ) );
    EXPECT_EQ( "1.500000", textOf( Ref< QV_BOXED_REAL >( qvBoxedRealCreate( 1.5 ) ).get() ) );
    EXPECT_EQ( "null", textOf( Ref< QV_BOXED_NULL >( qvBoxedNullCreate() ).get() ) );

    // The default text ends in the unique number; the one given back last is drawn first.
    Ref< QV_BOXED_UNIQUE > token( qvBoxedUniqueCreate() );
    std::string            first = textOf( token.get() );
    EXPECT_THAT( first, testing::MatchesRegex( "QV_BOXED_UNIQUE\\([0-9A-F]+\\)" ) );
    token.reset( qvBoxedUniqueCreate() );
    EXPECT_EQ( first, textOf( token.get() ) );
}

TEST( Boxed, LiveObjectsAreCounted )
{
    QV_INT                before = qvSortObjects( qvBoxedIntSort() );
    Ref< QV_BOXED_INT >   bint( qvBoxedIntCreate( 1 ) );
    EXPECT_EQ( before + 1, qvSortObjects( qvBoxedIntSort() ) );
    bint.reset();
    EXPECT_EQ( before, qvSortObjects( qvBoxedIntSort() ) );
}

#include "qv_test_support.h"

#include "qv/qv.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

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

// What a caller gives up is taken over as it is, where the Vector is shared too, and handed out again.
TEST( Vector, TakesReferencesOver )
{
    Ref< QV_OBJ >    obj( qvStringObj( text( "x" ).give() ) );
    Ref< QV_VECTOR > vec( qvVectorCreate() ), other;

    for( int i = 0; i < 100; i++ )
    {
        qvVectorAppendObjUse( vec.at(), qv::retain( obj.get() ) );
        qvVectorPrependObjUse( vec.at(), qv::retain( obj.get() ) );
        qvVectorInsertObjUse( vec.at(), i, qv::retain( obj.get() ) );
        qvVectorSetObjUseAt( vec.at(), i + 1, qv::retain( obj.get() ) );
    }

    EXPECT_EQ( 301, qv___RetainCountValue( &obj->retainCount ) );
    other = Ref< QV_VECTOR >::share( vec );
    qvVectorAppendObjUse( vec.at(), qv::retain( obj.get() ) );
    EXPECT_EQ( 602, qv___RetainCountValue( &obj->retainCount ) );
    EXPECT_EQ( 300, qvVectorLength( other ) );
    other.reset();

    // It may be the Vector itself, as it was.
    qvVectorAppendObjUse( vec.at(), qvVectorObj( qv::retain( vec.get() ) ) );
    other = Ref( qvVectorFrom( qvVectorPop( vec.at() ) ) );
    EXPECT_EQ( 301, qvVectorLength( other ) );
    EXPECT_EQ( 301, qvVectorLength( vec ) );
}

namespace
{
QV_INT value( QV_OBJ *object )
{
    return qvBoxedIntValue( qvBoxedIntFrom( object ) );
}

// By the hundreds, so that others tell whether equals keep their order. Counts its calls.
QV_INT byHundreds( QV_OBJ *thisObj, QV_OBJ *thatObj, void *calls )
{
    ++*static_cast< QV_INT * >( calls );
    return value( thisObj ) / 100 - value( thatObj ) / 100;
}

Ref< QV_VECTOR > vectorOf( const std::vector< QV_INT > &values )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );

    for( QV_INT each : values )
        qvVectorAppendInt( vec.at(), each );

    return vec;
}

std::vector< QV_INT > valuesOf( QV_VECTOR *vec )
{
    std::vector< QV_INT > values;

    for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
        values.push_back( value( qvVectorBacking( vec )[i] ) );

    return values;
}
} // namespace

// Each shape with how many comparisons an element may cost.
TEST( Vector, OrdersStablyInEveryShape )
{
    const QV_INT LENGTH = 5000;
    const double LOG    = std::log2( LENGTH );
    std::mt19937 random( 1 );

    const std::pair< double, std::function< QV_INT( QV_INT ) > > SHAPES[] = {
        { 1, []( QV_INT i ) { return i; } },
        { 1, []( QV_INT i ) { return i % 100; } },
        { 2.2, []( QV_INT i ) { return ( LENGTH - i ) * 100; } },
        { 2.2, []( QV_INT i ) { return i == LENGTH - 1 ? 0 : i * 100; } },
        { 4.5, []( QV_INT i ) { return i % ( LENGTH / 8 ) * 100; } },                            // a saw
        { 4.5, []( QV_INT i ) { return ( i < LENGTH / 2 ? i : LENGTH - i ) * 100 + i % 100; } }, // a roof
        { LOG, []( QV_INT i ) { return i * 100 % 700 + i; } },
        { LOG, [&]( QV_INT ) { return static_cast< QV_INT >( random() ); } },
        { LOG, [&]( QV_INT i ) { return i / 50 * 50 + static_cast< QV_INT >( random() % 5000 ); } },
    };

    for( const auto &[most, shape] : SHAPES )
        for( QV_INT length : { QV_INT( 0 ), QV_INT( 1 ), QV_INT( 2 ), QV_INT( 25 ), QV_INT( 49 ), LENGTH } )
        {
            std::vector< QV_INT > values;

            for( QV_INT i = 0; i < length; i++ )
                values.push_back( shape( i ) );

            QV_INT           calls = 0, size = qvVectorLength( vectorOf( values ) ) / 3;
            Ref< QV_VECTOR > all = vectorOf( values ), inner = vectorOf( values ), plain = vectorOf( values );
            auto             hundreds = []( QV_INT a, QV_INT b ) { return a / 100 < b / 100; };

            qvVectorOrder( plain.at() );
            EXPECT_TRUE( qvVectorIsOrdered( plain ) );
            qvVectorOrderInnerBy( inner.at(), size, size, byHundreds, &calls );
            std::vector< QV_INT > expected = values;
            std::stable_sort( expected.begin() + size, expected.begin() + 2 * size, hundreds );
            EXPECT_EQ( expected, valuesOf( inner ) );

            calls = 0;
            qvVectorOrderBy( all.at(), byHundreds, &calls );
            EXPECT_GE( most * static_cast< double >( length ) + 1, static_cast< double >( calls ) );
            std::stable_sort( values.begin(), values.end(), hundreds );
            EXPECT_EQ( values, valuesOf( all ) );
            EXPECT_TRUE( qvVectorIsOrderedBy( all, byHundreds, &calls ) );

            // The first of equal ones is found, and where another one belongs.
            for( QV_INT i = 0; i < length; i += 1 + length / 10 )
                for( QV_INT sought : { values[static_cast< size_t >( i )], values[static_cast< size_t >( i )] + 1000 } )
                {
                    QV_BOOL found;
                    auto    at = std::lower_bound( values.begin(), values.end(), sought, hundreds );
                    EXPECT_EQ(
                        at - values.begin(),
                        qvVectorSearchBy(
                            all, Ref( qvBoxedIntObj( qvBoxedIntCreate( sought ) ) ), byHundreds, &calls, &found ) );
                    EXPECT_EQ( at != values.end() && *at / 100 == sought / 100, found );
                }
        }
}

// Few and many, near each other and as far apart as they can be, crowded, and so far apart that places do not fit beside
// them: equal ones stay as they follow each other.
TEST( Vector, OrdersIntegersStablyHoweverFarApart )
{
    std::mt19937_64 random( 3 );

    for( QV_INT length : { 3, 17, 18, 60, 100, 255, 256, 257, 3000 } )
        for( int bits : { 1, 4, 7, 8, 30, 52, 55, 56, 57, 61, 64 } )
            for( bool crowded : { false, true } )
            {
                std::vector< QV_INT > values;

                for( QV_INT i = 0; i < length; i++ )
                    values.push_back( static_cast< QV_INT >( random() ) >> ( 64 - bits ) );

                if( crowded )
                    values.back() = random() % 2 == 0 ? QV_INT_MIN : QV_INT_MAX;

                Ref< QV_VECTOR >        vec  = vectorOf( values );
                QV_OBJ *const          *objs = qvVectorBacking( vec );
                std::vector< QV_OBJ * > expected( objs, objs + length );

                std::stable_sort(
                    expected.begin() + 1, expected.end(), []( auto a, auto b ) { return value( a ) < value( b ); } );
                qvVectorOrderInner( vec.at(), 1, length - 1 );
                objs = qvVectorBacking( vec );
                EXPECT_EQ( expected, std::vector< QV_OBJ * >( objs, objs + length ) ) << length << ", " << bits;
            }
}

TEST( Vector, OrdersEverySortAsItsObjectsCompare )
{
    Ref< QV_VECTOR > texts( qvVectorCreate() ), mixed( qvVectorCreate() );

    for( const char *each : { "b", "a", "abc", "", "ab", "b" } )
        qvVectorAppendStringCstr( texts.at(), each, -1 );

    qvVectorAppend( mixed.at(), texts );
    qvVectorInsertInt( mixed.at(), 2, 7 );
    qvVectorAppendInt( mixed.at(), -7 );

    // Of equal ones both stay, in their order.
    QV_OBJ *first = qvVectorBacking( texts )[0];
    qvVectorOrder( texts.at() );
    qvVectorOrder( mixed.at() );
    EXPECT_EQ( "<, a, ab, abc, b, b>", textOf( texts.get() ) );
    EXPECT_EQ( "<-7, 7, , a, ab, abc, b, b>", textOf( mixed.get() ) );
    EXPECT_EQ( first, qvVectorBacking( texts )[4] );

    QV_BOOL found = QV_FALSE;
    EXPECT_EQ( 4, qvVectorSearch( texts, Ref( qvStringObj( text( "b" ).give() ) ), &found ) );
    EXPECT_TRUE( found );
    EXPECT_EQ( 2, qvVectorSearch( mixed, Ref( qvStringObj( text( "" ).give() ) ), nullptr ) );

    // Texts that differ after many characters, at their end and beyond one byte.
    Ref< QV_VECTOR > paths( qvVectorCreate() );

    for( QV_INT i = 0; i < 600; i++ )
        qvVectorAppendStringFormatCstr(
            paths.at(), "path/to/%c%s%i", -1, static_cast< QV_CHAR >( U"a\xED\xEE\x10FFFF"[i * 5 % 4] ),
            text( i % 3 ? "" : "aaaaaaaaa" ).get(), i * 7 % 50 );

    qvVectorOrder( paths.at() );
    EXPECT_TRUE( qvVectorIsOrdered( paths ) );
    qvVectorAppendStringCstr( paths.at(), "path/to/", -1 );
    qvVectorOrder( paths.at() );
    EXPECT_EQ( "path/to/", textOf( qvVectorBacking( paths )[0] ) );
    EXPECT_TRUE( qvVectorIsOrdered( paths ) );

    // In order already, a shared Vector stays shared; else the other holder's stays as it was.
    Ref< QV_VECTOR > other = Ref< QV_VECTOR >::share( texts );
    qvVectorOrder( texts.at() );
    EXPECT_EQ( other.get(), texts.get() );
    qvVectorReverse( other.at() );
    qvVectorOrder( other.at() );
    EXPECT_EQ( "<, a, ab, abc, b, b>", textOf( texts.get() ) );
}

// Whatever a function returns, each object stays in the Vector once; and what it does to the variable is given up.
TEST( Vector, KeepsItsElementsWhateverAFunctionDoes )
{
    static QV_VECTOR  **variable;
    static std::mt19937 random( 2 );

    const QV_VECTOR_COMPARE_FUNC FUNCTIONS[] = {
        []( QV_OBJ *, QV_OBJ *, void * ) { return QV_INT( 1 ); },
        []( QV_OBJ *, QV_OBJ *, void * ) { return QV_INT( -1 ); },
        []( QV_OBJ *, QV_OBJ *, void * ) { return QV_INT( random() % 3 ) - 1; },
        []( QV_OBJ *thisObj, QV_OBJ *thatObj, void * )
        {
            EXPECT_LE( 40, qvVectorLength( *variable ) );
            qvVectorClear( variable );
            qvVectorAppend( variable, Ref( vectorOf( std::vector< QV_INT >( 40 ) ) ) );
            return value( thisObj ) - value( thatObj );
        },
    };

    for( QV_VECTOR_COMPARE_FUNC each : FUNCTIONS )
        for( QV_INT length : { 40, 1000 } )
        {
            std::vector< QV_INT > values;

            for( QV_INT i = 0; i < length; i++ )
                values.push_back( i * 617 % 1000 );

            Ref< QV_VECTOR > vec = vectorOf( values );
            variable             = vec.at();
            qvVectorOrderBy( vec.at(), each, nullptr );
            std::vector< QV_INT > after = valuesOf( vec );
            EXPECT_TRUE( std::is_permutation( values.begin(), values.end(), after.begin(), after.end() ) );
        }
}

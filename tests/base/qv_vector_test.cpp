#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>
#include <random>

using namespace qv;
using namespace qv::test;

namespace
{
using Objs = std::vector< QV_OBJ * >;

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

Objs objsOf( QV_VECTOR *vec )
{
    return Objs( qvVectorBacking( vec ), qvVectorBacking( vec ) + qvVectorLength( vec ) );
}

// What a Vector has to hold and to account for. The free slots follow the rules of growth and compaction; `*vec` is
// replaced by a copy where somebody else holds it.
struct Model
{
    Objs   objs;
    QV_INT fspace = 0;
    QV_INT bspace = 0;
    bool   empty  = true; // it is the one empty Vector, which everybody holds

    QV_INT length() const
    {
        return static_cast< QV_INT >( objs.size() );
    }

    void own( bool shared )
    {
        if( shared || empty )
        {
            fspace = 0;
            bspace = objs.empty() ? 0 : 32;
        }

        empty = false;
    }

    void insert( bool shared, QV_INT idx, const Objs &added )
    {
        QV_INT count = static_cast< QV_INT >( added.size() );

        if( count == 0 )
            return;

        own( shared );

        if( idx == length() )
            bspace = bspace >= count ? bspace - count : bspace + 32;
        else if( idx == 0 && fspace >= count )
            fspace -= count;
        else
            fspace = bspace = 32;

        objs.insert( objs.begin() + idx, added.begin(), added.end() );
    }

    void compact()
    {
        if( objs.empty() )
        {
            QV_INT space = fspace + bspace;
            fspace       = space / 2;
            bspace       = space - space / 2;
        }
        else if( fspace > 64 || bspace > 64 )
        {
            fspace = bspace = 32;
        }
    }

    void clear()
    {
        *this = Model();
    }

    void erase( bool shared, QV_INT offset, QV_INT count )
    {
        if( count == 0 )
            return;

        if( count == length() )
            return clear();

        own( shared );
        ( offset == 0 ? fspace : bspace ) += count;
        objs.erase( objs.begin() + offset, objs.begin() + offset + count );
        compact();
    }

    void take( bool shared, bool last )
    {
        own( shared );
        ( last ? bspace : fspace )++;
        objs.erase( last ? objs.end() - 1 : objs.begin() );
        compact();
    }
};

void expectModel( const Model &model, QV_VECTOR *vec )
{
    ASSERT_EQ( model.objs, objsOf( vec ) );
    ASSERT_EQ( model.fspace, vec->fspace );
    ASSERT_EQ( model.bspace, vec->bspace );
    ASSERT_EQ( ( model.length() + model.fspace + model.bspace ) * 8, allocated( vec ) );
    ASSERT_LE( vec->size(), 2 * allocated( vec ) );
}
} // namespace

TEST( Vector, BehavesLikeItsModelUnderRandomChanges )
{
    for( unsigned seed = 1; seed <= 8; seed++ )
    {
        SCOPED_TRACE( seed );
        std::mt19937                 random( seed );
        std::vector< Ref< QV_OBJ > > pool;

        for( QV_INT i = 0; i < 20; i++ )
            pool.push_back( boxed( i ) );

        auto below = [&]( QV_INT bound ) {
            return static_cast< QV_INT >( random() % static_cast< uint64_t >( bound ) );
        };
        auto some  = [&]( QV_INT most ) {
            Objs result( static_cast< size_t >( below( most + 1 ) ) );
            std::generate( result.begin(), result.end(), [&] { return pool[random() % pool.size()].get(); } );
            return result;
        };

        Ref< QV_VECTOR > vec( qvVectorCreate() );
        Ref< QV_VECTOR > holder;
        Model            model;
        Objs             held;

        for( int round = 0; round < 4000; round++ )
        {
            if( below( 20 ) == 0 )
            {
                holder = Ref< QV_VECTOR >::share( vec );
                held   = model.objs;
            }

            bool   shared = holder.get() == vec.get();
            QV_INT length = model.length();
            QV_INT idx    = below( length + 1 );
            QV_INT count  = below( std::min< QV_INT >( length - idx, 90 ) + 1 );
            Objs   added  = some( round % 500 < 250 ? 40 : 2 );
            QV_INT number = static_cast< QV_INT >( added.size() );

            switch( below( 12 ) )
            {
            case 0:
                qvVectorInsertObjs( vec.at(), idx, added.data(), number );
                model.insert( shared, idx, added );
                break;
            case 1:
                qvVectorAppendObjs( vec.at(), added.data(), number );
                model.insert( shared, length, added );
                break;
            case 2:
                qvVectorPrependObjs( vec.at(), added.data(), number );
                model.insert( shared, 0, added );
                break;
            case 3:
                qvVectorPush( vec.at(), pool[0] );
                model.insert( shared, length, { pool[0] } );
                break;
            case 4:
                qvVectorShift( vec.at(), pool[1] );
                model.insert( shared, 0, { pool[1] } );
                break;
            case 5:
            {
                // A part of the Vector goes into itself.
                Objs part( model.objs.begin() + idx, model.objs.begin() + idx + count );
                qvVectorInsertInner( vec.at(), length - idx, vec, idx, count );
                model.insert( true, length - idx, part );
                break;
            }
            case 6:
            {
                for( QV_INT i = below( 60 ); i-- > 0 && model.length() > 0; )
                {
                    bool          last = round % 2;
                    bool          before = holder.get() == vec.get();
                    QV_OBJ       *expected = last ? model.objs.back() : model.objs.front();
                    Ref< QV_OBJ > taken( last ? qvVectorPop( vec.at() ) : qvVectorUnshift( vec.at() ) );
                    ASSERT_EQ( expected, taken.get() );
                    model.take( before, last );
                }
                break;
            }
            case 7:
                qvVectorDelInner( vec.at(), idx, count );
                model.erase( shared, idx, count );
                break;
            case 8:
                count % 2 ? ( qvVectorDelLeading( vec.at(), count ), model.erase( shared, 0, count ) )
                          : ( qvVectorDelTrailing( vec.at(), count ), model.erase( shared, length - count, count ) );
                break;
            case 9:
                // Each object is in the Vector too, and in the end only there.
                if( length > 0 )
                {
                    QV_OBJ *last = model.objs.back();
                    qvVectorSetObjAt( vec.at(), 0, last );
                    model.own( shared );
                    model.objs[0] = last;
                }
                break;
            case 10:
                qvVectorReverse( vec.at() );

                if( length >= 2 )
                {
                    model.own( shared );
                    std::reverse( model.objs.begin(), model.objs.end() );
                }
                break;
            default:
                if( length > 0 && idx < length )
                {
                    qvVectorSetObjAt( vec.at(), idx, pool[2] );
                    model.own( shared );
                    model.objs[static_cast< size_t >( idx )] = pool[2];
                }
                break;
            }

            if( model.length() > 1500 )
            {
                qvVectorDelOuter( vec.at(), 700, 200 );
                bool again = holder.get() == vec.get();
                model.erase( again, 0, 700 );
                model.erase( again, 200, model.length() - 200 );
                holder.reset();
                held.clear();
                vec.reset( qvVectorCreateFrom( vec ) );
                model.own( true );
            }

            ASSERT_NO_FATAL_FAILURE( expectModel( model, vec ) );

            ASSERT_EQ( held, holder ? objsOf( holder ) : Objs() );
        }

        // Each slot holds exactly one reference.
        for( Ref< QV_OBJ > &obj : pool )
        {
            auto expected = 1 + std::count( model.objs.begin(), model.objs.end(), obj.get() );

            if( holder && holder.get() != vec.get() )
                expected += std::count( held.begin(), held.end(), obj.get() );

            EXPECT_EQ( expected, references( obj.get() ) );
        }
    }
}

namespace
{
template< class Change >
Ref< QV_VECTOR > changed( Change change )
{
    Ref< QV_VECTOR > vec = upTo( 2 );
    change( vec.at() );

    return vec;
}
} // namespace

// Every form at every place.
#define PLACES( added, Suffix, ... )                                                                                   \
    EXPECT_EQ( "<0, " added ", 1>", textOf( changed( [&]( QV_VECTOR **vec )                                            \
                                    { qvVectorInsert##Suffix( vec, 1 __VA_OPT__(, ) __VA_ARGS__ ); } ).get() ) );      \
    EXPECT_EQ( "<" added ", 0, 1>", textOf( changed( [&]( QV_VECTOR **vec )                                            \
                                    { qvVectorPrepend##Suffix( vec __VA_OPT__(, ) __VA_ARGS__ ); } ).get() ) );        \
    EXPECT_EQ( "<0, 1, " added ">", textOf( changed( [&]( QV_VECTOR **vec )                                            \
                                    { qvVectorAppend##Suffix( vec __VA_OPT__(, ) __VA_ARGS__ ); } ).get() ) );
#define FORM( added, Kind, ... )                                                                                       \
    PLACES( added, Kind __VA_OPT__(, ) __VA_ARGS__ )                                                                   \
    EXPECT_EQ( "<0, " added ">", textOf( changed( [&]( QV_VECTOR **vec )                                               \
                                 { qvVectorSet##Kind##At( vec, 1 __VA_OPT__(, ) __VA_ARGS__ ); } ).get() ) );          \
    EXPECT_EQ( "<" added ", 0, 1>", textOf( changed( [&]( QV_VECTOR **vec )                                            \
                                    { qvVectorSet##Kind##At( vec, -1 __VA_OPT__(, ) __VA_ARGS__ ); } ).get() ) );      \
    EXPECT_EQ( "<0, 1, " added ">", textOf( changed( [&]( QV_VECTOR **vec )                                            \
                                    { qvVectorSet##Kind##At( vec, 2 __VA_OPT__(, ) __VA_ARGS__ ); } ).get() ) );

TEST( Vector, EveryFormInsertsAtItsPlace )
{
    Ref< QV_VECTOR > src   = upTo( 5 );
    Ref< QV_STRING > str   = text( "str" ), fmt = text( "<%i>" );
    Ref< QV_OBJ >    obj   = boxed( 77 );
    QV_OBJ          *two[] = { obj, qvStringObj( str ) };

    PLACES( "0, 1, 2, 3, 4", , src )
    PLACES( "0, 1", Leading, src, 2 )
    PLACES( "3, 4", Trailing, src, 2 )
    PLACES( "1, 2, 3", Inner, src, 1, 3 )
    PLACES( "0, 4", Outer, src, 1, 3 )
    PLACES( "77, str", Objs, two, 2 )
    FORM( "77", Obj, obj )
    FORM( "null", Null )
    FORM( "true", Bool, QV_TRUE )
    FORM( "-5", Int, -5 )
    FORM( "1.500000", Real, 1.5 )
    FORM( "str", String, str )
    FORM( "cst", StringCstr, "cstr", 3 )
    FORM( "wcstr", StringWcstr, L"wcstr", -1 )
    FORM( "<8>", StringFormat, fmt, QV_INT( 8 ) )
    FORM( "[8]", StringFormatCstr, "[%i]", -1, QV_INT( 8 ) )
    FORM( "(8)", StringFormatWcstr, L"(%i)", -1, QV_INT( 8 ) )

    EXPECT_EQ( 1, references( obj.get() ) );
}

TEST( Vector, CreationCopiesPartsAndTakesOverBlocks )
{
    Ref< QV_VECTOR > src       = upTo( 5 );
    auto             textOfNew = []( QV_VECTOR *owned ) { return textOf( Ref< QV_VECTOR >( owned ).get() ); };

    EXPECT_EQ( "<0, 1, 2, 3, 4>", textOfNew( qvVectorCreateFrom( src ) ) );
    EXPECT_EQ( "<0, 1>", textOfNew( qvVectorCreateFromLeading( src, 2 ) ) );
    EXPECT_EQ( "<3, 4>", textOfNew( qvVectorCreateFromTrailing( src, 2 ) ) );
    EXPECT_EQ( "<2>", textOfNew( qvVectorCreateFromInner( src, 2, 1 ) ) );
    EXPECT_EQ( "<0, 4>", textOfNew( qvVectorCreateFromOuter( src, 1, 3 ) ) );
    EXPECT_EQ( "<>", textOfNew( qvVectorCreateFromObjsUse( nullptr, 0 ) ) );

    // An array's references go over to the Vector with it.
    Ref< QV_OBJ >    obj   = boxed( 1 );
    QV_OBJ         **block = static_cast< QV_OBJ ** >( qvMemAllocN( 2, sizeof( QV_OBJ * ) ) );
    Ref< QV_VECTOR > pushed( qvVectorCreate() );
    std::fill_n( block, 2, obj.get() );

    for( int i = 0; i < 6; i++ )
        retain( obj.get() );

    qv___VectorPushNoRetain( pushed.at(), block, 2 );
    Ref< QV_VECTOR > copied( qvVectorCreateFromObjsCopy( block, 2 ) ), used( qvVectorCreateFromObjsUse( block, 2 ) );
    EXPECT_EQ( block, qvVectorBacking( used ) );
    qvVectorPrependObj( used.at(), obj );
    EXPECT_EQ( "<1, 1, 1>", textOf( used.get() ) );
    EXPECT_EQ( ( 3 + 64 ) * 8, allocated( used.get() ) );
    EXPECT_EQ( 8, references( obj.get() ) );
    used.reset();
    copied.reset();
    pushed.reset();
    EXPECT_EQ( 1, references( obj.get() ) );
}

TEST( Vector, GoesIntoItselfAsItWas )
{
    Ref< QV_VECTOR > vec = upTo( 3 );
    qvVectorInsertOuter( vec.at(), 1, vec, 1, 1 );
    EXPECT_EQ( "<0, 0, 2, 1, 2>", textOf( vec.get() ) );

    qvVectorDelOuter( vec.at(), 0, 2 );
    qvVectorAppendObj( vec.at(), qvVectorObj( vec ) );
    qvVectorSetObjAt( vec.at(), 0, qvVectorObj( vec ) );
    EXPECT_EQ( "<<0, 0, <0, 0>>, 0, <0, 0>>", textOf( vec.get() ) );

    qvVectorDelTrailing( vec.at(), 2 );
    QV_OBJ *twice[] = { qvVectorObj( vec ), qvVectorObj( vec ) };
    qvVectorInsertObjs( vec.at(), 0, twice, 2 );
    EXPECT_EQ( "<<<0, 0, <0, 0>>>, <<0, 0, <0, 0>>>, <0, 0, <0, 0>>>", textOf( vec.get() ) );

    // Its own block may move while it takes elements out of that.
    vec = upTo( 3 );

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

TEST( Vector, IsSearchedByIdentityOrByOrder )
{
    Ref< QV_VECTOR > vec   = upTo( 3 );
    Ref< QV_OBJ >    other = boxed( 2 );
    Ref< QV_OBJ >    same( qvVectorObjAt( vec, 2 ) );

    EXPECT_EQ( -1, qvVectorIndexOfObj( vec, other, QV_FALSE ) );
    EXPECT_EQ( 2, qvVectorIndexOfObj( vec, other, QV_TRUE ) );
    EXPECT_EQ( 2, qvVectorIndexOfObj( vec, same, QV_FALSE ) );
    EXPECT_FALSE( qvVectorHasObj( vec, other, QV_FALSE ) );
    EXPECT_TRUE( qvVectorHasObj( vec, other, QV_TRUE ) );

    EXPECT_TRUE( qvVectorContainsOnly( vec, qvBoxedIntSort() ) );
    qvVectorAppendStringCstr( vec.at(), "x", -1 );
    EXPECT_FALSE( qvVectorContainsOnly( vec, qvBoxedIntSort() ) );
    EXPECT_EQ( qvStringSort(), qvVectorSortAt( vec, 3 ) );

    qvVectorStringize( vec.at() );
    EXPECT_TRUE( qvVectorContainsOnly( vec, qvStringSort() ) );
    EXPECT_EQ( "<0, 1, 2, x>", textOf( vec.get() ) );
}

TEST( Vector, OrdersByElementsAndThenByLength )
{
    Ref< QV_VECTOR > three = upTo( 3 ), four = upTo( 4 ), high( qvVectorCreateFromObj( boxed( 1 ) ) );

    EXPECT_EQ( -1, qvVectorCompare( three, four ) );
    EXPECT_EQ( 1, qvVectorCompare( four, three ) );
    EXPECT_EQ( 1, qvVectorCompare( high, four ) );
    EXPECT_TRUE( qvVectorEquals( three, Ref< QV_VECTOR >( qvVectorCreateFrom( three ) ) ) );
}

TEST( Vector, ReportsBrokenContracts )
{
    Ref< QV_VECTOR > vec = upTo( 2 ), none( qvVectorCreate() );
    QV_OBJ          *hole = nullptr;

    EXPECT_BROKEN( qvVectorAppendString( vec.at(), nullptr ), "obj" );
    EXPECT_BROKEN( qvVectorInsertObjs( vec.at(), 0, &hole, 1 ), "obj" );
    EXPECT_BROKEN( qvVectorInsertObjs( vec.at(), 0, nullptr, 1 ), "count == 0 || src" );
    EXPECT_BROKEN( qvVectorCreateFromObjsUse( &hole, 1 ), "src[i]" );
    EXPECT_BROKEN( qvVectorAppendInner( vec.at(), vec, 1, QV_INT_MAX ), "QV_INT_ADD_OK( offset, count )" );
    EXPECT_BROKEN( qvVectorAppendTrailing( vec.at(), vec, QV_INT_MIN ), "count >= 0" );
    EXPECT_BROKEN( qvVectorDelAt( vec.at(), 2 ), "offset + count <= (*vec)->length" );
    EXPECT_BROKEN( qvVectorPop( none.at() ), "(*vec)->length" );
    EXPECT_BROKEN( qv___VectorCompact( none ), "QV_REF_RETAIN_COUNT( vec ) == 1" );
}

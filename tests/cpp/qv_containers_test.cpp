#include "qv_test_support.h"

#include "qv/qv.hpp"

#include <memory>

namespace
{
// A type of a program's own, which cannot be copied.
struct Mark
{
    std::unique_ptr< int > number;
};
} // namespace

template<>
struct qv::Boxing< Mark > : qv::Boxing< int >
{
    static QV_OBJ *box( const Mark &mark )
    {
        return mark.number ? qv::Boxing< int >::box( *mark.number ) : throw mark.number.get();
    }

    static Mark unbox( QV_OBJ *object )
    {
        return { std::make_unique< int >( qv::Boxing< int >::unbox( object ) ) };
    }
};

TEST( Containers, AreSortedSearchedAndUpdatedInPlace )
{
    qv::Vector< qv::String > names = { "b", "c", "a", "b" };
    qv::Vector< qv::String > other = names;
    EXPECT_EQ( ( qv::Vector< qv::String >{ "a", "b", "b", "c" } ), names.sort() );
    EXPECT_EQ( ( qv::Vector< qv::String >{ "b", "a", "c", "b" } ), other.sort( 1, 2 ) );
    EXPECT_TRUE( names.isSorted() && !other.isSorted() && names.lowerBound( "bb" ) == 3 );
    EXPECT_EQ( 1, names.findSorted( "b" ) );
    EXPECT_EQ( std::nullopt, names.findSorted( "ab" ) );

    // By another order, and by one that is not that of the objects.
    qv::Vector< double > reals = { 0.5, -1, 2 };
    EXPECT_EQ( ( qv::Vector< double >{ 2, 0.5, -1 } ), reals.sort( std::greater<>() ) );
    EXPECT_EQ( 1, reals.lowerBound( 1, std::greater<>() ) );
    EXPECT_EQ( 0, reals.sort().findSorted( -1 ) );

    // What a function throws arrives, and nothing is lost.
    int left = 3;
    EXPECT_THROW(
        reals.sort(
            [&]( double a, double b )
            {
                if( --left == 0 )
                    throw left;

                return a > b;
            } ),
        int );
    EXPECT_EQ( 3, reals.size() );

    // A value that is moved in and taken out keeps its one reference; one that is copied in is shared.
    qv::String               once = "once", twice = "twice";
    QV_STRING               *moved = once.c();
    qv::Vector< qv::String > stack;
    stack.append( std::move( once ) ).prepend( twice ).insert( 1, twice ).set( 0, "new" );
    EXPECT_EQ( 1, qv___RetainCountValue( &qvStringObj( moved )->retainCount ) );
    EXPECT_EQ( 2, qv___RetainCountValue( &qvStringObj( twice.c() )->retainCount ) );
    once = stack.popBack();
    EXPECT_EQ( 1, qv___RetainCountValue( &qvStringObj( once.c() )->retainCount ) );
    EXPECT_TRUE( once.c() == moved && stack.popFront() == "new" && stack.popFront() == twice );
    qv::Dict< int, qv::String > numbered;
    numbered.set( 1, std::move( once ) ).set( 2, twice );
    EXPECT_EQ( 1, qv___RetainCountValue( &qvStringObj( moved )->retainCount ) );
    EXPECT_EQ( "{1=once, 2=twice}", numbered.str() );

    // A key that throws loses no value.
    EXPECT_THROW( ( qv::Dict< Mark, qv::String >().set( Mark(), *numbered.find( 1 ) ) ), int * );
    EXPECT_EQ( 1, qv___RetainCountValue( &qvStringObj( moved )->retainCount ) );

    // A value of another type is only read, and a Vector may become an element of itself.
    qv::Vector< Mark > marks;
    const Mark         mark = { std::make_unique< int >( 7 ) };
    marks.append( mark ).append( mark ).insert( 0, mark ).set( 1, { std::make_unique< int >( 5 ) } );
    EXPECT_TRUE( *marks[0].number == 7 && *marks[1].number == 5 && *mark.number == 7 );
    qv::Vector<> nested = { 1 };
    nested.append( nested ).set( 0, nested[1] );
    EXPECT_EQ( "<<1>, <1>>", nested.str() );
    EXPECT_EQ( "<1>", nested.popBack().str() );

    // A value that only the Dict holds grows in place.
    qv::Dict< int, qv::Vector< int > > groups;

    for( int i = 0; i < 30; i++ )
        groups.update(
            i % 3,
            [&]( std::optional< qv::Vector< int > > group )
            {
                qv::Vector< int > own = group ? std::move( *group ) : qv::Vector< int >{ -1, -2 };
                EXPECT_EQ( 1, qv___RetainCountValue( &qvVectorObj( own.c() )->retainCount ) );
                return own.append( i );
            } );

    EXPECT_EQ( 12, groups.find( 2 )->size() );
    EXPECT_THROW( groups.update( 1, []( auto ) -> qv::Vector< int > { throw 1; } ), int );
    EXPECT_EQ( 2, groups.size() );

    // Entries by distance, in rows and beyond.
    qv::Dict< int, int > squares;

    for( int i = 0; i < 3000; i++ )
        squares.set( i, i * i );

    auto it = squares.begin() + 1500;
    EXPECT_EQ( ( std::pair( 1499, 1499 * 1499 ) ), *--it );
    EXPECT_EQ( 2999, ( squares.end() - 1 )[0].first );
    EXPECT_EQ( 1234, std::ranges::lower_bound( squares, std::pair( 1234, 0 ) ) - squares.begin() );
    int sum = 0;

    for( auto [key, value] : squares )
        sum += key == value;

    EXPECT_EQ( 2, sum );
}

TEST( Containers, AreAppendedToInPlace )
{
    qv::String     text = "a";
    qv::Buffer     bytes;
    std::u32string expected = U"a";

    {
        qv::Appender toText( text );
        qv::Appender toBytes( bytes );

        for( char32_t ch = 1; ch <= 1000; ch++ )
        {
            toText.push_back( ch );
            toBytes.push_back( uint8_t( ch ) );
            expected += ch;
        }

        toText.finish();
        EXPECT_EQ( 1001, text.size() );
        std::copy_n( expected.begin(), 10, std::back_inserter( toText ) );
    }

    EXPECT_EQ( expected + expected.substr( 0, 10 ), text.view() );
    EXPECT_TRUE( bytes.size() == 1000 && bytes[0] == 1 && bytes[999] == uint8_t( 1000 ) );

    // What is thrown leaves the contents as they were.
    text = bytes.size() ? "ab" : "";
    EXPECT_THROW( text.appendWith( 9, []( char32_t *to ) -> QV_INT { throw *to = U'c'; } ), char32_t );
    text.appendWith( 9, []( char32_t *to ) { return *to = U'd', 1; } );
    EXPECT_EQ( "abd", text );
}

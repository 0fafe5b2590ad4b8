#include "qv_test_support.h"

#include "qv/qv.h"

using qv::Ref;
using namespace qv::test;

TEST( PriorityMap, ComparesPrioritiesBeforeObjects )
{
    auto mapOf = []( std::vector< std::pair< QV_INT, const char * > > entries )
    {
        Ref< QV_PRIORITY_MAP > map( qvPriorityMapCreate() );

        for( auto &[priority, name] : entries )
            qvPriorityMapSet( map.at(), priority, qvStringObj( text( std::string_view( name ) ) ) );

        return map;
    };
    Ref< QV_PRIORITY_MAP > map = mapOf( { { 1, "b" }, { 2, "a" } } );

    EXPECT_EQ( 0, qvPriorityMapCompare( map, mapOf( { { 9, "b" }, { 2, "a" }, { 1, "b" } } ) ) );
    EXPECT_LT( qvPriorityMapCompare( map, mapOf( { { 1, "b" }, { 3, "a" } } ) ), 0 );
    EXPECT_GT( qvPriorityMapCompare( map, mapOf( { { 1, "a" }, { 2, "b" } } ) ), 0 );
    EXPECT_FALSE( qvPriorityMapEquals( map, mapOf( { { 1, "b" } } ) ) );
}

#include "bench.h"

#include <atomic>
#include <memory>

namespace bench
{
namespace
{
const int COUNT = 1000;

// As large as a boxed integer: the header of an object and one field.
struct SameSize
{
    int64_t words[11];
};
} // namespace

void addObjectCases()
{
    add( "object", "create and release", "boxed integer", 1.25,
         []
         {
             for( int i = 0; i < COUNT; i++ )
                 qvBoxedIntRelease( qvBoxedIntCreate( i ) );

             return uint64_t( COUNT );
         },
         { { "std::make_shared",
             []
             {
                 for( int i = 0; i < COUNT; i++ )
                 {
                     auto object      = std::make_shared< SameSize >();
                     object->words[0] = i;
                     asm volatile( "" : : "r"( object.get() ) : "memory" );
                 }

                 return uint64_t( COUNT );
             } } } );

    static QV_BOXED_INT          *bint = qvBoxedIntCreate( 1 );
    static std::atomic< int32_t > counter{ 1 };

    add( "object", "retain and release", "exported functions", 1.3,
         []
         {
             for( int i = 0; i < COUNT; i++ )
             {
                 qvBoxedIntRetain( bint );
                 qvBoxedIntRelease( bint );
             }

             return uint64_t( COUNT );
         },
         { { "two locked additions",
             []
             {
                 for( int i = 0; i < COUNT; i++ )
                 {
                     counter.fetch_add( 1 );
                     counter.fetch_sub( 1 );
                 }

                 return uint64_t( COUNT );
             } } } );
}
} // namespace bench

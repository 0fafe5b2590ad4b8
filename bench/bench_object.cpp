#include "bench.h"
#include "object_threads.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
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

// The flags of a run are fixed, so that a program with a run of its own does the work.
void createWithDatabase( const char *threads )
{
    FILE  *output = popen( ( std::string( BENCH_DATABASE " " ) + threads ).c_str(), "r" );
    double seconds;

    if( !output || std::fscanf( output, "%lf", &seconds ) != 1 || pclose( output ) )
        std::abort();

    timedElsewhere( seconds );
}

void addDatabaseCase( const char *threads, const char *input )
{
    addTimed(
        "object", "create and release", input, 0,
        [threads]
        {
            createWithDatabase( threads );
            return uint64_t( OBJECTS_A_THREAD );
        },
        { { "std::make_shared", [threads]
            {
                timed(
                    [threads]
                    {
                        inThreads(
                            std::atoi( threads ),
                            []( int i )
                            {
                                auto object      = std::make_shared< SameSize >();
                                object->words[0] = i;
                                asm volatile( "" : : "r"( object.get() ) : "memory" );
                            } );
                    } );

                return uint64_t( OBJECTS_A_THREAD );
            } } } );
}
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
         { { "std::make_shared", []
             {
                 for( int i = 0; i < COUNT; i++ )
                 {
                     auto object      = std::make_shared< SameSize >();
                     object->words[0] = i;
                     asm volatile( "" : : "r"( object.get() ) : "memory" );
                 }

                 return uint64_t( COUNT );
             } } } );

    addDatabaseCase( "1", "with the database, 1 thread, 10^5 boxed integers" );
    addDatabaseCase( "2", "with the database, 2 threads, 10^5 boxed integers each" );

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
         { { "two locked additions", []
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

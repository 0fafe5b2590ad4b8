#include "bench.h"
#include "object_threads.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>

#ifdef BENCH_BOOST
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#endif

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
    add(
        { "object",
          "create and release",
          input,
          0,
          [threads]
          {
              createWithDatabase( threads );
              show( uint64_t( OBJECTS_A_THREAD ) );
          },
          { { "std::make_shared",
              [threads]
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
                  show( uint64_t( OBJECTS_A_THREAD ) );
              } } },
          {},
          true } );
}

#ifdef BENCH_BOOST
struct Counted : boost::intrusive_ref_counter< Counted, boost::thread_safe_counter >
{
    int64_t words[10];
};
#endif
} // namespace

void addObjectCases()
{
    Case creating{
        "object",
        "create and release",
        "boxed integer",
        1.0,
        []
        {
            for( int i = 0; i < COUNT; i++ )
            {
                QV_BOXED_INT *object = qvBoxedIntCreate( i );
                show( uint64_t( qvBoxedIntValue( object ) ) );
                qvBoxedIntRelease( object );
            }
        },
        { { "std::make_shared",
            []
            {
                for( int i = 0; i < COUNT; i++ )
                {
                    auto object      = std::make_shared< SameSize >();
                    object->words[0] = i;
                    show( uint64_t( object->words[0] ) );
                }
            } } },
        allocations( COUNT, sizeof( SameSize ) ) };
#ifdef BENCH_BOOST
    creating.peers.push_back(
        { "boost::intrusive_ptr", []
          {
              for( int i = 0; i < COUNT; i++ )
              {
                  boost::intrusive_ptr< Counted > object( new Counted );
                  object->words[0] = i;
                  show( uint64_t( object->words[0] ) );
              }
          } } );
#endif
    add( creating );
    addDatabaseCase( "1", "with the database, 1 thread, 10^5 boxed integers" );
    addDatabaseCase( "2", "with the database, 2 threads, 10^5 boxed integers each" );

    static QV_BOXED_INT          *bint = qvBoxedIntCreate( 1 );
    static std::atomic< int32_t > counter{ 1 };

    add(
        { "object",
          "retain and release",
          "exported functions",
          1.2,
          []
          {
              for( int i = 0; i < COUNT; i++ )
              {
                  qvBoxedIntRetain( bint );
                  qvBoxedIntRelease( bint );
              }
          },
          { { "two locked additions", []
              {
                  for( int i = 0; i < COUNT; i++ )
                  {
                      counter.fetch_add( 1 );
                      counter.fetch_sub( 1 );
                  }
              } } } } );
}
} // namespace bench

#include "bench.h"

#include <algorithm>
#include <cstring>
#include <memory>

#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_QT
#include <QByteArray>
#include <QMap>
#include <QString>
#endif
#ifdef BENCH_BOOST
#include <boost/dynamic_bitset.hpp>
#endif

namespace bench
{
namespace
{
// The same keys for everybody, of which the second half is not entered.
struct Keys
{
    std::vector< std::string > sorted, shuffled, inward, missing; // inward: from both ends to the middle
    std::vector< QV_STRING * > oursSorted, oursShuffled, oursInward, oursMissing;
    QV_DICT                   *dict;
#ifdef BENCH_GLIB
    GTree *tree;
#endif
#ifdef BENCH_QT
    std::vector< QString >   qtSorted, qtShuffled, qtInward, qtMissing;
    QMap< QString, int64_t > map;
#endif
};

std::vector< QV_STRING * > strings( const std::vector< std::string > &texts )
{
    std::vector< QV_STRING * > result;

    for( const std::string &text : texts )
        result.push_back( qvStringCreateFromCstr( text.c_str(), -1 ) );

    return result;
}

QV_DICT *buildDict( const std::vector< QV_STRING * > &keys )
{
    QV_DICT *dict = qvDictCreate();

    for( size_t i = 0; i < keys.size(); i++ )
    {
        QV_BOXED_INT *value = qvBoxedIntCreate( static_cast< QV_INT >( i ) );
        qvDictSetStringKey( &dict, keys[i], qvBoxedIntObj( value ) );
        qvBoxedIntRelease( value );
    }

    return dict;
}

#ifdef BENCH_GLIB
GTree *buildTree( const std::vector< std::string > &keys )
{
    GTree *tree = g_tree_new_full(
        []( gconstpointer a, gconstpointer b, gpointer )
        { return std::strcmp( static_cast< const char * >( a ), static_cast< const char * >( b ) ); }, nullptr, g_free,
        nullptr );

    for( size_t i = 0; i < keys.size(); i++ )
        g_tree_insert( tree, g_strdup( keys[i].c_str() ), GINT_TO_POINTER( i + 1 ) );

    return tree;
}
#endif

#ifdef BENCH_QT
std::vector< QString > qtStrings( const std::vector< std::string > &texts )
{
    std::vector< QString > result;

    for( const std::string &text : texts )
        result.push_back( QString::fromStdString( text ) );

    return result;
}

QMap< QString, int64_t > buildMap( const std::vector< QString > &keys )
{
    QMap< QString, int64_t > map;

    for( size_t i = 0; i < keys.size(); i++ )
        map.insert( keys[i], static_cast< int64_t >( i ) );

    return map;
}
#endif

Keys *makeKeys( size_t count )
{
    Keys                      *result = new Keys;
    std::vector< std::string > all    = keys( 2 * count );
    result->shuffled.assign( all.begin(), all.begin() + static_cast< ptrdiff_t >( count ) );
    result->missing.assign( all.begin() + static_cast< ptrdiff_t >( count ), all.end() );
    result->sorted = result->shuffled;
    std::sort( result->sorted.begin(), result->sorted.end() );

    for( size_t i = 0; i < count; i++ )
        result->inward.push_back( result->sorted[i % 2 ? count - 1 - i / 2 : i / 2] );

    result->oursSorted   = strings( result->sorted );
    result->oursInward   = strings( result->inward );
    result->oursShuffled = strings( result->shuffled );
    result->oursMissing  = strings( result->missing );
    result->dict         = buildDict( result->oursSorted );
#ifdef BENCH_GLIB
    result->tree = buildTree( result->sorted );
#endif
#ifdef BENCH_QT
    result->qtSorted   = qtStrings( result->sorted );
    result->qtInward   = qtStrings( result->inward );
    result->qtShuffled = qtStrings( result->shuffled );
    result->qtMissing  = qtStrings( result->missing );
    result->map        = buildMap( result->qtSorted );
#endif
    return result;
}

uint64_t lookUp( QV_DICT *dict, const std::vector< QV_STRING * > &keys )
{
    uint64_t found = 0;

    for( QV_STRING *key : keys )
        if( QV_OBJ *value = qvDictStringKey( dict, key ) )
        {
            found++;
            qvObjRelease( value );
        }

    return found;
}

#ifdef BENCH_GLIB
uint64_t lookUp( GTree *tree, const std::vector< std::string > &keys )
{
    uint64_t found = 0;

    for( const std::string &key : keys )
        found += g_tree_lookup( tree, key.c_str() ) != nullptr;

    return found;
}
#endif

#ifdef BENCH_QT
uint64_t lookUp( const QMap< QString, int64_t > &map, const std::vector< QString > &keys )
{
    uint64_t found = 0;

    for( const QString &key : keys )
        found += map.constFind( key ) != map.constEnd();

    return found;
}
#endif

void addDictCases( size_t count )
{
    Keys       *keys  = makeKeys( count );
    std::string input = std::to_string( count ) + " keys of 16 characters";

    std::vector< Peer > hit, miss, build, randomBuild, middleBuild, walk;
#ifdef BENCH_GLIB
    hit.push_back( { "GTree", [keys] { return lookUp( keys->tree, keys->shuffled ); } } );
    miss.push_back( { "GTree", [keys] { return lookUp( keys->tree, keys->missing ); } } );
    auto treeBuild = []( const std::vector< std::string > &texts )
    {
        GTree   *tree = buildTree( texts );
        uint64_t size = static_cast< uint64_t >( g_tree_nnodes( tree ) );
        g_tree_destroy( tree );
        return size;
    };
    build.push_back( { "GTree", [keys, treeBuild] { return treeBuild( keys->sorted ); } } );
    randomBuild.push_back( { "GTree", [keys, treeBuild] { return treeBuild( keys->shuffled ); } } );
    middleBuild.push_back( { "GTree", [keys, treeBuild] { return treeBuild( keys->inward ); } } );
    walk.push_back(
        { "GTree", [keys]
          {
              uint64_t sum = 0;
              g_tree_foreach(
                  keys->tree,
                  []( gpointer, gpointer value, gpointer data ) -> gboolean
                  {
                      *static_cast< uint64_t * >( data ) += static_cast< uint64_t >( GPOINTER_TO_INT( value ) - 1 );
                      return FALSE;
                  },
                  &sum );
              return sum;
          } } );
#endif
#ifdef BENCH_QT
    hit.push_back( { "QMap", [keys] { return lookUp( keys->map, keys->qtShuffled ); } } );
    miss.push_back( { "QMap", [keys] { return lookUp( keys->map, keys->qtMissing ); } } );
    build.push_back( { "QMap", [keys] { return static_cast< uint64_t >( buildMap( keys->qtSorted ).size() ); } } );
    randomBuild.push_back(
        { "QMap", [keys] { return static_cast< uint64_t >( buildMap( keys->qtShuffled ).size() ); } } );
    middleBuild.push_back(
        { "QMap", [keys] { return static_cast< uint64_t >( buildMap( keys->qtInward ).size() ); } } );
    walk.push_back(
        { "QMap", [keys]
          {
              uint64_t sum = 0;

              for( auto it = keys->map.constBegin(); it != keys->map.constEnd(); ++it )
                  sum += static_cast< uint64_t >( it.value() );

              return sum;
          } } );
#endif

    auto dictBuild = []( const std::vector< QV_STRING * > &texts )
    {
        QV_DICT *dict = buildDict( texts );
        uint64_t size = static_cast< uint64_t >( qvDictLength( dict ) );
        qvDictRelease( dict );
        return size;
    };

    add( "Dict", "look-up, hit", input, 0.9, [keys] { return lookUp( keys->dict, keys->oursShuffled ); }, hit );
    add( "Dict", "look-up, miss", input, 0.9, [keys] { return lookUp( keys->dict, keys->oursMissing ); }, miss );
    add( "Dict", "ascending build", input, 0.4, [keys, dictBuild] { return dictBuild( keys->oursSorted ); }, build );
    add( "Dict", "random build", input, 0, [keys, dictBuild] { return dictBuild( keys->oursShuffled ); }, randomBuild );
    add(
        "Dict", "build towards the middle", input, 0, [keys, dictBuild] { return dictBuild( keys->oursInward ); },
        middleBuild );
    add(
        "Dict", "walk", input, 0.4,
        [keys]
        {
            uint64_t sum    = 0;
            QV_INT   length = qvDictLength( keys->dict );

            for( QV_INT i = 0; i < length; i++ )
            {
                QV_OBJ *value = qvDictValueAt( keys->dict, i );
                sum += static_cast< uint64_t >( qvBoxedIntValue( qvBoxedIntFrom( value ) ) );
                qvObjRelease( value );
            }

            return sum;
        },
        walk );
}

void addVectorCases( int count )
{
    std::string input = std::to_string( count ) + " objects";

    struct Filled
    {
        QV_BOXED_INT                             *object = qvBoxedIntCreate( 7 );
        QV_VECTOR                                *ours   = qvVectorCreate();
        std::shared_ptr< int64_t >                shared = std::make_shared< int64_t >( 7 );
        std::vector< std::shared_ptr< int64_t > > peer;
    };

    Filled *filled = new Filled;

    for( int i = 0; i < count; i++ )
    {
        qvVectorPush( &filled->ours, qvBoxedIntObj( filled->object ) );
        filled->peer.push_back( filled->shared );
    }

    add( "Vector", "push and pop", input, 0.8,
         [filled, count]
         {
             QV_VECTOR *vec = qvVectorCreate();

             for( int i = 0; i < count; i++ )
                 qvVectorPush( &vec, qvBoxedIntObj( filled->object ) );

             for( int i = 0; i < count; i++ )
                 qvObjRelease( qvVectorPop( &vec ) );

             qvVectorRelease( vec );
             return uint64_t( count );
         },
         { { "std::vector of std::shared_ptr", [filled, count]
             {
                 std::vector< std::shared_ptr< int64_t > > vec;

                 for( int i = 0; i < count; i++ )
                     vec.push_back( filled->shared );

                 for( int i = 0; i < count; i++ )
                 {
                     std::shared_ptr< int64_t > last = std::move( vec.back() );
                     vec.pop_back();
                 }

                 return uint64_t( count );
             } } } );

    add( "Vector", "read with retain", input, 0.8,
         [filled, count]
         {
             uint64_t sum = 0;

             for( int i = 0; i < count; i++ )
             {
                 QV_OBJ *object = qvVectorObjAt( filled->ours, i );
                 sum += object != nullptr;
                 qvObjRelease( object );
             }

             return sum;
         },
         { { "std::vector of std::shared_ptr", [filled, count]
             {
                 uint64_t sum = 0;

                 for( int i = 0; i < count; i++ )
                 {
                     std::shared_ptr< int64_t > object = filled->peer[static_cast< size_t >( i )];
                     sum += object != nullptr;
                 }

                 return sum;
             } } } );
}

void addBufferCases()
{
    const int COUNT = 100000;

    add( "Buffer", "append a byte", "10^5 times", 1.0,
         []
         {
             QV_BUFFER *buf = qvBufferCreate();

             for( int i = 0; i < COUNT; i++ )
                 qvBufferAppendByte( &buf, static_cast< uint8_t >( i ) );

             uint64_t length = static_cast< uint64_t >( qvBufferLength( buf ) );
             qvBufferRelease( buf );
             return length;
         },
         {
#ifdef BENCH_QT
             { "QByteArray",
               []
               {
                   QByteArray bytes;

                   for( int i = 0; i < COUNT; i++ )
                       bytes.append( static_cast< char >( i ) );

                   return static_cast< uint64_t >( bytes.size() );
               } },
#endif
         } );

    static const uint8_t BLOCK[64] = { 1, 2, 3 };

    add( "Buffer", "append 64 bytes", "10^5 times", 1.0,
         []
         {
             QV_BUFFER *buf = qvBufferCreate();

             for( int i = 0; i < COUNT; i++ )
                 qvBufferAppendBytes( &buf, BLOCK, sizeof( BLOCK ) );

             uint64_t length = static_cast< uint64_t >( qvBufferLength( buf ) );
             qvBufferRelease( buf );
             return length;
         },
         {
#ifdef BENCH_QT
             { "QByteArray",
               []
               {
                   QByteArray bytes;

                   for( int i = 0; i < COUNT; i++ )
                       bytes.append( reinterpret_cast< const char * >( BLOCK ), sizeof( BLOCK ) );

                   return static_cast< uint64_t >( bytes.size() );
               } },
#endif
         } );

    for( int width : { 3, 11, 17 } )
    {
        std::string       input  = std::to_string( width ) + " bits, 10^4 fields";
        const int         fields = 10000;
        const uint64_t    mask   = ( uint64_t( 1 ) << width ) - 1;
        static QV_BUFFER *ours[32];
        ours[width] = qvBufferCreate();
        qvBufferBitAppendZero( &ours[width], width * fields );

        std::vector< Peer > writing, reading;
#ifdef BENCH_BOOST
        using Bits = boost::dynamic_bitset< uint64_t >;
        Bits *bits = new Bits( static_cast< size_t >( width * fields ) );

        // The class has no operation on fields: its user sets and tests bits.
        writing.push_back(
            { "boost::dynamic_bitset", [bits, width, mask]
              {
                  for( int i = 0; i < fields; i++ )
                  {
                      uint64_t value = ( uint64_t( i ) * 2654435761u ) & mask;

                      for( int bit = 0; bit < width; bit++ )
                          bits->set( static_cast< size_t >( i * width + bit ), ( value >> ( width - 1 - bit ) ) & 1 );
                  }

                  return uint64_t( fields );
              } } );
        reading.push_back(
            { "boost::dynamic_bitset", [bits, width]
              {
                  uint64_t sum = 0;

                  for( int i = 0; i < fields; i++ )
                  {
                      uint64_t value = 0;

                      for( int bit = 0; bit < width; bit++ )
                          value = value << 1 | ( bits->test( static_cast< size_t >( i * width + bit ) ) ? 1 : 0 );

                      sum += value;
                  }

                  return sum;
              } } );
#endif
        add(
            "Buffer", "write bit fields", input, 0.5,
            [width, mask]
            {
                for( int i = 0; i < fields; i++ )
                    qvBufferBitWriteBits( &ours[width], i * width, ( uint64_t( i ) * 2654435761u ) & mask, width );

                return uint64_t( fields );
            },
            writing );
        add(
            "Buffer", "read bit fields", input, 0.5,
            [width]
            {
                uint64_t sum = 0;

                for( int i = 0; i < fields; i++ )
                    sum += qvBufferBitReadBits( ours[width], i * width, width );

                return sum;
            },
            reading );
    }
}
} // namespace

void addContainerCases()
{
    for( int count : { 100, 10000, 100000 } )
    {
        addDictCases( static_cast< size_t >( count ) );
        addVectorCases( count );
    }

    addBufferCases();
}
} // namespace bench

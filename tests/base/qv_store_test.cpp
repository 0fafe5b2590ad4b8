#include "qv_test_support.h"

#include "qv/base/qv_buffer.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_format.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_vector.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf_line_source.h"
#include "qv/runtime/qv_runtime.h"

#include <malloc.h>

#include <atomic>
#include <map>
#include <random>
#include <set>
#include <thread>
#include <vector>

using qv::Ref;
using namespace qv::test;

namespace
{
using Lines = std::vector< std::string >;

Lines linesOf( QV_VECTOR *vec )
{
    Lines lines;

    for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
    {
        Ref< QV_OBJ > line( qvVectorObjAt( vec, i ) );
        lines.push_back( utf8( qvStringFrom( line ) ) );
    }

    return lines;
}

// The text form of a store, which tells all that it holds.
Lines linesOf( QV_STORE *store )
{
    return linesOf( Ref< QV_VECTOR >( qvStoreEncodeToStringVector( store ) ) );
}

Ref< QV_STORE > storeOf( const Lines &lines )
{
    Ref< QV_VECTOR > vec( qvVectorCreate() );

    for( const std::string &line : lines )
        qvVectorAppendObj( vec.at(), qv::obj( text( line ).get() ) );

    return Ref< QV_STORE >( qvStoreDecodeFromStringVector( vec ) );
}

Ref< QV_BUFFER > bufferOf( std::string_view bytes )
{
    return Ref< QV_BUFFER >( qvBufferCreateFromBytesCopy( bytes.data(), static_cast< QV_INT >( bytes.size() ) ) );
}

std::string bytesOf( QV_BUFFER *buffer )
{
    return { static_cast< const char * >( static_cast< const void * >( qvBufferBacking( buffer ) ) ),
             static_cast< size_t >( qvBufferLength( buffer ) ) };
}

Ref< QV_STORE > fromText( std::string_view bytes )
{
    return Ref< QV_STORE >( qvStoreTryDecodeFromTextBuffer( bufferOf( bytes ) ) );
}

Ref< QV_STORE > fromBinary( std::string_view bytes )
{
    return Ref< QV_STORE >( qvStoreTryDecodeFromBuffer( bufferOf( bytes ) ) );
}

std::string textFormOf( QV_STORE *store )
{
    return bytesOf( Ref< QV_BUFFER >( qvStoreEncodeToTextBuffer( store ) ) );
}

std::string binaryOf( QV_STORE *store )
{
    return bytesOf( Ref< QV_BUFFER >( qvStoreEncodeToBuffer( store ) ) );
}

std::string repeat( std::string_view part, int times )
{
    std::string result;

    while( times-- > 0 )
        result += part;

    return result;
}
} // namespace

/* The grid ------------------------------------------------------------------------------------------------------- */

#define LIST( ... ) __VA_ARGS__

// Calls all forms of a reading operation, each of which has to name the address "a1" at index 1.
#define EXPECT_FORMS_WITHOUT_AT( Name, front, accept )                                                                 \
    accept( qvStore##Name( LIST front, text( "a1" ) ) );                                                               \
    accept( qvStore##Name##Cstr( LIST front, "a1", -1 ) );                                                             \
    accept( qvStore##Name##Wcstr( LIST front, L"a12", 2 ) );                                                           \
    accept( qvStore##Name##Format( LIST front, text( "%lc%i" ), "a", QV_INT( 1 ) ) );                                  \
    accept( qvStore##Name##FormatCstr( LIST front, "%lc%i?", 5, "a", QV_INT( 1 ) ) );                                  \
    accept( qvStore##Name##FormatWcstr( LIST front, L"%lc%i", -1, "a", QV_INT( 1 ) ) )

#define EXPECT_FORMS( Name, front, accept )                                                                            \
    accept( qvStore##Name##At( LIST front, 1 ) );                                                                      \
    EXPECT_FORMS_WITHOUT_AT( Name, front, accept )

// Calls all forms of a changing operation, each on its own store; `behind` starts with a comma if there is a value.
#define EXPECT_CHANGES( Name, behind, ... )                                                                            \
    for( int form = 0; form < 7; form++ )                                                                              \
    {                                                                                                                  \
        Ref< QV_STORE > s = Ref< QV_STORE >::share( base );                                                            \
        switch( form )                                                                                                 \
        {                                                                                                              \
        case 0: qvStore##Name( s.at(), text( "a1" ) LIST behind ); break;                                              \
        case 1: qvStore##Name##At( s.at(), 1 LIST behind ); break;                                                     \
        case 2: qvStore##Name##Cstr( s.at(), "a1", 2 LIST behind ); break;                                             \
        case 3: qvStore##Name##Wcstr( s.at(), L"a1", -1 LIST behind ); break;                                          \
        case 4: qvStore##Name##Format( s.at(), text( "a%i" ) LIST behind, QV_INT( 1 ) ); break;                        \
        case 5: qvStore##Name##FormatCstr( s.at(), "a%i", -1 LIST behind, QV_INT( 1 ) ); break;                        \
        case 6: qvStore##Name##FormatWcstr( s.at(), L"a%i", 3 LIST behind, QV_INT( 1 ) ); break;                       \
        }                                                                                                              \
        EXPECT_EQ( ( Lines { __VA_ARGS__ } ), linesOf( s ) ) << form;                                                  \
    }                                                                                                                  \
    EXPECT_EQ( before, linesOf( base ) )

TEST( Store, EveryFormReachesTheSameEntry )
{
    const Lines     before = { "a0=0", "a1=7", "a2=x", "a1.k=v" };
    Ref< QV_STORE > base   = storeOf( before );
    Ref< QV_STORE > sub    = storeOf( { "s=t" } );

#define TRUE_RESULT( call )  EXPECT_EQ( QV_TRUE, call )
#define VALUE_RESULT( call ) EXPECT_EQ( "7", take( call ) )
#define STORE_RESULT( call ) EXPECT_EQ( Lines { "k=v" }, linesOf( Ref< QV_STORE >( call ) ) )
#define SCAN_RESULT( call )                                                                                            \
    truth = QV_FALSE, number = 0, real = 0.0;                                                                          \
    EXPECT_EQ( QV_TRUE, call );                                                                                        \
    EXPECT_EQ( 7.0 + QV_TRUE, real + number + truth + ( truth ? 7 : QV_TRUE ) )

    QV_BOOL truth;
    QV_INT  number;
    QV_REAL real;

    EXPECT_FORMS_WITHOUT_AT( HasAddress, ( base ), TRUE_RESULT );
    EXPECT_FORMS( HasValue, ( base ), TRUE_RESULT );
    EXPECT_FORMS( HasValueBool, ( base ), TRUE_RESULT );
    EXPECT_FORMS( HasValueInt, ( base ), TRUE_RESULT );
    EXPECT_FORMS( HasValueReal, ( base ), TRUE_RESULT );
    EXPECT_FORMS( HasStore, ( base ), TRUE_RESULT );
    EXPECT_FORMS( Value, ( base ), VALUE_RESULT );
    EXPECT_FORMS( Store, ( base ), STORE_RESULT );
    EXPECT_FORMS( ValueBool, LIST( ( base, &truth ) ), SCAN_RESULT );
    EXPECT_FORMS( ValueInt, LIST( ( base, &number ) ), SCAN_RESULT );
    EXPECT_FORMS( ValueReal, LIST( ( base, &real ) ), SCAN_RESULT );

    EXPECT_CHANGES( SetValue, (, text( "n" ) ), "a0=0", "a1=n", "a2=x", "a1.k=v" );
    EXPECT_CHANGES( SetValueBool, (, QV_TRUE ), "a0=0", "a1=true", "a2=x", "a1.k=v" );
    EXPECT_CHANGES( SetValueInt, (, QV_INT_MIN ), "a0=0", "a1=-9223372036854775808", "a2=x", "a1.k=v" );
    EXPECT_CHANGES( SetValueReal, (, 1.5 ), "a0=0", "a1=1.500000", "a2=x", "a1.k=v" );
    EXPECT_CHANGES( SetStore, (, sub.get() ), "a0=0", "a1=7", "a2=x", "a1.s=t" );
    EXPECT_CHANGES( DelValue, (), "a0=0", "a2=x", "a1.k=v" );
    EXPECT_CHANGES( DelStore, (), "a0=0", "a1=7", "a2=x" );
}

TEST( Store, TypedValuesAreReadFromEndToEnd )
{
    struct Case
    {
        const char *text, *kinds; // kinds: what it is, of Bool, Int and Real
        QV_BOOL     truth;
        QV_INT      number;
        QV_REAL     real;
    };

    const Case cases[] = {
        { "true", "B", QV_TRUE, 0, 0.0 },     { "FALSE ", "B", QV_FALSE, 0, 0.0 }, { "-12", "BIR", QV_TRUE, -12, -12.0 },
        { "0x10", "BIR", QV_TRUE, 16, 16.0 }, { "2,5", "BR", QV_TRUE, 0, 2.5 },    { "0", "BIR", QV_FALSE, 0, 0.0 },
        { "12 x", "", 0, 0, 0.0 },            { "abc", "", 0, 0, 0.0 },            { "", "", 0, 0, 0.0 },
        { "truely", "", 0, 0, 0.0 },          { "9223372036854775808", "BR", QV_TRUE, 0, 9223372036854775808.0 },
    };

    for( const Case &c : cases )
    {
        // Without a value each fails as it does with one that is something else.
        for( bool hasValue : { true, false } )
        {
            Ref< QV_STORE >   store  = storeOf( { ( hasValue ? "a=" : "a.b=" ) + std::string( c.text ) } );
            const std::string kinds  = hasValue ? c.kinds : "";
            QV_BOOL           truth  = 9;
            QV_INT            number = 9;
            QV_REAL           real   = 9.0;

            EXPECT_EQ( kinds.find( 'B' ) != kinds.npos, qvStoreValueBoolAt( store, &truth, 0 ) ) << c.text;
            EXPECT_EQ( kinds.find( 'I' ) != kinds.npos, qvStoreValueIntAt( store, &number, 0 ) ) << c.text;
            EXPECT_EQ( kinds.find( 'R' ) != kinds.npos, qvStoreValueRealAt( store, &real, 0 ) ) << c.text;
            EXPECT_EQ( kinds.find( 'I' ) != kinds.npos, qvStoreHasValueIntAt( store, 0 ) );
            EXPECT_EQ( hasValue, qvStoreHasValueAt( store, 0 ) );
            EXPECT_EQ( hasValue ? c.truth : 0, truth ) << c.text;
            EXPECT_EQ( hasValue ? c.number : 0, number ) << c.text;
            EXPECT_DOUBLE_EQ( hasValue ? c.real : 0.0, real ) << c.text;
        }
    }
}

/* The tree ------------------------------------------------------------------------------------------------------- */

namespace
{
// A store said the plain way, copied whole.
struct Model
{
    std::map< std::string, std::string > values;
    std::map< std::string, Model >       stores;

    Lines addresses() const
    {
        std::set< std::string > all;

        for( auto &entry : values )
            all.insert( entry.first );

        for( auto &entry : stores )
            all.insert( entry.first );

        return { all.begin(), all.end() };
    }

    void merge( const Model &other )
    {
        values.insert( other.values.begin(), other.values.end() );

        for( auto &[address, sub] : other.stores )
            stores[address].merge( sub );
    }

    Lines lines( const std::string &prefix = "" ) const
    {
        Lines result;

        for( auto &[address, value] : values )
            result.push_back( prefix + address + "=" + value );

        for( auto &[address, sub] : stores )
        {
            Lines below = sub.lines( prefix + address + "." );
            result.insert( result.end(), below.begin(), below.end() );

            if( below.empty() )
                result.push_back( prefix + address + "." );
        }

        return result;
    }

    // By the addresses first, then the values, then the sub-stores.
    int compare( const Model &other ) const
    {
        if( auto mine = addresses(), others = other.addresses(); mine != others )
            return mine < others ? -1 : 1;

        if( values != other.values )
            return values < other.values ? -1 : 1;

        auto b = other.stores.begin();

        for( auto a = stores.begin(); a != stores.end() && b != other.stores.end(); ++a, ++b )
            if( int order = a->first != b->first ? ( a->first < b->first ? -1 : 1 ) : a->second.compare( b->second ) )
                return order;

        return stores.size() < other.stores.size() ? -1 : stores.size() > other.stores.size();
    }
};

// An object that somebody else keeps alive, as long as he does.
template< class T >
T *borrowed( T *owned )
{
    return Ref< T >( owned );
}
} // namespace

// What is set, deleted and merged is often held by nobody but the store that changes.
TEST( Store, RandomWalksAgreeWithNestedMaps )
{
    const std::string names[] = { "10", "2", "A", "_x", "a", "a-b", "long-address" };
    std::mt19937      random( 61 );
    const auto        pick = [&]( size_t count ) { return random() % count; };

    for( int walk = 0; walk < 20; walk++ )
    {
        Ref< QV_STORE > stores[4];
        Model           models[4];

        for( Ref< QV_STORE > &store : stores )
            store.reset( qvStoreCreate() );

        for( int step = 0; step < 200; step++ )
        {
            size_t           to = pick( 4 ), from = pick( 4 );
            Ref< QV_STORE > &store = stores[to];
            Model           &model = models[to], other = models[from];
            std::string      at = names[pick( std::size( names ) )], there = names[pick( std::size( names ) )];
            Ref< QV_STRING > made    = text( at );
            QV_STRING       *address = made;
            size_t           kind    = pick( 12 );

            // Half of the addresses are Strings that stand in the store.
            if( Ref< QV_VECTOR > own( pick( 2 ) ? qvStoreValueAddressesVector( store ) : qvStoreStoreAddressesVector( store ) );
                pick( 2 ) && qvVectorLength( own ) )
            {
                address = qvStringFrom( qvVectorBacking( own )[pick( static_cast< size_t >( qvVectorLength( own ) ) )] );
                at      = utf8( address );
            }

            if( kind >= 6 && kind <= 9 && model.lines().size() + other.lines().size() > 150 )
                continue;

            switch( kind )
            {
            case 0: case 1:
                model.values[at] = std::to_string( pick( 3 ) );
                qvStoreSetValue( store.at(), address, text( model.values[at] ) );
                break;

            case 2:
                if( QV_STRING *value = borrowed( qvStoreValue( store, text( there ) ) ) )
                {
                    model.values[at] = utf8( value );
                    qvStoreSetValue( store.at(), address, value );
                }
                break;

            case 3:
                model.values.erase( at );
                qvStoreDelValue( store.at(), address );
                break;

            case 4:
                model.stores.erase( at );
                qvStoreDelStore( store.at(), address );
                break;

            case 5:
                model.merge( other );
                qvStoreMerge( store.at(), stores[from] );
                break;

            case 6:
                model.stores[at] = other;
                qvStoreSetStore( store.at(), address, stores[from] );
                break;

            case 7: case 8:
                if( QV_STORE *sub = borrowed( qvStoreStore( store, text( there ) ) ) )
                {
                    other = model.stores[there];

                    if( kind == 7 )
                    {
                        model.stores[at] = other;
                        qvStoreSetStore( store.at(), address, sub );
                    }
                    else
                    {
                        model.merge( other );
                        qvStoreMerge( store.at(), sub );
                    }
                }
                break;

            case 9:
                model = other;
                store = pick( 2 ) ? Ref< QV_STORE >::share( stores[from] )
                                  : Ref< QV_STORE >( qvStoreCreateFrom( stores[from] ) );
                break;

            case 10:
                if( other.stores.count( there ) )
                {
                    store.reset( qvStoreStore( stores[from], text( there ) ) );
                    model = other.stores[there];
                }
                break;

            case 11:
                store = pick( 2 )   ? fromBinary( binaryOf( store ) )
                        : pick( 2 ) ? fromText( textFormOf( store ) )
                                    : storeOf( linesOf( store ) );
                break;
            }

            for( int i = 0; i < 4; i++ )
                ASSERT_EQ( models[i].lines(), linesOf( stores[i] ) ) << walk << " " << step;

            ASSERT_EQ( model.addresses(), linesOf( Ref< QV_VECTOR >( qvStoreAddressesVector( store ) ) ) );
            ASSERT_EQ( model.compare( models[from] ), qvStoreCompare( store, stores[from] ) );
        }
    }
}

TEST( Store, TreesOfAnyDepthAreWrittenMergedAndCompared )
{
    using namespace std::string_literals;

#if defined( __SANITIZE_ADDRESS__ ) || defined( __SANITIZE_THREAD__ )
    const int LEVELS = 50000;
#else
    const int LEVELS = 300000;
#endif

    auto chain = []( Ref< QV_STORE > innermost )
    {
        for( int level = 0; level < LEVELS; level++ )
        {
            Ref< QV_STORE > outer( qvStoreCreate() );
            qvStoreSetStoreCstr( outer.at(), "a", -1, innermost );
            innermost = std::move( outer );
        }

        return innermost;
    };

    Ref< QV_STORE >   a = chain( storeOf( { "v=1" } ) ), b = chain( storeOf( { "w=2" } ) );
    const std::string path = repeat( "a.", LEVELS );

    EXPECT_TRUE( ( Lines { path + "v=1" } ) == linesOf( a ) );
    EXPECT_TRUE( path + "w=2\n" == textFormOf( b ) );
    EXPECT_TRUE( repeat( "\x01\x01\x01\x01"s "a\x00\x01"s, LEVELS ) + binaryOf( storeOf( { "v=1" } ) ) == binaryOf( a ) );
    EXPECT_EQ( Lines { repeat( "a.", QV_STORE_MAX_DEPTH ) }, linesOf( fromText( textFormOf( a ) ) ) );
    EXPECT_FALSE( fromBinary( binaryOf( a ) ) );

    EXPECT_TRUE( qvStoreEquals( a, chain( storeOf( { "v=1" } ) ) ) );
    EXPECT_EQ( -1, qvStoreCompare( a, b ) );

    // The one that was is copied level by level.
    Ref< QV_STORE > merged = Ref< QV_STORE >::share( a );
    qvStoreMerge( merged.at(), b );
    EXPECT_TRUE( ( Lines { path + "v=1", path + "w=2" } ) == linesOf( merged ) );
    EXPECT_TRUE( ( Lines { path + "v=1" } ) == linesOf( a ) );
}

// What is lent to several threads at once is counted right, whoever else holds it. Only a run without lists of objects has
// counts that are changed without a locked instruction.
TEST( Store, ThreadsStoreTheSameObjects )
{
    withoutLibrary(
        []
        {
            qvRuntimeStartup( QV_RUNTIME_FLAG_NO_EXCEPTION_HANDLERS, nullptr, nullptr, nullptr, nullptr );
            {
                Ref< QV_STRING > address = text( "address" ), value = text( "value" );
                Ref< QV_STORE >  sub = storeOf( { "a.b=1", "c=2" } ), base = storeOf( { "address.a.x=3" } );

                std::atomic< int > arrived = 0;

                auto work = [&]
                {
                    for( int round = 1; round <= 5000; round++ )
                    {
                        Ref< QV_STORE > own( qvStoreCreate() ), copy = Ref< QV_STORE >::share( base );

                        // Both begin at once, when nobody else holds what is lent.
                        for( arrived++; arrived < 2 * round; )
                            std::this_thread::yield();

                        qvStoreSetValue( own.at(), address, value );
                        qvStoreSetStore( own.at(), address, sub );
                        qvStoreMerge( copy.at(), own );
                        qvStoreDelValue( own.at(), address );
                    }
                };

                std::thread one( work ), two( work );
                one.join();
                two.join();

                for( int32_t count : { references( address.get() ), references( value.get() ), references( sub.get() ),
                                       references( base.get() ) } )
                    EXPECT_EQ( 1, count );
            }
            qvRuntimeShutdown();
        } );
}

#if !defined( __SANITIZE_ADDRESS__ ) && !defined( __SANITIZE_THREAD__ )
TEST( Store, DocumentsTakeMemoryInProportion )
{
    for( int lines : { 3000, 30000 } )
    {
        std::string ports, records, chains;

        for( int i = 0; i < lines; i++ )
        {
            const char *const fields[] = { ".name=n\n", ".port=1\n", ".host=localhost\n" };

            ports += "port-" + std::to_string( i ) + "=8080\n";
            records += "rec-" + std::to_string( i / 3 ) + fields[i % 3];
            chains += i % 100 ? "" : "x" + std::to_string( i ) + repeat( ".a", 99 ) + ".\n";
        }

        // How many bytes are allocated for one of the text.
        for( auto &[document, limit] : { std::pair { ports, 40u }, { records, 40u }, { chains, 300u } } )
        {
            Ref< QV_BUFFER > bytes  = bufferOf( document );
            auto             before = mallinfo2();
            Ref< QV_STORE >  store( qvStoreTryDecodeFromTextBuffer( bytes ) );
            auto             after = mallinfo2();

            EXPECT_GE( limit, ( after.uordblks + after.hblkhd - before.uordblks - before.hblkhd ) / document.size() )
                << document.substr( 0, 20 );
        }
    }
}
#endif

TEST( Store, WritingDoesNotCopyWhatNobodyElseHolds )
{
    Ref< QV_STORE > store = storeOf( { "a.b.c=1", "v=1" } ), other = storeOf( { "a.b.d=2" } );
    QV_STORE       *top   = store;

    QV_STORE *sub = qvStoreStoreCstr( store, "a", -1 );
    qvStoreRelease( sub );
    qvStoreMerge( store.at(), other );
    EXPECT_EQ( sub, Ref< QV_STORE >( qvStoreStoreCstr( store, "a", -1 ) ).get() );
    EXPECT_EQ( top, store.get() );

    // A copy shares everything; then a write leaves the level that it doesn't touch.
    Ref< QV_STORE > copy( qvStoreCreateFrom( store ) );
    qvStoreSetValueCstr( copy.at(), "v", -1, text( "2" ) );
    EXPECT_EQ( sub, Ref< QV_STORE >( qvStoreStoreCstr( copy, "a", -1 ) ).get() );
    EXPECT_EQ( ( Lines { "v=1", "a.b.c=1", "a.b.d=2" } ), linesOf( store ) );

    // Deleting what isn't there copies nothing.
    Ref< QV_STORE > shared = Ref< QV_STORE >::share( store );
    qvStoreDelStoreCstr( shared.at(), "v", -1 );
    qvStoreDelValueCstr( shared.at(), "a", -1 );
    EXPECT_EQ( store.get(), shared.get() );
}

/* Text form ------------------------------------------------------------------------------------------------------ */

TEST( Store, LinesAreReadLeniently )
{
    struct Case
    {
        Lines lines, canonical;
    };

    const Case cases[] = {
        { { "" }, {} },
        { { "a.", "b.c." }, { "a.", "b.c." } },
        { { "x.y=1", "z=2", "x.w=3" }, { "z=2", "x.w=3", "x.y=1" } },
        { { "a=1", "a=2", "a.b=3", "a." }, { "a=2", "a.b=3" } },
        { { " key = value ", "\xC2\xA0 n \t=", "a . b = .c=d" }, { "key= value ", "n=", "a.b= .c=d" } },
        { { "#note=1", "a b=1", "text", "=1", ".a=1", " =1", "\xC3\xA4=1", "b" }, {} },
        { { "a.#note=1", "b.text", "c. ", "d.=1", "e..=" }, { "a.", "b.", "c.", "d.", "e." } },
        { { "a=%zz", "b=%", "c=%%%", "d=%00004", "e=%00004G" },
          { "a=%%zz", "b=%%", "c=%%%%", "d=%%00004", "e=%%00004G" } },
        { { "a=%000041%00004aZ%%000041", "b=%00000A%1f600", "c=%01F600" },
          { "a=AJZ%%000041", "b=%00000a%%1f600", "c=\xF0\x9F\x98\x80" } },
        { { "p.a=1", "p.a.x=2", "p.b=3", "p.a.y=4", "q.a=5", "p.", "p.a." },
          { "p.a=1", "p.b=3", "p.a.x=2", "p.a.y=4", "q.a=5" } },
    };

    for( const Case &c : cases )
        EXPECT_EQ( c.canonical, linesOf( storeOf( c.lines ) ) );
}

// An escape is what the decoder of numbers makes of all six characters.
TEST( Store, EscapesAreNumbersInAnyForm )
{
    const std::u32string letters = U"000000000000123456789aAfF  +-xg,\t\u2003\uFF11\uFF26";
    std::mt19937         random( 6 );
    int                  escapes = 0;

    for( int round = 0; round < 20000; round++ )
    {
        std::u32string code;
        QV_INT         number, consumed;

        while( code.size() < 6 )
            code += letters[random() % letters.size()];

        bool is = qvFormatTryDecodeIntChars( code.data(), 6, 16, &number, &consumed ) && consumed == 6 &&
                  static_cast< uint32_t >( number ) <= 0x10FFFF;
        escapes += is;

        std::u32string expected = is ? std::u32string { static_cast< char32_t >( number ), U'1' } : U"%" + code + U"1";
        std::string    line     = "a=%" + utf8( text( code ) ) + "1";

        ASSERT_EQ( expected, chars( Ref< QV_STRING >( qvStoreValueAt( storeOf( { line } ), 0 ) ) ) ) << line;
        ASSERT_EQ( expected, chars( Ref< QV_STRING >( qvStoreValueAt( fromText( line ), 0 ) ) ) ) << line;
    }

    EXPECT_LT( 2000, escapes );
    EXPECT_GT( 18000, escapes );
}

TEST( Store, EveryCharacterSurvivesTheTextForm )
{
    std::u32string all;

    for( char32_t ch = 0; ch < 0x400; ch++ )
        all += ch;

    all += U"\u2027\u202A\uD7FF\uE000\uFEFF\uFFFD\uFFFF\U00010000\U0010FFFF=.%%";
    all += std::u32string { 0xD800, 0xDFFF };

    Ref< QV_STORE > store( qvStoreCreate() );
    qvStoreSetValueCstr( store.at(), "all", -1, text( all ) );
    qvStoreSetValueCstr( store.at(), "short", -1, text( "\n%\x7F" ) );

    EXPECT_EQ( "short=%00000a%%%00007f", linesOf( store )[1] );

    Ref< QV_VECTOR > lines( qvStoreEncodeToStringVector( store ) );
    EXPECT_TRUE( qvStoreEquals( store, Ref< QV_STORE >( qvStoreDecodeFromStringVector( lines ) ) ) );

    Ref< QV_BUFFER > bytes( qvStoreEncodeToTextBuffer( store ) );
    EXPECT_TRUE( qvStoreEquals( store, Ref< QV_STORE >( qvStoreTryDecodeFromTextBuffer( bytes ) ) ) );

    EXPECT_EQ( "", textFormOf( storeOf( {} ) ) );
    EXPECT_EQ( "a=\xC3\xA4\nb.\n", textFormOf( storeOf( { "b.", "a=\xC3\xA4" } ) ) );
}

// Documents are read from the bytes; the streams below them have to give the same.
TEST( Store, TextBuffersAreReadAsTheStreamsReadThem )
{
    const std::string_view parts[] = {
        "a", "b.", "long-address", "=", ".", "%", "%00000a", "%002028", " ", "#", "\n", "\n", "\r\n", "\r", "\v", "\f",
        "a=1\n", "a.b=2\n", "a.b.c=3\n", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9", "\xEF\xBB\xBF", "\xC3\xA4",
        "\xF0\x9F\x98\x80", "\xED\xA0\x80", "\xC0\x8A", "\xF4\x90\x80\x80", "\xE2", "\x80", "\xFF", "\xC3" };

    std::mt19937 random( 8 );

    for( int round = 0; round < 3000; round++ )
    {
        std::string bytes = random() % 4 ? "" : "\xEF\xBB\xBF";
        int         count = static_cast< int >( random() % 30 );
        size_t      limit = random() % 2 ? std::size( parts ) : 26; // half of the documents are well formed

        while( count-- > 0 )
            bytes += parts[random() % limit];

        Ref< QV_BUFFER >             buffer = bufferOf( bytes );
        Ref< QV_BUFFER_BYTE_SOURCE > bufferSource( qvBufferByteSourceCreate( buffer ) );
        Ref< QV_BYTE_SOURCE >        byteSource( qvBufferByteSourceByteSource( bufferSource ) );
        Ref< QV_CHAR_SOURCE >        charSource( qvCharsetCreateCharSource( byteSource, QV_CHARSET_UTF_8, 0 ) );
        Ref< QV_NLF_LINE_SOURCE >    nlfSource( qvNlfLineSourceCreate( charSource, 255 ) );
        Ref< QV_LINE_SOURCE >        lineSource( qvNlfLineSourceLineSource( nlfSource ) );
        Ref< QV_VECTOR >             lines( qvLineSourceReadLines( lineSource, -1 ) );
        Ref< QV_STORE >              expected( qvStoreDecodeFromStringVector( lines ) );
        Ref< QV_STORE >              store( qvStoreTryDecodeFromTextBuffer( buffer ) );

        ASSERT_TRUE( store );
        ASSERT_EQ( linesOf( expected ), linesOf( store ) ) << ::testing::PrintToString( bytes );
    }
}

TEST( Store, LinesTellWhatTheReaderMakesOfThem )
{
    struct Case
    {
        std::string line;
        QV_INT      kind;
        std::string path, value; // "-" for null
    };

    const Case cases[] = {
        { " a . b = %00000a ", QV___STORE_LINE_VALUE, "a.b", " \n " },
        { "a=", QV___STORE_LINE_VALUE, "a", "" },
        { "a. b .", QV___STORE_LINE_STORE, "a.b.", "-" },
        { "", QV___STORE_LINE_EMPTY, "-", "-" },
        { "a.b.text", QV___STORE_LINE_NO_SEPARATOR, "a.b.", "-" },
        { " ", QV___STORE_LINE_NO_SEPARATOR, "-", "-" },
        { "# a = 1", QV___STORE_LINE_BAD_ADDRESS, "-", "-" },
        { "a.#=1", QV___STORE_LINE_BAD_ADDRESS, "a.", "-" },
        { repeat( "x.", 99 ) + "y=1", QV___STORE_LINE_VALUE, repeat( "x.", 99 ) + "y", "1" },
        { repeat( "x.", 100 ), QV___STORE_LINE_STORE, repeat( "x.", 100 ), "-" },
        { repeat( "x.", 100 ) + "y=1", QV___STORE_LINE_TOO_DEEP, repeat( "x.", 100 ), "-" },
        { repeat( "x.", 5000 ), QV___STORE_LINE_TOO_DEEP, repeat( "x.", 100 ), "-" },
    };

    for( const Case &c : cases )
    {
        Ref< QV_STRING > path = text( "old" ), value = text( "old" );

        EXPECT_EQ( c.kind, qv___StoreParseLine( text( c.line ), path.at(), value.at() ) ) << c.line;
        EXPECT_EQ( c.path, path ? utf8( path ) : "-" );
        EXPECT_EQ( c.value, value ? utf8( value ) : "-" );

        // The canonical line makes the same store.
        Ref< QV_STORE > read = storeOf( { c.line } );
        EXPECT_EQ( path ? Lines { take( qv___StoreEncodeLine( path, value ) ) } : Lines {}, linesOf( read ) );
    }
}

/* Binary form ---------------------------------------------------------------------------------------------------- */

TEST( Store, BinaryFormIsTheDocumentedOne )
{
    using namespace std::string_literals;

    const std::pair< Lines, std::string > cases[] = {
        { {}, "\x00"s },
        { { "a=1" }, "\x01\x01\x01\x01"s "a\x01\x01\x01"s "1\x00"s },
        { { "a=", "a.b." }, "\x01\x01\x01\x01"s "a\x01\x00\x01\x01\x01\x01\x01"s "b\x00\x01\x00"s },
    };

    for( auto &[lines, bytes] : cases )
    {
        EXPECT_EQ( bytes, binaryOf( storeOf( lines ) ) );
        EXPECT_EQ( lines, linesOf( fromBinary( bytes ) ) );
        EXPECT_FALSE( fromBinary( bytes + '\0' ) );

        for( size_t length = 0; length < bytes.size(); length++ )
            EXPECT_FALSE( fromBinary( bytes.substr( 0, length ) ) ) << length;
    }

    // Entries without anything, unsorted and repeated ones.
    const std::string bytes = "\x01\x03\x01\x01"s "b\x00\x00\x01\x01"s "a\x01\x01\x01"s "1\x00\x01\x01"s
                              "a\x01\x01\x01"s "2\x00"s;
    EXPECT_EQ( ( Lines { "a=2" } ), linesOf( fromBinary( bytes ) ) );

    // A negative count and one beyond all reason; addresses that are none; a bad truth value; too many levels.
    auto nested = []( int levels ) { return repeat( "\x01\x01\x01\x01"s "a\x00\x01"s, levels ) + "\x00"s; };
    EXPECT_EQ( Lines { repeat( "a.", 99 ) }, linesOf( fromBinary( nested( 99 ) ) ) );

    for( const std::string &bad :
         { "\x81\x01"s, "\x08\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s, "\x01\x01\x01\x01.\x00\x00"s,
           "\x01\x01\x00\x00\x00"s, "\x01\x01\x01\x01"s "a\x02\x00"s, nested( 100 ) } )
    {
        Ref< QV_DECODER > decoder( qvDecoderCreate( bufferOf( bad ) ) );
        EXPECT_EQ( nullptr, qvStoreTryDecodeFromDecoder( decoder ) );
        EXPECT_EQ( QV_TRUE, qvDecoderError( decoder ) );
    }
}

TEST( Store, BrokenContractsAreReported )
{
    Ref< QV_STORE > store = storeOf( { "a=1" } );
    QV_STORE       *none  = nullptr;

    EXPECT_BROKEN( qvStoreHasValueCstr( store, "a.b", -1 ), "qvStoreAddressOk( address )" );
    EXPECT_BROKEN( qvStoreDelStoreCstr( store.at(), "", -1 ), "qvStoreAddressOk( address )" );
    EXPECT_BROKEN( qvStoreSetValueCstr( store.at(), "a", -1, nullptr ), "value" );
    EXPECT_BROKEN( qvStoreSetStoreCstr( store.at(), "a", -1, nullptr ), "other" );
    EXPECT_BROKEN( qvStoreSetValueIntAt( &none, 0, 1 ), "*store" );
    EXPECT_BROKEN( qvStoreValueAt( none, 0 ), "store" );
    EXPECT_BROKEN( qvStoreHasValue( store, nullptr ), "address" );
    EXPECT_BROKEN( qvStoreValueAt( store, 1 ), "idx < dict->length" );

    Ref< QV_VECTOR > vec( qvVectorCreate() );
    qvVectorAppendObj( vec.at(), qv::obj( store.get() ) );
    EXPECT_BROKEN( qvStoreDecodeFromStringVector( vec ), "qvVectorContainsOnly( vec, qvStringSort() )" );
}

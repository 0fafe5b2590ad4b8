#include "qv_test_support.h"

#include "qv/base/qv_dict_private.h"
#include "qv/qv.h"

#include <map>
#include <sstream>

using qv::Ref;
using namespace qv::test;

// What the containers declare to the object frame after each of their changes.

namespace
{
const char FOREIGN[500] = {};

Ref< QV_OBJ > boxed( QV_INT value )
{
    return Ref( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}

void enter( QV_DICT **dict, QV_INT key, QV_INT count )
{
    for( ; count-- > 0; key++ )
        qvDictSetIntKey( dict, key, boxed( key & 1 ) );
}

Ref< QV_DICT > made( QV_INT key, QV_INT count )
{
    Ref< QV_DICT > dict( qvDictCreate() );
    enter( dict.at(), key, count );
    return dict;
}

// A row is a list of changes: a letter, two numbers, and how many units are declared afterwards. A change after `&` is
// made while somebody else holds the container.
template< class T >
void expectDeclared(
    T *( *create )(), QV_INT unit, std::map< char, void ( * )( T **all, QV_INT, QV_INT ) > letters,
    const std::vector< const char * > &rows )
{
    for( const char *row : rows )
    {
        Ref< T >           all( create() );
        std::istringstream changes( row );
        QV_INT             a, b, declared;

        for( char what, mark; changes >> what; )
        {
            Ref< T > other( what == '&' ? qv::retain( all.get() ) : nullptr );
            what == '&' ? changes >> what : changes;
            changes >> a >> mark >> b >> mark >> declared;
            letters.at( what )( all.at(), a, b );
            ASSERT_EQ( declared * unit, allocated( all.get() ) ) << row << " at " << what << a << ',' << b;
        }
    }
}
} // namespace

TEST( DeclaredSize, FollowsTheRulesOfEachFamily )
{
    // clang-format off
    expectDeclared< QV_STRING >( qvStringCreate, 4, {
        { '-', qvStringDelInner }, { 'k', qvStringDelOuter },
        { '+', []( auto all, auto at, auto n )
          { qvStringInsertChars( all, at, std::u32string( size_t( n ), U'x' ).data(), n ); } },
        { 's', []( auto all, auto at, auto ) { qvStringInsert( all, at, *all ); } },
        { 'c', []( auto all, auto, auto ) { qv::assign( all, qvStringCreateFrom( *all ) ); } },
        { 'u', []( auto all, auto, auto n )
          { qv::assign( all, text( std::u32string( size_t( n ), U'x' ) ).give() ); } }, }, {
        "+0,10=74 +0,64=74 &+74,1=139 -0,32=139 &-0,1=107 +42,32=107 &k0,74=107 &k1,60=138 c0,0=124 s5,0=184",
        "+0,200=264 -0,32=264 -0,1=231 -135,32=231 -134,1=198 -50,32=198 -50,1=165 -0,101=0 +0,1=65", "c0,0=0 +0,10=74",
        "+0,101=165 k32,37=165 k1,36=100 k0,36=100 k3,0=0", "+0,10=74 +5,40=74 +50,1=107 -0,40=107 -0,1=74",
        "+0,10=74 +10,32=74 +42,1=107 +43,65=172", "+0,10=74 +0,32=74 +42,32=74 +74,1=107", "u0,10=10 +10,5=47",
        "+0,10=74 +0,40=74 +50,24=74 +74,1=107", "+0,10=74 +5,32=74 +42,1=107 +43,1=107", "+0,10=74 +0,8=74 +18,33=107",
        "+0,101=165 k0,69=165 k0,68=132", "u0,100=100 -0,64=100 -0,1=99", "+0,10=74 +5,64=74 +37,1=139",
        "+0,10=74 +0,64=74 +0,1=139", "+0,1=65 +1,32=65 +33,1=98 +34,32=98 +66,1=131",
        "u0,10=10 +0,5=79", "u0,10=10 +5,5=79",
    } );
    // The numbers are bits, but bytes for `a`, `u` and `f`.
    expectDeclared< QV_BUFFER >( qvBufferCreate, 1, {
        { '+', qvBufferBitInsertZero }, { '-', qvBufferBitDelInner }, { 'k', qvBufferBitDelOuter },
        { 'w', qvBufferBitWriteOne },
        { 'a', []( auto all, auto, auto count ) { qvBufferAppendBytes( all, FOREIGN, count ); } },
        { 'c', []( auto all, auto, auto ) { qv::assign( all, qvBufferCreateFrom( *all ) ); } },
        { 'u', []( auto all, auto, auto n ) { qv::assign( all, qvBufferCreateFromBytesUse( qvMemAlloc( n ), n ) ); } },
        { 'f', []( auto all, auto, auto n )
          { qv::assign( all, qvBufferCreateFromBytesUseWithRef( FOREIGN, n, boxed( 1 ) ) ); } }, }, {
        "+0,80=250 +0,1920=250 &-0,8=490 &k8,1904=489 &-1896,8=478 &-8,8=477 &+1888,8=476 c0,0=477", "f0,10=0 -8,8=250",
        "+0,2000=490 -0,640=490 -0,8=409 -72,1280=409 -71,1=249 -0,71=0 +0,8=241", "+0,80=250 +40,1280=250 +1360,8=411",
        "+0,83=251 +40,1288=251 +1371,5=251 +1376,1=412 -0,648=412 -0,8=331", "+0,80=250 +40,640=250 +720,1280=490",
        "+0,3200=640 k640,1280=640 k8,1272=399 k3,100=253 k0,100=253 k1,0=0", "+0,3200=640 k0,1920=640 k0,1919=480",
        "+0,80=250 +80,1280=250 +1360,1=411 +1361,1287=411 +2648,8=572", "+0,80=250 +0,3=251 +83,1285=251 +1368,1=412",
        "f0,400=0 -0,1600=0 -1599,1=0 k8,1500=0 +1500,8=428", "+0,8=241 a0,160=241 a0,1=402 a0,160=402 a0,1=563",
        "+0,80=250 +0,640=250 +720,1280=250 +2000,8=411", "+0,80=250 +0,648=250 +728,1272=250 +2000,8=411",
        "+0,3200=640 -80,1280=640 -80,8=479", "+0,83=251 +40,1920=251 +40,8=492", "+0,80=250 +0,8=250 +88,1288=411",
        "u0,400=400 -0,1280=400 -0,8=479", "+0,80=250 +0,1920=250 +0,8=491", "+0,80=250 -0,9=249 -3,16=241",
        "+0,80=250 +3,8=251 +8,4=252", "u0,10=10 +80,8=171", "f0,10=0 &-0,8=250", "u0,10=10 +0,8=251",
        "f0,10=0 w0,1=250", "f0,10=0 -0,3=250", "+0,80=250 +40,1920=250 +40,8=491",
    } );
    expectDeclared< QV_VECTOR >( qvVectorCreate, sizeof( void * ), {
        { '-', qvVectorDelInner }, { 'k', qvVectorDelOuter },
        { '+', []( auto all, auto at, auto n )
          { qvVectorInsertObjs( all, at, std::vector( size_t( n ), boxed( 1 ).get() ).data(), n ); } },
        { '>', []( auto all, auto, auto ) { qv::release( qvVectorPop( all ) ); } },
        { '<', []( auto all, auto, auto ) { qv::release( qvVectorUnshift( all ) ); } },
        { 'c', []( auto all, auto, auto ) { qv::assign( all, qvVectorCreateFrom( *all ) ); } }, }, {
        "+0,10=42 +0,1=75 +0,32=75 +0,1=108 +5,1=109 +45,33=174 +78,64=174 +142,1=207", "+0,100=132 -0,64=132 <0,0=99",
        "+0,10=42 +0,1=75 &+11,1=43 &-0,1=44 &>0,0=43 &<0,0=42 &k0,8=41 c0,0=40", "+0,1=33 >0,0=33 +0,17=33 +17,1=66",
        "+0,200=232 -0,64=232 -0,1=199 -50,32=199 -50,1=166 -0,102=0 +0,1=33", "+0,10=42 +10,32=42 +42,5=79 +47,32=79",
        "+0,66=98 -1,32=98 -0,33=98 >0,0=98 +0,49=98 +49,1=131", "+0,10=42 +10,40=114 +50,64=114 +114,1=147",
        "+0,101=133 +0,1=166 k32,38=166 k1,37=101", "+0,1=33 <0,0=33 +0,17=33 +17,1=66", "+0,10=42 +0,33=107",
        "+0,101=133 +0,1=166 k33,37=133", "+0,100=132 -68,32=132 >0,0=131",
    } );
    // The first key and the last one; for `+` and `d` the first one and how many there are, two apart.
    expectDeclared< QV_RANGE_MAP >( qvRangeMapCreate, 16 + sizeof( void * ), {
        { '-', qvRangeMapDelRangeKey }, { 'm', []( auto all, auto, auto ) { qvRangeMapCollapse( all ); } },
        { '+', []( auto all, auto key, auto n )
          { while( n-- > 0 ) qvRangeMapSetIntKey( all, key + 2 * n, boxed( 1 ) ); } },
        { 'd', []( auto all, auto key, auto n ) { while( n-- > 0 ) qvRangeMapDelIntKey( all, key + 2 * n ); } },
        { 's', []( auto all, auto key, auto last ) { qvRangeMapSetRangeKey( all, key, last, boxed( 1 ) ); } },
        { 'j', []( auto all, auto, auto ) { qvRangeMapSetAutoCollapse( all, QV_TRUE ); } }, }, {
        "+0,33=33 +66,1=66 +-2,1=66 -0,60=66 -62,62=66 -64,64=2 +70,1=35", "+0,34=66 -0,0=66 &-300,400=66 &-2,2=33",
        "+0,100=132 +1,100=231 m0,0=167 m0,0=103 m0,0=39 m0,0=39", "+0,100=132 j0,0=132 -0,196=68 +300,1=4",
        "+0,31=33 s100,200=33 s150,160=66", "+0,32=33 s100,200=33 -150,160=66", "+0,2080=2112 d0,2080=64 +0,64=64",
        "+0,100=132 s-1,197=68 s-1,198=4", "+0,100=132 -0,196=68 &+300,1=33", "+0,100=132 j0,0=132 s-1,197=4",
        "+0,100=132 -0,196=68 m0,0=4", "+0,33=33 -0,64=33 +0,33=33",
    } );
    // The first key and how many there are. Their values are 0 and 1 in turn.
    expectDeclared< QV_DICT >( qvDictCreate, 2 * sizeof( void * ), {
        { '+', enter }, { 'e', []( auto all, auto, auto ) { qv___DictClear( all ); } },
        { '-', []( auto all, auto key, auto count ) { while( count-- > 0 ) qvDictDelIntKey( all, key++ ); } },
        { 'i', []( auto all, auto key, auto count ) { qvDictInclude( all, made( key, count ), QV_TRUE ); } },
        { 'x', []( auto all, auto key, auto count ) { qvDictExclude( all, made( key, count ) ); } },
        { 'n', []( auto all, auto key, auto count ) { qvDictIntersect( all, made( key, count ), QV_FALSE ); } },
        { 'v', []( auto all, auto value, auto ) { qvDictDelValue( all, boxed( value ), QV_TRUE ); } }, }, {
        "+0,97=128 e0,0=128 +0,10=128 x500,3=128 &v5,0=32 e0,0=32", "+0,32=32 +32,1=64 +0,33=64 +33,31=64 +-1,1=96",
        "+0,97=128 -0,33=128 &x500,3=128 &i0,0=128 &i0,1=96", "+0,97=128 e0,0=128 +0,10=128 v5,0=10 &e0,0=0",
        "+0,97=128 -0,33=128 -33,1=63 +0,1=95", "+0,97=128 e0,0=128 +0,10=128 x0,1=9", "+0,97=128 -0,33=128 &-33,1=64",
        "+0,200=224 x0,100=159 x0,136=94", "+0,97=128 -0,34=63 i0,40=127", "+0,97=128 n0,33=64 n500,3=0",
        "+0,200=224 v1,0=100 v0,0=0", "+0,1100=1120 x0,1000=145", "+0,200=224 -0,100=159", "+0,1=32 -0,1=0",
    } );
    // clang-format on
}

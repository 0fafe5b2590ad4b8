#include "qv_test_support.h"

#include "qv/base/qv_dict_private.h"
#include "qv/qv.h"

#include <set>

using namespace qv;
using namespace qv::test;

namespace
{
Ref< QV_OBJ > boxed( QV_INT value )
{
    return Ref( qvBoxedIntObj( qvBoxedIntCreate( value ) ) );
}
} // namespace

TEST( Dict, BoxedKeysAreOrderedBySortAndValue )
{
    Ref< QV_DICT > dict( qvDictCreate() );
    qvDictSetStringKey( dict.at(), text( "a" ), boxed( 1 ) );
    qvDictSetBoolKey( dict.at(), QV_TRUE, boxed( 2 ) );
    qvDictSetNullKey( dict.at(), boxed( 3 ) );
    qvDictSetBoolKey( dict.at(), QV_FALSE, boxed( 4 ) );
    qvDictSetIntKey( dict.at(), 9, boxed( 5 ) );
    EXPECT_EQ( "{false=4, true=2, 9=5, null=3, a=1}", textOf( dict.get() ) );
    EXPECT_EQ( "4", textOf( Ref( qvDictBoolKey( dict, QV_FALSE ) ).get() ) );
    EXPECT_EQ( "3", textOf( Ref( qvDictNullKey( dict ) ).get() ) );
}

TEST( Dict, DividesItsItemsSeldomWhereAnEndMovesToAndFro )
{
    for( QV_INT step : { 1, -1 } )
    {
        Ref< QV_DICT > dict( qvDictCreate() );

        for( QV_INT i = 0; i < 2000; i++ )
        {
            qvDictSetIntKey( dict.at(), i * step, boxed( i ) );
            QV_INT divided = 0;

            for( QV_INT k = 0; k < 40 && dict->hasIndex; k++ )
            {
                QV_INT runs = dict->index->runs->length, key = ( i + 1 + ( k + 1 ) / 2 % 2 ) * step;
                k % 4 < 2 ? qvDictSetIntKey( dict.at(), key, boxed( k ) ) : qvDictDelIntKey( dict.at(), key );
                divided += dict->index->runs->length > runs;
            }

            ASSERT_GE( 1, divided ) << i;
        }
    }
}

// A run of Strings that share few characters gets items of the one before it, which share more, and is joined with it in
// the end.
TEST( Dict, RunsWithOtherPrefixesEvenOut )
{
    std::vector< std::string > keys;
    Ref< QV_DICT >             dict( qvDictCreate() );

    // As keys that ascend are divided, the first run has 512 and the second one 480 of them.
    for( QV_INT i = 0; i < 2000; i++ )
    {
        const char *group = i < 512 ? "aaaabbbb" : i < 752 ? "aaaac" : i < 992 ? "aaaad" : "aaaaeeee";
        keys.push_back( group + std::to_string( 1000 + i ) );
        qvDictSetStringKey( dict.at(), text( keys.back() ), boxed( i ) );
    }

    auto lengthOf = [&]( QV_INT run ) { return dict->index->runs->items()[run].run->length; };
    ASSERT_EQ( 480, lengthOf( 1 ) );

    for( QV_INT i = 0; i < 745; i++ )
    {
        auto gone = keys.begin() + ( i < 470 ? 512 + ( i % 2 ? 0 : 479 - i ) : 2 );
        qvDictDelStringKey( dict.at(), text( *gone ) );
        keys.erase( gone );
        ASSERT_TRUE( i != 448 || lengthOf( 1 ) - lengthOf( 0 ) == 1 );
    }

    EXPECT_EQ( 4, dict->index->runs->length );

    // Runs of another Dict, whose keys share other characters.
    Ref< QV_DICT > other( qvDictCreate() );

    for( QV_INT i = 0; i < 700; i++ )
        qvDictSetStringKey( other.at(), text( keys.emplace_back( "aaaaf" + std::to_string( 1000 + i ) ) ), boxed( i ) );

    qvDictInclude( dict.at(), other, QV_FALSE );

    for( const std::string &key : keys )
        EXPECT_TRUE( qvDictHasStringKey( dict, text( key ) ) ) << key;
}

TEST( Dict, BackingIsAllEntriesInRows )
{
    for( QV_INT length : { 0, 1, 129, 1024, 1025, 5000 } )
    {
        Ref< QV_DICT > dict( qvDictCreate() );

        for( QV_INT i = 0; i < length; i++ )
            qvDictSetIntKey( dict.at(), i * 7 % 5003, boxed( i ) );

        for( QV_INT from : { QV_INT( 0 ), length / 3, length } )
        {
            QV_INT count = 9, i = from, rows = 0;

            for( ; i < qvDictLength( dict ); i += count, rows++ )
            {
                const QV_DICT_ENTRY *entries = qvDictBacking( dict, i, &count );
                ASSERT_LE( 1, count );

                for( QV_INT k = 0; k < count; k++ )
                {
                    EXPECT_EQ( Ref< QV_OBJ >( qvDictKeyAt( dict, i + k ) ).get(), entries[k].key );
                    EXPECT_EQ( Ref< QV_OBJ >( qvDictValueAt( dict, i + k ) ).get(), entries[k].value );
                }
            }

            EXPECT_EQ( length, i );
            EXPECT_GE( length < 130 ? 1 : 1 + length / 100, rows );
            EXPECT_EQ( nullptr, qvDictBacking( dict, length, &count ) );
            EXPECT_EQ( 0, count );
        }
    }
}

// Values are taken over and lent, by every kind of key, and the one reference is the Dict's.
TEST( Dict, TakesOverAndLendsValues )
{
    Ref< QV_DICT > dict( qvDictCreate() );
    Ref< QV_OBJ >  object = boxed( 7 );
    QV_SORT       *sort   = qvDictSort();
    const char    *umlaut = "\xC3\xBC";

    for( QV_INT first : { 10, 0 } )
    {
        auto value = [&]( QV_INT i ) { return boxed( first + i ).give(); };

        qvDictSetNullKeyUse( dict.at(), value( 0 ) );
        qvDictSetBoolKeyUse( dict.at(), QV_TRUE, value( 1 ) );
        qvDictSetIntKeyUse( dict.at(), 7, value( 2 ) );
        qvDictSetRealKeyUse( dict.at(), 0.5, value( 3 ) );
        qvDictSetSortKeyUse( dict.at(), sort, value( 4 ) );
        qvDictSetStringKeyUse( dict.at(), text( "key" ), value( 5 ) );
        qvDictSetStringKeyCstrUse( dict.at(), umlaut, -1, value( 6 ) );
        qvDictSetStringKeyWcstrUse( dict.at(), L"wide", 4, value( 7 ) );
        qvDictSetObjKeyUse( dict.at(), object, value( 2 ) );
    }

    EXPECT_EQ( 8, qvDictLength( dict ) );
    EXPECT_DEATH( qvDictSetIntKeyUse( dict.at(), 7, nullptr ), "value" );

    auto check = [&]( QV_INT expected, QV_OBJ *lent )
    {
        ASSERT_TRUE( lent );
        EXPECT_EQ( expected, qvBoxedIntValue( qvBoxedIntFrom( lent ) ) );
        EXPECT_FALSE( isShared( lent ) );
    };
    check( 0, qvDictLendNullKey( dict ) );
    check( 1, qvDictLendBoolKey( dict, QV_TRUE ) );
    check( 2, qvDictLendIntKey( dict, 7 ) );
    check( 2, qvDictLendObjKey( dict, object ) );
    check( 3, qvDictLendRealKey( dict, 0.5 ) );
    check( 4, qvDictLendSortKey( dict, sort ) );
    check( 5, qvDictLendStringKey( dict, text( "key" ) ) );
    check( 6, qvDictLendStringKeyCstr( dict, umlaut, -1 ) );
    check( 6, qvDictLendStringKeyWcstr( dict, L"\xFC", 1 ) );
    check( 7, qvDictLendStringKeyCstr( dict, "wide", 4 ) );
    EXPECT_FALSE( qvDictLendBoolKey( dict, QV_FALSE ) );
    EXPECT_DEATH( qvDictLendStringKey( dict, nullptr ), "key" );

    // What is taken over may be the Dict itself, as it was; a Dict that somebody else holds stays as it is.
    qvDictSetIntKeyUse( dict.at(), 7, qvDictObj( retain( dict.get() ) ) );
    EXPECT_TRUE( qvDictHasSortKey( qvDictFrom( qvDictLendIntKey( dict, 7 ) ), sort ) );
    EXPECT_FALSE( isShared( dict.get() ) );
    check( 2, qvDictLendObjKey( qvDictFrom( qvDictLendIntKey( dict, 7 ) ), object ) );
}

// What look-ups find by digests alone is what stands there: keys with many neighbours of the same digest, prefixes of each
// other, of other characters, beyond the ends; and keys that differ from these in what all of a run share.
TEST( Dict, LookUpsFindWhatStandsThere )
{
    const std::pair< const char *, const char * > groups[] = {
        { "aaaabbbbcccccccc", "bbbbbbbbcccccccc" },
        { "aaaabbbb", "aaaacbbb" },
        { "aaaabbbbcccc\xE4\xB8\xAD", "zzzzbbbbcccc\xE4\xB8\xAD" },
        { "\xE4\xB8\xAD\xE4\xB8\x80zz", "\xE4\xB8\xAD\xE4\xB8\x89zz" } };

    for( QV_INT kinds : { 1, 3, 4 } )
    {
        std::vector< std::string > keys = { "", "aaaabbb", "zzzzzzzzcccccccc5" }, others = { "\xC3\xBC", "z", "a" };

        for( QV_INT i = 0; i < 2400; i++ )
        {
            std::string number = std::to_string( i * 7919 % 2400 );
            keys.push_back( groups[i % kinds].first + number );
            others.push_back( groups[i % kinds].second + number );
        }

        for( size_t length : { 3, 40, 120, 2401, 2403 } )
        {
            Ref< QV_DICT > dict( qvDictCreate() );
            auto           key = [&]( size_t i ) { return text( keys[keys.size() - 1 - i] ); };

            for( size_t i = 0; i < length; i++ )
                qvDictSetStringKey( dict.at(), key( i ), boxed( static_cast< QV_INT >( i ) ) );

            for( size_t i = 0; i < keys.size(); i++ )
            {
                QV_OBJ *lent = qvDictLendStringKey( dict, key( i ) );
                ASSERT_EQ( i < length, lent != nullptr ) << length << " " << i;
                ASSERT_TRUE( !lent || qvBoxedIntValue( qvBoxedIntFrom( lent ) ) == static_cast< QV_INT >( i ) );
                ASSERT_FALSE( qvDictHasStringKey( dict, text( others[i] ) ) ) << others[i];
            }
        }
    }
}

// Keys that end in all ways around the 16 characters that a Dict knows of each: prefixes of each other, with the last
// characters that take a byte and the first ones that do not. Every second one is entered.
TEST( Dict, KeysThatBeginAlikeAreToldApart )
{
    const std::u32string ends = U"\x01yz\xED\xEE\u4E2D";

    for( const char32_t *stem : { U"", U"same", U"samestem" } )
    {
        std::set< std::u32string > texts;

        for( size_t i = 0; i < 18 * ends.size() * ends.size(); i++ )
            texts.insert( stem + std::u32string( i / 36, ends[i / 6 % 6] ) + ends[i % 6] );

        for( char32_t differs : ends )
            texts.insert( stem + std::u32string( U"wide\u4E2D" ) + differs + U"-and-equal" );

        Ref< QV_DICT > dict( qvDictCreate() );
        QV_INT         at = 0;

        for( int pass : { 0, 1, 2 } )
            for( const std::u32string &each : texts )
            {
                Ref< QV_STRING > key(
                    qvStringCreateFromCharsCopy( each.c_str(), static_cast< QV_INT >( each.size() ) ) );
                QV_INT place = at++ % static_cast< QV_INT >( texts.size() );

                if( pass < 2 && place % 2 == 0 )
                    qvDictSetStringKey( dict.at(), key, boxed( at ) );

                ASSERT_EQ( place % 2 == 0, qvDictHasStringKey( dict, key ) );
                ASSERT_EQ( place % 2 == 0 ? place / 2 : -1, qvDictIndexOfStringKey( dict, key ) );
            }
    }
}

// Wherever keys are entered, few others make way: a run that is entered into far from its ends is divided.
TEST( Dict, RunsAreShortWhereKeysAreEnteredInside )
{
    Ref< QV_DICT > dict( qvDictCreate() );

    for( QV_INT i = 0; i < 5000; i++ )
        qvDictSetIntKey( dict.at(), i % 2 ? 9999 - i : i, boxed( i ) );

    for( QV_INT i = 0; i < dict->index->runs->length; i++ )
        EXPECT_GE( 200, dict->index->runs->items()[i].run->length ) << i;
}

// A function enters, changes, leaves and deletes values, by every kind of key that is not an object at first.
TEST( Dict, UpdatesValuesInPlace )
{
    static QV_INT lone; // calls in which nobody else held the value
    auto          append = []( QV_OBJ **value, void *data )
    {
        lone += *value && !isShared( *value );
        QV_VECTOR *vec = *value ? qvVectorFrom( *value ) : qvVectorCreate();
        qvVectorAppendObj( &vec, static_cast< QV_OBJ * >( data ) );
        *value = qvVectorObj( vec );
    };
    auto end = []( QV_OBJ **value, void * )
    {
        if( *value )
            qvObjRelease( std::exchange( *value, nullptr ) );
    };
    auto nothing = []( QV_OBJ **, void * ) {};

    for( QV_INT length : { 3, 3000 } )
    {
        Ref< QV_DICT > dict( qvDictCreate() );
        const char    *umlaut = "\xC3\xBC";

        for( QV_INT i = 0; i < 2 * length; i++ )
        {
            Ref< QV_OBJ > each = boxed( i );
            qvDictUpdateIntKey( dict.at(), i * 7 % length, append, each );
            qvDictUpdateStringKeyCstr( dict.at(), std::to_string( i % length ).c_str(), -1, append, each );
        }

        EXPECT_EQ( 2 * length, qvDictLength( dict ) );
        EXPECT_EQ( 2 * length, std::exchange( lone, 0 ) );

        // Nothing is entered where nothing is returned, and the key that is there stays.
        Ref< QV_DICT > before = Ref< QV_DICT >::share( dict );
        qvDictUpdateStringKeyCstr( dict.at(), umlaut, -1, end, nullptr );
        qvDictUpdateBoolKey( dict.at(), QV_TRUE, nothing, nullptr );
        EXPECT_EQ( before.get(), dict.get() );
        Ref< QV_OBJ > one = boxed( 1 ), key( qvDictKeyAt( dict, qvDictIndexOfIntKey( dict, 1 ) ) );
        qvDictUpdateObjKey( dict.at(), one, append, one );
        EXPECT_EQ( 0, lone );
        EXPECT_EQ( key.get(), Ref( qvDictKeyAt( dict, qvDictIndexOfIntKey( dict, 1 ) ) ).get() );
        EXPECT_EQ( 3, qvVectorLength( qvVectorFrom( Ref( qvDictIntKey( dict, 1 ) ) ) ) );
        EXPECT_EQ( 2, qvVectorLength( qvVectorFrom( Ref( qvDictIntKey( before, 1 ) ) ) ) );

        // The Dict goes into itself as it was, as a key too.
        qvDictUpdateObjKey( dict.at(), qvDictObj( dict ), append, qvDictObj( dict ) );
        EXPECT_EQ( 2 * length + 1, qvDictLength( dict ) );
        qvDictDelObjKey( dict.at(), Ref( qvDictKeyAt( dict, length ) ) );

        for( QV_INT i = 0; i < length; i++ )
        {
            qvDictUpdateIntKey( dict.at(), i, end, nullptr );
            qvDictUpdateStringKeyCstr( dict.at(), std::to_string( i ).c_str(), -1, end, nullptr );
        }

        EXPECT_EQ( Ref( qvDictCreate() ).get(), dict.get() );
        lone = 0;

        // What is entered is the key that was lent, whatever the function makes of the caller's variable.
        Ref< QV_STRING > name = text( "name" );
        auto             tell = []( QV_OBJ **value, void *data )
        {
            qvStringAppendChar( static_cast< QV_STRING ** >( data ), U'!' );
            *value = boxed( 1 ).give();
        };
        qvDictUpdateStringKey( dict.at(), name, tell, name.at() );
        EXPECT_EQ( "{name=1}", take( qvDictToString( dict ) ) );
        EXPECT_EQ( "name!", take( name.give() ) );
    }
}

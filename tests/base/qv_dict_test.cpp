#include "qv_test_support.h"

#include "qv/base/qv_dict_private.h"
#include "qv/qv.h"

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
        auto gone = keys.begin() + ( i < 470 ? 512 + ( i % 2 ? 0 : 479 - i ) : 10 );
        qvDictDelStringKey( dict.at(), text( *gone ) );
        keys.erase( gone );
        ASSERT_TRUE( i != 416 || lengthOf( 1 ) - lengthOf( 0 ) == 1 );
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
    for( QV_INT length : { 0, 1, 1024, 1025, 5000 } )
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
            EXPECT_GE( 1 + length / 100, rows );
            EXPECT_EQ( nullptr, qvDictBacking( dict, length, &count ) );
            EXPECT_EQ( 0, count );
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
        EXPECT_GE( 258, dict->index->runs->items()[i].run->length ) << i;
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

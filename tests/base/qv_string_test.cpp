#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_mem.h"

#include <functional>
#include <random>
#include <thread>

using qv::Ref;
using namespace qv::test;
using testing::ElementsAre;

namespace
{
QV_INT size( const std::u32string &text )
{
    return static_cast< QV_INT >( text.size() );
}

// The one empty String, which lives as long as the library runs.
QV_STRING *theEmpty()
{
    return Ref< QV_STRING >( qvStringCreate() ).get();
}

// The texts of a Vector of Strings, which the call takes over.
std::vector< std::string > parts( QV_VECTOR *owned )
{
    Ref< QV_VECTOR >           vec( owned );
    std::vector< std::string > result;

    for( QV_INT i = 0; i < qvVectorLength( vec ); i++ )
    {
        Ref< QV_OBJ > part( qvVectorObjAt( vec, i ) );
        result.push_back( utf8( qvStringFrom( part ) ) );
    }

    return result;
}

// The text that a mutator makes of another one.
template< class Mutator >
std::string changed( std::string_view before, Mutator mutator )
{
    Ref< QV_STRING > qvs = text( before );
    mutator( qvs.at() );

    return utf8( qvs );
}

template< class Function >
void withArgList( Function *function, ... )
{
    va_list argList;
    va_start( argList, function );
    ( *function )( &argList );
    va_end( argList );
}

// What a String has to be: its text, and the free places at both ends of its block.
struct Model
{
    std::u32string text;
    QV_INT         fspace = 0, bspace = 0;
    bool           block = false, shared = true;

    void makeRoom( QV_INT at, QV_INT count )
    {
        QV_INT length = size( text );

        if( !block || ( at == 0 && fspace + bspace < count ) )
            block = true, fspace = bspace = 32;
        else if( at == 0 && fspace >= count )
            fspace -= count;
        else if( at == 0 )
            bspace -= count - fspace, fspace = 0;
        else if( at == length )
            bspace = bspace >= count ? bspace - count : 32;
        else if( bspace >= count )
            bspace -= count;
        else if( fspace + bspace >= count )
            fspace -= count - bspace, bspace = 0;
        else
            fspace = bspace = 32;
    }

    void insert( QV_INT at, const std::u32string &part )
    {
        if( part.empty() )
            return;

        if( shared )
            shared = false, block = true, fspace = bspace = 32;
        else
            makeRoom( at, size( part ) );

        text.insert( static_cast< size_t >( at ), part );
    }

    void makePrivate()
    {
        if( shared )
        {
            shared = false;
            block  = !text.empty();
            fspace = bspace = block ? 32 : 0;
        }
    }

    void compact()
    {
        if( fspace > 64 || bspace > 64 )
            block = !text.empty(), fspace = bspace = block ? 32 : 0;
    }

    void clear()
    {
        *this = Model();
    }

    // Keeps the range from `offset` on or deletes it.
    void erase( QV_INT offset, QV_INT count )
    {
        if( count == 0 )
            return;

        if( count == size( text ) )
            return clear();

        makePrivate();
        ( offset == 0 ? fspace : bspace ) += count;
        text.erase( static_cast< size_t >( offset ), static_cast< size_t >( count ) );
        compact();
    }

    void keep( QV_INT offset, QV_INT count )
    {
        if( count == 0 )
            return clear();

        if( count == size( text ) )
            return;

        makePrivate();
        fspace += offset;
        bspace += size( text ) - offset - count;
        text = text.substr( static_cast< size_t >( offset ), static_cast< size_t >( count ) );
        compact();
    }
};

::testing::AssertionResult agrees( QV_STRING *qvs, const Model &model )
{
    if( qv::test::chars( qvs ) != model.text )
        return ::testing::AssertionFailure() << "text differs";

    if( qvs->fspace != model.fspace || qvs->bspace != model.bspace )
        return ::testing::AssertionFailure() << "free places are " << qvs->fspace << " and " << qvs->bspace
                                             << ", expected " << model.fspace << " and " << model.bspace;

    if( allocated( qvs ) != ( model.block ? 4 * ( model.fspace + size( model.text ) + model.bspace ) : 0 ) )
        return ::testing::AssertionFailure() << "declares " << allocated( qvs ) << " bytes";

    return ::testing::AssertionSuccess();
}
} // namespace

/* Room and copies ------------------------------------------------------------------------------------------------ */

// Every mutator in random order on one variable, with other holders coming and going. The text, the free places, the
// declared size and what the other holder sees have to be right after each step.
TEST( String, RandomMutationsAgreeWithTheModel )
{
    std::mt19937 random( 7 );
    auto         below = [&]( QV_INT bound ) { return static_cast< QV_INT >( random() ) % bound; };

    Ref< QV_STRING > qvs( qvStringCreate() );
    Ref< QV_STRING > holder;
    std::u32string   held;
    Model            model;

    for( int step = 0; step < 60000; step++ )
    {
        QV_INT length = size( model.text );
        QV_INT offset = below( length + 1 );
        QV_INT count  = below( length - offset + 1 );
        QV_INT place  = below( 3 ) == 0 ? offset : below( 2 ) * length;

        // Lengths on both sides of the bounds of 32 and 64 free places.
        std::u32string piece( size_t( below( 4 ) ? below( 12 ) : below( 140 ) ), U'a' + char32_t( below( 26 ) ) );

        switch( below( 14 ) )
        {
        case 0:
        case 1:
            qvStringInsertChars( qvs.at(), place, piece.data(), size( piece ) );
            model.insert( place, piece );
            break;
        case 2:
            qvStringInsert( qvs.at(), place, text( piece ) );
            model.insert( place, piece );
            break;
        case 3:
            qvStringAppendChar( qvs.at(), U'+' );
            model.insert( length, U"+" );
            break;
        case 4:
            qvStringPrependChar( qvs.at(), U'-' );
            model.insert( 0, U"-" );
            break;
        case 5:
            // Into itself: it counts as shared.
            if( length > 300 )
                break;
            model.shared = model.shared || count > 0;
            qvStringInsertInner( qvs.at(), place, qvs, offset, count );
            model.insert( place, model.text.substr( size_t( offset ), size_t( count ) ) );
            break;
        case 6:
        {
            std::u32string head = model.text.substr( 0, size_t( offset ) );
            std::u32string tail = model.text.substr( size_t( offset + count ) );

            if( length > 300 )
                break;

            model.shared = model.shared || count < length;
            qvStringInsertOuter( qvs.at(), place, qvs, offset, count );
            model.insert( place, tail );
            model.insert( place, head );
            break;
        }
        case 7:
            count = below( 5 ) ? std::min( count, below( 40 ) ) : count;
            qvStringDelInner( qvs.at(), offset, count );
            model.erase( offset, count );
            break;
        case 8:
            count = below( 5 ) ? std::min( length, below( 40 ) ) : count;
            below( 2 ) ? ( qvStringDelLeading( qvs.at(), count ), model.erase( 0, count ) )
                       : ( qvStringDelTrailing( qvs.at(), count ), model.erase( length - count, count ) );
            break;
        case 9:
            if( below( 4 ) )
            {
                offset = std::min( offset, below( 20 ) );
                count  = std::max( QV_INT( 0 ), length - offset - below( 20 ) );
            }

            qvStringDelOuter( qvs.at(), offset, count );
            model.keep( offset, count );
            break;
        case 10:
            qvStringSetCharAt( qvs.at(), offset - 1, U'!' );

            if( offset == 0 )
                model.insert( 0, U"!" );
            else
                model.makePrivate(), model.text[size_t( offset - 1 )] = U'!';
            break;
        case 11:
            if( below( 10 ) == 0 )
                qvStringClear( qvs.at() ), model.clear();
            break;
        case 12:
            holder = Ref< QV_STRING >::share( qvs );
            held   = model.text;
            model.shared = true;
            break;
        case 13:
            // The variable is alone again unless it has the one empty String.
            holder.reset();
            model.shared = qvs.get() == theEmpty();
            break;
        }

        ASSERT_TRUE( agrees( qvs, model ) ) << "step " << step;
        ASSERT_EQ( model.shared, references( qvs.get() ) > 1 ) << "step " << step;
        ASSERT_TRUE( !holder || qv::test::chars( holder ) == held ) << "step " << step;
        ASSERT_EQ( 0, theEmpty()->length );
    }
}

TEST( String, EmptyStrings )
{
    Ref< QV_STRING > empty( qvStringCreate() ), some = text( "abc" );
    EXPECT_EQ( theEmpty(), empty.get() );
    EXPECT_EQ( theEmpty(), Ref< QV_STRING >( qvStringCreateFromCstr( "", -1 ) ).get() );
    EXPECT_EQ( theEmpty(), Ref< QV_STRING >( qvStringCreateFromCharsCopy( nullptr, 0 ) ).get() );

    // The block stays with the caller.
    QV_CHAR *block = static_cast< QV_CHAR * >( qvMemAlloc( 4 ) );
    EXPECT_EQ( theEmpty(), Ref< QV_STRING >( qvStringCreateFromCharsUse( block, 0 ) ).get() );
    qvMemFree( block );

    // An empty copy is an object of its own.
    Ref< QV_STRING > copy( qvStringCreateFromInner( some, 1, 0 ) );
    EXPECT_NE( theEmpty(), copy.get() );
    EXPECT_EQ( nullptr, copy->first );
    EXPECT_TRUE( qvStringEquals( copy, empty ) );

    // Deleting everything gives the one that all share; inserting nothing changes nothing.
    for( auto del : { +[]( QV_STRING **qvs ) { qvStringDelLeading( qvs, 2 ); },
                      +[]( QV_STRING **qvs ) { qvStringDelTrailing( qvs, 2 ); },
                      +[]( QV_STRING **qvs ) { qvStringDelInner( qvs, 0, 2 ); },
                      +[]( QV_STRING **qvs ) { qvStringDelOuter( qvs, 1, 0 ); },
                      +[]( QV_STRING **qvs ) { qvStringTrim( qvs ); } } )
    {
        Ref< QV_STRING > qvs = text( " \t" );
        del( qvs.at() );
        EXPECT_EQ( theEmpty(), qvs.get() );
    }

    qvStringInsertInner( empty.at(), 0, some, 3, 0 );
    qvStringAppendChars( empty.at(), nullptr, 0 );
    EXPECT_EQ( theEmpty(), empty.get() );
}

TEST( String, BlocksOfCopiesPartsAndConversions )
{
    auto declared = []( QV_STRING *owned ) { return allocated( Ref< QV_STRING >( owned ).get() ) / 4; };

    Ref< QV_STRING > qvs = text( "0123456789" );
    EXPECT_EQ( 10, allocated( qvs.get() ) / 4 );
    EXPECT_EQ( 74, declared( qvStringCreateFrom( qvs ) ) );
    EXPECT_EQ( 67, declared( qvStringCreateFromTrailing( qvs, 3 ) ) );
    EXPECT_EQ( 67, declared( qvStringCreateFromOuter( qvs, 1, 7 ) ) );

    // An exact block grows behind, keeping what is in front, or on both sides.
    Ref< QV_STRING > before = text( "abc" ), behind = text( "abc" );
    qvStringPrependChars( before.at(), U"12", 2 );
    qvStringAppendChars( behind.at(), U"12", 2 );
    EXPECT_EQ( 69, allocated( before.get() ) / 4 );
    EXPECT_EQ( 37, allocated( behind.get() ) / 4 );

    EXPECT_EQ( "012", take( qvStringCreateFromLeading( qvs, 3 ) ) );
    EXPECT_EQ( "789", take( qvStringCreateFromTrailing( qvs, 3 ) ) );
    EXPECT_EQ( "345", take( qvStringCreateFromInner( qvs, 3, 3 ) ) );
    EXPECT_EQ( "0126789", take( qvStringCreateFromOuter( qvs, 3, 3 ) ) );
}

// A block of 512 characters at most is one allocation with its String, until the text outgrows it.
TEST( String, TextsOutgrowTheMemoryTheyWereCreatedIn )
{
    for( QV_INT length : { 1, 447, 448, 449, 511, 512, 513, 5000 } )
    {
        std::u32string                 expected( size_t( length ), U'.' );
        std::vector< Ref< QV_STRING > > copies;

        for( size_t i = 0; i < expected.size(); i++ )
            expected[i] = char32_t( U'a' + i % 26 );

        std::string bytes( expected.begin(), expected.end() );

        copies.emplace_back( qvStringCreateFromCharsCopy( expected.data(), length ) );
        copies.emplace_back( qvStringCreateFromCstr( bytes.c_str(), -1 ) );
        copies.emplace_back( qvStringCreateFrom( copies[0] ) );
        copies.emplace_back( Ref< QV_STRING >::share( copies[0] ) );
        qvStringToLower( copies.back().at() );

        for( Ref< QV_STRING > &copy : copies )
        {
            EXPECT_EQ( QV_INT( sizeof( QV_STRING ) ), qv___ObjDbgObjectSize( qvStringObj( copy ) ) );

            Model model;
            model.text   = expected;
            model.shared = false;
            model.block  = true;
            model.fspace = copy->fspace;
            model.bspace = copy->bspace;

            for( int round = 0; round < 40; round++ )
            {
                std::u32string piece( 33, char32_t( U'A' + round % 26 ) );
                QV_INT         at = round < 30 ? size( model.text ) : round < 35 ? 0 : 1;
                qvStringInsertChars( copy.at(), at, piece.data(), 33 );
                model.insert( at, piece );
                ASSERT_TRUE( agrees( copy, model ) ) << "length " << length << ", round " << round;
            }

            // Down again, in steps that compact it each time, where the memory is enough and where it is too much.
            while( size( model.text ) > 100 )
            {
                QV_INT count = size( model.text ) < 1000 ? 70 : 650;
                qvStringDelTrailing( copy.at(), count );
                model.erase( size( model.text ) - count, count );
                ASSERT_TRUE( agrees( copy, model ) ) << "length " << length;
                qvStringDelLeading( copy.at(), 20 );
                model.erase( 0, 20 );
                ASSERT_TRUE( agrees( copy, model ) ) << "length " << length;
            }
        }
    }
}

/* Inserting ------------------------------------------------------------------------------------------------------ */

// Every form at every place, through one table.
TEST( String, EveryFormInsertsPrependsAndAppends )
{
    Ref< QV_STRING >    src = text( "abcde" ), format = text( "<%i>" );
    Ref< QV_BOXED_INT > boxed( qvBoxedIntCreate( -7 ) );

    struct Form
    {
        const char                                  *name, *expected;
        std::function< void( QV_STRING **, QV_INT ) > insert;
        std::function< void( QV_STRING ** ) >         prepend, append;
    };

#define FORM( Suffix, expected, ... )                                                                                  \
    {                                                                                                                  \
        #Suffix, expected, [&]( QV_STRING **dest, QV_INT idx ) { qvStringInsert##Suffix( dest, idx, __VA_ARGS__ ); },  \
            [&]( QV_STRING **dest ) { qvStringPrepend##Suffix( dest, __VA_ARGS__ ); },                                 \
            [&]( QV_STRING **dest ) { qvStringAppend##Suffix( dest, __VA_ARGS__ ); }                                   \
    }
#define ARG_LIST_CALL( ... )                                                                                           \
    {                                                                                                                  \
        auto call = [&]( va_list *argList ) { __VA_ARGS__; };                                                          \
        withArgList( &call, QV_INT { 42 } );                                                                           \
    }
#define ARG_LIST_FORM( Suffix, ... )                                                                                   \
    {                                                                                                                  \
        #Suffix, "<42>",                                                                                               \
            [&]( QV_STRING **dest, QV_INT idx )                                                                        \
                ARG_LIST_CALL( qvStringInsert##Suffix( dest, idx, __VA_ARGS__, argList ) ),                            \
            [&]( QV_STRING **dest ) ARG_LIST_CALL( qvStringPrepend##Suffix( dest, __VA_ARGS__, argList ) ),            \
            [&]( QV_STRING **dest ) ARG_LIST_CALL( qvStringAppend##Suffix( dest, __VA_ARGS__, argList ) )              \
    }

    const Form FORMS[] = {
        FORM( , "abcde", src ),
        FORM( Leading, "ab", src, 2 ),
        FORM( Trailing, "de", src, 2 ),
        FORM( Inner, "cd", src, 2, 2 ),
        FORM( Outer, "abe", src, 2, 2 ),
        FORM( Chars, "xy", U"xyz", 2 ),
        FORM( Char, "\xE2\x82\xAC", 0x20AC ),
        FORM( Cstr, "\xC3\xA9t", "\xC3\xA9t\xC3\xA9", 3 ),
        FORM( Wcstr, "w\xC3\xA9", L"w\xE9", -1 ),
        FORM( Obj, "-7", qvBoxedIntObj( boxed ) ),
        FORM( Format, "<42>", format, QV_INT { 42 } ),
        FORM( FormatCstr, "<42>", "<%i>...", 4, QV_INT { 42 } ),
        FORM( FormatWcstr, "<42>", L"<%i>", -1, QV_INT { 42 } ),
        ARG_LIST_FORM( FormatArgList, format ),
        ARG_LIST_FORM( FormatCstrArgList, "<%i>", -1 ),
        ARG_LIST_FORM( FormatWcstrArgList, L"<%i>", -1 ),
    };

    for( const Form &form : FORMS )
    {
        auto        insert   = [&]( QV_STRING **qvs ) { form.insert( qvs, 1 ); };
        std::string expected = form.expected;

        EXPECT_EQ( std::string( "123" ).insert( 1, expected ), changed( "123", insert ) ) << form.name;
        EXPECT_EQ( std::string( "123" ).insert( 0, expected ), changed( "123", form.prepend ) ) << form.name;
        EXPECT_EQ( std::string( "123" ).insert( 3, expected ), changed( "123", form.append ) ) << form.name;
    }

    EXPECT_EQ( "<42>", take( qvStringCreateFromFormat( format, QV_INT { 42 } ) ) );
    EXPECT_EQ( "<42>", take( qvStringCreateFromFormatCstr( "<%i>", -1, QV_INT { 42 } ) ) );
    EXPECT_EQ( "<42>", take( qvStringCreateFromFormatWcstr( L"<%i>", -1, QV_INT { 42 } ) ) );
}

TEST( String, DelimitersStandBetweenTexts )
{
    Ref< QV_STRING > src = text( "b" ), sep = text( ", " );

#define DELIMITED( Suffix, ... )                                                                                       \
    EXPECT_EQ( "b", changed( "", [&]( QV_STRING **qvs ) { qvStringDelimitedAppend##Suffix( qvs, __VA_ARGS__ ); } ) );  \
    EXPECT_EQ( "b", changed( "", [&]( QV_STRING **qvs ) { qvStringDelimitedPrepend##Suffix( qvs, __VA_ARGS__ ); } ) ); \
    EXPECT_EQ(                                                                                                         \
        "a, b", changed( "a", [&]( QV_STRING **qvs ) { qvStringDelimitedAppend##Suffix( qvs, __VA_ARGS__ ); } ) );     \
    EXPECT_EQ(                                                                                                         \
        "b, a", changed( "a", [&]( QV_STRING **qvs ) { qvStringDelimitedPrepend##Suffix( qvs, __VA_ARGS__ ); } ) );

    DELIMITED( , src, sep )
    DELIMITED( Cstr, "b", -1, ", ;", 2 )
    DELIMITED( CstrSource, "b", 1, sep )
    DELIMITED( CstrDelimiter, src, ", ", -1 )
    DELIMITED( Wcstr, L"b", 1, L", ", -1 )
    DELIMITED( WcstrSource, L"b", -1, sep )
    DELIMITED( WcstrDelimiter, src, L", ", 2 )

    // One character between, and the String itself as one of the texts, which is read as it was.
    auto appended  = [&]( QV_STRING **qvs ) { qvStringDelimitedAppendCharDelimiter( qvs, src, U';' ); };
    auto prepended = [&]( QV_STRING **qvs ) { qvStringDelimitedPrependCharDelimiter( qvs, src, U';' ); };
    auto itself    = []( QV_STRING **qvs ) { qvStringDelimitedAppendCharDelimiter( qvs, *qvs, U';' ); };
    auto bothTexts = []( QV_STRING **qvs ) { qvStringDelimitedPrepend( qvs, *qvs, *qvs ); };

    EXPECT_EQ( "a;b", changed( "a", appended ) );
    EXPECT_EQ( "b;a", changed( "a", prepended ) );
    EXPECT_EQ( "a;a", changed( "a", itself ) );
    EXPECT_EQ( "ababab", changed( "ab", bothTexts ) );
}

/* Changing ------------------------------------------------------------------------------------------------------- */

TEST( String, TrimsWhiteSpaceOnly )
{
    const std::string TEXT = "\xE2\x80\x83\t\n a b\xC2\xA0 \xE3\x80\x80";

    EXPECT_EQ( "a b\xC2\xA0 \xE3\x80\x80", changed( TEXT, qvStringTrimLeading ) );
    EXPECT_EQ( "\xE2\x80\x83\t\n a b", changed( TEXT, qvStringTrimTrailing ) );
    EXPECT_EQ( "a b", changed( TEXT, qvStringTrim ) );
    EXPECT_EQ( "\xE2\x80\x8B", changed( "\xE2\x80\x8B", qvStringTrim ) );

    EXPECT_TRUE( qvStringIsBlank( text( "" ) ) );
    EXPECT_TRUE( qvStringIsBlank( text( " \t\xC2\x85" ) ) );
    EXPECT_FALSE( qvStringIsBlank( text( " x " ) ) );
}

TEST( String, CaseMappingsMayLengthen )
{
    EXPECT_EQ( "STRASSE", changed( "Stra\xC3\x9F" "e", qvStringToUpper ) );
    EXPECT_EQ( "\xC3\xA4\xC3\xB6@[`{\xCF\x89", changed( "\xC3\x84\xC3\x96@[`{\xCE\xA9", qvStringToLower ) );
    EXPECT_EQ( "@[`{", changed( "@[`{", qvStringToUpper ) );
    EXPECT_EQ( "ss\xCF\x83", changed( "\xC3\x9F\xCF\x82", qvStringToCaseFold ) );

    // Long texts with mappings to three characters, in any mixture, against one character at a time.
    std::mt19937 random( 3 );

    for( int round = 0; round < 300; round++ )
    {
        static const char32_t CHARS[] = { U'a', U'Z', U'_', 0xDF, 0x390, 0xFB03, 0x10428, 0x4E00, 0xE9, 0x130 };
        std::u32string        all, upper;

        for( size_t length = random() % 200; all.size() < length; )
        {
            Ref< QV_STRING > one = text( std::u32string( 1 + random() % 9, CHARS[random() % std::size( CHARS )] ) );
            all += qv::test::chars( one );

            for( char32_t ch : qv::test::chars( one ) )
            {
                Ref< QV_STRING > single = text( std::u32string( 1, ch ) );
                qvStringToUpper( single.at() );
                upper += qv::test::chars( single );
            }
        }

        Ref< QV_STRING > qvs = text( all ), holder = Ref< QV_STRING >::share( qvs );
        qvStringToUpper( qvs.at() );
        ASSERT_EQ( upper, qv::test::chars( qvs ) );
        ASSERT_EQ( all, qv::test::chars( holder ) );
        ASSERT_EQ( all.empty() ? 0 : size( upper ) + 64, allocated( qvs.get() ) / 4 );
    }
}

TEST( String, SanitizeGivesPlacesBack )
{
    std::vector< QV_CHAR > array( 70, 0xDC00 );
    array.front() = U'a';
    array[68]     = 0xD83D;
    array[69]     = 0xDE00;

    Ref< QV_STRING > qvs( qvStringCreateFromCharsCopy( array.data(), 70 ) ), clean = text( U"a\x1F600" );
    Ref< QV_STRING > holder = Ref< QV_STRING >::share( qvs );
    qvStringSanitize( qvs.at() );
    EXPECT_TRUE( qvStringEquals( clean, qvs ) );
    EXPECT_EQ( 2 + 64, allocated( qvs.get() ) / 4 );
    EXPECT_EQ( 70, qvStringLength( holder ) );
}

/* Comparing and searching ---------------------------------------------------------------------------------------- */

TEST( String, ComparesByCodePoints )
{
    const std::u32string TEXTS[] = { U"", U"A", U"B", U"a", U"ab", U"e\x301", U"\xE9", U"\xFFFF", U"\x10000" };

    for( const std::u32string &a : TEXTS )
        for( const std::u32string &b : TEXTS )
        {
            EXPECT_EQ( ( a > b ) - ( a < b ), qvStringCompare( text( a ), text( b ) ) );
            EXPECT_EQ( a == b, qvStringEquals( text( a ), text( b ) ) );
            EXPECT_EQ( a == b, qvStringEqualsChars( text( a ), b.data(), size( b ) ) );
        }

    Ref< QV_STRING > qvs = text( "\xC3\x89t\xC3\xA9" );
    EXPECT_TRUE( qvStringEqualsCstr( qvs, "\xC3\x89t\xC3\xA9", -1 ) );
    EXPECT_FALSE( qvStringEqualsCstr( qvs, "\xC3\x89t\xC3\xA9", 3 ) );
    EXPECT_TRUE( qvStringEqualsWcstr( qvs, L"\xC9t\xE9", 3 ) );
    EXPECT_FALSE( qvStringEqualsChar( qvs, 0xC9 ) );
    EXPECT_TRUE( qvStringEqualsChar( text( "x" ), U'x' ) );

    EXPECT_TRUE( qvStringEqualsCaseFold( qvs, text( "\xC3\xA9T\xC3\x89" ) ) );
    EXPECT_TRUE( qvStringEqualsCaseFoldCstr( qvs, "\xC3\xA9T\xC3\x89", -1 ) );
    EXPECT_TRUE( qvStringEqualsCaseFoldWcstr( qvs, L"\xE9T\xC9", -1 ) );
    EXPECT_TRUE( qvStringEqualsCharsCaseFold( text( "MASSE" ), U"ma\xDF" U"e", 4 ) );
    EXPECT_TRUE( qvStringEqualsCharCaseFold( text( "ss" ), 0xDF ) );
    EXPECT_EQ( -1, qvStringCompareCaseFold( text( "a" ), text( "B" ) ) );
    EXPECT_EQ( 0xC9u, qvStringCharAt( qvs, 0 ) );
}

TEST( String, BeginningsAndEnds )
{
    Ref< QV_STRING > qvs = text( "abcab" );

    EXPECT_TRUE( qvStringBeginsWith( qvs, text( "" ) ) );
    EXPECT_TRUE( qvStringBeginsWith( qvs, qvs ) );
    EXPECT_FALSE( qvStringBeginsWith( qvs, text( "abcabc" ) ) );
    EXPECT_TRUE( qvStringBeginsWithCstr( qvs, "abcx", 3 ) );
    EXPECT_TRUE( qvStringBeginsWithWcstr( qvs, L"ab", -1 ) );
    EXPECT_TRUE( qvStringBeginsWithChar( qvs, U'a' ) );
    EXPECT_FALSE( qvStringBeginsWithChars( qvs, U"b", 1 ) );

    EXPECT_TRUE( qvStringEndsWith( qvs, text( "" ) ) );
    EXPECT_TRUE( qvStringEndsWith( qvs, qvs ) );
    EXPECT_FALSE( qvStringEndsWith( qvs, text( "xabcab" ) ) );
    EXPECT_TRUE( qvStringEndsWithCstr( qvs, "cab", -1 ) );
    EXPECT_FALSE( qvStringEndsWithWcstr( qvs, L"ca", -1 ) );
    EXPECT_TRUE( qvStringEndsWithChar( qvs, U'b' ) );
    EXPECT_FALSE( qvStringEndsWithChar( text( "" ), U'b' ) );
    EXPECT_TRUE( qvStringEndsWithChars( qvs, U"ab", 2 ) );
}

// All searches on random texts of few letters, so that there are many near misses, beside std::u32string.
TEST( String, SearchesAgreeWithTheModel )
{
    std::mt19937 random( 5 );

    for( int round = 0; round < 20000; round++ )
    {
        auto make = [&]( size_t length, unsigned letters )
        {
            std::u32string result;

            while( result.size() < length )
                result += U'a' + random() % letters;

            return result;
        };

        unsigned         letters = 1 + random() % 3;
        std::u32string   hay = make( random() % 90, letters ), needle = make( 1 + random() % 5, letters );
        QV_INT           length = size( hay ), offset = QV_INT( random() % ( hay.size() + 1 ) );
        Ref< QV_STRING > qvs = text( hay ), sub = text( needle );
        char32_t         ch    = needle[0];
        auto             found = []( size_t at ) { return at == std::u32string::npos ? -1 : QV_INT( at ); };

        ASSERT_EQ( found( hay.find( needle, size_t( offset ) ) ), qvStringFind( qvs, offset, sub ) );
        ASSERT_EQ( found( hay.find( ch, size_t( offset ) ) ), qvStringFindChar( qvs, offset, ch ) );
        ASSERT_EQ( found( hay.rfind( needle, size_t( offset ) ) ), qvStringFindFromRight( qvs, offset, sub ) );
        ASSERT_EQ( found( hay.rfind( needle ) ), qvStringFindFromRight( qvs, -1, sub ) );

        // A single character has to stand before the offset.
        QV_INT before = offset == 0 ? -1 : found( hay.rfind( ch, size_t( offset - 1 ) ) );
        ASSERT_EQ( before, qvStringFindCharFromRight( qvs, offset, ch ) );
        ASSERT_EQ( qvStringFindCharFromRight( qvs, length, ch ), qvStringFindCharFromRight( qvs, -1, ch ) );
    }

    Ref< QV_STRING > qvs = text( "one two one" );
    EXPECT_EQ( 8, qvStringFindCstr( qvs, 1, "one", -1 ) );
    EXPECT_EQ( 4, qvStringFindWcstr( qvs, 0, L"two", -1 ) );
    EXPECT_EQ( -1, qvStringFindChars( qvs, 9, U"one", 3 ) );
    EXPECT_EQ( 0, qvStringFindFromRightCstr( qvs, 7, "one", -1 ) );
    EXPECT_EQ( 8, qvStringFindFromRightWcstr( qvs, 8, L"one", -1 ) );
    EXPECT_EQ( -1, qvStringFindCharsFromRight( text( "on" ), -1, U"one", 3 ) );
}

/* Splitting, reading, converting --------------------------------------------------------------------------------- */

TEST( String, SplitsAtSeparators )
{
    auto split = []( const char *qvs, const char *sep, QV_INT maxParts )
    { return parts( qvStringSplitCstr( text( qvs ), sep, -1, maxParts ) ); };

    EXPECT_THAT( split( "", ",", -1 ), ElementsAre( "" ) );
    EXPECT_THAT( split( "a,", ",", -1 ), ElementsAre( "a", "" ) );
    EXPECT_THAT( split( ",,b", ",", -1 ), ElementsAre( "", "", "b" ) );
    EXPECT_THAT( split( "a, b, c", ", ", -1 ), ElementsAre( "a", "b", "c" ) );
    EXPECT_THAT( split( "a, b, c", ", ", 2 ), ElementsAre( "a", "b, c" ) );
    EXPECT_THAT( split( "a, b, c", ", ", 1 ), ElementsAre( "a, b, c" ) );
    EXPECT_THAT( split( "aaa", "aa", -1 ), ElementsAre( "", "a" ) );
    EXPECT_THAT( split( "a", "abc", -1 ), ElementsAre( "a" ) );

    Ref< QV_STRING > qvs = text( "x--y-z" );
    EXPECT_THAT( parts( qvStringSplit( qvs, text( "--" ), -1 ) ), ElementsAre( "x", "y-z" ) );
    EXPECT_THAT( parts( qvStringSplitChar( qvs, U'-', 3 ) ), ElementsAre( "x", "", "y-z" ) );
    EXPECT_THAT( parts( qvStringSplitChars( qvs, U"-y", 2, -1 ) ), ElementsAre( "x-", "-z" ) );
    EXPECT_THAT( parts( qvStringSplitWcstr( qvs, L"-", 1, 2 ) ), ElementsAre( "x", "-y-z" ) );
}

TEST( String, SplitsAtRunsOfWhiteSpace )
{
    auto split = []( const char *qvs, QV_INT maxParts )
    { return parts( qvStringSplitWhitespace( text( qvs ), maxParts ) ); };

    EXPECT_THAT( split( "", -1 ), ElementsAre( "" ) );
    EXPECT_THAT( split( " \t ", 3 ), ElementsAre( "" ) );
    EXPECT_THAT( split( " a \t b\xE3\x80\x80" "c ", -1 ), ElementsAre( "a", "b", "c" ) );
    EXPECT_THAT( split( "a  b", 2 ), ElementsAre( "a", " b" ) );
    EXPECT_THAT( split( " a b  c ", 2 ), ElementsAre( "a", "b  c" ) );
    EXPECT_THAT( split( " a b ", 1 ), ElementsAre( "a b" ) );
    EXPECT_THAT( split( "a b", 2 ), ElementsAre( "a", "b" ) );
}

// Many parts share memory. Each stays what it was whichever of the others go, on which thread they do, and whether they
// have outgrown the memory.
TEST( String, PartsOutliveOneAnother )
{
    std::mt19937                    random( 1 );
    std::vector< std::u32string >   model( 300 );
    std::u32string                  whole;
    std::vector< Ref< QV_STRING > > live[2];

    for( size_t i = 0; i < model.size(); i++ )
    {
        model[i].assign( i == 7 ? 600 : random() % 40, U'a' + random() % 26 );
        whole += ( i == 0 ? U"" : U"," ) + model[i];
    }

    {
        Ref< QV_VECTOR > vec( qvStringSplitChar( text( whole ), U',', -1 ) );
        ASSERT_EQ( QV_INT( model.size() ), qvVectorLength( vec ) );

        for( size_t i = 0; i < model.size(); i++ )
            live[i % 2].emplace_back( qvStringFrom( qvVectorObjAt( vec, QV_INT( i ) ) ) );
    }

    auto thin = [&]( size_t half )
    {
        std::mt19937 own( static_cast< unsigned >( half ) );

        for( size_t i = 0; i < live[half].size(); i++ )
        {
            EXPECT_EQ( size( model[i * 2 + half] ) * 4, allocated( live[half][i].get() ) );

            if( own() % 4 == 0 )
                qvStringAppendChars( live[half][i].at(), U"123456789", 9 );
        }

        for( size_t left = live[half].size(); left > 0; left-- )
        {
            Ref< QV_STRING >     &part = live[half][own() % live[half].size()];
            const std::u32string &was  = model[static_cast< size_t >( &part - live[half].data() ) * 2 + half];

            if( part )
            {
                EXPECT_EQ( was, qv::test::chars( part ).substr( 0, was.size() ) );
            }

            part.reset();
        }
    };

    std::thread other( thin, 1 );
    thin( 0 );
    other.join();
    settle();
}

TEST( String, PartsAreCountedWhereNoListsAreKept )
{
    withoutLibrary(
        []
        {
            qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr );
            QV_INT before = qvSortObjects( qvStringSort() );

            for( QV_INT count : { 1, 5, 8, 9, 31, 32, 33, 100 } )
            {
                Ref< QV_STRING > qvs = text( std::string( size_t( count - 1 ) * 2, ';' ) + "last" );
                Ref< QV_VECTOR > vec( qvStringSplitCstr( qvs, ";;", -1, -1 ) ); // all but the last are the empty one
                EXPECT_EQ( before + 2, qvSortObjects( qvStringSort() ) );

                qvStringAppendCstr( qvs.at(), " x", -1 );
                vec.reset( qvStringSplitChar( text( std::string( size_t( count ), 'a' ) ), U'b', -1 ) );
                EXPECT_EQ( before + 2, qvSortObjects( qvStringSort() ) );

                std::string words = "w";

                for( QV_INT i = 1; i < count; i++ )
                    words += " w";

                vec.reset( qvStringSplitWhitespace( text( words ), -1 ) );
                EXPECT_EQ( before + 1 + count, qvSortObjects( qvStringSort() ) );
            }

            EXPECT_EQ( before, qvSortObjects( qvStringSort() ) );
            qvRuntimeShutdown();
        } );
}

TEST( String, ScansValuesInARange )
{
    Ref< QV_STRING > qvs      = text( "x12345 1.5 true" );
    QV_INT           integer  = 0, consumed = 0;
    QV_REAL          real     = 0;
    QV_BOOL          truth    = QV_FALSE;

    EXPECT_TRUE( qvStringScanInt( qvs, 1, 3, 10, &integer, &consumed ) );
    EXPECT_EQ( 123, integer );
    EXPECT_EQ( 3, consumed );
    EXPECT_FALSE( qvStringScanInt( qvs, 0, -1, 10, &integer, nullptr ) );
    EXPECT_TRUE( qvStringScanReal( qvs, 7, 100, 10, &real, nullptr ) );
    EXPECT_EQ( 1.5, real );
    EXPECT_TRUE( qvStringScanBool( qvs, 11, -1, QV_FALSE, &truth, nullptr ) );
    EXPECT_TRUE( truth );
    EXPECT_FALSE( qvStringScanBool( qvs, 15, -1, QV_TRUE, &truth, nullptr ) );
}

TEST( String, ConvertsToOutsideText )
{
    Ref< QV_STRING > qvs = text( "\xC3\xA9t" ), empty( qvStringCreate() );
    QV_INT           length;

    auto given = [&]( auto *block )
    {
        std::basic_string< std::remove_pointer_t< decltype( block ) > > result( block, size_t( length ) );
        qvMemFree( block );
        return result;
    };

    EXPECT_EQ( "\xC3\xA9t", given( qvStringConvertToUtf8( qvs, QV_FALSE, &length ) ) );
    EXPECT_EQ( std::string( "\xC3\xA9t\0", 4 ), given( qvStringConvertToCstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( "?t", given( qvStringConvertToAscii( qvs, QV_FALSE, &length ) ) );
    EXPECT_EQ( std::wstring( L"\xE9t\0", 3 ), given( qvStringConvertToWcstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( std::string( 1, '\0' ), given( qvStringConvertToAscii( empty, QV_TRUE, &length ) ) );
    EXPECT_EQ( nullptr, qvStringConvertToUtf8( empty, QV_FALSE, &length ) );
    EXPECT_EQ( 0, length );
    qvMemFree( qvStringConvertToUtf8( qvs, QV_FALSE, nullptr ) );

    EXPECT_EQ( "\xEF\xBF\xBD" "a", take( qvStringCreateFromAscii( "\xE9" "a", -1 ) ) );
    EXPECT_EQ( "\xC3\xA9", take( qvStringCreateFromWcstr( L"\xE9", -1 ) ) );
    EXPECT_EQ( "\xC3\xA9", take( qvStringCreateFromUtf8( "\xC3\xA9", 2 ) ) );

    Ref< QV_STRING > same( qvStringToString( qvs ) );
    EXPECT_EQ( qvs.get(), same.get() );
}

// Long text is taken as ASCII first: another character turns up at every place of the vectors and behind them.
TEST( String, Utf8WithOneOtherCharacterAnywhere )
{
    const std::pair< std::u32string, std::string > others[]
        = { { U"x", "x" }, { U"\xE9", "\xC3\xA9" }, { U"\x4E2D", "\xE4\xB8\xAD" }, { U"\x1F600", "\xF0\x9F\x98\x80" } };

    for( size_t length : { 31, 32, 33, 97, 130, 511, 512, 513, 700 } )
        for( const auto &[other, otherUtf8] : others )
            for( size_t at = length; at-- > 0; at = at > 100 ? at - 37 : at )
            {
                std::u32string plain = std::u32string( at, U'a' ) + other + std::u32string( length - at - 1, U'z' );
                std::string    utf8  = std::string( at, 'a' ) + otherUtf8 + std::string( length - at - 1, 'z' );

                Ref< QV_STRING > decoded( qvStringCreateFromUtf8( utf8.data(), QV_INT( utf8.size() ) ) );
                ASSERT_EQ( plain, qv::test::chars( decoded ) ) << length << ' ' << at;
                ASSERT_EQ( QV_INT( length ) * 4, allocated( decoded.get() ) );

                for( QV_BOOL addNull : { QV_FALSE, QV_TRUE } )
                {
                    QV_INT bytes;
                    char  *block = qvStringConvertToUtf8( decoded, addNull, &bytes );
                    ASSERT_EQ( utf8 + std::string( addNull, '\0' ), std::string( block, size_t( bytes ) ) );
                    qvMemFree( block );
                }
            }

    // Of what is cut off, nothing may be left.
    std::string cut( 600, '\xE4' );
    EXPECT_EQ( 0, qvStringLength( Ref< QV_STRING >( qvStringCreateFromUtf8( "\xC3", 1 ) ) ) );
    EXPECT_EQ( 599, qvStringLength( Ref< QV_STRING >( qvStringCreateFromUtf8( cut.data(), 600 ) ) ) );

    std::string high;

    for( int i = 0; i < 150; i++ )
        high += "\xF7\xBF\xBF\xBF";

    EXPECT_EQ( theEmpty(), Ref< QV_STRING >( qvStringCreateFromUtf8( high.data(), 600 ) ).get() );
}

/* Contracts ------------------------------------------------------------------------------------------------------ */

TEST( String, BrokenContracts )
{
    Ref< QV_STRING > qvs = text( "abc" ), empty( qvStringCreate() ), none;
    const QV_CHAR    BAD = 0x110000;

    EXPECT_BROKEN( qvStringLength( nullptr ), "qvs" );
    EXPECT_BROKEN( qvStringAppend( none.at(), qvs ), "*dest" );
    EXPECT_BROKEN( qvStringAppend( qvs.at(), nullptr ), "src" );
    EXPECT_BROKEN( qvStringCharAt( qvs, 3 ), "idx < qvs->length" );
    EXPECT_BROKEN( qvStringInsert( qvs.at(), 4, qvs ), "idx <= (*dest)->length" );
    EXPECT_BROKEN( qvStringInsertChars( qvs.at(), 4, &BAD, 1 ), "idx <= (*qvs)->length" );
    EXPECT_BROKEN( qvStringAppendChar( qvs.at(), BAD ), "qvCharsAllOk( chs, chsLength )" );
    EXPECT_BROKEN( qvStringAppendInner( qvs.at(), qvs, 1, QV_INT_MAX ), "QV_INT_ADD_OK( offset, count )" );
    EXPECT_BROKEN( qvStringAppendInner( qvs.at(), qvs, 1, 3 ), "offset + count <= src->length" );
    EXPECT_BROKEN( qvStringAppendTrailing( qvs.at(), qvs, 4 ), "count <= src->length" );
    EXPECT_BROKEN( qvStringCreateFromCharsCopy( &BAD, 1 ), "qvCharsAllOk( src, srcLength )" );
    EXPECT_BROKEN( qvStringSetCharAt( qvs.at(), -2, U'a' ), "idx >= -1" );
    EXPECT_BROKEN( qvStringDelInner( qvs.at(), 2, 2 ), "offset + count <= (*qvs)->length" );
    EXPECT_BROKEN( qvStringDelTrailing( qvs.at(), 4 ), "count <= (*qvs)->length" );
    EXPECT_BROKEN( qvStringFindChars( qvs, 0, U"", 0 ), "subLength > 0" );
    EXPECT_BROKEN( qvStringFindChar( qvs, 0, BAD ), "QV_CHAR_OK( ch )" );
    EXPECT_BROKEN( qvStringFindCharFromRight( qvs, -2, U'a' ), "offset >= 0 || offset == -1" );
    EXPECT_BROKEN( qvStringBeginsWithChars( qvs, &BAD, 1 ), "qvCharsAllOk( sub, subLen )" );
    EXPECT_BROKEN( qvStringSplit( qvs, empty, -1 ), "qvStringLength( sep )" );
    EXPECT_BROKEN( qvStringSplitChar( qvs, U'a', 0 ), "maxParts > 0" );
    EXPECT_BROKEN( qvStringScanInt( qvs, 0, -2, 10, nullptr, nullptr ), "maxChars >= -1" );
    EXPECT_BROKEN( qv___StringMakeRoom( qvs, 0, 0 ), "count > 0" );
    EXPECT_BROKEN(
        qv___StringMakeRoom( qvs, 3, QV_INT_MAX - 4 ),
        "QV_INT_ADD_OK( qvs->fspace + qvs->length + count, QV_STRING_BSPACE )" );
}

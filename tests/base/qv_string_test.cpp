#include "qv_test_support.h"

#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_vector.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_sort.h"
#include "qv/sys/qv_mem.h"

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

std::u32string part( const std::u32string &text, QV_INT offset, QV_INT count )
{
    return text.substr( size_t( offset ), size_t( count ) );
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
        result.push_back( utf8( qvStringFrom( qvVectorBacking( vec )[i] ) ) );

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

// What the letters of the walk become in upper case: most one, some two or three.
std::u32string upper( const std::u32string &text )
{
    std::u32string result;

    for( char32_t ch : text )
        result += ch == 0xDF    ? U"SS"
                  : ch == 0x390 ? U"\x399\x308\x301"
                                : std::u32string( 1, ch >= U'a' && ch <= U'z' ? ch - 32 : ch );

    return result;
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

    void renew( const std::u32string &content )
    {
        text   = content;
        shared = false;
        block  = !text.empty();
        fspace = bspace = block ? 32 : 0;
    }

    void insert( QV_INT at, const std::u32string &more )
    {
        std::u32string whole = part( text, 0, at ) + more + text.substr( size_t( at ) );

        if( more.empty() )
            return;

        if( shared )
            return renew( whole );

        makeRoom( at, size( more ) );
        text = whole;
    }

    // Frees places: the text has become `rest`.
    void shrink( const std::u32string &rest, QV_INT front )
    {
        if( rest == text )
            return;

        if( rest.empty() )
        {
            *this = Model();
            return;
        }

        settle( rest, front );
    }

    void settle( const std::u32string &rest, QV_INT front )
    {
        if( shared )
            renew( text );

        fspace += front;
        bspace += size( text ) - size( rest ) - front;
        text = rest;

        if( fspace > 64 || bspace > 64 )
            renew( text );
    }
};

// What is really there is bounded by what is declared, but for memory that came with the object.
bool holdsLittle( QV_STRING *qvs )
{
    return qvs->home() <= 512 && ( qvs->size() <= 4 * qvs->home() || qvs->size() <= 2 * allocated( qvs ) );
}

::testing::AssertionResult agrees( QV_STRING *qvs, const Model &model )
{
    if( qv::test::chars( qvs ) != model.text )
        return ::testing::AssertionFailure() << "text differs";

    if( qvs->fspace != model.fspace || qvs->bspace != model.bspace )
        return ::testing::AssertionFailure() << "free places are " << qvs->fspace << " and " << qvs->bspace
                                             << ", expected " << model.fspace << " and " << model.bspace;

    if( allocated( qvs ) != ( model.block ? 4 * ( model.fspace + size( model.text ) + model.bspace ) : 0 ) )
        return ::testing::AssertionFailure() << "declares " << allocated( qvs ) << " bytes";

    if( !holdsLittle( qvs ) )
        return ::testing::AssertionFailure() << qvs->size() << " bytes are allocated, and " << qvs->home();

    return ::testing::AssertionSuccess();
}
} // namespace

/* The whole of it ------------------------------------------------------------------------------------------------ */

// Every mutator in random order on one variable, with other holders coming and going, and with blocks of every origin.
// The text, the free places, both sizes and what the other holder sees have to be right after each step.
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
        const char32_t LETTERS[] = { U'a', U'z', U'#', 0xDF, 0x390, 0xDC00 };
        QV_INT         length    = size( model.text );
        QV_INT         offset    = below( length + 1 );
        QV_INT         count     = below( length - offset + 1 );
        QV_INT         place     = below( 3 ) == 0 ? offset : below( 2 ) * length;

        // Lengths on both sides of the bounds of 32 and 64 free places.
        std::u32string piece( size_t( below( 4 ) ? below( 12 ) : below( 140 ) ), LETTERS[below( 6 )] );

        switch( below( 18 ) )
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
            if( length > 900 )
                break;
            model.shared = model.shared || count > 0;
            qvStringInsertInner( qvs.at(), place, qvs, offset, count );
            model.insert( place, part( model.text, offset, count ) );
            break;
        case 6:
        {
            std::u32string head = part( model.text, 0, offset ), tail = model.text.substr( size_t( offset + count ) );

            if( length > 900 )
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
            model.shrink( std::u32string( model.text ).erase( size_t( offset ), size_t( count ) ),
                          offset == 0 ? count : 0 );
            break;
        case 8:
            count = below( 5 ) ? std::min( length, below( 40 ) ) : count;
            below( 2 ) ? ( qvStringDelLeading( qvs.at(), count ),
                           model.shrink( part( model.text, count, length - count ), count ) )
                       : ( qvStringDelTrailing( qvs.at(), count ),
                           model.shrink( part( model.text, 0, length - count ), 0 ) );
            break;
        case 9:
            if( below( 4 ) )
            {
                offset = std::min( offset, below( 20 ) );
                count  = std::max( QV_INT( 0 ), length - offset - below( 20 ) );
            }

            qvStringDelOuter( qvs.at(), offset, count );
            count == 0 ? model = Model() : ( model.shrink( part( model.text, offset, count ), offset ), model );
            break;
        case 10:
            qvStringSetCharAt( qvs.at(), offset - 1, U'!' );

            if( offset == 0 )
                model.insert( 0, U"!" );
            else if( model.shared )
                model.renew( model.text );

            if( offset > 0 )
                model.text[size_t( offset - 1 )] = U'!';
            break;
        case 11:
            if( below( 10 ) == 0 )
                qvStringClear( qvs.at() ), model = Model();
            break;
        case 12:
            holder       = Ref< QV_STRING >::share( qvs );
            held         = model.text;
            model.shared = true;
            break;
        case 13:
            // The variable is alone again unless it has the one empty String.
            holder.reset();
            model.shared = qvs.get() == theEmpty();
            break;
        case 14:
            qvStringToUpper( qvs.at() );

            if( length > 0 )
                model.renew( upper( model.text ) );
            break;
        case 15:
        {
            // A block without free places: embedded, taken over, or of decoded text.
            piece.resize( size_t( 1 + below( below( 4 ) ? 100 : 700 ) ), U'q' );
            size_t   bytes = piece.size() * sizeof( QV_CHAR );
            QV_CHAR *block = static_cast< QV_CHAR * >( memcpy( qvMemAlloc( QV_INT( bytes ) ), piece.data(), bytes ) );

            qvs = below( 2 ) ? text( piece ) : Ref< QV_STRING >( qvStringCreateFromCharsUse( block, size( piece ) ) );
            model.renew( piece );
            model.fspace = model.bspace = 0;

            if( qvStringBacking( qvs ) != block )
                qvMemFree( block );
            break;
        }
        case 16:
            qvs.reset( qvStringCreateFromOuter( qvs, offset, count ) );
            model.renew( std::u32string( model.text ).erase( size_t( offset ), size_t( count ) ) );
            break;
        case 17:
        {
            // Deletes single surrogates, maybe all there is.
            std::u32string clean = model.text;
            std::erase( clean, char32_t( 0xDC00 ) );
            qvStringSanitize( qvs.at() );

            if( length > 0 )
                model.settle( clean, 0 );
            break;
        }
        }

        ASSERT_TRUE( agrees( qvs, model ) ) << "step " << step;
        ASSERT_EQ( model.shared, references( qvs.get() ) > 1 ) << "step " << step;
        ASSERT_TRUE( !holder || qv::test::chars( holder ) == held ) << "step " << step;
        ASSERT_EQ( 0, theEmpty()->length );
    }
}

TEST( String, EmptyStrings )
{
    Ref< QV_STRING > empty( qvStringCreate() ), some = text( " \t" );

    // With nothing in it the block stays with the caller.
    QV_CHAR block[1];
    EXPECT_EQ( empty.get(), text( "" ).get() );
    EXPECT_EQ( empty.get(), Ref< QV_STRING >( qvStringCreateFromCharsCopy( nullptr, 0 ) ).get() );
    EXPECT_EQ( empty.get(), Ref< QV_STRING >( qvStringCreateFromCharsUse( block, 0 ) ).get() );
    EXPECT_NE( empty.get(), Ref< QV_STRING >( qvStringCreateFromInner( some, 1, 0 ) ).get() );

    qvStringTrim( some.at() );
    EXPECT_EQ( empty.get(), some.get() );
    qvStringAppendChars( some.at(), nullptr, 0 );
    qvStringToUpper( some.at() );
    EXPECT_EQ( empty.get(), some.get() );
}

/* Forms ---------------------------------------------------------------------------------------------------------- */

namespace
{
template< class Function >
void withArgList( Function function, ... )
{
    va_list argList;
    va_start( argList, function );
    function( &argList );
    va_end( argList );
}
} // namespace

// Every form at every place against the plain insertion of what it stands for.
TEST( String, EveryFormInsertsPrependsAndAppends )
{
    Ref< QV_STRING >    src = text( "abcde" ), format = text( "<%i>" ), sep = text( ", " );
    Ref< QV_BOXED_INT > boxed( qvBoxedIntCreate( -7 ) );

#define PLACES( Suffix, expected, call, ... )                                                                          \
    EXPECT_EQ(                                                                                                         \
        std::string( "1" expected "23" ),                                                                              \
        changed( "123", [&]( QV_STRING **qvs ) { call( qvStringInsert##Suffix( qvs, 1, __VA_ARGS__ ) ); } ) );         \
    EXPECT_EQ(                                                                                                         \
        std::string( expected "123" ),                                                                                 \
        changed( "123", [&]( QV_STRING **qvs ) { call( qvStringPrepend##Suffix( qvs, __VA_ARGS__ ) ); } ) );           \
    EXPECT_EQ(                                                                                                         \
        std::string( "123" expected ),                                                                                 \
        changed( "123", [&]( QV_STRING **qvs ) { call( qvStringAppend##Suffix( qvs, __VA_ARGS__ ) ); } ) );
#define PLAIN( ... )    __VA_ARGS__
#define ARG_LIST( ... ) withArgList( [&]( va_list *argList ) { __VA_ARGS__; }, QV_INT { 42 } )

    PLACES( , "abcde", PLAIN, src )
    PLACES( Leading, "ab", PLAIN, src, 2 )
    PLACES( Trailing, "de", PLAIN, src, 2 )
    PLACES( Inner, "cd", PLAIN, src, 2, 2 )
    PLACES( Outer, "abe", PLAIN, src, 2, 2 )
    PLACES( Chars, "xy", PLAIN, U"xyz", 2 )
    PLACES( Char, "\xE2\x82\xAC", PLAIN, 0x20AC )
    PLACES( Cstr, "\xC3\xA9t", PLAIN, "\xC3\xA9t\xC3\xA9", 3 )
    PLACES( Wcstr, "w\xC3\xA9", PLAIN, L"w\xE9", -1 )
    PLACES( Obj, "-7", PLAIN, qvBoxedIntObj( boxed ) )
    PLACES( Format, "<42>", PLAIN, format, QV_INT { 42 } )
    PLACES( FormatCstr, "<42>", PLAIN, "<%i>...", 4, QV_INT { 42 } )
    PLACES( FormatWcstr, "<42>", PLAIN, L"<%i>", -1, QV_INT { 42 } )
    PLACES( FormatArgList, "<42>", ARG_LIST, format, argList )
    PLACES( FormatCstrArgList, "<42>", ARG_LIST, "<%i>", -1, argList )
    PLACES( FormatWcstrArgList, "<42>", ARG_LIST, L"<%i>", -1, argList )

    EXPECT_EQ( "<42>", take( qvStringCreateFromFormat( format, QV_INT { 42 } ) ) );
    EXPECT_EQ( "<42>", take( qvStringCreateFromFormatCstr( "<%i>", -1, QV_INT { 42 } ) ) );
    EXPECT_EQ( "<42>", take( qvStringCreateFromFormatWcstr( L"<%i>", -1, QV_INT { 42 } ) ) );
    EXPECT_EQ( "ab", take( qvStringCreateFromLeading( src, 2 ) ) );
    EXPECT_EQ( "de", take( qvStringCreateFromTrailing( src, 2 ) ) );

#define DELIMITED( Suffix, ... )                                                                                       \
    for( std::string before : { "", "a" } )                                                                            \
    {                                                                                                                  \
        auto append  = [&]( QV_STRING **qvs ) { qvStringDelimitedAppend##Suffix( qvs, __VA_ARGS__ ); };                \
        auto prepend = [&]( QV_STRING **qvs ) { qvStringDelimitedPrepend##Suffix( qvs, __VA_ARGS__ ); };               \
        EXPECT_EQ( before.empty() ? "abcde" : "a, abcde", changed( before, append ) );                                 \
        EXPECT_EQ( before.empty() ? "abcde" : "abcde, a", changed( before, prepend ) );                                \
    }

    DELIMITED( , src, sep )
    DELIMITED( Cstr, "abcde", -1, ", ;", 2 )
    DELIMITED( CstrSource, "abcdef", 5, sep )
    DELIMITED( CstrDelimiter, src, ", ", -1 )
    DELIMITED( Wcstr, L"abcdef", 5, L", ", -1 )
    DELIMITED( WcstrSource, L"abcde", -1, sep )
    DELIMITED( WcstrDelimiter, src, L", ", 2 )

    // One character between, and the String itself as one of the texts, which is read as it was.
    auto appended  = [&]( QV_STRING **qvs ) { qvStringDelimitedAppendCharDelimiter( qvs, *qvs, U';' ); };
    auto prepended = [&]( QV_STRING **qvs ) { qvStringDelimitedPrependCharDelimiter( qvs, src, U';' ); };
    auto bothTexts = []( QV_STRING **qvs ) { qvStringDelimitedPrepend( qvs, *qvs, *qvs ); };

    EXPECT_EQ( "a;a", changed( "a", appended ) );
    EXPECT_EQ( "abcde;a", changed( "a", prepended ) );
    EXPECT_EQ( "ababab", changed( "ab", bothTexts ) );

    // Its own block may move while characters of that go in.
    auto ownChars = []( QV_STRING **qvs ) { qvStringInsertChars( qvs, 1, qvStringBacking( *qvs ), 300 ); };
    EXPECT_EQ( std::string( 600, 'a' ), changed( std::string( 300, 'a' ), ownChars ) );
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
    EXPECT_EQ( "\xC3\xA4\xC3\xB6@[`{\xCF\x89", changed( "\xC3\x84\xC3\x96@[`{\xCE\xA9", qvStringToLower ) );
    EXPECT_EQ( "@[`{", changed( "@[`{", qvStringToUpper ) );
    EXPECT_EQ( "ss\xCF\x83", changed( "\xC3\x9F\xCF\x82", qvStringToCaseFold ) );

    // However much longer a text becomes, the free places that it has afterwards are there.
    for( char32_t ch : { char32_t( 0xDF ), char32_t( 0x390 ) } )
        for( size_t length = 1; length <= 200; length++ )
            for( size_t plain : { size_t( 0 ), length / 2, length - 1 } )
            {
                std::u32string   all = std::u32string( plain, U'x' ) + std::u32string( length - plain, ch );
                Ref< QV_STRING > qvs = text( all );
                qvStringToUpper( qvs.at() );
                ASSERT_EQ( size( upper( all ) ) + 64, allocated( qvs.get() ) / 4 );

                for( int i = 0; i < 32; i++ )
                {
                    qvStringAppendChar( qvs.at(), U'>' );
                    qvStringPrependChar( qvs.at(), U'<' );
                }

                ASSERT_EQ( std::u32string( 32, U'<' ) + upper( all ) + std::u32string( 32, U'>' ),
                           qv::test::chars( qvs ) );
            }
}

// A long text that is cut down gives its memory back, and goes where it began, if it began in the object's own memory.
TEST( String, MemoryIsGivenBack )
{
    for( QV_INT start : { 70, 500, 600 } )
    {
        Ref< QV_STRING > qvs( qvStringCreateFrom( text( std::u32string( size_t( start ), U'a' ) ) ) );

        while( qvs->length < 250000 )
            qvStringAppendChars( qvs.at(), U"bcdefghijklmnopqrstuvwxyzbcdefghijklmnopqrstuvwxyz", 50 );

        qvStringDelOuter( qvs.at(), 100000, 3 );
        EXPECT_LE( qvs->size(), std::max< QV_INT >( 4 * qvs->home(), 2 * 4 * ( 3 + 64 ) ) );
        EXPECT_EQ( qvs->home() > 0, qvs->size() == 4 * qvs->home() );
    }
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
            EXPECT_EQ( a.starts_with( b ), qvStringBeginsWith( text( a ), text( b ) ) );
            EXPECT_EQ( a.ends_with( b ), qvStringEndsWithChars( text( a ), b.data(), size( b ) ) );
        }

    Ref< QV_STRING > qvs = text( "\xC3\x89t\xC3\xA9" );
    EXPECT_TRUE( qvStringEqualsCstr( qvs, "\xC3\x89t\xC3\xA9", -1 ) );
    EXPECT_FALSE( qvStringEqualsCstr( qvs, "\xC3\x89t\xC3\xA9", 3 ) );
    EXPECT_TRUE( qvStringEqualsWcstr( qvs, L"\xC9t\xE9", 3 ) );
    EXPECT_FALSE( qvStringEqualsChar( qvs, 0xC9 ) );

    EXPECT_TRUE( qvStringEqualsCaseFold( qvs, text( "\xC3\xA9T\xC3\x89" ) ) );
    EXPECT_TRUE( qvStringEqualsCaseFoldCstr( qvs, "\xC3\xA9T\xC3\x89", -1 ) );
    EXPECT_TRUE( qvStringEqualsCaseFoldWcstr( qvs, L"\xE9T\xC9", -1 ) );
    EXPECT_TRUE( qvStringEqualsCharsCaseFold( text( "MASSE" ), U"ma\xDF" U"e", 4 ) );
    EXPECT_TRUE( qvStringEqualsCharCaseFold( text( "ss" ), 0xDF ) );
    EXPECT_EQ( -1, qvStringCompareCaseFold( text( "a" ), text( "B" ) ) );

    EXPECT_TRUE( qvStringBeginsWithCstr( qvs, "\xC3\x89x", 2 ) );
    EXPECT_TRUE( qvStringBeginsWithWcstr( qvs, L"\xC9t", -1 ) );
    EXPECT_TRUE( qvStringBeginsWithChar( qvs, 0xC9 ) );
    EXPECT_FALSE( qvStringBeginsWithChars( qvs, U"t", 1 ) );
    EXPECT_TRUE( qvStringEndsWith( qvs, qvs ) );
    EXPECT_TRUE( qvStringEndsWithCstr( qvs, "t\xC3\xA9", -1 ) );
    EXPECT_FALSE( qvStringEndsWithWcstr( qvs, L"t", -1 ) );
    EXPECT_FALSE( qvStringEndsWithChar( text( "" ), U'b' ) );
}

// All searches on random texts of few letters, so that there are many near misses, beside std::u32string; and what
// splitting gives, put together again.
TEST( String, SearchesAndSplitsAgreeWithTheModel )
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

        QV_INT           limit = random() % 2 ? -1 : QV_INT( 1 + random() % 4 ), pieces = 1;
        Ref< QV_VECTOR > split( qvStringSplit( qvs, sub, limit ) );
        std::u32string   joined;

        for( QV_INT i = 0; i < qvVectorLength( split ); i++ )
            joined += ( i > 0 ? needle : U"" ) + qv::test::chars( qvStringFrom( qvVectorBacking( split )[i] ) );

        for( size_t at = 0; at < hay.size() && pieces != limit && ( at = hay.find( needle, at ) ) < hay.size();
             pieces++ )
            at += needle.size();

        ASSERT_EQ( hay, joined );
        ASSERT_EQ( pieces, qvVectorLength( split ) );
    }

    Ref< QV_STRING > qvs = text( "one two one" );
    EXPECT_EQ( 8, qvStringFindCstr( qvs, 1, "one", -1 ) );
    EXPECT_EQ( 4, qvStringFindWcstr( qvs, 0, L"two", -1 ) );
    EXPECT_EQ( -1, qvStringFindChars( qvs, 9, U"one", 3 ) );
    EXPECT_EQ( 0, qvStringFindFromRightCstr( qvs, 7, "one", -1 ) );
    EXPECT_EQ( 8, qvStringFindFromRightWcstr( qvs, 8, L"one", -1 ) );
    EXPECT_EQ( -1, qvStringFindCharsFromRight( text( "on" ), -1, U"one", 3 ) );

    qvs = text( "x--y-z" );
    EXPECT_THAT( parts( qvStringSplitCstr( qvs, "--", -1, -1 ) ), ElementsAre( "x", "y-z" ) );
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

    Ref< QV_VECTOR > vec( qvStringSplitChar( text( whole ), U',', -1 ) );
    ASSERT_EQ( QV_INT( model.size() ), qvVectorLength( vec ) );

    for( size_t i = 0; i < model.size(); i++ )
        live[i % 2].emplace_back( qvStringFrom( qvVectorObjAt( vec, QV_INT( i ) ) ) );

    vec.reset();

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
            size_t                i   = own() % live[half].size();
            const std::u32string &was = model[i * 2 + half];

            if( live[half][i] )
            {
                EXPECT_EQ( was, qv::test::chars( live[half][i] ).substr( 0, was.size() ) );
            }

            live[half][i].reset();
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

            for( size_t count : { 1, 5, 8, 9, 31, 32, 33, 100 } )
            {
                QV_INT           before = qvSortObjects( qvStringSort() );
                Ref< QV_VECTOR > vec( qvStringSplitChar( text( std::string( count, ';' ) + "last" ), U';', -1 ) );
                EXPECT_EQ( before + 1, qvSortObjects( qvStringSort() ) ); // all but the last are the empty one
                vec.reset( qvStringSplitWhitespace( text( std::string( count, 'a' ).append( " b" ) ), -1 ) );
                EXPECT_EQ( before + 2, qvSortObjects( qvStringSort() ) );
            }

            qvRuntimeShutdown();
        } );
}

/* Reading and converting ----------------------------------------------------------------------------------------- */

TEST( String, ScansValuesInARange )
{
    Ref< QV_STRING > qvs     = text( "x12345 1.5 true" );
    QV_INT           integer = 0, consumed = 0;
    QV_REAL          real    = 0;
    QV_BOOL          truth   = QV_FALSE;

    EXPECT_TRUE( qvStringScanInt( qvs, 1, 3, 10, &integer, &consumed ) );
    EXPECT_TRUE( qvStringScanReal( qvs, 7, 100, 10, &real, nullptr ) );
    EXPECT_TRUE( qvStringScanBool( qvs, 11, -1, QV_FALSE, &truth, nullptr ) );
    EXPECT_THAT( ( std::vector< double > { double( integer ), double( consumed ), real, double( truth ) } ),
                 ElementsAre( 123, 3, 1.5, 1 ) );
    EXPECT_FALSE( qvStringScanBool( qvs, 15, -1, QV_TRUE, &truth, nullptr ) );
}

TEST( String, ConvertsFromAndToOutsideText )
{
    Ref< QV_STRING > qvs = text( "\xC3\xA9t" ), empty( qvStringCreate() );
    QV_INT           length;

    auto given = [&]( auto *block )
    {
        std::basic_string< std::remove_pointer_t< decltype( block ) > > result( block, size_t( length ) );
        qvMemFree( block );
        return result;
    };

    EXPECT_EQ( std::string( "\xC3\xA9t\0", 4 ), given( qvStringConvertToCstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( "?t", given( qvStringConvertToAscii( qvs, QV_FALSE, &length ) ) );
    EXPECT_EQ( std::wstring( L"\xE9t\0", 3 ), given( qvStringConvertToWcstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( std::string( 1, '\0' ), given( qvStringConvertToAscii( empty, QV_TRUE, &length ) ) );
    EXPECT_EQ( nullptr, qvStringConvertToUtf8( empty, QV_FALSE, &length ) );
    EXPECT_EQ( 0, length );
    qvMemFree( qvStringConvertToUtf8( qvs, QV_FALSE, nullptr ) );

    EXPECT_EQ( "\xEF\xBF\xBD" "a", take( qvStringCreateFromAscii( "\xE9" "a", -1 ) ) );
    EXPECT_EQ( "\xC3\xA9", take( qvStringCreateFromWcstr( L"\xE9", -1 ) ) );
    EXPECT_EQ( qvs.get(), Ref< QV_STRING >( qvStringToString( qvs ) ).get() );

    // Long text is taken as ASCII first: another character turns up at every place of the vectors and behind them.
    for( size_t bytes : { 31, 32, 97, 130, 511, 513, 700 } )
        for( size_t at = bytes; at-- > 0; at = at > 100 ? at - 37 : at )
        {
            std::string utf8 = std::string( at, 'a' ) + "\xE4\xB8\xAD" + std::string( bytes - at - 1, 'z' );

            Ref< QV_STRING > decoded( qvStringCreateFromUtf8( utf8.data(), QV_INT( utf8.size() ) ) );
            ASSERT_EQ( std::u32string( at, U'a' ) + U"\x4E2D" + std::u32string( bytes - at - 1, U'z' ),
                       qv::test::chars( decoded ) );
            ASSERT_EQ( QV_INT( bytes ) * 4, allocated( decoded.get() ) );
            ASSERT_EQ( utf8 + '\0', given( qvStringConvertToUtf8( decoded, QV_TRUE, &length ) ) );
            ASSERT_EQ( utf8, given( qvStringConvertToUtf8( decoded, QV_FALSE, &length ) ) );
        }

    // Of what is cut off, nothing may be left.
    EXPECT_EQ( 599, qvStringLength( text( std::string( 600, '\xE4' ) ) ) );
}

/* Contracts ------------------------------------------------------------------------------------------------------ */

TEST( String, BrokenContracts )
{
    Ref< QV_STRING > qvs = text( "abc" ), empty( qvStringCreate() ), none;
    const QV_CHAR    BAD = 0x110000;

    EXPECT_BROKEN( qvStringAppend( none.at(), qvs ), "*dest" );
    EXPECT_BROKEN( qvStringAppendChar( qvs.at(), BAD ), "qvCharsAllOk( chs, chsLength )" );
    EXPECT_BROKEN( qvStringAppendInner( qvs.at(), qvs, 1, QV_INT_MAX ), "QV_INT_ADD_OK( offset, count )" );
    EXPECT_BROKEN( qvStringAppendInner( qvs.at(), qvs, 1, 3 ), "offset + count <= src->length" );
    EXPECT_BROKEN( qvStringAppendTrailing( qvs.at(), qvs, 4 ), "count <= src->length" );
    EXPECT_BROKEN( qvStringCreateFromCharsCopy( &BAD, 1 ), "qvCharsAllOk( src, srcLength )" );
    EXPECT_BROKEN( qvStringDelTrailing( qvs.at(), 4 ), "count <= (*qvs)->length" );
    EXPECT_BROKEN( qvStringFindCharFromRight( qvs, -2, U'a' ), "offset >= 0 || offset == -1" );
    EXPECT_BROKEN( qvStringBeginsWithChars( qvs, &BAD, 1 ), "qvCharsAllOk( sub, subLen )" );
    EXPECT_BROKEN( qvStringSplit( qvs, empty, -1 ), "qvStringLength( sep )" );
    EXPECT_BROKEN( qvStringSplitChar( qvs, U'a', 0 ), "maxParts > 0" );
    EXPECT_BROKEN(
        qv___StringMakeRoom( qvs, 3, QV_INT_MAX - 4 ),
        "QV_INT_ADD_OK( qvs->fspace + qvs->length + count, QV_STRING_BSPACE )" );
}

#include "qv_test_call.h"
#include "qv_test_stream.h"
#include "qv_test_support.h"

#include "qv/base/qv_string_private.h"
#include "qv/runtime/qv_obj_private.h"
#include "qv/qv.h"

#include <malloc.h>
#include <random>

using qv::Ref;
using namespace qv::test;

TEST( String, EmptyStringsAreOneObject )
{
    Ref< QV_STRING > empty( qvStringCreate() ), some = text( " \t" );
    QV_CHAR          block[1];                                                     // with nothing in it
    EXPECT_EQ( empty.get(), Ref( qvStringCreateFromCharsUse( block, 0 ) ).get() ); // it stays with the caller
    qvStringTrim( some.at() );
    qvStringToUpper( some.at() );
    EXPECT_EQ( empty.get(), some.get() );
}

TEST( String, GoesIntoItselfAsTextAndDelimiter )
{
    for( auto *add : { qvStringDelimitedPrepend, qvStringDelimitedAppend } )
    {
        Ref< QV_STRING > qvs = text( "ab" );
        add( qvs.at(), qvs, text( ", " ) );
        add( qvs.at(), text( "c" ), qvs );
        EXPECT_EQ( add == qvStringDelimitedAppend ? "ab, abab, abc" : "cab, abab, ab", utf8( qvs ) );
    }
}

TEST( String, SplitsAtRunsOfWhiteSpace )
{
    auto split = []( const char *qvs, QV_INT maxParts )
    { return textOf( Ref( qvStringSplitWhitespace( text( qvs ), maxParts ) ).get() ); };

    EXPECT_EQ( "<>", split( " \t ", 3 ) );
    EXPECT_EQ( "<a, b, c>", split( " a \t b\u3000c ", -1 ) );
    EXPECT_EQ( "<a,  b>", split( "a  b", 2 ) );
    EXPECT_EQ( "<a, b  c>", split( " a b  c ", 2 ) );
    EXPECT_EQ( "<a b>", split( " a b ", 1 ) );
}

// Many parts share memory. Each stays what it was whichever of the others go, on which thread they do, and whether they
// have outgrown the memory.
TEST( String, PartsOutliveOneAnother )
{
    auto        part = []( size_t i ) { return std::string( i == 7 ? 600 : i * 17 % 40, char( 'a' + i % 26 ) ); };
    std::string whole;

    for( size_t i = 0; i < 300; i++ )
        whole += part( i ) + ",";

    Ref< QV_VECTOR >                vec( qvStringSplitChar( text( whole ), U',', -1 ) );
    std::vector< Ref< QV_STRING > > halves[2];

    for( QV_INT i = 0; i < 300; i++ )
        halves[i % 2].emplace_back( qvStringFrom( qvVectorObjAt( vec, i ) ) );

    vec.reset();
    onThreads(
        2,
        [&]( int half )
        {
            for( size_t step = 0; step < 150; step++ )
            {
                size_t           i        = step * 7 % 150;
                std::string      expected = part( 2 * i + half );
                Ref< QV_STRING > qvs      = std::move( halves[half][i] );
                EXPECT_EQ( QV_INT( expected.size() ) * 4, allocated( qvs.get() ) );
                qvStringAppendChars( qvs.at(), U"123456789", step % 4 ? 0 : 9 );
                EXPECT_EQ( expected, utf8( qvs ).substr( 0, expected.size() ) );
            }
        } );
    settle();
}

// A text of a document, which has no fields for a change, and of which the caller holds all references.
static Ref< QV_STRING > fixedText( const char *content )
{
    Ref< QV_STORE > store( qvStoreCreate() );
    qvStoreSetValueCstr( store.at(), "a", -1, text( content ) );
    store.reset( qvStoreTryDecodeFromBuffer( Ref( qvStoreEncodeToBuffer( store ) ) ) );
    return Ref( qvStoreValueCstr( store, "a", -1 ) );
}

// It is as good as a String of the same characters without free places: what changes either gives both the same text and
// sizes, and leaves them their numbers and logs, also where another String takes its place.
TEST( String, FixedOnesChangeAsThoseWithoutFreePlaces )
{
    void ( *const changes[] )( QV_STRING ** ) = {
        []( QV_STRING **qvs ) { qvStringAppendChar( qvs, U'x' ); },
        []( QV_STRING **qvs ) { qvStringAppend( qvs, text( "more" ) ); },
        []( QV_STRING **qvs ) { qvStringAppend( qvs, *qvs ); },
        []( QV_STRING **qvs ) { qvStringAppendChars( qvs, qvStringBacking( *qvs ) + 1, 2 ); },
        []( QV_STRING **qvs ) { qvStringAppendFormatCstr( qvs, "%i", -1, QV_INT( 7 ) ); },
        []( QV_STRING **qvs )
        {
            *qvStringAppendRoom( qvs, 9 ) = U'x';
            qvStringAppendWritten( qvs, 1 );
        },
        []( QV_STRING **qvs ) { qvStringAppendWritten( qvs, 0 ); },
        []( QV_STRING **qvs ) { qvStringPrependCstr( qvs, "more", -1 ); },
        []( QV_STRING **qvs ) { qvStringInsertChar( qvs, 3, U'x' ); },
        []( QV_STRING **qvs ) { qvStringSetCharAt( qvs, 3, U'x' ); },
        []( QV_STRING **qvs ) { qvStringDelLeading( qvs, 1 ); },
        []( QV_STRING **qvs ) { qvStringDelInner( qvs, 2, 2 ); },
        []( QV_STRING **qvs ) { qvStringDelOuter( qvs, 2, 2 ); },
        []( QV_STRING **qvs ) { qvStringTrim( qvs ); },
        []( QV_STRING **qvs ) { qvStringSanitize( qvs ); },
        []( QV_STRING **qvs ) { qvStringToUpper( qvs ); },
        []( QV_STRING **qvs ) { qvStringNormalizeNFD( qvs ); },
        []( QV_STRING **qvs )
        {
            Ref buffered( qvBufferByteSourceCreate( buffer( "from outside" ) ) );
            Ref source(
                qvCharsetCreateCharSource( Ref( qvBufferByteSourceByteSource( buffered ) ), QV_CHARSET_UTF_8, 0 ) );
            EXPECT_EQ( 5, qvCharSourceRead( source, qvs, 5 ) );
        } };

    for( auto *change : changes )
        for( const char *content : { " k\303\266ln ", " a text of some characters  " } )
        {
            Ref< QV_STRING > fixed = fixedText( content ), same = text( content );

            EXPECT_TRUE( qv::isFixed( fixed ) && !qv::isFixed( same ) );
            EXPECT_EQ( allocated( same.get() ), allocated( fixed.get() ) );
            EXPECT_EQ(
                qv___ObjDbgObjectSize( qv::obj( same.get() ) ), qv___ObjDbgObjectSize( qv::obj( fixed.get() ) ) );

            QV_STRING *was    = same;
            QV_INT     number = qv___ObjUnique( qv::obj( fixed.get() ) );
            qv___ObjLogAppend( qv::obj( fixed.get() ), text( "a line" ) );

            change( fixed.at() );
            change( same.at() );
            EXPECT_EQ( utf8( same ), utf8( fixed ) );
            EXPECT_EQ( allocated( same.get() ), allocated( fixed.get() ) );

            if( same.get() == was )
            {
                EXPECT_EQ( number, qv___ObjUnique( qv::obj( fixed.get() ) ) );
                EXPECT_TRUE( Ref< QV_VECTOR >( qv___ObjLog( qv::obj( fixed.get() ) ) ) );
            }
        }

#ifndef NDEBUG
    EXPECT_DEATH( qv___StringMakeRoom( fixedText( "text" ), 1, 1 ), "isFixed" );
    EXPECT_DEATH( qv___StringCompact( fixedText( "text" ) ), "isFixed" );
#endif
}

TEST( String, PartsAreCountedWhereNoListsAreKept )
{
    withoutLibrary(
        []
        {
            qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr );

            for( size_t count : { 1, 8, 9, 31, 32, 33, 100 } )
            {
                QV_INT           before = qvSortObjects( qvStringSort() );
                Ref< QV_VECTOR > vec( qvStringSplitChar( text( std::string( count, ';' ) + "last" ), U';', -1 ) );
                EXPECT_EQ( before + 1, qvSortObjects( qvStringSort() ) ); // all but the last are the empty one
            }

            qvRuntimeShutdown();
        } );
}

// A block that has left the memory of its String for a larger one is freed with the String, wherever it has been since,
// and so is a log. With AddressSanitizer the end of the program tells.
TEST( String, ABlockThatLeftItsStringEndsWithIt )
{
    auto body = []
    {
        Ref< QV_STRING > line( text( std::string( 1000, 'x' ) ) );
        size_t           before = mallinfo2().uordblks;

        for( int i = 0; i < 300; i++ )
        {
            Ref< QV_DICT >   dict( qvDictCreate() );
            Ref< QV_STRING > qvs( qvStringCreateFrom( text( "24 characters with spaces" ) ) );

            if( i % 2 )
                qv___ObjLogAppend( qv::obj( qvs.get() ), line );
            else
                qvStringInsert( qvs.at(), i % 4 * 12, line );

            Ref< QV_STRING > other = Ref< QV_STRING >::share( i % 3 ? nullptr : qvs.get() );

            if( i % 5 == 0 )
                qvStringDelInner( qvs.at(), 0, qvStringLength( qvs ) - i % 4 * 8 );

            if( i % 7 < 4 )
                qvDictSetIntKey( dict.at(), 1, qv::obj( qvs.get() ) );
        }

        EXPECT_LT( mallinfo2().uordblks, before + 100000 );
    };

    withoutLibrary(
        [body]
        {
            qvRuntimeStartup( QV_RUNTIME_FLAG_MINIMAL, nullptr, nullptr, nullptr, nullptr ); // without lists
            body();
            qvRuntimeShutdown();
        } );
}

// Room for more and less than is written, in texts with and without a block, of their own and shared.
TEST( String, IsWrittenInPlace )
{
    const std::u32string DIGITS = U"0123456789";
    Ref< QV_STRING >     qvs( qvStringCreate() ), other;
    std::u32string       all, before;

    auto content = []( QV_STRING *of )
    { return std::u32string( qvStringBacking( of ), size_t( qvStringLength( of ) ) ); };

    for( size_t i = 0; i < 200; i++ )
    {
        const size_t room = 1 + i * i % 700, written = std::min( i % 3 ? room : 0, i % 11 );

        if( i % 5 == 0 )
            other = Ref< QV_STRING >::share( qvs ), before = all;

        QV_CHAR *to = qvStringAppendRoom( qvs.at(), QV_INT( room ) );
        std::copy_n( DIGITS.begin(), written, to );

        if( i % 7 == 0 ) // now two hold it, of whom one writes on
            other = Ref< QV_STRING >::share( qvs ), before = all;

        qvStringAppendWritten( qvs.at(), QV_INT( written ) );
        all += DIGITS.substr( 0, written );
        ASSERT_EQ( all, content( qvs ) );
        ASSERT_EQ( before, content( other ) );
        ASSERT_GE( ( 64 + QV_INT( all.size() ) + 64 ) * 4, allocated( qvs.get() ) );
    }

#ifndef NDEBUG
    // A change in between is found.
    EXPECT_DEATH(
        ( *qvStringAppendRoom( qvs.at(), 9 ) = U'x', qvStringAppendChar( qvs.at(), U'y' ) ),
        "free memory is as it was left" );
#endif
}

// Long texts that repeat themselves, some with a fault, among others alike: what is equal for long before it differs.
TEST( String, FindsInTextsThatRepeatThemselves )
{
    std::mt19937 random( 11 );

    for( int step = 0; step < 4000; step++ )
    {
        std::u32string period, hay, needle;

        for( size_t left = 1 + random() % ( step % 3 ? 3 : 30 ); left > 0; left-- )
            period += random() % 3 ? U'a' : U'b';

        auto run = [&]( size_t length )
        {
            std::u32string result;

            for( size_t start = random() % period.size(); result.size() < length; start++ )
                result += period[start % period.size()];

            return result;
        };

        // Runs about as long as the needle, with one character between them.
        for( needle = run( 9 + random() % 300 ); hay.size() < 1500; )
            hay += run( needle.size() + period.size() - 1 - random() % 8 ) + char32_t( U'a' + random() % 2 );

        if( step % 4 == 0 )
            needle[random() % needle.size()] ^= 3;

        auto qvs = text( hay ), sub = text( needle );
        ASSERT_EQ( ptrdiff_t( hay.find( needle ) ), qvStringFind( qvs, 0, sub ) ) << step;
        ASSERT_EQ( ptrdiff_t( hay.rfind( needle ) ), qvStringFindFromRight( qvs, -1, sub ) ) << step;
    }

    // By the product of the two lengths, these would be half a million times half a million comparisons.
    std::u32string hay( 1 << 20, U'a' ), needle( 1 << 19, U'a' );
    needle[1 << 18] = U'b';
    auto qvs = text( hay ), sub = text( needle );
    EXPECT_EQ( -1, qvStringFind( qvs, 0, sub ) );
    EXPECT_EQ( -1, qvStringFindFromRight( qvs, -1, sub ) );
}

// Beside a model, of texts in which matches touch one another, stand at both ends, and end and begin the sixteen characters
// that are compared at once; the text itself may be what is sought or put in.
TEST( String, ReplacesAsAModelDoes )
{
    std::mt19937 random( 7 );
    auto         some = [&]( size_t most )
    {
        std::u32string result( random() % ( most + 1 ), U'a' );

        for( char32_t &ch : result )
            ch = random() % 4 ? U'a' : U'\x1F40D';

        return result;
    };

    for( int step = 0; step < 20000; step++ )
    {
        std::u32string before = some( 70 ), sought = some( 3 ) + U'a', replacement = some( step % 8 ? 3 : 20 ),
                       expected;
        QV_INT most = step % 3 ? -1 : QV_INT( random() % 5 ), count = 0;

        if( step % 50 == 0 )
            replacement = before;

        for( size_t at = 0, from = 0;; from = at + sought.size(), count++ )
        {
            at = count == most ? before.npos : before.find( sought, from );
            expected.append( before, from, at - from ).append( at < before.npos ? replacement : U"" );

            if( at == before.npos )
                break;
        }

        auto by    = text( replacement );
        auto held  = text( before );
        auto qvs   = Ref< QV_STRING >::share( held );
        bool isOne = sought.size() == 1 && replacement.size() == 1 && step % 2;

        if( replacement == before )
            by = Ref< QV_STRING >::share( held );

        ASSERT_EQ(
            count, isOne ? qvStringReplaceChar( qvs.at(), sought[0], replacement[0], most )
                         : qvStringReplace( qvs.at(), text( sought ), by, most ) );
        ASSERT_TRUE( qvStringEqualsChars( qvs, expected.data(), QV_INT( expected.size() ) ) ) << step;
        ASSERT_TRUE( qvStringEqualsChars( held, before.data(), QV_INT( before.size() ) ) ) << step;
        ASSERT_TRUE( count > 0 || qvs == held ) << step;
    }

    Ref qvs = text( "a, b" );
    EXPECT_EQ( 1, qvStringReplace( qvs.at(), qvs, text( "a" ), -1 ) );
    EXPECT_EQ( 1, qvStringReplaceCstr( qvs.at(), "a", -1, "\xC3\xA4", -1, 1 ) );
    EXPECT_EQ( "\xC3\xA4", utf8( qvs ) );
    EXPECT_EQ( 1, qvStringReplaceCstr( qvs.at(), "\xC3\xA4", -1, "", 0, -1 ) );
    EXPECT_EQ( qvs, Ref( qvStringCreate() ) );
}

TEST( String, ConvertsFromAndToOutsideText )
{
    Ref< QV_STRING > qvs = text( "\u00E9t" ), empty( qvStringCreate() );
    QV_INT           length;

    auto given = [&]( auto *block )
    {
        std::basic_string< std::remove_pointer_t< decltype( block ) > > result( block, size_t( length ) );
        qvMemFree( block );
        return result;
    };

    EXPECT_EQ( std::string( "\u00E9t\0", 4 ), given( qvStringConvertToCstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( "?t", given( qvStringConvertToAscii( qvs, QV_FALSE, &length ) ) );
    EXPECT_EQ( std::wstring( L"\xE9t\0", 3 ), given( qvStringConvertToWcstr( qvs, QV_TRUE, &length ) ) );
    EXPECT_EQ( std::string( 1, '\0' ), given( qvStringConvertToAscii( empty, QV_TRUE, &length ) ) );
    EXPECT_EQ( nullptr, qvStringConvertToUtf8( empty, QV_FALSE, &length ) );
    EXPECT_EQ( 0, length );
    EXPECT_EQ( "\uFFFDt", take( qvStringCreateFromAscii( "\xE9t", -1 ) ) );
    EXPECT_EQ( "\u00E9", take( qvStringCreateFromWcstr( L"\xE9", -1 ) ) );

    // Long text is taken as ASCII first: another character turns up at every place of the vectors and after them.
    for( size_t count : { 31, 32, 97, 130, 511, 513, 700 } )
        for( size_t at = count; at-- > 0; at = at > 100 ? at - 37 : at )
        {
            std::string      utf8 = std::string( at, 'a' ) + "\u4E2D" + std::string( count - at - 1, 'z' );
            Ref< QV_STRING > decoded( qvStringCreateFromUtf8( utf8.data(), QV_INT( utf8.size() ) ) );
            ASSERT_EQ(
                std::u32string( at, U'a' ) + U"\u4E2D" + std::u32string( count - at - 1, U'z' ),
                qv::test::chars( decoded ) );
            ASSERT_EQ( QV_INT( count ) * 4, allocated( decoded.get() ) );
            ASSERT_EQ( utf8 + '\0', given( qvStringConvertToUtf8( decoded, QV_TRUE, &length ) ) );
        }

    // Of what is cut off, nothing may be left.
    EXPECT_EQ( 599, qvStringLength( text( std::string( 600, '\xE4' ) ) ) );
}

#include "qv/qv.hpp"

#include "qv_test_support.h"

#include <sstream>
#include <unordered_set>

using namespace qv::literals;
using qv::test::references;

namespace
{
std::u32string joined( const qv::Words &words )
{
    std::u32string text;

    for( std::u32string_view word : words )
        text += std::u32string( word ) + U'|';

    return text;
}

std::string textOf( const qv::Buffer &bytes )
{
    return { bytes.begin(), bytes.end() };
}

enum class Colour : uint8_t
{
    RED,
    BLUE = 200
};
} // namespace

TEST( Values, CountReferencesExactly )
{
    qv::String text = "counted";
    EXPECT_EQ( 1, references( &*text.c() ) );

    qv::String copy = text;
    EXPECT_EQ( 2, references( &*text.c() ) );

    qv::String moved = std::move( copy );
    EXPECT_EQ( 2, references( &*text.c() ) );

    copy = moved; // what was moved from may be assigned
    EXPECT_EQ( 3, references( &*text.c() ) );

    qv::String &same = copy;
    copy             = same;
    copy             = std::move( same ); // to itself
    EXPECT_EQ( copy, "counted" );
    EXPECT_EQ( 3, references( &*text.c() ) );

    QV_STRING *out = std::move( copy ).giveUp();
    moved          = qv::String::own( out );
    EXPECT_EQ( 2, references( &*text.c() ) );

    qv::Object any = text;
    EXPECT_EQ( 3, references( &*text.c() ) );
    any = qv::Object::share( qvStringObj( moved.c() ) );
    EXPECT_EQ( 3, references( &*text.c() ) );

    qvStringAppendCstr( text.variable(), "!", -1 );
    EXPECT_EQ( text, "counted!" );
    EXPECT_EQ( any.as< qv::String >(), "counted"_qs );
    EXPECT_EQ( 2, references( &*moved.c() ) );

    EXPECT_FALSE( qv::String::ownOptional( nullptr ) );
    EXPECT_BROKEN( (void)qv::String::own( nullptr ), "owned" );
    EXPECT_BROKEN( qv::String used = copy, "obj" );
    EXPECT_BROKEN( (void)copy.size(), "qvs" );
}

TEST( Values, AnObjectIsWhatItHolds )
{
    qv::Object number = 300, real = 0.5, truth = true, nothing = nullptr, colour = Colour::BLUE;

    EXPECT_EQ( number.as< int64_t >(), 300 );
    EXPECT_FALSE( number.is< uint8_t >() ); // does not fit
    EXPECT_FALSE( number.is< double >() || number.is< bool >() || number.is< qv::String >() );
    EXPECT_EQ( real.as< float >(), 0.5f );
    EXPECT_EQ( truth.as< bool >(), true );
    EXPECT_EQ( colour.as< Colour >(), Colour::BLUE );
    EXPECT_FALSE( nothing.is< int >() );
    EXPECT_EQ( number.sortName(), "QV_BOXED_INT" );
    EXPECT_EQ( qv::Object( INT64_MIN ).as< int64_t >(), INT64_MIN );
    EXPECT_BROKEN( qv::Object( UINT64_MAX ), "std::in_range< QV_INT >( value )" );

    // Equal objects have equal hashes, and a set takes them for one.
    std::unordered_set< qv::Object > set = { "a"_qs, "a"_qs, 1, 1, 1.0, nullptr, nullptr, 0.0, -0.0 };
    set.insert( qv::Vector<>{ 1, "x"_qs } );
    set.insert( qv::Vector<>{ 1, "x"_qs } );
    set.insert( qv::Dict<>{ { 1, "x"_qs } } );
    set.insert( qv::Dict<>{ { 1, "x"_qs } } );
    EXPECT_EQ( 7u, set.size() );

    std::ostringstream out;
    out << qv::Vector<>{ 1, u8"Ω"_qs, true } << qv::String( u8"ü" );
    EXPECT_EQ( "<1, \xce\xa9, true>\xc3\xbc", out.str() );
}

TEST( Values, StringsComeFromAndGoToAnyText )
{
    std::string bytes = "a\xce\xa9\xff";
    EXPECT_EQ( qv::String( bytes ), U"aΩ\xFFFD" );
    EXPECT_EQ( qv::String( std::string_view( "a\0b", 3 ) ).size(), 3 );
    EXPECT_EQ( qv::String( std::string_view() ), "" );
    EXPECT_EQ( qv::String( std::u32string_view() ), qv::String() );
    EXPECT_EQ( "Ω"_qs.str(), "Ω" );
    EXPECT_EQ( static_cast< std::string >( U"Ω"_qs ), "Ω" );
    EXPECT_BROKEN( qv::String( U"\x110000" ), "qvCharsAllOk( src, srcLength )" );

    qv::String text = "ab";
    text += text;
    text += U'c';
    text += "de";
    text.insert( 0, "<" ).erase( 1, 1 );
    EXPECT_EQ( text, "<babcde" );
    EXPECT_EQ( "x" + text.part( 1, 2 ), U"xba" );
    EXPECT_EQ( text.find( "b", 2 ), 3 );
    EXPECT_EQ( text.find( U'q' ), std::nullopt );
    EXPECT_EQ( text.findLast( "b" ), 3 );
    EXPECT_EQ( " 12 "_qs.toInt(), 12 );
    EXPECT_EQ( "12x"_qs.toInt(), std::nullopt );
    EXPECT_EQ( "0x1F"_qs.toInt( -1 ), 31 );
    EXPECT_EQ( " Straße "_qs.trimmed().upper(), "STRASSE" );
    EXPECT_TRUE( "b"_qs > "a"_qs && "a"_qs < "aa"_qs && "a" == "a"_qs && "a"_qs != "b" );
    EXPECT_TRUE( std::ranges::equal( text, U"<babcde"_qs ) );
    EXPECT_EQ( ( qv::Vector< qv::String >{ "a", "", "b" } ), "a,,b"_qs.split( "," ) );
}

TEST( Values, WordsStandBetweenWhiteSpace )
{
    EXPECT_EQ( U"a|bΩ|c|", joined( U" a\tbΩ \x2003 c "_qs.words() ) ); // an em space
    EXPECT_EQ( U"", joined( ""_qs.words() ) );
    EXPECT_EQ( U"", joined( " \n"_qs.words() ) );

    // The range keeps the text, also where it was a temporary or has changed since.
    qv::String text  = "one two";
    qv::Words  words = text.words();
    text.clear();
    EXPECT_EQ( U"one|two|", joined( words ) );
    EXPECT_EQ( U"ONE|", joined( qv::String( "one" ).upper().words() ) );
}

TEST( Values, VectorsHoldTypedElements )
{
    qv::Vector< int > numbers = { 3, 1, 2 };
    qv::Vector< int > before  = numbers;
    numbers.sort().append( 9 ).prepend( 0 ).insert( 1, 7 ).set( 2, 5 ).erase( 3 );
    EXPECT_EQ( ( qv::Vector< int >{ 0, 7, 5, 3, 9 } ), numbers );
    EXPECT_EQ( ( qv::Vector< int >{ 3, 1, 2 } ), before );
    EXPECT_EQ( numbers.popBack() + numbers.popFront() * 100, 9 );
    EXPECT_EQ( numbers.find( 5 ), 1 );
    EXPECT_EQ( *std::ranges::max_element( numbers ), 7 );
    EXPECT_TRUE( std::ranges::equal( qv::Vector< int >( std::vector{ 7, 5, 3 } ), numbers ) );
    EXPECT_BROKEN( numbers[3], "index >= 0 && index < size()" );
    EXPECT_BROKEN( numbers.set( -1, 0 ), "index >= 0 && index < size()" );

    // Sorting is stable, and elements that compare equal stay themselves.
    auto                     byLength = []( const qv::String &a, const qv::String &b ) { return a.size() < b.size(); };
    qv::Vector< qv::String > texts    = { "bb", "aa", "c" };
    EXPECT_EQ( ( qv::Vector< qv::String >{ "c", "bb", "aa" } ), texts.sort( byLength ) );
    EXPECT_EQ( 1, references( qvVectorBacking( texts.c() )[0] ) );

    // What C has put in is seen when it is read.
    qvVectorAppendStringCstr( numbers.variable(), "text", -1 );
    EXPECT_BROKEN( numbers[3], "!obj || qvObjSort(obj)==&qv___sort_QV_BOXED_INT" );
    qvVectorSetIntAt( numbers.variable(), 3, INT64_MAX );
    EXPECT_BROKEN( numbers[3], "std::in_range< T >( value )" );
}

TEST( Values, DictsAndStoresHoldTypedEntries )
{
    qv::Dict< qv::String, int64_t > counts;

    for( std::u32string_view word : "b a b c b"_qs.words() )
        counts.update( word, []( std::optional< int64_t > count ) { return count.value_or( 0 ) + 1; } );

    std::string seen;

    for( auto [word, count] : counts )
        seen += word.str() + std::to_string( count );

    EXPECT_EQ( "a1b3c1", seen );
    EXPECT_EQ( counts.find( "b" ), 3 );
    EXPECT_EQ( counts.find( "x" ), std::nullopt );
    EXPECT_TRUE( counts.erase( "a" ) && !counts.erase( "a" ) && !counts.contains( "a" ) );
    EXPECT_EQ( ( qv::Vector< int64_t >{ 3, 1 } ), counts.values() );
    EXPECT_EQ( ( qv::Dict< qv::String, int64_t >{ { "c", 1 }, { "b", 2 }, { "b", 3 } } ), counts );

    std::optional< qv::Store > store = qv::Store::fromText( "port=70000\n# no entry\nlog.verbose=true\n" );
    EXPECT_EQ( store->get< int >( "port" ), 70000 );
    EXPECT_EQ( store->get< uint16_t >( "port" ), std::nullopt );
    EXPECT_EQ( store->get< bool >( "port" ), std::nullopt == store->get( "none" ) );
    EXPECT_EQ( store->store( "log" ).get< bool >( "verbose" ), true );

    store->set( "real", 0.5f ).set( "yes", true ).set( "text", "t" ).set( "small", uint8_t{ 7 } ).erase( "log" );
    store->set( "sub", qv::Store().set( "x", "y" ) );
    EXPECT_EQ( "port=70000\nreal=0.500000\nsmall=7\ntext=t\nyes=true\nsub.x=y\n", textOf( store->toText() ) );
    EXPECT_EQ( qv::Store::fromBinary( store->toBinary() ), store );
    EXPECT_FALSE( qv::Store::fromBinary( qv::Buffer( "x" ) ) );

    std::string addresses;

    for( const qv::StoreEntry &entry : *store )
        addresses += entry.address.str() + ( entry.value ? "=" : "" ) + ( entry.store ? "." : "" );

    EXPECT_EQ( "port=real=small=sub.text=yes=", addresses );

    qv::Buffer bytes( "ab" );
    bytes.append( uint8_t{ 0 } ).append( bytes ).erase( 0, 1 );
    EXPECT_TRUE( std::ranges::equal( bytes, std::vector< uint8_t >{ 'b', 0, 'a', 'b', 0 } ) );
}

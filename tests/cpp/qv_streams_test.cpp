#include "qv/qv.hpp"

#include "qv_test_program.h"
#include "qv_test_support.h"

#include <algorithm>

using namespace qv::literals;

TEST( Streams, StandOnEachOther )
{
    qv::BufferSink bytes;
    {
        qv::CharSink chars( bytes.sink(), QV_CHARSET_ISO_8859_1 );
        qv::LineSink lines( chars, QV_NLF_FLAG_CRLF );
        EXPECT_TRUE( lines.write( "\u00e9" ) && lines.write( "b" ) && lines.flush() );
        EXPECT_TRUE( chars.print( "%i %s", 7, "c" ) && !chars.failed() );
        EXPECT_EQ( 2, lines.linesWritten() );
    }
    qv::Buffer all = bytes.take();
    EXPECT_EQ( "\xe9\r\nb\r\n7 c", std::string( all.begin(), all.end() ) );

    qv::LineSource lines( qv::CharSource( qv::ByteSource::of( all ), QV_CHARSET_ISO_8859_1 ) );
    EXPECT_EQ( lines.read(), "\u00e9"_qs );
    std::string rest;

    for( const qv::String &line : lines.lines() )
        rest += line.str() + "|";

    EXPECT_EQ( "b|7 c|", rest );
    EXPECT_FALSE( lines.read() || lines.failed() );

    qv::ByteSource source = qv::ByteSource::of( all );
    EXPECT_EQ( 1, source.skip( 1 ) );
    EXPECT_EQ( 2, source.read( 2 ).size() );
    EXPECT_FALSE( source.atEnd() );
    EXPECT_TRUE( source.read().size() == 6 && source.atEnd() && !source.failed() );

    qv::StringSink text;
    EXPECT_TRUE( text.sink().write( "abc"_qs ) );
    EXPECT_EQ( "abc", text.take() );
    EXPECT_EQ( "", text.take() );

    qv::String path( qv::test::path( "cpp.bytes" ) );
    EXPECT_TRUE( qv::ByteSink::toFile( path )->write( "data" ) );
    EXPECT_EQ( 4, qv::ByteSource::ofFile( path )->read().size() );
    EXPECT_EQ( QV_ERROR_NOT_FOUND, qv::ByteSource::ofFile( "/nowhere/x" ).error().code );
    EXPECT_EQ(
        "/nowhere/x: cannot be opened: No such file or directory",
        qv::ByteSink::toFile( "/nowhere/x" ).error().text() );

    // What a C stream has read ahead of the lines is theirs.
    qv::test::write( "cpp.lines", "first\nsecond\n" );
    char first[8];
    ASSERT_TRUE(
        freopen( qv::test::path( "cpp.lines" ).c_str(), "r", stdin ) && fgets( first, sizeof( first ), stdin ) );

    for( const qv::String &line : qv::standardInputLines() )
        EXPECT_EQ( "second", line );
}

TEST( Codecs, ReadWhatWasWritten )
{
    qv::Encoder out;
    out.encode( "text" ).encode( 300 ).encode( true ).encode( U'x' ).encode( std::optional< qv::String >() );
    out.encode( qv::Vector< qv::String >{ "a", "b" } ).encode( std::optional( qv::Buffer( "yz" ) ) ).encode( 300 );

    qv::Decoder in( out.buffer() );
    EXPECT_EQ( in.decode< qv::String >(), "text"_qs );
    EXPECT_EQ( in.decode< int >(), 300 );
    EXPECT_EQ( in.decode< bool >(), true );
    EXPECT_EQ( in.decode< char32_t >(), U'x' );
    auto absent = in.decode< std::optional< qv::String > >();
    EXPECT_TRUE( absent && !*absent );
    EXPECT_EQ( "<a, b>", in.decode< qv::Vector< qv::String > >()->str() );
    EXPECT_EQ( 2, in.decode< std::optional< qv::Buffer > >().value()->size() );
    EXPECT_FALSE( in.failed() );
    EXPECT_FALSE( in.decode< int8_t >() );
    EXPECT_TRUE( in.failed() && !in.decode< qv::String >() && !in.decode< std::optional< qv::String > >() );
}

TEST( Maps, HoldValues )
{
    qv::RangeMap< qv::String > grades( true );
    grades.set( 0, 49, "failed" ).set( 50, 100, "passed" ).set( 40, 49, "passed" ).erase( 99, 100 );
    std::string all;

    for( const auto &[first, last, value] : grades )
        all += std::to_string( first ) + "-" + std::to_string( last ) + value.str() + " ";

    EXPECT_EQ( "0-39failed 40-98passed ", all );
    EXPECT_EQ( grades.find( 98 ), "passed"_qs );
    EXPECT_FALSE( grades.find( 99 ) || grades.contains( -1 ) );

    qv::PriorityMap< qv::String > tasks;
    tasks.set( 5, "b" ).set( 1, "a" ).set( 9, "a" ).erase( "c" );
    EXPECT_EQ( tasks.highest(), "a"_qs );
    EXPECT_EQ( tasks.lowest(), "b"_qs );
    EXPECT_EQ( tasks.priorityOf( "a" ), 9 );
    EXPECT_EQ( 2, std::ranges::distance( tasks ) );
    EXPECT_FALSE( qv::PriorityMap<>().highest() );

    qv::Enum colours = { { "RED", 0 }, { "BLUE", 7 } };
    EXPECT_EQ( colours.nameOf( 7 ), "BLUE"_qs );
    EXPECT_EQ( colours.parse( " 0x7 " ), 7 );
    EXPECT_FALSE( colours.find( "GREEN" ) || colours.nameOf( 1 ) || colours.parse( "1" ) );

    qv::Flagset rights = { { "READ", 1 }, { "WRITE", 2 } };
    EXPECT_EQ( "READ|WRITE", rights.textOf( 3 ) );
    EXPECT_EQ( 2, rights.parse( "WRITE|FLY" ) );
    EXPECT_EQ( "<READ, WRITE>", rights.names().str() );
}

TEST( Texts, HaveLinesAndColumns )
{
    auto joined = []( const qv::String &text )
    {
        std::u32string all;

        for( std::u32string_view line : text.lines() )
            all += std::u32string( line ) + U'|';

        return qv::String( all ).str();
    };
    EXPECT_EQ( "", joined( "" ) );
    EXPECT_EQ( "a||b|c|", joined( "a\n\r\nb\rc" ) );
    EXPECT_EQ( "a||", joined( "a\r\n\n" ) );

    qv::String text = "\u4f60\u597d abc";
    EXPECT_EQ( 8, text.width() );
    EXPECT_EQ( "\u4f60\u2026 ", text.fitted( 4, QV_DISPLAY_FLAG_ELLIPSIS ) );
    EXPECT_EQ( "\u4f60", text.truncated( 3 ) );
    EXPECT_EQ( "  " + text, text.padded( 10, QV_DISPLAY_FLAG_RIGHT ) );
    EXPECT_EQ( "<\u4f60\u597d, abc>", text.wrapped( 5 ).str() );
}

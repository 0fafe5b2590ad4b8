#include "qv_stream_log.h"

#include "qv/io/qv_string_char_sink.h"
#include "qv/io/qv_string_char_source.h"

#include <random>

using qv::Ref;
using namespace qv::test;

TEST( CharSink, WritesStringsArraysAndTexts )
{
    typedef QV_CHAR_SINK S;
    typedef QV_STRING    Q;

    const struct
    {
        std::u32string written;
        QV_BOOL ( *write )( S *sink, Q *qvs, Q *fmt );
    } CASES[] = {
        { U"abcdef", []( S *s, Q *q, Q * ) { return qvCharSinkWrite( s, q ); } },
        { U"abc", []( S *s, Q *q, Q * ) { return qvCharSinkWriteLeading( s, q, 3 ); } },
        { U"def", []( S *s, Q *q, Q * ) { return qvCharSinkWriteTrailing( s, q, 3 ); } },
        { U"bc", []( S *s, Q *q, Q * ) { return qvCharSinkWriteInner( s, q, 1, 2 ); } },
        { U"aef", []( S *s, Q *q, Q * ) { return qvCharSinkWriteOuter( s, q, 1, 3 ); } },
        { U"", []( S *s, Q *q, Q * ) { return qvCharSinkWriteOuter( s, q, 0, 6 ); } },
        { U"", []( S *s, Q *, Q * ) { return qvCharSinkWriteInner( s, nullptr, 0, 0 ); } },
        { U"", []( S *s, Q *, Q * ) { return qvCharSinkWriteChars( s, nullptr, 0 ); } },
        { U"äβ", []( S *s, Q *, Q * ) { return qvCharSinkWriteChars( s, U"äβ", 2 ); } },
        { U"😀", []( S *s, Q *, Q * ) { return qvCharSinkWriteChar( s, U'😀' ); } },
        { U"äx", []( S *s, Q *, Q * ) { return qvCharSinkWriteCstr( s, "äxy", 3 ); } },
        { U"äxy", []( S *s, Q *, Q * ) { return qvCharSinkWriteWcstr( s, L"äxy", -1 ); } },
        { U"<7>", []( S *s, Q *, Q *f ) { return qvCharSinkWriteFormat( s, f, QV_INT( 7 ) ); } },
        { U"8.", []( S *s, Q *, Q * ) { return qvCharSinkWriteFormatCstr( s, "%i.", -1, QV_INT( 8 ) ); } },
        { U"-1", []( S *s, Q *, Q * ) { return qvCharSinkWriteFormatWcstr( s, L"%i...", 2, QV_INT( -1 ) ); } },
    };

    Ref< QV_STRING >           abcdef = text( "abcdef" ), format = text( "<%i>" );
    Ref< QV_STRING_CHAR_SINK > scs( qvStringCharSinkCreate() );
    Ref< QV_CHAR_SINK >        stringSink( qvStringCharSinkCharSink( scs ) );

    for( const auto &c : CASES )
    {
        SCOPED_TRACE( &c - CASES );

        // Into a callback that takes Strings alone, and into a String, which takes arrays too.
        SinkLog< Chars >    log;
        Ref< QV_CHAR_SINK > sink = log.sink();
        EXPECT_EQ( QV_TRUE, c.write( sink, abcdef, format ) );
        EXPECT_EQ( QV_TRUE, c.write( stringSink, abcdef, format ) );
        EXPECT_EQ( c.written, log.written );
        EXPECT_EQ( c.written, chars( Ref< QV_STRING >( qvStringCharSinkString( scs ) ) ) );

        // Once the sink has failed, nothing gets through, and it isn't flushed at its end.
        log.callsUntilFailure = 0;
        log.calls.clear();
        EXPECT_EQ( QV_FALSE, qvCharSinkFlush( sink ) );
        EXPECT_EQ( QV_TRUE, qvCharSinkError( sink ) );
        EXPECT_EQ( QV_FALSE, c.write( sink, abcdef, format ) );
        sink.reset();
        EXPECT_EQ( "fe", log.calls );
    }
}

TEST( CharSink, KeepsWhatCameBeforeAFailure )
{
    SinkLog< Chars >    log;
    Ref< QV_STRING >    abcdef = text( "abcdef" );
    Ref< QV_CHAR_SINK > sink   = log.sink();

    log.callsUntilFailure = 1;
    EXPECT_EQ( QV_FALSE, qvCharSinkWriteOuter( sink, abcdef, 1, 4 ) );
    EXPECT_EQ( QV_TRUE, qvCharSinkError( sink ) );
    EXPECT_EQ( U"a", log.written );

    SinkLog< Chars > good;
    sink = good.sink();
    EXPECT_TRUE( qvCharSinkWriteChar( sink, U'x' ) );
    sink.reset();
    EXPECT_EQ( "wfe", good.calls );
}

TEST( CharSink, RangesAndCharactersAreChecked )
{
    Ref< QV_STRING >           abc = text( "abc" );
    Ref< QV_STRING_CHAR_SINK > scs( qvStringCharSinkCreate() );
    Ref< QV_CHAR_SINK >        sink( qvStringCharSinkCharSink( scs ) );

    EXPECT_BROKEN( qvCharSinkWriteInner( sink, nullptr, 1, 0 ), "charOffset == 0 || qvs" );
    EXPECT_BROKEN( qvCharSinkWriteOuter( sink, abc, 1, QV_INT_MAX ), "QV_INT_ADD_OK( charOffset, charCount )" );
    EXPECT_BROKEN( qvCharSinkWriteLeading( sink, abc, 4 ), "charOffset + charCount <= qvStringLength( qvs )" );
    EXPECT_BROKEN( qvCharSinkWriteTrailing( sink, abc, 4 ), "charCount <= qvStringLength( qvs )" );
    EXPECT_BROKEN( qvCharSinkWriteChar( sink, 0x110000 ), "qvCharsAllOk( src, srcLength )" );
}

TEST( CharSource, OnlyAShortReadMeetsTheEnd )
{
    for( bool fails : { false, true } )
    {
        SourceLog< Chars >    log{ .data = U"häh😀!", .fails = fails };
        Ref< QV_CHAR_SOURCE > source = log.source();
        Ref< QV_STRING >      qvs    = text( "<" );
        QV_CHAR               array[4];

        EXPECT_EQ( 0, qvCharSourceRead( source, qvs.at(), 0 ) );
        EXPECT_EQ( 0, qvCharSourceReadChars( source, nullptr, 0 ) );
        EXPECT_TRUE( log.limits.empty() );

        EXPECT_EQ( 2, qvCharSourceRead( source, qvs.at(), 2 ) );
        EXPECT_EQ( "<hä", utf8( qvs ) );
        EXPECT_EQ( 3, qvCharSourceReadChars( source, array, 3 ) );
        EXPECT_EQ( U"h😀!", std::u32string( array, 3 ) );
        EXPECT_EQ( fails ? QV_TRUE : QV_FALSE, qvCharSourceEnd( source ) );
        EXPECT_EQ( fails ? QV_TRUE : QV_FALSE, qvCharSourceError( source ) );

        EXPECT_EQ( 0, qvCharSourceRead( source, qvs.at(), -1 ) );
        EXPECT_EQ( QV_TRUE, qvCharSourceEnd( source ) );
        EXPECT_EQ( 0, qvCharSourceReadChars( source, array, 3 ) );
        EXPECT_EQ( fails ? 2u : 3u, log.limits.size() );
    }

    SourceLog< Chars >    tooMany{ .data = U"abc", .extra = 1 };
    Ref< QV_CHAR_SOURCE > many = tooMany.source();
    QV_CHAR               array[8];
    EXPECT_BROKEN( qvCharSourceReadChars( many, array, 3 ), "charsRead <= maxCharCount" );
    EXPECT_BROKEN( qvCharSourceReadChars( many, nullptr, -1 ), "chars || maxCharCount == 0" );
}

TEST( StringCharSource, IsReadInPiecesOfAnySize )
{
    std::mt19937   random( 72 );
    std::u32string data( 20000, U' ' ), got;

    for( QV_CHAR &ch : data )
        ch = random() % 0x110000;

    Ref< QV_STRING >             src = text( data );
    Ref< QV_STRING_CHAR_SOURCE > scs( qvStringCharSourceCreate( src ) );
    Ref< QV_CHAR_SOURCE >        sources[] = { Ref< QV_CHAR_SOURCE >( qvStringCharSourceCharSource( scs ) ),
                                               Ref< QV_CHAR_SOURCE >( qvStringCharSourceCharSource( scs ) ) };
    QV_CHAR                      array[300];

    // The source keeps the String as it was.
    qvStringAppendChar( src.at(), U'x' );

    while( !qvCharSourceEnd( sources[0] ) && !qvCharSourceEnd( sources[1] ) )
    {
        QV_CHAR_SOURCE  *source = sources[random() % 2];
        QV_INT           limit  = random() % 301;
        bool             arrays = random() % 2;
        Ref< QV_STRING > qvs( qvStringCreate() );
        QV_INT           count = arrays ? qvCharSourceReadChars( source, array, limit )
                                        : qvCharSourceRead( source, qvs.at(), limit );

        got += arrays ? std::u32string( array, static_cast< size_t >( count ) ) : chars( qvs );
        EXPECT_EQ( count < limit, qvCharSourceEnd( source ) == QV_TRUE );
    }

    EXPECT_EQ( data, got );
    EXPECT_EQ( data, chars( Ref< QV_STRING >( qvStringCharSourceString( scs ) ) ) );
}

TEST( StringCharSink, HandsOutWhatHasBeenWritten )
{
    std::mt19937               random( 74 );
    std::u32string             written;
    Ref< QV_STRING_CHAR_SINK > scs( qvStringCharSinkCreate() );
    Ref< QV_CHAR_SINK >        first( qvStringCharSinkCharSink( scs ) ), second( qvStringCharSinkCharSink( scs ) );

    for( int round = 0; round < 300; round++ )
    {
        Ref< QV_STRING > run = text( std::u32string( random() % ( round % 50 ? 40 : 4000 ), U'a' + round % 26 ) );

        written += chars( run );
        EXPECT_TRUE( random() % 2 ? qvCharSinkWrite( first, run )
                                  : qvCharSinkWriteChars( second, qvStringBacking( run ), qvStringLength( run ) ) );
    }

    // No more free places than any String has, and nothing that comes later.
    Ref< QV_STRING > result( qvStringCharSinkString( scs ) );
    EXPECT_GE( static_cast< QV_INT >( written.size() + 128 ) * 4, allocated( result.get() ) );
    EXPECT_EQ( "", take( qvStringCharSinkString( scs ) ) );
    EXPECT_TRUE( qvCharSinkWriteChar( first, U'x' ) );
    EXPECT_EQ( written, chars( result ) );
    EXPECT_EQ( "x", take( qvStringCharSinkString( scs ) ) );
}

#include "qv_test_support.h"

#include "qv/base/qv_boxed_pointer_private.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_sink_private.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_char_source_private.h"
#include "qv/io/qv_string_char_sink.h"
#include "qv/io/qv_string_char_source.h"

#include <random>

using qv::Ref;
using namespace qv::test;

namespace
{
// A sink that keeps what it is given and fails where it is told to.
struct SinkLog
{
    std::string calls; // w: write, f: flush, e: end of the closure
    std::string written;
    int         writesUntilFailure = -1;

    Ref< QV_CHAR_SINK > sink()
    {
        Ref< QV___BOXED_POINTER > closure(
            qv___BoxedPointerCreate( this, []( void *log ) { static_cast< SinkLog * >( log )->calls += 'e'; } ) );

        return Ref< QV_CHAR_SINK >( qv___CharSinkCreate( write, flush, qv::obj( closure.get() ) ) );
    }

private:
    static SinkLog *of( QV_OBJ *closure )
    {
        return static_cast< SinkLog * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
    }

    static QV_BOOL write( QV_OBJ *closure, QV_STRING *qvs, QV_INT charOffset, QV_INT charCount )
    {
        SinkLog *log = of( closure );
        log->calls += 'w';

        if( log->writesUntilFailure-- == 0 )
            return QV_FALSE;

        log->written += take( qvStringCreateFromInner( qvs, charOffset, charCount ) );
        return QV_TRUE;
    }

    static QV_BOOL flush( QV_OBJ *closure )
    {
        of( closure )->calls += 'f';
        return QV_TRUE;
    }
};

// A source of the characters that it is given, which fails behind them if told to.
struct SourceLog
{
    std::u32string data;
    bool           fails  = false;
    QV_INT         extra  = 0; // added to the counts, for broken callbacks
    size_t         offset = 0;
    int            calls  = 0;

    Ref< QV_CHAR_SOURCE > source()
    {
        Ref< QV___BOXED_POINTER > closure( qv___BoxedPointerCreate( this, nullptr ) );
        return Ref< QV_CHAR_SOURCE >( qv___CharSourceCreate( read, qv::obj( closure.get() ) ) );
    }

private:
    static QV_BOOL read( QV_OBJ *closure, QV_STRING **qvs, QV_INT maxCharCount, QV_INT *charsRead )
    {
        EXPECT_EQ( 0, *charsRead );

        auto *log = static_cast< SourceLog * >( qv___BoxedPointerValue( qv___BoxedPointerFrom( closure ) ) );
        std::u32string run = log->data.substr( log->offset, static_cast< size_t >( maxCharCount ) );

        log->calls++;
        log->offset += run.size();
        *charsRead = static_cast< QV_INT >( run.size() ) + log->extra;
        qvStringAppendChars( qvs, run.data(), static_cast< QV_INT >( run.size() ) );

        return !( log->fails && log->offset == log->data.size() );
    }
};
} // namespace

TEST( CharSink, WritesStringsArraysAndTexts )
{
    Ref< QV_STRING > abcdef = text( "abcdef" );
    Ref< QV_STRING > format = text( "<%i>" );

    const struct
    {
        const char *written;
        QV_BOOL ( *write )( QV_CHAR_SINK *sink, QV_STRING *qvs, QV_STRING *fmt );
    } CASES[] = {
        { "abcdef", []( QV_CHAR_SINK *s, QV_STRING *q, QV_STRING * ) { return qvCharSinkWrite( s, q ); } },
        { "abc", []( QV_CHAR_SINK *s, QV_STRING *q, QV_STRING * ) { return qvCharSinkWriteLeading( s, q, 3 ); } },
        { "def", []( QV_CHAR_SINK *s, QV_STRING *q, QV_STRING * ) { return qvCharSinkWriteTrailing( s, q, 3 ); } },
        { "bc", []( QV_CHAR_SINK *s, QV_STRING *q, QV_STRING * ) { return qvCharSinkWriteInner( s, q, 1, 2 ); } },
        { "aef", []( QV_CHAR_SINK *s, QV_STRING *q, QV_STRING * ) { return qvCharSinkWriteOuter( s, q, 1, 3 ); } },
        { "", []( QV_CHAR_SINK *s, QV_STRING *q, QV_STRING * ) { return qvCharSinkWriteOuter( s, q, 0, 6 ); } },
        { "", []( QV_CHAR_SINK *s, QV_STRING *, QV_STRING * ) { return qvCharSinkWriteInner( s, nullptr, 0, 0 ); } },
        { "", []( QV_CHAR_SINK *s, QV_STRING *, QV_STRING * ) { return qvCharSinkWriteChars( s, nullptr, 0 ); } },
        { "äβ", []( QV_CHAR_SINK *s, QV_STRING *, QV_STRING * ) { return qvCharSinkWriteChars( s, U"äβ", 2 ); } },
        { "😀", []( QV_CHAR_SINK *s, QV_STRING *, QV_STRING * ) { return qvCharSinkWriteChar( s, U'😀' ); } },
        { "äx", []( QV_CHAR_SINK *s, QV_STRING *, QV_STRING * ) { return qvCharSinkWriteCstr( s, "äxy", 3 ); } },
        { "äxy", []( QV_CHAR_SINK *s, QV_STRING *, QV_STRING * ) { return qvCharSinkWriteWcstr( s, L"äxy", -1 ); } },
        { "<7>", []( QV_CHAR_SINK *s, QV_STRING *, QV_STRING *f )
          { return qvCharSinkWriteFormat( s, f, QV_INT( 7 ) ); } },
        { "8.9", []( QV_CHAR_SINK *s, QV_STRING *, QV_STRING * )
          { return qvCharSinkWriteFormatCstr( s, "%i.%i", -1, QV_INT( 8 ), QV_INT( 9 ) ); } },
        { "-1", []( QV_CHAR_SINK *s, QV_STRING *, QV_STRING * )
          { return qvCharSinkWriteFormatWcstr( s, L"%i...", 2, QV_INT( -1 ) ); } },
    };

    // Into a callback of Strings alone, and into a String, which takes arrays too.
    SinkLog                    log;
    Ref< QV_CHAR_SINK >        custom = log.sink();
    Ref< QV_STRING_CHAR_SINK > scs( qvStringCharSinkCreate() );
    Ref< QV_CHAR_SINK >        sink( qvStringCharSinkCharSink( scs ) );

    for( const auto &c : CASES )
    {
        SCOPED_TRACE( c.written );

        log.written.clear();
        EXPECT_EQ( QV_TRUE, c.write( custom, abcdef, format ) );
        EXPECT_EQ( QV_TRUE, c.write( sink, abcdef, format ) );
        EXPECT_EQ( c.written, log.written );
        EXPECT_EQ( c.written, take( qvStringCharSinkString( scs ) ) );
    }
}

TEST( CharSink, StaysFailedOnceAWriteHasFailed )
{
    SinkLog             log;
    Ref< QV_STRING >    abcdef = text( "abcdef" );
    Ref< QV_CHAR_SINK > sink   = log.sink();

    log.writesUntilFailure = 1;
    EXPECT_EQ( QV_FALSE, qvCharSinkWriteOuter( sink, abcdef, 1, 4 ) );
    EXPECT_EQ( QV_TRUE, qvCharSinkError( sink ) );
    EXPECT_EQ( "a", log.written );

    EXPECT_EQ( QV_FALSE, qvCharSinkWriteChar( sink, U'x' ) );
    EXPECT_EQ( QV_FALSE, qvCharSinkWriteInner( sink, nullptr, 0, 0 ) );
    EXPECT_EQ( QV_FALSE, qvCharSinkWriteTrailing( sink, abcdef, 2 ) );
    EXPECT_EQ( QV_FALSE, qvCharSinkWriteFormatCstr( sink, "%i", -1, QV_INT( 1 ) ) );
    EXPECT_EQ( QV_FALSE, qvCharSinkFlush( sink ) );
    sink.reset();
    EXPECT_EQ( "wwe", log.calls );

    log.calls.clear();
    sink = log.sink();
    EXPECT_TRUE( qvCharSinkWriteChar( sink, U'x' ) );
    EXPECT_TRUE( qvCharSinkFlush( sink ) );
    sink.reset();
    EXPECT_EQ( "wffe", log.calls );
}

TEST( CharSink, RangesAndCharactersAreChecked )
{
    Ref< QV_STRING >           abc = text( "abc" );
    Ref< QV_STRING_CHAR_SINK > scs( qvStringCharSinkCreate() );
    Ref< QV_CHAR_SINK >        sink( qvStringCharSinkCharSink( scs ) );

    EXPECT_BROKEN( qvCharSinkWriteInner( sink, nullptr, 1, 0 ), "charOffset == 0 || qvs" );
    EXPECT_BROKEN( qvCharSinkWriteLeading( sink, abc, -1 ), "charCount >= 0" );
    EXPECT_BROKEN( qvCharSinkWriteOuter( sink, abc, 1, QV_INT_MAX ), "QV_INT_ADD_OK( charOffset, charCount )" );
    EXPECT_BROKEN( qvCharSinkWriteLeading( sink, abc, 4 ), "charOffset + charCount <= qvStringLength( qvs )" );
    EXPECT_BROKEN( qvCharSinkWriteChar( sink, 0x110000 ), "qvCharsAllOk( chars, charCount )" );
}

TEST( CharSource, OnlyAShortReadMeetsTheEnd )
{
    for( bool fails : { false, true } )
    {
        SourceLog             log{ .data = U"häh😀!", .fails = fails };
        Ref< QV_CHAR_SOURCE > source = log.source();
        Ref< QV_STRING >      qvs    = text( "<" );
        QV_CHAR               array[4];

        EXPECT_EQ( 0, qvCharSourceRead( source, qvs.at(), 0 ) );
        EXPECT_EQ( 0, qvCharSourceReadChars( source, nullptr, 0 ) );
        EXPECT_EQ( 0, log.calls );

        EXPECT_EQ( 2, qvCharSourceRead( source, qvs.at(), 2 ) );
        EXPECT_EQ( "<hä", utf8( qvs ) );
        EXPECT_EQ( 3, qvCharSourceReadChars( source, array, 3 ) );
        EXPECT_EQ( U"h😀!", std::u32string( array, 3 ) );
        EXPECT_EQ( fails ? QV_TRUE : QV_FALSE, qvCharSourceEnd( source ) );
        EXPECT_EQ( fails ? QV_TRUE : QV_FALSE, qvCharSourceError( source ) );

        EXPECT_EQ( 0, qvCharSourceRead( source, qvs.at(), -1 ) );
        EXPECT_EQ( QV_TRUE, qvCharSourceEnd( source ) );
        EXPECT_EQ( fails ? 2 : 3, log.calls );
        EXPECT_EQ( 0, qvCharSourceReadChars( source, array, 3 ) );
        EXPECT_EQ( fails ? 2 : 3, log.calls );
    }
}

TEST( CharSource, CountsOfCallbacksAreChecked )
{
    SourceLog             tooMany{ .data = U"abc", .extra = 1 }, negative{ .data = U"", .extra = -1 };
    Ref< QV_CHAR_SOURCE > many = tooMany.source(), less = negative.source();
    Ref< QV_STRING >      qvs( qvStringCreate() );
    QV_CHAR               array[8];

    EXPECT_BROKEN( qvCharSourceReadChars( many, array, 3 ), "charsRead <= maxCharCount" );
    EXPECT_BROKEN( qvCharSourceRead( less, qvs.at(), 3 ), "charsRead >= 0" );
    EXPECT_BROKEN( qvCharSourceRead( less, qvs.at(), -2 ), "maxCharCount >= -1" );
    EXPECT_BROKEN( qvCharSourceReadChars( less, nullptr, -1 ), "chars || maxCharCount == 0" );
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
        QV_CHAR_SOURCE *source = sources[random() % 2];
        QV_INT          limit  = random() % 301;
        QV_INT          count;

        if( random() % 2 )
        {
            Ref< QV_STRING > qvs( qvStringCreate() );
            count = qvCharSourceRead( source, qvs.at(), limit );
            got += chars( qvs );
        }
        else
        {
            count = qvCharSourceReadChars( source, array, limit );
            got.append( array, static_cast< size_t >( count ) );
        }

        EXPECT_EQ( count < limit, qvCharSourceEnd( source ) == QV_TRUE );
    }

    EXPECT_EQ( data, got );
    EXPECT_EQ( data, chars( Ref< QV_STRING >( qvStringCharSourceString( scs ) ) ) );
}

TEST( StringCharSink, StaysUsableWhenItsTextIsTaken )
{
    Ref< QV_STRING_CHAR_SINK > scs( qvStringCharSinkCreate() );
    Ref< QV_CHAR_SINK >        first( qvStringCharSinkCharSink( scs ) ), second( qvStringCharSinkCharSink( scs ) );

    qvCharSinkWriteCstr( first, "ab", -1 );
    qvCharSinkWriteChar( second, U'c' );
    Ref< QV_STRING > abc( qvStringCharSinkString( scs ) );
    EXPECT_EQ( "", take( qvStringCharSinkString( scs ) ) );

    qvCharSinkWrite( first, abc );
    qvCharSinkWriteChar( first, U'd' );
    EXPECT_EQ( "abc", utf8( abc ) );
    EXPECT_EQ( "abcd", take( qvStringCharSinkString( scs ) ) );
}

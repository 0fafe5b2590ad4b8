#include "qv_test_stream.h"

#include "qv/qv.h"
#include "qv/sys/qv_vectors_private.h"
#include "qv/unicode/qv_unicode_db_private.h"

#include <bit>
#include <random>
#include <tuple>

using qv::Ref;
using namespace qv::test;
using namespace qv::vectors;

namespace
{
// Characters at the borders of what the kernels tell apart, and some between.
const char32_t BORDERS[] = {
    0,      '\n',   '\v',   '\r',   0x0E,   '%',     '@',     'A',     'Z',     '[',     '`',     'a',     'z',
    '{',    0x7F,   0x80,   0x85,   0xA0,   0xBF,    0xC0,    0xDF,    0xE9,    0xEC,    0xED,    0xEE,    0xFE,
    0xFF,   0x100,  0x130,  0x2FF,  0x300,  0x300,   0x316,   0x327,   0x344,   0x37F,   0x3FF,   0x400,   0x482,
    0x483,  0x5B0,  0x5C1,  0x5D0,  0x7FF,  0x800,   0x1EBF,  0x2001,  0x2002,  0x2027,  0x2028,  0x2029,  0x202A,
    0x20CF, 0x20D0, 0xAC00, 0xD800, 0xFFFF, 0x10000, 0x110BA, 0x1D15E, 0x1D165, 0x1F600, 0x20000, 0x2F800, 0x10FFFF };

// Mostly ASCII, so that whole groups of it come up and single other characters stand anywhere in them.
std::u32string anyText( std::mt19937 &random )
{
    std::u32string chars( random() % 80, U'x' );
    unsigned       others = random() % 3 ? random() % 20 : 1000;

    for( char32_t &ch : chars )
        ch = random() % 1000 < others ? BORDERS[random() % std::size( BORDERS )] : U'a' + random() % 26;

    return chars;
}

// All that the families make of a text on kernels, one after the other. The walks hold the results of the kernel that the
// machine would choose against models.
std::string madeOf( const std::u32string &values, std::mt19937 random )
{
    std::string      made;
    Ref< QV_STRING > whole = text( values );

    for( void ( *change )( QV_STRING ** ) :
         { qvStringToUpper, qvStringToLower, qvStringToCaseFold, qvStringNormalizeNFC, qvStringNormalizeNFD } )
    {
        Ref< QV_STRING > changed = text( values );
        change( changed.at() );
        made += utf8( changed ) + ' ';
    }

    for( QV_INT charset : { QV_CHARSET_MSFT_CP1252, QV_CHARSET_KOI_8R, QV_CHARSET_MSFT_CP037, QV_CHARSET_UTF_8 } )
        made += bytes( Ref< QV_BUFFER >( qvCharsetStringToBuffer( charset, whole ) ) );

    // Bytes of one, most of them the characters' lowest ones; not all sets have characters for all.
    std::string any( values.begin(), values.end() );

    for( QV_INT charset : { QV_CHARSET_ISO_8859_1, QV_CHARSET_MSFT_CP1252, QV_CHARSET_MSFT_CP1255, QV_CHARSET_KOI_8R } )
    {
        Ref< QV_STRING > decoded( qvCharsetBufferToString( charset, buffer( any + any ) ) );
        made += utf8( decoded );
    }

    // Searches for pieces of the text, and keys that begin alike and then differ.
    Ref< QV_DICT > dict( qvDictCreate() );

    for( int i = 0; i < 20; i++ )
    {
        size_t           from  = random() % ( values.size() + 1 );
        std::u32string   piece = values.substr( random() % 2 ? 0 : from, random() % 24 );
        Ref< QV_STRING > qvs   = text( piece );
        Ref< QV_STRING > key   = text( values.substr( 0, 4 ) + U"\xEC\xED\xEE\xEF\x100"[random() % 5] + piece );
        qvDictSetStringKey( dict.at(), key, qv::obj( key.get() ) );
        qvDictSetStringKey( dict.at(), qvs, qv::obj( qvs.get() ) );

        if( piece.empty() )
            continue;

        for( QV_INT found :
             { qvStringFind( whole, 0, qvs ), qvStringFindFromRight( whole, -1, qvs ),
               qvStringFindCharFromRight( whole, -1, piece[0] ) } )
            made += std::to_string( found ) + ' ';
    }

    for( QV_INT i = 0; i < qvDictLength( dict ); i++ )
    {
        Ref< QV_STRING > key( reinterpret_cast< QV_STRING * >( qvDictKeyAt( dict, i ) ) );
        EXPECT_EQ( i, qvDictIndexOfStringKey( dict, key ) );
        made += utf8( key ) + ' ';
    }

    // A document with the text as values and as a line of its own.
    Ref< QV_BUFFER > document(
        qvCharsetStringToBuffer( QV_CHARSET_UTF_8, text( U"a.b=" + values + U"\nc=" + values ) ) );
    Ref< QV_STORE > read( qvStoreTryDecodeFromTextBuffer( document ) );
    made += bytes( Ref< QV_BUFFER >( qvStoreEncodeToTextBuffer( read ) ) );

    // The lines of the text, from a source that hands out all of it at once.
    Ref< QV_NLF_LINE_SOURCE > nls( qvNlfLineSourceCreateFromString( whole, 255 ) );
    Ref< QV_LINE_SOURCE >     lines( qvNlfLineSourceLineSource( nls ) );

    while( Ref< QV_STRING > line{ qvLineSourceRead( lines ) } )
        made += std::to_string( qvStringLength( line ) ) + ' ';

    return made;
}
} // namespace

TEST( Vectors, EveryKernelGivesTheSame )
{
    std::mt19937 random( 20250317 );

    for( int round = 0; round < 1500 && !HasFailure(); round++ )
    {
        SCOPED_TRACE( round );
        std::u32string             values = anyText( random );
        std::vector< std::string > made; // by the kernels that the machine has, by plain code first

        for( QV_INT kernel : { PLAIN, VECTORS_16, VECTORS_32, VECTORS_64 } )
            if( qv___VectorsForceKernel( kernel ) == kernel )
                made.push_back( madeOf( values, random ) );

        EXPECT_THAT( made, testing::Each( made[0] ) );
    }

    qv___VectorsForceKernel( -1 );
}

namespace
{
// What the readers and writers of documents make of lines, whose bytes end with the last of them.
std::string madeOfLines( const std::string &lines )
{
    Ref< QV_BUFFER > document( qvBufferCreateFromBytesCopy( lines.data(), static_cast< QV_INT >( lines.size() ) ) );
    Ref< QV_STORE >  read( qvStoreTryDecodeFromTextBuffer( document ) );
    Ref< QV_BUFFER > binary( qvStoreEncodeToBuffer( read ) );
    EXPECT_TRUE( qvStoreEquals( read, Ref< QV_STORE >( qvStoreTryDecodeFromBuffer( binary ) ) ) );

    return bytes( Ref< QV_BUFFER >( qvStoreEncodeToTextBuffer( read ) ) ) + bytes( binary );
}
} // namespace

TEST( Vectors, LinesAreTakenApartTheSame )
{
    const char *const rare[] = {
        "\n", "\r",   "\v",       "\f",           "\t",       "\x0E", "%", "%%", "=", ".", "-", "_", "\x1F",
        "~",  "\x7F", "\xC3\xA4", "\xE2\x80\xA8", "\xC2\x85", "\xFF", "@", "[",  "`", "{", "/", ":", " " };
    std::mt19937 random( 4711 );

    for( int round = 0; round < 3000 && !HasFailure(); round++ )
    {
        unsigned    others = random() % 3 ? random() % 60 : 400;
        std::string lines;

        for( unsigned line = random() % 5; line < 5; line++ )
        {
            lines += line % 2 ? "ab.cde." : "";

            for( unsigned part = 0; part < 2; part++ )
            {
                for( unsigned length = random() % 40; length > 0; length-- )
                    lines += random() % 1000 < others ? rare[random() % std::size( rare )]
                                                      : std::string( 1, 'a' + random() % 26 );

                lines += part == 0 ? "=" : line < 4 ? "\n" : "";
            }
        }

        qv___VectorsForceKernel( PLAIN );
        std::string plain = madeOfLines( lines );

        if( qv___VectorsForceKernel( VECTORS_16 ) == VECTORS_16 )
        {
            EXPECT_EQ( plain, madeOfLines( lines ) ) << lines;
        }
    }

    qv___VectorsForceKernel( -1 );
}

// Each character beside its neighbours, and with ASCII and characters without case between.
TEST( Vectors, CasesAreThoseOfEachCharacter )
{
    typedef const QV_CHAR *( *LookUp )( QV_CHAR, QV_INT * );
    const std::pair< void ( * )( QV_STRING ** ), LookUp > CASES[] = {
        { qvStringToUpper, qv___UnicodeUpperCaseDbLookup },
        { qvStringToLower, qv___UnicodeLowerCaseDbLookup },
        { qvStringToCaseFold, qv___UnicodeCaseFoldDbLookup } };

    for( QV_INT kernel : { PLAIN, VECTORS_32, VECTORS_64 } )
        for( const auto &[change, lookUp] : CASES )
            for( char32_t first = 0; first < 0x110000 && !HasFailure(); first += 0x800 )
            {
                std::u32string values( 64, 0x390 ), mapped;

                for( char32_t ch = first; ch < first + 0x800; ch++ )
                    values += ch % 32 < 24 ? std::u32string( 1, ch ) : U"A\u4E00"[ch % 2] + std::u32string( 1, ch );

                for( char32_t ch : values )
                {
                    QV_INT         length  = 0;
                    const QV_CHAR *mapping = lookUp( ch, &length );
                    mapped +=
                        mapping ? std::u32string( mapping, static_cast< size_t >( length ) ) : std::u32string( 1, ch );
                }

                qv___VectorsForceKernel( kernel );
                Ref< QV_STRING > changed = text( values );
                change( changed.at() );
                EXPECT_TRUE( mapped == chars( changed ) ) << uint32_t( first );

                std::u32string pieces; // of as many as go a way of their own, some of which become much longer

                for( size_t i = 0, size = 1; i < values.size(); i += size, size = 1 + i % 32 )
                {
                    Ref< QV_STRING > piece = text( values.substr( i, size ) );
                    change( piece.at() );
                    pieces += chars( piece );
                    EXPECT_EQ( ( qvStringLength( piece ) + 64 ) * 4, allocated( piece.get() ) );
                }

                EXPECT_TRUE( mapped == pieces ) << uint32_t( first );
            }

    qv___VectorsForceKernel( -1 );
}

// Numbers as most are, and with what no kernel takes: many digits, values out of range, other digits, and other characters.
TEST( Vectors, NumbersAreReadTheSame )
{
    std::mt19937 random( 7 );

    const auto digits = [&random]( std::u32string &chars, size_t most )
    {
        for( size_t count = random() % ( most + 1 ); count > 0; count-- )
            chars += random() % 300 ? U'0' + random() % 10 : U"\u0663/:a x\xFF11\u0131\U00100035"[random() % 9];
    };

    const auto read = []( Ref< QV_STRING > chars )
    {
        QV_INT  length = qvStringLength( chars ), integer = 1, scanned = 1, ends[2] = {};
        QV_REAL real      = 1;
        QV_BOOL isInteger = qvFormatTryDecodeInt( chars, 0, length, 10, &integer, &ends[0] );
        QV_BOOL isReal    = qvFormatTryDecodeReal( chars, 0, length, 10, &real, &ends[1] );
        EXPECT_EQ( isInteger, qvStringScanInt( chars, 0, -1, 10, &scanned, nullptr ) );
        EXPECT_EQ( integer, scanned );

        return std::tuple( isInteger, integer, ends[0], isReal, std::bit_cast< uint64_t >( real ), ends[1] );
    };

    for( int round = 0; round < 20000 && !HasFailure(); round++ )
    {
        std::u32string chars( random() % 2, U'-' );
        digits( chars, random() % 2 ? 21 : 9 );
        chars += random() % 2 ? U"" : random() % 4 ? U"." : U",";
        digits( chars, chars.size() < 12 ? 27 : 3 );
        chars = random() % 8 ? chars : random() % 2 ? U"-922337203685477580" + chars.substr( 0, 2 ) : U" " + chars;

        qv___VectorsForceKernel( PLAIN );
        const auto plain = read( text( chars ) );
        qv___VectorsForceKernel( -1 );
        EXPECT_TRUE( plain == read( text( chars ) ) ) << utf8( text( chars ) );
    }
}

// The kernel reads what stands before a number: here what was deleted, the fields of a small String, and no page.
TEST( Vectors, NumbersAreReadWhereverTheyStand )
{
    Ref< QV_STRING > deleted = text( U"x" ), large = text( U"-75" + std::u32string( 100000, U' ' ) );
    qvStringAppendCstr( deleted.at(), "1234567890", -1 );
    qvStringDelLeading( deleted.at(), 9 );
    Ref< QV_VECTOR >  parts( qvStringSplitChar( text( U"-75,90" ), U',', -1 ) );
    QV_STRING *const *part = reinterpret_cast< QV_STRING *const * >( qvVectorBacking( parts ) );

    const std::tuple< QV_STRING *, QV_INT, QV_INT > CASES[] = {
        { deleted, 2, 90 }, { large, 3, -75 }, { part[0], 3, -75 }, { part[1], 2, 90 } };

    for( auto [chars, length, expected] : CASES )
    {
        QV_INT value = 0;
        EXPECT_TRUE( qvFormatTryDecodeInt( chars, 0, length, 10, &value, nullptr ) );
        EXPECT_EQ( expected, value );
    }
}

#ifndef NDEBUG
// Vectors take what has the top bit for U+0000, so that only characters of a String may come to them.
TEST( Vectors, OnlyCharactersOfStringsBecomeAscii )
{
    Ref< QV_STRING >  bad = text( U"12345678" );
    Ref< QV_STORE >   store( qvStoreCreate() );
    Ref< QV_ENCODER > enc( qvEncoderCreate() );
    qvStoreSetValue( store.at(), text( U"address" ), bad );
    const_cast< QV_CHAR * >( qvStringBacking( bad ) )[7] = 0x80000000;

    EXPECT_DEATH( qvStringEqualsCstr( bad, "12345678", 8 ), "allCharsOk" );
    EXPECT_DEATH( qvEncoderEncodeStore( enc, store ), "allCharsOk" );
}
#endif

#include "qv_test_stream.h"

#include "qv/base/qv_dict.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_encoder.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_string.h"
#include "qv/charset/qv_charset.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf_line_source.h"
#include "qv/io/qv_string_char_source.h"
#include "qv/sys/qv_vectors_private.h"

#include <random>

using qv::Ref;
using namespace qv::test;
using namespace qv::vectors;

namespace
{
// Characters at the borders of what the kernels tell apart, and some between.
const char32_t BORDERS[] = { 0,      '\n',   '\v',   '\r',   0x0E,   '%',     '@',     'A',    'Z',    '[',
                             '`',    'a',    'z',    '{',    0x7F,   0x80,    0x85,    0xA0,   0xBF,   0xC0,
                             0xEC,   0xED,   0xEE,   0xFE,   0xFF,   0x100,   0x2FF,   0x300,  0x3FF,  0x400,
                             0x482,  0x483,  0x7FF,  0x800,  0x2001, 0x2002,  0x2027,  0x2028, 0x2029, 0x202A,
                             0x20CF, 0x20D0, 0xAC00, 0xD800, 0xFFFF, 0x10000, 0x10FFFF };

// Mostly ASCII, so that whole groups of it come up and single other characters stand anywhere in them.
std::u32string anyText( std::mt19937 &random )
{
    std::u32string chars( random() % 80, U'x' );
    unsigned       others = random() % 3 ? random() % 20 : 1000;

    for( char32_t &ch : chars )
        ch = random() % 1000 < others ? BORDERS[random() % std::size( BORDERS )] : U'a' + random() % 26;

    return chars;
}

typedef void ( *Change )( QV_STRING ** );

// All that the families make of a text on kernels, one after the other. The walks hold the results of the kernel that the
// machine would choose against models.
std::string madeOf( const std::u32string &values, std::mt19937 random )
{
    std::string       made;
    Ref< QV_STRING >  whole = text( values );
    Ref< QV_ENCODER > enc( qvEncoderCreate() );

    for( Change change :
         { qvStringToUpper, qvStringToLower, qvStringToCaseFold, qvStringNormalizeNFC, qvStringNormalizeNFD } )
    {
        Ref< QV_STRING > changed = text( values );
        change( changed.at() );
        qvEncoderEncodeString( enc, changed );
    }

    Ref< QV_BUFFER >  encoded( qvEncoderBuffer( enc ) );
    Ref< QV_DECODER > dec( qvDecoderCreate( encoded ) );
    made = bytes( encoded );

    for( int i = 0; i < 5; i++ )
    {
        Ref< QV_STRING > qvs;
        EXPECT_TRUE( qvDecoderTryDecodeString( dec, qvs.at() ) );
        made += utf8( qvs ) + ' ';
    }

    for( QV_INT charset : { QV_CHARSET_MSFT_CP1252, QV_CHARSET_KOI_8R, QV_CHARSET_MSFT_CP037, QV_CHARSET_UTF_8 } )
        made += bytes( Ref< QV_BUFFER >( qvCharsetStringToBuffer( charset, whole ) ) );

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
    Ref< QV_STRING_CHAR_SOURCE > scs( qvStringCharSourceCreate( whole ) );
    Ref< QV_CHAR_SOURCE >        source( qvStringCharSourceCharSource( scs ) );
    Ref< QV_NLF_LINE_SOURCE >    nls( qvNlfLineSourceCreate( source, 255 ) );
    Ref< QV_LINE_SOURCE >        lines( qvNlfLineSourceLineSource( nls ) );

    while( Ref< QV_STRING > line{ qvLineSourceRead( lines ) } )
        made += std::to_string( qvStringLength( line ) ) + ' ';

    return made;
}
} // namespace

TEST( Vectors, EveryKernelGivesTheSame )
{
    EXPECT_EQ( PLAIN, qv___VectorsForceKernel( PLAIN ) );
    std::mt19937 random( 20250317 );

    for( int round = 0; round < 1500 && !HasFailure(); round++ )
    {
        SCOPED_TRACE( round );
        std::u32string values = anyText( random );
        qv___VectorsForceKernel( PLAIN );
        std::string plain = madeOf( values, random );

        for( QV_INT kernel : { VECTORS_16, VECTORS_32 } )
        {
            SCOPED_TRACE( kernel );

            if( qv___VectorsForceKernel( kernel ) == kernel )
            {
                EXPECT_EQ( plain, madeOf( values, random ) );
            }
        }
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

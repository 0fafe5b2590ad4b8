#include "qv/sys/qv_utf8_private.h"

#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_vectors_private.h"

#include <string.h>

namespace
{
using namespace qv::utf8;
using qv::vectors::has16;
using qv::vectors::has32;
using qv::vectors::has64;

// What the vectors of 32 bytes are called for: enough for one step.
const QV_INT LEAST_IN = 80, LEAST_ROOM = 64;   // bytes and characters on decoding
const QV_INT LEAST_OUT = 32, LEAST_BYTES = 64; // characters and bytes on encoding

const QV_INT WORD = 8;

uint64_t load( const uint8_t *in )
{
    uint64_t word;
    memcpy( &word, in, sizeof( word ) );

    return word;
}

// Decodes the sequences that begin before `stop`; false where decode() has to stop.
bool decodePlain( Decoded &done, const uint8_t *stop, const uint8_t *inEnd, const QV_CHAR *outEnd )
{
    const uint8_t *in  = done.in;
    QV_CHAR       *out = done.out;
    bool           ok  = true;

    while( in < stop )
    {
        for( ; inEnd - in >= 2 * WORD && outEnd - out >= 2 * WORD && isAscii( load( in ) | load( in + WORD ) );
             in += 2 * WORD, out += 2 * WORD )
            for( int i = 0; i < 2 * WORD; i++ )
                out[i] = in[i];

        // Up to what ended the blocks, which is fewer than 16 bytes away.
        while( in < stop && out < outEnd && *in < 0x80 )
            *out++ = *in++;

        // A run of sequences. Text that isn't ASCII mostly stays at one length, so this predicts well; single blanks
        // and the like do not end the run.
        while( in < stop && out < outEnd )
        {
            QV_CHAR first = *in;

            if( first < 0x80 )
            {
                *out++ = first;
                in++;

                if( in < stop && *in < 0x80 )
                    break;
            }
            else if( inEnd - in >= 3 && first >= 0xE0 && first < 0xF0 && follows( in[1] ) && follows( in[2] ) )
            {
                *out++ = ( first & 0xF ) << 12 | ( in[1] & 0x3F ) << 6 | ( in[2] & 0x3F );
                in += 3;
            }
            else if( inEnd - in >= 2 && first >= 0xC0 && first < 0xE0 && follows( in[1] ) )
            {
                *out++ = ( first & 0x1F ) << 6 | ( in[1] & 0x3F );
                in += 2;
            }
            else
            {
                QV_CHAR ch;
                QV_INT  bytes = take( in, inEnd, &ch );

                if( bytes == 0 )
                {
                    ok   = false;
                    stop = in;
                    break;
                }

                *out++ = ch;
                in += bytes;
            }
        }

        if( out == outEnd )
        {
            ok = ok && in >= stop;
            break;
        }
    }

    done = { in, out };
    return ok;
}

// The same for the characters up to `stop` and encode().
bool encodePlain( Encoded &done, const QV_CHAR *stop, const uint8_t *outEnd )
{
    const QV_CHAR *in  = done.in;
    uint8_t       *out = done.out;
    bool           ok  = true;

    while( in < stop && ok )
    {
        // Four at once, so that nothing depends on each of them.
        for( ; stop - in >= 4 && outEnd - out >= 4 && ( in[0] | in[1] | in[2] | in[3] ) < 0x80; in += 4, out += 4 )
            for( int i = 0; i < 4; i++ )
                out[i] = static_cast< uint8_t >( in[i] );

        while( in < stop )
        {
            QV_CHAR ch = *in;

            if( !QV_CHAR_OK( ch ) || outEnd - out < qv::utf8::length( ch ) )
            {
                ok = false;
                break;
            }

            out += put( ch, out );
            in++;

            if( ch < 0x80 && in < stop && *in < 0x80 )
                break;
        }
    }

    done = { in, out };
    return ok;
}
} // namespace

Decoded qv::utf8::decode( const uint8_t *in, const uint8_t *inEnd, QV_CHAR *out, QV_CHAR *outEnd )
{
    Decoded done = { in, out };
    bool    ok   = true;

    while( ok && done.in < inEnd )
    {
        const uint8_t *stop = inEnd;

        if( inEnd - done.in >= WORD && has64() )
        {
            decodeBlocks64( done, inEnd, outEnd );

            if( inEnd - done.in >= LEAST_ROOM )
                stop = done.in + LEAST_ROOM;
        }
        else if( inEnd - done.in >= LEAST_IN && outEnd - done.out >= LEAST_ROOM && has32() )
        {
            decodeBlocks32( done, inEnd, outEnd );

            // What the vectors do not take is often a fault. Behind it they can go on.
            if( inEnd - done.in >= LEAST_IN && outEnd - done.out >= LEAST_ROOM )
                stop = done.in + LEAST_ROOM;
        }

        ok = decodePlain( done, stop, inEnd, outEnd );
    }

    QV_ASSERT( done.in >= in && done.in <= inEnd && done.out >= out && done.out <= outEnd );
    return done;
}

Counted qv::utf8::count( const uint8_t *in, const uint8_t *inEnd )
{
    Counted done = { in, 0 };

    while( done.in < inEnd )
    {
        const uint8_t *stop = inEnd;

        if( inEnd - done.in >= LEAST_IN && has32() )
        {
            countBlocks32( done, inEnd );

            if( inEnd - done.in >= LEAST_IN )
                stop = done.in + LEAST_ROOM;
        }

        while( done.in < stop )
        {
            if( inEnd - done.in >= WORD && isAscii( load( done.in ) ) )
            {
                done = { done.in + WORD, done.count + WORD };
                continue;
            }

            QV_CHAR ch;
            QV_INT  bytes = take( done.in, inEnd, &ch );

            if( bytes == 0 )
                return done;

            done = { done.in + bytes, done.count + 1 };
        }
    }

    return done;
}

Encoded qv::utf8::encode( const QV_CHAR *in, const QV_CHAR *inEnd, uint8_t *out, uint8_t *outEnd )
{
    Encoded done = { in, out };
    bool    ok   = true;

    while( ok && done.in < inEnd )
    {
        const QV_CHAR *stop = inEnd;

        if( inEnd - done.in >= WORD && has64() )
        {
            encodeBlocks64( done, inEnd, outEnd );

            if( inEnd - done.in >= LEAST_OUT )
                stop = done.in + LEAST_OUT;
        }
        else if( inEnd - done.in >= LEAST_OUT && outEnd - done.out >= LEAST_BYTES )
        {
            if( has32() )
                encodeBlocks32( done, inEnd, outEnd );
            else if( has16() )
                encodeBlocks16( done, inEnd, outEnd );

            if( has16() && inEnd - done.in >= LEAST_OUT && outEnd - done.out >= LEAST_BYTES )
                stop = done.in + LEAST_OUT / 2;
        }

        ok = encodePlain( done, stop, outEnd );
    }

    QV_ASSERT( done.in >= in && done.in <= inEnd && done.out >= out && done.out <= outEnd );
    return done;
}

QV_INT qv::utf8::length( const QV_CHAR *in, QV_INT count )
{
    QV_INT i = 0, bytes = 0;

    if( count >= 32 && has32() )
    {
        Measured measured = measureBlocks32( in, count );
        i                 = measured.chars;
        bytes             = measured.bytes;
    }

    for( ; i < count; i++ )
        bytes += length( QV_CHAR_OK( in[i] ) ? in[i] : REPLACEMENT );

    return bytes;
}

QV_INT qv::utf8::encodeLeadingAscii( uint8_t *out, const QV_CHAR *in, QV_INT count )
{
    QV_INT i = count >= 32 && has32() ? encodeAsciiBlocks32( out, in, count ) : 0;

    for( ; i < count && in[i] < 0x80; i++ )
        out[i] = static_cast< uint8_t >( in[i] );

    return i;
}

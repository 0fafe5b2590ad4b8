#include "qv/charset/qv_charset_codec_private.h"
#include "qv/charset/qv_charset_map_private.h"
#include "qv/io/qv_char_source_private.h"
#include "qv/sys/qv_vectors_private.h"

// The map function is called once for every byte when the source is created.
struct QV___CHARSET_MAP_CHAR_SOURCE_CLOSURE : qv::CodecSource
{
    QV_CHAR                chars[256]; // NONE where there is no character
    qv::vectors::ByteChars halves;     // the same for vectors, if all of them are below 0x10000
    bool                   hasHalves;
    uint8_t                firstOther; // all bytes but those from here up to `endOther` are their own characters
    int                    endOther;
};

QV___FAMILY(
    ___CharsetMapCharSourceClosure, QV___CHARSET_MAP_CHAR_SOURCE_CLOSURE, qv::freeCodecSource, nullptr, nullptr )

namespace
{
using Source = QV___CHARSET_MAP_CHAR_SOURCE_CLOSURE;

const QV_CHAR NONE  = 0xFFFFFFFF;
const QV_INT  BLOCK = 16;

// Decodes 16 bytes at once. False if one of them has no character; what is at `out` is undefined then.
bool takeBlock( const QV_CHAR *table, const uint8_t *in, QV_CHAR *out )
{
    QV_CHAR all = 0;

    for( QV_INT i = 0; i < BLOCK; i++ )
    {
        QV_CHAR ch = table[in[i]];
        out[i]     = ch;
        all |= ch;
    }

    return all >> 31 == 0; // only NONE has the topmost bit
}

[[maybe_unused]] bool areDecoded( const Source *csc, const uint8_t *in, QV_INT count, const QV_CHAR *out )
{
    for( QV_INT i = 0; i < count; i++ )
        if( out[i] != csc->chars[in[i]] || out[i] == NONE )
            return false;

    return true;
}

// Sets what the vectors take from the characters.
void completeTable( Source *csc )
{
    csc->hasHalves  = true;
    csc->firstOther = 0;
    csc->endOther   = 1; // if there are none, one that hardly ever comes
    bool hasOthers  = false;

    for( int byte = 0; byte < 256; byte++ )
    {
        QV_CHAR ch             = csc->chars[byte];
        csc->halves.low[byte]  = static_cast< uint8_t >( ch );
        csc->halves.high[byte] = static_cast< uint8_t >( ch >> 8 );
        csc->hasHalves &= ch < 0x10000 || ch == NONE;

        if( ch == static_cast< QV_CHAR >( byte ) )
            continue;

        if( !hasOthers )
            csc->firstOther = static_cast< uint8_t >( byte );

        hasOthers     = true;
        csc->endOther = byte + 1;
    }
}

QV_BOOL readMapped( QV_OBJ *closure, QV_CHAR *chars, QV_INT maxCharCount, QV_INT *charsRead )
{
    Source *csc = static_cast< Source * >( closure );

    while( *charsRead < maxCharCount )
    {
        if( csc->left() == 0 && !qv::refillCache( csc ) )
            return qv::endOfBytes( csc );

        const uint8_t *in  = csc->cache + csc->cachePos;
        const uint8_t *end = in + std::min( csc->left(), maxCharCount - *charsRead );
        QV_CHAR       *out = chars + *charsRead;
        bool           ok  = true;

        while( ok && in < end )
        {
            QV_INT done = csc->hasHalves && qv::vectors::has64()
                              ? qv::decodeBytes64( csc->halves, in, end - in, out )
                              : qv::widenOutside( in, end - in, csc->firstOther, csc->endOther, out );

            QV_ASSERT( areDecoded( csc, in, done, out ) );

            if( done == 0 && end - in >= BLOCK && takeBlock( csc->chars, in, out ) )
                done = BLOCK;

            in += done;
            out += done;

            if( done > 0 )
                continue;

            QV_CHAR ch = csc->chars[*in++];

            if( ch != NONE )
                *out++ = ch;
            else
            {
                csc->cachePos = in - csc->cache;
                ok            = qv::putInvalid( csc, &out, 1 );
            }
        }

        csc->cachePos = in - csc->cache;
        *charsRead    = out - chars;

        if( !ok )
            return QV_FALSE;
    }

    return QV_TRUE;
}

qv::Ref< Source > createMapSourceClosure( QV_BYTE_SOURCE *byteSource, QV_INT flags )
{
    return qv::Ref< Source >(
        qv::createCodecSource< Source >( qv___CharsetMapCharSourceClosureSort(), byteSource, flags ) );
}

QV_CHAR_SOURCE *createMapSource( Source *csc )
{
    completeTable( csc );
    return qv::createCharSource( qv::readString< readMapped, 1 >, readMapped, csc );
}
} // namespace

QV_CHAR_SOURCE *qv::createMapCharSource( QV_BYTE_SOURCE *byteSource, QV_INT flags, const uint16_t *chars )
{
    Ref< Source > csc = createMapSourceClosure( byteSource, flags );

    for( int byte = 0; byte < 256; byte++ )
        csc->chars[byte] = chars[byte] == QV___CHARSET_NO_CHARACTER ? NONE : chars[byte];

    return createMapSource( csc.get() );
}

QV_CHAR_SOURCE *qv___CharsetMapCharSourceCreate(
    QV_BYTE_SOURCE *byteSource, QV_INT flags, QV___CHARSET_BYTE_TO_CHAR_FUNC mapFunc )
{
    QV_CHECK( byteSource );
    QV_CHECK( mapFunc );

    qv::Ref< Source > csc = createMapSourceClosure( byteSource, flags );

    for( int byte = 0; byte < 256; byte++ )
        if( !mapFunc( static_cast< uint8_t >( byte ), &csc->chars[byte] ) )
            csc->chars[byte] = NONE;

    return createMapSource( csc.get() );
}

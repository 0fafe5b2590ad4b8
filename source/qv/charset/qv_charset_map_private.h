#ifndef QV_CHARSET_MAP_PRIVATE_H
#define QV_CHARSET_MAP_PRIVATE_H

#include "qv/runtime/qv_family.h"

/* The character sets with one byte a character. Each is a pair of pure functions over constant tables; one char source
   and one char sink serve all of them. */

/** The closures of the streams. */
typedef struct QV___CHARSET_MAP_CHAR_SINK_CLOSURE   QV___CHARSET_MAP_CHAR_SINK_CLOSURE;
typedef struct QV___CHARSET_MAP_CHAR_SOURCE_CLOSURE QV___CHARSET_MAP_CHAR_SOURCE_CLOSURE;

QV_FAMILY( ___CharsetMapCharSinkClosure, QV___CHARSET_MAP_CHAR_SINK_CLOSURE )
QV_FAMILY( ___CharsetMapCharSourceClosure, QV___CHARSET_MAP_CHAR_SOURCE_CLOSURE )

/** Stores the character of a byte; false if it has none. */
typedef QV_BOOL ( *QV___CHARSET_BYTE_TO_CHAR_FUNC )( uint8_t byte, QV_CHAR *charOut );

/** Stores the byte of a character, the lowest if it has several; false if it has none. */
typedef QV_BOOL ( *QV___CHARSET_CHAR_TO_BYTE_FUNC )( QV_CHAR ch, uint8_t *byteOut );

/** A new stream on top of a byte stream, which it retains, owned by the caller. `flags` are QV_CHARSET_FLAG bits. A
    sink composes what is written first (NFC), since these sets have letters with their marks as one character; so it
    may keep the last characters back until it is flushed. Null ends the process. */
QV_API QV_CHAR_SINK *qv___CharsetMapCharSinkCreate(
    QV_BYTE_SINK *byteSink, QV_INT flags, QV___CHARSET_CHAR_TO_BYTE_FUNC mapFunc );
QV_API QV_CHAR_SOURCE *qv___CharsetMapCharSourceCreate(
    QV_BYTE_SOURCE *byteSource, QV_INT flags, QV___CHARSET_BYTE_TO_CHAR_FUNC mapFunc );

/** All of these sets, in the order of the registry. */
#define QV___CHARSET_MAPS( MAP )                                                                                       \
    MAP( Ascii )                                                                                                       \
    MAP( Iso8859_1 )                                                                                                   \
    MAP( Iso8859_2 )                                                                                                   \
    MAP( Iso8859_3 )                                                                                                   \
    MAP( Iso8859_4 )                                                                                                   \
    MAP( Iso8859_5 )                                                                                                   \
    MAP( Iso8859_6 )                                                                                                   \
    MAP( Iso8859_7 )                                                                                                   \
    MAP( Iso8859_8 )                                                                                                   \
    MAP( Iso8859_9 )                                                                                                   \
    MAP( Iso8859_10 )                                                                                                  \
    MAP( Iso8859_11 )                                                                                                  \
    MAP( Iso8859_13 )                                                                                                  \
    MAP( Iso8859_14 )                                                                                                  \
    MAP( Iso8859_15 )                                                                                                  \
    MAP( Iso8859_16 )                                                                                                  \
    MAP( Koi8R )                                                                                                       \
    MAP( MsftCp037 )                                                                                                   \
    MAP( MsftCp437 )                                                                                                   \
    MAP( MsftCp500 )                                                                                                   \
    MAP( MsftCp850 )                                                                                                   \
    MAP( MsftCp852 )                                                                                                   \
    MAP( MsftCp855 )                                                                                                   \
    MAP( MsftCp857 )                                                                                                   \
    MAP( MsftCp860 )                                                                                                   \
    MAP( MsftCp861 )                                                                                                   \
    MAP( MsftCp862 )                                                                                                   \
    MAP( MsftCp863 )                                                                                                   \
    MAP( MsftCp864 )                                                                                                   \
    MAP( MsftCp865 )                                                                                                   \
    MAP( MsftCp866 )                                                                                                   \
    MAP( MsftCp869 )                                                                                                   \
    MAP( MsftCp874 )                                                                                                   \
    MAP( MsftCp875 )                                                                                                   \
    MAP( MsftCp1026 )                                                                                                  \
    MAP( MsftCp1250 )                                                                                                  \
    MAP( MsftCp1251 )                                                                                                  \
    MAP( MsftCp1252 )                                                                                                  \
    MAP( MsftCp1253 )                                                                                                  \
    MAP( MsftCp1254 )                                                                                                  \
    MAP( MsftCp1255 )                                                                                                  \
    MAP( MsftCp1256 )                                                                                                  \
    MAP( MsftCp1257 )                                                                                                  \
    MAP( MsftCp1258 )

#define QV___CHARSET_MAP_DECLARE( Name )                                                                               \
    QV_API QV_BOOL qv___Charset##Name##MapByteToChar( uint8_t byte, QV_CHAR *charOut );                                \
    QV_API QV_BOOL qv___Charset##Name##MapCharToByte( QV_CHAR ch, uint8_t *byteOut );

QV___CHARSET_MAPS( QV___CHARSET_MAP_DECLARE )

#undef QV___CHARSET_MAP_DECLARE

/** What a table has for a byte without a character. */
#define QV___CHARSET_NO_CHARACTER 0xFFFF

#ifdef __cplusplus
namespace qv
{
/** The same as qv___CharsetMapCharSourceCreate() for a set of the library, by its table of 256 characters. This is
    faster for short texts, since no function is called for each byte. */
QV_CHAR_SOURCE *createMapCharSource( QV_BYTE_SOURCE *byteSource, QV_INT flags, const uint16_t *chars );

/** The table of each set. */
#define QV___CHARSET_MAP_DECLARE( Name ) const uint16_t *charsetChars##Name();

QV___CHARSET_MAPS( QV___CHARSET_MAP_DECLARE )

#undef QV___CHARSET_MAP_DECLARE
} // namespace qv
#endif

#ifdef __cplusplus
namespace qv
{
/** Byte to character, by the table of a set. */
inline QV_BOOL mapByteToChar( const uint16_t *chars, uint8_t byte, QV_CHAR *charOut )
{
    if( chars[byte] == QV___CHARSET_NO_CHARACTER )
        return QV_FALSE;

    *charOut = chars[byte];
    return QV_TRUE;
}

/** Character to byte, by the tables of a set. `pages` has the page of `bytes` for the upper bits of a character. A
    place of a page that belongs to no character has byte 0, which is the byte of another character. */
inline QV_BOOL mapCharToByte(
    const uint16_t *chars, const uint8_t *pages, const uint8_t ( *bytes )[256], QV_CHAR ch, uint8_t *byteOut )
{
    if( ch > 0xFFFE )
        return QV_FALSE;

    uint8_t byte = bytes[pages[ch >> 8]][ch & 0xFF];

    if( chars[byte] != ch )
        return QV_FALSE;

    *byteOut = byte;
    return QV_TRUE;
}
} // namespace qv
#endif

/** Defines the functions of a set over its tables. */
#define QV___CHARSET_MAP( Name, chars, pages, bytes )                                                                  \
    QV_BOOL qv___Charset##Name##MapByteToChar( uint8_t byte, QV_CHAR *charOut )                                        \
    {                                                                                                                  \
        return qv::mapByteToChar( chars, byte, charOut );                                                              \
    }                                                                                                                  \
                                                                                                                       \
    QV_BOOL qv___Charset##Name##MapCharToByte( QV_CHAR ch, uint8_t *byteOut )                                          \
    {                                                                                                                  \
        return qv::mapCharToByte( chars, pages, bytes, ch, byteOut );                                                  \
    }                                                                                                                  \
                                                                                                                       \
    const uint16_t *qv::charsetChars##Name()                                                                           \
    {                                                                                                                  \
        return chars;                                                                                                  \
    }

#endif

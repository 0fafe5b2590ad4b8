#ifndef QV_CHARSET_MAP_PRIVATE_H
#define QV_CHARSET_MAP_PRIVATE_H

#include "qv/runtime/qv_family.h"

/* The character sets with one byte a character. Each is a pair of pure functions over constant tables that need no
   start-up; one char source and one char sink serve them all. */

/** The closures of the streams. */
typedef struct QV___CHARSET_MAP_CHAR_SINK_CLOSURE   QV___CHARSET_MAP_CHAR_SINK_CLOSURE;
typedef struct QV___CHARSET_MAP_CHAR_SOURCE_CLOSURE QV___CHARSET_MAP_CHAR_SOURCE_CLOSURE;

QV_FAMILY( ___CharsetMapCharSinkClosure, QV___CHARSET_MAP_CHAR_SINK_CLOSURE )
QV_FAMILY( ___CharsetMapCharSourceClosure, QV___CHARSET_MAP_CHAR_SOURCE_CLOSURE )

/** Stores the character of a byte; false if it has none. */
typedef QV_BOOL ( *QV___CHARSET_BYTE_TO_CHAR_FUNC )( uint8_t byte, QV_CHAR *charOut );

/** Stores the byte of a character, the lowest where there are two; false if it has none. */
typedef QV_BOOL ( *QV___CHARSET_CHAR_TO_BYTE_FUNC )( QV_CHAR ch, uint8_t *byteOut );

/** A new stream over a lower one, which it retains. `flags` are QV_CHARSET_FLAG bits. What is written goes through
    composition first, since these sets have letters with their marks; so a sink may hold the last character back until
    it is flushed. Null ends the process. */
QV_API QV_CHAR_SINK *qv___CharsetMapCharSinkCreate(
    QV_BYTE_SINK *byteSink, QV_INT flags, QV___CHARSET_CHAR_TO_BYTE_FUNC mapFunc );
QV_API QV_CHAR_SOURCE *qv___CharsetMapCharSourceCreate(
    QV_BYTE_SOURCE *byteSource, QV_INT flags, QV___CHARSET_BYTE_TO_CHAR_FUNC mapFunc );

/** All of them, in the order of the registry. */
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
/** The same as qv___CharsetMapCharSourceCreate() for a set of the library, by its table. Asking a function for each byte
    takes longer than decoding a short text. */
QV_CHAR_SOURCE *createMapCharSource( QV_BYTE_SOURCE *byteSource, QV_INT flags, const uint16_t *chars );

/** The tables. */
#define QV___CHARSET_MAP_DECLARE( Name ) const uint16_t *charsetChars##Name();

QV___CHARSET_MAPS( QV___CHARSET_MAP_DECLARE )

#undef QV___CHARSET_MAP_DECLARE
} // namespace qv
#endif

/** Defines a pair, and the function above, over the tables of its source: CHARS has the character of each byte; PAGES
    the page of BYTES for the upper bits of a character. A place of BYTES that no character owns names byte 0, whose
    character is another. */
#define QV___CHARSET_MAP( Name )                                                                                       \
    QV_BOOL qv___Charset##Name##MapByteToChar( uint8_t byte, QV_CHAR *charOut )                                        \
    {                                                                                                                  \
        if( CHARS[byte] == QV___CHARSET_NO_CHARACTER )                                                                 \
            return QV_FALSE;                                                                                           \
                                                                                                                       \
        *charOut = CHARS[byte];                                                                                        \
        return QV_TRUE;                                                                                                \
    }                                                                                                                  \
                                                                                                                       \
    QV_BOOL qv___Charset##Name##MapCharToByte( QV_CHAR ch, uint8_t *byteOut )                                          \
    {                                                                                                                  \
        if( ch > 0xFFFE )                                                                                              \
            return QV_FALSE;                                                                                           \
                                                                                                                       \
        uint8_t byte = BYTES[PAGES[ch >> 8]][ch & 0xFF];                                                               \
                                                                                                                       \
        if( CHARS[byte] != ch )                                                                                        \
            return QV_FALSE;                                                                                           \
                                                                                                                       \
        *byteOut = byte;                                                                                               \
        return QV_TRUE;                                                                                                \
    }                                                                                                                  \
                                                                                                                       \
    const uint16_t *qv::charsetChars##Name()                                                                           \
    {                                                                                                                  \
        return CHARS;                                                                                                  \
    }

#endif

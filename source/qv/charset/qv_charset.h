/** @file
    Character sets: their names, and the way between bytes and text.

        QV_INT cs = qvCharsetFromIanaName( name );                      // "utf-8", "Latin1", "1252"; or -1
        QV_STRING *qvs = qvCharsetBufferToString( cs, buffer );         // at once
        QV_CHAR_SOURCE *chars = qvCharsetCreateCharSource( bytes, cs, 0 );   // or as a stream

    A charset is one of the numbers QV_CHARSET_... below; -1 as a result means none. Any other number as a charset, and
    null as an object, end the process. Data never does: the flags say what happens to bytes and characters that cannot
    be converted.

    Results belong to the caller. Any thread may call these functions between start-up and shutdown, when the registry
    does not change. One thread at a time may use a stream. */

#ifndef QV_CHARSET_H
#define QV_CHARSET_H

#include "qv/sys/qv_types.h"

/* Values --------------------------------------------------------------------------------------------------------- */

#define QV_CHARSET_ASCII       0  /**< US-ASCII, 7 bits */
#define QV_CHARSET_ISO_8859_1  1  /**< ISO 8859-1: Latin 1, Western European */
#define QV_CHARSET_ISO_8859_2  2  /**< ISO 8859-2: Latin 2, Central European */
#define QV_CHARSET_ISO_8859_3  3  /**< ISO 8859-3: Latin 3, South European */
#define QV_CHARSET_ISO_8859_4  4  /**< ISO 8859-4: Latin 4, North European */
#define QV_CHARSET_ISO_8859_5  5  /**< ISO 8859-5: Latin and Cyrillic */
#define QV_CHARSET_ISO_8859_6  6  /**< ISO 8859-6: Latin and Arabic */
#define QV_CHARSET_ISO_8859_7  7  /**< ISO 8859-7: Latin and Greek */
#define QV_CHARSET_ISO_8859_8  8  /**< ISO 8859-8: Latin and Hebrew */
#define QV_CHARSET_ISO_8859_9  9  /**< ISO 8859-9: Latin 5, Turkish */
#define QV_CHARSET_ISO_8859_10 10 /**< ISO 8859-10: Latin 6, Nordic */
#define QV_CHARSET_ISO_8859_11 11 /**< ISO 8859-11: Latin and Thai */
#define QV_CHARSET_ISO_8859_13 12 /**< ISO 8859-13: Latin 7, Baltic */
#define QV_CHARSET_ISO_8859_14 13 /**< ISO 8859-14: Latin 8, Celtic */
#define QV_CHARSET_ISO_8859_15 14 /**< ISO 8859-15: Latin 9, Western European with the euro sign */
#define QV_CHARSET_ISO_8859_16 15 /**< ISO 8859-16: Latin 10, South-Eastern European */
#define QV_CHARSET_KOI_8R      16 /**< KOI8-R: Russian */
#define QV_CHARSET_MSFT_CP037  17 /**< Code page 37: EBCDIC, United States and Canada */
#define QV_CHARSET_MSFT_CP437  18 /**< Code page 437: DOS, United States */
#define QV_CHARSET_MSFT_CP500  19 /**< Code page 500: EBCDIC, international */
#define QV_CHARSET_MSFT_CP850  20 /**< Code page 850: DOS, Western European */
#define QV_CHARSET_MSFT_CP852  21 /**< Code page 852: DOS, Central European */
#define QV_CHARSET_MSFT_CP855  22 /**< Code page 855: DOS, Cyrillic */
#define QV_CHARSET_MSFT_CP857  23 /**< Code page 857: DOS, Turkish */
#define QV_CHARSET_MSFT_CP860  24 /**< Code page 860: DOS, Portuguese */
#define QV_CHARSET_MSFT_CP861  25 /**< Code page 861: DOS, Icelandic */
#define QV_CHARSET_MSFT_CP862  26 /**< Code page 862: DOS, Hebrew */
#define QV_CHARSET_MSFT_CP863  27 /**< Code page 863: DOS, Canadian French */
#define QV_CHARSET_MSFT_CP864  28 /**< Code page 864: DOS, Arabic */
#define QV_CHARSET_MSFT_CP865  29 /**< Code page 865: DOS, Nordic */
#define QV_CHARSET_MSFT_CP866  30 /**< Code page 866: DOS, Russian */
#define QV_CHARSET_MSFT_CP869  31 /**< Code page 869: DOS, Greek */
#define QV_CHARSET_MSFT_CP874  32 /**< Code page 874: Windows, Thai */
#define QV_CHARSET_MSFT_CP875  33 /**< Code page 875: EBCDIC, Greek */
#define QV_CHARSET_MSFT_CP1026 34 /**< Code page 1026: EBCDIC, Turkish */
#define QV_CHARSET_MSFT_CP1250 35 /**< Code page 1250: Windows, Central European */
#define QV_CHARSET_MSFT_CP1251 36 /**< Code page 1251: Windows, Cyrillic */
#define QV_CHARSET_MSFT_CP1252 37 /**< Code page 1252: Windows, Western European */
#define QV_CHARSET_MSFT_CP1253 38 /**< Code page 1253: Windows, Greek */
#define QV_CHARSET_MSFT_CP1254 39 /**< Code page 1254: Windows, Turkish */
#define QV_CHARSET_MSFT_CP1255 40 /**< Code page 1255: Windows, Hebrew */
#define QV_CHARSET_MSFT_CP1256 41 /**< Code page 1256: Windows, Arabic */
#define QV_CHARSET_MSFT_CP1257 42 /**< Code page 1257: Windows, Baltic */
#define QV_CHARSET_MSFT_CP1258 43 /**< Code page 1258: Windows, Vietnamese */
#define QV_CHARSET_UTF_8       44 /**< UTF-8 */
#define QV_CHARSET_UTF_16      45 /**< UTF-16: written little-endian, read by the byte order mark */
#define QV_CHARSET_UTF_16_BE   46 /**< UTF-16, big-endian */
#define QV_CHARSET_UTF_16_LE   47 /**< UTF-16, little-endian */
#define QV_CHARSET_UTF_32      48 /**< UTF-32: written little-endian, read by the byte order mark */
#define QV_CHARSET_UTF_32_BE   49 /**< UTF-32, big-endian */
#define QV_CHARSET_UTF_32_LE   50 /**< UTF-32, little-endian */

/** True for the number of a charset. */
#define QV_CHARSET_OK( cs ) ( ( cs ) >= 0 && ( cs ) <= 50 )

/** Invalid input makes the read or write fail. */
#define QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER 0x1

/** Invalid input is left out. This flag wins over the first. If neither is set, invalid input is replaced: on reading
    by U+FFFD, on writing by the encoded U+FFFD or, if the charset lacks that, by a question mark. */
#define QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS 0x2

/** A source does not use a byte order mark at the start, and delivers it as the character U+FEFF. */
#define QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK 0x4

/** A sink of a Unicode charset begins with a byte order mark. */
#define QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK 0x8

/* Flags ---------------------------------------------------------------------------------------------------------- */

/** The flags without the bits that are not defined above, and without ABORT_ON_INVALID_CHARACTER if
    IGNORE_INVALID_CHARACTERS is set. */
QV_API QV_INT qvCharsetFlagsNormalize( QV_INT flags );

/** @{ */
/** Flags from and to a text of their names, `QV_CHARSET_FLAG_A|QV_CHARSET_FLAG_B`, normalised. Parts of a text that are
    no names or numbers are ignored. */
QV_API QV_INT     qvCharsetFlagsFromString( QV_STRING *qvs );
QV_API QV_STRING *qvCharsetFlagsToString( QV_INT flags );
/** @} */

/* Names ---------------------------------------------------------------------------------------------------------- */

/** The charset with the name of a constant above, or with its number in digits; -1 if there is none. */
QV_API QV_INT qvCharsetFromString( QV_STRING *qvs );

/** The name of the constant, like "QV_CHARSET_UTF_8". */
QV_API QV_STRING *qvCharsetToString( QV_INT cs );

/** The charset with a name or alias of the IANA registry, in upper or lower case; -1 if there is none. The number of a
    Windows code page is an alias too. */
QV_API QV_INT qvCharsetFromIanaName( QV_STRING *name );

/** The preferred name of a charset in the IANA registry. */
QV_API QV_STRING *qvCharsetToIanaName( QV_INT cs );

/** All names of a charset as a new Vector of Strings, the preferred one first. A name may occur twice, also in another
    case. */
QV_API QV_VECTOR *qvCharsetIanaNames( QV_INT cs );

/** @{ */
/** The charset of a Windows code page, and the code page of a charset; -1 if there is none. A negative code page ends
    the process. */
QV_API QV_INT qvCharsetFromWindowsCodePage( QV_INT cp );
QV_API QV_INT qvCharsetToWindowsCodePage( QV_INT cs );
/** @} */

/* Conversion ----------------------------------------------------------------------------------------------------- */

/** @{ */
/** A new stream of characters on top of a byte stream, which it retains. `flags` are QV_CHARSET_FLAG_... or 0. A source
    reads up to 1 KiB ahead. A sink keeps up to 1 KiB until it is flushed or freed; for a charset with one byte a
    character, it also keeps the last characters, which a following mark may join. Flushing it writes all that to the
    byte sink, but does not flush the byte sink. */
QV_API QV_CHAR_SOURCE *qvCharsetCreateCharSource( QV_BYTE_SOURCE *byteSource, QV_INT charset, QV_INT flags );
QV_API QV_CHAR_SINK   *qvCharsetCreateCharSink( QV_BYTE_SINK *byteSink, QV_INT charset, QV_INT flags );
/** @} */

/** @{ */
/** The text that the bytes of a Buffer encode, as a new String. Null if the bytes are invalid and the flags have
    ABORT_ON_INVALID_CHARACTER. The form without flags is that with 0. */
QV_API QV_STRING *qvCharsetBufferToString( QV_INT charset, QV_BUFFER *buffer );
QV_API QV_STRING *qvCharsetBufferToStringWithFlags( QV_INT charset, QV_BUFFER *buffer, QV_INT flags );
/** @} */

/** @{ */
/** The bytes that encode a text, as a new Buffer. Null if a character cannot be encoded and the flags have
    ABORT_ON_INVALID_CHARACTER. The form without flags is that with 0. */
QV_API QV_BUFFER *qvCharsetStringToBuffer( QV_INT charset, QV_STRING *string );
QV_API QV_BUFFER *qvCharsetStringToBufferWithFlags( QV_INT charset, QV_STRING *string, QV_INT flags );
/** @} */

#endif

/** @file
    Character sets: their names, and the way between bytes and text.

        QV_INT cs = qvCharsetFromIanaName( name );                      // "utf-8", "Latin1", "1252"; or -1
        QV_STRING *qvs = qvCharsetBufferToString( cs, buffer );         // at once
        QV_CHAR_SOURCE *chars = qvCharsetCreateCharSource( bytes, cs, 0 );   // or as a stream

    A charset is one of the numbers below; -1 as a result means that there is none. Any other number where a charset
    is expected, and null as an object, end the process. Data never does: the flags tell what becomes of bytes and
    characters that cannot be converted.

    Results belong to the caller. The registry does not change between start-up and shutdown, so any thread may ask
    it; a stream belongs to one thread at a time. */

#ifndef QV_CHARSET_H
#define QV_CHARSET_H

#include "qv/sys/qv_types.h"

/* Values --------------------------------------------------------------------------------------------------------- */

#define QV_CHARSET_ASCII       0
#define QV_CHARSET_ISO_8859_1  1
#define QV_CHARSET_ISO_8859_2  2
#define QV_CHARSET_ISO_8859_3  3
#define QV_CHARSET_ISO_8859_4  4
#define QV_CHARSET_ISO_8859_5  5
#define QV_CHARSET_ISO_8859_6  6
#define QV_CHARSET_ISO_8859_7  7
#define QV_CHARSET_ISO_8859_8  8
#define QV_CHARSET_ISO_8859_9  9
#define QV_CHARSET_ISO_8859_10 10
#define QV_CHARSET_ISO_8859_11 11
#define QV_CHARSET_ISO_8859_13 12
#define QV_CHARSET_ISO_8859_14 13
#define QV_CHARSET_ISO_8859_15 14
#define QV_CHARSET_ISO_8859_16 15
#define QV_CHARSET_KOI_8R      16
#define QV_CHARSET_MSFT_CP037  17
#define QV_CHARSET_MSFT_CP437  18
#define QV_CHARSET_MSFT_CP500  19
#define QV_CHARSET_MSFT_CP850  20
#define QV_CHARSET_MSFT_CP852  21
#define QV_CHARSET_MSFT_CP855  22
#define QV_CHARSET_MSFT_CP857  23
#define QV_CHARSET_MSFT_CP860  24
#define QV_CHARSET_MSFT_CP861  25
#define QV_CHARSET_MSFT_CP862  26
#define QV_CHARSET_MSFT_CP863  27
#define QV_CHARSET_MSFT_CP864  28
#define QV_CHARSET_MSFT_CP865  29
#define QV_CHARSET_MSFT_CP866  30
#define QV_CHARSET_MSFT_CP869  31
#define QV_CHARSET_MSFT_CP874  32
#define QV_CHARSET_MSFT_CP875  33
#define QV_CHARSET_MSFT_CP1026 34
#define QV_CHARSET_MSFT_CP1250 35
#define QV_CHARSET_MSFT_CP1251 36
#define QV_CHARSET_MSFT_CP1252 37
#define QV_CHARSET_MSFT_CP1253 38
#define QV_CHARSET_MSFT_CP1254 39
#define QV_CHARSET_MSFT_CP1255 40
#define QV_CHARSET_MSFT_CP1256 41
#define QV_CHARSET_MSFT_CP1257 42
#define QV_CHARSET_MSFT_CP1258 43
#define QV_CHARSET_UTF_8       44
#define QV_CHARSET_UTF_16      45
#define QV_CHARSET_UTF_16_BE   46
#define QV_CHARSET_UTF_16_LE   47
#define QV_CHARSET_UTF_32      48
#define QV_CHARSET_UTF_32_BE   49
#define QV_CHARSET_UTF_32_LE   50

#define QV_CHARSET_OK( cs ) ( ( cs ) >= 0 && ( cs ) <= 50 )

/** Invalid input makes the read or write fail. */
#define QV_CHARSET_FLAG_ABORT_ON_INVALID_CHARACTER 0x1

/** Invalid input is left out. Wins over the former. With neither, it is replaced: by U+FFFD, or by what the charset
    has in its place. */
#define QV_CHARSET_FLAG_IGNORE_INVALID_CHARACTERS 0x2

/** A source gives a byte order mark at its start as the character U+FEFF and does not go by it. */
#define QV_CHARSET_FLAG_IGNORE_BYTE_ORDER_MARK 0x4

/** A sink of a Unicode charset begins with a byte order mark. */
#define QV_CHARSET_FLAG_INSERT_BYTE_ORDER_MARK 0x8

/* Flags ---------------------------------------------------------------------------------------------------------- */

/** The flags that have a meaning, without ABORT_ON_INVALID_CHARACTER where IGNORE_INVALID_CHARACTERS stands too. */
QV_API QV_INT qvCharsetFlagsNormalize( QV_INT flags );

/** @{ */
/** Flags as text, `QV_CHARSET_FLAG_A|QV_CHARSET_FLAG_B`. What cannot be read in a text counts nothing. */
QV_API QV_INT     qvCharsetFlagsFromString( QV_STRING *qvs );
QV_API QV_STRING *qvCharsetFlagsToString( QV_INT flags );
/** @} */

/* Names ---------------------------------------------------------------------------------------------------------- */

/** The charset of an enumerant's name, or of its number in digits; -1 for anything else. */
QV_API QV_INT qvCharsetFromString( QV_STRING *qvs );

/** The name of the enumerant, `QV_CHARSET_UTF_8`. */
QV_API QV_STRING *qvCharsetToString( QV_INT cs );

/** The charset of a name or alias of the IANA registry, in any case. The number of a code page is a name too. */
QV_API QV_INT qvCharsetFromIanaName( QV_STRING *name );

/** The preferred name. */
QV_API QV_STRING *qvCharsetToIanaName( QV_INT cs );

/** All names as a new Vector of Strings, the preferred one first. A name may stand there twice, in another case. */
QV_API QV_VECTOR *qvCharsetIanaNames( QV_INT cs );

/** @{ */
/** The charset of a Windows code page, or -1, and the code page of a charset, or -1: not every one has one. A negative
    code page ends the process. */
QV_API QV_INT qvCharsetFromWindowsCodePage( QV_INT cp );
QV_API QV_INT qvCharsetToWindowsCodePage( QV_INT cs );
/** @} */

/* Conversion ----------------------------------------------------------------------------------------------------- */

/** @{ */
/** A new stream on top of the lower one, which it retains. A sink keeps up to 1 KiB until it is flushed or ends, and
    one of a charset with one byte a character also the last characters, which a mark may join. Flushing it hands all
    that to the lower sink, but does not flush that one. A source reads up to 1 KiB ahead. */
QV_API QV_CHAR_SOURCE *qvCharsetCreateCharSource( QV_BYTE_SOURCE *byteSource, QV_INT charset, QV_INT flags );
QV_API QV_CHAR_SINK   *qvCharsetCreateCharSink( QV_BYTE_SINK *byteSink, QV_INT charset, QV_INT flags );
/** @} */

/** @{ */
/** The whole of a Buffer as text. Null when the input is invalid and ABORT_ON_INVALID_CHARACTER is set. */
QV_API QV_STRING *qvCharsetBufferToString( QV_INT charset, QV_BUFFER *buffer );
QV_API QV_STRING *qvCharsetBufferToStringWithFlags( QV_INT charset, QV_BUFFER *buffer, QV_INT flags );
/** @} */

/** @{ */
/** The whole of a text as bytes. Null under the same condition. */
QV_API QV_BUFFER *qvCharsetStringToBuffer( QV_INT charset, QV_STRING *string );
QV_API QV_BUFFER *qvCharsetStringToBufferWithFlags( QV_INT charset, QV_STRING *string, QV_INT flags );
/** @} */

#endif

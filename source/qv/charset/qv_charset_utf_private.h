#ifndef QV_CHARSET_UTF_PRIVATE_H
#define QV_CHARSET_UTF_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** The closures of the streams. */
typedef struct QV___CHARSET_UTF8_CHAR_SINK_CLOSURE    QV___CHARSET_UTF8_CHAR_SINK_CLOSURE;
typedef struct QV___CHARSET_UTF8_CHAR_SOURCE_CLOSURE  QV___CHARSET_UTF8_CHAR_SOURCE_CLOSURE;
typedef struct QV___CHARSET_UTF16_CHAR_SINK_CLOSURE   QV___CHARSET_UTF16_CHAR_SINK_CLOSURE;
typedef struct QV___CHARSET_UTF16_CHAR_SOURCE_CLOSURE QV___CHARSET_UTF16_CHAR_SOURCE_CLOSURE;
typedef struct QV___CHARSET_UTF32_CHAR_SINK_CLOSURE   QV___CHARSET_UTF32_CHAR_SINK_CLOSURE;
typedef struct QV___CHARSET_UTF32_CHAR_SOURCE_CLOSURE QV___CHARSET_UTF32_CHAR_SOURCE_CLOSURE;

QV_FAMILY( ___CharsetUtf8CharSinkClosure, QV___CHARSET_UTF8_CHAR_SINK_CLOSURE )
QV_FAMILY( ___CharsetUtf8CharSourceClosure, QV___CHARSET_UTF8_CHAR_SOURCE_CLOSURE )
QV_FAMILY( ___CharsetUtf16CharSinkClosure, QV___CHARSET_UTF16_CHAR_SINK_CLOSURE )
QV_FAMILY( ___CharsetUtf16CharSourceClosure, QV___CHARSET_UTF16_CHAR_SOURCE_CLOSURE )
QV_FAMILY( ___CharsetUtf32CharSinkClosure, QV___CHARSET_UTF32_CHAR_SINK_CLOSURE )
QV_FAMILY( ___CharsetUtf32CharSourceClosure, QV___CHARSET_UTF32_CHAR_SOURCE_CLOSURE )

/* New streams on top of a byte stream, which they retain, owned by the caller. `flags` are normalised
   QV_CHARSET_FLAG_... bits. The forms without BE or LE write little-endian; they read little-endian unless the data
   begins with a byte order mark that says otherwise. The BE and LE forms have a fixed byte order, and a mark is a
   character. Null as the byte stream ends the process. */

QV_API QV_CHAR_SINK   *qv___CharsetUtf8CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags );
QV_API QV_CHAR_SOURCE *qv___CharsetUtf8CharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags );

QV_API QV_CHAR_SINK   *qv___CharsetUtf16CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags );
QV_API QV_CHAR_SINK   *qv___CharsetUtf16BECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags );
QV_API QV_CHAR_SINK   *qv___CharsetUtf16LECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags );
QV_API QV_CHAR_SOURCE *qv___CharsetUtf16CharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags );
QV_API QV_CHAR_SOURCE *qv___CharsetUtf16BECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags );
QV_API QV_CHAR_SOURCE *qv___CharsetUtf16LECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags );

QV_API QV_CHAR_SINK   *qv___CharsetUtf32CharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags );
QV_API QV_CHAR_SINK   *qv___CharsetUtf32BECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags );
QV_API QV_CHAR_SINK   *qv___CharsetUtf32LECharSinkCreate( QV_BYTE_SINK *byteSink, QV_INT flags );
QV_API QV_CHAR_SOURCE *qv___CharsetUtf32CharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags );
QV_API QV_CHAR_SOURCE *qv___CharsetUtf32BECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags );
QV_API QV_CHAR_SOURCE *qv___CharsetUtf32LECharSourceCreate( QV_BYTE_SOURCE *byteSource, QV_INT flags );

#endif

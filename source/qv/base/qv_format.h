/** @file
    Numbers and truth values as text, both ways, and the language of format strings.

    Every function may be called from any thread. Encoders give new Strings, owned by the caller. Decoders read what
    stands at the start of their range, white space around it included, and tell by their result whether there was a
    value; `value` and `consumed` may be null. Nothing here asks the locale. */

#ifndef QV_FORMAT_H
#define QV_FORMAT_H

#include "qv/sys/qv_types.h"

#define QV_FORMAT_FLAG_LEFTALIGN    1   /**< pad behind, not in front */
#define QV_FORMAT_FLAG_ZEROPAD      2   /**< pad numbers with zeros */
#define QV_FORMAT_FLAG_PLUSPOS      4   /**< a plus sign where there is no minus sign */
#define QV_FORMAT_FLAG_BLANKPOS     8   /**< a blank where there is no sign */
#define QV_FORMAT_FLAG_UPPERCASE    16  /**< digits, prefixes and words in upper case */
#define QV_FORMAT_FLAG_BASEMNEMONIC 32  /**< the prefix of the base, as `0x` */
#define QV_FORMAT_FLAG_BASENUMERIC  64  /**< the base as a number, as `16:` */
#define QV_FORMAT_FLAG_BASEDECIMAL  128 /**< a prefix for base 10 too */

QV_API QV_INT     qvFormatFlagsNormalize( QV_INT flags );
QV_API QV_INT     qvFormatFlagsFromString( QV_STRING *qvs );
QV_API QV_STRING *qvFormatFlagsToString( QV_INT flags );

QV_API QV_STRING *qvFormatEncodeBool( QV_BOOL value, QV_INT minWidth, QV_INT flags );
QV_API QV_STRING *qvFormatEncodeInt( QV_INT value, QV_INT base, QV_INT minWidth, QV_INT flags );
QV_API QV_STRING *
qvFormatEncodeReal( QV_REAL value, QV_INT base, QV_INT minWidth, QV_INT precision, QV_INT flags );
QV_API QV_STRING *qvFormatEncodeChars( const QV_CHAR *src, QV_INT srcLength, QV_INT minWidth, QV_INT flags );

QV_API QV_BOOL
qvFormatTryDecodeIntChars( const QV_CHAR *src, QV_INT srcLength, QV_INT base, QV_INT *value, QV_INT *consumed );
QV_API QV_BOOL qvFormatTryDecodeInt(
    QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, QV_INT base, QV_INT *value, QV_INT *consumed );
QV_API QV_BOOL
qvFormatTryDecodeRealChars( const QV_CHAR *src, QV_INT srcLength, QV_INT base, QV_REAL *value, QV_INT *consumed );
QV_API QV_BOOL qvFormatTryDecodeReal(
    QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, QV_INT base, QV_REAL *value, QV_INT *consumed );
QV_API QV_BOOL qvFormatTryDecodeBoolChars(
    const QV_CHAR *src, QV_INT srcLength, QV_BOOL allowNumeric, QV_BOOL *value, QV_INT *consumed );
QV_API QV_BOOL qvFormatTryDecodeBool(
    QV_STRING *src, QV_INT srcOffset, QV_INT srcLength, QV_BOOL allowNumeric, QV_BOOL *value, QV_INT *consumed );

#endif

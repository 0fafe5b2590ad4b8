/** @file
    Identifier: a random name that nobody else draws, 128 bits as 32 hexadecimal digits in upper case. All bits are
    random, none tells a version. Immutable: any thread may read it without a lock. Identifiers order as their texts.
    Null ends the process. */

#ifndef QV_IDENTIFIER_H
#define QV_IDENTIFIER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Identifier, QV_IDENTIFIER )

/** A new random Identifier. */
QV_API QV_IDENTIFIER *qvIdentifierCreate( void );

/** @{ */
/** The Identifier that the text tells, in ASCII where it is a Buffer; null if it isn't 32 digits, or if one is in lower
    case. */
QV_API QV_IDENTIFIER *qvIdentifierTryCreateFromString( QV_STRING *qvs );
QV_API QV_IDENTIFIER *qvIdentifierTryCreateFromBuffer( QV_BUFFER *buffer );
/** @} */

/** @{ */
/** The 32 digits: in ASCII, as a new Buffer, or as a String. */
QV_API QV_BUFFER *qvIdentifierBuffer( QV_IDENTIFIER *ident );
QV_API QV_STRING *qvIdentifierString( QV_IDENTIFIER *ident );
/** @} */

#endif

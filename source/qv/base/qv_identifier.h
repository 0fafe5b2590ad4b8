/** @file
    Identifier: a random name of 128 bits, so that no two are expected to be equal, as 32 hexadecimal digits in upper
    case. All bits are random; there is no version in them. Immutable: any thread may read one without a lock.
    Identifiers order as their texts. Results belong to the caller. Null ends the process. */

#ifndef QV_IDENTIFIER_H
#define QV_IDENTIFIER_H

#include "qv/sys/qv_types.h"

QV_FAMILY( Identifier, QV_IDENTIFIER )

/** A new random Identifier, of 16 bytes from qv_random.h, at their cost. */
QV_API QV_IDENTIFIER *qvIdentifierCreate( void );

/** @{ */
/** A new Identifier of a text of 32 digits, in ASCII if it is in a Buffer. Null if it is anything else, or if a digit
    is in lower case. */
QV_API QV_IDENTIFIER *qvIdentifierTryCreateFromString( QV_STRING *qvs );
QV_API QV_IDENTIFIER *qvIdentifierTryCreateFromBuffer( QV_BUFFER *buffer );
/** @} */

/** The 32 digits in ASCII, as a new Buffer. */
QV_API QV_BUFFER *qvIdentifierBuffer( QV_IDENTIFIER *ident );

/** The 32 digits, as a new reference to a String. */
QV_API QV_STRING *qvIdentifierString( QV_IDENTIFIER *ident );

#endif

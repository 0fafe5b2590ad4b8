/** @file
    StringCharSource: lets char sources read a String from its start to its end.

    The sources created from one object share its position. One thread at a time may use the object and all of them.
    Reading never fails. Null ends the process. */

#ifndef QV_STRING_CHAR_SOURCE_H
#define QV_STRING_CHAR_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( StringCharSource, QV_STRING_CHAR_SOURCE )

/** A new object at the start of `src`, owned by the caller. It retains the String, so later changes by the caller do
    not show in it. */
QV_API QV_STRING_CHAR_SOURCE *qvStringCharSourceCreate( QV_STRING *src );

/** A new char source, owned by the caller, that reads from the object's position on and retains the object. */
QV_API QV_CHAR_SOURCE *qvStringCharSourceCharSource( QV_STRING_CHAR_SOURCE *scs );

/** The whole String, as a new reference that the caller owns. */
QV_API QV_STRING *qvStringCharSourceString( QV_STRING_CHAR_SOURCE *scs );

#endif

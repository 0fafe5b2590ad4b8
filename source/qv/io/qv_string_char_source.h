/** @file
    StringCharSource: lets char sources read a String from its start to its end.

    The sources made from one object share its position. One thread at a time uses the object and all of them. Reading
    never fails. Null ends the process. */

#ifndef QV_STRING_CHAR_SOURCE_H
#define QV_STRING_CHAR_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( StringCharSource, QV_STRING_CHAR_SOURCE )

/** A new object at the start of `src`, which it retains, so that the String stays as it is. */
QV_API QV_STRING_CHAR_SOURCE *qvStringCharSourceCreate( QV_STRING *src );

/** A new char source that reads on from the object's position and retains the object. */
QV_API QV_CHAR_SOURCE *qvStringCharSourceCharSource( QV_STRING_CHAR_SOURCE *scs );

/** A new reference to the whole String. */
QV_API QV_STRING *qvStringCharSourceString( QV_STRING_CHAR_SOURCE *scs );

#endif

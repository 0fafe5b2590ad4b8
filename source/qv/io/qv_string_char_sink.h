/** @file
    StringCharSink: collects in a String what is written to its char sinks. Writing never fails. One thread at a time
    may use the object and all sinks created from it. Null ends the process. */

#ifndef QV_STRING_CHAR_SINK_H
#define QV_STRING_CHAR_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( StringCharSink, QV_STRING_CHAR_SINK )

/** A new object with an empty String, owned by the caller. */
QV_API QV_STRING_CHAR_SINK *qvStringCharSinkCreate( void );

/** A new char sink, owned by the caller, that appends to the object's String and retains the object. Several may write
    to the same object. */
QV_API QV_CHAR_SINK *qvStringCharSinkCharSink( QV_STRING_CHAR_SINK *scs );

/** Takes what has been written since the last call, as a String that the caller owns; the object goes on with an empty
    one. */
QV_API QV_STRING *qvStringCharSinkString( QV_STRING_CHAR_SINK *scs );

#endif

/** @file
    StringCharSink: collects in a String what is written to its char sinks. Writing never fails. One thread at a time
    uses the object and all sinks made from it. Null ends the process. */

#ifndef QV_STRING_CHAR_SINK_H
#define QV_STRING_CHAR_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( StringCharSink, QV_STRING_CHAR_SINK )

/** A new object with an empty String. */
QV_API QV_STRING_CHAR_SINK *qvStringCharSinkCreate( void );

/** A new char sink that appends to the object's String and retains the object. There may be several. */
QV_API QV_CHAR_SINK *qvStringCharSinkCharSink( QV_STRING_CHAR_SINK *scs );

/** Hands out what has been written and leaves an empty String, so that a second call gives only what came in
    between. */
QV_API QV_STRING *qvStringCharSinkString( QV_STRING_CHAR_SINK *scs );

#endif

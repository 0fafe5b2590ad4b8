/** @file
    NlfLineSink: lines to characters. Each line is written to a char sink, followed by the terminator of the lowest
    newline flag that is set. If no flag is set, nothing separates the lines. qv_nlf.h has the flags.

    A write fails if the char sink fails; flushing flushes the char sink. One thread at a time may use the object, its
    line sinks and the char sink. Null ends the process. */

#ifndef QV_NLF_LINE_SINK_H
#define QV_NLF_LINE_SINK_H

#include "qv/sys/qv_types.h"

QV_FAMILY( NlfLineSink, QV_NLF_LINE_SINK )

/** A new object, owned by the caller. It retains the char sink. */
QV_API QV_NLF_LINE_SINK *qvNlfLineSinkCreate( QV_CHAR_SINK *charSink, QV_INT nlfFlags );

/** A new line sink, owned by the caller, that writes through the object and retains it. */
QV_API QV_LINE_SINK *qvNlfLineSinkLineSink( QV_NLF_LINE_SINK *nls );

/** The flags that the object was created with, normalised. */
QV_API QV_INT qvNlfLineSinkNlfFlags( QV_NLF_LINE_SINK *nls );

#endif

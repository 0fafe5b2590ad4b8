/** @file
    NlfLineSource: characters to lines. A line ends at each terminator whose newline flag is set, and at the end of the
    data if characters stand behind the last one; a terminator at the very end adds no empty line. With both CR and
    CRLF set, the two characters together are one terminator. Terminators whose flag is not set stay in the line.
    qv_nlf.h has the flags.

    Up to 1025 characters are read ahead; the line sources made from one object share them. When the char source fails
    inside a line, what came of it is a line, and the read after that fails. One thread at a time uses the object, its
    line sources and the char source. Null ends the process. */

#ifndef QV_NLF_LINE_SOURCE_H
#define QV_NLF_LINE_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( NlfLineSource, QV_NLF_LINE_SOURCE )

/** A new object, which retains the char source. */
QV_API QV_NLF_LINE_SOURCE *qvNlfLineSourceCreate( QV_CHAR_SOURCE *charSource, QV_INT nlfFlags );

/** The same over the characters of a String. */
QV_API QV_NLF_LINE_SOURCE *qvNlfLineSourceCreateFromString( QV_STRING *qvs, QV_INT nlfFlags );

/** A new line source that reads through the object and retains it. */
QV_API QV_LINE_SOURCE *qvNlfLineSourceLineSource( QV_NLF_LINE_SOURCE *nls );

/** The flags given at creation, normalised. */
QV_API QV_INT qvNlfLineSourceNlfFlags( QV_NLF_LINE_SOURCE *nls );

#endif

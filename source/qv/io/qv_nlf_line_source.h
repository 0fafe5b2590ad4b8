/** @file
    NlfLineSource: characters to lines. A line ends at each terminator whose newline flag is set. Characters after the
    last terminator are a line too; a terminator at the very end does not add an empty one. If both CR and CRLF are set,
    CR followed by LF is one terminator. Terminators whose flag is not set stay in the line. qv_nlf.h has the flags.

    Up to 1025 characters are read ahead; the line sources created from one object share them. If the char source fails
    inside a line, the characters before the failure are a line, and the read after that fails. One thread at a time may
    use the object, its line sources and the char source. Null ends the process. */

#ifndef QV_NLF_LINE_SOURCE_H
#define QV_NLF_LINE_SOURCE_H

#include "qv/sys/qv_types.h"

QV_FAMILY( NlfLineSource, QV_NLF_LINE_SOURCE )

/** A new object, owned by the caller. It retains the char source. */
QV_API QV_NLF_LINE_SOURCE *qvNlfLineSourceCreate( QV_CHAR_SOURCE *charSource, QV_INT nlfFlags );

/** The same with the characters of a String, which it retains. */
QV_API QV_NLF_LINE_SOURCE *qvNlfLineSourceCreateFromString( QV_STRING *qvs, QV_INT nlfFlags );

/** A new line source, owned by the caller, that reads through the object and retains it. */
QV_API QV_LINE_SOURCE *qvNlfLineSourceLineSource( QV_NLF_LINE_SOURCE *nls );

/** The flags that the object was created with, normalised. */
QV_API QV_INT qvNlfLineSourceNlfFlags( QV_NLF_LINE_SOURCE *nls );

#endif

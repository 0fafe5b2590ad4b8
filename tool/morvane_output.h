/** @file
    How the executable writes to its standard output and to the standard error stream. The functions for tools are
    declared in morvane_tool.h. */

#ifndef MORVANE_OUTPUT_H
#define MORVANE_OUTPUT_H

#include "qv/sys/qv_types.h"

#include <stdio.h>

namespace morvane
{
/** Sends the lines that are printed from now on to `stdout` or `stderr`. Called before anything is printed. */
void printTo( FILE *stream );

/** The print hook: every text is a line. */
void printLine( const QV_CHAR *chs, QV_INT length );

/** @{ */
/** Write a text to `stdout`, after what has been printed, or to `stderr`. */
void writeCstr( FILE *stream, const char *text );
void writeUtf8( FILE *stream, QV_STRING *qvs );
/** @} */

/** Writes what is left at the end of the process. False, with a line on the standard error stream, if something could
    not be written, as on a full disk. `tool` is the name of the tool, or null. */
bool isOutputComplete( const char *tool );
} // namespace morvane

#endif

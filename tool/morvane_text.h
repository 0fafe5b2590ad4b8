/** @file
    What the tools for text have in common. */

#ifndef MORVANE_TEXT_H
#define MORVANE_TEXT_H

#include "morvane_tool.h"

namespace morvane
{
const char TEXT_COMMAND[] = "morvane text";

/** The words of these tools: the file to read and the file to write, null if it is not named. False for more words. */
bool readNames( const Arguments &arguments, qv::Ref< QV_STRING > *in, qv::Ref< QV_STRING > *out );

/** The index of a word in a table of `count` words, or -1. */
QV_INT placeOf( QV_STRING *word, const char *const *words, QV_INT count );

/** The tool that converts between character sets. */
QV_BOOL convertText( QV_VECTOR *argv, void *context );
} // namespace morvane

#endif

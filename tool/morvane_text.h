/** @file
    What the tools for text have in common. */

#ifndef MORVANE_TEXT_H
#define MORVANE_TEXT_H

#include "morvane_tool.h"

namespace morvane
{
const char TEXT_COMMAND[] = "morvane text";

/** The index of a word in a table of `count` words, or -1. */
QV_INT placeOf( QV_STRING *word, const char *const *words, QV_INT count );

/** Changes a piece of text in place. `end` is true with the last piece of an input. */
using TextChange = void ( * )( void *context, QV_STRING **piece, bool end );

/** Passes text from input to output piece by piece, as it arrives, through a change unless that is null. Files, character
    sets and what happens to invalid text follow from the arguments. Returns the exit status. */
int passText( const Arguments &arguments, TextChange change, void *context );
} // namespace morvane

#endif

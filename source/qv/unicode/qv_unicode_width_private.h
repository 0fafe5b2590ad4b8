#ifndef QV_UNICODE_WIDTH_PRIVATE_H
#define QV_UNICODE_WIDTH_PRIVATE_H

#include "qv/sys/qv_types.h"

namespace qv::unicode
{
/* The tables of qv_unicode_width_tables.cpp: the number of a block for each 128 code points, and the values of the
   blocks. */

#pragma GCC visibility push( hidden )

extern const uint8_t widthBlocks[], width[];

#pragma GCC visibility pop

/** What a value is made of. */
const uint8_t WIDTH_CELLS     = 3; // the bits of the cells: 0, 1, 2, or WIDTH_AMBIGUOUS
const uint8_t WIDTH_AMBIGUOUS = 3;
const uint8_t WIDTH_EXTENDS   = 4; // belongs to the character before it
const uint8_t WIDTH_PICTURE   = 8; // has a form as an emoji
} // namespace qv::unicode

#endif

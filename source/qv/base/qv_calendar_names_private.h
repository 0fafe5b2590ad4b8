#ifndef QV_CALENDAR_NAMES_PRIVATE_H
#define QV_CALENDAR_NAMES_PRIVATE_H

#include "qv/sys/qv_types.h"

#include <span>

namespace qv
{
/** The index of the name that a text is in any case and without the white space at its ends, or -1. The first
    `shortLength` characters of a name are enough; with -1 it has to be the whole name. The text is borrowed. */
QV_INT calendarNameIndex( std::span< const char *const > names, QV_STRING *text, QV_INT shortLength );
} // namespace qv

#endif

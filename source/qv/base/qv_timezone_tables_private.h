#ifndef QV_TIMEZONE_TABLES_PRIVATE_H
#define QV_TIMEZONE_TABLES_PRIVATE_H

#include <stdint.h>

/** The names of time zones; generators/timezone_tables.py writes them. */
namespace qv::timezone
{
/** A name and what it is called elsewhere, as places in `names`. */
struct Row
{
    uint16_t name;
    uint16_t translation;
};

const int IANA_COUNT    = 455;
const int WINDOWS_COUNT = 132;

/** All names, in ASCII, each with its terminator. */
extern const char names[];

/** Ascending by name. */
extern const Row ianaRows[IANA_COUNT];
extern const Row windowsRows[WINDOWS_COUNT];
} // namespace qv::timezone

#endif

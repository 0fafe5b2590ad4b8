#ifndef QV_TIMEZONE_PRIVATE_H
#define QV_TIMEZONE_PRIVATE_H

#include "qv/sys/qv_types.h"

/** The value of the first line `key=value` of a file: its first word, without double quotes and not more than 128 bytes
    of it. Null if the file can't be read or has no such value. */
QV_API QV_STRING *qv___TimezoneGetValue( const char *fileName, const char *key );

#endif

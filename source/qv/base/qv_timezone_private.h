#ifndef QV_TIMEZONE_PRIVATE_H
#define QV_TIMEZONE_PRIVATE_H

#include "qv/sys/qv_types.h"

/** The value in the first line `key=value` of a file, as a new String: the first word after the equals sign, without
    double quotes. Of the line the first 128 bytes count. Null if the file cannot be read or has no such value. Null as
    an argument ends the process. */
QV_API QV_STRING *qv___TimezoneGetValue( const char *fileName, const char *key );

#endif

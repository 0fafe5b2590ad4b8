#ifndef QV_STANDARD_PRIVATE_H
#define QV_STANDARD_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** The closure of the line source that reads the standard input line by line. */
typedef struct QV___STANDARD_LINE_SOURCE QV___STANDARD_LINE_SOURCE;

QV_FAMILY( ___StandardLineSource, QV___STANDARD_LINE_SOURCE )

#endif

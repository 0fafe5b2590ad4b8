/** @file
    Where the fields of objects lie: what a debugger needs to read them without debug information. share/gdb reads it. */

#ifndef QV_LAYOUT_PRIVATE_H
#define QV_LAYOUT_PRIVATE_H

#include "qv/sys/qv_types.h"

/** A name and a number: `TYPE.field` and the field's offset in bytes, or `TYPE` and the size of one. */
typedef struct QV___LAYOUT_FACT
{
    char    name[36]; /**< zero-terminated; empty after the last fact */
    int32_t value;
} QV___LAYOUT_FACT;

typedef struct QV___LAYOUT
{
    QV___LAYOUT_FACT facts[64];
} QV___LAYOUT;

/** The facts of this build. Nothing in the library reads them. */
QV_API_DATA const QV___LAYOUT qv___layout;

#endif

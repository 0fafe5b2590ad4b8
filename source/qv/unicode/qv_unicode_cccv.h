/** @file
    The names of the canonical combining classes (cccv is for canonical combining class value), which
    qv_unicode_properties.h lists.

    Results belong to the caller. Any thread may call these functions; each costs a new String. A class outside 0 to 255
    ends the process. */

#ifndef QV_UNICODE_CCCV_H
#define QV_UNICODE_CCCV_H

#include "qv/sys/qv_types.h"

/** The description of a class, like "Viramas", as a new String. A class without a name is described by its number. */
QV_API QV_STRING *qvUnicodeCccvDescription( QV_INT cccv );

/** The name of the constant of a class, like "QV_UNICODE_CCCV_VIRAMAS", as a new String, or null for a class without a
    name. */
QV_API QV_STRING *qvUnicodeCccvSymName( QV_INT cccv );

#endif

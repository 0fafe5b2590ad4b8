/** @file
    The names of the canonical combining classes, which qv_unicode_properties.h lists.

    Any thread. A value outside 0 to 255 ends the process. */

#ifndef QV_UNICODE_CCCV_H
#define QV_UNICODE_CCCV_H

#include "qv/sys/qv_types.h"

/** The description as in "Viramas". A class without a name is described by its number. */
QV_API QV_STRING *qvUnicodeCccvDescription( QV_INT cccv );

/** The name of the constant as in "QV_UNICODE_CCCV_VIRAMAS", or null for a class without a name. */
QV_API QV_STRING *qvUnicodeCccvSymName( QV_INT cccv );

#endif

#ifndef QV_FLAGSET_PRIVATE_H
#define QV_FLAGSET_PRIVATE_H

#include "qv/base/qv_flagset.h"
#include "qv/runtime/qv_family.h"

/** Enters a constant by its own name in a global Flagset, which must not have the name yet. The report names the source
    and the line of the use, and the Flagset. */
#define QV___FLAGSET_DEFINE( flagset, NAME )                                                                           \
    QV_CHECK_AS(                                                                                                       \
        !qvFlagsetHasFlagCstr( flagset, #NAME, -1 ), "!qvFlagsetHasFlagCstr( *(&" #flagset "), \"" #NAME "\", -1 )" ); \
    qvFlagsetSetFlagCstr( &flagset, #NAME, -1, NAME );

#endif

#ifndef QV_ENUM_PRIVATE_H
#define QV_ENUM_PRIVATE_H

#include "qv/base/qv_enum.h"
#include "qv/runtime/qv_family.h"

/** Enters a constant by its own name in a global Enum, which must not have the name yet. The report names the source
    and the line of the use, and the Enum. */
#define QV___ENUM_DEFINE( en, NAME )                                                                                   \
    QV_CHECK_AS(                                                                                                       \
        !qvEnumHasEnumerantCstr( en, #NAME, -1 ), "!qvEnumHasEnumerantCstr( *(&" #en "), \"" #NAME "\", -1 )" );       \
    qvEnumSetEnumerantCstr( &en, #NAME, -1, NAME );

#endif

#ifndef QV_FLAGSET_PRIVATE_H
#define QV_FLAGSET_PRIVATE_H

#include "qv/base/qv_flagset.h"
#include "qv/runtime/qv_family.h"

#include <span>

namespace qv
{
/** A flag of the library and its name, a constant in capitals. */
struct NamedFlag
{
    const char *name;
    QV_INT      value;
};

/** A new Flagset of flags with different names and values of one bit each, as qvFlagsetSetFlag() would enter them. */
QV_FLAGSET *createFlagset( std::span< const NamedFlag > flags );
} // namespace qv

/** A constant by its own name. */
#define QV___NAMED_FLAG( NAME ) { #NAME, NAME }

#endif

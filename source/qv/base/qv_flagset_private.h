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

/** What qvFlagsetGenerate() and qvFlagsetParse() do with a Flagset of these flags, which stand in the order of their
    bits, one each: without one there is nothing to start. `flags` has no bits without a name. */
QV_STRING *generateFlags( std::span< const NamedFlag > names, QV_INT flags );
QV_INT     parseFlags( std::span< const NamedFlag > names, QV_STRING *flags );
} // namespace qv

/** A constant by its own name. */
#define QV___NAMED_FLAG( NAME ) { #NAME, NAME }

#endif

#ifndef QV_UNICODE_NORMALIZER_PRIVATE_H
#define QV_UNICODE_NORMALIZER_PRIVATE_H

#include "qv/sys/qv_types.h"

namespace qv
{
/** The text of a String in a normal form, owned by the caller; null if it is in that form already. */
QV_STRING *normalize( QV_STRING *qvs, QV_INT normalForm );
} // namespace qv

#endif

#ifndef QV_SCAN_PRIVATE_H
#define QV_SCAN_PRIVATE_H

#include "qv/base/qv_string.h"

namespace qv
{
/** True if a text is an integer from end to end, white space around it included, in the base or, for -1, in the one of
    its prefix. `*value` is defined only then. */
inline bool scansAsInt( QV_STRING *text, QV_INT base, QV_INT *value )
{
    QV_INT consumed;
    return qvStringScanInt( text, 0, -1, base, value, &consumed ) && consumed == qvStringLength( text );
}

/** The same for a real. */
inline bool scansAsReal( QV_STRING *text, QV_INT base, QV_REAL *value )
{
    QV_INT consumed;
    return qvStringScanReal( text, 0, -1, base, value, &consumed ) && consumed == qvStringLength( text );
}

/** The same for a truth value, which may be a number with `allowNumeric`. */
inline bool scansAsBool( QV_STRING *text, QV_BOOL allowNumeric, QV_BOOL *value )
{
    QV_INT consumed;
    return qvStringScanBool( text, 0, -1, allowNumeric, value, &consumed ) && consumed == qvStringLength( text );
}
} // namespace qv

#endif

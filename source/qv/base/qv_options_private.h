#ifndef QV_OPTIONS_PRIVATE_H
#define QV_OPTIONS_PRIVATE_H

#include "qv/base/qv_options.h"
#include "qv/runtime/qv_ref.h"

namespace qv
{
/** One option. */
struct Option
{
    QV_CHAR    letter; // or 0
    QV_STRING *name;
    QV_STRING *argument; // how it is called; empty for a flag
    QV_STRING *text;
    QV_STRING *group;    // its heading, or null
    QV_STRING *fallback; // or null
    QV_VECTOR *given;    // Strings, empty ones for a flag; null if it was not given
    QV_INT     type, flags;
    QV_INT     least, most;
    QV_REAL    leastReal, mostReal;
};

inline bool takesArgument( const Option &option )
{
    return option.type != QV_OPTION_TYPE_FLAG;
}

/** How many words a usage like `FILE [OUT]` takes. */
struct WordCount
{
    QV_INT least, most;
};

WordCount wordCountOf( QV_STRING *words );
} // namespace qv

struct QV_OPTIONS : QV_OBJ
{
    QV_STRING  *program, *words, *text;
    QV_STRING  *notes; // or null, as are the next two
    QV_STRING  *group; // the heading of the options to come
    QV_STRING  *error;
    QV_VECTOR  *given; // words
    QV_OPT_DEF *def;
    qv::Option *all;
    QV_INT      count, room; // of options, and of places for them
};

#endif

#ifndef QV_STRING_CSTR_PRIVATE_H
#define QV_STRING_CSTR_PRIVATE_H

#include "qv/base/qv_string.h"
#include "qv/sys/qv_mem.h"

namespace qv
{
/** A String as the operating system takes it, with a terminator, for the time of a scope. */
class Cstr
{
public:
    explicit Cstr( QV_STRING *qvs ) : text_( qvStringConvertToCstr( qvs, QV_TRUE, nullptr ) )
    {
    }

    ~Cstr()
    {
        qvMemFree( text_ );
    }

    Cstr( const Cstr & )            = delete;
    Cstr &operator=( const Cstr & ) = delete;

    operator char *() const
    {
        return text_;
    }

private:
    char *text_;
};
} // namespace qv

#endif

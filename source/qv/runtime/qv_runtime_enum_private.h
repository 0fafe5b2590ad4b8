#ifndef QV_RUNTIME_ENUM_PRIVATE_H
#define QV_RUNTIME_ENUM_PRIVATE_H

#include "qv/sys/qv_types.h"

#include <span>

namespace qv
{
/** What a value of an enumeration is called. The value itself is the place in a table of these. */
struct RuntimeNames
{
    const char *enumerant;
    const char *identifier;
    const char *friendlyName;
};

/** The names of an enumeration of the run time, which its functions look up. Constant: there is nothing to start.
    Callers check values and arguments first. */
class RuntimeEnum
{
public:
    constexpr explicit RuntimeEnum( std::span< const RuntimeNames > names ) : names_( names )
    {
    }

    /** A value by its enumerant or number, and by its identifier; -1 for any other text. */
    QV_INT fromString( QV_STRING *qvs ) const;
    QV_INT fromIdentifier( QV_STRING *qvs ) const;

    /** The three names of a value: new texts. */
    QV_STRING *toString( QV_INT value ) const;
    QV_STRING *toIdentifier( QV_INT value ) const;
    QV_STRING *friendlyName( QV_INT value ) const;

    /** The same as static text, at any time. */
    const char *identifierCstr( QV_INT value ) const
    {
        return names( value ).identifier;
    }

    const char *friendlyNameCstr( QV_INT value ) const
    {
        return names( value ).friendlyName;
    }

private:
    QV_INT count() const
    {
        return static_cast< QV_INT >( names_.size() );
    }

    const RuntimeNames &names( QV_INT value ) const
    {
        return names_[static_cast< size_t >( value )];
    }

    std::span< const RuntimeNames > names_;
};
} // namespace qv

#endif

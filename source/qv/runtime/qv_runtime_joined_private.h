/** @file
    Names and paths that the start puts together, without the formats: their code would be the largest part of what a
    process reads to start the library. */

#ifndef QV_RUNTIME_JOINED_PRIVATE_H
#define QV_RUNTIME_JOINED_PRIVATE_H

#include "qv/base/qv_string.h"
#include "qv/sys/qv_mem.h"

#include <initializer_list>
#include <string.h>

namespace qv
{
/** The digits of a number in a base from 2 to 16, in small letters, for a scope. */
class Digits
{
public:
    explicit Digits( QV_INT value, unsigned base = 10 ) : first_( text_ + sizeof( text_ ) - 1 )
    {
        *first_       = 0;
        uint64_t rest = static_cast< uint64_t >( value );

        do
            *--first_ = "0123456789abcdef"[rest % base];
        while( rest /= base );
    }

    Digits( const Digits & )            = delete;
    Digits &operator=( const Digits & ) = delete;

    operator const char *() const
    {
        return first_;
    }

private:
    char  text_[65];
    char *first_;
};

/** Texts with terminators, one after the other, in a block of qvMemAlloc(). */
class Joined
{
public:
    Joined( std::initializer_list< const char * > parts )
    {
        for( const char *part : parts )
            length_ += strlen( part );

        text_    = static_cast< char * >( qvMemAlloc( static_cast< QV_INT >( length_ + 1 ) ) );
        char *at = text_;

        for( const char *part : parts )
        {
            size_t count = strlen( part );
            memcpy( at, part, count );
            at += count;
        }

        *at = 0;
    }

    ~Joined()
    {
        qvMemFree( text_ );
    }

    Joined( const Joined & )            = delete;
    Joined &operator=( const Joined & ) = delete;

    char *text() const
    {
        return text_;
    }

    /** The block becomes the caller's. */
    char *give()
    {
        char *text = text_;
        text_      = nullptr;

        return text;
    }

    /** The same as a new String. */
    QV_STRING *string() const
    {
        return qvStringCreateFromCstr( text_, static_cast< QV_INT >( length_ ) );
    }

private:
    size_t length_ = 0;
    char  *text_;
};
} // namespace qv

#endif

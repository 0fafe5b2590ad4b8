#ifndef QV_LEVELS_PRIVATE_H
#define QV_LEVELS_PRIVATE_H

#include "qv/sys/qv_mem.h"

namespace qv
{
/** The stack of a walk through a tree of any depth: for each open level its state, from which the walk continues there.
    The walk keeps the state of the innermost level in a variable of its own, and pushes it when it enters another one.
    The first levels lie in the object itself, so on the caller's stack; more take memory. T is copied as bytes. */
template< class T >
class Levels
{
public:
    Levels()                            = default;
    Levels( const Levels & )            = delete;
    Levels &operator=( const Levels & ) = delete;

    ~Levels()
    {
        if( levels_ != near_ )
            qvMemFree( levels_ );
    }

    void push( const T &level )
    {
        if( length_ == size_ )
            grow();

        levels_[length_++] = level;
    }

    /** Takes the level that was pushed last; false if there is none. */
    bool pop( T *level )
    {
        if( length_ == 0 )
            return false;

        *level = levels_[--length_];
        return true;
    }

private:
    void grow()
    {
        T *far = static_cast< T * >( qvMemReallocN( levels_ == near_ ? nullptr : levels_, size_ * 2, sizeof( T ) ) );

        if( levels_ == near_ )
            qvMemCopyN( far, near_, length_, sizeof( T ) );

        levels_ = far;
        size_ *= 2;
    }

    static constexpr QV_INT NEAR = 16;

    T      near_[NEAR];
    T     *levels_ = near_;
    QV_INT length_ = 0;
    QV_INT size_   = NEAR;
};
} // namespace qv

#endif

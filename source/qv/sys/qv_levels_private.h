#ifndef QV_LEVELS_PRIVATE_H
#define QV_LEVELS_PRIVATE_H

#include "qv/sys/qv_mem.h"

namespace qv
{
/** Where a walk through a tree is, level by level: what a recursion would keep on the stack, for trees of any depth. The
    first levels lie in the walk's own frame. A reference to a level holds until the next push. */
template< class T >
class Levels
{
public:
    Levels() = default;
    Levels( const Levels & ) = delete;
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

    /** False when that was the last one. */
    bool pop()
    {
        return --length_ > 0;
    }

    T &top()
    {
        return levels_[length_ - 1];
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

#ifndef QV_LEVELS_PRIVATE_H
#define QV_LEVELS_PRIVATE_H

#include "qv/sys/qv_mem.h"

namespace qv
{
/** Where a walk through a tree goes on, for each level that it is in but the innermost, which is best kept in registers:
    what a recursion would keep on the stack, for trees of any depth. The first levels lie in the walk's own frame. */
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

    /** The innermost one, which is taken out; false if there is none. */
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

#include "qv/runtime/qv_obj_parts_private.h"

#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_mem.h"

namespace
{
// Where a walk goes on, for each level that it is in but the innermost. The first levels lie in the walk's own frame.
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

    // The innermost one, which is taken out; false if there is none.
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

struct Pair
{
    QV_OBJ *thisObj;
    QV_OBJ *thatObj;
    QV_INT  at;
};

struct Place
{
    QV_OBJ *object;
    QV_INT  at;
};
} // namespace

QV_INT qv::compareByParts( QV_OBJ *thisObj, QV_OBJ *thatObj )
{
    QV_CHECK( thisObj );
    QV_CHECK( thatObj );

    Levels< Pair > outer;
    Pair           pair = { thisObj, thatObj, 0 };

    for( ;; )
    {
        QV___COMPARE_WALK walk  = { pair.at, nullptr, nullptr };
        QV_INT            order = pair.thisObj->sort->compareStep( pair.thisObj, pair.thatObj, &walk );

        // A part decides the order of the whole unless its two sides are equal.
        if( walk.thisPart )
        {
            QV_ASSERT( walk.at > pair.at ); // the step would give the same part for ever
            outer.push( { pair.thisObj, pair.thatObj, walk.at } );
            pair = { walk.thisPart, walk.thatPart, 0 };
        }
        else if( order != 0 || !outer.pop( &pair ) )
        {
            return order;
        }
    }
}

QV_STRING *qv::textByParts( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    Ref< QV_STRING > text( qvStringCreate() );
    Levels< Place >  outer;
    Place            place = { thisObj, 0 };

    for( ;; )
    {
        QV___TEXT_WALK walk = { place.at, text.give() };
        QV_OBJ        *part = place.object->sort->textStep( place.object, &walk );
        text.reset( walk.text );

        if( part )
        {
            QV_ASSERT( walk.at > place.at );
            outer.push( { place.object, walk.at } );
            place = { part, 0 };
        }
        else if( !outer.pop( &place ) )
        {
            return text.give();
        }
    }
}

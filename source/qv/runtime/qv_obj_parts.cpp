#include "qv/runtime/qv_obj_parts_private.h"

#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_levels_private.h"

namespace
{
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

    Levels< Pair > levels;
    levels.push( { thisObj, thatObj, 0 } );

    for( ;; )
    {
        Pair             &pair  = levels.top();
        QV___COMPARE_WALK walk  = { pair.at, nullptr, nullptr };
        QV_INT            order = pair.thisObj->sort->compareStep( pair.thisObj, pair.thatObj, &walk );

        // A part decides the order of the whole unless its two sides are equal.
        if( walk.thisPart )
        {
            QV_ASSERT( walk.at > pair.at ); // the step would give the same part for ever
            pair.at = walk.at;
            levels.push( { walk.thisPart, walk.thatPart, 0 } );
        }
        else if( order != 0 || !levels.pop() )
        {
            return order;
        }
    }
}

QV_STRING *qv::textByParts( QV_OBJ *thisObj )
{
    QV_CHECK( thisObj );

    Ref< QV_STRING > text( qvStringCreate() );
    Levels< Place >  levels;
    levels.push( { thisObj, 0 } );

    for( ;; )
    {
        Place         &place = levels.top();
        QV___TEXT_WALK walk  = { place.at, text.give() };
        QV_OBJ        *part  = place.object->sort->textStep( place.object, &walk );
        text.reset( walk.text );

        if( part )
        {
            QV_ASSERT( walk.at > place.at );
            place.at = walk.at;
            levels.push( { part, 0 } );
        }
        else if( !levels.pop() )
        {
            return text.give();
        }
    }
}

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

    Levels< Pair > outer;
    Pair           pair = { thisObj, thatObj, 0 };

    for( ;; )
    {
        QV___COMPARE_WALK walk  = { pair.at, nullptr, nullptr };
        QV_INT            order = pair.thisObj->sort->compareStep( pair.thisObj, pair.thatObj, &walk );

        // A part decides the order of the whole unless its two sides are equal.
        if( walk.thisPart )
        {
            QV_ASSERT( walk.at > pair.at ); // the step would return the same part for ever
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

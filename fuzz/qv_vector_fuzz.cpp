// Vectors beside std::vector, with the free slots that the rules of growth and compaction give their blocks. What is
// put in may be an element that only the Vector holds, a part of the Vector, or the Vector itself.

#include "qv_fuzz_walk.h"

#include "qv/sys/qv_mem.h"

using namespace qv::fuzz;
using qv::Ref;

namespace
{
using Values = std::vector< QV_INT >;

struct Model
{
    Values values; // of the boxed integers that are the elements
    QV_INT fspace = 0, bspace = 0;

    QV_INT length() const
    {
        return static_cast< QV_INT >( values.size() );
    }

    // A copy is built by appending.
    void own( bool shared )
    {
        if( shared )
            fspace = 0, bspace = values.empty() ? 0 : 32;
    }

    void insert( bool shared, QV_INT at, const Values &more )
    {
        QV_INT count = static_cast< QV_INT >( more.size() );

        if( count == 0 )
            return;

        own( shared );

        if( at == length() )
            bspace = bspace >= count ? bspace - count : bspace + 32;
        else if( at == 0 && fspace >= count )
            fspace -= count;
        else
            fspace = bspace = 32;

        values.insert( values.begin() + at, more.begin(), more.end() );
    }

    void compact()
    {
        if( values.empty() )
            bspace += fspace, fspace = bspace / 2, bspace -= fspace;
        else if( fspace > 64 || bspace > 64 )
            fspace = bspace = 32;
    }

    void erase( bool shared, QV_INT offset, QV_INT count )
    {
        if( count == 0 )
            return;

        if( count == length() )
        {
            *this = Model();
            return;
        }

        own( shared );
        ( offset == 0 ? fspace : bspace ) += count;
        values.erase( values.begin() + offset, values.begin() + offset + count );
        compact();
    }

    void keep( bool shared, QV_INT offset, QV_INT count )
    {
        if( count == 0 )
        {
            *this = Model();
            return;
        }

        QV_INT before = length();
        erase( shared, 0, offset );
        erase( shared && offset == 0, count, before - offset - count );
    }
};

struct VectorWalk : SlotWalk< QV_VECTOR, Model, qvVectorCreate >
{
    using SlotWalk::SlotWalk;

    QV_INT next = 0;

    void clear()
    {
        Slot &slot = slots.any( in );
        qvVectorClear( slot.ref.at() );
        slot.model = Model();
    }

    // An object to put in: a new one, or one that perhaps only the Vector holds.
    Ref< QV_OBJ > fresh;

    QV_OBJ *object( Slot &slot, QV_INT &value )
    {
        if( slot.model.length() > 0 && in.flag() )
        {
            QV_INT idx = in.upTo( slot.model.length() - 1 );
            value      = slot.model.values[static_cast< size_t >( idx )];
            return qvVectorBacking( slot.ref )[idx];
        }

        fresh = boxedInt( value = next++ );
        return fresh;
    }

    void insert()
    {
        Slot  &dest = slots.any( in ), &src = slots.any( in );
        bool   self = dest.ref.get() == src.ref.get(), shared = slots.shared( dest ) || self;
        Values from = src.model.values;
        Span   span = in.span( src.model.length(), in.below( 5 ) );
        QV_INT at   = in.upTo( dest.model.length() );

        if( dest.model.length() + src.model.length() > 3000 )
            return;

        if( at == 0 && span.offset % 2 )
            CALL_FORM( qvVectorPrepend, span, 1, dest.ref.at(), src.ref );
        else if( at == dest.model.length() )
            CALL_FORM( qvVectorAppend, span, 1, dest.ref.at(), src.ref );
        else
            CALL_FORM( qvVectorInsert, span, 1, dest.ref.at(), at, src.ref );

        if( span.form != OUTER )
            return dest.model.insert( shared, at, span.of( from ) );

        Values tail = part( from, span.offset + span.count, span.length - span.offset - span.count );
        dest.model.insert( shared, at, tail );
        dest.model.insert( shared && tail.empty(), at, part( from, 0, span.offset ) );
    }

    void objs()
    {
        Slot                   &slot   = slots.any( in );
        bool                    shared = slots.shared( slot );
        QV_INT                  count = in.length( 100 ), at = in.upTo( slot.model.length() );
        std::vector< QV_OBJ * > objs;
        Values                  values;

        for( ; count > 0 && slot.model.length() < 3000; count-- )
        {
            objs.push_back( qvBoxedIntObj( qvBoxedIntCreate( next ) ) );
            values.push_back( next++ );
        }

        qvVectorInsertObjs( slot.ref.at(), at, objs.data(), static_cast< QV_INT >( objs.size() ) );
        slot.model.insert( shared, at, values );

        for( QV_OBJ *obj : objs )
            qvObjRelease( obj );
    }

    void object()
    {
        Slot   &slot   = slots.any( in );
        bool    shared = slots.shared( slot );
        QV_INT  at     = in.upTo( slot.model.length() ), value;
        QV_OBJ *obj    = object( slot, value );
        qvVectorInsertObj( slot.ref.at(), at, obj );
        slot.model.insert( shared, at, { value } );
    }

    void set()
    {
        Slot   &slot   = slots.any( in );
        bool    shared = slots.shared( slot );
        QV_INT  idx    = in.upTo( slot.model.length() + 1 ) - 1, value;
        QV_OBJ *obj    = object( slot, value );
        qvVectorSetObjAt( slot.ref.at(), idx, obj );

        if( idx == -1 || idx == slot.model.length() )
            return slot.model.insert( shared, std::max< QV_INT >( idx, 0 ), { value } );

        slot.model.own( shared );
        slot.model.values[static_cast< size_t >( idx )] = value;
    }

    // The Vector becomes an element of its own successor, which holds it as it was.
    void self()
    {
        Slot  &slot = slots.any( in );
        Model  was  = slot.model;
        QV_INT at   = in.upTo( slot.model.length() );
        qvVectorInsertObj( slot.ref.at(), at, qv::obj( slot.ref.get() ) );
        QV_VECTOR *inner = qvVectorFrom( qvVectorBacking( slot.ref )[at] );
        require( qvVectorLength( slot.ref ) == was.length() + 1 );
        compare( inner, was );
        qvVectorDelAt( slot.ref.at(), at );

        // What is left has a block whose way is not followed.
        slot.ref.reset( qvVectorCreateFrom( slot.ref ) );
        slot.model.own( true );
    }

    void many()
    {
        Slot  &slot = slots.any( in );
        QV_INT how = in.below( 4 ), count = in.length( 200 );
        bool   last = how % 2;

        for( ; count > 0; count-- )
        {
            bool shared = slots.shared( slot );

            if( how < 2 )
            {
                ( last ? qvVectorPush : qvVectorShift )( slot.ref.at(), boxedInt( next ) );
                slot.model.insert( shared, last ? slot.model.length() : 0, { next++ } );
            }
            else if( slot.model.length() > 0 )
            {
                Ref< QV_OBJ > taken( ( last ? qvVectorPop : qvVectorUnshift )( slot.ref.at() ) );
                slot.model.own( shared );
                auto at = last ? slot.model.values.end() - 1 : slot.model.values.begin();
                require( intOf( taken ) == *at );
                slot.model.values.erase( at );
                ( last ? slot.model.bspace : slot.model.fspace )++;
                slot.model.compact();
            }
        }
    }

    void erase()
    {
        Slot &slot   = slots.any( in );
        bool  shared = slots.shared( slot );
        Span  span   = in.span( slot.model.length(), LEADING + in.below( 4 ) );
        CALL_PART( qvVectorDel, span, 1, slot.ref.at() );
        span.erase( slot.model, shared );
    }

    void reverse()
    {
        Slot &slot   = slots.any( in );
        bool  shared = slots.shared( slot );
        qvVectorReverse( slot.ref.at() );

        if( slot.model.length() >= 2 )
            slot.model.own( shared ), std::reverse( slot.model.values.begin(), slot.model.values.end() );
    }

    void create()
    {
        Slot  &to = slots.any( in ), &from = slots.any( in );
        QV_INT all = from.model.length(), offset = in.upTo( all ), count = in.upTo( all - offset );
        Model  model;
        model.values = part( from.model.values, offset, count );

        if( in.flag() )
        {
            model.own( true );
            return to.set( qvVectorCreateFromInner( from.ref, offset, count ), model );
        }

        // A block that has no free slots.
        auto *block = static_cast< QV_OBJ ** >( qvMemAlloc( count * 8 + 1 ) );

        for( QV_INT i = 0; i < count; i++ )
            qvObjRetain( block[i] = qvVectorBacking( from.ref )[offset + i] );

        to.set( qvVectorCreateFromObjsUse( block, count ), model );

        if( count == 0 )
            qvMemFree( block );
    }

    void look()
    {
        Slot &a = slots.any( in ), &b = slots.any( in );
        auto  order = a.model.values <=> b.model.values;
        require( qvVectorCompare( a.ref, b.ref ) == ( order > 0 ) - ( order < 0 ) );

        if( a.model.length() == 0 )
            return;

        QV_INT idx = in.upTo( a.model.length() - 1 );
        auto   first =
            std::find( a.model.values.begin(), a.model.values.end(), a.model.values[static_cast< size_t >( idx )] );
        QV_OBJ *obj = qvVectorBacking( a.ref )[idx];
        require( qvVectorIndexOfObj( a.ref, boxedInt( intOf( obj ) ), QV_TRUE ) == first - a.model.values.begin() );
        require( qvVectorIndexOfObj( a.ref, boxedInt( intOf( obj ) ), QV_FALSE ) == -1 );
        require( qvVectorIndexOfObj( a.ref, obj, QV_FALSE ) == first - a.model.values.begin() );
    }

    static void compare( QV_VECTOR *vec, const Model &model )
    {
        require( qvVectorLength( vec ) == model.length() );
        require( declared( vec ) == 8 * ( model.fspace + model.length() + model.bspace ) );

        for( QV_INT i = 0; i < model.length(); i++ )
            require( intOf( qvVectorBacking( vec )[i] ) == model.values[static_cast< size_t >( i )] );
    }

    void check()
    {
        fresh.reset();

        for( Slot &slot : slots.slots )
            compare( slot.ref, slot.model );

        slots.checkCounts();
    }
};
} // namespace

QV_FUZZ_WALK(
    VectorWalk, OP( share ) OP( clear ) OP( insert ) OP( insert ) OP( objs ) OP( object ) OP( set ) OP( self )
                    OP( many ) OP( erase ) OP( erase ) OP( reverse ) OP( create ) OP( look ) )

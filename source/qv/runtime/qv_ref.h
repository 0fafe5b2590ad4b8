/** @file
    Scopes instead of pairs of retain and release, for the sources of the library and of modules. Header only, nothing
    exported; in C this header is empty. */

#ifndef QV_REF_H
#define QV_REF_H

#include "qv/runtime/qv_family.h"

#ifdef __cplusplus

#include <utility>

namespace qv
{
/** An object of any family as a QV_OBJ. Every structure starts with the header, so that its type may be incomplete. */
template< class T >
inline QV_OBJ *obj( T *object )
{
    return reinterpret_cast< QV_OBJ * >( object );
}

/** Takes one more reference to an object that is not null, and returns it. */
template< class T >
inline T *retain( T *object )
{
    qv___ObjRetain( obj( object ) );
    return object;
}

/** Takes QV___MEMORY_ENDS_ALONE away from an object that gets something else to own. The caller alone changes the object;
    a snapshot may look at the field at the same time. */
inline void ownsMore( QV_OBJ *object )
{
    if( object->memory & QV___MEMORY_ENDS_ALONE )
        __atomic_store_n(
            &object->memory, static_cast< uint16_t >( object->memory & ~QV___MEMORY_ENDS_ALONE ), __ATOMIC_RELAXED );
}

/** Gives a reference up, if there is one. */
template< class T >
inline void release( T *object )
{
    if( object )
        qv___ObjRelease( obj( object ) );
}

/** True if the object has more than one reference, so that the caller must not write to it. */
template< class T >
inline bool isShared( T *object )
{
    return qv___AtomicLoad32( &obj( object )->retainCount ) > 1;
}

/** Gives up the reference in a field or global and leaves the all-ones pointer there, so that later use fails at
    once. */
template< class T >
inline void drop( T *&field )
{
    release( field );
    field = reinterpret_cast< T * >( ~static_cast< uintptr_t >( 0 ) );
}

/** Replaces the reference in `*ref` by one that the caller already owns. */
template< class T >
inline void assign( T **ref, T *owned )
{
    T *old = *ref;
    *ref   = owned;
    release( old );
}

/** The copy on write of every value family: has no effect if the caller holds the only reference, else `*ref` becomes a
    copy. */
template< class T >
inline void makePrivate( T **ref, T *( *copy )( T *source ) )
{
    if( isShared( *ref ) )
        assign( ref, copy( *ref ) );
}

/** A new object whose fields after the header are undefined. */
template< class T >
inline T *create( QV_SORT *sort )
{
    return static_cast< T * >( qv___ObjCreate( sizeof( T ), sort ) );
}

/** Owns one reference, or none. Not for several threads at a time. */
template< class T >
class Ref
{
public:
    Ref() = default;

    /** Takes over a reference. */
    explicit Ref( T *owned ) : object_( owned )
    {
    }

    Ref( Ref &&other ) noexcept : object_( other.give() )
    {
    }

    Ref &operator=( Ref &&other ) noexcept
    {
        if( this != &other )
            reset( other.give() );

        return *this;
    }

    Ref( const Ref & )            = delete;
    Ref &operator=( const Ref & ) = delete;

    ~Ref()
    {
        release( object_ );
    }

    /** Takes one more reference to a borrowed object, which may be null. */
    static Ref share( T *borrowed )
    {
        return Ref( borrowed ? retain( borrowed ) : nullptr );
    }

    T *get() const
    {
        return object_;
    }

    operator T *() const
    {
        return object_;
    }

    T *operator->() const
    {
        return object_;
    }

    /** The address of the reference, for mutators, which may replace it. */
    T **at()
    {
        return &object_;
    }

    /** Hands the reference to the caller. */
    [[nodiscard]] T *give()
    {
        return std::exchange( object_, nullptr );
    }

    void reset( T *owned = nullptr )
    {
        release( std::exchange( object_, owned ) );
    }

private:
    T *object_ = nullptr;
};
} // namespace qv

#endif

#endif

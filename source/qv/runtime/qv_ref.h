/** @file
    Scopes instead of pairs of retain and release: what the sources of the library are written with, and those of modules
    can be. Header only, nothing exported; in C there is nothing here. */

#ifndef QV_REF_H
#define QV_REF_H

#include "qv/runtime/qv_family.h"

#ifdef __cplusplus

#include <utility>

namespace qv
{
/** Any object type as an object. Every structure starts with the header, also where its type is not complete. */
template< class T >
inline QV_OBJ *obj( T *object )
{
    return reinterpret_cast< QV_OBJ * >( object );
}

/** Takes one more reference to an object that is not null, and gives it. */
template< class T >
inline T *retain( T *object )
{
    qv___ObjRetain( obj( object ) );
    return object;
}

/** Gives a reference up, if there is one. */
template< class T >
inline void release( T *object )
{
    if( object )
        qv___ObjRelease( obj( object ) );
}

/** True when somebody else holds the object too, so that it must not be written. */
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

/** The copy on write of every value family: nothing when the caller is alone, else `*ref` becomes a copy. */
template< class T >
inline void makePrivate( T **ref, T *( *copy )( T *source ) )
{
    if( isShared( *ref ) )
        assign( ref, copy( *ref ) );
}

/** An object with undefined fields behind the header. */
template< class T >
inline T *create( QV_SORT *sort )
{
    return static_cast< T * >( qv___ObjCreate( sizeof( T ), sort ) );
}

/** Owns one reference, or none. */
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

    /** Where the reference stands, for mutators, which may replace it. */
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

/** @file
    The block with free places at both ends: what String, Buffer, Vector and RangeMap keep their contents in, and each
    run of a Dict.

    Two sizes. What a family declares to the object frame follows the family's rules to the place: so many free units
    before the contents and after them. What is really allocated is this file's business: more than is declared, so
    that contents which grow or shrink at an end are moved once for a constant part of their length and not at each step
    of the rules. Both sizes change here and nowhere else. The declared block always lies within the allocated one, so
    that a free unit that is declared can be written without a further look.

    Two layers. changeBlock() and its parts own the allocation and the move, in bytes; they know nothing of declared
    sizes. Block is an object with contents of one type and a declared size. A run of a Dict stands on the first layer
    only: it is no object, and what a Dict declares is one number for all of its runs.

    Costs. A change at an end moves nothing as a rule. The contents move when the memory at that end is used up: each
    time a part of the length that SPARE tells becomes free for what comes. A change inside moves the shorter side, as
    long as there is memory. What is asked for is at most twice what is declared, and the block of an object that has ended
    may be a little larger (qv_large_private.h). Memory that came with the object stays with it, and is used again as soon
    as the contents have shrunk into it.

    Builds with assertions check after each change that what is declared is there, and keep free memory filled with a
    pattern, and poisoned under AddressSanitizer: code that writes into it without taking it first is found there. */

#ifndef QV_BLOCK_PRIVATE_H
#define QV_BLOCK_PRIVATE_H

#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_large_private.h"
#include "qv/sys/qv_mem.h"

#include <algorithm>
#include <stdint.h>
#include <string.h>
#include <utility>

namespace qv
{
/** Free units before contents and after them. */
struct BlockEnds
{
    QV_INT front;
    QV_INT back;
};

/** What all blocks of a family have in common, in bytes. */
struct BlockKind
{
    QV_INT head;     /**< of the owner's, in the same allocation before the memory */
    QV_INT step;     /**< contents go to another place by multiples of that, which keeps them aligned */
    QV_INT extended; /**< memory of that size and more is extended where it is, if the C library can */
};

/** Memory of a block, in bytes. */
struct BlockMemory
{
    char  *memory;   /**< what is allocated, after the head, or null */
    QV_INT size;     /**< how much that is, without the head */
    char  *first;    /**< where the contents start in it */
    char  *home;     /**< memory that came with the object, or null */
    QV_INT homeSize; /**< how much that is */
};

/** What contents in a block become; in bytes, unless a function tells another unit. */
struct BlockChange
{
    QV_INT length; /**< of the contents before */
    QV_INT at;     /**< where a gap opens in them */
    QV_INT count;  /**< how long it is */
    QV_INT front;  /**< what has to be free before them afterwards, at least */
    QV_INT back;   /**< and after them */
    QV_INT spare;  /**< what to allocate beyond that, if something has to be allocated */
    QV_INT most;   /**< memory larger than that is given back; not below what is needed */
};

/** Contents of so few bytes are moved whatever it saves. */
const QV_INT FEW_BLOCK_BYTES = 256;

/** Makes free memory accessible that is about to be used. In builds with assertions it has to be as it was left. */
inline void takeFree( [[maybe_unused]] void *memory, [[maybe_unused]] QV_INT bytes )
{
#if QV___ASSERTIONS
    unpoison( memory, static_cast< size_t >( bytes ) );

    for( QV_INT i = 0; i < bytes; i++ )
        QV_CHECK_AS( static_cast< unsigned char * >( memory )[i] == FREE_PATTERN, "free memory is as it was left" );
#endif
}

/** Opens a gap in contents where moving one side of them does it: in units of T, `before` and `after` the contents so
    much is free, and one side is not much longer than the other. False where nothing was done. */
template< class T >
inline bool openBlockGap( T **first, QV_INT before, QV_INT after, const BlockChange &change )
{
    QV_INT at   = change.at;
    QV_INT tail = change.length - at;
    bool   up   = before >= change.front && after >= change.back + change.count;
    bool   down = before >= change.front + change.count && after >= change.back;
    bool   goUp = tail <= at;

    if( !( goUp ? up : down ) )
    {
        // There is no room for the shorter side.
        goUp        = !goUp;
        QV_INT most = 2 * std::min( at, tail ) + FEW_BLOCK_BYTES / QV_INT( sizeof( T ) );

        if( !( goUp ? up : down ) || std::max( at, tail ) > most )
            return false;
    }

    T *start = *first;

    if( goUp )
    {
        T *gap = start + at;
        takeFree( gap + tail, change.count * QV_INT( sizeof( T ) ) );
        memmove( gap + change.count, gap, static_cast< size_t >( tail ) * sizeof( T ) );
    }
    else
    {
        *first = start - change.count;
        takeFree( *first, change.count * QV_INT( sizeof( T ) ) );
        memmove( *first, start, static_cast< size_t >( at ) * sizeof( T ) );
    }

    return true;
}

/** Makes a change: by openBlockGap() if that does it, else by moveBlock(). Costs what moves. */
void changeBlock( BlockMemory *block, const BlockKind &kind, const BlockChange &change );

/** Makes a change by moving all contents, within the memory or to another allocation. Where there is no memory the
    process ends. */
void moveBlock( BlockMemory *block, const BlockKind &kind, const BlockChange &change );

/** What a block does when its last unit is dropped. */
enum class EmptyBlock
{
    GOES,    /**< it is given back if it has too much free, else it stays */
    CENTERS, /**< it stays, with as many free units before as after */
    SHRINKS, /**< as with units in it */
};

/** The rules of a family that uses all free units before its block grows. `ROUND` is the number of units to which sizes
    are rounded up. */
template< QV_INT FRONT, QV_INT BACK, QV_INT MOST_FRONT, QV_INT MOST_BACK, QV_INT ROUND >
struct SavingRules
{
    static constexpr EmptyBlock EMPTY = EmptyBlock::GOES;
    static constexpr QV_INT     SPARE = 3; /**< so many quarters of the need are allocated beyond it */

    /** The ends of a new block. */
    static BlockEnds fresh( QV_INT length )
    {
        return { FRONT, backOf( FRONT + length ) };
    }

    /** True if there is too much free. */
    static bool givesBack( BlockEnds now, QV_INT )
    {
        return now.front > MOST_FRONT || now.back > MOST_BACK;
    }

    /** The ends after that was given back. */
    static BlockEnds shrunk( BlockEnds, QV_INT length )
    {
        return fresh( length );
    }

    /** True if a gap needs no larger block. */
    static bool fits( BlockEnds now, QV_INT length, QV_INT at, QV_INT count )
    {
        return at > 0 && at == length ? now.back >= count : now.front + now.back >= count;
    }

    /** What is free after the contents where a block has grown at its end. */
    static QV_INT backGrown( BlockEnds now, QV_INT length, QV_INT count )
    {
        return backOf( now.front + length + count );
    }

    /** The ends after a gap was opened. A block that has to grow at its end grows there, whatever is free before. */
    static BlockEnds grown( BlockEnds now, QV_INT length, QV_INT at, QV_INT count, bool hasBlock )
    {
        if( !hasBlock )
            return fresh( count );

        if( at == 0 && now.front >= count )
            return { now.front - count, now.back };

        if( at == 0 && now.front + now.back >= count )
            return { 0, now.front + now.back - count };

        if( at > 0 && now.back >= count )
            return { now.front, now.back - count };

        if( at > 0 && at == length )
            return { now.front, backGrown( now, length, count ) };

        if( at > 0 && now.front + now.back >= count )
        {
            // What is free at the back goes as far as it is whole, the rest comes from the front.
            QV_INT back = now.back - now.back % ROUND;
            return { now.front - ( count - back ), now.back - back };
        }

        return fresh( length + count );
    }

private:
    static QV_INT backOf( QV_INT used )
    {
        return BACK + ( ROUND - ( used + BACK ) % ROUND ) % ROUND;
    }
};

/** An object with a block. `Header` is the object's, with the field that takes the declared size; `Rules` tells the
    type in memory, the bits of a unit and how the declared block grows and shrinks; if it has a function leaveHome(), that
    is told when a block may have left the memory that came with the object. Counts are in units. A thread that
    changes a block is alone with the object. */
template< class Header, class Rules >
struct Block : Header
{
    using Unit = typename Rules::Unit;

    static constexpr int HOME_BITS = 10;

    QV_INT   length; /**< units of the contents */
    Unit    *first;  /**< the contents; null without a block */
    QV_INT   fspace; /**< units that are declared free before them */
    QV_INT   bspace; /**< and after them */
    Unit    *memory; /**< what is allocated, or null; null also around memory of somebody else's */
    uint64_t sizes;  /**< bytes of that, and in the low HOME_BITS the elements of memory that came with the object */

    /** No block yet. */
    void initBlock()
    {
        initEmpty( 0 );
    }

    /** A first block, of undefined contents: in memory that came with the object and follows it, of so many
        elements, where there is such, else of its own. All of it is declared. */
    void initBlock( QV_INT homeElements, QV_INT units, BlockEnds ends )
    {
        QV_INT all = ends.front + units + ends.back;

        if( homeElements > 0 )
            placeBlock( homeMemory(), bytesOf( all ), homeElements, units, ends );
        else
            adoptBlock( static_cast< Unit * >( qvMemAlloc( checkedBytesOf( all ) ) ), units, ends );
    }

    /** The same in memory that came with the object, any of which may have been written already: contents with so many
        elements of it before them. */
    void initWritten( QV_INT homeElements, QV_INT before, QV_INT units, BlockEnds ends )
    {
        memory = homeMemory();
        setSize( homeElements * QV_INT( sizeof( Unit ) ), homeElements );
        length = units;
        fspace = ends.front;
        bspace = ends.back;
        first  = memory + before;
        QV_ASSERT(
            reinterpret_cast< char * >( first ) - reinterpret_cast< char * >( memory ) >= bytesOf( ends.front ) );
        account();
        markAround();
        check();
    }

    /** A first block in memory from qvMemAlloc(), which is taken over. Memory that came with the object is not used any
        more. */
    void adoptBlock( Unit *block, QV_INT units, BlockEnds ends )
    {
        placeBlock( block, bytesOf( ends.front + units + ends.back ), 0, units, ends );
        tellIfLeft();
    }

    /** The end of the object's block: all of its memory is accessible again, and freed. Nothing is declared then. */
    void freeBlock()
    {
        if( memory )
        {
            takeFree( memory, bytePlace( first ) - bytePlace( memory ) );
            takeFree( endOfContents(), bytePlace( memory ) + size() - endOfContents() );
        }

        if( !isHome() )
        {
            takeFree( homeMemory(), homeSize() );
            qv::freeBlock( memory, size() );
        }

        this->dbgAllocationSize = 0; // without an atomic operation, since nobody else is left
    }

    /** True if a gap of `count` units at `at` needs no larger declared block. */
    bool fits( QV_INT at, QV_INT count ) const
    {
        return memory && Rules::fits( { fspace, bspace }, length, at, count );
    }

    /** Opens a gap of `count` undefined units, above 0, and returns where its first byte is. A gap that is not at the
        end starts and ends on whole bytes. */
    Unit *openGap( QV_INT at, QV_INT count )
    {
        if( length > 0 && at == length && bspace >= count )
            return takeBack( count );

        if( length > 0 && at == 0 && fspace >= count )
            return takeFront( count );

        reshape( at, count, Rules::grown( { fspace, bspace }, length, at, count, memory != nullptr ) );

        return first + elementsOf( at );
    }

    /** Takes some of the free units after the contents, which the caller knows to be declared. Returns the byte that
        the first of them is in. */
    Unit *takeBack( QV_INT count )
    {
        QV_ASSERT( count <= bspace );

        Unit *gap = first + elementsOf( length );
        char *was = endOfContents();
        length += count;
        bspace -= count;
        takeFree( was, endOfContents() - was );

        return gap;
    }

    /** Free bytes after the contents, up to one that is declared, may be written from here on until closeFree(),
        though they are not taken. */
    void openFree( [[maybe_unused]] Unit *upTo )
    {
        QV_ASSERT( bytePlace( upTo ) <= bytePlace( first ) + bytesOf( length + bspace ) );

        if( QV___ASSERTIONS && bytePlace( upTo ) > endOfContents() )
            takeFree( endOfContents(), bytePlace( upTo ) - endOfContents() );
    }

    void closeFree( [[maybe_unused]] Unit *upTo )
    {
        if( QV___ASSERTIONS && bytePlace( upTo ) > endOfContents() )
            markFree( endOfContents(), static_cast< size_t >( bytePlace( upTo ) - endOfContents() ) );
    }

    /** All declared free bytes after the contents may be written from here on until closeBack(). */
    void openBack()
    {
        openFree( endOfDeclared() );
    }

    void closeBack()
    {
        closeFree( endOfDeclared() );
    }

    /** Takes free units after the contents that were written since openBack(), and ends that. */
    void takeWritten( QV_INT count )
    {
        QV_ASSERT( count <= bspace );

        length += count;
        bspace -= count;
        closeBack();
    }

    /** Takes free units before the contents, of whole bytes. */
    Unit *takeFront( QV_INT count )
    {
        QV_ASSERT( count <= fspace );

        first -= elementsOf( count );
        length += count;
        fspace -= count;
        takeFree( first, bytesOf( count ) );

        return first;
    }

    /** Where appending so many doesn't fit, declares what openGap() at the end would declare, but those units free, if
        the memory is there. There are contents, and they are the object's own. */
    bool stretch( QV_INT count )
    {
        QV_INT room = unitsAfter();

        if( count > room )
            return false;

        QV_INT back = Rules::backGrown( { fspace, bspace }, length, count );

        if( count + back > room )
            return false;

        bspace = count + back;
        account();
        check();

        return true;
    }

    /** Deletes whole bytes at the start, without giving memory back. */
    void dropFront( QV_INT count )
    {
        Unit *was = first;
        first += elementsOf( count );
        fspace += count;
        length -= count;

        if( memory )
            markFree( was, static_cast< size_t >( bytePlace( first ) - bytePlace( was ) ) );
    }

    /** The same at the end, of any units. */
    void dropBack( QV_INT count )
    {
        [[maybe_unused]] char *was = endOfContents();
        length -= count;
        bspace += count;

        if( memory )
            markFree( endOfContents(), static_cast< size_t >( was - endOfContents() ) );
    }

    /** Deletes whole bytes inside; what follows moves down. */
    void dropInside( QV_INT at, QV_INT count )
    {
        char *gap = bytePlace( first ) + bytesOf( at );
        memmove( gap, gap + bytesOf( count ), static_cast< size_t >( bytesOf( length - at - count ) ) );
        dropBack( count );
    }

    /** Gives memory back as the rules tell. To be called when units were dropped. */
    void compact()
    {
        bool centers = Rules::EMPTY == EmptyBlock::CENTERS && length == 0;

        if( __builtin_expect( Rules::givesBack( { fspace, bspace }, length ) || centers, 0 ) )
            compactNow();

        check();
    }

    /** Declares the ends of a new block. */
    void refresh()
    {
        declare( Rules::fresh( length ) );
    }

    /** Moves a block out of memory that came with the object. */
    void moveOut()
    {
        if( !isHome() )
            return;

        Unit *to = static_cast< Unit * >( qvMemAlloc( size() ) );
        takeFree( memory, bytePlace( first ) - bytePlace( memory ) );
        takeFree( endOfContents(), bytePlace( memory ) + size() - endOfContents() );
        memcpy( to, memory, static_cast< size_t >( size() ) );
        markFree( homeMemory(), static_cast< size_t >( homeSize() ) );
        first  = to + ( first - memory );
        memory = to;
        markAround();
    }

    /** Exchanges the blocks of two objects, neither of which is in memory that came with its object. */
    void swapBlock( Block *other )
    {
        QV_ASSERT( !isHome() && !other->isHome() );

        QV_INT own = size();
        setSize( other->size(), home() );
        other->setSize( own, other->home() );
        std::swap( length, other->length );
        std::swap( fspace, other->fspace );
        std::swap( bspace, other->bspace );
        std::swap( first, other->first );
        std::swap( memory, other->memory );
        std::swap( this->dbgAllocationSize, other->dbgAllocationSize );
        tellIfLeft();
        other->tellIfLeft();
    }

    /** The bytes at `memory`. */
    QV_INT size() const
    {
        return static_cast< QV_INT >( sizes >> HOME_BITS );
    }

    /** The elements that memory which follows the object has room for. */
    QV_INT home() const
    {
        return static_cast< QV_INT >( sizes & ( ( 1 << HOME_BITS ) - 1 ) );
    }

    /** True if there is nothing outside of the object's memory to free. */
    bool endsAlone() const
    {
        return !memory || isHome();
    }

    /** True if an address is in what is allocated. What is read from there is gone when the block moves. */
    bool holds( const void *place ) const
    {
        uintptr_t offset = reinterpret_cast< uintptr_t >( place ) - reinterpret_cast< uintptr_t >( memory );
        return offset < static_cast< uintptr_t >( size() );
    }

    /** Checks that what is declared is there, in builds with assertions. */
    void check() const
    {
#if QV___ASSERTIONS
        QV_CHECK_AS( bytePlace( first ) != reinterpret_cast< const char * >( &fspace ), "the object is not fixed" );

        if( !memory )
            return;

        const char *start = bytePlace( memory );

        QV_CHECK( length >= 0 && fspace >= 0 && bspace >= 0 );
        QV_CHECK( bytePlace( first ) - bytesOf( fspace ) >= start );
        QV_CHECK( bytePlace( first ) + bytesOf( length + bspace ) <= start + size() );
        QV_CHECK( this->dbgAllocationSize == bytesOf( fspace + length + bspace ) );
        QV_CHECK( isHome() || size() / 2 <= this->dbgAllocationSize );
#endif
    }

private:
    static constexpr QV_INT    UNIT_BITS    = Rules::UNIT_BITS;
    static constexpr QV_INT    ELEMENT_BITS = 8 * sizeof( Unit );
    static constexpr BlockKind KIND         = { 0, sizeof( Unit ) < 16 ? 16 : sizeof( Unit ), 0 };

    // Units in bytes, rounded up.
    static QV_INT bytesOf( QV_INT units )
    {
        if constexpr( UNIT_BITS < 8 )
            return static_cast< QV_INT >( ( static_cast< uint64_t >( units ) + 7 ) / 8 );
        else
            return units * ( UNIT_BITS / 8 );
    }

    // The same, before memory for them is allocated. More units than can be counted in bytes end the process.
    static QV_INT checkedBytesOf( QV_INT units )
    {
        if constexpr( UNIT_BITS >= 8 )
            if( !QV_INT_MUL_OK( units, UNIT_BITS / 8 ) )
                qvMemAllocN( units, UNIT_BITS / 8 );

        return bytesOf( units );
    }

    // The element in which so many units end.
    static QV_INT elementsOf( QV_INT units )
    {
        return UNIT_BITS == ELEMENT_BITS ? units : static_cast< QV_INT >( static_cast< uint64_t >( units ) / 8 );
    }

    static char *bytePlace( Unit *place )
    {
        return reinterpret_cast< char * >( place );
    }

    Unit *homeMemory() const
    {
        return reinterpret_cast< Unit * >( const_cast< Block * >( this ) + 1 );
    }

    // An allocation may happen to follow an object without memory of its own.
    bool isHome() const
    {
        return home() > 0 && memory == homeMemory();
    }

    QV_INT homeSize() const
    {
        return home() * QV_INT( sizeof( Unit ) );
    }

    void setSize( QV_INT bytes, QV_INT homeElements )
    {
        sizes = static_cast< uint64_t >( bytes ) << HOME_BITS | static_cast< uint64_t >( homeElements );
    }

    void initEmpty( QV_INT homeElements )
    {
        length = 0;
        fspace = 0;
        bspace = 0;
        first  = nullptr;
        memory = nullptr;
        setSize( 0, homeElements );
    }

    // What stands after each change that may have put the block elsewhere than in memory that came with the object: one
    // that was emptied has no block, and still counts as one that never left.
    void tellIfLeft()
    {
        if constexpr( requires { Rules::leaveHome( this ); } )
            if( !isHome() )
                Rules::leaveHome( this );
    }

    // How many units after the contents there is memory for.
    QV_INT unitsAfter() const
    {
        return ( size() - ( bytePlace( first ) - bytePlace( memory ) ) ) * 8 / UNIT_BITS - length;
    }

    char *endOfContents() const
    {
        return bytePlace( first ) + bytesOf( length );
    }

    Unit *endOfDeclared() const
    {
        return first + bytesOf( length + bspace ) / QV_INT( sizeof( Unit ) );
    }

    // Accounts for the block. A thread that changes it is alone with the object, so that a plain store does what
    // qv___ObjDbgSetAllocationSize() does with a locked instruction.
    void account()
    {
        __atomic_store_n( &this->dbgAllocationSize, bytesOf( fspace + length + bspace ), __ATOMIC_RELAXED );
    }

    // Declares other ends around contents that stay.
    void declare( BlockEnds ends )
    {
        QV_INT bytes = bytesOf( ends.front + length + ends.back );

        if( bytePlace( first ) - bytePlace( memory ) < bytesOf( ends.front ) || unitsAfter() < ends.back
            || ( size() > mostFor( bytes ) && !isHome() ) )
        {
            reshape( 0, 0, ends );
            return;
        }

        fspace = ends.front;
        bspace = ends.back;
        account();
        check();
    }

    // What may be allocated at most where so much is declared: twice as much, rounded up.
    static QV_INT mostFor( QV_INT bytes )
    {
        return bytes > QV_INT_MAX / 2 ? QV_INT_MAX : 2 * bytes + 1;
    }

    void placeBlock( Unit *block, QV_INT bytes, QV_INT homeElements, QV_INT units, BlockEnds ends )
    {
        memory = block;
        setSize( bytes, homeElements );
        length = units;
        fspace = ends.front;
        bspace = ends.back;
        first  = block + elementsOf( fspace );
        account();
        markAround();
        check();
    }

    // Marks what the contents leave of the memory.
    void markAround()
    {
        markFree( memory, static_cast< size_t >( bytePlace( first ) - bytePlace( memory ) ) );
        markFree( endOfContents(), static_cast< size_t >( bytePlace( memory ) + size() - endOfContents() ) );
    }

    [[gnu::noinline]] void reshape( QV_INT at, QV_INT count, BlockEnds ends )
    {
        QV_INT      bytes = checkedBytesOf( ends.front + length + count + ends.back );
        QV_INT      front = bytesOf( ends.front );
        QV_INT      all   = bytesOf( length + count );
        QV_INT      old   = bytesOf( length );
        BlockMemory block = {
            bytePlace( memory ), size(), bytePlace( first ), home() ? bytePlace( homeMemory() ) : nullptr, homeSize() };

        changeBlock(
            &block, KIND,
            { old, bytesOf( at ), all - old, front, bytes - front - all, bytes / 4 * Rules::SPARE, mostFor( bytes ) } );

        memory = reinterpret_cast< Unit * >( block.memory );
        setSize( block.size, home() );
        first  = reinterpret_cast< Unit * >( block.first );
        length = length + count;
        fspace = ends.front;
        bspace = ends.back;

        tellIfLeft();
        account();
        check();
    }

    [[gnu::noinline]] void compactNow()
    {
        if( Rules::EMPTY == EmptyBlock::CENTERS && length == 0 )
        {
            QV_INT space = fspace + bspace;
            first += space / 2 - fspace;
            fspace = space / 2;
            bspace = space - fspace;
        }
        else if( Rules::EMPTY == EmptyBlock::GOES && length == 0 )
        {
            freeBlock();
            initEmpty( home() );
            markFree( homeMemory(), static_cast< size_t >( homeSize() ) );
        }
        else
        {
            declare( Rules::shrunk( { fspace, bspace }, length ) );
        }
    }
};
} // namespace qv

#endif

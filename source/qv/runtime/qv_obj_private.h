#ifndef QV_OBJ_PRIVATE_H
#define QV_OBJ_PRIVATE_H

#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_assert_private.h"
#include "qv/sys/qv_lock_private.h"

/** Read-only while the library runs. */
extern "C" uint16_t qv___ObjRun;    /**< what the run does with its objects: below */
extern "C" QV_BOOL  qv___ObjOrigin; /**< each object logs the stack of its creation; with the database only */

namespace qv
{
struct SortCounts;

/** What qv___ObjRun holds. In a run it is what every object gets as its field `isListed`: 0 where there are no lists. */
const uint16_t IS_LISTED = 1; /**< the run keeps lists of all live objects */
const uint16_t IS_OWN    = 2; /**< the library makes for itself what it makes now, at its start; with the lists only */
const uint16_t NO_RUN    = 4; /**< the library has not been started */
const uint16_t RUN_ENDED = 8; /**< the library has been stopped */

/** Ends the process with a report that the library does not run. */
[[noreturn]] void reportNoRun();

/** Ends the process unless the library runs. For functions that create no object at once, since each creation looks. */
inline void checkRun()
{
    if( __builtin_expect( qv___ObjRun >= NO_RUN, 0 ) )
        reportNoRun();
}

/** One more reference to an object that the library has made at its start. Ends the process unless the library runs. */
template< class T >
inline T *retainOfRun( T *object )
{
    checkRun();
    return retain( object );
}

/** As qv___ObjCreate(), with `extraBytes` of heap after the `size` bytes of the structure, for contents that live as
    long as the object. They count in neither of the object's declared sizes: a family that stores there what it would
    otherwise allocate declares it all the same. `ends` is 0, or QV___MEMORY_ENDS_ALONE if they are all that the object
    owns. */
QV_OBJ *createWithRoom( QV_INT size, QV_INT extraBytes, QV_SORT *sort, uint16_t ends = 0 );

/** Creates objects of a sort, which may be many and small. Then several of them share memory: an allocation serves
    about ten and is freed with the last of them, so that an object that outlives the others holds two kilobytes at
    most, or some pages where there were so many that the memory comes from slabs. The first few, and large ones, have
    memory of their own. All are objects like any others. A batch is a local variable of one thread.

        qv::ObjBatch batch( qvPointSort() );

        while( more )
            keep( batch.create( sizeof( QV_POINT ), 0 ) ); */
class ObjBatch
{
public:
    explicit ObjBatch( QV_SORT *sort ) : sort_( sort )
    {
    }

    ~ObjBatch();

    ObjBatch( const ObjBatch & )            = delete;
    ObjBatch &operator=( const ObjBatch & ) = delete;

    /** As createWithRoom(). */
    QV_OBJ *create( QV_INT size, QV_INT extraBytes, uint16_t ends = 0 );

    /** The same, inline for the common case: see qv_obj_life_private.h. */
    QV_OBJ *createInline( QV_INT size, QV_INT extraBytes, uint16_t ends = 0 );

private:
    QV_OBJ *createOther( QV_INT size, QV_INT extraBytes, uint16_t ends );
    void    open( QV_INT bytes );
    void    close();

    QV_SORT *sort_;
    QV_INT   objects_ = 0;       // so far
    QV_INT   bytes_   = 0;       // of the objects so far
    char    *memory_  = nullptr; // what is shared now, or null
    char    *next_    = nullptr; // free places in it
    char    *end_     = nullptr;
    int32_t  users_   = 0; // objects in it

    SortCounts *counts_ = nullptr; // where the thread counts the sort's objects, unless they are listed
};

/** Releases objects, which may be many and small. Those that share memory leave it together. A local variable of one
    thread.

        qv::ObjReleases releases;

        while( more )
            releases.release( next() ); */
class ObjReleases
{
public:
    ObjReleases() = default;
    ~ObjReleases();

    ObjReleases( const ObjReleases & )            = delete;
    ObjReleases &operator=( const ObjReleases & ) = delete;

    /** Releases an object. `isLeaf` tells that the free function of its sort, if there is one, ends no other objects. */
    void release( QV_OBJ *object, bool isLeaf )
    {
        if( qv___AtomicLoad32( &object->retainCount ) != 1 || !isLeaf || object->isListed
            || object->type != QV___OBJ_TYPE_OBJECT || !endLeaf( object ) )
            qv::release( object );
    }

private:
    bool endLeaf( QV_OBJ *object );

    char   *memory_ = nullptr; // shared memory
    int32_t left_   = 0;       // uses of it that are still to end
};

/** Whether an object, for which a thread holds a reference, has memory that it shares with others, and owns nothing else:
    what ObjReleases release faster than a release does. */
inline bool endsInShared( const QV_OBJ *object )
{
    uint16_t memory = __atomic_load_n( &object->memory, __ATOMIC_RELAXED ); // see ownsMore()
    return memory > QV___MEMORY_ENDS_ALONE && !( memory & 1 );
}

/** Takes `more` references to an object that may be shared: every borrowed argument may be, at any moment. */
template< class T >
inline void retainMore( T *object, int32_t more )
{
    qv___AtomicAdd32( &obj( object )->retainCount, more );
}

/** The same for an object that the caller has created and that no other thread knows. No other thread can write its
    count then, unless a snapshot finds the object, so that it needs no locked instruction. */
template< class T >
inline void retainCreated( T *created, int32_t more )
{
    QV_OBJ *object = obj( created );
    QV_ASSERT( object->isListed || qv___AtomicLoad32( &object->retainCount ) == 1 );

    if( object->isListed )
        qv___AtomicAdd32( &object->retainCount, more );
    else
        qv___AtomicStoreRelease32( &object->retainCount, 1 + more );
}
} // namespace qv

/* The log of an object --------------------------------------------------------------------------------------------

   Lines of text that an object carries for reports, among them the stack of its creation when the run records it.
   Any thread may append; a line is appended as a whole and never changes. */

/** Append one line, and the text of each element of a Vector as a line. All texts are taken before the lock of the logs
    is. */
QV_API void qv___ObjLogAppend( QV_OBJ *thisObj, QV_STRING *logMessage );
QV_API void qv___ObjLogAppendVector( QV_OBJ *thisObj, QV_VECTOR *vec );

/** Appends the stack of the calling thread, from the caller of this function on, without the `skip` innermost calls
    and with at most `limit` lines, and an empty line. */
QV_API void qv___ObjLogAppendCallStack( QV_OBJ *thisObj, QV_INT skip, QV_INT limit );

/** The lines as a new Vector of Strings; null if there are none. */
QV_API QV_VECTOR *qv___ObjLog( QV_OBJ *thisObj );

/* The object database ---------------------------------------------------------------------------------------------

   When the run keeps it, each sort lists its live objects in the order of their creation and each module its sorts that
   have any. An object is listed from its creation on, before its family has set its fields, until its free function is
   called, even if that happens after the end of the run that created it. One lock guards all lists; while a thread
   holds it, the thread must not create or release objects. */

/** Whether the run keeps the lists, and their lock. Locking and unlocking end the process in a run without lists. */
QV_API QV_BOOL qv___ObjOdbEnabled( void );
QV_API void    qv___ObjOdbLock( void );
QV_API void    qv___ObjOdbUnlock( void );

/** Ends the process unless the lists of the library's sorts agree with the objects and counts. Any thread, any run. */
QV_API void qv___ObjCheckLists( void );

namespace qv
{
/** Holds the lock of the lists for a scope. */
class HeldOdb
{
public:
    HeldOdb()
    {
        qv___ObjOdbLock();
    }

    ~HeldOdb()
    {
        qv___ObjOdbUnlock();
    }

    HeldOdb( const HeldOdb & )            = delete;
    HeldOdb &operator=( const HeldOdb & ) = delete;
};

/** Gathers references to listed objects while the lock is held, in plain memory, since a Vector that grows or is
    copied there may create an object; afterwards makes a Vector of them.

        qv::Snapshot snapshot;
        {
            qv::HeldOdb held;
            snapshot.addObjects( sort );
        }
        return snapshot.vector(); */
class Snapshot
{
public:
    Snapshot()                              = default;
    Snapshot( const Snapshot & )            = delete;
    Snapshot &operator=( const Snapshot & ) = delete;

    /** Adds an object that the caller knows to live, as a sort always does. */
    void add( QV_OBJ *object );

    /** Adds the sort's live objects, those of which the library says IS_OWN only with `withOwn`. Objects that have lost
        their last reference and wait for the lock to leave the list are skipped: they will end. */
    void addObjects( QV_SORT *sort, bool withOwn = true );

    /** All of them as a new Vector that only the caller holds. Called once, without the lock. */
    QV_VECTOR *vector();

private:
    void makeRoom( QV_INT count );

    QV_OBJ **objs_   = nullptr;
    QV_INT   length_ = 0;
    QV_INT   size_   = 0;
};

/** The lock of all logs, made and destroyed with that of the database. */
extern QV___LOCK *objLogLock;

/** Frees the log of an object that ends. */
void freeObjLog( QV_OBJ *thisObj );

/** Exchanges the numbers and the logs of two objects that only the caller holds, of which one takes the other's place. */
void exchangeIdentities( QV_OBJ *a, QV_OBJ *b );
} // namespace qv

#endif

#ifndef QV_OBJ_PRIVATE_H
#define QV_OBJ_PRIVATE_H

#include "qv/runtime/qv_family.h"
#include "qv/runtime/qv_module_private.h"
#include "qv/sys/qv_lock_private.h"

namespace qv
{
/** As qv___ObjCreate(), with `extraBytes` of heap behind the `size` bytes of the structure, for contents that come and
    go with the object. To the object frame they belong to neither of its sizes: a family that puts there what it would
    else allocate declares it all the same. */
QV_OBJ *createWithRoom( QV_INT size, QV_INT extraBytes, QV_SORT *sort );
} // namespace qv

/* The log of an object --------------------------------------------------------------------------------------------

   Lines of text that an object carries for reports, among them the stack of its creation when the run records it.
   Lines are appended as a whole, also by several threads, and never change. */

/** Appends a line; the text of each element as a line, without effect for an empty Vector. The elements' texts are
    taken first, with no lock held. */
QV_API void qv___ObjLogAppend( QV_OBJ *thisObj, QV_STRING *logMessage );
QV_API void qv___ObjLogAppendVector( QV_OBJ *thisObj, QV_VECTOR *vec );

/** Appends the stack of the calling thread, from the caller of this function on, without the `skip` innermost calls
    and with at most `limit` lines, and an empty line. */
QV_API void qv___ObjLogAppendCallStack( QV_OBJ *thisObj, QV_INT skip, QV_INT limit );

/** The lines as a new Vector of Strings; null if there are none. */
QV_API QV_VECTOR *qv___ObjLog( QV_OBJ *thisObj );

/* The object database ---------------------------------------------------------------------------------------------

   When the run keeps it, each sort lists its live objects in the order of their creation and each module its sorts
   that have any. An object is in the list from its creation on, with fields that its family is yet to fill, up to its
   free function. All lists are guarded by one lock, with which held no object may be created or released. */

/** Whether the run keeps the lists, and their lock. Locking ends the process when there are no lists. */
QV_API QV_BOOL qv___ObjOdbEnabled( void );
QV_API void    qv___ObjOdbLock( void );
QV_API void    qv___ObjOdbUnlock( void );

/** Read-only while the library runs. */
extern "C" QV_BOOL qv___ObjOdbIsEnabled; /**< the run keeps lists of all live objects */
extern "C" QV_BOOL qv___ObjOrigin;       /**< each object logs the stack of its creation; with the database only */

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

    HeldOdb( const HeldOdb & ) = delete;
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
    Snapshot() = default;
    Snapshot( const Snapshot & ) = delete;
    Snapshot &operator=( const Snapshot & ) = delete;

    /** Adds an object of which the caller knows that it lives, as a sort always does. */
    void add( QV_OBJ *object );

    /** Adds the sort's live objects. Those that have lost their last reference and wait for the lock to leave the list
        are passed over: nothing brings an object back. */
    void addObjects( QV_SORT *sort );

    /** All of them as a new Vector that nobody else holds; to be called once, without the lock. */
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
} // namespace qv

#endif

#ifndef QV_LOCK_PRIVATE_H
#define QV_LOCK_PRIVATE_H

#include "qv/sys/qv_types.h"

/** A plain mutex for what lies below monitors. Not recursive: a thread that acquires it twice blocks for ever, so code
    that holds it must not call anything that may acquire it. A null lock and a failing platform call end the
    process. */
typedef struct QV___LOCK QV___LOCK;

/** A new lock, which the caller destroys when no thread holds it or waits for it. */
QV_API QV___LOCK *qv___LockCreate( void );
QV_API void       qv___LockDestroy( QV___LOCK *lock );

/** Acquires the lock, after waiting for other threads, and releases it, in the same thread. */
QV_API void qv___LockAcquire( QV___LOCK *lock );
QV_API void qv___LockRelease( QV___LOCK *lock );

#ifdef __cplusplus
namespace qv
{
/** The lock of the lists of live objects. It is static: the lists outlast the runs. */
extern QV___LOCK *const listsLock;

/** Holds a lock for a scope. */
class HeldLock
{
public:
    explicit HeldLock( QV___LOCK *lock ) : lock_( lock )
    {
        qv___LockAcquire( lock_ );
    }

    ~HeldLock()
    {
        qv___LockRelease( lock_ );
    }

    HeldLock( const HeldLock & )            = delete;
    HeldLock &operator=( const HeldLock & ) = delete;

private:
    QV___LOCK *lock_;
};
} // namespace qv
#endif

#endif

#ifndef QV_ERROR_PRIVATE_H
#define QV_ERROR_PRIVATE_H

#include "qv/base/qv_string.h"
#include "qv/sys/qv_mem.h"

#include <string.h>

/* How the library tells why it failed. Where the reason is known, setError() or setSystemError() makes it the last
   error of the thread; who passes the failure on adds what he knows, or leaves it alone. All of it is cold. */

namespace qv
{
/** UTF-8 that somebody else owns, or none. */
struct Utf8
{
    const char *bytes  = nullptr;
    QV_INT      length = 0;

    Utf8() = default;

    /** Null is none. */
    Utf8( const char *text ) : bytes( text ), length( text ? static_cast< QV_INT >( strlen( text ) ) : 0 )
    {
    }

    Utf8( const char *text, QV_INT count ) : bytes( text ), length( count )
    {
    }
};

/** A String in UTF-8, for the time of a scope; of null none. */
class OwnUtf8 : public Utf8
{
public:
    explicit OwnUtf8( QV_STRING *qvs ) : Utf8( "" )
    {
        owned_ = qvs ? qvStringConvertToUtf8( qvs, QV_FALSE, &length ) : nullptr;
        bytes  = owned_ ? owned_ : qvs ? bytes : nullptr;
    }

    ~OwnUtf8()
    {
        qvMemFree( owned_ );
    }

    OwnUtf8( const OwnUtf8 & )            = delete;
    OwnUtf8 &operator=( const OwnUtf8 & ) = delete;

private:
    char *owned_;
};

/** All that is told about a failure. */
struct ErrorDetails
{
    QV_INT code       = 0;
    QV_INT systemCode = 0;
    QV_INT line       = -1;
    QV_INT offset     = -1;
    Utf8   reason     = "";
    Utf8   path       = {}; // none: not known
    Utf8   subject    = {};
};

/** A failure in one block of memory, which free() ends. It is kept by threads, streams and Errors. */
struct Failure;

/** Makes a failure the last error of the thread. */
void setError( const ErrorDetails &details );

/** Likewise for a call of the operating system that has failed with `error`, an `errno`: the reason is what failed,
    `what`, and the system's own words in English. A path that contains U+0000 is reported as such: it never gets to the
    operating system. Returns false, for a caller to return. */
QV_BOOL setSystemError( const char *what, int error, QV_STRING *path = nullptr );
QV_BOOL setSystemError( const char *what, int error, Utf8 path );

/** Adds the path to the last error of the thread, unless there is none or it has one. */
void addErrorPath( QV_STRING *path );

/** Adds the number of bytes that came before a piece of a stream to the last error of the thread, if that has the offset
    in the piece. */
void moveErrorOffset( QV_INT bytesBefore );

/** For a stream of lines that fails after some lines: adds the number of the next line to the last error of the thread,
    unless there is none or it has a line. If the reader of lines has called setErrorInLastLine(), which likewise leaves a
    line alone, it is the number of the last line, which was cut off where the failure is. */
void addErrorLineAfter( QV_INT linesRead );
void setErrorInLastLine();

/** A copy of the last error of the thread that goes back there at the end of a scope. */
class KeptError
{
public:
    KeptError();
    ~KeptError();

    KeptError( const KeptError & )            = delete;
    KeptError &operator=( const KeptError & ) = delete;

private:
    Failure *kept_;
};

/** What a stream keeps: null, the path of its file, or why it failed. */
using StreamFailure = Failure *;

/** The path of the file, for failures to come. */
void nameStream( StreamFailure *kept, QV_STRING *path );

/** Keeps the last error of the thread, to which it adds the path. */
void keepFailure( StreamFailure *kept );

/** Makes what was kept the last error of the thread again. */
void tellFailure( StreamFailure kept );

/** A new Error with the details. */
QV_ERROR *createError( const ErrorDetails &details );

/** Where the C library keeps what free() ends for each thread. */
Failure *lastFailure();
void     setLastFailure( Failure *failure );

/** The code of an `errno`, and its meaning in English. */
QV_INT      codeOfSystem( int error );
const char *wordsOfSystem( int error );
} // namespace qv

#endif

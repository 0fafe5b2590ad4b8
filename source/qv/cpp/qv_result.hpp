/** @file
    Errors as values.

        qv::Result< qv::Buffer > bytes = qv::readFile( "notes.conf" );
        if( !bytes )
            return qv::print( "%o\n", bytes.error().text() );
        qv::Buffer content = *std::move( bytes );

    A Result holds a value or an Error. To read the one that it does not hold ends the process. */

#ifndef QV_RESULT_HPP
#define QV_RESULT_HPP

#include "qv/cpp/qv_containers.hpp"
#include "qv/cpp/qv_format.hpp"
#include "qv/cpp/qv_store.hpp"

#include <variant>
#include <vector>

namespace qv
{
/** Why something failed, and where. qv_error.h tells what the codes are. */
struct Error
{
    String reason     = {}; /**< as a sentence for people continues: "cannot be opened: Permission denied" */
    String path       = {}; /**< of the file, or empty */
    QV_INT line       = -1; /**< from 1, or -1 if it is not known or there is none */
    QV_INT offset     = -1; /**< in bytes from 0, or -1 likewise */
    QV_INT code       = QV_ERROR_OTHER; /**< QV_ERROR_... */
    QV_INT systemCode = 0;              /**< an `errno`, or 0 if it was not the operating system that refused */
    String subject    = {};             /**< the text that it is about, like a line of a document, or empty */

    /** The last error of this thread. It is there after a call that has failed and whose comment says so. */
    [[nodiscard]] static Error last()
    {
        auto error = Held< QV_ERROR >::ownOptional( qvErrorLast() );
        return error ? from( error->c() ) : Error();
    }

    /** A copy of an Error of the C interface. */
    [[nodiscard]] static Error from( QV_ERROR *error )
    {
        return {
            String::own( qvErrorReason( error ) ),
            String::ownOptional( qvErrorPath( error ) ).value_or( String() ),
            qvErrorLine( error ),
            qvErrorOffset( error ),
            qvErrorCode( error ),
            qvErrorSystemCode( error ),
            String::ownOptional( qvErrorSubject( error ) ).value_or( String() ) };
    }

    /** All of it in one line: `notes.conf:7: is no entry`; without a line, `notes.conf@120: ...`. */
    [[nodiscard]] String text() const
    {
        QV_STRING *name = path.empty() ? nullptr : static_cast< QV_STRING * >( path.c() );
        return Held< QV_ERROR >::own( qvErrorCreate( QV_ERROR_OTHER, reason.c(), name, line, offset ) ).toString();
    }
};

/** A value, or the Error that there is instead. */
template< class T >
class [[nodiscard]] Result
{
public:
    /** Success. */
    Result( T value ) : content_( std::in_place_index< 0 >, std::move( value ) )
    {
    }

    /** Failure. */
    Result( Error error ) : content_( std::in_place_index< 1 >, std::move( error ) )
    {
    }

    /** True for a value. */
    explicit operator bool() const noexcept
    {
        return content_.index() == 0;
    }

    /** The value; moved out of a Result that is not needed any more. */
    T &operator*() &
    {
        return *valuePointer();
    }

    /** The value. */
    const T &operator*() const &
    {
        return *const_cast< Result * >( this )->valuePointer();
    }

    /** The value, moved out. */
    T operator*() &&
    {
        return std::move( *valuePointer() );
    }

    /** The value. */
    T *operator->()
    {
        return valuePointer();
    }

    /** The value. */
    const T *operator->() const
    {
        return &**this;
    }

    /** The value, or another one in place of an error. */
    T valueOr( T other ) &&
    {
        return *this ? std::move( *valuePointer() ) : std::move( other );
    }

    /** The error. */
    [[nodiscard]] const Error &error() const
    {
        const Error *error = std::get_if< 1 >( &content_ );
        detail::demand( error, "error" );
        return *error;
    }

private:
    T *valuePointer()
    {
        T *value = std::get_if< 0 >( &content_ );
        detail::demand( value, "value" );
        return value;
    }

    std::variant< T, Error > content_;
};

/** The error of the first of several Results that has one. */
template< class... Ts >
[[nodiscard]] std::optional< Error > firstError( const Result< Ts > &...results )
{
    std::optional< Error > error;
    static_cast< void >( ( ... || ( results ? false : ( error = results.error(), true ) ) ) );
    return error;
}

/** The bytes of a file, of at most `maxBytes` unless that is -1. */
inline Result< Buffer > readFile( const String &path, QV_INT maxBytes = -1 )
{
    if( std::optional< Buffer > bytes = Buffer::ownOptional( qvFileReadBuffer( path.c(), maxBytes ) ) )
        return *std::move( bytes );

    return Error::last();
}

/** Replaces the content of a file, or creates it. After a failure it may be incomplete. */
[[nodiscard]] inline std::optional< Error > writeFile( const String &path, const Buffer &bytes )
{
    return qvFileWriteBuffer( path.c(), bytes.c() ) ? std::nullopt : std::optional( Error::last() );
}

namespace detail
{
inline Result< Store > storeOrError( QV_STORE *owned )
{
    if( std::optional< Store > store = Store::ownOptional( owned ) )
        return *std::move( store );

    return Error::last();
}

// Calls a reader of documents, and adds the errors of its list to `skipped`.
template< class Read >
Result< Store > readWithErrors( Read read, std::vector< Error > &skipped )
{
    QV_VECTOR      *errors = qvVectorCreate();
    Result< Store > result = storeOrError( read( &errors ) );

    for( QV_INT i = 0; i < qvVectorLength( errors ); i++ )
        skipped.push_back( Error::from( qvErrorFrom( qvVectorBacking( errors )[i] ) ) );

    qvVectorRelease( errors );
    return result;
}
} // namespace detail

/** The document in a text file. Lines that are no entries are left out. */
inline Result< Store > readStore( const String &path )
{
    return detail::storeOrError( qvStoreTryReadTextFile( path.c() ) );
}

/** The same, and an error for each line that is not understood, with its number, offset and text. */
inline Result< Store > readStore( const String &path, std::vector< Error > &skipped )
{
    return detail::readWithErrors(
        [&]( QV_VECTOR **errors ) { return qvStoreTryReadTextFileWithErrors( path.c(), errors ); }, skipped );
}

/** The document in a text file of which each line has to be understood; else the error of the first that is not. */
inline Result< Store > readStoreStrict( const String &path )
{
    return detail::storeOrError( qvStoreTryReadTextFileStrict( path.c() ) );
}

/** The document in a file of the binary form. */
inline Result< Store > readStoreBinary( const String &path )
{
    return detail::storeOrError( qvStoreTryReadBinaryFile( path.c() ) );
}

/** What Store::fromText() reads, and an error for each line that is not understood. */
inline Result< Store > parseStore( const Buffer &text, std::vector< Error > &skipped )
{
    return detail::readWithErrors(
        [&]( QV_VECTOR **errors ) { return qvStoreTryDecodeFromTextBufferWithErrors( text.c(), errors ); }, skipped );
}

/** The document in a text of which each line has to be understood; else the error of the first that is not. */
inline Result< Store > parseStoreStrict( const Buffer &text )
{
    return detail::storeOrError( qvStoreTryDecodeFromTextBufferStrict( text.c() ) );
}

/** What Store::fromBinary() reads, or why that is nothing. */
inline Result< Store > parseStoreBinary( const Buffer &binary )
{
    return detail::storeOrError( qvStoreTryDecodeFromBuffer( binary.c() ) );
}
} // namespace qv

#endif

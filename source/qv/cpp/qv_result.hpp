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

namespace qv
{
/** Why something failed, and where. */
struct Error
{
    String reason;      /**< as a sentence for people continues: "cannot be opened" */
    String path;        /**< of the file, or empty */
    QV_INT line   = -1; /**< from 1, or -1 if it is not known or there is none */
    QV_INT offset = -1; /**< in bytes or characters from 0, or -1 likewise */

    /** All of it in one line: `notes.conf:7: cannot be read`. */
    [[nodiscard]] String text() const
    {
        String where = path;

        if( line >= 0 )
            append( where, "%s%i", path.empty() ? "" : ":", line );

        if( offset >= 0 )
            append( where, "%s%i", where.empty() ? "" : "@", offset );

        return where.empty() ? reason : where + ": " + reason;
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

    return Error{ "cannot be read", path };
}

/** Replaces the content of a file, or creates it. After a failure it may be incomplete. */
[[nodiscard]] inline std::optional< Error > writeFile( const String &path, const Buffer &bytes )
{
    return qvFileWriteBuffer( path.c(), bytes.c() ) ? std::nullopt
                                                    : std::optional( Error{ "cannot be written", path } );
}

/** The document in a text file. A file that is no document at all is an error, lines that are no entries are not. */
inline Result< Store > readStore( const String &path )
{
    Result< Buffer > bytes = readFile( path );

    if( !bytes )
        return bytes.error();

    if( std::optional< Store > store = Store::fromText( *bytes ) )
        return *std::move( store );

    return Error{ "is no document", path };
}
} // namespace qv

#endif

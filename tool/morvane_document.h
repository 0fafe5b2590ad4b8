/** @file
    A configuration document as the lines it is written in, so that one entry can be changed and everything else stays
    byte for byte: comments, unknown lines, order, line ends. What a line means is for the reader of documents to
    say. */

#ifndef MORVANE_DOCUMENT_H
#define MORVANE_DOCUMENT_H

#include "qv/runtime/qv_ref.h"
#include "qv/sys/qv_types.h"

namespace morvane
{
class Document
{
public:
    /** Splits the text of a file into lines. False if it is no proper UTF-8, which could not be written back as it
        was. */
    bool parse( QV_BUFFER *bytes );

    /** The bytes of the file as it is now. */
    qv::Ref< QV_BUFFER > bytes() const;

    /** How many lines there are, and what the reader makes of one: a QV___STORE_LINE code. */
    QV_INT length() const;
    QV_INT codeAt( QV_INT line ) const;

    /** True if a document can hold the value under the path, which has the form `a.b.c`. */
    static bool canHold( QV_STRING *path, QV_STRING *value );

    /** Sets a value: in the line that has it now, else in a new one behind its neighbours. */
    void set( QV_STRING *path, QV_STRING *value );

    /** Deletes the value of a path and everything below it. False if there is nothing. */
    bool remove( QV_STRING *path );

    /** Adds the entries of `other` that the document lacks, at its end. */
    void merge( QV_STORE *other );

private:
    qv::Ref< QV_STRING > pathAt( QV_INT line ) const;
    QV_INT               findValue( QV_STRING *path ) const;
    QV_INT               lastNeighbour( QV_STRING *path ) const;
    void                 insert( QV_INT at, QV_STRING *line );
    void                 add( QV_INT at, QV_STRING *line );

    bool                 byteOrderMark_ = false;
    qv::Ref< QV_VECTOR > lines_; // Strings, each with its line end
    qv::Ref< QV_VECTOR > paths_; // for each its path as a String, or a boxed null
    qv::Ref< QV_VECTOR > codes_; // for each its code as a boxed integer
};
} // namespace morvane

#endif

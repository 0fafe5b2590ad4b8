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
    Document() = default;
    ~Document();

    Document( const Document & )            = delete;
    Document &operator=( const Document & ) = delete;

    /** Splits the text of a file into lines. False if it is not valid UTF-8, which could not be written back
        unchanged. */
    bool parse( QV_BUFFER *bytes );

    /** The bytes of the file as it is now. */
    qv::Ref< QV_BUFFER > bytes() const;

    /** True if a document can hold the value under the path, which has the form `a.b.c`. */
    static bool canHold( QV_STRING *path, QV_STRING *value );

    /** Sets the values of paths in their order: in the line that has the value now, else in a new line after those that
        share most levels with the path. Two Vectors of one length. Costs a pass over the lines, and a look-up for each
        level of a path. */
    void set( QV_VECTOR *paths, QV_VECTOR *values );

    /** Deletes the values of all paths and everything below them, in one pass. Returns the paths that had nothing to
        delete. */
    qv::Ref< QV_VECTOR > remove( QV_VECTOR *paths );

    /** Adds at the end what is in the first store and not in the document, then likewise for the next, and so on. */
    void merge( QV_VECTOR *stores );

private:
    struct Line
    {
        QV_STRING *text; // with its line end
        QV_STRING *path; // or null
        QV_INT     next; // index of the line after it, or NONE
    };

    static const QV_INT NONE = -1;

    void   findPlaces( QV_VECTOR *paths );
    QV_INT placeOf( QV_STRING *key ) const;
    bool   setPlace( QV_STRING *key, QV_INT line, QV_INT previous );
    void   setPlaces( QV_INT line, QV_INT previous );
    QV_INT lastNeighbour( QV_STRING *path ) const;
    void   setValue( QV_STRING *path, QV_STRING *value );
    QV_INT insert( QV_INT previous, QV_STRING *text );
    QV_INT add( QV_INT previous, QV_STRING *text );

    bool   byteOrderMark_ = false;
    Line  *lines_         = nullptr; // in the order of their creation; `next` has their order in the document
    QV_INT count_         = 0;
    QV_INT alloc_         = 0;
    QV_INT first_         = NONE;
    QV_INT last_          = NONE;

    // Boxed indexes of lines, or NONE: for "a.b" the last one that sets it, for "a." the last one of that sub-store. It
    // has what the paths that are being set ask for.
    qv::Ref< QV_DICT > places_;
};
} // namespace morvane

#endif

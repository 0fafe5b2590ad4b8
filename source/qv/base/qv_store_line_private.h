#ifndef QV_STORE_LINE_PRIVATE_H
#define QV_STORE_LINE_PRIVATE_H

#include "qv/base/qv_store_private.h"
#include "qv/base/qv_store_texts_private.h"
#include "qv/unicode/qv_unicode_tables_private.h"

namespace qv
{
/** What the reader of the text form makes of a line. */
template< class Unit >
struct Line
{
    QV_INT       kind;   // QV___STORE_LINE_...
    QV_INT       levels; // how many sub-stores the line names
    Span< Unit > path[QV_STORE_MAX_DEPTH];
    Span< Unit > address; // of a value
    Span< Unit > value;   // with its escapes
    const Unit  *rest;    // what comes after the separator of the last sub-store
};

/** Splits a line, which lies `depth` sub-stores deep, into addresses and a value. */
template< class Unit >
void parseLine( Span< Unit > text, QV_INT depth, Line< Unit > &line )
{
    const Unit *pos = text.begin;

    line.levels = 0;
    line.rest   = pos;
    line.kind   = QV___STORE_LINE_EMPTY;

    while( pos < text.end )
    {
        line.kind = QV___STORE_LINE_TOO_DEEP;

        if( depth + line.levels >= QV_STORE_MAX_DEPTH )
            return;

        Span< Unit > address   = { pos, skipAddressChars( pos, text.end ) };
        const Unit  *separator = address.end;

        while( separator < text.end && *separator != '.' && *separator != '=' )
            separator++;

        line.kind = QV___STORE_LINE_NO_SEPARATOR;

        if( separator == text.end )
            return;

        if( separator > address.end )
        {
            const Unit *begin = pos;
            const Unit *end   = separator;

            while( begin < end && unicode::isWhiteSpace( *begin ) )
                begin++;

            while( begin < end && unicode::isWhiteSpace( end[-1] ) )
                end--;

            address = { begin, skipAddressChars( begin, end ) == end ? end : begin };
        }

        line.kind = QV___STORE_LINE_BAD_ADDRESS;

        if( address.length() == 0 )
            return;

        pos = separator + 1;

        if( *separator == '=' )
        {
            line.kind    = QV___STORE_LINE_VALUE;
            line.address = address;
            line.value   = { pos, text.end };
            return;
        }

        line.kind                = QV___STORE_LINE_STORE;
        line.path[line.levels++] = address;
        line.rest                = pos;
    }
}
} // namespace qv

#endif

#ifndef QV_UNICODE_CASE_PRIVATE_H
#define QV_UNICODE_CASE_PRIVATE_H

#include "qv/sys/qv_types.h"

namespace qv::unicode
{
/** The greatest number of characters that one maps to. */
const QV_INT LONGEST_CASE_MAPPING = 3;

/** So many characters are mapped at once where the vectors for it are, and there is room for as many. */
const QV_INT FEW_CASE = 32;

/** How many characters a mapping has read and written. */
struct CaseMapped
{
    QV_INT read;
    QV_INT written;
};

/** Maps text to one case, each character by itself. All characters are below 0x110000, and `room`, the number of places
    at `to`, is at least `length`. The mapping stops before a character if the places left after its mapping would be
    fewer than the characters left. The caller goes on from there with a room that is larger by LONGEST_CASE_MAPPING at
    least. */
typedef CaseMapped CaseMapping( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room );

CaseMapping mapToUpper;
CaseMapping mapToLower;
CaseMapping mapToCaseFold;
} // namespace qv::unicode

#endif

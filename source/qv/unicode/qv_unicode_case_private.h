#ifndef QV_UNICODE_CASE_PRIVATE_H
#define QV_UNICODE_CASE_PRIVATE_H

#include "qv/sys/qv_types.h"

namespace qv::unicode
{
/** No character maps to more. */
const QV_INT LONGEST_CASE_MAPPING = 3;

/** How far a mapping came. */
struct CaseMapped
{
    QV_INT read;
    QV_INT written;
};

/** Maps text to one case, each character by itself. There are at least as many places for the results as there are
    characters, all below 0x110000. It stops in front of a character if that many would not be left behind its mapping:
    then it is to go on from there with `room` larger by LONGEST_CASE_MAPPING at least. */
typedef CaseMapped CaseMapping( const QV_CHAR *from, QV_INT length, QV_CHAR *to, QV_INT room );

CaseMapping mapToUpper;
CaseMapping mapToLower;
CaseMapping mapToCaseFold;
} // namespace qv::unicode

#endif

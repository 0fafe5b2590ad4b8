#ifndef QV_GENERATION_PRIVATE_H
#define QV_GENERATION_PRIVATE_H

#include "qv/runtime/qv_family.h"

struct QV_GENERATION : QV_OBJ
{
    QV_GENERATION *parent;                /**< null for a root */
    QV_MONITOR    *monitor;               /**< guards the counter; nothing else is locked under it */
    QV_INT         childGenerationNumber; /**< what the next child gets */
    QV_VECTOR     *path;                  /**< boxed integers, from the root down to here */
};

#endif

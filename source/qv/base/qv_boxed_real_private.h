#ifndef QV_BOXED_REAL_PRIVATE_H
#define QV_BOXED_REAL_PRIVATE_H

#include "qv/runtime/qv_family.h"

struct QV_BOXED_REAL : QV_OBJ
{
    QV_REAL value;
};

#endif

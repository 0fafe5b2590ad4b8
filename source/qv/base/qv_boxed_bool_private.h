#ifndef QV_BOXED_BOOL_PRIVATE_H
#define QV_BOXED_BOOL_PRIVATE_H

#include "qv/runtime/qv_family.h"

struct QV_BOXED_BOOL : QV_OBJ
{
    QV_BOOL value;
};

#endif

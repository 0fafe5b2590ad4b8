#ifndef QV_BOXED_INT_PRIVATE_H
#define QV_BOXED_INT_PRIVATE_H

#include "qv/runtime/qv_family.h"

struct QV_BOXED_INT : QV_OBJ
{
    QV_INT value;
};

QV___HIDDEN QV_SORT qv___sort_QV_BOXED_INT;

#endif

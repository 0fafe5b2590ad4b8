#ifndef QV_NLF_PRIVATE_H
#define QV_NLF_PRIVATE_H

#include "qv/runtime/qv_family.h"

/** The names of the newline flags. */
QV_API QV_FLAGSET *qv___NlfFlagsFlagset;

#endif

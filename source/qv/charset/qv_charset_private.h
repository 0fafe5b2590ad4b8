#ifndef QV_CHARSET_PRIVATE_H
#define QV_CHARSET_PRIVATE_H

#include "qv/runtime/qv_family.h"

extern "C" QV_FLAGSET *qv___CharsetFlagsFlagset;

#endif

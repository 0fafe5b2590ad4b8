#ifndef QV_CHARSET_PRIVATE_H
#define QV_CHARSET_PRIVATE_H

#include "qv/runtime/qv_family.h"

/* The registry, which exists from start-up to shutdown. The keys of qv___CharsetFromIanaNameDict are case-folded. */

extern "C" QV_ENUM *qv___CharsetEnum;
extern "C" QV_DICT *qv___CharsetFromIanaNameDict;
extern "C" QV_DICT *qv___CharsetToIanaNameDict;
extern "C" QV_DICT *qv___CharsetFromWindowsCodePageDict;
extern "C" QV_DICT *qv___CharsetToWindowsCodePageDict;

extern "C" QV_FLAGSET *qv___CharsetFlagsFlagset;

#endif

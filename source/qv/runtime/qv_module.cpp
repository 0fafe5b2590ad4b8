#include "qv/runtime/qv_module_private.h"

const QV_MODULE_RECORD qv___module_record = {
    2,
    "morvane",
    "morvane",
    QV___VERSION_MAJOR,
    QV___VERSION_MINOR,
    QV___VERSION_RELEASE,
    QV___BUILD_TIME,
    "Wexcraft GmbH",
    "Copyright (c) Wexcraft GmbH. All rights reserved.",
    "qv",
    "Platform Independent System Base",
    "0.0",
    "",
    "" };

QV_SORT qv___sort_QV_MODULE = {
    QV___STATIC_HEADER( QV___OBJ_TYPE_SORT ),
    &qv___module,
    "QV_MODULE",
    nullptr,
    nullptr,
    nullptr,
    0,
    nullptr,
    nullptr,
    nullptr,
    nullptr };

QV_MODULE qv___module = {
    QV___STATIC_HEADER( QV___OBJ_TYPE_MODULE ),
    &qv___module_record,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    0,
    nullptr,
    nullptr };

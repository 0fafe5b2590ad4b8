#include "qv/base/qv_layout_private.h"

#include "qv/base/qv_boxed_bool_private.h"
#include "qv/base/qv_boxed_int_private.h"
#include "qv/base/qv_boxed_real_private.h"
#include "qv/base/qv_buffer_private.h"
#include "qv/base/qv_dict_private.h"
#include "qv/base/qv_priority_map_private.h"
#include "qv/base/qv_range_map_private.h"
#include "qv/base/qv_store_private.h"
#include "qv/base/qv_string_private.h"
#include "qv/base/qv_time_private.h"
#include "qv/base/qv_vector_private.h"
#include "qv/runtime/qv_module_record.h"
#include "qv/runtime/qv_obj_count_private.h"

#include <bit>

// A bit has no offset; what comes after its word has.
static_assert( offsetof( QV_DICT, length ) == sizeof( QV_OBJ ) + sizeof( uint64_t ) );

// As the reader of the table has it.
static_assert( sizeof( QV___LAYOUT_FACT ) == 40 && sizeof( QV___LAYOUT ) == 64 * 40 );

#define FIELD( TYPE, field ) { #TYPE "." #field, offsetof( TYPE, field ) }
#define SIZE( TYPE )         { #TYPE, sizeof( TYPE ) }

// clang-format off
constexpr QV___LAYOUT qv___layout = { {
    FIELD( QV_OBJ, type ), FIELD( QV_OBJ, sort ), FIELD( QV_OBJ, retainCount ), FIELD( QV_OBJ, memory ), FIELD( QV_OBJ, odbNext ),
    FIELD( QV_SORT, name ), FIELD( QV_SORT, created ), FIELD( QV_SORT, ended ),
    FIELD( QV_SORT, odbFirst ), FIELD( QV_SORT, sortsNext ), FIELD( QV___COUNTS, before ),
    FIELD( QV_MODULE, moduleRecord ), FIELD( QV_MODULE, sortsFirst ), FIELD( QV_MODULE_RECORD, name ),
    FIELD( QV_BOXED_BOOL, value ), FIELD( QV_BOXED_INT, value ), FIELD( QV_BOXED_REAL, value ),
    FIELD( QV_TIME, year ), FIELD( QV_TIME, month ), FIELD( QV_TIME, day ),
    FIELD( QV_TIME, hour ), FIELD( QV_TIME, minute ), FIELD( QV_TIME, second ),
    FIELD( QV_STRING, length ), FIELD( QV_STRING, first ),
    FIELD( QV_BUFFER, length ), FIELD( QV_BUFFER, first ),
    FIELD( QV_VECTOR, length ), FIELD( QV_VECTOR, first ),
    FIELD( QV_RANGE_MAP, length ), FIELD( QV_RANGE_MAP, first ), SIZE( QV___RANGE_MAP_ENTRY ),
    FIELD( QV___RANGE_MAP_ENTRY, startingKey ), FIELD( QV___RANGE_MAP_ENTRY, endingKey ),
    FIELD( QV___RANGE_MAP_ENTRY, value ),
    { "QV_DICT.hasIndex", sizeof( QV_OBJ ) },
    { "QV_DICT.hasIndex bit", std::endian::native == std::endian::little ? 63 : 0 },
    FIELD( QV_DICT, length ), FIELD( QV_DICT, run ), FIELD( QV_DICT, index ),
    FIELD( QV___DICT_INDEX, runs ), FIELD( QV___DICT_RUN, front ), FIELD( QV___DICT_RUN, length ),
    SIZE( QV___DICT_RUN ), SIZE( QV___DICT_ITEM ),
    FIELD( QV___DICT_ITEM, key ), FIELD( QV___DICT_ITEM, val ), FIELD( QV___DICT_ITEM, run ),
    FIELD( QV_PRIORITY_MAP, byPriority ),
    FIELD( QV___PRIORITY_MAP_ENTRY, priority ), FIELD( QV___PRIORITY_MAP_ENTRY, object ),
    FIELD( QV_STORE, values ), FIELD( QV_STORE, stores ),
} };
// clang-format on

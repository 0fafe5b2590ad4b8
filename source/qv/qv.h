/** @file
    Everything public in one include. */

#ifndef QV_H
#define QV_H

#include "qv/sys/qv_types.h"

#include "qv/sys/qv_chars.h"
#include "qv/sys/qv_int.h"
#include "qv/sys/qv_mem.h"
#include "qv/sys/qv_real.h"

#include "qv/runtime/qv_obj.h"
#include "qv/runtime/qv_runtime.h"
#include "qv/runtime/qv_sort.h"

#include "qv/base/qv_boxed_bool.h"
#include "qv/base/qv_boxed_int.h"
#include "qv/base/qv_boxed_null.h"
#include "qv/base/qv_boxed_real.h"
#include "qv/base/qv_boxed_unique.h"
#include "qv/base/qv_buffer.h"
#include "qv/base/qv_decoder.h"
#include "qv/base/qv_dict.h"
#include "qv/base/qv_encoder.h"
#include "qv/base/qv_enum.h"
#include "qv/base/qv_flagset.h"
#include "qv/base/qv_format.h"
#include "qv/base/qv_generation.h"
#include "qv/base/qv_generation_mutex.h"
#include "qv/base/qv_identifier.h"
#include "qv/base/qv_month.h"
#include "qv/base/qv_name.h"
#include "qv/base/qv_opt_def.h"
#include "qv/base/qv_opt_seq.h"
#include "qv/base/qv_random.h"
#include "qv/base/qv_range_map.h"
#include "qv/base/qv_stack_trace.h"
#include "qv/base/qv_store.h"
#include "qv/base/qv_string.h"
#include "qv/base/qv_time.h"
#include "qv/base/qv_timezone.h"
#include "qv/base/qv_tool_switch.h"
#include "qv/base/qv_vector.h"
#include "qv/base/qv_weekday.h"

#include "qv/io/qv_buffer_byte_sink.h"
#include "qv/io/qv_buffer_byte_source.h"
#include "qv/io/qv_byte_sink.h"
#include "qv/io/qv_byte_source.h"
#include "qv/io/qv_char_sink.h"
#include "qv/io/qv_char_source.h"
#include "qv/io/qv_file.h"
#include "qv/io/qv_line_sink.h"
#include "qv/io/qv_line_source.h"
#include "qv/io/qv_nlf.h"
#include "qv/io/qv_nlf_line_sink.h"
#include "qv/io/qv_nlf_line_source.h"
#include "qv/io/qv_print.h"
#include "qv/io/qv_string_char_sink.h"
#include "qv/io/qv_string_char_source.h"

#include "qv/charset/qv_charset.h"

#include "qv/unicode/qv_unicode_cccv.h"
#include "qv/unicode/qv_unicode_cdmt.h"
#include "qv/unicode/qv_unicode_genc.h"
#include "qv/unicode/qv_unicode_normalizer.h"
#include "qv/unicode/qv_unicode_properties.h"
#include "qv/unicode/qv_unicode_script.h"

#endif

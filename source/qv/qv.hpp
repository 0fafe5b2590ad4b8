/** @file
    The library in C++20: everything public, as C and as values that own what they hold. Header only, over the functions
    that the library exports. qv_object.hpp tells the rules that all of it follows. */

#ifndef QV_HPP
#define QV_HPP

#include "qv/qv.h"

#include "qv/cpp/qv_containers.hpp"
#include "qv/cpp/qv_encoder.hpp"
#include "qv/cpp/qv_format.hpp"
#include "qv/cpp/qv_lines.hpp"
#include "qv/cpp/qv_maps.hpp"
#include "qv/cpp/qv_object.hpp"
#include "qv/cpp/qv_options.hpp"
#include "qv/cpp/qv_print_hook.hpp"
#include "qv/cpp/qv_result.hpp"
#include "qv/cpp/qv_runtime.hpp"
#include "qv/cpp/qv_store.hpp"
#include "qv/cpp/qv_streams.hpp"
#include "qv/cpp/qv_string.hpp"
#include "qv/cpp/qv_text.hpp"
#include "qv/cpp/qv_threads.hpp"
#include "qv/cpp/qv_time.hpp"

#endif

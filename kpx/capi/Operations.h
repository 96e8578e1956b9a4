#pragma once

#include <cstddef>

#include "kpx/report/OperationNumber.h"

namespace kpx {

/// The operations of the C interface that report failures, by number; a new one takes the next
/// number.
inline constexpr ErrorEntry capiOperations[] = {
    {910401, "kpx_c_start_texts"},
    {910402, "kpx_c_text"},
    {910403, "kpx_c_class_count"},
    {910404, "kpx_c_class_name"},
    {910405, "kpx_c_new"},
    {910406, "kpx_c_open"},
    {910407, "kpx_c_open_bytes"},
    {910408, "kpx_c_save"},
    {910409, "kpx_c_save_bytes"},
    {910410, "kpx_c_close"},
    {910411, "kpx_c_count"},
    {910412, "kpx_c_find"},
    {910413, "kpx_c_configuration_class"},
    {910414, "kpx_c_add"},
    {910415, "kpx_c_key_count"},
    {910416, "kpx_c_key"},
    {910417, "kpx_c_type"},
    {910418, "kpx_c_caption"},
    {910419, "kpx_c_group"},
    {910420, "kpx_c_is_stored"},
    {910421, "kpx_c_get_int32"},
    {910422, "kpx_c_get_double"},
    {910423, "kpx_c_get_text"},
    {910424, "kpx_c_set_int32"},
    {910425, "kpx_c_set_double"},
    {910426, "kpx_c_set_text"},
};

/// The number of one of them: "kpx_c_start_texts"_capi.
consteval OperationNumber operator""_capi(const char* operation, std::size_t length) {
  return OperationNumber::in(capiOperations, {operation, length});
}

}  // namespace kpx

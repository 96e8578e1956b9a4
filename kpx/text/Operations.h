#pragma once

#include <cstddef>

#include "kpx/report/OperationNumber.h"

namespace kpx {

/// The operations of texts that report failures, by number. Those without a number from older
/// modules have one from 910001 or 910551 on; a new one takes the next of the latter.
inline constexpr ErrorEntry textOperations[] = {
    {910001, "utlDoubleAsText"},        {910551, "utlLongAsText"},
    {910552, "utlTextAsDoubleDecimal"}, {910553, "utlStringToVar"},
    {910554, "utlVarToString"},         {910555, "CKpxString::FormatV_l"},
    {910556, "kpxMatchWildcardString"}, {910557, "kpxRtfEncode"},
    {910558, "kpxUTF8Encode"},          {910559, "UTF8to16"},
    {910560, "kpxChangeFormat"},
};

/// The number of one of them: "utlDoubleAsText"_text.
consteval OperationNumber operator""_text(const char* operation, std::size_t length) {
  return OperationNumber::in(textOperations, {operation, length});
}

}  // namespace kpx

#pragma once

#include <cstddef>
#include <cstdint>

/// The built-in texts as constant data, generated from the table of texts by
/// tools/texts_gen/texts_gen.py. An id may stand there twice; the later text counts.
namespace kpx::detail {

struct BuiltInText {
  std::int32_t id;
  std::uint32_t offset;  // of the first unit in builtInUnits
  std::uint32_t length;  // in units; there is no terminating 0
};

extern const char16_t builtInUnits[];
extern const BuiltInText builtInTexts[];
extern const std::size_t builtInTextCount;

}  // namespace kpx::detail

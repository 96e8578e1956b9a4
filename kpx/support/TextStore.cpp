#include "kpx/support/TextStore.h"

#include <cstddef>
#include <unordered_map>
#include <utility>

#include "kpx/support/internal/BuiltInTexts.h"

namespace kpx {
namespace {

/// Ids up to this one, which all but a few of the suite's texts have, are found without hashing.
constexpr std::uint32_t endFlat = 16384;
constexpr std::uint32_t blockSize = 256;

using OtherTexts = std::unordered_map<std::int32_t, CString>;

/// The flat part comes in blocks, so that few texts need little memory.
constinit CString* blocks[endFlat / blockSize] = {};
constinit OtherTexts* others = nullptr;

/// Empties the store when the library is unloaded. The pointers themselves have no destructor, so
/// that whoever asks still later finds an empty store.
struct Release {
  ~Release() {
    for (CString*& block : blocks) delete[] std::exchange(block, nullptr);
    delete std::exchange(others, nullptr);
  }
};
const Release release;

/// The answer for ids without a text. Never destroyed, because destructors of other libraries
/// may still ask when this one has been unloaded.
const CString& noText() noexcept {
  union Kept {
    CString text;
    Kept() noexcept : text() {}
    ~Kept() {}
  };
  static const Kept kept;
  return kept.text;
}

CString& place(std::int32_t id) {
  const auto index = static_cast<std::uint32_t>(id);
  if (index < endFlat) {
    CString*& block = blocks[index / blockSize];
    if (!block) block = new CString[blockSize];
    return block[index % blockSize];
  }
  if (!others) others = new OtherTexts;
  return (*others)[id];
}

std::u16string_view textOf(const detail::BuiltInText& entry) noexcept {
  return {detail::builtInUnits + entry.offset, entry.length};
}

}  // namespace

const CString& GetMLT(std::int32_t id) noexcept {
  // Negative ids become large ones.
  const auto index = static_cast<std::uint32_t>(id);
  if (index < endFlat) {
    const CString* block = blocks[index / blockSize];
    return block ? block[index % blockSize] : noText();
  }
  if (!others) return noText();
  const auto found = others->find(id);
  return found == others->end() ? noText() : found->second;
}

void AddMLT(std::int32_t id, CString text) { place(id) = std::move(text); }

void addBuiltInTexts() {
  for (std::size_t i = 0; i < detail::builtInTextCount; ++i) {
    const detail::BuiltInText& entry = detail::builtInTexts[i];
    AddMLT(entry.id, CString(textOf(entry)));
  }
}

std::u16string_view builtInText(std::int32_t id) noexcept {
  for (std::size_t i = detail::builtInTextCount; i > 0; --i) {
    if (detail::builtInTexts[i - 1].id == id) return textOf(detail::builtInTexts[i - 1]);
  }
  return {};
}

}  // namespace kpx

#include <algorithm>
#include <cstdint>
#include <vector>

#include "fuzz/Check.h"
#include "kpx/xml/CMarkup.h"

using namespace kpx;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const int bytes = static_cast<int>(size);
  const CString encoded = CMarkup::EncodeBase64(data, bytes);
  std::vector<unsigned char> out(size + 1);
  FUZZ_CHECK(CMarkup::DecodeBase64(encoded, out.data(), bytes + 1) == bytes);
  FUZZ_CHECK(std::equal(data, data + size, out.begin()));

  // As a text to decode, into the size that is asked for and into every smaller one.
  const CString text = CString::fromUtf8({reinterpret_cast<const char*>(data), size});
  const int reserve = CMarkup::DecodeBase64(text, nullptr, 0);
  std::vector<unsigned char> whole(static_cast<std::size_t>(reserve));
  const int decoded = CMarkup::DecodeBase64(text, whole.data(), reserve);
  FUZZ_CHECK(decoded >= 0 && decoded <= reserve);
  for (int room = 1; room < std::min(decoded, 16); ++room) {
    std::vector<unsigned char> small(static_cast<std::size_t>(room));
    FUZZ_CHECK(CMarkup::DecodeBase64(text, small.data(), room) == 0);
  }
  return 0;
}

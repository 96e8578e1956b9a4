#include "tests/golden/Golden.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

/// Some bytes before and behind an offset, readable whatever they are.
std::string around(std::string_view bytes, std::size_t offset) {
  const std::size_t from = offset - std::min<std::size_t>(offset, 40);
  return testing::PrintToString(CString::fromUtf8(bytes.substr(from, 80)));
}

}  // namespace

void expectGolden(const std::string& file, std::string_view bytes) {
  if (const char* const folder = std::getenv("KPX_GOLDEN_WRITE")) {
    std::ofstream out(std::filesystem::path(folder) / file, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(out.flush()) << file;
    GTEST_SKIP() << file << " written";
  }
  std::ifstream in(KPX_TEST_DATA "/" + file, std::ios::binary);
  ASSERT_TRUE(in) << "no golden file " << file;
  const std::string golden{std::istreambuf_iterator<char>(in), {}};
  if (bytes == golden) return;
  const auto length = static_cast<std::ptrdiff_t>(std::min(bytes.size(), golden.size()));
  const auto [here, there] = std::mismatch(bytes.begin(), bytes.begin() + length, golden.begin());
  const auto offset = static_cast<std::size_t>(here - bytes.begin());
  ADD_FAILURE() << file << " (" << golden.size() << " bytes) and what was written (" << bytes.size()
                << " bytes) differ from byte " << offset << ", line "
                << 1 + std::count(bytes.begin(), here, '\n') << ", on\ngolden  "
                << around(golden, offset) << "\nwritten " << around(bytes, offset);
}

void GoldenSum::add(const CString& text) {
  for (const char16_t unit : text.view()) {
    bytes_ += static_cast<char>(unit);
    bytes_ += static_cast<char>(unit >> 8);
  }
  bytes_ += '\n';
}

std::uint32_t GoldenSum::crc() const { return crcOf(bytes_); }

std::uint32_t crcOf(std::string_view bytes) {
  return static_cast<std::uint32_t>(
      crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

}  // namespace kpx

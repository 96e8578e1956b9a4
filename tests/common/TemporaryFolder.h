#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/text/CString.h"

namespace kpx {

/// A folder for the files of one test, removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    static std::atomic<int> counter{0};
    const auto base = std::filesystem::temp_directory_path();
    do {
      path_ = base / ("kpx-test-" + std::to_string(counter++) + "-" +
                      std::to_string(reinterpret_cast<std::uintptr_t>(this)));
    } while (!std::filesystem::create_directory(path_));
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  /// The path of a file in it, as the library takes it.
  CString operator/(std::string_view name) const { return CString((path_ / name).u16string()); }

  void write(std::string_view name, std::string_view bytes) const {
    std::ofstream(path_ / name, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  std::string read(std::string_view name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// The names in it, to see that nothing was left behind.
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      found.push_back(entry.path().filename().string());
    }
    return found;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace kpx

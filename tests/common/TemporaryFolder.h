#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
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
  ~TemporaryFolder() {
    namespace fs = std::filesystem;
    std::error_code refused;
    fs::remove_all(path_, refused);
    if (!refused) return;
    // Some systems keep write-protected files.
    for (const auto& entry : fs::recursive_directory_iterator(path_, refused)) {
      fs::permissions(entry.path(), fs::perms::owner_write, fs::perm_options::add, refused);
    }
    fs::remove_all(path_, refused);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  /// The path of a file in it. All names are UTF-8.
  std::filesystem::path pathOf(std::string_view name) const {
    return path_ / std::u8string(name.begin(), name.end());
  }
  /// The same as the library takes it.
  CString operator/(std::string_view name) const { return CString(pathOf(name).u16string()); }

  void write(std::string_view name, std::string_view bytes) const {
    std::ofstream(pathOf(name), std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  std::string read(std::string_view name) const {
    std::ifstream file(pathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// The names in it, to see that nothing was left behind.
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      const std::u8string name = entry.path().filename().u8string();
      found.emplace_back(name.begin(), name.end());
    }
    return found;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace kpx

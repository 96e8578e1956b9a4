#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

/// An input near a seed: some bytes are other ones, and others follow, which targets take for
/// operations on what they have read.
Bytes derivedFrom(Bytes bytes, std::mt19937& random) {
  const auto anyByte = [&] { return static_cast<std::uint8_t>(random()); };
  for (auto changes = random() % 4; changes > 0 && !bytes.empty(); --changes) {
    bytes[random() % bytes.size()] = random() % 2 ? anyByte() : bytes[random() % bytes.size()];
  }
  bytes.push_back(0);
  for (auto count = random() % 300; count > 0; --count) bytes.push_back(anyByte());
  return bytes;
}

}  // namespace

/// Runs a fuzz target without a fuzzer over every file of the folders and files given, in the order
/// of their names, and over inputs near them, the same ones everywhere: what was found once stays a
/// test in every build.
int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      files.emplace_back(argv[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  for (const auto& path : files) {
    std::printf("%s\n", path.string().c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const Bytes seed(std::istreambuf_iterator<char>(file), {});
    if (!file.eof() && file.fail()) return 1;
    LLVMFuzzerTestOneInput(seed.data(), seed.size());
    std::mt19937 random(1);
    for (int number = 1; number <= 100; ++number) {
      std::printf(" %d", number);
      std::fflush(stdout);
      const Bytes bytes = derivedFrom(seed, random);
      LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("\n");
  }
  // A corpus that got lost must not look like one that passed.
  return files.empty() ? 1 : 0;
}

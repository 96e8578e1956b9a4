// Unpacking an entry of 50 MB and compressing blocks; bytes per second count the unpacked side.
// The counterpart of unpacking is nothing but inflate into memory that is there: no checksum, no
// file. `extract` writes the file, `test` only checks it.

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "kpx/support/zip/MemZip.h"
#include "kpx/support/zip/Unzip.h"
#include "kpx/text/CString.h"
#include "tests/support/zip/ZipBuilder.h"

namespace {

/// Lines of points, as survey files are made of.
std::string pointLines(std::size_t size) {
  std::string text;
  text.reserve(size + 80);
  std::uint32_t state = 1;
  const auto next = [&](std::uint32_t below) {
    state = state * 1664525 + 1013904223;
    return (state >> 8) % below;
  };
  for (int point = 1; text.size() < size; ++point) {
    text += "P" + std::to_string(point) + " 32" + std::to_string(400000 + next(1000)) + "." +
            std::to_string(100 + next(900)) + " " + std::to_string(5500000 + next(1000)) + "." +
            std::to_string(100 + next(900)) + " 1" + std::to_string(next(100)) + ".25 TP\n";
  }
  text.resize(size);
  return text;
}

constexpr std::size_t entrySize = 50'000'000;
constexpr std::size_t blockSize = 1 << 20;

/// The archive and where it is unpacked, removed at the end of the program.
struct Files {
  Files() : folder(std::filesystem::temp_directory_path() / "kpx-zip-bench") {
    std::filesystem::create_directories(folder);
    const std::string content = pointLines(entrySize);
    const std::string bytes = kpx::zipOf({{"points.txt", content}});
    std::ofstream(folder / "archive.zip", std::ios::binary) << bytes;
    packed = kpx::detail::deflated(content);
  }
  ~Files() { std::filesystem::remove_all(folder); }

  std::filesystem::path folder;
  std::string packed;
};

const Files& files() {
  static const Files made;
  return made;
}

void countBytes(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

void UnzipKpx(benchmark::State& state, bool testOnly) {
  const kpx::CString archive((files().folder / "archive.zip").u16string());
  const kpx::CString out((files().folder / "out").u16string());
  kpx::UnzipOptions options;
  options.testOnly = testOnly;
  for (auto _ : state) {
    state.PauseTiming();
    std::filesystem::remove_all(files().folder / "out");
    state.ResumeTiming();
    if (!kpx::unzip(archive, out, options).complete()) state.SkipWithError("not unpacked");
  }
  countBytes(state, entrySize);
}

void InflateZlib(benchmark::State& state) {
  const std::string& packed = files().packed;
  std::vector<unsigned char> content(entrySize);
  for (auto _ : state) {
    z_stream stream{};
    inflateInit2(&stream, -MAX_WBITS);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = content.data();
    stream.avail_out = static_cast<uInt>(content.size());
    if (inflate(&stream, Z_FINISH) != Z_STREAM_END) state.SkipWithError("not inflated");
    inflateEnd(&stream);
  }
  countBytes(state, entrySize);
}

BENCHMARK_CAPTURE(UnzipKpx, extract, false)->Name("zip/extract_50mb/kpx");
BENCHMARK(InflateZlib)->Name("zip/extract_50mb/zlib_inflate");
BENCHMARK_CAPTURE(UnzipKpx, test, true)->Name("zip/test_50mb/kpx");
BENCHMARK(InflateZlib)->Name("zip/test_50mb/zlib_inflate");

template <class Compress>
void compressBlock(benchmark::State& state, Compress compressInto) {
  const std::string block = pointLines(blockSize);
  std::vector<unsigned char> packed(kpx::memZipBound(block.size()));
  for (auto _ : state) {
    unsigned long length = packed.size();
    const int code =
        compressInto(packed.data(), &length, reinterpret_cast<const unsigned char*>(block.data()),
                     static_cast<unsigned long>(block.size()));
    if (code != 0) state.SkipWithError("not compressed");
    benchmark::DoNotOptimize(packed.data());
  }
  countBytes(state, block.size());
}

void MemZipKpx(benchmark::State& state) { compressBlock(state, kpx::KpxMemZip); }
void MemZipZlib(benchmark::State& state) {
  compressBlock(state, [](unsigned char* to, unsigned long* toLength, const unsigned char* from,
                          unsigned long fromLength) {
    return compress2(to, toLength, from, fromLength, Z_DEFAULT_COMPRESSION);
  });
}
BENCHMARK(MemZipKpx)->Name("zip/compress_1mb/kpx");
BENCHMARK(MemZipZlib)->Name("zip/compress_1mb/zlib_compress2");

}  // namespace

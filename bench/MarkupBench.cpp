// Reading, walking, keeping and writing of whole documents, beside a tree of nodes. Bytes per
// second count the UTF-8 file for both. Each parse makes a new document.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <pugixml.hpp>
#include <string>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

using kpx::CMarkup;
using kpx::CString;

// Memory that a repetition gives back is there for the next one, for both programs. Otherwise
// every large block would come from the system anew, and page faults were all there is to see.
[[maybe_unused]] const bool warm = [] {
#ifdef __GLIBC__
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 0x7fffffff);
#endif
  return true;
}();

// --- documents --------------------------------------------------------------------------------

std::string systemFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Settings as configurations write them: a column of 17 attributes with a value of 10 in it.
std::string configurations() {
  constexpr std::size_t wanted = 100'000'000;
  const std::string header =
      " ObjectID=\"0\" UserChangedID=\"17\" UserCreatedID=\"17\" changed=\"21.11.2025-08:15:30\""
      " created=\"03.02.2021-14:00:05\" TransID=\"0\"";
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Configurations>\r\n";
  text.reserve(wanted + 100'000);
  for (int number = 0; text.size() < wanted;) {
    text += "<CFGConfigPolar" + header + " Name=\"CFGConfigPolar\" ClassID=\"0\">\r\n";
    text += "<CFGClass" + header + " Name=\"CFGConfigPolar\">\r\n";
    for (const int last = number + 70; number < last; ++number) {
      text += "<CFGCol" + header + " ClassID=\"0\" Type=\"3\" Name=\"CA2T_Tol_" +
              std::to_string(number % 4000) + "\" Caption=\"Toleranz_XY\" Category=\"" +
              std::to_string(200 + number % 1500) +
              "\" Length=\"0\" Prec=\"3\" Nullable=\"0\" Empty=\"0\" Default=\"\" Unit=\"0\">\r\n";
      text += "<CFGValue" + header + " Value=\"" + std::to_string(number % 977) +
              ".030\" ColID=\"0\" RowID=\"0\" Data=\"0\"/>\r\n</CFGCol>\r\n";
    }
    text += "</CFGClass>\r\n</CFGConfigPolar>\r\n";
  }
  return text += "</Configurations>\r\n";
}

std::string smallElements() {
  constexpr int count = 5'000'000;
  std::string text = "<r>";
  text.reserve(34'000'000);
  for (int i = 0; i < count; ++i) text += i % 3 == 2 ? "<b/>" : "<c>1</c>";
  return text += "</r>";
}

struct Document {
  std::string bytes;
  CString text;
  int elements = 0;

  explicit Document(std::string content) : bytes(std::move(content)) {
    text = CString::fromUtf8(bytes);
    elements = CMarkup(text).GetDocElemCount();
  }
};

const Document& freedesktop() {
  static const Document document(systemFile("/usr/share/mime/packages/freedesktop.org.xml"));
  return document;
}
const Document& configuration() {
  static const Document document(configurations());
  return document;
}
const Document& small() {
  static const Document document(smallElements());
  return document;
}

using Source = const Document& (*)();

bool isMissing(benchmark::State& state, const Document& document) {
  if (document.elements == 0) state.SkipWithError("the document is not there");
  return document.elements == 0;
}

void countBytes(benchmark::State& state, const Document& document) {
  state.SetBytesProcessed(static_cast<std::int64_t>(document.bytes.size()) * state.iterations());
}

// --- parsing ----------------------------------------------------------------------------------

// The text is in memory as UTF-16 and taken over, as a text that was received or edited is.
void parseText(benchmark::State& state, Source source) {
  const Document& document = source();
  if (isMissing(state, document)) return;
  CString text = document.text;
  for ([[maybe_unused]] auto _ : state) {
    CMarkup markup;
    if (!markup.SetDoc(std::move(text))) state.SkipWithError("not well formed");
    text = markup.TakeDoc();
  }
  countBytes(state, document);
}

void parseBytes(benchmark::State& state, Source source) {
  const Document& document = source();
  if (isMissing(state, document)) return;
  for ([[maybe_unused]] auto _ : state) {
    CMarkup markup;
    if (!markup.SetDoc(kpx::decodeMarkupBytes(document.bytes).text)) {
      state.SkipWithError("not well formed");
    }
  }
  countBytes(state, document);
}

void parsePugixml(benchmark::State& state, Source source) {
  const Document& document = source();
  if (isMissing(state, document)) return;
  for ([[maybe_unused]] auto _ : state) {
    pugi::xml_document tree;
    if (!tree.load_buffer(document.bytes.data(), document.bytes.size())) {
      state.SkipWithError("not well formed");
    }
  }
  countBytes(state, document);
}

// --- walking all elements with all attribute values ---------------------------------------------

std::size_t walk(CMarkup& markup) {
  std::size_t units = 0;
  CString value;
  markup.ResetPos();
  for (int depth = 1; depth > 0;) {
    if (markup.FindElem()) {
      for (auto attribute = markup.ReadAttribs(); attribute.next();) {
        attribute.value(value);
        units += value.view().size();
      }
      markup.IntoElem();
      ++depth;
    } else {
      markup.OutOfElem();
      --depth;
    }
  }
  return units;
}

void walkKpx(benchmark::State& state, Source source) {
  const Document& document = source();
  if (isMissing(state, document)) return;
  CMarkup markup(document.text);
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(walk(markup));
  countBytes(state, document);
}

struct Walker : pugi::xml_tree_walker {
  std::size_t bytes = 0;
  bool for_each(pugi::xml_node& node) override {
    for (const pugi::xml_attribute attribute : node.attributes()) {
      bytes += std::char_traits<char>::length(attribute.value());
    }
    return true;
  }
};

void walkPugixml(benchmark::State& state, Source source) {
  const Document& document = source();
  if (isMissing(state, document)) return;
  pugi::xml_document tree;
  tree.load_buffer(document.bytes.data(), document.bytes.size());
  for ([[maybe_unused]] auto _ : state) {
    Walker walker;
    tree.traverse(walker);
    benchmark::DoNotOptimize(walker.bytes);
  }
  countBytes(state, document);
}

// --- memory -------------------------------------------------------------------------------------

void setMemory(benchmark::State& state, const Document& document, std::size_t bytes) {
  state.counters["bytes_per_element"] =
      static_cast<double>(bytes) / static_cast<double>(document.elements);
}

void memoryKpx(benchmark::State& state, Source source) {
  const Document& document = source();
  if (isMissing(state, document)) return;
  std::size_t bytes = 0;
  for ([[maybe_unused]] auto _ : state) bytes = CMarkup(document.text).GetMemoryBytes();
  setMemory(state, document, bytes);
}

// Counts what the tree holds; the size of a block stands before it.
std::size_t heldBytes = 0;
constexpr std::size_t sizeField = 16;

void* countedAllocate(std::size_t size) {
  auto* const block = static_cast<char*>(std::malloc(size + sizeField));
  if (!block) return nullptr;
  *reinterpret_cast<std::size_t*>(block) = size;
  heldBytes += size;
  return block + sizeField;
}

void countedRelease(void* memory) {
  char* const block = static_cast<char*>(memory) - sizeField;
  heldBytes -= *reinterpret_cast<std::size_t*>(block);
  std::free(block);
}

void memoryPugixml(benchmark::State& state, Source source) {
  const Document& document = source();
  if (isMissing(state, document)) return;
  const auto allocate = pugi::get_memory_allocation_function();
  const auto release = pugi::get_memory_deallocation_function();
  pugi::set_memory_management_functions(countedAllocate, countedRelease);
  std::size_t bytes = 0;
  for ([[maybe_unused]] auto _ : state) {
    pugi::xml_document tree;
    tree.load_buffer(document.bytes.data(), document.bytes.size());
    bytes = heldBytes;
  }
  pugi::set_memory_management_functions(allocate, release);
  setMemory(state, document, bytes);
}

// --- writing ------------------------------------------------------------------------------------

void writeKpx(benchmark::State& state, Source source) {
  const Document& document = source();
  if (isMissing(state, document)) return;
  const CMarkup markup(document.text);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(kpx::encodeMarkupText(markup.GetDoc()).bytes.data());
  }
  countBytes(state, document);
}

struct StringWriter : pugi::xml_writer {
  std::string bytes;
  void write(const void* data, std::size_t size) override {
    bytes.append(static_cast<const char*>(data), size);
  }
};

void writePugixml(benchmark::State& state, Source source) {
  const Document& document = source();
  if (isMissing(state, document)) return;
  pugi::xml_document tree;
  tree.load_buffer(document.bytes.data(), document.bytes.size(),
                   pugi::parse_full | pugi::parse_ws_pcdata);
  for ([[maybe_unused]] auto _ : state) {
    StringWriter writer;
    writer.bytes.reserve(document.bytes.size());
    tree.save(writer, "", pugi::format_raw | pugi::format_no_declaration);
    benchmark::DoNotOptimize(writer.bytes.data());
  }
  countBytes(state, document);
}

// Each task on each document, beside the tree.
const bool registered = [] {
  struct Task {
    const char* name;
    void (*own)(benchmark::State&, Source);
    void (*peer)(benchmark::State&, Source);
  };
  const Task tasks[] = {
      {"parse_text", parseText, parsePugixml},
      {"parse_utf8", parseBytes, parsePugixml},
      {"walk_with_attributes", walkKpx, walkPugixml},
      {"memory", memoryKpx, memoryPugixml},
      {"write", writeKpx, writePugixml},
  };
  const std::pair<const char*, Source> documents[] = {
      {"freedesktop", freedesktop},
      {"configurations_100mb", configuration},
      {"small_elements_5_million", small},
  };
  for (const Task& task : tasks) {
    for (const auto& [name, source] : documents) {
      const std::string prefix = std::string("xml/") + task.name + "_" + name + "/";
      benchmark::RegisterBenchmark((prefix + "kpx").c_str(), task.own, source)
          ->Unit(benchmark::kMillisecond);
      benchmark::RegisterBenchmark((prefix + "pugixml").c_str(), task.peer, source)
          ->Unit(benchmark::kMillisecond);
    }
  }
  return true;
}();

}  // namespace

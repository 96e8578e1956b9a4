#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Check.h"
#include "kpx/platform/WindowPlacement.h"
#include "kpx/report/Exceptions.h"
#include "kpx/support/objects/Archive.h"
#include "kpx/support/objects/CObject.h"

using namespace kpx;

namespace {

/// An object as modules keep them in binary registry values: numbers, texts and lists.
class Record final : public CObject {
 public:
  void Serialize(CArchive& archive) override {
    if (archive.IsStoring()) {
      archive << number << real << flag << name << static_cast<std::uint16_t>(texts.size());
      for (const CString& text : texts) archive << text;
    } else {
      std::uint16_t count = 0;
      archive >> number >> real >> flag >> name >> count;
      for (texts.clear(); count > 0; --count) {
        CString text;
        archive >> text;
        texts.push_back(text);
      }
    }
  }

  std::int32_t number = 0;
  double real = 0.0;
  bool flag = false;
  CString name;
  std::vector<CString> texts;
};

std::string bytesOf(Record& record) {
  std::string bytes;
  CArchive archive(&bytes);
  record.Serialize(archive);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  Record record;
  CArchive archive(bytes);
  try {
    record.Serialize(archive);
    FUZZ_CHECK(archive.position() + archive.remaining() == size);
    // What was read is written, and read again to the same bytes.
    const std::string written = bytesOf(record);
    Record again;
    CArchive second{std::string_view(written)};
    again.Serialize(second);
    FUZZ_CHECK(second.remaining() == 0);
    FUZZ_CHECK(bytesOf(again) == written);
  } catch (const ArchiveEndException&) {
    // Nothing can have been read that did not lie in the bytes.
    FUZZ_CHECK(static_cast<std::size_t>(record.name.GetLength()) <= size);
    FUZZ_CHECK(record.texts.size() <= size);
  }

  WindowPlacement placement;
  if (placement.assign(bytes)) FUZZ_CHECK(placement.bytes() == bytes);
  return 0;
}

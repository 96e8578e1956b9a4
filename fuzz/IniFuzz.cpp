#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Check.h"
#include "kpx/support/ini/CIniEx.h"
#include "kpx/support/ini/IniCheck.h"

using namespace kpx;

namespace {

struct KeyData {
  CString section, key, value, comment;
  friend bool operator==(const KeyData&, const KeyData&) = default;
};

std::vector<KeyData> contentOf(const CIniEx& ini) {
  std::vector<KeyData> content;
  CObArray sections;
  FUZZ_CHECK(ini.GetSectionAll(sections) == 1);
  for (const CSection* const section : sections) {
    for (const KEY_STRUCT& key : section->keys()) {
      if (key.state() != detail::IniEntry::removed) {
        content.push_back({section->name(), key.key(), key.value(), key.comment()});
      }
    }
  }
  return content;
}

/// What is in memory is what the saved bytes give back.
void checkRoundTrip(const CIniEx& ini) {
  CIniEx again;
  FUZZ_CHECK(again.readBytes(ini.fileBytes()) == 1);
  FUZZ_CHECK(contentOf(again) == contentOf(ini));
}

/// Whether a section is found, which must not be a removed one.
bool hasSection(const CIniEx& ini, const CString& name) {
  CSection* section = nullptr;
  if (ini.GetSection(name, section) == 0) return false;
  FUZZ_CHECK(section->state() != detail::IniEntry::removed);
  return true;
}

/// The same changes in another order of bytes: each byte of the input chooses one.
void change(CIniEx& ini, std::string_view bytes, const CString& text) {
  constexpr std::size_t mostChanges = 16;
  std::vector<KeyData> keys = contentOf(ini);
  for (std::size_t i = 0; i < bytes.size() && i < mostChanges && !keys.empty(); ++i) {
    const auto choice = static_cast<unsigned char>(bytes[i]);
    const KeyData& key = keys[(choice / 8) % keys.size()];
    CString before;
    const bool found = ini.GetKeyData(key.section, key.key, before) == 1;
    switch (choice % 9) {
      case 0:
        if (ini.UpdateKey(key.section, key.key, text) == 1) {
          FUZZ_CHECK(found && ini.GetKeyData(key.section, key.key) == 1);
        }
        break;
      case 1:
        ini.UpdateKey(key.section, key.key, key.value, text, u"");
        break;
      case 2:
        FUZZ_CHECK((ini.DeleteKey(key.section, key.key) == 1) == found);
        break;
      case 3:
        ini.AddNewKey(key.section, text, key.value);
        break;
      case 4:
        ini.AddNewSection(text);
        break;
      case 5:
        ini.UpdateSection(key.section, text, key.comment);
        break;
      case 6:
        ini.DeleteKeyfromSection(key.section, key.key);
        break;
      case 7: {
        const bool isThere = hasSection(ini, key.section);
        FUZZ_CHECK((ini.DeleteSection(key.section) == 1) == isThere);
        break;
      }
      default:
        // Every value that was handed out may be set again without changing anything.
        if (found) {
          const std::string saved = ini.fileBytes();
          FUZZ_CHECK(ini.UpdateKey(key.section, key.key, before) == 1);
          FUZZ_CHECK(ini.fileBytes() == saved);
        }
        break;
    }
  }
  // What was removed is not found, whatever came after it.
  for (const KeyData& key : keys) hasSection(ini, key.section);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  CIniEx ini;
  FUZZ_CHECK(ini.readBytes(bytes) == 1);
  FUZZ_CHECK(ini.fileBytes() == bytes);
  checkRoundTrip(ini);
  for (const IniProblem& problem : checkIni(bytes)) {
    FUZZ_CHECK(problem.line >= 1 && problem.column >= 1);
  }

  const std::size_t half = size / 2;
  CIniEx changed(ini);
  change(changed, bytes.substr(half), CString::fromUtf8(bytes.substr(half, 40)));
  checkRoundTrip(changed);
  FUZZ_CHECK(ini.fileBytes() == bytes);
  return 0;
}

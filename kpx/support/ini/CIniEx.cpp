#include "kpx/support/ini/CIniEx.h"

#include <climits>
#include <exception>
#include <new>
#include <utility>

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/support/ini/internal/IniContent.h"
#include "kpx/support/ini/internal/IniLine.h"
#include "kpx/support/Operations.h"

namespace kpx {

CIniEx::CIniEx() : content_(std::make_unique<Content>()) {}
CIniEx::CIniEx(const CIniEx& other)
    : content_(other.content_->clone()),
      keyTypesName_(other.keyTypesName_),
      keyTypes_(other.keyTypes_) {}
CIniEx& CIniEx::operator=(const CIniEx& other) {
  if (this != &other) *this = CIniEx(other);
  return *this;
}
CIniEx::CIniEx(CIniEx&&) noexcept = default;
CIniEx& CIniEx::operator=(CIniEx&&) noexcept = default;
CIniEx::~CIniEx() = default;

// --- files ----------------------------------------------------------------------------------

int CIniEx::ReadFile(const CString& path) {
  return Guarded("CIniEx::ReadFile"_support, 0, [&] {
    FileOrigin origin;
    FileBytes bytes;
    const FileResult result = origin.read(path, bytes);
    if (result.status == FileStatus::noMemory) throw std::bad_alloc();
    if (!result) return 0;
    std::unique_ptr<Content> content = contentOf(bytes);
    if (!content) return 0;
    content->origin = std::move(origin);
    content_ = std::move(content);
    return 1;
  });
}

int CIniEx::SaveFile(const CString& path) { return SaveFile(path, SaveMode::overwrite); }

int CIniEx::SaveFile(const CString& path, SaveMode mode) {
  return Guarded("CIniEx::SaveFile"_support, 0, [&] {
    detail::StoredEncoding encoding;
    const std::string bytes = encoded(encoding);
    const auto write = [&](OutputFile& file) { return file.write(bytes); };
    if (!content_->origin.replace(path, write, mode)) return 0;
    content_->encoding = encoding;
    content_->settle();
    return 1;
  });
}

FileResult CIniEx::ChangeFile(const CString& path, const std::function<bool(CIniEx&)>& change,
                              std::chrono::milliseconds patience) {
  std::exception_ptr thrown;
  const FileResult result =
      Guarded("CIniEx::ChangeFile"_support, FileResult{FileStatus::noMemory, 0}, [&] {
        const FileResult changed = fileSystem().changeFile(
            path,
            [&](std::string_view old, const FileVersion&, std::string& now) -> FileResult {
              CIniEx ini;
              ini.content_ = contentOf(old);
              if (!ini.content_) return {FileStatus::tooLarge, 0};
              bool isChanged = false;
              try {
                isChanged = change(ini);
              } catch (...) {
                thrown = std::current_exception();
              }
              detail::StoredEncoding encoding;
              now = isChanged ? ini.encoded(encoding) : std::string(old);
              return {};
            },
            patience);
        if (changed.status == FileStatus::noMemory) throw std::bad_alloc();
        return changed;
      });
  if (thrown) std::rethrow_exception(thrown);
  return result;
}

int CIniEx::readBytes(std::string_view bytes) {
  return Guarded("CIniEx::readBytes"_support, 0, [&] {
    std::unique_ptr<Content> content = contentOf(bytes);
    if (!content) return 0;
    content_ = std::move(content);
    return 1;
  });
}

std::unique_ptr<CIniEx::Content> CIniEx::contentOf(std::string_view bytes) {
  if (bytes.size() >= static_cast<std::size_t>(INT_MAX)) return nullptr;
  detail::StoredText decoded = detail::decodeStored(bytes);
  auto content = std::make_unique<Content>();
  content->text = std::make_shared<const std::u16string>(std::move(decoded.text));
  content->encoding = decoded.encoding;
  content->halfUnit = std::move(decoded.halfUnit);
  content->read();
  return content;
}

std::string CIniEx::fileBytes() const {
  detail::StoredEncoding encoding;
  return encoded(encoding);
}

std::string CIniEx::encoded(detail::StoredEncoding& encoding) const {
  encoding = content_->encoding;
  std::string bytes = detail::encodeStored(content_->written(), encoding);
  if (encoding.codePage == content_->encoding.codePage) bytes += content_->halfUnit;
  return bytes;
}

void CIniEx::ClearMemory() noexcept {
  Guarded("CIniEx::ClearMemory"_support, [&] { content_ = std::make_unique<Content>(); });
}

// --- reading --------------------------------------------------------------------------------

int CIniEx::GetIndexForSection(const CString& name) const noexcept {
  const std::size_t found = content_->index.find(*content_, name);
  return found == detail::NameIndex<Content>::none ? -1 : static_cast<int>(found);
}

int CIniEx::GetIndexForKey(int section, const CString& key) const noexcept {
  if (section < 0 || static_cast<std::size_t>(section) >= content_->sections.size()) return -1;
  const std::size_t found = content_->sections[static_cast<std::size_t>(section)]->find(key);
  return found == detail::NameIndex<CSection>::none ? -1 : static_cast<int>(found);
}

CSection* CIniEx::findSection(std::u16string_view name) const noexcept {
  const std::size_t found = content_->index.find(*content_, name);
  return found == detail::NameIndex<Content>::none ? nullptr : content_->sections[found].get();
}

KEY_STRUCT* CIniEx::findKey(std::u16string_view section, std::u16string_view key) const noexcept {
  CSection* const holder = findSection(section);
  if (holder == nullptr) return nullptr;
  const std::size_t found = holder->find(key);
  return found == detail::NameIndex<CSection>::none ? nullptr : &holder->keys_[found];
}

int CIniEx::GetKeyData(const CString& section, const CString& key) const {
  return Guarded("CIniEx::GetKeyData"_support, 0,
                 [&] { return findKey(section, key) != nullptr ? 1 : 0; });
}

int CIniEx::GetKeyData(const CString& section, const CString& key, CString& value) const {
  return Guarded("CIniEx::GetKeyData"_support, 0, [&] {
    const KEY_STRUCT* const found = findKey(section, key);
    if (found == nullptr) return 0;
    detail::decodeIniValue(found->entry_.value(), value);
    return 1;
  });
}

int CIniEx::GetKeyData(const CString& section, const CString& key, CString& value,
                       CString& comment) const {
  CString type;
  return GetKeyData(section, key, value, comment, type);
}

int CIniEx::GetKeyData(const CString& section, const CString& key, CString& value, CString& comment,
                       CString& type) const {
  return Guarded("CIniEx::GetKeyData"_support, 0, [&] {
    const KEY_STRUCT* const found = findKey(section, key);
    if (found == nullptr) return 0;
    CString text = found->value();
    CString above = found->comment();
    type = found->type();
    value = std::move(text);
    comment = std::move(above);
    return 1;
  });
}

int CIniEx::GetSection(const CString& name, CSection*& section) const {
  return Guarded("CIniEx::GetSection"_support, 0, [&] {
    section = findSection(name);
    return section != nullptr ? 1 : 0;
  });
}

int CIniEx::GetSectionAll(CObArray& sections) const {
  return Guarded("CIniEx::GetSectionAll"_support, 0, [&] {
    CObArray all;
    all.reserve(content_->sections.size());
    for (const auto& section : content_->sections) {
      if (section->state() != detail::IniEntry::removed) all.push_back(section.get());
    }
    sections = std::move(all);
    return 1;
  });
}

// --- the catalogue of key types -------------------------------------------------------------

int CIniEx::AddKeyTypeSection(const CString& name) {
  return Guarded("CIniEx::AddKeyTypeSection"_support, 0, [&] {
    keyTypesName_ = name;
    keyTypes_.clear();
    return 1;
  });
}

int CIniEx::AddKeyToKeyTypeSection(const CString& key, const CString& type, const CString& text,
                                   int& index) {
  return Guarded("CIniEx::AddKeyToKeyTypeSection"_support, 0, [&] {
    KEYTYPE_STRUCT entry{key, type, text};
    std::size_t at = 0;
    while (at < keyTypes_.size() && keyTypes_[at].Key != key) ++at;
    if (at == keyTypes_.size()) {
      keyTypes_.push_back(std::move(entry));
    } else {
      keyTypes_[at] = std::move(entry);
    }
    index = static_cast<int>(at);
    return 1;
  });
}

int CIniEx::GetDataFromKeyTypeSection(const CString& key, KEYTYPE_STRUCT& entry) const {
  return Guarded("CIniEx::GetDataFromKeyTypeSection"_support, 0, [&] {
    for (const KEYTYPE_STRUCT& each : keyTypes_) {
      if (each.Key != key) continue;
      entry = each;
      return 1;
    }
    return 0;
  });
}

int CIniEx::DeleteIndexFromKeyTypeSection(int index) {
  return Guarded("CIniEx::DeleteIndexFromKeyTypeSection"_support, 0, [&] {
    if (index < 0 || static_cast<std::size_t>(index) >= keyTypes_.size()) return 0;
    keyTypes_.erase(keyTypes_.begin() + index);
    return 1;
  });
}

// --- lines ----------------------------------------------------------------------------------

bool CIniEx::GetToken(const CString& line, char16_t delimiter, CString& left, CString& right) {
  return Guarded("CIniEx::GetToken"_support, false, [&] {
    const std::size_t at = detail::findOutsideQuotes(line, delimiter);
    if (at == std::u16string_view::npos) return false;
    // The line may be one of the two outputs.
    CString before(line.view().substr(0, at));
    right = CString(line.view().substr(at + 1));
    left = std::move(before);
    return true;
  });
}

bool CIniEx::BracketsContents(const CString& line, CString& name) {
  return Guarded("CIniEx::BracketsContents"_support, false, [&] {
    std::u16string_view found;
    if (!detail::sectionName(line, found)) return false;
    name = CString(found);
    return true;
  });
}

void CIniEx::ReplaceTo0xD_0xA(CString& value) {
  Guarded("CIniEx::ReplaceTo0xD_0xA"_support, [&] { value = detail::encodeIniValue(value); });
}

void CIniEx::ReplaceFrom0xD_0xA(CString& value) {
  Guarded("CIniEx::ReplaceFrom0xD_0xA"_support, [&] {
    CString decoded;
    detail::decodeIniValue(value, decoded);
    value = std::move(decoded);
  });
}

void CIniEx::DeleteTail(CString& line) {
  line.Truncate(static_cast<int>(detail::withoutLineEnd(line).size()));
}

}  // namespace kpx

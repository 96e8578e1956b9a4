#include "kpx/support/zip/internal/ZipNames.h"

#include <zlib.h>

#include <algorithm>
#include <optional>

#include "kpx/support/zip/internal/CodePage437.h"
#include "kpx/support/zip/internal/ZipFormat.h"
#include "kpx/text/CaseFold.h"
#include "kpx/text/PortableName.h"
#include "kpx/text/TextTools.h"
#include "kpx/text/Utf.h"

namespace kpx::detail {
namespace {

using View = std::u16string_view;

constexpr std::size_t longestName = 1024;
constexpr int deepestFolder = 128;

std::optional<CString> utf8Text(std::string_view bytes) {
  std::u16string text;
  if (appendUtf8(text, bytes) != std::string::npos) return std::nullopt;
  return CString(std::move(text));
}

// The name up to the next separator, with which `rest` begins afterwards.
View nextPart(View& rest) noexcept {
  const std::size_t length = std::min(rest.find_first_of(u"/\\"), rest.size());
  const View part = rest.substr(0, length);
  rest.remove_prefix(length);
  return part;
}

bool isAsciiLetter(char16_t unit) noexcept {
  return foldCase(unit) >= u'a' && foldCase(unit) <= u'z';
}

ZipStatus checkPart(View part) noexcept {
  switch (portableNameProblem(part)) {
    case NameProblem::empty:
      return ZipStatus::emptyName;
    case NameProblem::parentStep:
      return ZipStatus::parentStep;
    case NameProblem::badCharacter:
      return ZipStatus::badCharacter;
    case NameProblem::trailingUnit:
      return ZipStatus::trailingUnit;
    case NameProblem::reserved:
      return ZipStatus::reservedName;
    case NameProblem::none:
      break;
  }
  return ZipStatus::done;
}

}  // namespace

CString zipEntryName(std::string_view stored, std::uint16_t flags, std::string_view extra) {
  if ((flags & zip::flagUtf8) != 0) {
    // Some writers set the flag for names in a code page; a name that is no UTF-8 is read like one
    // without the flag, so that no entry is lost.
    if (auto text = utf8Text(stored)) return *std::move(text);
  }
  const std::string_view unicode = zip::extraField(extra, zip::extraUnicodeName);
  constexpr std::size_t before = 5;  // version and checksum of the stored name
  if (unicode.size() > before && unicode[0] == 1 &&
      zip::u32(unicode, 1) == crc32_z(0, reinterpret_cast<const Bytef*>(stored.data()),
                                      static_cast<z_size_t>(stored.size()))) {
    if (auto text = utf8Text(unicode.substr(before))) return *std::move(text);
  }
  return textOfCodePage437(stored);
}

ZipStatus zipEntryPath(const CString& name, CString& path) {
  path.Empty();
  View rest = name;
  if (rest.empty()) return ZipStatus::emptyName;
  if (rest.size() > longestName) return ZipStatus::nameTooLong;
  if (isPathSeparator(rest.front())) return ZipStatus::absoluteName;
  if (rest.size() > 1 && rest[1] == u':' && isAsciiLetter(rest[0])) return ZipStatus::driveName;

  CString joined;
  int depth = 0;
  for (; !rest.empty(); rest.remove_prefix(std::min<std::size_t>(rest.size(), 1))) {
    const View part = nextPart(rest);
    if (part.empty() || part == u".") continue;
    if (const ZipStatus status = checkPart(part); status != ZipStatus::done) return status;
    if (++depth > deepestFolder) return ZipStatus::nameTooLong;
    if (!joined.IsEmpty()) joined += u'/';
    joined += part;
  }
  if (joined.IsEmpty() && !isZipFolderName(name)) return ZipStatus::emptyName;
  path = std::move(joined);
  return ZipStatus::done;
}

bool isZipFolderName(const CString& name) noexcept {
  return !name.IsEmpty() && isPathSeparator(name[name.GetLength() - 1]);
}

void ZipPathClaims::claim(ZipEntry& entry) {
  View path = entry.path;
  for (std::uint32_t above = 0; !path.empty();) {
    std::u16string part(nextPart(path));
    const bool last = path.empty();
    if (!last) path.remove_prefix(1);
    std::transform(part.begin(), part.end(), part.begin(), foldCase);
    ZipEntry* const file = last && !entry.folder ? &entry : nullptr;
    const auto number = static_cast<std::uint32_t>(places_.size() + 1);
    const auto [place, isNew] = places_.try_emplace({above, std::move(part)}, Place{number, file});
    above = place->second.number;
    if (isNew) continue;
    ZipEntry* const other = place->second.file;
    if ((file == nullptr) != (other == nullptr)) {
      entry.status = ZipStatus::fileAndFolder;
      return;
    }
    if (file == nullptr) continue;
    if (other->path != entry.path) {
      entry.status = ZipStatus::sameFile;
    } else {
      other->shared = entry.shared = true;
    }
  }
}

}  // namespace kpx::detail

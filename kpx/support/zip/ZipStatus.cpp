#include "kpx/support/zip/ZipStatus.h"

#include <cstddef>
#include <iterator>

namespace kpx {
namespace {

struct StatusText {
  ZipStatus status;
  std::u16string_view name;
  std::u16string_view message;
};

// In the order of the enumeration, which the compiler checks.
constexpr StatusText texts[] = {
    {ZipStatus::done, u"done", u"done"},
    {ZipStatus::kept, u"kept", u"a file of that name exists and was kept"},
    {ZipStatus::cancelled, u"cancelled", u"cancelled"},
    {ZipStatus::unreadable, u"unreadable", u"the file cannot be read"},
    {ZipStatus::noArchive, u"noArchive", u"this is no zip archive, or its end is missing"},
    {ZipStatus::severalVolumes, u"severalVolumes",
     u"this is a part of an archive in several files"},
    {ZipStatus::tooManyEntries, u"tooManyEntries", u"the archive has more entries than allowed"},
    {ZipStatus::directoryDamaged, u"directoryDamaged",
     u"the directory of the archive is damaged; entries may be missing"},
    {ZipStatus::emptyName, u"emptyName", u"it has no name"},
    {ZipStatus::absoluteName, u"absoluteName", u"its name is an absolute path"},
    {ZipStatus::driveName, u"driveName", u"its name begins with a drive"},
    {ZipStatus::parentStep, u"parentStep", u"its name leads out of the folder (\"..\")"},
    {ZipStatus::badCharacter, u"badCharacter", u"its name has a character that no file may have"},
    {ZipStatus::trailingUnit, u"trailingUnit", u"a part of its name ends in a dot or a blank"},
    {ZipStatus::reservedName, u"reservedName", u"a part of its name is reserved for a device"},
    {ZipStatus::nameTooLong, u"nameTooLong", u"its name is too long or too deep"},
    {ZipStatus::sameFile, u"sameFile", u"an entry before it has the same name, except for case"},
    {ZipStatus::fileAndFolder, u"fileAndFolder",
     u"it is a file where an entry before it needs a folder, or the other way round"},
    {ZipStatus::link, u"link", u"it is a link"},
    {ZipStatus::specialFile, u"specialFile",
     u"it is a device or socket, or a pipe without content"},
    {ZipStatus::folderWithContent, u"folderWithContent", u"it is a folder and has a content"},
    {ZipStatus::encrypted, u"encrypted", u"it is encrypted"},
    {ZipStatus::unknownMethod, u"unknownMethod", u"its compression method is not supported"},
    {ZipStatus::totalTooLarge, u"totalTooLarge", u"with it the content is larger than allowed"},
    {ZipStatus::ratioTooHigh, u"ratioTooHigh", u"it unpacks to more times its size than allowed"},
    {ZipStatus::headerDamaged, u"headerDamaged", u"its header is damaged"},
    {ZipStatus::headersDiffer, u"headersDiffer", u"its header contradicts the directory"},
    {ZipStatus::overlapping, u"overlapping", u"its bytes overlap others of the archive"},
    {ZipStatus::contentDamaged, u"contentDamaged", u"its content is damaged"},
    {ZipStatus::sizeWrong, u"sizeWrong", u"its content has not the size that is stated"},
    {ZipStatus::checksumWrong, u"checksumWrong",
     u"its content has not the checksum that is stated"},
    {ZipStatus::throughLink, u"throughLink", u"a link stands in its way"},
    {ZipStatus::notWritten, u"notWritten", u"it cannot be written"},
};

constexpr bool inOrder() {
  for (std::size_t i = 0; i < std::size(texts); ++i) {
    if (static_cast<std::size_t>(texts[i].status) != i) return false;
  }
  return static_cast<std::size_t>(ZipStatus::notWritten) + 1 == std::size(texts);
}
static_assert(inOrder());

const StatusText& textOf(ZipStatus status) noexcept {
  return texts[static_cast<std::size_t>(status)];
}

}  // namespace

CString zipMessage(ZipStatus status) { return textOf(status).message; }

std::u16string_view zipStatusName(ZipStatus status) noexcept { return textOf(status).name; }

}  // namespace kpx

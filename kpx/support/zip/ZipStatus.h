#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// What became of a zip archive or of one of its entries.
enum class ZipStatus : std::uint8_t {
  done,       // written, created, or tested and found good
  kept,       // a file of that name existed and was to stay
  cancelled,  // by the receiver of the progress

  // The archive as a whole; nothing was written but for `directoryDamaged`.
  unreadable,        // the file cannot be opened or read; the FileResult tells why
  noArchive,         // no zip archive, or the end of it is missing
  severalVolumes,    // a part of an archive that is spread over several files
  tooManyEntries,    // more than the limit
  directoryDamaged,  // the entries before the damage were treated

  // Refused for the name. The same names are refused on every system, so that an archive gives
  // the same files everywhere.
  emptyName,
  absoluteName,   // begins with a separator
  driveName,      // begins with a drive
  parentStep,     // holds ".."
  badCharacter,   // a control character or one of < > : " | ? *
  trailingUnit,   // a name ends in a dot or a blank, which some systems drop
  reservedName,   // a device, such as NUL or COM1.txt
  nameTooLong,    // over 1,024 units or 128 folders
  sameFile,       // folds to the name of an entry before it, but is not the very same
  fileAndFolder,  // a file where an entry before it has a folder, or the other way round

  // Refused for what it is.
  link,
  specialFile,        // a device or socket, or a pipe without content
  folderWithContent,  // a folder's name and a file's content
  encrypted,
  unknownMethod,  // neither stored nor deflated

  // Refused for a limit.
  totalTooLarge,
  ratioTooHigh,

  // Damaged, or not what the directory says.
  headerDamaged,
  headersDiffer,  // name, method, encryption, sizes or checksum differ between the directory and
                  // the entry
  overlapping,    // its bytes are those of another entry or the directory, too
  contentDamaged,
  sizeWrong,
  checksumWrong,

  // The destination.
  throughLink,  // the way leads through a link, or the file to be written is one
  notWritten,   // the FileResult tells why
};

/// Whether something is wrong with the archive or entry, other than that the user chose so.
constexpr bool isRefusal(ZipStatus status) noexcept { return status > ZipStatus::cancelled; }

/// A short English clause for messages: "its name leads out of the folder".
KPX_API CString zipMessage(ZipStatus status);

/// The name of the status, which programs may store and compare: "parentStep".
KPX_API std::u16string_view zipStatusName(ZipStatus status) noexcept;

}  // namespace kpx

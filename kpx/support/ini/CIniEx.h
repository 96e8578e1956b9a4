#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/platform/FileOrigin.h"
#include "kpx/report/Export.h"
#include "kpx/support/ini/CSection.h"
#include "kpx/text/CString.h"

namespace kpx {

namespace detail {
struct StoredEncoding;
}

/// An entry of the catalogue of key types.
struct KEYTYPE_STRUCT {
  CString Key;   // the name of a key
  CString Type;  // the name of its type
  CString Text;  // whatever the caller wants to tell about it
};

/// The sections of a file in its order.
using CObArray = std::vector<CSection*>;

/// An INI file in memory. It is read whole, queried and changed, and written whole.
///
/// What nobody changes is written back exactly as it was read: order, comments, blank lines, lines
/// without meaning, line ends, byte-order mark and encoding (UTF-8, UTF-16, or Windows-1252 when
/// the bytes are no UTF-8). New and changed entries take the line end of the file's first line; in
/// a new file, carriage return and line feed, and UTF-8 without a mark. If a Windows-1252 file
/// cannot hold a new text, the file becomes UTF-8 with a mark.
///
/// - A line that begins with ";" is a comment. Comments, blank lines and lines without meaning
///   belong to the key or section that follows, and are removed with it.
/// - `[name]` begins a section. Blanks inside the brackets are part of the name.
/// - `key=value`: blanks around the key are not part of it, those of the value are. An "=" or ";"
///   inside the value is an ordinary character. A key may hold an "=" inside a pair of double
///   quotes.
/// - Keys above the first section header are in a section with the empty name.
/// - A line break in a value is stored as a backslash and "n". Values are handed out with a blank
///   and a line feed in their place, except at the very beginning of the value; so a value with
///   these two characters of its own, such as a Windows path, comes back with a line break.
/// - Lines of more than 4,000 UTF-16 units are read as several lines.
///
/// Names compare with case. Of several sections or keys of one name the first counts. Operations
/// answer 1 when they did what they are for and 0 when not, with everything as it was then. A name
/// or text that the file could not give back is refused: names with line breaks, section names with
/// "]", key names that are empty, with a "=" outside quotes, that begin with ";" or look like a
/// section header, lines of more than 4,000 units, halves of surrogate pairs, and characters 0.
///
/// Several threads may read while nobody changes anything.
class KPX_API CIniEx {
 public:
  CIniEx();
  /// Copies are deep.
  CIniEx(const CIniEx& other);
  CIniEx& operator=(const CIniEx& other);
  /// The source is only good for assignment and destruction afterwards.
  CIniEx(CIniEx&&) noexcept;
  CIniEx& operator=(CIniEx&&) noexcept;
  virtual ~CIniEx();

  // --- files --------------------------------------------------------------------------------

  /// Reads a file in place of what is in memory, except for the key types. 0 when the file cannot
  /// be read, with the memory as it was. Error number 910101.
  int ReadFile(const CString& path);
  /// Writes the file whole or not at all; an existing one is replaced only by the finished one.
  /// Afterwards the removed entries are gone. 0 when it cannot be written, with the old file as it
  /// was. Error number 910102.
  int SaveFile(const CString& path);
  /// The same, but `unlessChanged` also answers 0, with the file as it is, when it is the file that
  /// was read or saved last and another program has changed it since.
  int SaveFile(const CString& path, SaveMode mode);
  /// Reads a file (none counts as empty), lets `change` change it and saves it, so that of several
  /// programs that do this at the same time none undoes what another one did: they wait for each
  /// other for up to `patience`, then the answer is `locked`. Nothing is saved when `change`
  /// answers false or leaves the content as it was. What `change` throws reaches the caller. Error
  /// number 910134.
  static FileResult ChangeFile(const CString& path, const std::function<bool(CIniEx&)>& change,
                               std::chrono::milliseconds patience = changePatience);

  /// The same from and to the bytes of a file. Reading refuses 2^31 bytes and more; error number
  /// 910119. `fileBytes` throws std::bad_alloc: an empty file in place of the bytes would be taken
  /// for them.
  int readBytes(std::string_view bytes);
  std::string fileBytes() const;

  // --- reading ------------------------------------------------------------------------------

  /// The value of a key, its comment lines (each with its ";", line feeds between them) and its
  /// type. 0 and the texts as they were when there is no such key. Error number 910103.
  int GetKeyData(const CString& section, const CString& key) const;
  int GetKeyData(const CString& section, const CString& key, CString& value) const;
  int GetKeyData(const CString& section, const CString& key, CString& value,
                 CString& comment) const;
  int GetKeyData(const CString& section, const CString& key, CString& value, CString& comment,
                 CString& type) const;

  /// The section, which stays with this object: it is valid until it is removed and the file saved,
  /// or something else is read. nullptr when there is none. Error number 910104.
  int GetSection(const CString& name, CSection*& section) const;
  /// All sections that are not removed. Error number 910105.
  int GetSectionAll(CObArray& sections) const;

  // --- changing -----------------------------------------------------------------------------

  /// Appends a section; the one with the empty name comes first and has no header. `comment` may
  /// have several lines, which get a ";" where they have none. 0 when there is one of that
  /// name; `index`, the place among the sections in memory, tells where (-1 when refused). Error
  /// number 910106.
  int AddNewSection(const CString& name, const CString& comment, int& index);
  int AddNewSection(const CString& name);
  /// Appends a key to a section that exists. `type` is kept in memory only. 0 when there is one of
  /// that name, whose place `index` tells, or no such section. Error number 910107.
  int AddNewKey(const CString& section, const CString& key, const CString& value,
                const CString& comment, const CString& type, int& index);
  int AddNewKey(const CString& section, const CString& key, const CString& value);
  /// Sets the value of a key that exists; an equal value leaves its line as it is. Error number
  /// 910108.
  int UpdateKey(const CString& section, const CString& key, const CString& value);
  /// Sets its comment (empty removes it) and its type, too.
  int UpdateKey(const CString& section, const CString& key, const CString& value,
                const CString& comment, const CString& type);
  /// Renames a section and sets its comment. 0 when another one has the new name already, or one
  /// of the two names is empty. Error number 910109.
  int UpdateSection(const CString& name, const CString& newName, const CString& comment);

  /// Marks a key, or a section with its keys, as removed: it is found no more, and gone once the
  /// file is saved. Error numbers 910110 and 910111.
  int DeleteKey(const CString& section, const CString& key);
  int DeleteSection(const CString& name);
  /// Removes it from memory at once, so that indices behind it change. Error numbers 910112
  /// and 910113.
  int DeleteKeyfromSection(const CString& section, const CString& key);
  int DeleteSectionfromSections(const CString& name);

  /// Removes all sections and keys; the next file begins anew. Error number 910114.
  void ClearMemory() noexcept;

  // --- the catalogue of key types: for callers only, it is not stored in the file ---------------

  /// Begins a new, empty catalogue with a name of the caller's. Error number 910115.
  int AddKeyTypeSection(const CString& name);
  /// Files the type of a key; an entry of the same key is replaced. `index` is its place. Error
  /// number 910116.
  int AddKeyToKeyTypeSection(const CString& key, const CString& type, const CString& text,
                             int& index);
  /// The entry of a key. Error number 910117.
  int GetDataFromKeyTypeSection(const CString& key, KEYTYPE_STRUCT& entry) const;
  /// Removes the entry at an index; those behind it move up. Error number 910118.
  int DeleteIndexFromKeyTypeSection(int index);

 protected:
  // A failure of those that make texts is reported (910120, 910127 to 910129) and changes nothing.

  /// Splits a line at the first delimiter that stands in no pair of double quotes.
  static bool GetToken(const CString& line, char16_t delimiter, CString& left, CString& right);
  /// The name in a section header; false when the line is none.
  static bool BracketsContents(const CString& line, CString& name);
  /// The first of that name that is not removed, or -1. The place of a key is that in its section;
  /// -1, too, when there is no section of that number.
  int GetIndexForSection(const CString& name) const noexcept;
  int GetIndexForKey(int section, const CString& key) const noexcept;
  /// Brings a value from the form it is handed out in to the stored one, and back.
  static void ReplaceTo0xD_0xA(CString& value);
  static void ReplaceFrom0xD_0xA(CString& value);
  /// Cuts the line end off a line.
  static void DeleteTail(CString& line);

 private:
  struct KPX_LOCAL Content;

  /// The content of a file; nullptr for too many bytes.
  KPX_LOCAL static std::unique_ptr<Content> contentOf(std::string_view bytes);
  /// The bytes that are saved, in the encoding that can hold them.
  KPX_LOCAL std::string encoded(detail::StoredEncoding& encoding) const;
  /// The section or key of that name that counts, or nullptr.
  KPX_LOCAL CSection* findSection(std::u16string_view name) const noexcept;
  KPX_LOCAL KEY_STRUCT* findKey(std::u16string_view section,
                                std::u16string_view key) const noexcept;
  KPX_LOCAL int updateKey(const CString& section, const CString& key, const CString& value,
                          const CString* comment, const CString* type);

  std::unique_ptr<Content> content_;
  CString keyTypesName_;
  std::vector<KEYTYPE_STRUCT> keyTypes_;
};

}  // namespace kpx

#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "kpx/platform/Registry.h"
#include "kpx/platform/WindowPlacement.h"
#include "kpx/report/Error.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

class CObject;

/// One key of the registry at a time. Names of keys and values compare without case; keys are paths
/// below a root with backslashes between the names, for example u"Software\\KPX\\Settings".
///
/// Every operation answers nonzero on success and 0 otherwise, also when no key is open; what is
/// not there is no reported error. `lastResult` tells why the last operation failed. Unexpected
/// failures are reported with the number given, and answer 0. What is read into stays as it was
/// when reading fails.
///
/// The key stays open until `Close`, another `Open` or the end of the object. See `RegistryKey`
/// about threads and child processes.
class KPX_API CRegistry {
 public:
  /// The root for the operations that name none: HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE.
  explicit CRegistry(HKEY root) noexcept : root_(root) {}
  CRegistry() noexcept;  // HKEY_CURRENT_USER
  CRegistry(const CRegistry&) = delete;
  CRegistry& operator=(const CRegistry&) = delete;
  virtual ~CRegistry();

  // --- keys ---------------------------------------------------------------------------------

  /// Opens a key that exists, for reading and writing; never creates one. When that fails, no key
  /// is open. Error 910201.
  int Open(HKEY root, const CString& subkey);
  int Open(const CString& subkey) { return Open(root_, subkey); }
  /// The same for reading only, which needs no right to change anything. Error 910202.
  int OpenReadOnly(HKEY root, const CString& subkey);
  int OpenReadOnly(const CString& subkey) { return OpenReadOnly(root_, subkey); }
  void Close() noexcept;
  /// Whether a key is open.
  bool IsOpen() const noexcept { return key_ != nullptr; }

  /// Opens a key and creates it, and the keys above it, when they are missing. `access` is
  /// KEY_READ, KEY_WRITE or KEY_ALL_ACCESS; with either of the last two it can be read and written.
  /// Error 910203.
  int CreateKey(HKEY root, const CString& subkey, std::uint32_t access);
  /// Deletes a key and its values, not one that has keys below it. Error 910204.
  int DeleteKey(HKEY root, const CString& subkey);
  /// Whether a key can be opened for reading. The open key stays open. Error 910205.
  int VerifyKey(HKEY root, const CString& subkey);
  int VerifyKey(const CString& subkey) { return VerifyKey(root_, subkey); }
  /// The names of the keys directly below the open one, and those of its values, ordered without
  /// case; the empty name is the default value's. Errors 910206, 910207.
  int ReadKeyKeys(std::vector<CString>& names);
  int ReadKeyValues(std::vector<CString>& names);

  // --- values of the open key ---------------------------------------------------------------

  /// Error 910208.
  int VerifyValue(const CString& name);
  /// Error 910209.
  int DeleteValue(const CString& name);
  /// A text, up to its first character 0. Errors 910210, 910211.
  int ReadString(const CString& name, CString& text);
  int WriteString(const CString& name, const CString& text);
  /// A 32-bit number. Errors 910212, 910213.
  int ReadDWORD(const CString& name, std::uint32_t& value);
  int WriteDWORD(const CString& name, std::uint32_t value);
  /// For the system's own DWORD, which is this type there.
  int ReadDWORD(const CString& name, unsigned long& value) {
    std::uint32_t number = 0;
    const int isRead = ReadDWORD(name, number);
    if (isRead) value = number;
    return isRead;
  }

  /// An object as it serialises itself, in a binary value. Reading hands the stored bytes to the
  /// object's own serialisation: bytes that end too early are reported as 910214 and may leave the
  /// object half read. Error of writing: 910215.
  int Read(const CString& name, CObject& object);
  int Write(const CString& name, CObject& object);

  /// Where a window is, as the record of 44 bytes in a binary value. 0 without a registered
  /// `WindowPlacementHandler`, for a null pointer, and for a value that is no such record. Errors
  /// 910216, 910217.
  int Read(const CString& name, CWnd* window);
  int Write(const CString& name, const CWnd* window);

  /// What came of the last operation; `failed` when no key was open,
  /// too.
  const RegistryResult& lastResult() const noexcept { return result_; }

 private:
  template <class Body>
  int onRoot(OperationNumber operation, HKEY root, Body&& body);
  template <class Body>
  int onOpenKey(OperationNumber operation, Body&& body);

  HKEY root_;
  std::unique_ptr<RegistryKey> key_;
  RegistryResult result_;
};

}  // namespace kpx

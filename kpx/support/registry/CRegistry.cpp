#include "kpx/support/registry/CRegistry.h"

#include <string_view>

#include "kpx/support/objects/Archive.h"
#include "kpx/support/objects/CObject.h"
#include "kpx/support/Operations.h"

namespace kpx {
namespace {

constexpr RegistryResult failure{RegistryStatus::failed};

// KEY_SET_VALUE and KEY_CREATE_SUB_KEY, which KEY_WRITE and KEY_ALL_ACCESS hold.
constexpr std::uint32_t writeRights = 0x6;

}  // namespace

CRegistry::CRegistry() noexcept : CRegistry(handleOfRoot(RegistryRoot::currentUser)) {}

CRegistry::~CRegistry() = default;

/// An operation on a root and a path; an unknown root is a bad name.
template <class Body>
int CRegistry::onRoot(OperationNumber operation, HKEY handle, Body&& body) {
  result_ = failure;
  return Guarded(operation, 0, [&] {
    RegistryRoot root = RegistryRoot::currentUser;
    result_ = rootOfHandle(handle, root) ? body(root) : RegistryResult{RegistryStatus::badName};
    return result_ ? 1 : 0;
  });
}

/// An operation on the open key.
template <class Body>
int CRegistry::onOpenKey(OperationNumber operation, Body&& body) {
  result_ = failure;
  if (!key_) return 0;
  return Guarded(operation, 0, [&] {
    result_ = body(*key_);
    return result_ ? 1 : 0;
  });
}

int CRegistry::Open(HKEY root, const CString& subkey) {
  key_.reset();
  return onRoot("CRegistry::Open"_support, root, [&](RegistryRoot where) {
    return registry().open(where, subkey, RegistryAccess::readWrite, key_);
  });
}

int CRegistry::OpenReadOnly(HKEY root, const CString& subkey) {
  key_.reset();
  return onRoot("CRegistry::OpenReadOnly"_support, root, [&](RegistryRoot where) {
    return registry().open(where, subkey, RegistryAccess::read, key_);
  });
}

void CRegistry::Close() noexcept { key_.reset(); }

int CRegistry::CreateKey(HKEY root, const CString& subkey, std::uint32_t access) {
  key_.reset();
  return onRoot("CRegistry::CreateKey"_support, root, [&](RegistryRoot where) {
    const RegistryAccess wanted =
        (access & writeRights) != 0 ? RegistryAccess::readWrite : RegistryAccess::read;
    return registry().create(where, subkey, wanted, key_);
  });
}

int CRegistry::DeleteKey(HKEY root, const CString& subkey) {
  return onRoot("CRegistry::DeleteKey"_support, root,
                [&](RegistryRoot where) { return registry().remove(where, subkey); });
}

int CRegistry::VerifyKey(HKEY root, const CString& subkey) {
  return onRoot("CRegistry::VerifyKey"_support, root, [&](RegistryRoot where) {
    std::unique_ptr<RegistryKey> key;
    return registry().open(where, subkey, RegistryAccess::read, key);
  });
}

int CRegistry::ReadKeyKeys(std::vector<CString>& names) {
  return onOpenKey("CRegistry::ReadKeyKeys"_support,
                   [&](RegistryKey& key) { return key.keyNames(names); });
}

int CRegistry::ReadKeyValues(std::vector<CString>& names) {
  return onOpenKey("CRegistry::ReadKeyValues"_support,
                   [&](RegistryKey& key) { return key.valueNames(names); });
}

int CRegistry::VerifyValue(const CString& name) {
  return onOpenKey("CRegistry::VerifyValue"_support, [&](RegistryKey& key) {
    RegistryValue value;
    return key.read(name, value);
  });
}

int CRegistry::DeleteValue(const CString& name) {
  return onOpenKey("CRegistry::DeleteValue"_support,
                   [&](RegistryKey& key) { return key.removeValue(name); });
}

int CRegistry::ReadString(const CString& name, CString& text) {
  return onOpenKey("CRegistry::ReadString"_support, [&](RegistryKey& key) {
    RegistryValue value;
    const RegistryResult result = key.read(name, value);
    return !result || value.asText(text) ? result : RegistryResult{RegistryStatus::wrongType};
  });
}

int CRegistry::WriteString(const CString& name, const CString& text) {
  return onOpenKey("CRegistry::WriteString"_support,
                   [&](RegistryKey& key) { return key.write(name, RegistryValue::ofText(text)); });
}

int CRegistry::ReadDWORD(const CString& name, std::uint32_t& value) {
  return onOpenKey("CRegistry::ReadDWORD"_support, [&](RegistryKey& key) {
    RegistryValue stored;
    const RegistryResult result = key.read(name, stored);
    return !result || stored.asNumber(value) ? result : RegistryResult{RegistryStatus::wrongType};
  });
}

int CRegistry::WriteDWORD(const CString& name, std::uint32_t value) {
  return onOpenKey("CRegistry::WriteDWORD"_support, [&](RegistryKey& key) {
    return key.write(name, RegistryValue::ofNumber(value));
  });
}

int CRegistry::Read(const CString& name, CObject& object) {
  return onOpenKey("CRegistry::Read(CObject&)"_support, [&](RegistryKey& key) {
    RegistryValue value;
    const RegistryResult result = key.read(name, value);
    if (!result) return result;
    if (value.type != RegistryType::binary) return RegistryResult{RegistryStatus::wrongType};
    CArchive archive{std::string_view(value.bytes)};
    object.Serialize(archive);
    return RegistryResult{};
  });
}

int CRegistry::Write(const CString& name, CObject& object) {
  return onOpenKey("CRegistry::Write(CObject&)"_support, [&](RegistryKey& key) {
    RegistryValue value{RegistryType::binary, {}};
    CArchive archive(&value.bytes);
    object.Serialize(archive);
    return key.write(name, value);
  });
}

int CRegistry::Read(const CString& name, CWnd* window) {
  return onOpenKey("CRegistry::Read(CWnd*)"_support, [&](RegistryKey& key) {
    RegistryValue value;
    WindowPlacement placement;
    WindowPlacementHandler* const windows = windowPlacementHandler();
    if (!windows || !window) return failure;
    const RegistryResult result = key.read(name, value);
    if (!result) return result;
    if (value.type != RegistryType::binary || !placement.assign(value.bytes)) {
      return RegistryResult{RegistryStatus::wrongType};
    }
    return windows->set(*window, placement) ? RegistryResult{} : failure;
  });
}

int CRegistry::Write(const CString& name, const CWnd* window) {
  return onOpenKey("CRegistry::Write(const CWnd*)"_support, [&](RegistryKey& key) {
    WindowPlacement placement;
    WindowPlacementHandler* const windows = windowPlacementHandler();
    if (!windows || !window || !windows->get(*window, placement)) return failure;
    return key.write(name, RegistryValue::ofBytes(placement.bytes()));
  });
}

}  // namespace kpx

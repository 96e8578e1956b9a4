#include "kpx/platform/Registry.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "kpx/text/CaseFold.h"

namespace kpx {
namespace {

RegistryResult resultOf(LSTATUS code) noexcept {
  const int number = static_cast<int>(code);
  switch (code) {
    case ERROR_SUCCESS:
      return {};
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return {RegistryStatus::notFound, number};
    case ERROR_ACCESS_DENIED:
    case ERROR_PRIVILEGE_NOT_HELD:
    case ERROR_WRITE_PROTECT:
      return {RegistryStatus::noPermission, number};
    case ERROR_KEY_DELETED:
      return {RegistryStatus::keyDeleted, number};
    case ERROR_KEY_HAS_CHILDREN:
      return {RegistryStatus::hasSubkeys, number};
    case ERROR_BAD_PATHNAME:
    case ERROR_INVALID_NAME:
    case ERROR_FILENAME_EXCED_RANGE:
      return {RegistryStatus::badName, number};
    case ERROR_BADDB:
    case ERROR_BADKEY:
    case ERROR_REGISTRY_CORRUPT:
    case ERROR_NOT_REGISTRY_FILE:
      return {RegistryStatus::damaged, number};
    case ERROR_DISK_FULL:
    case ERROR_NO_SYSTEM_RESOURCES:
      return {RegistryStatus::noSpace, number};
    default:
      return {RegistryStatus::failed, number};
  }
}

/// A path of names with one backslash between them, as the system takes it.
RegistryResult systemPath(const CString& path, CString& joined) {
  std::vector<std::u16string_view> names;
  const RegistryResult result = detail::splitKeyPath(path, names);
  for (const std::u16string_view name : names) {
    if (!joined.IsEmpty()) joined += u'\\';
    joined += name;
  }
  return result;
}

RegistryResult checkValueName(const CString& name) noexcept {
  const bool usable = name.view().size() <= Registry::maxValueName && name.Find(u'\0') == -1;
  return usable ? RegistryResult{} : RegistryResult{RegistryStatus::badName};
}

REGSAM rightsFor(RegistryAccess access) noexcept {
  return access == RegistryAccess::read ? KEY_READ : KEY_READ | KEY_WRITE;
}

bool isText(RegistryType type) noexcept {
  return type == RegistryType::string || type == RegistryType::expandString;
}

class SystemKey final : public RegistryKey {
 public:
  SystemKey() noexcept = default;
  SystemKey(const SystemKey&) = delete;
  SystemKey& operator=(const SystemKey&) = delete;
  ~SystemKey() override {
    if (handle_) ::RegCloseKey(handle_);
  }

  RegistryResult openBelow(RegistryRoot root, const CString& path, RegistryAccess access) {
    CString joined;
    if (const RegistryResult result = systemPath(path, joined); !result) return result;
    return resultOf(::RegOpenKeyExW(handleOfRoot(root), joined, 0, rightsFor(access), &handle_));
  }

  RegistryResult createBelow(RegistryRoot root, const CString& path, RegistryAccess access) {
    CString joined;
    if (const RegistryResult result = systemPath(path, joined); !result) return result;
    return resultOf(::RegCreateKeyExW(handleOfRoot(root), joined, 0, nullptr,
                                      REG_OPTION_NON_VOLATILE, rightsFor(access), nullptr, &handle_,
                                      nullptr));
  }

  RegistryResult read(const CString& name, RegistryValue& value) override {
    // The system would take the name up to its character 0, thus another value's.
    if (!checkValueName(name)) return {RegistryStatus::notFound};
    RegistryValue found;
    DWORD type = 0;
    DWORD size = 256;
    LSTATUS code = ERROR_MORE_DATA;
    // Another program may write a longer value between two tries.
    while (code == ERROR_MORE_DATA) {
      if (size > maxBytes) return {RegistryStatus::tooLarge};
      found.bytes.resize(size);
      code = ::RegQueryValueExW(handle_, name, nullptr, &type,
                                reinterpret_cast<BYTE*>(found.bytes.data()), &size);
    }
    if (code != ERROR_SUCCESS) return resultOf(code);
    found.bytes.resize(size);
    found.type = static_cast<RegistryType>(type);
    // Most programs store the terminator of a text, some do not.
    if (isText(found.type) && size >= 2 && size % 2 == 0 &&
        found.bytes.compare(size - 2, 2, std::string_view("\0\0", 2)) == 0) {
      found.bytes.resize(size - 2);
    }
    if (found.bytes.size() > Registry::maxValueBytes) return {RegistryStatus::tooLarge};
    value = std::move(found);
    return {};
  }

  RegistryResult write(const CString& name, const RegistryValue& value) override {
    if (const RegistryResult result = checkValueName(name); !result) return result;
    if (value.bytes.size() > Registry::maxValueBytes) return {RegistryStatus::tooLarge};
    std::string bytes = value.bytes;
    if (isText(value.type) && bytes.size() % 2 == 0) bytes.append(2, '\0');
    return resultOf(::RegSetValueExW(handle_, name, 0, static_cast<DWORD>(value.type),
                                     reinterpret_cast<const BYTE*>(bytes.data()),
                                     static_cast<DWORD>(bytes.size())));
  }

  RegistryResult removeValue(const CString& name) override {
    if (!checkValueName(name)) return {RegistryStatus::notFound};
    return resultOf(::RegDeleteValueW(handle_, name));
  }

  RegistryResult valueNames(std::vector<CString>& names) override {
    return listNames(names, Registry::maxValueName, [&](DWORD index, wchar_t* name, DWORD* length) {
      return ::RegEnumValueW(handle_, index, name, length, nullptr, nullptr, nullptr, nullptr);
    });
  }

  RegistryResult keyNames(std::vector<CString>& names) override {
    return listNames(names, Registry::maxKeyName, [&](DWORD index, wchar_t* name, DWORD* length) {
      return ::RegEnumKeyExW(handle_, index, name, length, nullptr, nullptr, nullptr, nullptr);
    });
  }

 private:
  static constexpr DWORD maxBytes = Registry::maxValueBytes + 2;

  template <class Next>
  static RegistryResult listNames(std::vector<CString>& names, std::size_t maxLength, Next next) {
    std::vector<CString> found;
    std::u16string name(maxLength + 1, u'\0');
    for (DWORD index = 0;; ++index) {
      auto length = static_cast<DWORD>(name.size());
      const LSTATUS code = next(index, reinterpret_cast<wchar_t*>(name.data()), &length);
      if (code == ERROR_NO_MORE_ITEMS) break;
      if (code != ERROR_SUCCESS) return resultOf(code);
      found.emplace_back(std::u16string_view(name.data(), length));
    }
    std::sort(found.begin(), found.end(), [](const CString& a, const CString& b) {
      return detail::compareTextNoCase(a, b) < 0;
    });
    names = std::move(found);
    return {};
  }

  HKEY handle_ = nullptr;
};

class SystemRegistry final : public Registry {
 public:
  RegistryResult open(RegistryRoot root, const CString& path, RegistryAccess access,
                      std::unique_ptr<RegistryKey>& key) override {
    return opened(key, [&](SystemKey& opening) { return opening.openBelow(root, path, access); });
  }

  RegistryResult create(RegistryRoot root, const CString& path, RegistryAccess access,
                        std::unique_ptr<RegistryKey>& key) override {
    return opened(key, [&](SystemKey& opening) { return opening.createBelow(root, path, access); });
  }

  RegistryResult remove(RegistryRoot root, const CString& path) override {
    CString joined;
    if (const RegistryResult result = systemPath(path, joined); !result) return result;
    if (joined.IsEmpty()) return {RegistryStatus::badName};
    const LSTATUS code = ::RegDeleteKeyExW(handleOfRoot(root), joined, 0, 0);
    // The system says "access denied" for keys below and for rights that are missing.
    if (code == ERROR_ACCESS_DENIED && hasSubkeys(root, path)) {
      return {RegistryStatus::hasSubkeys, static_cast<int>(code)};
    }
    return resultOf(code);
  }

  RegistryResult removeTree(RegistryRoot root, const CString& path) override {
    CString joined;
    if (const RegistryResult result = systemPath(path, joined); !result) return result;
    if (joined.IsEmpty()) return {RegistryStatus::badName};
    return resultOf(::RegDeleteTreeW(handleOfRoot(root), joined));
  }

  RegistryResult change(RegistryRoot root, std::span<const RegistryChange> steps,
                        std::size_t& reached) override {
    // What can be told beforehand stops it before the first step.
    for (reached = 0; reached < steps.size(); ++reached) {
      if (const RegistryResult result = check(steps[reached]); !result) return result;
    }
    for (reached = 0; reached < steps.size(); ++reached) {
      if (const RegistryResult result = carryOut(root, steps[reached]); !result) return result;
    }
    return {};
  }

 private:
  template <class Opening>
  static RegistryResult opened(std::unique_ptr<RegistryKey>& key, Opening opening) {
    auto opened = std::make_unique<SystemKey>();
    const RegistryResult result = opening(*opened);
    if (result) key = std::move(opened);
    return result;
  }

  static RegistryResult check(const RegistryChange& step) {
    CString joined;
    if (const RegistryResult result = systemPath(step.key, joined); !result) return result;
    if (step.value.bytes.size() > Registry::maxValueBytes) return {RegistryStatus::tooLarge};
    return checkValueName(step.name);
  }

  bool hasSubkeys(RegistryRoot root, const CString& path) {
    std::unique_ptr<RegistryKey> key;
    std::vector<CString> names;
    return open(root, path, RegistryAccess::read, key) && key->keyNames(names) && !names.empty();
  }

  RegistryResult carryOut(RegistryRoot root, const RegistryChange& step) {
    using Kind = RegistryChange::Kind;
    std::unique_ptr<RegistryKey> key;
    RegistryResult result;
    switch (step.kind) {
      case Kind::createKey:
        return create(root, step.key, RegistryAccess::read, key);
      case Kind::write:
        result = create(root, step.key, RegistryAccess::readWrite, key);
        return result ? key->write(step.name, step.value) : result;
      case Kind::removeTree:
        result = removeTree(root, step.key);
        break;
      case Kind::removeValue:
        result = open(root, step.key, RegistryAccess::readWrite, key);
        if (result) result = key->removeValue(step.name);
        break;
    }
    return result.status == RegistryStatus::notFound ? RegistryResult{} : result;
  }
};

}  // namespace

namespace detail {

Registry& systemRegistry() noexcept {
  static SystemRegistry system;
  return system;
}

}  // namespace detail

}  // namespace kpx

#include "kpx/platform/Registry.h"

#include <algorithm>
#include <atomic>
#include <string>

namespace kpx {
namespace {

constinit std::atomic<Registry*> installedRegistry{nullptr};

using TimePoint = std::chrono::steady_clock::time_point;
constinit thread_local TimePoint registryDeadline = TimePoint::max();

// The system's numbers; its macros for them are no constants that the other systems have.
constexpr std::int32_t currentUserHandle = static_cast<std::int32_t>(0x80000001);
constexpr std::int32_t localMachineHandle = static_cast<std::int32_t>(0x80000002);

}  // namespace

RegistryDeadline::RegistryDeadline(TimePoint deadline) noexcept : before_(registryDeadline) {
  registryDeadline = std::min(before_, deadline);
}

RegistryDeadline::~RegistryDeadline() { registryDeadline = before_; }

bool detail::isRegistryDeadlineOver() noexcept {
  return registryDeadline != TimePoint::max() &&
         std::chrono::steady_clock::now() >= registryDeadline;
}

bool rootOfHandle(HKEY handle, RegistryRoot& root) noexcept {
  const auto number = reinterpret_cast<std::intptr_t>(handle);
  if (number == currentUserHandle) {
    root = RegistryRoot::currentUser;
  } else if (number == localMachineHandle) {
    root = RegistryRoot::localMachine;
  } else {
    return false;
  }
  return true;
}

HKEY handleOfRoot(RegistryRoot root) noexcept {
  const std::intptr_t number =
      root == RegistryRoot::currentUser ? currentUserHandle : localMachineHandle;
  return reinterpret_cast<HKEY>(number);  // NOLINT(performance-no-int-to-ptr): as the system does
}

CString RegistryResult::message() const {
  switch (status) {
    case RegistryStatus::ok:
      return {};
    case RegistryStatus::notFound:
      return u"there is no such key or value";
    case RegistryStatus::noPermission:
      return u"permission is missing";
    case RegistryStatus::wrongType:
      return u"the value has another type";
    case RegistryStatus::hasSubkeys:
      return u"there are keys below that key";
    case RegistryStatus::keyDeleted:
      return u"the key was deleted meanwhile";
    case RegistryStatus::badName:
      return u"that is no name that a key or value can have";
    case RegistryStatus::tooLarge:
      return u"the value is too large";
    case RegistryStatus::damaged:
      return u"the stored registry is damaged or of another version";
    case RegistryStatus::busy:
      return u"other programs keep the registry locked";
    case RegistryStatus::noSpace:
      return u"there is no space left";
    case RegistryStatus::failed:
      break;
  }
  return CString::fromUtf8("the system reports error " + std::to_string(systemCode));
}

const CString& RegistryPath::ofRoot() noexcept {
  static const CString empty;
  return empty;
}

RegistryValue RegistryValue::ofText(std::u16string_view text) {
  RegistryValue value{RegistryType::string, {}};
  value.bytes.reserve(text.size() * 2);
  for (const char16_t unit : text) {
    value.bytes += static_cast<char>(unit & 0xFF);
    value.bytes += static_cast<char>(unit >> 8);
  }
  return value;
}

RegistryValue RegistryValue::ofNumber(std::uint32_t number) {
  RegistryValue value{RegistryType::dword, {}};
  for (int shift = 0; shift < 32; shift += 8) {
    value.bytes += static_cast<char>(number >> shift & 0xFF);
  }
  return value;
}

RegistryValue RegistryValue::ofBytes(std::string_view bytes) {
  return {RegistryType::binary, std::string(bytes)};
}

bool RegistryValue::asText(CString& text) const {
  if ((type != RegistryType::string && type != RegistryType::expandString) || bytes.size() % 2) {
    return false;
  }
  std::u16string units(bytes.size() / 2, u'\0');
  for (std::size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                     static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
  }
  units.resize(std::min(units.size(), units.find(u'\0')));
  text = CString(std::move(units));
  return true;
}

bool RegistryValue::asNumber(std::uint32_t& number) const noexcept {
  if (type != RegistryType::dword || bytes.size() != 4) return false;
  number = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    number |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << 8 * i;
  }
  return true;
}

RegistryKey::~RegistryKey() = default;
Registry::~Registry() = default;
bool Registry::isChangeWhole() const noexcept { return false; }
CString Registry::fileOf(RegistryRoot) const { return {}; }

Registry& registry() noexcept {
  Registry* const other = installedRegistry.load(std::memory_order_acquire);
  return other ? *other : detail::systemRegistry();
}

Registry* setRegistry(Registry* other) noexcept {
  return installedRegistry.exchange(other, std::memory_order_acq_rel);
}

namespace detail {

RegistryResult splitKeyPath(std::u16string_view path, std::vector<std::u16string_view>& names) {
  names.clear();
  while (!path.empty() && path.front() == u'\\') path.remove_prefix(1);
  while (!path.empty() && path.back() == u'\\') path.remove_suffix(1);
  while (!path.empty()) {
    const std::size_t end = std::min(path.find(u'\\'), path.size());
    const std::u16string_view name = path.substr(0, end);
    // The system cannot open a key whose name holds a character 0.
    if (name.empty() || name.size() > Registry::maxKeyName || name.find(u'\0') != name.npos ||
        names.size() == Registry::maxLevels) {
      return {RegistryStatus::badName};
    }
    names.push_back(name);
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return {};
}

}  // namespace detail

}  // namespace kpx

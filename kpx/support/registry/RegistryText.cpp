#include "kpx/support/registry/RegistryText.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "kpx/support/registry/internal/RegistryTextReader.h"
#include "kpx/text/ByteOrderMark.h"
#include "kpx/text/CaseFold.h"
#include "kpx/text/CodePage.h"

namespace kpx {
namespace {

using Kind = RegistryChange::Kind;

struct RootName {
  std::u16string_view name;
  RegistryRoot root;
};
constexpr RootName rootNames[] = {
    {u"HKEY_CURRENT_USER", RegistryRoot::currentUser},
    {u"HKEY_LOCAL_MACHINE", RegistryRoot::localMachine},
    {u"HKCU", RegistryRoot::currentUser},
    {u"HKLM", RegistryRoot::localMachine},
};

/// The editor begins a new line once one has this many characters.
constexpr std::size_t fullLine = 77;

void appendHex(std::u16string& text, std::uint32_t number, int digits) {
  while (digits-- > 0) text += u"0123456789abcdef"[number >> digits * 4 & 15];
}

void appendQuoted(std::u16string& text, std::u16string_view content) {
  text += u'"';
  for (const char16_t unit : content) {
    if (unit == u'\\' || unit == u'"') text += u'\\';
    text += unit;
  }
  text += u'"';
}

bool isText(RegistryType type) noexcept {
  return type == RegistryType::string || type == RegistryType::expandString;
}

/// The text of a value that the form in quotes gives back exactly.
bool isQuotable(const RegistryValue& value, CString& text) {
  return value.type == RegistryType::string && value.asText(text) &&
         static_cast<std::size_t>(text.GetLength()) * 2 == value.bytes.size() &&
         text.FindOneOf(u"\r\n") == -1;
}

void appendBytes(std::u16string& text, std::size_t lineStart, const RegistryValue& value) {
  text += u"hex";
  if (value.type != RegistryType::binary) {
    text += u'(';
    const auto type = static_cast<std::uint32_t>(value.type);
    int digits = 1;
    while (digits < 8 && type >> digits * 4 != 0) ++digits;
    appendHex(text, type, digits);
    text += u')';
  }
  text += u':';
  std::string bytes = value.bytes;
  // Half a unit at the end keeps the reader from taking a 0 off again.
  if (isText(value.type) && bytes.size() % 2 == 0) bytes.append(2, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    appendHex(text, static_cast<unsigned char>(bytes[i]), 2);
    if (i + 1 == bytes.size()) break;
    text += u',';
    if (text.size() - lineStart >= fullLine) {
      text += u"\\\r\n";
      lineStart = text.size();
      text += u"  ";
    }
  }
}

void appendValue(std::u16string& text, const RegistryChange& change) {
  const std::size_t lineStart = text.size();
  if (change.name.IsEmpty()) {
    text += u'@';
  } else {
    appendQuoted(text, change.name);
  }
  text += u'=';
  CString quotable;
  std::uint32_t number = 0;
  if (change.kind == Kind::removeValue) {
    text += u'-';
  } else if (change.value.asNumber(number)) {
    text += u"dword:";
    appendHex(text, number, 8);
  } else if (isQuotable(change.value, quotable)) {
    appendQuoted(text, quotable);
  } else {
    appendBytes(text, lineStart, change.value);
  }
  text += u"\r\n";
}

}  // namespace

bool parseRegistryKey(const CString& text, RegistryRoot& root, CString& path) {
  const std::u16string_view whole = text;
  const std::size_t end = std::min(whole.find(u'\\'), whole.size());
  for (const RootName& name : rootNames) {
    if (detail::compareTextNoCase(whole.substr(0, end), name.name) != 0) continue;
    root = name.root;
    path = whole.substr(std::min(end + 1, whole.size()));
    return true;
  }
  return false;
}

CString registryKeyText(RegistryRoot root, const CString& path) {
  CString text = rootNames[root == RegistryRoot::currentUser ? 0 : 1].name;
  if (!path.IsEmpty()) text += u'\\';
  return text += path;
}

bool checkRegistryText(std::string_view bytes, RegistryTextProblem& problem) {
  return detail::RegistryTextReader({}, problem).read(bytes);
}

bool readRegistryText(std::string_view bytes, std::vector<RegistryStep>& steps,
                      RegistryTextProblem& problem) {
  steps.clear();
  std::size_t count = 0;
  const auto counted = [&](RegistryStep&&) { ++count; };
  if (!detail::RegistryTextReader(counted, problem).read(bytes)) return false;
  steps.reserve(count);
  const auto kept = [&](RegistryStep&& step) { steps.push_back(std::move(step)); };
  return detail::RegistryTextReader(kept, problem).read(bytes);
}

bool writeRegistryText(std::span<const RegistryStep> steps, CString& text) {
  std::u16string written(detail::registryTextHeader);
  written += u"\r\n";
  CString heading;
  for (const RegistryStep& step : steps) {
    CString key = registryKeyText(step.root, step.change.key);
    if (key.FindOneOf(u"\r\n") != -1) return false;
    const bool removes = step.change.kind == Kind::removeTree;
    if (removes || key != heading) {
      written += removes ? u"\r\n[-" : u"\r\n[";
      written += key.view();
      written += u"]\r\n";
    }
    if (step.change.kind == Kind::write || step.change.kind == Kind::removeValue) {
      appendValue(written, step.change);
    }
    heading = removes ? CString() : std::move(key);
  }
  text = CString(std::move(written));
  return true;
}

std::string registryTextBytes(const CString& text) {
  std::string bytes(markOf(CodePage::utf16LittleEndian));
  return bytes += RegistryValue::ofText(text).bytes;
}

bool importRegistryText(std::string_view bytes, RegistryTextProblem& problem) {
  std::size_t machineSteps = 0;
  std::size_t userSteps = 0;
  const auto counted = [&](RegistryStep&& step) {
    ++(step.root == RegistryRoot::localMachine ? machineSteps : userSteps);
  };
  if (!detail::RegistryTextReader(counted, problem).read(bytes)) return false;
  problem.changed = false;
  // The machine's first: if one of the two is refused, it is hardly ever the user's own. Each root
  // is read by itself, so that no step is in memory twice.
  for (const RegistryRoot root : {RegistryRoot::localMachine, RegistryRoot::currentUser}) {
    const std::size_t count = root == RegistryRoot::localMachine ? machineSteps : userSteps;
    if (count == 0) continue;
    std::vector<RegistryChange> changes;
    std::vector<int> lines;
    changes.reserve(count);
    lines.reserve(count);
    const auto kept = [&](RegistryStep&& step) {
      if (step.root != root) return;
      changes.push_back(std::move(step.change));
      lines.push_back(step.line);
    };
    if (!detail::RegistryTextReader(kept, problem).read(bytes)) return false;
    std::size_t reached = 0;
    const RegistryResult result = registry().change(root, changes, reached);
    if (result || (reached > 0 && !registry().isChangeWhole())) problem.changed = true;
    if (result) continue;
    problem.line = reached < lines.size() ? lines[reached] : 0;
    problem.message = result.message();
    return false;
  }
  return true;
}

}  // namespace kpx

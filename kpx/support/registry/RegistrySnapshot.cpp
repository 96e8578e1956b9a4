#include "kpx/support/registry/RegistrySnapshot.h"

#include <memory>
#include <utility>

#include "kpx/text/CaseFold.h"

namespace kpx {
namespace {

using Kind = RegistryChange::Kind;

std::u16string folded(std::u16string_view text) {
  std::u16string result(text);
  for (char16_t& unit : result) unit = foldCase(unit);
  return result;
}

/// Orders a key directly in front of those below it: between names stands what no name holds.
std::u16string placeOf(RegistryRoot root, std::u16string_view path) {
  std::u16string place(1, root == RegistryRoot::currentUser ? u'1' : u'2');
  std::vector<std::u16string_view> names;
  detail::splitKeyPath(path, names);
  for (const std::u16string_view name : names) {
    place += u'\0';
    place += folded(name);
  }
  return place;
}

bool isBelow(std::u16string_view place, std::u16string_view above) {
  return place.size() > above.size() && place.starts_with(above) && place[above.size()] == u'\0';
}

RegistryStep stepFor(Kind kind, RegistryRoot root, const CString& path) {
  RegistryStep step;
  step.root = root;
  step.change.kind = kind;
  step.change.key = path;
  return step;
}

RegistryStep writeOf(RegistryRoot root, const CString& path, const CString& name,
                     const RegistryValue& value) {
  RegistryStep step = stepFor(Kind::write, root, path);
  step.change.name = name;
  step.change.value = value;
  return step;
}

}  // namespace

RegistrySnapshot::Key& RegistrySnapshot::keyAt(RegistryRoot root, const CString& path) {
  Key& key = keys_[placeOf(root, path)];
  if (key.path.IsEmpty()) {
    key.root = root;
    key.path = path;
  }
  return key;
}

RegistryResult RegistrySnapshot::add(RegistryRoot root, const CString& path) {
  std::vector<CString> open{path};
  while (!open.empty()) {
    const CString here = std::move(open.back());
    open.pop_back();
    std::unique_ptr<RegistryKey> key;
    std::vector<CString> names;
    RegistryResult result = registry().open(root, here, RegistryAccess::read, key);
    if (result) result = key->valueNames(names);
    if (!result) return result;
    Key& stored = keyAt(root, here);
    for (CString& name : names) {
      RegistryValue value;
      result = key->read(name, value);
      if (result.status == RegistryStatus::notFound) continue;  // removed meanwhile
      if (!result) return result;
      std::u16string place = folded(name);
      stored.values.insert_or_assign(std::move(place), Value{std::move(name), std::move(value)});
    }
    result = key->keyNames(names);
    if (!result) return result;
    for (const CString& name : names) {
      open.push_back(here.IsEmpty() ? name : here + u"\\" + name);
    }
  }
  return {};
}

void RegistrySnapshot::apply(const RegistryStep& step) {
  const RegistryChange& change = step.change;
  if (change.kind == Kind::removeTree) {
    const std::u16string place = placeOf(step.root, change.key);
    keys_.erase(place);
    auto end = keys_.lower_bound(place);
    const auto begin = end;
    while (end != keys_.end() && isBelow(end->first, place)) ++end;
    keys_.erase(begin, end);
    return;
  }
  if (change.kind == Kind::removeValue) {
    const auto key = keys_.find(placeOf(step.root, change.key));
    if (key != keys_.end()) key->second.values.erase(folded(change.name));
    return;
  }
  Key& key = keyAt(step.root, change.key);
  if (change.kind == Kind::write) {
    key.values.insert_or_assign(folded(change.name), Value{change.name, change.value});
  }
}

std::vector<RegistryStep> RegistrySnapshot::steps() const {
  return RegistrySnapshot().stepsTo(*this);
}

/// Whether the key is there, itself or as one above another.
bool RegistrySnapshot::holds(const std::u16string& place) const {
  const auto found = keys_.lower_bound(place);
  return found != keys_.end() && (found->first == place || isBelow(found->first, place));
}

std::vector<RegistryStep> RegistrySnapshot::stepsTo(const RegistrySnapshot& other) const {
  std::vector<RegistryStep> steps;
  const std::u16string* removed = nullptr;
  for (const auto& [place, key] : keys_) {
    if (other.holds(place) || (removed && isBelow(place, *removed))) continue;
    steps.push_back(stepFor(Kind::removeTree, key.root, key.path));
    removed = &place;
  }
  for (const auto& [place, key] : other.keys_) {
    const auto own = keys_.find(place);
    if (!holds(place)) steps.push_back(stepFor(Kind::createKey, key.root, key.path));
    if (own != keys_.end()) {
      for (const auto& [valuePlace, value] : own->second.values) {
        if (key.values.contains(valuePlace)) continue;
        RegistryStep step = stepFor(Kind::removeValue, key.root, key.path);
        step.change.name = value.name;
        steps.push_back(std::move(step));
      }
    }
    for (const auto& [valuePlace, value] : key.values) {
      if (own != keys_.end()) {
        const auto before = own->second.values.find(valuePlace);
        if (before != own->second.values.end() && before->second.content == value.content) continue;
      }
      steps.push_back(writeOf(key.root, key.path, value.name, value.content));
    }
  }
  return steps;
}

}  // namespace kpx

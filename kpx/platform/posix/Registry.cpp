#include "kpx/platform/Registry.h"

#include <utility>

#include "kpx/platform/posix/RegistryStore.h"

namespace kpx {
namespace {

using detail::RegistryStore;

class StoredKey final : public RegistryKey {
 public:
  StoredKey(std::unique_ptr<RegistryStore> store, RegistryStore::KeyId key, RegistryAccess access)
      : store_(std::move(store)), key_(key), access_(access) {}

  RegistryResult read(const CString& name, RegistryValue& value) override {
    return store_->read(key_, name, value);
  }
  RegistryResult write(const CString& name, const RegistryValue& value) override {
    return change([&] { return store_->write(key_, name, value); });
  }
  RegistryResult removeValue(const CString& name) override {
    return change([&] { return store_->removeValue(key_, name); });
  }
  RegistryResult valueNames(std::vector<CString>& names) override {
    return store_->valueNames(key_, names);
  }
  RegistryResult keyNames(std::vector<CString>& names) override {
    return store_->keyNames(key_, names);
  }

 private:
  RegistryResult change(const RegistryStore::Change& body) {
    if (access_ == RegistryAccess::read) return {RegistryStatus::noPermission};
    return store_->inTransaction(body);
  }

  std::unique_ptr<RegistryStore> store_;
  RegistryStore::KeyId key_;
  RegistryAccess access_;
};

RegistryResult carryOut(RegistryStore& store, const RegistryChange& step) {
  using Kind = RegistryChange::Kind;
  RegistryStore::KeyId key = RegistryStore::rootKey;
  RegistryResult result;
  if (step.kind == Kind::createKey || step.kind == Kind::write) {
    result = store.createKey(step.key, key);
    return result && step.kind == Kind::write ? store.write(key, step.name, step.value) : result;
  }
  result = store.findKey(step.key, key);
  if (result && step.kind == Kind::removeValue) {
    result = store.removeValue(key, step.name);
  } else if (result) {
    if (key == RegistryStore::rootKey) return {RegistryStatus::badName};
    result = store.removeTree(key);
  }
  return result.status == RegistryStatus::notFound ? RegistryResult{} : result;
}

class StoredRegistry final : public Registry {
 public:
  RegistryResult open(RegistryRoot root, const CString& path, RegistryAccess access,
                      std::unique_ptr<RegistryKey>& key) override {
    auto store = std::make_unique<RegistryStore>();
    RegistryStore::KeyId found = RegistryStore::rootKey;
    std::vector<std::u16string_view> names;
    RegistryResult result = detail::splitKeyPath(path, names);
    if (!result) return result;
    // The root exists even where nothing has been stored yet.
    result = access == RegistryAccess::read ? store->open(root)
                                            : store->openForChanges(root, names.empty());
    if (result) result = store->findKey(path, found);
    if (result) key = std::make_unique<StoredKey>(std::move(store), found, access);
    return result;
  }

  RegistryResult create(RegistryRoot root, const CString& path, RegistryAccess access,
                        std::unique_ptr<RegistryKey>& key) override {
    // A key that is there is opened without a change, and without the right to one.
    const RegistryResult opened = open(root, path, access, key);
    if (opened.status != RegistryStatus::notFound) return opened;
    auto store = std::make_unique<RegistryStore>();
    RegistryStore::KeyId created = RegistryStore::rootKey;
    RegistryResult result = store->openForChanges(root, true);
    if (!result) return result;
    result = store->inTransaction([&] { return store->createKey(path, created); });
    if (result) key = std::make_unique<StoredKey>(std::move(store), created, access);
    return result;
  }

  RegistryResult remove(RegistryRoot root, const CString& path) override {
    return removeWith(root, path, &RegistryStore::removeKey);
  }

  RegistryResult removeTree(RegistryRoot root, const CString& path) override {
    return removeWith(root, path, &RegistryStore::removeTree);
  }

  RegistryResult change(RegistryRoot root, std::span<const RegistryChange> steps,
                        std::size_t& reached) override {
    reached = 0;
    if (steps.empty()) return {};
    RegistryStore store;
    RegistryResult result = store.openForChanges(root, true);
    if (!result) return result;
    return store.inTransaction([&] {
      RegistryResult done;
      for (const RegistryChange& step : steps) {
        done = carryOut(store, step);
        if (!done) break;
        ++reached;
      }
      return done;
    });
  }

  bool isChangeWhole() const noexcept override { return true; }
  CString fileOf(RegistryRoot root) const override { return detail::registryStorePath(root); }

 private:
  static RegistryResult removeWith(RegistryRoot root, const CString& path,
                                   RegistryResult (RegistryStore::*removal)(RegistryStore::KeyId)) {
    RegistryStore store;
    RegistryResult result = store.openForChanges(root, false);
    if (!result) return result;
    return store.inTransaction([&] {
      RegistryStore::KeyId key = RegistryStore::rootKey;
      const RegistryResult found = store.findKey(path, key);
      if (!found) return found;
      if (key == RegistryStore::rootKey) return RegistryResult{RegistryStatus::badName};
      return (store.*removal)(key);
    });
  }
};

}  // namespace

namespace detail {

Registry& systemRegistry() noexcept {
  static StoredRegistry stored;
  return stored;
}

}  // namespace detail

}  // namespace kpx

#include "kpx/support/objects/CObservable.h"

#include <algorithm>
#include <cstddef>

#include "kpx/report/Error.h"
#include "kpx/support/Operations.h"

namespace kpx {

IObserver::~IObserver() = default;

CObservable::CObservable() = default;
CObservable::~CObservable() = default;

/// Keeps the entries in place during a notification, and clears up behind the last one.
class CObservable::Walk {
 public:
  explicit Walk(CObservable& subject) noexcept : subject_(subject) { ++subject_.walks_; }
  ~Walk() {
    if (--subject_.walks_ == 0) {
      std::erase_if(subject_.observers_, [](const Entry& entry) { return entry.removed; });
    }
  }
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;

 private:
  CObservable& subject_;
};

void CObservable::addObserver(IObserver* observer) {
  Guarded("CObservable::addObserver"_support, [&] {
    observers_.push_back({observer, false});
    ++count_;
  });
}

void CObservable::deleteObserver(IObserver* observer) noexcept {
  const auto found = std::find_if(observers_.begin(), observers_.end(), [&](const Entry& entry) {
    return !entry.removed && entry.observer == observer;
  });
  if (found == observers_.end()) return;
  --count_;
  if (walks_ > 0) {
    found->removed = true;
  } else {
    observers_.erase(found);
  }
}

void CObservable::deleteObservers() noexcept {
  count_ = 0;
  if (walks_ > 0) {
    for (Entry& entry : observers_) entry.removed = true;
  } else {
    std::vector<Entry>().swap(observers_);
  }
}

void CObservable::notifyObservers() {
  if (changed_ == 0) return;
  Reported("CObservable::notifyObservers"_support, [&] {
    const Walk walk(*this);
    const std::size_t registered = observers_.size();
    for (std::size_t i = 0; i < registered; ++i) {
      const Entry entry = observers_[i];
      if (!entry.removed && entry.observer != nullptr) entry.observer->update(this);
    }
  });
  clearChanged();
}

void CObservable::notifyObservers(CObject* /*argument*/) noexcept {}

}  // namespace kpx

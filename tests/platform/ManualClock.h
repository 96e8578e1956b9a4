#pragma once

#include "kpx/platform/Clock.h"

namespace kpx {

/// A clock whose counter counts milliseconds and moves only when the test says so, or by a step at
/// each look. It is the library's clock while it lives.
class ManualClock final : public Clock {
 public:
  explicit ManualClock(std::uint64_t step = 0) : step_(step), before_(setClock(this)) {}
  ~ManualClock() override { setClock(before_); }
  DateTime localNow() override { return systemClock().localNow(); }
  ZoneResult localToUtc(const DateTime& local, DateTime& utc) override {
    return systemClock().localToUtc(local, utc);
  }
  ZoneResult utcToLocal(const DateTime& utc, DateTime& local) override {
    return systemClock().utcToLocal(utc, local);
  }
  std::uint64_t counter() override { return milliseconds += step_; }
  std::uint64_t counterFrequency() override { return 1000; }

  std::uint64_t milliseconds = 1;

 private:
  std::uint64_t step_;
  Clock* before_;
};

}  // namespace kpx

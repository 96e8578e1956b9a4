#pragma once

#include <memory>
#include <string_view>

namespace kpx {

/// Sets or removes a variable in the environment of the test program.
void setVariable(std::string_view name, std::u16string_view value);
void removeVariable(std::string_view name);

/// The time zone of the process for one scope, by its name in the tz database or as a rule of
/// POSIX; nullptr for none. Where a program cannot choose it, `isSet` tells whether the test runs
/// in that zone anyway.
class ZoneScope {
 public:
  explicit ZoneScope(const char* zone);
  ~ZoneScope();
  ZoneScope(const ZoneScope&) = delete;
  ZoneScope& operator=(const ZoneScope&) = delete;

  bool isSet() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// An empty registry in place of both roots, for one test and, where the system can do that, the
/// processes that it starts.
class TemporaryRegistry {
 public:
  TemporaryRegistry();
  ~TemporaryRegistry();
  TemporaryRegistry(const TemporaryRegistry&) = delete;
  TemporaryRegistry& operator=(const TemporaryRegistry&) = delete;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace kpx

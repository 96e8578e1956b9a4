#pragma once

#include "kpx/report/Export.h"

namespace kpx {

/// Receives the entering (true) and leaving (false) of a traced function. Must not throw.
using TraceSink = void (*)(const char* name, bool entering) noexcept;

/// Registers the function that writes trace lines; nullptr switches tracing off, the default.
/// Returns the sink registered before.
KPX_API TraceSink setTraceSink(TraceSink sink) noexcept;

namespace detail {
KPX_API TraceSink traceSink() noexcept;
}

/// Traces the scope it lives in. Costs one load while tracing is off. `name` must outlive it.
class TraceScope {
 public:
  explicit TraceScope(const char* name) noexcept : name_(name), sink_(detail::traceSink()) {
    if (sink_) sink_(name_, true);
  }
  ~TraceScope() {
    if (sink_) sink_(name_, false);
  }
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;

 private:
  const char* name_;
  TraceSink sink_;
};

}  // namespace kpx

#pragma once

#include <cstddef>
#include <string>

namespace kpx {

/// The shared library, beside the layers that are linked into the test program, loaded and unloaded
/// as modules do it.
class LoadedLibrary {
 public:
  LoadedLibrary();
  ~LoadedLibrary() { close(); }
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  bool isLoaded() const { return handle_ != nullptr; }
  void close();
  /// Whether the process still holds it.
  static bool isInMemory();

  template <class Function>
  Function* function(const char* name) const {
    return reinterpret_cast<Function*>(address(name));
  }

 private:
  void* address(const char* name) const;

  void* handle_;
};

/// What the process holds at the moment.
struct HeldResources {
  std::ptrdiff_t files = 0;  // descriptors or handles
  std::ptrdiff_t threads = 0;
  std::size_t bytes = 0;  // of the heap
};
HeldResources heldResources();

/// How much of the heap one loading and unloading may cost.
extern const std::size_t bytesLostPerLoad;

}  // namespace kpx

#include "tests/context/LoadedLibrary.h"

#include <dlfcn.h>
#include <malloc.h>

#include <filesystem>
#include <iterator>

namespace kpx {

LoadedLibrary::LoadedLibrary() : handle_(::dlopen(KPX_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}

void LoadedLibrary::close() {
  if (handle_) ::dlclose(handle_);
  handle_ = nullptr;
}

bool LoadedLibrary::isInMemory() {
  void* const handle = ::dlopen(KPX_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  if (handle) ::dlclose(handle);
  return handle != nullptr;
}

void* LoadedLibrary::address(const char* name) const { return ::dlsym(handle_, name); }

HeldResources heldResources() {
  const auto entriesOf = [](const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), {});
  };
  return {entriesOf("/proc/self/fd"), entriesOf("/proc/self/task"), ::mallinfo2().uordblks};
}

const std::size_t bytesLostPerLoad = 31;  // not one block: they have at least 32 bytes

}  // namespace kpx

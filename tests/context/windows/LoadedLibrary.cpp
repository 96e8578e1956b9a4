#include "tests/context/LoadedLibrary.h"

#include <windows.h>
// The header above comes first: this one builds on it.
#include <tlhelp32.h>

#include <filesystem>
#include <string>

namespace kpx {
namespace {

/// Beside the programs of the build, by its whole path.
std::wstring libraryPath() {
  wchar_t program[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, program, MAX_PATH);
  const auto build = std::filesystem::path(program).parent_path().parent_path().parent_path();
  return (build / "kpx" / "KpxBaseObjects.dll").make_preferred().wstring();
}

}  // namespace

LoadedLibrary::LoadedLibrary() : handle_(::LoadLibraryW(libraryPath().c_str())) {}

void LoadedLibrary::close() {
  if (handle_) ::FreeLibrary(static_cast<HMODULE>(handle_));
  handle_ = nullptr;
}

bool LoadedLibrary::isInMemory() { return ::GetModuleHandleW(L"KpxBaseObjects.dll") != nullptr; }

void* LoadedLibrary::address(const char* name) const {
  return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle_), name));
}

HeldResources heldResources() {
  HeldResources held;
  DWORD handles = 0;
  ::GetProcessHandleCount(::GetCurrentProcess(), &handles);
  held.files = static_cast<std::ptrdiff_t>(handles);

  const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = ::Thread32First(snapshot, &entry); more;
       more = ::Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID == ::GetCurrentProcessId()) ++held.threads;
  }
  ::CloseHandle(snapshot);

  HANDLE heaps[64] = {};
  const DWORD count = ::GetProcessHeaps(64, heaps);
  for (DWORD i = 0; i < count && i < 64; ++i) {
    PROCESS_HEAP_ENTRY block{};
    ::HeapLock(heaps[i]);
    while (::HeapWalk(heaps[i], &block)) {
      if ((block.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) held.bytes += block.cbData;
    }
    ::HeapUnlock(heaps[i]);
  }
  return held;
}

// The runtime of g++ leaves what it took for variables of threads, some 1.5 KiB.
const std::size_t bytesLostPerLoad = 2048;

}  // namespace kpx

#include <version>

// The runtime of g++ is linked into the DLL. What it keeps for exceptions when all other memory is
// gone, some 72 KiB, it gives back only when it is asked: without this, every load and unload of
// the library would lose that much. Other compilers come with a runtime of their own.
#ifdef __GLIBCXX__

namespace __gnu_cxx {
void __freeres() noexcept;
}

namespace {

struct RuntimeMemory {
  ~RuntimeMemory() { __gnu_cxx::__freeres(); }
};
const RuntimeMemory atUnload;

}  // namespace

#endif

#include "kpx/report/Exceptions.h"

namespace kpx {

const char* InvalidArgException::what() const noexcept { return "invalid argument"; }
const char* ArchiveEndException::what() const noexcept { return "unexpected end of archive"; }
const char* GuardedException::what() const noexcept { return "a failure that was reported"; }
const char* FileException::what() const noexcept { return "file error"; }

}  // namespace kpx

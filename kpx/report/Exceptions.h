#pragma once

#include <exception>

#include "kpx/report/Export.h"

namespace kpx {

/// An index or argument that an operation cannot take; raised by arrays and key lists.
class KPX_API InvalidArgException : public std::exception {
 public:
  const char* what() const noexcept override;
};

/// A file in archive framing that ends before its content does.
class KPX_API ArchiveEndException : public std::exception {
 public:
  const char* what() const noexcept override;
};

/// A failure that a guard has reported already, where it has to end the operation around it, too.
class KPX_API GuardedException : public std::exception {
 public:
  const char* what() const noexcept override;
};

/// A file that cannot be opened, read or written.
class KPX_API FileException : public std::exception {
 public:
  const char* what() const noexcept override;
};

}  // namespace kpx

#pragma once

#include "kpx/report/Export.h"

namespace kpx {

class CArchive;

/// Base of objects that store themselves in an archive, for example in a value of the registry.
class KPX_API CObject {
 public:
  virtual ~CObject();

  /// Writes the object's content to the archive, or reads it back: `archive.IsStoring()` tells
  /// which. A class calls its base's first, and reads the same fields in the same order as it
  /// writes them. The base has no content. What the archive raises passes to the caller.
  virtual void Serialize(CArchive& archive);

 protected:
  CObject() = default;
  CObject(const CObject&) = default;
  CObject& operator=(const CObject&) = default;
};

}  // namespace kpx

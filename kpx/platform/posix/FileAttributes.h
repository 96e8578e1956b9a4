#pragma once

#include <sys/stat.h>

#include "kpx/platform/FileSystem.h"

namespace kpx::detail {

/// Gives the open file `to` owner, group, permissions, access list and the user's attributes of the
/// open file `from`. Owner and group are kept as far as the user may, and nobody gets a right by it
/// that he did not have.
FileResult copyAttributes(int from, const struct stat& model, int to);

}  // namespace kpx::detail

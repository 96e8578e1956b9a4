#pragma once

namespace kpx::detail {

/// What a report becomes, see ErrorReport.h; registered when the library is loaded.
void showAndLog(int number) noexcept;

}  // namespace kpx::detail

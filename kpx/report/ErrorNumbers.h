#pragma once

/// Error numbers of guarded operations that have none of their own from older modules. They are
/// logged and known to users' support, so a number is never given to another operation.
///
/// 900001 to 909999 belong to settings and are fixed in the settings schema; the numbers here
/// start at 910001. Each operation takes the next free one.
namespace kpx::ErrorNumber {

inline constexpr int doubleAsText = 910001;
inline constexpr int loadDocument = 910002;
inline constexpr int saveDocument = 910003;

}  // namespace kpx::ErrorNumber

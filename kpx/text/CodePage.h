#pragma once

namespace kpx {

/// Numbers of the encodings that the library reads and writes itself; any other goes through the
/// system's converter.
namespace CodePage {
inline constexpr int utf8 = 65001;
inline constexpr int utf16LittleEndian = 1200;
inline constexpr int utf16BigEndian = 1201;
inline constexpr int utf32LittleEndian = 12000;  // through the system's converter
inline constexpr int utf32BigEndian = 12001;     // likewise
inline constexpr int ascii = 20127;
inline constexpr int latin1 = 28591;  // ISO-8859-1
inline constexpr int windows1252 = 1252;
}  // namespace CodePage

}  // namespace kpx

#include "kpx/xml/internal/Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace kpx::detail {

namespace {

constexpr std::u16string_view alphabet =
    u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::u16string_view lineBreak = u"\r\n";
constexpr std::size_t lineUnits = 64;
constexpr std::size_t lineBytes = lineUnits / 4 * 3;

struct Pair {
  char16_t first;
  char16_t second;
};

// The two characters of every 12-bit value.
constexpr auto pairs = [] {
  std::array<Pair, 4096> table{};
  for (std::size_t value = 0; value < table.size(); ++value) {
    table[value] = {alphabet[value >> 6], alphabet[value & 63]};
  }
  return table;
}();

// The value of every ASCII character, or what else it is.
constexpr std::uint32_t otherCharacter = 1u << 24;
constexpr auto values = [] {
  std::array<std::uint32_t, 128> table{};
  table.fill(otherCharacter);
  for (std::uint32_t value = 0; value < alphabet.size(); ++value) table[alphabet[value]] = value;
  return table;
}();

// The same at the place that the first, second and third character of a group has in its bits.
constexpr auto placed(unsigned shift) {
  auto table = values;
  for (std::uint32_t& value : table) {
    if (value != otherCharacter) value <<= shift;
  }
  return table;
}
constexpr auto firstValues = placed(18);
constexpr auto secondValues = placed(12);
constexpr auto thirdValues = placed(6);

// Eight bytes, the first one highest.
std::uint64_t loadBytes(const unsigned char* data) noexcept {
  const auto byte = [data](int i) { return static_cast<std::uint64_t>(data[i]); };
  return byte(0) << 56 | byte(1) << 48 | byte(2) << 40 | byte(3) << 32 | byte(4) << 24 |
         byte(5) << 16 | byte(6) << 8 | byte(7);
}

void encodeGroups(char16_t* out, const unsigned char* data, std::size_t groups) noexcept {
  // Two groups from eight bytes, of which the last two are not used yet.
  for (; groups > 2; groups -= 2, data += 6, out += 8) {
    const std::uint64_t bits = loadBytes(data);
    std::memcpy(out, &pairs[bits >> 52], sizeof(Pair));
    std::memcpy(out + 2, &pairs[bits >> 40 & 0xFFF], sizeof(Pair));
    std::memcpy(out + 4, &pairs[bits >> 28 & 0xFFF], sizeof(Pair));
    std::memcpy(out + 6, &pairs[bits >> 16 & 0xFFF], sizeof(Pair));
  }
  for (; groups != 0; --groups, data += 3, out += 4) {
    const unsigned bits = static_cast<unsigned>(data[0]) << 16 |
                          static_cast<unsigned>(data[1]) << 8 | static_cast<unsigned>(data[2]);
    std::memcpy(out, &pairs[bits >> 12], sizeof(Pair));
    std::memcpy(out + 2, &pairs[bits & 0xFFF], sizeof(Pair));
  }
}

/// Collects the characters of one group by the lenient rules.
class Group {
 public:
  /// Whether the group is complete now.
  bool add(char16_t unit) noexcept {
    unsigned value = 0;
    if (unit == u'=') {
      ++padding_;
    } else if (unit < values.size() && values[unit] != otherCharacter) {
      value = values[unit];
    }
    bits_ = bits_ << 6 | value;
    return ++count_ == 4;
  }
  std::size_t bytes() const noexcept { return padding_ < 3 ? 3 - padding_ : 0; }
  void store(unsigned char* out) const noexcept {
    for (std::size_t i = 0; i < bytes(); ++i) {
      out[i] = static_cast<unsigned char>(bits_ >> (16 - 8 * i));
    }
  }

 private:
  unsigned bits_ = 0;
  unsigned padding_ = 0;
  int count_ = 0;
};

// Decodes whole groups of plain characters; answers how many groups that were.
std::size_t decodePlain(const char16_t* text, std::size_t units, unsigned char* out,
                        std::size_t capacity) noexcept {
  const std::size_t groups = std::min(units / 4, capacity / 3);
  for (std::size_t i = 0; i < groups; ++i, text += 4, out += 3) {
    if (((text[0] | text[1] | text[2] | text[3]) & ~0x7F) != 0) return i;
    const std::uint32_t bits =
        firstValues[text[0]] | secondValues[text[1]] | thirdValues[text[2]] | values[text[3]];
    if ((bits & otherCharacter) != 0) return i;
    out[0] = static_cast<unsigned char>(bits >> 16);
    out[1] = static_cast<unsigned char>(bits >> 8);
    out[2] = static_cast<unsigned char>(bits);
  }
  return groups;
}

}  // namespace

void encodeBase64(std::u16string& out, const unsigned char* data, std::size_t bytes) {
  out.append(lineBreak);
  char16_t line[lineUnits + 2];
  line[lineUnits] = lineBreak[0];
  line[lineUnits + 1] = lineBreak[1];
  for (; bytes >= lineBytes; bytes -= lineBytes, data += lineBytes) {
    encodeGroups(line, data, lineBytes / 3);
    out.append(line, lineUnits + 2);
  }
  const std::size_t groups = bytes / 3;
  encodeGroups(line, data, groups);
  out.append(line, groups * 4);
  data += groups * 3;
  bytes -= groups * 3;
  if (bytes == 0) return;
  const unsigned bits =
      static_cast<unsigned>(data[0]) << 16 | (bytes == 2 ? static_cast<unsigned>(data[1]) << 8 : 0);
  out.push_back(alphabet[bits >> 18]);
  out.push_back(alphabet[bits >> 12 & 63]);
  out.push_back(bytes == 2 ? alphabet[bits >> 6 & 63] : u'=');
  out.push_back(u'=');
  // One break, also where the padded group fills its line.
  out.append(lineBreak);
}

std::size_t decodeBase64(std::u16string_view text, unsigned char* out, std::size_t capacity) {
  std::size_t stored = 0;
  std::size_t position = 0;
  while (position < text.size()) {
    const std::size_t plain = decodePlain(text.data() + position, text.size() - position,
                                          out + stored, capacity - stored);
    position += plain * 4;
    stored += plain * 3;

    Group group;
    bool complete = false;
    while (!complete && position < text.size()) {
      const char16_t unit = text[position++];
      if (unit != u'\r' && unit != u'\n') complete = group.add(unit);
    }
    if (!complete) break;
    if (group.bytes() > capacity - stored) return 0;
    group.store(out + stored);
    stored += group.bytes();
  }
  return stored;
}

}  // namespace kpx::detail

#include <algorithm>
#include <climits>

#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/Base64.h"
#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/Operations.h"

namespace kpx {

namespace {

constexpr int surrogateOffset = 0x10000;

constexpr bool isSurrogate(char16_t unit) noexcept { return (unit & 0xF800) == 0xD800; }

int utf8Length(int codePoint) {
  int length = 0;
  CMarkup::EncodeCharUTF8(codePoint, nullptr, length);
  return length;
}

}  // namespace

int CMarkup::DecodeCharUTF8(const char*& position, const char* end) {
  const auto lead = static_cast<unsigned char>(*position++);
  if (lead < 0x80) return lead;
  // Only these bits of the lead are tested, so a stray continuation byte begins two bytes: texts
  // that older modules wrote were read like this.
  int more = 0;
  int codePoint = 0;
  if ((lead & 0x20) == 0) {
    more = 1;
    codePoint = lead & 0x1F;
  } else if ((lead & 0x10) == 0) {
    more = 2;
    codePoint = lead & 0x0F;
  } else if ((lead & 0x08) == 0) {
    more = 3;
    codePoint = lead & 0x07;
  } else {
    return -1;
  }
  for (; more != 0; --more) {
    if (position == end || (static_cast<unsigned char>(*position) & 0x80) == 0) return -1;
    codePoint = codePoint << 6 | (static_cast<unsigned char>(*position++) & 0x3F);
  }
  return codePoint;
}

void CMarkup::EncodeCharUTF8(int codePoint, char* out, int& count) {
  const auto put = [&](int byte) {
    if (out != nullptr) out[count] = static_cast<char>(byte);
    ++count;
  };
  if (codePoint < 0x80) {
    put(codePoint);
    return;
  }
  if (codePoint < 0x800) {
    put(0xC0 | codePoint >> 6);
  } else {
    if (codePoint < 0x10000) {
      put(0xE0 | (codePoint >> 12 & 0x0F));
    } else {
      put(0xF0 | (codePoint >> 18 & 0x07));
      put(0x80 | (codePoint >> 12 & 0x3F));
    }
    put(0x80 | (codePoint >> 6 & 0x3F));
  }
  put(0x80 | (codePoint & 0x3F));
}

int CMarkup::DecodeCharUTF16(const char16_t*& position, const char16_t* end) {
  const char16_t first = *position++;
  if (!isSurrogate(first)) return first;
  if (position == end || *position == 0) return -1;
  // Whatever stands behind either half is taken for the other half.
  const char16_t second = *position++;
  return ((first & 0x3FF) << 10 | (second & 0x3FF)) + surrogateOffset;
}

void CMarkup::EncodeCharUTF16(int codePoint, char16_t* out, int& count) {
  const auto put = [&](int unit) {
    if (out != nullptr) out[count] = static_cast<char16_t>(unit);
    ++count;
  };
  if (codePoint < surrogateOffset) {
    put(codePoint);
  } else {
    put(0xD800 | ((codePoint - surrogateOffset) >> 10 & 0x3FF));
    put(0xDC00 | ((codePoint - surrogateOffset) & 0x3FF));
  }
}

int CMarkup::UTF8To16(char16_t* out, const char* in, int inBytes) {
  if (in == nullptr) return 0;
  const char* position = in;
  const char* const end = in + std::max(inBytes, 0);
  int units = 0;
  while (position != end) {
    int codePoint = DecodeCharUTF8(position, end);
    if (codePoint == 0) break;
    if (codePoint == -1) codePoint = u'?';
    EncodeCharUTF16(codePoint, out, units);
  }
  // Callers that only count ask for the units, those that convert for how far they came.
  return out == nullptr ? units : static_cast<int>(position - in);
}

int CMarkup::UTF16To8(char* out, const char16_t* in, int outBytes) {
  if (in == nullptr) return 0;
  const char16_t* position = in;
  int bytes = 0;
  while (*position != 0) {
    int codePoint = DecodeCharUTF16(position, nullptr);
    if (codePoint == -1) codePoint = '?';
    if (out != nullptr && outBytes - bytes < 4 && utf8Length(codePoint) > outBytes - bytes) break;
    EncodeCharUTF8(codePoint, out, bytes);
  }
  return bytes;
}

int detail::wideTo8(char* out, const wchar_t* in, int outBytes) {
  return Guarded("CMarkup::UTF16To8"_xml, 0, [&] {
    return CMarkup::UTF16To8(out, in != nullptr ? CString(in).GetString() : nullptr, outBytes);
  });
}

bool CMarkup::DetectUTF8(const char* in, int bytes, int* nonAscii, bool* cutShort) {
  return Guarded("CMarkup::DetectUTF8"_xml, false, [&] {
    if (nonAscii != nullptr) *nonAscii = 0;
    if (cutShort != nullptr) *cutShort = false;
    if (in == nullptr) return true;
    const char* position = in;
    const char* const end = in + std::max(bytes, 0);
    while (position != end && *position != 0) {
      const auto lead = static_cast<unsigned char>(*position);
      if (lead < 0x80) {
        ++position;
        continue;
      }
      if (nonAscii != nullptr) ++*nonAscii;
      if (DecodeCharUTF8(position, end) == -1) {
        if (cutShort != nullptr) *cutShort = position == end && lead < 0xF8;
        return false;
      }
    }
    return true;
  });
}

CString CMarkup::EscapeText(MCD_CSTR text, int flags) {
  return Guarded("CMarkup::EscapeText"_xml, CString(), [&] {
    CString escaped;
    escaped.units().reserve(text.size() + text.size() / 10 + 7);
    detail::escapeInto(escaped.units(), text, flags);
    return escaped;
  });
}

CString CMarkup::UnescapeText(MCD_CSTR text) {
  return Guarded("CMarkup::UnescapeText"_xml, CString(), [&] {
    CString plain;
    plain.units().reserve(text.size());
    detail::unescapeInto(plain.units(), text);
    return plain;
  });
}

CString CMarkup::x_EncodeCDATASection(MCD_CSTR text) {
  return Guarded("CMarkup::x_EncodeCDATASection"_xml, CString(), [&] {
    CString section;
    section.units().reserve(text.size() + 12);
    detail::appendCDataSection(section.units(), text);
    return section;
  });
}

CString CMarkup::EncodeBase64(const unsigned char* data, int bytes) {
  return Guarded("CMarkup::EncodeBase64"_xml, CString(), [&] {
    const std::size_t count = data != nullptr && bytes > 0 ? static_cast<std::size_t>(bytes) : 0;
    const std::size_t characters = count + count / 3;
    CString text;
    text.units().reserve(characters + 7 + (characters + 3) / 64 * 2);
    detail::encodeBase64(text.units(), data, count);
    return text;
  });
}

int CMarkup::DecodeBase64(const CString& text, unsigned char* out, int outBytes) {
  if (out == nullptr || outBytes <= 0) return (text.GetLength() / 4 + 1) * 3;
  return static_cast<int>(detail::decodeBase64(text, out, static_cast<std::size_t>(outBytes)));
}

}  // namespace kpx

#include "kpx/support/objects/MakeUuidString.h"

#include <cstring>

#include "kpx/platform/RandomBytes.h"
#include "kpx/report/Error.h"
#include "kpx/support/Operations.h"

namespace kpx {
namespace {

void appendHex(CString& text, std::uint32_t number, int digits) {
  while (digits-- > 0) text += u"0123456789ABCDEF"[number >> digits * 4 & 15];
}

bool makeGuid(Guid& guid) noexcept {
  unsigned char random[16];
  if (!fillRandom(random, sizeof random)) return false;
  std::memcpy(&guid.Data1, random, 4);
  std::memcpy(&guid.Data2, random + 4, 2);
  std::memcpy(&guid.Data3, random + 6, 2);
  std::memcpy(guid.Data4, random + 8, 8);
  guid.Data3 = static_cast<std::uint16_t>((guid.Data3 & 0x0FFF) | 0x4000);   // version 4
  guid.Data4[0] = static_cast<std::uint8_t>((guid.Data4[0] & 0x3F) | 0x80);  // the usual variant
  return true;
}

}  // namespace

CString MakeUuidString(const Guid* guid) {
  return Guarded("MakeUuidString"_support, CString(), [&] {
    Guid made;
    if (!guid) {
      if (!makeGuid(made)) return CString();
      guid = &made;
    }
    CString text;
    text.Preallocate(36);
    appendHex(text, guid->Data1, 8);
    text += u'-';
    appendHex(text, guid->Data2, 4);
    text += u'-';
    appendHex(text, guid->Data3, 4);
    for (int i = 0; i < 8; ++i) {
      if (i == 0 || i == 2) text += u'-';
      appendHex(text, guid->Data4[i], 2);
    }
    return text;
  });
}

}  // namespace kpx

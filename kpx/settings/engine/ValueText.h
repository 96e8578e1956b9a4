#pragma once

#include <cstdint>

#include "kpx/settings/engine/SettingDef.h"
#include "kpx/text/CString.h"
#include "kpx/text/NumberText.h"

namespace kpx::detail {

// How every accessor makes a value of a stored text, whatever the column's type, and a text of a
// value; so does whoever knows settings by their keys only. `stored` is nullptr where nothing is.

inline std::int32_t integerOf(const CString* stored, const SettingDef& setting) noexcept {
  return stored ? textAsLong(*stored) : setting.missingInteger;
}

inline double realOf(const CString* stored, const SettingDef& setting) noexcept {
  return stored ? textAsDouble(*stored) : setting.missingReal;
}

inline CString textOf(const CString* stored) { return stored ? *stored : CString(); }

// Into a text whose memory is used again; after a failure it is as it was.

inline void integerTextInto(CString& text, std::int32_t value) { longAsTextInto(text, value); }

inline void realTextInto(CString& text, double value, const SettingDef& setting) {
  doubleAsTextInto(text, value, setting.decimals, u'.');
}

}  // namespace kpx::detail

#include "kpx/config/CFGHeader.h"

#include "kpx/config/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {
namespace {

constexpr KeyLiteral classKey(u"Class");
constexpr KeyLiteral descriptionKey(u"Description");

CString textOf(const CFGConfig& config, const KeyLiteral& key) {
  const CFGCol* const column = config.Class.find(key);
  return column ? column->Value.Value : CString();
}

int setText(CFGConfig& config, const KeyLiteral& key, const char16_t* caption,
            const CString& value) {
  if (CFGCol* const column = config.Class.Cols.find(key)) {
    column->Value.Value = value;
  } else {
    config.AddSetting(value, key.text(), u"64", ColumnType::text, caption, 1, 0, 0);
  }
  return 1;
}

}  // namespace

CFGHeader::CFGHeader() {
  Class.Name = u"CFGClassHeader";
  setClass(u"");
  setDescription(u"");
}

void CFGHeader::ResetPos() {
  Guarded("CFGHeader::ResetPos"_config, [&] {
    Class.SetKeyCount(0);
    Class.SetKeyAt(0, classKey.text());
    Class.SetKeyAt(1, descriptionKey.text());
  });
}

CString CFGHeader::getClass() const { return textOf(*this, classKey); }

// The blank at the end of the caption is kept: it stands in stored files.
int CFGHeader::setClass(const CString& value) { return setText(*this, classKey, u"Class ", value); }

CString CFGHeader::getDescription() const { return textOf(*this, descriptionKey); }

int CFGHeader::setDescription(const CString& value) {
  return setText(*this, descriptionKey, u"Beschreibung", value);
}

}  // namespace kpx

#include "kpx/settings/document/ConfigCheck.h"

namespace kpx {
namespace {

CString quoted(const CString& value) { return u"\"" + value + u"\""; }

CString readSentence(const ConfigFinding& finding) {
  CString sentence = u": " + quoted(finding.value);
  if (!finding.detail.IsEmpty()) sentence += u" is read as " + finding.detail;
  return sentence;
}

}  // namespace

CString describe(const ConfigFinding& finding) {
  const CString& detail = finding.detail;
  switch (finding.kind) {
    case FindingKind::unknownClass:
      return u"is a configuration of an unknown class";
    case FindingKind::missingClass:
      return u"has no element CFGClass, so none of its settings are read";
    case FindingKind::renamingClass:
      return u"has a CFGClass named " + quoted(finding.value) +
             u", so the next save renames the element to " + detail +
             u" and its settings are no longer found";
    case FindingKind::unknownKey:
      return u"is not known to this class, and is passed over in reading: " + quoted(finding.value);
    case FindingKind::missingKey:
      return u"is missing, and keeps its default in reading";
    case FindingKind::duplicateKey:
      return u"stands here a second time, and the last counts: " + quoted(finding.value);
    case FindingKind::missingValue:
      return u"has no value, and is emptied in reading";
    case FindingKind::badValue:
      return u"has a value that " + CString::fromUtf8(describe(finding.problem)) +
             readSentence(finding);
    case FindingKind::thousandsMark:
      return u"has a thousands mark in its value" + readSentence(finding);
    case FindingKind::notAsWritten:
      return u"has a value that is not as the suite writes it" + readSentence(finding);
    case FindingKind::lineBreak:
      return u"has a line break in its value, which other programs turn into a blank: " +
             quoted(finding.value);
    case FindingKind::wrongType:
      return u"has the type " + quoted(finding.value) + u", where its class gives it " + detail;
    case FindingKind::badAttribute:
      return u"has no number or time in its attribute " + detail + u": " + quoted(finding.value);
    case FindingKind::repeatedAttribute:
      return u"has a second attribute " + detail + u", and the first counts: " +
             quoted(finding.value);
    case FindingKind::foreignAttribute:
      return u"has the attribute " + detail + u", which the suite does not know and drops: " +
             quoted(finding.value);
    case FindingKind::foreignMarkup:
      return u"has " + detail + u" in it, which the suite does not know and drops";
  }
  return u"is not as it should be";
}

std::u16string_view kindName(FindingKind kind) noexcept {
  switch (kind) {
    case FindingKind::unknownClass:
      return u"unknown-class";
    case FindingKind::missingClass:
      return u"missing-class";
    case FindingKind::renamingClass:
      return u"renaming-class";
    case FindingKind::unknownKey:
      return u"unknown-key";
    case FindingKind::missingKey:
      return u"missing-key";
    case FindingKind::duplicateKey:
      return u"duplicate-key";
    case FindingKind::missingValue:
      return u"missing-value";
    case FindingKind::badValue:
      return u"bad-value";
    case FindingKind::thousandsMark:
      return u"thousands-mark";
    case FindingKind::notAsWritten:
      return u"not-as-written";
    case FindingKind::lineBreak:
      return u"line-break";
    case FindingKind::wrongType:
      return u"wrong-type";
    case FindingKind::badAttribute:
      return u"bad-attribute";
    case FindingKind::repeatedAttribute:
      return u"repeated-attribute";
    case FindingKind::foreignAttribute:
      return u"foreign-attribute";
    case FindingKind::foreignMarkup:
      return u"foreign-markup";
  }
  return u"";
}

}  // namespace kpx

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/Check.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/PieceCheck.h"
#include "kpx/xml/MarkupCheck.h"
#include "tests/common/MarkupOutline.h"
#include "tests/common/ScanAgreement.h"

using namespace kpx;

// An input is a document as UTF-8, a byte 0, and bytes that drive a sequence of operations on it.

namespace {

const char16_t* const names[] = {u"",    u"a",    u"b",  u"A",    u"ä",
                                 u"a b", u"a[1]", u"<b", u"long", u"nameOfMoreThanSixteenUnits"};
const char16_t* const texts[] = {u"",
                                 u"x",
                                 u" \r\n",
                                 u"<&>\"'",
                                 u"]]>",
                                 u"--",
                                 u"a-",
                                 u"&amp;",
                                 u"&#1;",
                                 u"?>",
                                 u"<b/>",
                                 u"<b>x<a c='d'/></b>",
                                 u"<a><b>",
                                 u"<a/><a/>",
                                 u"<!--x--><b/>",
                                 u"]]",
                                 u">",
                                 u"&e;",
                                 u"<a b=1/>",
                                 u"xml version='1.0'",
                                 u"xml version='1.1'",
                                 u"<!DOCTYPE a>",
                                 u"<!DOCTYPE a [<!ENTITY e 'x'>]>"};

// The bytes that are left; zeros behind the end.
class Operations {
 public:
  explicit Operations(std::string_view bytes) : bytes_(bytes) {}
  bool empty() const { return position_ >= bytes_.size(); }
  unsigned next() { return empty() ? 0 : static_cast<unsigned char>(bytes_[position_++]); }
  template <std::size_t count>
  const char16_t* oneOf(const char16_t* const (&choices)[count]) {
    return choices[next() % count];
  }

 private:
  std::string_view bytes_;
  std::size_t position_ = 0;
};

void checkValid(const CMarkup& document) {
  const std::string problem = outlineProblem(document);
  if (problem.empty()) return;
  std::fprintf(stderr, "%s\n%s\n", problem.c_str(), document.GetDoc().utf8().c_str());
  std::abort();
}

// Whether other programs take the document, but for the number of its roots and for odd characters.
bool isRight(const CString& text, int docFlags) {
  bool right = true;
  CMarkup parsed(docFlags);
  parsed.SetParseResult(false);
  parsed.SetProblemSink([&](const MarkupProblem& problem) {
    right = right && (problem.kind == MarkupProblemKind::rootHasSibling ||
                      problem.kind == MarkupProblemKind::noRootElement);
  });
  parsed.SetDoc(text);
  return right && detail::isRightDocument(text);
}

bool navigate(CMarkup& document, Operations& operations) {
  switch (operations.next() % 14) {
    case 0:
      return document.FindElem();
    case 1:
      return document.FindElem(operations.oneOf(names));
    case 2:
      return document.FindPrevElem();
    case 3:
      return document.FindChildElem();
    case 4:
      return document.FindChildElem(operations.oneOf(names));
    case 5:
      return document.FindPrevChildElem();
    case 6:
    case 7:
      return document.IntoElem();
    case 8:
      return document.OutOfElem();
    case 9:
      document.ResetPos();
      return true;
    case 10:
      document.ResetMainPos();
      return true;
    case 11:
      return document.FindNode(static_cast<int>(operations.next())) != 0;
    case 12:
      return document.SavePos(operations.oneOf(names));
    default:
      return document.RestorePos(operations.oneOf(names));
  }
}

void read(CMarkup& document) {
  document.GetTagName();
  document.GetChildTagName();
  document.GetData();
  document.GetChildData();
  document.GetElemContent();
  document.GetSubDoc();
  CString name, value;
  for (int i = 0; i < 4 && document.GetNthAttrib(i, name, value); ++i) {
    FUZZ_CHECK(document.HasAttrib(name));
  }
}

// Carries out one change; what it set must be read back.
bool change(CMarkup& document, Operations& operations) {
  const unsigned operation = operations.next() % 19;
  const char16_t* const name = operations.oneOf(names);
  const char16_t* const text = operations.oneOf(texts);
  const int flags = static_cast<int>(operations.next() % 4) * 8;
  switch (operation) {
    case 0:
      return document.AddElem(name, text, flags);
    case 1:
      return document.InsertElem(name, text, flags);
    case 2:
      return document.AddChildElem(name, text, flags);
    case 3:
      return document.InsertChildElem(name, text, flags);
    case 4:
      return document.AddSubDoc(text);
    case 5:
      return document.InsertSubDoc(text);
    case 6:
      return document.AddChildSubDoc(text);
    case 7:
      return document.InsertChildSubDoc(text);
    case 8:
      return document.RemoveElem();
    case 9:
      return document.RemoveChildElem();
    case 10: {
      const bool element = document.GetNodeType() == MarkupNode::element;
      if (!document.SetData(text, flags)) return false;
      FUZZ_CHECK(!element || (flags & 8) != 0 || document.GetData() == text);
      return true;
    }
    case 11:
      if (!document.SetChildData(text)) return false;
      FUZZ_CHECK(document.GetChildData() == text);
      return true;
    case 12:
      if (!document.SetAttrib(name, text)) return false;
      FUZZ_CHECK(document.GetAttrib(name) == text);
      return true;
    case 13:
      if (!document.SetChildAttrib(name, text)) return false;
      FUZZ_CHECK(document.GetChildAttrib(name) == text);
      return true;
    case 14:
      return document.RemoveAttrib(name);
    case 15:
      if (!document.SetTagName(name)) return false;
      FUZZ_CHECK(document.GetTagName() == name);
      return true;
    case 16:
      return document.AddNode(1 << operations.next() % 8, text);
    case 17:
      return document.InsertNode(1 << operations.next() % 8, text);
    default:
      return document.RemoveNode();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t textEnd = std::min(bytes.find('\0'), bytes.size());
  const CString text = CString::fromUtf8(bytes.substr(0, textEnd));
  Operations operations(bytes.substr(std::min(textEnd + 1, bytes.size())));
  const int docFlags = operations.next() % 2 ? MarkupFlag::ignoreCase : 0;

  FUZZ_CHECK(disagreeingScan(text, docFlags).empty());
  MarkupCheck::check(text, [](const MarkupProblem& problem) { describe(problem); });
  CMarkup document(docFlags);
  document.SetDoc(text);
  document.GetError();
  checkValid(document);

  // Longer sequences find nothing that short ones do not, and the check of each step is linear.
  for (int step = 0; step < 64 && !operations.empty(); ++step) {
    if (operations.next() % 2 == 0) {
      navigate(document, operations);
      read(document);
    } else {
      const CString before = document.GetDoc();
      if (change(document, operations)) {
        FUZZ_CHECK(isRight(document.GetDoc(), docFlags) || !isRight(before, docFlags));
      } else {
        FUZZ_CHECK(document.GetDoc() == before);
      }
    }
    checkValid(document);
  }
  const CMarkup copy(document);
  checkValid(copy);
  FUZZ_CHECK(copy.GetDocElemCount() == document.GetDocElemCount());
  return 0;
}

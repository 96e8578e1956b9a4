#include "kpx/xml/MarkupProblem.h"

namespace kpx {
namespace {

// "%s" stands for the name of the problem.
const char16_t* sentenceOf(MarkupProblemKind kind) {
  switch (kind) {
    case MarkupProblemKind::firstTagSyntax:
      return u"'<' is followed by neither a name nor '/', '!' or '?'";
    case MarkupProblemKind::exclamationTagSyntax:
      return u"'<!' begins neither a comment, a CDATA section nor a document type";
    case MarkupProblemKind::doctypeTagSyntax:
      return u"'<!D' does not begin a document type declaration";
    case MarkupProblemKind::commentTagSyntax:
      return u"'<!-' does not begin a comment";
    case MarkupProblemKind::cdataSectionSyntax:
      return u"'<![' does not begin a CDATA section";
    case MarkupProblemKind::unterminatedTagSyntax:
      return u"the text ends inside this %s";
    case MarkupProblemKind::unendedStartTag:
      return u"start tag '%s' has no end tag";
    case MarkupProblemKind::loneEndTag:
      return u"end tag '%s' has no start tag";
    case MarkupProblemKind::rootHasSibling:
      return u"there is more than one root element";
    case MarkupProblemKind::noRootElement:
      return u"there is no root element";
    case MarkupProblemKind::tooLarge:
      return u"%s is larger than a document can hold";
  }
  return u"";
}

}  // namespace

CString describe(const MarkupProblem& problem) {
  CString name(problem.name);
  if (problem.kind == MarkupProblemKind::unterminatedTagSyntax ||
      problem.kind == MarkupProblemKind::tooLarge) {
    name.Replace(u'_', u' ');
  }
  CString sentence(sentenceOf(problem.kind));
  sentence.Replace(u"%s", name);
  return sentence;
}

}  // namespace kpx

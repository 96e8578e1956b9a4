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
    case MarkupProblemKind::forbiddenCharacter:
      return u"this character must not stand in XML";
    case MarkupProblemKind::nameSyntax:
      return u"'%s' is no name";
    case MarkupProblemKind::attributeWithoutBlank:
      return u"a blank is missing before attribute '%s'";
    case MarkupProblemKind::attributeWithoutValue:
      return u"attribute '%s' has no value";
    case MarkupProblemKind::valueWithoutQuotes:
      return u"the value of attribute '%s' is not in quotes";
    case MarkupProblemKind::unclosedValue:
      return u"the quote before the value of attribute '%s' is never closed";
    case MarkupProblemKind::repeatedAttribute:
      return u"attribute '%s' stands twice in this tag";
    case MarkupProblemKind::lessThanInValue:
      return u"'<' in the value of attribute '%s'";
    case MarkupProblemKind::ampersandWithoutReference:
      return u"'&' does not begin a reference";
    case MarkupProblemKind::unknownEntity:
      return u"entity '%s' is not known";
    case MarkupProblemKind::endTagSyntax:
      return u"end tag '%s' holds more than its name";
    case MarkupProblemKind::textOutsideRoot:
      return u"text outside of the root element";
    case MarkupProblemKind::sectionEndInText:
      return u"']]>' outside of a CDATA section";
    case MarkupProblemKind::hyphensInComment:
      return u"'--' inside a comment";
    case MarkupProblemKind::misplacedDeclaration:
      return u"an XML declaration must be the first thing in a document";
    case MarkupProblemKind::declarationSyntax:
      return u"the XML declaration is not as it must be";
    case MarkupProblemKind::misplacedDocumentType:
      return u"the document type must stand once and before the root element";
    case MarkupProblemKind::uncheckedDocumentType:
      return u"the content of the document type declaration is not checked";
    case MarkupProblemKind::lineBreakInValue:
      return u"a line break in the value of attribute '%s', read as a blank by other programs";
  }
  return u"";
}

}  // namespace

CString describe(const MarkupProblem& problem) {
  // More of a name tells nobody more, and a document may be nothing but long names.
  constexpr std::size_t longestName = 200;
  CString name(problem.name.substr(0, longestName));
  if (problem.name.size() > longestName) name += u"\u2026";
  if (problem.kind == MarkupProblemKind::unterminatedTagSyntax ||
      problem.kind == MarkupProblemKind::tooLarge) {
    name.Replace(u'_', u' ');
  }
  CString sentence(sentenceOf(problem.kind));
  sentence.Replace(u"%s", name);
  return sentence;
}

std::u16string_view kindName(MarkupProblemKind kind) noexcept {
  switch (kind) {
    case MarkupProblemKind::firstTagSyntax:
      return u"first-tag-syntax";
    case MarkupProblemKind::exclamationTagSyntax:
      return u"exclamation-tag-syntax";
    case MarkupProblemKind::doctypeTagSyntax:
      return u"doctype-tag-syntax";
    case MarkupProblemKind::commentTagSyntax:
      return u"comment-tag-syntax";
    case MarkupProblemKind::cdataSectionSyntax:
      return u"cdata-section-syntax";
    case MarkupProblemKind::unterminatedTagSyntax:
      return u"unterminated-tag-syntax";
    case MarkupProblemKind::unendedStartTag:
      return u"unended-start-tag";
    case MarkupProblemKind::loneEndTag:
      return u"lone-end-tag";
    case MarkupProblemKind::rootHasSibling:
      return u"root-has-sibling";
    case MarkupProblemKind::noRootElement:
      return u"no-root-element";
    case MarkupProblemKind::tooLarge:
      return u"too-large";
    case MarkupProblemKind::forbiddenCharacter:
      return u"forbidden-character";
    case MarkupProblemKind::nameSyntax:
      return u"name-syntax";
    case MarkupProblemKind::attributeWithoutBlank:
      return u"attribute-without-blank";
    case MarkupProblemKind::attributeWithoutValue:
      return u"attribute-without-value";
    case MarkupProblemKind::valueWithoutQuotes:
      return u"value-without-quotes";
    case MarkupProblemKind::unclosedValue:
      return u"unclosed-value";
    case MarkupProblemKind::repeatedAttribute:
      return u"repeated-attribute";
    case MarkupProblemKind::lessThanInValue:
      return u"less-than-in-value";
    case MarkupProblemKind::ampersandWithoutReference:
      return u"ampersand-without-reference";
    case MarkupProblemKind::unknownEntity:
      return u"unknown-entity";
    case MarkupProblemKind::endTagSyntax:
      return u"end-tag-syntax";
    case MarkupProblemKind::textOutsideRoot:
      return u"text-outside-root";
    case MarkupProblemKind::sectionEndInText:
      return u"section-end-in-text";
    case MarkupProblemKind::hyphensInComment:
      return u"hyphens-in-comment";
    case MarkupProblemKind::misplacedDeclaration:
      return u"misplaced-declaration";
    case MarkupProblemKind::declarationSyntax:
      return u"declaration-syntax";
    case MarkupProblemKind::misplacedDocumentType:
      return u"misplaced-document-type";
    case MarkupProblemKind::lineBreakInValue:
      return u"line-break-in-value";
    case MarkupProblemKind::uncheckedDocumentType:
      return u"unchecked-document-type";
  }
  return u"";
}

}  // namespace kpx

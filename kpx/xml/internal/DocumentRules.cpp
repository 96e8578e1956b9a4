#include "kpx/xml/internal/DocumentRules.h"

#include <algorithm>

#include "kpx/xml/AttributeReader.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {
namespace {

constexpr std::u16string_view usualEntities[] = {u"amp", u"apos", u"gt", u"lt", u"quot"};

std::u16string_view withoutSpace(std::u16string_view text) noexcept {
  while (!text.empty() && isMarkupSpace(text.front())) text.remove_prefix(1);
  return text;
}

bool beginsWithSpace(std::u16string_view text) noexcept {
  return !text.empty() && isMarkupSpace(text.front());
}

/// Behind `close`, or the end of the text.
std::u16string_view behind(std::u16string_view text, std::u16string_view close) noexcept {
  const std::size_t found = text.find(close);
  return found == text.npos ? std::u16string_view() : text.substr(found + close.size());
}

/// Behind the ">" of a declaration, which may stand in its literals too.
std::u16string_view behindDeclaration(std::u16string_view text) noexcept {
  while (!text.empty() && text.front() != u'>') {
    const char16_t unit = text.front();
    text.remove_prefix(1);
    if (unit == u'"' || unit == u'\'') text = behind(text, {&unit, 1});
  }
  return text.substr(std::min<std::size_t>(1, text.size()));
}

std::u16string_view nameAt(std::u16string_view text) noexcept {
  const auto* const end = std::find_if(text.begin(), text.end(), [](char16_t unit) {
    return isMarkupSpace(unit) || unit == u'>' || unit == u'"' || unit == u'\'';
  });
  return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

}  // namespace

DocumentRules::DocumentRules(std::u16string_view document) {
  TokenPos token{document};
  if (document.starts_with(u'\xFEFF')) token.end = 1;
  const int start = token.end;
  for (;;) {
    const int kind = nextToken(token);
    if (kind == MarkupNode::processingInstruction && token.start == start &&
        nameAt(token.name()) == u"xml") {
      readDeclaration(document.substr(static_cast<std::size_t>(token.start),
                                      static_cast<std::size_t>(token.length())));
    } else if (kind == MarkupNode::documentType) {
      readDocumentType(token.name());
    } else if (kind <= MarkupNode::element) {
      return;
    }
  }
}

void DocumentRules::readDeclaration(std::u16string_view declaration) {
  AttributeReader attribute(declaration);
  isVersion11_ = attribute.find(u"version") && attribute.rawValue() == u"1.1";
  isStandalone_ = attribute.find(u"standalone") && attribute.rawValue() == u"yes";
}

void DocumentRules::readDocumentType(std::u16string_view content) {
  while (!content.empty() && content.front() != u'[') {
    const char16_t unit = content.front();
    if (unit == u'"' || unit == u'\'') {
      hasOtherDeclarations_ = true;  // the name of a file
      content = behind(content.substr(1), {&unit, 1});
    } else {
      content.remove_prefix(1);
    }
  }
  if (!content.empty()) readSubset(content.substr(1));
  std::ranges::sort(entities_);
}

void DocumentRules::readSubset(std::u16string_view subset) {
  constexpr std::u16string_view entity = u"<!ENTITY";
  while (!subset.empty()) {
    if (subset.starts_with(u"<!--")) {
      subset = behind(subset.substr(4), u"-->");
    } else if (subset.starts_with(u"<?")) {
      subset = behind(subset.substr(2), u"?>");
    } else if (subset.starts_with(u"<!")) {
      if (subset.starts_with(entity) && beginsWithSpace(subset.substr(entity.size()))) {
        const std::u16string_view name = nameAt(withoutSpace(subset.substr(entity.size())));
        if (name != u"%") entities_.push_back(name);
      }
      subset = behindDeclaration(subset);
    } else {
      hasOtherDeclarations_ = hasOtherDeclarations_ || subset.front() == u'%';
      subset.remove_prefix(1);
    }
  }
}

bool DocumentRules::knowsEntity(std::u16string_view name) const noexcept {
  return (hasOtherDeclarations_ && !isStandalone_) ||
         std::ranges::find(usualEntities, name) != std::end(usualEntities) ||
         std::ranges::binary_search(entities_, name);
}

}  // namespace kpx::detail

#include "kpx/xml/MarkupCheck.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "kpx/text/CaseFold.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/DocumentRules.h"
#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/LineTable.h"
#include "kpx/xml/internal/PieceCheck.h"
#include "kpx/xml/internal/Tokenizer.h"
#include "kpx/xml/internal/XmlCharacters.h"

namespace kpx {
namespace {

using detail::DocumentRules;
using detail::isMarkupSpace;
using Kind = MarkupProblemKind;

bool isOneOf(std::u16string_view wanted, std::initializer_list<std::u16string_view> texts) {
  return std::find(texts.begin(), texts.end(), wanted) != texts.end();
}

bool isEncodingName(std::u16string_view name) {
  const auto isLetter = [](char16_t unit) {
    const auto lower = static_cast<char16_t>(unit | 0x20);
    return lower >= u'a' && lower <= u'z';
  };
  return !name.empty() && isLetter(name.front()) &&
         std::all_of(name.begin(), name.end(), [&](char16_t unit) {
           return isLetter(unit) || (unit >= u'0' && unit <= u'9') || unit == u'.' ||
                  unit == u'_' || unit == u'-';
         });
}

bool isQuote(char16_t unit) { return unit == u'"' || unit == u'\''; }

class Checker {
  // A hostile token is not kept waiting for its end.
  static constexpr std::size_t mostAtOnce = 4096;

 public:
  Checker(std::u16string_view text, const MarkupProblemSink& sink)
      : sink_(sink), lines_(text), token_{text} {
    if (text.starts_with(u'\xFEFF')) token_.end = documentStart_ = 1;
  }
  /// Of a part of a document with these rules.
  Checker(std::u16string_view text, const MarkupProblemSink& sink, const DocumentRules& rules)
      : Checker(text, sink) {
    rules_ = rules;
    documentStart_ = -1;
    if (rules_.isVersion11()) takeLineEnds();
  }

  int run() {
    findForbidden(0);
    for (int kind; (kind = detail::nextToken(token_)) != detail::TokenKind::endOfText;) {
      checkToken(kind);
      while (forbidden_ < static_cast<std::size_t>(token_.end)) {
        add(Kind::forbiddenCharacter, {}, static_cast<int>(forbidden_));
        findForbidden(forbidden_ + 1);
      }
      tell();
    }
    return told_;
  }

  int runOnReferences() {
    checkReferences(0, static_cast<int>(token_.text.size()));
    tell();
    return told_;
  }

 private:
  struct Found {
    Kind kind;
    std::u16string_view name;
    int offset;
  };
  // As offsets, because a hostile tag may have millions.
  struct Attribute {
    int begin;
    int nameEnd;
    int valueBegin;
    int valueEnd;
  };

  char16_t at(int offset) const { return token_.text[static_cast<std::size_t>(offset)]; }
  std::u16string_view part(int begin, int end) const {
    return token_.text.substr(static_cast<std::size_t>(begin),
                              static_cast<std::size_t>(end - begin));
  }
  void findForbidden(std::size_t from) {
    forbidden_ = detail::findForbiddenCharacter(token_.text, from, rules_.isVersion11());
  }
  // In version 1.1 two more characters end lines, wherever they stand.
  void takeLineEnds() {
    constexpr char16_t more[] = {0x85, 0x2028};
    if (token_.text.find_first_of({more, 2}, static_cast<std::size_t>(token_.end)) ==
        token_.text.npos) {
      return;
    }
    withLineFeeds_ = token_.text;
    for (char16_t& unit : withLineFeeds_) {
      if (unit == more[0] || unit == more[1]) unit = u'\n';
    }
    token_.text = withLineFeeds_;
  }
  int skipSpace(int position, int end) const {
    while (position < end && isMarkupSpace(at(position))) ++position;
    return position;
  }
  void add(Kind kind, std::u16string_view name, int offset) {
    found_.push_back({kind, name, offset});
    if (found_.size() == mostAtOnce) tell();
  }
  std::u16string_view nameOf(const Attribute& attribute) const {
    return part(attribute.begin, attribute.nameEnd);
  }
  void checkName(std::u16string_view name, int offset) {
    if (!detail::isXmlName(name)) add(Kind::nameSyntax, name, offset);
  }

  // Problems of a token are found one rule after the other, and told in the order of the text.
  void tell() {
    std::stable_sort(found_.begin(), found_.end(),
                     [](const Found& a, const Found& b) { return a.offset < b.offset; });
    for (const Found& found : found_) {
      const auto place = lines_.at(found.offset);
      if (sink_) sink_({found.kind, found.name, found.offset, place.line, place.column});
    }
    told_ += static_cast<int>(found_.size());
    found_.clear();
  }

  void checkToken(int kind) {
    switch (kind) {
      case MarkupNode::element:
        seenRoot_ = true;
        checkName(token_.name(), token_.nameStart);
        readAttributes(token_.nameEnd, token_.end - (token_.isEmptyElement() ? 2 : 1));
        checkRepeated();
        if (!token_.isEmptyElement()) ++depth_;
        break;
      case detail::TokenKind::endTag:
        if (skipSpace(token_.nameEnd, token_.end) != token_.end - 1) {
          add(Kind::endTagSyntax, token_.name(), token_.start);
        }
        depth_ = std::max(depth_ - 1, 0);
        break;
      case MarkupNode::text:
        checkText();
        break;
      case MarkupNode::cdataSection:
        if (depth_ == 0) add(Kind::textOutsideRoot, {}, token_.start);
        break;
      case MarkupNode::comment:
        checkComment();
        break;
      case MarkupNode::processingInstruction:
        checkInstruction();
        break;
      case MarkupNode::documentType:
        if (seenDocumentType_ || seenRoot_) add(Kind::misplacedDocumentType, {}, token_.start);
        if (!seenDocumentType_) rules_.readDocumentType(token_.name());
        seenDocumentType_ = true;
        add(Kind::uncheckedDocumentType, {}, token_.start);
        break;
      default:  // white space, and what the parse has recorded
        break;
    }
  }

  void checkText() {
    if (depth_ == 0) add(Kind::textOutsideRoot, {}, skipSpace(token_.start, token_.end));
    checkReferences(token_.start, token_.end);
    const std::u16string_view text = part(token_.start, token_.end);
    for (std::size_t end = text.find(u"]]>"); end != text.npos; end = text.find(u"]]>", end + 3)) {
      add(Kind::sectionEndInText, {}, token_.start + static_cast<int>(end));
    }
  }

  void checkComment() {
    const std::u16string_view content = token_.name();
    std::size_t hyphens = content.find(u"--");
    if (hyphens == content.npos && content.ends_with(u'-')) hyphens = content.size() - 1;
    if (hyphens == content.npos) return;
    add(Kind::hyphensInComment, {}, token_.nameStart + static_cast<int>(hyphens));
  }

  void checkInstruction() {
    int end = token_.nameStart;
    while (end < token_.nameEnd && !isMarkupSpace(at(end))) ++end;
    const std::u16string_view target = part(token_.nameStart, end);
    if (detail::compareTextNoCase(target, u"xml") != 0) {
      checkName(target, token_.nameStart);
    } else if (token_.start != documentStart_ || target != u"xml") {
      add(Kind::misplacedDeclaration, {}, token_.start);
    } else {
      readAttributes(end, token_.nameEnd);
      checkDeclaration();
      rules_.readDeclaration(part(token_.start, token_.end));
      if (!rules_.isVersion11()) return;
      takeLineEnds();
      findForbidden(static_cast<std::size_t>(token_.start));
    }
  }

  void checkDeclaration() {
    auto next = attributes_.begin();
    bool right = true;
    const auto take = [&](std::u16string_view name, bool required, auto isValue) {
      if (next != attributes_.end() && nameOf(*next) == name) {
        right = right && isValue(part(next->valueBegin, next->valueEnd));
        ++next;
      } else {
        right = right && !required;
      }
    };
    take(u"version", true, [](std::u16string_view value) {
      return value.size() > 2 && value.starts_with(u"1.") &&
             value.find_first_not_of(u"0123456789", 2) == value.npos;
    });
    take(u"encoding", false, isEncodingName);
    take(u"standalone", false, [](auto value) { return isOneOf(value, {u"yes", u"no"}); });
    if (!right || next != attributes_.end()) add(Kind::declarationSyntax, {}, token_.start);
  }

  // Reads what stands in [position, end) into attributes_.
  void readAttributes(int position, int end) {
    attributes_.clear();
    for (;;) {
      const int behindLast = position;
      position = skipSpace(position, end);
      if (position == end) return;
      position = readAttribute(position, end, position == behindLast);
    }
  }

  int readAttribute(int start, int end, bool blankMissing) {
    int position = start;
    while (position < end && !isMarkupSpace(at(position)) && at(position) != u'=' &&
           !isQuote(at(position))) {
      ++position;
    }
    if (position == start) {
      while (position < end && !isMarkupSpace(at(position))) ++position;
      add(Kind::nameSyntax, part(start, position), start);
      return position;
    }
    const std::u16string_view name = part(start, position);
    attributes_.push_back({start, position, position, position});
    checkName(name, start);
    if (blankMissing) add(Kind::attributeWithoutBlank, name, start);
    const int behindName = position;
    position = skipSpace(position, end);
    if (position == end || at(position) != u'=') {
      add(Kind::attributeWithoutValue, name, start);
      return behindName;
    }
    position = skipSpace(position + 1, end);
    if (position == end) {
      add(Kind::attributeWithoutValue, name, start);
      return end;
    }
    const char16_t quote = at(position);
    const bool quoted = isQuote(quote);
    const int valueStart = quoted ? position + 1 : position;
    int valueEnd = valueStart;
    while (valueEnd < end && (quoted ? at(valueEnd) != quote : !isMarkupSpace(at(valueEnd)))) {
      ++valueEnd;
    }
    if (!quoted) add(Kind::valueWithoutQuotes, name, valueStart);
    if (quoted && valueEnd == end) add(Kind::unclosedValue, name, position);
    attributes_.back().valueBegin = valueStart;
    attributes_.back().valueEnd = valueEnd;
    checkValue(name, valueStart, valueEnd);
    return std::min(end, quoted ? valueEnd + 1 : valueEnd);
  }

  void checkValue(std::u16string_view name, int start, int end) {
    const std::u16string_view value = part(start, end);
    if (const auto found = value.find(u'<'); found != value.npos) {
      add(Kind::lessThanInValue, name, start + static_cast<int>(found));
    }
    if (const auto found = value.find_first_of(u"\r\n"); found != value.npos) {
      add(Kind::lineBreakInValue, name, start + static_cast<int>(found));
    }
    checkReferences(start, end);
  }

  void checkRepeated() {
    std::ranges::sort(attributes_, [this](const Attribute& a, const Attribute& b) {
      const int order = nameOf(a).compare(nameOf(b));
      return order != 0 ? order < 0 : a.begin < b.begin;
    });
    for (std::size_t i = 1; i < attributes_.size(); ++i) {
      const Attribute& each = attributes_[i];
      if (nameOf(each) == nameOf(attributes_[i - 1])) {
        add(Kind::repeatedAttribute, nameOf(each), each.begin);
      }
    }
  }

  void checkReferences(int start, int end) {
    const std::u16string_view text = token_.text.substr(0, static_cast<std::size_t>(end));
    for (int position = detail::findUnit(text, start, '&'); position < end;
         position = detail::findUnit(text, position + 1, '&')) {
      const auto length = static_cast<int>(
          detail::referenceLength(text.substr(static_cast<std::size_t>(position))));
      checkReference(part(position, position + length), position);
    }
  }

  void checkReference(std::u16string_view reference, int offset) {
    if (reference.starts_with(u"&#") &&
        detail::isNumericReference(reference, rules_.isVersion11())) {
      return;
    }
    const std::u16string_view name =
        reference.empty() ? reference : reference.substr(1, reference.size() - 2);
    if (!detail::isXmlName(name)) {
      add(Kind::ampersandWithoutReference, {}, offset);
    } else if (!rules_.knowsEntity(name)) {
      add(Kind::unknownEntity, name, offset);
    }
  }

  const MarkupProblemSink& sink_;
  detail::LineTable lines_;
  detail::TokenPos token_;
  DocumentRules rules_;
  std::u16string withLineFeeds_;       // the text, where version 1.1 reads other units
  std::vector<Found> found_;           // of the token at hand
  std::vector<Attribute> attributes_;  // of the tag at hand
  std::size_t forbidden_ = 0;          // the next forbidden character
  int documentStart_ = 0;              // behind a byte-order mark; -1 of a part
  int depth_ = 0;
  int told_ = 0;
  bool seenRoot_ = false;
  bool seenDocumentType_ = false;
};

// Counts what no edit may bring into a document.
class Faults {
 public:
  MarkupProblemSink sink() {
    return [this](const MarkupProblem& problem) {
      found_ = found_ ||
               (problem.kind != Kind::forbiddenCharacter && !MarkupCheck::isWarning(problem.kind));
    };
  }
  bool found() const noexcept { return found_; }

 private:
  bool found_ = false;
};

}  // namespace

namespace detail {

bool isRightElement(std::u16string_view markup, const DocumentRules& rules) {
  Faults faults;
  const MarkupProblemSink sink = faults.sink();
  Checker(markup, sink, rules).run();
  return !faults.found();
}

bool hasRightReferences(std::u16string_view text, const DocumentRules& rules) {
  Faults faults;
  const MarkupProblemSink sink = faults.sink();
  Checker(text, sink, rules).runOnReferences();
  return !faults.found();
}

bool isRightDocument(std::u16string_view text) {
  Faults faults;
  const MarkupProblemSink sink = faults.sink();
  Checker(text, sink).run();
  return !faults.found();
}

}  // namespace detail

int MarkupCheck::check(std::u16string_view text, const MarkupProblemSink& sink) {
  // A longer text is no document, which its parse has recorded.
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return 0;
  return Checker(text, sink).run();
}

}  // namespace kpx

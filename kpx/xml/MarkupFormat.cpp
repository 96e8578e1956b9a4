#include "kpx/xml/MarkupFormat.h"

#include <algorithm>
#include <vector>

namespace kpx {
namespace {

constexpr int blanksPerLevel = 2;
// Deeper levels are not indented further: a line for each level of a hostile document would
// otherwise cost the square of its depth.
constexpr std::size_t deepestIndent = 64;

constexpr int textNodes = MarkupNode::text | MarkupNode::cdataSection;

class MarkupFormatter {
 public:
  explicit MarkupFormatter(CMarkup& document) : document_(document) {
    const std::size_t firstFeed = source().find(u'\n');
    if (firstFeed != std::u16string_view::npos && firstFeed > 0 &&
        source()[firstFeed - 1] == u'\r') {
      lineEnd_ = u"\r\n";
    }
  }

  CString run() {
    out_.reserve(source().size() + source().size() / 4);
    document_.ResetPos();
    for (;;) {
      const int type = document_.FindNode();
      if (type == MarkupNode::element) {
        openElement();
      } else if (type != 0) {
        // White space between elements is what formatting replaces.
        if (type != MarkupNode::whitespace) writeNode();
      } else if (!openElements_.empty()) {
        document_.OutOfElem();
        closeElement();
      } else {
        break;
      }
    }
    document_.ResetPos();
    return CString(std::move(out_));
  }

 private:
  struct EndTag {
    int begin;
    int end;
  };

  std::u16string_view source() const { return document_.GetDoc().view(); }

  void writeLine(int begin, int end) {
    out_.append(blanksPerLevel * std::min(openElements_.size(), deepestIndent), u' ');
    out_.append(
        source().substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)));
    out_.append(lineEnd_);
  }

  void writeNode() {
    int begin = 0;
    int end = 0;
    if (document_.GetOffsets(begin, end)) writeLine(begin, end);
  }

  void openElement() {
    if (!holdsOnlyElements()) {
      writeNode();
      return;
    }
    int begin = 0;
    int end = 0;
    int contentBegin = 0;
    int contentEnd = 0;
    document_.GetOffsets(begin, end);
    document_.GetContentOffsets(contentBegin, contentEnd);
    writeLine(begin, contentBegin);
    openElements_.push_back({contentEnd, end});
    document_.ResetChildPos();
    document_.IntoElem();
  }

  void closeElement() {
    const EndTag tag = openElements_.back();
    openElements_.pop_back();
    writeLine(tag.begin, tag.end);
  }

  bool holdsOnlyElements() {
    document_.ResetChildPos();
    if (!document_.FindChildElem()) return false;
    AttributeReader attribute = document_.ReadAttribs();
    if (attribute.find(u"xml:space") && attribute.rawValue() == u"preserve") return false;
    document_.ResetChildPos();
    document_.IntoElem();
    const bool hasText = document_.FindNode(textNodes) != 0;
    document_.OutOfElem();
    return !hasText;
  }

  CMarkup& document_;
  std::u16string out_;
  std::u16string_view lineEnd_ = u"\n";
  std::vector<EndTag> openElements_;
};

}  // namespace

CString formatMarkup(CMarkup& document) {
  if (!document.IsWellFormed()) return {};
  return MarkupFormatter(document).run();
}

}  // namespace kpx

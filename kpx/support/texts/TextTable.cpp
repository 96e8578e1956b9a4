#include "kpx/support/texts/TextTable.h"

#include <charconv>
#include <optional>
#include <utility>

#include "kpx/support/texts/internal/BuiltInTexts.h"
#include "kpx/text/Utf.h"

namespace kpx {
namespace {

constexpr std::string_view titleComment = "# title\t";
constexpr std::string_view headerComment = "# header\t";

template <class Number>
std::optional<Number> numberOf(std::string_view digits) noexcept {
  Number number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [at, error] = std::from_chars(digits.data(), end, number);
  if (error != std::errc() || at != end) return std::nullopt;
  return number;
}

std::optional<char16_t> unitOf(std::u16string_view digits) noexcept {
  if (digits.size() < 4) return std::nullopt;
  unsigned unit = 0;
  for (const char16_t digit : digits.substr(0, 4)) {
    if (digit >= u'0' && digit <= u'9') {
      unit = unit * 16 + (digit - u'0');
    } else if ((digit | 0x20) >= u'a' && (digit | 0x20) <= u'f') {
      unit = unit * 16 + ((digit | 0x20) - u'a') + 10;
    } else {
      return std::nullopt;
    }
  }
  return static_cast<char16_t>(unit);
}

/// The text of a line with its escapes resolved; the problem without its line when it is none.
std::optional<CString> unescape(std::string_view bytes, TextTableProblem& problem) {
  const auto refuse = [&](TextTableProblemKind kind, const CString& message) {
    problem = {kind, 0, message};
    return std::nullopt;
  };
  std::u16string read;
  if (appendUtf8(read, bytes) != std::string_view::npos) {
    return refuse(TextTableProblemKind::notUtf8, u"this line is not UTF-8");
  }
  const std::u16string_view text = read;
  CString result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'\t') {
      return refuse(TextTableProblemKind::strayTab, u"a tab in a text is written as \\t");
    }
    if (text[i] < 0x20) {
      CString message;
      message.Format(u"a control character in a text is written as \\u%04X", int{text[i]});
      return refuse(TextTableProblemKind::controlCharacter, message);
    }
    if (text[i] != u'\\') {
      result += text[i];
      continue;
    }
    const char16_t letter = ++i < text.size() ? text[i] : u'\0';
    if (letter == u'u') {
      const std::optional<char16_t> unit = unitOf(text.substr(i + 1));
      if (!unit) {
        return refuse(TextTableProblemKind::badEscape,
                      u"\\u is not followed by four hexadecimal digits");
      }
      result += *unit;
      i += 4;
    } else if (letter == u'n') {
      result += u'\n';
    } else if (letter == u'r') {
      result += u'\r';
    } else if (letter == u't') {
      result += u'\t';
    } else if (letter == u'\\') {
      result += u'\\';
    } else {
      return refuse(TextTableProblemKind::badEscape,
                    u"a backslash is followed by none of n, r, t, u and another backslash");
    }
  }
  return result;
}

class TableReader {
 public:
  TableReader(TextList& list, ProblemCollector<TextTableProblem>& problems)
      : list_(list), problems_(problems) {}

  void readLine(std::string_view line) {
    ++line_;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty()) return;
    if (line.starts_with('#')) {
      readComment(line);
      return;
    }
    const std::size_t tab = line.find('\t');
    const std::optional<std::int32_t> id = numberOf<std::int32_t>(line.substr(0, tab));
    if (tab == line.npos) {
      report(TextTableProblemKind::missingTab, u"there is no tab between an id and a text");
    } else if (!id) {
      report(TextTableProblemKind::badId, u"what stands before the tab is no id of 32 bits");
    } else if (std::optional<CString> text = textBehind(line, tab + 1)) {
      list_.entries.push_back({*id, std::move(*text)});
    }
  }

 private:
  void readComment(std::string_view line) {
    if (line.starts_with(titleComment)) {
      if (std::optional<CString> title = textBehind(line, titleComment.size())) {
        list_.title = std::move(*title);
      }
    } else if (line.starts_with(headerComment)) {
      const auto header = numberOf<std::uint32_t>(line.substr(headerComment.size()));
      if (header) {
        list_.header = *header;
      } else {
        report(TextTableProblemKind::badHeader, u"the header is no number of 32 bits");
      }
    }
  }

  std::optional<CString> textBehind(std::string_view line, std::size_t start) {
    TextTableProblem problem{TextTableProblemKind::badEscape, 0, {}};
    std::optional<CString> text = unescape(line.substr(start), problem);
    if (!text) report(problem.kind, problem.message);
    return text;
  }

  void report(TextTableProblemKind kind, const CString& message) {
    problems_.add(static_cast<std::size_t>(line_), 0, [&] {
      return TextTableProblem{kind, line_, message};
    });
  }

  TextList& list_;
  ProblemCollector<TextTableProblem>& problems_;
  int line_ = 0;
};

/// Whether a unit would not survive in a file of lines, or not be seen there.
bool needsNumber(std::u16string_view text, std::size_t at) noexcept {
  const char16_t unit = text[at];
  if (isHighSurrogate(unit)) return at + 1 == text.size() || !isLowSurrogate(text[at + 1]);
  if (isLowSurrogate(unit)) return at == 0 || !isHighSurrogate(text[at - 1]);
  return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

}  // namespace

std::u16string_view kindName(TextTableProblemKind kind) noexcept {
  switch (kind) {
    case TextTableProblemKind::notUtf8:
      return u"not-utf8";
    case TextTableProblemKind::strayTab:
      return u"stray-tab";
    case TextTableProblemKind::controlCharacter:
      return u"control-character";
    case TextTableProblemKind::badEscape:
      return u"bad-escape";
    case TextTableProblemKind::missingTab:
      return u"missing-tab";
    case TextTableProblemKind::badId:
      return u"bad-id";
    case TextTableProblemKind::badHeader:
      return u"bad-header";
  }
  return u"";
}

Problems<TextTableProblem> readTextTable(std::string_view bytes, TextList& list,
                                         std::size_t limit) {
  list = TextList();
  ProblemCollector<TextTableProblem> problems(limit);
  TableReader reader(list, problems);
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  if (bytes.starts_with(mark)) bytes.remove_prefix(mark.size());
  while (!bytes.empty()) {
    const std::size_t length = std::min(bytes.find('\n'), bytes.size());
    reader.readLine(bytes.substr(0, length));
    bytes.remove_prefix(std::min(length + 1, bytes.size()));
  }
  return std::move(problems).finish();
}

CString escapedText(const CString& text) {
  const std::u16string_view units = text;
  CString escaped;
  escaped.Preallocate(text.GetLength());
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (units[i] == u'\n') {
      escaped += u"\\n";
    } else if (units[i] == u'\r') {
      escaped += u"\\r";
    } else if (units[i] == u'\t') {
      escaped += u"\\t";
    } else if (units[i] == u'\\') {
      escaped += u"\\\\";
    } else if (needsNumber(units, i)) {
      escaped.AppendFormat(u"\\u%04X", int{units[i]});
    } else {
      escaped += units[i];
    }
  }
  return escaped;
}

std::string textTableBytes(const TextList& list) {
  std::string bytes;
  const auto appendText = [&bytes](const CString& text) {
    appendUtf16(bytes, escapedText(text));
    bytes += '\n';
  };
  if (!list.title.IsEmpty()) {
    bytes += titleComment;
    appendText(list.title);
  }
  if (list.header != 0) {
    bytes += headerComment;
    bytes += std::to_string(list.header) + '\n';
  }
  for (const TextEntry& entry : list.entries) {
    bytes += std::to_string(entry.id) + '\t';
    appendText(entry.text);
  }
  return bytes;
}

TextList builtInTexts() {
  TextList list;
  list.title = u"Deutsch";
  list.entries.reserve(detail::builtInTextCount);
  for (std::size_t i = 0; i < detail::builtInTextCount; ++i) {
    const detail::BuiltInText& entry = detail::builtInTexts[i];
    list.entries.push_back({entry.id, CString(std::u16string_view(
                                          detail::builtInUnits + entry.offset, entry.length))});
  }
  return list;
}

}  // namespace kpx

#include "kpx/support/ini/IniCheck.h"

#include <algorithm>
#include <climits>
#include <map>
#include <optional>
#include <utility>

#include "kpx/support/files/StoredText.h"
#include "kpx/support/ini/internal/IniLine.h"
#include "kpx/text/CaseFold.h"
#include "kpx/text/Utf.h"
#include "kpx/text/Utf8Sequence.h"

namespace kpx {
namespace {

using detail::IniLine;
using detail::IniLineKind;
using detail::StoredText;

struct LessNoCase {
  bool operator()(std::u16string_view a, std::u16string_view b) const noexcept {
    return detail::compareTextNoCase(a, b) < 0;
  }
};

/// Names that were seen, as parts of the text. Trees, because the names of a file may be chosen to
/// collide in a hash table.
class SeenNames {
 public:
  struct Earlier {
    int line;
    bool sameCase;
  };

  void clear() {
    spellings_.clear();
    names_.clear();
  }

  /// Files a name; answers the earlier one that it is equal to.
  std::optional<Earlier> add(std::u16string_view name, int line) {
    const auto [spelling, isNewSpelling] = spellings_.try_emplace(name, line);
    if (!isNewSpelling) return Earlier{spelling->second, true};
    const auto [first, isNew] = names_.try_emplace(name, line);
    if (isNew) return std::nullopt;
    return Earlier{first->second, false};
  }

 private:
  std::map<std::u16string_view, int> spellings_;
  std::map<std::u16string_view, int, LessNoCase> names_;
};

class Checker {
  // More of a name tells nobody more, and a file may be nothing but long names.
  static constexpr std::size_t longestName = 200;

 public:
  Checker(std::string_view bytes, std::size_t limit)
      : bytes_(bytes), ini_(detail::decodeStored(bytes)), problems_(limit) {}

  Problems<IniProblem> check() {
    if (!ini_.encoding.mark && isUtf16()) report(IniProblemKind::noMark, 0);
    std::u16string_view line;
    for (detail::IniLineReader lines(ini_.text); lines.next(line);) {
      checkLine(line);
      continued_ = !line.ends_with(u'\n');
      offset_ += line.size();
      if (!continued_) {
        ++line_;
        lineStart_ = offset_;
        toldTooLong_ = false;
      }
    }
    if (!ini_.halfUnit.empty()) report(IniProblemKind::notInEncoding, offset_);
    return std::move(problems_).finish();
  }

 private:
  bool isUtf16() const noexcept {
    return ini_.encoding.codePage == CodePage::utf16LittleEndian ||
           ini_.encoding.codePage == CodePage::utf16BigEndian;
  }

  void report(IniProblemKind kind, std::size_t offset, std::u16string_view name = {},
              int otherLine = 0) {
    const int column = static_cast<int>(offset - lineStart_) + 1;
    problems_.add(static_cast<std::size_t>(line_), static_cast<std::size_t>(column), [&] {
      return IniProblem{kind, line_, column, CString(name.substr(0, longestName)), otherLine};
    });
  }

  void checkLine(std::u16string_view line) {
    const std::u16string_view content = detail::withoutLineEnd(line);
    if (continued_) {
      // What its parts would mean is not what anybody meant.
      if (!std::exchange(toldTooLong_, true)) report(IniProblemKind::tooLong, offset_);
    } else {
      checkMeaning(content);
    }
    checkUnits(content);
  }

  void checkMeaning(std::u16string_view content) {
    const IniLine parsed = detail::parseIniLine(content);
    const auto at = [&](std::u16string_view part) {
      return offset_ + static_cast<std::size_t>(part.data() - content.data());
    };
    if (parsed.kind == IniLineKind::section) {
      const auto earlier = sections_.add(parsed.name, line_);
      if (earlier) {
        report(earlier->sameCase ? IniProblemKind::repeatedSection
                                 : IniProblemKind::sectionDiffersInCase,
               at(parsed.name), parsed.name, earlier->line);
      }
      keys_.clear();
      inSection_ = true;
    } else if (parsed.kind == IniLineKind::key && !parsed.name.empty()) {
      if (!inSection_) report(IniProblemKind::keyBeforeSection, at(parsed.name), parsed.name);
      const auto earlier = keys_.add(parsed.name, line_);
      if (earlier) {
        report(earlier->sameCase ? IniProblemKind::repeatedKey : IniProblemKind::keyDiffersInCase,
               at(parsed.name), parsed.name, earlier->line);
      }
      const std::size_t lineBreak = lineBreakInPath(parsed.value);
      if (lineBreak != parsed.value.npos) {
        report(IniProblemKind::lineBreakInPath, at(parsed.value) + lineBreak, parsed.name);
      }
    } else if (parsed.kind == IniLineKind::other || parsed.kind == IniLineKind::key) {
      report(IniProblemKind::withoutMeaning, at(content) + content.find_first_not_of(u" \t"));
    }
  }

  /// Where a path with a drive or server has what is read as a line break.
  static std::size_t lineBreakInPath(std::u16string_view value) noexcept {
    const bool isPath = value.starts_with(u"\\\\") ||
                        value.substr(std::min<std::size_t>(1, value.size())).starts_with(u":\\");
    return isPath ? value.find(u"\\n") : value.npos;
  }

  /// The first of each kind in a line.
  void checkUnits(std::u16string_view content) {
    const std::size_t carriageReturn = content.find(u'\r');
    if (carriageReturn != content.npos) {
      report(IniProblemKind::carriageReturn, offset_ + carriageReturn);
    }
    const std::size_t null = content.find(u'\0');
    if (null != content.npos) report(IniProblemKind::nullCharacter, offset_ + null);
    if (ini_.encoding.codePage == CodePage::windows1252) {
      // A byte is a unit there.
      const std::size_t utf8 = findUtf8(bytes_.substr(offset_, content.size()));
      if (utf8 != content.npos) report(IniProblemKind::mixedEncodings, offset_ + utf8);
    } else if (ini_.firstInvalid != StoredText::none && !isUtf16()) {
      const std::size_t byte = findByte(content);
      if (byte != content.npos) report(IniProblemKind::notInEncoding, offset_ + byte);
    }
  }

  static std::size_t findUtf8(std::string_view bytes) noexcept {
    for (std::size_t at = 0; at < bytes.size();) {
      const std::size_t length = detail::decodeUtf8(bytes.data() + at, bytes.size() - at).length;
      if (length > 1) return at;
      at += length;
    }
    return bytes.npos;
  }

  /// The first unit that stands for a byte.
  static std::size_t findByte(std::u16string_view text) noexcept {
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t begin = at;
      const char32_t code = nextCodePoint(text, at);
      if (code >= 0xD800 && code <= 0xDFFF) return begin;
    }
    return text.npos;
  }

  std::string_view bytes_;
  StoredText ini_;
  ProblemCollector<IniProblem> problems_;
  SeenNames sections_;
  SeenNames keys_;
  bool inSection_ = false;
  bool continued_ = false;  // the line before was a piece of a longer one
  bool toldTooLong_ = false;
  std::size_t offset_ = 0;
  std::size_t lineStart_ = 0;
  int line_ = 1;
};

}  // namespace

Problems<IniProblem> checkIni(std::string_view bytes, std::size_t limit) {
  if (bytes.size() < static_cast<std::size_t>(INT_MAX)) return Checker(bytes, limit).check();
  return {1, {{IniProblemKind::tooLarge, 1, 1, {}, 0}}};
}

CString describe(const IniProblem& problem) {
  CString text;
  const CString& name = problem.name;
  const int line = problem.otherLine;
  switch (problem.kind) {
    case IniProblemKind::repeatedSection:
      text.Format(u"section '%s' stands in line %d already; what is in this one is not found", name,
                  line);
      break;
    case IniProblemKind::repeatedKey:
      text.Format(u"key '%s' stands in line %d already; this one is not found", name, line);
      break;
    case IniProblemKind::sectionDiffersInCase:
      text.Format(u"section '%s' differs from the one in line %d in upper and lower case only",
                  name, line);
      break;
    case IniProblemKind::keyDiffersInCase:
      text.Format(u"key '%s' differs from the one in line %d in upper and lower case only", name,
                  line);
      break;
    case IniProblemKind::keyBeforeSection:
      text.Format(u"key '%s' stands above the first section", name);
      break;
    case IniProblemKind::withoutMeaning:
      return u"this line is neither a comment nor a section nor a key with a value";
    case IniProblemKind::lineBreakInPath:
      text.Format(u"the path of key '%s' is read with a line break here; write / for the backslash",
                  name);
      break;
    case IniProblemKind::tooLong:
      return u"the line has more than 4000 characters; from here on it is read as another line";
    case IniProblemKind::carriageReturn:
      return u"a carriage return that ends no line";
    case IniProblemKind::nullCharacter:
      return u"a character 0";
    case IniProblemKind::notInEncoding:
      return u"a byte that is no text in the encoding that the byte-order mark tells";
    case IniProblemKind::mixedEncodings:
      return u"this character is in UTF-8, but other parts of the file are not";
    case IniProblemKind::noMark:
      return u"the file is UTF-16 without a byte-order mark";
    case IniProblemKind::tooLarge:
      return u"the file is larger than an INI file can be";
  }
  return text;
}

std::u16string_view kindName(IniProblemKind kind) noexcept {
  switch (kind) {
    case IniProblemKind::repeatedSection:
      return u"repeated-section";
    case IniProblemKind::repeatedKey:
      return u"repeated-key";
    case IniProblemKind::sectionDiffersInCase:
      return u"section-differs-in-case";
    case IniProblemKind::keyDiffersInCase:
      return u"key-differs-in-case";
    case IniProblemKind::keyBeforeSection:
      return u"key-before-section";
    case IniProblemKind::withoutMeaning:
      return u"without-meaning";
    case IniProblemKind::lineBreakInPath:
      return u"line-break-in-path";
    case IniProblemKind::tooLong:
      return u"too-long";
    case IniProblemKind::carriageReturn:
      return u"carriage-return";
    case IniProblemKind::nullCharacter:
      return u"null-character";
    case IniProblemKind::notInEncoding:
      return u"not-in-encoding";
    case IniProblemKind::mixedEncodings:
      return u"mixed-encodings";
    case IniProblemKind::noMark:
      return u"no-mark";
    case IniProblemKind::tooLarge:
      return u"too-large";
  }
  return u"";
}

CString iniEncodingName(std::string_view bytes) {
  switch (detail::decodeStored(bytes).encoding.codePage) {
    case CodePage::utf16LittleEndian:
      return u"UTF-16LE";
    case CodePage::utf16BigEndian:
      return u"UTF-16BE";
    case CodePage::windows1252:
      return u"windows-1252";
    default:
      return u"UTF-8";
  }
}

}  // namespace kpx

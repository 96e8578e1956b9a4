#include "tools/kpx/StrictJson.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace kpx::tool {
namespace {

/// Walks over bytes and tells how far the parser has come.
class WatchedIterator {
 public:
  using iterator_category = std::forward_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  WatchedIterator() = default;
  WatchedIterator(const char* at, const char** seen) : at_(at), seen_(seen) {}
  reference operator*() const noexcept { return *at_; }
  WatchedIterator& operator++() noexcept {
    *seen_ = at_++;
    return *this;
  }
  WatchedIterator operator++(int) noexcept {
    WatchedIterator before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(const WatchedIterator& a, const WatchedIterator& b) noexcept {
    return a.at_ == b.at_;
  }

 private:
  const char* at_ = nullptr;
  const char** seen_ = nullptr;
};

/// What the parser's message means to a person who wrote or changed the text.
const char* meaningOf(std::string_view message) {
  if (message.ends_with("; expected end of input")) return "something follows behind its end";
  // What was read last may look like any of the messages.
  message = message.substr(0, message.find("; last read: '"));
  struct Meaning {
    const char* part;  // of the message; the first that it has counts
    const char* sentence;
  };
  static constexpr Meaning meanings[] = {
      {"unexpected end of input", "it ends in the middle"},
      {"missing closing quote", "this text has no quote at its end"},
      {"ill-formed UTF-8", "this byte is no UTF-8"},
      {"4 hex digits", "\\u must be followed by four hexadecimal digits"},
      {"surrogate", "this escape is half of a pair without the other half"},
      {"forbidden character after backslash", "no such escape can follow a backslash"},
      {"must be escaped", "a control character in a text must be written as an escape"},
      {"invalid number", "this number is not as it must be"},
      {"number overflow", "this number is too large"},
      {"parsing object key", "the name of a field in quotes is missing here"},
      {"parsing object separator", "a colon is missing here, behind the name of a field"},
      {"parsing object", "a comma or a closing brace is missing here"},
      {"parsing array", "a comma or a closing bracket is missing here"},
      {"parsing value",
       "a value is missing here: a text in quotes, a number, true, false, null, a "
       "list or an object"},
  };
  for (const Meaning& meaning : meanings) {
    if (message.find(meaning.part) != message.npos) return meaning.sentence;
  }
  return "something is wrong here";
}

/// Builds the document, and knows at every step the JSON pointer of the value that has come. With
/// a pointer to look for it stops there instead of building.
class Builder : public nlohmann::json_sax<Json> {
 public:
  Builder(std::string_view text, Json* root, const std::string* wanted)
      : text_(text), root_(root), wanted_(wanted) {}

  bool parse() {
    return Json::sax_parse(WatchedIterator(text_.data(), &seen_),
                           WatchedIterator(text_.data() + text_.size(), &seen_), this);
  }
  const std::string& problem() const noexcept { return problem_; }
  /// The byte that the last problem, or the value looked for, is at.
  std::size_t place() const noexcept { return place_; }

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(std::int64_t value) override { return add(value); }
  bool number_unsigned(std::uint64_t value) override { return add(value); }
  bool number_float(double value, const std::string&) override { return add(value); }
  bool string(std::string& value) override { return add(std::move(value)); }
  bool binary(Json::binary_t&) override { return refuse("is no JSON"); }
  bool start_object(std::size_t) override { return begin(Json::object()); }
  bool start_array(std::size_t) override { return begin(Json::array()); }
  bool end_object() override { return end(); }
  bool end_array() override { return end(); }

  bool key(std::string& name) override {
    Level& level = levels_.back();
    // More than any object of the tool's own files has; looking a name up costs their number.
    constexpr std::size_t mostMembers = 64;
    if (std::ranges::find(level.names, name) != level.names.end()) {
      return refuse("the field '" + shownName(CString::fromUtf8(name)) +
                    "' stands twice in one object");
    }
    if (level.names.size() == mostMembers) return refuse("an object has too many fields");
    level.names.push_back(name);
    return true;
  }

  bool parse_error(std::size_t position, const std::string&,
                   const nlohmann::detail::exception& error) override {
    problem_ = std::string("is no JSON: ") + meaningOf(error.what());
    place_ = position > 0 ? position - 1 : 0;
    return false;
  }

 private:
  static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);
  struct Level {
    Json* value = nullptr;
    bool isArray = false;
    std::size_t index = nowhere;     // of an array's value that came last
    std::vector<std::string> names;  // of an object's members
  };

  bool refuse(std::string sentence) {
    problem_ = std::move(sentence);
    place_ = static_cast<std::size_t>(seen_ - text_.data());
    return false;
  }

  std::string pointer() const {
    std::string pointer;
    for (const Level& level : levels_) {
      pointer += '/';
      pointer += level.isArray ? std::to_string(level.index) : level.names.back();
    }
    return pointer;
  }

  /// Puts a value where the text has it; nullptr when it is the one that was looked for.
  Json* put(Json value) {
    if (!levels_.empty() && levels_.back().isArray) ++levels_.back().index;
    if (wanted_ && pointer() == *wanted_) {
      refuse({});
      return nullptr;
    }
    if (wanted_) return root_;
    if (levels_.empty()) {
      *root_ = std::move(value);
      return root_;
    }
    Level& level = levels_.back();
    if (level.isArray) {
      level.value->push_back(std::move(value));
      return &level.value->back();
    }
    return &level.value->emplace(level.names.back(), std::move(value)).first.value();
  }
  bool add(Json value) { return put(std::move(value)) != nullptr; }

  bool begin(Json value) {
    constexpr std::size_t mostLevels = 16;
    if (levels_.size() == mostLevels) return refuse("is nested too deeply");
    const bool isArray = value.is_array();
    Json* const added = put(std::move(value));
    if (!added) return false;
    levels_.push_back({added, isArray, nowhere, {}});
    return true;
  }
  bool end() {
    levels_.pop_back();
    return true;
  }

  std::string_view text_;
  Json* root_;
  const std::string* wanted_;
  const char* seen_ = text_.data();
  std::vector<Level> levels_;
  std::string problem_;
  std::size_t place_ = 0;
};

/// Whether the bracket at a byte follows a comma, which parsers tell as a missing value.
bool followsComma(std::string_view text, std::size_t at) {
  if (at >= text.size() || (text[at] != ']' && text[at] != '}')) return false;
  const std::size_t before = text.substr(0, at).find_last_not_of(" \t\r\n");
  return before != text.npos && text[before] == ',';
}

}  // namespace

StrictJson::StrictJson(std::string_view text, std::string source)
    : text_(text), source_(std::move(source)) {
  if (text_.empty()) throw Failure(Exit::input, source_ + ": is empty");
  Builder builder(text_, &root_, nullptr);
  if (builder.parse()) return;
  const std::string sentence =
      followsComma(text_, builder.place())
          ? "is no JSON: there is a comma behind the last one, before this bracket"
          : builder.problem();
  ProblemLine place = atByte(text_, builder.place(), sentence);
  place.kind = "not-json";
  throw JsonFailure(source_, place);
}

ProblemLine StrictJson::placeOfPointer(const std::string& pointer,
                                       const std::string& sentence) const {
  Json unused;
  Builder search(text_, &unused, &pointer);
  search.parse();
  const std::string shownPointer = shownOnOneLine(CString::fromUtf8(pointer));
  return atByte(text_, search.place(), pointer.empty() ? sentence : shownPointer + ": " + sentence);
}

std::string StrictJson::located(const std::string& pointer, const std::string& sentence) const {
  return placeOf(source_, placeOfPointer(pointer, sentence));
}

void StrictJson::fail(const std::string& pointer, const std::string& sentence) const {
  ProblemLine place = placeOfPointer(pointer, sentence);
  place.kind = "bad-value";
  throw JsonFailure(source_, place);
}

}  // namespace kpx::tool

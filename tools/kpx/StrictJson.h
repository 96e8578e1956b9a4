#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "tools/kpx/Exit.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {

/// Ends the reading of a JSON document at a place of it.
class JsonFailure : public Failure {
 public:
  JsonFailure(const std::string& source, const ProblemLine& place)
      : Failure(Exit::input, placeOf(source, place)), place_(place) {}
  const ProblemLine& place() const noexcept { return place_; }

 private:
  ProblemLine place_;
};

/// A JSON document that has to be right: what is no JSON, an object with a member twice, and
/// nesting beyond any sense are JsonFailures.
class StrictJson {
 public:
  /// `text` must outlive the object. Raises a Failure or JsonFailure when it is not right.
  StrictJson(std::string_view text, std::string source);

  const Json& root() const noexcept { return root_; }

  /// A sentence about the value at a JSON pointer ("/configurations/0/class"), with its line and
  /// column in the text. The place is looked for only now, since most documents are right.
  std::string located(const std::string& pointer, const std::string& sentence) const;
  /// Raises a JsonFailure that says it; its kind is "bad-value".
  [[noreturn]] void fail(const std::string& pointer, const std::string& sentence) const;

 private:
  ProblemLine placeOfPointer(const std::string& pointer, const std::string& sentence) const;

  std::string_view text_;
  std::string source_;
  Json root_;
};

}  // namespace kpx::tool

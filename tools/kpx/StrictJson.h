#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "tools/kpx/Output.h"

namespace kpx::tool {

/// A JSON document that has to be right: what is no JSON, an object with a member twice, and
/// nesting beyond any sense are Failures with file, line and column.
class StrictJson {
 public:
  /// `text` must outlive the object. Raises a Failure when it is not right.
  StrictJson(std::string_view text, std::string source);

  const Json& root() const noexcept { return root_; }

  /// A sentence about the value at a JSON pointer ("/configurations/0/class"), with its line and
  /// column in the text. The place is looked for only now, since most documents are right.
  std::string located(const std::string& pointer, const std::string& sentence) const;
  /// Raises a Failure that says it.
  [[noreturn]] void fail(const std::string& pointer, const std::string& sentence) const;

 private:
  std::string_view text_;
  std::string source_;
  Json root_;
};

}  // namespace kpx::tool

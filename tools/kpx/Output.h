#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "kpx/text/CString.h"
#include "tools/kpx/ShownText.h"

namespace kpx::tool {

/// JSON with its members in the order they were added. Who makes some includes <nlohmann/json.hpp>.
using Json = nlohmann::ordered_json;

/// Writes to standard output: data as it is, but to a terminal without what that would take for
/// commands. Raises an OutputFailure when standard output cannot take it.
void print(std::string_view data);
/// Writes a sentence as one line, whatever is in it.
void printLine(std::string_view sentence);
void printJson(const Json& json);
/// JSON on one line.
std::string compactJson(const Json& json);

/// Writes a file whole or not at all, and notes the change. Raises a Failure when that is not
/// possible.
void replaceOrFail(const std::string& path, std::string_view bytes);

/// Notes that the verb has changed something that stays. What fails from now on is only the report
/// of it, and the exit code says so.
void noteChange() noexcept;
bool isChangeMade() noexcept;

/// Makes sure that everything printed has arrived.
void finishOutput();

/// Lines and columns, from 1, of ascending offsets into a text; columns count UTF-16 units.
class PlaceCounter {
 public:
  explicit PlaceCounter(const CString& text) : text_(text) {}
  /// Requires an offset not smaller than the one before.
  std::pair<int, int> at(int offset);

 private:
  const CString& text_;
  int counted_ = 0;
  int line_ = 1;
  int lineStart_ = 0;
};

/// Writes "kpx: sentence" to standard error, on one line, whatever is in it.
void complain(std::string_view sentence);

}  // namespace kpx::tool

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/text/TimeValue.h"

namespace kpx {

/// One line of an error log.
struct ErrorLogEntry {
  enum class Kind : std::uint8_t {
    number,  // a report by number
    text,    // a report by free text
    broken,  // neither; `text` is the line as it stands
  };
  Kind kind = Kind::broken;
  std::size_t line = 0;  // from 1
  std::int32_t number = 0;
  CString project;
  CString job;
  TIME time;        // when it was reported, local time
  CString user;     // the name alone
  CString machine;  // what stands in the brackets behind it: computer and memory
  CString text;
};

/// Reads error logs: lines in the form that ErrorReport.h describes, in German, in the language of
/// the text store and in those that are added, in UTF-8 or, where a line is none, in Windows-1252.
/// Whatever a line holds, it is one entry, and the cost is linear. Names may hold anything but line
/// breaks, so a name that looks like the beginning of the next field ends there.
class ErrorLogReader {
 public:
  KPX_API ErrorLogReader();

  /// Lets the reader understand the language files of a folder, too, as `textFolder` names it: a
  /// log is in the language of the user who met the failure. Files that cannot be read are passed
  /// over.
  KPX_API void addLanguages(const CString& folder);

  /// The entry of a line without its end.
  KPX_API ErrorLogEntry read(std::string_view line) const;

  /// Reads all lines of a log; empty ones are passed over. Counts lines on from call to call. What
  /// follows the last line feed is taken as a line when `isWhole` says that nothing will follow.
  /// Answers how many bytes were read.
  KPX_API std::size_t readAll(std::string_view bytes, bool isWhole,
                              const std::function<void(ErrorLogEntry&&)>& take);

 private:
  struct Form {
    std::vector<CString> literals;  // before, between and behind the fields
    bool hasNumber = false;
  };
  void addForm(std::u16string_view text, bool hasNumber);
  void addTranslation(std::u16string_view text, std::u16string_view german, bool hasNumber);
  static bool readForm(const Form& form, std::u16string_view line, ErrorLogEntry& entry);

  std::vector<Form> forms_;
  std::size_t lineCount_ = 0;
};

/// Which entries of a log are wanted; a field that is empty wants all. Broken lines are wanted only
/// when no filter is set, since nobody knows what they belong to.
struct KPX_API ErrorLogFilter {
  std::vector<std::int32_t> numbers;
  CString user;       // with wildcards and without case
  CString project;    // likewise
  double from = 0.0;  // time doubles, both included
  double to = 0.0;

  bool isSet() const noexcept;
  bool wants(const ErrorLogEntry& entry) const;
};

}  // namespace kpx

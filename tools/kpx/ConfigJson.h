#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/kpx/Configurations.h"

namespace kpx::tool {

// Configurations as JSON that a person can read and change, and from which the XML comes back
// with nothing lost:
//
//   {"format": "kpx-configurations", "version": 1,
//    "encoding": "windows-1252", "byte_order_mark": true,            (if not UTF-8; without)
//    "configurations": [
//      {"class": "CFGHeader", "element": "CFGConfigCFGClassHeader",
//       "before": "<Project>\r\n",                                   (if not the usual)
//       "settings": [{"key": "Class", "value": "x", "type": 4, "caption": "…", "category": "…"}]}],
//    "after": "</Project>\r\n"}                                      (if not the usual)
//
// What stands around the configurations is kept as it is: before each one, and after the last.
// Attributes that are 0, empty or "no time" are left out; the others follow under their names in
// lower case with underscores. "class_record" and "value_record" hold those of a "CFGClass" and a
// "CFGValue". An attribute that the file lacks is null; one whose text is not what a number or a
// time looks like is {"text": "007"}. A text with half a surrogate pair is {"utf16": "61 d800"}.

/// The selected configurations as JSON, with the XML around all of them. What cannot be kept (a
/// comment or a foreign element or attribute inside a configuration) raises a Failure with its
/// place.
std::string jsonOf(const Configurations& configurations);

/// The XML that a JSON stands for, and what in it a person may have mistyped: keys and values that
/// the suite would not read or not write so.
struct XmlFromJson {
  std::string bytes;
  std::vector<std::string> notes;  // the first five, each with its place
  std::size_t noteCount = 0;       // all of them
};

/// The XML file of a JSON. Anything wrong in it raises a Failure with its place.
XmlFromJson xmlFromJson(std::string_view json, const std::string& source);

/// How the XML that comes back from a JSON first differs from the file that the JSON was made
/// from, as a sentence with its line; empty if it does not. The content is the same: spelling
/// differs, since JSON does not keep it. Of a selection only the selected configurations count.
std::string differenceFromJson(const std::string& json, Configurations& configurations,
                               std::string_view bytes, const Selection& selection);

}  // namespace kpx::tool

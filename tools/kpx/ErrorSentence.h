#pragma once

#include <string>
#include <string_view>

namespace kpx::tool {

/// What a user's program was doing when an operation of the error table failed, as a clause: "a
/// configuration was being written to XML".
std::string errorSentence(std::string_view operation);

}  // namespace kpx::tool

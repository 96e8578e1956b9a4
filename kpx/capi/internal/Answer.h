#pragma once

#include <cstdint>
#include <string_view>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/settings/document/ConfigDocument.h"
#include "kpx/text/CString.h"
#include "kpx_c.h"

/// A document as other programs hold it. The marker tells it from what is none.
struct kpx_c_document {
  static constexpr std::uint64_t validMarker = 0x6b70785f646f6331;

  std::uint64_t marker = validMarker;
  kpx::ConfigDocument document;
};

namespace kpx::capi {

/// Why a call failed. Without a destructor, so that no thread keeps the library in memory.
struct LastError {
  static constexpr std::int32_t longestText = 400;

  std::int32_t code;
  std::int32_t number;
  std::int32_t line;
  std::int32_t column;
  std::int32_t length;
  char16_t text[longestText];
};
const LastError& lastError() noexcept;

/// Notes the failure for `kpx_c_last_error` and answers its code.
std::int32_t fail(std::int32_t code, std::u16string_view text, std::int32_t number = 0,
                  std::int32_t line = 0, std::int32_t column = 0) noexcept;
/// The same with the code of an outcome. `subject` is what the sentence is about.
std::int32_t fail(const DocumentResult& result, const CString& subject);

/// Runs a function of the interface. What it throws is reported under its number and answered with
/// KPX_C_FAILED.
template <class Body>
std::int32_t answer(OperationNumber operation, Body&& body) noexcept {
  constexpr std::int32_t thrown = INT32_MIN;
  const std::int32_t code = Guarded(operation, thrown, std::forward<Body>(body));
  if (code != thrown) return code;
  return fail(KPX_C_FAILED, u"an unexpected failure, such as missing memory", operation.value());
}

/// An argument that is a text; `isValid` tells whether it is one.
struct TextArgument {
  TextArgument(const kpx_c_unit* units, std::int32_t length) noexcept;

  bool isValid = false;
  std::u16string_view text;
};

/// Whether a pointer leads to a document.
bool isDocument(const kpx_c_document* document) noexcept;

std::int32_t failArgument() noexcept;
std::int32_t failDocument() noexcept;

/// Stores a text in the caller's buffer, by the rules that the header tells.
std::int32_t store(std::u16string_view text, kpx_c_unit* buffer, std::int32_t capacity,
                   std::int32_t* length) noexcept;
/// Whether there is such a buffer; it holds the empty text then.
bool clearBuffer(kpx_c_unit* buffer, std::int32_t capacity, std::int32_t* length) noexcept;

/// Gives a text that lives as long as the library.
std::int32_t lend(std::u16string_view text, const kpx_c_unit** units,
                  std::int32_t* length) noexcept;

/// Sees to it that there are texts: the built-in ones if the program has not loaded any.
void needTexts();

}  // namespace kpx::capi

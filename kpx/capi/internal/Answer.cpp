#include "kpx/capi/internal/Answer.h"

#include <algorithm>

#include "kpx/support/texts/TextStore.h"

namespace kpx::capi {
namespace {

constinit thread_local LastError failure{};

std::int32_t codeOf(DocumentOutcome outcome) noexcept {
  switch (outcome) {
    case DocumentOutcome::ok:
      return KPX_C_OK;
    case DocumentOutcome::notRead:
      return KPX_C_NOT_READ;
    case DocumentOutcome::notText:
      return KPX_C_NOT_TEXT;
    case DocumentOutcome::illFormed:
      return KPX_C_ILL_FORMED;
    case DocumentOutcome::notWritten:
    case DocumentOutcome::notEncodable:
      return KPX_C_NOT_WRITTEN;
    case DocumentOutcome::changed:
    case DocumentOutcome::locked:
      return KPX_C_CHANGED;
    case DocumentOutcome::refused:
    case DocumentOutcome::noConfiguration:
    case DocumentOutcome::unknownClass:
    case DocumentOutcome::notStored:
      return KPX_C_REFUSED;
    case DocumentOutcome::unknownKey:
      return KPX_C_UNKNOWN_KEY;
    case DocumentOutcome::wrongType:
      return KPX_C_WRONG_TYPE;
    case DocumentOutcome::badValue:
      return KPX_C_BAD_VALUE;
    case DocumentOutcome::badStoredValue:
      return KPX_C_BAD_STORED_VALUE;
    case DocumentOutcome::severalColumns:
      return KPX_C_KEY_TWICE;
  }
  return KPX_C_FAILED;
}

}  // namespace

const LastError& lastError() noexcept { return failure; }

std::int32_t fail(std::int32_t code, std::u16string_view text, std::int32_t number,
                  std::int32_t line, std::int32_t column) noexcept {
  text = text.substr(0, LastError::longestText);
  failure.code = code;
  failure.number = number;
  failure.line = line;
  failure.column = column;
  failure.length = static_cast<std::int32_t>(text.size());
  std::ranges::copy(text, failure.text);
  return code;
}

std::int32_t fail(const DocumentResult& result, const CString& subject) {
  const CString reason = u" " + describe(result);
  // Of a long path the end tells more than its front, and why it failed most of all.
  const int room = std::max(LastError::longestText - reason.GetLength(), 2);
  const bool fits = subject.GetLength() <= room;
  return fail(codeOf(result.outcome), (fits ? subject : u"…" + subject.Right(room - 1)) + reason, 0,
              result.line, result.column);
}

TextArgument::TextArgument(const kpx_c_unit* units, std::int32_t length) noexcept
    : isValid(units ? length >= -1 : length == 0) {
  if (!isValid || !units) return;
  text = length < 0 ? std::u16string_view(units)
                    : std::u16string_view(units, static_cast<std::size_t>(length));
  isValid = text.size() <= INT32_MAX;
}

bool isDocument(const kpx_c_document* document) noexcept {
  return document && document->marker == kpx_c_document::validMarker;
}

std::int32_t failArgument() noexcept {
  return fail(KPX_C_BAD_ARGUMENT, u"an argument is null or out of range");
}

std::int32_t failDocument() noexcept {
  return fail(KPX_C_BAD_DOCUMENT, u"the document is none, or closed");
}

bool clearBuffer(kpx_c_unit* buffer, std::int32_t capacity, std::int32_t* length) noexcept {
  if (length) *length = 0;
  if (buffer && capacity > 0) *buffer = 0;
  return length && (buffer ? capacity >= 0 : capacity == 0);
}

std::int32_t store(std::u16string_view text, kpx_c_unit* buffer, std::int32_t capacity,
                   std::int32_t* length) noexcept {
  *length = static_cast<std::int32_t>(text.size());
  if (capacity < *length) return KPX_C_TRUNCATED;
  std::ranges::copy(text, buffer);
  if (capacity > *length) buffer[text.size()] = 0;
  return KPX_C_OK;
}

std::int32_t lend(std::u16string_view text, const kpx_c_unit** units,
                  std::int32_t* length) noexcept {
  *units = text.data();
  *length = static_cast<std::int32_t>(text.size());
  return KPX_C_OK;
}

void needTexts() {
  constexpr std::int32_t anyBuiltInText = 1;
  [[maybe_unused]] static const bool isDone = [] {
    if (storedText(anyBuiltInText).empty()) addBuiltInTexts();
    return true;
  }();
}

}  // namespace kpx::capi

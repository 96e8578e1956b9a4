#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CodePage.h"
#include "kpx/text/CString.h"

namespace kpx {

/// The code page of an encoding's name, without regard to case; 0 if the name is not known.
KPX_API int encodingCodePage(std::u16string_view name) noexcept;

/// The usual name of a code page; empty if it is not known.
KPX_API CString encodingName(int codePage);

/// The name in the XML declaration that the document begins with, in quotes of either kind;
/// empty if there is none. A part of `document`.
KPX_API std::u16string_view declaredEncoding(std::u16string_view document) noexcept;

/// Why bytes were not taken for a text at all.
enum class DecodingRefusal : unsigned char {
  none,
  binary,    // full of zeros, as no text is
  tooLarge,  // 2^31 bytes or more; in UTF-16, 2^31 units
};

/// A document as it was read from bytes, and everything that was wrong with them.
struct DecodedText {
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  CString text;                   // without the byte-order mark
  CString declared;               // the encoding's name in the XML declaration
  int codePage = 0;               // what the bytes were read as
  bool mark = false;              // they began with a byte-order mark
  bool declarationWrong = false;  // the declared encoding is unknown, or not that of the bytes
  bool guessed = false;           // non-ASCII bytes, and neither mark nor declaration to go by
  bool cutShort = false;          // the end is in the middle of a character

  std::size_t firstInvalid = none;  // offset of the first byte that is part of no character
  std::size_t invalid = 0;          // how many of them there are; U+FFFD stands for each
  std::size_t nulls = 0;            // characters 0 that were removed
  std::size_t firstNull = none;     // offset of the first of them
  // Bytes that are read well but would be written otherwise, where an encoding has several ways to
  // write a character, and the offset of the first of them.
  std::size_t respelled = 0;
  std::size_t firstRespelled = none;
  DecodingRefusal refusal = DecodingRefusal::none;  // the text is empty then
};

/// Reads a document from the bytes of a file. The encoding is taken from a byte-order mark, else
/// from the XML declaration, else it is UTF-8 where the bytes allow it and Windows-1252 where
/// not. ISO-8859-1, Windows-1252 and UTF-16 lose nothing, whatever the bytes: lone surrogates
/// stay as they are and the undefined bytes of Windows-1252 become the control characters of the
/// same numbers.
KPX_API DecodedText decodeMarkupBytes(std::string_view bytes);
/// The same; the new text takes the memory of `reuse` where that fits. Bytes that are refused
/// leave `reuse` as it was.
KPX_API DecodedText decodeMarkupBytes(std::string_view bytes, CString&& reuse);

/// How a document is stored.
struct MarkupEncoding {
  int codePage = CodePage::utf8;
  bool mark = false;  // begin with a byte-order mark; encodings that have none ignore it
};

/// Encodes a document piece by piece, so that no second copy of a long text is needed.
///
/// A character that the encoding cannot hold is written as a numeric reference. Where markup
/// takes no reference something is lost: in names "_" stands for the character; comments,
/// processing instructions and declarations show the reference as text. What no reference can name
/// becomes U+FFFD or, where that cannot be written either, "?": a lone surrogate, but in UTF-16,
/// and a unit 0, which readers remove. CDATA sections are interrupted for the reference, so their
/// data stays.
class KPX_API MarkupEncoder {
 public:
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  /// The text must outlive the encoder.
  MarkupEncoder(std::u16string_view text, MarkupEncoding encoding);
  ~MarkupEncoder();
  MarkupEncoder(const MarkupEncoder&) = delete;
  MarkupEncoder& operator=(const MarkupEncoder&) = delete;

  /// False for a code page that neither the library nor the system knows.
  bool usable() const noexcept;
  /// Replaces `bytes` with the next ones; false, and no bytes, after the last.
  bool next(std::string& bytes);

  /// Characters written as references so far, those lost, and the offset of the first lost one.
  std::size_t references() const noexcept;
  std::size_t losses() const noexcept;
  std::size_t firstLoss() const noexcept;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

struct EncodedText {
  bool usable = false;  // false: the code page is not known, and there are no bytes
  std::string bytes;
  std::size_t references = 0;
  std::size_t losses = 0;
  std::size_t firstLoss = MarkupEncoder::none;
};

/// Encodes a whole document by the rules of `MarkupEncoder`.
KPX_API EncodedText encodeMarkupText(std::u16string_view text, MarkupEncoding encoding = {});

}  // namespace kpx

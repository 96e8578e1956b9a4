#include <algorithm>
#include <bit>
#include <string_view>
#include <utility>

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"
#include "kpx/xml/internal/Outcome.h"
#include "kpx/xml/Operations.h"

namespace kpx {

namespace {

using namespace std::literals;
using detail::addOutcome;

constexpr bool isUtf16(int codePage) noexcept {
  return codePage == CodePage::utf16LittleEndian || codePage == CodePage::utf16BigEndian;
}

constexpr bool hasForeignByteOrder(int codePage) noexcept {
  constexpr int foreign = std::endian::native == std::endian::little ? CodePage::utf16BigEndian
                                                                     : CodePage::utf16LittleEndian;
  return codePage == foreign;
}

void addFileError(CString& result, std::u16string_view doing, const CString& path,
                  const CString& why, int systemCode = 0) {
  CString message(doing);
  message += u" '";
  message += path;
  message += u"': ";
  message += why;
  addOutcome(result, {u"file_error", u"msg", message, u"n", systemCode});
}

constexpr std::int64_t asNumber(std::size_t count) noexcept {
  return static_cast<std::int64_t>(count);
}

void addLoss(CString& result, const CString& encoding, std::size_t count, std::size_t first) {
  addOutcome(result, {u"conversion_loss", encoding.IsEmpty() ? u""sv : u"encoding"sv, encoding,
                      u"count", asNumber(count), asNumber(first)});
}

void addReadOutcomes(CString& result, const DecodedText& decoded) {
  const CString name = encodingName(decoded.codePage);
  const std::int64_t length = decoded.text.GetLength();
  addOutcome(result, {u"read", u"encoding", name, u"length", length});
  if (decoded.mark) addOutcome(result, {u"bom", u"encoding", name});
  if (hasForeignByteOrder(decoded.codePage)) addOutcome(result, {u"endian_swap"});
  if (decoded.guessed && decoded.codePage == CodePage::utf8) {
    addOutcome(result, {u"utf8_detection"});
  }
  if (decoded.codePage != CodePage::utf8 && !isUtf16(decoded.codePage)) {
    addOutcome(result, {u"converted_from", u"encoding", name, u"length", length});
  }
  if (decoded.cutShort) addOutcome(result, {u"truncation_error"});
  if (decoded.nulls != 0) {
    addOutcome(result, {u"nulls_removed", {}, {}, u"count", asNumber(decoded.nulls)});
  }
  if (decoded.invalid != 0) addLoss(result, {}, decoded.invalid, decoded.firstInvalid);
  if (decoded.respelled != 0) {
    addOutcome(result, {u"respelled", u"encoding", name, u"count", asNumber(decoded.respelled),
                        asNumber(decoded.firstRespelled)});
  }
}

void addWriteOutcomes(CString& result, const MarkupEncoder& encoder, MarkupEncoding encoding,
                      std::int64_t length) {
  const CString name = encodingName(encoding.codePage);
  addOutcome(result, {u"write", u"encoding", name, u"length", length});
  if (encoding.mark) addOutcome(result, {u"bom", u"encoding", name});
  if (hasForeignByteOrder(encoding.codePage)) addOutcome(result, {u"endian_swap"});
  if (encoding.codePage != CodePage::utf8 && !isUtf16(encoding.codePage)) {
    addOutcome(result, {u"converted_to", u"encoding", name, u"length", length});
  }
  if (encoder.losses() != 0) addLoss(result, name, encoder.losses(), encoder.firstLoss());
}

CString refusalSentence(DecodingRefusal refusal) {
  return refusal == DecodingRefusal::binary ? u"it is a binary file" : u"the file is too large";
}

}  // namespace

bool CMarkup::Load(const CString& path) {
  return Guarded("CMarkup::Load"_xml, false, [&] {
    result_.Empty();
    FileBytes bytes;
    FileOrigin origin;
    if (const FileResult read = origin.read(path, bytes); !read) {
      addFileError(result_, u"cannot read", path, read.message(), read.systemCode);
      return false;
    }
    DecodedText decoded = decodeMarkupBytes(bytes, std::move(doc_));
    if (decoded.refusal != DecodingRefusal::none) {
      addFileError(result_, u"cannot read", path, refusalSentence(decoded.refusal));
      return false;
    }
    // Given back before the parse needs memory.
    bytes = FileBytes();
    addReadOutcomes(result_, decoded);
    origin_ = std::move(origin);
    doc_ = std::move(decoded.text);
    loaded_ = {decoded.codePage,
               decoded.mark,
               std::move(decoded.declared),
               decoded.invalid + decoded.nulls,
               std::min(decoded.firstInvalid, decoded.firstNull),
               decoded.respelled,
               decoded.firstRespelled};
    return x_ParseDoc();
  });
}

bool CMarkup::Save(const CString& path, int flags) {
  return Guarded("CMarkup::Save"_xml, false, [&] {
    const bool allowLoss = (flags & MarkupFlag::allowLoss) != 0;
    result_.Empty();
    const CString declared(declaredEncoding(doc_));
    MarkupEncoding encoding;
    if (loaded_.codePage != 0 && (declared.IsEmpty() || declared == loaded_.declared)) {
      encoding = {loaded_.codePage, loaded_.mark};
    } else if (!declared.IsEmpty()) {
      const int codePage = encodingCodePage(declared);
      encoding = {codePage, isUtf16(codePage) || (codePage == CodePage::utf8 && loaded_.mark)};
    }

    const bool isRespelled = loaded_.respelled != 0 && encoding.codePage == loaded_.codePage;
    if (!allowLoss && (loaded_.unread != 0 || isRespelled)) {
      addFileError(result_, u"cannot write", path,
                   u"not all of the file that was read can be kept");
      addLoss(result_, {}, loaded_.unread != 0 ? loaded_.unread : loaded_.respelled,
              loaded_.unread != 0 ? loaded_.firstUnread : loaded_.firstRespelled);
      return false;
    }

    MarkupEncoder encoder(doc_, encoding);
    if (!encoder.usable()) {
      addFileError(result_, u"cannot write", path,
                   u"the declared encoding '" + declared + u"' is not known");
      return false;
    }
    const auto writeContent = [&](OutputFile& file) {
      FileResult result;
      for (std::string piece; result && encoder.next(piece);) {
        // What is refused is read to its end all the same, for the count.
        if (allowLoss || encoder.losses() == 0) result = file.write(piece);
      }
      if (result && !allowLoss && encoder.losses() != 0) result.status = FileStatus::notEncodable;
      return result;
    };
    const bool keepsChanged = (flags & MarkupFlag::unlessChanged) != 0;
    const FileResult written = origin_.replace(
        path, writeContent, keepsChanged ? SaveMode::unlessChanged : SaveMode::overwrite);
    if (!written) {
      addFileError(result_, u"cannot write", path, written.message(), written.systemCode);
      if (encoder.losses() != 0) {
        addLoss(result_, encodingName(encoding.codePage), encoder.losses(), encoder.firstLoss());
      }
      return false;
    }
    addWriteOutcomes(result_, encoder, encoding, doc_.GetLength());
    return true;
  });
}

}  // namespace kpx

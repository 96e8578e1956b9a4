#include "kpx/xml/Encoding.h"

#include <algorithm>
#include <iterator>

#include "kpx/report/Error.h"
#include "kpx/text/CaseFold.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Operations.h"

namespace kpx {

namespace {

// One name a row: two digits for its length, five for the code page, then the name. The first
// name of a code page is the one that is written.
constexpr std::u16string_view encodings[] = {
    u"0565001UTF-8",
    u"0465001UTF8",
    u"1765001unicode-1-1-utf-8",
    u"0601200UTF-16",
    u"0801200UTF-16LE",
    u"0501200UTF16",
    u"0701200unicode",
    u"1501200ISO-10646-UCS-2",
    u"0501200UCS-2",
    u"0801201UTF-16BE",
    u"1101201unicodeFFFE",
    u"0612000UTF-32",
    u"0812000UTF-32LE",
    u"0512000UCS-4",
    u"1512000ISO-10646-UCS-4",
    u"0812001UTF-32BE",
    u"0820127US-ASCII",
    u"0520127ASCII",
    u"1420127ANSI_X3.4-1968",
    u"0920127ISO646-US",
    u"1028591ISO-8859-1",
    u"0928591ISO8859-1",
    u"1028591ISO_8859-1",
    u"0828591ISO88591",
    u"0628591latin1",
    u"0228591l1",
    u"0628591IBM819",
    u"0528591CP819",
    u"1028592ISO-8859-2",
    u"0628592latin2",
    u"1028593ISO-8859-3",
    u"0628593latin3",
    u"1028594ISO-8859-4",
    u"0628594latin4",
    u"1028595ISO-8859-5",
    u"0828595cyrillic",
    u"1028596ISO-8859-6",
    u"0628596arabic",
    u"1028597ISO-8859-7",
    u"0528597greek",
    u"1028598ISO-8859-8",
    u"0628598hebrew",
    u"1028599ISO-8859-9",
    u"0628599latin5",
    u"1128600ISO-8859-10",
    u"0628600latin6",
    u"1128603ISO-8859-13",
    u"1128604ISO-8859-14",
    u"1128605ISO-8859-15",
    u"0728605latin-9",
    u"0628605latin9",
    u"1128606ISO-8859-16",
    u"1201250windows-1250",
    u"0601250CP1250",
    u"1201251windows-1251",
    u"0601251CP1251",
    u"1201252windows-1252",
    u"0601252CP1252",
    u"0601252x-ansi",
    u"0401252ANSI",
    u"1201253windows-1253",
    u"0601253CP1253",
    u"1201254windows-1254",
    u"0601254CP1254",
    u"1201255windows-1255",
    u"0601255CP1255",
    u"1201256windows-1256",
    u"0601256CP1256",
    u"1201257windows-1257",
    u"0601257CP1257",
    u"1201258windows-1258",
    u"0601258CP1258",
    u"1100874windows-874",
    u"0700874TIS-620",
    u"0600437IBM437",
    u"0500437CP437",
    u"0600850IBM850",
    u"0500850CP850",
    u"0600852IBM852",
    u"0500852CP852",
    u"0600855IBM855",
    u"0600857IBM857",
    u"0600858IBM858",
    u"0800858IBM00858",
    u"0600862IBM862",
    u"0600866IBM866",
    u"0500866CP866",
    u"0620866KOI8-R",
    u"0621866KOI8-U",
    u"0910000macintosh",
    u"0310000mac",
    u"0900932Shift_JIS",
    u"0900932Shift-JIS",
    u"0400932SJIS",
    u"1100932Windows-31J",
    u"0651932EUC-JP",
    u"1150220ISO-2022-JP",
    u"0300936GBK",
    u"0600936GB2312",
    u"0500936CP936",
    u"0754936GB18030",
    u"0400950Big5",
    u"0500950CP950",
    u"1400949ks_c_5601-1987",
    u"0500949CP949",
    u"0651949EUC-KR",
};

constexpr std::size_t nameStart = 7;

constexpr int digits(std::u16string_view row, std::size_t first, std::size_t count) noexcept {
  int value = 0;
  for (std::size_t i = first; i < first + count; ++i) value = value * 10 + (row[i] - u'0');
  return value;
}

constexpr int codePageOf(std::u16string_view row) noexcept { return digits(row, 2, 5); }

static_assert(std::all_of(std::begin(encodings), std::end(encodings),
                          [](std::u16string_view row) {
                            return row.size() ==
                                   nameStart + static_cast<std::size_t>(digits(row, 0, 2));
                          }),
              "every row tells the length of its name");

constexpr bool isSpace(char16_t unit) noexcept {
  return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n';
}

std::u16string_view withoutSpace(std::u16string_view text) noexcept {
  std::size_t count = 0;
  while (count < text.size() && isSpace(text[count])) ++count;
  return text.substr(count);
}

}  // namespace

int encodingCodePage(std::u16string_view name) noexcept {
  for (const std::u16string_view row : encodings) {
    if (row.size() == nameStart + name.size() &&
        detail::compareTextNoCase(row.substr(nameStart), name) == 0) {
      return codePageOf(row);
    }
  }
  return 0;
}

CString encodingName(int codePage) {
  const auto* const row =
      std::find_if(std::begin(encodings), std::end(encodings),
                   [&](std::u16string_view each) { return codePageOf(each) == codePage; });
  return row != std::end(encodings) ? CString(row->substr(nameStart)) : CString();
}

std::u16string_view declaredEncoding(std::u16string_view document) noexcept {
  constexpr std::u16string_view opening = u"<?xml";
  // Strictly the declaration has to be the very first; files where a mark or an empty line got
  // before it are read all the same.
  if (document.starts_with(u'\xFEFF')) document.remove_prefix(1);
  document = withoutSpace(document);
  if (!document.starts_with(opening)) return {};
  document.remove_prefix(opening.size());
  // What follows are attributes, each with white space before it.
  while (!document.empty() && isSpace(document.front())) {
    document = withoutSpace(document);
    std::size_t nameEnd = 0;
    while (nameEnd < document.size() && document[nameEnd] != u'=' && document[nameEnd] != u'?' &&
           !isSpace(document[nameEnd])) {
      ++nameEnd;
    }
    const std::u16string_view name = document.substr(0, nameEnd);
    document = withoutSpace(document.substr(nameEnd));
    if (!document.starts_with(u'=')) return {};
    document = withoutSpace(document.substr(1));
    if (!document.starts_with(u'"') && !document.starts_with(u'\'')) return {};
    const std::size_t valueEnd = document.find(document.front(), 1);
    if (valueEnd == document.npos) return {};
    if (name == u"encoding") return document.substr(1, valueEnd - 1);
    document.remove_prefix(valueEnd + 1);
  }
  return {};
}

int CMarkup::GetEncodingCodePage(MCD_CSTR encodingName) { return encodingCodePage(encodingName); }

CString CMarkup::GetDeclaredEncoding(MCD_CSTR document) {
  return Guarded("CMarkup::GetDeclaredEncoding"_xml, CString(),
                 [&] { return CString(declaredEncoding(document)); });
}

}  // namespace kpx

// Numbers, dates and single texts.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kpx/support/files/CKpxBaseObjectsUtil.h"
#include "kpx/support/objects/MakeUuidString.h"
#include "kpx/text/CKpxCalendar.h"
#include "kpx/text/GpsTime.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/PrintScan.h"
#include "kpx/text/TextTools.h"
#include "tests/golden/Golden.h"

namespace kpx {
namespace {

using Limits = std::numeric_limits<double>;

std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }

/// The same doubles everywhere: any bits, magnitudes of everyday work, and decimal fractions whose
/// next decimal is 5.
std::vector<double> manyDoubles() {
  std::mt19937_64 random(20210305);
  std::vector<double> values;
  for (int i = 0; i < 200'000; ++i) {
    const std::uint64_t bits = random();
    if (i % 4 == 0) {
      values.push_back(std::bit_cast<double>(bits));
    } else if (i % 4 == 1) {
      static constexpr double powers[] = {1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
      const std::uint64_t endingWithFive = bits % 100'000'000'000 / 10 * 10 + 5;
      values.push_back(static_cast<double>(endingWithFive) / powers[bits >> 61]);
    } else {
      const std::uint64_t exponent = 1023 - 24 + (bits >> 52) % 64;
      values.push_back(std::bit_cast<double>((bits & 0x800FFFFFFFFFFFFFu) | exponent << 52));
    }
  }
  return values;
}

TEST(NumberGolden, TextsOfReals) {
  GoldenLines lines;
  // Halves, both sides of powers of ten and of the changes of form, and the ends of the range.
  for (const CString& text :
       split(u"0 -0 1 -1 0.5 1.5 2.5 -2.5 0.125 0.375 0.05 0.15 0.25 0.35 0.045 1.005 1.115 2.675 "
             u"8.345 -8.345 1e-5 0.00099999999999999 0.01 0.02 0.09999999999999999 0.1 0.3 "
             u"0.99999999999999989 0.9999999999999995 0.999 9.9999999999999982 99.995 999.9995 1e3 "
             u"1000.5 123456.789 314150 3456789.1235 5400000.0005 32500123.4565 -123456789012 1e14 "
             u"99999999999999.5 999999999999999 999999999999999.9 1e15 9007199254740993 1e16 1e20 "
             u"1e22 1e23 8888.88888 8888.8888800001 4294967295 1e49 1e50 1.0000000000000002e50 "
             u"1e99 1e100 -1e100 1.7976931348623157e308 -1.7976931348623157e308 "
             u"2.2250738585072014e-308 2.2250738585072011e-308 4.9406564584124654e-324 "
             u"-4.9406564584124654e-324 1e-300 inf -inf nan",
             u' ')) {
    const double value = kpxwtof(text);
    lines.append(u"%016llX", bitsOf(value));
    for (int decimals = -3; decimals <= 15; ++decimals) {
      lines.append(u"\t%s", utlDoubleAsText(value, decimals, u'.'));
    }
    lines.add(u"");
  }
  expectGolden("reals.tsv", lines.bytes());
}

TEST(NumberGolden, ManyReals) {
  const std::vector<double> values = manyDoubles();
  GoldenLines lines;
  CString text;
  for (int decimals = -3; decimals <= 15; ++decimals) {
    GoldenSum texts;
    GoldenSum read;
    GoldenSum rounded;
    for (std::size_t i = 0; i < values.size(); ++i) {
      const double value = values[i];
      detail::doubleAsTextInto(text, value, decimals, i % 2 == 0 ? u'.' : u',');
      texts.add(text);
      // Texts of what is not finite are read as what they say; which NaN that is counts for nobody.
      const double back = detail::textAsDouble(text);
      read.add(std::isnan(back) ? 0.0 : back);
      const double round = kpxRunde(value, decimals);
      rounded.add(std::isnan(round) ? 0.0 : round);
    }
    lines.add(u"%d decimals: texts %08X, read back %08X, rounded %08X", decimals, texts.crc(),
              read.crc(), rounded.crc());
  }
  expectGolden("many_reals.txt", lines.bytes());
}

/// Every value in every format.
template <class Value>
void addPrinted(GoldenLines& lines, const CString& formats, std::initializer_list<Value> values) {
  for (const CString& format : split(formats, u',')) {
    lines.append(u"%s", format);
    for (const Value& value : values) {
      lines.append(u"\t");
      lines.append(format, value);
    }
    lines.add(u"");
  }
}

TEST(NumberGolden, PrintFamily) {
  GoldenLines lines;
  addPrinted(lines,
             u"%g,%e,%f,%a,%.0f,%#.0f,%.1f,%+012.3f,%-14.5e|,% g,%#g,%.17g,%10.3G,%.0e,%012g,%.20f,"
             u"%-+9.2F|",
             {0.0, -0.0, 0.5, 2.5, -1234.5678, 1e-5, 123456.5, 999999.5, 1e21, Limits::denorm_min(),
              Limits::infinity(), -Limits::infinity()});
  const CString integers =
      u"%d,%i,%u,%x,%#X,%#o,%12d,%-12d|,%012d,%+d,% d,%.14d,%hd,%hhu,%ld,%lld,%I64x,%zu";
  addPrinted<std::int32_t>(lines, integers, {0, 1, -1, 255, 65536, INT32_MAX, INT32_MIN});
  addPrinted<std::int64_t>(lines, integers, {1, -1, INT64_MAX, INT64_MIN});
  const CString texts = u"%s,%S,%12s|,%-12s|,%.3s,%ls";
  addPrinted<CString>(lines, texts, {u"", u"äöü€", u"\U0001F600 Maß"});
  addPrinted<std::string>(lines, texts, {"", "äöü€", "\U0001F600 Maß"});
  addPrinted<CString>(lines, u"%s",
                      {utlLongAsText(0), utlLongAsText(INT32_MAX), utlLongAsText(INT32_MIN)});
  expectGolden("print.txt", lines.bytes());
}

TEST(NumberGolden, ScanFamily) {
  GoldenLines lines;
  for (const CString& text :
       split(u"0| -12abc|1e3|1,5|.5|0x1F|0x1.8p1|1e400|-1e-400|4.9406564584124654e-324|"
             u"2.4703282292062328e-324|9007199254740993|2147483648|-2147483649|"
             u"99999999999999999999|---|inf|1.#INF|2.e-002|1.e+020|\u00A01|١|12 ä34|"
             u"0.1234567890123456789012345678901234567890|017",
             u'|')) {
    std::int32_t decimal = 0;
    std::int32_t any = 0;
    std::uint16_t small = 0;
    double real = 0.0;
    float single = 0.0f;
    CString word;
    const int filled[] = {kpxswscanf(text, u"%d%s", &decimal, &word), kpxswscanf(text, u"%i", &any),
                          kpxswscanf(text, u"%hu", &small), kpxswscanf(text, u"%lf", &real),
                          kpxsscanf(text.utf8(), "%f", &single)};
    lines.add(u"%s\t%d %d %s\t%d %d\t%d %u\t%d %016llX\t%d %08X\t%016llX\t%016llX\t%d", text,
              filled[0], decimal, word, filled[1], any, filled[2], small, filled[3], bitsOf(real),
              filled[4], std::bit_cast<std::uint32_t>(single), bitsOf(kpxwtof(text)),
              bitsOf(utlTextAsDouble(text)), utlTextAsLong(text));
  }
  expectGolden("scan.tsv", lines.bytes());
}

TEST(NumberGolden, DatesAndTimes) {
  GoldenLines lines;
  for (const double value :
       {0.0, 20210305083334.0, 20210305083360.0, 19991231235959.0, 20000229120000.0,
        15821015000000.0, 10101000000.0, 99991231235959.0, -20210305083334.0, 20210305083334.75,
        1e18, Limits::quiet_NaN(), 18991229060000.0}) {
    const TIME time = CKpxBaseObjectsUtil::Double2Time(value);
    const TIME tenths = CKpxBaseObjectsUtil::Double2TimeEx(value);
    const DateTime at = unpackTime(time);
    const CKpxCalendar::Week isoWeek = CKpxCalendar::week(at.year, at.month, at.day);
    int week = 0;
    double second = 0.0;
    utlGPSDate2Time(at.year, at.month, at.day, at.hour, at.minute, at.second + 0.125, week, second);
    DateTime back;
    CKpxCalendar::dateOfJulianDay(CKpxCalendar::julianDay(at), back);
    lines.add(u"%s\t%s\t%s\t%d %d\t%s\t%d %d %d-W%02d\t%.6f %s\t%d %s\t%s",
              CKpxBaseObjectsUtil::TimeDouble2Str(value), CKpxBaseObjectsUtil::Date2Str(time),
              CKpxBaseObjectsUtil::Time2Str(time), tenths.date, tenths.time,
              utlDoubleAsText(CKpxBaseObjectsUtil::Time2DoubleEx(tenths), allDigits, u'.'),
              CKpxCalendar::weekday(at.year, at.month, at.day),
              CKpxCalendar::dayOfYear(at.year, at.month, at.day), isoWeek.year, isoWeek.week,
              CKpxCalendar::julianDay(at),
              detail::timeDoubleText(detail::doubleOfTime(packTime(back))), week,
              utlDoubleAsText(second, allDigits, u'.'),
              utlDoubleAsText(CKpxBaseObjectsUtil::TimeDouble2OleDate(value), 8, u'.'));
  }
  std::mt19937_64 random(19800106);
  GoldenSum sum;
  for (int i = 0; i < 20'000; ++i) {
    const double seconds = static_cast<double>(random() % 253'000'000'000'000u) / 1000.0;
    DateTime at;
    double second = 0.0;
    utlGPSSec2Date(seconds, at.year, at.month, at.day, at.hour, at.minute, second);
    at.second = static_cast<int>(second);
    const double value = detail::doubleOfTime(packTime(at));
    sum.add(detail::timeDoubleText(value));
    sum.add(second);
    sum.add(CKpxCalendar::julianDay(at));
    sum.add(CKpxBaseObjectsUtil::TimeDouble2OleDate(value));
    sum.add(CKpxBaseObjectsUtil::OleDate2TimeDouble(seconds / 1e7));
    sum.add(CKpxBaseObjectsUtil::Str2TimeDouble(detail::timeDoubleText(value)));
  }
  lines.add(u"many: %08X", sum.crc());
  expectGolden("dates.tsv", lines.bytes());
}

TEST(NumberGolden, SmallTexts) {
  GoldenLines lines;
  CString rtf(u"{\\rtf} Straße €\U0001F600\xD800\t\r\n");
  kpxRtfEncode(rtf);
  lines.add(u"%s", rtf);
  const Guid guid{0x0A1B2C3D, 0x4E5F, 0x0061, {0xFF, 0, 1, 2, 3, 4, 5, 0xEE}};
  lines.add(u"%s", MakeUuidString(&guid));
  // Case is the library's own, so it depends on nobody's locale.
  GoldenSum upper;
  GoldenSum lower;
  for (int code = 1; code < 0x10000; ++code) {
    upper.add(CString(static_cast<char16_t>(code), 1).MakeUpper());
    lower.add(CString(static_cast<char16_t>(code), 1).MakeLower());
  }
  lines.add(u"upper case %08X, lower case %08X", upper.crc(), lower.crc());
  expectGolden("small_texts.txt", lines.bytes());
}

}  // namespace
}  // namespace kpx

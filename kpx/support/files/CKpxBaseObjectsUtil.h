#pragma once

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/text/TimeValue.h"

namespace kpx {

/// Times and small text helpers of the suite. Times come as `TIME` records of decimal-packed
/// integers and as time doubles whose digits read YYYYMMDDhhmmss; see TimeValue.h.
///
/// What does not fit the fields (NaN, doubles and texts too large) gives 0 fields and 0.0. Those
/// that make texts report a failure, as 910231 to 910238 in their order unless another number is
/// stated, and give the empty text.
class KPX_API CKpxBaseObjectsUtil {
 public:
  // --- packing ------------------------------------------------------------------------------

  static double Time2Double(const TIME& time) noexcept;
  /// Seconds of 60 are read as 59.
  static TIME Double2Time(double value) noexcept;
  /// The extended forms, whose time field counts tenths of a second.
  static double Time2DoubleEx(const TIME& time) noexcept;
  static TIME Double2TimeEx(double value) noexcept;
  /// Seconds of 60 become 59; nothing else is changed.
  static void correctTimeSeconds(TIME& time) noexcept;

  // --- texts --------------------------------------------------------------------------------

  /// DD.MM.YYYY
  static CString Date2Str(const TIME& time);
  /// hh:mm:ss, seconds of 60 as 59. A failure is reported as 53428 and gives the empty text.
  static CString Time2Str(const TIME& time);
  /// DD.MM.YYYY-hh:mm:ss
  static CString TimeDouble2Str(double value);
  /// From DD.MM.YYYY, or YYYY-MM-DD when there are at least two "-"; the time is 0. Fields that
  /// cannot be read are 0.
  static TIME Str2Date(const CString& text) noexcept;
  /// From hh:mm:ss; the date is 0. Seconds from 60 up carry into the minutes, these into the hours,
  /// and the hours wrap at 24.
  static TIME Str2Time(const CString& text) noexcept;
  /// From DD.MM.YYYY-hh:mm:ss, with the same carry, or from YYYY-MM-DD.
  static double Str2TimeDouble(const CString& text) noexcept;

  // --- clock and time zone ------------------------------------------------------------------

  /// The local date and time now, to the second. A failure (a null pointer, too) is reported as
  /// 53420 and leaves the record as it was.
  static void GetTimestamp(TIME* time) noexcept;
  /// The same as a time double. A failure is reported as 52040 and gives 0.0.
  static double GetTimestamp() noexcept;

  /// The same moment in the other time base, by the system's rules for the zone at that moment.
  /// The argument comes back as it is when the system knows no zone, and when it is no date and
  /// time that the system converts (years 1601 to 9999), and after a failure (910239, 910240).
  static double LocalTimeDouble2UTCTimeDouble(double value);
  static double UTCTimeDouble2LocalTimeDouble(double value);

  // --- files --------------------------------------------------------------------------------

  /// When a file or folder was created, last read and last written, as a time double in local time;
  /// UTC where the system knows no zone. 0.0 when there is no such file or its volume does not
  /// keep that time. Errors 910228, 910229, 910230.
  static double GetCreationFileTime(const CString& path) noexcept;
  static double GetLastAccessFileTime(const CString& path) noexcept;
  static double GetLastWriteFileTime(const CString& path) noexcept;

  // --- office dates -------------------------------------------------------------------------

  /// Days since 30.12.1899, the date type of office documents and databases; see TimeValue.h.
  static double TimeDouble2OleDate(double value) noexcept;
  static double OleDate2TimeDouble(double days) noexcept;

  // --- blanks -------------------------------------------------------------------------------

  /// The text without the blanks (U+0020 only) at its beginning, its end, or both.
  static CString TrimLeft(const CString& text);
  static CString TrimRight(const CString& text);
  static CString Trim(const CString& text);

  // --- paths --------------------------------------------------------------------------------

  /// Folder and file name with exactly one separator between them; "/" and "\" both count. When
  /// one of the two is empty, the other as it is.
  static CString CatPathFile(const CString& folder, const CString& file);

  /// The path below the system folder or the folder of the current project, without separators
  /// in front; the path as it is when it lies elsewhere or the folder is not known. Names compare
  /// without case.
  static CString CutSystemPath(const CString& path);
  static CString CutProjectPath(const CString& path);

  /// Answers a folder, or the empty text when it is not known.
  using FolderProvider = CString (*)();
  /// Whoever knows the folders registers here; nullptr, the default, means not known. The answer
  /// is the provider before.
  static FolderProvider setSystemFolderProvider(FolderProvider provider) noexcept;
  static FolderProvider setProjectFolderProvider(FolderProvider provider) noexcept;
};

}  // namespace kpx

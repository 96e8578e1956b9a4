#include <algorithm>
#include <cstdint>
#include <string>

#include "kpx/platform/ProgressDialog.h"
#include "kpx/platform/TerminalProgress.h"
#include "kpx/support/zip/Unzip.h"
#include "kpx/support/zip/ZipArchive.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::string archive;
  std::string folder;
  std::string overwrite;  // empty when the user did not choose
  bool list = false;
  bool test = false;
  bool json = false;
};

/// What became of all entries together.
struct Sums {
  std::uint64_t done = 0;
  std::uint64_t bytes = 0;
  std::uint64_t kept = 0;
  std::uint64_t cancelled = 0;
  std::uint64_t refused = 0;

  void add(ZipStatus status, std::uint64_t size) {
    if (status == ZipStatus::done) {
      ++done;
      bytes += size;
    } else {
      ++(status == ZipStatus::kept ? kept : status == ZipStatus::cancelled ? cancelled : refused);
    }
  }
};

std::string counted(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " entry" : " entries");
}

/// Ends the verb when the archive as a whole gave nothing.
void requireArchive(const Arguments& arguments, ZipStatus status, const FileResult& file) {
  if (status == ZipStatus::done || status == ZipStatus::directoryDamaged) return;
  if (status == ZipStatus::notWritten) {
    throw Failure(Exit::notWritten, arguments.folder + ": " + asUtf8(file.message()));
  }
  const CString reason = file ? zipMessage(status) : file.message();
  throw Failure(Exit::input, arguments.archive + ": " + asUtf8(reason));
}

Json jsonOf(const Arguments& arguments, ZipStatus status) {
  Json json = answerAbout(arguments.archive);
  json.update({{"archive", arguments.archive},  // as the only name that it had once
               {"status", wordOf(zipStatusName(status))},
               {"entries", Json::array()}});
  return json;
}

Json jsonOf(const CString& name, ZipStatus status, const CString& message) {
  Json json{{"name", asUtf8(name)}, {"status", wordOf(zipStatusName(status))}};
  if (isRefusal(status)) json["message"] = asUtf8(message);
  return json;
}

/// Says on standard error what is not as it should be, and answers the exit code.
Exit conclude(const Arguments& arguments, ZipStatus archive, const Sums& sums) {
  if (sums.refused != 0) {
    complain(arguments.archive + ": " + counted(sums.refused) +
             (arguments.list || arguments.test ? " would not be unpacked" : " not unpacked"));
  }
  if (sums.cancelled != 0) complain("cancelled; " + counted(sums.cancelled) + " left out");
  const bool keptUnasked = sums.kept != 0 && arguments.overwrite.empty();
  if (keptUnasked) {
    complain(counted(sums.kept) +
             " left out, since files of that name exist; --overwrite always replaces them");
  }
  if (archive == ZipStatus::directoryDamaged) {
    complain(arguments.archive + ": " + asUtf8(zipMessage(archive)));
    return Exit::input;
  }
  return sums.refused != 0 || sums.cancelled != 0 || keptUnasked ? Exit::incomplete : Exit::success;
}

Exit list(const Arguments& arguments) {
  ZipArchive archive;
  const ZipStatus status = archive.open(fromArgument(arguments.archive));
  requireArchive(arguments, status, archive.fileResult());
  Json json = jsonOf(arguments, status);
  Sums sums;
  for (const ZipEntry& entry : archive.entries()) {
    sums.add(entry.status, entry.size);
    if (arguments.json) {
      Json line = jsonOf(entry.name, entry.status, zipMessage(entry.status));
      line["bytes"] = entry.size;
      line["packed"] = entry.packedSize;
      json["entries"].push_back(std::move(line));
      continue;
    }
    CString line;
    line.Format(u"%14llu  ", static_cast<unsigned long long>(entry.size));
    std::string text = asUtf8(line) + shownPath(entry.name);
    if (isRefusal(entry.status)) text += "  (refused: " + asUtf8(zipMessage(entry.status)) + ")";
    print(text + "\n");
  }
  if (arguments.json) {
    printJson(json);
  } else {
    CString total;
    total.Format(u"%14llu  in ", static_cast<unsigned long long>(sums.bytes));
    print(asUtf8(total) + counted(sums.done) + "\n");
  }
  return conclude(arguments, status, sums);
}

Exit unpack(const Arguments& arguments) {
  UnzipOptions options;
  options.testOnly = arguments.test;
  options.overwrite =
      arguments.overwrite == "always" ? UnzipOverwrite::always : UnzipOverwrite::never;
  UnzipResult result;
  {
    setProgressDialogHandler(terminalProgress);
    ProgressDialog line({});
    options.progress = line.report();
    result = unzip(fromArgument(arguments.archive), fromArgument(arguments.folder), options);
  }
  requireArchive(arguments, result.archive, result.file);
  const auto isDone = [](const UnzipReceipt& receipt) { return receipt.status == ZipStatus::done; };
  if (!arguments.test && std::ranges::any_of(result.entries, isDone)) noteChange();
  Json json = jsonOf(arguments, result.archive);
  Sums sums;
  for (const UnzipReceipt& receipt : result.entries) {
    sums.add(receipt.status, receipt.bytes);
    if (arguments.json) {
      Json line = jsonOf(receipt.name, receipt.status, receipt.message());
      line["bytes"] = receipt.bytes;
      json["entries"].push_back(std::move(line));
    } else if (isRefusal(receipt.status) || receipt.status == ZipStatus::kept) {
      print((receipt.status == ZipStatus::kept ? "kept     " : "refused  ") +
            shownPath(receipt.name) + ": " + asUtf8(receipt.message()) + "\n");
    }
  }
  if (arguments.json) {
    printJson(json);
  } else {
    print(counted(sums.done) + (arguments.test ? " good, " : " unpacked, ") +
          std::to_string(sums.bytes) + " bytes; " + std::to_string(sums.kept) + " kept, " +
          std::to_string(sums.refused) + " refused\n");
  }
  return conclude(arguments, result.archive, sums);
}

Exit run(const Arguments& arguments) {
  if (arguments.archive == "-") {
    throw Failure(Exit::usage, "an archive is read from its end and cannot be standard input");
  }
  if (arguments.list) return list(arguments);
  if (arguments.folder.empty() && !arguments.test) {
    throw Failure(Exit::usage, "-d DIR is missing: the folder to unpack to");
  }
  return unpack(arguments);
}

}  // namespace

void addUnzipVerb(VerbGroup& program) {
  program.verb("unzip", "Unpack, list or test a zip archive", &run)
      .needs("ARCHIVE", &Arguments::archive, "Zip archive")
      .takes("-d", &Arguments::folder, "Folder to unpack to; created when missing")
      .takes("--list", &Arguments::list, "Only print the entries")
      .takes("--test", &Arguments::test, "Only check that everything can be unpacked")
      .takes("--overwrite", &Arguments::overwrite,
             "What becomes of files that exist; without it they are kept, with exit code 5",
             OneOf{{"never", "always"}})
      .excludes("--list", {"--test", "-d", "--overwrite"})
      .excludes("--test", {"-d", "--overwrite"})
      .takes("--json", &Arguments::json, "Print JSON")
      .footer(
          "Entries that would lie outside the folder, that are links, or that are damaged are "
          "refused\nby name with the reason; the others are unpacked (exit code 5). An interrupted "
          "run leaves\nno unfinished file.");
}

}  // namespace kpx::tool

#pragma once

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "kpx/platform/FileSystem.h"

namespace kpx {

/// The real file system, in which one step fails. It is the library's file system as long as it
/// lives.
class FaultyFileSystem final : public FileSystem {
 public:
  enum class Step {
    none,
    read,
    openInput,
    readAt,
    open,
    write,
    flush,
    close,
    takeAttributes,
    putInPlace
  };

  FaultyFileSystem() : real_(fileSystem()), before_(setFileSystem(this)) {}
  ~FaultyFileSystem() override { setFileSystem(before_); }

  /// The next call of this step after `passing` more of them fails as if the volume were full.
  void failOnce(Step step, int passing = 0) {
    failing_ = step;
    passing_ = passing;
  }
  bool hasFailed() const { return failing_ == Step::none; }

  FileResult read(const CString& path, FileBytes& bytes, std::uint64_t maxBytes,
                  FileVersion* version) override {
    return fails(Step::read) ? failure : real_.read(path, bytes, maxBytes, version);
  }
  FileResult version(const CString& path, FileVersion& version) override {
    return real_.version(path, version);
  }
  FileResult openInput(const CString& path, std::unique_ptr<InputFile>& file) override {
    if (fails(Step::openInput)) return failure;
    const FileResult result = real_.openInput(path, file);
    if (result) file = std::make_unique<Input>(*this, std::move(file));
    return result;
  }
  FileResult info(const CString& path, FileInfo& info) override { return real_.info(path, info); }
  FileResult openAppend(const CString& path, std::unique_ptr<OutputFile>& file) override {
    if (fails(Step::open)) return failure;
    const FileResult result = real_.openAppend(path, file);
    if (result) file = std::make_unique<File<OutputFile>>(*this, std::move(file));
    return result;
  }
  FileResult openUpdate(const CString& path, UpdateMode mode,
                        std::unique_ptr<UpdateFile>& file) override {
    if (fails(Step::open)) return failure;
    const FileResult result = real_.openUpdate(path, mode, file);
    if (result) file = std::make_unique<Update>(*this, std::move(file));
    return result;
  }
  FileResult openReplacement(const CString& path, const ReplaceOptions& options,
                             std::unique_ptr<ReplacementFile>& file) override {
    if (fails(Step::open)) return failure;
    const FileResult result = real_.openReplacement(path, options, file);
    if (result) file = std::make_unique<Replacement>(*this, std::move(file));
    return result;
  }
  FileResult lock(const CString& path, std::unique_ptr<FileLock>& lock,
                  std::chrono::milliseconds patience) override {
    return real_.lock(path, lock, patience);
  }
  FileResult remove(const CString& path) override { return real_.remove(path); }
  FileResult createFolder(const CString& path) override { return real_.createFolder(path); }
  FileResult list(const CString& folder, std::vector<CString>& names) override {
    return real_.list(folder, names);
  }
  FileResult followLinks(const CString& path, CString& target) override {
    return real_.followLinks(path, target);
  }

 private:
  static constexpr FileResult failure{FileStatus::noSpace, 28};

  template <class Base>
  class File : public Base {
   public:
    File(FaultyFileSystem& owner, std::unique_ptr<Base> real)
        : owner_(owner), real_(std::move(real)) {}
    FileResult write(std::string_view bytes) override {
      if (!owner_.fails(Step::write)) return real_->write(bytes);
      // A full volume takes what still fits.
      real_->write(bytes.substr(0, bytes.size() / 2));
      return failure;
    }
    FileResult flush() override { return owner_.fails(Step::flush) ? failure : real_->flush(); }
    FileResult close() override {
      const FileResult result = real_->close();
      return owner_.fails(Step::close) ? failure : result;
    }

   protected:
    FaultyFileSystem& owner_;
    std::unique_ptr<Base> real_;
  };

  class Replacement final : public File<ReplacementFile> {
   public:
    using File::File;
    FileResult takeAttributes() override {
      return owner_.fails(Step::takeAttributes) ? failure : real_->takeAttributes();
    }
    FileResult putInPlace(FileVersion* version) override {
      return owner_.fails(Step::putInPlace) ? failure : real_->putInPlace(version);
    }
  };

  class Input final : public InputFile {
   public:
    Input(FaultyFileSystem& owner, std::unique_ptr<InputFile> real)
        : owner_(owner), real_(std::move(real)) {}
    std::uint64_t size() const noexcept override { return real_->size(); }
    FileResult readAt(std::uint64_t offset, char* to, std::size_t count,
                      std::size_t& done) override {
      return owner_.fails(Step::readAt) ? failure : real_->readAt(offset, to, count, done);
    }

   private:
    FaultyFileSystem& owner_;
    std::unique_ptr<InputFile> real_;
  };

  class Update final : public UpdateFile {
   public:
    Update(FaultyFileSystem& owner, std::unique_ptr<UpdateFile> real)
        : owner_(owner), real_(std::move(real)) {}
    FileResult size(std::uint64_t& bytes) override { return real_->size(bytes); }
    FileResult readAt(std::uint64_t offset, char* to, std::size_t count,
                      std::size_t& done) override {
      return owner_.fails(Step::readAt) ? failure : real_->readAt(offset, to, count, done);
    }
    FileResult writeAt(std::uint64_t offset, std::string_view bytes) override {
      return owner_.fails(Step::write) ? failure : real_->writeAt(offset, bytes);
    }
    FileResult close() override {
      const FileResult result = real_->close();
      return owner_.fails(Step::close) ? failure : result;
    }

   private:
    FaultyFileSystem& owner_;
    std::unique_ptr<UpdateFile> real_;
  };

  bool fails(Step step) {
    if (step != failing_ || passing_-- > 0) return false;
    failing_ = Step::none;
    return true;
  }

  FileSystem& real_;
  FileSystem* before_;
  Step failing_ = Step::none;
  int passing_ = 0;
};

}  // namespace kpx

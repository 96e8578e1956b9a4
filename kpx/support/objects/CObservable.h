#pragma once

#include <vector>

#include "kpx/report/Export.h"

namespace kpx {

class CObject;
class CObservable;

/// Wants to be told when a subject has changed.
class KPX_API IObserver {
 public:
  virtual ~IObserver();
  /// `subject` has changed; what it is now has to be asked from it. During the call observers may
  /// be added to it and removed from it, this one included.
  virtual void update(CObservable* subject) = 0;
};

/// A subject that tells its observers when it has changed. For one thread.
///
/// Observers are not owned: destroying the subject leaves them alone, and an observer that is
/// destroyed first must have been removed. The subject must not be destroyed by an observer that
/// it is notifying.
class KPX_API CObservable {
 public:
  CObservable();
  CObservable(const CObservable&) = delete;
  CObservable& operator=(const CObservable&) = delete;
  virtual ~CObservable();

  /// Adds an observer behind the others. One that is added twice is notified twice. A failure is
  /// reported as 910503; the observer is not registered then.
  void addObserver(IObserver* observer);
  /// Removes the first entry of the observer; one that is not registered changes nothing.
  void deleteObserver(IObserver* observer) noexcept;
  /// Removes all observers.
  void deleteObservers() noexcept;
  /// How many are registered; one that was added twice counts twice.
  int countObservers() const noexcept { return count_; }

  /// 1 or 0.
  int hasChanged() const noexcept { return changed_; }

  /// When the subject was marked as changed: updates every observer once, in the order of their
  /// registration, and takes the mark away afterwards, even if an observer has set it anew. Null
  /// pointers are passed over; observers that are added meanwhile are not called this time, those
  /// that are removed meanwhile no more. What an observer throws ends the notification, leaves
  /// the mark, is reported as 910504 and reaches the caller.
  void notifyObservers();
  /// Does nothing at all, kept for callers: nobody is called, and the mark stays.
  void notifyObservers(CObject* argument) noexcept;

 protected:
  void setChanged() noexcept { changed_ = 1; }
  void clearChanged() noexcept { changed_ = 0; }

 private:
  struct Entry {
    IObserver* observer;
    bool removed;
  };
  class Walk;

  std::vector<Entry> observers_;
  int changed_ = 0;
  int count_ = 0;  // entries that are not removed
  int walks_ = 0;  // notifications under way: as long as there are any, entries keep their place
};

}  // namespace kpx

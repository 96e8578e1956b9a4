#pragma once

#include <cstddef>

#include "kpx/xml/ElemPos.h"

namespace kpx::detail {

/// The records of a document in segments of 65,536, with the count of records ever handed out
/// and the free list. Record 0 is the document itself. An index value is a segment number (high
/// 16 bits) and a slot (low 16 bits); 0 as a link means "none".
///
/// An index without capacity can be read at 0, where it shows a record of zeros, but not written.
class ElementIndex {
 public:
  static constexpr int segmentBits = 16;
  static constexpr int segmentRecords = 1 << segmentBits;

  ElementIndex() noexcept;
  ElementIndex(const ElementIndex& other);  // the records in use
  ElementIndex(ElementIndex&& other) noexcept;
  ElementIndex& operator=(ElementIndex other) noexcept;
  ~ElementIndex();

  ElemPos& operator[](int index) noexcept {
    return segments_[static_cast<std::size_t>(index) >> segmentBits]
                    [static_cast<std::size_t>(index) & (segmentRecords - 1)];
  }
  const ElemPos& operator[](int index) const noexcept {
    return const_cast<ElementIndex&>(*this)[index];
  }

  /// Forgets all records: one used, record 0 cleared, free list empty. Keeps segments for the
  /// next parse.
  void reset();
  /// Asks for room for `records` records, or for 1.5 times the used count when 0. Grows by one
  /// new segment at most, but always by enough for one more record.
  void x_AllocElemPos(int records);
  /// A record for a new element; its fields are not cleared. On an index without capacity,
  /// record 0 is made first.
  int x_GetFreePos();
  /// Puts a record on the free list.
  void x_ReleasePos(int index) noexcept;
  /// Gives segments behind the last record in use back to the system.
  void releaseSpareSegments() noexcept;

  int usedCount() const noexcept { return used_; }
  int freeHead() const noexcept { return freeHead_; }
  int freeCount() const noexcept { return freeCount_; }
  int capacity() const noexcept { return capacity_; }
  /// Bytes held by segments and their table.
  std::size_t memoryBytes() const noexcept;

  /// For the parser, which fills records in order: the segments, and the number of records that
  /// are in use from now on (at most the capacity).
  ElemPos* const* segments() const noexcept { return segments_; }
  void setUsedCount(int used) noexcept { used_ = used; }

 private:
  void swap(ElementIndex& other) noexcept;
  void growLastSegment(int records);
  void addSegment(int records);
  int segmentCount() const noexcept { return (capacity_ + segmentRecords - 1) >> segmentBits; }
  int lastSegmentRecords() const noexcept;
  void releaseLastSegment() noexcept;

  ElemPos** segments_;
  int tableSize_ = 0;
  int capacity_ = 0;
  int used_ = 0;
  int freeHead_ = 0;
  int freeCount_ = 0;
};

}  // namespace kpx::detail

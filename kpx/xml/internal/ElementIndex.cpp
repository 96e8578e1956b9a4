#include "kpx/xml/internal/ElementIndex.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "kpx/platform/Memory.h"

namespace kpx::detail {
namespace {

constexpr std::size_t fullSegmentBytes = sizeof(ElemPos) * ElementIndex::segmentRecords;

// What an index without capacity shows at 0, so that reading an empty document needs no test.
// Constant, so that a write to it is found at once.
constexpr ElemPos emptyRecord{};
constinit ElemPos* emptyTable[] = {const_cast<ElemPos*>(&emptyRecord)};

// Full segments come from the system, where one of them can be one large page; the last one of a
// small document from the heap.
ElemPos* allocateSegment(int records) {
  const std::size_t bytes = sizeof(ElemPos) * static_cast<std::size_t>(records);
  void* const memory = records == ElementIndex::segmentRecords
                           ? allocatePages(bytes, fullSegmentBytes)
                           : ::operator new (bytes, std::align_val_t{64});
  return static_cast<ElemPos*>(memory);
}

void releaseSegment(ElemPos* segment, int records) noexcept {
  if (records == ElementIndex::segmentRecords) {
    releasePages(segment, fullSegmentBytes);
  } else {
    ::operator delete (segment, std::align_val_t{64});
  }
}

}  // namespace

ElementIndex::ElementIndex() noexcept : segments_(emptyTable) {}

ElementIndex::ElementIndex(const ElementIndex& other) : ElementIndex() {
  // Delegated, so the destructor cleans up when an allocation throws.
  while (capacity_ < other.used_) x_AllocElemPos(other.used_);
  for (int first = 0; first < other.used_; first += segmentRecords) {
    const int count = std::min(segmentRecords, other.used_ - first);
    std::memcpy(&(*this)[first], &other[first], sizeof(ElemPos) * static_cast<std::size_t>(count));
  }
  used_ = other.used_;
  freeHead_ = other.freeHead_;
  freeCount_ = other.freeCount_;
}

ElementIndex::ElementIndex(ElementIndex&& other) noexcept : ElementIndex() { swap(other); }

ElementIndex& ElementIndex::operator=(ElementIndex other) noexcept {
  swap(other);
  return *this;
}

ElementIndex::~ElementIndex() {
  while (capacity_ > 0) releaseLastSegment();
  if (tableSize_ > 0) delete[] segments_;
}

void ElementIndex::swap(ElementIndex& other) noexcept {
  std::swap(segments_, other.segments_);
  std::swap(tableSize_, other.tableSize_);
  std::swap(capacity_, other.capacity_);
  std::swap(used_, other.used_);
  std::swap(freeHead_, other.freeHead_);
  std::swap(freeCount_, other.freeCount_);
}

int ElementIndex::lastSegmentRecords() const noexcept {
  return capacity_ - ((segmentCount() - 1) << segmentBits);
}

void ElementIndex::releaseLastSegment() noexcept {
  const int last = segmentCount() - 1;
  releaseSegment(segments_[last], lastSegmentRecords());
  capacity_ = last << segmentBits;
}

void ElementIndex::reset() {
  if (capacity_ == 0) x_AllocElemPos(1);
  used_ = 1;
  freeHead_ = 0;
  freeCount_ = 0;
  (*this)[0] = ElemPos{};
}

void ElementIndex::growLastSegment(int records) {
  ElemPos*& segment = segments_[segmentCount() - 1];
  const int oldRecords = lastSegmentRecords();
  ElemPos* const grown = allocateSegment(records);
  std::memcpy(grown, segment, sizeof(ElemPos) * static_cast<std::size_t>(oldRecords));
  releaseSegment(segment, oldRecords);
  segment = grown;
  capacity_ += records - oldRecords;
}

void ElementIndex::addSegment(int records) {
  const int number = segmentCount();
  if (number >= tableSize_) {
    const int newSize = 2 * number + 4;
    auto** const table = new ElemPos*[static_cast<std::size_t>(newSize)];
    if (tableSize_ > 0) {
      std::copy_n(segments_, number, table);
      delete[] segments_;
    }
    segments_ = table;
    tableSize_ = newSize;
    // Read at 0 until there is a segment.
    if (number == 0) segments_[0] = emptyTable[0];
  }
  segments_[number] = allocateSegment(records);
  capacity_ = (number << segmentBits) + records;
}

void ElementIndex::x_AllocElemPos(int records) {
  if (records == 0) records = std::max(used_ + used_ / 2, used_ + 1);
  if (records <= capacity_) return;
  const int lastEnd = segmentCount() << segmentBits;
  if (records <= lastEnd) {
    growLastSegment(records - (lastEnd - segmentRecords));
    return;
  }
  if (capacity_ != lastEnd) growLastSegment(segmentRecords);
  addSegment(std::min(records - lastEnd, segmentRecords));
}

int ElementIndex::x_GetFreePos() {
  if (freeHead_ != 0) {
    const int index = freeHead_;
    freeHead_ = (*this)[index].next;
    --freeCount_;
    return index;
  }
  if (used_ == 0) reset();
  if (used_ == capacity_) x_AllocElemPos(0);
  return used_++;
}

void ElementIndex::x_ReleasePos(int index) noexcept {
  (*this)[index].next = freeHead_;
  freeHead_ = index;
  ++freeCount_;
}

void ElementIndex::releaseSpareSegments() noexcept {
  const int needed = std::max(1, (used_ + segmentRecords - 1) >> segmentBits);
  while (segmentCount() > needed) releaseLastSegment();
}

std::size_t ElementIndex::memoryBytes() const noexcept {
  return sizeof(ElemPos) * static_cast<std::size_t>(capacity_) +
         sizeof(void*) * static_cast<std::size_t>(tableSize_);
}

}  // namespace kpx::detail

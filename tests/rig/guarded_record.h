// Memory for a record with nothing behind it: it ends where a page begins that no one may touch, so that a
// read or write past its end is a crash at once; the bytes before it hold a pattern that Intact() looks at.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace rig {

class GuardedRecord {
  public:
    // `size` bytes, all `fill`.
    explicit GuardedRecord(std::size_t size = 1976, std::uint8_t fill = 0);
    // The bytes of `content`.
    explicit GuardedRecord(std::span<const std::uint8_t> content);
    GuardedRecord(const GuardedRecord&) = delete;
    GuardedRecord& operator=(const GuardedRecord&) = delete;
    ~GuardedRecord();

    std::uint8_t* data() const { return record_; }
    std::size_t size() const { return size_; }
    std::vector<std::uint8_t> bytes() const { return {record_, record_ + size_}; }
    template <typename Record>
    Record* as() const {
        return static_cast<Record*>(static_cast<void*>(record_));
    }

    // Nobody wrote before the record.
    bool Intact() const;

  private:
    std::size_t size_;
    std::uint8_t* pages_ = nullptr;
    std::uint8_t* front_ = nullptr;
    std::uint8_t* record_ = nullptr;
};

}  // namespace rig

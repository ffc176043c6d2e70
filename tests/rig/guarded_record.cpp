#include "rig/guarded_record.h"

#include <algorithm>
#include <cstdlib>

namespace rig {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::uint8_t kGuard = 0xA5;

}  // namespace

GuardedRecord::GuardedRecord(std::size_t size, std::uint8_t fill) : size_(size) {
    // At least one byte of pattern lies before the record, and a page that no one may touch on either side.
    const std::size_t middle = (size / kPage + 1) * kPage;
    pages_ = static_cast<std::uint8_t*>(
        VirtualAlloc(nullptr, middle + 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS));
    DWORD protection = 0;
    if (pages_ == nullptr || !VirtualProtect(pages_ + kPage, middle, PAGE_READWRITE, &protection)) {
        std::abort();
    }
    front_ = pages_ + kPage;
    record_ = front_ + middle - size;
    std::fill(front_, record_, kGuard);
    std::fill_n(record_, size, fill);
}

GuardedRecord::GuardedRecord(std::span<const std::uint8_t> content) : GuardedRecord(content.size()) {
    std::copy(content.begin(), content.end(), record_);
}

GuardedRecord::~GuardedRecord() {
    VirtualFree(pages_, 0, MEM_RELEASE);
}

bool GuardedRecord::Intact() const {
    return std::all_of(front_, record_, [](std::uint8_t byte) { return byte == kGuard; });
}

}  // namespace rig

#include "soak/process_counts.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "rig/process_objects.h"

namespace soak {
namespace {

bool IsIcon(HICON handle) {
    ICONINFO info = {};
    if (!GetIconInfo(handle, &info)) {
        return false;
    }
    DeleteObject(info.hbmMask);
    DeleteObject(info.hbmColor);
    return true;
}

bool IsOwnWindow(HWND window) {
    DWORD process = 0;
    return GetWindowThreadProcessId(window, &process) != 0 && process == GetCurrentProcessId();
}

// The low half of their handles counts through one table, and the system takes it alone.
int CountUserObjects() {
    constexpr std::uintptr_t kFirst = 0x20;
    constexpr std::uintptr_t kEntries = 2048;
    int count = 0;
    for (std::uintptr_t entry = 0; entry < kEntries; ++entry) {
        const std::uintptr_t handle = kFirst + 2 * entry;
        count += IsOwnWindow(reinterpret_cast<HWND>(handle)) || IsMenu(reinterpret_cast<HMENU>(handle)) ||
                         IsIcon(reinterpret_cast<HICON>(handle))
                     ? 1
                     : 0;
    }
    return count;
}

void CountHeaps(ProcessCounts& counts) {
    std::vector<HANDLE> heaps(64);
    heaps.resize(
        std::min<std::size_t>(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()), heaps.size()));
    for (const HANDLE heap : heaps) {
        PROCESS_HEAP_ENTRY entry = {};
        HeapLock(heap);
        while (HeapWalk(heap, &entry)) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
                ++counts.blocks;
                counts.bytes += entry.cbData;
            }
        }
        HeapUnlock(heap);
    }
}

DWORD NextFreeSlot() {
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
}

}  // namespace

ProcessCounts ProcessCounts::Now() {
    ProcessCounts counts;
    counts.user_objects = CountUserObjects();
    counts.gdi_objects = rig::CountGdiObjects();
    counts.handles = rig::CountHandles();
    counts.next_slot = NextFreeSlot();
    CountHeaps(counts);
    return counts;
}

void LeakWatch::Count() {
    counts_.push_back(ProcessCounts::Now());
}

// Of the first uses.
ProcessCounts LeakWatch::Most() const {
    ProcessCounts most;
    for (std::size_t i = 0; i < kEdge; ++i) {
        most.gdi_objects = std::max(most.gdi_objects, counts_[i].gdi_objects);
        most.user_objects = std::max(most.user_objects, counts_[i].user_objects);
        most.handles = std::max(most.handles, counts_[i].handles);
        most.next_slot = std::max(most.next_slot, counts_[i].next_slot);
        most.blocks = std::max(most.blocks, counts_[i].blocks);
        most.bytes = std::max(most.bytes, counts_[i].bytes);
    }
    return most;
}

// Of the last ones.
ProcessCounts LeakWatch::Least() const {
    ProcessCounts least = counts_.back();
    for (std::size_t i = counts_.size() - kEdge; i < counts_.size(); ++i) {
        least.gdi_objects = std::min(least.gdi_objects, counts_[i].gdi_objects);
        least.user_objects = std::min(least.user_objects, counts_[i].user_objects);
        least.handles = std::min(least.handles, counts_[i].handles);
        least.next_slot = std::min(least.next_slot, counts_[i].next_slot);
        least.blocks = std::min(least.blocks, counts_[i].blocks);
        least.bytes = std::min(least.bytes, counts_[i].bytes);
    }
    return least;
}

std::string LeakWatch::Growth() const {
    if (counts_.size() < 2 * kEdge) {
        return "too few uses to tell";
    }
    std::string grown;
    const ProcessCounts first = Most();
    const ProcessCounts last = Least();
    const auto compare = [&grown](const char* what, auto before, auto after) {
        // The system makes one for itself now and then.
        if (after > before + 1) {
            grown +=
                std::string(what) + ": " + std::to_string(before) + " -> " + std::to_string(after) + "\n";
        }
    };
    compare("GDI objects", first.gdi_objects, last.gdi_objects);
    compare("USER objects", first.user_objects, last.user_objects);
    compare("handles", first.handles, last.handles);
    compare("thread slots", first.next_slot, last.next_slot);
    const std::size_t uses = counts_.size() - kEdge;
    compare("blocks of memory", first.blocks + kept_blocks_ * uses + uses / 3, last.blocks);
    return grown;
}

std::string LeakWatch::Report() const {
    if (counts_.size() < 2 * kEdge) {
        return "too few uses to tell";
    }
    const ProcessCounts first = Most();
    const ProcessCounts last = Least();
    const auto change = [](auto before, auto after) {
        return std::to_string(before) + " -> " + std::to_string(after);
    };
    return std::to_string(counts_.size()) + " uses: GDI " + change(first.gdi_objects, last.gdi_objects) +
           ", USER " + change(first.user_objects, last.user_objects) + ", handles " +
           change(first.handles, last.handles) + ", next slot " + change(first.next_slot, last.next_slot) +
           ", heap blocks " + change(first.blocks, last.blocks) + ", heap bytes " +
           change(first.bytes, last.bytes);
}

int Times(const char* variable, int usual) {
    const char* const wanted = std::getenv(variable);
    return wanted == nullptr ? usual : std::atoi(wanted);
}

}  // namespace soak

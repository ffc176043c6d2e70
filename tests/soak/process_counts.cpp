#include "soak/process_counts.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <span>
#include <vector>

#include "rig/process_objects.h"

namespace soak {
namespace {

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

struct NamedCount {
    const char* name;
    std::size_t ProcessCounts::*count;
};

constexpr NamedCount kCounts[] = {
    {"GDI objects", &ProcessCounts::gdi_objects}, {"USER objects", &ProcessCounts::user_objects},
    {"handles", &ProcessCounts::handles},         {"next thread slot", &ProcessCounts::next_slot},
    {"blocks of memory", &ProcessCounts::blocks}, {"bytes of memory", &ProcessCounts::bytes},
};
constexpr char kTooFew[] = "too few uses to tell";

std::string Change(const char* name, std::size_t before, std::size_t after) {
    return std::string(name) + " " + std::to_string(before) + " -> " + std::to_string(after);
}

DWORD NextFreeSlot() {
    const DWORD slot = TlsAlloc();
    TlsFree(slot);
    return slot;
}

}  // namespace

ProcessCounts ProcessCounts::Now() {
    ProcessCounts counts;
    counts.user_objects = static_cast<std::size_t>(rig::CountUserObjects());
    counts.gdi_objects = static_cast<std::size_t>(rig::CountGdiObjects());
    counts.handles = static_cast<std::size_t>(rig::CountHandles());
    counts.next_slot = NextFreeSlot();
    CountHeaps(counts);
    return counts;
}

void LeakWatch::Count() {
    counts_.push_back(ProcessCounts::Now());
}

std::size_t LeakWatch::Most(std::size_t ProcessCounts::*count) const {
    return std::ranges::max(std::span(counts_).first(kEdge), {}, count).*count;
}

std::size_t LeakWatch::Least(std::size_t ProcessCounts::*count) const {
    return std::ranges::min(std::span(counts_).last(kEdge), {}, count).*count;
}

std::string LeakWatch::Growth() const {
    if (!HasEnough()) {
        return kTooFew;
    }
    const std::size_t uses = counts_.size() - kEdge;
    std::string grown;
    for (const NamedCount& named : kCounts) {
        const std::size_t before = Most(named.count);
        const std::size_t after = Least(named.count);
        const std::size_t blocks = named.count == &ProcessCounts::blocks ? kept_blocks_ * uses + uses / 3 : 0;
        // The system makes one for itself now and then.
        if (named.count != &ProcessCounts::bytes && after > before + blocks + 1) {
            grown += Change(named.name, before, after) + "\n";
        }
    }
    return grown;
}

std::string LeakWatch::Report() const {
    if (!HasEnough()) {
        return kTooFew;
    }
    std::string report = std::to_string(counts_.size()) + " uses";
    for (const NamedCount& named : kCounts) {
        report += ", " + Change(named.name, Most(named.count), Least(named.count));
    }
    return report;
}

int Times(const char* variable, int usual) {
    const char* const wanted = std::getenv(variable);
    return wanted == nullptr ? usual : std::atoi(wanted);
}

}  // namespace soak

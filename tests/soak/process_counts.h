// What the process holds of the system: what grows from one use of the plug-in to the next is left behind by
// it, and hosts use it all day.
//
//   LeakWatch watch;
//   for (...) {
//       use();
//       watch.Count();
//   }
//   EXPECT_EQ(watch.Growth(), "");
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace soak {

struct ProcessCounts {
    // Pens, bitmaps, device contexts and the like.
    std::size_t gdi_objects = 0;
    // Windows, menus, icons and cursors.
    std::size_t user_objects = 0;
    std::size_t handles = 0;
    // The number of the next thread-local slot: it moves on with each one that is not given back.
    std::size_t next_slot = 0;
    // Blocks in all heaps and their bytes.
    std::size_t blocks = 0;
    std::size_t bytes = 0;

    static ProcessCounts Now();
};

// Looks at the counts after each use. What grows with every use is more after the last few uses than it ever
// was after the first few, in which the system makes things that it keeps.
class LeakWatch {
  public:
    // So many uses tell something.
    static constexpr int kFewestUses = 8;

    // `kept_blocks`: what the system itself keeps of memory with each use.
    explicit LeakWatch(std::size_t kept_blocks = 0) : kept_blocks_(kept_blocks) {}

    void Count();
    // What has grown, as lines; empty when nothing has. One more of something may be the system's own, and so
    // may fewer blocks of memory than one for every third use.
    std::string Growth() const;
    // Every count, for a report.
    std::string Report() const;

  private:
    static constexpr std::size_t kEdge = kFewestUses / 2;

    bool HasEnough() const { return counts_.size() >= kFewestUses; }
    // Of the first uses.
    std::size_t Most(std::size_t ProcessCounts::*count) const;
    // Of the last ones.
    std::size_t Least(std::size_t ProcessCounts::*count) const;

    std::size_t kept_blocks_;
    std::vector<ProcessCounts> counts_;
};

// Each static text of a dialog with the newer common controls costs Wine a block of 24 bytes, which it does
// not free: so many of all pages and their dialogs.
constexpr std::size_t kBlocksOfStaticTexts = 14;

// How often something is done: as the environment variable says, or else `usual`.
int Times(const char* variable, int usual);

}  // namespace soak

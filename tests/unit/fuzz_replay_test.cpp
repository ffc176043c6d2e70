// The fuzzers' seeds and finds, replayed: what once broke a decoder breaks none again.
#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform_recorder.h"
#include "targets.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& folder) {
    std::vector<fs::path> files;
    if (fs::exists(folder)) {
        std::copy(fs::directory_iterator(folder), fs::directory_iterator(), std::back_inserter(files));
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Exactly as many bytes as the file has, so that reading on is noticed.
std::vector<std::uint8_t> BytesOf(const fs::path& path) {
    std::vector<std::uint8_t> bytes(fs::file_size(path));
    std::ifstream file(path, std::ios::binary);
    std::copy(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), bytes.begin());
    return bytes;
}

class FuzzReplay : public PlatformTest, public testing::WithParamInterface<FuzzTarget> {
  protected:
    static void Replay(const fs::path& path) {
        const std::vector<std::uint8_t> bytes = BytesOf(path);
        platform_recorder::Reset();
        try {
            GetParam().run(bytes);
        } catch (const std::exception& objection) {
            ADD_FAILURE() << path << ": " << objection.what();
        }
    }
};

TEST_P(FuzzReplay, SeedsHold) {
    const std::vector<fs::path> seeds = FilesOf(fs::path(FUZZ_FOLDER) / "corpus" / GetParam().name);
    ASSERT_FALSE(seeds.empty());
    std::for_each(seeds.begin(), seeds.end(), Replay);
}

TEST_P(FuzzReplay, FindsHold) {
    const std::vector<fs::path> finds = FilesOf(fs::path(FUZZ_FOLDER) / "found" / GetParam().name);
    std::for_each(finds.begin(), finds.end(), Replay);
}

TEST_P(FuzzReplay, NoBytesHold) {
    GetParam().run({});
}

INSTANTIATE_TEST_SUITE_P(EveryTarget, FuzzReplay, testing::ValuesIn(kFuzzTargets),
                         [](const auto& target) { return std::string(target.param.name); });

// An input in a folder of another name would never run. The virtual printer is not ours to replay.
TEST(FuzzFolders, BelongToTargets) {
    for (const char* const kind : {"corpus", "found"}) {
        for (const fs::path& folder : FilesOf(fs::path(FUZZ_FOLDER) / kind)) {
            const std::string name = folder.filename().string();
            EXPECT_TRUE(name == "virtual_printer" ||
                        std::any_of(std::begin(kFuzzTargets), std::end(kFuzzTargets),
                                    [&](const FuzzTarget& target) { return name == target.name; }))
                << folder;
        }
    }
}

}  // namespace

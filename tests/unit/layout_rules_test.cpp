// Zoom, rotation, watermark and print-as-image: the cases that users meet, then all actions from all states
// and in all orders of up to four against a plain model of both pages.
#include "docpages/layout_rules.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "record_bytes.h"

namespace {

constexpr LayoutAction kActions[] = {
    LayoutAction::kMainOpened,
    LayoutAction::kMainActivated,
    LayoutAction::kYesChosen,
    LayoutAction::kNoChosen,
    LayoutAction::kZoomChecked,
    LayoutAction::kZoomUnchecked,
    LayoutAction::kNormalChosen,
    LayoutAction::kRotate180Chosen,
    LayoutAction::kAppliedAsNormal,
    LayoutAction::kAppliedAsRotate180,
    LayoutAction::kNoWaterMarkChosen,
    LayoutAction::kImageWaterMarkChosen,
    LayoutAction::kTextWaterMarkChosen,
    LayoutAction::kAppliedWithoutWaterMark,
    LayoutAction::kAppliedWithImageWaterMark,
    LayoutAction::kAppliedWithTextWaterMark,
};

// Everything that the rules touch: the record's fields, the signal between the pages, the Main page's
// controls and how often the message was shown.
struct World {
    int bPrintAsImage = 0;
    int bZoom = 0;
    int bRotate180 = 0;
    int iWaterMarkType = 0;
    bool removed = false;
    bool yes = false;
    bool no = false;
    bool yesEnabled = true;
    bool noEnabled = true;
    bool zoom = false;
    bool scale = false;
    bool normal = true;
    bool rotated = false;
    int messages = 0;

    bool operator==(const World&) const = default;
};

std::string Described(const World& world) {
    std::string text;
    const auto add = [&](const char* name, int value) {
        text += name + (" " + std::to_string(value)) + ", ";
    };
    add("image", world.bPrintAsImage);
    add("zoom", world.bZoom);
    add("rotate", world.bRotate180);
    add("mark", world.iWaterMarkType);
    add("removed", world.removed);
    add("Yes", world.yes);
    add("No", world.no);
    add("Yes enabled", world.yesEnabled);
    add("No enabled", world.noEnabled);
    add("zoom box", world.zoom);
    add("scale", world.scale);
    add("Normal", world.normal);
    add("Rotated", world.rotated);
    add("messages", world.messages);
    return text;
}

// The pages step by step. Clicks move the buttons that are clicked, as the system does.
void ActPlainly(World& w, LayoutAction action) {
    switch (action) {
        case LayoutAction::kMainOpened:
            if (w.bRotate180 == 1) {
                w.normal = false;
                w.rotated = true;
            } else {
                w.normal = true;
                w.rotated = false;
            }
            if (w.bZoom == 1) {
                w.zoom = true;
                w.scale = true;
            } else {
                w.zoom = false;
                w.scale = false;
            }
            if (w.bPrintAsImage == 1) {
                w.yes = true;
                w.no = false;
            } else {
                w.no = true;
                w.yes = false;
            }
            if (w.bZoom != 0 || w.bRotate180 != 0 || w.iWaterMarkType != 0) {
                w.yesEnabled = false;
                w.noEnabled = false;
            } else {
                w.yesEnabled = true;
                w.noEnabled = true;
            }
            break;
        case LayoutAction::kMainActivated:
            if (w.bZoom != 0 || w.bRotate180 != 0 || w.iWaterMarkType != 0) {
                w.yesEnabled = false;
                w.noEnabled = false;
                w.yes = true;
                w.no = false;
            } else {
                w.yesEnabled = true;
                w.noEnabled = true;
                if (w.removed) {
                    w.no = true;
                    w.yes = false;
                    w.removed = false;
                }
            }
            break;
        case LayoutAction::kYesChosen:
            w.yes = true;
            w.no = false;
            w.bPrintAsImage = 1;
            break;
        case LayoutAction::kNoChosen:
            w.no = true;
            w.yes = false;
            w.bPrintAsImage = 0;
            break;
        case LayoutAction::kZoomUnchecked:
            w.zoom = false;
            w.bZoom = 0;
            if (w.bZoom == 0 && w.bRotate180 == 0 && w.iWaterMarkType == 0) {
                w.yesEnabled = true;
                w.noEnabled = true;
            }
            w.scale = false;
            break;
        case LayoutAction::kZoomChecked:
            w.zoom = true;
            w.scale = true;
            if (w.bPrintAsImage == 0) {
                ++w.messages;
                w.bPrintAsImage = 1;
            }
            w.bZoom = 1;
            w.yes = true;
            w.no = false;
            w.yesEnabled = false;
            w.noEnabled = false;
            break;
        case LayoutAction::kNormalChosen:
            w.normal = true;
            w.rotated = false;
            w.bRotate180 = 0;
            if (w.bZoom == 0 && w.bRotate180 == 0 && w.iWaterMarkType == 0) {
                w.yesEnabled = true;
                w.noEnabled = true;
            }
            break;
        case LayoutAction::kRotate180Chosen:
            w.rotated = true;
            w.normal = false;
            if (w.bPrintAsImage == 0) {
                ++w.messages;
                w.bPrintAsImage = 1;
            }
            w.bRotate180 = 1;
            w.yes = true;
            w.no = false;
            w.yesEnabled = false;
            w.noEnabled = false;
            break;
        case LayoutAction::kAppliedAsNormal:
            w.bRotate180 = 0;
            break;
        case LayoutAction::kAppliedAsRotate180:
            w.bRotate180 = 1;
            break;
        case LayoutAction::kNoWaterMarkChosen:
            w.iWaterMarkType = 0;
            w.bPrintAsImage = 0;
            w.removed = true;
            break;
        case LayoutAction::kImageWaterMarkChosen:
            w.iWaterMarkType = 1;
            if (w.bPrintAsImage == 0) {
                ++w.messages;
                w.bPrintAsImage = 1;
            }
            break;
        case LayoutAction::kTextWaterMarkChosen:
            w.iWaterMarkType = 2;
            if (w.bPrintAsImage == 0) {
                ++w.messages;
                w.bPrintAsImage = 1;
            }
            break;
        case LayoutAction::kAppliedWithoutWaterMark:
            w.iWaterMarkType = 0;
            break;
        case LayoutAction::kAppliedWithImageWaterMark:
            w.iWaterMarkType = 1;
            w.bPrintAsImage = 1;
            break;
        case LayoutAction::kAppliedWithTextWaterMark:
            w.iWaterMarkType = 2;
            w.bPrintAsImage = 1;
            break;
    }
}

// The same with the rules under test: their fields, and their answer put on the controls by a page that only
// does as it is told.
void ActByTheRules(World& w, LayoutAction action, OEMDEV& record) {
    record.bPrintAsImage = static_cast<std::uint8_t>(w.bPrintAsImage);
    record.bZoom = static_cast<std::uint8_t>(w.bZoom);
    record.bRotate180 = static_cast<std::uint8_t>(w.bRotate180);
    record.iWaterMarkType = static_cast<std::uint8_t>(w.iWaterMarkType);
    if (action == LayoutAction::kZoomChecked || action == LayoutAction::kZoomUnchecked) {
        w.zoom = action == LayoutAction::kZoomChecked;
    }
    if (action == LayoutAction::kNormalChosen || action == LayoutAction::kRotate180Chosen) {
        w.rotated = action == LayoutAction::kRotate180Chosen;
        w.normal = !w.rotated;
    }
    const LayoutAnswer answer = FollowLayoutAction(record, w.removed, action);
    w.bPrintAsImage = record.bPrintAsImage;
    w.bZoom = record.bZoom;
    w.bRotate180 = record.bRotate180;
    w.iWaterMarkType = record.iWaterMarkType;
    if (answer.yesChecked) {
        w.yes = *answer.yesChecked;
        w.no = !w.yes;
    }
    if (answer.radiosEnabled) {
        w.yesEnabled = w.noEnabled = *answer.radiosEnabled;
    }
    w.zoom = answer.zoomChecked.value_or(w.zoom);
    w.scale = answer.scaleEnabled.value_or(w.scale);
    if (answer.rotate180Checked) {
        w.rotated = *answer.rotate180Checked;
        w.normal = !w.rotated;
    }
    w.messages += answer.showsInformation ? 1 : 0;
}

// All worlds of these field values, as a page opens on them.
template <std::size_t N>
std::vector<World> OpenedWorlds(const std::array<int, N>& flags, const std::vector<int>& kinds) {
    std::vector<World> worlds;
    for (const int image : flags) {
        for (const int zoom : flags) {
            for (const int rotate : flags) {
                for (const int kind : kinds) {
                    for (const bool removed : {false, true}) {
                        World world;
                        world.bPrintAsImage = image;
                        world.bZoom = zoom;
                        world.bRotate180 = rotate;
                        world.iWaterMarkType = kind;
                        world.removed = removed;
                        ActPlainly(world, LayoutAction::kMainOpened);
                        worlds.push_back(world);
                    }
                }
            }
        }
    }
    return worlds;
}

class LayoutRulesTest : public testing::Test {
  protected:
    // Opens the Main page on a record of these fields.
    void Open(std::uint8_t image, std::uint8_t zoom, std::uint8_t rotate, std::uint8_t kind) {
        world_ = World{};
        world_.bPrintAsImage = image;
        world_.bZoom = zoom;
        world_.bRotate180 = rotate;
        world_.iWaterMarkType = kind;
        Act(LayoutAction::kMainOpened);
    }
    void Act(LayoutAction action) { ActByTheRules(world_, action, record_); }

    // Every order of up to `depth` actions.
    void ExpectAlike(const World& expected, const World& actual, int depth, const std::string& path) {
        for (const LayoutAction action : kActions) {
            World plain = expected;
            World ruled = actual;
            ActPlainly(plain, action);
            ActByTheRules(ruled, action, record_);
            ++compared_;
            if (!(plain == ruled)) {
                ADD_FAILURE() << path << " " << static_cast<int>(action) << "\nexpected " << Described(plain)
                              << "\nactual   " << Described(ruled);
                return;
            }
            if (depth > 1 && !HasFailure()) {
                ExpectAlike(plain, ruled, depth - 1, path + " " + std::to_string(static_cast<int>(action)));
            }
        }
    }

    OEMDEV record_{};
    World world_;
    std::size_t compared_ = 0;
};

TEST_F(LayoutRulesTest, CheckingZoomWhileNoIsSelectedTellsOnceAndSelectsYesGreyed) {
    Open(0, 0, 0, 0);
    EXPECT_TRUE(world_.no && world_.yesEnabled && world_.noEnabled && !world_.zoom && !world_.scale);
    Act(LayoutAction::kZoomChecked);
    EXPECT_EQ(world_.messages, 1);
    EXPECT_TRUE(world_.yes && !world_.no && !world_.yesEnabled && !world_.noEnabled && world_.scale);
    EXPECT_EQ(world_.bZoom, 1);
    EXPECT_EQ(world_.bPrintAsImage, 1);

    Act(LayoutAction::kZoomUnchecked);
    EXPECT_TRUE(world_.yes && !world_.no && world_.yesEnabled && world_.noEnabled && !world_.scale);
    EXPECT_EQ(world_.bZoom, 0);
    EXPECT_EQ(world_.bPrintAsImage, 1);

    Act(LayoutAction::kZoomChecked);
    EXPECT_EQ(world_.messages, 1) << "printing as image was on already";
}

TEST_F(LayoutRulesTest, RotationForcesAsZoomDoes) {
    Open(0, 0, 0, 0);
    Act(LayoutAction::kRotate180Chosen);
    EXPECT_EQ(world_.messages, 1);
    EXPECT_TRUE(world_.yes && !world_.yesEnabled);
    EXPECT_EQ(world_.bRotate180, 1);
    EXPECT_EQ(world_.bPrintAsImage, 1);
    Act(LayoutAction::kNormalChosen);
    EXPECT_TRUE(world_.yes && world_.yesEnabled);
    EXPECT_EQ(world_.bPrintAsImage, 1);
}

TEST_F(LayoutRulesTest, RadiosStayGreyedWhileAnythingForces) {
    Open(1, 1, 1, 1);
    EXPECT_FALSE(world_.yesEnabled);
    Act(LayoutAction::kZoomUnchecked);
    EXPECT_FALSE(world_.yesEnabled) << "rotation and watermark are left";
    Act(LayoutAction::kNormalChosen);
    EXPECT_FALSE(world_.yesEnabled) << "the watermark is left";
    Act(LayoutAction::kNoWaterMarkChosen);
    EXPECT_FALSE(world_.yesEnabled) << "the Main page is behind";
    Act(LayoutAction::kMainActivated);
    EXPECT_TRUE(world_.yesEnabled);
}

TEST_F(LayoutRulesTest, RemovingTheWaterMarkResetsTheRadiosOnce) {
    Open(1, 0, 0, 2);
    Act(LayoutAction::kNoWaterMarkChosen);
    EXPECT_EQ(world_.bPrintAsImage, 0);
    EXPECT_TRUE(world_.removed);
    EXPECT_TRUE(world_.yes) << "the Main page is behind";
    Act(LayoutAction::kMainActivated);
    EXPECT_TRUE(world_.no && !world_.yes);
    EXPECT_FALSE(world_.removed);
    Act(LayoutAction::kYesChosen);
    Act(LayoutAction::kMainActivated);
    EXPECT_TRUE(world_.yes && !world_.no) << "the signal was used up";
}

// The signal waits while zoom holds the radios, and printing as image is off meanwhile.
TEST_F(LayoutRulesTest, TheSignalWaitsWhileSomethingElseForces) {
    Open(1, 1, 0, 1);
    Act(LayoutAction::kNoWaterMarkChosen);
    Act(LayoutAction::kMainActivated);
    EXPECT_TRUE(world_.yes && !world_.yesEnabled && world_.removed);
    EXPECT_EQ(world_.bPrintAsImage, 0);
    Act(LayoutAction::kZoomUnchecked);
    EXPECT_TRUE(world_.yes && world_.yesEnabled && world_.removed);
    Act(LayoutAction::kMainActivated);
    EXPECT_TRUE(world_.no && !world_.removed);
    EXPECT_EQ(world_.messages, 0);
}

TEST_F(LayoutRulesTest, ChoosingAWaterMarkTellsOnlyWhenPrintAsImageWasOff) {
    for (const LayoutAction action :
         {LayoutAction::kImageWaterMarkChosen, LayoutAction::kTextWaterMarkChosen}) {
        Open(0, 0, 0, 0);
        Act(action);
        EXPECT_EQ(world_.messages, 1);
        EXPECT_EQ(world_.bPrintAsImage, 1);
        EXPECT_EQ(world_.iWaterMarkType, action == LayoutAction::kImageWaterMarkChosen ? 1 : 2);
        Act(action);
        EXPECT_EQ(world_.messages, 1);
        Act(LayoutAction::kMainActivated);
        EXPECT_TRUE(world_.yes && !world_.no && !world_.noEnabled);
    }
}

TEST_F(LayoutRulesTest, ApplyingNeverTellsAndNeverTurnsOff) {
    Open(0, 0, 0, 0);
    Act(LayoutAction::kAppliedWithImageWaterMark);
    EXPECT_EQ(world_.bPrintAsImage, 1);
    EXPECT_EQ(world_.iWaterMarkType, 1);
    Act(LayoutAction::kAppliedWithoutWaterMark);
    EXPECT_EQ(world_.bPrintAsImage, 1);
    EXPECT_EQ(world_.iWaterMarkType, 0);
    EXPECT_FALSE(world_.removed);
    Act(LayoutAction::kNoChosen);
    Act(LayoutAction::kAppliedAsRotate180);
    EXPECT_EQ(world_.bPrintAsImage, 0);
    EXPECT_EQ(world_.bRotate180, 1);
    EXPECT_EQ(world_.messages, 0);
}

// Records of other versions hold other values: only 1 shows as on, only 0 counts as off.
TEST_F(LayoutRulesTest, OddFlagsShowAsOffAndForceAsOn) {
    Open(2, 2, 2, 7);
    EXPECT_TRUE(world_.no && !world_.yes && !world_.zoom && !world_.scale && world_.normal &&
                !world_.yesEnabled);
    Act(LayoutAction::kZoomChecked);
    EXPECT_EQ(world_.messages, 0);
    EXPECT_EQ(world_.bPrintAsImage, 2);
}

TEST_F(LayoutRulesTest, EveryActionFromEveryState) {
    for (World world : OpenedWorlds(std::array{0, 1, 2, 255}, {0, 1, 2, 3, 255})) {
        for (int view = 0; view < 16; ++view) {
            world.yes = (view & 1) != 0;
            world.no = !world.yes;
            world.yesEnabled = world.noEnabled = (view & 2) != 0;
            world.zoom = (view & 4) != 0;
            world.scale = (view & 8) != 0;
            ExpectAlike(world, world, 1, Described(world));
        }
    }
    EXPECT_EQ(compared_, 4u * 4 * 4 * 5 * 2 * 16 * 16);
}

TEST_F(LayoutRulesTest, EveryOrderOfUpToFourActions) {
    for (const World& world : OpenedWorlds(std::array{0, 1}, {0, 1, 2})) {
        ExpectAlike(world, world, 4, Described(world));
    }
    // 48 states, 16 + 16^2 + 16^3 + 16^4 actions from each.
    EXPECT_EQ(compared_, 48u * 69904);
}

TEST_F(LayoutRulesTest, OtherBytesOfTheRecordStay) {
    const RecordBytes before = Patterned(37);
    for (const LayoutAction action : kActions) {
        OEMDEV record = RecordOf(before);
        bool removed = false;
        FollowLayoutAction(record, removed, action);
        RecordBytes after = BytesOf(record);
        for (const std::size_t field : {998u, 1250u, 1396u, 1462u}) {
            after[field] = before[field];
        }
        EXPECT_EQ(after, before) << static_cast<int>(action);
    }
}

TEST_F(LayoutRulesTest, ControlsOfEachKindOfWaterMark) {
    const auto expect = [](std::uint8_t kind, bool image, bool text, bool placement) {
        const WaterMarkControls controls = ControlsOfWaterMark(kind);
        EXPECT_EQ(controls.image, image) << int{kind};
        EXPECT_EQ(controls.text, text) << int{kind};
        EXPECT_EQ(controls.placement, placement) << int{kind};
    };
    expect(0, false, false, false);
    expect(1, true, false, true);
    expect(2, false, true, true);
    expect(3, false, false, false);
    expect(255, false, false, false);
}

TEST(ClampScaleTest, TenToAHundred) {
    EXPECT_EQ(ClampScale(250), 100);
    EXPECT_EQ(ClampScale(101), 100);
    EXPECT_EQ(ClampScale(100), 100);
    EXPECT_EQ(ClampScale(55), 55);
    EXPECT_EQ(ClampScale(10), 10);
    EXPECT_EQ(ClampScale(9), 10);
    EXPECT_EQ(ClampScale(5), 10);
    EXPECT_EQ(ClampScale(0), 10);
    EXPECT_EQ(ClampScale(-1), 10);
    EXPECT_EQ(ClampScale(INT32_MAX), 100);
    EXPECT_EQ(ClampScale(INT32_MIN), 10);
}

}  // namespace

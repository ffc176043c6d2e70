// Zoom, rotation, watermark and "print all text as graphics image": what each does to the others.
#pragma once

#include <cstdint>
#include <optional>

#include "devmode/oemdev.h"

// The record's kinds of watermark.
constexpr std::uint8_t kNoWaterMark = 0;
constexpr std::uint8_t kImageWaterMark = 1;
constexpr std::uint8_t kTextWaterMark = 2;

enum class LayoutAction {
    // The Main page
    kMainOpened,     // filled for the first time
    kMainActivated,  // came to the front
    kYesChosen,      // print as image
    kNoChosen,
    kZoomChecked,
    kZoomUnchecked,
    kNormalChosen,
    kRotate180Chosen,
    kAppliedAsNormal,  // applied with this direction chosen
    kAppliedAsRotate180,
    // The Water Mark page
    kNoWaterMarkChosen,
    kImageWaterMarkChosen,
    kTextWaterMarkChosen,
    kAppliedWithoutWaterMark,  // applied with this kind chosen
    kAppliedWithImageWaterMark,
    kAppliedWithTextWaterMark,
};

// What the Main page shows after an action. Nothing: as before.
struct LayoutAnswer {
    std::optional<bool> yesChecked;     // of the pair "Yes" and "No", never both
    std::optional<bool> radiosEnabled;  // both of them
    std::optional<bool> zoomChecked;
    std::optional<bool> scaleEnabled;  // its caption, edit and arrows
    std::optional<bool> rotate180Checked;
    // The page that acted says that all text will now be printed as graphics.
    bool showsInformation = false;
};

// Carries the action out in the record's four fields. `waterMarkRemoved` is how the Water Mark page tells the
// Main page that "No" is to show again: raised there when the watermark goes, used up when the Main page
// comes to the front with its radios free.
//
// Zoom, rotation and a watermark each print as image, and say so when that was off (0). Their end frees the
// radios but keeps the choice, except for the watermark's, which turns printing as image off whatever else
// is on. Values other than 0 and 1 count as on for what forces, and as off for what is shown.
LayoutAnswer FollowLayoutAction(OEMDEV& record, bool& waterMarkRemoved, LayoutAction action) noexcept;

// Which of the Water Mark page's controls a kind of watermark uses. A kind that is not in the list has none.
struct WaterMarkControls {
    bool image;      // file name and "Browse..."
    bool text;       // text, font, style, font size with its arrows, angle
    bool placement;  // position, size, brightness
};
constexpr WaterMarkControls ControlsOfWaterMark(std::uint8_t kind) noexcept {
    const bool image = kind == kImageWaterMark;
    const bool text = kind == kTextWaterMark;
    return {image, text, image || text};
}

// The scale that counts when its box is left. The arrows beside it reach 200.
std::uint8_t ClampScale(std::int32_t typed) noexcept;

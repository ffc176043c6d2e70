#include "docpages/layout_rules.h"

#include <algorithm>

namespace {

// Whether something prints as image without being asked.
bool IsForced(const OEMDEV& record) noexcept {
    return record.bZoom != 0 || record.bRotate180 != 0 || record.iWaterMarkType != kNoWaterMark;
}

// TRUE when the user is to be told.
bool TurnOnPrintAsImage(OEMDEV& record) noexcept {
    const bool wasOff = record.bPrintAsImage == 0;
    if (wasOff) {
        record.bPrintAsImage = 1;
    }
    return wasOff;
}

LayoutAnswer Force(OEMDEV& record) noexcept {
    LayoutAnswer answer;
    answer.showsInformation = TurnOnPrintAsImage(record);
    answer.yesChecked = true;
    answer.radiosEnabled = false;
    return answer;
}

// The radios keep their choice: what forced it is gone, the user's wish is not known.
LayoutAnswer FreeUnlessForced(const OEMDEV& record) noexcept {
    LayoutAnswer answer;
    if (!IsForced(record)) {
        answer.radiosEnabled = true;
    }
    return answer;
}

LayoutAnswer OpenMain(const OEMDEV& record) noexcept {
    LayoutAnswer answer;
    answer.rotate180Checked = record.bRotate180 == 1;
    answer.zoomChecked = record.bZoom == 1;
    answer.scaleEnabled = record.bZoom == 1;
    answer.yesChecked = record.bPrintAsImage == 1;
    answer.radiosEnabled = !IsForced(record);
    return answer;
}

LayoutAnswer ActivateMain(const OEMDEV& record, bool& waterMarkRemoved) noexcept {
    LayoutAnswer answer;
    answer.radiosEnabled = !IsForced(record);
    if (IsForced(record)) {
        answer.yesChecked = true;
    } else if (waterMarkRemoved) {
        answer.yesChecked = false;
        waterMarkRemoved = false;
    }
    return answer;
}

LayoutAnswer ChoosePrintAsImage(OEMDEV& record, bool yes) noexcept {
    record.bPrintAsImage = yes ? 1 : 0;
    LayoutAnswer answer;
    answer.yesChecked = yes;
    return answer;
}

LayoutAnswer CheckZoom(OEMDEV& record) noexcept {
    LayoutAnswer answer = Force(record);
    record.bZoom = 1;
    answer.scaleEnabled = true;
    return answer;
}

LayoutAnswer UncheckZoom(OEMDEV& record) noexcept {
    record.bZoom = 0;
    LayoutAnswer answer = FreeUnlessForced(record);
    answer.scaleEnabled = false;
    return answer;
}

LayoutAnswer ChooseNormal(OEMDEV& record) noexcept {
    record.bRotate180 = 0;
    return FreeUnlessForced(record);
}

LayoutAnswer ChooseRotate180(OEMDEV& record) noexcept {
    record.bRotate180 = 1;
    return Force(record);
}

LayoutAnswer RemoveWaterMark(OEMDEV& record, bool& waterMarkRemoved) noexcept {
    record.iWaterMarkType = kNoWaterMark;
    record.bPrintAsImage = 0;
    waterMarkRemoved = true;
    return {};
}

// The Main page learns of it when it comes to the front.
LayoutAnswer ChooseWaterMark(OEMDEV& record, std::uint8_t kind) noexcept {
    record.iWaterMarkType = kind;
    LayoutAnswer answer;
    answer.showsInformation = TurnOnPrintAsImage(record);
    return answer;
}

LayoutAnswer ApplyWaterMark(OEMDEV& record, std::uint8_t kind) noexcept {
    record.iWaterMarkType = kind;
    if (kind != kNoWaterMark) {
        record.bPrintAsImage = 1;
    }
    return {};
}

LayoutAnswer ApplyRotation(OEMDEV& record, std::uint8_t rotate180) noexcept {
    record.bRotate180 = rotate180;
    return {};
}

}  // namespace

LayoutAnswer FollowLayoutAction(OEMDEV& record, bool& waterMarkRemoved, LayoutAction action) noexcept {
    switch (action) {
        case LayoutAction::kMainOpened:
            return OpenMain(record);
        case LayoutAction::kMainActivated:
            return ActivateMain(record, waterMarkRemoved);
        case LayoutAction::kYesChosen:
            return ChoosePrintAsImage(record, true);
        case LayoutAction::kNoChosen:
            return ChoosePrintAsImage(record, false);
        case LayoutAction::kZoomChecked:
            return CheckZoom(record);
        case LayoutAction::kZoomUnchecked:
            return UncheckZoom(record);
        case LayoutAction::kNormalChosen:
            return ChooseNormal(record);
        case LayoutAction::kRotate180Chosen:
            return ChooseRotate180(record);
        case LayoutAction::kAppliedAsNormal:
            return ApplyRotation(record, 0);
        case LayoutAction::kAppliedAsRotate180:
            return ApplyRotation(record, 1);
        case LayoutAction::kNoWaterMarkChosen:
            return RemoveWaterMark(record, waterMarkRemoved);
        case LayoutAction::kImageWaterMarkChosen:
            return ChooseWaterMark(record, kImageWaterMark);
        case LayoutAction::kTextWaterMarkChosen:
            return ChooseWaterMark(record, kTextWaterMark);
        case LayoutAction::kAppliedWithoutWaterMark:
            return ApplyWaterMark(record, kNoWaterMark);
        case LayoutAction::kAppliedWithImageWaterMark:
            return ApplyWaterMark(record, kImageWaterMark);
        case LayoutAction::kAppliedWithTextWaterMark:
            return ApplyWaterMark(record, kTextWaterMark);
    }
    return {};
}

std::uint8_t ClampScale(std::int32_t typed) noexcept {
    return static_cast<std::uint8_t>(std::clamp(typed, std::int32_t{10}, std::int32_t{100}));
}

#include "devpages/logo_rules.h"

#include "printer/bitmap_headers.h"

namespace {

constexpr std::int64_t kMostWidth = 1024;
constexpr std::int64_t kMostHeight = 768;

}  // namespace

LogoSettings FreshSettings(LogoType type) noexcept {
    LogoSettings settings;
    if (type == LogoType::kTransformation) {
        settings.halftone = Halftone::kDitherM3;
    }
    return settings;
}

LogoSettings EffectiveSettings(LogoType type, const LogoSettings& settings) noexcept {
    return type == LogoType::kOriginal ? LogoSettings() : settings;
}

bool IsLogoSize(const BitmapHeaders& headers) noexcept {
    const std::int64_t height = headers.height;
    return headers.width <= kMostWidth && height <= kMostHeight && -height <= kMostHeight;
}

LogoView ViewOfLogo(LogoType type, const BitmapHeaders& headers) noexcept {
    const bool isBitmap = headers.type == bitmap_file::kType;
    const bool hasLevels = headers.bitCount == kColourBits || headers.bitCount == kGreyBits;
    switch (type) {
        case LogoType::kOriginal:
            break;
        case LogoType::kTransformation:
            if (isBitmap && hasLevels) {
                return {LogoPreviewKind::kConverted, true, true};
            }
            break;
        case LogoType::kGrey:
            if (isBitmap && (hasLevels || headers.bitCount == kMonoBits)) {
                return {LogoPreviewKind::kConverted, false, true};
            }
            return {};
    }
    return {isBitmap ? LogoPreviewKind::kSource : LogoPreviewKind::kNothing, false, false};
}

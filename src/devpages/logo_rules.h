// What the Download page does with its list of logos, apart from windows and files.
#pragma once

#include <cstddef>
#include <cstdint>

#include "printer/logo_bitmap.h"
#include "printer/logo_conversion.h"

// How all logos of the list are sent.
enum class LogoType { kOriginal, kTransformation, kGrey };

// How one of them is converted.
struct LogoSettings {
    Halftone halftone = Halftone::kNone;
    LogoTone tone = {};
};

// The logos that the printer's memory is organised for, and its bytes, which the files together must not
// reach.
constexpr std::size_t kMaxLogos = 9;
constexpr std::uint64_t kLogoMemory = 98304;

// Of -x to x each.
constexpr int kMostTone = 100;

// The settings of a logo that comes into the list.
LogoSettings FreshSettings(LogoType type) noexcept;

// The settings that a logo is converted with: an original is not adjusted, whatever was set before.
LogoSettings EffectiveSettings(LogoType type, const LogoSettings& settings) noexcept;

// FALSE for a picture of more than 1024 x 768 pixels, rows counted from either end.
bool IsLogoSize(const BitmapHeaders& headers) noexcept;

enum class LogoPreviewKind { kNothing, kSource, kConverted };

// What a selected logo shows, and which of its settings count.
struct LogoView {
    LogoPreviewKind shows = LogoPreviewKind::kNothing;
    bool usesHalftone = false;
    bool usesTone = false;

    bool operator==(const LogoView&) const = default;
};

// `headers` is of the logo's own file.
LogoView ViewOfLogo(LogoType type, const BitmapHeaders& headers) noexcept;

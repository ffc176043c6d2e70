#include "printer/logo_conversion.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <utility>

#include "printer/bitmap_headers.h"
#include "printer/logo_bitmap.h"
#include "printer/logo_grey.h"
#include "printer/logo_halftone.h"
#include "printer/logo_tone.h"

namespace {

using RowToGrey = std::function<void(const std::uint8_t* pixels, std::uint8_t* grey)>;
using RowPacker = std::function<void(std::size_t row, const std::uint8_t* grey, std::uint8_t* bits)>;

// How the rows of a picture become black and white.
struct MonoSteps {
    RowToGrey toGrey;
    RowPacker pack;
};

std::int32_t MeanOf(std::uint32_t sum, const LogoPicture& picture) noexcept {
    const auto pixels = static_cast<std::int64_t>(picture.Width() * picture.Rows());
    // A picture that was read has pixels.
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
    return static_cast<std::int32_t>(static_cast<std::int32_t>(sum) / pixels);
}

using ColourMeans = std::array<std::int32_t, kColours>;

template <typename SumsOfRow>
ColourMeans ColourMeansOf(const LogoPicture& picture, const SumsOfRow& sumsOfRow) noexcept {
    ColourSums total{};
    for (std::size_t row = 0; row < picture.Rows(); ++row) {
        const ColourSums sums = sumsOfRow(picture.Row(row));
        std::transform(total.begin(), total.end(), sums.begin(), total.begin(), std::plus<>());
    }
    return {MeanOf(total[0], picture), MeanOf(total[1], picture), MeanOf(total[2], picture)};
}

// The grey level of the mean colour.
std::int32_t MeanGreyOfColours(const LogoPicture& picture, const ToneCurve& curve) noexcept {
    const ColourMeans means = ColourMeansOf(
        picture, [&](const std::uint8_t* pixels) { return CurvedSumsOfRow(curve, pixels, picture.Width()); });
    std::int32_t weighted = 0;
    for (std::size_t colour = 0; colour < kColours; ++colour) {
        weighted += means[colour] * static_cast<std::int32_t>(kGreyWeights[colour]);
    }
    return weighted / 1000;
}

std::int32_t MeanGreyOfLevels(const LogoPicture& picture, const ToneCurve& curve) {
    std::vector<std::uint8_t> grey(picture.RowBytes());
    std::uint32_t sum = 0;
    for (std::size_t row = 0; row < picture.Rows(); ++row) {
        GreyOfRow8(curve, picture.Row(row), picture.RowBytes(), grey.data());
        sum += SumOfRow(grey.data(), picture.Width());
    }
    return MeanOf(sum, picture);
}

RowToGrey ColoursToGrey(const GreyTables& tables, std::size_t width) {
    return [tables, width](const std::uint8_t* pixels, std::uint8_t* grey) {
        tables.GreyOfRow(pixels, width, grey);
    };
}

RowToGrey LevelsToGrey(const ToneCurve& curve, std::size_t rowBytes) {
    return [curve, rowBytes](const std::uint8_t* pixels, std::uint8_t* grey) {
        GreyOfRow8(curve, pixels, rowBytes, grey);
    };
}

GreyTables TablesOf(const ToneCurve& curve) noexcept {
    return {{curve, curve, curve}, kGreyWeights};
}

// Each colour around its mean, red and blue around each other's and with each other's weight.
GreyTables CentredTablesOf(const LogoPicture& picture, const LogoTone& tone) noexcept {
    const ColourMeans means = ColourMeansOf(
        picture, [&](const std::uint8_t* pixels) { return PlainSumsOfRow(pixels, picture.Width()); });
    const auto around = [&tone](std::int32_t mean) {
        return CentredToneCurveOf(mean, tone.contrast, tone.brightness);
    };
    return {{around(means[2]), around(means[1]), around(means[0])},
            {kGreyWeights[2], kGreyWeights[1], kGreyWeights[0]}};
}

// White is what is brighter than the mean. Sums that wrapped may have made that negative: all is white.
RowPacker MeanPacker(std::int32_t mean, std::size_t width) {
    Thresholds thresholds;
    thresholds.fill(static_cast<std::uint8_t>(std::max(mean, 0)));
    const auto pack = mean < 0 ? PackAtLeast : PackAbove;
    return [=](std::size_t, const std::uint8_t* grey, std::uint8_t* bits) {
        pack(thresholds, grey, width, bits);
    };
}

using Pack = decltype(PackAbove);
using ThresholdsOfRow = decltype(DitherM4);

RowPacker DitherPacker(Pack* pack, ThresholdsOfRow* thresholdsOf, std::size_t width) {
    return [=](std::size_t row, const std::uint8_t* grey, std::uint8_t* bits) {
        pack(thresholdsOf(row), grey, width, bits);
    };
}

RowPacker DiffusionPacker(std::size_t width) {
    return [diffusion = ErrorDiffusion(width)](std::size_t, const std::uint8_t* grey,
                                               std::uint8_t* bits) mutable { diffusion.Pack(grey, bits); };
}

MonoSteps StepsOfColours(const LogoPicture& picture, Halftone halftone, const LogoTone& tone) {
    const std::size_t width = picture.Width();
    if (halftone == Halftone::kDitherM4) {
        return {ColoursToGrey(CentredTablesOf(picture, tone), width),
                DitherPacker(PackAtLeast, DitherM4, width)};
    }
    const ToneCurve curve = ToneCurveOf(tone.contrast, tone.brightness);
    RowToGrey toGrey = ColoursToGrey(TablesOf(curve), width);
    switch (halftone) {
        case Halftone::kDitherM3:
            return {std::move(toGrey), DitherPacker(PackAtLeast, DitherM3AtLeast, width)};
        case Halftone::kErrorDiffuse:
            return {std::move(toGrey), DiffusionPacker(width)};
        default:
            return {std::move(toGrey), MeanPacker(MeanGreyOfColours(picture, curve), width)};
    }
}

MonoSteps StepsOfLevels(const LogoPicture& picture, Halftone halftone, const LogoTone& tone) {
    const std::size_t width = picture.Width();
    const ToneCurve curve = ToneCurveOf(tone.contrast, tone.brightness);
    RowToGrey toGrey = LevelsToGrey(curve, picture.RowBytes());
    switch (halftone) {
        case Halftone::kDitherM3:
            return {std::move(toGrey), DitherPacker(PackAbove, DitherM3Above, width)};
        case Halftone::kDitherM4:
            return {std::move(toGrey), DitherPacker(PackAbove, DitherM4, width)};
        case Halftone::kErrorDiffuse:
            return {std::move(toGrey), DiffusionPacker(width)};
        default:
            return {std::move(toGrey), MeanPacker(MeanGreyOfLevels(picture, curve), width)};
    }
}

// Rows as they are kept in a grey file.
RowToGrey GreyRowsOf(const LogoPicture& picture, const ToneCurve& curve) {
    const std::size_t width = picture.Width();
    switch (picture.BitCount()) {
        case kMonoBits:
            return [curve, width](const std::uint8_t* pixels, std::uint8_t* grey) {
                GreyOfRow1(curve, pixels, width, grey);
            };
        case kGreyBits:
            return [curve, width, rowBytes = picture.RowBytes()](const std::uint8_t* pixels,
                                                                 std::uint8_t* grey) {
                GreyOfRow8(curve, pixels, rowBytes, grey);
                // What the source's padding became.
                std::fill(grey + width, grey + rowBytes, std::uint8_t{0});
            };
        default:
            return [tables = TablesOf(curve), width](const std::uint8_t* pixels, std::uint8_t* grey) {
                tables.GreyOfRow(pixels, width, grey);
            };
    }
}

std::optional<LogoPicture> ReadPicture(std::span<const std::uint8_t> source, unsigned bitCount) {
    return ReadBitmapHeaders(source).bitCount == bitCount ? LogoPicture::Read(source) : std::nullopt;
}

}  // namespace

LogoConversion ConvertToGrey(std::span<const std::uint8_t> source, unsigned bitCount, const LogoTone& tone,
                             std::vector<std::uint8_t>& output) {
    const auto picture = ReadPicture(source, bitCount);
    if (!picture) {
        return LogoConversion::kOtherFormat;
    }
    const RowToGrey toGrey = GreyRowsOf(*picture, ToneCurveOf(tone.contrast, tone.brightness));
    const LogoFile file = LogoFile::Grey(*picture, output);
    for (std::size_t row = 0; row < picture->Rows(); ++row) {
        toGrey(picture->Row(row), file.Row(row));
    }
    return LogoConversion::kConverted;
}

LogoConversion ConvertToMono(std::span<const std::uint8_t> source, unsigned bitCount, Halftone halftone,
                             const LogoTone& tone, std::vector<std::uint8_t>& output) {
    const BitmapHeaders headers = ReadBitmapHeaders(source);
    if (headers.type == bitmap_file::kType && headers.bitCount == kMonoBits &&
        headers.compression == bitmap_file::kUncompressed) {
        return LogoConversion::kAlreadyMono;
    }
    const auto picture = ReadPicture(source, bitCount);
    if (!picture) {
        return LogoConversion::kOtherFormat;
    }
    if (halftone == Halftone::kPassThrough) {
        return LogoConversion::kPassedThrough;
    }
    const MonoSteps steps = bitCount == kColourBits ? StepsOfColours(*picture, halftone, tone)
                                                    : StepsOfLevels(*picture, halftone, tone);
    const LogoFile file = LogoFile::Mono(*picture, output);
    std::vector<std::uint8_t> grey(PaddedWidth(picture->Width()));
    for (std::size_t row = 0; row < picture->Rows(); ++row) {
        steps.toGrey(picture->Row(row), grey.data());
        steps.pack(row, grey.data(), file.Row(row));
    }
    return LogoConversion::kConverted;
}

// What the conversion of a logo costs, step by step and whole, on a picture of 24 bits a pixel:
//
//      logo_bench PICTURE.bmp          megapixels a second of each line, the median of many runs
//      logo_bench PICTURE.bmp LINE     runs one line once, for a tool that counts instructions:
//                                      valgrind --tool=callgrind --toggle-collect=MeasuredWork
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "measure.h"
#include "printer/logo_bitmap.h"
#include "printer/logo_conversion.h"
#include "printer/logo_grey.h"
#include "printer/logo_halftone.h"
#include "printer/logo_raster.h"
#include "printer/logo_tone.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// Contrast and brightness as a user sets them; what they are makes no difference.
constexpr LogoTone kTone = {10, 5};

// What the lines start from: the picture as a file of each depth.
struct Sources {
    Bytes colours;
    Bytes levels;
    Bytes mono;
};

struct Line {
    const char* name;
    const char* what;
    std::function<void()> work;
};

// A grey picture to packed rows.
template <typename Pack>
std::function<void()> Packing(const LogoPicture& grey, Bytes& bits, Pack pack) {
    const std::size_t rowBytes = BitmapRowBytes(grey.Width(), kMonoBits);
    bits.resize(rowBytes * grey.Rows());
    return [&grey, &bits, pack, rowBytes] {
        for (std::size_t row = 0; row < grey.Rows(); ++row) {
            pack(row, grey.Row(row), grey.Width(), bits.data() + row * rowBytes);
        }
    };
}

std::vector<Line> LinesOf(const Sources& sources, const LogoPicture& colours, const LogoPicture& levels) {
    static Bytes output;
    static Bytes bits;
    static const ToneCurve curve = ToneCurveOf(kTone.contrast, kTone.brightness);
    static const GreyTables tables({curve, curve, curve}, kGreyWeights);
    static std::optional<ErrorDiffusion> diffusion;
    diffusion.emplace(levels.Width());
    const auto toMono = [&sources](unsigned depth, Halftone halftone) {
        return [&, depth, halftone] {
            ConvertToMono(depth == kColourBits ? sources.colours : sources.levels, depth, halftone, kTone,
                          output);
        };
    };
    const auto dither = [](auto* pack, auto* thresholdsOf) {
        return [=](std::size_t row, const std::uint8_t* grey, std::size_t width, std::uint8_t* to) {
            pack(thresholdsOf(row), grey, width, to);
        };
    };
    const auto packMean = [&levels](std::size_t row, const std::uint8_t* grey, std::size_t width,
                                    std::uint8_t* to) {
        static Thresholds mean;
        if (row == 0) {
            std::uint32_t sum = 0;
            for (std::size_t y = 0; y < levels.Rows(); ++y) {
                sum += SumOfRow(levels.Row(y), width);
            }
            mean.fill(static_cast<std::uint8_t>(sum / (width * levels.Rows())));
        }
        PackAbove(mean, grey, width, to);
    };
    return {
        {"grey24", "24-bit -> grey through tone tables",
         [&] {
             output.resize(colours.Width() * colours.Rows());
             for (std::size_t row = 0; row < colours.Rows(); ++row) {
                 tables.GreyOfRow(colours.Row(row), colours.Width(), output.data() + row * colours.Width());
             }
         }},
        {"grey8", "8-bit -> grey through a table",
         [&] {
             output.resize(levels.RowBytes() * levels.Rows());
             for (std::size_t row = 0; row < levels.Rows(); ++row) {
                 GreyOfRow8(curve, levels.Row(row), levels.RowBytes(),
                            output.data() + row * levels.RowBytes());
             }
         }},
        {"mean", "grey -> mean threshold, packed", Packing(levels, bits, packMean)},
        {"ordered8", "grey -> ordered 8x8, packed",
         Packing(levels, bits, dither(PackAtLeast, DitherM3AtLeast))},
        {"ordered16", "grey -> ordered 16x16, packed", Packing(levels, bits, dither(PackAbove, DitherM4))},
        {"none24", "24-bit -> mean threshold, whole", toMono(kColourBits, Halftone::kNone)},
        {"m3of24", "24-bit -> ordered 8x8, whole", toMono(kColourBits, Halftone::kDitherM3)},
        {"m4of24", "24-bit -> ordered 16x16, whole", toMono(kColourBits, Halftone::kDitherM4)},
        {"diffusion", "grey -> error diffusion",
         Packing(levels, bits,
                 [](std::size_t, const std::uint8_t* grey, std::size_t, std::uint8_t* to) {
                     diffusion->Pack(grey, to);
                 })},
        {"diffuse24", "24-bit -> error diffusion, whole", toMono(kColourBits, Halftone::kErrorDiffuse)},
        {"diffuse8", "8-bit -> error diffusion, whole", toMono(kGreyBits, Halftone::kErrorDiffuse)},
        {"columns", "1-bit -> 8-dot columns", [&] { MonoRasterOf(sources.mono, false, output); }},
        {"planes", "grey -> four bit planes", [&] { GreyRasterOf(sources.levels, output); }},
    };
}

Bytes ReadFile(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

// Named for the tool that counts.
extern "C" __attribute__((noinline)) void MeasuredWork(const std::function<void()>& work) {
    work();
}

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: logo_bench PICTURE.bmp [LINE]\n");
        return 2;
    }
    Sources sources;
    sources.colours = ReadFile(argv[1]);
    if (ConvertToGrey(sources.colours, kColourBits, kTone, sources.levels) != LogoConversion::kConverted ||
        ConvertToMono(sources.colours, kColourBits, Halftone::kErrorDiffuse, kTone, sources.mono) !=
            LogoConversion::kConverted) {
        std::fprintf(stderr, "logo_bench: %s is no bitmap of 24 bits\n", argv[1]);
        return 1;
    }
    const auto colours = LogoPicture::Read(sources.colours);
    const auto levels = LogoPicture::Read(sources.levels);
    const auto pixels = static_cast<double>(levels->Width() * levels->Rows());
    for (const Line& line : LinesOf(sources, *colours, *levels)) {
        if (argc > 2) {
            if (std::strcmp(line.name, argv[2]) == 0) {
                // Memory is there from the second time on.
                line.work();
                MeasuredWork(line.work);
                std::printf("%.0f pixels\n", pixels);
                return 0;
            }
            continue;
        }
        std::printf("%-10s %-40s %8.1f Mpx/s\n", line.name, line.what, pixels / Measure(kRuns, line.work));
    }
    return argc > 2 ? 1 : 0;
}

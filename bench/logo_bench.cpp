// What the conversion of a logo costs, step by step and whole, on a picture of 24 bits a pixel:
//
//      logo_bench PICTURE.bmp                   times of the lines that standard input names
//      logo_bench PICTURE.bmp LINE              one line once, for a tool that counts instructions:
//                                               valgrind --tool=callgrind --toggle-collect=MeasuredWork
//      logo_bench --convert HOW IN.bmp OUT.bmp  a file into a file; HOW is grey, ordered or diffusion
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "answer_times.h"
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

Bytes ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    Bytes bytes(file ? static_cast<std::size_t>(file.tellg()) : 0);
    file.seekg(0);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

bool Convert(const std::string& how, const std::string& from, const std::string& to) {
    const Bytes source = ReadFile(from);
    Bytes output;
    LogoConversion result = LogoConversion::kOtherFormat;
    if (how == "grey") {
        result = ConvertToGrey(source, kColourBits, kTone, output);
    } else if (how == "ordered") {
        result = ConvertToMono(source, kColourBits, Halftone::kDitherM3, kTone, output);
    } else if (how == "diffusion") {
        result = ConvertToMono(source, kColourBits, Halftone::kErrorDiffuse, kTone, output);
    }
    std::ofstream file;
    if (result == LogoConversion::kConverted) {
        file.open(to, std::ios::binary);
        file.write(reinterpret_cast<const char*>(output.data()), static_cast<std::streamsize>(output.size()));
        file.close();
    }
    return result == LogoConversion::kConverted && file;
}

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

std::vector<NamedWork> LinesOf(const std::string& path, const Sources& sources, const LogoPicture& colours,
                               const LogoPicture& levels) {
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
        {"grey24",
         [&] {
             output.resize(colours.Width() * colours.Rows());
             for (std::size_t row = 0; row < colours.Rows(); ++row) {
                 tables.GreyOfRow(colours.Row(row), colours.Width(), output.data() + row * colours.Width());
             }
         }},
        {"grey8",
         [&] {
             output.resize(levels.RowBytes() * levels.Rows());
             for (std::size_t row = 0; row < levels.Rows(); ++row) {
                 GreyOfRow8(curve, levels.Row(row), levels.RowBytes(),
                            output.data() + row * levels.RowBytes());
             }
         }},
        {"mean", Packing(levels, bits, packMean)},
        {"ordered8", Packing(levels, bits, dither(PackAtLeast, DitherM3AtLeast))},
        {"ordered16", Packing(levels, bits, dither(PackAbove, DitherM4))},
        {"none24", toMono(kColourBits, Halftone::kNone)},
        {"m3of24", toMono(kColourBits, Halftone::kDitherM3)},
        {"m4of24", toMono(kColourBits, Halftone::kDitherM4)},
        {"diffusion", Packing(levels, bits,
                              [](std::size_t, const std::uint8_t* grey, std::size_t, std::uint8_t* to) {
                                  diffusion->Pack(grey, to);
                              })},
        {"diffuse24", toMono(kColourBits, Halftone::kErrorDiffuse)},
        {"diffuse8", toMono(kGreyBits, Halftone::kErrorDiffuse)},
        {"columns", [&] { MonoRasterOf(sources.mono, false, output); }},
        {"planes", [&] { GreyRasterOf(sources.levels, output); }},
        {"file24m3", [path] { Convert("ordered", path, path + ".converted"); }},
        {"file24diffused", [path] { Convert("diffusion", path, path + ".converted"); }},
    };
}

}  // namespace

// Named for the tool that counts.
extern "C" __attribute__((noinline)) void MeasuredWork(const std::function<void()>& work) {
    work();
}

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 4 && arguments[0] == "--convert") {
        return Convert(arguments[1], arguments[2], arguments[3]) ? 0 : 1;
    }
    if (arguments.empty() || arguments.size() > 2) {
        std::fprintf(stderr, "usage: logo_bench PICTURE.bmp [LINE] | --convert HOW IN.bmp OUT.bmp\n");
        return 2;
    }
    Sources sources;
    sources.colours = ReadFile(arguments[0]);
    if (ConvertToGrey(sources.colours, kColourBits, kTone, sources.levels) != LogoConversion::kConverted ||
        ConvertToMono(sources.colours, kColourBits, Halftone::kErrorDiffuse, kTone, sources.mono) !=
            LogoConversion::kConverted) {
        std::fprintf(stderr, "logo_bench: %s is no bitmap of 24 bits\n", argv[1]);
        return 1;
    }
    const auto colours = LogoPicture::Read(sources.colours);
    const auto levels = LogoPicture::Read(sources.levels);
    const std::vector<NamedWork> lines = LinesOf(arguments[0], sources, *colours, *levels);
    if (arguments.size() == 1) {
        return AnswerTimes(lines);
    }
    const NamedWork* const line = FindWork(lines, arguments[1]);
    if (line == nullptr) {
        std::fprintf(stderr, "logo_bench: no line is called %s\n", argv[2]);
        return 1;
    }
    // Memory is there from the second time on.
    line->work();
    MeasuredWork(line->work);
    return 0;
}

// A logo's file through every conversion, against the plain reference, and on to the printer's raster.
#include "printer/logo_conversion.h"

#include <optional>

#include "logo_input.h"
#include "logo_reference.h"
#include "printer/logo_raster.h"

namespace {

const LogoBytes kUntouched = {1, 2, 3};

struct Settings {
    Halftone halftone;
    LogoTone tone;
    bool isOnSliders;
};

// One setting in four is beyond what the sliders give.
Settings TakeSettings(FuzzBytes& bytes) {
    const std::uint8_t mode = TakeByte(bytes);
    const auto contrast = static_cast<std::int8_t>(TakeByte(bytes));
    const auto brightness = static_cast<std::int8_t>(TakeByte(bytes));
    const auto halftone = static_cast<Halftone>(mode % 5 - 1);
    if (mode >= 192) {
        return {halftone, {contrast * 0x01000000, brightness * 0x01000000}, false};
    }
    return {halftone, {contrast % 101, brightness % 101}, true};
}

// As the reference gives it for rows from the bottom.
LogoBytes WithHeightOf(LogoBytes expected, FuzzBytes file) {
    bitmap_file::Put32(&expected[bitmap_file::kHeightAt], bitmap_file::Get32(&file[bitmap_file::kHeightAt]));
    return expected;
}

LogoBytes Turned(const LogoBytes& converted) {
    return WholeFile(converted, *LogoPicture::Read(converted), true);
}

void CheckGrey(FuzzBytes file, const std::optional<LogoPicture>& picture, const Settings& settings) {
    const unsigned bits = ReadBitmapHeaders(file).bitCount;
    LogoBytes output = kUntouched;
    const LogoConversion conversion = ConvertToGrey(file, bits, settings.tone, output);
    Require(conversion == (picture ? LogoConversion::kConverted : LogoConversion::kOtherFormat),
            "a picture is made grey, or not, against its format");
    if (!picture) {
        Require(output == kUntouched, "something is written of a file that is not converted");
        return;
    }
    if (settings.isOnSliders) {
        const LogoBytes expected = reference::GreyFile(WholeFile(file, *picture, false),
                                                       settings.tone.contrast, settings.tone.brightness);
        Require(output == WithHeightOf(expected, file), "a picture is made grey otherwise");
    }
    LogoBytes raster;
    Require(GreyRasterOf(output, raster), "a grey logo has no raster");
    Require(raster == reference::GreyRaster(picture->IsTopDown() ? Turned(output) : output),
            "a grey logo has another raster");
}

void CheckMono(FuzzBytes file, const std::optional<LogoPicture>& picture, const Settings& settings) {
    const BitmapHeaders headers = ReadBitmapHeaders(file);
    LogoBytes output = kUntouched;
    const LogoConversion conversion =
        ConvertToMono(file, headers.bitCount, settings.halftone, settings.tone, output);
    if (conversion == LogoConversion::kConverted) {
        Require(picture && settings.halftone != Halftone::kPassThrough && headers.bitCount != 1,
                "a picture is made black and white that should not be");
        if (settings.isOnSliders) {
            const LogoBytes expected = reference::MonoFile(WholeFile(file, *picture, false),
                                                           static_cast<std::int32_t>(settings.halftone),
                                                           settings.tone.contrast, settings.tone.brightness);
            Require(output == WithHeightOf(expected, file), "a picture is made black and white otherwise");
        }
        LogoBytes raster;
        Require(MonoRasterOf(output, false, raster), "a black-and-white logo has no raster");
        Require(raster == reference::MonoRaster(picture->IsTopDown() ? Turned(output) : output),
                "a black-and-white logo has another raster");
        return;
    }
    Require(output == kUntouched, "something is written of a file that is not converted");
    Require(conversion != LogoConversion::kPassedThrough || settings.halftone == Halftone::kPassThrough,
            "a picture is passed through without being asked");
    Require(!picture || headers.bitCount == 1 || settings.halftone == Halftone::kPassThrough,
            "a picture is not made black and white");
}

}  // namespace

void FuzzLogoConversion(FuzzBytes bytes) {
    const Settings settings = TakeSettings(bytes);
    if (!IsQuick(bytes)) {
        return;
    }
    const auto picture = LogoPicture::Read(bytes);
    CheckGrey(bytes, picture, settings);
    CheckMono(bytes, picture, settings);
    LogoBytes output = kUntouched;
    const unsigned other = ReadBitmapHeaders(bytes).bitCount == kGreyBits ? kColourBits : kGreyBits;
    Require(ConvertToGrey(bytes, other, settings.tone, output) == LogoConversion::kOtherFormat &&
                output == kUntouched,
            "a picture is converted as one of another depth");
}

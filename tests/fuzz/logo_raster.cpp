// A file that claims to be a converted logo, as the printer would get it.
#include "printer/logo_raster.h"

#include <optional>

#include "logo_input.h"
#include "logo_reference.h"

namespace {

const LogoBytes kUntouched = {1, 2, 3};

void CheckGrey(FuzzBytes file, const std::optional<LogoPicture>& picture) {
    LogoBytes raster = kUntouched;
    const bool isTaken = GreyRasterOf(file, raster);
    const bool isGrey = picture && picture->BitCount() == 8;
    Require(isTaken ? isGrey : raster == kUntouched, "a raster is made of a file that is not grey");
    if (isTaken) {
        Require(raster == reference::GreyRaster(WholeFile(file, *picture, picture->IsTopDown())),
                "a grey logo has another raster");
    } else if (isGrey) {
        Require(picture->Rows() > 2 * 65535 || picture->Width() > 8 * 65532, "a grey logo has no raster");
    }
}

void CheckMono(FuzzBytes file, const std::optional<LogoPicture>& picture, bool takesWhiteAndBlack) {
    LogoBytes raster = kUntouched;
    const bool isTaken = MonoRasterOf(file, takesWhiteAndBlack, raster);
    const MonoPalette palette = ReadMonoPalette(file);
    const bool isInverse = palette == MonoPalette::kWhiteAndBlack;
    const bool isMono = picture && picture->BitCount() == 1 &&
                        (palette == MonoPalette::kBlackAndWhite || (takesWhiteAndBlack && isInverse));
    Require(isTaken ? isMono : raster == kUntouched,
            "a raster is made of a file that is not black and white");
    if (isTaken) {
        LogoBytes whole = WholeFile(file, *picture, picture->IsTopDown());
        if (isInverse) {
            std::transform(whole.begin() + 62, whole.end(), whole.begin() + 62,
                           [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
        }
        Require(raster == reference::MonoRaster(whole), "a black-and-white logo has another raster");
    } else if (isMono) {
        Require(picture->Rows() > 8 * 65535 || picture->Width() > 8 * 65532,
                "a black-and-white logo has no raster");
    }
}

}  // namespace

void FuzzLogoRaster(FuzzBytes bytes) {
    const bool takesWhiteAndBlack = TakeByte(bytes) % 2 == 1;
    if (!IsQuick(bytes)) {
        return;
    }
    const auto picture = LogoPicture::Read(bytes);
    CheckGrey(bytes, picture);
    CheckMono(bytes, picture, takesWhiteAndBlack);
}

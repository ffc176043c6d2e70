#include "devpages/logo_list.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "printer/bitmap_headers.h"
#include "printer/logo_raster.h"
#include "printer/printer_commands.h"
#include "printer/raw_job.h"

namespace {

std::optional<std::uint64_t> SizeOfFile(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(AtAnyLength(path).c_str(), GetFileExInfoStandard, &data) ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::nullopt;
    }
    return std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
}

// A logo's raster in the making; its memory goes from logo to logo.
struct RasterWork {
    LogoBuffers buffers;
    std::vector<std::uint8_t> file;
    std::vector<std::uint8_t> raster;
};

enum class RasterResult {
    kMade,
    kFailed,
    kNotMono,  // the file is a bitmap of another depth, or none
};

// Reads a logo's converted file; one that has gone meanwhile is made again.
bool ReadConverted(const Logo& logo, LogoType type, RasterWork& work) {
    if (ReadLogoFile(ConvertedPath(logo.path), work.file)) {
        return true;
    }
    std::wstring path;
    return ConvertLogo(logo, type, path, work.buffers) == LogoStatus::kWritten &&
           ReadLogoFile(path, work.file);
}

// Reads the file that has the black-and-white picture of a logo.
bool ReadMono(const Logo& logo, LogoType type, RasterWork& work) {
    BitmapHeaders headers{};
    const bool isOpened = ReadLogoHeaders(logo.path, headers) != LogoHeadersResult::kCannotOpen;
    if (type == LogoType::kTransformation) {
        if (headers.bitCount == kMonoBits) {
            return ReadLogoFile(logo.path, work.file);
        }
        // A source that cannot be read may be black and white itself: a converted file of another depth is
        // then not this type's, and tells nothing of the logo.
        return ReadConverted(logo, type, work) &&
               (headers.bitCount != 0 || ReadBitmapHeaders(work.file).bitCount == kMonoBits);
    }
    if (!isOpened) {
        return false;
    }
    if (headers.bitCount == kColourBits) {
        std::wstring path;
        return ConvertLogo(logo, type, path, work.buffers) == LogoStatus::kWritten &&
               ReadLogoFile(path, work.file);
    }
    // Headers that could not be read tell no depth. The file would then pass for one of another depth, which
    // leaves the job open.
    return ReadLogoFile(logo.path, work.file) && ReadBitmapHeaders(work.file).bitCount == headers.bitCount;
}

RasterResult MakeMonoRaster(const Logo& logo, LogoType type, RasterWork& work) {
    if (!ReadMono(logo, type, work)) {
        return RasterResult::kFailed;
    }
    const BitmapHeaders headers = ReadBitmapHeaders(work.file);
    if (headers.type != bitmap_file::kType || headers.bitCount != kMonoBits) {
        return RasterResult::kNotMono;
    }
    return MonoRasterOf(work.file, type == LogoType::kTransformation, work.raster) ? RasterResult::kMade
                                                                                   : RasterResult::kFailed;
}

RasterResult MakeGreyRaster(const Logo& logo, RasterWork& work) {
    return ReadConverted(logo, LogoType::kGrey, work) && GreyRasterOf(work.file, work.raster)
               ? RasterResult::kMade
               : RasterResult::kFailed;
}

bool WriteAll(RawJob& job, const CommandPieces& pieces) noexcept {
    return std::all_of(pieces.begin(), pieces.end(), [&job](const auto& piece) { return job.Write(piece); });
}

}  // namespace

LogoStatus ConvertLogo(const Logo& logo, LogoType type, std::wstring& output, LogoBuffers& buffers) noexcept {
    const LogoSettings settings = EffectiveSettings(type, logo.settings);
    if (type != LogoType::kGrey) {
        return ChangeToMonoBitmap(logo.path, settings.halftone, settings.tone, output, buffers);
    }
    BitmapHeaders headers{};
    if (ReadLogoHeaders(logo.path, headers) == LogoHeadersResult::kCannotOpen) {
        return LogoStatus::kFailed;
    }
    return ChangeToGrayBitmap(logo.path, headers.bitCount, settings.tone, output, buffers);
}

void KeepConverted(Logo& logo, LogoType type, LogoBuffers& buffers) noexcept {
    std::wstring converted;
    if (ConvertLogo(logo, type, converted, buffers) == LogoStatus::kWritten) {
        logo.isConverted = true;
    } else if (std::exchange(logo.isConverted, false)) {
        DeleteConverted(logo);
    }
}

void DeleteConverted(const Logo& logo) noexcept {
    try {
        DeleteFileW(AtAnyLength(ConvertedPath(logo.path)).c_str());
    } catch (const std::exception&) {
        // No memory for its name: the file stays.
    }
}

std::optional<Message> ReasonNotToSend(const Logos& logos) {
    if (logos.empty()) {
        return Message::kLogoNone;
    }
    std::uint64_t total = 0;
    for (const Logo& logo : logos) {
        auto size = SizeOfFile(ConvertedPath(logo.path));
        if (!size) {
            size = SizeOfFile(logo.path);
        }
        if (!size) {
            return Message::kLogoSize;
        }
        // A sparse file may claim nearly all that 64 bits count.
        total += std::min(*size, kLogoMemory);
    }
    return total >= kLogoMemory ? std::optional(Message::kLogoTotal) : std::nullopt;
}

void SendLogos(HANDLE printer, const Logos& logos, LogoType type) {
    const bool isGrey = type == LogoType::kGrey;
    RasterWork work;
    RawJob job(printer, kLogoJob);
    if (!WriteAll(job, LogosBegin(isGrey ? LogoRaster::kGrey : LogoRaster::kMono, logos.size()))) {
        return;
    }
    for (const Logo& logo : logos) {
        const RasterResult result = isGrey ? MakeGreyRaster(logo, work) : MakeMonoRaster(logo, type, work);
        if (result == RasterResult::kNotMono) {
            job.Abandon();
        }
        if (result != RasterResult::kMade || !job.Write(work.raster)) {
            return;
        }
    }
    WriteAll(job, LogosEnd());
}

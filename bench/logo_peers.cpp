// General image libraries at the work that logo_bench does, each by the fastest call that it has for that:
//
//      logo_peers COLOURS.bmp LEVELS.bmp MONO.bmp    times of the work that standard input names
//
// The files have 24, 8 and 1 bits a pixel and are decoded beforehand.
#include <leptonica/allheaders.h>

#include <QImage>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "../tests/unit/logo_reference.h"
#include "answer_times.h"

extern "C" {
#include <libavutil/log.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

namespace {

std::function<void()> QtToMono(const QImage& image, Qt::ImageConversionFlags how) {
    return [image, how] { static_cast<void>(image.convertToFormat(QImage::Format_Mono, how)); };
}

// Nothing is scaled: all its filters are equally fast then.
std::function<void()> SwscaleToMono(const QImage& image, AVPixelFormat format) {
    SwsContext* const context = sws_alloc_context();
    av_opt_set_int(context, "srcw", image.width(), 0);
    av_opt_set_int(context, "srch", image.height(), 0);
    av_opt_set_int(context, "dstw", image.width(), 0);
    av_opt_set_int(context, "dsth", image.height(), 0);
    av_opt_set_int(context, "src_format", format, 0);
    av_opt_set_int(context, "dst_format", AV_PIX_FMT_MONOBLACK, 0);
    av_opt_set_int(context, "sws_flags", SWS_POINT, 0);
    av_opt_set(context, "sws_dither", "bayer", 0);
    if (sws_init_context(context, nullptr, nullptr) < 0) {
        return [] {};
    }
    const int rowBytes = (image.width() + 7) / 8;
    // Its vector stores may pass the end of a row.
    std::vector<std::uint8_t> bits(static_cast<std::size_t>(rowBytes * image.height() + 64));
    return [context, image, rowBytes, bits]() mutable {
        const std::uint8_t* const from[] = {image.constBits(), nullptr, nullptr, nullptr};
        const int fromRowBytes[] = {static_cast<int>(image.bytesPerLine()), 0, 0, 0};
        std::uint8_t* const to[] = {bits.data(), nullptr, nullptr, nullptr};
        const int toRowBytes[] = {rowBytes, 0, 0, 0};
        sws_scale(context, from, fromRowBytes, 0, image.height(), to, toRowBytes);
    };
}

std::vector<std::uint8_t> ReadFile(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

template <typename ToBinary>
std::function<void()> Leptonica(const std::vector<std::uint8_t>& levels, const ToBinary& toBinary) {
    PIX* const file = pixReadMemBmp(levels.data(), levels.size());
    PIX* const grey = pixRemoveColormap(file, REMOVE_CMAP_TO_GRAYSCALE);
    return [grey, toBinary] {
        PIX* binary = toBinary(grey);
        pixDestroy(&binary);
    };
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: logo_peers COLOURS.bmp LEVELS.bmp MONO.bmp\n");
        return 2;
    }
    const QImage colours(QString::fromLocal8Bit(argv[1]));
    const QImage levels(QString::fromLocal8Bit(argv[2]));
    const auto levelsFile = ReadFile(argv[2]);
    const auto monoFile = ReadFile(argv[3]);
    if (levels.format() != QImage::Format_Indexed8 || colours.size() != levels.size() || monoFile.empty()) {
        std::fprintf(stderr, "logo_peers: not the same picture in 24, 8 and 1 bits\n");
        return 1;
    }
    av_log_set_level(AV_LOG_ERROR);
    const QImage rgb = colours.convertToFormat(QImage::Format_RGB888);
    const QImage bgr = colours.convertToFormat(QImage::Format_BGR888);
    constexpr int kMiddle = 127;
    return AnswerTimes({
        {"leptonica threshold",
         Leptonica(levelsFile, [](PIX* grey) { return pixThresholdToBinary(grey, kMiddle); })},
        {"leptonica diffusion", Leptonica(levelsFile, pixDitherToBinary)},
        {"swscale ordered8", SwscaleToMono(levels, AV_PIX_FMT_GRAY8)},
        {"swscale ordered24", SwscaleToMono(bgr, AV_PIX_FMT_BGR24)},
        {"qt ordered8", QtToMono(levels, Qt::OrderedDither)},
        {"qt ordered8 grey", QtToMono(levels.convertToFormat(QImage::Format_Grayscale8), Qt::OrderedDither)},
        {"qt ordered24", QtToMono(rgb, Qt::OrderedDither)},
        {"qt ordered24 bgr", QtToMono(bgr, Qt::OrderedDither)},
        {"qt diffusion24", QtToMono(rgb, Qt::DiffuseDither)},
        {"plain columns", [&monoFile] { reference::MonoRaster(monoFile); }},
        {"plain planes", [&levelsFile] { reference::GreyRaster(levelsFile); }},
    });
}

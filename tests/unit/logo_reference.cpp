#include "logo_reference.h"

#include <cmath>
#include <cstddef>

namespace reference {

namespace {

constexpr int kM8[8][8] = {
    {0, 32, 8, 40, 2, 34, 10, 42},    {48, 16, 56, 24, 50, 18, 58, 26}, {12, 44, 4, 36, 14, 46, 6, 38},
    {60, 28, 52, 20, 62, 30, 54, 22}, {3, 35, 11, 43, 1, 33, 9, 41},    {51, 19, 59, 27, 49, 17, 57, 25},
    {15, 47, 7, 39, 13, 45, 5, 37},   {63, 31, 55, 23, 61, 29, 53, 21},
};

int M16(int row, int column) {
    int k = 0;
    if (row < 8 && column >= 8) {
        k = 3;
    }
    if (row >= 8 && column < 8) {
        k = 2;
    }
    if (row >= 8 && column >= 8) {
        k = 1;
    }
    return 4 * kM8[row % 8][column % 8] + k;
}

int Clamped(int value) {
    return value < 0 ? 0 : value > 255 ? 255 : value;
}

int Number(const Bytes& file, std::size_t at, int bytes) {
    std::uint32_t value = 0;
    for (int i = bytes - 1; i >= 0; --i) {
        value = value * 256 + file[at + static_cast<std::size_t>(i)];
    }
    return static_cast<int>(value);
}

void Append(Bytes& file, int bytes, int value) {
    for (int i = 0; i < bytes; ++i) {
        file.push_back(static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) >> 8 * i & 255));
    }
}

// A file by its pixels.
class Picture {
  public:
    explicit Picture(const Bytes& file)
        : width(Number(file, 18, 4)), height(Number(file, 22, 4)), bits(Number(file, 28, 2)), file_(file) {}

    // The byte of a row.
    int Byte(int y, int at) const {
        const int offset = bits == 24 ? 54 : bits == 8 ? 1078 : 62;
        const int rowBytes = (width * bits + 31) / 32 * 4;
        return file_[static_cast<std::size_t>(offset + y * rowBytes + at)];
    }

    int Blue(int x, int y) const { return Byte(y, 3 * x); }
    int Green(int x, int y) const { return Byte(y, 3 * x + 1); }
    int Red(int x, int y) const { return Byte(y, 3 * x + 2); }

    int Level(int x, int y) const {
        return bits == 8 ? Byte(y, x) : (Byte(y, x / 8) >> (7 - x % 8) & 1) != 0 ? 255 : 0;
    }

    int width;
    int height;
    int bits;

  private:
    const Bytes& file_;
};

// What Tone gives for each value, kept: it is asked for often.
class Tones {
  public:
    Tones(int contrast, int brightness) {
        for (int value = 0; value < 256; ++value) {
            tones_[value] = Tone(value, contrast, brightness);
        }
    }
    int operator()(int value) const { return tones_[value]; }

  private:
    int tones_[256];
};

class CentredTones {
  public:
    CentredTones(int mean, int contrast, int brightness) {
        for (int value = 0; value < 256; ++value) {
            tones_[value] = CentredTone(value, mean, contrast, brightness);
        }
    }
    int operator()(int value) const { return tones_[value]; }

  private:
    int tones_[256];
};

int Grey(const Picture& picture, const Tones& tone, int x, int y) {
    if (picture.bits != 24) {
        return tone(picture.Level(x, y));
    }
    return (tone(picture.Blue(x, y)) * 114 + tone(picture.Green(x, y)) * 587 +
            tone(picture.Red(x, y)) * 299) /
           1000;
}

void AppendHeaders(Bytes& file, const Picture& picture, int bits, int offset, int imageSize) {
    Append(file, 2, 19778);
    Append(file, 4, imageSize + offset);
    Append(file, 4, 0);
    Append(file, 4, offset);
    Append(file, 4, 40);
    Append(file, 4, picture.width);
    Append(file, 4, picture.height);
    Append(file, 2, 1);
    Append(file, 2, bits);
    Append(file, 4, 0);
    Append(file, 4, imageSize);
    // Resolutions and colour counts.
    file.resize(54, 0);
}

// The white pixels of a picture.
class Mono {
  public:
    explicit Mono(const Picture& picture)
        : width_(picture.width), white_(static_cast<std::size_t>(picture.width * picture.height)) {}
    void Set(int x, int y, bool isWhite) { white_[static_cast<std::size_t>(y * width_ + x)] = isWhite; }
    bool IsWhite(int x, int y) const { return white_[static_cast<std::size_t>(y * width_ + x)]; }

  private:
    int width_;
    std::vector<bool> white_;
};

void NoHalftone(const Picture& picture, const Tones& tone, Mono& mono) {
    const int pixels = picture.width * picture.height;
    int threshold = 0;
    if (picture.bits == 24) {
        int blue = 0;
        int green = 0;
        int red = 0;
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                blue += tone(picture.Blue(x, y));
                green += tone(picture.Green(x, y));
                red += tone(picture.Red(x, y));
            }
        }
        threshold = (blue / pixels * 114 + green / pixels * 587 + red / pixels * 299) / 1000;
    } else {
        int sum = 0;
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                sum += tone(picture.Level(x, y));
            }
        }
        threshold = sum / pixels;
    }
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            mono.Set(x, y, Grey(picture, tone, x, y) > threshold);
        }
    }
}

void DitherM3(const Picture& picture, const Tones& tone, Mono& mono) {
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const int level = Grey(picture, tone, x, y) >> 2;
            const int entry = kM8[y % 8][x % 8];
            mono.Set(x, y, picture.bits == 24 ? level >= entry : level > entry);
        }
    }
}

void DitherM4OfLevels(const Picture& picture, const Tones& tone, Mono& mono) {
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            mono.Set(x, y, tone(picture.Level(x, y)) > M16(y % 16, x % 16));
        }
    }
}

void DitherM4OfColours(const Picture& picture, int contrast, int brightness, Mono& mono) {
    const int pixels = picture.width * picture.height;
    int blueSum = 0;
    int greenSum = 0;
    int redSum = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            blueSum += picture.Blue(x, y);
            greenSum += picture.Green(x, y);
            redSum += picture.Red(x, y);
        }
    }
    const CentredTones redTone(blueSum / pixels, contrast, brightness);
    const CentredTones greenTone(greenSum / pixels, contrast, brightness);
    const CentredTones blueTone(redSum / pixels, contrast, brightness);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const int red = redTone(picture.Red(x, y));
            const int green = greenTone(picture.Green(x, y));
            const int blue = blueTone(picture.Blue(x, y));
            const int grey = (red * 114 + green * 587 + blue * 299) / 1000;
            mono.Set(x, y, grey >= M16(y % 16, x % 16));
        }
    }
}

void ErrorDiffuse(const Picture& picture, const Tones& tone, Mono& mono) {
    const int last = picture.width - 1;
    // A place beyond the end, for the share that nobody uses.
    std::vector<int> current(static_cast<std::size_t>(picture.width) + 1);
    std::vector<int> next(static_cast<std::size_t>(picture.width) + 1);
    for (int y = 0; y < picture.height; ++y) {
        current = next;
        next.assign(next.size(), 0);
        int carry = 0;
        const bool isFromRight = y % 2 == 0;
        for (int i = 0; i <= last; ++i) {
            const int x = isFromRight ? last - i : i;
            const auto at = static_cast<std::size_t>(x);
            const int s = Grey(picture, tone, x, y) + carry + current[at];
            const bool isWhite = s >= 129;
            mono.Set(x, y, isWhite);
            const auto e = static_cast<float>(isWhite ? s - 255 : s);
            if (i != last) {
                carry = static_cast<int>(0.375 * static_cast<double>(e));
            }
            if (y != picture.height - 1) {
                next[at] += static_cast<int>(0.375 * static_cast<double>(e));
                const int share = static_cast<int>(0.25 * static_cast<double>(e));
                if (!isFromRight) {
                    next[at + 1] += share;
                } else if (x > 0) {
                    next[at - 1] += share;
                }
            }
        }
    }
}

int RowBytesOf(int width, int bits) {
    return (width * bits + 31) / 32 * 4;
}

}  // namespace

int Tone(int value, int contrast, int brightness) {
    const int t = 255 - contrast;
    const auto k = static_cast<float>((255 - 2 * contrast) / 255.0);
    int result = 0;
    if (contrast >= 0) {
        if (value <= contrast) {
            result = 0;
        } else if (value < t) {
            result = static_cast<int>((value - contrast) / static_cast<double>(k));
        } else {
            result = 255;
        }
    } else {
        const float q = 255.0F / static_cast<float>(2 * contrast + 255);
        const float quotient = static_cast<float>(value) / q;
        result = static_cast<int>(quotient - static_cast<float>(contrast));
    }
    return Clamped(result + brightness);
}

int CentredTone(int value, int mean, int contrast, int brightness) {
    float f = 0;
    if (contrast >= 0) {
        f = static_cast<float>(1 + contrast / 10.0);
    } else {
        f = static_cast<float>(1 - std::sqrt(static_cast<double>(-contrast)) / 10);
    }
    const float product = static_cast<float>(value - mean) * f;
    return Clamped(static_cast<int>(static_cast<float>(mean) + product) + brightness);
}

Bytes GreyFile(const Bytes& source, int contrast, int brightness) {
    const Picture picture(source);
    const Tones tone(contrast, brightness);
    const int rowBytes = (picture.width + 3) / 4 * 4;
    Bytes file;
    AppendHeaders(file, picture, 8, 1078, rowBytes * picture.height);
    for (int i = 0; i < 256; ++i) {
        Append(file, 1, i);
        Append(file, 1, i);
        Append(file, 1, i);
        Append(file, 1, 0);
    }
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < rowBytes; ++x) {
            Append(file, 1, x < picture.width ? Grey(picture, tone, x, y) : 0);
        }
    }
    return file;
}

Bytes MonoFile(const Bytes& source, int halftone, int contrast, int brightness) {
    const Picture picture(source);
    const Tones tone(contrast, brightness);
    Mono mono(picture);
    if (halftone == 0) {
        NoHalftone(picture, tone, mono);
    } else if (halftone == 1) {
        DitherM3(picture, tone, mono);
    } else if (halftone == 2 && picture.bits == 8) {
        DitherM4OfLevels(picture, tone, mono);
    } else if (halftone == 2) {
        DitherM4OfColours(picture, contrast, brightness, mono);
    } else {
        ErrorDiffuse(picture, tone, mono);
    }
    const int rowBytes = RowBytesOf(picture.width, 1);
    Bytes file;
    AppendHeaders(file, picture, 1, 62, rowBytes * picture.height);
    Append(file, 4, 0);
    Append(file, 4, 0xFFFFFF);
    for (int y = 0; y < picture.height; ++y) {
        for (int byte = 0; byte < rowBytes; ++byte) {
            int bits = 0;
            for (int x = byte * 8; x < byte * 8 + 8; ++x) {
                bits = bits * 2 + (x < picture.width && mono.IsWhite(x, y) ? 1 : 0);
            }
            Append(file, 1, bits);
        }
    }
    return file;
}

Bytes GreyRaster(const Bytes& file) {
    const Picture picture(file);
    const int x = ((picture.width + 3) / 4 * 4 + 7) / 8;
    const int y = (picture.height * 4 + 7) / 8;
    Bytes raster = {1, 0};
    Append(raster, 2, x);
    Append(raster, 2, y);
    for (int row = 0; row < picture.height; ++row) {
        for (int bit = 7; bit >= 4; --bit) {
            for (int byte = 0; byte < x; ++byte) {
                int packed = 0;
                for (int column = byte * 8; column < byte * 8 + 8; ++column) {
                    const int level =
                        column < picture.width ? picture.Level(column, picture.height - 1 - row) : 255;
                    packed = packed * 2 + (level >> bit & 1);
                }
                Append(raster, 1, 255 - packed);
            }
        }
    }
    raster.resize(static_cast<std::size_t>(6 + x * y * 8));
    return raster;
}

Bytes MonoRaster(const Bytes& file) {
    const Picture picture(file);
    const int x = RowBytesOf(picture.width, 1);
    const int y = (picture.height + 7) / 8;
    Bytes raster;
    Append(raster, 2, x);
    Append(raster, 2, y);
    for (int column = 0; column < x * 8; ++column) {
        for (int byte = 0; byte < y; ++byte) {
            int packed = 0;
            for (int dot = byte * 8; dot < byte * 8 + 8; ++dot) {
                const int row = y * 8 - 1 - dot;
                const bool isInside = column < picture.width && row < picture.height;
                packed = packed * 2 + (isInside && picture.Level(column, row) == 0 ? 1 : 0);
            }
            Append(raster, 1, packed);
        }
    }
    return raster;
}

}  // namespace reference

// The watermark's bitmap on its way to 24 bits a pixel.
#include "docpages/bitmap_24.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "fuzz_input.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

class MemorySource final : public ByteSource {
  public:
    MemorySource(FuzzBytes bytes, bool knowsSize) : bytes_(bytes), knowsSize_(knowsSize) {}

    std::size_t Read(std::span<std::uint8_t> buffer) noexcept override {
        const std::size_t count = std::min(buffer.size(), bytes_.size() - position_);
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(position_), count, buffer.begin());
        position_ += count;
        return count;
    }

    std::uint64_t Size() const noexcept override { return knowsSize_ ? bytes_.size() : 0; }

  private:
    FuzzBytes bytes_;
    bool knowsSize_;
    std::size_t position_ = 0;
};

// Fails when it is full, and is not written to any more then.
class MemorySink final : public ByteSink {
  public:
    explicit MemorySink(std::size_t room) : room_(room) {}

    bool Write(std::span<const std::uint8_t> bytes) noexcept override {
        Require(!isFull_, "a sink that failed is written to");
        isFull_ = bytes.size() > room_ - bytes_.size();
        if (!isFull_) {
            bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        }
        return !isFull_;
    }

    const Bytes& Written() const { return bytes_; }
    bool IsFull() const { return isFull_; }

  private:
    std::size_t room_;
    Bytes bytes_;
    bool isFull_ = false;
};

std::uint32_t Number(FuzzBytes file, std::size_t at, std::size_t size) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < size; ++i) {
        number |= std::uint32_t{at + i < file.size() ? file[at + i] : std::uint8_t{0}} << 8 * i;
    }
    return number;
}

std::uint8_t ByteAt(FuzzBytes file, std::size_t at, std::uint8_t missing) {
    return at < file.size() ? file[at] : missing;
}

// A pixel at a time. `most` bounds the result: the rest is not compared.
Bytes PlainConversion(FuzzBytes file, std::size_t most) {
    const bool is1Bit = Number(file, 10, 4) == 62;
    const auto width = static_cast<std::size_t>(Number(file, 18, 4));
    const auto height = static_cast<std::int32_t>(Number(file, 22, 4));
    const std::size_t rows = width > 0 && height > 0 ? static_cast<std::size_t>(height) : 0;
    const std::size_t sourceRow = is1Bit ? (width + 31) / 32 * 4 : (width + 3) / 4 * 4;
    const std::size_t resultRow = (width * 3 + 3) / 4 * 4;
    Bytes result;
    for (std::size_t i = 0; i < 54; ++i) {
        result.push_back(ByteAt(file, i, 0));
    }
    const auto put = [&result](std::size_t at, std::uint64_t number, int size) {
        for (int i = 0; i < size; ++i) {
            result[at++] = static_cast<std::uint8_t>(number >> 8 * i & 255);
        }
    };
    put(2, 54 + resultRow * static_cast<std::size_t>(std::int64_t{height}), 4);
    put(10, 54, 4);
    put(28, 24, 2);
    if (!is1Bit) {
        put(34, 0, 4);
    }
    const std::size_t pixelsAt = is1Bit ? 62 : 1078;
    for (std::size_t row = 0; row < rows && result.size() < most; ++row) {
        for (std::size_t x = 0; x < width && result.size() < most; ++x) {
            const std::size_t at = pixelsAt + row * sourceRow;
            const std::uint8_t byte = ByteAt(file, at + (is1Bit ? x / 8 : x), 0xFF);
            const std::size_t index = is1Bit ? std::size_t{byte >> (7 - x % 8) & 1u} : byte;
            // Green and blue change places.
            result.push_back(ByteAt(file, 54 + 4 * index + 1, 0));
            result.push_back(ByteAt(file, 54 + 4 * index, 0));
            result.push_back(ByteAt(file, 54 + 4 * index + 2, 0));
        }
        for (std::size_t i = width * 3; i < resultRow; ++i) {
            result.push_back(is1Bit ? 0xFF : 0);
        }
    }
    return result;
}

// Whether the file has all the pixels of a plain size.
bool IsWhole(FuzzBytes file) {
    const std::uint64_t offset = Number(file, 10, 4);
    const std::uint64_t width = Number(file, 18, 4);
    const std::uint64_t height = Number(file, 22, 4);
    const std::uint64_t rowBytes = offset == 62 ? (width + 31) / 32 * 4 : (width + 3) / 4 * 4;
    return width < 65536 && height < 65536 && file.size() >= offset &&
           file.size() - offset >= rowBytes * height;
}

void CheckResult(FuzzBytes file, const MemorySink& sink, BitmapConversion conversion) {
    const std::uint32_t offset = Number(file, 10, 4);
    const bool isBitmap = Number(file, 0, 2) == 0x4D42;
    if (!isBitmap || (offset != 62 && offset != 1078)) {
        const bool is24Bit = isBitmap && offset == 54 && Number(file, 28, 2) == 24;
        Require(conversion == (is24Bit ? BitmapConversion::kCopyWhole : BitmapConversion::kRefused),
                "a file of another layout is not copied, or refused");
        Require(sink.Written().empty() && !sink.IsFull(),
                "something is written of a file that is not converted");
        return;
    }
    Require(conversion == (sink.IsFull() ? BitmapConversion::kRefused : conversion) &&
                conversion != BitmapConversion::kCopyWhole,
            "a full sink is not told");
    const Bytes& written = sink.Written();
    if (conversion == BitmapConversion::kRefused && !sink.IsFull()) {
        Require(written.empty() && !IsWhole(file), "a whole picture is refused");
        return;
    }
    const Bytes expected = PlainConversion(file, written.size() + 1);
    Require(conversion == BitmapConversion::kRefused || expected.size() == written.size(),
            "a converted file has another length");
    Require(expected.size() >= written.size() && std::equal(written.begin(), written.end(), expected.begin()),
            "a file is converted otherwise");
}

// A loader may believe the headers of a file whose size is told.
void CheckSize(FuzzBytes file, const Bytes& converted, BitmapConversion conversion) {
    MemorySource source(file, true);
    const auto size = WholeBitmapSize(source);
    if (!size) {
        return;
    }
    const std::uint64_t rowBytes =
        (static_cast<std::uint64_t>(size->width) * Number(file, 28, 2) + 31) / 32 * 4;
    Require(size->width > 0 && size->height > 0 &&
                Number(file, 10, 4) + rowBytes * static_cast<std::uint64_t>(size->height) <= file.size(),
            "a picture is larger than its file");
    if (conversion == BitmapConversion::kConverted && static_cast<std::int32_t>(Number(file, 22, 4)) > 0) {
        MemorySource result(converted, true);
        Require(WholeBitmapSize(result) == size, "a picture changes its size");
    }
}

// A whole piece of a wide row now and then; mostly less, since bytes take time.
std::size_t RoomOf(std::uint8_t behaviour) {
    if (behaviour < 8) {
        return 65536;
    }
    return behaviour < 128 ? 4096 : std::size_t{behaviour - 128u} * 4;
}

}  // namespace

void FuzzBitmap24(FuzzBytes bytes) {
    const std::uint8_t behaviour = TakeByte(bytes);
    MemorySource source(bytes, behaviour % 2 == 0);
    MemorySink sink(RoomOf(behaviour));
    const BitmapConversion conversion = ConvertTo24Bitmap(source, sink);
    // Without a size, no picture is known to be whole.
    if (behaviour % 2 == 0 || conversion != BitmapConversion::kRefused || !sink.Written().empty()) {
        CheckResult(bytes, sink, conversion);
    }
    CheckSize(bytes, sink.Written(), conversion);
}

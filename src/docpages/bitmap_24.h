// A bitmap file of 1, 8 or 24 bits a pixel as a 24-bit one, so that preview and printing see one pixel
// format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "docpages/water_mark_layout.h"

// Bytes in their order.
class ByteSource {
  public:
    // Fills the buffer from its front and gives the number of bytes read: fewer than it holds only where the
    // source ends or fails.
    virtual std::size_t Read(std::span<std::uint8_t> buffer) noexcept = 0;

    // All of its bytes, read or not; 0 when that cannot be told.
    virtual std::uint64_t Size() const noexcept = 0;

  protected:
    ~ByteSource() = default;
};

class ByteSink {
  public:
    // FALSE when not all of the bytes could be written.
    virtual bool Write(std::span<const std::uint8_t> bytes) noexcept = 0;

  protected:
    ~ByteSink() = default;
};

enum class BitmapConversion {
    kRefused,    // not a bitmap of the three layouts, an absurd size, or the sink failed
    kConverted,  // the sink holds the 24-bit file
    kCopyWhole,  // 24 bits already: nothing was written, the source's file is the result
};

// Where the file header says that the pixels begin is what tells the layouts apart: 62 for 1 bit, 1078 for 8
// bits, 54 for 24 bits. Nothing is written before the header is accepted, and memory does not grow with what
// it claims. Compression, resolution and colour counts go over as they are.
//
// A source that ends early is not refused: header and palette bytes that it lacks are 0, row bytes FF. But a
// few bytes do not become gigabytes: rows that it does not hold whole may be 10 * 1024 * 1024 pixels, the
// most that the water mark page takes of a picture. A larger one that is there still converts, for the page
// to say that it is too big.
//
// A negative height (rows from the top) gives the headers alone. In each colour green and blue are exchanged;
// see the .cpp.
BitmapConversion ConvertTo24Bitmap(ByteSource& source, ByteSink& sink) noexcept;

// The size of the picture in a file of one of the three layouts, its height positive also where the rows come
// from the top. Nothing for another file, a compressed or an empty picture, and one whose rows the file does
// not hold: a loader that believes what the headers say reads beyond the end of such a file.
std::optional<PixelSize> WholeBitmapSize(ByteSource& source) noexcept;

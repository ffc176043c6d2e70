// Logos on the disk: what each conversion answers and leaves behind, for every depth and for files that lie,
// call by call where one fails. The plug-in's own sources are part of this program.
#include "devpages/logo_file.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/platform.h"
#include "logo_pictures.h"
#include "logo_reference.h"
#include "logo_system.h"
#include "rig/trace_capture.h"

namespace {

using counted_memory::memory;
using logo_system::Calls;
using logo_system::kNever;
using logo_system::RefusedBlock;
using logo_system::WatchedFiles;
using pictures::Bytes;

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

constexpr Halftone kHalftones[] = {Halftone::kNone, Halftone::kDitherM3, Halftone::kDitherM4,
                                   Halftone::kErrorDiffuse};

// Neither is the other, and neither changes nothing.
constexpr LogoTone kTone = {20, -30};

// What `output` holds before.
const std::wstring kBefore = L"before";

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

void Set(Bytes& file, std::size_t at, std::size_t bytes, std::uint32_t value) {
    for (std::size_t i = 0; i < bytes; ++i) {
        file[at + i] = static_cast<std::uint8_t>(value >> 8 * i & 0xFF);
    }
}

// A picture of any depth that a header can claim.
Bytes OfDepth(unsigned bits) {
    if (bits == 8 || bits == 24) {
        return pictures::File(13, 5, bits, pictures::Gradient());
    }
    Bytes file = pictures::Front(13, 5, bits);
    file.resize(4000, 0x3C);
    return file;
}

class LogoFileTest : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::remove_all(folder_);
        ASSERT_TRUE(std::filesystem::create_directories(folder_));
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::wstring Path(const std::wstring& name) const { return (folder_ / name).wstring(); }

    // By the path that the system takes at any length.
    static void Put(const std::wstring& path, const Bytes& bytes) {
        const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        ASSERT_NE(file, INVALID_HANDLE_VALUE) << GetLastError();
        DWORD count = 0;
        WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
        EXPECT_EQ(count, bytes.size());
        CloseHandle(file);
    }

    // Nothing where there is no file, or somebody has it open.
    static std::optional<Bytes> Get(const std::wstring& path) {
        const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            return std::nullopt;
        }
        Bytes bytes(GetFileSize(file, nullptr));
        DWORD count = 0;
        ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
        CloseHandle(file);
        bytes.resize(count);
        return bytes;
    }

    bool IsConverted() const { return std::filesystem::exists(converted_); }

    LogoStatus Grey(unsigned bitCount) {
        output_ = kBefore;
        return ChangeToGrayBitmap(source_, bitCount, kTone, output_, buffers_);
    }
    LogoStatus MonoOf(unsigned bitCount, Halftone halftone = Halftone::kDitherM3) {
        output_ = kBefore;
        return ChangeToMonoBitmap(source_, bitCount, halftone, kTone, output_, buffers_);
    }
    LogoStatus Mono(Halftone halftone = Halftone::kDitherM3) {
        output_ = kBefore;
        return ChangeToMonoBitmap(source_, halftone, kTone, output_, buffers_);
    }

    // The result is this file, beside the source.
    void ExpectWritten(LogoStatus status, const Bytes& expected) {
        EXPECT_EQ(status, LogoStatus::kWritten);
        EXPECT_EQ(output_, converted_);
        const auto file = Get(converted_);
        ASSERT_TRUE(file);
        ASSERT_TRUE(*file == expected);
        ASSERT_TRUE(buffers_.converted == expected) << "kept for whoever shows it";
    }

    // Nothing was written, and the result is this path.
    void ExpectNotWritten(LogoStatus status, LogoStatus expected, const std::wstring& output) const {
        EXPECT_EQ(status, expected);
        EXPECT_EQ(output_, output);
        EXPECT_FALSE(IsConverted());
    }

    const std::filesystem::path folder_ = std::filesystem::temp_directory_path() / "kvmr72-logos";
    const std::wstring source_ = Path(L"shop.bmp");
    const std::wstring converted_ = Path(L"shopTemp.bmp");
    std::wstring output_;
    LogoBuffers buffers_;
};

// Paths

TEST(LogoPaths, AConvertedFileIsNamedAfterItsSource) {
    EXPECT_EQ(ConvertedPath(L"D:\\logos\\shop.bmp"), L"D:\\logos\\shopTemp.bmp");
    EXPECT_EQ(ConvertedPath(L"D:\\logos\\SHOP.BMP"), L"D:\\logos\\SHOPTemp.bmp");
    EXPECT_EQ(ConvertedPath(L"D:\\徽标\\店.bmp"), L"D:\\徽标\\店Temp.bmp");
    EXPECT_EQ(ConvertedPath(L"\\\\server\\logos\\shop.bmp"), L"\\\\server\\logos\\shopTemp.bmp");
    // The last four characters go, whatever they are.
    EXPECT_EQ(ConvertedPath(L"D:\\logos\\shop.jpeg"), L"D:\\logos\\shop.Temp.bmp");
    EXPECT_EQ(ConvertedPath(L"D:\\logos\\entrance"), L"D:\\logos\\entrTemp.bmp");
    EXPECT_EQ(ConvertedPath(L"D:\\logos\\a.b"), L"D:\\logosTemp.bmp");
    EXPECT_EQ(ConvertedPath(L"D:\\logos\\shopTemp.bmp"), L"D:\\logos\\shopTempTemp.bmp");
}

TEST(LogoPaths, AShortNameGoesWhole) {
    for (const wchar_t* path : {L"", L"a", L"ab", L"abc", L"abcd", L".bmp"}) {
        EXPECT_EQ(ConvertedPath(path), L"Temp.bmp") << path;
    }
    EXPECT_EQ(ConvertedPath(L"a.bmp"), L"aTemp.bmp");
}

TEST(LogoPaths, LongOnesAreWrittenForTheSystem) {
    const auto path = [](const std::wstring& front, std::size_t size) {
        return front + std::wstring(size - front.size(), L'x');
    };
    const std::wstring ends[] = {L"", L"D:\\shop.bmp", path(L"D:\\", 259), path(L"\\\\server\\logos\\", 259)};
    for (const std::wstring& same : ends) {
        EXPECT_EQ(AtAnyLength(same), same);
    }
    for (const std::size_t size : {260u, 263u, 1000u, 32000u}) {
        EXPECT_EQ(AtAnyLength(path(L"D:\\", size)), L"\\\\?\\" + path(L"D:\\", size));
        EXPECT_EQ(AtAnyLength(path(L"\\\\server\\logos\\", size)),
                  L"\\\\?\\UNC" + path(L"\\\\server\\logos\\", size).substr(1));
        const std::wstring already = path(L"\\\\?\\D:\\", size);
        EXPECT_EQ(AtAnyLength(already), already);
    }
}

TEST_F(LogoFileTest, WritesBesideAPathOfAnyName) {
    const std::wstring names[] = {L"店面标志.bmp", L"shop.DIB", L"shop", L"four", L"a.longer extension"};
    const Bytes picture = OfDepth(24);
    for (const std::wstring& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        Put(Path(name), picture);
        std::wstring output;
        EXPECT_EQ(ChangeToMonoBitmap(Path(name), Halftone::kNone, {}, output, buffers_),
                  LogoStatus::kWritten);
        EXPECT_EQ(output, Path(name.substr(0, name.size() - 4) + L"Temp.bmp"));
        const auto file = Get(output);
        ASSERT_TRUE(file);
        EXPECT_TRUE(*file == reference::MonoFile(picture, 0, 0, 0));
        std::filesystem::remove(output);
    }
}

TEST_F(LogoFileTest, WritesInTheCurrentFolderForAShortName) {
    wchar_t before[MAX_PATH] = L"";
    GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(SetCurrentDirectoryW(folder_.c_str()));
    const Bytes picture = OfDepth(8);
    Put(Path(L"abc"), picture);
    std::wstring output;
    EXPECT_EQ(ChangeToGrayBitmap(L"abc", 8, {}, output, buffers_), LogoStatus::kWritten);
    SetCurrentDirectoryW(before);
    EXPECT_EQ(output, L"Temp.bmp");
    const auto file = Get(Path(L"Temp.bmp"));
    ASSERT_TRUE(file);
    EXPECT_TRUE(*file == reference::GreyFile(picture, 0, 0));
}

// At 259 characters a plain path ends, and the converted file's has four more; then longer ones.
TEST_F(LogoFileTest, WritesBesideAPathOfAnyLength) {
    const Bytes picture = OfDepth(24);
    for (const std::size_t size : {255u, 256u, 259u, 260u, 300u}) {
        SCOPED_TRACE(size);
        const std::wstring folder = Path(std::wstring(120, L'f'));
        std::filesystem::create_directories(folder);
        const std::wstring source = folder + L'\\' + std::wstring(size - folder.size() - 5, L'x') + L".bmp";
        ASSERT_EQ(source.size(), size);
        const std::wstring system = L"\\\\?\\" + source;
        Put(system, picture);
        BitmapHeaders headers{};
        EXPECT_EQ(ReadLogoHeaders(source, headers), LogoHeadersResult::kRead);
        std::wstring output;
        EXPECT_EQ(ChangeToMonoBitmap(source, Halftone::kDitherM4, kTone, output, buffers_),
                  LogoStatus::kWritten);
        EXPECT_EQ(output, source.substr(0, size - 4) + L"Temp.bmp");
        const auto file = Get(L"\\\\?\\" + output);
        ASSERT_TRUE(file);
        EXPECT_TRUE(*file == reference::MonoFile(picture, 2, 20, -30));
        Bytes bytes;
        EXPECT_TRUE(ReadLogoFile(output, bytes));
        EXPECT_TRUE(bytes == *file);
        DeleteFileW(system.c_str());
        DeleteFileW((L"\\\\?\\" + output).c_str());
    }
}

// What each operation answers for each depth

TEST_F(LogoFileTest, GreyTakesTheDepthThatItIsCalledFor) {
    for (const unsigned asked : {1u, 8u, 24u}) {
        for (unsigned bits = 0; bits <= 64; ++bits) {
            SCOPED_TRACE(testing::Message() << asked << " of " << bits);
            const Bytes picture = OfDepth(bits);
            Put(source_, picture);
            const LogoStatus status = Grey(asked);
            if (bits == asked) {
                ExpectWritten(status, reference::GreyFile(picture, 20, -30));
                std::filesystem::remove(converted_);
            } else {
                ExpectNotWritten(status, LogoStatus::kOtherFormat, kBefore);
            }
        }
    }
}

TEST_F(LogoFileTest, MonoTakesTheDepthThatItIsCalledFor) {
    for (const unsigned asked : {8u, 24u}) {
        for (unsigned bits = 0; bits <= 64; ++bits) {
            SCOPED_TRACE(testing::Message() << asked << " of " << bits);
            const Bytes picture = OfDepth(bits);
            Put(source_, picture);
            const LogoStatus status = MonoOf(asked);
            if (bits == asked) {
                ExpectWritten(status, reference::MonoFile(picture, 1, 20, -30));
                std::filesystem::remove(converted_);
            } else {
                ExpectNotWritten(status, bits == 1 ? LogoStatus::kAlreadyMono : LogoStatus::kOtherFormat,
                                 source_);
            }
        }
    }
}

TEST_F(LogoFileTest, MonoOfAnyDepthTakesColoursAndLevels) {
    for (unsigned bits = 0; bits <= 64; ++bits) {
        SCOPED_TRACE(bits);
        const Bytes picture = OfDepth(bits);
        Put(source_, picture);
        const LogoStatus status = Mono();
        if (bits == 8 || bits == 24) {
            ExpectWritten(status, reference::MonoFile(picture, 1, 20, -30));
            std::filesystem::remove(converted_);
        } else {
            ExpectNotWritten(status, LogoStatus::kFailed, kBefore);
        }
    }
}

TEST_F(LogoFileTest, StatusesHaveTheirNumbers) {
    EXPECT_EQ(static_cast<int>(LogoStatus::kWritten), 1);
    EXPECT_EQ(static_cast<int>(LogoStatus::kAlreadyMono), 2);
    EXPECT_EQ(static_cast<int>(LogoStatus::kFailed), -1);
    EXPECT_EQ(static_cast<int>(LogoStatus::kOtherFormat), -2);
}

TEST_F(LogoFileTest, EachHalftoneArrives) {
    for (const unsigned bits : {8u, 24u}) {
        const Bytes picture = pictures::File(40, 20, bits, pictures::Photo(1));
        Put(source_, picture);
        for (const Halftone halftone : kHalftones) {
            SCOPED_TRACE(testing::Message() << bits << " bits, " << static_cast<int>(halftone));
            const Bytes expected = reference::MonoFile(picture, static_cast<int>(halftone), 20, -30);
            ExpectWritten(MonoOf(bits, halftone), expected);
            ExpectWritten(Mono(halftone), expected);
        }
    }
}

TEST_F(LogoFileTest, PassedThroughIsTheSourceItself) {
    for (const unsigned bits : {8u, 24u}) {
        Put(source_, OfDepth(bits));
        ExpectNotWritten(MonoOf(bits, Halftone::kPassThrough), LogoStatus::kWritten, source_);
        ExpectNotWritten(Mono(Halftone::kPassThrough), LogoStatus::kWritten, source_);
    }
    Put(source_, OfDepth(1));
    ExpectNotWritten(MonoOf(24, Halftone::kPassThrough), LogoStatus::kAlreadyMono, source_);
    ExpectNotWritten(Mono(Halftone::kPassThrough), LogoStatus::kFailed, kBefore);
    Put(source_, OfDepth(16));
    ExpectNotWritten(MonoOf(24, Halftone::kPassThrough), LogoStatus::kOtherFormat, source_);
}

// Nothing is read but what there is of the one file.
TEST_F(LogoFileTest, ASourceThatIsNotThereFails) {
    ExpectNotWritten(Grey(24), LogoStatus::kFailed, kBefore);
    ExpectNotWritten(Grey(8), LogoStatus::kFailed, kBefore);
    ExpectNotWritten(Grey(1), LogoStatus::kFailed, kBefore);
    ExpectNotWritten(MonoOf(24), LogoStatus::kFailed, kBefore);
    ExpectNotWritten(MonoOf(8, Halftone::kPassThrough), LogoStatus::kFailed, kBefore);
    ExpectNotWritten(Mono(), LogoStatus::kFailed, kBefore);
    // A folder is none either, nor a device.
    std::filesystem::create_directory(source_);
    ExpectNotWritten(Mono(), LogoStatus::kFailed, kBefore);
    ExpectNotWritten(Grey(24), LogoStatus::kFailed, kBefore);
    std::wstring output;
    EXPECT_EQ(ChangeToGrayBitmap(L"NUL", 24, {}, output, buffers_), LogoStatus::kFailed);
    EXPECT_EQ(ChangeToMonoBitmap(L"", Halftone::kNone, {}, output, buffers_), LogoStatus::kFailed);
}

TEST_F(LogoFileTest, OtherTypesAndCompressionsAreRefused) {
    const struct {
        std::size_t at;
        std::size_t bytes;
        std::uint32_t value;
    } changes[] = {{0, 2, 0x424D}, {0, 2, 19777}, {0, 2, 0},          {30, 4, 1},
                   {30, 4, 2},     {30, 4, 3},    {30, 4, 0x80000000}};
    for (const auto& [at, bytes, value] : changes) {
        for (const unsigned bits : {1u, 8u, 24u}) {
            SCOPED_TRACE(testing::Message() << at << " = " << value << ", " << bits << " bits");
            Bytes picture = OfDepth(bits);
            Set(picture, at, bytes, value);
            Put(source_, picture);
            ExpectNotWritten(Grey(bits), LogoStatus::kOtherFormat, kBefore);
            ExpectNotWritten(MonoOf(bits == 1 ? 24 : bits), LogoStatus::kOtherFormat, source_);
            ExpectNotWritten(Mono(), LogoStatus::kFailed, kBefore);
        }
    }
}

TEST_F(LogoFileTest, SizesOfNoPictureAreRefused) {
    const std::pair<std::int32_t, std::int32_t> sizes[] = {
        {0, 1},        {1, 0},        {-1, 1},        {kSmallest, 1},       {1, kSmallest},
        {kLargest, 1}, {1, kLargest}, {1, -kLargest}, {kLargest, kLargest}, {kSmallest, kSmallest}};
    for (const auto& [width, height] : sizes) {
        for (const unsigned bits : {1u, 8u, 24u}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height << ", " << bits << " bits");
            Bytes picture = pictures::Front(width, height, bits);
            picture.resize(2000, 0x55);
            Put(source_, picture);
            memory.peak = memory.live;
            const std::size_t before = memory.live;
            ExpectNotWritten(Grey(bits), LogoStatus::kOtherFormat, kBefore);
            if (bits != 1) {
                ExpectNotWritten(MonoOf(bits), LogoStatus::kOtherFormat, source_);
                ExpectNotWritten(Mono(), LogoStatus::kOtherFormat, source_);
            }
            EXPECT_LT(memory.peak - before, 10000u) << "a few bytes do not become gigabytes";
        }
    }
}

TEST_F(LogoFileTest, RowsFromTheTopKeepTheirOrderAndTheirSign) {
    const Bytes down = OfDepth(24);
    Bytes up = down;
    Set(up, 22, 4, static_cast<std::uint32_t>(-5));
    Put(source_, up);
    Bytes expected = reference::MonoFile(down, 1, 20, -30);
    Set(expected, 22, 4, static_cast<std::uint32_t>(-5));
    ExpectWritten(Mono(), expected);
}

TEST_F(LogoFileTest, PlanesAndPixelOffsetDoNotCount) {
    const Bytes plain = OfDepth(24);
    const Bytes expected = reference::MonoFile(plain, 1, 20, -30);
    for (const std::uint32_t value : {0u, 54u, 10000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(value);
        Bytes picture = plain;
        Set(picture, 10, 4, value);
        Set(picture, 26, 2, value);
        Put(source_, picture);
        ExpectWritten(Mono(), expected);
    }
}

// What a file lacks is black. Its bit count's low byte is the 29th.
TEST_F(LogoFileTest, FilesThatEndAnywhere) {
    for (const unsigned bits : {1u, 8u, 24u}) {
        Bytes whole = pictures::Front(3, 2, bits);
        whole.resize(whole.size() + 24, 0xFF);
        for (std::size_t length = 0; length <= 70; ++length) {
            SCOPED_TRACE(testing::Message() << bits << " bits, " << length << " bytes");
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
            Bytes completed = cut;
            completed.resize(whole.size(), 0);
            Put(source_, cut);
            BitmapHeaders headers{};
            EXPECT_EQ(ReadLogoHeaders(source_, headers),
                      length < 62 ? LogoHeadersResult::kNotRead : LogoHeadersResult::kRead);
            EXPECT_EQ(headers.type, length < 1 ? 0 : length < 2 ? 'B' : 19778);
            EXPECT_EQ(headers.bitCount, length < 29 ? 0u : bits);
            if (length < 29) {
                ExpectNotWritten(Grey(bits), LogoStatus::kOtherFormat, kBefore);
                ExpectNotWritten(Mono(), LogoStatus::kFailed, kBefore);
                continue;
            }
            ExpectWritten(Grey(bits), reference::GreyFile(completed, 20, -30));
            if (bits != 1) {
                ExpectWritten(Mono(), reference::MonoFile(completed, 1, 20, -30));
            }
            std::filesystem::remove(converted_);
        }
    }
}

TEST_F(LogoFileTest, EachConversionReplacesTheOneBefore) {
    const Bytes large = pictures::File(100, 50, 24, pictures::Photo(2));
    Put(source_, large);
    ExpectWritten(Grey(24), reference::GreyFile(large, 20, -30));
    ExpectWritten(Mono(), reference::MonoFile(large, 1, 20, -30));
    const Bytes small = OfDepth(8);
    Put(source_, small);
    ExpectWritten(Mono(Halftone::kNone), reference::MonoFile(small, 0, 20, -30));
    const auto source = Get(source_);
    ASSERT_TRUE(source);
    EXPECT_TRUE(*source == small) << "the source stays as it is";
}

// Headers

TEST_F(LogoFileTest, HeadersAreThoseOfTheFile) {
    Put(source_, pictures::Front(1024, -768, 24) + Bytes(8));
    BitmapHeaders headers{};
    EXPECT_EQ(ReadLogoHeaders(source_, headers), LogoHeadersResult::kRead);
    EXPECT_EQ(headers.type, 19778);
    EXPECT_EQ(headers.pixelOffset, 0x33333333u);
    EXPECT_EQ(headers.width, 1024);
    EXPECT_EQ(headers.height, -768);
    EXPECT_EQ(headers.bitCount, 24);
    EXPECT_EQ(headers.compression, 0u);
}

TEST_F(LogoFileTest, HeadersStayWhereThereIsNoFile) {
    BitmapHeaders headers{
        .type = 1, .pixelOffset = 2, .width = 3, .height = 4, .bitCount = 5, .compression = 6};
    EXPECT_EQ(ReadLogoHeaders(source_, headers), LogoHeadersResult::kCannotOpen);
    EXPECT_EQ(headers.type, 1);
    EXPECT_EQ(headers.compression, 6u);
}

TEST_F(LogoFileTest, HeadersThatCannotBeReadAreNone) {
    Put(source_, OfDepth(24));
    for (const DWORD unread : {DWORD{1}, DWORD{62}}) {
        WatchedFiles files;
        files.unread = unread;
        BitmapHeaders headers{};
        EXPECT_EQ(ReadLogoHeaders(source_, headers), LogoHeadersResult::kNotRead);
    }
    WatchedFiles files;
    files.failing = 2;
    BitmapHeaders headers{};
    headers.width = 7;
    EXPECT_EQ(ReadLogoHeaders(source_, headers), LogoHeadersResult::kNotRead);
    EXPECT_EQ(headers.type, 0);
    EXPECT_EQ(headers.width, 0);
    EXPECT_EQ(files.calls, (Calls{L"open shop.bmp 2147483648 7 3", L"type", L"read 62", L"close"}));
    EXPECT_EQ(files.open, 0);
}

// Whole files

TEST_F(LogoFileTest, AFileIsReadAsFarAsItsHeadersSay) {
    const Bytes picture = pictures::File(5, 4, 24, pictures::Gradient());  // 54 + 4 * 16 bytes
    Bytes longer = picture;
    Set(longer, 10, 4, 54);
    longer.resize(5000, 0x77);
    Put(source_, longer);
    Bytes bytes(3, 1);
    EXPECT_TRUE(ReadLogoFile(source_, bytes));
    EXPECT_EQ(bytes, Bytes(longer.begin(), longer.begin() + 118));
    // From where the header says that the pixels are.
    Set(longer, 10, 4, 154);
    Put(source_, longer);
    EXPECT_TRUE(ReadLogoFile(source_, bytes));
    EXPECT_TRUE(bytes == Bytes(longer.begin(), longer.begin() + 218));
    // Whole where it is shorter, and never less than the headers.
    for (const std::ptrdiff_t size : {0, 1, 53, 54, 61, 62, 63, 117}) {
        const Bytes cut(longer.begin(), longer.begin() + size);
        Put(source_, cut);
        EXPECT_TRUE(ReadLogoFile(source_, bytes)) << size;
        EXPECT_EQ(bytes, cut) << size;
    }
}

TEST_F(LogoFileTest, AFileThatClaimsGigabytesTakesItsOwnSize) {
    for (const std::uint32_t size : {0x7FFFFFFFu, 0x80000000u, 0xFFFFu}) {
        Bytes file = pictures::Front(0, 0, 24);
        Set(file, 18, 4, size & 0x7FFFFFFF);
        Set(file, 22, 4, size);
        Set(file, 10, 4, 0xFFFFFFFF);
        file.resize(3000, 0x12);
        Put(source_, file);
        Bytes bytes;
        memory.peak = memory.live;
        const std::size_t before = memory.live;
        EXPECT_TRUE(ReadLogoFile(source_, bytes));
        EXPECT_TRUE(bytes == file);
        EXPECT_LT(memory.peak - before, 10000u);
    }
}

// A file of a few blocks may have terabytes.
TEST_F(LogoFileTest, AFileTooLargeForEverybodyIsNotRead) {
    Bytes file = pictures::Front(1, 1, 24);
    Set(file, 10, 4, 0xFFFFFFFF);
    file.resize(62);
    Put(source_, file);
    for (const LONGLONG told :
         {0x80000000ll, 0xFFFFFFFFll, 0x100000000ll, std::numeric_limits<LONGLONG>::max()}) {
        WatchedFiles files;
        files.size = [told](LONGLONG) { return told; };
        Bytes bytes;
        memory.peak = memory.live;
        const std::size_t before = memory.live;
        EXPECT_FALSE(ReadLogoFile(source_, bytes)) << told;
        EXPECT_LT(memory.peak - before, 10000u);
        EXPECT_EQ(files.calls,
                  (Calls{L"open shop.bmp 2147483648 7 3", L"type", L"size", L"read 62", L"close"}));
    }
}

TEST_F(LogoFileTest, AFileThatShrinksIsNotRead) {
    Put(source_, OfDepth(24));  // 54 + 5 * 40 bytes
    WatchedFiles files;
    files.size = [](LONGLONG size) { return size + 1; };
    ASSERT_TRUE(files.calls.empty());
    Bytes bytes;
    EXPECT_FALSE(ReadLogoFile(source_, bytes));
    EXPECT_EQ(files.calls,
              (Calls{L"open shop.bmp 2147483648 7 3", L"type", L"size", L"read 62", L"read 193", L"close"}));
    // Where it has not even the headers any more.
    files.size = [](LONGLONG) { return LONGLONG{62}; };
    files.unread = 1;
    EXPECT_FALSE(ReadLogoFile(source_, bytes));
    EXPECT_EQ(files.open, 0);
}

TEST_F(LogoFileTest, AFileThatGrowsIsReadAsFarAsItWas) {
    const Bytes file = OfDepth(24);
    Put(source_, file);
    for (const std::ptrdiff_t was : {0, 10, 62, 63, 200}) {
        WatchedFiles files;
        files.size = [was](LONGLONG) { return LONGLONG{was}; };
        Bytes bytes;
        EXPECT_TRUE(ReadLogoFile(source_, bytes)) << was;
        EXPECT_TRUE(bytes == Bytes(file.begin(), file.begin() + std::max<std::ptrdiff_t>(was, 62))) << was;
    }
}

// Somebody may have the source open, for whatever it is.
TEST_F(LogoFileTest, ASourceThatIsOpenElsewhereIsConverted) {
    const Bytes picture = OfDepth(24);
    Put(source_, picture);
    const HANDLE other = CreateFileW(source_.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                     OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    const LogoStatus status = Mono();
    CloseHandle(other);
    ExpectWritten(status, reference::MonoFile(picture, 1, 20, -30));
}

// Converted files that cannot be written

TEST_F(LogoFileTest, AConvertedFileThatMayNotBeWrittenStays) {
    Put(source_, OfDepth(24));
    Put(converted_, {1, 2, 3});
    {
        WatchedFiles files;
        files.failing = 10;
        EXPECT_EQ(Mono(), LogoStatus::kFailed);
        EXPECT_EQ(files.calls.back(), L"open shopTemp.bmp 1073741824 5 4");
    }
    EXPECT_EQ(output_, kBefore);
    EXPECT_EQ(Get(converted_), (Bytes{1, 2, 3}));
}

// As makers of thumbnails open it.
TEST_F(LogoFileTest, AConvertedFileThatSomebodyLooksAtIsWritten) {
    const Bytes picture = OfDepth(24);
    Put(source_, picture);
    Put(converted_, {1, 2, 3});
    const HANDLE other =
        CreateFileW(converted_.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    const LogoStatus status = Mono();
    CloseHandle(other);
    ExpectWritten(status, reference::MonoFile(picture, 1, 20, -30));
}

// 16 MB at most, before memory is taken.
TEST_F(LogoFileTest, AFarPixelOffsetOfALargeFileIsNotRead) {
    Bytes picture = OfDepth(24);
    Set(picture, 10, 4, 0x3000000);
    Put(source_, picture);
    const HANDLE file = CreateFileW(source_.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    SetFilePointer(file, 0x4000000, nullptr, FILE_BEGIN);
    SetEndOfFile(file);
    CloseHandle(file);
    EXPECT_EQ(Mono(), LogoStatus::kFailed);
    EXPECT_LT(buffers_.source.capacity(), 1000u);
}

TEST_F(LogoFileTest, AConvertedFileThatIsOpenElsewhereStays) {
    Put(source_, OfDepth(24));
    Put(converted_, {1, 2, 3});
    const HANDLE other =
        CreateFileW(converted_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_EQ(Mono(), LogoStatus::kFailed);
    CloseHandle(other);
    EXPECT_EQ(output_, kBefore);
    EXPECT_EQ(Get(converted_), (Bytes{1, 2, 3}));
}

TEST_F(LogoFileTest, AFolderInItsPlaceStays) {
    Put(source_, OfDepth(24));
    std::filesystem::create_directory(converted_);
    EXPECT_EQ(Mono(), LogoStatus::kFailed);
    EXPECT_EQ(output_, kBefore);
    EXPECT_TRUE(std::filesystem::is_directory(converted_));
}

TEST_F(LogoFileTest, HalfAFileIsNotLeftBehind) {
    Put(source_, OfDepth(24));  // 13 x 5 pixels: 62 + 20 bytes
    for (const DWORD unwritten : {DWORD{1}, DWORD{82}}) {
        WatchedFiles files;
        files.unwritten = unwritten;
        EXPECT_EQ(Mono(), LogoStatus::kFailed);
        EXPECT_EQ(output_, kBefore);
        ASSERT_GE(files.calls.size(), 4u);
        EXPECT_EQ(
            Calls(files.calls.end() - 4, files.calls.end()),
            (Calls{L"open shopTemp.bmp 1073741824 5 4", L"write 82", L"close", L"delete shopTemp.bmp"}));
        EXPECT_EQ(files.open, 0);
    }
    EXPECT_FALSE(IsConverted());
}

// Call by call

const Calls kHeadersRead = {L"open shop.bmp 2147483648 7 3", L"type", L"read 62", L"close"};
const Calls kFileRead = {
    L"open shop.bmp 2147483648 7 3", L"type", L"size", L"read 62", L"read 192", L"close"};
const Calls kFileWritten = {L"open shopTemp.bmp 1073741824 5 4", L"write 82", L"set end", L"close"};

const Calls kGone = {L"close", L"delete shopTemp.bmp"};

Calls operator+(Calls left, const Calls& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Calls First(const Calls& calls, std::ptrdiff_t count) {
    return {calls.begin(), calls.begin() + count};
}

TEST_F(LogoFileTest, EachFileIsOpenedOnceForEachPurpose) {
    Put(source_, OfDepth(24));
    {
        WatchedFiles files;
        EXPECT_EQ(Mono(), LogoStatus::kWritten);
        EXPECT_EQ(files.calls, kHeadersRead + kFileRead + kFileWritten);
    }
    {
        WatchedFiles files;
        EXPECT_EQ(MonoOf(24), LogoStatus::kWritten);
        EXPECT_EQ(files.calls, kFileRead + kFileWritten);
    }
    WatchedFiles files;
    EXPECT_EQ(MonoOf(24, Halftone::kPassThrough), LogoStatus::kWritten);
    EXPECT_EQ(files.calls, kFileRead);
}

TEST_F(LogoFileTest, AFailedCallEndsTheConversion) {
    Put(source_, OfDepth(24));
    const struct {
        int failing;
        Calls calls;
    } cases[] = {
        {0, First(kHeadersRead, 1)},
        {1, First(kHeadersRead, 2) + Calls{L"close"}},
        {2, First(kHeadersRead, 4)},
        {4, kHeadersRead + First(kFileRead, 1)},
        {5, kHeadersRead + First(kFileRead, 2) + Calls{L"close"}},
        {6, kHeadersRead + First(kFileRead, 3) + Calls{L"close"}},
        {7, kHeadersRead + First(kFileRead, 4) + Calls{L"close"}},
        {8, kHeadersRead + kFileRead},
        {10, kHeadersRead + kFileRead + First(kFileWritten, 1)},
        {11, kHeadersRead + kFileRead + First(kFileWritten, 2) + kGone},
        {12, kHeadersRead + kFileRead + First(kFileWritten, 3) + kGone},
    };
    for (const auto& [failing, calls] : cases) {
        SCOPED_TRACE(failing);
        LogoStatus status = LogoStatus::kWritten;
        {
            WatchedFiles files;
            files.failing = failing;
            status = Mono();
            EXPECT_EQ(files.calls, calls);
            EXPECT_EQ(files.open, 0);
        }
        ExpectNotWritten(status, LogoStatus::kFailed, kBefore);
    }
}

// Where the two looks at a source differ, the second one counts.
TEST_F(LogoFileTest, ASourceThatChangesMeanwhileIsNotConverted) {
    Put(source_, OfDepth(24));
    const Bytes other = OfDepth(8);
    LogoStatus status = LogoStatus::kWritten;
    {
        WatchedFiles files;
        files.onCall = [&](const std::wstring& call) {
            if (call == L"size") {
                std::ofstream file(std::filesystem::path(source_), std::ios::binary);
                file.write(reinterpret_cast<const char*>(other.data()),
                           static_cast<std::streamsize>(other.size()));
            }
        };
        status = Mono();
    }
    ExpectNotWritten(status, LogoStatus::kOtherFormat, source_);
}

// Memory

TEST_F(LogoFileTest, WithoutMemoryNothingIsWrittenAndNothingStaysOpen) {
    Put(source_, OfDepth(24));
    const std::function<LogoStatus()> conversions[] = {
        [&] { return ChangeToGrayBitmap(source_, 24, kTone, output_, buffers_); },
        [&] { return ChangeToMonoBitmap(source_, Halftone::kErrorDiffuse, kTone, output_, buffers_); },
        [&] { return ChangeToMonoBitmap(source_, 24, Halftone::kPassThrough, kTone, output_, buffers_); },
        [&] { return ChangeToMonoBitmap(source_, 8, Halftone::kNone, kTone, output_, buffers_); },
    };
    for (const auto& convert : conversions) {
        int refused = 0;
        for (;; ++refused) {
            ASSERT_LT(refused, 100);
            output_ = std::wstring();
            buffers_ = {};
            std::filesystem::remove(converted_);
            LogoStatus status = LogoStatus::kWritten;
            bool isRefused = false;
            {
                const RefusedBlock block(refused);
                status = convert();
                isRefused = RefusedBlock::WasAskedFor();
            }
            EXPECT_TRUE(Get(source_)) << "nobody has it open";
            if (!isRefused) {
                break;
            }
            EXPECT_EQ(status, LogoStatus::kFailed) << refused;
            EXPECT_TRUE(output_.empty()) << refused;
            EXPECT_FALSE(IsConverted()) << refused;
        }
        EXPECT_GE(refused, 2);
    }
}

TEST_F(LogoFileTest, ReadingWithoutMemoryFails) {
    Put(source_, OfDepth(24));
    {
        const RefusedBlock block(0);
        Bytes bytes;
        EXPECT_FALSE(ReadLogoFile(source_, bytes));
    }
    BitmapHeaders headers{};
    const RefusedBlock block(0);
    EXPECT_EQ(ReadLogoHeaders(source_, headers), LogoHeadersResult::kCannotOpen);
}

// A preview converts again and again.
TEST_F(LogoFileTest, MemoryIsUsedAgain) {
    Put(source_, pictures::File(1024, 768, 24, pictures::Flat(1, 2, 3)));
    EXPECT_EQ(Grey(24), LogoStatus::kWritten);
    const std::size_t before = memory.live;
    memory.peak = before;
    EXPECT_EQ(Grey(24), LogoStatus::kWritten);
    EXPECT_EQ(Mono(), LogoStatus::kWritten);
    EXPECT_LT(memory.peak - before, 50000u);
}

// Trace

class LogoTraceTest : public LogoFileTest {
  protected:
    void TearDown() override {
        gDebugLevel = level_;
        LogoFileTest::TearDown();
    }

    rig::TraceCapture trace_;

  private:
    const std::int32_t level_ = gDebugLevel;
};

TEST_F(LogoTraceTest, MonoTellsOfTheSource) {
    const std::wstring name = L"\tbfilename       = " + source_ + L"\r\n";
    Put(source_, OfDepth(24));
    Mono();
    EXPECT_EQ(trace_.TakeOwn(), (rig::Lines{name, L"\tbmFileHead.bfType       = 19778\r\n",
                                            L"\tbmInfoHead.biBitCount       = 24\r\n"}));
    Bytes other = OfDepth(1);
    Set(other, 0, 2, 0xFFFE);
    Set(other, 28, 2, 0x8001);
    Put(source_, other);
    Mono();
    EXPECT_EQ(trace_.TakeOwn(), (rig::Lines{name, L"\tbmFileHead.bfType       = 65534\r\n",
                                            L"\tbmInfoHead.biBitCount       = 32769\r\n"}));
    std::filesystem::remove(source_);
    Mono();
    EXPECT_EQ(trace_.TakeOwn(), rig::Lines());
}

TEST_F(LogoTraceTest, GreyOfColoursTellsOfTheHeight) {
    Put(source_, OfDepth(24));
    Grey(24);
    EXPECT_EQ(trace_.TakeOwn(), rig::Lines{L"\tbmInfoHead.biHeight       = 5\r\n"});
    Put(source_, pictures::Front(1, -700, 24));
    Grey(24);
    EXPECT_EQ(trace_.TakeOwn(), rig::Lines{L"\tbmInfoHead.biHeight       = -700\r\n"});
    std::filesystem::remove(source_);
    Grey(24);
    EXPECT_EQ(trace_.TakeOwn(), rig::Lines());
}

TEST_F(LogoTraceTest, TheOtherConversionsTellNothing) {
    for (const unsigned bits : {1u, 8u}) {
        Put(source_, OfDepth(bits));
        Grey(bits);
        MonoOf(bits);
    }
    Put(source_, OfDepth(24));
    MonoOf(24);
    EXPECT_EQ(trace_.TakeOwn(), rig::Lines());
}

TEST_F(LogoTraceTest, LinesAreVerbose) {
    Put(source_, OfDepth(24));
    gDebugLevel = 2;
    Mono();
    Grey(24);
    EXPECT_EQ(trace_.TakeOwn(), rig::Lines());
}

TEST_F(LogoTraceTest, ALongPathIsCut) {
    std::filesystem::create_directory(folder_ / std::wstring(200, L'x'));
    const std::wstring source = Path(std::wstring(200, L'x')) + L'\\' + std::wstring(200, L'y') + L".bmp";
    Put(L"\\\\?\\" + source, OfDepth(24));
    std::wstring output;
    EXPECT_EQ(ChangeToMonoBitmap(source, Halftone::kNone, {}, output, buffers_), LogoStatus::kWritten);
    const rig::Lines lines = trace_.TakeOwn();
    DeleteFileW((L"\\\\?\\" + source).c_str());
    DeleteFileW((L"\\\\?\\" + output).c_str());
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], (L"\tbfilename       = " + source).substr(0, 260));
}

}  // namespace

// The conversion to 24 bits in the file system: what it answers and what lies there afterwards. The plug-in's
// own sources are part of this program.
#include "docpages/bitmap_24_file.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "intrface/win/handles.h"
#include "rig/environment.h"
#include "rig/replaced.h"
#include "rig/trace_capture.h"

// Where this program's import table keeps the functions that the conversion calls.
extern "C" {
extern decltype(&CopyFileW) __imp_CopyFileW;
extern decltype(&CreateFileW) __imp_CreateFileW;
extern decltype(&GetFileSizeEx) __imp_GetFileSizeEx;
extern decltype(&ReadFile) __imp_ReadFile;
extern decltype(&SetFileAttributesW) __imp_SetFileAttributesW;
extern decltype(&WriteFile) __imp_WriteFile;
}

namespace {

using rig::Replaced;

using Bytes = std::vector<std::uint8_t>;
using Path = std::filesystem::path;
using rig::Lines;

// As the caller counts them.
constexpr int kFailed = 0;
constexpr int kConverted = 1;
constexpr int kCannotCreate = 2;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Cut(const Bytes& file, std::size_t length) {
    return Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
}

Bytes Little(std::uint32_t value) {
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
}

// Both headers. What the conversion leaves alone has values of its own, as odd as they may be in a file.
Bytes Headers(std::uint32_t fileSize, std::uint32_t pixelOffset, std::int32_t width, std::int32_t height,
              std::uint8_t bitCount, std::uint32_t imageSize) {
    const Bytes reserved = {0xA1, 0xA2, 0xA3, 0xA4};
    const Bytes size = {40, 0, 0, 0};
    const Bytes planesAndBits = {1, 0, bitCount, 0};
    const Bytes compression = {0xC1, 0xC2, 0xC3, 0xC4};
    const Bytes resolution = {0x12, 0x0B, 0xD1, 0xD2, 0x13, 0x0B, 0xD3, 0xD4};
    const Bytes colourCounts = {0xE1, 0xE2, 0xE3, 0xE4, 0xF1, 0xF2, 0xF3, 0xF4};
    return Bytes{'B', 'M'} + Little(fileSize) + reserved + Little(pixelOffset) + size +
           Little(static_cast<std::uint32_t>(width)) + Little(static_cast<std::uint32_t>(height)) +
           planesAndBits + compression + Little(imageSize) + resolution + colourCounts;
}

Bytes Headers1(std::int32_t width, std::int32_t height) {
    return Headers(0x01020304, 62, width, height, 1, 0x05060708);
}
Bytes Headers8(std::int32_t width, std::int32_t height) {
    return Headers(0x01020304, 1078, width, height, 8, 0x05060708);
}
// What becomes of them.
Bytes HeadersFrom1(std::uint32_t fileSize, std::int32_t width, std::int32_t height) {
    return Headers(fileSize, 54, width, height, 24, 0x05060708);
}
Bytes HeadersFrom8(std::uint32_t fileSize, std::int32_t width, std::int32_t height) {
    return Headers(fileSize, 54, width, height, 24, 0);
}

// Blue, green, red and the reserved byte of clear and set bits.
const Bytes kPalette1 = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};

// Blue i, green 255 - i, red i ^ 5A.
Bytes Palette8() {
    Bytes palette;
    for (unsigned i = 0; i < 256; ++i) {
        palette.push_back(static_cast<std::uint8_t>(i));
        palette.push_back(static_cast<std::uint8_t>(255 - i));
        palette.push_back(static_cast<std::uint8_t>(i ^ 0x5A));
        palette.push_back(0x99);
    }
    return palette;
}

// 9 x 2 pixels: 1010 0101 1 and 0000 0001 0.
Bytes File1() {
    return Headers1(9, 2) + kPalette1 + Bytes{0xA5, 0x80, 0x55, 0xAA, 0x01, 0x7F, 0x00, 0x00};
}
Bytes ResultOf1() {
    const Bytes clear = {0x22, 0x11, 0x33};
    const Bytes set = {0x66, 0x55, 0x77};
    const Bytes end = {0xFF};
    // 9 x 3 bytes and one more: 54 + 2 x 28.
    return HeadersFrom1(110, 9, 2) + set + clear + set + clear + clear + set + clear + set + set + end +
           clear + clear + clear + clear + clear + clear + clear + set + clear + end;
}

// 2 x 3 pixels, each row with two bytes behind them.
Bytes File8() {
    return Headers8(2, 3) + Palette8() + Bytes{0, 1, 0xEE, 0xEE, 16, 255, 0xEE, 0xEE, 90, 128, 0xEE, 0xEE};
}
Bytes ResultOf8() {
    // 54 + 3 x 8.
    return HeadersFrom8(78, 2, 3) + Bytes{0xFF, 0x00, 0x5A, 0xFE, 0x01, 0x5B, 0, 0} +
           Bytes{0xEF, 0x10, 0x4A, 0x00, 0xFF, 0xA5, 0, 0} + Bytes{0xA5, 0x5A, 0x00, 0x7F, 0x80, 0xDA, 0, 0};
}

// 2 x 2 pixels and what no reader would look for.
Bytes File24() {
    return Headers(0x01020304, 54, 2, 2, 24, 0x05060708) +
           Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16} + Bytes{'e', 'n', 'd'};
}

// Several of the pieces in which files are read and written: 301 x 200 pixels, 304 and 904 bytes a row.
Bytes LongFile8() {
    Bytes file = Headers8(301, 200) + Palette8();
    for (unsigned y = 0; y < 200; ++y) {
        for (unsigned x = 0; x < 304; ++x) {
            file.push_back(static_cast<std::uint8_t>(x * 7 + y * 31));
        }
    }
    return file;
}
Bytes ResultOfLong8() {
    Bytes file = HeadersFrom8(54 + 200 * 904, 301, 200);
    for (unsigned y = 0; y < 200; ++y) {
        for (unsigned x = 0; x < 301; ++x) {
            const auto index = static_cast<std::uint8_t>(x * 7 + y * 31);
            file = std::move(file) + Bytes{static_cast<std::uint8_t>(255 - index), index,
                                           static_cast<std::uint8_t>(index ^ 0x5A)};
        }
        file.push_back(0);
    }
    return file;
}

class Bitmap24FileTest : public testing::Test {
  protected:
    void SetUp() override {
        Remove();
        ASSERT_TRUE(std::filesystem::create_directory(folder_));
    }

    void TearDown() override {
        // Nobody has a file open any more: each can be had for oneself.
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            if (entry.is_regular_file()) {
                EXPECT_TRUE(Open(entry.path(), 0)) << entry.path() << ", error " << GetLastError();
            }
        }
        Remove();
    }

    static FileHandle Open(const Path& path, DWORD share) {
        return FileHandle(CreateFileW(path.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
    }

    int Change() { return Change(source_, destination_); }
    static int Change(const Path& source, const Path& destination) {
        return static_cast<int>(ChangeTo24Bitmap(source.c_str(), destination.c_str()));
    }

    void ExpectChanged(const Bytes& file, const Bytes& expected) {
        rig::WriteBytes(source_, file);
        EXPECT_EQ(Change(), kConverted);
        EXPECT_TRUE(rig::ReadBytes(destination_) == expected);
        EXPECT_TRUE(rig::ReadBytes(source_) == file);
    }

    // Refused for what it holds: by then the destination is made.
    void ExpectRefused(const Bytes& file) {
        rig::WriteBytes(source_, file);
        rig::WriteBytes(destination_, kOld);
        EXPECT_EQ(Change(), kFailed);
        EXPECT_EQ(rig::ReadBytes(destination_), Bytes{});
        EXPECT_EQ(rig::ReadBytes(source_), file);
    }

    // Refused before it is opened for writing: what was there stays.
    void ExpectNotCreated(const Path& destination) {
        for (const Bytes& file : {File1(), File8(), File24(), Bytes{'t', 'e', 'x', 't'}}) {
            rig::WriteBytes(source_, file);
            EXPECT_EQ(Change(source_, destination), kCannotCreate) << destination;
            EXPECT_EQ(rig::ReadBytes(source_), file);
        }
    }

    // As after a download of which the rest never came: its length without its bytes.
    static void Lengthen(const Path& path, std::int64_t length) {
        const FileHandle file(
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        LARGE_INTEGER end;
        end.QuadPart = length;
        ASSERT_TRUE(SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN) && SetEndOfFile(file.Get()));
    }

    inline static const Bytes kOld = {'o', 'l', 'd'};

    // Not only letters that every code page has.
    const Path folder_ = L"C:\\bitmaps \u6C34\u5370";
    const Path source_ = folder_ / L"source.bmp";
    const Path destination_ = folder_ / L"copy1.bmp";
    rig::TraceCapture trace_;

  private:
    void Remove() {
        std::error_code error;
        if (std::filesystem::is_directory(folder_, error)) {
            for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
                SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
            }
        }
        std::filesystem::remove_all(folder_, error);
        ASSERT_FALSE(std::filesystem::exists(folder_, error));
    }
};

TEST_F(Bitmap24FileTest, SourcesThatCannotBeOpenedFail) {
    const Path sources[] = {source_, folder_ / L"missing" / L"source.bmp",
                            folder_, folder_ / L"what?.bmp",
                            L"",     std::wstring(5000, L'n')};
    for (const Path& source : sources) {
        EXPECT_EQ(Change(source, destination_), kFailed) << source;
        EXPECT_FALSE(std::filesystem::exists(destination_));
    }
    rig::WriteBytes(destination_, kOld);
    for (const Path& source : sources) {
        EXPECT_EQ(Change(source, destination_), kFailed) << source;
        // The source comes first.
        EXPECT_EQ(Change(source, folder_), kFailed) << source;
    }
    EXPECT_EQ(rig::ReadBytes(destination_), kOld);
    EXPECT_EQ(trace_.TakeOwn(), Lines{});
}

TEST_F(Bitmap24FileTest, SourcesInUseFail) {
    rig::WriteBytes(source_, File8());
    for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ}, kShareAll}) {
        const FileHandle other = Open(source_, share);
        ASSERT_TRUE(other);
        EXPECT_EQ(Change(), kFailed) << share;
        EXPECT_FALSE(std::filesystem::exists(destination_));
    }
    EXPECT_EQ(Change(), kConverted);
}

struct Sight {
    const wchar_t* path;
    int reads;
    bool isOpen;
};
Sight sight;

// Both while a conversion goes on and after it.
TEST_F(Bitmap24FileTest, SourcesAreNotShared) {
    rig::WriteBytes(source_, File8());
    sight = {source_.c_str(), 0, false};
    static const auto realRead = __imp_ReadFile;
    const auto look = [](HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped) {
        ++sight.reads;
        sight.isOpen = sight.isOpen || Open(sight.path, kShareAll);
        return realRead(file, buffer, size, read, overlapped);
    };
    const Replaced reading(__imp_ReadFile, +look);
    EXPECT_EQ(Change(), kConverted);
    EXPECT_GT(sight.reads, 0);
    EXPECT_FALSE(sight.isOpen);
}

TEST_F(Bitmap24FileTest, DestinationsThatCannotBeCreated) {
    ExpectNotCreated(folder_);
    ExpectNotCreated(folder_ / L"missing" / L"copy1.bmp");
    ExpectNotCreated(folder_ / L"what?.bmp");
    ExpectNotCreated(L"");
    ExpectNotCreated(std::wstring(5000, L'n'));
    EXPECT_EQ(trace_.TakeOwn(), Lines{});
}

TEST_F(Bitmap24FileTest, ASourceIsNotItsOwnDestination) {
    ExpectNotCreated(source_);
    ExpectNotCreated(folder_ / L"SOURCE.BMP");
    ExpectNotCreated(folder_ / L"." / L"source.bmp");
}

TEST_F(Bitmap24FileTest, DestinationsInUseCannotBeCreated) {
    rig::WriteBytes(destination_, kOld);
    for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ}}) {
        const FileHandle other = Open(destination_, share);
        ASSERT_TRUE(other);
        ExpectNotCreated(destination_);
    }
    EXPECT_EQ(rig::ReadBytes(destination_), kOld);
    EXPECT_EQ(Change(source_, destination_), kFailed) << "the text that ExpectNotCreated left";
    EXPECT_EQ(rig::ReadBytes(destination_), Bytes{});
}

// Whether a read-only file is one depends on the user: the superuser of another system under this one writes
// it all the same.
TEST_F(Bitmap24FileTest, ReadOnlyDestinationsAreForTheSystemToRefuse) {
    const Path probe = folder_ / L"probe.bmp";
    for (const Path& path : {probe, destination_}) {
        rig::WriteBytes(path, kOld);
        ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    }
    const bool isRefused = !FileHandle(
        CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    rig::WriteBytes(source_, File8());
    EXPECT_EQ(Change(), isRefused ? kCannotCreate : kConverted);
    EXPECT_EQ(rig::ReadBytes(destination_), isRefused ? kOld : ResultOf8());
}

struct Opened {
    std::wstring path;
    DWORD access;
    DWORD share;
    DWORD disposition;
    bool operator==(const Opened&) const = default;
};
std::vector<Opened> openings;

// As it refuses a read-only file, or a folder of somebody else's.
TEST_F(Bitmap24FileTest, AccessDeniedIsTheDestinationsResult) {
    rig::WriteBytes(source_, File8());
    rig::WriteBytes(destination_, kOld);
    openings.clear();
    static const auto realCreate = __imp_CreateFileW;
    const auto deny = [](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD flags, HANDLE pattern) {
        openings.push_back({path, access, share, disposition});
        if ((access & GENERIC_WRITE) != 0) {
            SetLastError(ERROR_ACCESS_DENIED);
            return INVALID_HANDLE_VALUE;
        }
        return realCreate(path, access, share, security, disposition, flags, pattern);
    };
    {
        const Replaced creating(__imp_CreateFileW, +deny);
        EXPECT_EQ(Change(), kCannotCreate);
    }
    EXPECT_EQ(openings, (std::vector<Opened>{{source_.wstring(), GENERIC_READ, 0, OPEN_EXISTING},
                                             {destination_.wstring(), GENERIC_WRITE, 0, CREATE_ALWAYS}}));
    EXPECT_EQ(rig::ReadBytes(destination_), kOld);
}

TEST_F(Bitmap24FileTest, FilesOfAnotherTypeAreRefused) {
    ExpectRefused({});
    ExpectRefused({'B'});
    ExpectRefused({'B', 'M'});
    ExpectRefused({'p', 'l', 'a', 'i', 'n', ' ', 't', 'e', 'x', 't'});
    for (Bytes file : {File1(), File8(), File24()}) {
        std::swap(file[0], file[1]);
        ExpectRefused(file);
        file[0] = 'B';
        file[1] = 'A';
        ExpectRefused(file);
    }
    EXPECT_EQ(trace_.TakeOwn(), Lines{});
}

TEST_F(Bitmap24FileTest, OtherLayoutsAreRefused) {
    // 4 bits a pixel: 16 colours.
    ExpectRefused(Headers(126, 118, 2, 2, 4, 8) + Bytes(64, 0x42) + Bytes(8, 0x10));
    // 8 bits with the 200 colours that occur.
    ExpectRefused(Headers(862, 854, 2, 2, 8, 8) + Cut(Palette8(), 800) + Bytes(8, 1));
    // Masks for 16 or 32 bits; a longer header; pixels in the header.
    for (const std::uint32_t offset : {66u, 70u, 138u, 0u, 53u, 55u, 0x36000000u, 0xFFFFFFFFu}) {
        ExpectRefused(Headers(2000, offset, 2, 2, 24, 16) + Bytes(1946, 1));
    }
    EXPECT_EQ(trace_.TakeOwn(), Lines{});
}

TEST_F(Bitmap24FileTest, OtherBitCountsWithoutPaletteAreRefusedAndTraced) {
    for (const std::uint8_t bits : Bytes{0, 1, 8, 16, 32}) {
        ExpectRefused(Headers(70, 54, 2, 2, bits, 16) + Bytes(16, 1));
        EXPECT_EQ(trace_.TakeOwn(), Lines{L"UI:  ChangeTo24Bitmap not 24 bitcount\r\n"});
    }
}

TEST_F(Bitmap24FileTest, FilesOf24BitsAreCopied) {
    ExpectChanged(File24(), File24());
    for (const std::int32_t height : {-2, 0, 1000000}) {
        const Bytes file = Headers(1, 54, 30000, height, 24, 2) + Bytes{1, 2, 3};
        ExpectChanged(file, file);
    }
    const Bytes head = Cut(File24(), 30);
    ExpectChanged(head, head);
    Bytes large = File24();
    large.resize(100000, 0x5C);
    ExpectChanged(large, large);
    EXPECT_EQ(trace_.TakeOwn(), Lines{});
}

// 64 MiB are more than the largest picture takes. What is behind a smaller one would fill the disk for
// nothing.
TEST_F(Bitmap24FileTest, MuchMoreThanAPictureIsRefused) {
    rig::WriteBytes(source_, File24());
    Lengthen(source_, 64 << 20);
    EXPECT_EQ(Change(), kConverted);
    Lengthen(source_, (64 << 20) + 1);
    rig::WriteBytes(destination_, kOld);
    EXPECT_EQ(Change(), kFailed);
    rig::WriteBytes(source_, File24());
    EXPECT_EQ(Change(), kConverted) << "the refused file was let go";
}

// Reading from a pipe would wait for the other side. Whoever that is may not act in our name.
TEST_F(Bitmap24FileTest, NothingIsReadFromAPipe) {
    constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\kvmr72-bitmap";
    const FileHandle pipe(
        CreateNamedPipeW(kPipe, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 512, 512, 0, nullptr));
    ASSERT_TRUE(pipe);
    static DWORD opened_with;
    static int reads;
    static const auto realCreate = __imp_CreateFileW;
    static const auto realRead = __imp_ReadFile;
    reads = 0;
    const auto create = [](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                           DWORD disposition, DWORD flags, HANDLE pattern) {
        opened_with = flags;
        return realCreate(path, access, share, security, disposition, flags, pattern);
    };
    const auto read = [](HANDLE file, LPVOID buffer, DWORD size, LPDWORD count, LPOVERLAPPED overlapped) {
        ++reads;
        return realRead(file, buffer, size, count, overlapped);
    };
    const Replaced creating(__imp_CreateFileW, +create);
    const Replaced reading(__imp_ReadFile, +read);
    {
        const FileHandle file = OpenToRead(kPipe, FILE_SHARE_READ);
        ASSERT_TRUE(file);
        EXPECT_EQ(WholeBitmapSize(file.Get()), std::nullopt);
    }
    EXPECT_EQ(opened_with & (SECURITY_SQOS_PRESENT | SECURITY_IMPERSONATION | SECURITY_IDENTIFICATION),
              DWORD{SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION});
    ASSERT_TRUE(DisconnectNamedPipe(pipe.Get()));
    rig::WriteBytes(destination_, kOld);
    EXPECT_EQ(ChangeTo24Bitmap(kPipe, destination_.c_str()), BitmapFileResult::kFailed);
    EXPECT_EQ(reads, 0);
    EXPECT_EQ(rig::ReadBytes(destination_), kOld);
}

TEST_F(Bitmap24FileTest, CopiesAreOrdinaryFiles) {
    for (const DWORD attributes : {DWORD{FILE_ATTRIBUTE_NORMAL}, DWORD{FILE_ATTRIBUTE_READONLY},
                                   DWORD{FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY}}) {
        SCOPED_TRACE(attributes);
        rig::WriteBytes(source_, File24());
        ASSERT_TRUE(SetFileAttributesW(source_.c_str(), attributes));
        // The next choice of a picture replaces the copy.
        for (int time = 0; time < 2; ++time) {
            EXPECT_EQ(Change(), kConverted);
            EXPECT_EQ(rig::ReadBytes(destination_), File24());
            EXPECT_EQ(GetFileAttributesW(destination_.c_str()), DWORD{FILE_ATTRIBUTE_ARCHIVE});
        }
        ASSERT_TRUE(SetFileAttributesW(source_.c_str(), FILE_ATTRIBUTE_NORMAL));
    }
}

// Not every system's copy takes the source's attributes over.
TEST_F(Bitmap24FileTest, CopiesThatTurnReadOnlyAreMadeOrdinary) {
    static const auto realCopy = __imp_CopyFileW;
    static const auto realSet = __imp_SetFileAttributesW;
    const auto copy = [](LPCWSTR source, LPCWSTR destination, BOOL failIfExists) -> BOOL {
        return realCopy(source, destination, failIfExists) &&
               realSet(destination, FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    };
    const Replaced copying(__imp_CopyFileW, +copy);
    ExpectChanged(File24(), File24());
    EXPECT_EQ(GetFileAttributesW(destination_.c_str()), DWORD{FILE_ATTRIBUTE_ARCHIVE});
}

TEST_F(Bitmap24FileTest, ReadOnlySourcesConvert) {
    for (const bool is8Bit : {false, true}) {
        rig::WriteBytes(source_, is8Bit ? File8() : File1());
        ASSERT_TRUE(SetFileAttributesW(source_.c_str(), FILE_ATTRIBUTE_READONLY));
        for (int time = 0; time < 2; ++time) {
            EXPECT_EQ(Change(), kConverted);
            EXPECT_EQ(rig::ReadBytes(destination_), is8Bit ? ResultOf8() : ResultOf1());
            EXPECT_EQ(GetFileAttributesW(destination_.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
        }
        ASSERT_TRUE(SetFileAttributesW(source_.c_str(), FILE_ATTRIBUTE_NORMAL));
    }
}

TEST_F(Bitmap24FileTest, EightBits) {
    ExpectChanged(File8(), ResultOf8());
    EXPECT_EQ(trace_.TakeOwn(), Lines{});
}

TEST_F(Bitmap24FileTest, OneBitWithItsPaletteInTheTrace) {
    ExpectChanged(File1(), ResultOf1());
    EXPECT_EQ(trace_.TakeOwn(), (Lines{
                                    L"UI:  ChangeTo24Bitmap palette[0].rgbRed =33\r\n",
                                    L"UI:  ChangeTo24Bitmap palette[0].rgbGreen =22\r\n",
                                    L"UI:  ChangeTo24Bitmap palette[0].rgbBlue =11\r\n",
                                    L"UI:  ChangeTo24Bitmap palette[1].rgbRed =77\r\n",
                                    L"UI:  ChangeTo24Bitmap palette[1].rgbGreen =66\r\n",
                                    L"UI:  ChangeTo24Bitmap palette[1].rgbBlue =55\r\n",
                                    L"UI:  ChangeTo24Bitmap bf.bfOffBits =62\r\n",
                                }));
}

TEST_F(Bitmap24FileTest, LongFiles) {
    ExpectChanged(LongFile8(), ResultOfLong8());

    // 40001 pixels are 5001 bytes, 5004 with padding; 120003 bytes of colours and an FF.
    Bytes file = Headers1(40001, 3) + kPalette1;
    Bytes expected = HeadersFrom1(54 + 3 * 120004, 40001, 3);
    for (unsigned y = 0; y < 3; ++y) {
        Bytes row(5004);
        for (unsigned x = 0; x < 40001; ++x) {
            const bool isSet = (x / 5 + y) % 3 == 0;
            if (isSet) {
                row[x / 8] = static_cast<std::uint8_t>(row[x / 8] + (128 >> x % 8));
            }
            expected = std::move(expected) + (isSet ? Bytes{0x66, 0x55, 0x77} : Bytes{0x22, 0x11, 0x33});
        }
        file = std::move(file) + row;
        expected.push_back(0xFF);
    }
    ExpectChanged(file, expected);
}

// The size field counts down from 54: 8 bytes a row of 2 pixels, 28 a row of 9.
TEST_F(Bitmap24FileTest, HeightsWithoutRows) {
    const Bytes rows(64, 0x42);
    ExpectChanged(Headers8(2, -3) + Palette8() + rows, HeadersFrom8(30, 2, -3));
    ExpectChanged(Headers8(2, 0) + Palette8() + rows, HeadersFrom8(54, 2, 0));
    ExpectChanged(Headers1(9, -2) + kPalette1 + rows, HeadersFrom1(0xFFFFFFFE, 9, -2));
    ExpectChanged(Headers1(9, 0) + kPalette1 + rows, HeadersFrom1(54, 9, 0));
}

TEST_F(Bitmap24FileTest, CutFilesEndInFF) {
    // Of 2 x 3 pixels the last is missing: colour 255 instead of 128.
    const Bytes result8 = ResultOf8();
    ExpectChanged(Cut(File8(), 1078 + 9), Cut(result8, 54 + 16 + 3) + Bytes{0x00, 0xFF, 0xA5, 0, 0});
    // No row at all.
    const Bytes row8 = {0x00, 0xFF, 0xA5, 0x00, 0xFF, 0xA5, 0, 0};
    ExpectChanged(Cut(File8(), 1078), Cut(result8, 54) + row8 + row8 + row8);
    // Of 9 x 2 the second row: all bits are set.
    const Bytes set3 = {0x66, 0x55, 0x77, 0x66, 0x55, 0x77, 0x66, 0x55, 0x77};
    ExpectChanged(Cut(File1(), 66), Cut(ResultOf1(), 54 + 28) + set3 + set3 + set3 + Bytes{0xFF});
    // The second colour: black.
    ExpectChanged(Cut(File1(), 58), Cut(ResultOf1(), 54) + Bytes(27) + Bytes{0xFF} + Bytes(27) + Bytes{0xFF});
}

// 10485760 pixels are 4096 x 2560: 12288 bytes a row.
TEST_F(Bitmap24FileTest, FewBytesAreNotBlownUp) {
    rig::WriteBytes(source_, Headers8(4096, 2560) + Palette8());
    EXPECT_EQ(Change(), kConverted);
    EXPECT_EQ(std::filesystem::file_size(destination_), 54u + 2560 * 12288);

    ExpectRefused(Headers8(4096, 2561) + Palette8());
    ExpectRefused(Headers8(1, 536870898) + Palette8());
    ExpectRefused(Headers1(26000, 26000) + kPalette1 + Bytes(1000));
}

// What is there converts, up to lengths beyond 32 bits.
TEST_F(Bitmap24FileTest, LargePicturesThatAreThereConvert) {
    const Bytes head = Headers1(4096, 2561) + kPalette1;
    // A row of 512 bytes is enough to leave 2560.
    for (const std::int64_t length : {62 + 512ll, 62 + 512ll * 2561, 1ll << 32}) {
        SCOPED_TRACE(length);
        rig::WriteBytes(source_, head);
        Lengthen(source_, length);
        EXPECT_EQ(Change(), kConverted);
        EXPECT_EQ(std::filesystem::file_size(destination_), 54u + 2561 * 12288);
    }
    rig::WriteBytes(source_, head);
    Lengthen(source_, 62 + 511);
    EXPECT_EQ(Change(), kFailed);
    EXPECT_EQ(std::filesystem::file_size(destination_), 0u);
}

TEST_F(Bitmap24FileTest, WhereTheSizeIsNotToldSmallPicturesConvert) {
    static constexpr auto kNoSize = [](HANDLE, PLARGE_INTEGER) -> BOOL { return FALSE; };
    const Replaced asking(__imp_GetFileSizeEx, +kNoSize);
    ExpectChanged(File8(), ResultOf8());
    ExpectRefused(Headers1(4096, 2561) + kPalette1 + Bytes(512 * 2561));
}

TEST_F(Bitmap24FileTest, WhatWasThereIsReplacedWhole) {
    for (const auto& [file, expected] :
         {std::pair{File1(), ResultOf1()}, std::pair{File8(), ResultOf8()}, std::pair{File24(), File24()}}) {
        rig::WriteBytes(destination_, Bytes(200000, 0x77));
        ExpectChanged(file, expected);
    }
    rig::WriteBytes(destination_, Bytes(200000, 0x77));
    ExpectChanged(Headers8(2, -3) + Palette8(), HeadersFrom8(30, 2, -3));
}

// A disk that is full from one of the calls on; then it takes nothing, or half and says so.
struct Disk {
    int calls;
    int callsUntilFull;
    bool takesHalf;
};
Disk disk;

TEST_F(Bitmap24FileTest, FullDisksFail) {
    static const auto realWrite = __imp_WriteFile;
    const auto write = [](HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written,
                          LPOVERLAPPED overlapped) -> BOOL {
        if (++disk.calls <= disk.callsUntilFull) {
            return realWrite(file, bytes, size, written, overlapped);
        }
        if (disk.takesHalf) {
            return realWrite(file, bytes, size / 2, written, overlapped);
        }
        *written = 0;
        SetLastError(ERROR_DISK_FULL);
        return FALSE;
    };
    const auto changeWith = [&](const Disk& thatDisk) {
        disk = thatDisk;
        const Replaced writing(__imp_WriteFile, +write);
        return Change();
    };
    for (const auto& [file, expected] : {std::pair{File1(), ResultOf1()}, std::pair{File8(), ResultOf8()},
                                         std::pair{LongFile8(), ResultOfLong8()}}) {
        rig::WriteBytes(source_, file);
        ASSERT_EQ(changeWith({0, 1000, false}), kConverted);
        EXPECT_TRUE(rig::ReadBytes(destination_) == expected);
        const int calls = disk.calls;
        EXPECT_GE(calls, file.size() > 10000 ? 3 : 1);
        for (int room = 0; room < calls; ++room) {
            for (const bool takesHalf : {false, true}) {
                SCOPED_TRACE(testing::Message() << room << " of " << calls << ", " << takesHalf);
                EXPECT_EQ(changeWith({0, room, takesHalf}), kFailed);
                EXPECT_EQ(disk.calls, room + 1) << "nothing is written behind a gap";
                const Bytes left = rig::ReadBytes(destination_).value_or(expected);
                EXPECT_LT(left.size(), expected.size());
                EXPECT_TRUE(std::equal(left.begin(), left.end(), expected.begin()));
            }
        }
    }
}

int readsLeft = 0;

// A drive that stops giving counts as the end of the file.
TEST_F(Bitmap24FileTest, SourcesThatCannotBeReadEndThere) {
    static const auto realRead = __imp_ReadFile;
    const auto read = [](HANDLE file, LPVOID buffer, DWORD size, LPDWORD count,
                         LPOVERLAPPED overlapped) -> BOOL {
        if (readsLeft-- > 0) {
            return realRead(file, buffer, std::min<DWORD>(size, 1000), count, overlapped);
        }
        *count = 77;
        SetLastError(ERROR_CRC);
        return FALSE;
    };
    const Replaced reading(__imp_ReadFile, +read);
    rig::WriteBytes(source_, LongFile8());
    readsLeft = 0;
    EXPECT_EQ(Change(), kFailed) << "without a header";
    EXPECT_EQ(rig::ReadBytes(destination_), Bytes{});
    // 1078 and then 7922 bytes: 26 rows of 304 and 18 pixels. From there on all are colour 255.
    readsLeft = 9;
    EXPECT_EQ(Change(), kConverted);
    Bytes last;
    for (unsigned x = 0; x < 301; ++x) {
        last = std::move(last) + Bytes{0x00, 0xFF, 0xA5};
    }
    last.push_back(0);
    Bytes expected = Cut(ResultOfLong8(), 54 + 26 * 904 + 18 * 3) + Bytes(last.begin() + 18 * 3, last.end());
    for (unsigned y = 27; y < 200; ++y) {
        expected = std::move(expected) + last;
    }
    EXPECT_TRUE(rig::ReadBytes(destination_) == expected);
}

TEST_F(Bitmap24FileTest, CopiesThatFail) {
    rig::WriteBytes(source_, File24());
    {
        static constexpr auto kNoCopy = [](LPCWSTR, LPCWSTR, BOOL) -> BOOL { return FALSE; };
        const Replaced copying(__imp_CopyFileW, +kNoCopy);
        EXPECT_EQ(Change(), kFailed);
    }
    static constexpr auto kNoAttributes = [](LPCWSTR, DWORD) -> BOOL { return FALSE; };
    const Replaced setting(__imp_SetFileAttributesW, +kNoAttributes);
    EXPECT_EQ(Change(), kFailed);
}

}  // namespace

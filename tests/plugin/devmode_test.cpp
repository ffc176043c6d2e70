// The settings record through IPrintOemUI::DevMode: size, default, convert and merge.
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <random>

#include "default_record.h"
#include "rig/guarded_record.h"
#include "rig/import_hooks.h"
#include "rig/plugin_dll.h"
#include "rig/trace_capture.h"

namespace {

using rig::GuardedRecord;
using rig::Hex;
using rig::Lines;

constexpr std::uint32_t kForeign = 0x12345678;
constexpr DWORD kUntouchedError = 0xBEEF;
constexpr std::uint32_t kSizes[] = {0, 16, 600, 1976, 4000, 0xFFFFFFFF};

Lines operator+(Lines left, const Lines& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// The memory that a record of this header size has: no more than it says, no less than a header.
std::size_t RoomFor(std::uint32_t size) {
    return std::clamp<std::size_t>(size, 12, kRecordSize);
}

Bytes Cut(Bytes record, std::size_t size) {
    record.resize(size);
    return record;
}

// The record that converting `in` over `out` leaves.
Bytes Converted(const Bytes& in, std::uint32_t in_size, const Bytes& out, std::uint32_t out_size) {
    Bytes expected = out;
    PutDefaults(expected);
    // The signature stays, also where it is a foreign one on both sides.
    std::copy_n(out.begin() + 4, 4, expected.begin() + 4);
    const std::size_t count = std::min<std::size_t>({in_size, out_size, kRecordSize});
    std::copy_n(in.begin(), count, expected.begin());
    Put32(expected, 0, 1976);
    Put32(expected, 8, 1);
    return expected;
}

std::uint32_t Get32(const Bytes& record, std::size_t offset) {
    return static_cast<std::uint32_t>(record[offset] | record[offset + 1] << 8 | record[offset + 2] << 16) |
           static_cast<std::uint32_t>(record[offset + 3]) << 24;
}

class DevMode : public testing::Test {
  protected:
    HRESULT Call(DWORD mode, void* in, void* out, DWORD room = 4321) {
        block_ = {};
        block_.cbSize = sizeof block_;
        block_.pdriverobj = reinterpret_cast<void*>(0x1111222233334444ULL);
        block_.hPrinter = reinterpret_cast<HANDLE>(0x55);
        block_.hModule = reinterpret_cast<HANDLE>(0xAAAABBBBCCCCDDDDULL);
        block_.pOEMDMIn = in;
        block_.pOEMDMOut = out;
        block_.cbBufSize = room;
        trace_.TakeOwn();
        SetLastError(kUntouchedError);
        const HRESULT result = object_->DevMode(mode, &block_);
        error_ = GetLastError();
        lines_ = trace_.TakeOwn();
        return result;
    }

    Lines Entry(const wchar_t* mode) const {
        return {std::wstring(L"UI:  IOemUI:DevMode(") + mode + L", " + Hex(&block_) + L") entry.\r\n"};
    }

    Lines BlockDump() const {
        return {L"pOemDMParam:\r\n",
                L"\tcbSize = 72\r\n",
                L"\tpdriverobj = 0x33334444\r\n",
                L"\thPrinter = 0x55\r\n",
                L"\thModule = 0xccccdddd\r\n",
                L"\tpPublicDMIn = 0\r\n",
                L"\tpPublicDMOut = 0\r\n",
                L"\tpOEMDMIn = " + Hex(block_.pOEMDMIn) + L"\r\n",
                L"\tpOEMDMOut = " + Hex(block_.pOEMDMOut) + L"\r\n",
                L"\tcbBufSize = " + std::to_wstring(static_cast<std::int32_t>(block_.cbBufSize)) + L"\r\n"};
    }

    rig::PluginDll dll_;
    rig::ComRef<IPrintOemUI> object_ = dll_.CreateObject();
    rig::TraceCapture trace_;
    OEMDMPARAM block_{};
    DWORD error_ = 0;
    Lines lines_;
};

const Lines kConvertLines = {L"UI:  Converting private OEM Devmode.\r\n", L"UI:  pOEMDevIn:\r\n"};
const Lines kUnknownDump = {L"ERROR UI:  Dump(POEMDEV) unknown private OEM DEVMODE.\r\n"};
const Lines kForeignLine = {L"UI:  Unknown DEVMODE signature, pOEMDMIn ignored.\r\n"};
const Lines kRefusedLine = {L"ERROR UI:  ConvertOEMDevmode() invalid parameters.\r\n"};

TEST_F(DevMode, SizeIs1976WhateverTheRecords) {
    GuardedRecord out(kRecordSize, 0xEE);
    for (void* record : {static_cast<void*>(out.data()), static_cast<void*>(nullptr)}) {
        EXPECT_EQ(Call(1, record, record), S_OK);
        EXPECT_EQ(block_.cbBufSize, 1976u);
        EXPECT_EQ(lines_, Entry(L"1") + BlockDump());
        EXPECT_EQ(error_, kUntouchedError);
    }
    EXPECT_EQ(out.bytes(), Bytes(kRecordSize, 0xEE));
    EXPECT_TRUE(out.Intact());
}

TEST_F(DevMode, TracesEachPublicRecordInItsLine) {
    OEMDMPARAM block{};
    // Never looked into: no memory is there.
    block.pPublicDMIn = reinterpret_cast<PDEVMODEW>(0x1111222200000A10ULL);
    block.pPublicDMOut = reinterpret_cast<PDEVMODEW>(0x3333444400000B20ULL);
    trace_.TakeOwn();
    EXPECT_EQ(object_->DevMode(OEMDM_SIZE, &block), S_OK);
    const Lines lines = trace_.TakeOwn();
    ASSERT_EQ(lines.size(), 11u);
    EXPECT_EQ(lines[6], L"\tpPublicDMIn = 0xa10\r\n");
    EXPECT_EQ(lines[7], L"\tpPublicDMOut = 0xb20\r\n");
}

TEST_F(DevMode, DefaultWritesEveryDefaultAndNothingElse) {
    for (const auto held : {std::uint8_t{0}, std::uint8_t{0xEE}}) {
        GuardedRecord in(kRecordSize, held);
        GuardedRecord out(kRecordSize, held);
        EXPECT_EQ(Call(2, in.data(), out.data()), S_OK);
        EXPECT_EQ(lines_,
                  Entry(L"2") + Lines{L"UI:  pOEMDevOut before setting default values:\r\n"} + BlockDump());
        Bytes expected(kRecordSize, held);
        PutDefaults(expected);
        EXPECT_EQ(out.bytes(), expected);
        EXPECT_EQ(in.bytes(), Bytes(kRecordSize, held));
        EXPECT_EQ(block_.cbBufSize, 4321u);
        EXPECT_TRUE(in.Intact() && out.Intact());
    }
}

TEST_F(DevMode, DefaultRecordHasTheDocumentedBytes) {
    GuardedRecord out;
    Call(2, nullptr, out.data());
    const std::uint8_t* p = out.data();
    // The first sixteen bytes as a hex dump of a stored job shows them.
    const Bytes head = {0xB8, 0x07, 0, 0, '2', '7', 'R', 0, 1, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(Bytes(p, p + 16), head);
    EXPECT_EQ(p[147], 12);
    EXPECT_EQ(p[309], 1);
    EXPECT_EQ(p[440], 1);
    EXPECT_EQ(p[933], 3);
    EXPECT_EQ(p[999], 1);
    EXPECT_EQ(p[596 + 36 * 2], 3);
    EXPECT_EQ(p[596 + 36 * 7], 8);
    // 'C', ':', '\', 'V' as UTF-16.
    const Bytes path = {'C', 0, ':', 0, '\\', 0, 'V', 0};
    EXPECT_EQ(Bytes(p + 1464, p + 1472), path);
    // The terminator behind 24 characters.
    EXPECT_EQ(p[1464 + 2 * 23], '2');
    EXPECT_EQ(p[1464 + 2 * 24], 0);
}

TEST_F(DevMode, ClaimedRoomIsTracedAsTheHostGaveIt) {
    GuardedRecord out;
    EXPECT_EQ(Call(2, nullptr, out.data(), 0xFFFFFFFF), S_OK);
    ASSERT_FALSE(lines_.empty());
    EXPECT_EQ(lines_.back(), L"\tcbBufSize = -1\r\n");
}

TEST_F(DevMode, DefaultWithoutARecordIsHarmless) {
    EXPECT_EQ(Call(2, nullptr, nullptr), S_OK);
    EXPECT_EQ(lines_,
              Entry(L"2") + Lines{L"UI:  pOEMDevOut before setting default values:\r\n"} + BlockDump());
}

TEST_F(DevMode, BadModeAndNoBlockAreInvalidParameters) {
    GuardedRecord in(PatternRecord(1));
    GuardedRecord out(kRecordSize, 0xEE);
    const struct {
        DWORD mode;
        const wchar_t* text;
    } cases[] = {{0, L"0"}, {5, L"5"}, {0xFFFFFFFF, L"-1"}, {0x80000001, L"-2147483647"}};
    for (const auto& [mode, text] : cases) {
        EXPECT_EQ(Call(mode, in.data(), out.data()), E_FAIL);
        EXPECT_EQ(error_, DWORD{ERROR_INVALID_PARAMETER});
        const Lines refusal = {
            L"ERROR UI:  DevMode() ERROR_INVALID_PARAMETER.\r\n",
            std::wstring(L"UI:  \tdwMode = ") + text + L", pOemDMParam = " + Hex(&block_) + L".\r\n"};
        EXPECT_EQ(lines_, Entry(text) + refusal);
        EXPECT_EQ(block_.cbBufSize, 4321u);
    }
    EXPECT_EQ(out.bytes(), Bytes(kRecordSize, 0xEE));

    for (DWORD mode = 1; mode <= 4; ++mode) {
        const std::wstring text = std::to_wstring(mode);
        trace_.TakeOwn();
        SetLastError(0);
        EXPECT_EQ(object_->DevMode(mode, nullptr), E_FAIL);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
        EXPECT_EQ(trace_.TakeOwn(), (Lines{L"UI:  IOemUI:DevMode(" + text + L", 0) entry.\r\n",
                                           L"ERROR UI:  DevMode() ERROR_INVALID_PARAMETER.\r\n",
                                           L"UI:  \tdwMode = " + text + L", pOemDMParam = 0.\r\n"}));
    }
}

TEST_F(DevMode, RefusedConversionStillSucceeds) {
    GuardedRecord in(PatternRecord(3));
    GuardedRecord out(PatternRecord(4));
    const Bytes before = out.bytes();
    for (const auto& [from, to] :
         {std::pair<void*, void*>{nullptr, out.data()}, std::pair<void*, void*>{in.data(), nullptr},
          std::pair<void*, void*>{nullptr, nullptr}}) {
        EXPECT_EQ(Call(3, from, to), S_OK);
        EXPECT_EQ(error_, kUntouchedError);
        EXPECT_EQ(lines_, Entry(L"3") + kRefusedLine + BlockDump());
        EXPECT_EQ(out.bytes(), before);
    }
    EXPECT_EQ(Call(4, in.data(), nullptr), S_OK);
    EXPECT_EQ(lines_, Entry(L"4") + kRefusedLine + BlockDump());
    EXPECT_EQ(in.bytes(), PatternRecord(3));
}

TEST_F(DevMode, MergeWithoutInputValidatesTheOutput) {
    Bytes content = PatternRecord(5, 600, kForeign);
    Put32(content, 12, 101);
    GuardedRecord out(content);
    EXPECT_EQ(Call(4, nullptr, out.data()), S_OK);
    EXPECT_EQ(lines_, Entry(L"4") + kRefusedLine + BlockDump());
    PutHeader(content, 1976, kSignature, 1);
    Put32(content, 12, 0);
    EXPECT_EQ(out.bytes(), content);
    EXPECT_TRUE(out.Intact());
}

TEST_F(DevMode, ConvertAndMergeAtEverySizeOfBothHeaders) {
    for (const DWORD mode : {3u, 4u}) {
        for (const std::uint32_t in_size : kSizes) {
            for (const std::uint32_t out_size : kSizes) {
                SCOPED_TRACE(testing::Message()
                             << "mode " << mode << ", in " << in_size << ", out " << out_size);
                Bytes in_bytes = PatternRecord(10, in_size);
                Put32(in_bytes, 12, 99);
                const Bytes out_bytes = PatternRecord(77, out_size);
                GuardedRecord in(Cut(in_bytes, RoomFor(in_size)));
                GuardedRecord out(out_bytes);
                EXPECT_EQ(Call(mode, in.data(), out.data()), S_OK);
                EXPECT_EQ(out.bytes(), Converted(in_bytes, in_size, out_bytes, out_size));
                EXPECT_EQ(in.bytes(), Cut(in_bytes, RoomFor(in_size)));
                EXPECT_TRUE(in.Intact() && out.Intact());
                EXPECT_EQ(block_.cbBufSize, 4321u);
                if (in_size < kRecordSize) {
                    EXPECT_EQ(lines_,
                              Entry(mode == 3 ? L"3" : L"4") + kConvertLines + kUnknownDump + BlockDump());
                } else {
                    EXPECT_EQ(lines_.size(), 1u + 2u + 16u + 10u);
                }
            }
        }
    }
}

// A host of an older driver gives the room that its record had.
TEST_F(DevMode, SmallerOutputGetsThePartThatFits) {
    for (const std::uint32_t room : {12u, 16u, 600u, 1975u}) {
        SCOPED_TRACE(room);
        const Bytes held = PatternRecord(60, room);
        Bytes expected = held;
        PutDefaults(expected);
        GuardedRecord made(Cut(held, room));
        EXPECT_EQ(Call(2, nullptr, made.data(), room), S_OK);
        EXPECT_EQ(made.bytes(), Cut(expected, room));

        const Bytes in_bytes = PatternRecord(61);
        GuardedRecord in(in_bytes);
        GuardedRecord out(Cut(held, room));
        EXPECT_EQ(Call(3, in.data(), out.data(), room), S_OK);
        EXPECT_EQ(out.bytes(), Cut(Converted(in_bytes, kRecordSize, held, room), room));
        EXPECT_EQ(block_.cbBufSize, room);
        EXPECT_TRUE(made.Intact() && in.Intact() && out.Intact());
    }
}

TEST_F(DevMode, RecordsConvertInPlace) {
    for (const DWORD mode : {3u, 4u}) {
        for (const std::uint32_t size : kSizes) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << ", size " << size);
            Bytes held = PatternRecord(62, size);
            Put32(held, 12, 99);
            GuardedRecord record(held);
            EXPECT_EQ(Call(mode, record.data(), record.data()), S_OK);
            EXPECT_EQ(record.bytes(), Converted(held, size, held, size));
            EXPECT_TRUE(record.Intact());
        }
    }
}

// A stored record of an older driver, in a buffer of its length: whatever its header claims, nothing lies
// behind.
TEST_F(DevMode, RecordsConvertInPlaceWithinTheirBuffer) {
    for (const DWORD mode : {3u, 4u}) {
        for (const std::uint32_t size : kSizes) {
            SCOPED_TRACE(testing::Message() << "mode " << mode << ", size " << size);
            Bytes held = PatternRecord(63, size);
            Put32(held, 12, 99);
            GuardedRecord record(Cut(held, 600));
            EXPECT_EQ(Call(mode, record.data(), record.data(), 600), S_OK);
            EXPECT_EQ(record.bytes(), Cut(Converted(held, size, held, size), 600));
            EXPECT_EQ(block_.cbBufSize, 600u);
            EXPECT_TRUE(record.Intact());
        }
    }
}

TEST_F(DevMode, ShortRecordOf600BytesKeepsDefaultsBehind) {
    GuardedRecord in(Cut(PatternRecord(20, 600), 600));
    GuardedRecord out;
    Bytes header(12);
    PutHeader(header, 1976, kSignature, 1);
    std::copy(header.begin(), header.end(), out.data());
    EXPECT_EQ(Call(3, in.data(), out.data()), S_OK);
    Bytes expected(kRecordSize);
    PutDefaults(expected);
    const Bytes held = in.bytes();
    std::copy(held.begin(), held.end(), expected.begin());
    PutHeader(expected, 1976, kSignature, 1);
    EXPECT_EQ(out.bytes(), expected);
}

TEST_F(DevMode, ConvertDumpsTheInput) {
    Bytes content(kRecordSize);
    PutHeader(content, 1976, kSignature, 0x23);
    Put32(content, 12, static_cast<std::uint32_t>(-5));
    content[16] = 0x01;
    content[161] = 0x02;
    content[308] = 0x03;
    content[452] = 0xFF;
    content[17] = 0x05;
    content[162] = 0x06;
    content[309] = 0x07;
    content[453] = 0x08;
    content[147] = 0x0C;
    content[148] = 0x00;
    GuardedRecord in(content);
    GuardedRecord out(PatternRecord(1));
    const Lines dump = {L"\tdmOEMExtra.dwSize      = 1976\r\n",
                        L"\tdmOEMExtra.dwSignature = 0x523732\r\n",
                        L"\tdmOEMExtra.dwVersion   = 0x23\r\n",
                        L"\tdwDriverData           = 0xfffffffb\r\n",
                        L"\tbDocStart      = 0x1\r\n",
                        L"\tbPageStart     = 0x2\r\n",
                        L"\tbDocEnd        = 0x3\r\n",
                        L"\tbPageEnd       = 0xff\r\n",
                        L"\tbDocStartFeedToPosition      = 0x5\r\n",
                        L"\tbPageStartFeedToPosition     = 0x6\r\n",
                        L"\tbDocEndFeedToPosition        = 0x7\r\n",
                        L"\tbPageEndFeedToPosition       = 0x8\r\n",
                        L"\tbDocStart_Cashdrawer      = 0xc\r\n",
                        L"\tbDocStart_CutPaper     = 0\r\n",
                        L"\tbDocEnd        = 0x3\r\n",
                        L"\tbPageEnd       = 0xff\r\n"};
    EXPECT_EQ(Call(3, in.data(), out.data()), S_OK);
    EXPECT_EQ(lines_, Entry(L"3") + kConvertLines + dump + BlockDump());
    EXPECT_EQ(Call(4, in.data(), out.data()), S_OK);
    EXPECT_EQ(lines_, Entry(L"4") + kConvertLines + dump + BlockDump());

    // A size beyond the record prints as the signed number that it is to "%d".
    Put32(content, 0, 0xFFFFFFFF);
    std::copy(content.begin(), content.end(), in.data());
    EXPECT_EQ(Call(3, in.data(), out.data()), S_OK);
    ASSERT_GT(lines_.size(), 3u);
    EXPECT_EQ(lines_[3], L"\tdmOEMExtra.dwSize      = -1\r\n");
}

TEST_F(DevMode, ForeignSignatureGivesTheDefaultRecord) {
    for (const DWORD mode : {3u, 4u}) {
        for (const bool foreign_in : {true, false}) {
            const Bytes held = PatternRecord(30, 600, foreign_in ? kSignature : kForeign);
            GuardedRecord in(Cut(PatternRecord(31, 16, foreign_in ? kForeign : kSignature), 16));
            GuardedRecord out(held);
            EXPECT_EQ(Call(mode, in.data(), out.data()), S_OK);
            EXPECT_EQ(error_, kUntouchedError);
            EXPECT_EQ(lines_, Entry(mode == 3 ? L"3" : L"4") + kForeignLine + BlockDump());
            Bytes expected = held;
            PutDefaults(expected);
            EXPECT_EQ(out.bytes(), expected);
            EXPECT_TRUE(in.Intact() && out.Intact());
        }
    }
}

TEST_F(DevMode, SameForeignSignatureConverts) {
    const Bytes in_bytes = PatternRecord(40, 1976, kForeign);
    const Bytes out_bytes = PatternRecord(41, 700, kForeign);
    GuardedRecord in(in_bytes);
    GuardedRecord out(out_bytes);
    EXPECT_EQ(Call(3, in.data(), out.data()), S_OK);
    EXPECT_EQ(lines_, Entry(L"3") + kConvertLines + kUnknownDump + BlockDump());
    EXPECT_EQ(out.bytes(), Converted(in_bytes, 1976, out_bytes, 700));
    EXPECT_EQ(Get32(out.bytes(), 4), kForeign);

    // An input that claims nothing brings no signature either.
    GuardedRecord empty(Cut(PatternRecord(42, 0, kForeign), 12));
    GuardedRecord kept(out_bytes);
    EXPECT_EQ(Call(3, empty.data(), kept.data()), S_OK);
    EXPECT_EQ(kept.bytes(), Converted(empty.bytes(), 0, out_bytes, 700));
    EXPECT_EQ(Get32(kept.bytes(), 4), kForeign);

    GuardedRecord merged(out_bytes);
    EXPECT_EQ(Call(4, in.data(), merged.data()), S_OK);
    EXPECT_EQ(Get32(merged.bytes(), 4), kSignature);
}

TEST_F(DevMode, MergeDropsDriverDataAbove100) {
    const struct {
        std::int32_t held;
        std::int32_t merged;
    } cases[] = {{0, 0}, {100, 100}, {101, 0}, {-5, -5}, {INT32_MAX, 0}, {INT32_MIN, INT32_MIN}};
    for (const auto& [held, merged] : cases) {
        Bytes content = PatternRecord(50);
        Put32(content, 12, static_cast<std::uint32_t>(held));
        GuardedRecord in(content);
        GuardedRecord out(PatternRecord(51));
        EXPECT_EQ(Call(4, in.data(), out.data()), S_OK);
        EXPECT_EQ(static_cast<std::int32_t>(Get32(out.bytes(), 12)), merged) << held;
        EXPECT_EQ(Call(3, in.data(), out.data()), S_OK);
        EXPECT_EQ(static_cast<std::int32_t>(Get32(out.bytes(), 12)), held) << "conversion does not validate";
    }
}

TEST_F(DevMode, RandomRecordsConvertAsTheRuleSays) {
    std::mt19937 random(20240229);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE(round);
        Bytes in_bytes(kRecordSize);
        Bytes out_bytes(kRecordSize);
        for (Bytes* bytes : {&in_bytes, &out_bytes}) {
            std::generate(bytes->begin(), bytes->end(), [&] { return static_cast<std::uint8_t>(random()); });
            PutHeader(*bytes, random() % 2 == 0 ? random() % 2500 : random(), kSignature, random());
        }
        const std::uint32_t in_size = Get32(in_bytes, 0);
        const std::uint32_t out_size = Get32(out_bytes, 0);
        GuardedRecord in(Cut(in_bytes, RoomFor(in_size)));
        GuardedRecord out(out_bytes);
        EXPECT_EQ(Call(3, in.data(), out.data()), S_OK);
        EXPECT_EQ(out.bytes(), Converted(in_bytes, in_size, out_bytes, out_size));
        EXPECT_TRUE(in.Intact() && out.Intact());
    }
}

class SystemDirectory : public testing::Test {
  protected:
    // The log path of a default record where the system directory is `answer`; nothing for a failing call.
    std::wstring LogPath(const wchar_t* answer) {
        rig::ImportHooks hooks;
        hooks.On("KERNEL32.dll", "GetSystemDirectoryW", &GetSystemDirectoryW,
                 [answer](auto, LPWSTR buffer, UINT size) -> UINT {
                     const std::wstring text = answer == nullptr ? L"" : answer;
                     if (text.empty()) {
                         SetLastError(ERROR_ACCESS_DENIED);
                         return 0;
                     }
                     if (text.size() >= size) {
                         return static_cast<UINT>(text.size() + 1);
                     }
                     std::copy(text.begin(), text.end(), buffer);
                     buffer[text.size()] = L'\0';
                     return static_cast<UINT>(text.size());
                 });
        rig::PluginDll dll;
        const auto object = dll.CreateObject();
        EXPECT_GE(hooks.Bound("GetSystemDirectoryW"), 1);
        GuardedRecord out(kRecordSize, 0xEE);
        OEMDMPARAM block{};
        block.pOEMDMOut = out.data();
        EXPECT_EQ(object->DevMode(OEMDM_DEFAULT, &block), S_OK);
        std::wstring path;
        for (std::size_t at = 1464; at < kRecordSize && (out.data()[at] | out.data()[at + 1]) != 0; at += 2) {
            path.push_back(static_cast<wchar_t>(out.data()[at] | out.data()[at + 1] << 8));
        }
        // Behind the text the field is clear.
        const Bytes bytes = out.bytes();
        EXPECT_TRUE(std::all_of(bytes.begin() + 1464 + static_cast<std::ptrdiff_t>(2 * path.size()),
                                bytes.end(), [](std::uint8_t byte) { return byte == 0; }));
        return path;
    }
};

TEST_F(SystemDirectory, LogPathIsBelowTheRootOfTheSystemDrive) {
    EXPECT_EQ(LogPath(L"D:\\Windows\\system32"), L"D:\\VELDDriverlog\\KVM-R72");
    EXPECT_EQ(LogPath(L"C:\\Windows\\system32"), L"C:\\VELDDriverlog\\KVM-R72");
}

TEST_F(SystemDirectory, LogPathWithoutASystemDirectoryIsTheFolderAlone) {
    EXPECT_EQ(LogPath(nullptr), L"VELDDriverlog\\KVM-R72");
}

TEST_F(SystemDirectory, LongSystemDirectoryIsCutAtTheDrive) {
    EXPECT_EQ(LogPath((L"E:\\" + std::wstring(256, L'x')).c_str()), L"E:\\VELDDriverlog\\KVM-R72");
}

}  // namespace

// Default, conversion, validation and dump of the settings record, against bytes written down by hand and a
// plain byte-by-byte conversion.
#include "devmode/devmode_record.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "platform_recorder.h"
#include "record_bytes.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::u16string>;

using DevmodeRecordTest = PlatformTest;

constexpr std::uint32_t kOurs = 0x00523732;
constexpr std::uint32_t kForeign = 0x4B455354;
constexpr std::u16string_view kLogPathOnC = u"C:\\VELDDriverlog\\KVM-R72";
constexpr std::uint32_t kSizes[] = {0, 16, 600, 1975, 1976, 1977, 4000, 0xFFFFFFFF};

// A record between guard bytes.
class GuardedRecord {
  public:
    explicit GuardedRecord(const RecordBytes& bytes) : memory_{} {
        memory_.before.fill(kGuard);
        memory_.after.fill(kGuard);
        memory_.record = RecordOf(bytes);
    }
    OEMDEV* get() { return &memory_.record; }
    RecordBytes Bytes() const { return BytesOf(memory_.record); }
    bool GuardsAreWhole() const {
        const auto isGuard = [](std::uint8_t byte) { return byte == kGuard; };
        return std::all_of(memory_.before.begin(), memory_.before.end(), isGuard) &&
               std::all_of(memory_.after.begin(), memory_.after.end(), isGuard);
    }

  private:
    static constexpr std::uint8_t kGuard = 0xE7;
    struct {
        std::array<std::uint8_t, 256> before;
        OEMDEV record;
        std::array<std::uint8_t, 256> after;
    } memory_;
};

// The host's input: a heap block that ends where its header says that the record ends (but holds a header at
// least and no more than a record), so that the address sanitizer sees every read behind it.
class ExactInput {
  public:
    explicit ExactInput(const RecordBytes& bytes)
        : length_(std::clamp<std::size_t>(RecordOf(bytes).dmOEMExtra.dwSize, 12, kRecordBytes)),
          block_(::operator new(length_)),
          before_(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length_)) {
        std::memcpy(block_.get(), bytes.data(), length_);
    }
    const OEMDEV* get() const { return static_cast<const OEMDEV*>(block_.get()); }
    bool IsUnchanged() const { return std::memcmp(block_.get(), before_.data(), length_) == 0; }

  private:
    struct Free {
        void operator()(void* block) const { ::operator delete(block); }
    };
    std::size_t length_;
    std::unique_ptr<void, Free> block_;
    std::vector<std::uint8_t> before_;
};

RecordBytes WithHeader(RecordBytes bytes, std::uint32_t size, std::uint32_t signature,
                       std::uint32_t version) {
    PutHeader(bytes, size, signature, version);
    return bytes;
}

RecordBytes DefaultRecord(RecordBytes before, std::u16string_view logPath = kLogPathOnC) {
    PutDefaults(before, logPath);
    return before;
}

std::uint32_t IntAt(const RecordBytes& bytes, std::size_t offset) {
    return bytes[offset] | static_cast<std::uint32_t>(bytes[offset + 1]) << 8 |
           static_cast<std::uint32_t>(bytes[offset + 2]) << 16 |
           static_cast<std::uint32_t>(bytes[offset + 3]) << 24;
}

// The conversion one byte at a time.
RecordBytes SlowConvert(const RecordBytes& in, const RecordBytes& out) {
    RecordBytes result = out;
    if (IntAt(in, 4) != IntAt(out, 4)) {
        PutDefaults(result, kLogPathOnC);
        return result;
    }
    const std::uint32_t inSize = IntAt(in, 0);
    const std::uint32_t outSize = IntAt(out, 0);
    PutBodyDefaults(result, kLogPathOnC);
    for (std::uint32_t i = 0; i < kRecordBytes; ++i) {
        if (i < inSize && i < outSize) {
            result[i] = in[i];
        }
    }
    PutInt(result, 0, 1976);
    PutInt(result, 8, 1);
    return result;
}

// The first difference in words, or nothing: whole arrays in a failure text help nobody.
std::string Difference(const RecordBytes& actual, const RecordBytes& expected) {
    for (std::size_t i = 0; i < kRecordBytes; ++i) {
        if (actual[i] != expected[i]) {
            return "byte " + std::to_string(i) + " is " + std::to_string(actual[i]) + " instead of " +
                   std::to_string(expected[i]);
        }
    }
    return {};
}

std::u16string LogPathOf(const OEMDEV& record) {
    return std::u16string(FieldText(record.szLogPath));
}

// default
// ---------------------------------------------------------------------------------------------------

TEST_F(DevmodeRecordTest, DefaultWritesItsBytesAndKeepsTheOthers) {
    for (const RecordBytes& before :
         {Filled(0x00), Filled(0xFF), Filled(0x5A), Patterned(29), Patterned(201)}) {
        GuardedRecord record(before);
        SetDefaultOEMDev(record.get());
        EXPECT_EQ(Difference(record.Bytes(), DefaultRecord(before)), "");
        EXPECT_TRUE(record.GuardsAreWhole());
    }
}

TEST_F(DevmodeRecordTest, DefaultByName) {
    OEMDEV record = RecordOf(Filled(0xFF));
    SetDefaultOEMDev(&record);
    EXPECT_EQ(record.dmOEMExtra.dwSize, 1976u);
    EXPECT_EQ(record.dmOEMExtra.dwSignature, 0x00523732u);
    EXPECT_EQ(record.dmOEMExtra.dwVersion, 1u);
    EXPECT_EQ(record.dwDriverData, 0);
    EXPECT_EQ(record.bDocStart_Cashdrawer, 12);
    EXPECT_EQ(record.bDocEndFeedToPosition, 1);
    EXPECT_EQ(record.bDocEnd_CutPaper, 1);
    EXPECT_EQ(record.bPageEndFeedToPosition, 0);
    EXPECT_EQ(record.bPageEnd_CutPaper, 0);
    EXPECT_EQ(record.Barcode1D[2].bType, 3);
    EXPECT_EQ(record.Barcode1D[7].bType, 8);
    EXPECT_EQ(record.Barcode2D[1].bPdfEccLevel, 5);
    EXPECT_EQ(record.iWaterMarkAngle, 45);
    EXPECT_EQ(record.iWaterMarkSize, 100);
    EXPECT_EQ(record.iWaterMarkBrightness, 50);
    EXPECT_EQ(record.iWaterMarkFontSize, 50);
    EXPECT_EQ(record.iWaterMarkPosition, 4);
    EXPECT_EQ(record.iScale, 100);
    EXPECT_EQ(record.dwDocStart_DrawerOrHerald, -1) << "has no default";
    EXPECT_EQ(record.bPageEnd_LogoPosition, 0xFF) << "has no default";
}

TEST_F(DevmodeRecordTest, DefaultOfNothing) {
    SetDefaultOEMDev(nullptr);
    EXPECT_THAT(platform_recorder::TakeLines(), IsEmpty());
}

TEST_F(DevmodeRecordTest, LogPathIsBelowTheRootOfTheSystemDrive) {
    struct Row {
        std::u16string directory;
        std::u16string logPath;
    };
    const Row rows[] = {
        {u"C:\\Windows\\system32", u"C:\\VELDDriverlog\\KVM-R72"},
        {u"C:\\", u"C:\\VELDDriverlog\\KVM-R72"},
        {u"D:\\Windows\\system32", u"D:\\VELDDriverlog\\KVM-R72"},
        {u"", u"VELDDriverlog\\KVM-R72"},
        {u"C", u"CVELDDriverlog\\KVM-R72"},
        {u"C:", u"C:VELDDriverlog\\KVM-R72"},
        {u"E:\\" + std::u16string(256, u'w'), u"E:\\VELDDriverlog\\KVM-R72"},
    };
    for (const Row& row : rows) {
        platform_recorder::SetSystemDirectory(row.directory);
        GuardedRecord record(Filled(0xFF));
        SetDefaultOEMDev(record.get());
        EXPECT_EQ(LogPathOf(*record.get()), row.logPath);
        EXPECT_EQ(Difference(record.Bytes(), DefaultRecord(Filled(0xFF), row.logPath)), "");
        EXPECT_TRUE(record.GuardsAreWhole());
    }
}

// conversion
// ------------------------------------------------------------------------------------------------

TEST_F(DevmodeRecordTest, ConvertRefusesNull) {
    const RecordBytes bytes = WithHeader(Patterned(31), 1976, kOurs, 1);
    const Lines refusal = {u"ERROR UI:  ConvertOEMDevmode() invalid parameters.\r\n"};
    GuardedRecord record(bytes);

    EXPECT_FALSE(ConvertOEMDevmode(nullptr, record.get()));
    EXPECT_EQ(platform_recorder::TakeLines(), refusal);
    EXPECT_FALSE(ConvertOEMDevmode(record.get(), nullptr));
    EXPECT_EQ(platform_recorder::TakeLines(), refusal);
    EXPECT_FALSE(ConvertOEMDevmode(nullptr, nullptr));
    EXPECT_EQ(platform_recorder::TakeLines(), refusal);

    EXPECT_EQ(Difference(record.Bytes(), bytes), "");
    EXPECT_TRUE(record.GuardsAreWhole());
}

TEST_F(DevmodeRecordTest, ConvertReplacesForeignRecords) {
    struct Row {
        std::uint32_t in;
        std::uint32_t out;
    };
    for (const Row& row :
         {Row{kForeign, kOurs}, Row{kOurs, kForeign}, Row{0, kOurs}, Row{kOurs, kOurs + 1}}) {
        for (const std::uint32_t inSize : kSizes) {
            for (const std::uint32_t outSize : kSizes) {
                SCOPED_TRACE(testing::Message() << "in " << inSize << " out " << outSize);
                const RecordBytes before = WithHeader(Patterned(17), outSize, row.out, 9);
                const ExactInput in(WithHeader(Patterned(31), inSize, row.in, 7));
                GuardedRecord out(before);
                EXPECT_TRUE(ConvertOEMDevmode(in.get(), out.get()));
                EXPECT_EQ(Difference(out.Bytes(), DefaultRecord(before)), "");
                EXPECT_TRUE(out.GuardsAreWhole());
                EXPECT_TRUE(in.IsUnchanged());
                EXPECT_EQ(platform_recorder::TakeLines(),
                          Lines{u"UI:  Unknown DEVMODE signature, pOEMDMIn ignored.\r\n"});
            }
        }
    }
}

TEST_F(DevmodeRecordTest, ConvertCopiesTheSmallerSize) {
    // The two sides only have to agree: a signature that is not ours converts as well.
    for (const std::uint32_t signature : {kOurs, kForeign, 0u}) {
        for (const std::uint32_t inSize : kSizes) {
            for (const std::uint32_t outSize : kSizes) {
                SCOPED_TRACE(testing::Message() << "in " << inSize << " out " << outSize);
                const RecordBytes inBytes = WithHeader(Patterned(31), inSize, signature, 7);
                const RecordBytes outBytes = WithHeader(Patterned(17), outSize, signature, 9);
                const ExactInput in(inBytes);
                GuardedRecord out(outBytes);
                EXPECT_TRUE(ConvertOEMDevmode(in.get(), out.get()));
                EXPECT_EQ(Difference(out.Bytes(), SlowConvert(inBytes, outBytes)), "");
                EXPECT_TRUE(out.GuardsAreWhole());
                EXPECT_TRUE(in.IsUnchanged());
            }
        }
    }
}

TEST_F(DevmodeRecordTest, ConvertOfRandomRecords) {
    std::mt19937 random(20240501);
    std::uniform_int_distribution<std::uint32_t> anySize(0, 2100);
    for (int round = 0; round < 3000; ++round) {
        RecordBytes inBytes;
        RecordBytes outBytes;
        for (std::size_t i = 0; i < kRecordBytes; ++i) {
            inBytes[i] = static_cast<std::uint8_t>(random());
            outBytes[i] = static_cast<std::uint8_t>(random());
        }
        const std::uint32_t inSize = anySize(random);
        const std::uint32_t outSize = anySize(random);
        PutHeader(inBytes, inSize, kOurs, static_cast<std::uint32_t>(random()));
        PutHeader(outBytes, outSize, kOurs, static_cast<std::uint32_t>(random()));
        const ExactInput in(inBytes);
        GuardedRecord out(outBytes);
        EXPECT_TRUE(ConvertOEMDevmode(in.get(), out.get()));
        ASSERT_EQ(Difference(out.Bytes(), SlowConvert(inBytes, outBytes)), "")
            << "in " << inSize << " out " << outSize;
        ASSERT_TRUE(out.GuardsAreWhole());
        ASSERT_TRUE(in.IsUnchanged());
    }
}

TEST_F(DevmodeRecordTest, ConvertOfAnOlderRecordKeepsDefaultsBehindIt) {
    RecordBytes outBytes = Filled(0);
    PutHeader(outBytes, 1976, kOurs, 1);
    const ExactInput in(WithHeader(Filled(0x77), 600, kOurs, 0));
    GuardedRecord out(outBytes);
    EXPECT_TRUE(ConvertOEMDevmode(in.get(), out.get()));
    const OEMDEV& record = *out.get();
    EXPECT_EQ(record.dmOEMExtra.dwSize, 1976u);
    EXPECT_EQ(record.dmOEMExtra.dwVersion, 1u);
    EXPECT_EQ(record.bPageEnd_LogoPosition, 0x77);
    EXPECT_EQ(record.Barcode1D[0].bType, 0x77) << "byte 596 lies inside";
    EXPECT_EQ(record.Barcode1D[0].dwElementHeight, 163) << "byte 600 lies behind";
    EXPECT_EQ(record.iWaterMarkAngle, 45);
    EXPECT_EQ(LogPathOf(record), kLogPathOnC);
}

TEST_F(DevmodeRecordTest, ConvertInPlaceIsTheConversionOfACopy) {
    for (const std::uint32_t size : kSizes) {
        SCOPED_TRACE(size);
        const RecordBytes bytes = WithHeader(Patterned(31), size, kOurs, 7);
        GuardedRecord record(bytes);
        EXPECT_TRUE(ConvertOEMDevmode(record.get(), record.get()));
        EXPECT_EQ(Difference(record.Bytes(), SlowConvert(bytes, bytes)), "");
        EXPECT_TRUE(record.GuardsAreWhole());
    }
}

// trace
// -----------------------------------------------------------------------------------------------------

// A record whose dumped fields all differ.
RecordBytes TracedRecord(std::uint32_t size) {
    RecordBytes bytes = Filled(0);
    PutHeader(bytes, size, kOurs, 0x10002);
    PutInt(bytes, 12, 0xFFFFFFFB);
    bytes[16] = 0xA1;   // start of document
    bytes[161] = 0xB2;  // start of page
    bytes[308] = 0xC3;  // end of document
    bytes[452] = 0x0D;  // end of page
    bytes[17] = 0x21;
    bytes[162] = 0x32;
    bytes[309] = 0x43;
    bytes[453] = 0x54;
    bytes[147] = 12;
    bytes[148] = 0;
    return bytes;
}

Lines DumpOfTracedRecord(std::u16string size) {
    return {
        u"\tdmOEMExtra.dwSize      = " + size + u"\r\n",
        u"\tdmOEMExtra.dwSignature = 0x523732\r\n",
        u"\tdmOEMExtra.dwVersion   = 0x10002\r\n",
        u"\tdwDriverData           = 0xfffffffb\r\n",
        u"\tbDocStart      = 0xa1\r\n",
        u"\tbPageStart     = 0xb2\r\n",
        u"\tbDocEnd        = 0xc3\r\n",
        u"\tbPageEnd       = 0xd\r\n",
        u"\tbDocStartFeedToPosition      = 0x21\r\n",
        u"\tbPageStartFeedToPosition     = 0x32\r\n",
        u"\tbDocEndFeedToPosition        = 0x43\r\n",
        u"\tbPageEndFeedToPosition       = 0x54\r\n",
        u"\tbDocStart_Cashdrawer      = 0xc\r\n",
        u"\tbDocStart_CutPaper     = 0\r\n",
        u"\tbDocEnd        = 0xc3\r\n",
        u"\tbPageEnd       = 0xd\r\n",
    };
}

const std::u16string kUnknownRecord = u"ERROR UI:  Dump(POEMDEV) unknown private OEM DEVMODE.\r\n";

TEST_F(DevmodeRecordTest, DumpOfOurRecord) {
    struct Row {
        std::uint32_t size;
        std::u16string shown;
    };
    // The size is shown as a signed number.
    for (const Row& row :
         {Row{1976, u"1976"}, Row{1977, u"1977"}, Row{4000, u"4000"}, Row{0xFFFFFFFF, u"-1"}}) {
        const ExactInput record(TracedRecord(row.size));
        Dump(record.get());
        EXPECT_EQ(platform_recorder::TakeLines(), DumpOfTracedRecord(row.shown));
        EXPECT_TRUE(record.IsUnchanged());
    }
}

TEST_F(DevmodeRecordTest, DumpOfOtherRecords) {
    Dump(nullptr);
    EXPECT_THAT(platform_recorder::TakeLines(), ElementsAre(kUnknownRecord));
    for (const std::uint32_t size : {0u, 12u, 16u, 600u, 1975u}) {
        const ExactInput shorter(TracedRecord(size));
        Dump(shorter.get());
        EXPECT_THAT(platform_recorder::TakeLines(), ElementsAre(kUnknownRecord)) << size;
    }
    for (const std::uint32_t signature : {kForeign, 0u, kOurs + 1}) {
        const ExactInput foreign(WithHeader(Patterned(31), 1976, signature, 1));
        Dump(foreign.get());
        EXPECT_THAT(platform_recorder::TakeLines(), ElementsAre(kUnknownRecord)) << signature;
    }
}

TEST_F(DevmodeRecordTest, DumpFollowsTheLevel) {
    const ExactInput known(TracedRecord(1976));
    gDebugLevel = 2;
    Dump(known.get());
    EXPECT_THAT(platform_recorder::TakeLines(), IsEmpty());
    gDebugLevel = 4;
    Dump(nullptr);
    EXPECT_THAT(platform_recorder::TakeLines(), ElementsAre(kUnknownRecord));
    gDebugLevel = 5;
    Dump(nullptr);
    EXPECT_THAT(platform_recorder::TakeLines(), IsEmpty());
}

TEST_F(DevmodeRecordTest, ConvertTracesItsInput) {
    Lines expected = {u"UI:  Converting private OEM Devmode.\r\n", u"UI:  pOEMDevIn:\r\n"};
    const Lines dump = DumpOfTracedRecord(u"1976");
    expected.insert(expected.end(), dump.begin(), dump.end());
    const ExactInput in(TracedRecord(1976));
    GuardedRecord out(WithHeader(Patterned(17), 1976, kOurs, 9));
    EXPECT_TRUE(ConvertOEMDevmode(in.get(), out.get()));
    EXPECT_EQ(platform_recorder::TakeLines(), expected);

    const ExactInput older(TracedRecord(600));
    EXPECT_TRUE(ConvertOEMDevmode(older.get(), out.get()));
    EXPECT_THAT(platform_recorder::TakeLines(), ElementsAre(u"UI:  Converting private OEM Devmode.\r\n",
                                                            u"UI:  pOEMDevIn:\r\n", kUnknownRecord));
}

TEST_F(DevmodeRecordTest, ConvertTracesWithTheirSeverities) {
    const ExactInput ours(TracedRecord(1976));
    const ExactInput older(TracedRecord(600));
    const ExactInput foreign(WithHeader(Patterned(31), 1976, kForeign, 1));
    const Lines warning = {u"UI:  Unknown DEVMODE signature, pOEMDMIn ignored.\r\n"};
    const Lines error = {u"ERROR UI:  ConvertOEMDevmode() invalid parameters.\r\n"};
    struct Row {
        std::int32_t level;
        bool hasWarnings;
        bool hasErrors;
    };
    for (const Row& row :
         {Row{2, true, true}, Row{3, true, true}, Row{4, false, true}, Row{5, false, false}}) {
        SCOPED_TRACE(row.level);
        gDebugLevel = row.level;
        GuardedRecord out(WithHeader(Patterned(17), 1976, kOurs, 9));
        EXPECT_TRUE(ConvertOEMDevmode(ours.get(), out.get()));
        EXPECT_THAT(platform_recorder::TakeLines(), IsEmpty());
        EXPECT_TRUE(ConvertOEMDevmode(older.get(), out.get()));
        EXPECT_EQ(platform_recorder::TakeLines(), row.hasErrors ? Lines{kUnknownRecord} : Lines{});
        EXPECT_TRUE(ConvertOEMDevmode(foreign.get(), out.get()));
        EXPECT_EQ(platform_recorder::TakeLines(), row.hasWarnings ? warning : Lines{});
        EXPECT_FALSE(ConvertOEMDevmode(nullptr, out.get()));
        EXPECT_EQ(platform_recorder::TakeLines(), row.hasErrors ? error : Lines{});
    }
}

TEST_F(DevmodeRecordTest, DefaultAndValidateAreSilent) {
    GuardedRecord record(Patterned(31));
    SetDefaultOEMDev(record.get());
    EXPECT_TRUE(ValidateOEMDev(record.get()));
    EXPECT_FALSE(ValidateOEMDev(nullptr));
    EXPECT_THAT(platform_recorder::TakeLines(), IsEmpty());
}

// validation
// ------------------------------------------------------------------------------------------------

TEST_F(DevmodeRecordTest, ValidateSetsTheHeaderAndDropsLargeDriverData) {
    struct Row {
        std::int32_t before;
        std::int32_t after;
    };
    const Row rows[] = {{0, 0},
                        {99, 99},
                        {100, 100},
                        {101, 0},
                        {-5, -5},
                        {std::numeric_limits<std::int32_t>::max(), 0},
                        {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::min()}};
    for (const Row& row : rows) {
        RecordBytes before = Patterned(31);
        PutInt(before, 12, static_cast<std::uint32_t>(row.before));
        RecordBytes expected = before;
        PutHeader(expected, 1976, kOurs, 1);
        PutInt(expected, 12, static_cast<std::uint32_t>(row.after));

        GuardedRecord record(before);
        EXPECT_TRUE(ValidateOEMDev(record.get()));
        EXPECT_EQ(Difference(record.Bytes(), expected), "") << row.before;
        EXPECT_TRUE(record.GuardsAreWhole());
    }
}

TEST_F(DevmodeRecordTest, ValidateRefusesNull) {
    EXPECT_FALSE(ValidateOEMDev(nullptr));
}

// Converting and then validating is the host's merge.
TEST_F(DevmodeRecordTest, MergeChecksTheDriverDataItCopied) {
    struct Row {
        std::uint32_t before;
        std::int32_t after;
    };
    for (const Row& row : {Row{101, 0}, Row{100, 100}, Row{0xFFFFFFFB, -5}}) {
        RecordBytes inBytes = WithHeader(Patterned(31), 1976, kOurs, 1);
        PutInt(inBytes, 12, row.before);
        const ExactInput in(inBytes);
        GuardedRecord out(WithHeader(Patterned(17), 1976, kOurs, 1));
        EXPECT_TRUE(ConvertOEMDevmode(in.get(), out.get()));
        EXPECT_EQ(out.get()->dwDriverData, static_cast<std::int32_t>(row.before));
        EXPECT_TRUE(ValidateOEMDev(out.get()));
        EXPECT_EQ(out.get()->dwDriverData, row.after);
    }
}

}  // namespace

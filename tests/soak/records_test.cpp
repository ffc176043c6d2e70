// Records by the thousand through the whole document sheet: of random bytes; good ones with a field that is
// anything, or with bytes turned over; and those of other versions, sizes and drivers, which the plug-in
// converts first.
#include <array>
#include <cstdio>

#include "pages/hostile_records.h"
#include "record_fields.h"
#include "rig/guarded_record.h"
#include "soak/process_counts.h"

namespace pages {
namespace {

// What two programs beside each other take half of each.
constexpr unsigned kHalves = 2;
constexpr unsigned kKinds = 4;

constexpr std::size_t kDriverData = 12;

std::uint32_t NumberAt(const Bytes& record, std::size_t offset) {
    std::uint32_t number = 0;
    std::memcpy(&number, &record[offset], sizeof number);
    return number;
}

void PutNumber(Bytes& record, std::size_t offset, std::uint32_t number) {
    std::memcpy(&record[offset], &number, sizeof number);
}

// Texts in which nothing is that must not be shown: a byte that was turned over can make any character.
void MakeTextsShowable(Bytes& record, std::mt19937& random) {
    for (const TextField& field : kTextFields) {
        for (std::size_t i = 0; i < field.units; ++i) {
            std::uint16_t unit = 0;
            std::memcpy(&unit, &record[field.offset + 2 * i], sizeof unit);
            if (unit >= 0x7F && (unit < 0x4E00 || unit >= 0xA000) && (unit < 0xD800 || unit >= 0xE000)) {
                unit = RandomUnit(random);
                std::memcpy(&record[field.offset + 2 * i], &unit, sizeof unit);
            }
        }
    }
}

// One made by a user.
Bytes GoodRecord(std::mt19937& random) {
    Bytes record = RecordWith(BusyBlock());
    record[kPrintAsImage] = 1;
    record[kKind] = static_cast<std::uint8_t>(random() % 3);
    PutText(record, kPictureName, kPictureNameUnits, L"C:\\shop\\logo.bmp");
    PutText(record, kText, kTextUnits, L"Paid");
    PutText(record, kFace, kFaceUnits, L"Tahoma");
    PutText(record, kFormName, kFormNameUnits, L"72mm x 297mm");
    PutText(record, kLogPath, kLogPathUnits, L"C:\\VELDDriverlog\\KVM-R72");
    return record;
}

Bytes WithWildField(Bytes record, std::mt19937& random) {
    const std::vector<RecordField>& fields = RecordFields();
    const RecordField& field = fields[random() % fields.size()];
    constexpr std::uint8_t kExtremes[] = {0x00, 0x01, 0x7F, 0x80, 0xFE, 0xFF};
    const auto kind = random() % (std::size(kExtremes) + 2);
    for (std::size_t i = 0; i < field.size; ++i) {
        record[field.offset + i] =
            kind < std::size(kExtremes) ? kExtremes[kind] : static_cast<std::uint8_t>(random());
    }
    return record;
}

Bytes WithTurnedBits(Bytes record, std::mt19937& random) {
    for (auto count = 1 + random() % 24; count != 0; --count) {
        record[random() % record.size()] ^= static_cast<std::uint8_t>(1u << random() % 8);
    }
    return record;
}

// What the plug-in makes of a record whose header is anything: its own bytes as far as it goes, by its size,
// and defaults behind them; defaults alone of another driver's.
Bytes Converted(const Bytes& stored, const Bytes& defaults) {
    if (NumberAt(stored, 4) != kOemSignature) {
        return defaults;
    }
    Bytes record = defaults;
    const std::size_t count = std::min<std::size_t>(NumberAt(stored, 0), kOemRecordSize);
    std::copy_n(stored.begin(), static_cast<std::ptrdiff_t>(count), record.begin());
    std::copy_n(defaults.begin(), 12, record.begin());
    if (static_cast<std::int32_t>(NumberAt(record, kDriverData)) > 100) {
        PutNumber(record, kDriverData, 0);
    }
    return record;
}

class RecordsTest : public HostileRecordsTest, public testing::WithParamInterface<unsigned> {
  protected:
    Bytes Record(unsigned number) {
        std::mt19937 random(number);
        Bytes record;
        switch (number / kHalves % kKinds) {
            case 0:
                return RandomRecords(number, 1).front();
            case 1:
                record = WithWildField(GoodRecord(random), random);
                break;
            case 2:
                record = WithTurnedBits(GoodRecord(random), random);
                break;
            default:
                return RecordOfAnother(number / (kHalves * kKinds), random);
        }
        MakeTextsShowable(record, random);
        return record;
    }

  private:
    // As the host brings it to this version: the plug-in is lent as many bytes as the record says to have,
    // and nothing lies behind them.
    Bytes RecordOfAnother(unsigned number, std::mt19937& random) {
        Host().MakeDefaultRecord();
        const Bytes defaults = PageTest::Record();
        Bytes stored = GoodRecord(random);
        constexpr std::size_t kHeaderSize = 12;
        switch (number % 4) {
            case 0:
                PutNumber(stored, 0, static_cast<std::uint32_t>(random() % kOemRecordSize));
                break;
            case 1:
                PutNumber(stored, 0, static_cast<std::uint32_t>(random()));
                break;
            case 2:
                PutNumber(stored, 4, static_cast<std::uint32_t>(random()));
                break;
            default:
                PutNumber(stored, 8, static_cast<std::uint32_t>(random()));
                PutNumber(stored, kDriverData, static_cast<std::uint32_t>(random()));
                break;
        }
        const std::size_t room = std::clamp<std::size_t>(NumberAt(stored, 0), kHeaderSize, kOemRecordSize);
        const rig::GuardedRecord input(std::span<const std::uint8_t>(stored).first(room));
        OEMDMPARAM parameters = {};
        parameters.pOEMDMIn = input.data();
        parameters.pOEMDMOut = Host().record_bytes().data();
        parameters.cbBufSize = kOemRecordSize;
        EXPECT_EQ(Host().DevMode(OEMDM_CONVERT, parameters), S_OK);
        parameters.pOEMDMIn = parameters.pOEMDMOut;
        EXPECT_EQ(Host().DevMode(OEMDM_MERGE, parameters), S_OK);
        EXPECT_EQ(Differences(Converted(stored, defaults), PageTest::Record()), "") << "converting";
        return PageTest::Record();
    }
};

TEST_P(RecordsTest, AnyRecordThroughTheWholeSheet) {
    // A record that fails is found again by its number.
    const auto first = static_cast<unsigned>(soak::Times("KVMR72_FIRST_RECORD", 0));
    const auto count = static_cast<unsigned>(soak::Times("KVMR72_RECORDS", 16));
    for (unsigned number = first + GetParam(); number < count && !HasFailure(); number += kHalves) {
        Survive({Record(number)}, "record number " + std::to_string(number));
        if (number % 500 < kHalves) {
            std::printf("%u of %u\n", number, count);
            std::fflush(stdout);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Halves, RecordsTest, testing::Range(0u, kHalves));

}  // namespace
}  // namespace pages

// The byte map in docs/settings-record.md against the code: every byte is in it once, with the default that
// the code writes. Names, offsets and sizes are compared with the header elsewhere (tests/docs).
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "devmode/devmode_record.h"
#include "document_tables.h"
#include "platform_recorder.h"
#include "record_bytes.h"

namespace {

struct Field {
    std::string name;
    std::size_t offset;
    std::size_t size;
    std::string byDefault;
};

// The `n`th of a list of defaults, or the only one.
std::string DefaultOf(const std::string& cell, std::size_t n) {
    std::string rest = cell;
    for (std::size_t comma = rest.find(", "); n > 0 && comma != std::string::npos; comma = rest.find(", ")) {
        rest.erase(0, comma + 2);
        --n;
    }
    return rest.substr(0, rest.find(", "));
}

// The rows of an array's fonts follow under a heading that names it.
std::vector<Field> FieldsOf(const std::vector<documents::Section>& sections) {
    std::vector<Field> fields;
    for (const documents::Section& section : sections) {
        std::size_t first = 0;
        std::size_t stride = 0;
        std::size_t count = 1;
        for (const documents::Row& array : documents::Find(sections, "Barcode fonts").rows) {
            if (section.heading == "Each of `" + array.at(0) + "`") {
                first = std::stoul(array.at(1));
                stride = std::stoul(array.at(2));
                count = std::stoul(array.at(3));
            }
        }
        for (const documents::Row& row : section.rows) {
            if (row.size() != 6) {
                continue;
            }
            for (std::size_t n = 0; n < count; ++n) {
                fields.push_back({row[2], first + n * stride + std::stoul(row[0]), std::stoul(row[1]),
                                  DefaultOf(row[5], n)});
            }
        }
    }
    return fields;
}

// What a field holds once the defaults are written over bytes of `before`.
std::vector<std::uint8_t> BytesByDefault(const Field& field, std::uint8_t before) {
    if (field.byDefault == "kept") {
        return std::vector<std::uint8_t>(field.size, before);
    }
    std::vector<std::uint8_t> bytes(field.size, 0);
    if (field.byDefault.find('\\') != std::string::npos) {
        for (std::size_t i = 0; i < field.byDefault.size(); ++i) {
            bytes.at(2 * i) = static_cast<std::uint8_t>(field.byDefault[i]);
        }
    } else if (field.byDefault != "empty") {
        const std::uint32_t value = static_cast<std::uint32_t>(std::stoul(field.byDefault));
        for (std::size_t i = 0; i < std::min<std::size_t>(field.size, 4); ++i) {
            bytes[i] = static_cast<std::uint8_t>(value >> 8 * i & 0xFF);
        }
    }
    return bytes;
}

class SettingsRecordDocument : public PlatformTest {};

TEST_F(SettingsRecordDocument, HasEveryByteOnce) {
    std::vector<int> times(kRecordBytes, 0);
    for (const Field& field : FieldsOf(documents::Read("settings-record.md"))) {
        for (std::size_t i = 0; i < field.size; ++i) {
            ++times.at(field.offset + i);
        }
    }
    EXPECT_EQ(times, std::vector<int>(kRecordBytes, 1));
}

TEST_F(SettingsRecordDocument, TellsTheDefaults) {
    const std::vector<Field> fields = FieldsOf(documents::Read("settings-record.md"));
    ASSERT_FALSE(fields.empty());
    for (const std::uint8_t before : {std::uint8_t{0x00}, std::uint8_t{0xEE}}) {
        OEMDEV record = RecordOf(Filled(before));
        SetDefaultOEMDev(&record);
        const RecordBytes bytes = BytesOf(record);
        for (const Field& field : fields) {
            const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(field.offset);
            EXPECT_EQ(std::vector<std::uint8_t>(begin, begin + static_cast<std::ptrdiff_t>(field.size)),
                      BytesByDefault(field, before))
                << field.name << " at " << field.offset;
        }
    }
}

}  // namespace

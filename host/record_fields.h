// The settings record field by field, with names, for people: what a record says and what changed between
// two.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "devmode/oemdev.h"

using RecordBytes = std::span<const std::uint8_t, kOemRecordSize>;

enum class FieldKind { kNumber, kSignedNumber, kHexNumber, kBytes, kText };

struct RecordField {
    std::string name;  // as in the record's layout; slots as "Barcode1D[3].bType"
    std::size_t offset;
    std::size_t size;
    FieldKind kind;
};

// Every field in the order of the record, reserved bytes included: no byte is left out.
const std::vector<RecordField>& RecordFields();

// The field's value as UTF-8: a number, bytes in hexadecimal, or text in quotation marks. Bytes end behind
// the last one that is not zero, so an empty command reads "(none)".
std::string FormatField(const RecordField& field, RecordBytes record);

struct FieldChange {
    std::string name;
    std::string before;
    std::string after;
};

// The fields whose bytes differ, in the order of the record.
std::vector<FieldChange> CompareRecords(RecordBytes before, RecordBytes after);

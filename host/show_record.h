// Settings records in words, for whoever is sent one: each field with what it means and, where a value is out
// of range, what the plug-in makes of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

// Bytes without a whole settings record; the text says why, in UTF-8.
class NoRecordError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Where settings records begin in the bytes of a file: a record alone, or behind DEVMODEs and whatever else
// is saved with them.
struct RecordSearch {
    std::vector<std::size_t> whole;
    std::vector<std::size_t> broken;  // begin, but the file ends before they do, or with an impossible size
};
RecordSearch FindRecords(std::span<const std::uint8_t> file);

// The whole records of `file`, UTF-8, with what is to know of the broken ones: a hundred of each, and of more
// how many they are and where. Throws NoRecordError when none is whole.
std::string DescribeRecords(std::span<const std::uint8_t> file);

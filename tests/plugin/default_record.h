// The settings record as other parts of the driver know it, written down byte by byte and apart from the
// plug-in's own code.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

constexpr std::size_t kRecordSize = 1976;
constexpr std::uint32_t kSignature = 0x00523732;

using Bytes = std::vector<std::uint8_t>;

// Writes the default of every byte that has one; the others keep what they held.
void PutDefaults(Bytes& record, const std::wstring& log_path = L"C:\\VELDDriverlog\\KVM-R72");

// The header: size, signature, version.
void PutHeader(Bytes& record, std::uint32_t size, std::uint32_t signature, std::uint32_t version);
void Put32(Bytes& record, std::size_t offset, std::uint32_t value);

// 1976 bytes that differ from their neighbours and from every default, with a header.
Bytes PatternRecord(std::uint8_t seed, std::uint32_t size = kRecordSize,
                    std::uint32_t signature = kSignature);

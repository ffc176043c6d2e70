// Whole files in and out. Reading and writing throw std::runtime_error with a text for a person, in UTF-8.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

// Whether a path names something that is there and is no file on a disk: a device or a pipe.
bool IsDevice(const std::filesystem::path& path);

// Nothing when there is no such file; a file above `limit` bytes is refused.
std::optional<std::vector<std::uint8_t>> ReadWholeFile(const std::filesystem::path& path, std::size_t limit);

// Replaces the file only when every byte was written: an interrupted run leaves the old one. A device is left
// alone.
void WriteWholeFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

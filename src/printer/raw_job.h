// Commands for the printer itself, sent through the spooler as a job of their own that the driver's rendering
// does not touch.
#pragma once

#include <windows.h>

#include <cstdint>
#include <span>
#include <vector>

// What the spooler's list of jobs shows.
inline constexpr wchar_t kBarcodeJob[] = L"Barcode";
inline constexpr wchar_t kBarcode2DJob[] = L"2Dcode";
inline constexpr wchar_t kSelfTestJob[] = L"SELFTEST";
inline constexpr wchar_t kFirmwareJob[] = L"FIRMWARE";  // fonts too
inline constexpr wchar_t kLogoJob[] = L"LOGO";

// Sends the pieces as one page, each whole and with a write of its own, and returns when the spooler has
// them. The first failure ends the job: what was written before stays in it. TRUE when every call succeeded.
//
// `written` gets how many bytes the spooler says that it took, which may be fewer than it was given. A piece
// has no more than 32 bits can count. The handle is the host's; null or a stale one fails.
bool SendRawJob(HANDLE printer, const wchar_t* name, std::span<const std::vector<std::uint8_t>> pieces,
                std::uint64_t* written = nullptr) noexcept;

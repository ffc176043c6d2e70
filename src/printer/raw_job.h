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

// A job of one page while it is written. The first call that fails ends it, in the spooler too: what was
// written before stays in it. The handle is the host's; null or a stale one fails.
class RawJob {
  public:
    RawJob(HANDLE printer, const wchar_t* name) noexcept;
    RawJob(const RawJob&) = delete;
    RawJob& operator=(const RawJob&) = delete;
    ~RawJob() { End(); }

    // Hands a piece to the spooler in one write, also an empty one. FALSE when the job is at its end. A piece
    // has no more bytes than 32 bits count.
    bool Write(std::span<const std::uint8_t> piece) noexcept;

    // How many bytes the spooler says that it took, which may be fewer than it was given.
    std::uint64_t Written() const noexcept { return written_; }

    // TRUE when this and every call before succeeded.
    bool End() noexcept;

    // Leaves page and document as they are, for good.
    void Abandon() noexcept;

  private:
    HANDLE printer_;
    bool isDocumentOpen_ = false;
    bool isPageOpen_ = false;
    bool succeeded_ = false;
    std::uint64_t written_ = 0;
};

// Sends the pieces as one job, each with a write of its own, and returns when the spooler has them. TRUE when
// every call succeeded. `written` gets the bytes that the spooler took.
bool SendRawJob(HANDLE printer, const wchar_t* name, std::span<const std::vector<std::uint8_t>> pieces,
                std::uint64_t* written = nullptr) noexcept;

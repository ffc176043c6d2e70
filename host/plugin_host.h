// What the driver's user-interface host does with its plug-in: loads the DLL, creates the object, publishes
// the driver helper, keeps the settings record, and opens sheets with its own tabs and the plug-in's pages
// through the platform's common property sheet. A program or a test asks for these steps one by one, or for a
// whole sheet.
//
// Everything the plug-in may write to lies between guard bytes. Calls must come from one thread, the one that
// opens the sheets. A host has one sheet open at a time; several hosts in one process may each have one, as
// when a user opens the printer's properties beside the printing preferences.
#pragma once

#include "intrface/print_oem.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "devmode/oemdev.h"
#include "driver_helper.h"
#include "driver_options.h"
#include "guarded_block.h"

// The plug-in or the sheet engine refused; the text is for a person, in UTF-8.
class HostError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct HostSettings {
    std::vector<OptionSource> options = ReceiptDriverOptions();
    std::wstring printer_name = L"KVM-R72";
    std::wstring port_name = L"USB001";  // for the host's own tab
    // Null: no printer stands behind the sheets. The spooler refuses a null handle in every call, so whatever
    // tries to print fails as it does when the printer is gone; an invented handle could be somebody's.
    HANDLE printer = nullptr;
};

enum class SheetKind { kDocument, kPrinter };

struct SheetResult {
    LONG code = 0;      // what the sheet engine returned, below 0 for an error
    DWORD result = 0;   // what it reported as the sheet's result; not every engine tells OK from Cancel there
    bool kept = false;  // OK or Apply was pressed, so the settings of that moment were kept
};

class PluginHost {
  public:
    // Loads the DLL, creates the object, publishes the helper, checks signature and record size and makes the
    // default record. Throws HostError.
    explicit PluginHost(const std::filesystem::path& dll, HostSettings settings = {});
    ~PluginHost();
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    IPrintOemUI& plugin() const noexcept { return *plugin_; }
    HMODULE module() const noexcept { return module_; }
    DriverHelper& helper() noexcept { return helper_; }
    const DriverOptions& options() const noexcept { return options_; }
    DEVMODEW& public_devmode() noexcept { return *public_devmode_.As<DEVMODEW>(); }
    // The block that every CommonUIProp call got; the plug-in keeps its address.
    OEMCUIPPARAM& common_ui() noexcept { return common_ui_; }
    // What the calls for the last sheet got.
    const OEMUIPSPARAM& sheet_parameters() const noexcept { return sheet_parameters_; }

    // The record that sheets edit. Tests may fill it with anything.
    OEMDEV& record() const noexcept { return *record_.As<OEMDEV>(); }
    std::span<std::uint8_t, kOemRecordSize> record_bytes() const noexcept {
        return std::span<std::uint8_t, kOemRecordSize>(record_.data(), kOemRecordSize);
    }
    bool RecordGuardsIntact() const noexcept { return record_.Intact(); }
    // Record, public DEVMODE, every option text, and the plug-in's own option items.
    bool GuardsIntact() const noexcept;

    // One GetInfo call for a 32-bit answer. Throws HostError.
    DWORD GetInfo(DWORD mode);
    // One DevMode call; the header fields of `parameters` that only the host knows are filled in.
    HRESULT DevMode(DWORD mode, OEMDMPARAM& parameters);
    // Asks the plug-in for a default record.
    void MakeDefaultRecord();
    // Takes over stored bytes: a record of the current size is merged, one of another version's size is
    // converted, both by the plug-in. Throws HostError, and keeps the record as it is, for bytes that are no
    // record of this driver or whose own size field does not match.
    void LoadRecord(std::span<const std::uint8_t> stored);

    // Each call starts with a block as the driver fills it for that mode: the printing preferences come with
    // record, public DEVMODE and option items; printer properties with none of them, and they ask first how
    // many items the plug-in wants to add.
    HRESULT CommonUIProp(DWORD mode);
    // CommonUIProp, then the sheet; returns when it is closed. Record, public DEVMODE and selections are kept
    // as they were when OK or Apply was pressed and otherwise put back as a whole. Throws HostError if no
    // sheet could open.
    SheetResult OpenSheet(SheetKind kind, HWND owner = nullptr);

    // The reasons of the sheet calls that reached the plug-in during the last sheet, in order.
    const std::vector<WORD>& sheet_reasons() const noexcept { return sheet_reasons_; }

  private:
    struct SheetType;
    struct SheetRun;

    // What the host keeps or drops when a sheet closes.
    struct Settings {
        std::vector<std::uint8_t> record;
        DEVMODEW public_devmode;
        std::vector<LONG> selections;
    };

    static const SheetType kSheetTypes[];
    static LONG SheetFunction(PPROPSHEETUI_INFO info, LPARAM lparam);
    static LONG PluginSheetFunction(PPROPSHEETUI_INFO info, LPARAM lparam);

    void CreatePlugin(const std::filesystem::path& dll);
    void Unload() noexcept;
    Settings CurrentSettings() const;
    void Restore(const Settings& settings);
    void TakeOverForm();

    HostSettings settings_;
    DriverOptions options_;
    DriverHelper helper_;
    GuardedBlock record_;
    GuardedBlock public_devmode_;
    OEMUIOBJ ui_object_ = {};
    OEMCUIPPARAM common_ui_ = {};
    OEMUIPSPARAM sheet_parameters_ = {};
    std::optional<GuardedBlock> plugin_items_;  // what it asked for in printer properties
    HANDLE heap_ = nullptr;
    HMODULE module_ = nullptr;
    IPrintOemUI* plugin_ = nullptr;
    std::vector<WORD> sheet_reasons_;
};

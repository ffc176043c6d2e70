#include "plugin_host.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "host_tabs.h"
#include "utf8.h"

namespace {

std::string Hex(std::uint32_t value) {
    char text[11];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(value));
    return text;
}

void Require(HRESULT result, const char* call) {
    if (FAILED(result)) {
        throw HostError(std::string(call) + " failed with " + Hex(static_cast<std::uint32_t>(result)));
    }
}

void CopyName(wchar_t* field, std::size_t capacity, const std::wstring& name) {
    const std::size_t length = std::min(name.size(), capacity - 1);
    std::copy_n(name.begin(), length, field);
    std::fill_n(field + length, capacity - length, L'\0');
}

}  // namespace

// One kind of sheet: the tabs that the host puts first and the plug-in's call that adds the others.
struct PluginHost::SheetType {
    SheetKind kind;
    const wchar_t* title;  // behind the printer's name
    DWORD common_ui_mode;
    bool edits_settings;  // record and public DEVMODE
    LONG_PTR (*add_host_tabs)(const PROPSHEETUI_INFO& info, const HostTabContext& context);
    HRESULT (STDMETHODCALLTYPE IPrintOemUI::*add_plugin_pages)(PPROPSHEETUI_INFO info, LPARAM lparam);
};

const PluginHost::SheetType PluginHost::kSheetTypes[] = {
    {SheetKind::kDocument, L" Printing Preferences", OEMCUIP_DOCPROP, true, AddDocumentTabs,
     &IPrintOemUI::DocumentPropertySheets},
    {SheetKind::kPrinter, L" Properties", OEMCUIP_PRNPROP, false, AddPrinterTabs,
     &IPrintOemUI::DevicePropertySheets},
};

// One opened sheet. The engine's callbacks find it through their initial parameter.
struct PluginHost::SheetRun {
    PluginHost& host;
    const SheetType& type;
    std::wstring title;
    Settings kept_settings;
    bool shown = false;
    bool kept = false;
    bool closing = false;
    HostTabContext tabs = {};
};

PluginHost::PluginHost(const std::filesystem::path& dll, HostSettings settings)
    : settings_(std::move(settings)),
      options_(settings_.options),
      record_(kOemRecordSize),
      public_devmode_(sizeof(DEVMODEW)) {
    ui_object_.cbSize = sizeof ui_object_;
    DEVMODEW& devmode = public_devmode();
    CopyName(devmode.dmDeviceName, std::size(devmode.dmDeviceName), settings_.printer_name);
    devmode.dmSpecVersion = DM_SPECVERSION;
    devmode.dmDriverVersion = 0x0600;
    devmode.dmSize = sizeof(DEVMODEW);
    devmode.dmDriverExtra = kOemRecordSize;
    devmode.dmFields = DM_FORMNAME | DM_PAPERLENGTH | DM_PAPERWIDTH;
    devmode.dmPaperLength = 2970;  // tenths of a millimetre, as the first form says
    devmode.dmPaperWidth = 720;
    TakeOverForm();
    try {
        CreatePlugin(dll);
        if (const DWORD signature = GetInfo(OEMGI_GETSIGNATURE); signature != kOemSignature) {
            throw HostError("the plug-in reports the foreign signature " + Hex(signature));
        }
        if (const DWORD version = GetInfo(OEMGI_GETVERSION); version != kOemVersion) {
            throw HostError("the plug-in reports the foreign version " + std::to_string(version));
        }
        MakeDefaultRecord();
    } catch (...) {
        Unload();
        throw;
    }
}

PluginHost::~PluginHost() {
    Unload();
}

void PluginHost::CreatePlugin(const std::filesystem::path& dll) {
    heap_ = HeapCreate(0, 0, 0);
    module_ = LoadLibraryExW(std::filesystem::absolute(dll).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (module_ == nullptr) {
        throw HostError("cannot load " + ToUtf8(dll.native()) + ": error " + std::to_string(GetLastError()));
    }
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    const FARPROC address = GetProcAddress(module_, "DllGetClassObject");
    if (address == nullptr) {
        throw HostError(ToUtf8(dll.native()) + " does not export DllGetClassObject");
    }
    const auto get_class_object = reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(address));
    void* object = nullptr;
    Require(get_class_object(kClsidOemUI, __uuidof(IClassFactory), &object), "DllGetClassObject");
    auto* factory = static_cast<IClassFactory*>(object);
    const HRESULT created = factory->CreateInstance(nullptr, kIidPrintOemUI, &object);
    factory->Release();
    Require(created, "IClassFactory::CreateInstance");
    plugin_ = static_cast<IPrintOemUI*>(object);
    Require(plugin_->PublishDriverInterface(&helper_), "IPrintOemUI::PublishDriverInterface");
}

void PluginHost::Unload() noexcept {
    if (plugin_ != nullptr) {
        plugin_->Release();
    }
    if (module_ != nullptr) {
        FreeLibrary(module_);
    }
    if (heap_ != nullptr) {
        HeapDestroy(heap_);
    }
}

bool PluginHost::GuardsIntact() const noexcept {
    return record_.Intact() && public_devmode_.Intact() && options_.GuardsIntact() &&
           (!plugin_items_ || plugin_items_->Intact());
}

DWORD PluginHost::GetInfo(DWORD mode) {
    DWORD value = 0;
    DWORD needed = 0;
    Require(plugin_->GetInfo(mode, &value, sizeof value, &needed), "IPrintOemUI::GetInfo");
    return value;
}

HRESULT PluginHost::DevMode(DWORD mode, OEMDMPARAM& parameters) {
    parameters.cbSize = sizeof parameters;
    parameters.hPrinter = settings_.printer;
    parameters.hModule = module_;
    parameters.pPublicDMIn = &public_devmode();
    parameters.pPublicDMOut = &public_devmode();
    return plugin_->DevMode(mode, &parameters);
}

void PluginHost::MakeDefaultRecord() {
    OEMDMPARAM parameters = {};
    Require(DevMode(OEMDM_SIZE, parameters), "IPrintOemUI::DevMode (size)");
    if (parameters.cbBufSize != kOemRecordSize) {
        throw HostError("the plug-in asks for a record of " + std::to_string(parameters.cbBufSize) +
                        " bytes; this host knows records of " + std::to_string(kOemRecordSize));
    }
    std::fill_n(record_.data(), record_.size(), std::uint8_t{0});
    parameters.pOEMDMOut = record_.data();
    Require(DevMode(OEMDM_DEFAULT, parameters), "IPrintOemUI::DevMode (default)");
}

void PluginHost::LoadRecord(std::span<const std::uint8_t> stored) {
    OemDevHeader header;
    if (stored.size() < sizeof header) {
        throw HostError("it has " + std::to_string(stored.size()) + " bytes, too few for a record's header");
    }
    std::memcpy(&header, stored.data(), sizeof header);
    if (header.dwSignature != kOemSignature) {
        throw HostError("its signature is " + Hex(header.dwSignature) + ", not " + Hex(kOemSignature));
    }
    if (header.dwSize != stored.size()) {
        throw HostError("it says that it has " + std::to_string(header.dwSize) + " bytes and has " +
                        std::to_string(stored.size()));
    }
    const GuardedBlock input(stored.size());
    std::copy(stored.begin(), stored.end(), input.data());
    MakeDefaultRecord();
    OEMDMPARAM parameters = {};
    parameters.pOEMDMIn = input.data();
    parameters.pOEMDMOut = record_.data();
    parameters.cbBufSize = kOemRecordSize;
    if (stored.size() != kOemRecordSize) {
        Require(DevMode(OEMDM_CONVERT, parameters), "IPrintOemUI::DevMode (convert)");
        parameters.pOEMDMIn = record_.data();
    }
    Require(DevMode(OEMDM_MERGE, parameters), "IPrintOemUI::DevMode (merge)");
}

HRESULT PluginHost::CommonUIProp(DWORD mode) {
    common_ui_ = {};
    common_ui_.cbSize = sizeof common_ui_;
    common_ui_.poemuiobj = &ui_object_;
    common_ui_.hPrinter = settings_.printer;
    common_ui_.pPrinterName = settings_.printer_name.data();
    common_ui_.hModule = module_;
    common_ui_.hOEMHeap = heap_;
    if (mode != OEMCUIP_PRNPROP) {
        common_ui_.pPublicDM = &public_devmode();
        common_ui_.pOEMDM = record_.data();
        common_ui_.pDrvOptItems = options_.items();
        common_ui_.cDrvOptItems = options_.count();
        return plugin_->CommonUIProp(mode, &common_ui_);
    }
    if (const HRESULT counted = plugin_->CommonUIProp(mode, &common_ui_); FAILED(counted)) {
        return counted;
    }
    plugin_items_.emplace(common_ui_.cOEMOptItems * sizeof(OPTITEM));
    common_ui_.pOEMOptItems = plugin_items_->As<OPTITEM>();
    return plugin_->CommonUIProp(mode, &common_ui_);
}

SheetResult PluginHost::OpenSheet(SheetKind kind, HWND owner) {
    const SheetType& type =
        *std::find_if(std::begin(kSheetTypes), std::end(kSheetTypes),
                      [kind](const SheetType& candidate) { return candidate.kind == kind; });
    Require(CommonUIProp(type.common_ui_mode), "IPrintOemUI::CommonUIProp");
    sheet_reasons_.clear();

    SheetRun run = {.host = *this,
                    .type = type,
                    .title = settings_.printer_name + type.title,
                    .kept_settings = CurrentSettings()};
    run.tabs.options = &options_;
    run.tabs.printer_name = settings_.printer_name;
    run.tabs.port_name = settings_.port_name;
    run.tabs.shown = [&run] { run.shown = true; };
    run.tabs.applied = [&run](bool closing) { run.closing = closing; };
    run.tabs.apply_finished = [&run] {
        run.kept_settings = run.host.CurrentSettings();
        run.kept = true;
    };
    run.tabs.cancelled = [&run] { run.closing = false; };

    OEMUIPSPARAM& parameters = sheet_parameters_;
    parameters = {};
    parameters.cbSize = sizeof parameters;
    parameters.poemuiobj = &ui_object_;
    parameters.hPrinter = settings_.printer;
    parameters.pPrinterName = settings_.printer_name.data();
    parameters.hModule = module_;
    parameters.hOEMHeap = heap_;
    if (type.edits_settings) {
        parameters.pPublicDM = &public_devmode();
        parameters.pOEMDM = record_.data();
    }
    parameters.pOemEntry = &run;

    SheetResult result;
    result.code =
        CommonPropertySheetUIW(owner, SheetFunction, reinterpret_cast<LPARAM>(&run), &result.result);
    if (result.code < 0) {
        throw HostError("the sheet did not open: CommonPropertySheetUI returned " +
                        std::to_string(result.code));
    }
    if (!run.shown) {
        throw HostError("the sheet did not open: no window could be made (is there a display?)");
    }
    TakeOverForm();
    if (run.closing) {
        run.kept = true;
    } else {
        Restore(run.kept_settings);
    }
    result.kept = run.kept;
    return result;
}

// The sheet's own function: it names the sheet, adds the host's tabs and hands on to the plug-in. The engine
// then calls the plug-in by itself when pages are to be added and when the sheet ends; what it asks only this
// function, the plug-in hears from here.
LONG PluginHost::SheetFunction(PPROPSHEETUI_INFO info, LPARAM lparam) {
    auto& run = *reinterpret_cast<SheetRun*>(info->lParamInit);
    const auto tell_plugin = [&] {
        PROPSHEETUI_INFO plugin_info = *info;
        plugin_info.lParamInit = reinterpret_cast<LPARAM>(&run.host.sheet_parameters_);
        PluginSheetFunction(&plugin_info, lparam);
    };
    if (info->Reason > MAX_PROPSHEETUI_REASON_INDEX) {
        tell_plugin();  // the engine is not ready: only the reason and the initial parameter are filled in
        return 1;
    }
    switch (info->Reason) {
        case PROPSHEETUI_REASON_INIT:
            info->Result = CPSUI_CANCEL;
            if (run.type.add_host_tabs(*info, run.tabs) <= 0) {
                return -1;
            }
            return info->pfnComPropSheet(info->hComPropSheet, CPSFUNC_ADD_PFNPROPSHEETUIW,
                                         reinterpret_cast<LPARAM>(PluginSheetFunction),
                                         reinterpret_cast<LPARAM>(&run.host.sheet_parameters_)) > 0
                       ? 1
                       : -1;
        case PROPSHEETUI_REASON_GET_INFO_HEADER: {
            tell_plugin();
            // The sheet is the host's, so its title stands, whatever the plug-in put there.
            auto& header = *reinterpret_cast<PROPSHEETUI_INFO_HEADER*>(lparam);
            header.pTitle = run.title.data();
            header.hInst = GetModuleHandleW(nullptr);
            header.Flags = PSUIHDRF_EXACT_PTITLE;
            return 1;
        }
        case PROPSHEETUI_REASON_SET_RESULT:
            info->Result = static_cast<ULONG_PTR>(reinterpret_cast<const SETRESULT_INFO*>(lparam)->Result);
            return 1;
        default:
            return 1;
    }
}

// The engine's call to the plug-in, with the plug-in's parameters as the initial parameter.
LONG PluginHost::PluginSheetFunction(PPROPSHEETUI_INFO info, LPARAM lparam) {
    const auto& parameters = *reinterpret_cast<const OEMUIPSPARAM*>(info->lParamInit);
    const auto& run = *static_cast<const SheetRun*>(parameters.pOemEntry);
    run.host.sheet_reasons_.push_back(info->Reason);
    return SUCCEEDED((run.host.plugin_->*run.type.add_plugin_pages)(info, lparam)) ? 1 : -1;
}

PluginHost::Settings PluginHost::CurrentSettings() const {
    Settings settings = {.record = {record_.data(), record_.data() + record_.size()},
                         .public_devmode = *public_devmode_.As<DEVMODEW>(),
                         .selections = {}};
    for (DWORD i = 0; i < options_.count(); ++i) {
        settings.selections.push_back(options_.item(i).Sel);
    }
    return settings;
}

void PluginHost::Restore(const Settings& settings) {
    std::copy(settings.record.begin(), settings.record.end(), record_.data());
    public_devmode() = settings.public_devmode;
    for (DWORD i = 0; i < options_.count(); ++i) {
        options_.item(i).Sel = settings.selections[i];
    }
}

// The selected form belongs to the public DEVMODE, wherever it was selected.
void PluginHost::TakeOverForm() {
    for (DWORD i = 0; i < options_.count(); ++i) {
        const OPTITEM& item = options_.item(i);
        const std::vector<std::wstring> values = options_.Values(i);
        if (item.DMPubID == DMPUB_FORMNAME && item.Sel >= 0 &&
            static_cast<std::size_t>(item.Sel) < values.size()) {
            DEVMODEW& devmode = public_devmode();
            CopyName(devmode.dmFormName, std::size(devmode.dmFormName),
                     values[static_cast<std::size_t>(item.Sel)]);
        }
    }
}

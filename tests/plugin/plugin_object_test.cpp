// The plug-in object: every slot of IPrintOemUI but the record and sheet calls, with results, last errors and
// traces.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "rig/guarded_record.h"
#include "rig/plugin_dll.h"
#include "rig/trace_capture.h"

namespace {

using rig::GuardedRecord;
using rig::Hex;
using rig::Lines;

constexpr DWORD kUntouchedError = 0xBEEF;
constexpr GUID kIidUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr GUID kIidOemUI = {0xC6A7A9D0, 0x774C, 0x11D1, {0x94, 0x7F, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};
constexpr GUID kIidDriverUI = {0x92B05D50, 0x78BC, 0x11D1, {0x94, 0x80, 0x00, 0xA0, 0xC9, 0x06, 0x40, 0xB8}};

const Lines kReleaseLine = {L"UI:  IOemUI:Release entry.\r\n"};
const Lines kPublishLine = {L"UI:  IOemUI:PublishDriverInterface entry.\r\n"};
const Lines kCommonUiLine = {L"UI:  IOemUI:CommonUIProp entry.\r\n"};

Lines operator+(Lines left, const Lines& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// What every block of memory of the object holds, in order: the host hands the contexts' addresses to pages
// of either side.
struct ObjectLayout {
    void** table;
    std::int32_t references;
    void* driver_helper;
    struct {
        void* sheet;
        void* last_page;
        void* callback;
        void* common_ui;
        void* driver_helper;
    } device;
    struct {
        void* sheet;
        void* page;
        void* parameter;
        void* common_ui;
        void* callback;
        void* driver_helper;
    } document;
};

// A host's object that knows IPrintOemDriverUI or not, and counts.
class FakeHelper : public IUnknown {
  public:
    explicit FakeHelper(HRESULT answer) : answer_(answer) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        asked.push_back(iid);
        // A careless host leaves something behind a failure.
        *object = FAILED(answer_) ? reinterpret_cast<void*>(0x0BAD) : this;
        if (SUCCEEDED(answer_)) {
            ++references;
        }
        return answer_;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }

    std::vector<GUID> asked;
    int references = 1;

  private:
    HRESULT answer_;
};

class PluginObject : public testing::Test {
  protected:
    const ObjectLayout& layout() const { return *reinterpret_cast<const ObjectLayout*>(object_.get()); }

    // Clears what was traced and the last error before a call under test.
    IPrintOemUI* Fresh() {
        trace_.TakeOwn();
        SetLastError(kUntouchedError);
        return object_.get();
    }

    rig::PluginDll dll_;
    rig::ComRef<IPrintOemUI> object_ = dll_.CreateObject();
    rig::TraceCapture trace_;
};

TEST_F(PluginObject, StartsAsTheHostExpects) {
    void* const unset = reinterpret_cast<void*>(~std::uintptr_t{0});
    EXPECT_EQ(layout().references, 1);
    EXPECT_EQ(layout().driver_helper, nullptr);
    EXPECT_EQ(layout().device.sheet, unset);
    EXPECT_EQ(layout().device.last_page, unset);
    EXPECT_EQ(layout().device.callback, nullptr);
    EXPECT_EQ(layout().device.common_ui, nullptr);
    EXPECT_EQ(layout().document.sheet, unset);
    EXPECT_EQ(layout().document.page, unset);
    EXPECT_EQ(layout().document.parameter, nullptr);
    EXPECT_EQ(layout().document.common_ui, nullptr);
    EXPECT_EQ(layout().document.callback, nullptr);
}

// Every slot by its number, with nothing but zeros for parameters: the table has the host's order, and no
// slot trusts a pointer.
TEST_F(PluginObject, SlotsInOrderWithoutParameters) {
    constexpr auto kFail = static_cast<HRESULT>(0x80004005);
    constexpr auto kNotImplemented = static_cast<HRESULT>(0x80004001);
    const struct {
        int slot;
        HRESULT result;
        DWORD error;
        Lines lines;
    } slots[] = {
        {4,
         kFail,
         87,
         {L"UI:  IOemUI::GetInfo(0) entry.\r\r\n",
          L"UI:  IOemUI::GetInfo() exit pcbNeeded is NULL! ERROR_INVALID_PARAMETER\r\r\n"}},
        {5,
         kFail,
         87,
         {L"UI:  IOemUI:DevMode(0, 0) entry.\r\n", L"ERROR UI:  DevMode() ERROR_INVALID_PARAMETER.\r\n",
          L"UI:  \tdwMode = 0, pOemDMParam = 0.\r\n"}},
        {6, kFail, kUntouchedError, {L"UI:  IOemUI:PublishDriverInterface entry.\r\n"}},
        {7,
         kFail,
         87,
         {L"UI:  IOemUI:CommonUIProp entry.\r\n", L"UI:  hrOEMPropertyPage(0) entry.\r\n",
          L"ERROR UI:  hrOEMPropertyPage() ERROR_INVALID_PARAMETER.\r\n",
          L"UI:  \tdwMode = 0, pOEMUIParam = 0.\r\n"}},
        {8,
         kFail,
         87,
         {L"UI:  IOemUI:DocumentPropertySheets entry.\r\n",
          L"ERROR UI:  hrOEMDocumentPropertySheets() ERROR_INVALID_PARAMETER.\r\n"}},
        {9,
         kFail,
         87,
         {L"UI:  IOemUI:DevicePropertySheets entry.\r\n", L"UI:  hrOEMDevicePropertySheets(0, 0) entry\r\n",
          L"ERROR UI:  hrOEMDevicePropertySheets() ERROR_INVALID_PARAMETER.\r\n"}},
        {11, kNotImplemented, kUntouchedError, {L"UI:  IOemUI:DeviceCapabilities entry.\r\n"}},
        {12, kNotImplemented, kUntouchedError, {L"UI:  IOemUI:UpgradePrinter entry.\r\n"}},
        {13, kNotImplemented, kUntouchedError, {L"UI:  IOemUI:PrinterEvent entry.\r\n"}},
        {14, kNotImplemented, kUntouchedError, {L"UI:  IOemUI:DriverEvent entry.\r\n"}},
        {16, kNotImplemented, kUntouchedError, {L"UI:  IOemUI:FontInstallerDlgProc entry.\r\n"}},
        {17, kNotImplemented, kUntouchedError, {L"UI:  IOemUI:UpdateExternalFonts entry.\r\n"}},
    };
    // As many parameters as the longest call has.
    using Slot = HRESULT(STDMETHODCALLTYPE*)(void*, ULONG_PTR, ULONG_PTR, ULONG_PTR, ULONG_PTR, ULONG_PTR,
                                             ULONG_PTR, ULONG_PTR, ULONG_PTR, ULONG_PTR);
    for (const auto& [slot, result, error, lines] : slots) {
        SCOPED_TRACE(slot);
        void* const object = Fresh();
        const auto call = reinterpret_cast<Slot>(layout().table[slot - 1]);
        EXPECT_EQ(call(object, 0, 0, 0, 0, 0, 0, 0, 0, 0), result);
        EXPECT_EQ(GetLastError(), error);
        EXPECT_EQ(trace_.TakeOwn(), lines);
    }
    // Slots 10 and 15 read what the host must give; without it they fail without a crash.
    for (const auto& [slot, line] : {std::pair{10, L"UI:  IOemUI:DevQueryPrintEx entry.\r\n"},
                                     std::pair{15, L"UI:  IOemUI:QueryColorProfile entry.\r\n"}}) {
        SCOPED_TRACE(slot);
        void* const object = Fresh();
        const auto call = reinterpret_cast<Slot>(layout().table[slot - 1]);
        EXPECT_TRUE(FAILED(call(object, 0, 0, 0, 0, 0, 0, 0, 0, 0)));
        const Lines lines = trace_.TakeOwn();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.front(), line);
    }
}

TEST_F(PluginObject, UnknownSlotsOfTheTableCountReferences) {
    using Query = HRESULT(STDMETHODCALLTYPE*)(void*, REFIID, void**);
    using Count = ULONG(STDMETHODCALLTYPE*)(void*);
    void* const object = Fresh();
    void* found = nullptr;
    EXPECT_EQ(reinterpret_cast<Query>(layout().table[0])(object, kIidUnknown, &found), S_OK);
    EXPECT_EQ(found, object);
    EXPECT_EQ(reinterpret_cast<Count>(layout().table[1])(object), 3u);
    EXPECT_EQ(reinterpret_cast<Count>(layout().table[2])(object), 2u);
    EXPECT_EQ(reinterpret_cast<Count>(layout().table[2])(object), 1u);
}

TEST_F(PluginObject, QueryInterface) {
    void* found = nullptr;
    EXPECT_EQ(Fresh()->QueryInterface(kIidUnknown, &found), S_OK);
    EXPECT_EQ(found, object_.get());
    EXPECT_EQ(trace_.TakeOwn(),
              (Lines{L"UI:  IOemUI:QueryInterface entry.\r\n\r\n",
                     L"UI:  IOemUI:Return pointer to IUnknown.\r\n\r\n", L"UI:  IOemUI:AddRef entry.\r\n"}));
    EXPECT_EQ(layout().references, 2);
    object_->Release();

    found = nullptr;
    EXPECT_EQ(Fresh()->QueryInterface(kIidOemUI, &found), S_OK);
    EXPECT_EQ(found, object_.get());
    EXPECT_EQ(trace_.TakeOwn(),
              (Lines{L"UI:  IOemUI:QueryInterface entry.\r\n\r\n",
                     L"UI:  IOemUI:Return pointer to IPrintOemUI.\r\n", L"UI:  IOemUI:AddRef entry.\r\n"}));
    EXPECT_EQ(layout().references, 2);
    object_->Release();

    GUID close = kIidOemUI;
    close.Data1 ^= 1;
    for (const GUID& iid : {close, kIidDriverUI, GUID{}}) {
        found = reinterpret_cast<void*>(0x5E47);
        EXPECT_EQ(Fresh()->QueryInterface(iid, &found), static_cast<HRESULT>(0x80004002));
        EXPECT_EQ(found, nullptr);
        EXPECT_EQ(trace_.TakeOwn(), (Lines{L"UI:  IOemUI:QueryInterface entry.\r\n\r\n",
                                           L"UI:  IOemUI:No Interface. Return NULL.\r\n"}));
        EXPECT_EQ(layout().references, 1);
    }
    EXPECT_TRUE(FAILED(Fresh()->QueryInterface(kIidOemUI, nullptr)));
    EXPECT_EQ(layout().references, 1);
}

TEST_F(PluginObject, CountsReferences) {
    EXPECT_EQ(Fresh()->AddRef(), 2u);
    EXPECT_EQ(trace_.TakeOwn(), Lines{L"UI:  IOemUI:AddRef entry.\r\n"});
    EXPECT_EQ(object_->Release(), 1u);
    EXPECT_EQ(trace_.TakeOwn(), kReleaseLine);
    EXPECT_EQ(object_.Detach()->Release(), 0u);
    EXPECT_EQ(trace_.TakeOwn(), kReleaseLine);
}

TEST_F(PluginObject, GetInfoSignatureAndVersion) {
    for (const DWORD room : {4u, 5u, 4000u}) {
        GuardedRecord buffer(4, 0xEE);
        DWORD needed = 99;
        EXPECT_EQ(Fresh()->GetInfo(1, buffer.data(), room, &needed), S_OK);
        EXPECT_EQ(buffer.bytes(), (std::vector<std::uint8_t>{'2', '7', 'R', 0}));
        EXPECT_EQ(needed, 4u);
        EXPECT_EQ(GetLastError(), kUntouchedError);
        EXPECT_EQ(trace_.TakeOwn(),
                  (Lines{L"UI:  IOemUI::GetInfo(1) entry.\r\r\n",
                         L"UI:  IOemUI::GetInfo() exit S_OK, (*pBuffer is 0x523732).\r\r\n"}));

        needed = 99;
        EXPECT_EQ(Fresh()->GetInfo(3, buffer.data(), room, &needed), S_OK);
        EXPECT_EQ(buffer.bytes(), (std::vector<std::uint8_t>{1, 0, 0, 0}));
        EXPECT_EQ(needed, 4u);
        EXPECT_EQ(trace_.TakeOwn(), (Lines{L"UI:  IOemUI::GetInfo(3) entry.\r\r\n",
                                           L"UI:  IOemUI::GetInfo() exit S_OK, (*pBuffer is 0x1).\r\r\n"}));
        EXPECT_TRUE(buffer.Intact());
    }
}

TEST_F(PluginObject, GetInfoPublisherIsNotSupported) {
    GuardedRecord buffer(4, 0xEE);
    DWORD needed = 99;
    EXPECT_EQ(Fresh()->GetInfo(4, buffer.data(), 4, &needed), E_FAIL);
    EXPECT_EQ(needed, 0u);
    EXPECT_EQ(GetLastError(), 50u);
    EXPECT_EQ(buffer.bytes(), std::vector<std::uint8_t>(4, 0xEE));
    EXPECT_EQ(trace_.TakeOwn(), (Lines{L"UI:  IOemUI::GetInfo(4) entry.\r\r\n",
                                       L"UI:  IOemUI::GetInfo() exit mode not supported.\r\r\n"}));
}

TEST_F(PluginObject, GetInfoWithTooSmallABuffer) {
    GuardedRecord buffer(4, 0xEE);
    for (const DWORD mode : {1u, 3u, 4u}) {
        const std::wstring entry = L"UI:  IOemUI::GetInfo(" + std::to_wstring(mode) + L") entry.\r\r\n";
        const struct {
            void* buffer;
            DWORD room;
        } cases[] = {{buffer.data(), 0}, {buffer.data(), 3}, {nullptr, 4}, {nullptr, 0}};
        for (const auto& [where, room] : cases) {
            DWORD needed = 99;
            EXPECT_EQ(Fresh()->GetInfo(mode, where, room, &needed), E_FAIL);
            EXPECT_EQ(needed, 4u);
            EXPECT_EQ(GetLastError(), 122u);
            EXPECT_EQ(trace_.TakeOwn(),
                      (Lines{entry, L"UI:  IOemUI::GetInfo() exit insufficient buffer!\r\r\n"}));
        }
    }
    EXPECT_EQ(buffer.bytes(), std::vector<std::uint8_t>(4, 0xEE));
}

TEST_F(PluginObject, GetInfoOtherModesAreInvalid) {
    GuardedRecord buffer(4, 0xEE);
    const std::wstring invalid =
        L"UI:  IOemUI::GetInfo() exit pcbNeeded is NULL! ERROR_INVALID_PARAMETER\r\r\n";
    for (const DWORD mode : {0u, 2u, 5u, 0xFFFFFFFFu}) {
        DWORD needed = 99;
        EXPECT_EQ(Fresh()->GetInfo(mode, buffer.data(), 4, &needed), E_FAIL);
        EXPECT_EQ(needed, 99u);
        EXPECT_EQ(GetLastError(), 87u);
        EXPECT_EQ(trace_.TakeOwn(),
                  (Lines{L"UI:  IOemUI::GetInfo(" + std::to_wstring(static_cast<std::int32_t>(mode)) +
                             L") entry.\r\r\n",
                         invalid}));
    }
    for (const DWORD mode : {1u, 3u, 4u}) {
        EXPECT_EQ(Fresh()->GetInfo(mode, buffer.data(), 4, nullptr), E_FAIL);
        EXPECT_EQ(GetLastError(), 87u);
        EXPECT_EQ(trace_.TakeOwn(),
                  (Lines{L"UI:  IOemUI::GetInfo(" + std::to_wstring(mode) + L") entry.\r\r\n", invalid}));
    }
    EXPECT_EQ(buffer.bytes(), std::vector<std::uint8_t>(4, 0xEE));
}

TEST_F(PluginObject, PublishKeepsTheFirstHelper) {
    FakeHelper first(S_OK);
    FakeHelper second(S_OK);
    EXPECT_EQ(Fresh()->PublishDriverInterface(&first), S_OK);
    EXPECT_EQ(trace_.TakeOwn(), kPublishLine);
    ASSERT_EQ(first.asked.size(), 1u);
    EXPECT_EQ(std::memcmp(&first.asked[0], &kIidDriverUI, sizeof(GUID)), 0);
    EXPECT_EQ(layout().driver_helper, &first);
    EXPECT_EQ(first.references, 2);

    EXPECT_EQ(Fresh()->PublishDriverInterface(&second), S_OK);
    EXPECT_EQ(trace_.TakeOwn(), kPublishLine);
    EXPECT_EQ(Fresh()->PublishDriverInterface(nullptr), S_OK);
    EXPECT_TRUE(second.asked.empty());
    EXPECT_EQ(second.references, 1);
    EXPECT_EQ(first.asked.size(), 1u);
    EXPECT_EQ(first.references, 2);

    // The object's own reference ends with the object.
    object_->AddRef();
    object_->Release();
    EXPECT_EQ(first.references, 2);
    object_.Reset();
    EXPECT_EQ(first.references, 1);
}

// A page reaches the helper through its sheet's context alone, which gets it with each call for that sheet.
TEST_F(PluginObject, SheetCallsHandTheHelperToTheirContext) {
    FakeHelper helper(S_OK);
    // Refused calls, which come no further than the context.
    object_->DevicePropertySheets(nullptr, 0);
    object_->DocumentPropertySheets(nullptr, 0);
    EXPECT_EQ(layout().device.driver_helper, nullptr);
    EXPECT_EQ(layout().document.driver_helper, nullptr);
    ASSERT_EQ(object_->PublishDriverInterface(&helper), S_OK);
    EXPECT_EQ(layout().device.driver_helper, nullptr);
    EXPECT_EQ(layout().document.driver_helper, nullptr);
    object_->DevicePropertySheets(nullptr, 0);
    EXPECT_EQ(layout().device.driver_helper, &helper);
    EXPECT_EQ(layout().document.driver_helper, nullptr);
    object_->DocumentPropertySheets(nullptr, 0);
    EXPECT_EQ(layout().document.driver_helper, &helper);
    // A copy, not a reference of its own.
    EXPECT_EQ(helper.references, 2);
    object_.Reset();
    EXPECT_EQ(helper.references, 1);
}

TEST_F(PluginObject, FailingPublishKeepsNothingAndMayBeRepeated) {
    FakeHelper stranger(E_NOINTERFACE);
    EXPECT_EQ(Fresh()->PublishDriverInterface(&stranger), static_cast<HRESULT>(0x80004005));
    EXPECT_EQ(trace_.TakeOwn(), kPublishLine);
    EXPECT_EQ(layout().driver_helper, nullptr);
    EXPECT_EQ(stranger.references, 1);
    EXPECT_EQ(Fresh()->PublishDriverInterface(nullptr), static_cast<HRESULT>(0x80004005));

    FakeHelper helper(S_OK);
    EXPECT_EQ(Fresh()->PublishDriverInterface(&helper), S_OK);
    EXPECT_EQ(layout().driver_helper, &helper);
    object_.Reset();
    EXPECT_EQ(helper.references, 1);
    EXPECT_EQ(stranger.references, 1);
}

TEST_F(PluginObject, FailedPublishIsHarmlessAtDestruction) {
    FakeHelper stranger(E_NOINTERFACE);
    object_->PublishDriverInterface(&stranger);
    object_.Reset();
    EXPECT_EQ(stranger.references, 1);
}

TEST_F(PluginObject, CommonUiForDocuments) {
    OPTITEM items[2] = {};
    OEMCUIPPARAM parameter{};
    parameter.cbSize = sizeof parameter;
    parameter.pOEMOptItems = items;
    parameter.cOEMOptItems = 2;
    EXPECT_EQ(Fresh()->CommonUIProp(1, &parameter), S_OK);
    EXPECT_EQ(GetLastError(), kUntouchedError);
    EXPECT_EQ(trace_.TakeOwn(), (kCommonUiLine + Lines{L"UI:  hrOEMPropertyPage(1) entry.\r\n",
                                                       L"UI:  Invoke hrDocumentPropertyPage\r\n"}));
    EXPECT_EQ(parameter.cOEMOptItems, 2u);
    EXPECT_EQ(layout().device.common_ui, &parameter);
    EXPECT_EQ(layout().document.common_ui, &parameter);
}

TEST_F(PluginObject, CommonUiForPrintersAsksForNoItems) {
    OEMCUIPPARAM parameter{};
    parameter.cbSize = sizeof parameter;
    parameter.cOEMOptItems = 77;
    EXPECT_EQ(Fresh()->CommonUIProp(2, &parameter), S_OK);
    EXPECT_EQ(parameter.cOEMOptItems, 0u);
    EXPECT_EQ(trace_.TakeOwn(),
              (kCommonUiLine +
               Lines{L"UI:  hrOEMPropertyPage(2) entry.\r\n", L"UI:  Invoke hrPrinterPropertyPage\r\n",
                     L"UI:  Fill in the number of OptItems to create for OEM printer property UI\r\n",
                     L"UI:  hrPrinterPropertyPage() requesting 0 number of items.\r\n"}));
    EXPECT_EQ(layout().device.common_ui, &parameter);
    EXPECT_EQ(layout().document.common_ui, &parameter);

    OPTITEM items[3] = {};
    std::memset(items, 0xEE, sizeof items);
    const std::vector<OPTITEM> before(items, items + 3);
    parameter.pOEMOptItems = items;
    parameter.cOEMOptItems = 3;
    EXPECT_EQ(Fresh()->CommonUIProp(2, &parameter), S_OK);
    EXPECT_EQ(parameter.cOEMOptItems, 3u);
    EXPECT_EQ(std::memcmp(items, before.data(), sizeof items), 0);
    EXPECT_EQ(trace_.TakeOwn(),
              (kCommonUiLine + Lines{L"UI:  hrOEMPropertyPage(2) entry.\r\n",
                                     L"UI:  Invoke hrPrinterPropertyPage\r\n",
                                     L"UI:  hrPrinterPropertyPage() fill out 3 items.\r\n"}));
}

TEST_F(PluginObject, CommonUiWithABadModeKeepsTheParameter) {
    OEMCUIPPARAM parameter{};
    for (const DWORD mode : {0u, 3u, 0xFFFFFFFFu}) {
        const std::wstring text = std::to_wstring(static_cast<std::int32_t>(mode));
        EXPECT_EQ(Fresh()->CommonUIProp(mode, &parameter), E_FAIL);
        EXPECT_EQ(GetLastError(), 87u);
        EXPECT_EQ(trace_.TakeOwn(),
                  (kCommonUiLine +
                   Lines{L"UI:  hrOEMPropertyPage(" + text + L") entry.\r\n",
                         L"ERROR UI:  hrOEMPropertyPage() ERROR_INVALID_PARAMETER.\r\n",
                         L"UI:  \tdwMode = " + text + L", pOEMUIParam = " + Hex(&parameter) + L".\r\n"}));
        EXPECT_EQ(layout().device.common_ui, &parameter);
        EXPECT_EQ(layout().document.common_ui, &parameter);
    }
}

TEST_F(PluginObject, CommonUiWithoutAParameter) {
    EXPECT_EQ(Fresh()->CommonUIProp(1, nullptr), S_OK);
    EXPECT_EQ(trace_.TakeOwn(), (kCommonUiLine + Lines{L"UI:  hrOEMPropertyPage(1) entry.\r\n",
                                                       L"UI:  Invoke hrDocumentPropertyPage\r\n"}));
    // The printer side has nowhere to put its count.
    EXPECT_TRUE(FAILED(Fresh()->CommonUIProp(2, nullptr)));
}

TEST_F(PluginObject, DevQueryPrintExTracesThePaperLength) {
    DEVMODEW mode{};
    const struct {
        short length;
        const wchar_t* text;
    } cases[] = {{2970, L"2970"}, {0, L"0"}, {-1, L"-1"}};
    for (const auto& [length, text] : cases) {
        mode.dmPaperLength = length;
        EXPECT_EQ(Fresh()->DevQueryPrintEx(nullptr, nullptr, &mode, nullptr), E_NOTIMPL);
        EXPECT_EQ(GetLastError(), kUntouchedError);
        EXPECT_EQ(trace_.TakeOwn(),
                  (Lines{L"UI:  IOemUI:DevQueryPrintEx entry.\r\n",
                         std::wstring(L"UI:  IOemUI:DevQueryPrintEx entry.pPublicDM->dmPaperLength = ") +
                             text + L"\r\n"}));
    }
    EXPECT_EQ(Fresh()->DevQueryPrintEx(nullptr, nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(trace_.TakeOwn(), Lines{L"UI:  IOemUI:DevQueryPrintEx entry.\r\n"});
}

TEST_F(PluginObject, DeclinedCallsLeaveTheirParametersAlone) {
    DWORD result = 4711;
    EXPECT_EQ(
        Fresh()->DeviceCapabilities(nullptr, nullptr, nullptr, 1, nullptr, nullptr, nullptr, 5, &result),
        E_NOTIMPL);
    EXPECT_EQ(result, 4711u);
    GuardedRecord info(16, 0xEE);
    EXPECT_EQ(Fresh()->UpgradePrinter(1, info.data()), E_NOTIMPL);
    EXPECT_EQ(Fresh()->DriverEvent(1, 3, info.data(), 1), E_NOTIMPL);
    EXPECT_EQ(Fresh()->PrinterEvent(nullptr, 1, 0, 0), E_NOTIMPL);
    EXPECT_EQ(Fresh()->FontInstallerDlgProc(nullptr, WM_INITDIALOG, 0, 0), E_NOTIMPL);
    EXPECT_EQ(Fresh()->UpdateExternalFonts(nullptr, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(info.bytes(), std::vector<std::uint8_t>(16, 0xEE));
    EXPECT_EQ(GetLastError(), kUntouchedError);
}

class ColorProfile : public PluginObject {
  protected:
    HRESULT Query(ULONG mode, void* data, ULONG* size, FLONG* flags) {
        const HRESULT result =
            Fresh()->QueryColorProfile(nullptr, nullptr, nullptr, nullptr, mode, data, size, flags);
        error_ = GetLastError();
        EXPECT_EQ(trace_.TakeOwn(), Lines{L"UI:  IOemUI:QueryColorProfile entry.\r\n"});
        return result;
    }

    DWORD error_ = 0;
};

// "OEMPROFILE.icm" with its terminator.
constexpr char kProfile[] = "O\0E\0M\0P\0R\0O\0F\0I\0L\0E\0.\0i\0c\0m\0\0";

TEST_F(ColorProfile, IsAFileName) {
    // A host may count the 32 in characters or in bytes: the name fits either way.
    for (const std::size_t bytes : {64u, 32u}) {
        GuardedRecord buffer(bytes, 0xEE);
        ULONG size = 32;
        FLONG flags = 99;
        EXPECT_EQ(Query(0, buffer.data(), &size, &flags), S_OK);
        EXPECT_EQ(size, 32u);
        EXPECT_EQ(flags, 2u);
        EXPECT_EQ(error_, kUntouchedError);
        EXPECT_EQ(std::memcmp(buffer.data(), kProfile, 30), 0);
        EXPECT_TRUE(buffer.Intact());
    }
}

TEST_F(ColorProfile, ClaimedRoomIsNotFilled) {
    GuardedRecord buffer(32, 0xEE);
    for (ULONG claimed : {33ul, 4000ul, 0xFFFFFFFFul}) {
        FLONG flags = 0;
        EXPECT_EQ(Query(0, buffer.data(), &claimed, &flags), S_OK);
        EXPECT_EQ(claimed, 32u);
        EXPECT_EQ(std::memcmp(buffer.data(), kProfile, 30), 0);
    }
}

TEST_F(ColorProfile, SmallOrNoBufferReportsTheSize) {
    GuardedRecord buffer(64, 0xEE);
    const struct {
        void* data;
        ULONG size;
    } cases[] = {{buffer.data(), 31}, {buffer.data(), 0}, {nullptr, 32}, {nullptr, 0}, {nullptr, 4000}};
    for (const auto& [data, given] : cases) {
        ULONG size = given;
        FLONG flags = 99;
        EXPECT_EQ(Query(0, data, &size, &flags), E_FAIL);
        EXPECT_EQ(size, 32u);
        EXPECT_EQ(flags, 99u);
        EXPECT_EQ(error_, 122u);
    }
    EXPECT_EQ(buffer.bytes(), std::vector<std::uint8_t>(64, 0xEE));
}

// A host that only asks for the size gives a place for nothing else.
TEST_F(ColorProfile, SizeIsToldWithoutAPlaceForTheFlags) {
    GuardedRecord buffer(64, 0xEE);
    const struct {
        void* data;
        ULONG size;
    } cases[] = {{nullptr, 32}, {nullptr, 4000}, {buffer.data(), 31}};
    for (const auto& [data, given] : cases) {
        ULONG size = given;
        EXPECT_EQ(Query(0, data, &size, nullptr), E_FAIL);
        EXPECT_EQ(size, 32u);
        EXPECT_EQ(error_, 122u);
    }
    EXPECT_EQ(buffer.bytes(), std::vector<std::uint8_t>(64, 0xEE));
}

TEST_F(ColorProfile, OtherQueriesFailQuietly) {
    GuardedRecord buffer(64, 0xEE);
    for (const ULONG mode : {1ul, 2ul, 0xFFFFFFFFul}) {
        ULONG size = 32;
        FLONG flags = 99;
        EXPECT_EQ(Query(mode, buffer.data(), &size, &flags), E_FAIL);
        EXPECT_EQ(error_, kUntouchedError);
        EXPECT_EQ(size, 32u);
        EXPECT_EQ(flags, 99u);
    }
    EXPECT_EQ(buffer.bytes(), std::vector<std::uint8_t>(64, 0xEE));
    EXPECT_EQ(Query(1, nullptr, nullptr, nullptr), E_FAIL);
}

TEST_F(ColorProfile, MissingOutputsFail) {
    GuardedRecord buffer(64, 0xEE);
    ULONG size = 32;
    FLONG flags = 99;
    EXPECT_EQ(Query(0, buffer.data(), nullptr, &flags), E_FAIL);
    EXPECT_EQ(Query(0, nullptr, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(flags, 99u);
    EXPECT_EQ(buffer.bytes(), std::vector<std::uint8_t>(64, 0xEE));
    // Without a place for the flags the call must only come back.
    Query(0, buffer.data(), &size, nullptr);
    EXPECT_TRUE(buffer.Intact());
}

}  // namespace

// The two sheet calls apart from building the pages: parameters, reasons and traces.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rig/plugin_dll.h"
#include "rig/trace_capture.h"

namespace {

using rig::Hex;
using rig::Lines;

struct Side {
    const char* name;
    HRESULT (STDMETHODCALLTYPE IPrintOemUI::*call)(PPROPSHEETUI_INFO, LPARAM);
    const wchar_t* entry;
    const wchar_t* refused;
    // The printer side says with what it was called.
    bool traces_arguments;
};

void PrintTo(const Side& side, std::ostream* out) {
    *out << side.name;
}

constexpr Side kSides[] = {
    {"Document", &IPrintOemUI::DocumentPropertySheets, L"UI:  IOemUI:DocumentPropertySheets entry.\r\n",
     L"ERROR UI:  hrOEMDocumentPropertySheets() ERROR_INVALID_PARAMETER.\r\n", false},
    {"Device", &IPrintOemUI::DevicePropertySheets, L"UI:  IOemUI:DevicePropertySheets entry.\r\n",
     L"ERROR UI:  hrOEMDevicePropertySheets() ERROR_INVALID_PARAMETER.\r\n", true},
};

LONG_PTR CALLBACK NoPages(HANDLE, UINT, LPARAM, LPARAM) {
    ADD_FAILURE() << "no page belongs to this reason";
    return 0;
}

class SheetCalls : public testing::TestWithParam<Side> {
  protected:
    HRESULT Call(PROPSHEETUI_INFO* info, LPARAM parameter) {
        trace_.TakeOwn();
        SetLastError(0xBEEF);
        const HRESULT result = (object_.get()->*GetParam().call)(info, parameter);
        error_ = GetLastError();
        lines_ = trace_.TakeOwn();
        return result;
    }

    Lines Entry(const void* info, LPARAM parameter) const {
        Lines lines = {GetParam().entry};
        if (GetParam().traces_arguments) {
            lines.push_back(L"UI:  hrOEMDevicePropertySheets(" + Hex(info) + L", " +
                            Hex(static_cast<std::uint64_t>(parameter)) + L") entry\r\n");
        }
        return lines;
    }

    PROPSHEETUI_INFO Info(WORD reason, WORD version = 0x0100) const {
        PROPSHEETUI_INFO info{};
        info.cbSize = sizeof info;
        info.Version = version;
        info.Flags = 0x0003;
        info.Reason = reason;
        info.hComPropSheet = reinterpret_cast<HANDLE>(0x1234);
        info.pfnComPropSheet = &NoPages;
        info.lParamInit = 0;
        info.UserData = 0x77;
        info.Result = 0x5E47;
        return info;
    }

    Lines InfoDump(const wchar_t* reason) const {
        return {L"pPSUIInfo:\r\n",
                L"\tcbSize          = 48\r\n",
                L"\tVersion         = 0x100\r\n",
                L"\tFlags           = 0x3\r\n",
                std::wstring(L"\tReason          = ") + reason + L"\r\n",
                L"\thComPropSheet   = 0x1234\r\n",
                L"\tpfnComPropSheet = " + Hex(reinterpret_cast<const void*>(&NoPages)) + L"\r\n",
                L"\tlParamInit      = 0\r\n",
                L"\tUserData        = 0x77\r\n",
                L"\tResult          = 0x5e47\r\n"};
    }

    void ExpectAnswered(const PROPSHEETUI_INFO& info, LPARAM parameter, const wchar_t* reason) const {
        Lines expected = Entry(&info, parameter);
        for (const std::wstring& line : InfoDump(reason)) {
            expected.push_back(line);
        }
        EXPECT_EQ(lines_, expected);
        EXPECT_EQ(error_, 0xBEEFu);
    }

    rig::PluginDll dll_;
    rig::ComRef<IPrintOemUI> object_ = dll_.CreateObject();
    rig::TraceCapture trace_;
    DWORD error_ = 0;
    Lines lines_;
};

TEST_P(SheetCalls, NoBlockIsAnInvalidParameter) {
    EXPECT_EQ(Call(nullptr, 0x123), E_FAIL);
    EXPECT_EQ(error_, 87u);
    Lines expected = Entry(nullptr, 0x123);
    expected.push_back(GetParam().refused);
    EXPECT_EQ(lines_, expected);
}

TEST_P(SheetCalls, OtherVersionsAreRefused) {
    constexpr WORD kOthers[] = {0x0000, 0x0101, 0x00FF, 0x0001};
    for (const WORD version : kOthers) {
        PROPSHEETUI_INFO info = Info(PROPSHEETUI_REASON_INIT, version);
        EXPECT_EQ(Call(&info, 0), E_FAIL);
        EXPECT_EQ(error_, 87u);
        EXPECT_EQ(info.Result, 0x5E47u);
        Lines expected = Entry(&info, 0);
        expected.push_back(GetParam().refused);
        EXPECT_EQ(lines_, expected);
    }
}

TEST_P(SheetCalls, NamesTheSheet) {
    PROPSHEETUI_INFO info = Info(1);
    PROPSHEETUI_INFO_HEADER header{};
    header.cbSize = sizeof header;
    const auto parameter = reinterpret_cast<LPARAM>(&header);
    EXPECT_EQ(Call(&info, parameter), S_OK);
    ExpectAnswered(info, parameter, L"1");
    EXPECT_EQ(info.Result, 1u);
    ASSERT_NE(header.pTitle, nullptr);
    EXPECT_STREQ(header.pTitle, L"OEM UI Page");
}

TEST_P(SheetCalls, DestroyAnswersOne) {
    PROPSHEETUI_INFO info = Info(2);
    EXPECT_EQ(Call(&info, 1), S_OK);
    ExpectAnswered(info, 1, L"2");
    EXPECT_EQ(info.Result, 1u);
}

TEST_P(SheetCalls, PassesTheResultOn) {
    for (const ULONG_PTR result : {ULONG_PTR{0}, ULONG_PTR{1}, ULONG_PTR{0x123456789ABCULL}}) {
        PROPSHEETUI_INFO info = Info(3);
        SETRESULT_INFO carried{};
        carried.cbSize = sizeof carried;
        carried.Result = static_cast<LRESULT>(result);
        const auto parameter = reinterpret_cast<LPARAM>(&carried);
        EXPECT_EQ(Call(&info, parameter), S_OK);
        ExpectAnswered(info, parameter, L"3");
        EXPECT_EQ(info.Result, result);
    }
}

TEST_P(SheetCalls, HasNoIcon) {
    PROPSHEETUI_INFO info = Info(4);
    EXPECT_EQ(Call(&info, 16), S_OK);
    ExpectAnswered(info, 16, L"4");
    EXPECT_EQ(info.Result, 0u);
}

TEST_P(SheetCalls, ReasonsWithoutTheirParameterAreHarmless) {
    constexpr WORD kReasons[] = {1, 2, 3, 4, 9};
    for (const WORD reason : kReasons) {
        PROPSHEETUI_INFO info = Info(reason);
        EXPECT_EQ(Call(&info, 0), S_OK) << reason;
    }
}

// A sheet of a host that gives neither callback nor record nor helper.
TEST_P(SheetCalls, BareInitialisationIsHarmless) {
    PROPSHEETUI_INFO info = Info(PROPSHEETUI_REASON_INIT);
    info.pfnComPropSheet = nullptr;
    EXPECT_EQ(Call(&info, 0), S_OK);
}

INSTANTIATE_TEST_SUITE_P(Sides, SheetCalls, testing::ValuesIn(kSides),
                         [](const testing::TestParamInfo<Side>& side) { return side.param.name; });

}  // namespace

#include "docpages/barcode_page.h"

#include <commctrl.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "intrface/win/gdi.h"
#include "intrface/win/property_sheet.h"
#include "printer/raw_job.h"

namespace {

void ShowControl(HWND dialog, int control, bool isShown) noexcept {
    ShowWindow(GetDlgItem(dialog, control), isShown ? SW_SHOWNA : SW_HIDE);
}

}  // namespace

void MoveControls(HWND dialog, std::span<const ControlPlace> places) noexcept {
    const WindowDc dc(dialog);
    const int acrossPerInch = dc ? GetDeviceCaps(dc.Get(), LOGPIXELSX) : USER_DEFAULT_SCREEN_DPI;
    const int downPerInch = dc ? GetDeviceCaps(dc.Get(), LOGPIXELSY) : USER_DEFAULT_SCREEN_DPI;
    for (const ControlPlace& place : places) {
        SetWindowPos(GetDlgItem(dialog, place.control), nullptr,
                     MulDiv(place.x, acrossPerInch, USER_DEFAULT_SCREEN_DPI),
                     MulDiv(place.y, downPerInch, USER_DEFAULT_SCREEN_DPI), 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

void CutLabelBehind(HWND dialog, int control, int label) noexcept {
    RECT before{};
    RECT bounds{};
    GetWindowRect(GetDlgItem(dialog, control), &before);
    GetWindowRect(GetDlgItem(dialog, label), &bounds);
    if (before.right <= bounds.left) {
        return;
    }
    const HRGN left =
        CreateRectRgn(before.right - bounds.left, 0, bounds.right - bounds.left, bounds.bottom - bounds.top);
    if (!SetWindowRgn(GetDlgItem(dialog, label), left, FALSE)) {
        // Otherwise the window owns it.
        DeleteObject(left);
    }
}

void ShowControls(HWND dialog, std::span<const int> controls, bool isShown) noexcept {
    for (const int control : controls) {
        ShowControl(dialog, control, isShown);
    }
}

void ShowControls(HWND dialog, std::span<const ControlPlace> places, bool isShown) noexcept {
    for (const ControlPlace& place : places) {
        ShowControl(dialog, place.control, isShown);
    }
}

void OpenNumber(HWND dialog, const NumberControls& controls, const NumberBox& box) noexcept {
    SendDlgItemMessageW(dialog, controls.edit, EM_LIMITTEXT, static_cast<WPARAM>(box.digits), 0);
    // Three digits need all of the narrow boxes.
    SendDlgItemMessageW(dialog, controls.edit, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    SetNumberRange(dialog, controls, box.range, box.rangeText);
}

void SetNumberRange(HWND dialog, const NumberControls& controls, NumberRange range,
                    const Char16* rangeText) noexcept {
    SendDlgItemMessageW(dialog, controls.spin, UDM_SETRANGE32, range.least, range.most);
    if (controls.rangeLabel != 0 && rangeText != nullptr) {
        SetDlgItemTextW(dialog, controls.rangeLabel, rangeText);
    }
}

void ShowNumber(HWND dialog, const NumberControls& controls, std::uint32_t number) noexcept {
    // Not through the arrows, which would bring it into their range.
    SetDlgItemInt(dialog, controls.edit, number, FALSE);
}

std::uint32_t TypedNumber(HWND dialog, const NumberControls& controls) noexcept {
    BOOL isNumber = FALSE;
    const UINT number = GetDlgItemInt(dialog, controls.edit, &isNumber, FALSE);
    if (isNumber) {
        return number;
    }
    wchar_t first[2] = {};
    GetDlgItemTextW(dialog, controls.edit, first, static_cast<int>(std::size(first)));
    return first[0] >= L'0' && first[0] <= L'9' ? UINT32_MAX : 0;
}

void ShowStoredNumber(HWND dialog, const NumberControls& controls, std::uint32_t stored) noexcept {
    if (TypedNumber(dialog, controls) == stored) {
        return;
    }
    const bool wasEmpty = SendDlgItemMessageW(dialog, controls.edit, WM_GETTEXTLENGTH, 0, 0) == 0;
    ShowNumber(dialog, controls, stored);
    const LRESULT end = SendDlgItemMessageW(dialog, controls.edit, WM_GETTEXTLENGTH, 0, 0);
    SendDlgItemMessageW(dialog, controls.edit, EM_SETSEL, wasEmpty ? 0 : static_cast<WPARAM>(end), end);
}

void EnablePrint(HWND dialog, int dataBox, int printButton) noexcept {
    EnableItem(dialog, printButton, SendDlgItemMessageW(dialog, dataBox, WM_GETTEXTLENGTH, 0, 0) != 0);
}

std::vector<std::uint8_t> TestData(HWND dialog, int dataBox) {
    wchar_t text[kTestDataLength + 1] = {};
    const auto length =
        static_cast<int>(GetDlgItemTextW(dialog, dataBox, text, static_cast<int>(std::size(text))));
    if (length == 0) {
        return {};
    }
    const int bytes = WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string data(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, length, data.data(), bytes, nullptr, nullptr);
    return std::vector<std::uint8_t>(data.begin(), std::find(data.begin(), data.end(), '\0'));
}

void SendTestPrint(const DocumentSheetContext& context, const wchar_t* name,
                   const CommandPieces& pieces) noexcept {
    SendRawJob(context.Printer(), name, pieces);
}

void ReportTestPageApplied(HWND dialog, const DocumentSheetContext& context) noexcept {
    ReportApplied(context.pfnComPropSheet, context.hComPropSheet, reinterpret_cast<LPARAM>(context.hPage),
                  dialog);
}

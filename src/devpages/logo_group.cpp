#include "devpages/logo_group.h"

#include <commctrl.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/text.h"
#include "devpages/download_page.h"
#include "devpages/logo_list.h"
#include "devpages/logo_preview.h"
#include "intrface/win/list_view.h"
#include "intrface/win/open_file.h"
#include "intrface/win/page.h"
#include "intrface/win/property_sheet.h"
#include "language/messages.h"
#include "printer/printer_commands.h"
#include "printer/raw_job.h"

namespace {

using namespace std::string_view_literals;

constexpr std::wstring_view kFilter = L"*.bmp\0*.bmp\0"sv;

constexpr int kNumberColumn = 0;
constexpr int kNameColumn = 1;
constexpr int kPathColumn = 2;
constexpr int kColumnWidths[] = {40, 150, 300};

// In the order of LogoType.
constexpr int kTypeRadios[] = {IDC_LOGO_ORIGINAL, IDC_LOGO_MONO, IDC_LOGO_GREY};
// In the order of Halftone.
constexpr int kHalftoneRadios[] = {IDC_LOGO_NONE, IDC_LOGO_DITHER_M3, IDC_LOGO_DITHER_M4, IDC_LOGO_DIFFUSE};

struct Slider {
    int control;
    int value;  // where the position shows as a number
    std::int32_t LogoTone::*setting;
};
constexpr Slider kSliders[] = {{IDC_LOGO_CONTRAST, IDC_LOGO_CONTRAST_VALUE, &LogoTone::contrast},
                               {IDC_LOGO_BRIGHTNESS, IDC_LOGO_BRIGHTNESS_VALUE, &LogoTone::brightness}};

struct GroupState {
    LogoType type = LogoType::kOriginal;
    Logos logos;
    LogoBuffers buffers;
    LogoPreview preview;
};

constexpr wchar_t kStateProperty[] = L"KVMR72.Logos";

// Null before the group is there, and once the page went while a dialog was open over it.
GroupState* StateOf(HWND dialog) noexcept {
    return static_cast<GroupState*>(GetPropW(dialog, kStateProperty));
}

HWND ListOf(HWND dialog) noexcept {
    return GetDlgItem(dialog, IDC_LOGO_LIST);
}

// The logo of the selected row; null where nothing is selected.
Logo* SelectedLogo(HWND dialog, GroupState& state) noexcept {
    const int row = SelectedRow(ListOf(dialog));
    return row >= 0 && static_cast<std::size_t>(row) < state.logos.size()
               ? &state.logos[static_cast<std::size_t>(row)]
               : nullptr;
}

void Tell(HWND dialog, Message message, MessageTitle title = MessageTitle::kError) {
    ShowMessage(dialog, message, title, MessageIcon::kNone);
}

// The page is painted when it has nothing else to do, once for several reasons.
void RepaintSoon(HWND dialog) noexcept {
    RedrawWindow(dialog, nullptr, nullptr, RDW_INVALIDATE | RDW_NOCHILDREN);
}

void EnableRadios(HWND dialog, const int (&radios)[3], bool enabled) noexcept {
    for (const int radio : radios) {
        EnableItem(dialog, radio, enabled);
    }
}

// A control that is switched off would keep the keyboard to itself, or leave it to nobody.
void EnableSettings(HWND dialog, const LogoView& view) noexcept {
    const HWND focus = GetFocus();
    for (const int radio : kHalftoneRadios) {
        EnableItem(dialog, radio, view.usesHalftone);
    }
    for (const Slider& slider : kSliders) {
        EnableItem(dialog, slider.control, view.usesTone);
    }
    if (GetParent(focus) == dialog && !IsWindowEnabled(focus)) {
        SetFocus(ListOf(dialog));
    }
}

void ShowValue(HWND dialog, const Slider& slider, int value) noexcept {
    SetDlgItemInt(dialog, slider.value, static_cast<UINT>(value), TRUE);
}

void ShowSettings(HWND dialog, const LogoSettings& settings) noexcept {
    int halftone = 0;
    for (const int radio : kHalftoneRadios) {
        CheckItem(dialog, radio, static_cast<int>(settings.halftone) == halftone++);
    }
    for (const Slider& slider : kSliders) {
        const int value = settings.tone.*slider.setting;
        SendDlgItemMessageW(dialog, slider.control, TBM_SETPOS, TRUE, value);
        ShowValue(dialog, slider, value);
    }
}

void ShowType(HWND dialog, LogoType type) noexcept {
    int index = 0;
    for (const int radio : kTypeRadios) {
        CheckItem(dialog, radio, static_cast<int>(type) == index++);
    }
}

void ShowNumber(HWND list, std::size_t row) {
    SetCell(list, static_cast<int>(row), kNumberColumn, NumberText(row + 1).c_str());
}

void SelectRow(HWND list, std::size_t row) noexcept {
    LVITEMW item{};
    item.state = LVIS_SELECTED | LVIS_FOCUSED;
    item.stateMask = item.state;
    SendMessageW(list, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
    SendMessageW(list, LVM_ENSUREVISIBLE, row, FALSE);
}

std::wstring NameOf(const std::wstring& path) {
    return path.substr(path.find_last_of(L"\\/") + 1);
}

// The list's messages may be heard by others: the page can go with any of them.
void AddLogo(HWND dialog, GroupState& state, Logo logo) {
    const HWND list = ListOf(dialog);
    const std::wstring path = logo.path;
    const std::size_t row = state.logos.size();
    state.logos.push_back(std::move(logo));
    const int added = AddRow(list, static_cast<int>(row), L"");
    GroupState* const left = StateOf(dialog);
    if (left == nullptr) {
        return;
    }
    if (added != static_cast<int>(row)) {
        // The list is full, or not as it was left.
        if (added >= 0) {
            SendMessageW(list, LVM_DELETEITEM, static_cast<WPARAM>(added), 0);
        }
        left->logos.resize(std::min(row, left->logos.size()));
        return;
    }
    ShowNumber(list, row);
    SetCell(list, added, kNameColumn, NameOf(path).c_str());
    SetCell(list, added, kPathColumn, path.c_str());
    EnableRadios(dialog, kTypeRadios, true);
    SelectRow(list, row);
}

// Why a file is not taken into the list.
std::optional<Message> ReasonNotToAdd(const std::wstring& path) noexcept {
    BitmapHeaders headers{};
    switch (ReadLogoHeaders(path, headers)) {
        case LogoHeadersResult::kCannotOpen:
            return Message::kFileOpen;
        case LogoHeadersResult::kNotRead:
            return Message::kFileRead;
        case LogoHeadersResult::kRead:
            break;
    }
    return IsLogoSize(headers) ? std::nullopt : std::optional(Message::kLogoTooBig);
}

void AddClicked(HWND dialog) {
    if (StateOf(dialog)->logos.size() >= kMaxLogos) {
        Tell(dialog, Message::kLogoCount, MessageTitle::kInformation);
        return;
    }
    // A repaint behind the open dialog may load the texts anew.
    const std::wstring title = DownloadPageTexts()[kDownloadPageOpenTitle];
    Logo logo;
    if (!AskForFile(dialog, title.c_str(), kFilter.data(), logo.path)) {
        return;
    }
    if (const auto reason = ReasonNotToAdd(logo.path)) {
        Tell(dialog, *reason);
        return;
    }
    // The page may have gone while the dialog was open, and more may have been added in a second one.
    GroupState* const state = StateOf(dialog);
    if (state == nullptr || state->logos.size() >= kMaxLogos) {
        return;
    }
    logo.settings = FreshSettings(state->type);
    KeepConverted(logo, state->type, state->buffers);
    AddLogo(dialog, *state, std::move(logo));
}

bool IsSamePath(const std::wstring& left, const std::wstring& right) noexcept {
    return lstrcmpiW(left.c_str(), right.c_str()) == 0;
}

// A converted file that is another row's source stays; one that another row shares is made for that row.
void RemoveLogo(GroupState& state, std::size_t row) {
    const Logo removed = std::move(state.logos[row]);
    state.logos.erase(state.logos.begin() + static_cast<std::ptrdiff_t>(row));
    const std::wstring converted = ConvertedPath(removed.path);
    if (std::ranges::none_of(state.logos,
                             [&](const Logo& other) { return IsSamePath(other.path, converted); })) {
        DeleteConverted(removed);
    }
    for (Logo& other : state.logos) {
        if (IsSamePath(other.path, removed.path)) {
            KeepConverted(other, state.type, state.buffers);
        }
    }
}

void DeleteClicked(HWND dialog, GroupState& state) {
    const Logo* const logo = SelectedLogo(dialog, state);
    if (logo == nullptr) {
        return;
    }
    const auto row = static_cast<std::size_t>(logo - state.logos.data());
    RemoveLogo(state, row);
    const std::size_t left = state.logos.size();
    // From here on others may hear of it: the page can go with any message.
    const HWND list = ListOf(dialog);
    SendMessageW(list, LVM_DELETEITEM, row, 0);
    for (std::size_t i = row; i < left; ++i) {
        ShowNumber(list, i);
    }
    if (left > 0) {
        SelectRow(list, std::min(row, left - 1));
    }
    SetFocus(list);
    EnableRadios(dialog, kTypeRadios, left > 0);
    RepaintSoon(dialog);
}

void DownloadClicked(HWND dialog, HANDLE printer, const GroupState& state) {
    if (const auto reason = ReasonNotToSend(state.logos)) {
        Tell(dialog, *reason);
        return;
    }
    // The page may go while the spooler has the job.
    SendLogos(printer, Logos(state.logos), state.type);
}

// Every row's converted file is to be of the type that is sent, also of rows that nobody looks at.
void TypeChosen(HWND dialog, GroupState& state, LogoType type) {
    state.type = type;
    for (Logo& logo : state.logos) {
        KeepConverted(logo, type, state.buffers);
    }
    RepaintSoon(dialog);
}

// What is sent is what is set, also when the page is not painted before that.
void SettingsChanged(HWND dialog, GroupState& state, Logo& logo) {
    KeepConverted(logo, state.type, state.buffers);
    RepaintSoon(dialog);
}

void HalftoneChosen(HWND dialog, GroupState& state, Halftone halftone) {
    if (Logo* const logo = SelectedLogo(dialog, state)) {
        logo->settings.halftone = halftone;
        SettingsChanged(dialog, state, *logo);
    }
}

// The mouse's release is told several times: the first one converts.
void SliderReleased(HWND dialog, const Slider& slider) {
    GroupState* const state = StateOf(dialog);
    Logo* const logo = state != nullptr ? SelectedLogo(dialog, *state) : nullptr;
    if (logo == nullptr) {
        return;
    }
    const auto position =
        static_cast<std::int32_t>(SendDlgItemMessageW(dialog, slider.control, TBM_GETPOS, 0, 0));
    ShowValue(dialog, slider, position);
    std::int32_t& setting = logo->settings.tone.*slider.setting;
    if (setting != position) {
        setting = position;
        SettingsChanged(dialog, *state, *logo);
    }
    RepaintSoon(dialog);
    // The sheet may take the page away when it hears this.
    MarkChanged(dialog);
}

const Slider* FindSlider(int control) noexcept {
    const auto found = std::ranges::find(kSliders, control, &Slider::control);
    return found != std::end(kSliders) ? found : nullptr;
}

// Which of the selected logo's settings count, and what it shows.
LogoView ViewOfSelected(HWND dialog, GroupState& state) {
    const Logo* const logo = SelectedLogo(dialog, state);
    if (logo == nullptr) {
        return {};
    }
    // Of a file that cannot be opened they stay those of no bitmap.
    BitmapHeaders headers{};
    ReadLogoHeaders(logo->path, headers);
    return ViewOfLogo(state.type, headers);
}

// The bytes of the bitmap file that a logo shows; null for none.
std::vector<std::uint8_t>* ShownFile(const Logo& logo, LogoPreviewKind shows, LogoType type,
                                     LogoBuffers& buffers) {
    std::wstring converted;
    switch (shows) {
        case LogoPreviewKind::kNothing:
            break;
        case LogoPreviewKind::kSource:
            return ReadLogoFile(logo.path, buffers.source) ? &buffers.source : nullptr;
        case LogoPreviewKind::kConverted:
            return ConvertLogo(logo, type, converted, buffers) == LogoStatus::kWritten ? &buffers.converted
                                                                                       : nullptr;
    }
    return nullptr;
}

// Reads, converts and draws the selected logo anew.
void DrawPreview(HWND dialog) {
    GroupState* state = StateOf(dialog);
    if (state == nullptr) {
        return;
    }
    const LogoView view = ViewOfSelected(dialog, *state);
    EnableSettings(dialog, view);
    // The focus may have moved, and who heard of it may have closed the page.
    state = StateOf(dialog);
    if (state == nullptr) {
        return;
    }
    const HWND frame = GetDlgItem(dialog, IDC_LOGO_PREVIEW);
    const Logo* const logo = SelectedLogo(dialog, *state);
    if (logo == nullptr) {
        state->preview.Clear();
        InvalidateRect(frame, nullptr, FALSE);
        return;
    }
    std::vector<std::uint8_t> none;
    std::vector<std::uint8_t>* const file = ShownFile(*logo, view.shows, state->type, state->buffers);
    state->preview.Draw(frame, file != nullptr ? *file : none);
}

void ShowColumnTitles(HWND list) {
    for (int column = 0; column < static_cast<int>(std::size(kColumnWidths)); ++column) {
        SetColumnTitle(list, column,
                       DownloadPageTexts()[kDownloadPageColumns + static_cast<std::size_t>(column)]);
    }
}

}  // namespace

void LogoGroupOpened(HWND dialog) {
    auto state = std::make_unique<GroupState>();
    if (!SetPropW(dialog, kStateProperty, state.get())) {
        return;
    }
    static_cast<void>(state.release());
    const TextTable& texts = DownloadPageTexts();
    const ListColumn columns[] = {{texts[kDownloadPageColumns], kColumnWidths[kNumberColumn]},
                                  {texts[kDownloadPageColumns + 1], kColumnWidths[kNameColumn]},
                                  {texts[kDownloadPageColumns + 2], kColumnWidths[kPathColumn]}};
    AddColumns(ListOf(dialog), columns);
    for (const Slider& slider : kSliders) {
        SendDlgItemMessageW(dialog, slider.control, TBM_SETRANGEMIN, FALSE, -kMostTone);
        SendDlgItemMessageW(dialog, slider.control, TBM_SETRANGEMAX, FALSE, kMostTone);
        // The thumb finds its place in a new range only when it moves.
        SendDlgItemMessageW(dialog, slider.control, TBM_SETPOS, FALSE, -kMostTone);
        SendDlgItemMessageW(dialog, slider.control, TBM_SETPAGESIZE, 0, 20);
        SendDlgItemMessageW(dialog, slider.control, TBM_SETLINESIZE, 0, 1);
    }
    for (const int radio : kTypeRadios) {
        SetClickedByUserOnly(dialog, radio);
    }
    for (const int radio : kHalftoneRadios) {
        SetClickedByUserOnly(dialog, radio);
    }
    ShowSettings(dialog, {});
    ShowType(dialog, LogoType::kOriginal);
    EnableRadios(dialog, kTypeRadios, false);
    EnableSettings(dialog, {});
}

void LogoGroupClosed(HWND dialog) noexcept {
    const std::unique_ptr<GroupState> state(static_cast<GroupState*>(RemovePropW(dialog, kStateProperty)));
}

bool LogoControlUsed(HWND dialog, HANDLE printer, int control, int notification) {
    GroupState* const state = StateOf(dialog);
    if (state == nullptr || notification != BN_CLICKED) {
        return false;
    }
    if (const auto radio = std::ranges::find(kTypeRadios, control); radio != std::end(kTypeRadios)) {
        TypeChosen(dialog, *state, static_cast<LogoType>(radio - std::begin(kTypeRadios)));
        return true;
    }
    if (const auto radio = std::ranges::find(kHalftoneRadios, control); radio != std::end(kHalftoneRadios)) {
        HalftoneChosen(dialog, *state, static_cast<Halftone>(radio - std::begin(kHalftoneRadios)));
        return true;
    }
    switch (control) {
        case IDC_LOGO_ADD:
            AddClicked(dialog);
            return true;
        case IDC_LOGO_DELETE:
            DeleteClicked(dialog, *state);
            return true;
        case IDC_LOGO_DOWNLOAD:
            DownloadClicked(dialog, printer, *state);
            return true;
        case IDC_LOGO_CLEAR:
            SendRawJob(printer, kSelfTestJob, ClearLogosCommand());
            return true;
        default:
            return false;
    }
}

bool LogoNotified(HWND dialog, const NMHDR& header) {
    if (header.code == static_cast<UINT>(NM_RELEASEDCAPTURE)) {
        const Slider* const slider = FindSlider(static_cast<int>(header.idFrom));
        if (slider != nullptr) {
            SliderReleased(dialog, *slider);
        }
        return slider != nullptr;
    }
    // Only the list's own notification is long enough.
    if (header.hwndFrom != ListOf(dialog) || header.code != static_cast<UINT>(LVN_ITEMCHANGED)) {
        return false;
    }
    GroupState* const state = StateOf(dialog);
    const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
    if (state != nullptr && ((change.uNewState ^ change.uOldState) & LVIS_SELECTED) != 0) {
        if (const Logo* const logo = SelectedLogo(dialog, *state)) {
            ShowSettings(dialog, logo->settings);
        }
        RepaintSoon(dialog);
    }
    return true;
}

// A slider that the keyboard or the wheel moves is never captured.
void LogoSliderMoved(HWND dialog, HWND slider, int code) {
    const Slider* const found = FindSlider(GetDlgCtrlID(slider));
    if (found != nullptr && (code == TB_ENDTRACK || code == TB_THUMBPOSITION)) {
        SliderReleased(dialog, *found);
    }
}

void LogoGroupPainted(HWND dialog) {
    ShowColumnTitles(ListOf(dialog));
    DrawPreview(dialog);
}

bool LogoFrameUncovered(HWND dialog, const DRAWITEMSTRUCT& item) {
    if (item.CtlID != IDC_LOGO_PREVIEW) {
        return false;
    }
    const GroupState* const state = StateOf(dialog);
    if (state == nullptr || !state->preview.Show(item.hwndItem, item.hDC)) {
        // As the page around it.
        const LRESULT brush = SendMessageW(dialog, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(item.hDC),
                                           reinterpret_cast<LPARAM>(item.hwndItem));
        FillRect(item.hDC, &item.rcItem, reinterpret_cast<HBRUSH>(brush));
    }
    return true;
}

#include "ui_driver.h"

#include <commctrl.h>
#include <dlgs.h>
#include <prsht.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>

#include "screenshot.h"
#include "utf8.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPollInterval{2};
constexpr UINT kExitCodeWatchdog = 99;

// Fixed by the platform.
constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kTabClass[] = L"SysTabControl32";
constexpr int kApplyButton = 0x3021;
constexpr int kMessageBoxText = 0xFFFF;

std::wstring ClassName(HWND window) {
    wchar_t name[64] = {};
    GetClassNameW(window, name, static_cast<int>(std::size(name)));
    return name;
}

// Captions of frames are known to the system: reading them needs no answer from the window's thread.
std::wstring Caption(HWND window) {
    wchar_t caption[256] = {};
    InternalGetWindowText(window, caption, static_cast<int>(std::size(caption)));
    return caption;
}

bool IsDialog(HWND window) {
    return IsWindowVisible(window) && ClassName(window) == kDialogClass;
}

bool IsSheet(HWND window) {
    const HWND tabs = FindWindowExW(window, nullptr, kTabClass, nullptr);
    return tabs != nullptr && GetDlgItem(window, kApplyButton) != nullptr;
}

// A message box has a text, perhaps a picture, and standard buttons; any other control makes it a dialog.
bool IsMessageBox(HWND window) {
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        const std::wstring kind = ClassName(child);
        const int id = GetDlgCtrlID(child);
        if (kind != L"Static" && (kind != L"Button" || id < IDOK || id > IDCONTINUE)) {
            return false;
        }
    }
    return GetDlgItem(window, kMessageBoxText) != nullptr;
}

std::vector<HWND> Dialogs(DWORD thread) {
    std::vector<HWND> dialogs;
    EnumThreadWindows(
        thread,
        [](HWND window, LPARAM found) -> BOOL {
            if (IsDialog(window)) {
                reinterpret_cast<std::vector<HWND>*>(found)->push_back(window);
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

std::optional<HWND> FindDialog(DWORD thread, const std::function<bool(HWND)>& matches) {
    const std::vector<HWND> dialogs = Dialogs(thread);
    const auto found = std::find_if(dialogs.begin(), dialogs.end(), matches);
    return found == dialogs.end() ? std::nullopt : std::optional(*found);
}

std::string Quoted(std::wstring_view text) {
    std::string quoted(1, '"');
    quoted += ToUtf8(text);
    quoted += '"';
    return quoted;
}

std::string Describe(HWND window) {
    return "  " + Quoted(Caption(window)) + (IsWindowEnabled(window) ? "" : " (waits for another one)") +
           "\n";
}

std::string DescribeDialogs(DWORD thread) {
    std::string text;
    for (const HWND window : Dialogs(thread)) {
        text += Describe(window);
    }
    return text.empty() ? "  (no dialog)\n" : text;
}

// A thread sees only the windows of its own desktop; tests put their windows on a desktop of their own.
void JoinDesktopOf(DWORD thread) {
    SetThreadDesktop(GetThreadDesktop(thread));
}

std::string IdText(int id) {
    return "control " + std::to_string(id);
}

UINT PressMessage() {
    static const UINT message = RegisterWindowMessageW(L"KVMR72 press and release");
    return message;
}

// Presses and releases the left button in one go of the window's own thread. Held for half a second, an arrow
// repeats, and between two messages from another thread a busy machine may take that long.
LRESULT CALLBACK PressAndRelease(int code, WPARAM wparam, LPARAM lparam) {
    const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lparam);
    if (code == HC_ACTION && sent.message == PressMessage()) {
        SendMessageW(sent.hwnd, WM_LBUTTONDOWN, MK_LBUTTON, sent.lParam);
        SendMessageW(sent.hwnd, WM_LBUTTONUP, 0, sent.lParam);
    }
    return CallNextHookEx(nullptr, code, wparam, lparam);
}

}  // namespace

std::wstring Window::Title() const {
    return Caption(handle_);
}

HWND Window::Control(int id) const {
    const HWND control = GetDlgItem(handle_, id);
    if (control == nullptr) {
        throw UiError(IdText(id) + " is not on " + Quoted(Title()) + "; open:\n" +
                      driver_->DescribeOpenWindows());
    }
    return control;
}

LRESULT Window::SendTo(HWND window, UINT message, WPARAM wparam, LPARAM lparam) const {
    DWORD_PTR answer = 0;
    const auto timeout = static_cast<UINT>(driver_->timeout().count());
    if (SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, timeout, &answer) == 0) {
        throw UiError("message " + std::to_string(message) + " to " + Quoted(Title()) +
                      " was not answered (error " + std::to_string(GetLastError()) + "); open:\n" +
                      driver_->DescribeOpenWindows());
    }
    return static_cast<LRESULT>(answer);
}

LRESULT Window::Send(int id, UINT message, WPARAM wparam, LPARAM lparam) const {
    return SendTo(Control(id), message, wparam, lparam);
}

std::wstring Window::Text(int id) const {
    std::wstring text(static_cast<std::size_t>(Send(id, WM_GETTEXTLENGTH)) + 1, L'\0');
    const LRESULT length = Send(id, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

bool Window::IsEnabled(int id) const {
    return IsWindowEnabled(Control(id)) != FALSE;
}

bool Window::IsVisible(int id) const {
    return IsWindowVisible(Control(id)) != FALSE;
}

bool Window::IsChecked(int id) const {
    return Send(id, BM_GETCHECK) == BST_CHECKED;
}

HWND Window::UsableControl(int id) const {
    const HWND control = Control(id);
    if (!IsWindowEnabled(control) || !IsWindowVisible(control)) {
        throw UiError(IdText(id) + " on " + Quoted(Title()) + " is " +
                      (IsWindowVisible(control) ? "disabled" : "hidden"));
    }
    return control;
}

void Window::Click(int id) const {
    SendTo(UsableControl(id), BM_CLICK);
}

Window Window::OpenDialog(int id) const {
    PostMessageW(UsableControl(id), BM_CLICK, 0, 0);
    return driver_->WaitForDialog(handle_);
}

MessageBoxInfo Window::OpenMessageBox(int id) const {
    PostMessageW(UsableControl(id), BM_CLICK, 0, 0);
    return driver_->WaitForMessageBox();
}

void Window::ChooseFile(int id, const std::filesystem::path& file) const {
    const Window dialog = OpenDialog(id);
    const int name = dialog.HasControl(cmb13) ? cmb13 : edt1;
    // The box for the name may stand inside combo boxes that have the same number.
    Window box = dialog;
    for (Window inner(*driver_, box.Control(name)); inner.HasControl(name);
         inner = Window(*driver_, box.Control(name))) {
        box = inner;
    }
    // The dialog knows backslashes only.
    box.TypeText(name, std::filesystem::path(file).make_preferred().native());
    dialog.PressAndWaitClosed(IDOK);
}

void Window::PressAndWaitClosed(int id) const {
    const HWND owner = GetWindow(handle_, GW_OWNER);
    PostMessageW(UsableControl(id), BM_CLICK, 0, 0);
    WaitClosed();
    // The window goes before whoever opened it goes on: its thread takes the next message after that.
    if (owner != nullptr && IsWindow(owner)) {
        SendTo(owner, WM_NULL);
    }
}

void Window::WaitClosed() const {
    driver_->WaitUntil([this] { return !IsOpen(); }, Quoted(Title()) + " to close");
}

std::vector<std::wstring> Window::Items(int id, UINT count, UINT length, UINT text) const {
    std::vector<std::wstring> items(static_cast<std::size_t>(std::max<LRESULT>(Send(id, count), 0)));
    for (std::size_t i = 0; i < items.size(); ++i) {
        const LRESULT units = Send(id, length, i);
        items[i].resize(static_cast<std::size_t>(std::max<LRESULT>(units, 0)) + 1);
        const LRESULT copied = Send(id, text, i, reinterpret_cast<LPARAM>(items[i].data()));
        items[i].resize(static_cast<std::size_t>(std::max<LRESULT>(copied, 0)));
    }
    return items;
}

std::vector<std::wstring> Window::ComboItems(int id) const {
    return Items(id, CB_GETCOUNT, CB_GETLBTEXTLEN, CB_GETLBTEXT);
}

int Window::ComboSelection(int id) const {
    return static_cast<int>(Send(id, CB_GETCURSEL));
}

void Window::SelectCombo(int id, int index) const {
    const HWND control = UsableControl(id);
    if (SendTo(control, CB_SETCURSEL, static_cast<WPARAM>(index)) != index) {
        throw UiError(IdText(id) + " on " + Quoted(Title()) + " has no item " + std::to_string(index));
    }
    for (const int notification : {CBN_SELENDOK, CBN_SELCHANGE}) {
        SendTo(handle_, WM_COMMAND, MAKEWPARAM(id, notification), reinterpret_cast<LPARAM>(control));
    }
}

std::vector<std::wstring> Window::ListItems(int id) const {
    return Items(id, LB_GETCOUNT, LB_GETTEXTLEN, LB_GETTEXT);
}

int Window::ListSelection(int id) const {
    return static_cast<int>(Send(id, LB_GETCURSEL));
}

void Window::SelectList(int id, int index) const {
    // LB_SETCURSEL answers otherwise than its combo sibling: LB_ERR or not.
    const HWND control = UsableControl(id);
    if (SendTo(control, LB_SETCURSEL, static_cast<WPARAM>(index)) == LB_ERR) {
        throw UiError(IdText(id) + " on " + Quoted(Title()) + " has no item " + std::to_string(index));
    }
    SendTo(handle_, WM_COMMAND, MAKEWPARAM(id, LBN_SELCHANGE), reinterpret_cast<LPARAM>(control));
}

int Window::RowCount(int id) const {
    return static_cast<int>(Send(id, LVM_GETITEMCOUNT));
}

void Window::SelectRow(int id, int row) const {
    LVITEMW item = {};
    item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.state = item.stateMask;
    if (row >= RowCount(id) || SendTo(UsableControl(id), LVM_SETITEMSTATE, static_cast<WPARAM>(row),
                                      reinterpret_cast<LPARAM>(&item)) == FALSE) {
        throw UiError(IdText(id) + " on " + Quoted(Title()) + " has no row " + std::to_string(row));
    }
}

void Window::TypeText(int id, std::wstring_view text) const {
    const HWND control = UsableControl(id);
    SendTo(control, EM_SETSEL, 0, -1);
    if (text.empty()) {
        SendTo(control, WM_CHAR, VK_BACK);
    }
    AppendText(id, text);
}

void Window::AppendText(int id, std::wstring_view text) const {
    const HWND control = UsableControl(id);
    for (const wchar_t unit : text) {
        SendTo(control, WM_CHAR, unit, 1);
    }
}

void Window::PressKey(int id, WORD virtual_key) const {
    const HWND control = UsableControl(id);
    SendTo(control, WM_KEYDOWN, virtual_key, 1);
    SendTo(control, WM_KEYUP, virtual_key, static_cast<LPARAM>(0xC0000001));
}

void Window::Focus(int id) const {
    SendTo(handle_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(UsableControl(id)), TRUE);
}

void Window::Spin(int id, int times, bool up) const {
    const HWND control = UsableControl(id);
    RECT area = {};
    GetClientRect(control, &area);
    const bool is_horizontal = (GetWindowLongPtrW(control, GWL_STYLE) & UDS_HORZ) != 0;
    // Up is the upper arrow of a vertical control and the right one of a horizontal control.
    const LONG x = is_horizontal ? (up ? area.right * 3 / 4 : area.right / 4) : area.right / 2;
    const LONG y = is_horizontal ? area.bottom / 2 : (up ? area.bottom / 4 : area.bottom * 3 / 4);
    const std::unique_ptr<std::remove_pointer_t<HHOOK>, BOOL(WINAPI*)(HHOOK)> hook(
        SetWindowsHookExW(WH_CALLWNDPROC, &PressAndRelease, nullptr,
                          GetWindowThreadProcessId(control, nullptr)),
        &UnhookWindowsHookEx);
    if (hook == nullptr) {
        throw UiError("no hook for " + IdText(id) + " (error " + std::to_string(GetLastError()) + ")");
    }
    for (int i = 0; i < times; ++i) {
        SendTo(control, PressMessage(), 0, MAKELPARAM(x, y));
    }
}

int Window::SpinPosition(int id) const {
    return static_cast<int>(Send(id, UDM_GETPOS32));
}

void Window::SetSlider(int id, int position) const {
    const HWND control = UsableControl(id);
    SendTo(control, TBM_SETPOS, TRUE, position);
    const bool is_vertical = (GetWindowLongPtrW(control, GWL_STYLE) & TBS_VERT) != 0;
    SendTo(handle_, is_vertical ? WM_VSCROLL : WM_HSCROLL, MAKEWPARAM(TB_THUMBPOSITION, position),
           reinterpret_cast<LPARAM>(control));
}

int Window::SliderPosition(int id) const {
    return static_cast<int>(Send(id, TBM_GETPOS));
}

void Window::Screenshot(const std::filesystem::path& bmp) const {
    SaveScreenshot(handle_, bmp);
}

HWND Sheet::Tabs() const {
    return reinterpret_cast<HWND>(SendTo(handle(), PSM_GETTABCONTROL));
}

int Sheet::TabCount() const {
    return static_cast<int>(SendTo(Tabs(), TCM_GETITEMCOUNT));
}

std::vector<std::wstring> Sheet::TabTitles() const {
    std::vector<std::wstring> titles;
    const HWND tabs = Tabs();
    const int count = TabCount();
    for (int i = 0; i < count; ++i) {
        wchar_t text[256] = {};
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = static_cast<int>(std::size(text));
        SendTo(tabs, TCM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
        titles.emplace_back(item.pszText);
    }
    return titles;
}

Window Sheet::SelectTab(std::wstring_view title) const {
    const std::vector<std::wstring> titles = TabTitles();
    const auto found = std::find(titles.begin(), titles.end(), title);
    if (found == titles.end()) {
        std::string message = "no tab " + Quoted(title) + " among";
        for (const std::wstring& other : titles) {
            message.append(1, ' ').append(Quoted(other));
        }
        throw UiError(message);
    }
    return SelectPage(static_cast<int>(found - titles.begin()));
}

Window Sheet::SelectPage(int index) const {
    SendTo(handle(), PSM_SETCURSEL, static_cast<WPARAM>(index));
    if (CurrentIndex() != index) {
        throw UiError("page " + std::to_string(index) + " could not be selected; the sheet shows page " +
                      std::to_string(CurrentIndex()));
    }
    return CurrentPage();
}

Window Sheet::CurrentPage() const {
    return {driver(), reinterpret_cast<HWND>(SendTo(handle(), PSM_GETCURRENTPAGEHWND))};
}

int Sheet::CurrentIndex() const {
    return static_cast<int>(SendTo(Tabs(), TCM_GETCURSEL));
}

bool Sheet::IsApplyEnabled() const {
    return IsEnabled(kApplyButton);
}

void Sheet::PressApply() const {
    Click(kApplyButton);
}

void UiDriver::WaitUntil(const std::function<bool()>& condition, std::string_view awaited) const {
    const auto deadline = Clock::now() + timeout_;
    while (!condition()) {
        if (Clock::now() >= deadline) {
            throw UiError("timed out waiting for " + std::string(awaited) + "; open:\n" +
                          DescribeOpenWindows());
        }
        std::this_thread::sleep_for(kPollInterval);
    }
}

HWND UiDriver::WaitForWindow(const std::function<bool(HWND)>& matches, const std::string& awaited) const {
    std::optional<HWND> found;
    WaitUntil(
        [&] {
            // Asked first: what opened before the end is still found.
            const bool has_ended = ended_ != nullptr && *ended_;
            found = FindDialog(ui_thread_, matches);
            if (!found && has_ended) {
                throw UiError("all windows closed while waiting for " + awaited);
            }
            return found.has_value();
        },
        awaited);
    return *found;
}

Sheet UiDriver::WaitForSheet(std::wstring_view title) const {
    const auto matches = [title](HWND window) {
        return IsSheet(window) && Caption(window).find(title) != std::wstring::npos;
    };
    return {*this, WaitForWindow(matches, "a property sheet " + Quoted(title))};
}

Window UiDriver::WaitForDialog(HWND opener) const {
    const auto matches = [opener](HWND window) {
        return window != opener && IsWindowEnabled(window) && !IsSheet(window) && !IsMessageBox(window);
    };
    return {*this, WaitForWindow(matches, "a dialog")};
}

MessageBoxInfo UiDriver::WaitForMessageBox() const {
    const auto matches = [](HWND window) { return IsWindowEnabled(window) && IsMessageBox(window); };
    const Window window(*this, WaitForWindow(matches, "a message box"));
    MessageBoxInfo box = {
        .window = window, .title = window.Title(), .text = window.Text(kMessageBoxText), .buttons = {}};
    for (HWND child = GetWindow(window.handle(), GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        if (ClassName(child) == L"Button" && IsWindowVisible(child)) {
            box.buttons.push_back(GetDlgCtrlID(child));
        }
    }
    return box;
}

std::string UiDriver::DescribeOpenWindows() const {
    return DescribeDialogs(ui_thread_);
}

void UiDriver::CloseEverything() const {
    const auto deadline = Clock::now() + timeout_;
    for (auto top = Dialogs(ui_thread_); !top.empty() && Clock::now() < deadline; top = Dialogs(ui_thread_)) {
        const auto enabled =
            std::find_if(top.begin(), top.end(), [](HWND window) { return IsWindowEnabled(window); });
        if (enabled != top.end()) {
            PostMessageW(*enabled, WM_CLOSE, 0, 0);
            // A box that only asks yes or no ignores that.
            PostMessageW(*enabled, WM_COMMAND, IDNO, 0);
        }
        std::this_thread::sleep_for(kPollInterval);
    }
}

struct Watchdog::State {
    std::mutex mutex;
    std::condition_variable ended_changed;
    bool ended = false;
    std::thread thread;
};

namespace {

[[noreturn]] void EndHungProcess(DWORD ui_thread, std::chrono::seconds limit) {
    std::fprintf(stderr, "no end after %lld seconds; open:\n%s", static_cast<long long>(limit.count()),
                 DescribeDialogs(ui_thread).c_str());
    std::fflush(stderr);
    ExitProcess(kExitCodeWatchdog);
}

}  // namespace

Watchdog::Watchdog(std::chrono::seconds limit) : state_(std::make_unique<State>()) {
    state_->thread = std::thread([state = state_.get(), limit, ui_thread = GetCurrentThreadId()] {
        JoinDesktopOf(ui_thread);
        std::unique_lock lock(state->mutex);
        if (!state->ended_changed.wait_for(lock, limit, [state] { return state->ended; })) {
            EndHungProcess(ui_thread, limit);
        }
    });
}

Watchdog::~Watchdog() {
    {
        const std::lock_guard lock(state_->mutex);
        state_->ended = true;
    }
    state_->ended_changed.notify_one();
    state_->thread.join();
}

namespace {

// What `finish` throws or the script throws ends the script and closes all windows.
void RunBoth(const std::function<void()>& open, const std::function<void(UiDriver&)>& script,
             const std::function<void(const UiDriver&, const std::atomic<bool>& returned)>& finish) {
    std::atomic<bool> returned = false;
    UiDriver driver(GetCurrentThreadId(), UiDriver::kDefaultTimeout, &returned);
    std::exception_ptr script_error;
    std::thread second([&, ui_thread = GetCurrentThreadId()] {
        JoinDesktopOf(ui_thread);
        try {
            script(driver);
            finish(driver, returned);
        } catch (...) {
            script_error = std::current_exception();
            driver.CloseEverything();
        }
    });
    std::exception_ptr open_error;
    try {
        open();
    } catch (...) {
        open_error = std::current_exception();
    }
    returned = true;
    second.join();
    // A sheet that never opened explains why the script waited in vain.
    if (open_error) {
        std::rethrow_exception(open_error);
    }
    if (script_error) {
        std::rethrow_exception(script_error);
    }
}

}  // namespace

void RunDriven(const std::function<void()>& open, const std::function<void(UiDriver&)>& script,
               std::chrono::seconds limit) {
    const Watchdog watchdog(limit);
    RunBoth(open, script, [](const UiDriver& driver, const std::atomic<bool>& returned) {
        driver.WaitUntil([&returned] { return returned.load(); }, "the script's last window to close");
    });
}

void RunThenHandOver(const std::function<void()>& open, const std::function<void(UiDriver&)>& script) {
    RunBoth(open, script, [](const UiDriver&, const std::atomic<bool>&) {});
}

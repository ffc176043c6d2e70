// Works dialogs as a person would, from a second thread and with real control messages, while the thread that
// owns them sits in its modal loop. Nothing sleeps for a fixed time: everything awaited is polled until a
// deadline, and what does not come raises UiError with what was awaited and the windows that were open.
//
//   RunDriven([&] { host.OpenSheet(SheetKind::kDocument); },
//             [](UiDriver& ui) {
//                 Sheet sheet = ui.WaitForSheet();
//                 Window page = sheet.SelectTab(L"Operation");
//                 Window dialog = page.OpenDialog(1011);
//                 dialog.SelectCombo(1017, 1);
//                 dialog.PressAndWaitClosed(IDOK);
//                 sheet.PressOk();
//             });
#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class UiError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class UiDriver;
struct MessageBoxInfo;

// A dialog, a page or a message box. Controls are named by their identifier; every call throws UiError when
// the control is missing or its thread does not answer.
class Window {
  public:
    Window(const UiDriver& driver, HWND handle) : driver_(&driver), handle_(handle) {}

    HWND handle() const noexcept { return handle_; }
    bool IsOpen() const noexcept { return IsWindow(handle_) != FALSE; }
    std::wstring Title() const;
    HWND Control(int id) const;
    bool HasControl(int id) const noexcept { return GetDlgItem(handle_, id) != nullptr; }
    // Any message to a control, pointers of this process included.
    LRESULT Send(int id, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;

    std::wstring Text(int id) const;
    bool IsEnabled(int id) const;
    bool IsVisible(int id) const;
    bool IsChecked(int id) const;

    // Presses a button, check box or radio button that a person could press, and waits until that is handled.
    void Click(int id) const;
    // Presses a button that opens a dialog or message box, and waits for that.
    Window OpenDialog(int id) const;
    MessageBoxInfo OpenMessageBox(int id) const;
    // Presses a button that opens the system's open-file dialog, types the path there and presses Open.
    void ChooseFile(int id, const std::filesystem::path& file) const;
    // Presses a button that closes this window, and waits until it is gone.
    void PressAndWaitClosed(int id) const;
    void WaitClosed() const;

    std::vector<std::wstring> ComboItems(int id) const;
    // -1 without a selection.
    int ComboSelection(int id) const;
    // Selects and tells the parent, as a person's choice does.
    void SelectCombo(int id, int index) const;
    std::vector<std::wstring> ListItems(int id) const;
    int ListSelection(int id) const;
    void SelectList(int id, int index) const;
    // Of a list view in report style. The list tells its parent by itself.
    int RowCount(int id) const;
    void SelectRow(int id, int row) const;

    // Replaces the text of an edit control by typing, one WM_CHAR for each character; "" deletes it.
    void TypeText(int id, std::wstring_view text) const;
    // Types at the caret.
    void AppendText(int id, std::wstring_view text) const;
    void PressKey(int id, WORD virtual_key) const;
    // Moves the focus as TAB does; the control that had it learns that it lost it.
    void Focus(int id) const;

    // Clicks an arrow of an up-down control.
    void SpinUp(int id, int times = 1) const { Spin(id, times, true); }
    void SpinDown(int id, int times = 1) const { Spin(id, times, false); }
    int SpinPosition(int id) const;
    // Moves a slider's thumb there and tells the parent.
    void SetSlider(int id, int position) const;
    int SliderPosition(int id) const;

    void Screenshot(const std::filesystem::path& bmp) const;

  protected:
    LRESULT SendTo(HWND window, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) const;
    const UiDriver& driver() const noexcept { return *driver_; }

  private:
    HWND UsableControl(int id) const;
    std::vector<std::wstring> Items(int id, UINT count, UINT length, UINT text) const;
    void Spin(int id, int times, bool up) const;

    const UiDriver* driver_;
    HWND handle_;
};

// A property sheet. Selecting a page makes it when it was not seen before.
class Sheet : public Window {
  public:
    using Window::Window;

    int TabCount() const;
    std::vector<std::wstring> TabTitles() const;
    Window SelectTab(std::wstring_view title) const;
    Window SelectPage(int index) const;
    Window CurrentPage() const;
    int CurrentIndex() const;
    bool IsApplyEnabled() const;

    // OK and Cancel wait until the sheet is gone; Apply until it is done.
    void PressOk() const { PressAndWaitClosed(IDOK); }
    void PressCancel() const { PressAndWaitClosed(IDCANCEL); }
    void PressApply() const;

  private:
    HWND Tabs() const;
};

struct MessageBoxInfo {
    Window window;
    std::wstring title;
    std::wstring text;
    std::vector<int> buttons;  // IDOK, IDYES, ... in the order of the box

    void Press(int button) const { window.PressAndWaitClosed(button); }
};

class UiDriver {
  public:
    static constexpr std::chrono::milliseconds kDefaultTimeout{10000};

    // `ended`, when given, turns true when the thread opens no more windows: waiting for one is then given up
    // at once.
    explicit UiDriver(DWORD ui_thread, std::chrono::milliseconds timeout = kDefaultTimeout,
                      const std::atomic<bool>* ended = nullptr)
        : ui_thread_(ui_thread), timeout_(timeout), ended_(ended) {}

    // `title` empty: any sheet; otherwise a sheet whose title contains it.
    Sheet WaitForSheet(std::wstring_view title = {}) const;
    // The dialog that is open on top of all others of the thread: visible, enabled, no sheet, no message box,
    // and not `opener`, which is enabled until it opens another.
    Window WaitForDialog(HWND opener = nullptr) const;
    MessageBoxInfo WaitForMessageBox() const;
    // Polls until `condition` holds. `awaited` completes "timed out waiting for ...".
    void WaitUntil(const std::function<bool()>& condition, std::string_view awaited) const;

    std::chrono::milliseconds timeout() const noexcept { return timeout_; }
    // The thread's dialogs, topmost first, as lines for a person.
    std::string DescribeOpenWindows() const;
    // Cancels whatever is open on the thread, message boxes first, until nothing is left or the deadline has
    // passed.
    void CloseEverything() const;

  private:
    HWND WaitForWindow(const std::function<bool(HWND)>& matches, const std::string& awaited) const;

    DWORD ui_thread_;
    std::chrono::milliseconds timeout_;
    const std::atomic<bool>* ended_;
};

// Ends the process with exit code 99 and a list of the open dialogs on stderr unless it is destroyed in time.
// Made by the thread that opens the dialogs.
class Watchdog {
  public:
    explicit Watchdog(std::chrono::seconds limit);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

// Runs `open`, which shows modal windows and returns when they are closed, on this thread and `script` on a
// second one. When the script throws or leaves windows open, they are closed and the error is thrown from
// here. A run that lasts longer than `limit` is ended by a Watchdog.
void RunDriven(const std::function<void()>& open, const std::function<void(UiDriver&)>& script,
               std::chrono::seconds limit = std::chrono::seconds(60));

// The same without a limit: the windows that the script leaves open are a person's to use and to close.
void RunThenHandOver(const std::function<void()>& open, const std::function<void(UiDriver&)>& script);

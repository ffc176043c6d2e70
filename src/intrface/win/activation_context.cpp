#include "intrface/win/activation_context.h"

#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <string>

#include "intrface/win/module.h"
#include "resources/resource.h"

namespace {

// Made by the thread that needs it first.
std::atomic<HANDLE> gContext = INVALID_HANDLE_VALUE;

constexpr int kPathAttempts = 10;

// Empty when the system does not say.
std::wstring ModulePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (int attempt = 0; attempt < kPathAttempts; ++attempt) {
        const DWORD length = GetModuleFileNameW(ghInstance, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            return {};
        }
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
    return {};
}

// Holds the context active for a scope.
class ActivationScope {
  public:
    ActivationScope() noexcept {
        const HANDLE context = CommonControlsContext();
        active_ = context != INVALID_HANDLE_VALUE && ActivateActCtx(context, &cookie_);
    }
    ~ActivationScope() {
        if (active_) {
            DeactivateActCtx(0, cookie_);
        }
    }
    ActivationScope(const ActivationScope&) = delete;
    ActivationScope& operator=(const ActivationScope&) = delete;

  private:
    ULONG_PTR cookie_ = 0;
    bool active_ = false;
};

}  // namespace

HANDLE CommonControlsContext() noexcept {
    if (gContext != INVALID_HANDLE_VALUE) {
        return gContext;
    }
    try {
        const std::wstring path = ModulePath();
        if (!path.empty()) {
            ACTCTXW description{};
            description.cbSize = sizeof description;
            description.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
            description.lpSource = path.c_str();
            description.lpResourceName = MAKEINTRESOURCEW(IDR_COMMON_CONTROLS_MANIFEST);
            const HANDLE made = CreateActCtxW(&description);
            HANDLE others = INVALID_HANDLE_VALUE;
            if (!gContext.compare_exchange_strong(others, made) && made != INVALID_HANDLE_VALUE) {
                ReleaseActCtx(made);
            }
        }
    } catch (...) {
        // Out of memory: the pages do without.
    }
    return gContext;
}

void ReleaseCommonControlsContext() noexcept {
    if (gContext != INVALID_HANDLE_VALUE) {
        ReleaseActCtx(gContext);
        gContext = INVALID_HANDLE_VALUE;
    }
}

INT_PTR RunDialog(int templateId, HWND owner, DLGPROC procedure, LPARAM parameter) noexcept {
    const ActivationScope scope;
    return DialogBoxParamW(ghInstance, MAKEINTRESOURCEW(templateId), owner, procedure, parameter);
}

HWND CreateControl(DWORD extendedStyle, const wchar_t* windowClass, DWORD style, HWND parent) noexcept {
    const ActivationScope scope;
    return CreateWindowExW(extendedStyle, windowClass, nullptr, style, CW_USEDEFAULT, CW_USEDEFAULT,
                           CW_USEDEFAULT, CW_USEDEFAULT, parent, nullptr, ghInstance, nullptr);
}

void RegisterCommonControls() noexcept {
    const ActivationScope scope;
    const INITCOMMONCONTROLSEX classes{
        sizeof classes, ICC_UPDOWN_CLASS | ICC_BAR_CLASSES | ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES};
    InitCommonControlsEx(&classes);
}

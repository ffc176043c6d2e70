#include "intrface/win/shell_functions.h"

#include "intrface/win/handles.h"

namespace {

class ShellFunctions {
  public:
    ShellFunctions() noexcept : library_(LoadLibraryW(L"Shell32.dll")) {
        if (!library_) {
            TRACE_VERBOSE(L"UI:  LoadLibraryW failed.\r\n");
            return;
        }
        if (!Resolve(special_folder_path_, "SHGetSpecialFolderPathW")) {
            TRACE_VERBOSE(L"UI:  SHGetSpecialFolderPathFunc failed.\r\n");
        }
        if (!Resolve(browse_for_folder_, "SHBrowseForFolderW")) {
            TRACE_VERBOSE(L"UI:  SHBrowseForFolderFunc failed.\r\n");
        }
        if (!Resolve(path_from_id_list_, "SHGetPathFromIDListW")) {
            TRACE_VERBOSE(L"UI:  SHGetPathFromIDListFunc failed.\r\n");
        }
    }

    decltype(&SHGetSpecialFolderPathW) special_folder_path_ = nullptr;
    decltype(&SHBrowseForFolderW) browse_for_folder_ = nullptr;
    decltype(&SHGetPathFromIDListW) path_from_id_list_ = nullptr;

  private:
    template <typename Function>
    bool Resolve(Function& function, const char* name) noexcept {
        function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library_.Get(), name)));
        return function != nullptr;
    }

    Library library_;
};

const ShellFunctions gShell;

}  // namespace

bool SpecialFolderPath(int folder, wchar_t (&path)[kPathLength]) noexcept {
    path[0] = 0;
    if (!gShell.special_folder_path_ || !gShell.special_folder_path_(nullptr, path, folder, FALSE)) {
        path[0] = 0;
        return false;
    }
    path[kPathLength - 1] = 0;
    return true;
}

PIDLIST_ABSOLUTE BrowseForFolder(BROWSEINFOW& info) noexcept {
    return gShell.browse_for_folder_ ? gShell.browse_for_folder_(&info) : nullptr;
}

bool PathFromIdList(PCIDLIST_ABSOLUTE list, wchar_t (&path)[kPathLength]) noexcept {
    path[0] = 0;
    if (!gShell.path_from_id_list_ || !gShell.path_from_id_list_(list, path)) {
        path[0] = 0;
        return false;
    }
    path[kPathLength - 1] = 0;
    return true;
}

#include "page_fixture.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "rig/test_desktop.h"

namespace pages {
namespace {

constexpr wchar_t kUnfinishedFile[] = L"unfinished.tmp";

constexpr const wchar_t* kLanguages[] = {kEnglish, kSimplifiedChinese, kTraditionalChinese};

void UseOwnDesktopOnce() {
    static const bool used = (rig::UseOwnDesktop(), true);
    static_cast<void>(used);
}

}  // namespace

void PageTest::SetUp() {
    UseOwnDesktopOnce();
    rig::ResetToInstalled();
    for (const wchar_t* file : kLanguages) {
        InstallUserFile(file);
    }
    rig::SetLanguageValue(L"IsFirstRun_KVMR72", L"FALSE");
    ChooseLanguage(kEnglish);
    ASSERT_EQ(GetModuleHandleW(rig::PluginPath().filename().c_str()), nullptr);
}

void PageTest::TearDown() {
    StopHost();
}

PluginHost& PageTest::StartHost(HostSettings settings) {
    StopHost();
    host_ = std::make_unique<PluginHost>(rig::PluginPath(), std::move(settings));
    return *host_;
}

PluginHost& PageTest::Host() {
    return host_ == nullptr ? StartHost() : *host_;
}

void PageTest::StopHost() {
    if (host_ == nullptr) {
        return;
    }
    EXPECT_TRUE(host_->GuardsIntact()) << "something wrote outside record, public DEVMODE or option texts";
    host_.reset();
    EXPECT_EQ(GetModuleHandleW(rig::PluginPath().filename().c_str()), nullptr)
        << "the plug-in is still loaded";
}

SheetResult PageTest::OpenSheet(const std::function<void(UiDriver&, Sheet&)>& script, SheetKind kind) {
    return UseSheet(Host(), kind, script);
}

Bytes PageTest::Record() {
    const auto bytes = Host().record_bytes();
    return {bytes.begin(), bytes.end()};
}

void PageTest::SetRecord(const Bytes& bytes) {
    const auto record = Host().record_bytes();
    ASSERT_EQ(bytes.size(), record.size());
    std::copy(bytes.begin(), bytes.end(), record.begin());
}

void ChooseLanguage(const wchar_t* file) {
    rig::SetLanguageValue(L"LANGUAGE_KVMR72", file);
}

void InstallUserFile(const wchar_t* file) {
    std::error_code error;
    std::filesystem::create_directories(rig::UserFolder(), error);
    const std::filesystem::path source = rig::LanguageSource() / file;
    EXPECT_TRUE(CopyFileW(source.c_str(), (rig::UserFolder() / file).c_str(), FALSE))
        << source << ", error " << GetLastError();
}

void WriteUserFile(const wchar_t* file, const std::wstring& text) {
    std::error_code error;
    std::filesystem::create_directories(rig::UserFolder(), error);
    rig::WriteUtf16(rig::UserFolder() / kUnfinishedFile, text);
    ReplaceUserFile(file, kUnfinishedFile);
}

void ReplaceUserFile(const wchar_t* file, const wchar_t* by) {
    EXPECT_TRUE(MoveFileExW((rig::UserFolder() / by).c_str(), (rig::UserFolder() / file).c_str(),
                            MOVEFILE_REPLACE_EXISTING))
        << GetLastError();
}

void RemoveAllLanguageFiles() {
    rig::RemoveUserFolder();
    rig::RemoveLanguageFiles();
}

std::wstring SourceText(const wchar_t* file, const wchar_t* section, const wchar_t* key) {
    wchar_t text[1024] = {};
    const std::filesystem::path path = rig::LanguageSource() / file;
    GetPrivateProfileStringW(section, key, L"", text, static_cast<DWORD>(std::size(text)), path.c_str());
    EXPECT_NE(text[0], L'\0') << path << " has no " << std::filesystem::path(section) << " "
                              << std::filesystem::path(key);
    return text;
}

Bytes FilledRecord(const std::function<std::uint8_t(std::size_t offset)>& value) {
    Bytes bytes(kOemRecordSize);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = value(i);
    }
    const OemDevHeader header = {kOemRecordSize, kOemSignature, kOemVersion};
    std::memcpy(bytes.data(), &header, sizeof header);
    return bytes;
}

std::string Differences(const Bytes& before, const Bytes& after) {
    std::string lines;
    if (before.size() != after.size()) {
        lines = "sizes " + std::to_string(before.size()) + " -> " + std::to_string(after.size()) + "\n";
    }
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
        if (before[i] != after[i]) {
            char line[48];
            std::snprintf(line, sizeof line, "%u: %u -> %u\n", static_cast<unsigned>(i), before[i], after[i]);
            lines += line;
        }
    }
    return lines;
}

void Repaint(const Window& window) {
    RedrawWindow(window.handle(), nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    Settle(window);
}

SheetResult UseSheet(PluginHost& host, SheetKind kind, const std::function<void(UiDriver&, Sheet&)>& script) {
    SheetResult result;
    try {
        RunDriven([&] { result = host.OpenSheet(kind); },
                  [&](UiDriver& ui) {
                      rig::JoinOwnDesktop();
                      Sheet sheet = ui.WaitForSheet();
                      script(ui, sheet);
                      if (sheet.IsOpen()) {
                          ui.CloseEverything();
                      }
                  });
    } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
    }
    return result;
}

void Settle(const Window& window) {
    DWORD_PTR result = 0;
    EXPECT_NE(SendMessageTimeoutW(window.handle(), WM_NULL, 0, 0, SMTO_NORMAL, 10000, &result), 0);
}

void CloseDialog(const Window& dialog, int button, const Window& owner) {
    dialog.PressAndWaitClosed(button);
    Settle(owner);
}

FakeSheet::FakeSheet(WORD reason) {
    info.cbSize = sizeof info;
    info.Version = PROPSHEETUI_INFO_VERSION;
    info.Reason = reason;
    info.hComPropSheet = this;
    info.pfnComPropSheet = &FakeSheet::Callback;
    info.lParamInit = reinterpret_cast<LPARAM>(&parameters);
    parameters.cbSize = sizeof parameters;
}

PROPSHEETUI_INFO* FakeSheet::ForReason(WORD reason) {
    info.Reason = reason;
    return &info;
}

std::vector<int> FakeSheet::Templates() const {
    std::vector<int> templates;
    for (const Call& call : calls) {
        if (call.function == CPSFUNC_ADD_PROPSHEETPAGEW) {
            templates.push_back(static_cast<int>(At<std::uint64_t>(call.page, kTemplateOffset)));
        }
    }
    return templates;
}

FakeSheet::Call FakeSheet::PageOf(int dialog) const {
    for (const Call& call : calls) {
        if (call.function == CPSFUNC_ADD_PROPSHEETPAGEW &&
            At<std::uint64_t>(call.page, kTemplateOffset) == static_cast<std::uint64_t>(dialog)) {
            return call;
        }
    }
    ADD_FAILURE() << "page " << dialog << " was not added";
    return {};
}

LONG_PTR FakeSheet::HandleOf(int dialog) const {
    const std::vector<int> templates = Templates();
    return kFirstPage + (std::find(templates.begin(), templates.end(), dialog) - templates.begin());
}

LONG_PTR CALLBACK FakeSheet::Callback(HANDLE sheet, UINT function, LPARAM first, LPARAM second) {
    auto& fake = *static_cast<FakeSheet*>(sheet);
    Call call = {
        .sheet = sheet, .function = function, .first = first, .second = second, .page = {}, .title = {}};
    if (function != CPSFUNC_ADD_PROPSHEETPAGEW) {
        fake.calls.push_back(std::move(call));
        return 1;
    }
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(first);
    const auto* page = reinterpret_cast<const PROPSHEETPAGEW*>(first);
    call.page.assign(bytes, bytes + page->dwSize);
    if ((page->dwFlags & PSP_USETITLE) != 0) {
        call.title = page->pszTitle;
    }
    const auto added =
        static_cast<std::size_t>(std::count_if(fake.calls.begin(), fake.calls.end(), [](const Call& other) {
            return other.function == CPSFUNC_ADD_PROPSHEETPAGEW;
        }));
    fake.calls.push_back(std::move(call));
    return fake.answer ? fake.answer(added) : kFirstPage + static_cast<LONG_PTR>(added);
}

}  // namespace pages

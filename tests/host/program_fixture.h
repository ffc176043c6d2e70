// The finished host program as another program starts it, in a folder of its own.
#pragma once

#include <windows.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "pages/page_fixture.h"
#include "utf8.h"

struct ProgramRun {
    DWORD exit_code = 0;
    std::string output;
    std::string errors;
};

class HostProgramTest : public pages::PageTest {
  protected:
    void SetUp() override {
        PageTest::SetUp();
        // A folder that is new: what an earlier run left in one could pass for the program's work.
        int number = 0;
        do {
            folder_ = std::filesystem::temp_directory_path() / (L"kvmr72 host " + std::to_wstring(++number));
        } while (!std::filesystem::create_directory(folder_));
    }
    void TearDown() override {
        std::error_code error;
        std::filesystem::remove_all(folder_, error);
        PageTest::TearDown();
    }

    std::filesystem::path File(const wchar_t* name) const { return folder_ / name; }

    // Starts KVMR72Host.exe in the test's folder and waits for its end.
    ProgramRun Run(const std::wstring& arguments) {
        wchar_t own_path[1024] = {};
        GetModuleFileNameW(nullptr, own_path, static_cast<DWORD>(std::size(own_path)));
        const std::filesystem::path program =
            std::filesystem::path(own_path).parent_path() / L"KVMR72Host.exe";
        std::wstring command = L"\"" + program.native() + L"\" " + arguments;

        // New files each time: processes that the system starts for the program inherit them and may keep
        // them open beyond its end.
        const std::wstring number = std::to_wstring(++runs_);
        const std::wstring output = L"stdout-" + number + L".txt";
        const std::wstring errors = L"stderr-" + number + L".txt";
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        const auto create = [&](const std::wstring& name) {
            const HANDLE file = CreateFileW(File(name.c_str()).c_str(), GENERIC_WRITE,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                            &inherited, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
            EXPECT_NE(file, INVALID_HANDLE_VALUE) << ToUtf8(name) << ", error " << GetLastError();
            return file;
        };
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = INVALID_HANDLE_VALUE;
        startup.hStdOutput = create(output);
        startup.hStdError = create(errors);
        PROCESS_INFORMATION process = {};
        ProgramRun run;
        if (CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                           folder_.c_str(), &startup, &process)) {
            // Above the program's own watchdog, which tells more.
            if (WaitForSingleObject(process.hProcess, 90000) != WAIT_OBJECT_0) {
                ADD_FAILURE() << "the program does not end";
                TerminateProcess(process.hProcess, 98);
                WaitForSingleObject(process.hProcess, 10000);
            }
            GetExitCodeProcess(process.hProcess, &run.exit_code);
            CloseHandle(process.hThread);
            CloseHandle(process.hProcess);
        } else {
            ADD_FAILURE() << program << " does not start, error " << GetLastError();
        }
        CloseHandle(startup.hStdOutput);
        CloseHandle(startup.hStdError);
        run.output = Text(output.c_str());
        run.errors = Text(errors.c_str());
        return run;
    }

    std::string Text(const wchar_t* name) const {
        const auto bytes = rig::ReadBytes(File(name));
        EXPECT_TRUE(bytes.has_value()) << "no file " << ToUtf8(name);
        return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    }

  private:
    std::filesystem::path folder_;
    int runs_ = 0;
};

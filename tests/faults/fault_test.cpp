// Each call into the platform that can fail, failing in turn: the program that prints goes on, what was
// started at the spooler is ended, nothing is left behind, and the user is told where that is promised.
//
// Only a sample of the calls fails, another one each day: KVMR72_FAULTS in the environment is its size in
// each scenario, and KVMR72_FAULT_SEED brings another day's back.
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <set>
#include <thread>

#include "faults/fault_calls.h"
#include "faults/fault_scenarios.h"
#include "pages/page_fixture.h"
#include "pages/printer_fixture.h"
#include "rig/process_objects.h"
#include "rig/test_desktop.h"

namespace {

using faults::FaultCalls;
using faults::FaultPlan;
using faults::Scenario;

// Counting windows, menus and icons takes as long as a short run: it is done with a call in ten, and without
// a fault.
constexpr int kUserObjectsEach = 10;

// As many allocations in a row fail as a burst.
constexpr int kBurst = 6;

// Only the runtime's start-up asks for zeroed memory: for the list of what runs when the DLL goes. Without it
// nothing does, and the texts stay. A text that a window did not take in time is left to the window.
constexpr std::string_view kLeaveMemory[] = {"calloc", "SendMessageTimeoutW"};

// Only the linked-in runtime has it: for more variables of a thread's own than there are, and for the name of
// an exception that nobody catches.
constexpr std::string_view kNotCalled[] = {"realloc"};

// So many of a scenario's calls fail.
std::size_t WantedSample() {
    constexpr std::size_t kUsual = 3;
    const char* const wanted = std::getenv("KVMR72_FAULTS");
    return wanted == nullptr ? kUsual : std::strtoul(wanted, nullptr, 10);
}

// What the sample is drawn with: the day, unless it is given.
unsigned Seed() {
    using Days = std::chrono::days;
    const char* const wanted = std::getenv("KVMR72_FAULT_SEED");
    const auto today = std::chrono::floor<Days>(std::chrono::system_clock::now()).time_since_epoch();
    return wanted == nullptr ? static_cast<unsigned>(today.count())
                             : static_cast<unsigned>(std::strtoul(wanted, nullptr, 10));
}

// What is tried at the moment, for a report that there is no more time to write.
std::string now_trying;
std::atomic<std::int64_t> tried_since = 0;

void Announce() {
    std::printf("while trying: %s\n", now_trying.c_str());
    std::fflush(stdout);
}

LPTOP_LEVEL_EXCEPTION_FILTER next_filter = nullptr;

LONG WINAPI AnnounceCrash(EXCEPTION_POINTERS* exception) {
    Announce();
    return next_filter != nullptr ? next_filter(exception) : EXCEPTION_CONTINUE_SEARCH;
}

void AnnounceAbort(int) {
    std::printf("CRASH: abort");
    void* frames[24] = {};
    const USHORT count = CaptureStackBackTrace(0, static_cast<DWORD>(std::size(frames)), frames, nullptr);
    const auto base =
        reinterpret_cast<std::uintptr_t>(GetModuleHandleW(rig::PluginPath().filename().c_str()));
    for (USHORT i = 0; i < count; ++i) {
        const auto offset = reinterpret_cast<std::uintptr_t>(frames[i]) - base;
        constexpr std::uintptr_t kLargestImage = 1u << 24;
        if (offset < kLargestImage) {
            std::printf(" +%#llx", static_cast<unsigned long long>(offset));
        }
    }
    std::printf("\n");
    Announce();
    TerminateProcess(GetCurrentProcess(), 5);
}

std::int64_t Seconds() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void WatchForHangs() {
    constexpr std::int64_t kLongest = 45;
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const std::int64_t since = tried_since;
        if (since != 0 && Seconds() - since > kLongest) {
            std::printf("HUNG\n");
            Announce();
            TerminateProcess(GetCurrentProcess(), 99);
        }
    }
}

void ReportOnce() {
    static const bool reports = [] {
        next_filter = SetUnhandledExceptionFilter(&AnnounceCrash);
        std::signal(SIGABRT, &AnnounceAbort);
        std::thread(WatchForHangs).detach();
        // The tests' own runtime keeps something of its first exception.
        try {
            throw HostError("");
        } catch (const HostError&) {
        }
        return true;
    }();
    static_cast<void>(reports);
}

// What a run leaves, the same for a run with a fault as for one without.
struct Remains {
    std::map<std::string, int> left;
    int gdi_objects = 0;
    std::optional<int> user_objects;  // where they were counted
    int handles = 0;
};

struct Outcome {
    int calls = 0;
    int memory_calls = 0;
    std::string failed;
    std::string function;
    std::string step;
    int failed_call = 0;
    std::map<faults::StepCall, int> called;
    Remains remains;
    std::vector<std::wstring> boxes;
    std::vector<std::string> spooler;
    int stray_frees = 0;
};

std::string Listed(const std::map<std::string, int>& left) {
    std::string text;
    for (const auto& [what, count] : left) {
        text += what + " x " + std::to_string(count) + "\n";
    }
    return text;
}

int CountCalls(const std::vector<std::string>& log, const std::string& function, bool succeeded) {
    return static_cast<int>(std::ranges::count_if(log, [&](const std::string& line) {
        return line.starts_with(function + "(") && (!succeeded || line.find("-> FALSE") == std::string::npos);
    }));
}

// The printer's sheet on a thread of its own, as a desktop shell opens it beside another sheet. Its pages
// were worked once the constructor returns; it closes with the object.
class SheetBeside {
  public:
    SheetBeside(const Scenario& scenario, FaultCalls& calls, HANDLE printer, bool tolerates)
        : thread_([this, &scenario, &calls, printer, tolerates] {
              rig::JoinOwnDesktop();
              Open(scenario, calls, printer, tolerates);
              SetEvent(worked_);
          }) {
        WaitForSingleObject(worked_, INFINITE);
    }
    SheetBeside(const SheetBeside&) = delete;
    SheetBeside& operator=(const SheetBeside&) = delete;
    ~SheetBeside() {
        SetEvent(done_);
        thread_.join();
        CloseHandle(worked_);
        CloseHandle(done_);
    }

  private:
    void Open(const Scenario& scenario, FaultCalls& calls, HANDLE printer, bool tolerates) {
        try {
            HostSettings settings;
            settings.printer = printer;
            PluginHost host(rig::PluginPath(), std::move(settings));
            RunDriven([&] { host.OpenSheet(SheetKind::kPrinter); },
                      [&](UiDriver& ui) {
                          rig::JoinOwnDesktop();
                          const Sheet sheet = ui.WaitForSheet();
                          scenario.beside(faults::Script(ui, sheet, calls, tolerates));
                          SetEvent(worked_);
                          WaitForSingleObject(done_, INFINITE);
                          sheet.PressCancel();
                      });
        } catch (const HostError& refused) {
            EXPECT_TRUE(tolerates) << refused.what();
        } catch (const UiError& lost) {
            ADD_FAILURE() << now_trying << ", in the sheet beside: " << lost.what();
        }
    }

    const HANDLE worked_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE done_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread thread_;
};

// Of each scenario's run without a fault.
std::map<std::string, Outcome> clean_runs;

class ScenarioTest : public pages::PageTest {
  protected:
    void SetUp() override {
        ReportOnce();
        PageTest::SetUp();
        std::error_code error;
        std::filesystem::create_directories(ControlFontFile().parent_path(), error);
    }

    void TearDown() override {
        PageTest::TearDown();
        std::error_code error;
        std::filesystem::remove(ControlFontFile(), error);
    }

    // Run once for all tests, unless one has failed.
    Outcome CleanRun(const Scenario& scenario) {
        const auto known = clean_runs.find(scenario.name);
        if (known != clean_runs.end()) {
            return known->second;
        }
        Outcome outcome;
        // What the system makes once, it makes now.
        for (int i = 0; i < 2; ++i) {
            now_trying = std::string(scenario.name) + " without a fault";
            outcome = Run(scenario, {});
        }
        if (!HasFailure()) {
            clean_runs[scenario.name] = outcome;
        }
        return outcome;
    }

    static std::filesystem::path ControlFontFile() {
        wchar_t windows[MAX_PATH] = {};
        GetWindowsDirectoryW(windows, MAX_PATH);
        return std::filesystem::path(windows) / L"system32\\spool\\drivers\\w32x86\\3\\KVMR72CONTROL.dat";
    }

    // The scenario with a fault, from a machine as it was before the first run.
    Outcome Run(const Scenario& scenario, const FaultPlan& plan) {
        rig::SetLanguageValue(L"IsFirstRun_KVMR72", L"FALSE");
        pages::ChooseLanguage(pages::kEnglish);
        pages::InstallUserFile(pages::kEnglish);
        faults::MakeScenarioFiles();
        if (scenario.is_first_use) {
            rig::RemoveLanguageKey();
            rig::RemoveUserFolder();
        }
        std::error_code error;
        std::filesystem::remove(ControlFontFile(), error);
        Outcome outcome;
        const int gdi_objects = rig::CountGdiObjects();
        const bool counts_user_objects = plan.first % kUserObjectsEach == 0;
        const int user_objects = counts_user_objects ? rig::CountUserObjects() : 0;
        const int handles = rig::CountHandles();
        {
            VirtualPrinter printer;
            FaultCalls calls(printer, plan);
            calls.answers.folder = rig::UserFolder().wstring();
            tried_since = Seconds();
            Work(scenario, calls, printer, plan);
            tried_since = 0;
            outcome.calls = calls.calls();
            outcome.memory_calls = calls.memory_calls();
            outcome.failed = calls.failed();
            outcome.function = calls.failed_function();
            outcome.step = calls.failed_step();
            outcome.failed_call = calls.failed_call();
            outcome.called = calls.called();
            outcome.boxes = calls.boxes();
            outcome.spooler = printer.Log();
            outcome.remains.left = calls.Left();
            outcome.stray_frees = calls.stray_frees();
        }
        outcome.remains.gdi_objects = rig::CountGdiObjects() - gdi_objects;
        if (counts_user_objects) {
            outcome.remains.user_objects = rig::CountUserObjects() - user_objects;
        }
        outcome.remains.handles = rig::CountHandles() - handles;
        return outcome;
    }

  private:
    void Work(const Scenario& scenario, FaultCalls& calls, VirtualPrinter& printer, const FaultPlan& plan) {
        const bool tolerates = plan.first != 0;
        try {
            HostSettings settings;
            settings.printer = printer.handle();
            StartHost(std::move(settings));
            std::unique_ptr<SheetBeside> beside;
            if (scenario.beside != nullptr) {
                beside = std::make_unique<SheetBeside>(scenario, calls, printer.handle(), tolerates);
            }
            if (scenario.sheet) {
                RunDriven([&] { Host().OpenSheet(*scenario.sheet); },
                          [&](UiDriver& ui) {
                              rig::JoinOwnDesktop();
                              const Sheet sheet = ui.WaitForSheet();
                              scenario.work(faults::Script(ui, sheet, calls, tolerates));
                              sheet.PressCancel();
                          });
            }
        } catch (const HostError& refused) {
            EXPECT_TRUE(tolerates) << refused.what();
        } catch (const UiError& lost) {
            ADD_FAILURE() << now_trying << ": " << lost.what();
        }
        StopHost();
    }
};

class FaultTest : public ScenarioTest, public testing::WithParamInterface<Scenario> {
  protected:
    void SetUp() override {
        ScenarioTest::SetUp();
        clean_ = CleanRun(GetParam());
        ASSERT_FALSE(HasFailure());
    }

    // All calls from 1 to `calls` in turn, or a sample of them.
    void TryEach(int calls, const FaultPlan& burst) {
        std::vector<int> numbers(static_cast<std::size_t>(calls));
        std::iota(numbers.begin(), numbers.end(), 1);
        if (const std::size_t wanted = WantedSample(); wanted < numbers.size()) {
            std::seed_seq seeds = {Seed(), static_cast<unsigned>(calls)};
            std::mt19937 random(seeds);
            std::ranges::shuffle(numbers, random);
            numbers.resize(wanted);
        }
        for (const int number : numbers) {
            FaultPlan plan = burst;
            plan.first = number;
            now_trying = std::string(GetParam().name) + ", call " + std::to_string(number) +
                         (plan.memory_only ? " for memory and those behind it" : "");
            Outcome outcome = Run(GetParam(), plan);
            // The system may have kept something of its own this time: what the plug-in leaves, it leaves
            // again.
            for (int i = 0; i < 2 && LeavesObjects(outcome); ++i) {
                outcome = Run(GetParam(), plan);
            }
            SCOPED_TRACE(now_trying + ": " + outcome.failed + " in step \"" + outcome.step + "\"");
            Judge(outcome);
        }
        std::printf("%s: %d calls, %d tried, KVMR72_FAULT_SEED=%u\n", GetParam().name, calls,
                    static_cast<int>(numbers.size()), Seed());
        std::fflush(stdout);
    }

    Outcome clean_;

  private:
    // As many as without a fault where they were not counted.
    int UserObjects(const Outcome& outcome) const {
        return outcome.remains.user_objects.value_or(clean_.remains.user_objects.value_or(0));
    }

    bool LeavesObjects(const Outcome& outcome) const {
        return outcome.remains.gdi_objects > clean_.remains.gdi_objects ||
               UserObjects(outcome) > UserObjects(clean_) || outcome.remains.handles > clean_.remains.handles;
    }

    void Judge(const Outcome& outcome) const {
        if (std::ranges::find(kLeaveMemory, outcome.function) == std::end(kLeaveMemory)) {
            EXPECT_EQ(Listed(outcome.remains.left), Listed(clean_.remains.left));
        }
        EXPECT_LE(outcome.remains.gdi_objects, clean_.remains.gdi_objects);
        EXPECT_LE(UserObjects(outcome), UserObjects(clean_));
        EXPECT_LE(outcome.remains.handles, clean_.remains.handles);
        EXPECT_EQ(outcome.stray_frees, 0);
        const auto& log = outcome.spooler;
        EXPECT_EQ(CountCalls(log, "StartDocPrinterW", true), CountCalls(log, "EndDocPrinter", false));
        EXPECT_EQ(CountCalls(log, "StartPagePrinter", true), CountCalls(log, "EndPagePrinter", false));
        for (const faults::ToldFault& told : GetParam().told) {
            if (outcome.step == told.step && outcome.function == told.function &&
                (told.call == 0 || told.call == outcome.failed_call)) {
                EXPECT_THAT(outcome.boxes, testing::Contains(std::wstring(told.text)));
            }
        }
    }
};

std::string TestName(const testing::TestParamInfo<Scenario>& info) {
    std::string name;
    bool is_start = true;
    for (const char* c = info.param.name; *c != '\0'; ++c) {
        if (*c != ' ') {
            name += is_start ? static_cast<char>(std::toupper(static_cast<unsigned char>(*c))) : *c;
        }
        is_start = *c == ' ';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, FaultTest,
                         testing::ValuesIn(faults::Scenarios().begin(), faults::Scenarios().end()), TestName);

// As "KERNEL32.dll!ReadFile".
std::set<std::string> ImportsOf(HMODULE module) {
    std::set<std::string> imports;
    const auto* const base = reinterpret_cast<const std::uint8_t*>(module);
    const auto at = [base](auto type, std::size_t offset) {
        return static_cast<decltype(type)>(static_cast<const void*>(base + offset));
    };
    const auto* const dos = at(static_cast<const IMAGE_DOS_HEADER*>(nullptr), 0);
    const auto* const nt =
        at(static_cast<const IMAGE_NT_HEADERS64*>(nullptr), static_cast<std::size_t>(dos->e_lfanew));
    const auto* import = at(static_cast<const IMAGE_IMPORT_DESCRIPTOR*>(nullptr),
                            nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    for (; import->Name != 0; ++import) {
        const std::string dll = at(static_cast<const char*>(nullptr), import->Name);
        const auto* name = at(static_cast<const IMAGE_THUNK_DATA64*>(nullptr), import->OriginalFirstThunk);
        for (; name->u1.AddressOfData != 0; ++name) {
            imports.insert(dll + '!' +
                           at(static_cast<const char*>(nullptr), name->u1.AddressOfData + sizeof(WORD)));
        }
    }
    return imports;
}

// What the plug-in newly calls is to be told apart: can it fail, and how?
TEST(FaultCallsTest, KnowsEveryFunctionThatIsImported) {
    const rig::PluginDll plugin;
    std::set<std::string> known;
    for (const auto& functions :
         {faults::FallibleFunctions(), faults::HarmlessFunctions(), faults::RuntimeFunctions()}) {
        for (const std::string& function : functions) {
            EXPECT_TRUE(known.insert(function).second) << function << " stands in two lists";
        }
    }
    const std::set<std::string> imports = ImportsOf(plugin.module());
    EXPECT_GT(imports.size(), 100u);
    for (const std::string& import : imports) {
        EXPECT_TRUE(known.contains(import)) << import << " stands in no list";
    }
    for (const std::string& function : known) {
        EXPECT_TRUE(imports.contains(function) || faults::IsFoundByName(function))
            << function << " is not imported";
    }
}

// What a scenario promises to play or to have said, its run without a fault comes to.
TEST_F(ScenarioTest, EachPlaysWhatItIsFor) {
    for (const Scenario& scenario : faults::Scenarios()) {
        SCOPED_TRACE(scenario.name);
        const Outcome clean = CleanRun(scenario);
        const auto count = [&clean](const char* step, const char* function) {
            const auto found = clean.called.find({step, function});
            return found != clean.called.end() ? found->second : 0;
        };
        for (const faults::PlayedCall& played : scenario.played) {
            EXPECT_GE(count(played.step, played.function), played.times)
                << played.step << ", " << played.function;
        }
        for (const faults::ToldFault& told : scenario.told) {
            EXPECT_GE(count(told.step, told.function), std::max(told.call, 1))
                << told.step << ", " << told.function;
        }
    }
}

TEST_F(ScenarioTest, TogetherCallEveryFunctionThatCanFail) {
    std::set<std::string> expected;
    for (const std::string& function : faults::FallibleFunctions()) {
        expected.insert(function.substr(function.find('!') + 1));
    }
    for (const std::string_view function : kNotCalled) {
        EXPECT_EQ(expected.erase(std::string(function)), 1u) << function;
    }
    std::set<std::string> called;
    for (const Scenario& scenario : faults::Scenarios()) {
        for (const auto& [call, count] : CleanRun(scenario).called) {
            called.insert(call.second);
        }
    }
    EXPECT_EQ(called, expected);
}

TEST_P(FaultTest, AnyCallMayFail) {
    TryEach(clean_.calls, {});
}

TEST_P(FaultTest, MemoryMayStayOut) {
    TryEach(clean_.memory_calls, {.count = std::numeric_limits<int>::max(), .memory_only = true});
}

TEST_P(FaultTest, MemoryMayRunOut) {
    TryEach(clean_.memory_calls, {.count = kBurst, .memory_only = true});
}

}  // namespace

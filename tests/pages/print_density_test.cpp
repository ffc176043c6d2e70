// The driver's own print-density option in the plug-in's language: which items count as one, where the new
// texts lie, and that nothing is cut or overrun whatever the host's texts hold. Each text of the host lies in
// a guarded block exactly as long as the text.
#include "page_fixture.h"

namespace {

using pages::ChooseLanguage;
using pages::FakeSheet;
using pages::kEnglish;
using pages::kSimplifiedChinese;
using pages::kTraditionalChinese;
using pages::WriteUserFile;
using rig::Lines;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr DWORD kChanged = 0x08;

using Texts = std::vector<std::wstring>;

OptionSource Density(Texts values) {
    return {.name = L"Level", .level = 2, .values = std::move(values)};
}

// What an item and its list hold, to see that nothing of it was touched.
struct ItemState {
    explicit ItemState(const OPTITEM& item)
        : bytes(reinterpret_cast<const std::uint8_t*>(&item),
                reinterpret_cast<const std::uint8_t*>(&item) + sizeof item),
          name(item.pName) {
        if (item.pOptType != nullptr && item.pOptType->pOptParam != nullptr) {
            for (WORD i = 0; i < item.pOptType->Count; ++i) {
                wchar_t* const text = item.pOptType->pOptParam[i].pData;
                pointers.push_back(text);
                texts.emplace_back(text == nullptr || IS_INTRESOURCE(text) ? L"" : text);
            }
        }
    }
    bool operator==(const ItemState&) const = default;

    std::vector<std::uint8_t> bytes;
    std::wstring name;
    std::vector<const wchar_t*> pointers;
    Texts texts;
};

class PrintDensityTest : public pages::PageTest {
  protected:
    PluginHost& StartWith(std::vector<OptionSource> options) {
        HostSettings settings;
        settings.options = std::move(options);
        return StartHost(std::move(settings));
    }

    // Initialises and ends a sheet over the host's items.
    void PassSheet() {
        ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
        PassSheetOverPresentItems();
    }

    void PassSheetOverPresentItems() {
        FakeSheet sheet;
        EXPECT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, 0), S_OK);
        EXPECT_FALSE(sheet.calls.empty());
        EXPECT_EQ(Host().plugin().DocumentPropertySheets(sheet.ForReason(PROPSHEETUI_REASON_DESTROY), 0),
                  S_OK);
        EXPECT_TRUE(Host().GuardsIntact());
    }

    void PassSheetIn(const wchar_t* language) {
        ChooseLanguage(language);
        PassSheet();
    }

    OPTITEM& Item(std::size_t index = 0) { return Host().options().item(index); }
    OPTPARAM& Value(std::size_t value, std::size_t index = 0) {
        return Item(index).pOptType->pOptParam[value];
    }
    Texts Values(std::size_t index = 0) { return Host().options().Values(index); }
    bool IsRelabelled(std::size_t index = 0) { return (Item(index).Flags & kChanged) != 0; }

    // What is traced behind the last line about a page's description.
    static Lines LinesBehindThePages(const Lines& lines) {
        const auto last = std::find_if(lines.rbegin(), lines.rend(), [](const std::wstring& line) {
            return line.starts_with(L"UI:  Init ");
        });
        EXPECT_NE(last, lines.rend());
        return {last.base(), lines.end()};
    }

    std::vector<const wchar_t*> Buffers(std::size_t index = 0) {
        std::vector<const wchar_t*> buffers;
        for (WORD i = 0; i < Item(index).pOptType->Count; ++i) {
            buffers.push_back(Value(i, index).pData);
        }
        return buffers;
    }
};

// In the real sheet

TEST_F(PrintDensityTest, RelabelsTheDriversOption) {
    const ItemState forms(Item(DriverOptions::kForms));
    const ItemState heading(Item(DriverOptions::kHeading));
    const ItemState quality(Item(DriverOptions::kQuality));
    const auto buffers = Buffers(DriverOptions::kDensity);
    Item(DriverOptions::kDensity).pName = const_cast<wchar_t*>(L"Level");
    OpenSheet([](UiDriver&, Sheet& sheet) { sheet.PressOk(); });
    EXPECT_EQ(Host().options().Name(DriverOptions::kDensity), L"Print Density");
    EXPECT_THAT(Values(DriverOptions::kDensity),
                ElementsAre(L"Density0", L"Density1", L"Density2", L"Density3", L"Density4"));
    EXPECT_EQ(Buffers(DriverOptions::kDensity), buffers) << "they fit where the host's texts were";
    EXPECT_EQ(Item(DriverOptions::kDensity).Flags, kChanged);
    EXPECT_EQ(Item(DriverOptions::kDensity).Sel, 2);
    EXPECT_EQ(ItemState(Item(DriverOptions::kForms)), forms);
    EXPECT_EQ(ItemState(Item(DriverOptions::kHeading)), heading);
    EXPECT_EQ(ItemState(Item(DriverOptions::kQuality)), quality);
}

TEST_F(PrintDensityTest, TellsTheDriverOfTheChange) {
    OpenSheet([](UiDriver&, Sheet& sheet) { sheet.PressCancel(); });
    const std::vector<HelperCall>& calls = Host().helper().calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].method, "DrvUpdateUISetting");
    EXPECT_EQ(calls[0].context, Host().common_ui().poemuiobj);
    EXPECT_EQ(calls[0].option, &Item(DriverOptions::kDensity));
    EXPECT_EQ(calls[0].previous_selection, 0u);
    EXPECT_EQ(calls[0].mode, 1u);
}

TEST_F(PrintDensityTest, ShowsTheChosenLanguageInTheRealSheet) {
    for (int i = 0; i < 2; ++i) {
        ChooseLanguage(kSimplifiedChinese);
        OpenSheet([](UiDriver&, Sheet& sheet) { sheet.PressOk(); });
        EXPECT_EQ(Host().options().Name(DriverOptions::kDensity), L"打印浓度");
        EXPECT_THAT(Values(DriverOptions::kDensity),
                    ElementsAre(L"浓度0", L"浓度1", L"浓度2", L"浓度3", L"浓度4"));
        ChooseLanguage(kTraditionalChinese);
        OpenSheet([](UiDriver&, Sheet& sheet) { sheet.PressOk(); });
        EXPECT_EQ(Host().options().Name(DriverOptions::kDensity), L"列印濃度");
        EXPECT_THAT(Values(DriverOptions::kDensity),
                    ElementsAre(L"濃度0", L"濃度1", L"濃度2", L"濃度3", L"濃度4"));
        ChooseLanguage(kEnglish);
        OpenSheet([](UiDriver&, Sheet& sheet) { sheet.PressOk(); });
        EXPECT_EQ(Host().options().Name(DriverOptions::kDensity), L"Print Density");
        EXPECT_THAT(Values(DriverOptions::kDensity),
                    ElementsAre(L"Density0", L"Density1", L"Density2", L"Density3", L"Density4"));
        EXPECT_TRUE(Host().GuardsIntact());
    }
}

// Which items

TEST_F(PrintDensityTest, KnowsItsOptionByTheFirstValue) {
    for (const wchar_t* text : {L"Level Density 1", L"Density", L"XDensityX", L"浓度", L"打印浓度 1", L"濃度",
                                L"濃度 1", L"Density 浓度"}) {
        StartWith({Density({text, L"two"})});
        PassSheet();
        EXPECT_TRUE(IsRelabelled()) << std::filesystem::path(text);
        EXPECT_THAT(Values(), ElementsAre(L"Density0", L"Density1")) << std::filesystem::path(text);
        EXPECT_EQ(Host().options().Name(0), L"Print Density") << std::filesystem::path(text);
        EXPECT_EQ(Host().helper().calls().size(), 1u) << std::filesystem::path(text);
    }
}

TEST_F(PrintDensityTest, LeavesOtherOptionsAlone) {
    std::vector<OptionSource> options = {
        {.name = L"Speed", .level = 2, .values = {L"Fast", L"Level Density 2"}},
        {.name = L"Density", .level = 2, .values = {L"Level density 1"}},
        {.name = L"DENSITY", .level = 2, .values = {L"DENSITY 1"}},
        {.name = L"Split", .level = 2, .values = {L"浓 度", L"Dens ity"}},
        {.name = L"Empty", .level = 2, .values = {L""}},
        {.name = L"Top", .level = 1, .values = {L"Level Density 1"}},
        {.name = L"Root", .level = 0, .values = {L"Level Density 1"}},
        {.name = L"Deep", .level = 3, .values = {L"Level Density 1"}},
        {.name = L"Form", .level = 2, .dm_pub_id = DMPUB_FORMNAME, .values = {L"Level Density 1"}},
        {.name = L"Public", .level = 2, .dm_pub_id = 1, .values = {L"Level Density 1"}},
        {.name = L"Own", .level = 2, .dm_pub_id = 101, .values = {L"Level Density 1"}},
        {.name = L"Heading", .level = 2, .values = {}},
    };
    StartWith(options);
    std::vector<ItemState> before;
    for (std::size_t i = 0; i < options.size(); ++i) {
        Item(i).Flags = 0x40;
        before.emplace_back(Item(i));
    }
    rig::TraceCapture trace;
    PassSheet();
    for (std::size_t i = 0; i < options.size(); ++i) {
        EXPECT_EQ(ItemState(Item(i)), before[i]) << i;
    }
    EXPECT_THAT(Host().helper().calls(), IsEmpty());
    for (const std::wstring& line : trace.Take()) {
        EXPECT_EQ(line.find(L"GPDIndex"), std::wstring::npos);
    }
}

TEST_F(PrintDensityTest, RelabelsEveryDensityOptionInTurn) {
    StartWith({Density({L"Level Density 1"}),
               {.name = L"Speed", .level = 2, .values = {L"Fast"}},
               Density({L"浓度 1", L"x"}),
               Density({L"Level Density 9", L"Level Density 8", L"Level Density 7"})});
    Item(0).Flags = 0x40;
    PassSheet();
    EXPECT_EQ(Item(0).Flags, 0x48u) << "the other flags stay";
    EXPECT_THAT(Values(0), ElementsAre(L"Density0"));
    EXPECT_THAT(Values(1), ElementsAre(L"Fast"));
    EXPECT_THAT(Values(2), ElementsAre(L"Density0", L"Density1"));
    EXPECT_THAT(Values(3), ElementsAre(L"Density0", L"Density1", L"Density2"));
    const std::vector<HelperCall>& calls = Host().helper().calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0].option, &Item(0));
    EXPECT_EQ(calls[1].option, &Item(2));
    EXPECT_EQ(calls[2].option, &Item(3));
}

TEST_F(PrintDensityTest, TracesEveryValueAndTheLastAgain) {
    StartWith({Density({L"Level Density 1", L"Level Density 2"}), Density({L"Level Density 1"})});
    ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
    FakeSheet sheet;
    rig::TraceCapture trace;
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, 0), S_OK);
    EXPECT_THAT(LinesBehindThePages(trace.Take()),
                ElementsAre(L"GPDIndex       = Density0\r\n", L"GPDIndex       = Density1\r\n",
                            L"GPDIndex       =1111 Density1\r\n", L"GPDIndex       = Density0\r\n",
                            L"GPDIndex       =1111 Density0\r\n"));
}

TEST_F(PrintDensityTest, TracesTextsOfTheLanguage) {
    StartWith({Density({L"Level Density 1"})});
    ChooseLanguage(kTraditionalChinese);
    ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
    FakeSheet sheet;
    rig::TraceCapture trace;
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, 0), S_OK);
    EXPECT_THAT(LinesBehindThePages(trace.Take()),
                ElementsAre(L"GPDIndex       = 濃度0\r\n", L"GPDIndex       =1111 濃度0\r\n"));
}

// Where the texts lie

TEST_F(PrintDensityTest, WritesInPlaceWhatFitsToTheUnit) {
    StartWith({Density({L"Density?", L"Density", L"", L"abcdefgh", L"abcdefghi"})});
    const auto host = Buffers();
    PassSheet();
    EXPECT_THAT(Values(), ElementsAre(L"Density0", L"Density1", L"Density2", L"Density3", L"Density4"));
    const auto now = Buffers();
    EXPECT_EQ(now[0], host[0]);
    EXPECT_NE(now[1], host[1]);
    EXPECT_NE(now[2], host[2]);
    EXPECT_EQ(now[3], host[3]);
    EXPECT_EQ(now[4], host[4]);
    EXPECT_STREQ(host[1], L"Density") << "a text that does not fit leaves the host's alone";
    EXPECT_STREQ(host[2], L"");
}

TEST_F(PrintDensityTest, CountsBeyondNine) {
    Texts values(12, L"Density?");
    StartWith({Density(values)});
    const auto host = Buffers();
    PassSheet();
    EXPECT_EQ(Values()[9], L"Density9");
    EXPECT_EQ(Values()[10], L"Density10");
    EXPECT_EQ(Values()[11], L"Density11");
    const auto now = Buffers();
    EXPECT_EQ(now[9], host[9]);
    EXPECT_NE(now[10], host[10]);
}

TEST_F(PrintDensityTest, KeepsShortHostTextsWholeInEveryLanguage) {
    StartWith({Density({L"浓度 1", L"浓度 2", L"浓度 3"})});
    for (int i = 0; i < 3; ++i) {
        PassSheetIn(kEnglish);
        EXPECT_THAT(Values(), ElementsAre(L"Density0", L"Density1", L"Density2"));
        EXPECT_EQ(Host().options().Name(0), L"Print Density");
        PassSheetIn(kSimplifiedChinese);
        EXPECT_THAT(Values(), ElementsAre(L"浓度0", L"浓度1", L"浓度2"));
        EXPECT_EQ(Host().options().Name(0), L"打印浓度");
        PassSheetIn(kTraditionalChinese);
        EXPECT_THAT(Values(), ElementsAre(L"濃度0", L"濃度1", L"濃度2"));
        EXPECT_EQ(Host().options().Name(0), L"列印濃度");
        PassSheetIn(kEnglish);
        EXPECT_THAT(Values(), ElementsAre(L"Density0", L"Density1", L"Density2"));
    }
}

TEST_F(PrintDensityTest, SwitchesWithinOneSheetThatIsInitialisedAgain) {
    StartWith({Density({L"Level Density 1", L"D"})});
    ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
    for (const auto& [language, first, second] :
         {std::tuple(kSimplifiedChinese, L"浓度0", L"浓度1"), std::tuple(kEnglish, L"Density0", L"Density1"),
          std::tuple(kTraditionalChinese, L"濃度0", L"濃度1"),
          std::tuple(kEnglish, L"Density0", L"Density1")}) {
        ChooseLanguage(language);
        FakeSheet sheet;
        EXPECT_EQ(Host().plugin().DocumentPropertySheets(&sheet.info, 0), S_OK);
        EXPECT_THAT(Values(), ElementsAre(first, second));
        EXPECT_TRUE(Host().GuardsIntact());
    }
}

// The host may make its items anew at the same place, with shorter texts than before.
TEST_F(PrintDensityTest, MeasuresAnewForEachSheet) {
    StartWith({Density({L"Level Density 1", L"Level Density 2"})});
    const GuardedBlock text(5 * sizeof(wchar_t));
    wchar_t* const first = Value(0).pData;
    PassSheet();
    EXPECT_EQ(Value(0).pData, first);
    std::copy_n(L"浓度 1", 5, text.As<wchar_t>());
    Value(0).pData = text.As<wchar_t>();
    PassSheet();
    EXPECT_THAT(Values(), ElementsAre(L"Density0", L"Density1"));
    EXPECT_TRUE(text.Intact());
    EXPECT_STREQ(text.As<wchar_t>(), L"浓度 1");
    Value(0).pData = first;
    PassSheet();
    EXPECT_EQ(Value(0).pData, first);
    std::copy_n(L"浓度", 3, first);
    PassSheet();
    EXPECT_THAT(Values(), ElementsAre(L"Density0", L"Density1"));
    EXPECT_STREQ(first, L"浓度") << "what the text holds now is all that is known of its room";
    Value(0).pData = first;
    std::copy_n(L"Density?", 9, first);
    FakeSheet unfinished;
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(&unfinished.info, 0), S_OK);
    EXPECT_EQ(Value(0).pData, first);
    std::copy_n(L"濃度", 3, first);
    FakeSheet next;
    EXPECT_EQ(Host().plugin().DocumentPropertySheets(&next.info, 0), S_OK);
    EXPECT_STREQ(first, L"濃度") << "also after a sheet whose end was not told";
}

TEST_F(PrintDensityTest, KeepsTextsThatItHandedOut) {
    StartWith({Density({L"浓度 1"})});
    PassSheet();
    const wchar_t* const english_name = Item().pName;
    const wchar_t* const english_value = Value(0).pData;
    PassSheetIn(kSimplifiedChinese);
    const wchar_t* const chinese_name = Item().pName;
    WriteUserFile(kEnglish, L"[GPD]\r\nRC_DENSITY=Darkness\r\nRC_DENSITY_INDEX=Darkness of the paper \r\n");
    PassSheetIn(kEnglish);
    EXPECT_STREQ(Item().pName, L"Darkness");
    EXPECT_STREQ(Value(0).pData, L"Darkness of the paper0");
    EXPECT_STREQ(english_name, L"Print Density");
    EXPECT_STREQ(english_value, L"Density0");
    EXPECT_STREQ(chinese_name, L"打印浓度");
}

TEST_F(PrintDensityTest, OutlivesTheObject) {
    const rig::PluginDll plugin;
    const std::vector<OptionSource> source = {Density({L"浓度 1", L"Level Density 2"})};
    DriverOptions options(source);
    OEMCUIPPARAM parameter = {};
    parameter.cbSize = sizeof parameter;
    parameter.pDrvOptItems = options.items();
    parameter.cDrvOptItems = options.count();
    {
        const auto object = plugin.CreateObject();
        ASSERT_TRUE(object);
        ASSERT_EQ(object->CommonUIProp(OEMCUIP_DOCPROP, &parameter), S_OK);
        FakeSheet sheet;
        EXPECT_EQ(object->DocumentPropertySheets(&sheet.info, 0), S_OK);
        EXPECT_EQ(object->DocumentPropertySheets(sheet.ForReason(PROPSHEETUI_REASON_DESTROY), 0), S_OK);
    }
    EXPECT_EQ(options.Name(0), L"Print Density");
    EXPECT_THAT(options.Values(0), ElementsAre(L"Density0", L"Density1"));
    EXPECT_TRUE(options.GuardsIntact());
}

TEST_F(PrintDensityTest, CutsLongCaptionsToTheirRoom) {
    StartWith({Density({std::wstring(60, L'x') + L"Density", L"x"})});
    const std::wstring longer(60, L'y');
    WriteUserFile(kEnglish, L"[GPD]\r\nRC_DENSITY=" + longer + L"\r\nRC_DENSITY_INDEX=" + longer + L"\r\n");
    PassSheet();
    const std::wstring cut(49, L'y');
    EXPECT_EQ(Host().options().Name(0), cut);
    EXPECT_THAT(Values(), ElementsAre(cut + L"0", cut + L"1"));
}

TEST_F(PrintDensityTest, NeedsNoLanguageFile) {
    StartWith({Density({L"Level Density 1"})});
    pages::RemoveAllLanguageFiles();
    PassSheetIn(kSimplifiedChinese);
    EXPECT_EQ(Host().options().Name(0), L"Print Density");
    EXPECT_THAT(Values(), ElementsAre(L"Density0"));
}

// Odd items

TEST_F(PrintDensityTest, PassesItemsWithoutValues) {
    StartWith({Density({L"Level Density 1"}), Density({L"Level Density 1"}), Density({L"Level Density 1"}),
               Density({L"Level Density 1"}), Density({L"Level Density 1"}), Density({L"Level Density 1"})});
    Item(0).pOptType = nullptr;
    Item(1).pOptType->Count = 0;
    OPTPARAM* const values = Item(2).pOptType->pOptParam;
    Item(2).pOptType->pOptParam = nullptr;
    Value(0, 3).pData = nullptr;
    Value(0, 4).pData = MAKEINTRESOURCEW(65535);
    PassSheet();
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_FALSE(IsRelabelled(i)) << i;
        EXPECT_EQ(Host().options().Name(i), L"Level") << i;
    }
    EXPECT_STREQ(values[0].pData, L"Level Density 1");
    EXPECT_EQ(Value(0, 3).pData, nullptr);
    EXPECT_EQ(Value(0, 4).pData, MAKEINTRESOURCEW(65535));
    EXPECT_THAT(Values(5), ElementsAre(L"Density0"));
    EXPECT_EQ(Host().helper().calls().size(), 1u);
}

// Only behind some types do the values hold texts to choose from.
TEST_F(PrintDensityTest, LooksAtTextsOnly) {
    for (const BYTE type :
         std::initializer_list<BYTE>{TVOT_2STATES, TVOT_3STATES, TVOT_LISTBOX, TVOT_COMBOBOX}) {
        StartWith({Density({L"Level Density 1", L"Level Density 2"})});
        Item().pOptType->Type = type;
        PassSheet();
        EXPECT_THAT(Values(), ElementsAre(L"Density0", L"Density1")) << int{type};
    }
    for (const BYTE type :
         std::initializer_list<BYTE>{TVOT_UDARROW, TVOT_TRACKBAR, TVOT_SCROLLBAR, TVOT_PUSHBUTTON}) {
        StartWith({Density({L"Level Density 1", L"Level Density 2"})});
        Item().pOptType->Type = type;
        wchar_t* const number = reinterpret_cast<wchar_t*>(ULONG_PTR{0x12345678});
        Value(0).pData = number;
        PassSheet();
        EXPECT_FALSE(IsRelabelled()) << int{type};
        EXPECT_EQ(Value(0).pData, number) << int{type};
        EXPECT_STREQ(Value(1).pData, L"Level Density 2") << int{type};
    }
}

TEST_F(PrintDensityTest, GivesTextsToValuesThatHaveNone) {
    StartWith({Density({L"Level Density 1", L"a", L"b", L"c"})});
    Item().pName = MAKEINTRESOURCEW(7);
    Value(1).pData = nullptr;
    Value(2).pData = MAKEINTRESOURCEW(1);
    Value(3).pData = MAKEINTRESOURCEW(65535);
    PassSheet();
    EXPECT_EQ(Host().options().Name(0), L"Print Density");
    EXPECT_THAT(Values(), ElementsAre(L"Density0", L"Density1", L"Density2", L"Density3"));
    PassSheetIn(kSimplifiedChinese);
    EXPECT_THAT(Values(), ElementsAre(L"浓度0", L"浓度1", L"浓度2", L"浓度3"));
}

TEST_F(PrintDensityTest, LooksAtNoItemBeyondTheCount) {
    StartWith({Density({L"Level Density 1"}), Density({L"Level Density 1"})});
    ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
    Host().common_ui().cDrvOptItems = 1;
    PassSheetOverPresentItems();
    EXPECT_TRUE(IsRelabelled(0));
    EXPECT_FALSE(IsRelabelled(1));
    Host().common_ui().cDrvOptItems = 0;
    Item(0).Flags = 0;
    PassSheetOverPresentItems();
    EXPECT_FALSE(IsRelabelled(0));
}

TEST_F(PrintDensityTest, NeedsNoList) {
    StartWith({Density({L"Level Density 1"})});
    ASSERT_EQ(Host().CommonUIProp(OEMCUIP_DOCPROP), S_OK);
    Host().common_ui().pDrvOptItems = nullptr;
    Host().common_ui().cDrvOptItems = 3;
    PassSheetOverPresentItems();
    EXPECT_FALSE(IsRelabelled());
}

// Hosts and objects

TEST_F(PrintDensityTest, NeedsNoParametersAndNoHelper) {
    const rig::PluginDll plugin;
    const auto object = plugin.CreateObject();
    ASSERT_TRUE(object);
    FakeSheet before;
    EXPECT_EQ(object->DocumentPropertySheets(&before.info, 0), S_OK);
    EXPECT_FALSE(before.calls.empty());

    const std::vector<OptionSource> source = {Density({L"Level Density 1"})};
    DriverOptions options(source);
    OEMCUIPPARAM parameter = {};
    parameter.cbSize = sizeof parameter;
    parameter.pDrvOptItems = options.items();
    parameter.cDrvOptItems = options.count();
    ASSERT_EQ(object->CommonUIProp(OEMCUIP_DOCPROP, &parameter), S_OK);
    FakeSheet sheet;
    EXPECT_EQ(object->DocumentPropertySheets(&sheet.info, 0), S_OK);
    EXPECT_EQ(options.Name(0), L"Print Density");
    EXPECT_THAT(options.Values(0), ElementsAre(L"Density0"));
}

TEST_F(PrintDensityTest, ServesTwoObjectsAtOnce) {
    const rig::PluginDll plugin;
    const std::vector<OptionSource> first_source = {Density({L"Level Density 1"})};
    const std::vector<OptionSource> second_source = {Density({L"浓度 1", L"浓度 2"})};
    DriverOptions first_options(first_source);
    DriverOptions second_options(second_source);
    DriverHelper first_helper;
    DriverHelper second_helper;
    OEMUIOBJ first_host = {};
    OEMUIOBJ second_host = {};
    const auto parameter_of = [](const DriverOptions& options, OEMUIOBJ& host) {
        OEMCUIPPARAM parameter = {};
        parameter.cbSize = sizeof parameter;
        parameter.poemuiobj = &host;
        parameter.pDrvOptItems = options.items();
        parameter.cDrvOptItems = options.count();
        return parameter;
    };
    OEMCUIPPARAM first_parameter = parameter_of(first_options, first_host);
    OEMCUIPPARAM second_parameter = parameter_of(second_options, second_host);
    {
        const auto first = plugin.CreateObject();
        const auto second = plugin.CreateObject();
        ASSERT_TRUE(first && second);
        ASSERT_EQ(first->PublishDriverInterface(&first_helper), S_OK);
        ASSERT_EQ(second->PublishDriverInterface(&second_helper), S_OK);
        ASSERT_EQ(first->CommonUIProp(OEMCUIP_DOCPROP, &first_parameter), S_OK);
        ASSERT_EQ(second->CommonUIProp(OEMCUIP_DOCPROP, &second_parameter), S_OK);
        FakeSheet first_sheet;
        FakeSheet second_sheet;
        EXPECT_EQ(first->DocumentPropertySheets(&first_sheet.info, 0), S_OK);
        ChooseLanguage(kTraditionalChinese);
        EXPECT_EQ(second->DocumentPropertySheets(&second_sheet.info, 0), S_OK);
        EXPECT_THAT(first_options.Values(0), ElementsAre(L"Density0"));
        EXPECT_THAT(second_options.Values(0), ElementsAre(L"濃度0", L"濃度1"));
        EXPECT_EQ(first->DocumentPropertySheets(first_sheet.ForReason(PROPSHEETUI_REASON_DESTROY), 0), S_OK);
        ChooseLanguage(kEnglish);
        EXPECT_EQ(second->DocumentPropertySheets(second_sheet.ForReason(PROPSHEETUI_REASON_INIT), 0), S_OK);
        EXPECT_THAT(second_options.Values(0), ElementsAre(L"Density0", L"Density1"));
        EXPECT_EQ(second->DocumentPropertySheets(second_sheet.ForReason(PROPSHEETUI_REASON_DESTROY), 0),
                  S_OK);
    }
    ASSERT_EQ(first_helper.calls().size(), 1u);
    EXPECT_EQ(first_helper.calls()[0].context, &first_host);
    EXPECT_EQ(first_helper.calls()[0].option, first_options.items());
    ASSERT_EQ(second_helper.calls().size(), 2u);
    EXPECT_EQ(second_helper.calls()[0].context, &second_host);
    EXPECT_EQ(second_helper.calls()[0].option, second_options.items());
    EXPECT_EQ(first_helper.references(), 1u);
    EXPECT_TRUE(first_options.GuardsIntact());
    EXPECT_TRUE(second_options.GuardsIntact());
}

// Two sheets over the same items, as when two windows show one printer.
TEST_F(PrintDensityTest, ServesTwoObjectsOverTheSameItems) {
    const rig::PluginDll plugin;
    const std::vector<OptionSource> source = {Density({L"Level Density 1", L"浓度"})};
    DriverOptions options(source);
    OEMCUIPPARAM parameter = {};
    parameter.cbSize = sizeof parameter;
    parameter.pDrvOptItems = options.items();
    parameter.cDrvOptItems = options.count();
    const auto first = plugin.CreateObject();
    const auto second = plugin.CreateObject();
    ASSERT_TRUE(first && second);
    ASSERT_EQ(first->CommonUIProp(OEMCUIP_DOCPROP, &parameter), S_OK);
    ASSERT_EQ(second->CommonUIProp(OEMCUIP_DOCPROP, &parameter), S_OK);
    FakeSheet first_sheet;
    FakeSheet second_sheet;
    for (int i = 0; i < 2; ++i) {
        ChooseLanguage(kSimplifiedChinese);
        EXPECT_EQ(first->DocumentPropertySheets(first_sheet.ForReason(PROPSHEETUI_REASON_INIT), 0), S_OK);
        EXPECT_THAT(options.Values(0), ElementsAre(L"浓度0", L"浓度1"));
        ChooseLanguage(kEnglish);
        EXPECT_EQ(second->DocumentPropertySheets(second_sheet.ForReason(PROPSHEETUI_REASON_INIT), 0), S_OK);
        EXPECT_THAT(options.Values(0), ElementsAre(L"Density0", L"Density1"));
        EXPECT_EQ(first->DocumentPropertySheets(first_sheet.ForReason(PROPSHEETUI_REASON_DESTROY), 0), S_OK);
        EXPECT_TRUE(options.GuardsIntact());
    }
}

}  // namespace

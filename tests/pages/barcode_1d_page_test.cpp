// The 1D Code page in the real sheet: what it shows of a record, what each of its controls stores, the height
// that it tells, and what a test print sends. Alone: each call of its procedure.
#include "barcode_fixture.h"
#include "captions.h"

namespace pages::barcode {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kTemplate = 117;

constexpr int kFont = 1020;
constexpr int kType = 1022;
constexpr int kHriPosition = 1023;
constexpr int kGs1Hri = 1025;
constexpr int kGs1Expanded = 1026;
constexpr int kPrint = 1036;
constexpr int kGs1Width = 1049;
constexpr int kGs1Row = 1050;
constexpr int kGs1Composite = 1051;
constexpr int kMillimetres = 1052;
constexpr int kWidthSpin = 1053;
constexpr int kHeightSpin = 1054;
constexpr int kPoints = 1055;
constexpr int kGs1WidthSpin = 1056;
constexpr int kGs1RowSpin = 1057;
constexpr int kGs1CompositeSpin = 1058;
constexpr int kGs1Separator = 1059;
constexpr int kFontA = 1060;
constexpr int kFontB = 1061;
constexpr int kGs1SeparatorSpin = 1066;
constexpr int kIndependence = 1099;
constexpr int kComposite = 1100;
constexpr int kData = 1104;
constexpr int kHeight = 1205;
constexpr int kWidth = 1206;

constexpr int kLists[] = {kFont, kType, kHriPosition, kGs1Hri, kGs1Expanded};

constexpr Caption kCaptions[] = {
    {1126, L"RC_STATIC_1DCODE_FONTNAME", L"Font Name:"},
    {1127, L"RC_STATIC_1DCODE_TYPE", L"Type:"},
    {1172, L"RC_STATIC_GENERALBARCODE", L"General Bar Code"},
    {1128, L"RC_STATIC_1DCODE_WIDTH", L"Element Width:"},
    {1129, L"RC_STATIC_1DCODE_HEIGHT", L"Element Height:"},
    {1170, L"RC_STATIC_1DCODE_POINT", L"point"},
    {1130, L"RC_STATIC_1DCODE_NOTICE", L"Select this font size in the application."},
    {1131, L"RC_STATIC_1DCODE_POSITION", L"HRI Position:"},
    {1132, L"RC_STATIC_1DCODE_HRIFONT", L"HRI Font:"},
    {1173, L"RC_STATIC_1DCODE_GSDATABAR", L"GS1 DataBar"},
    {1174, L"RC_STATIC_1DCODE_GSTYPE", L"Type:"},
    {1099, L"RC_RADIO_Independence1", L"Independence"},
    {1100, L"RC_RADIO_Complex1", L"Composite"},
    {1175, L"RC_STATIC_1DCODE_GSEWIDTH", L"Element Width:"},
    {1176, L"RC_STATIC_1DCODE_GSRHEIGHT", L"Row Height:"},
    {1177, L"RC_STATIC_1DCODE_GS2DRHEIGHT", L"2D Row Height:"},
    {1178, L"RC_STATIC_1DCODE_GSSHEIGHT", L"Separator Height:"},
    {1179, L"RC_STATIC_1DCODE_HRI", L"HRI:"},
    {1180, L"RC_STATIC_1DCODE_AAISTD", L"Expanded:"},
    {1181, L"RC_STATIC_1DCODE_PRINT", L"Test Print"},
    {1182, L"RC_STATIC_1DCODE_DATA", L"Data:"},
    {1036, L"RC_BUTTON_PRINT", L"Print"},
};

const std::vector<ListCaption>& ListCaptions() {
    static const std::vector<ListCaption> lists = {
        {kHriPosition,
         L"RC_STATIC_1DCODE_POSITION",
         {L"Not printed", L"Above the barcode", L"Below the barcode", L"Both above and below the barcode"}},
        {kGs1Hri,
         L"RC_CMB_HRI",
         {L"Primary and Secondary Data", L"Primary Data", L"Secondary Data", L"None"}},
        {kGs1Expanded, L"RC_CMB_AI", {L"None", SourceText(kEnglish, L"1DCODE", L"RC_CMB_AI2")}},
    };
    return lists;
}

// The same in every language.
const Texts kFontNames = {L"1D Code1", L"1D Code2", L"1D Code3", L"1D Code4",
                          L"1D Code5", L"1D Code6", L"1D Code7", L"1D Code8"};
const Texts kTypeNames = {L"UPC-A",
                          L"UPC-E",
                          L"EAN8",
                          L"EAN13",
                          L"Code39",
                          L"ITF",
                          L"Codabar",
                          L"Code93",
                          L"Code128",
                          L"GS1 DataBar Omnidirectional",
                          L"GS1 DataBar Truncated",
                          L"GS1 DataBar Limited",
                          L"GS1 DataBar Expanded"};
constexpr Caption kFixedTexts[] = {
    {1062, nullptr, L"[ 2. . 6 ]"},   {1063, nullptr, L"[ 1 . . 255 ]"},
    {1064, nullptr, L"[ 1 . . 6 ]"},  {1065, nullptr, L"[ 2 . . 250 ]"},
    {1067, nullptr, L"[ 1 . . 10 ]"}, {1068, nullptr, L"[ 1 . . 10 ]"},
    {1183, nullptr, L"mm"},           {kFontA, nullptr, L"Font A"},
    {kFontB, nullptr, L"Font B"},
};

constexpr const wchar_t* kSamples[] = {
    L"123456789012",   L"023456789012",   L"12345678",       L"1234567890123", L"123ABC*",
    L"123456789",      L"A123456789A",    L"123ABC",         L"{A1234",        L"01234567890123",
    L"01234567890123", L"01234567890123", L"01234567890123",
};
constexpr std::uint8_t kTypes = 13;
constexpr std::uint8_t kFirstDataBar = 9;
constexpr std::uint8_t kExpanded = 12;

constexpr Caption kGeneralHelps[] = {
    {kFont, L"CTEXT_FONTNAME",
     L"Select the barcode font to be set. Text that an application prints in this font is printed as "
     L"barcode."},
    {kType, L"CTEXT_BARCODETYPE", L"Select the type of barcode."},
    {kWidth, L"CTEXT_EDIT_WIDTH1D",
     L"Specify the element width of barcode. The unit of width is dot, available range is 2-6."},
    {kHeight, L"CTEXT_EDIT_HEIGHT1D",
     L"Specify the element height of barcode. The unit of height is dot, available range is 1-255."},
    {kHriPosition, L"CTEXT_HRIPOSITION",
     L"Select the print position of HRI characters (the readable text of barcode)."},
    {kFontA, L"CTEXT_FONTA", L"Print the HRI characters in Font A."},
    {kFontB, L"CTEXT_FONTB", L"Print the HRI characters in Font B."},
    {kData, L"CTEXT_EDIT_PRINT", L"Edit the barcode data for test print."},
    {kPrint, L"CTEXT_BUTTON_PRINT", L"Print a test barcode with the current settings and data."},
};
constexpr Caption kGs1Helps[] = {
    {kIndependence, L"CTEXT_RADIO_Independence1", L"Print the GS1 DataBar alone, without 2D composite part."},
    {kComposite, L"CTEXT_RADIO_Complex1",
     L"Print the GS1 DataBar with 2D composite part. The 2D row height can be set after selecting this "
     L"item."},
    {kGs1Width, L"CTEXT_EDIT_GS1WIDTH",
     L"Specify the element width of GS1 DataBar. The unit of width is dot, available range is 1-6."},
    {kGs1Row, L"CTEXT_EDIT_GS1HEIGHT",
     L"Specify the row height of GS1 DataBar. The unit of width is dot, available range is 2-250."},
    {kGs1Composite, L"CTEXT_EDIT_ComplexHEIGHT",
     L"Specify the row height of 2D composite part. This item is only enabled when Composite is selected, "
     L"available range is 1-10."},
    {kGs1Separator, L"CTEXT_EDIT_SeparatorHEIGHT",
     L"Specify the height of separator. Available range is 1-10."},
    {kGs1Hri, L"CTEXT_CMB_HRI", L"Select the data to be printed as HRI characters."},
    {kGs1Expanded, L"CTEXT_CMB_AI",
     L"Select whether application identifiers are specified in the data. This item is only enabled for GS1 "
     L"DataBar Expanded."},
};

constexpr int kGeneralControls[] = {1172, 1128, 1206, 1053, 1062, 1129, 1205, 1054, 1063, 1052,
                                    1183, 1055, 1170, 1130, 1131, 1023, 1132, 1060, 1061};
constexpr int kGs1Controls[] = {1173, 1174, 1099, 1100, 1175, 1049, 1056, 1064, 1176, 1050, 1057, 1065,
                                1177, 1051, 1058, 1067, 1178, 1059, 1066, 1068, 1179, 1025, 1180, 1026};
constexpr int kCommonControls[] = {1126, 1020, 1127, 1022, 1181, 1182, 1104, 1036};

constexpr Place kMoved[] = {
    {1173, 26, 62},   {1174, 33, 83},   {1099, 131, 83},  {1100, 231, 83},  {1175, 33, 122},
    {1049, 132, 119}, {1056, 158, 119}, {1064, 183, 122}, {1176, 228, 122}, {1050, 327, 119},
    {1057, 352, 119}, {1065, 378, 122}, {1177, 33, 161},  {1051, 132, 158}, {1058, 158, 158},
    {1067, 183, 161}, {1178, 228, 161}, {1059, 327, 158}, {1066, 353, 158}, {1068, 378, 161},
    {1179, 33, 200},  {1025, 132, 197}, {1180, 33, 239},  {1026, 132, 236},
};

void ExpectFixedTexts(const Window& page) {
    EXPECT_EQ(page.ComboItems(kFont), kFontNames);
    EXPECT_EQ(page.ComboItems(kType), kTypeNames);
    for (const Caption& fixed : kFixedTexts) {
        EXPECT_EQ(page.Text(fixed.control), fixed.english) << fixed.control;
    }
}

// A font as the record has it and as the page shows it.
struct Font {
    std::uint8_t type;
    std::uint8_t width;
    std::uint32_t height;
    std::uint8_t position;
    std::uint8_t hri_font;
    std::uint32_t font_width;
    std::uint32_t font_height;
    std::uint8_t gs1_width;
    std::uint32_t gs1_row;
    std::uint32_t gs1_composite;
    std::uint8_t gs1_separator;
    std::uint8_t gs1_hri;
    std::uint8_t gs1_expanded;
    // Of bars and HRI text, not of the stored height.
    const wchar_t* millimetres;
    const wchar_t* points;
};

// The stored sizes are none that the page would make.
constexpr Font kFontCases[] = {
    {0, 2, 12, 0, 0, 500, 124, 1, 2, 1, 10, 1, 0, L"  1.7", L"  5.0"},     // 12 dots
    {1, 3, 42, 1, 1, 501, 701, 2, 33, 4, 9, 2, 1, L"  8.3", L" 23.5"},     // 59
    {3, 4, 71, 2, 0, 502, 702, 3, 64, 7, 8, 3, 0, L" 13.4", L" 38.0"},     // 95
    {4, 5, 103, 3, 1, 503, 703, 4, 95, 10, 7, 4, 1, L" 19.3", L" 55.0"},   // 137
    {8, 6, 130, 0, 1, 504, 704, 5, 126, 3, 6, 1, 0, L" 18.3", L" 52.0"},   // 130
    {7, 2, 163, 1, 0, 505, 705, 6, 157, 6, 5, 2, 1, L" 26.4", L" 75.0"},   // 187
    {9, 3, 190, 2, 1, 506, 706, 1, 188, 9, 4, 3, 0, L" 29.2", L" 83.0"},   // 207
    {12, 4, 255, 3, 0, 507, 707, 2, 250, 2, 3, 4, 1, L" 42.8", L"121.0"},  // 303
};
static_assert(std::size(kFontCases) == kFonts1D);

void PutFont(Bytes& record, std::size_t index, const Font& font) {
    record[Font1D(index, at1::kType)] = font.type;
    record[Font1D(index, at1::kWidth)] = font.width;
    PutInt(record, Font1D(index, at1::kHeight), font.height);
    record[Font1D(index, at1::kHriPosition)] = font.position;
    record[Font1D(index, at1::kHriFont)] = font.hri_font;
    PutInt(record, Font1D(index, at1::kFontWidth), font.font_width);
    PutInt(record, Font1D(index, at1::kFontHeight), font.font_height);
    record[Font1D(index, at1::kGs1Width)] = font.gs1_width;
    PutInt(record, Font1D(index, at1::kGs1Row), font.gs1_row);
    PutInt(record, Font1D(index, at1::kGs1Composite), font.gs1_composite);
    record[Font1D(index, at1::kGs1Separator)] = font.gs1_separator;
    record[Font1D(index, at1::kGs1Hri)] = font.gs1_hri;
    record[Font1D(index, at1::kGs1Expanded)] = font.gs1_expanded;
}

Bytes RecordOfCases() {
    Bytes record = OddRecord();
    for (std::size_t i = 0; i < kFonts1D; ++i) {
        PutFont(record, i, kFontCases[i]);
    }
    return record;
}

// The first font is of a type, its fields are distinct, and what it prints has them.
Bytes RecordOfType(std::uint8_t type) {
    Bytes record = RecordOfCases();
    PutFont(record, 0, {type, 5, 0x97, 2, 1, 40, 162, 4, 0xAB, 7, 9, 3, 1, L"", L""});
    return record;
}

void ExpectShown(const Window& page, const Font& font) {
    EXPECT_EQ(page.ComboSelection(kType), font.type);
    EXPECT_EQ(page.Text(kWidth), std::to_wstring(font.width));
    EXPECT_EQ(page.SpinPosition(kWidthSpin), font.width);
    EXPECT_EQ(page.Text(kHeight), std::to_wstring(font.height));
    EXPECT_EQ(page.SpinPosition(kHeightSpin), static_cast<int>(font.height));
    EXPECT_EQ(page.ComboSelection(kHriPosition), font.position);
    EXPECT_EQ(page.IsChecked(kFontA), font.hri_font == 0);
    EXPECT_EQ(page.IsChecked(kFontB), font.hri_font == 1);
    EXPECT_EQ(page.IsEnabled(kFontA), font.position != 0);
    EXPECT_EQ(page.IsEnabled(kFontB), font.position != 0);
    EXPECT_EQ(page.Text(kMillimetres), font.millimetres);
    EXPECT_EQ(page.Text(kPoints), font.points);
    EXPECT_EQ(page.Text(kGs1Width), std::to_wstring(font.gs1_width));
    EXPECT_EQ(page.SpinPosition(kGs1WidthSpin), font.gs1_width);
    EXPECT_EQ(page.Text(kGs1Row), std::to_wstring(font.gs1_row));
    EXPECT_EQ(page.SpinPosition(kGs1RowSpin), static_cast<int>(font.gs1_row));
    EXPECT_EQ(page.Text(kGs1Composite), std::to_wstring(font.gs1_composite));
    EXPECT_EQ(page.SpinPosition(kGs1CompositeSpin), static_cast<int>(font.gs1_composite));
    EXPECT_EQ(page.Text(kGs1Separator), std::to_wstring(font.gs1_separator));
    EXPECT_EQ(page.SpinPosition(kGs1SeparatorSpin), font.gs1_separator);
    EXPECT_EQ(page.ComboSelection(kGs1Hri), font.gs1_hri - 1);
    EXPECT_EQ(page.ComboSelection(kGs1Expanded), font.gs1_expanded);
    EXPECT_EQ(page.IsEnabled(kGs1Expanded), font.type == kExpanded);
    EXPECT_EQ(page.Text(kData), kSamples[font.type]);
    EXPECT_TRUE(page.IsEnabled(kPrint));
}

void ExpectGroup(const Window& page, bool is_data_bar) {
    EXPECT_EQ(Visible(page, kGeneralControls),
              is_data_bar ? Ids() : Ids(std::begin(kGeneralControls), std::end(kGeneralControls)));
    EXPECT_EQ(Visible(page, kGs1Controls),
              is_data_bar ? Ids(std::begin(kGs1Controls), std::end(kGs1Controls)) : Ids());
    EXPECT_EQ(Visible(page, kCommonControls), Ids(std::begin(kCommonControls), std::end(kCommonControls)));
}

class Barcode1DPageTest : public LoneBarcodeTest {
  protected:
    Barcode1DPageTest() : LoneBarcodeTest(kTab1D, kTemplate) {}

    // The height that the page tells, by what the record then holds.
    void HeightStep(const Sheet& sheet, const Window& page, const std::string& name, Bytes& record,
                    std::uint32_t font_height, const wchar_t* millimetres, const wchar_t* points,
                    const std::function<void()>& action) {
        SCOPED_TRACE(name);
        PutInt(record, Font1D(0, at1::kFontHeight), font_height);
        Step(sheet, page, name, record, action);
        EXPECT_EQ(page.Text(kMillimetres), millimetres);
        EXPECT_EQ(page.Text(kPoints), points);
    }
};

// Texts

TEST_F(Barcode1DPageTest, ShowsItsTextsInEveryLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        OpenPage(RecordOfCases(), [&](UiDriver&, Sheet& sheet, const Window& page) {
            EXPECT_EQ(sheet.TabTitles().at(kTab1D), SourceText(file, L"1DCODE", L"RC_1DCODEFORM"));
            EXPECT_EQ(CaptionsOf(page, kCaptions), SourceCaptions(file, L"1DCODE", kCaptions));
            for (const ListCaption& list : ListCaptions()) {
                Texts expected;
                for (std::size_t i = 1; i <= list.english.size(); ++i) {
                    expected.push_back(SourceText(file, L"1DCODE", (list.key + std::to_wstring(i)).c_str()));
                }
                EXPECT_EQ(page.ComboItems(list.list), expected);
            }
            ExpectFixedTexts(page);
        });
    }
}

TEST_F(Barcode1DPageTest, ShowsEnglishWithoutAnyFile) {
    RemoveAllLanguageFiles();
    OpenPage(RecordOfCases(), [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(sheet.TabTitles().at(kTab1D), L"1D Code");
        EXPECT_EQ(CaptionsOf(page, kCaptions), DefaultCaptions(kCaptions));
        for (const ListCaption& list : ListCaptions()) {
            EXPECT_EQ(page.ComboItems(list.list), list.english);
        }
        ExpectFixedTexts(page);
    });
}

// The user may choose another language on the Main page while this one has been seen.
TEST_F(Barcode1DPageTest, FollowsTheLanguageWhileItIsOpen) {
    const Bytes record = RecordOfCases();
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        page.SelectCombo(kFont, 3);
        for (const wchar_t* file : {kSimplifiedChinese, kTraditionalChinese, kEnglish}) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
            ChooseLanguage(file);
            Repaint(page);
            EXPECT_EQ(CaptionsOf(page, kCaptions), SourceCaptions(file, L"1DCODE", kCaptions));
            EXPECT_EQ(page.Text(kHriPosition), SourceText(file, L"1DCODE", L"RC_STATIC_1DCODE_POSITION4"));
            EXPECT_EQ(page.Text(kGs1Hri), SourceText(file, L"1DCODE", L"RC_CMB_HRI4"));
            EXPECT_EQ(page.Text(kGs1Expanded), SourceText(file, L"1DCODE", L"RC_CMB_AI2"));
            EXPECT_EQ(page.Text(kFont), L"1D Code4");
            ExpectShown(page, kFontCases[3]);
            ExpectFixedTexts(page);
        }
        EXPECT_EQ(CaptionsOf(page, kCaptions), DefaultCaptions(kCaptions));
        EXPECT_FALSE(sheet.IsApplyEnabled());
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(Barcode1DPageTest, SeventeenControlsHaveHelp) {
    EXPECT_EQ(std::size(kGeneralHelps) + std::size(kGs1Helps), 17u);
    OpenPage(RecordOfCases(), [&](UiDriver& ui, Sheet&, const Window& page) {
        page.SelectCombo(kFont, 1);
        for (const Caption& help : kGeneralHelps) {
            EXPECT_EQ(SourceText(kEnglish, L"1DCODE", help.key), help.english);
            ExpectHelpOf(ui, page, help.control, help.english);
        }
        page.SelectCombo(kFont, 7);
        page.Click(kComposite);
        for (const Caption& help : kGs1Helps) {
            EXPECT_EQ(SourceText(kEnglish, L"1DCODE", help.key), help.english);
            ExpectHelpOf(ui, page, help.control, help.english);
        }
        ChooseLanguage(kTraditionalChinese);
        Repaint(page);
        ExpectHelpOf(ui, page, kPrint, SourceText(kTraditionalChinese, L"1DCODE", L"CTEXT_BUTTON_PRINT"));
    });
}

// Places

TEST_F(Barcode1DPageTest, PutsTheDataBarGroupOntoTheGeneralOne) {
    OpenPage(RecordOfCases(), [&](UiDriver&, Sheet&, const Window& page) {
        for (const Place& place : kMoved) {
            EXPECT_EQ(PlaceOf(page, place.control), place);
        }
    });
}

// On a finer screen: one and a half times as far across, one and a quarter times as far down.
TEST_F(Barcode1DPageTest, MovesByTheScreensDotsPerInch) {
    per_inch_ = {144, 120};
    LonePage lone(Description(), RecordOfCases());
    lone.Make();
    for (const Place& place : kMoved) {
        EXPECT_EQ(PlaceOf(lone.Page(), place.control),
                  (Place{place.control, MulDiv(place.x, 144, 96), MulDiv(place.y, 120, 96)}));
    }
}

// The places are those of an ordinary screen when this one does not tell.
TEST_F(Barcode1DPageTest, MovesWithoutADeviceContext) {
    const Bytes description = Description();
    refuses_contexts_ = true;
    LonePage lone(description, RecordOfCases());
    lone.Make();
    refuses_contexts_ = false;
    for (const Place& place : kMoved) {
        EXPECT_EQ(PlaceOf(lone.Page(), place.control), place);
    }
}

TEST_F(Barcode1DPageTest, HasItsPlaceInTheSheet) {
    ExpectTemplate(297, 205, L"1D Code");
}

TEST_F(Barcode1DPageTest, KeepsSizesAndOrder) {
    const Bytes description = Description();
    LonePage lone(description, RecordOfCases());
    lone.Make();
    const Window page = lone.Page();
    const UiDriver driver(GetCurrentThreadId());
    const Window raw(driver, lone.MakeTemplate());
    EXPECT_EQ(ControlsOf(page), ControlsOf(raw));
    EXPECT_EQ(ControlsOf(page).size(),
              std::size(kGeneralControls) + std::size(kGs1Controls) + std::size(kCommonControls));
    for (const int control : ControlsOf(raw)) {
        SCOPED_TRACE(control);
        const RECT bounds = BoundsOf(page, control);
        const RECT original = BoundsOf(raw, control);
        EXPECT_EQ(bounds.right - bounds.left, original.right - original.left);
        EXPECT_EQ(bounds.bottom - bounds.top, original.bottom - original.top);
        if (std::none_of(std::begin(kMoved), std::end(kMoved),
                         [&](const Place& place) { return place.control == control; })) {
            EXPECT_TRUE(EqualRect(&bounds, &original));
        }
    }
    DestroyWindow(raw.handle());
}

TEST_F(Barcode1DPageTest, ShowsTheGroupOfTheType) {
    OpenPage(RecordOfCases(), [&](UiDriver&, Sheet&, const Window& page) {
        ExpectGroup(page, false);
        for (std::uint8_t type = 0; type < kTypes; ++type) {
            SCOPED_TRACE(static_cast<int>(type));
            page.SelectCombo(kType, type);
            ExpectGroup(page, type >= kFirstDataBar);
            page.SelectCombo(kType, kTypes - 1 - type);
            ExpectGroup(page, kTypes - 1 - type >= kFirstDataBar);
        }
        for (const int font : {6, 0, 7, 4}) {
            page.SelectCombo(kFont, font);
            ExpectGroup(page, font >= 6);
        }
    });
}

// Every control that can be used, from top to bottom, and none that is hidden.
TEST_F(Barcode1DPageTest, TabGoesThroughWhatShows) {
    OpenPage(RecordOfCases(), [&](UiDriver& ui, Sheet& sheet, const Window& page) {
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont),
                  (Ids{kFont, kType, kWidth, kHeight, kHriPosition, kData, kPrint}));
        page.SelectCombo(kFont, 1);
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont),
                  (Ids{kFont, kType, kWidth, kHeight, kHriPosition, kFontB, kData, kPrint}));
        page.SelectCombo(kFont, 2);
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont),
                  (Ids{kFont, kType, kWidth, kHeight, kHriPosition, kFontA, kData, kPrint}));
        page.SelectCombo(kFont, 6);
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont), (Ids{kFont, kType, kIndependence, kGs1Width, kGs1Row,
                                                         kGs1Separator, kGs1Hri, kData, kPrint}));
        page.SelectCombo(kFont, 7);
        page.Click(kComposite);
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont),
                  (Ids{kFont, kType, kComposite, kGs1Width, kGs1Row, kGs1Composite, kGs1Separator, kGs1Hri,
                       kGs1Expanded, kData, kPrint}));
        // Going there is no choice.
        EXPECT_EQ(Differences(RecordOfCases(), Record()), "");
        EXPECT_FALSE(sheet.IsApplyEnabled());
    });
}

// What a record shows

TEST_F(Barcode1DPageTest, ShowsEachFontAndStoresNothing) {
    const Bytes record = RecordOfCases();
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(page.ComboSelection(kFont), 0);
        ExpectShown(page, kFontCases[0]);
        for (const int font : {7, 1, 6, 2, 5, 3, 4, 0}) {
            SCOPED_TRACE(font);
            page.SelectCombo(kFont, font);
            ExpectShown(page, kFontCases[font]);
            EXPECT_EQ(Differences(record, Record()), "");
        }
        EXPECT_TRUE(page.IsChecked(kIndependence));
        EXPECT_FALSE(page.IsChecked(kComposite));
        EXPECT_FALSE(sheet.IsApplyEnabled());
        page.PressKey(kFont, VK_DOWN);
        EXPECT_EQ(page.ComboSelection(kFont), 1);
        ExpectShown(page, kFontCases[1]);
        EXPECT_FALSE(sheet.IsApplyEnabled());
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(Barcode1DPageTest, ShowsTheDefaults) {
    OpenPage(Record(), [&](UiDriver&, Sheet&, const Window& page) {
        // 163 dots are 65.2 points.
        constexpr std::uint8_t kDefaultTypes[] = {0, 1, 3, 4, 5, 6, 7, 8};
        for (std::uint8_t font = 0; font < kFonts1D; ++font) {
            SCOPED_TRACE(static_cast<int>(font));
            page.SelectCombo(kFont, font);
            ExpectShown(page,
                        {kDefaultTypes[font], 3, 163, 0, 0, 24, 163, 2, 100, 2, 1, 1, 1, L" 23.0", L" 65.0"});
        }
        EXPECT_EQ(RangeOf(page, kWidthSpin), (SpinRange{2, 6}));
        EXPECT_EQ(RangeOf(page, kHeightSpin), (SpinRange{1, 255}));
        EXPECT_EQ(RangeOf(page, kGs1WidthSpin), (SpinRange{1, 6}));
        EXPECT_EQ(RangeOf(page, kGs1RowSpin), (SpinRange{2, 250}));
        EXPECT_EQ(RangeOf(page, kGs1CompositeSpin), (SpinRange{1, 10}));
        EXPECT_EQ(RangeOf(page, kGs1SeparatorSpin), (SpinRange{1, 10}));
        for (const int edit : {kMillimetres, kPoints}) {
            EXPECT_NE(GetWindowLongPtrW(page.Control(edit), GWL_STYLE) & ES_READONLY, 0);
        }
    });
}

// A record of another writer: what is shown is the nearest that the controls have, and it is kept.
TEST_F(Barcode1DPageTest, ShowsAnyFontAndStoresNothing) {
    Bytes record = RecordOfCases();
    PutFont(record, 1,
            {200, 200, 70000, 9, 7, 0xFFFFFFFF, 0xFFFFFFFF, 99, 0xFFFFFFFF, 0x80000000, 255, 6, 5, L"", L""});
    PutFont(record, 2, {13, 0, 0, 4, 255, 0, 0, 0, 0, 0, 0, 0, 2, L"", L""});
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        page.SelectCombo(kFont, 1);
        for (const int list : {kType, kHriPosition, kGs1Hri, kGs1Expanded}) {
            EXPECT_EQ(page.ComboSelection(list), -1) << list;
        }
        EXPECT_EQ(page.Text(kWidth), L"6");
        EXPECT_EQ(page.Text(kHeight), L"255");
        EXPECT_EQ(page.Text(kGs1Width), L"6");
        EXPECT_EQ(page.Text(kGs1Row), L"250");
        EXPECT_EQ(page.Text(kGs1Composite), L"10");
        EXPECT_EQ(page.Text(kGs1Separator), L"10");
        EXPECT_TRUE(page.IsEnabled(kFontA));
        EXPECT_FALSE(page.IsChecked(kFontA));
        EXPECT_TRUE(page.IsChecked(kFontB));
        // 70000 dots without HRI text.
        EXPECT_EQ(page.Text(kMillimetres), L"9877.8");
        EXPECT_EQ(page.Text(kPoints), L"28000.0");
        EXPECT_EQ(page.Text(kData), L"");
        EXPECT_FALSE(page.IsEnabled(kPrint));
        EXPECT_FALSE(page.IsEnabled(kGs1Expanded));
        ExpectGroup(page, true);
        page.SelectCombo(kFont, 2);
        for (const int list : {kType, kHriPosition, kGs1Hri, kGs1Expanded}) {
            EXPECT_EQ(page.ComboSelection(list), -1) << list;
        }
        EXPECT_EQ(page.Text(kWidth), L"2");
        EXPECT_EQ(page.Text(kHeight), L"1");
        EXPECT_EQ(page.Text(kGs1Width), L"1");
        EXPECT_EQ(page.Text(kGs1Row), L"2");
        EXPECT_EQ(page.Text(kGs1Composite), L"1");
        EXPECT_EQ(page.Text(kGs1Separator), L"1");
        EXPECT_TRUE(page.IsEnabled(kFontB));
        EXPECT_TRUE(page.IsChecked(kFontB));
        EXPECT_EQ(page.Text(kMillimetres), L"  0.0");
        EXPECT_EQ(page.Text(kPoints), L"  0.0");
        EXPECT_EQ(page.Text(kData), L"");
        page.SelectCombo(kFont, 0);
        ExpectShown(page, kFontCases[0]);
        // Notifications without a choice behind them.
        page.SelectCombo(kFont, 1);
        Repaint(page);
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_EQ(Differences(record, Record()), "");
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

// What the controls store

TEST_F(Barcode1DPageTest, StoresEachType) {
    Bytes record = RecordOfCases();
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const std::size_t font : {std::size_t{0}, std::size_t{5}}) {
            page.SelectCombo(kFont, static_cast<int>(font));
            for (const std::uint8_t type :
                 std::initializer_list<std::uint8_t>{12, 0, 11, 1, 10, 2, 9, 3, 8, 4, 7, 5, 6}) {
                record[Font1D(font, at1::kType)] = type;
                Step(sheet, page, "type", record, [&] { page.SelectCombo(kType, type); });
                EXPECT_EQ(page.Text(kData), kSamples[type]);
                EXPECT_EQ(page.IsEnabled(kGs1Expanded), type == kExpanded);
            }
            record[Font1D(font, at1::kType)] = 7;
            Step(sheet, page, "by key", record, [&] { page.PressKey(kType, VK_DOWN); });
            EXPECT_EQ(page.Text(kData), L"123ABC");
        }
        sheet.PressApply();
        EXPECT_EQ(Differences(record, Record()), "");
    });
}

struct Typed {
    const wchar_t* text;
    std::uint32_t stored;
    const wchar_t* shown;
};

struct NumberCase {
    int edit;
    int spin;
    std::size_t field;
    bool is_int;
    std::vector<Typed> typed;
};

// As it is typed into an empty box, key by key. Where a key makes too little of it the box takes the least,
// and the next key comes behind that.
const NumberCase kGeneralNumbers[] = {
    {kWidth,
     kWidthSpin,
     at1::kWidth,
     false,
     {{L"3", 3, L"3"},
      {L"2", 2, L"2"},
      {L"6", 6, L"6"},
      {L"1", 2, L"2"},
      {L"7", 6, L"6"},
      {L"0", 2, L"2"},
      {L"9", 6, L"6"},
      {L"", 2, L"2"},
      {L"54", 5, L"5"}}},
};
const NumberCase kGs1Numbers[] = {
    {kGs1Width,
     kGs1WidthSpin,
     at1::kGs1Width,
     false,
     {{L"3", 3, L"3"},
      {L"0", 1, L"1"},
      {L"6", 6, L"6"},
      {L"1", 1, L"1"},
      {L"7", 6, L"6"},
      {L"", 1, L"1"},
      {L"9", 6, L"6"},
      {L"54", 5, L"5"}}},
    {kGs1Row,
     kGs1RowSpin,
     at1::kGs1Row,
     true,
     {{L"3", 3, L"3"},
      {L"0", 2, L"2"},
      {L"249", 249, L"249"},
      {L"1", 2, L"2"},
      {L"250", 250, L"250"},
      {L"2", 2, L"2"},
      {L"251", 250, L"250"},
      {L"", 2, L"2"},
      {L"999", 250, L"250"},
      {L"2049", 204, L"204"},
      {L"100", 200, L"200"}}},
    {kGs1Composite,
     kGs1CompositeSpin,
     at1::kGs1Composite,
     true,
     {{L"3", 3, L"3"},
      {L"0", 1, L"1"},
      {L"9", 9, L"9"},
      {L"1", 1, L"1"},
      {L"5", 5, L"5"},
      {L"", 1, L"1"},
      {L"84", 8, L"8"}}},
    {kGs1Separator,
     kGs1SeparatorSpin,
     at1::kGs1Separator,
     false,
     {{L"3", 3, L"3"},
      {L"0", 1, L"1"},
      {L"9", 9, L"9"},
      {L"1", 1, L"1"},
      {L"5", 5, L"5"},
      {L"", 1, L"1"},
      {L"84", 8, L"8"}}},
};

TEST_F(Barcode1DPageTest, StoresTypedNumbersInTheirRange) {
    Bytes record = RecordOfType(12);
    PutInt(record, Font1D(0, at1::kGs1Row), 77);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        const auto type = [&](const NumberCase& number) {
            for (const Typed& typed : number.typed) {
                if (number.is_int) {
                    PutInt(record, Font1D(0, number.field), typed.stored);
                } else {
                    record[Font1D(0, number.field)] = static_cast<std::uint8_t>(typed.stored);
                }
                if (number.edit == kWidth) {
                    PutInt(record, Font1D(0, at1::kFontWidth), typed.stored * 8);
                }
                Step(sheet, page, std::to_string(number.edit) + ": " + Narrow(typed.text), record,
                     [&] { page.TypeText(number.edit, typed.text); });
                EXPECT_EQ(page.Text(number.edit), typed.shown);
                EXPECT_EQ(page.SpinPosition(number.spin), static_cast<int>(typed.stored));
            }
            ExpectDigitsOnly(sheet, page, number.edit);
        };
        page.Click(kComposite);
        for (const NumberCase& number : kGs1Numbers) {
            type(number);
        }
        record[Font1D(0, at1::kType)] = 4;
        Step(sheet, page, "type", record, [&] { page.SelectCombo(kType, 4); });
        for (const NumberCase& number : kGeneralNumbers) {
            type(number);
        }
        ExpectDigitsOnly(sheet, page, kHeight);
    });
}

// Each in the font that is chosen and nowhere else.
TEST_F(Barcode1DPageTest, StoresIntoTheChosenFont) {
    Bytes record = RecordOfCases();
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (std::size_t font = 0; font < kFonts1D; ++font) {
            SCOPED_TRACE(font);
            page.SelectCombo(kFont, static_cast<int>(font));
            if (font < 6) {
                const std::uint8_t width = record[Font1D(font, at1::kWidth)] == 6 ? 5 : 6;
                record[Font1D(font, at1::kWidth)] = width;
                PutInt(record, Font1D(font, at1::kFontWidth), width * 8u);
                Step(sheet, page, "width", record, [&] { page.TypeText(kWidth, std::to_wstring(width)); });
            } else {
                record[Font1D(font, at1::kGs1Separator)] = 9;
                Step(sheet, page, "separator", record, [&] { page.TypeText(kGs1Separator, L"9"); });
            }
        }
        page.SelectCombo(kFont, 0);
        EXPECT_EQ(page.Text(kWidth), L"6");
    });
}

TEST_F(Barcode1DPageTest, ArrowsStayInTheirRange) {
    Bytes record = RecordOfType(12);
    PutInt(record, Font1D(0, at1::kGs1Row), 249);
    PutInt(record, Font1D(0, at1::kGs1Composite), 9);
    record[Font1D(0, at1::kGs1Width)] = 2;
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        page.Click(kComposite);
        const auto step = [&](const char* name, const wchar_t* shown, int edit,
                              const std::function<void()>& action) {
            Step(sheet, page, name, record, action);
            EXPECT_EQ(page.Text(edit), shown) << name;
        };
        PutInt(record, Font1D(0, at1::kGs1Row), 250);
        step("row up", L"250", kGs1Row, [&] { page.SpinUp(kGs1RowSpin); });
        Look(sheet, page, "row no further", [&] { page.SpinUp(kGs1RowSpin); });
        EXPECT_EQ(page.Text(kGs1Row), L"250");
        PutInt(record, Font1D(0, at1::kGs1Row), 2);
        step("row typed", L"2", kGs1Row, [&] { page.TypeText(kGs1Row, L"2"); });
        Look(sheet, page, "row no less", [&] { page.SpinDown(kGs1RowSpin); });
        PutInt(record, Font1D(0, at1::kGs1Row), 3);
        step("row by key", L"3", kGs1Row, [&] { page.PressKey(kGs1Row, VK_UP); });
        // Two digits, which cannot be typed.
        PutInt(record, Font1D(0, at1::kGs1Composite), 10);
        step("composite up", L"10", kGs1Composite, [&] { page.SpinUp(kGs1CompositeSpin); });
        Look(sheet, page, "composite no further", [&] { page.SpinUp(kGs1CompositeSpin); });
        Look(sheet, page, "no digit behind it", [&] {
            page.Send(kGs1Composite, EM_SETSEL, 2, 2);
            page.AppendText(kGs1Composite, L"5");
        });
        EXPECT_EQ(page.Text(kGs1Composite), L"10");
        PutInt(record, Font1D(0, at1::kGs1Composite), 4);
        step("composite typed", L"4", kGs1Composite, [&] { page.TypeText(kGs1Composite, L"4"); });
        record[Font1D(0, at1::kGs1Separator)] = 10;
        step("separator up", L"10", kGs1Separator, [&] { page.SpinUp(kGs1SeparatorSpin); });
        Look(sheet, page, "separator no further", [&] { page.SpinUp(kGs1SeparatorSpin); });
        record[Font1D(0, at1::kGs1Separator)] = 9;
        step("separator down", L"9", kGs1Separator, [&] { page.SpinDown(kGs1SeparatorSpin); });
        record[Font1D(0, at1::kGs1Width)] = 1;
        step("width down", L"1", kGs1Width, [&] { page.SpinDown(kGs1WidthSpin); });
        Look(sheet, page, "width no less", [&] { page.SpinDown(kGs1WidthSpin); });
        record[Font1D(0, at1::kType)] = 0;
        Step(sheet, page, "type", record, [&] { page.SelectCombo(kType, 0); });
        record[Font1D(0, at1::kWidth)] = 6;
        PutInt(record, Font1D(0, at1::kFontWidth), 48);
        step("width up", L"6", kWidth, [&] { page.SpinUp(kWidthSpin); });
        Look(sheet, page, "width no more", [&] { page.SpinUp(kWidthSpin); });
        // 152 dots with 17 of HRI: 169, 67.6 points, 67.5 of them are 168.75 dots.
        PutInt(record, Font1D(0, at1::kHeight), 0x98);
        PutInt(record, Font1D(0, at1::kFontHeight), 168);
        step("height up", L"152", kHeight, [&] { page.SpinUp(kHeightSpin); });
    });
}

// With the real keyboard: after each key the box, the record and the caret are as the next one needs them.
TEST_F(Barcode1DPageTest, TakesKeysOneByOne) {
    Bytes record = RecordOfType(4);
    record[Font1D(0, at1::kHriPosition)] = 0;
    OpenPage(record, [&](UiDriver& ui, Sheet& sheet, const Window& page) {
        const auto keys = [&](const char* name, std::initializer_list<WORD> pressed, std::uint32_t height,
                              std::uint32_t font_height) {
            PutInt(record, Font1D(0, at1::kHeight), height);
            PutInt(record, Font1D(0, at1::kFontHeight), font_height);
            Step(sheet, page, name, record, [&] { Type(ui, page, pressed); });
            EXPECT_EQ(page.Text(kHeight), std::to_wstring(height)) << name;
        };
        FocusForTyping(ui, sheet, page, kHeight);
        page.Send(kHeight, EM_SETSEL, 0, -1);
        keys("3", {'3'}, 3, 2);  // 1.2 points: 1 of them is 2.5 dots
        keys("30", {'0'}, 30, 30);
        keys("300", {'0'}, 255, 255);  // 102 points
        keys("25", {VK_BACK}, 25, 25);
        keys("2", {VK_BACK}, 2, 2);  // 0.8 points
        keys("emptied", {VK_BACK}, 1, 1);
        keys("replaced", {'4'}, 4, 3);             // 1.6 points: 1.5 of them are 3.75 dots
        keys("42", {'2'}, 42, 42);                 // 16.8 points: 17 of them are 42.5 dots
        keys("up", {VK_UP}, 43, 42);               // 17.2 points
        keys("down", {VK_DOWN, VK_DOWN}, 41, 41);  // 16.4 points, the half: 41.25 dots
    });
}

TEST_F(Barcode1DPageTest, TellsTheFontHeight) {
    Bytes record = RecordOfType(0);
    record[Font1D(0, at1::kHriFont)] = 0;
    PutInt(record, Font1D(0, at1::kHeight), 7);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        const auto height = [&](const char* name, std::uint32_t font_height, const wchar_t* millimetres,
                                const wchar_t* points, const std::function<void()>& action) {
            HeightStep(sheet, page, name, record, font_height, millimetres, points, action);
        };
        PutInt(record, Font1D(0, at1::kHeight), 100);
        height("100 and Font A below", 123, L" 17.5", L" 49.5", [&] { page.TypeText(kHeight, L"100"); });
        record[Font1D(0, at1::kHriPosition)] = 3;
        height("Font A twice", 147, L" 20.9", L" 59.0", [&] { page.SelectCombo(kHriPosition, 3); });
        record[Font1D(0, at1::kHriFont)] = 1;
        height("Font B twice", 133, L" 18.9", L" 53.5", [&] { page.Click(kFontB); });
        record[Font1D(0, at1::kHriPosition)] = 1;
        height("Font B above", 117, L" 16.5", L" 47.0", [&] { page.SelectCombo(kHriPosition, 1); });
        record[Font1D(0, at1::kHriFont)] = 0;
        height("Font A above", 123, L" 17.5", L" 49.5", [&] { page.Click(kFontA); });
        record[Font1D(0, at1::kHriPosition)] = 0;
        height("no HRI", 100, L" 14.1", L" 40.0", [&] { page.SelectCombo(kHriPosition, 0); });
        record[Font1D(0, at1::kHriPosition)] = 1;
        height("by key", 123, L" 17.5", L" 49.5", [&] { page.PressKey(kHriPosition, VK_DOWN); });
        record[Font1D(0, at1::kHriPosition)] = 0;
        height("none again", 100, L" 14.1", L" 40.0", [&] { page.SelectCombo(kHriPosition, 0); });
        PutInt(record, Font1D(0, at1::kHeight), 1);
        height("the least", 1, L"  0.1", L"  0.5", [&] { page.TypeText(kHeight, L"1"); });
        PutInt(record, Font1D(0, at1::kHeight), 255);
        height("the most", 255, L" 36.0", L"102.0", [&] { page.TypeText(kHeight, L"999"); });
    });
}

// Bars of no height, by another writer.
TEST_F(Barcode1DPageTest, StoresNoHeightOfZero) {
    Bytes record = RecordOfType(0);
    PutInt(record, Font1D(0, at1::kHeight), 0);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        record[Font1D(0, at1::kHriPosition)] = 0;
        HeightStep(sheet, page, "no HRI", record, 2, L"  0.0", L"  0.0",
                   [&] { page.SelectCombo(kHriPosition, 0); });
    });
}

// The stored height is a rounded one: 123 dots are 17.4 mm and 49.2 points.
TEST_F(Barcode1DPageTest, ApplyShowsTheStoredHeight) {
    Bytes record = RecordOfType(0);
    record[Font1D(0, at1::kHriFont)] = 0;
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        PutInt(record, Font1D(0, at1::kHeight), 100);
        HeightStep(sheet, page, "typed", record, 123, L" 17.5", L" 49.5",
                   [&] { page.TypeText(kHeight, L"100"); });
        sheet.PressApply();
        EXPECT_EQ(page.Text(kMillimetres), L" 17.4");
        EXPECT_EQ(page.Text(kPoints), L" 49.0");
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_EQ(Differences(record, Record()), "");
        page.SelectCombo(kFont, 0);
        EXPECT_EQ(page.Text(kMillimetres), L" 17.5");
        EXPECT_EQ(page.Text(kPoints), L" 49.5");
        // Of the chosen font: 703 dots are 99.2 mm and 281.2 points.
        page.SelectCombo(kFont, 3);
        record[Font1D(3, at1::kType)] = 5;
        Step(sheet, page, "another font", record, [&] { page.SelectCombo(kType, 5); });
        EXPECT_EQ(page.Text(kMillimetres), L" 19.3");
        EXPECT_EQ(page.Text(kPoints), L" 55.0");
        sheet.PressApply();
        EXPECT_EQ(page.Text(kMillimetres), L" 99.2");
        EXPECT_EQ(page.Text(kPoints), L"281.0");
        EXPECT_EQ(Differences(record, Record()), "");
    });
}

TEST_F(Barcode1DPageTest, HriFontsNeedAnHriPosition) {
    Bytes record = RecordOfType(0);
    OpenPage(record, [&](UiDriver& ui, Sheet& sheet, const Window& page) {
        for (const int position : {0, 1, 0, 2, 0, 3}) {
            page.SelectCombo(kHriPosition, position);
            EXPECT_EQ(Enabled(page, std::initializer_list<int>{kFontA, kFontB}),
                      position == 0 ? Ids() : (Ids{kFontA, kFontB}));
            EXPECT_TRUE(page.IsChecked(kFontB));
            EXPECT_EQ(Record()[Font1D(0, at1::kHriFont)], 1);
        }
        record[Font1D(0, at1::kHriPosition)] = 3;
        Look(sheet, page, "the focus is no choice", [&] {
            page.Focus(kFontA);
            page.Focus(kFontB);
        });
        record[Font1D(0, at1::kHriFont)] = 0;
        PutInt(record, Font1D(0, at1::kFontHeight), 198);  // 199 dots, 79.6 points
        FocusForTyping(ui, sheet, page, kFontB);
        Step(sheet, page, "by key", record, [&] { Type(ui, page, {VK_UP}); });
        EXPECT_TRUE(page.IsChecked(kFontA));
        EXPECT_FALSE(page.IsChecked(kFontB));
    });
}

TEST_F(Barcode1DPageTest, CompositeEnablesItsRowHeight) {
    const Bytes record = RecordOfType(9);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        constexpr int kRow[] = {kGs1Composite, kGs1CompositeSpin};
        EXPECT_TRUE(page.IsChecked(kIndependence));
        EXPECT_EQ(Enabled(page, kRow), Ids());
        page.Focus(kComposite);
        EXPECT_TRUE(page.IsChecked(kIndependence)) << "the focus is no choice";
        EXPECT_EQ(Enabled(page, kRow), Ids());
        Look(sheet, page, "Composite", [&] { page.Click(kComposite); });
        EXPECT_FALSE(page.IsChecked(kIndependence));
        EXPECT_EQ(Enabled(page, kRow), (Ids{kGs1Composite, kGs1CompositeSpin}));
        // It is of the page, not of the font or the type.
        page.SelectCombo(kFont, 7);
        EXPECT_TRUE(page.IsChecked(kComposite));
        EXPECT_EQ(Enabled(page, kRow), (Ids{kGs1Composite, kGs1CompositeSpin}));
        page.SelectCombo(kFont, 0);
        Look(sheet, page, "Independence", [&] { page.Click(kIndependence); });
        EXPECT_EQ(Enabled(page, kRow), Ids());
        EXPECT_EQ(page.Text(kGs1Composite), L"7");
    });
    OpenPage(record, [&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_TRUE(page.IsChecked(kIndependence)) << "the choice is not stored";
    });
}

TEST_F(Barcode1DPageTest, EachTypeKeepsTheKind) {
    Bytes record = RecordOfType(9);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const int kind : {kComposite, kIndependence}) {
            SCOPED_TRACE(kind);
            const bool is_composite = kind == kComposite;
            page.Click(kind);
            for (const std::uint8_t type : std::initializer_list<std::uint8_t>{10, 0, 12, 8, 11, 4, 9}) {
                record[Font1D(0, at1::kType)] = type;
                Step(sheet, page, "type " + std::to_string(type), record,
                     [&] { page.SelectCombo(kType, type); });
                EXPECT_EQ(page.IsChecked(kComposite), is_composite);
                EXPECT_EQ(page.IsChecked(kIndependence), !is_composite);
                EXPECT_EQ(Enabled(page, std::initializer_list<int>{kGs1Composite, kGs1CompositeSpin}),
                          is_composite ? (Ids{kGs1Composite, kGs1CompositeSpin}) : Ids());
            }
        }
    });
}

TEST_F(Barcode1DPageTest, StoresTheDataBarLists) {
    Bytes record = RecordOfType(12);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const int hri : {0, 3, 1, 2}) {
            record[Font1D(0, at1::kGs1Hri)] = static_cast<std::uint8_t>(hri + 1);
            Step(sheet, page, "HRI", record, [&] { page.SelectCombo(kGs1Hri, hri); });
        }
        record[Font1D(0, at1::kGs1Hri)] = 4;
        Step(sheet, page, "HRI by key", record, [&] { page.PressKey(kGs1Hri, VK_DOWN); });
        for (const int identifiers : {0, 1}) {
            record[Font1D(0, at1::kGs1Expanded)] = static_cast<std::uint8_t>(identifiers);
            Step(sheet, page, "identifiers", record, [&] { page.SelectCombo(kGs1Expanded, identifiers); });
        }
        record[Font1D(0, at1::kGs1Expanded)] = 0;
        Step(sheet, page, "identifiers by key", record, [&] { page.PressKey(kGs1Expanded, VK_UP); });
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

// Data to print

TEST_F(Barcode1DPageTest, PrintsOnlyWhatIsThere) {
    OpenPage(RecordOfType(4), [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_TRUE(page.IsEnabled(kPrint));
        Look(sheet, page, "typing", [&] {
            page.TypeText(kData, L"");
            EXPECT_FALSE(page.IsEnabled(kPrint));
            page.AppendText(kData, L"7");
            EXPECT_TRUE(page.IsEnabled(kPrint));
            page.Send(kData, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L""));
            EXPECT_FALSE(page.IsEnabled(kPrint));
        });
        page.SelectCombo(kFont, 0);
        EXPECT_EQ(page.Text(kData), L"123ABC*");
        EXPECT_TRUE(page.IsEnabled(kPrint));
        // As many as the box takes.
        page.TypeText(kData, std::wstring(401, L'7'));
        EXPECT_EQ(page.Text(kData), std::wstring(400, L'7'));
        EXPECT_TRUE(page.IsEnabled(kPrint));
        ExpectRefused(page, kPrint);
        page.TypeText(kData, std::wstring(256, L'7'));
        ExpectRefused(page, kPrint);
    });
}

constexpr std::uint8_t kGs = 0x1D;

// Of the first font of RecordOfType: Font B below, 5 dots wide, 97h high.
Bytes Header(std::uint8_t code) {
    return {kGs, 0x66, 0x01, kGs, 0x48, 0x02, kGs, 0x77, 0x05, kGs, 0x68, 0x97, kGs, 0x6B, code};
}

Bytes SecondHeader(std::uint8_t code) {
    return {kGs, 0x77, 0x05, kGs, 0x68, 0x97, kGs, 0x6B, code};
}

Bytes DataBarHeader(std::uint8_t kind) {
    return {kGs,  0x66, 0x00, kGs,  0x48, 0x00, kGs, 0x73, kind, 0x04,
            0xAB, 0x07, 0x09, 0x02, 0x03, 0x01, kGs, 0x6B, 0x0D};
}

Pieces Terminated(std::uint8_t code, std::string_view data) {
    return {Header(code), Ascii(data), {0}, kCut};
}

Pieces Counted(std::uint8_t code, const Bytes& data) {
    return {Header(code), {0}, SecondHeader(code), {static_cast<std::uint8_t>(data.size())}, data, {0}, kCut};
}

Pieces DataBar(std::uint8_t kind) {
    return {DataBarHeader(kind), Ascii("01234567890123"), {0}, kCut};
}

TEST_F(Barcode1DPageTest, PrintsASampleOfEachType) {
    const Pieces expected[kTypes] = {
        Terminated(0, "123456789012"),
        Terminated(1, "023456789012"),
        Terminated(3, "12345678"),
        Terminated(2, "1234567890123"),
        Terminated(4, "123ABC*"),
        Terminated(5, "123456789"),
        Terminated(6, "A123456789A"),
        Counted(0x48, Ascii("123ABC")),
        Counted(0x49, Ascii("{A1234")),
        DataBar(1),
        DataBar(2),
        DataBar(5),
        DataBar(6),
    };
    OpenPage(RecordOfType(0), [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (std::uint8_t type = 0; type < kTypes; ++type) {
            SCOPED_TRACE(static_cast<int>(type));
            page.SelectCombo(kType, type);
            ForgetChanges(sheet, page);
            ExpectJob(page, kPrint, JobOf("Barcode", expected[type]));
            EXPECT_FALSE(sheet.IsApplyEnabled());
        }
    });
}

// Other values of the header's bytes, and of another font.
TEST_F(Barcode1DPageTest, PrintsTheChosenFont) {
    Bytes record = RecordOfCases();
    record[Font1D(6, at1::kType)] = 5;
    record[Font1D(6, at1::kHriFont)] = 0x80;
    record[Font1D(6, at1::kHriPosition)] = 4;
    record[Font1D(6, at1::kWidth)] = 0xC8;
    PutInt(record, Font1D(6, at1::kHeight), 0x12345678);
    PutInt(record, Font1D(7, at1::kGs1Row), 0x1FE);
    PutInt(record, Font1D(7, at1::kGs1Composite), 0x80000003);
    OpenPage(record, [&](UiDriver&, Sheet&, const Window& page) {
        page.SelectCombo(kFont, 3);
        ExpectJob(page, kPrint,
                  JobOf("Barcode", {{kGs, 0x66, 1, kGs, 0x48, 3, kGs, 0x77, 5, kGs, 0x68, 103, kGs, 0x6B, 4},
                                    Ascii("123ABC*"),
                                    {0},
                                    kCut}));
        page.SelectCombo(kFont, 6);
        ExpectJob(
            page, kPrint,
            JobOf("Barcode", {{kGs, 0x66, 1, kGs, 0x48, 0, kGs, 0x77, 0xC8, kGs, 0x68, 0x78, kGs, 0x6B, 5},
                              Ascii("123456789"),
                              {0},
                              kCut}));
        page.SelectCombo(kFont, 7);
        ExpectJob(page, kPrint,
                  JobOf("Barcode",
                        {{kGs, 0x66, 0, kGs, 0x48, 0, kGs, 0x73, 6, 2, 0xFE, 3, 3, 2, 4, 1, kGs, 0x6B, 0x0D},
                         Ascii("01234567890123"),
                         {0},
                         kCut}));
    });
}

TEST_F(Barcode1DPageTest, PacksDigitPairsOfCode128) {
    OpenPage(RecordOfType(8), [&](UiDriver&, Sheet&, const Window& page) {
        page.TypeText(kData, L"{C1234");
        ExpectJob(page, kPrint, JobOf("Barcode", Counted(0x49, {'{', 'C', 12, 34})));
        EXPECT_EQ(page.Text(kData), L"{C1234");
        page.TypeText(kData, L"{C0099{B0099");
        ExpectJob(page, kPrint,
                  JobOf("Barcode", Counted(0x49, {'{', 'C', 0, 99, '{', 'B', '0', '0', '9', '9'})));
        page.TypeText(kData, L"{C123");
        ExpectRefused(page, kPrint);
        page.TypeText(kData, L"1234");
        ExpectRefused(page, kPrint);
        // 255 bytes, the most.
        page.TypeText(kData, L"{B" + std::wstring(253, L'x'));
        ExpectJob(page, kPrint, JobOf("Barcode", Counted(0x49, Ascii("{B" + std::string(253, 'x')))));
    });
}

TEST_F(Barcode1DPageTest, RefusesDataInEveryLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        OpenPage(RecordOfType(1), [&](UiDriver&, Sheet& sheet, const Window& page) {
            Look(sheet, page, "refused", [&] {
                page.TypeText(kData, L"123456789012");
                ExpectRefused(page, kPrint, SourceText(file, L"MessageBox", L"MB_ERROR").c_str(),
                              SourceText(file, L"MessageBox", L"MB_1DCODE_ERROR1").c_str());
            });
            EXPECT_EQ(page.Text(kData), L"123456789012") << "to go on from there";
        });
    }
    RemoveAllLanguageFiles();
    OpenPage(RecordOfType(1), [&](UiDriver&, Sheet&, const Window& page) {
        page.TypeText(kData, L"1");
        ExpectRefused(page, kPrint, L"Error", L"BarCode data error!");
    });
    // This page's message and not the other's.
    WriteUserFile(kEnglish,
                  L"[MessageBox]\r\nMB_1DCODE_ERROR1=one\r\nMB_2DCODE_ERROR1=two\r\nMB_ERROR=no\r\n");
    ChooseLanguage(kEnglish);
    OpenPage(RecordOfType(1), [&](UiDriver&, Sheet&, const Window& page) {
        page.TypeText(kData, L"1");
        ExpectRefused(page, kPrint, L"no", L"one");
    });
}

// What is refused for one type is another's.
TEST_F(Barcode1DPageTest, ChecksTheDataByItsType) {
    struct Case {
        std::uint8_t type;
        const wchar_t* accepted;
        const wchar_t* refused;
    };
    constexpr Case kCases[] = {
        {0, L"12345678901", L"1234567890"},
        {1, L"02345678901", L"12345678901"},
        {2, L"1234567", L"123456789"},
        {3, L"123456789012", L"12345678901"},
        {4, L"A-Z %", L"a"},
        {5, L"1", L"1A"},
        {6, L"A12*", L"A123"},
        {7, L"a", L"\x00E9"},
        {8, L"{B", L"{D"},
        {9, L"(01)a|", L"#"},
        {10, L"0123456789012345678901234567890123456789", L"01234567890123456789012345678901234567890"},
        {11, L"a", L"}"},
        {12, L"_", L"\x4E2D#"},
    };
    OpenPage(RecordOfCases(), [&](UiDriver&, Sheet&, const Window& page) {
        for (const Case& each : kCases) {
            SCOPED_TRACE(static_cast<int>(each.type));
            page.SelectCombo(kType, each.type);
            page.TypeText(kData, each.refused);
            ExpectRefused(page, kPrint);
            page.TypeText(kData, each.accepted);
            page.Click(kPrint);
            EXPECT_THAT(boxes_, IsEmpty());
            EXPECT_THAT(spooler_.calls,
                        Contains("WritePrinter printer" + Describe(Ascii(Narrow(each.accepted)))));
            spooler_.calls.clear();
        }
    });
}

TEST_F(Barcode1DPageTest, ShowsItsMessageInARealBox) {
    shows_boxes_ = true;
    OpenPage(RecordOfType(5),
             [&](UiDriver&, Sheet&, const Window& page) { ExpectRealBox(page, kData, L"x", kPrint); });
}

// Nobody is told, and the next print starts afresh.
TEST_F(Barcode1DPageTest, EndsAJobSilentlyWhenACallFails) {
    OpenPage(RecordOfType(7), [&](UiDriver&, Sheet&, const Window& page) {
        const std::vector<std::string> whole = JobOf("Barcode", Counted(0x48, Ascii("123ABC")));
        ASSERT_EQ(whole.size(), 11u);
        ExpectSilentEnds(page, kPrint, whole);
    });
}

TEST_F(Barcode1DPageTest, PrintsNothingWithoutAPrinter) {
    HostSettings settings;
    settings.printer = nullptr;
    StartHost(settings);
    OpenPage(RecordOfType(0), [&](UiDriver&, Sheet&, const Window& page) {
        ExpectJob(page, kPrint, {"StartDocPrinterW null 1 Barcode null RAW"});
    });
}

TEST_F(Barcode1DPageTest, TracesATestPrint) {
    OpenPage(RecordOfType(2), [&](UiDriver&, Sheet&, const Window& page) {
        rig::TraceCapture trace;
        page.Click(kPrint);
        EXPECT_THAT(trace.Take(),
                    ElementsAre(L"UI:  barcode() entry!\r\n", L"UI:  CheckBarcodeData() entry!\r\n",
                                L"UI:  CheckBarcodeData() Idex = 3!\r\n",
                                L"UI:  CheckBarcodeData() 00000000000000000000000!\r\n",
                                L"UI:  CheckBarcodeData() 1111111111111111111111!\r\n",
                                L"UI:  CheckBarcodeData() 22222222222222222!\r\n"));
    });
}

// Each call of the procedure

TEST_F(Barcode1DPageTest, ReportsToSheetAndHost) {
    LonePage lone(Description(), RecordOfType(0));
    lone.Make();
    const Bytes record = lone.record;
    const SheetWindow::Message changed = {PSM_CHANGED, reinterpret_cast<WPARAM>(lone.handle())};
    const SheetWindow::Message unchanged = {PSM_UNCHANGED, reinterpret_cast<WPARAM>(lone.handle())};
    EXPECT_EQ(lone.Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
    EXPECT_EQ(lone.NotifyResult(), PSNRET_NOERROR);
    // Set the result, of the context's page, to OK.
    EXPECT_THAT(lone.calls,
                ElementsAre(LonePage::Call{&lone, CPSFUNC_SET_RESULT,
                                           reinterpret_cast<LPARAM>(INVALID_HANDLE_VALUE), CPSUI_OK}));
    EXPECT_THAT(lone.sheet.messages, ElementsAre(unchanged));
    EXPECT_EQ(lone.Page().Text(kMillimetres), L" 22.9") << "162 dots";
    lone.sheet.messages.clear();
    lone.Page().SelectCombo(kType, 3);
    EXPECT_THAT(lone.sheet.messages, ElementsAre(changed));
    lone.sheet.messages.clear();
    lone.Page().TypeText(kWidth, L"9");
    EXPECT_THAT(lone.sheet.messages, Contains(changed));
    ExpectAnswersToTheSheet(lone);
    EXPECT_NE(record, lone.record);
}

TEST_F(Barcode1DPageTest, IgnoresMessagesWithoutItsParameter) {
    LonePage lone(Description(), RecordOfType(0));
    ExpectNothingWithoutParameter(lone, L"BarcodePropPageProc", kPrint);
}

TEST_F(Barcode1DPageTest, TakesAnyMessage) {
    LonePage lone(Description(), RecordOfCases());
    ExpectTakesAnyMessage(lone);
    // A second initialisation adds nothing.
    lone.Page().SelectCombo(kFont, 2);
    EXPECT_EQ(lone.Ask(lone.handle(), WM_INITDIALOG, 0, lone.Description()), FALSE);
    EXPECT_EQ(lone.Page().ComboItems(kFont), kFontNames);
    EXPECT_EQ(lone.Page().ComboItems(kType), kTypeNames);
    EXPECT_EQ(lone.Page().ComboSelection(kFont), 2);
}

TEST_F(Barcode1DPageTest, OpensWithoutARecord) {
    LonePage lone(Description(), RecordOfCases());
    lone.LoseRecord();
    lone.Make();
    for (const int list : kLists) {
        EXPECT_FALSE(lone.Page().ComboItems(list).empty());
        lone.Use(list, CBN_SELCHANGE);
    }
    for (int control = 1000; control < 1320; ++control) {
        for (const int notification : {BN_CLICKED, CBN_SELCHANGE, EN_CHANGE}) {
            EXPECT_EQ(lone.Use(control, notification), FALSE);
        }
    }
    EXPECT_FALSE(lone.Page().IsEnabled(kPrint));
    EXPECT_EQ(lone.Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
    EXPECT_THAT(spooler_.calls, IsEmpty());
}

// A host without common parameters has no printer either.
TEST_F(Barcode1DPageTest, PrintsNothingWithoutCommonParameters) {
    LonePage lone(Description(), RecordOfType(0));
    lone.LoseCommonParameters();
    lone.Make();
    lone.Page().Click(kPrint);
    EXPECT_THAT(spooler_.calls, ElementsAre("StartDocPrinterW null 1 Barcode null RAW"));
}

TEST_F(Barcode1DPageTest, MayGoWhileItsMessageIsOpen) {
    LonePage lone(Description(), RecordOfType(0));
    ExpectGoesFromItsMessage(lone, kData, L"x", kPrint);
}

TEST_F(Barcode1DPageTest, MayGoWhileItPrints) {
    LonePage lone(Description(), RecordOfType(0));
    lone.Make();
    spooler_.on_start = [&] { lone.Unmake(); };
    EXPECT_EQ(lone.Use(kPrint), TRUE);
    EXPECT_FALSE(IsWindow(lone.handle()));
    EXPECT_EQ(spooler_.calls, JobOf("Barcode", Terminated(0, "123456789012")));
}

TEST_F(Barcode1DPageTest, TwoSheetsKeepToTheirOwn) {
    const Bytes description = Description();
    LonePage first(description, RecordOfCases());
    LonePage second(description, RecordOfType(12), nullptr);
    first.Make();
    second.Make();
    Bytes first_record = first.record;
    Bytes second_record = second.record;
    first.Page().SelectCombo(kFont, 4);
    second.Page().Click(kComposite);
    first_record[Font1D(4, at1::kType)] = 2;
    first.Page().SelectCombo(kType, 2);
    PutInt(second_record, Font1D(0, at1::kGs1Composite), 3);
    second.Page().TypeText(kGs1Composite, L"3");
    EXPECT_EQ(Differences(first_record, first.record), "");
    EXPECT_EQ(Differences(second_record, second.record), "");
    EXPECT_TRUE(first.Page().IsChecked(kIndependence));
    EXPECT_EQ(first.Page().Text(kData), L"12345678");
    EXPECT_EQ(second.Page().Text(kData), L"01234567890123");
    second.Page().Click(kPrint);
    EXPECT_THAT(spooler_.calls, ElementsAre("StartDocPrinterW null 1 Barcode null RAW"));
    second.Unmake();
    first.Page().Click(kPrint);
    EXPECT_EQ(spooler_.calls.at(1), "StartDocPrinterW printer 1 Barcode null RAW");
    EXPECT_EQ(first.Page().IsEnabled(kFontB), false);
}

}  // namespace
}  // namespace pages::barcode

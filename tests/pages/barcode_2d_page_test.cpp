// The 2D Code page in the real sheet: what it shows of a record, what each of its controls stores, and what a
// test print sends. Alone: each call of its procedure.
#include "barcode_fixture.h"
#include "captions.h"

namespace pages::barcode {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kTemplate = 118;

constexpr int kPdfEcc = 1023;
constexpr int kGs1Hri = 1024;
constexpr int kGs1Expanded = 1025;
constexpr int kQrLanguage = 1026;
constexpr int kQrModel = 1027;
constexpr int kQrEcc = 1028;
constexpr int kPdfColumns = 1049;
constexpr int kPdfRows = 1050;
constexpr int kGs1Width = 1051;
constexpr int kGs1Row = 1052;
constexpr int kPdfWidthSpin = 1053;
constexpr int kPdfHeightSpin = 1054;
constexpr int kPoints = 1055;
constexpr int kPdfColumnsSpin = 1056;
constexpr int kPdfRowsSpin = 1057;
constexpr int kGs1WidthSpin = 1058;
constexpr int kGs1Composite = 1059;
constexpr int kGs1CompositeSpin = 1060;
constexpr int kGs1Separator = 1061;
constexpr int kGs1SeparatorSpin = 1068;
constexpr int kQrWidth = 1071;
constexpr int kQrWidthSpin = 1072;
constexpr int kGs1RowSpin = 1076;
constexpr int kGs1Segments = 1078;
constexpr int kGs1SegmentsSpin = 1079;
constexpr int kSegmentsRange = 1080;
constexpr int kIndependence = 1097;
constexpr int kComposite = 1098;
constexpr int kPrint = 1106;
constexpr int kData = 1107;
constexpr int kFont = 1201;
constexpr int kType = 1202;
constexpr int kPdfWidth = 1203;
constexpr int kPdfHeight = 1204;

constexpr std::uint8_t kPdf = 0;
constexpr std::uint8_t kExpandedStacked = 3;
constexpr std::uint8_t kQr = 4;
constexpr std::uint8_t kMaxi = 5;
constexpr std::uint8_t kTypes = 6;

constexpr wchar_t kSample[] = L"01234567890123";

constexpr Caption kCaptions[] = {
    {1133, L"RC_STATIC_2DCODE_FONTNAME", L"Font Name:"},
    {1134, L"RC_STATIC_2DCODE_TYPE", L"Type:"},
    {1135, L"RC_STATIC_2DCODE_POINT", L"point"},
    {1136, L"RC_STATIC_2DCODE_NOTICE", L"Select this font size in the application."},
    {1195, L"RC_STATIC_2DCODE_PDF417", L"PDF417"},
    {1137, L"RC_STATIC_2DCODE_COLUMN", L"Column:"},
    {1138, L"RC_STATIC_2DCODE_ELEMENTWIDTH", L"Element Width:"},
    {1139, L"RC_STATIC_2DCODE_ROW", L"Row:"},
    {1140, L"RC_STATIC_2DCODE_ELEMENTHEIGHT", L"Element Height:"},
    {1141, L"RC_STATIC_2DCODE_ERRORCOR", L"Error Correction:"},
    {1192, L"RC_STATIC_2DCODE_GSDATABAR", L"GS1 DataBar"},
    {1184, L"RC_STATIC_2DCODE_GSTYPE", L"Type:"},
    {1097, L"RC_RADIO_Independence", L"Independence"},
    {1098, L"RC_RADIO_Complex", L"Composite"},
    {1185, L"RC_STATIC_2DCODE_GSEWIDTH", L"Element Width:"},
    {1187, L"RC_STATIC_2DCODE_GSRHEIGHT", L"Row Height:"},
    {1186, L"RC_STATIC_2DCODE_GS2DRHEIGHT", L"2D Row Height:"},
    {1188, L"RC_STATIC_2DCODE_GSSHEIGHT", L"Separator Height:"},
    {1189, L"RC_STATIC_2DCODE_GSSNUMBER", L"Segment Number:"},
    {1190, L"RC_STATIC_2DCODE_GSHRI", L"HRI:"},
    {1191, L"RC_STATIC_2DCODE_GSAAISTD", L"Expanded:"},
    {1196, L"RC_STATIC_2DCODE_QR", L"QR"},
    {1197, L"RC_STATIC_2DCODE_QREWIDTH", L"Element Width:"},
    {1198, L"RC_STATIC_2DCODE_QRLMODE", L"Language mode:"},
    {1199, L"RC_STATIC_2DCODE_QRMODE", L"Model:"},
    {1200, L"RC_STATIC_2DCODE_QRECORRECTION", L"Error Correction:"},
    {1193, L"RC_STATIC_2DCODE_PRINT", L"Test Print"},
    {1194, L"RC_STATIC_2DCODE_DATA", L"Data:"},
    {1106, L"RC_BUTTON_PRINT2D", L"Print"},
};

const std::vector<ListCaption>& ListCaptions() {
    static const std::vector<ListCaption> lists = {
        {kPdfEcc,
         L"RC_STATIC_2DCODE_ERRORCOR",
         {L"Error Correction Level 0", L"Error Correction Level 1", L"Error Correction Level 2",
          L"Error Correction Level 3", L"Error Correction Level 4", L"Error Correction Level 5",
          L"Error Correction Level 6", L"Error Correction Level 7", L"Error Correction Level 8"}},
        {kGs1Hri,
         L"RC_IDC_CMB_HRI2",
         {L"Primary and Secondary Data", L"Primary Data", L"Secondary Data", L"None"}},
        {kGs1Expanded, L"RC_IDC_CMB_AI2", {L"None", SourceText(kEnglish, L"2DCODE", L"RC_IDC_CMB_AI22")}},
        {kQrLanguage, L"RC_CMB_FONTMODE", {L"Chinese", L"Japanese"}},
    };
    return lists;
}

// The same in every language.
const ListCaption kFixedLists[] = {
    {kFont, nullptr, {L"2D Code1", L"2D Code2"}},
    {kType,
     nullptr,
     {L"PDF417", L"GS1 DataBar Stacked", L"GS1 DataBar Stacked Omnidirectional",
      L"GS1 DataBar Expanded Stacked", L"QR Code", L"Maxi Code"}},
    {kQrModel, nullptr, {L"1", L"2"}},
    {kQrEcc, nullptr, {L"L", L"M", L"H", L"Q"}},
};
constexpr Caption kFixedTexts[] = {
    {1055, nullptr, L"9.5"},          {1064, nullptr, L"[ 1. . 30 ]"},  {1062, nullptr, L"[ 1. . 7 ]"},
    {1065, nullptr, L"[ 3 . . 90 ]"}, {1063, nullptr, L"[ 2 . . 25 ]"}, {1080, nullptr, L"[ 2 . . 20 ]"},
    {1073, nullptr, L"[ 1 . . 24 ]"},
};

constexpr Caption kPdfHelps[] = {
    {kFont, L"CTEXT_FONTNAME2D",
     L"Select the 2D code font to be set. Text that an application prints in this font is printed as 2D "
     L"code."},
    {kType, L"CTEXT_BARCODETYPE2D", L"Select the type of 2D code."},
    {kPdfColumns, L"CTEXT_EDIT_COLUMN", L"Specify the number of columns of PDF417. Available range is 1-30."},
    {kPdfWidth, L"CTEXT_EDIT_WIDTH2D",
     L"Specify the element width of PDF417. The unit of width is dot, available range is 1-7."},
    {kPdfRows, L"CTEXT_EDIT_ROW", L"Specify the number of rows of PDF417. Available range is 3-90."},
    {kPdfHeight, L"CTEXT_EDIT_HEIGHT2D",
     L"Specify the element height of PDF417. The unit of height is dot, available range is 2-25."},
    {kPdfEcc, L"CTEXT_ERRORCORRECTIONLEVEL",
     L"Select the error correction level of PDF417. A higher level can restore more damaged data, but needs "
     L"a bigger code."},
    {kData, L"CTEXT_EDIT_PRINT2D", L"Edit the 2D code data for test print."},
    {kPrint, L"CTEXT_BUTTON_PRINT2D", L"Print a test 2D code with the current settings and data."},
};
constexpr Caption kGs1Helps[] = {
    {kIndependence, L"CTEXT_RADIO_Independence", L"Print the GS1 DataBar alone, without 2D composite part."},
    {kComposite, L"CTEXT_RADIO_Complex",
     L"Print the GS1 DataBar with 2D composite part. The 2D row height can be set after selecting this "
     L"item."},
    {kGs1Width, L"CTEXT_EDIT_GS1WIDTH2",
     L"Specify the element width of GS1 DataBar. The unit of width is dot, available range is 1-6."},
    {kGs1Row, L"CTEXT_EDIT_GS1HEIGHT2",
     L"Specify the row height of GS1 DataBar. The unit of height is dot, available range is 2-250."},
    {kGs1Composite, L"CTEXT_EDIT_ComplexHEIGHT2",
     L"Specify the row height of 2D composite part. This item is only enabled when Composite is selected, "
     L"available range is 1-10."},
    {kGs1Separator, L"CTEXT_EDIT_SeparatorHEIGHT2",
     L"Specify the height of separator. Available range is 1-10."},
    {kGs1Segments, L"CTEXT_EDIT_SECTIONNUM",
     L"Specify the number of segments in a row. This item is only enabled for GS1 DataBar Expanded Stacked, "
     L"available range is 2-20, or 4-20 when Composite is selected."},
    {kGs1Hri, L"CTEXT_CMB_HRI2", L"Select the data to be printed as HRI characters."},
    {kGs1Expanded, L"CTEXT_CMB_AI2",
     L"Select whether application identifiers are specified in the data. This item is only enabled for GS1 "
     L"DataBar Expanded Stacked."},
};
constexpr Caption kQrHelps[] = {
    {kQrWidth, L"CTEXT_EDIT_QRWIDTH",
     L"Specify the element width of QR Code. The unit of width is dot, available range is 1-24."},
    {kQrLanguage, L"CTEXT_CMB_FONTMODE", L"Select the language mode of QR Code (Chinese / Japanese)."},
    {kQrModel, L"CTEXT_CMB_TYPE", L"Select the model of QR Code."},
    {kQrEcc, L"CTEXT_CMB_ERROR", L"Select the error correction level of QR Code."},
};

constexpr int kPdfControls[] = {1195, 1137, 1049, 1056, 1064, 1138, 1203, 1053, 1062, 1139,
                                1050, 1057, 1065, 1140, 1204, 1054, 1063, 1141, 1023};
constexpr int kQrControls[] = {1196, 1197, 1071, 1072, 1073, 1198, 1026, 1199, 1027, 1200, 1028};
// The last four are the range labels that stand in the template.
constexpr int kGs1Controls[] = {1192, 1184, 1097, 1098, 1185, 1051, 1058, 1187, 1052, 1076,
                                1186, 1059, 1060, 1188, 1061, 1068, 1189, 1078, 1079, 1080,
                                1190, 1024, 1191, 1025, 1301, 1302, 1303, 1304};
constexpr int kCommonControls[] = {1133, 1201, 1134, 1202, 1055, 1135, 1136, 1193, 1194, 1107, 1106};

constexpr int kPdfInputs[] = {1049, 1056, 1050, 1057, 1203, 1053, 1204, 1054, 1023};
constexpr int kSegmentInputs[] = {1078, 1079, 1025};
constexpr int kCompositeInputs[] = {1059, 1060};

constexpr Place kMoved[] = {
    {1195, 26, 83},   {1137, 33, 108},  {1049, 130, 104}, {1056, 166, 104}, {1064, 192, 108},
    {1138, 33, 140},  {1203, 130, 137}, {1053, 166, 137}, {1062, 192, 140}, {1139, 33, 173},
    {1050, 130, 170}, {1057, 166, 170}, {1065, 192, 173}, {1140, 33, 206},  {1204, 130, 203},
    {1054, 166, 203}, {1063, 192, 206}, {1141, 33, 239},  {1023, 130, 236}, {1196, 26, 83},
    {1197, 33, 118},  {1071, 130, 115}, {1072, 163, 115}, {1073, 190, 118}, {1198, 33, 156},
    {1026, 130, 153}, {1199, 33, 194},  {1027, 130, 191}, {1200, 33, 232},  {1028, 130, 229},
};

template <std::size_t N>
Ids AllOf(const int (&ids)[N]) {
    return {std::begin(ids), std::end(ids)};
}

void ExpectFixedTexts(const Window& page) {
    for (const ListCaption& list : kFixedLists) {
        EXPECT_EQ(page.ComboItems(list.list), list.english);
    }
    for (const Caption& fixed : kFixedTexts) {
        EXPECT_EQ(page.Text(fixed.control), fixed.english) << fixed.control;
    }
}

struct Font {
    std::uint8_t type;
    std::uint8_t pdf_width;
    std::uint8_t pdf_height;
    std::uint8_t pdf_columns;
    std::uint8_t pdf_rows;
    std::uint8_t pdf_ecc;
    std::uint8_t gs1_width;
    std::uint32_t gs1_row;
    std::uint32_t gs1_composite;
    std::uint8_t gs1_separator;
    std::uint8_t gs1_segments;
    std::uint8_t gs1_hri;
    std::uint8_t gs1_expanded;
    std::uint8_t qr_width;
    std::uint8_t qr_language;
    std::uint8_t qr_model;
    std::uint8_t qr_ecc;
};

constexpr Font kFontCases[] = {
    {0, 5, 20, 12, 80, 7, 4, 0xAB, 7, 9, 13, 3, 1, 21, 1, 2, 2},
    {3, 2, 9, 25, 33, 1, 6, 99, 3, 4, 6, 4, 0, 8, 0, 1, 3},
};

void PutFont(Bytes& record, std::size_t index, const Font& font) {
    record[Font2D(index, at2::kType)] = font.type;
    record[Font2D(index, at2::kPdfWidth)] = font.pdf_width;
    record[Font2D(index, at2::kPdfHeight)] = font.pdf_height;
    record[Font2D(index, at2::kPdfColumns)] = font.pdf_columns;
    record[Font2D(index, at2::kPdfRows)] = font.pdf_rows;
    record[Font2D(index, at2::kPdfEcc)] = font.pdf_ecc;
    record[Font2D(index, at2::kGs1Width)] = font.gs1_width;
    PutInt(record, Font2D(index, at2::kGs1Row), font.gs1_row);
    PutInt(record, Font2D(index, at2::kGs1Composite), font.gs1_composite);
    record[Font2D(index, at2::kGs1Separator)] = font.gs1_separator;
    record[Font2D(index, at2::kGs1Segments)] = font.gs1_segments;
    record[Font2D(index, at2::kGs1Hri)] = font.gs1_hri;
    record[Font2D(index, at2::kGs1Expanded)] = font.gs1_expanded;
    record[Font2D(index, at2::kQrWidth)] = font.qr_width;
    record[Font2D(index, at2::kQrLanguage)] = font.qr_language;
    record[Font2D(index, at2::kQrModel)] = font.qr_model;
    record[Font2D(index, at2::kQrEcc)] = font.qr_ecc;
}

// Of the 1D fonts only the type has a say: Code39, which has none, where it is not told.
constexpr std::uint8_t kCode39 = 4;

Bytes RecordOfCases() {
    Bytes record = OddRecord();
    for (std::size_t i = 0; i < kFonts2D; ++i) {
        PutFont(record, i, kFontCases[i]);
        record[Font1D(i, at1::kType)] = kCode39;
    }
    return record;
}

Bytes RecordOfType(std::uint8_t type, std::uint8_t type_1d = kCode39) {
    Bytes record = RecordOfCases();
    record[Font2D(0, at2::kType)] = type;
    record[Font1D(0, at1::kType)] = type_1d;
    return record;
}

void ExpectShown(const Window& page, const Font& font) {
    struct Number {
        int edit;
        int spin;
        std::uint32_t value;
    };
    for (const Number& number : {Number{kPdfColumns, kPdfColumnsSpin, font.pdf_columns},
                                 {kPdfWidth, kPdfWidthSpin, font.pdf_width},
                                 {kPdfRows, kPdfRowsSpin, font.pdf_rows},
                                 {kPdfHeight, kPdfHeightSpin, font.pdf_height},
                                 {kGs1Width, kGs1WidthSpin, font.gs1_width},
                                 {kGs1Row, kGs1RowSpin, font.gs1_row},
                                 {kGs1Composite, kGs1CompositeSpin, font.gs1_composite},
                                 {kGs1Separator, kGs1SeparatorSpin, font.gs1_separator},
                                 {kGs1Segments, kGs1SegmentsSpin, font.gs1_segments},
                                 {kQrWidth, kQrWidthSpin, font.qr_width}}) {
        EXPECT_EQ(page.Text(number.edit), std::to_wstring(number.value)) << number.edit;
        EXPECT_EQ(page.SpinPosition(number.spin), static_cast<int>(number.value)) << number.spin;
    }
    EXPECT_EQ(page.ComboSelection(kType), font.type);
    EXPECT_EQ(page.ComboSelection(kPdfEcc), font.pdf_ecc);
    EXPECT_EQ(page.ComboSelection(kGs1Hri), font.gs1_hri - 1);
    EXPECT_EQ(page.ComboSelection(kGs1Expanded), font.gs1_expanded);
    EXPECT_EQ(page.ComboSelection(kQrLanguage), font.qr_language);
    EXPECT_EQ(page.ComboSelection(kQrModel), font.qr_model - 1);
    EXPECT_EQ(page.ComboSelection(kQrEcc), font.qr_ecc);
    EXPECT_EQ(page.Text(kData), kSample);
    EXPECT_TRUE(page.IsEnabled(kPrint));
    EXPECT_EQ(page.Text(kPoints), L"9.5");
    EXPECT_FALSE(page.IsEnabled(kPoints));
}

void ExpectType(const Window& page, std::uint8_t type) {
    const bool is_data_bar = type >= 1 && type <= 3;
    const bool is_pdf = type == kPdf || type > kQr;
    EXPECT_EQ(Visible(page, kPdfControls), is_pdf ? AllOf(kPdfControls) : Ids());
    EXPECT_EQ(Visible(page, kGs1Controls), is_data_bar ? AllOf(kGs1Controls) : Ids());
    EXPECT_EQ(Visible(page, kQrControls), type == kQr ? AllOf(kQrControls) : Ids());
    EXPECT_EQ(Visible(page, kCommonControls), AllOf(kCommonControls));
    EXPECT_EQ(Enabled(page, kPdfInputs), type <= kQr ? AllOf(kPdfInputs) : Ids());
    EXPECT_EQ(Enabled(page, kSegmentInputs), type == kExpandedStacked ? AllOf(kSegmentInputs) : Ids());
    EXPECT_EQ(page.Text(kData), kSample);
}

class Barcode2DPageTest : public LoneBarcodeTest {
  protected:
    Barcode2DPageTest() : LoneBarcodeTest(kTab2D, kTemplate) {}

    void SetUp() override {
        hooks_.On("KERNEL32.dll", "WideCharToMultiByte", &WideCharToMultiByte,
                  [this](auto original, UINT code_page, auto... arguments) {
                      return original(code_page == CP_ACP ? ansi_ : code_page, arguments...);
                  });
        BarcodeTest::SetUp();
    }

    // The system's ANSI code page.
    UINT ansi_ = 1252;
};

// Texts

TEST_F(Barcode2DPageTest, ShowsItsTextsInEveryLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        OpenPage(RecordOfCases(), [&](UiDriver&, Sheet& sheet, const Window& page) {
            EXPECT_EQ(sheet.TabTitles().at(kTab2D), SourceText(file, L"2DCODE", L"RC_2DCODEFORM"));
            EXPECT_EQ(CaptionsOf(page, kCaptions), SourceCaptions(file, L"2DCODE", kCaptions));
            for (const ListCaption& list : ListCaptions()) {
                Texts expected;
                for (std::size_t i = 1; i <= list.english.size(); ++i) {
                    expected.push_back(SourceText(file, L"2DCODE", (list.key + std::to_wstring(i)).c_str()));
                }
                EXPECT_EQ(page.ComboItems(list.list), expected);
            }
            ExpectFixedTexts(page);
        });
    }
}

TEST_F(Barcode2DPageTest, ShowsEnglishWithoutAnyFile) {
    RemoveAllLanguageFiles();
    OpenPage(RecordOfCases(), [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(sheet.TabTitles().at(kTab2D), L"2D Code");
        EXPECT_EQ(CaptionsOf(page, kCaptions), DefaultCaptions(kCaptions));
        for (const ListCaption& list : ListCaptions()) {
            EXPECT_EQ(page.ComboItems(list.list), list.english);
        }
        ExpectFixedTexts(page);
    });
}

// The user may choose another language on the Main page while this one has been seen.
TEST_F(Barcode2DPageTest, FollowsTheLanguageWhileItIsOpen) {
    const Bytes record = RecordOfCases();
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const wchar_t* file : {kSimplifiedChinese, kTraditionalChinese, kEnglish}) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
            ChooseLanguage(file);
            Repaint(page);
            EXPECT_EQ(CaptionsOf(page, kCaptions), SourceCaptions(file, L"2DCODE", kCaptions));
            EXPECT_EQ(page.Text(kPdfEcc), SourceText(file, L"2DCODE", L"RC_STATIC_2DCODE_ERRORCOR8"));
            EXPECT_EQ(page.Text(kGs1Hri), SourceText(file, L"2DCODE", L"RC_IDC_CMB_HRI23"));
            EXPECT_EQ(page.Text(kGs1Expanded), SourceText(file, L"2DCODE", L"RC_IDC_CMB_AI22"));
            EXPECT_EQ(page.Text(kQrLanguage), SourceText(file, L"2DCODE", L"RC_CMB_FONTMODE2"));
            ExpectShown(page, kFontCases[0]);
            ExpectFixedTexts(page);
        }
        EXPECT_EQ(CaptionsOf(page, kCaptions), DefaultCaptions(kCaptions));
        EXPECT_FALSE(sheet.IsApplyEnabled());
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(Barcode2DPageTest, TwentyTwoControlsHaveHelp) {
    EXPECT_EQ(std::size(kPdfHelps) + std::size(kGs1Helps) + std::size(kQrHelps), 22u);
    OpenPage(RecordOfCases(), [&](UiDriver& ui, Sheet&, const Window& page) {
        const auto expect_help = [&](const Caption& help) {
            EXPECT_EQ(SourceText(kEnglish, L"2DCODE", help.key), help.english);
            ExpectHelpOf(ui, page, help.control, help.english);
        };
        std::for_each(std::begin(kPdfHelps), std::end(kPdfHelps), expect_help);
        page.SelectCombo(kType, kExpandedStacked);
        page.Click(kComposite);
        std::for_each(std::begin(kGs1Helps), std::end(kGs1Helps), expect_help);
        page.SelectCombo(kType, kQr);
        std::for_each(std::begin(kQrHelps), std::end(kQrHelps), expect_help);
        ChooseLanguage(kTraditionalChinese);
        Repaint(page);
        ExpectHelpOf(ui, page, kPrint, SourceText(kTraditionalChinese, L"2DCODE", L"CTEXT_BUTTON_PRINT2D"));
    });
}

// Places

TEST_F(Barcode2DPageTest, PutsTheGroupsOntoTheDataBarOne) {
    OpenPage(RecordOfCases(), [&](UiDriver&, Sheet&, const Window& page) {
        for (const Place& place : kMoved) {
            EXPECT_EQ(PlaceOf(page, place.control), place);
        }
    });
}

// On a finer screen: one and a half times as far across, one and a quarter times as far down.
TEST_F(Barcode2DPageTest, MovesByTheScreensDotsPerInch) {
    per_inch_ = {144, 120};
    LonePage lone(Description(), RecordOfCases());
    lone.Make();
    for (const Place& place : kMoved) {
        EXPECT_EQ(PlaceOf(lone.Page(), place.control),
                  (Place{place.control, MulDiv(place.x, 144, 96), MulDiv(place.y, 120, 96)}));
    }
}

TEST_F(Barcode2DPageTest, HasItsPlaceInTheSheet) {
    ExpectTemplate(294, 200, L"2D Code");
}

TEST_F(Barcode2DPageTest, KeepsSizesAndOrder) {
    LonePage lone(Description(), RecordOfCases());
    lone.Make();
    const Window page = lone.Page();
    const UiDriver driver(GetCurrentThreadId());
    const Window raw(driver, lone.MakeTemplate());
    EXPECT_EQ(ControlsOf(page), ControlsOf(raw));
    EXPECT_EQ(ControlsOf(page).size(), std::size(kPdfControls) + std::size(kGs1Controls) +
                                           std::size(kQrControls) + std::size(kCommonControls));
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

TEST_F(Barcode2DPageTest, ShowsTheGroupOfTheType) {
    OpenPage(RecordOfCases(), [&](UiDriver&, Sheet&, const Window& page) {
        ExpectType(page, kPdf);
        for (const std::uint8_t type : std::initializer_list<std::uint8_t>{5, 1, 4, 3, 5, 0, 2, 0, 4, 5, 3}) {
            SCOPED_TRACE(static_cast<int>(type));
            page.TypeText(kData, L"1");
            page.SelectCombo(kType, type);
            ExpectType(page, type);
        }
        page.SelectCombo(kType, kMaxi);
        page.SelectCombo(kFont, 1);
        ExpectType(page, kExpandedStacked);
        page.SelectCombo(kFont, 0);
        ExpectType(page, kMaxi);
    });
}

// Every control that can be used, from top to bottom, and none that is hidden.
TEST_F(Barcode2DPageTest, TabGoesThroughWhatShows) {
    const Bytes record = RecordOfType(1);
    OpenPage(record, [&](UiDriver& ui, Sheet& sheet, const Window& page) {
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont), (Ids{kFont, kType, kIndependence, kGs1Width, kGs1Row,
                                                         kGs1Separator, kGs1Hri, kData, kPrint}));
        page.SelectCombo(kFont, 1);
        page.Click(kComposite);
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont),
                  (Ids{kFont, kType, kComposite, kGs1Width, kGs1Row, kGs1Composite, kGs1Separator,
                       kGs1Segments, kGs1Hri, kGs1Expanded, kData, kPrint}));
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_FALSE(sheet.IsApplyEnabled());
        page.SelectCombo(kType, kPdf);
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont),
                  (Ids{kFont, kType, kPdfColumns, kPdfWidth, kPdfRows, kPdfHeight, kPdfEcc, kData, kPrint}));
        page.SelectCombo(kType, kQr);
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont),
                  (Ids{kFont, kType, kQrWidth, kQrLanguage, kQrModel, kQrEcc, kData, kPrint}));
        page.SelectCombo(kType, kMaxi);
        EXPECT_EQ(TabOrder(ui, sheet, page, kFont), (Ids{kFont, kType, kData, kPrint}));
    });
}

// What a record shows

TEST_F(Barcode2DPageTest, ShowsEachFontAndStoresNothing) {
    const Bytes record = RecordOfCases();
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(page.ComboSelection(kFont), 0);
        ExpectShown(page, kFontCases[0]);
        for (const int font : {1, 0, 1}) {
            page.TypeText(kData, L"1");
            page.SelectCombo(kFont, font);
            ExpectShown(page, kFontCases[font]);
            EXPECT_EQ(Differences(record, Record()), "");
        }
        EXPECT_TRUE(page.IsChecked(kIndependence));
        EXPECT_FALSE(page.IsChecked(kComposite));
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_NE(GetWindowLongPtrW(page.Control(kPoints), GWL_STYLE) & ES_READONLY, 0);
        page.PressKey(kFont, VK_UP);
        ExpectShown(page, kFontCases[0]);
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(Barcode2DPageTest, ShowsTheDefaults) {
    OpenPage(Record(), [&](UiDriver&, Sheet&, const Window& page) {
        for (const int font : {0, 1}) {
            page.SelectCombo(kFont, font);
            ExpectShown(page, {0, 3, 3, 3, 3, 5, 2, 100, 2, 2, 4, 1, 1, 3, 0, 1, 1});
        }
        EXPECT_EQ(RangeOf(page, kPdfColumnsSpin), (SpinRange{1, 30}));
        EXPECT_EQ(RangeOf(page, kPdfWidthSpin), (SpinRange{1, 7}));
        EXPECT_EQ(RangeOf(page, kPdfRowsSpin), (SpinRange{3, 90}));
        EXPECT_EQ(RangeOf(page, kPdfHeightSpin), (SpinRange{2, 25}));
        EXPECT_EQ(RangeOf(page, kGs1WidthSpin), (SpinRange{1, 6}));
        EXPECT_EQ(RangeOf(page, kGs1RowSpin), (SpinRange{2, 250}));
        EXPECT_EQ(RangeOf(page, kGs1CompositeSpin), (SpinRange{1, 10}));
        EXPECT_EQ(RangeOf(page, kGs1SeparatorSpin), (SpinRange{1, 10}));
        EXPECT_EQ(RangeOf(page, kGs1SegmentsSpin), (SpinRange{2, 20}));
        EXPECT_EQ(RangeOf(page, kQrWidthSpin), (SpinRange{1, 24}));
    });
}

// A record of another writer: what is shown is the nearest that the controls have, and it is kept.
TEST_F(Barcode2DPageTest, ShowsAnyFontAndStoresNothing) {
    Bytes record = RecordOfCases();
    PutFont(record, 1, {200, 200, 26, 31, 91, 9, 7, 0xFFFFFFFF, 0x80000000, 255, 21, 5, 2, 25, 2, 3, 4});
    Bytes least = record;
    PutFont(least, 1, {6, 0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 255, 0, 255, 0, 255});
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        const auto expect_numbers = [&](const Texts& expected) {
            Texts shown;
            for (const int edit : {kPdfColumns, kPdfWidth, kPdfRows, kPdfHeight, kGs1Width, kGs1Row,
                                   kGs1Composite, kGs1Separator, kGs1Segments, kQrWidth}) {
                shown.push_back(page.Text(edit));
            }
            EXPECT_EQ(shown, expected);
            for (const int list : {kType, kPdfEcc, kGs1Hri, kGs1Expanded, kQrLanguage, kQrModel, kQrEcc}) {
                EXPECT_EQ(page.ComboSelection(list), -1) << list;
            }
        };
        page.SelectCombo(kFont, 1);
        expect_numbers({L"30", L"7", L"90", L"25", L"6", L"250", L"10", L"10", L"20", L"24"});
        ExpectType(page, 200);
        ExpectRefused(page, kPrint);
        page.SelectCombo(kFont, 0);
        ExpectShown(page, kFontCases[0]);
        SetRecord(least);
        page.SelectCombo(kFont, 1);
        expect_numbers({L"1", L"1", L"3", L"2", L"1", L"2", L"1", L"1", L"2", L"1"});
        ExpectType(page, 6);
        Repaint(page);
        EXPECT_FALSE(sheet.IsApplyEnabled());
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(least, Record()), "");
}

// What the controls store

TEST_F(Barcode2DPageTest, StoresEachChoice) {
    Bytes record = RecordOfCases();
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        struct List {
            std::uint8_t type;
            int list;
            std::size_t field;
            std::uint8_t first;
            std::uint8_t count;
        };
        constexpr List kLists[] = {
            {kPdf, kPdfEcc, at2::kPdfEcc, 0, 9},
            {kExpandedStacked, kGs1Hri, at2::kGs1Hri, 1, 4},
            {kExpandedStacked, kGs1Expanded, at2::kGs1Expanded, 0, 2},
            {kQr, kQrLanguage, at2::kQrLanguage, 0, 2},
            {kQr, kQrModel, at2::kQrModel, 1, 2},
            {kQr, kQrEcc, at2::kQrEcc, 0, 4},
        };
        for (std::size_t font = 0; font < kFonts2D; ++font) {
            page.SelectCombo(kFont, static_cast<int>(font));
            for (const std::uint8_t type : std::initializer_list<std::uint8_t>{5, 1, 4, 2, 3, 0}) {
                record[Font2D(font, at2::kType)] = type;
                Step(sheet, page, "type", record, [&] { page.SelectCombo(kType, type); });
            }
            for (const List& list : kLists) {
                SCOPED_TRACE(list.list);
                record[Font2D(font, at2::kType)] = list.type;
                page.SelectCombo(kType, list.type);
                for (int i = list.count - 1; i >= 0; --i) {
                    record[Font2D(font, list.field)] = static_cast<std::uint8_t>(i + list.first);
                    Step(sheet, page, "item " + std::to_string(i), record,
                         [&] { page.SelectCombo(list.list, i); });
                }
                record[Font2D(font, list.field)] = static_cast<std::uint8_t>(list.first + 1);
                Step(sheet, page, "by key", record, [&] { page.PressKey(list.list, VK_DOWN); });
            }
        }
        sheet.PressApply();
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_EQ(page.Text(kPoints), L"9.5");
    });
}

struct Typed {
    const wchar_t* text;
    std::uint32_t stored;
};

struct NumberCase {
    std::uint8_t type;
    int edit;
    int spin;
    std::size_t field;
    bool is_int;
    std::vector<Typed> typed;
};

// As it is typed into an empty box, key by key. Where a key makes too little of it the box takes the least,
// and the next key comes behind that.
const NumberCase kNumbers[] = {
    {kPdf,
     kPdfColumns,
     kPdfColumnsSpin,
     at2::kPdfColumns,
     false,
     {{L"29", 29}, {L"0", 1}, {L"30", 30}, {L"1", 1}, {L"31", 30}, {L"", 1}, {L"999", 30}, {L"12", 12}}},
    {kPdf,
     kPdfWidth,
     kPdfWidthSpin,
     at2::kPdfWidth,
     false,
     {{L"6", 6}, {L"0", 1}, {L"7", 7}, {L"1", 1}, {L"8", 7}, {L"", 1}, {L"23", 7}}},
    {kPdf,
     kPdfRows,
     kPdfRowsSpin,
     at2::kPdfRows,
     false,
     {{L"4", 4},
      {L"2", 3},
      {L"89", 89},
      {L"3", 3},
      {L"90", 90},
      {L"0", 3},
      {L"91", 90},
      {L"", 3},
      {L"15", 35},
      {L"501", 90}}},
    {kPdf,
     kPdfHeight,
     kPdfHeightSpin,
     at2::kPdfHeight,
     false,
     {{L"24", 24},
      {L"1", 2},
      {L"25", 25},
      {L"2", 2},
      {L"26", 25},
      {L"0", 2},
      {L"3", 3},
      {L"", 2},
      {L"10", 20}}},
    {1,
     kGs1Width,
     kGs1WidthSpin,
     at2::kGs1Width,
     false,
     {{L"5", 5}, {L"0", 1}, {L"6", 6}, {L"1", 1}, {L"7", 6}, {L"", 1}, {L"12", 6}}},
    {1,
     kGs1Row,
     kGs1RowSpin,
     at2::kGs1Row,
     true,
     {{L"249", 249},
      {L"1", 2},
      {L"250", 250},
      {L"2", 2},
      {L"251", 250},
      {L"0", 2},
      {L"3", 3},
      {L"", 2},
      {L"100", 200},
      {L"2049", 250}}},
    {1,
     kGs1Composite,
     kGs1CompositeSpin,
     at2::kGs1Composite,
     true,
     {{L"9", 9}, {L"0", 1}, {L"10", 10}, {L"1", 1}, {L"11", 10}, {L"", 1}, {L"25", 10}}},
    {1,
     kGs1Separator,
     kGs1SeparatorSpin,
     at2::kGs1Separator,
     false,
     {{L"8", 8}, {L"0", 1}, {L"10", 10}, {L"1", 1}, {L"11", 10}, {L"", 1}, {L"25", 10}}},
    {kExpandedStacked,
     kGs1Segments,
     kGs1SegmentsSpin,
     at2::kGs1Segments,
     false,
     {{L"9", 9}, {L"1", 2}, {L"3", 3}, {L"2", 2}, {L"4", 4}, {L"0", 2}, {L"8", 8}, {L"", 2}, {L"57", 5}}},
    {kQr,
     kQrWidth,
     kQrWidthSpin,
     at2::kQrWidth,
     false,
     {{L"23", 23}, {L"0", 1}, {L"24", 24}, {L"1", 1}, {L"25", 24}, {L"", 1}, {L"123", 12}}},
};

TEST_F(Barcode2DPageTest, StoresTypedNumbersInTheirRange) {
    for (std::size_t font = 0; font < kFonts2D; ++font) {
        SCOPED_TRACE(font);
        Bytes record = RecordOfCases();
        OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
            page.SelectCombo(kFont, static_cast<int>(font));
            for (const NumberCase& number : kNumbers) {
                record[Font2D(font, at2::kType)] = number.type;
                page.SelectCombo(kType, number.type);
                if (number.edit == kGs1Composite) {
                    page.Click(kComposite);
                }
                for (const Typed& typed : number.typed) {
                    if (number.is_int) {
                        PutInt(record, Font2D(font, number.field), typed.stored);
                    } else {
                        record[Font2D(font, number.field)] = static_cast<std::uint8_t>(typed.stored);
                    }
                    Step(sheet, page, std::to_string(number.edit) + ": " + Narrow(typed.text), record,
                         [&] { page.TypeText(number.edit, typed.text); });
                    EXPECT_EQ(page.Text(number.edit), std::to_wstring(typed.stored));
                }
                ExpectDigitsOnly(sheet, page, number.edit);
                if (number.edit == kGs1Composite) {
                    page.Click(kIndependence);
                }
            }
        });
    }
}

// What was pasted may be longer than any number.
TEST_F(Barcode2DPageTest, ANumberBeyondAllNumbersIsTheMost) {
    Bytes record = RecordOfType(kPdf);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const wchar_t* text : {L"4294967295", L"4294967297", L"99999999999999999999"}) {
            record[Font2D(0, at2::kPdfColumns)] = 30;
            Step(sheet, page, Narrow(text), record, [&] {
                page.TypeText(kPdfColumns, L"5");
                page.Send(kPdfColumns, EM_SETSEL, 0, -1);
                page.Send(kPdfColumns, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text));
            });
            EXPECT_EQ(page.Text(kPdfColumns), L"30");
        }
    });
}

TEST_F(Barcode2DPageTest, ArrowsStayInTheirRange) {
    Bytes record = RecordOfCases();
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const NumberCase& number : kNumbers) {
            SCOPED_TRACE(number.edit);
            page.SelectCombo(kType, number.type);
            if (number.edit == kGs1Composite) {
                page.Click(kComposite);
            }
            const SpinRange range = RangeOf(page, number.spin);
            const auto store = [&](int value) {
                record = Record();
                if (number.is_int) {
                    PutInt(record, Font2D(0, number.field), static_cast<std::uint32_t>(value));
                } else {
                    record[Font2D(0, number.field)] = static_cast<std::uint8_t>(value);
                }
            };
            // From one above the least.
            page.TypeText(number.edit, std::to_wstring(range.least + 1));
            store(range.least);
            Step(sheet, page, "down", record, [&] { page.SpinDown(number.spin); });
            Look(sheet, page, "no less", [&] { page.SpinDown(number.spin); });
            EXPECT_EQ(page.Text(number.edit), std::to_wstring(range.least));
            page.SpinUp(number.spin, range.most - range.least - 1);
            EXPECT_EQ(page.Text(number.edit), std::to_wstring(range.most - 1));
            store(range.most);
            Step(sheet, page, "up by key", record, [&] { page.PressKey(number.edit, VK_UP); });
            Look(sheet, page, "no more", [&] { page.SpinUp(number.spin); });
            EXPECT_EQ(page.Text(number.edit), std::to_wstring(range.most));
            if (number.edit == kGs1Segments) {
                Look(sheet, page, "no digit behind two", [&] {
                    page.Send(kGs1Segments, EM_SETSEL, 2, 2);
                    page.AppendText(kGs1Segments, L"1");
                });
            }
            if (number.edit == kGs1Composite) {
                page.Click(kIndependence);
            }
        }
    });
}

// With the real keyboard.
TEST_F(Barcode2DPageTest, TakesKeysOneByOne) {
    Bytes record = RecordOfType(kPdf);
    OpenPage(record, [&](UiDriver& ui, Sheet& sheet, const Window& page) {
        const auto keys = [&](const char* name, std::initializer_list<WORD> pressed, std::uint8_t rows) {
            record[Font2D(0, at2::kPdfRows)] = rows;
            Step(sheet, page, name, record, [&] { Type(ui, page, pressed); });
            EXPECT_EQ(page.Text(kPdfRows), std::to_wstring(rows)) << name;
        };
        FocusForTyping(ui, sheet, page, kPdfRows);
        page.Send(kPdfRows, EM_SETSEL, 0, -1);
        keys("too little", {'1'}, 3);
        keys("goes on", {'5'}, 35);
        keys("too much", {'0'}, 90);
        keys("less", {VK_BACK}, 9);
        keys("emptied", {VK_BACK}, 3);
        keys("replaced", {'4'}, 4);
        keys("two digits", {'7'}, 47);
        keys("arrows", {VK_UP, VK_UP, VK_DOWN}, 48);
    });
}

TEST_F(Barcode2DPageTest, CompositeHasFourSegmentsAtLeast) {
    Bytes record = RecordOfType(kExpandedStacked);
    record[Font2D(0, at2::kGs1Segments)] = 2;
    record[Font2D(1, at2::kGs1Segments)] = 2;
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(Enabled(page, kCompositeInputs), Ids());
        EXPECT_EQ(page.Text(kGs1Segments), L"2");
        Look(sheet, page, "the focus is no choice", [&] { page.Focus(kComposite); });
        EXPECT_TRUE(page.IsChecked(kIndependence));
        EXPECT_EQ(Enabled(page, kCompositeInputs), Ids());
        record[Font2D(0, at2::kGs1Segments)] = 4;
        Step(sheet, page, "Composite", record, [&] { page.Click(kComposite); });
        EXPECT_EQ(Enabled(page, kCompositeInputs), AllOf(kCompositeInputs));
        EXPECT_EQ(page.Text(kGs1Segments), L"4");
        EXPECT_EQ(page.Text(kSegmentsRange), L"[ 4 . . 20 ]");
        EXPECT_EQ(RangeOf(page, kGs1SegmentsSpin), (SpinRange{4, 20}));
        Look(sheet, page, "no less by arrows", [&] { page.SpinDown(kGs1SegmentsSpin); });
        EXPECT_EQ(page.Text(kGs1Segments), L"4");
        // Typing has the other limit.
        for (const std::uint8_t typed : {std::uint8_t{3}, std::uint8_t{2}}) {
            record[Font2D(0, at2::kGs1Segments)] = typed;
            Step(sheet, page, "typed", record, [&] { page.TypeText(kGs1Segments, std::to_wstring(typed)); });
            EXPECT_EQ(page.Text(kGs1Segments), std::to_wstring(typed));
        }
        page.SpinUp(kGs1SegmentsSpin);
        EXPECT_GE(page.SpinPosition(kGs1SegmentsSpin), 4);
        EXPECT_EQ(page.Text(kGs1Segments), std::to_wstring(Record()[Font2D(0, at2::kGs1Segments)]));
        record[Font2D(0, at2::kGs1Segments)] = 5;
        page.TypeText(kGs1Segments, L"5");
        Look(sheet, page, "Independence", [&] { page.Click(kIndependence); });
        EXPECT_EQ(Enabled(page, kCompositeInputs), Ids());
        EXPECT_EQ(page.Text(kGs1Segments), L"5");
        EXPECT_EQ(page.Text(kSegmentsRange), L"[ 2 . . 20 ]");
        EXPECT_EQ(RangeOf(page, kGs1SegmentsSpin), (SpinRange{2, 20}));
        Look(sheet, page, "enough of them", [&] { page.Click(kComposite); });
        EXPECT_EQ(page.Text(kGs1Segments), L"5");
        // The choice is the page's, the number the font's.
        Look(sheet, page, "the other font", [&] { page.SelectCombo(kFont, 1); });
        EXPECT_TRUE(page.IsChecked(kComposite));
        EXPECT_EQ(page.Text(kGs1Segments), L"2");
        EXPECT_EQ(Enabled(page, kCompositeInputs), AllOf(kCompositeInputs));
        Look(sheet, page, "of another type", [&] {
            page.SelectCombo(kFont, 0);
            page.Click(kIndependence);
        });
        EXPECT_EQ(Differences(record, Record()), "");
    });
    OpenPage(record, [&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_TRUE(page.IsChecked(kIndependence)) << "the choice is not stored";
    });
}

// Also where the box cannot be used.
TEST_F(Barcode2DPageTest, CompositeRaisesTheSegmentsOfEachDataBar) {
    OpenPage(RecordOfCases(), [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const std::uint8_t type : {std::uint8_t{1}, std::uint8_t{2}, kExpandedStacked}) {
            for (const std::uint8_t segments : {std::uint8_t{2}, std::uint8_t{3}}) {
                SCOPED_TRACE(testing::PrintToString(std::pair(type, segments)));
                Bytes record = RecordOfType(type);
                record[Font2D(0, at2::kGs1Segments)] = segments;
                SetRecord(record);
                page.SelectCombo(kFont, 0);
                Look(sheet, page, "Independence", [&] { page.Click(kIndependence); });
                record[Font2D(0, at2::kGs1Segments)] = 4;
                Step(sheet, page, "Composite", record, [&] { page.Click(kComposite); });
                EXPECT_EQ(page.Text(kGs1Segments), L"4");
                ExpectType(page, type);
            }
        }
    });
}

TEST_F(Barcode2DPageTest, EachTypeKeepsTheKind) {
    Bytes record = RecordOfType(1);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const int kind : {kComposite, kIndependence}) {
            SCOPED_TRACE(kind);
            const bool is_composite = kind == kComposite;
            Look(sheet, page, "kind", [&] { page.Click(kind); });
            for (const std::uint8_t type : std::initializer_list<std::uint8_t>{2, 0, 3, 4, 3, 5, 1}) {
                record[Font2D(0, at2::kType)] = type;
                Step(sheet, page, "type " + std::to_string(type), record,
                     [&] { page.SelectCombo(kType, type); });
                ExpectType(page, type);
                EXPECT_EQ(page.IsChecked(kComposite), is_composite);
                EXPECT_EQ(page.IsChecked(kIndependence), !is_composite);
                EXPECT_EQ(Enabled(page, kCompositeInputs), is_composite ? AllOf(kCompositeInputs) : Ids());
                EXPECT_EQ(page.Text(kSegmentsRange), is_composite ? L"[ 4 . . 20 ]" : L"[ 2 . . 20 ]");
                EXPECT_EQ(RangeOf(page, kGs1SegmentsSpin), (SpinRange{is_composite ? 4 : 2, 20}));
            }
        }
    });
}

// Printing

TEST_F(Barcode2DPageTest, PrintsOnlyWhatIsThere) {
    OpenPage(RecordOfType(1), [&](UiDriver&, Sheet& sheet, const Window& page) {
        Look(sheet, page, "typing", [&] {
            page.TypeText(kData, L"");
            EXPECT_FALSE(page.IsEnabled(kPrint));
            page.AppendText(kData, L"7");
            EXPECT_TRUE(page.IsEnabled(kPrint));
            page.Send(kData, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L""));
            EXPECT_FALSE(page.IsEnabled(kPrint));
        });
        page.SelectCombo(kFont, 0);
        EXPECT_TRUE(page.IsEnabled(kPrint));
    });
}

constexpr std::uint8_t kGs = 0x1D;

// Of the first font of RecordOfType.
const Bytes kPdfHeader = {kGs, 0x70, 0x01, 0x01, 0x50, 0x0C, 0x05, 0x14, kGs, 0x71, 0x07, kGs, 0x6B, 0x0A};

Bytes DataBarHeader(std::uint8_t kind) {
    return {kGs,  0x66, 0x00, kGs,  0x48, 0x00, kGs, 0x73, kind, 0x04,
            0xAB, 0x07, 0x09, 0x0D, 0x03, 0x01, kGs, 0x6B, 0x0D};
}

Bytes QrHeader(std::uint8_t level) {
    return {kGs, 0x6F, 0x00, 0x15, 0x01, 0x02, kGs, 0x6B, 0x0B, level, 0x41, 0x2C};
}

const Bytes kMaxiHeader = {kGs, 0x71, 0x00, kGs, 0x6B, 0x0C};

const Bytes kHeaders[kTypes] = {kPdfHeader,       DataBarHeader(3), DataBarHeader(4),
                                DataBarHeader(7), QrHeader('H'),    kMaxiHeader};

std::vector<std::string> PrintOf(const Bytes& header, const Bytes& data = Ascii("01234567890123")) {
    return JobOf("2Dcode", {header, data, {0}, kCut});
}

TEST_F(Barcode2DPageTest, PrintsASampleOfEachType) {
    // The 1D font of the same number may have any type for that.
    for (const std::uint8_t type_1d : {std::uint8_t{0}, std::uint8_t{3}, kCode39, std::uint8_t{200}}) {
        OpenPage(RecordOfType(kMaxi, type_1d), [&](UiDriver&, Sheet& sheet, const Window& page) {
            for (std::uint8_t type = 0; type < kTypes; ++type) {
                SCOPED_TRACE(static_cast<int>(type));
                page.SelectCombo(kType, type);
                ForgetChanges(sheet, page);
                ExpectJob(page, kPrint, PrintOf(kHeaders[type]));
                EXPECT_FALSE(sheet.IsApplyEnabled());
            }
        });
    }
}

TEST_F(Barcode2DPageTest, PrintsTheChosenFont) {
    Bytes record = RecordOfCases();
    PutInt(record, Font2D(1, at2::kGs1Row), 0x1FE);
    PutInt(record, Font2D(1, at2::kGs1Composite), 0x80000003);
    record[Font2D(1, at2::kGs1Segments)] = 0xC8;
    OpenPage(record, [&](UiDriver&, Sheet&, const Window& page) {
        page.SelectCombo(kFont, 1);
        ExpectJob(
            page, kPrint,
            PrintOf({kGs, 0x66, 0, kGs, 0x48, 0, kGs, 0x73, 7, 6, 0xFE, 3, 4, 0xC8, 4, 0, kGs, 0x6B, 0x0D}));
        page.SelectCombo(kType, kPdf);
        ExpectJob(page, kPrint, PrintOf({kGs, 0x70, 1, 1, 33, 25, 2, 9, kGs, 0x71, 1, kGs, 0x6B, 0x0A}));
        page.SelectCombo(kType, kQr);
        constexpr std::uint8_t kLevels[] = {0x4C, 0x4D, 0x48, 0x51};
        for (int level = 0; level < 4; ++level) {
            page.SelectCombo(kQrEcc, level);
            ExpectJob(page, kPrint,
                      PrintOf({kGs, 0x6F, 0, 8, 0, 1, kGs, 0x6B, 0x0B, kLevels[level], 0x41, 0x2C}));
        }
    });
}

// The type of the 1D font of the same number decides how data is checked.
TEST_F(Barcode2DPageTest, ChecksDataByTheOneDimensionalFontToo) {
    struct Case {
        std::uint8_t type;
        std::uint8_t type_1d;
        std::wstring data;
        Bytes sent;  // nothing: refused
    };
    const std::wstring digits(41, L'5');
    const Case cases[] = {
        {kPdf, 0, L"\x00E9#", {0xE9, '#'}},
        {kPdf, kCode39, L"\x00E9#", {0xE9, '#'}},
        {kPdf, 0, std::wstring(255, L'z'), Bytes(255, 'z')},
        {kPdf, kCode39, std::wstring(256, L'z'), {}},
        {1, 0, L"#", {}},
        {1, 3, L"#", {}},
        {1, 4, L"#", {'#'}},
        {1, 200, L"#\x00E9", {'#', 0xE9}},
        {2, 1, L"#", {}},
        {2, 4, L"#", {'#'}},
        {3, 2, L"#", {}},
        {3, 12, L"#", {'#'}},
        {1, 3, digits, {}},
        {1, 3, digits.substr(1), Bytes(40, '5')},
        {1, 4, digits, Bytes(41, '5')},
        {1, 4, std::wstring(400, L'8'), Bytes(400, '8')},
        {1, 3, L"(01)a|", Ascii("(01)a|")},
        {kQr, 0, L"\x00E9z", {}},
        {kQr, 3, L"\x00E9z", {}},
        // The euro sign is 80h.
        {kQr, 3, L"\x20ACz", {0x80, 'z'}},
        {kQr, 3, L"z\x00E9", {'z', 0xE9}},
        {kQr, 4, L"\x00E9z", {0xE9, 'z'}},
        {kQr, 0, std::wstring(255, L'z'), Bytes(255, 'z')},
        {kQr, 0, std::wstring(256, L'z'), {}},
        {kQr, 4, std::wstring(256, L'z'), {}},
        {kMaxi, 1, L"\x00FFz", {}},
        {kMaxi, 4, L"\x00FFz", {0xFF, 'z'}},
        {kMaxi, 1, std::wstring(84, L'z'), Bytes(84, 'z')},
        {kMaxi, 1, std::wstring(85, L'z'), {}},
        {kMaxi, 4, std::wstring(84, L'z'), Bytes(84, 'z')},
        {kMaxi, 4, std::wstring(85, L'z'), {}},
    };
    for (const int font : {0, 1}) {
        Bytes record = RecordOfCases();
        OpenPage(record, [&](UiDriver&, Sheet&, const Window& page) {
            page.SelectCombo(kFont, font);
            for (const Case& each : cases) {
                SCOPED_TRACE(&each - cases);
                const auto index = static_cast<std::size_t>(font);
                PutFont(record, index, kFontCases[0]);
                record[Font2D(index, at2::kType)] = each.type;
                record[Font1D(index, at1::kType)] = each.type_1d;
                // The other pair says the contrary.
                record[Font1D(1 - index, at1::kType)] = each.type_1d < 4 ? kCode39 : std::uint8_t{0};
                SetRecord(record);
                page.SelectCombo(kType, each.type);
                page.Send(kData, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(each.data.c_str()));
                if (each.sent.empty()) {
                    ExpectRefused(page, kPrint);
                } else {
                    ExpectJob(page, kPrint, PrintOf(kHeaders[each.type], each.sent));
                }
            }
        });
    }
}

// What the printer gets are the bytes of the system's code page, up to 400 characters of them.
TEST_F(Barcode2DPageTest, SendsDataInTheSystemsCodePage) {
    OpenPage(RecordOfType(1), [&](UiDriver&, Sheet&, const Window& page) {
        const auto expect = [&](UINT code_page, const std::wstring& text, const Bytes& sent) {
            ansi_ = code_page;
            page.Send(kData, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
            ExpectJob(page, kPrint, PrintOf(DataBarHeader(3), sent));
        };
        expect(1252, L"caf\x00E9", {'c', 'a', 'f', 0xE9});
        expect(1252, L"1\x4E2D\x6587", {'1', '?', '?'});
        expect(936, L"1\x4E2D\x6587", {'1', 0xD6, 0xD0, 0xCE, 0xC4});
        expect(950, L"\x4E2D\x6587", {0xA4, 0xA4, 0xA4, 0xE5});
        expect(65001, L"\x4E2D", {0xE4, 0xB8, 0xAD});
        Bytes doubled;
        for (int i = 0; i < 400; ++i) {
            doubled.insert(doubled.end(), {0xD6, 0xD0});
        }
        expect(936, std::wstring(400, L'\x4E2D'), doubled);
        // More than can be typed, set by a program.
        expect(1252, std::wstring(500, L'9'), Bytes(400, '9'));
        page.TypeText(kData, std::wstring(401, L'7'));
        EXPECT_EQ(page.Text(kData), std::wstring(400, L'7'));
        ExpectJob(page, kPrint, PrintOf(DataBarHeader(3), Bytes(400, '7')));
    });
}

TEST_F(Barcode2DPageTest, RefusesDataInEveryLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        OpenPage(RecordOfType(2, 0), [&](UiDriver&, Sheet& sheet, const Window& page) {
            Look(sheet, page, "refused", [&] {
                page.TypeText(kData, L"#");
                ExpectRefused(page, kPrint, SourceText(file, L"MessageBox", L"MB_ERROR").c_str(),
                              SourceText(file, L"MessageBox", L"MB_2DCODE_ERROR1").c_str());
            });
            EXPECT_EQ(page.Text(kData), L"#") << "to go on from there";
        });
    }
    // This page's message and not the other's.
    WriteUserFile(kEnglish,
                  L"[MessageBox]\r\nMB_1DCODE_ERROR1=one\r\nMB_2DCODE_ERROR1=two\r\nMB_ERROR=no\r\n");
    ChooseLanguage(kEnglish);
    OpenPage(RecordOfType(2, 0), [&](UiDriver&, Sheet&, const Window& page) {
        page.TypeText(kData, L"#");
        ExpectRefused(page, kPrint, L"no", L"two");
    });
}

TEST_F(Barcode2DPageTest, ShowsItsMessageInARealBox) {
    shows_boxes_ = true;
    OpenPage(RecordOfType(2, 0),
             [&](UiDriver&, Sheet&, const Window& page) { ExpectRealBox(page, kData, L"#", kPrint); });
}

// Nobody is told, and the next print starts afresh.
TEST_F(Barcode2DPageTest, EndsAJobSilentlyWhenACallFails) {
    OpenPage(RecordOfType(kQr), [&](UiDriver&, Sheet&, const Window& page) {
        const std::vector<std::string> whole = PrintOf(QrHeader('H'));
        ASSERT_EQ(whole.size(), 8u);
        ExpectSilentEnds(page, kPrint, whole);
    });
}

TEST_F(Barcode2DPageTest, PrintsNothingWithoutAPrinter) {
    HostSettings settings;
    settings.printer = nullptr;
    StartHost(settings);
    OpenPage(RecordOfType(kPdf), [&](UiDriver&, Sheet&, const Window& page) {
        ExpectJob(page, kPrint, {"StartDocPrinterW null 1 2Dcode null RAW"});
    });
}

TEST_F(Barcode2DPageTest, TracesATestPrint) {
    OpenPage(RecordOfType(kPdf), [&](UiDriver&, Sheet&, const Window& page) {
        rig::TraceCapture trace;
        page.Click(kPrint);
        EXPECT_THAT(trace.Take(),
                    ElementsAre(L"UI:  bar2Dcode() entry!\r\n", L"UI:  CheckBarcodeData() entry!\r\n",
                                L"UI:  CheckBarcodeData() Idex = 13!\r\n"));
        page.SelectCombo(kType, 2);
        trace.Take();
        page.Click(kPrint);
        EXPECT_THAT(trace.Take(), ElementsAre(L"UI:  bar2Dcode() entry!\r\n")) << "nothing is checked";
    });
}

// Each call of the procedure

TEST_F(Barcode2DPageTest, ReportsToSheetAndHost) {
    LonePage lone(Description(), RecordOfType(kExpandedStacked));
    lone.Make();
    const SheetWindow::Message changed = {PSM_CHANGED, reinterpret_cast<WPARAM>(lone.handle())};
    const SheetWindow::Message unchanged = {PSM_UNCHANGED, reinterpret_cast<WPARAM>(lone.handle())};
    EXPECT_EQ(lone.Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
    EXPECT_EQ(lone.NotifyResult(), PSNRET_NOERROR);
    // Set the result, of the context's page, to OK.
    EXPECT_THAT(lone.calls,
                ElementsAre(LonePage::Call{&lone, CPSFUNC_SET_RESULT,
                                           reinterpret_cast<LPARAM>(INVALID_HANDLE_VALUE), CPSUI_OK}));
    EXPECT_THAT(lone.sheet.messages, ElementsAre(unchanged));
    lone.sheet.messages.clear();
    lone.Page().SelectCombo(kGs1Hri, 1);
    EXPECT_THAT(lone.sheet.messages, ElementsAre(changed));
    lone.sheet.messages.clear();
    lone.Page().TypeText(kGs1Width, L"9");
    EXPECT_THAT(lone.sheet.messages, Contains(changed));
    ExpectAnswersToTheSheet(lone);
}

TEST_F(Barcode2DPageTest, IgnoresMessagesWithoutItsParameter) {
    LonePage lone(Description(), RecordOfCases());
    ExpectNothingWithoutParameter(lone, L"Barcode2DPropPageProc", kPrint);
}

TEST_F(Barcode2DPageTest, TakesAnyMessage) {
    LonePage lone(Description(), RecordOfCases());
    ExpectTakesAnyMessage(lone);
    // A second initialisation adds nothing.
    lone.Page().SelectCombo(kFont, 1);
    EXPECT_EQ(lone.Ask(lone.handle(), WM_INITDIALOG, 0, lone.Description()), FALSE);
    ExpectFixedTexts(lone.Page());
    EXPECT_EQ(lone.Page().ComboSelection(kFont), 1);
}

TEST_F(Barcode2DPageTest, OpensWithoutARecord) {
    LonePage lone(Description(), RecordOfCases());
    lone.LoseRecord();
    lone.Make();
    ExpectFixedTexts(lone.Page());
    for (int control = 1000; control < 1320; ++control) {
        for (const int notification : {BN_CLICKED, CBN_SELCHANGE, EN_CHANGE}) {
            EXPECT_EQ(lone.Use(control, notification), FALSE);
        }
    }
    EXPECT_FALSE(lone.Page().IsEnabled(kPrint));
    EXPECT_EQ(lone.Notify(static_cast<UINT>(PSN_APPLY)), TRUE);
    EXPECT_THAT(spooler_.calls, IsEmpty());
}

// By a program that presses a disabled button.
TEST_F(Barcode2DPageTest, PrintsNoDataWhereNothingIsChecked) {
    LonePage lone(Description(), RecordOfType(1));
    lone.Make();
    lone.Page().TypeText(kData, L"");
    lone.Use(kPrint);
    EXPECT_EQ(spooler_.calls, PrintOf(DataBarHeader(3), {}));
    EXPECT_THAT(boxes_, IsEmpty());
    spooler_.calls.clear();
    lone.Page().SelectCombo(kType, kQr);
    lone.Page().TypeText(kData, L"");
    lone.Use(kPrint);
    EXPECT_THAT(spooler_.calls, IsEmpty());
    EXPECT_EQ(boxes_.size(), 1u);
}

TEST_F(Barcode2DPageTest, MayGoWhileItsMessageIsOpen) {
    LonePage lone(Description(), RecordOfType(1, 0));
    ExpectGoesFromItsMessage(lone, kData, L"#", kPrint);
}

TEST_F(Barcode2DPageTest, MayGoWhileItPrints) {
    LonePage lone(Description(), RecordOfType(kPdf));
    lone.Make();
    spooler_.on_start = [&] { lone.Unmake(); };
    EXPECT_EQ(lone.Use(kPrint), TRUE);
    EXPECT_FALSE(IsWindow(lone.handle()));
    EXPECT_EQ(spooler_.calls, PrintOf(kPdfHeader));
}

TEST_F(Barcode2DPageTest, TwoSheetsKeepToTheirOwn) {
    const Bytes description = Description();
    LonePage first(description, RecordOfCases());
    LonePage second(description, RecordOfType(kExpandedStacked), nullptr);
    first.Make();
    second.Make();
    Bytes first_record = first.record;
    Bytes second_record = second.record;
    first.Page().SelectCombo(kFont, 1);
    second.Page().Click(kComposite);
    first_record[Font2D(1, at2::kGs1Segments)] = 2;
    first.Page().TypeText(kGs1Segments, L"2");
    second_record[Font2D(0, at2::kGs1Segments)] = 3;
    second.Page().TypeText(kGs1Segments, L"3");
    EXPECT_EQ(Differences(first_record, first.record), "");
    EXPECT_EQ(Differences(second_record, second.record), "");
    EXPECT_TRUE(first.Page().IsChecked(kIndependence));
    EXPECT_EQ(RangeOf(first.Page(), kGs1SegmentsSpin), (SpinRange{2, 20}));
    second.Page().Click(kPrint);
    EXPECT_THAT(spooler_.calls, ElementsAre("StartDocPrinterW null 1 2Dcode null RAW"));
    second.Unmake();
    first.Page().Click(kPrint);
    EXPECT_EQ(spooler_.calls.at(1), "StartDocPrinterW printer 1 2Dcode null RAW");
}

}  // namespace
}  // namespace pages::barcode

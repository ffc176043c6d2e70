// The Water Mark page's controls in the real sheet: what they show of a record, what each of them stores,
// what the page says and when.
#include "help_reader.h"
#include "water_mark_fixture.h"

namespace pages::water_mark {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct Caption {
    int control;
    const wchar_t* key;
    const wchar_t* english;
};

constexpr Caption kCaptions[] = {
    {1077, L"RC_RADIO_NO", L"No Water Mark"},
    {1061, L"RC_RADIO_IMAGE", L"Image Water Mark"},
    {1171, L"RC_STATIC_WATERMARK_BMP", L"Bitmap:"},
    {1049, L"RC_SELECT_PICTURE", L"Browse..."},
    {1078, L"RC_RADIO_TEXT", L"Text Water Mark"},
    {1156, L"RC_STATIC_WATERMARK_TEXT", L"Text:"},
    {1157, L"RC_STATIC_WATERMARK_FONTTYPE", L"Font Type:"},
    {1158, L"RC_STATIC_WATERMARK_FONTSTYLE", L"Font Style:"},
    {1168, L"RC_STATIC_WATERMARK_FONTSIZE", L"Font Size:"},
    {1159, L"RC_STATIC_WATERMARK_ANGLE", L"Angle:"},
    {1160, L"RC_STATIC_WATERMARK_POSITION", L"Print Position:"},
    {1162, L"RC_STATIC_WATERMARK_SIZE", L"Size:"},
    {1161, L"RC_STATIC_WATERMARK_BRIGHTNESS", L"Brightness:"},
};

const Texts kPresets = {L"CONFIDENTIAL", L"DO NOT COPY", L"TOP SECRET", L"DRAFT",
                        L"PROOF",        L"FINAL",       L"COPY",       L"FILE COPY"};
const Texts kStyles = {L"Regular", L"Italic", L"Bold", L"Bold Italic"};
const Texts kPositions = {L"Left-Top",      L"Center-Top",   L"Right-Top",   L"Left-Middle",
                          L"Center-Middle", L"Right-Middle", L"Left-Bottom", L"Center-Bottom",
                          L"Right-Bottom",  L"Tiled"};

struct Help {
    int control;
    const wchar_t* key;
    const wchar_t* english;
};

constexpr Help kHelps[] = {
    {1077, L"CTEXT_RADIO_NO",
     L"Whether to use watermark printing function. Watermark printing is not used if this item is selected."},
    {1061, L"CTEXT_RADIO_IMAGE",
     L"'Whether to use watermark printing function. Please select one bitmap to be as watermark of printing "
     L"if "
     L"this item is selected."},
    {1047, L"CTEXT_PICTURE_NAME", L"Select the path of watermark bitmap."},
    {1049, L"CTEXT_SELECT_PICTURE", L"Select the path of watermark bitmap."},
    {1078, L"CTEXT_RADIO_TEXT",
     L"Whether to use watermark printing function. Please select one text to be as watermark of printing if "
     L"this item is selected."},
    {1020, L"CTEXT_COMBO_TEXT", L"Select or edit the text used as watermark."},
    {1021, L"CTEXT_COMBO_FONTTYPE", L"Set the font type of text used as watermark."},
    {1022, L"CTEXT_COMBO_FONTSTYLE", L"Set the font style of text used as watermark."},
    {1052, L"CTEXT_EDIT_FONTSIZE", L"Set the font size of text used as watermark."},
    {1018, L"CTEXT_SLIDER_ANGLE", L"Set the rotation angle of text used as watermark."},
    {1023, L"CTEXT_COMBO_POSITION", L"Set the print position of watermark."},
    {1082, L"CTEXT_SLIDER_SIZE", L"Set the zoom size of watermark."},
    {1083, L"CTEXT_SLIDER_LIGHT", L"Set the brightness of watermark."},
};

Texts SourceTexts(const wchar_t* file, const std::wstring& key, int count) {
    Texts texts;
    for (int i = 1; i <= count; ++i) {
        texts.push_back(SourceText(file, L"WATERMARK", (key + std::to_wstring(i)).c_str()));
    }
    return texts;
}

// Texts

TEST_F(WaterMarkPageTest, ShowsItsTextsInEveryLanguage) {
    for (const wchar_t* file : {kEnglish, kSimplifiedChinese, kTraditionalChinese}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
        ChooseLanguage(file);
        title_ = SourceText(file, L"WATERMARK", L"RC_WATERMARKFORM");
        OpenPage(RecordOf(kText), [&](UiDriver&, Sheet&, const Window& page) {
            for (const Caption& caption : kCaptions) {
                EXPECT_EQ(page.Text(caption.control), SourceText(file, L"WATERMARK", caption.key));
            }
            EXPECT_EQ(page.ComboItems(kTextList), kPresets);
            EXPECT_EQ(page.ComboItems(kStyleList), SourceTexts(file, L"RC_STATIC_WATERMARK_FONTSTYLE", 4));
            EXPECT_EQ(page.ComboItems(kPositionList), SourceTexts(file, L"RC_STATIC_WATERMARK_POSITION", 10));
        });
    }
}

TEST_F(WaterMarkPageTest, ShowsEnglishWithoutAnyFile) {
    Host();
    RemoveAllLanguageFiles();
    OpenPage(RecordOf(kText), [&](UiDriver&, Sheet&, const Window& page) {
        for (const Caption& caption : kCaptions) {
            EXPECT_EQ(page.Text(caption.control), caption.english);
        }
        EXPECT_EQ(page.ComboItems(kTextList), kPresets);
        EXPECT_EQ(page.ComboItems(kStyleList), kStyles);
        EXPECT_EQ(page.ComboItems(kPositionList), kPositions);
    });
}

// The user may choose another language on the Main page while this one has been seen.
TEST_F(WaterMarkPageTest, FollowsTheLanguageWhileItIsOpen) {
    const Bytes record = RecordOf(kText);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const wchar_t* file : {kSimplifiedChinese, kTraditionalChinese, kEnglish}) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
            ChooseLanguage(file);
            Repaint(page);
            for (const Caption& caption : kCaptions) {
                EXPECT_EQ(page.Text(caption.control), SourceText(file, L"WATERMARK", caption.key));
            }
            EXPECT_EQ(page.ComboItems(kTextList), kPresets);
            EXPECT_EQ(page.Text(kTextList), L"PROOF");
            EXPECT_EQ(page.ComboItems(kStyleList), SourceTexts(file, L"RC_STATIC_WATERMARK_FONTSTYLE", 4));
            EXPECT_EQ(page.ComboSelection(kStyleList), 2);
            EXPECT_EQ(page.ComboItems(kPositionList), SourceTexts(file, L"RC_STATIC_WATERMARK_POSITION", 10));
            EXPECT_EQ(page.ComboSelection(kPositionList), 3);
        }
        EXPECT_EQ(page.ComboItems(kPositionList), kPositions);
        EXPECT_EQ(page.Text(kPositionList), L"Left-Middle");
        WriteUserFile(kEnglish,
                      L"[WATERMARK]\r\nRC_RADIO_NO=abcdefghijklmnopqrstuvwxyz\r\n"
                      L"RC_STATIC_WATERMARK_POSITION4=01234567890123456789012345\r\n");
        Repaint(page);
        EXPECT_EQ(page.Text(kUseNone), L"abcdefghijklmnopqrs");
        EXPECT_EQ(page.Text(kPositionList), L"0123456789012345678");
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_EQ(Differences(record, Record()), "");
        InstallUserFile(kEnglish);
    });
}

// Where the pointer goes: an editable list has its edit control in front of all but its arrow.
POINT HelpPoint(const Window& page, int control) {
    RECT area = {};
    GetWindowRect(page.Control(control), &area);
    return {control == kTextList ? area.right - 8 : (area.left + area.right) / 2, area.top + 6};
}

// With the real pointer, on each control in turn, in the language that the page was painted in last.
TEST_F(WaterMarkPageTest, ThirteenControlsHaveHelp) {
    OpenPage(RecordOf(kText), [&](UiDriver& ui, Sheet&, const Window& page) {
        for (const wchar_t* file : {kEnglish, kTraditionalChinese}) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(file)));
            ChooseLanguage(file);
            Repaint(page);
            for (const Help& help : kHelps) {
                // A disabled control gets no pointer.
                if (help.control == kFile) {
                    page.Click(kUseImage);
                } else if (help.control == kTextList) {
                    page.Click(kUseText);
                }
                const std::wstring text = SourceText(file, L"WATERMARK", help.key);
                ExpectHelp(ui, page, help.control, HelpPoint(page, help.control), text);
                if (file == kEnglish) {
                    EXPECT_EQ(text, help.english);
                }
            }
            EXPECT_EQ(HelpedBeside(page.Control(kUseNone)), std::size(kHelps));
        }
    });
}

// What a record shows

TEST_F(WaterMarkPageTest, ShowsTheRecordOfEachKind) {
    for (const std::uint8_t kind : {kNone, kImage, kText}) {
        SCOPED_TRACE(static_cast<int>(kind));
        const Bytes record = RecordOf(kind);
        OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
            for (std::uint8_t radio = 0; radio < 3; ++radio) {
                EXPECT_EQ(page.IsChecked(kKindRadios[radio]), radio == kind);
                EXPECT_TRUE(page.IsEnabled(kKindRadios[radio]));
            }
            EXPECT_EQ(EnabledControls(page), kEnabledFor[kind]);
            EXPECT_EQ(page.Text(kFile), picture_.native());
            EXPECT_NE(GetWindowLongPtrW(page.Control(kFile), GWL_STYLE) & ES_READONLY, 0);
            EXPECT_EQ(page.ComboSelection(kTextList), 4);
            EXPECT_EQ(page.ComboSelection(kFontList), 2);
            EXPECT_EQ(page.ComboSelection(kStyleList), 2);
            EXPECT_EQ(page.Text(kFontSize), L"30");
            EXPECT_EQ(page.SpinPosition(kFontSizeSpin), 30);
            EXPECT_EQ(page.ComboSelection(kPositionList), 3);
            struct Range {
                int slider;
                int maximum;
                int position;
                int label;
                const wchar_t* value;
            };
            for (const Range& range :
                 {Range{kAngle, 360, 90, kAngleValue, L"90"}, Range{kSize, 100, 40, kSizeValue, L"40"},
                  Range{kBrightness, 255, 60, kBrightnessValue, L"60"}}) {
                EXPECT_EQ(page.Send(range.slider, TBM_GETRANGEMIN), 0);
                EXPECT_EQ(page.Send(range.slider, TBM_GETRANGEMAX), range.maximum);
                EXPECT_EQ(page.SliderPosition(range.slider), range.position);
                EXPECT_EQ(page.Text(range.label), range.value);
            }
            int minimum = 0;
            int maximum = 0;
            page.Send(kFontSizeSpin, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&minimum),
                      reinterpret_cast<LPARAM>(&maximum));
            EXPECT_EQ(minimum, 8);
            EXPECT_EQ(maximum, 72);
            EXPECT_FALSE(sheet.IsApplyEnabled());
        });
        EXPECT_THAT(boxes_, IsEmpty());
    }
}

TEST_F(WaterMarkPageTest, ShowsTheDefaults) {
    Host();
    OpenPage(Record(), [&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_TRUE(page.IsChecked(kUseNone));
        EXPECT_EQ(page.Text(kFile), L"");
        EXPECT_EQ(page.ComboSelection(kTextList), 0) << "no text is stored";
        EXPECT_EQ(page.ComboSelection(kFontList), 0) << "no face is stored";
        EXPECT_EQ(page.ComboSelection(kStyleList), 0);
        EXPECT_EQ(page.Text(kFontSize), L"50");
        EXPECT_EQ(page.Text(kAngleValue), L"45");
        EXPECT_EQ(page.ComboSelection(kPositionList), 4);
        EXPECT_EQ(page.Text(kSizeValue), L"100");
        EXPECT_EQ(page.Text(kBrightnessValue), L"50");
    });
}

TEST_F(WaterMarkPageTest, ShowsATextThatIsNoPreset) {
    Bytes record = RecordOf(kText);
    PutText(record, kTextAt, kTextUnits, L"COP");
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(page.Text(kTextList), L"COP");
        EXPECT_EQ(page.ComboItems(kTextList), kPresets);
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

// A preset in other letters is the user's own text.
TEST_F(WaterMarkPageTest, KeepsTheLettersOfAStoredText) {
    Bytes record = RecordOf(kText);
    PutText(record, kTextAt, kTextUnits, L"Draft");
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(page.Text(kTextList), L"Draft");
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

// Moving about with TAB and pressing OK is no change, whatever the kind.
TEST_F(WaterMarkPageTest, OkWithoutAChangeKeepsEveryByte) {
    for (const std::uint8_t kind : {kNone, kImage, kText}) {
        SCOPED_TRACE(static_cast<int>(kind));
        const Bytes record = RecordOf(kind);
        OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
            for (const int radio : kKindRadios) {
                page.Focus(radio);
            }
            for (const int control : kEnabledFor[kind]) {
                if (control != kFontSize && control != kFontSizeSpin) {
                    page.Focus(control);
                }
            }
            Repaint(page);
            EXPECT_EQ(Differences(record, Record()), "");
            EXPECT_FALSE(sheet.IsApplyEnabled());
            sheet.PressOk();
        });
        EXPECT_EQ(Differences(record, Record()), "");
        EXPECT_THAT(boxes_, IsEmpty());
    }
}

// Fonts

TEST_F(WaterMarkPageTest, ListsTrueTypeFacesOnceEach) {
    OpenPage(RecordOf(kText), [&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(page.ComboItems(kFontList), (Texts{L"Alpha", L"Alpha Narrow", L"Beta", L"@Beta"}));
        EXPECT_EQ(page.Text(kFontList), L"Beta");
        EXPECT_EQ(font_window_, page.handle());
        EXPECT_STREQ(font_query_.lfFaceName, L"");
        EXPECT_EQ(font_query_.lfCharSet, DEFAULT_CHARSET);
    });
    Bytes record = RecordOf(kText);
    PutText(record, kFaceAt, kFaceUnits, L"Alph");
    OpenPage(record, [&](UiDriver&, Sheet&, const Window& page) {
        EXPECT_EQ(page.ComboSelection(kFontList), 0) << "a face that is not installed";
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(WaterMarkPageTest, ListsHundredsOfFaces) {
    faces_->clear();
    Texts names;
    for (int i = 0; i < 500; ++i) {
        names.push_back(L"Face " + std::to_wstring(1000 + i));
        faces_->push_back({names.back(), TRUETYPE_FONTTYPE});
    }
    std::reverse(faces_->begin(), faces_->end());
    Bytes record = RecordOf(kText);
    PutText(record, kFaceAt, kFaceUnits, L"Face 1250");
    Bytes expected = record;
    // As long as a face's name may be.
    const std::wstring longest(31, L'Z');
    faces_->push_back({longest, TRUETYPE_FONTTYPE});
    names.push_back(longest);
    PutText(expected, kFaceAt, kFaceUnits, longest);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_EQ(page.ComboItems(kFontList), names);
        EXPECT_EQ(page.ComboSelection(kFontList), 250);
        Step(sheet, page, "the last face", expected, [&] { Choose(page, kFontList, 500); });
    });
}

TEST_F(WaterMarkPageTest, StaysUsableWithoutAnyFace) {
    faces_->clear();
    const Bytes record = RecordOf(kText);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        EXPECT_THAT(page.ComboItems(kFontList), IsEmpty());
        EXPECT_EQ(page.ComboSelection(kFontList), -1);
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(WaterMarkPageTest, ListsTheFacesThatTheSystemHas) {
    faces_.reset();
    OpenPage(RecordOf(kText), [&](UiDriver&, Sheet&, const Window& page) {
        std::vector<std::wstring> expected;
        LOGFONTW all = {};
        all.lfCharSet = DEFAULT_CHARSET;
        const HDC dc = GetDC(page.handle());
        EnumFontFamiliesExW(
            dc, &all,
            [](const LOGFONTW* font, const TEXTMETRICW*, DWORD type, LPARAM faces) {
                if ((type & TRUETYPE_FONTTYPE) != 0) {
                    reinterpret_cast<Texts*>(faces)->push_back(font->lfFaceName);
                }
                return 1;
            },
            reinterpret_cast<LPARAM>(&expected), 0);
        ReleaseDC(page.handle(), dc);
        std::sort(expected.begin(), expected.end());
        expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
        Texts listed = page.ComboItems(kFontList);
        std::sort(listed.begin(), listed.end());
        EXPECT_EQ(listed, expected);
        EXPECT_FALSE(expected.empty());
    });
}

// What the controls store

TEST_F(WaterMarkPageTest, StoresEachChoice) {
    Bytes record = RecordOf(kText);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        PutText(record, kTextAt, kTextUnits, L"FILE COPY");
        Step(sheet, page, "preset", record, [&] { page.SelectCombo(kTextList, 7); });
        PutText(record, kFaceAt, kFaceUnits, L"Alpha");
        Step(sheet, page, "face", record, [&] { Choose(page, kFontList, 0); });
        for (const std::uint8_t style : std::initializer_list<std::uint8_t>{3, 0, 1, 2}) {
            record[kStyleAt] = style;
            Step(sheet, page, "style", record, [&] { Choose(page, kStyleList, style); });
        }
        for (std::uint8_t position = 0; position < 10; ++position) {
            record[kPositionAt] = position;
            Step(sheet, page, "position", record, [&] { Choose(page, kPositionList, position); });
        }
        EXPECT_EQ(page.SliderPosition(kSize), 40);
        PutText(record, kTextAt, kTextUnits, L"DO NOT COPY");
        Step(sheet, page, "preset by key", record, [&] {
            page.SelectCombo(kTextList, 0);
            const HWND edit = GetDlgItem(page.Control(kTextList), kListEdit);
            SendMessageW(edit, WM_KEYDOWN, VK_DOWN, 1);
        });
        PutText(record, kFaceAt, kFaceUnits, L"Alpha Narrow");
        Step(sheet, page, "face by key", record, [&] { page.PressKey(kFontList, VK_DOWN); });
        record[kStyleAt] = 3;
        Step(sheet, page, "style by key", record, [&] { page.PressKey(kStyleList, VK_DOWN); });
        record[kPositionAt] = 8;
        Step(sheet, page, "position by key", record, [&] { page.PressKey(kPositionList, VK_UP); });
        EXPECT_THAT(boxes_, IsEmpty());
        sheet.PressApply();
        EXPECT_FALSE(sheet.IsApplyEnabled());
        EXPECT_EQ(Differences(record, Record()), "");
    });
}

TEST_F(WaterMarkPageTest, StoresTypedText) {
    Bytes record = RecordOf(kText);
    OpenPage(record, [&](UiDriver& ui, Sheet& sheet, const Window& page) {
        const Window list(ui, page.Control(kTextList));
        PutText(record, kTextAt, kTextUnits, L"Sale -20%");
        Step(sheet, page, "typed", record, [&] { list.TypeText(kListEdit, L"Sale -20%"); });
        EXPECT_EQ(page.ComboItems(kTextList), kPresets);
        // The box takes 16 characters, the record keeps 15 of them.
        PutText(record, kTextAt, kTextUnits, L"ABCDEFGHIJKLMNO");
        Step(sheet, page, "long", record, [&] { list.TypeText(kListEdit, L"ABCDEFGHIJKLMNOPQRSTU"); });
        EXPECT_EQ(page.Text(kTextList), L"ABCDEFGHIJKLMNOP");
        // By a program, or pasted where the limit does not hold.
        PutText(record, kTextAt, kTextUnits, std::wstring(15, L'z'));
        Step(sheet, page, "very long", record, [&] {
            const std::wstring text(300, L'z');
            list.Send(kListEdit, EM_SETSEL, 0, -1);
            list.Send(kListEdit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
            SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(kTextList, CBN_EDITCHANGE),
                         reinterpret_cast<LPARAM>(list.handle()));
        });
        PutText(record, kTextAt, kTextUnits, L"");
        Step(sheet, page, "nothing", record, [&] { list.TypeText(kListEdit, L""); });
        PutText(record, kTextAt, kTextUnits, L"机密");
        Step(sheet, page, "Chinese", record, [&] { list.TypeText(kListEdit, L"机密"); });
        sheet.PressOk();
    });
    EXPECT_EQ(Differences(record, Record()), "");
}

TEST_F(WaterMarkPageTest, KeepsTheFontSizeInItsRange) {
    Bytes record = RecordOf(kText);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        const auto step = [&](const char* name, std::uint8_t size, const wchar_t* shown,
                              const std::function<void()>& action) {
            record[kFontSizeAt] = size;
            Step(sheet, page, name, record, action);
            EXPECT_EQ(page.Text(kFontSize), shown) << name;
        };
        page.Focus(kFontSize);
        step("in range", 45, L"45", [&] { page.TypeText(kFontSize, L"45"); });
        step("too much", 72, L"72", [&] { page.TypeText(kFontSize, L"90"); });
        EXPECT_EQ(page.SpinPosition(kFontSizeSpin), 72);
        step("the most", 72, L"72", [&] { page.TypeText(kFontSize, L"72"); });
        step("one more", 72, L"72", [&] { page.TypeText(kFontSize, L"73"); });
        step("three digits", 12, L"12", [&] { page.TypeText(kFontSize, L"123"); });
        step("while it is typed", 5, L"5", [&] { page.TypeText(kFontSize, L"5"); });
        step("left with too little", 8, L"8", [&] { page.Focus(kStyleList); });
        EXPECT_EQ(page.SpinPosition(kFontSizeSpin), 8);
        page.Focus(kFontSize);
        step("emptied", 0, L"", [&] { page.TypeText(kFontSize, L""); });
        step("left empty", 8, L"8", [&] { page.Focus(kStyleList); });
        step("arrow up", 9, L"9", [&] { page.SpinUp(kFontSizeSpin); });
        step("arrow down", 8, L"8", [&] { page.SpinDown(kFontSizeSpin); });
        page.SpinDown(kFontSizeSpin);
        EXPECT_EQ(page.Text(kFontSize), L"8");
        step("typed again", 71, L"71", [&] { page.TypeText(kFontSize, L"71"); });
        step("key up", 72, L"72", [&] { page.PressKey(kFontSize, VK_UP); });
        page.SpinUp(kFontSizeSpin, 2);
        EXPECT_EQ(page.Text(kFontSize), L"72");
        page.TypeText(kFontSize, L"x");
        EXPECT_EQ(Differences(record, Record()), "");
        // Enter applies without leaving the box: the number counts as it stands.
        page.TypeText(kFontSize, L"6");
        page.Focus(kFontSize);
        SendMessageW(sheet.handle(), PSM_APPLY, 0, 0);
        record[kFontSizeAt] = 6;
        EXPECT_EQ(Differences(record, Record()), "");
    });
}

// Whatever they tell of, the number counts as it stands.
TEST_F(WaterMarkPageTest, TakesTheFontSizeAtEveryNotificationOfTheArrows) {
    const Bytes record = RecordOf(kText);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        for (const int code : {0, 1, 5, 0x300, 0xFFFF}) {
            SCOPED_TRACE(code);
            Host().record_bytes()[kFontSizeAt] = 50;
            Step(sheet, page, "arrows", record, [&] {
                SendMessageW(page.handle(), WM_COMMAND, MAKEWPARAM(kFontSizeSpin, code),
                             reinterpret_cast<LPARAM>(page.Control(kFontSizeSpin)));
            });
        }
    });
}

TEST_F(WaterMarkPageTest, SlidersStoreAndShowTheirValues) {
    Bytes record = RecordOf(kText);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        PutAngle(record, 360);
        Step(sheet, page, "angle", record, [&] { page.SetSlider(kAngle, 360); });
        EXPECT_EQ(page.Text(kAngleValue), L"360");
        record[kSizeAt] = 7;
        Step(sheet, page, "size", record, [&] { page.SetSlider(kSize, 7); });
        EXPECT_EQ(page.Text(kSizeValue), L"7");
        record[kBrightnessAt] = 255;
        Step(sheet, page, "brightness", record, [&] { page.SetSlider(kBrightness, 255); });
        EXPECT_EQ(page.Text(kBrightnessValue), L"255");
        PutAngle(record, 359);
        Step(sheet, page, "key", record, [&] { page.PressKey(kAngle, VK_LEFT); });
        PutAngle(record, 0);
        Step(sheet, page, "home", record, [&] { page.PressKey(kAngle, VK_HOME); });
        EXPECT_EQ(page.Text(kAngleValue), L"0");
        record[kSizeAt] = 0;
        Step(sheet, page, "no size", record, [&] { page.SetSlider(kSize, 0); });
        EXPECT_EQ(page.Text(kSizeValue), L"0");
    });
}

TEST_F(WaterMarkPageTest, TiledKeepsTheSizeAtLeast20) {
    Bytes record = RecordOf(kText);
    record[kSizeAt] = 10;
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        const auto step = [&](const char* name, std::uint8_t position, std::uint8_t size,
                              const std::function<void()>& action) {
            record[kPositionAt] = position;
            record[kSizeAt] = size;
            Step(sheet, page, name, record, action);
            EXPECT_EQ(page.SliderPosition(kSize), size) << name;
            EXPECT_EQ(page.Text(kSizeValue), std::to_wstring(size)) << name;
        };
        step("not tiled", 8, 10, [&] { Choose(page, kPositionList, 8); });
        step("tiled", 9, 20, [&] { Choose(page, kPositionList, 9); });
        step("snaps back", 9, 20, [&] { page.SetSlider(kSize, 19); });
        step("snaps back from nothing", 9, 20, [&] { page.SetSlider(kSize, 0); });
        step("more", 9, 21, [&] { page.SetSlider(kSize, 21); });
        step("back", 4, 21, [&] { Choose(page, kPositionList, 4); });
        step("free again", 4, 19, [&] { page.SetSlider(kSize, 19); });
        step("just below", 9, 20, [&] { Choose(page, kPositionList, 9); });
    });
}

// The kinds, the message and the Main page

TEST_F(WaterMarkPageTest, SwitchesBetweenTheKinds) {
    Bytes record = RecordOf(kText);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        const auto step = [&](const char* name, std::uint8_t kind, std::uint8_t as_image, bool tells) {
            SCOPED_TRACE(name);
            boxes_.clear();
            record[kKindAt] = kind;
            record[kAsImageAt] = as_image;
            Step(sheet, page, name, record, [&] { page.Click(kKindRadios[kind]); });
            for (std::uint8_t radio = 0; radio < 3; ++radio) {
                EXPECT_EQ(page.IsChecked(kKindRadios[radio]), radio == kind) << int{radio};
            }
            EXPECT_EQ(EnabledControls(page), kEnabledFor[kind]);
            EXPECT_THAT(boxes_, testing::ElementsAreArray(tells ? std::vector<Box>{Information(page)}
                                                                : std::vector<Box>{}));
        };
        step("none", kNone, 0, false);
        step("image", kImage, 1, true);
        step("text after image", kText, 1, false);
        step("text again", kText, 1, false);
        step("image after text", kImage, 1, false);
        step("none after image", kNone, 0, false);
        step("none again", kNone, 0, false);
        step("text", kText, 1, true);
        // Something else may have switched printing as image off, or have written what no page does.
        Host().record_bytes()[kAsImageAt] = 0;
        step("switched off meanwhile", kImage, 1, true);
        Host().record_bytes()[kAsImageAt] = 2;
        step("odd", kText, 2, false);
    });
}

TEST_F(WaterMarkPageTest, ShowsTheInformationInARealBox) {
    shows_boxes_ = true;
    ChooseLanguage(kTraditionalChinese);
    title_ = SourceText(kTraditionalChinese, L"WATERMARK", L"RC_WATERMARKFORM");
    Bytes record = RecordOf(kNone);
    OpenPage(record, [&](UiDriver&, Sheet& sheet, const Window& page) {
        const MessageBoxInfo box = page.OpenMessageBox(kUseText);
        EXPECT_EQ(box.title, SourceText(kTraditionalChinese, L"MessageBox", L"MB_INFORMATION"));
        EXPECT_EQ(box.text, SourceText(kTraditionalChinese, L"MessageBox", L"MB_WATERMARK_INFORMATION1"));
        EXPECT_THAT(box.buttons, ElementsAre(IDOK));
        box.Press(IDOK);
        Settle(page);
        EXPECT_TRUE(sheet.IsApplyEnabled());
        record[kKindAt] = kText;
        record[kAsImageAt] = 1;
        EXPECT_EQ(Differences(record, Record()), "");
        ASSERT_THAT(boxes_, SizeIs(1));
        EXPECT_EQ(boxes_[0].type, UINT{MB_OK | MB_ICONINFORMATION});
    });
}

TEST_F(WaterMarkPageTest, RemovalShowsNoOnTheMainPageOnce) {
    Bytes record = RecordOf(kText);
    record[kRotate180At] = 0;
    record[kZoomAt] = 0;
    SetRecord(record);
    OpenSheet([&](UiDriver&, Sheet& sheet) {
        constexpr int kYes = 1061;
        constexpr int kNo = 1062;
        const auto expect_main = [&](const char* name, bool yes, bool enabled) {
            const Window main = sheet.SelectTab(L"Main");
            EXPECT_EQ(main.IsChecked(kYes), yes) << name;
            EXPECT_EQ(main.IsChecked(kNo), !yes) << name;
            EXPECT_EQ(main.IsEnabled(kYes), enabled) << name;
            EXPECT_EQ(main.IsEnabled(kNo), enabled) << name;
            return main;
        };
        expect_main("at first", true, false);
        sheet.SelectTab(L"Water Mark").Click(kUseNone);
        expect_main("removed", false, true).Click(kYes);
        EXPECT_EQ(Record()[kAsImageAt], 1);
        sheet.SelectTab(L"Water Mark");
        expect_main("only once", true, true);
        sheet.SelectTab(L"Water Mark").Click(kUseImage);
        expect_main("forced", true, false);
        sheet.SelectTab(L"Water Mark").Click(kUseNone);
        expect_main("removed again", false, true);
        sheet.PressCancel();
    });
    EXPECT_THAT(boxes_, IsEmpty());
}

}  // namespace
}  // namespace pages::water_mark

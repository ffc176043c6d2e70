#include "play.h"

#include <algorithm>
#include <string>
#include <vector>

#include "play_barcodes.h"
#include "plugin_pages.h"
#include "resources/resource.h"
#include "typical_event.h"
#include "utf8.h"

namespace {

// Positions in the pages' lists: the same in every language.
constexpr int kPaper64By297 = 2;
constexpr int kRightTop = 2;
constexpr int kCenterMiddle = 4;
constexpr int kTiled = 9;
constexpr int kTextCopy = 6;
constexpr int kBold = 2;

// Of Debian and of Windows, with the same shapes. A system without either shows its first font.
constexpr const wchar_t* kFonts[] = {L"Liberation Sans", L"Arial"};

class Visit {
  public:
    Visit(const UiDriver& driver, const Sheet& sheet, const Options& options)
        : driver_(driver), sheet_(sheet), options_(options) {}

    void ChoosePaperAndZoom() const {
        const Window page = SelectPageWith(sheet_, IDC_MAIN_LANGUAGE_LABEL);
        page.SelectCombo(IDC_MAIN_PAPER_SIZE, kPaper64By297);
        Check(page, IDC_MAIN_ZOOM);
        // The page takes the scale when its box loses the focus, here to the next page.
        page.Focus(IDC_MAIN_SCALE);
        page.TypeText(IDC_MAIN_SCALE, L"80");
    }

    void ChooseWaterMarks() const {
        const Window page = SelectPageWith(sheet_, IDC_WATERMARK_PREVIEW);
        if (options_.watermark) {
            Check(page, IDC_WATERMARK_USE_IMAGE);
            ChooseBitmap(page, std::filesystem::absolute(*options_.watermark));
            Place(page, kRightTop, 60);
            TakePicture(L"water-mark-image");
            Place(page, kTiled, 30);
            TakePicture(L"water-mark-tiled");
        }
        Check(page, IDC_WATERMARK_USE_TEXT);
        page.SelectCombo(IDC_WATERMARK_TEXT, kTextCopy);
        SelectFont(page);
        page.SelectCombo(IDC_WATERMARK_STYLE, kBold);
        page.SetSlider(IDC_WATERMARK_ANGLE, 30);
        Place(page, kCenterMiddle, 90);
        TakePicture(L"water-mark-text");
    }

    void SwitchLanguageAndBack() const {
        const Window page = SelectPageWith(sheet_, IDC_MAIN_LANGUAGE_LABEL);
        // The last item follows the system.
        const int languages = static_cast<int>(page.ComboItems(IDC_MAIN_LANGUAGE).size()) - 1;
        const int own = page.ComboSelection(IDC_MAIN_LANGUAGE);
        page.SelectCombo(IDC_MAIN_LANGUAGE, (own + 1) % std::max(languages, 1));
        sheet_.PressApply();
        TakePicture(L"language-main");
        sheet_.SelectPage(kDensityTab);
        TakePicture(L"language-print-density");
        SelectPageWith(sheet_, IDC_MAIN_LANGUAGE_LABEL).SelectCombo(IDC_MAIN_LANGUAGE, own);
        sheet_.PressApply();
    }

  private:
    // Checks a check box or radio button. What the page tells about that is on the screen when the click is
    // next heard of, and disables the sheet.
    void Check(const Window& page, int control) const {
        if (page.IsChecked(control)) {
            return;
        }
        PostMessageW(page.Control(control), BM_CLICK, 0, 0);
        driver_.WaitUntil([&] { return page.IsChecked(control); }, "a choice to show");
        // Answered when the page has dealt with the click, or from within the message that it shows.
        SendMessageW(page.handle(), WM_NULL, 0, 0);
        while (!IsWindowEnabled(sheet_.handle())) {
            driver_.WaitForMessageBox().Press(IDOK);
        }
    }

    void ChooseBitmap(const Window& page, const std::filesystem::path& bitmap) const {
        page.ChooseFile(IDC_WATERMARK_BROWSE, bitmap);
        if (!IsWindowEnabled(sheet_.handle())) {
            throw UiError(ToUtf8(bitmap.native()) +
                          " is refused: " + ToUtf8(driver_.WaitForMessageBox().text));
        }
    }

    void Place(const Window& page, int position, int size) const {
        page.SelectCombo(IDC_WATERMARK_POSITION, position);
        page.SetSlider(IDC_WATERMARK_SIZE, size);
    }

    void SelectFont(const Window& page) const {
        const std::vector<std::wstring> fonts = page.ComboItems(IDC_WATERMARK_FONT);
        for (const wchar_t* const font : kFonts) {
            const auto found = std::find(fonts.begin(), fonts.end(), font);
            if (found != fonts.end()) {
                page.SelectCombo(IDC_WATERMARK_FONT, static_cast<int>(found - fonts.begin()));
                return;
            }
        }
    }

    void TakePicture(const std::wstring& name) const {
        if (options_.pictures) {
            sheet_.Screenshot(*options_.pictures / (name + L".bmp"));
        }
    }

    const UiDriver& driver_;
    const Sheet& sheet_;
    const Options& options_;
};

}  // namespace

void Play(const UiDriver& driver, const Sheet& sheet, const Options& options, VirtualPrinter* printer) {
    const Visit visit(driver, sheet, options);
    visit.ChoosePaperAndZoom();
    visit.ChooseWaterMarks();
    PlayTypicalEvent(sheet);
    PlayBarcodes(sheet, options, printer);
    visit.SwitchLanguageAndBack();
    sheet.PressOk();
}

#include "play_barcodes.h"

#include <span>
#include <string>
#include <vector>

#include "plugin_pages.h"
#include "resources/resource.h"

namespace {

// What a picture of a page shows.
struct TypePicture {
    int type;  // position in the page's list
    const wchar_t* name;
    int choice = 0;  // a radio button to choose first
};

// GS1 DataBar in the variant that uses every control of the group.
constexpr TypePicture kPictures1D[] = {{0, L"barcode-1d-general"},
                                       {12, L"barcode-1d-databar", IDC_BARCODE1D_GS1_COMPOSITE}};
constexpr TypePicture kPictures2D[] = {{0, L"barcode-2d-pdf417"},
                                       {3, L"barcode-2d-databar", IDC_BARCODE2D_GS1_COMPOSITE},
                                       {4, L"barcode-2d-qr"},
                                       {5, L"barcode-2d-maxi-code"}};

// What is typed where the page's sample has a wrong check digit or lacks what the type asks for, so that a
// printer prints nothing for it.
struct TypeData {
    int type;
    const wchar_t* data;
};

constexpr wchar_t kArticle[] = L"0123456789012";  // the printer adds the check digit
constexpr TypeData kData1D[] = {
    {1, L"01230000045"}, {2, L"9638507"}, {3, L"590123412345"}, {5, L"12345678"},
    {9, kArticle},       {10, kArticle},  {11, kArticle},       {12, L"(01)01234567890128"}};
constexpr TypeData kData2D[] = {{1, kArticle}, {2, kArticle}, {3, L"(01)01234567890128(10)AB"}};

struct PagePlay {
    BarcodePage page;
    std::span<const TypePicture> pictures;
    std::span<const TypeData> typed;
};
constexpr PagePlay kPlays[] = {{k1DCode, kPictures1D, kData1D}, {k2DCode, kPictures2D, kData2D}};

// Positions in the lists.
constexpr int kBelow = 2;
constexpr int kEccLevel2 = 2;
constexpr int kModel2 = 1;
constexpr int kPdf417 = 0;
constexpr int kQrCode = 4;

// Text below the bars; a PDF417 with room for data, which the default one has not; the newer QR Code.
void ChooseSettings(const Window& window, const BarcodePage& page, int type) {
    if (page.unique == k1DCode.unique) {
        if (type == 0) {
            window.SelectCombo(IDC_BARCODE1D_HRI_POSITION, kBelow);
        }
    } else if (type == kPdf417) {
        window.TypeText(IDC_BARCODE2D_PDF_ROWS, L"30");
        window.SelectCombo(IDC_BARCODE2D_PDF_ECC, kEccLevel2);
    } else if (type == kQrCode) {
        window.SelectCombo(IDC_BARCODE2D_QR_MODEL, kModel2);
    }
}

void ShowAll(const Sheet& sheet, const Window& page, const TypePicture& picture, const Options& options) {
    if (picture.choice != 0) {
        page.Click(picture.choice);
    }
    if (options.pictures) {
        sheet.Screenshot(*options.pictures / (std::wstring(picture.name) + L".bmp"));
    }
}

}  // namespace

void PlayBarcodes(const Sheet& sheet, const Options& options, VirtualPrinter* printer) {
    for (const auto& [page, pictures, data] : kPlays) {
        const Window window = SelectPageWith(sheet, page.unique);
        const std::vector<std::wstring> types = window.ComboItems(page.types);
        for (int type = 0; type < static_cast<int>(types.size()); ++type) {
            window.SelectCombo(page.types, type);
            ChooseSettings(window, page, type);
            for (const TypeData& typed : data) {
                if (typed.type == type) {
                    window.TypeText(page.data, typed.data);
                }
            }
            for (const TypePicture& picture : pictures) {
                if (picture.type == type) {
                    ShowAll(sheet, window, picture, options);
                }
            }
            if (printer != nullptr) {
                printer->LabelNextJob(types[static_cast<std::size_t>(type)]);
            }
            window.Click(page.print);
        }
    }
}
